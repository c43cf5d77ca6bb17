"""kova-mapping audit: many documents in one process, a summary, and bad inputs that never stop it."""

import json
import os
import resource
import subprocess

import pytest

from conftest import DOCS, EXAMPLES, records, run

GOOD = '{"version":12,"References":[{"kOVAId":"R","PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V2:AAAA","Instances":[]}]}'


def write(path, text):
    path.write_text(text, encoding="utf-8")
    return path


def check_lines(tool, files, cwd):
    """What kova-mapping check says of each file, by name."""
    result = run(tool, "check", "--json", *files, cwd=cwd)
    return {record["file"]: record for record in records(result.stdout)}


def test_audit_of_a_folder_agrees_with_check_on_every_document(tool):
    result = run(tool, "audit", "--json", "-j", "2", ".", cwd=EXAMPLES)
    assert result.returncode == 1
    *documents, summary = records(result.stdout)
    names = sorted(path.name for path in EXAMPLES.iterdir() if path.suffix in (".json", ".envelope"))
    assert [record["file"] for record in documents] == [f"./{name}" for name in names]
    checked = check_lines(tool, names, EXAMPLES)
    for record in documents:
        expected = checked[record["file"][2:]]
        for field in ("ok", "status", "status_code", "messages", "version", "references", "instances", "root"):
            assert record[field] == expected[field], (record["file"], field)
        assert record["seconds"] >= 0
    assert summary["summary"] is True
    assert summary["documents"] == len(names)
    assert summary["ok"] == sum(record["ok"] for record in documents)
    assert summary["failed"] == summary["documents"] - summary["ok"]
    assert summary["references"] == sum(record["references"] for record in documents)


def test_audit_text_lists_failures_then_the_summary_grouped_by_status_and_first_message(tool, tmp_path):
    write(tmp_path / "a.json", GOOD)
    write(tmp_path / "b.json", '{"version": 13, "References": []}')
    write(tmp_path / "c.json", '{"version": 14, "References": []}')
    result = run(tool, "audit", tmp_path)
    assert result.returncode == 1
    lines = result.stdout.splitlines()
    assert lines[0] == f"{tmp_path}/b.json: error 0x80004005: UNSUPPORTED VERSION ( version > 11 )"
    assert lines[1] == f"{tmp_path}/c.json: error 0x80004005: UNSUPPORTED VERSION ( version > 11 )"
    assert lines[2] == "summary: 3 documents, 1 ok, 2 failed; 1 references, 0 instances"
    assert lines[3] == "failures by status and first message:"
    assert lines[4] == "  2  0x80004005  UNSUPPORTED VERSION ( version > 11 )"
    assert lines[5] == "slowest:"
    assert len(lines) == 6 + 3


def test_audit_exits_0_when_every_document_reads(tool, tmp_path):
    for index in range(5):
        write(tmp_path / f"doc{index}.json", GOOD)
    result = run(tool, "audit", "-j", "3", tmp_path)
    assert result.returncode == 0, result.stdout
    assert "summary: 5 documents, 5 ok, 0 failed; 5 references, 0 instances" in result.stdout


def test_audit_walks_directories_recursively_in_name_order_with_the_glob(tool, tmp_path):
    write(tmp_path / "b.json", GOOD)
    (tmp_path / "sub" / "deeper").mkdir(parents=True)
    write(tmp_path / "sub" / "deeper" / "c.json", GOOD)
    write(tmp_path / "sub" / "a.envelope", GOOD)
    write(tmp_path / "sub" / "notes.txt", "not a document")
    write(tmp_path / "a.json", GOOD)
    found = [record["file"] for record in records(run(tool, "audit", "--json", tmp_path).stdout)[:-1]]
    base = str(tmp_path)
    assert found == [f"{base}/a.json", f"{base}/b.json", f"{base}/sub/a.envelope", f"{base}/sub/deeper/c.json"]
    only_text = records(run(tool, "audit", "--json", "--glob", "*.txt", tmp_path).stdout)
    assert [record["file"] for record in only_text[:-1]] == [f"{base}/sub/notes.txt"]


def test_audit_reads_a_list_of_paths_from_standard_input(tool, tmp_path):
    write(tmp_path / "one.json", GOOD)
    write(tmp_path / "two.json", GOOD)
    paths = f"{tmp_path}/one.json\n\n{tmp_path}/two.json\n"
    parsed = records(run(tool, "audit", "--json", "-", stdin=paths).stdout)
    assert [record["file"] for record in parsed[:-1]] == [f"{tmp_path}/one.json", f"{tmp_path}/two.json"]
    assert parsed[-1]["ok"] == 2


def test_audit_reports_each_bad_input_and_keeps_the_summary_right(tool, tmp_path):
    write(tmp_path / "good.json", GOOD)
    (tmp_path / "empty").mkdir()
    (tmp_path / "loop").mkdir()
    os.symlink(tmp_path / "loop", tmp_path / "loop" / "self")  # a link to a directory: not followed
    os.symlink(tmp_path / "x.json", tmp_path / "y.json")
    os.symlink(tmp_path / "y.json", tmp_path / "x.json")  # a loop of links to files
    os.symlink(tmp_path / "gone", tmp_path / "dangling.json")
    with open(tmp_path / "huge.json", "wb") as huge:
        huge.truncate(2 * 1024**3)  # a 2 GB file (sparse)
    write(tmp_path / "name with spaces.json", GOOD)
    write(tmp_path / "name\nwith newline.json", GOOD)
    (tmp_path / "latin1.json").write_bytes(b'{"version": 12, "caf\xe9": 1}')
    result = run(tool, "audit", "--json", tmp_path, tmp_path / "empty", tmp_path / "missing.json", timeout=120)
    assert result.returncode == 1
    *documents, summary = records(result.stdout)
    by_file = {record["file"]: record for record in documents}
    base = str(tmp_path)
    assert by_file[f"{base}/good.json"]["ok"] is True
    assert by_file[f"{base}/name with spaces.json"]["ok"] is True
    assert by_file[f"{base}/name\nwith newline.json"]["ok"] is True
    assert by_file[f"{base}/x.json"]["messages"] == [f"{base}/x.json: cannot read (Too many levels of symbolic links)"]
    assert by_file[f"{base}/dangling.json"]["messages"] == [f"{base}/dangling.json: not found"]
    assert by_file[f"{base}/huge.json"]["messages"][0].startswith(f"{base}/huge.json: too large (2147483648 bytes")
    assert by_file[f"{base}/latin1.json"]["status"] == "0x8007000D"
    assert by_file[f"{base}/latin1.json"]["messages"] == [f"{base}/latin1.json: not UTF-8 (invalid byte at offset 20)"]
    assert by_file[f"{base}/empty"]["messages"] == [f"{base}/empty: no documents"]
    assert by_file[f"{base}/missing.json"]["messages"] == [f"{base}/missing.json: not found"]
    assert summary["documents"] == len(documents)
    assert summary["ok"] == 3
    assert sum(group["count"] for group in summary["failures"]) == summary["failed"]


def test_audit_text_keeps_a_name_with_a_newline_on_one_line(tool, tmp_path):
    write(tmp_path / "bad\nname.json", "{}")
    result = run(tool, "audit", tmp_path)
    assert result.stdout.splitlines()[0] == f"{tmp_path}/bad\\u000Aname.json: error 0x80004005: KOVA JSON EMPTY OR INVALID"


def test_audit_stamps_reports_stamps_not_in_a_known_form(tool, tmp_path):
    document = {"version": 12, "References": [
        {"kOVAId": "R1", "PlexoId": "P1", "IsLocal": False, "KOVASynchroStamp": "V2:AAAA", "Instances": [
            {"kOVAId": "I1", "PlexoId": "Q1", "IsLocal": False, "RefId": "R2", "KOVASynchroStamp": "V12:abc"}]},
        {"kOVAId": "R2", "PlexoId": "P2", "IsLocal": True, "KOVASynchroStamp": "V7:AAAA", "Instances": []}]}
    write(tmp_path / "odd.json", json.dumps(document))
    parsed = records(run(tool, "audit", "--json", "--stamps", tmp_path).stdout)
    assert parsed[0]["odd_stamps"] == [
        {"kova_id": "I1", "kind": "instance", "stamp": ":abc", "stamp_version": 1, "problem": "not base64"},
        {"kova_id": "R2", "kind": "reference", "stamp": "AAAA", "stamp_version": 7, "problem": "stamp version 7"},
    ]
    assert parsed[-1]["odd_stamps"] == 2
    text = run(tool, "audit", "--stamps", tmp_path).stdout.splitlines()
    assert text[0] == f'{tmp_path}/odd.json: instance I1: stamp :abc (version 1): not base64'
    assert text[2].endswith(", 2 stamps not in a known form")
    # Without --stamps nothing of it is said.
    assert "odd_stamps" not in records(run(tool, "audit", "--json", tmp_path).stdout)[0]


def test_audit_shows_a_progress_bar_only_when_asked_or_on_a_terminal(tool, tmp_path):
    write(tmp_path / "a.json", GOOD)
    quiet = run(tool, "audit", tmp_path)
    assert quiet.stderr == ""
    shown = run(tool, "audit", "--progress", tmp_path)
    assert "audit [" in shown.stderr and "1/1" in shown.stderr and "docs/s" in shown.stderr


def test_audit_usage_errors_exit_2(tool):
    assert run(tool, "audit").returncode == 2
    assert run(tool, "audit", "-j", "0", ".").returncode == 2
    assert run(tool, "audit", "--nope", ".").returncode == 2


def test_audit_writes_its_report_to_a_file_with_o(tool, tmp_path):
    write(tmp_path / "a.json", GOOD)
    report = tmp_path / "report.ndjson"
    result = run(tool, "audit", "--json", "-o", report, tmp_path / "a.json")
    assert result.returncode == 0 and result.stdout == ""
    parsed = records(report.read_text(encoding="utf-8"))
    assert parsed[0]["ok"] is True and parsed[-1]["documents"] == 1


@pytest.mark.skipif(os.environ.get("KOVA_SANITIZED") == "1", reason="the sanitizers' runtimes need more address space")
def test_audit_holds_100000_small_documents_with_few_file_descriptors(tool, tmp_path):
    vault = tmp_path / "vault"
    for folder in range(100):
        directory = vault / f"d{folder:03}"
        directory.mkdir(parents=True)
        write(directory / "doc0000.json", "{}")
        good = write(directory / "doc0001.json", GOOD)
        for index in range(2, 1000):
            # Hard links: names made quickly, each a file of its own to the tool.
            os.link(good, directory / f"doc{index:04}.json")

    def limits():
        resource.setrlimit(resource.RLIMIT_NOFILE, (64, 64))
        resource.setrlimit(resource.RLIMIT_AS, (2 * 1024**3, 2 * 1024**3))

    result = subprocess.run([tool, "audit", "-j", "4", str(vault)], capture_output=True, text=True, timeout=600,
                            preexec_fn=limits)
    assert result.returncode == 1, result.stderr
    assert "summary: 100000 documents, 99900 ok, 100 failed; 99900 references, 0 instances" in result.stdout
    assert "  100  0x80004005  KOVA JSON EMPTY OR INVALID" in result.stdout


@pytest.mark.skipif(os.geteuid() == 0, reason="permissions do not stop root from reading")
def test_audit_reports_a_file_it_may_not_read(tool, tmp_path):
    secret = write(tmp_path / "secret.json", GOOD)
    secret.chmod(0)
    record = records(run(tool, "audit", "--json", secret).stdout)[0]
    assert record["messages"] == [f"{secret}: permission denied"]
