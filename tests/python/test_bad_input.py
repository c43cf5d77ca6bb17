"""Bad input: wrong types, bytes that are not UTF-8, files that are not there, hostile documents,
objects used after their removal, texts without a UTF-8 form."""

import json

import pytest

import kovamapping
from conftest import INVALID_DATA, assembly, document_files, fields, kova_ids, python_check, tool_check

DOCUMENT = b'{"version":12,"References":[{"kOVAId":"R","PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V1:s"}]}'


@pytest.mark.parametrize("source", [42, None, 1.5, ["{}"], object()])
def test_read_of_anything_but_text_bytes_or_a_path_raises_type_error(source):
    with pytest.raises(TypeError):
        kovamapping.read(source)


def test_bytes_that_are_not_utf8_raise_unicode_decode_error_at_the_first_bad_byte():
    data = DOCUMENT[:20] + b"\xc3\x28" + DOCUMENT[20:]
    with pytest.raises(UnicodeDecodeError) as raised:
        kovamapping.read(data)
    with pytest.raises(UnicodeDecodeError) as expected:
        data.decode("utf-8")
    assert (raised.value.start, raised.value.encoding) == (expected.value.start, "utf-8")
    with pytest.raises(UnicodeDecodeError):
        kovamapping.read(bytearray(b"\xff\xfe{}"))


def test_a_missing_file_raises_file_not_found_error(tmp_path):
    with pytest.raises(FileNotFoundError) as raised:
        kovamapping.read(tmp_path / "missing.json")
    assert raised.value.filename == tmp_path / "missing.json"


def test_a_directory_raises_is_a_directory_error(tmp_path):
    with pytest.raises(IsADirectoryError):
        kovamapping.read(tmp_path)


def test_writing_into_a_missing_folder_raises_file_not_found_error(tmp_path):
    with pytest.raises(FileNotFoundError):
        assembly().write(tmp_path / "no such folder" / "doc.json")


def test_writing_to_the_empty_path_raises_file_not_found_error_and_prints_nothing(capfd):
    with pytest.raises(FileNotFoundError):
        assembly().write("")
    assert capfd.readouterr() == ("", "")


def test_a_path_holding_a_nul_raises_value_error_rather_than_naming_another_file(tmp_path):
    # "doc" exists: a path cut at its NUL would name it.
    (tmp_path / "doc").write_bytes(DOCUMENT)
    named = tmp_path / "doc\x00.json"
    with pytest.raises(ValueError):
        open(named)  # what Python itself says
    with pytest.raises(ValueError):
        kovamapping.read(named)
    with pytest.raises(ValueError):
        list(kovamapping.audit([named]))
    with pytest.raises(ValueError):
        list(kovamapping.audit([str(named)]))
    with pytest.raises(ValueError):
        assembly().write(tmp_path / "new\x00.json")
    assert sorted(p.name for p in tmp_path.iterdir()) == ["doc"]


def test_a_file_that_is_not_utf8_raises_error_with_status_invalid_data(tmp_path):
    path = tmp_path / "latin1.json"
    path.write_bytes(DOCUMENT.replace(b'"R"', b'"R\xe9"'))
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(path)
    offset = DOCUMENT.index(b'"R"') + 2
    assert raised.value.status == INVALID_DATA
    assert raised.value.messages == [f"{path}: not UTF-8 (invalid byte at offset {offset})"]


def test_a_strided_or_reversed_memoryview_is_read_in_its_own_order():
    reversed_view = memoryview(DOCUMENT[::-1])[::-1]
    assert fields(kovamapping.read(reversed_view)) == fields(kovamapping.read(DOCUMENT))
    spread = bytes(byte for pair in zip(DOCUMENT, b"#" * len(DOCUMENT)) for byte in pair)
    every_other = memoryview(spread)[::2]
    assert bytes(every_other) == DOCUMENT
    assert fields(kovamapping.read(every_other)) == fields(kovamapping.read(DOCUMENT))
    [record] = kovamapping.audit([("reversed", reversed_view)])
    assert record.ok and record.root == "R"


@pytest.mark.parametrize("call", [
    lambda: kovamapping.read("\ud800"),
    lambda: kovamapping.Reference("\ud800", "P"),
    lambda: kovamapping.Instance("I", "Q", "\udfff"),
    lambda: setattr(kovamapping.Reference("R", "P"), "stamp", "V2:\udc00"),
    lambda: setattr(kovamapping.Reference("R", "P"), "custom_data", "\ud83d"),
    lambda: assembly().find(kova_id="\ud800"),
    lambda: kovamapping.pack("\ud800"),
    lambda: kovamapping.unpack("\ud800"),
    lambda: kovamapping.versioned("\ud800", 1),
    lambda: kovamapping.compute_stamp({"\ud800": 1}),
    lambda: kovamapping.compute_stamp({"a": "\ud800"}),
    lambda: kovamapping.compute_stamp({"a": ["ok", "\ud800"]}),
], ids=["read", "reference", "instance", "stamp", "custom_data", "find", "pack", "unpack", "versioned",
        "stamp name", "stamp value", "stamp list"])
def test_a_text_with_a_lone_surrogate_raises_unicode_encode_error(call):
    with pytest.raises(UnicodeEncodeError):
        call()


def test_a_lone_surrogate_assigned_to_a_field_leaves_the_field_as_it_was():
    reference = kovamapping.Reference("R", "P", "V2:abc")
    with pytest.raises(UnicodeEncodeError):
        reference.kova_id = "R\ud800"
    assert (reference.kova_id, reference.stamp, reference.stamp_version) == ("R", "abc", 2)


def test_hostile_documents_never_crash_and_read_as_the_tool_reads_them(test_data):
    paths = document_files(test_data / "hostile")
    said = tool_check(paths)
    for path in paths:
        assert python_check(path) == said[str(path)], path.name


def test_hostile_documents_as_bytes_give_a_table_or_an_error(test_data):
    for path in document_files(test_data / "hostile"):
        data = path.read_bytes()
        try:
            kovamapping.read(data)
        except kovamapping.Error as error:
            assert error.status >= 0x80000000 and error.messages, path.name
        except UnicodeDecodeError:
            with pytest.raises(UnicodeDecodeError):
                data.decode("utf-8")
        else:
            assert python_check(path)[1].startswith("ok"), path.name


@pytest.mark.parametrize("custom_data", ["V9:1:", "see V2:10:notes", "rev V12:345: x"])
def test_a_value_holding_an_envelope_prefix_is_written_but_does_not_read_back(tmp_path, custom_data):
    # The reader opens an envelope wherever "V<digits>:<digits>:" stands, even inside a value.
    table = kovamapping.Table()
    table.add_reference(kovamapping.Reference("R", "P", "V1:s", custom_data=custom_data))
    path = tmp_path / "doc.json"
    table.write(path)
    assert json.loads(path.read_text(encoding="utf-8"))["References"][0]["CustomData"] == custom_data
    said = tool_check([path])[str(path)]
    assert said[1].startswith("error")
    assert python_check(path) == said


def test_a_nul_escaped_in_an_id_is_kept(test_data):
    table = kovamapping.read(test_data / "hostile" / "nul_escaped_in_id.json")
    assert table.root.kova_id == "R\x001"


def test_a_removed_reference_given_as_under_is_refused():
    table = assembly()
    gear = table.references[1]
    table.remove(gear)
    with pytest.raises(kovamapping.Error) as raised:
        table.add_instance(kovamapping.Instance("X.1", "Q-X", "X"), under=gear)
    assert raised.value.messages == ["the reference is not in the table"]
    with pytest.raises(kovamapping.Error):
        table.remove(gear.instances[0], under=gear)
    assert kova_ids(table) == ["ASM", "GEAR.1", "GEAR.2", "PIN", "BOLT.1"]


def test_a_removed_object_can_still_be_read_and_changed_without_changing_the_table():
    table = assembly()
    bolt = table.find(kova_id="BOLT.1")
    table.remove(bolt)
    bolt.kova_id = "GEAR.1"  # would clash with an instance under ASM, but it is in no table now
    assert bolt.kova_id == "GEAR.1"
    assert kova_ids(table) == ["ASM", "GEAR.1", "GEAR.2", "GEAR", "PIN.1", "PIN"]


def test_removing_with_under_that_is_not_a_reference_raises_type_error():
    table = assembly()
    instance = table.references[0].instances[0]
    for under in (instance, "ASM", 42):
        with pytest.raises(TypeError):
            table.remove(instance, under=under)
    with pytest.raises(TypeError):
        table.remove(table.references[0], under=table.references[0])  # under is for instances
    with pytest.raises(TypeError):
        table.remove("ASM")
    assert len(table) == 7


def test_adding_an_object_of_the_wrong_kind_raises_type_error():
    table = assembly()
    with pytest.raises(TypeError):
        table.add_reference(kovamapping.Instance("I", "Q", "R"))
    with pytest.raises(TypeError):
        table.add_instance(kovamapping.Reference("R", "Q"), under=table.references[0])
    with pytest.raises(TypeError):
        table.add_instance(kovamapping.Instance("I", "Q", "R"), under=table.references[0].instances[0])
    assert len(table) == 7


def test_clearing_the_table_while_iterating_it_finishes_the_snapshot():
    table = assembly()
    seen = []
    for item in table:
        seen.append(item.kova_id)
        table.clear()
    assert seen == kova_ids(assembly())
    assert len(table) == 0


def test_a_view_of_a_table_stays_usable_after_the_table_is_dropped():
    references = assembly().references  # the view keeps its table alive
    assert kova_ids(references) == ["ASM", "GEAR", "PIN"]


@pytest.mark.parametrize("text", ["", "   ", "null", "[]", '"text"', "{", '{"version": 12}', '{"version": 12.5}'])
def test_documents_that_are_not_mapping_documents_raise_error(text):
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(text)
    assert raised.value.status >= 0x80000000
    assert raised.value.messages
