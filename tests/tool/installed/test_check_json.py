"""check --json: one record a document, with stable field names, parsed back."""

from conftest import EXAMPLES, records, run


def test_check_json_gives_one_record_a_document_in_order(tool):
    files = ["v6_bracket.json", "broken_v11.json", "v12_conveyor.envelope"]
    result = run(tool, "check", "--json", *files, cwd=EXAMPLES)
    assert result.returncode == 1
    parsed = records(result.stdout)
    assert [record["file"] for record in parsed] == files
    bracket, broken, envelope = parsed
    assert bracket == {"file": "v6_bracket.json", "ok": True, "status": "0x00000000", "status_code": 0,
                       "messages": [], "version": 6, "references": 1, "instances": 2, "root": "BRK-2041"}
    assert broken["ok"] is False and broken["status"] == "0x80004005" and broken["status_code"] == 0x80004005
    assert broken["messages"] == ["UNVALUATED MANDATORY FIELD IsLocal", "UNVALUATED MANDATORY FIELD KOVASynchroStamp"]
    assert broken["version"] is None and broken["root"] is None
    assert envelope["version"] == 12 and envelope["root"] == "CNV-1000"


def test_check_json_reports_an_unreadable_file_as_a_record(tool, tmp_path):
    result = run(tool, "check", "--json", tmp_path / "missing.json", tmp_path)
    assert result.returncode == 1
    missing, folder = records(result.stdout)
    assert missing["ok"] is False and missing["status"] is None and missing["status_code"] is None
    assert missing["messages"] == [f"{tmp_path / 'missing.json'}: not found"]
    assert folder["messages"] == [f"{tmp_path}: is a directory"]


def test_check_json_agrees_with_the_text_lines(tool):
    files = sorted(path.name for path in EXAMPLES.iterdir())
    text = run(tool, "check", *files, cwd=EXAMPLES).stdout.splitlines()
    parsed = records(run(tool, "check", "--json", *files, cwd=EXAMPLES).stdout)
    for line, record in zip(text, parsed):
        name, rest = line.split(": ", 1)
        assert name == record["file"]
        if record["ok"]:
            assert rest.startswith(f"ok, version {record['version']}, {record['references']} references")
        else:
            assert rest == f"error {record['status']}: " + "; ".join(record["messages"])
