"""The installed JSON Schemas of the mapping document and kova-mapping schema: the files, the command,
and the schemas against the reader on the example and test documents and against the writer."""

import json
import pathlib

import pytest
from jsonschema import Draft202012Validator

from conftest import DOCS, EXAMPLES, HOSTILE, SOURCE
from schema_support import (UNDECIDED_REFUSALS, VERSIONS, check_records, left_to_reader, load_validators, refusal_of,
                            run, schema_file, schema_versions, strict_json)

# The test documents that the reader refuses although they are valid against the schema of their
# version, and why: the rules the schemas leave to the reader.
LEFT_TO_READER = {
    "v12_duplicate_instance.json": "identity",
    "v12_duplicate_reference.json": "identity",
    "v12_second_root.json": "root",
    "version_real.json": "version token",
    "version_exponent.json": "version token",
    "run_in_key.json": "envelope",
    "run_in_value.json": "envelope",
}


@pytest.fixture(scope="module")
def validators(prefix):
    return load_validators(prefix)


@pytest.fixture(scope="module")
def fixtures(tool):
    """Every example and test document with the tool's record of it."""
    paths = sorted(EXAMPLES.iterdir()) + sorted(DOCS.iterdir()) + sorted(HOSTILE.iterdir())
    return list(zip(paths, check_records(tool, paths)))


def document_text(tool, path: pathlib.Path) -> str:
    """The JSON text of a document the reader accepts: the file, or the text its envelope holds."""
    data = path.read_bytes()
    try:
        strict_json(data)
        return data.decode("utf-8")
    except ValueError:
        result = run(tool, "unpack", path)
        assert result.returncode == 0, result.stderr
        return result.stdout.decode("utf-8")


def test_every_version_has_a_draft_2020_12_schema_with_its_own_id(prefix):
    folder = schema_file(prefix, 12).parent
    assert sorted(path.name for path in folder.iterdir()) == sorted(
        f"mapping-document-v{version}.schema.json" for version in VERSIONS)
    ids = set()
    for version in VERSIONS:
        schema = json.loads(schema_file(prefix, version).read_text(encoding="utf-8"))
        Draft202012Validator.check_schema(schema)
        assert schema["$schema"] == "https://json-schema.org/draft/2020-12/schema"
        assert schema["$id"].endswith(f"/mapping-document-v{version}.schema.json")
        assert schema["properties"]["version"]["const"] == version
        assert schema["required"] == ["version", "References"]
        ids.add(schema["$id"])
    assert len(ids) == len(VERSIONS)


def test_installed_schemas_are_the_source_files(prefix):
    for version in VERSIONS:
        name = f"mapping-document-v{version}.schema.json"
        assert schema_file(prefix, version).read_bytes() == (SOURCE / "schemas" / name).read_bytes()


def test_schema_command_prints_each_installed_schema_byte_for_byte(tool, prefix, tmp_path):
    for version in VERSIONS:
        installed = schema_file(prefix, version).read_bytes()
        result = run(tool, "schema", version)
        assert result.returncode == 0 and result.stderr == b""
        assert result.stdout == installed
        output = tmp_path / f"v{version}.json"
        written = run(tool, "schema", version, "-o", output)
        assert written.returncode == 0 and written.stdout == b"" and written.stderr == b""
        assert output.read_bytes() == installed


@pytest.mark.parametrize("argument", ["5", "13", "0", "-1", "abc", "12.0", "0xc", "012", "+12", " 12", ""])
def test_schema_command_refuses_a_version_without_a_schema_as_a_usage_error(tool, tmp_path, argument):
    output = tmp_path / "schema.json"
    output.write_text("kept")
    result = run(tool, "schema", argument, "-o", output)
    assert result.returncode == 2
    assert result.stdout == b""
    lines = result.stderr.decode("utf-8").splitlines()
    assert len(lines) == 1 and lines[0].startswith("kova-mapping: ")
    assert "(run kova-mapping schema --help)" in lines[0]
    assert output.read_text() == "kept"
    if argument != "-1":  # an option to the command line, reported as such
        assert lines[0].startswith(f'kova-mapping: VERSION: "{argument}" is not a mapping document version (6 to 12)')


def test_schema_command_needs_exactly_one_version(tool):
    for arguments in ([], ["6", "7"]):
        result = run(tool, "schema", *arguments)
        assert result.returncode == 2 and result.stdout == b""
        assert len(result.stderr.decode("utf-8").splitlines()) == 1


def test_every_schema_says_what_it_leaves_to_the_reader(prefix):
    for version in VERSIONS:
        schema = json.loads(schema_file(prefix, version).read_text(encoding="utf-8"))
        description = schema["description"]
        words = ["same Plexo id", "integer token", "envelope prefix", "stays the judge"]
        if version > 6:  # a version 6 document holds one reference, the root
            words += ["same kOVA id", "the root"]
        for word in words:
            assert word in description, (version, word)
        stamp = schema["$defs"]["reference"]["properties"]["KOVASynchroStamp"]["description"]
        assert "its form is not checked" in stamp


def test_every_example_and_test_document_the_reader_accepts_validates(tool, validators, fixtures):
    accepted = [(path, record) for path, record in fixtures if record["ok"]]
    assert len(accepted) >= 20
    for path, record in accepted:
        document = strict_json(document_text(tool, path))
        assert schema_versions(validators, document) == [record["version"]], path.name


def test_every_test_document_refused_for_a_reason_a_schema_states_is_refused_by_it(validators, fixtures):
    decided = 0
    not_json = 0
    left = {}
    for path, record in fixtures:
        if record["ok"]:
            continue
        try:
            document = strict_json(path.read_bytes())
        except ValueError:
            not_json += 1  # not a JSON value: no schema is asked
            continue
        versions = schema_versions(validators, document)
        if path.name in LEFT_TO_READER:
            assert len(versions) == 1, path.name
            reason = left_to_reader(path.read_bytes().decode("utf-8"), document)
            assert reason == LEFT_TO_READER[path.name]
            allowed = UNDECIDED_REFUSALS[reason]
            assert allowed is None or refusal_of(record) in allowed, (path.name, record)
            left[path.name] = reason
        else:
            assert versions == [], (path.name, record["messages"])
            decided += 1
    assert set(left) == set(LEFT_TO_READER)
    assert decided >= 45 and not_json >= 20


def written(tool, source: pathlib.Path, tmp_path: pathlib.Path, env=None, compress=False) -> pathlib.Path:
    """The document the library's writer makes of a document (convert), opened when it is an envelope."""
    target = tmp_path / (source.stem + (".envelope" if compress else ".converted.json"))
    result = run(tool, "convert", source, "-o", target, *(["--compress"] if compress else []), env=env)
    assert result.returncode == 0, result.stderr
    if compress:
        opened = run(tool, "unpack", target)
        assert opened.returncode == 0, opened.stderr
        target = target.with_suffix(".opened.json")
        target.write_bytes(opened.stdout)
    return target


def generated(tool, tmp_path, version, references, instances, seed) -> pathlib.Path:
    path = tmp_path / f"g{version}-{references}-{instances}-{seed}.json"
    result = run(tool, "generate", "--references", references, "--instances", instances, "--version", version,
                 "--seed", seed, "-o", path)
    assert result.returncode == 0, result.stderr
    return path


def reshaped(source: pathlib.Path, name: str, change) -> pathlib.Path:
    document = json.loads(source.read_text(encoding="utf-8"))
    change(document)
    target = source.with_name(name)
    target.write_text(json.dumps(document, ensure_ascii=False), encoding="utf-8")
    return target


def test_the_writer_output_of_tables_of_every_shape_validates_against_version_12(tool, validators, tmp_path):
    sources = []
    for version in VERSIONS:
        for references, instances in ((0, 0), (1, 0), (1, 1), (1, 4), (2, 2), (3, 1), (6, 3)):
            if version == 6 and references > 1:
                continue
            for seed in (1, 2024):
                sources.append(generated(tool, tmp_path, version, references, instances, seed))
    base = generated(tool, tmp_path, 12, 4, 2, 5)

    def all_local(document):
        for reference in document["References"]:
            reference["IsLocal"] = True

    def unusual_texts(document):
        for number, reference in enumerate(document["References"]):
            reference["kOVAId"] = ["", "Réf \"quoted\"", "tab\tand\nnewline", "日本-\u0000"][number]
            reference["CustomData"] = ["", "null", "{\"a\": [1, 2]}", "\\"][number]
            for instance in reference.get("Instances", []):
                instance.pop("CustomData", None)

    def stamps_of_every_form(document):
        forms = ["V0KSS:c3RhbXA=", "V7:c3RhbXA=", "c3RhbXA=", "V12:c3RhbXA=", "CESv1(x'01')"]
        objects = [*document["References"], *(i for r in document["References"] for i in r.get("Instances", []))]
        for number, item in enumerate(objects):
            item["KOVASynchroStamp"] = forms[number % len(forms)]
            item["CEStamp"] = "CESv1(x'0a1b')"

    sources += [reshaped(base, "no-root.json", all_local), reshaped(base, "texts.json", unusual_texts),
                reshaped(base, "stamp-forms.json", stamps_of_every_form)]
    sources += [EXAMPLES / "v6_bracket.json", EXAMPLES / "v8_gearbox.json", EXAMPLES / "v10_pump.json",
                EXAMPLES / "v12_conveyor.envelope"] + sorted(DOCS.glob("v*_valid.json"))
    outputs = [written(tool, source, tmp_path) for source in sources]
    outputs += [written(tool, source, tmp_path, compress=True) for source in (base, EXAMPLES / "v8_gearbox.json")]
    records = check_records(tool, outputs)
    assert len(records) == len(outputs) > 100
    shapes = set()
    for output, record in zip(outputs, records):
        text = output.read_text(encoding="utf-8")
        document = strict_json(text)
        assert schema_versions(validators, document) == [12], output.name
        # Nothing that the schema leaves to the reader refuses it either: the written document reads back.
        assert left_to_reader(text, document) is None, output.name
        assert record["ok"], (output.name, record)
        references = document["References"]
        shapes.add((min(len(references), 2), min(max((len(r.get("Instances", [])) for r in references), default=0), 2),
                    sum(not r["IsLocal"] for r in references)))
    # Empty tables, a root alone, roots with instances, several references, tables without a root.
    assert {(0, 0, 0), (1, 0, 1), (1, 1, 1), (1, 2, 1), (2, 2, 1), (2, 2, 0)} <= shapes


def test_the_writer_output_validates_against_version_11_when_it_writes_version_11(tool, validators, tmp_path):
    for version in (6, 9, 12):
        source = generated(tool, tmp_path, version, 1 if version == 6 else 3, 2, 9)
        output = written(tool, source, tmp_path, env={"RollBackMappingVersion": "1"})
        assert schema_versions(validators, strict_json(output.read_bytes())) == [11]


def test_the_schema_and_the_reader_agree_on_what_the_writer_makes_of_a_stamp_without_text(tool, validators,
                                                                                         tmp_path):
    # "V1:" reads as an empty stamp of version 1; whatever the writer makes of it, the schema of
    # version 12 and the reader must judge it alike.
    source = tmp_path / "prefix-only.json"
    source.write_text(json.dumps({"version": 12, "References": [
        {"kOVAId": "A", "PlexoId": "PA", "IsLocal": False, "KOVASynchroStamp": "V1:"}]}))
    [before] = check_records(tool, [source])
    assert before["ok"] and schema_versions(validators, strict_json(source.read_text())) == [12]
    target = tmp_path / "prefix-only.converted.json"
    converted = run(tool, "convert", source, "-o", target)
    assert converted.returncode == 0, converted.stderr
    [after] = check_records(tool, [target])
    assert (schema_versions(validators, strict_json(target.read_text())) == [12]) == after["ok"]


REFERENCE = {"kOVAId": "A", "PlexoId": "PA", "IsLocal": False, "KOVASynchroStamp": "V2:c3RhbXA="}
INSTANCE = {"kOVAId": "A.1", "PlexoId": "PA1", "IsLocal": False, "RefId": "B", "KOVASynchroStamp": "V1:c3RhbXA="}
CE = "CESv1(x'01')"


def v12(*references, **root):
    return json.dumps({"version": 12, "References": list(references), **root}, ensure_ascii=False)


def document(version, references, **root):
    return json.dumps({"version": version, "References": references, **root}, ensure_ascii=False)


def but(base, **changes):
    changed = {**base, **changes}
    return {key: value for key, value in changed.items() if value is not ...}


# Documents on the edges of the rules: (name, text, valid against a schema, read by the reader).
EDGES = [
    ("unknown keys at every level", v12(but(REFERENCE, Extra=[1], Instances=[but(INSTANCE, Instances=5, More={})]),
                                        Comment="x", RefInstances=3), True, True),
    ("custom data of any type", v12(but(REFERENCE, CustomData=5, Instances=[but(INSTANCE, CustomData=None)])),
     True, True),
    ("instances absent", v12(REFERENCE), True, True),
    ("instances null", v12(but(REFERENCE, Instances=None)), False, False),
    ("instances an object", v12(but(REFERENCE, Instances={"A.1": INSTANCE})), False, False),
    ("an instance that is not an object", v12(but(REFERENCE, Instances=[INSTANCE, "A.2"])), False, False),
    ("an empty stamp beside a CE stamp", v12(but(REFERENCE, KOVASynchroStamp="", CEStamp=CE)), True, True),
    ("an empty stamp alone", v12(but(REFERENCE, KOVASynchroStamp="")), False, False),
    ("an empty stamp beside a CE stamp that is not text", v12(but(REFERENCE, KOVASynchroStamp="", CEStamp=[CE])),
     False, False),
    ("a stamp that is only a prefix", v12(but(REFERENCE, KOVASynchroStamp="V1:")), True, True),
    ("a stamp of any text", v12(but(REFERENCE, KOVASynchroStamp="not base64 at all: \u00e9")), True, True),
    ("the stamp key absent in version 12", v12(but(REFERENCE, KOVASynchroStamp=..., CEStamp=CE)), False, False),
    ("IsLocal as text", v12(but(REFERENCE, IsLocal="false")), False, False),
    ("an empty kOVA id", v12(but(REFERENCE, kOVAId="")), True, True),
    ("no root", v12(but(REFERENCE, IsLocal=True)), True, True),
    ("version 8: a stamp that is not text beside a CE stamp",
     document(8, [but(REFERENCE, KOVASynchroStamp=5, CEStamp=CE)]), True, True),
    ("version 8: a stamp that is not text alone", document(8, [but(REFERENCE, KOVASynchroStamp=5)]), False, False),
    ("version 8: no stamp key but a CE stamp", document(8, [but(REFERENCE, KOVASynchroStamp=..., CEStamp=CE)]),
     True, True),
    ("version 9: an instance without IsSetKSS",
     document(9, [but(REFERENCE, IsSetKSS=True, Instances=[INSTANCE])]), True, True),
    ("version 9: IsSetKSS as text", document(9, [but(REFERENCE, IsSetKSS="true")]), False, False),
    ("version 10: an instance with IsSetKSS null",
     document(10, [but(REFERENCE, IsSetKSS=False, Instances=[but(INSTANCE, IsSetKSS=None)])]), False, False),
    ("version 11: IsSetKSS of any type", document(11, [but(REFERENCE, IsSetKSS="yes")]), True, True),
    ("version 6: instances not read without a reference", document(6, {}, RefInstances=5), True, True),
    ("version 6: instances not an object", document(6, {"A": {"PlexoId": "PA", "CEStamp": CE}}, RefInstances=[]),
     False, False),
    ("version 6: keys of later versions ignored",
     document(6, {"A": {"PlexoId": "PA", "KOVASynchroStamp": "s", "kOVAId": 5, "IsLocal": "x", "CustomData": []}},
              RefInstances={"A.1": {"PlexoId": "P1", "RefId": "B", "CEStamp": CE, "IsLocal": 0}}), True, True),
    ("version 6: an instance without a name",
     document(6, {"A": {"PlexoId": "PA", "CEStamp": CE}},
              RefInstances={"": {"PlexoId": "P1", "RefId": "B", "CEStamp": CE}}), False, False),
    ("version 6: a reference that is not an object", document(6, {"A": "PA"}), False, False),
    ("version 6: the references as an array", document(6, [{"PlexoId": "PA", "CEStamp": CE}]), False, False),
    ("version 12: the references as an object", document(12, {"A": REFERENCE}), False, False),
    ("a version as text", document("12", [REFERENCE]), False, False),
    ("a version beyond 12", document(13, [REFERENCE]), False, False),
    ("a version below 6", document(5, [REFERENCE]), False, False),
    ("a version that is a boolean", document(True, [REFERENCE]), False, False),
    ("an empty object", "{}", False, False),
    ("an array", "[]", False, False),
    # Left to the reader: the schema cannot tell these from valid documents.
    ("a version written as a real number", '{"version": 12.0, "References": []}', True, False),
    ("two references with empty kOVA ids", v12(but(REFERENCE, kOVAId=""), but(REFERENCE, kOVAId="", PlexoId="PB",
                                                                           IsLocal=True)), True, False),
    ("two instances with the same Plexo id",
     v12(but(REFERENCE, Instances=[INSTANCE, but(INSTANCE, kOVAId="A.2")])), True, False),
    ("a second root", v12(REFERENCE, but(REFERENCE, kOVAId="B", PlexoId="PB")), True, False),
]


@pytest.mark.parametrize("name,text,schema_valid,reader_ok", EDGES, ids=[edge[0] for edge in EDGES])
def test_documents_on_the_edges_of_the_rules(tool, validators, tmp_path, name, text, schema_valid, reader_ok):
    path = tmp_path / "edge.json"
    path.write_text(text, encoding="utf-8")
    [record] = check_records(tool, [path])
    assert record["ok"] == reader_ok, record
    document = strict_json(text)
    assert bool(schema_versions(validators, document)) == schema_valid
    if schema_valid and not reader_ok:
        reason = left_to_reader(text, document)
        assert reason is not None and refusal_of(record) in UNDECIDED_REFUSALS[reason], (reason, record)
    elif schema_valid:
        assert left_to_reader(text, document) is None
