"""Properties over random tables, attribute sets and texts (hypothesis)."""

import atexit
import calendar
import datetime
import json
import re
import shutil
import tempfile

import pytest

hypothesis = pytest.importorskip("hypothesis")
from hypothesis import HealthCheck, given, settings  # noqa: E402
from hypothesis.configuration import set_hypothesis_home_dir  # noqa: E402
from hypothesis import strategies as st  # noqa: E402

import kovamapping  # noqa: E402
from conftest import fields, run_tool  # noqa: E402

# Nothing of hypothesis's in the source tree (its character tables go to a scratch folder), no
# example database, no deadline (the tool's start-up varies with the load).
_HOME = tempfile.mkdtemp(prefix="kovamapping-hypothesis-")
atexit.register(shutil.rmtree, _HOME, ignore_errors=True)
set_hypothesis_home_dir(_HOME)
QUICK = settings(max_examples=150, deadline=None, database=None, suppress_health_check=[HealthCheck.too_slow])
TABLES = settings(max_examples=40, deadline=None, database=None, suppress_health_check=[HealthCheck.too_slow])
WITH_THE_TOOL = settings(max_examples=30, deadline=None, database=None,
                         suppress_health_check=[HealthCheck.too_slow, HealthCheck.function_scoped_fixture])

ids = st.text(min_size=1, max_size=10)
stamps = st.tuples(st.text(min_size=1, max_size=12), st.integers(0, 9))  # (stamp, one-digit version)
custom_data = st.one_of(st.just("null"), st.text(max_size=12))


# The reader takes "V<digits>:<digits>:" anywhere in a text for the prefix of an envelope, so a
# document holding that run in a value does not read back (test_bad_input shows it).
ENVELOPE_PREFIX = re.compile(r"V[0-9]+:[0-9]+:")


@st.composite
def tables(draw):
    """A table the identity and root rules accept (unique ids, at most one reference not local),
    whose document holds no run the reader takes for an envelope's prefix."""
    count = draw(st.integers(0, 6))
    kova = draw(st.lists(ids, min_size=count, max_size=count, unique=True))
    plexo = draw(st.lists(ids, min_size=count, max_size=count, unique=True))
    root = draw(st.one_of(st.none(), st.integers(0, max(count - 1, 0))))
    table = kovamapping.Table()
    for n in range(count):
        stamp, version = draw(stamps)
        reference = kovamapping.Reference(kova[n], plexo[n], kovamapping.versioned(stamp, version), draw(custom_data),
                                          is_local=n != root)
        table.add_reference(reference)
        instances = draw(st.integers(0, 4))
        instance_kova = draw(st.lists(ids, min_size=instances, max_size=instances, unique=True))
        instance_plexo = draw(st.lists(ids, min_size=instances, max_size=instances, unique=True))
        for m in range(instances):
            stamp, version = draw(stamps)
            table.add_instance(kovamapping.Instance(instance_kova[m], instance_plexo[m], draw(ids),
                                                    kovamapping.versioned(stamp, version), draw(custom_data),
                                                    is_local=draw(st.booleans())), under=reference)
    hypothesis.assume(not ENVELOPE_PREFIX.search(table.to_json()))
    return table


@TABLES
@given(tables())
def test_a_random_table_reads_back_with_the_same_objects_fields_and_order(table):
    copy = kovamapping.read(table.to_json())
    assert fields(copy) == fields(table)
    assert copy.version == 12
    assert (copy.root is None) == (table.root is None)


@TABLES
@given(tables())
def test_a_random_table_reads_back_from_its_envelope(table):
    assert fields(kovamapping.read(table.to_json(compress=True))) == fields(table)


@TABLES
@given(tables())
def test_a_random_table_differs_from_itself_in_nothing(table):
    assert kovamapping.diff(table, kovamapping.read(table.to_json())) == []


@TABLES
@given(tables(), st.data())
def test_one_changed_custom_data_gives_one_change(table, data):
    if len(table) == 0:
        return
    changed = kovamapping.read(table.to_json())
    target = data.draw(st.sampled_from(changed.objects))
    old = target.custom_data
    new = data.draw(custom_data.filter(lambda text: text != old))
    target.custom_data = new
    [change] = kovamapping.diff(table, changed)
    assert (change.kind, change.kova_id, change.fields) == ("changed", target.kova_id, {"CustomData": (old, new)})


@QUICK
@given(st.text())
def test_assigning_a_stamp_stores_what_strip_version_and_stamp_version_say(text):
    reference = kovamapping.Reference("R", "P", "V5:before")
    reference.stamp = text
    assert reference.stamp == kovamapping.strip_version(text)
    version = kovamapping.stamp_version(text)
    assert reference.stamp_version == (5 if version == -1 else version)


@QUICK
@given(st.text(min_size=1))
def test_unpack_gives_back_any_packed_text(text):
    envelope = kovamapping.pack(text)
    assert envelope.startswith(f"V12:{len(text.encode('utf-8'))}:")
    assert kovamapping.unpack(envelope) == text


# Attribute values and the attribute file's JSON form of each, made here independently of the
# package: strings ASCII-escaped, times by calendar.timegm of the UTC time (whole seconds).
UTC = datetime.timezone.utc
zones = st.one_of(st.none(), st.just(UTC), st.integers(-14 * 60, 14 * 60).map(
    lambda minutes: datetime.timezone(datetime.timedelta(minutes=minutes))))
scalars = {
    "str": st.text(max_size=8),
    "int": st.integers(-(2**31), 2**31 - 1),
    "float": st.floats(allow_nan=False, allow_infinity=False),
    "bool": st.booleans(),
    "time": st.datetimes(min_value=datetime.datetime(1, 1, 2), max_value=datetime.datetime(9999, 12, 30),
                         timezones=zones),
}
values = st.one_of(st.none(), *scalars.values(),
                   *(st.lists(strategy, max_size=4) for strategy in scalars.values()))


def file_form(value) -> str:
    if value is None:
        return "null"
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, (int, float)):
        return repr(value)
    if isinstance(value, str):
        return json.dumps(value)
    if isinstance(value, datetime.datetime):
        return '{"time": %d}' % calendar.timegm(value.utctimetuple())
    return "[" + ", ".join(file_form(element) for element in value) + "]"


@WITH_THE_TOOL
@given(st.dictionaries(st.text(max_size=6), values, max_size=5))
def test_compute_stamp_gives_what_kova_mapping_stamp_gives(tmp_path, attributes):
    path = tmp_path / "attributes.json"
    path.write_text("{" + ", ".join(f"{json.dumps(name)}: {file_form(value)}" for name, value in attributes.items())
                    + "}", encoding="utf-8")
    stamp = run_tool("stamp", path)
    text = run_tool("stamp", "--text", path)
    assert stamp.returncode == 0 and text.returncode == 0, stamp.stderr + text.stderr
    assert kovamapping.compute_stamp(attributes) == stamp.stdout[:-1]
    assert kovamapping.compute_stamp(attributes, text=True) == text.stdout[:-1]
