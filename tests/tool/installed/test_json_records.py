"""Every --json record of the tool validates against the JSON Schema the installed manual gives for it."""

import json
import re

import jsonschema
import pytest

from conftest import DOCS, EXAMPLES, records, run

ENABLED = {"DONOTUSE_ENABLEKSSGEN": "1"}


@pytest.fixture(scope="module")
def schemas(prefix):
    """The record schemas of the installed manual, by their $id."""
    manual = (prefix / "share" / "doc" / "KOVAMappingServices" / "kova-mapping.md").read_text(encoding="utf-8")
    section = manual[manual.index("## MACHINE-READABLE OUTPUT"):manual.index("## ERRORS")]
    found = {}
    for block in re.findall(r"```json\n(.*?)```", section, flags=re.S):
        schema = json.loads(block)
        jsonschema.Draft202012Validator.check_schema(schema)
        found[schema["$id"]] = jsonschema.Draft202012Validator(schema)
    return found


def valid(schemas, name, record):
    errors = [error.message for error in schemas[f"urn:kova-mapping:record:{name}"].iter_errors(record)]
    assert not errors, (record, errors)


def test_the_manual_describes_every_kind_of_record(schemas):
    assert set(schemas) == {f"urn:kova-mapping:record:{name}" for name in (
        "document-record", "audit-summary", "stamp-record", "drift-record", "drift-summary", "diff-record",
        "diff-summary")}


def test_check_records_validate(schemas, tool, tmp_path):
    files = [str(path) for path in sorted(EXAMPLES.iterdir())] + [str(path) for path in sorted(DOCS.iterdir())]
    files.append(str(tmp_path / "missing.json"))
    parsed = records(run(tool, "check", "--json", *files).stdout)
    assert len(parsed) == len(files)
    for record in parsed:
        valid(schemas, "document-record", record)
    assert {record["ok"] for record in parsed} == {True, False}


def test_audit_records_and_summary_validate(schemas, tool):
    parsed = records(run(tool, "audit", "--json", "--stamps", EXAMPLES, DOCS).stdout)
    *documents, summary = parsed
    for record in documents:
        valid(schemas, "document-record", record)
        assert "seconds" in record and "odd_stamps" in record
    valid(schemas, "audit-summary", summary)


def test_dump_record_validates_with_its_table(schemas, tool):
    for name in ("v6_bracket.json", "v8_gearbox.json", "v10_pump.json", "v12_conveyor.envelope", "broken_v11.json"):
        record = records(run(tool, "dump", "--json", EXAMPLES / name).stdout)[0]
        valid(schemas, "document-record", record)
        assert set(record["table"]) == {"version", "root", "references"}
    gearbox = records(run(tool, "dump", "--json", EXAMPLES / "v8_gearbox.json").stdout)[0]["table"]
    assert [reference["kova_id"] for reference in gearbox["references"]] == ["GBX-100", "SHF-210", "GR-311"]
    assert gearbox["references"][0]["instances"][2] == {
        "kova_id": "GR-311.2", "plexo_id": "ins-02f86720c6bfa270", "stamp": "R2oiVpbPWig93zV+PE/T/RMMZjPuub4Y1w/gydJut+w=",
        "stamp_version": 1, "custom_data": "mirrored", "is_local": False, "ref_id": "GR-311"}


def test_dump_json_agrees_with_the_converted_document(tool, tmp_path):
    """The table of dump --json is the document convert writes, field by field."""
    converted = json.loads(run(tool, "convert", EXAMPLES / "v10_pump.json").stdout)
    table = records(run(tool, "dump", "--json", EXAMPLES / "v10_pump.json").stdout)[0]["table"]
    assert len(table["references"]) == len(converted["References"])
    for dumped, written in zip(table["references"], converted["References"]):
        assert dumped["kova_id"] == written["kOVAId"] and dumped["plexo_id"] == written["PlexoId"]
        assert f"V{dumped['stamp_version']}:{dumped['stamp']}" == written["KOVASynchroStamp"]
        assert dumped["custom_data"] == written.get("CustomData", "null")
        assert [i["ref_id"] for i in dumped["instances"]] == [i["RefId"] for i in written.get("Instances", [])]


def test_stamp_record_validates_and_holds_what_stamp_and_text_print(schemas, tool):
    attributes = EXAMPLES / "attributes.json"
    record = records(run(tool, "stamp", "--json", attributes, env=ENABLED).stdout)[0]
    valid(schemas, "stamp-record", record)
    assert record["stamp"] == run(tool, "stamp", attributes, env=ENABLED).stdout.strip()
    assert record["text"] == run(tool, "stamp", "--text", attributes, env=ENABLED).stdout[:-1]


def test_drift_records_validate(schemas, tool, tmp_path):
    attributes = tmp_path / "current.ndjson"
    attributes.write_text('{"kova_id": "GBX-100", "attributes": {"Mass": 2.5}}\n{"kova_id": "nobody", "attributes": {}}\n',
                          encoding="utf-8")
    *objects, summary = records(run(tool, "drift", "--json", EXAMPLES / "v8_gearbox.json", attributes, env=ENABLED).stdout)
    for record in objects:
        valid(schemas, "drift-record", record)
    valid(schemas, "drift-summary", summary)
    assert len(objects) == 1 + 1 + 6  # two lines, then the six objects no line named


def test_diff_records_validate_and_say_what_the_lines_say(schemas, tool, tmp_path):
    before = json.loads(run(tool, "convert", EXAMPLES / "v12_conveyor.json").stdout)
    after = json.loads(json.dumps(before))
    references = after["References"]
    moved = references[0]["Instances"].pop()                 # an instance moves to another reference
    references[1].setdefault("Instances", []).append(moved)
    references[2]["PlexoId"] += "-new"                          # a reference changes
    removed = references.pop()                                  # a reference goes
    old, new = tmp_path / "old.json", tmp_path / "new.json"
    old.write_text(json.dumps(before), encoding="utf-8")
    new.write_text(json.dumps(after), encoding="utf-8")
    result = run(tool, "diff", "--json", old, new)
    assert result.returncode == 1
    *changes, summary = records(result.stdout)
    for record in changes:
        valid(schemas, "diff-record", record)
    valid(schemas, "diff-summary", summary)
    lines = run(tool, "diff", old, new).stdout.splitlines()
    assert len(lines) == len(changes) + 1
    marks = {"removed": "-", "added": "+", "moved": ">", "changed": "~"}
    for line, record in zip(lines, changes):
        assert line.startswith(f"{marks[record['kind']]} {record['object']} {record['kova_id']}")
    assert {"kind": "removed", "object": "reference", "kova_id": removed["kOVAId"], "parent": None,
            "fields": {}} in changes
    move = next(record for record in changes if record["kind"] == "moved")
    assert move["kova_id"] == moved["kOVAId"]
    assert move["fields"] == {"parent": {"old": references[0]["kOVAId"], "new": references[1]["kOVAId"]}}
    change = next(record for record in changes if record["kind"] == "changed" and record["object"] == "reference")
    assert change["fields"]["PlexoId"] == {"old": before["References"][2]["PlexoId"], "new": references[2]["PlexoId"]}
    assert summary == {"summary": True, "added": 0, "removed": 1 + len(removed.get("Instances", [])), "moved": 1,
                       "changed": sum(1 for record in changes if record["kind"] == "changed")}


def test_diff_json_and_format_dot_exclude_each_other(tool):
    result = run(tool, "diff", "--json", "--format", "dot", EXAMPLES / "v8_gearbox.json", EXAMPLES / "v8_gearbox.json")
    assert result.returncode == 2
    same = run(tool, "diff", "--json", EXAMPLES / "v8_gearbox.json", EXAMPLES / "v8_gearbox.json")
    assert same.returncode == 0
    assert records(same.stdout) == [{"summary": True, "added": 0, "removed": 0, "moved": 0, "changed": 0}]
