"""kova-mapping drift: which objects of a document are out of sync with their attribute values."""

import json
import os
import resource
import subprocess

import pytest

from conftest import records, run

ENABLED = {"DONOTUSE_ENABLEKSSGEN": "1"}


def stamp_of(tool, tmp_path, attributes):
    """The stamp kova-mapping stamp computes for the attributes."""
    path = tmp_path / "attributes.json"
    path.write_text(json.dumps(attributes), encoding="utf-8")
    result = run(tool, "stamp", path, env=ENABLED)
    assert result.returncode == 0, result.stderr
    return result.stdout.strip()


def document(objects):
    """A version 12 document: objects is a list of (kova id, stamp text, instances as (kova id, stamp))."""
    references = []
    for index, (kova_id, stamp, instances) in enumerate(objects):
        references.append({"kOVAId": kova_id, "PlexoId": f"P-{kova_id}", "IsLocal": index > 0, "KOVASynchroStamp": stamp,
                           "Instances": [{"kOVAId": i, "PlexoId": f"P-{i}", "IsLocal": False, "RefId": "X",
                                          "KOVASynchroStamp": s} for i, s in instances]})
    return json.dumps({"version": 12, "References": references})


def lines(entries):
    return "".join(json.dumps({"kova_id": kova_id, "attributes": attributes}) + "\n" for kova_id, attributes in entries)


def test_drift_tells_each_state(tool, tmp_path):
    current = stamp_of(tool, tmp_path, {"Mass": 2.5, "Name": "bolt"})
    doc = tmp_path / "doc.json"
    doc.write_text(document([
        ("R1", f"V2:{current}", [("I1", f"V1:{current}"), ("I2", "V0KSS:AAAA")]),
        ("R2", f"V2:{current}", []),
        ("R3", "V12:abc", []),
        ("R4", f"V2:{current}", []),
    ]), encoding="utf-8")
    attributes = tmp_path / "attributes.ndjson"
    attributes.write_text(lines([
        ("R1", {"Mass": 2.5, "Name": "bolt"}),
        ("I1", {"Mass": 2.5, "Name": "nut"}),
        ("I2", {"Mass": 2.5}),
        ("R3", {"Mass": 1}),
        ("GHOST", {"Mass": 1}),
        ("R4", {"Name": "bolt", "Mass": 2.5}),
    ]), encoding="utf-8")
    result = run(tool, "drift", "--json", doc, attributes, env=ENABLED)
    assert result.returncode == 1
    *objects, summary = records(result.stdout)
    states = {(record["kova_id"], record["kind"]): record["state"] for record in objects}
    assert states == {("R1", "reference"): "in-sync", ("I1", "instance"): "stale", ("I2", "instance"): "not-comparable",
                      ("R3", "reference"): "not-comparable", ("GHOST", None): "unknown-id",
                      ("R4", "reference"): "in-sync", ("R2", "reference"): "no-attributes"}
    stale = next(record for record in objects if record["state"] == "stale")
    assert stale["stored"] == current
    assert stale["computed"] == stamp_of(tool, tmp_path, {"Mass": 2.5, "Name": "nut"})
    assert summary["references"]["in-sync"] == 2 and summary["instances"]["stale"] == 1
    assert summary["unknown_ids"] == 1


def test_drift_exits_0_when_every_given_object_is_in_sync(tool, tmp_path):
    current = stamp_of(tool, tmp_path, {"A": 1})
    doc = tmp_path / "doc.json"
    doc.write_text(document([("R1", f"V2:{current}", [("I1", f"V1:{current}")])]), encoding="utf-8")
    attributes = tmp_path / "a.ndjson"
    attributes.write_text(lines([("R1", {"A": 1}), ("I1", {"A": 1})]), encoding="utf-8")
    result = run(tool, "drift", doc, attributes, env=ENABLED)
    assert result.returncode == 0, result.stderr
    assert result.stdout == ("summary: references: 1 in-sync, 0 stale, 0 no-attributes, 0 no-stamp, 0 not-comparable; "
                             "instances: 1 in-sync, 0 stale, 0 no-attributes, 0 no-stamp, 0 not-comparable; 0 unknown ids\n")


def test_drift_text_shows_stale_objects_with_both_stamps(tool, tmp_path):
    doc = tmp_path / "doc.json"
    doc.write_text(document([("R1", "V2:AAAA", [])]), encoding="utf-8")
    attributes = tmp_path / "a.ndjson"
    attributes.write_text(lines([("R1", {"A": 1})]), encoding="utf-8")
    result = run(tool, "drift", doc, attributes, env=ENABLED)
    assert result.returncode == 1
    assert result.stdout.splitlines()[0] == f"stale reference R1: stored AAAA, computed {stamp_of(tool, tmp_path, {'A': 1})}"


def test_drift_reads_attributes_from_standard_input(tool, tmp_path):
    current = stamp_of(tool, tmp_path, {"A": "x"})
    doc = tmp_path / "doc.json"
    doc.write_text(document([("R1", f"V2:{current}", [])]), encoding="utf-8")
    result = run(tool, "drift", "--json", doc, "-", stdin=lines([("R1", {"A": "x"})]), env=ENABLED)
    assert result.returncode == 0
    assert records(result.stdout)[0]["state"] == "in-sync"


def test_drift_needs_stamp_computation_enabled(tool, tmp_path):
    doc = tmp_path / "doc.json"
    doc.write_text(document([("R1", "V2:AAAA", [])]), encoding="utf-8")
    result = run(tool, "drift", doc, "-", stdin="")
    assert result.returncode == 2
    assert result.stderr == "kova-mapping: stamp computation is disabled: set DONOTUSE_ENABLEKSSGEN to enable it\n"


def test_drift_errors_name_the_line_and_exit_2(tool, tmp_path):
    doc = tmp_path / "doc.json"
    doc.write_text(document([("R1", "V2:AAAA", [])]), encoding="utf-8")
    bad = tmp_path / "bad.ndjson"
    bad.write_text(lines([("R1", {"A": 1})]) + '{"kova_id": "R1", "attributes": {"A": [[{"x": 1}]]}}\n', encoding="utf-8")
    result = run(tool, "drift", doc, bad, env=ENABLED)
    assert result.returncode == 2
    assert result.stderr.startswith(f"kova-mapping: {bad}:2: attribute \"A\" element 1 element 1: an object value must be")
    assert run(tool, "drift", doc, tmp_path / "missing", env=ENABLED).returncode == 2
    broken = tmp_path / "broken.json"
    broken.write_text("{}", encoding="utf-8")
    result = run(tool, "drift", broken, bad, env=ENABLED)
    assert result.returncode == 2 and "KOVA JSON EMPTY OR INVALID" in result.stderr


@pytest.mark.skipif(os.environ.get("KOVA_SANITIZED") == "1", reason="slow under the sanitizers; the debug run covers it")
def test_drift_streams_100000_objects_with_memory_bounded_by_the_document(tool, tmp_path):
    doc = tmp_path / "doc.json"
    generated = run(tool, "generate", "--references", "1000", "--instances", "99", "-o", doc)
    assert generated.returncode == 0
    table = records(run(tool, "dump", "--json", doc).stdout)[0]["table"]
    ids = [reference["kova_id"] for reference in table["references"]]
    ids += [instance["kova_id"] for reference in table["references"] for instance in reference["instances"]]
    assert len(ids) == 100000
    padding = "p" * 1000  # makes the attribute file far larger than the document
    attributes = tmp_path / "attributes.ndjson"
    with open(attributes, "w", encoding="utf-8") as out:
        for kova_id in ids:
            out.write(json.dumps({"kova_id": kova_id, "attributes": {"Name": kova_id, "Padding": padding}}) + "\n")
    assert attributes.stat().st_size > 5 * doc.stat().st_size
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    result = subprocess.run([tool, "drift", "--json", str(doc), str(attributes)], capture_output=True, text=True,
                            env={"DONOTUSE_ENABLEKSSGEN": "1"}, timeout=600)
    peak_kib = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    assert result.returncode == 1  # generated stamps are not those of these attributes
    summary = records(result.stdout.splitlines()[-1])[0]
    assert summary["references"]["stale"] + summary["references"]["not-comparable"] == 1000
    assert summary["instances"]["stale"] + summary["instances"]["not-comparable"] == 99000
    assert summary["unknown_ids"] == 0
    # The peak of the drift process stays well below the attribute file's size.
    if peak_kib > before:
        assert peak_kib * 1024 < attributes.stat().st_size / 2, (peak_kib, attributes.stat().st_size)
