"""Synchro stamps: computation from attribute values, and the stamp text forms."""

import base64
import datetime
import hashlib
import json
import os
import pathlib
import subprocess
import sys
import time

import pytest

import kovamapping
from conftest import E_FAIL, run_tool

UTC = datetime.timezone.utc


def digest_of(text: str) -> str:
    """The stamp of a stamp text: base64 of the SHA-256 digest of as many leading UTF-8 bytes as the
    text has characters (how existing stamps were made)."""
    return base64.b64encode(hashlib.sha256(text.encode("utf-8")[:len(text)]).digest()).decode("ascii")


def tool_stamp(tmp_path, attributes_file_text: str, *options) -> str:
    path = tmp_path / "attributes.json"
    path.write_text(attributes_file_text, encoding="utf-8")
    result = run_tool("stamp", *options, path)
    assert result.returncode == 0, result.stderr
    assert result.stdout.endswith("\n")
    return result.stdout[:-1]


# The example attribute file without the two kinds a dict cannot give (an enumeration value and an
# unset real), and the same attributes as Python values.
EXAMPLE_FILE = """{"Name": "Housing", "PartNumber": "HSG-4410", "Mass": 2.5, "Quantity": 4, "Visible": true,
 "Material": null, "Created": {"time": 1700000000}, "HoleDiameters": [6.5, 8.5, 10.5]}"""
EXAMPLE = {"Name": "Housing", "PartNumber": "HSG-4410", "Mass": 2.5, "Quantity": 4, "Visible": True,
           "Material": None, "Created": datetime.datetime(2023, 11, 14, 22, 13, 20, tzinfo=UTC),
           "HoleDiameters": [6.5, 8.5, 10.5]}


def test_compute_stamp_gives_the_stamp_of_kova_mapping_stamp(tmp_path):
    assert kovamapping.compute_stamp(EXAMPLE) == tool_stamp(tmp_path, EXAMPLE_FILE)


def test_compute_stamp_text_gives_the_text_of_kova_mapping_stamp_text(tmp_path):
    assert kovamapping.compute_stamp(EXAMPLE, text=True) == tool_stamp(tmp_path, EXAMPLE_FILE, "--text")


def test_the_stamp_text_lists_each_attribute_in_ascending_name_order():
    text = kovamapping.compute_stamp({"b": "2", "a": "1", "C": "3", "é": "4"}, text=True)
    assert text == "C:SET:3a:SET:1b:SET:2é:SET:4"


def test_the_stamp_text_shows_each_kind_of_value():
    text = kovamapping.compute_stamp({"s": "x", "i": -7, "r": 3.0, "t": True, "f": False, "u": None}, text=True)
    assert text == "f:SET:FALSEi:SET:-7r:SET:3.0s:SET:xt:SET:TRUEu:UNSET:"


def test_list_elements_are_joined_by_the_bell_character():
    assert kovamapping.compute_stamp({"l": ["a", "b", "c"]}, text=True) == "l:SET:a\u0007b\u0007c"
    assert kovamapping.compute_stamp({"l": (1, 2)}, text=True) == "l:SET:1\u00072"


def test_a_time_is_shown_in_milliseconds_since_1970_utc():
    moment = datetime.datetime(2023, 11, 14, 22, 13, 20, tzinfo=UTC)
    assert kovamapping.compute_stamp({"t": moment}, text=True) == "t:SET:1700000000000"


def test_a_naive_datetime_is_taken_as_utc():
    naive = datetime.datetime(2023, 11, 14, 22, 13, 20)
    aware = naive.replace(tzinfo=UTC)
    assert kovamapping.compute_stamp({"t": naive}) == kovamapping.compute_stamp({"t": aware})


class NoOffset(datetime.tzinfo):
    """A time zone that knows no offset: its datetimes are naive."""

    def utcoffset(self, moment):
        return None

    def dst(self, moment):
        return None


def test_a_naive_datetime_is_taken_as_utc_whatever_the_local_time_zone(monkeypatch):
    monkeypatch.setenv("TZ", "Asia/Tokyo")
    time.tzset()
    try:
        naive = datetime.datetime(2023, 11, 14, 22, 13, 20)
        assert kovamapping.compute_stamp({"t": naive}, text=True) == "t:SET:1700000000000"
        assert kovamapping.compute_stamp({"t": naive.replace(tzinfo=NoOffset())}, text=True) == "t:SET:1700000000000"
    finally:
        monkeypatch.undo()
        time.tzset()


def test_an_aware_datetime_counts_by_its_timestamp():
    paris = datetime.timezone(datetime.timedelta(hours=1))
    moment = datetime.datetime(2023, 11, 14, 23, 13, 20, tzinfo=paris)  # 22:13:20 UTC
    assert kovamapping.compute_stamp({"t": moment}, text=True) == "t:SET:1700000000000"


def test_a_datetime_is_rounded_down_to_whole_seconds():
    base = datetime.datetime(2023, 11, 14, 22, 13, 20, tzinfo=UTC)
    assert kovamapping.compute_stamp({"t": base.replace(microsecond=999999)}, text=True) == "t:SET:1700000000000"
    before_1970 = datetime.datetime(1969, 12, 31, 23, 59, 59, 500000, tzinfo=UTC)
    assert kovamapping.compute_stamp({"t": before_1970}, text=True) == "t:SET:-1000"


def test_a_datetime_is_rounded_down_exactly_in_far_years():
    # 253402300799 seconds is 9999-12-31 23:59:59 UTC; a float timestamp would round this up.
    last = datetime.datetime(9999, 12, 31, 23, 59, 59, 999999, tzinfo=UTC)
    assert kovamapping.compute_stamp({"t": last}, text=True) == "t:SET:253402300799000"


def test_the_stamp_is_the_base64_sha256_digest_of_the_stamp_text():
    for attributes in (EXAMPLE, {"Name": "Motorträger-1030"}, {}):
        text = kovamapping.compute_stamp(attributes, text=True)
        assert kovamapping.compute_stamp(attributes) == digest_of(text)


def test_32_bit_integers_are_accepted_to_their_limits():
    text = kovamapping.compute_stamp({"a": -(2**31), "b": 2**31 - 1}, text=True)
    assert text == "a:SET:-2147483648b:SET:2147483647"


@pytest.mark.parametrize("value", [2**31, -(2**31) - 1, 10**30])
def test_an_integer_beyond_32_bits_is_refused(value):
    with pytest.raises(ValueError):
        kovamapping.compute_stamp({"a": value})
    with pytest.raises(ValueError):
        kovamapping.compute_stamp({"a": [1, value]})


@pytest.mark.parametrize("value", [float("nan"), float("inf"), -float("inf")])
def test_a_number_that_is_not_finite_is_refused(value):
    with pytest.raises(ValueError):
        kovamapping.compute_stamp({"a": value})


@pytest.mark.parametrize("value", [[[1]], [1, "x"], [1, 2.0], [True, 1], [None], ["a", None]])
def test_a_nested_or_mixed_list_or_one_holding_none_is_refused(value):
    with pytest.raises(TypeError):
        kovamapping.compute_stamp({"a": value})


@pytest.mark.parametrize("value", [{"time": 1}, b"bytes", {1, 2}, object(), datetime.date(2023, 1, 1)])
def test_values_of_other_types_are_refused(value):
    with pytest.raises(TypeError):
        kovamapping.compute_stamp({"a": value})


def test_attributes_are_a_dict_of_names_to_values():
    with pytest.raises(TypeError):
        kovamapping.compute_stamp([("a", 1)])
    with pytest.raises(TypeError):
        kovamapping.compute_stamp({1: "a"})


def test_stamp_computation_is_refused_when_the_switch_was_not_set():
    package_parent = pathlib.Path(kovamapping.__file__).resolve().parent.parent
    environment = {k: v for k, v in os.environ.items() if k != "DONOTUSE_ENABLEKSSGEN"}
    environment["PYTHONPATH"] = str(package_parent)
    script = (
        "import kovamapping\n"
        "try:\n"
        "    kovamapping.compute_stamp({'a': 1})\n"
        "except kovamapping.Error as error:\n"
        "    print(hex(error.status), error)\n"
        "else:\n"
        "    print('computed')\n"
    )
    result = subprocess.run([sys.executable, "-c", script], env=environment, capture_output=True, text=True,
                            timeout=60)
    assert result.returncode == 0, result.stderr
    assert result.stdout.startswith(hex(E_FAIL) + " ")
    assert "DONOTUSE_ENABLEKSSGEN" in result.stdout


def test_versioned_puts_the_version_prefix_before_the_stamp():
    assert kovamapping.versioned("abc", 2) == "V2:abc"
    assert kovamapping.versioned("", 12) == "V12:"
    assert kovamapping.versioned("abc", -1) == "V-1:abc"


@pytest.mark.parametrize("text, version", [("V2:abc", 2), ("V0:abc", 0), ("V0KSS:abc", 0), ("V12:abc", 1),
                                           ("abc", -1), ("V:abc", -1), ("", -1), ("v2:abc", -1)])
def test_stamp_version_reads_the_first_digit_of_the_prefix(text, version):
    assert kovamapping.stamp_version(text) == version


@pytest.mark.parametrize("text, stamp", [("V2:abc", "abc"), ("V12:abc", ":abc"), ("V0KSS:abc", "abc"),
                                         ("abc", "abc"), ("V:abc", "V:abc"), ("V2:", "")])
def test_strip_version_removes_the_prefix(text, stamp):
    assert kovamapping.strip_version(text) == stamp


def test_a_stamp_with_a_one_digit_version_comes_back_from_versioned():
    for version in range(10):
        text = kovamapping.versioned("s+/=", version)
        assert (kovamapping.stamp_version(text), kovamapping.strip_version(text)) == (version, "s+/=")


CE_STAMP = "CESv1(x'd4bf9f590afe8d12624cb0b9b37ef9478f673e83')"


def test_from_ce_stamp_is_the_digest_of_cestamp_and_the_ce_stamp():
    expected = "V0KSS:" + base64.b64encode(hashlib.sha256(("cestamp" + CE_STAMP).encode()).digest()).decode()
    assert kovamapping.from_ce_stamp(CE_STAMP) == expected


def test_from_ce_stamp_gives_what_kova_mapping_ces_gives():
    for ce in (CE_STAMP, "CESv1(x'00')", "anything"):
        result = run_tool("ces", ce)
        assert result.returncode == 0, result.stderr
        assert kovamapping.from_ce_stamp(ce) == result.stdout.rstrip("\n")


def test_an_object_with_only_a_ce_stamp_reads_with_the_stamp_derived_from_it():
    document = {"version": 8, "References": [{"kOVAId": "A", "PlexoId": "PA", "IsLocal": False,
                                              "CEStamp": CE_STAMP}]}
    reference = kovamapping.read(json.dumps(document)).references[0]
    assert reference.stamp_version == 0
    assert reference.stamp == kovamapping.strip_version(kovamapping.from_ce_stamp(CE_STAMP))
