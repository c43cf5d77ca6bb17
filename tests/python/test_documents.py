"""Reading and writing mapping documents."""

import json
import os
import pathlib
import subprocess
import sys

import pytest

import kovamapping
from conftest import (E_FAIL, INVALID_DATA, assembly, document_files, fields, kova_ids, make_table, python_check,
                      run_tool, tool_check)

EXAMPLE_DOCUMENTS = ["v6_bracket.json", "v8_gearbox.json", "v10_pump.json", "v12_conveyor.json",
                     "v12_conveyor.envelope"]


def test_a_written_table_reads_back_with_the_same_objects():
    table = make_table()
    copy = kovamapping.read(table.to_json())
    assert [(o.kova_id, o.plexo_id, o.stamp, o.stamp_version) for o in copy] == [
        ("R1", "P1", "s-R1", 2),
        ("I1", "Q1", "s-I1", 1),
    ]
    assert copy.version == 12


def test_a_refused_document_raises_error_with_the_readers_messages():
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read('{"version": 11, "References": [{"kOVAId": "a", "PlexoId": "p"}]}')
    assert raised.value.status == 0x80004005
    assert raised.value.messages == [
        "UNVALUATED MANDATORY FIELD IsLocal",
        "UNVALUATED MANDATORY FIELD KOVASynchroStamp",
    ]
    assert "0x80004005" in str(raised.value)
    assert isinstance(raised.value, ValueError)


def test_text_bytes_bytearray_memoryview_and_path_give_the_same_table(examples):
    path = examples / "v8_gearbox.json"
    data = path.read_bytes()
    expected = fields(kovamapping.read(path))
    assert expected, "the example holds objects"
    for source in (data.decode("utf-8"), data, bytearray(data), memoryview(data)):
        assert fields(kovamapping.read(source)) == expected, type(source).__name__


def test_a_str_is_always_the_documents_text_never_a_path(examples):
    path = examples / "v8_gearbox.json"
    assert len(kovamapping.read(path).references) == 3
    with pytest.raises(kovamapping.Error):
        kovamapping.read(str(path))  # the text "/.../v8_gearbox.json" is not JSON


@pytest.mark.parametrize("name", EXAMPLE_DOCUMENTS)
def test_each_example_reads_as_kova_mapping_check_reads_it(examples, name):
    path = examples / name
    assert python_check(path) == tool_check([path])[str(path)]


def test_the_version_of_a_table_is_the_version_of_its_document(examples):
    # The example documents are named after their version.
    for name in EXAMPLE_DOCUMENTS:
        expected = int(name[1:name.index("_")])
        assert kovamapping.read(examples / name).version == expected, name


@pytest.mark.parametrize("name", EXAMPLE_DOCUMENTS)
def test_to_json_writes_what_kova_mapping_convert_writes(examples, name):
    converted = run_tool("convert", "--plain", examples / name, binary=True)
    assert converted.returncode == 0, converted.stderr
    assert kovamapping.read(examples / name).to_json().encode("utf-8") == converted.stdout


def test_to_json_writes_compact_json_of_the_current_version_with_versioned_stamps():
    text = assembly().to_json()
    document = json.loads(text)
    assert document["version"] == 12
    assert "\n" not in text and ": " not in text
    assert document["References"][0]["KOVASynchroStamp"] == "V2:s-ASM"
    assert document["References"][0]["Instances"][0]["KOVASynchroStamp"] == "V1:s-GEAR.1"


def test_custom_data_null_is_left_out_of_the_document_and_read_back_as_null():
    table = make_table()
    table.references[0].instances[0].custom_data = "red, matt"
    document = json.loads(table.to_json())
    reference = document["References"][0]
    assert "CustomData" not in reference
    assert reference["Instances"][0]["CustomData"] == "red, matt"
    copy = kovamapping.read(table.to_json())
    assert copy.references[0].custom_data == "null"
    assert copy.references[0].instances[0].custom_data == "red, matt"


def test_an_object_without_a_stamp_is_written_without_one_so_the_reader_refuses_the_document():
    # The writer leaves out an empty stamp, and every object of a version 12 document needs one.
    table = kovamapping.Table()
    table.add_reference(kovamapping.Reference("A", "PA"))
    assert "KOVASynchroStamp" not in json.loads(table.to_json())["References"][0]
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(table.to_json())
    assert raised.value.messages == ["UNVALUATED MANDATORY FIELD KOVASynchroStamp"]


def test_a_stamp_version_of_one_digit_survives_a_round_trip():
    table = kovamapping.Table()
    for version in range(10):
        reference = kovamapping.Reference(f"R{version}", f"P{version}", "abc", is_local=True)
        reference.stamp_version = version
        table.add_reference(reference)
    copy = kovamapping.read(table.to_json())
    assert [(r.stamp, r.stamp_version) for r in copy.references] == [("abc", v) for v in range(10)]


def test_a_stamp_version_of_two_digits_is_read_back_by_its_first_digit():
    # The writer writes "V12:abc"; the reader reads one digit of a version and keeps the rest.
    reference = kovamapping.Reference("R", "P", "abc")
    reference.stamp_version = 12
    table = kovamapping.Table()
    table.add_reference(reference)
    assert json.loads(table.to_json())["References"][0]["KOVASynchroStamp"] == "V12:abc"
    copy = kovamapping.read(table.to_json()).references[0]
    assert (copy.stamp, copy.stamp_version) == (":abc", 1)


def test_to_json_with_compress_gives_the_envelope_of_the_plain_document():
    table = assembly()
    envelope = table.to_json(compress=True)
    plain = table.to_json()
    assert envelope.startswith(f"V12:{len(plain.encode('utf-8'))}:")
    assert kovamapping.unpack(envelope) == plain
    assert fields(kovamapping.read(envelope)) == fields(table)


def test_a_bom_before_the_document_is_accepted_in_every_form(test_data):
    path = test_data / "documents" / "bom_v12.json"
    data = path.read_bytes()
    assert data.startswith(b"\xef\xbb\xbf")
    expected = fields(kovamapping.read(path))
    assert expected[0][1] == "Réf-1"
    assert fields(kovamapping.read(data)) == expected
    assert fields(kovamapping.read(data.decode("utf-8"))) == expected


def test_write_writes_to_json_to_the_file(tmp_path):
    table = assembly()
    target = tmp_path / "assembly.json"
    table.write(target)
    assert target.read_text(encoding="utf-8") == table.to_json()
    table.write(str(tmp_path / "by-name.json"), compress=True)
    assert (tmp_path / "by-name.json").read_text(encoding="utf-8").startswith("V12:")
    assert fields(kovamapping.read(tmp_path / "by-name.json")) == fields(table)


def test_write_puts_a_new_file_in_place_of_the_old_one(tmp_path):
    # Written under another name and renamed: a hard link to the old file keeps the old text.
    target = tmp_path / "doc.json"
    target.write_text("old", encoding="utf-8")
    os.link(target, tmp_path / "old-link")
    assembly().write(target)
    assert (tmp_path / "old-link").read_text(encoding="utf-8") == "old"
    assert target.read_text(encoding="utf-8") == assembly().to_json()
    assert sorted(p.name for p in tmp_path.iterdir()) == ["doc.json", "old-link"]


def test_a_failed_write_leaves_the_existing_file_as_it_was(tmp_path):
    # The file size limit makes the write fail part way: the old file stays, no temporary is left.
    target = tmp_path / "doc.json"
    target.write_text("old document", encoding="utf-8")
    script = (
        "import resource, signal, sys, kovamapping\n"
        "signal.signal(signal.SIGXFSZ, signal.SIG_IGN)\n"
        "table = kovamapping.Table()\n"
        "for n in range(2000):\n"
        "    table.add_reference(kovamapping.Reference(f'R{n}', f'P{n}', 'V2:stamp', is_local=True))\n"
        "resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))\n"
        "try:\n"
        "    table.write(sys.argv[1])\n"
        "except OSError as error:\n"
        "    print('OSError', error.errno)\n"
    )
    result = subprocess.run([sys.executable, "-c", script, str(target)], capture_output=True, text=True, timeout=60)
    assert result.returncode == 0, result.stderr
    assert result.stdout.split() == ["OSError", "27"]  # EFBIG
    assert target.read_text(encoding="utf-8") == "old document"
    assert [p.name for p in tmp_path.iterdir()] == ["doc.json"]


def test_writing_over_a_directory_fails_and_leaves_nothing_beside_it(tmp_path):
    folder = tmp_path / "folder"
    folder.mkdir()
    with pytest.raises(OSError):
        assembly().write(folder)
    assert [p.name for p in tmp_path.iterdir()] == ["folder"]
    assert list(folder.iterdir()) == []


def test_a_file_named_dash_is_a_file_not_standard_input_or_output(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    assembly().write("-")
    assert (tmp_path / "-").read_text(encoding="utf-8") == assembly().to_json()
    assert fields(kovamapping.read(pathlib.Path("-"))) == fields(assembly())


def test_a_generated_version_12_document_converts_to_itself(tmp_path):
    generated = run_tool("generate", "--references", 12, "--instances", 4, "--seed", 7, binary=True)
    assert generated.returncode == 0, generated.stderr
    assert kovamapping.read(generated.stdout).to_json().encode("utf-8") == generated.stdout


@pytest.mark.parametrize("version", range(7, 13))
def test_a_generated_document_of_each_version_holds_what_was_asked(version):
    generated = run_tool("generate", "--references", 5, "--instances", 3, "--version", version, binary=True)
    assert generated.returncode == 0, generated.stderr
    table = kovamapping.read(generated.stdout)
    assert table.version == version
    assert len(table.references) == 5
    assert [len(r.instances) for r in table.references] == [3] * 5
    assert table.root.kova_id == "Assembly-1"
    assert kova_ids(table.references[1:]) == [r.kova_id for r in table.references if r.is_local]


def test_a_version_6_document_gives_one_reference_with_empty_custom_data(examples):
    table = kovamapping.read(examples / "v6_bracket.json")
    assert len(table.references) == 1
    assert [o.custom_data for o in table] == [""] * len(table)
    assert table.root.shares(table.references[0])  # its one reference is the root


def test_a_document_of_the_test_data_reads_as_the_tool_reads_it(test_data):
    paths = document_files(test_data / "documents")
    said = tool_check(paths)
    for path in paths:
        assert python_check(path) == said[str(path)], path.name


def test_reasons_of_a_document_without_logged_messages_are_the_statuss_meaning(test_data):
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(test_data / "documents" / "v12_second_root.json")
    assert raised.value.status == E_FAIL
    assert raised.value.messages == ["document rejected"]
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(test_data / "documents" / "malformed.json")
    assert raised.value.status == INVALID_DATA
