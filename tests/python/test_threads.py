"""Threads: reading in parallel, writing while another thread changes objects, parallel audits."""

import concurrent.futures
import dataclasses
import json
import re
import threading
import time

import kovamapping
from conftest import document_files, fields, run_tool


def generated(references, instances, seed) -> str:
    result = run_tool("generate", "--references", references, "--instances", instances, "--seed", seed)
    assert result.returncode == 0, result.stderr
    return result.stdout


def test_reading_from_many_threads_at_once_gives_the_tables_read_one_by_one(examples):
    texts = [generated(20, 5, seed) for seed in range(1, 9)]
    texts += [(examples / name).read_text(encoding="utf-8")
              for name in ("v6_bracket.json", "v8_gearbox.json", "v10_pump.json", "v12_conveyor.envelope")]
    expected = [fields(kovamapping.read(text)) for text in texts]
    sources = [texts[n % len(texts)] for n in range(200)]
    with concurrent.futures.ThreadPoolExecutor(max_workers=8) as pool:
        tables = list(pool.map(kovamapping.read, sources))
    assert [fields(table) for table in tables] == [expected[n % len(texts)] for n in range(200)]


def test_refusals_from_many_threads_keep_their_own_messages(examples, test_data):
    paths = [path for path in document_files(examples, test_data / "documents")]

    def outcome(path):
        try:
            return ("ok", len(kovamapping.read(path)))
        except kovamapping.Error as error:
            return (error.status, error.messages)

    expected = [outcome(path) for path in paths]
    with concurrent.futures.ThreadPoolExecutor(max_workers=6) as pool:
        assert list(pool.map(outcome, paths * 8)) == expected * 8


def big_table(references=200, instances=20) -> kovamapping.Table:
    table = kovamapping.Table()
    table.add_reference(kovamapping.Reference("root", "p-root", "V2:root"))
    for n in range(references):
        reference = kovamapping.Reference(f"R{n}", f"P{n}", "V1:" + "x" * 40, is_local=True)
        table.add_reference(reference)
        for m in range(instances):
            table.add_instance(kovamapping.Instance(f"I{n}.{m}", f"Q{n}.{m}", f"R{m}", "V2:" + "y" * 40),
                               under=reference)
    return table


def test_to_json_while_another_thread_changes_the_objects_gives_valid_documents():
    table = big_table()
    stop = threading.Event()
    changes = [0]

    def change():
        n = 0
        while not stop.is_set():
            reference = table.references[1 + n % 200]
            reference.stamp = f"V2:changed-{n}"
            reference.custom_data = "c" * (n % 64)
            instance = reference.instances[0]
            table.remove(instance)
            table.add_instance(instance, under=reference)
            n += 1
        changes[0] = n

    changer = threading.Thread(target=change)
    changer.start()
    documents = []
    try:
        deadline = time.monotonic() + 0.5
        while time.monotonic() < deadline or len(documents) < 5:
            documents.append(table.to_json())
    finally:
        stop.set()
        changer.join()
    assert changes[0] > 0
    for text in documents:
        document = json.loads(text)
        assert len(document["References"]) == 201
        # The changer removes an instance, then adds it back: a document may come in between.
        assert sum(len(r.get("Instances", [])) for r in document["References"]) in (200 * 20 - 1, 200 * 20)
        assert len(kovamapping.read(text)) == len(document["References"]) + sum(
            len(r.get("Instances", [])) for r in document["References"])


def test_write_while_another_thread_changes_the_objects_writes_whole_documents(tmp_path):
    table = big_table(references=100)
    stop = threading.Event()

    def change():
        n = 0
        while not stop.is_set():
            table.references[1 + n % 100].plexo_id = f"P{n % 100}-{n}"
            n += 1

    changer = threading.Thread(target=change)
    changer.start()
    try:
        for n in range(10):
            table.write(tmp_path / f"doc{n}.json", compress=n % 2 == 1)
    finally:
        stop.set()
        changer.join()
    for n in range(10):
        copy = kovamapping.read(tmp_path / f"doc{n}.json")
        assert len(copy) == 101 + 100 * 20
        for n, reference in enumerate(copy.references[1:]):
            assert re.fullmatch(rf"P{n}(-\d+)?", reference.plexo_id), reference.plexo_id


def test_an_audit_with_two_workers_gives_the_records_of_one_worker(examples, test_data):
    paths = document_files(examples, test_data / "documents", test_data / "hostile") * 3
    one = [dataclasses.replace(r, seconds=0.0) for r in kovamapping.audit(paths, workers=1)]
    two = [dataclasses.replace(r, seconds=0.0) for r in kovamapping.audit(paths, workers=2)]
    assert two == one
    assert len(one) == len(paths)


def test_audits_from_several_threads_at_once_each_get_their_own_records(examples):
    paths = document_files(examples)
    expected = [dataclasses.replace(r, seconds=0.0) for r in kovamapping.audit(paths, workers=1)]

    def run(_):
        return [dataclasses.replace(r, seconds=0.0) for r in kovamapping.audit(paths * 5, workers=2)]

    with concurrent.futures.ThreadPoolExecutor(max_workers=4) as pool:
        for records in pool.map(run, range(8)):
            assert records == expected * 5


def test_stamps_computed_from_several_threads_are_the_stamps_computed_one_by_one():
    attribute_sets = [{"Name": f"Part-{n}", "Quantity": n, "Mass": n / 4, "Tags": ["a", str(n)]} for n in range(200)]
    expected = [kovamapping.compute_stamp(a) for a in attribute_sets]
    with concurrent.futures.ThreadPoolExecutor(max_workers=8) as pool:
        assert list(pool.map(kovamapping.compute_stamp, attribute_sets)) == expected


def test_other_threads_run_while_a_large_document_is_read():
    text = generated(100, 200, 3)  # 20,000 instances
    ticks = []
    done = threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.001)

    ticker = threading.Thread(target=tick)
    ticker.start()
    try:
        start = time.monotonic()
        table = kovamapping.read(text)
        end = time.monotonic()
    finally:
        done.set()
        ticker.join()
    assert len(table) == 100 + 100 * 200
    # Had the read kept the GIL, the ticker could have run once at most before and once after it.
    assert sum(start < t < end for t in ticks) >= 5
