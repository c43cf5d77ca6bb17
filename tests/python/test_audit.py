"""audit: many documents checked in parallel, each record saying what kova-mapping check says."""

import dataclasses
import pathlib

import pytest

import kovamapping
from conftest import E_FAIL, INVALID_DATA, document_files, error_line, ok_line, tool_check

VALID = b'{"version":12,"References":[{"kOVAId":"R","PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V1:s"}]}'


def as_check(record) -> tuple:
    """A record in the form of conftest.tool_check: what check prints for the same file."""
    if record.ok:
        return ("out", ok_line(record.version, record.references, record.instances, record.root))
    if record.status is None or (len(record.messages) == 1 and record.messages[0].startswith(f"{record.path}: ")):
        return ("err", record.messages[0][len(f"{record.path}: "):])
    return ("out", error_line(record.status, record.messages))


def without_time(records) -> list:
    return [dataclasses.replace(record, seconds=0.0) for record in records]


@pytest.mark.parametrize("folder", ["examples", "documents", "hostile"])
def test_each_record_says_what_kova_mapping_check_says(examples, test_data, folder):
    where = {"examples": examples, "documents": test_data / "documents", "hostile": test_data / "hostile"}[folder]
    paths = document_files(where)
    said = tool_check(paths)
    records = list(kovamapping.audit(paths, workers=2))
    assert [record.path for record in records] == paths
    for record in records:
        assert as_check(record) == said[str(record.path)], record.path.name


def test_a_record_of_a_document_that_reads(examples):
    [record] = kovamapping.audit([examples / "v8_gearbox.json"])
    assert (record.ok, record.status, record.messages) == (True, 0, [])
    assert (record.version, record.references, record.instances, record.root) == (8, 3, 4, "GBX-100")
    assert record.seconds >= 0


def test_a_record_of_a_document_that_does_not_read(examples):
    [record] = kovamapping.audit([examples / "broken_v11.json"])
    assert (record.ok, record.status) == (False, E_FAIL)
    assert record.messages == ["UNVALUATED MANDATORY FIELD IsLocal", "UNVALUATED MANDATORY FIELD KOVASynchroStamp"]
    assert (record.version, record.references, record.instances, record.root) == (None, 0, 0, None)


def test_the_record_of_a_document_holds_what_read_says_of_it(examples, test_data):
    for path in document_files(examples, test_data / "documents"):
        [record] = kovamapping.audit([path])
        try:
            table = kovamapping.read(path)
        except kovamapping.Error as error:
            assert (record.ok, record.status, record.messages) == (False, error.status, error.messages), path.name
        else:
            assert record.ok and record.version == table.version, path.name


def test_a_file_that_cannot_be_opened_gives_a_record_without_status(tmp_path):
    missing, folder = tmp_path / "missing.json", tmp_path
    records = list(kovamapping.audit([missing, folder]))
    assert [(r.path, r.ok, r.status) for r in records] == [(missing, False, None), (folder, False, None)]
    assert records[0].messages == [f"{missing}: not found"]
    assert records[1].messages == [f"{folder}: is a directory"]


def test_a_file_that_is_not_utf8_gives_a_record_with_status_invalid_data(test_data):
    path = test_data / "hostile" / "bom_utf16le.json"
    [record] = kovamapping.audit([path])
    assert (record.ok, record.status) == (False, INVALID_DATA)
    assert record.messages == [f"{path}: not UTF-8 (invalid byte at offset 0)"]


def test_documents_are_given_as_paths_bytes_or_named_bytes(tmp_path):
    (tmp_path / "doc.json").write_bytes(VALID)
    items = [tmp_path / "doc.json", str(tmp_path / "doc.json"), VALID, bytearray(VALID), ("named", VALID),
             ("bad", b"\xff")]
    records = list(kovamapping.audit(items))
    assert [r.path for r in records] == [tmp_path / "doc.json", str(tmp_path / "doc.json"), None, None, "named", "bad"]
    assert [r.ok for r in records] == [True] * 5 + [False]
    assert all(r.root == "R" for r in records[:5])
    assert (records[5].status, records[5].messages) == (INVALID_DATA, ["not UTF-8 (invalid byte at offset 0)"])


def test_records_come_in_the_order_given_whatever_the_workers(examples):
    paths = document_files(examples) * 40  # more than the window a run reads ahead
    one = list(kovamapping.audit(paths, workers=1))
    assert [r.path for r in one] == paths
    for workers in (2, 3, 8):
        assert without_time(kovamapping.audit(paths, workers=workers)) == without_time(one)


def test_an_empty_audit_yields_nothing():
    assert list(kovamapping.audit([])) == []


def test_leaving_an_audit_early_stops_it():
    documents = [VALID] * 2000
    audit = kovamapping.audit(documents, workers=2)
    first = next(audit)
    audit.close()
    assert first.ok
    assert len(list(kovamapping.audit(documents[:5]))) == 5  # a new audit runs as usual


def test_more_workers_than_documents_is_harmless():
    # Threads beyond the documents, or beyond what kova-mapping audit --jobs allows, are not started.
    records = list(kovamapping.audit([VALID, b"{}"], workers=100000))
    assert [r.ok for r in records] == [True, False]


@pytest.mark.parametrize("workers", [0, -1, True, 1.5, "2"])
def test_workers_is_a_positive_int(workers):
    with pytest.raises(ValueError):
        list(kovamapping.audit([VALID], workers=workers))


@pytest.mark.parametrize("item", [42, None, ("name",), ("name", "text, not bytes"), ("a", b"x", "c")])
def test_each_document_is_a_path_bytes_or_a_named_pair(item):
    with pytest.raises(TypeError):
        list(kovamapping.audit([item]))


def test_progress_draws_a_bar_on_standard_error(capsys):
    records = list(kovamapping.audit([VALID, b"{}", VALID], progress=True))
    captured = capsys.readouterr()
    assert len(records) == 3
    assert captured.out == ""
    assert captured.err.startswith("\raudit [")
    assert "3/3 (1 failed)" in captured.err
    assert captured.err.endswith("\n")


def test_without_progress_nothing_is_written(capsys):
    list(kovamapping.audit([VALID, b"{}"]))
    assert capsys.readouterr() == ("", "")


def test_audit_frame_gives_one_row_per_record(examples):
    pandas = pytest.importorskip("pandas")
    paths = document_files(examples)
    frame = kovamapping.audit_frame(paths, workers=2)
    assert isinstance(frame, pandas.DataFrame)
    assert list(frame.columns) == [field.name for field in dataclasses.fields(kovamapping.AuditRecord)]
    assert list(frame["path"]) == paths
    records = list(kovamapping.audit(paths))
    assert list(frame["ok"]) == [r.ok for r in records]
    assert list(frame["references"]) == [r.references for r in records]
    assert list(frame["messages"]) == [r.messages for r in records]


def test_records_are_frozen():
    [record] = kovamapping.audit([VALID])
    with pytest.raises(dataclasses.FrozenInstanceError):
        record.ok = False
    assert isinstance(record.path, (type(None), str, pathlib.PurePath))
