"""The compressed envelope: pack and unpack, as kova-mapping pack and unpack."""

import base64
import re
import zlib

import pytest

import kovamapping
from conftest import E_FAIL, INVALID_DATA, SIZE_OUT_OF_RANGE, SIZE_UNREADABLE, assembly, fields, run_tool

TEXTS = ["", "hello", '{"version":12,"References":[]}', "Motorträger \u00e9\U0001F527\n" * 50]


def parts(envelope: str):
    match = re.fullmatch(r"V(\d+):(\d+):([A-Za-z0-9+/=]*)", envelope)
    assert match, envelope[:40]
    return int(match.group(1)), int(match.group(2)), match.group(3)


@pytest.mark.parametrize("text", TEXTS)
def test_an_envelope_is_the_version_the_size_and_the_base64_of_a_zlib_stream(text):
    version, size, payload = parts(kovamapping.pack(text))
    assert version == 12
    assert size == len(text.encode("utf-8"))
    assert zlib.decompress(base64.b64decode(payload, validate=True)).decode("utf-8") == text


@pytest.mark.parametrize("text", TEXTS[1:])
def test_unpack_gives_back_the_packed_text(text):
    assert kovamapping.unpack(kovamapping.pack(text)) == text


def test_the_envelope_of_an_empty_text_has_size_0_which_unpack_refuses_as_the_tool_does(tmp_path):
    envelope = kovamapping.pack("")
    assert parts(envelope)[:2] == (12, 0)
    path = tmp_path / "empty.envelope"
    path.write_text(envelope, encoding="utf-8")
    result = run_tool("unpack", path)
    assert result.returncode == 1
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.unpack(envelope)
    assert raised.value.status == E_FAIL
    assert result.stderr.rstrip("\n").endswith(str(raised.value)[len("text: "):])


def test_pack_gives_what_kova_mapping_pack_gives(tmp_path):
    for number, text in enumerate(TEXTS[1:]):
        path = tmp_path / f"text{number}"
        path.write_bytes(text.encode("utf-8"))
        result = run_tool("pack", path)
        assert result.returncode == 0, result.stderr
        assert kovamapping.pack(text) == result.stdout


def test_unpack_gives_what_kova_mapping_unpack_gives(tmp_path, examples):
    path = examples / "v12_conveyor.envelope"
    result = run_tool("unpack", path)
    assert result.returncode == 0, result.stderr
    assert kovamapping.unpack(path.read_text(encoding="utf-8")) == result.stdout
    assert result.stdout == (examples / "v12_conveyor.json").read_text(encoding="utf-8")


def test_unpack_of_a_zlib_stream_made_here_gives_its_text():
    text = "made by zlib in Python, not by the library"
    data = text.encode("utf-8")
    envelope = f"V12:{len(data)}:" + base64.b64encode(zlib.compress(data)).decode("ascii")
    assert kovamapping.unpack(envelope) == text


def test_a_final_newline_makes_an_envelope_unreadable():
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.unpack(kovamapping.pack("text") + "\n")
    assert raised.value.status == INVALID_DATA


def test_unpack_of_a_text_without_an_envelope_is_refused():
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.unpack('{"version":12,"References":[]}')
    assert raised.value.status == E_FAIL
    assert "no envelope found" in str(raised.value)


@pytest.mark.parametrize("name", ["payload_digits.txt", "prefix_only.txt", "payload_base64_not_zlib.txt",
                                  "payload_not_base64.txt", "size_leading_zeros_zero.txt", "size_2147483648.txt",
                                  "one_digit_version_empty_size.txt", "size_huge.txt"])
def test_a_damaged_envelope_is_refused_as_kova_mapping_unpack_refuses_it(test_data, name):
    path = test_data / "hostile" / name
    result = run_tool("unpack", path)
    assert result.returncode == 1
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.unpack(path.read_text(encoding="utf-8"))
    # The tool names the file where the package names "text".
    assert f"kova-mapping: {path}: " + str(raised.value)[len("text: "):] == result.stderr.rstrip("\n")
    status = re.search(r"error (0x[0-9A-F]{8})", result.stderr)
    if status:
        assert raised.value.status == int(status.group(1), 16)


def test_reading_an_envelope_whose_size_field_is_too_large_or_unreadable(test_data):
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(test_data / "hostile" / "size_2147483648.txt")
    assert raised.value.status == SIZE_OUT_OF_RANGE
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read(test_data / "hostile" / "one_digit_version_empty_size.txt")
    assert raised.value.status == SIZE_UNREADABLE


def test_an_envelope_and_its_document_read_into_the_same_table(examples):
    plain = kovamapping.read(examples / "v12_conveyor.json")
    enveloped = kovamapping.read(examples / "v12_conveyor.envelope")
    assert fields(enveloped) == fields(plain)
    assert enveloped.version == plain.version == 12


def test_a_packed_document_reads_as_the_document():
    table = assembly()
    assert fields(kovamapping.read(kovamapping.pack(table.to_json()))) == fields(table)
