"""References and instances: their fields, their stamps, handles that share, and identity."""

import gc

import pytest

import kovamapping
from conftest import assembly


def test_a_new_reference_has_the_documented_defaults():
    reference = kovamapping.Reference("R", "P")
    assert (reference.kova_id, reference.plexo_id, reference.stamp, reference.custom_data, reference.is_local) == (
        "R", "P", "", "null", False)
    assert reference.stamp_version == 3
    assert len(reference.instances) == 0


def test_a_new_instance_keeps_its_ref_id_as_given():
    instance = kovamapping.Instance("I", "Q", "no such reference", custom_data="x", is_local=True)
    assert (instance.ref_id, instance.custom_data, instance.is_local, instance.stamp_version) == (
        "no such reference", "x", True, 3)
    instance.ref_id = "R2"
    assert instance.ref_id == "R2"


def test_every_field_can_be_changed():
    for obj in (kovamapping.Reference("R", "P"), kovamapping.Instance("I", "Q", "R")):
        obj.kova_id, obj.plexo_id, obj.custom_data, obj.is_local = "K2", "P2", '{"a": 1}', True
        assert (obj.kova_id, obj.plexo_id, obj.custom_data, obj.is_local) == ("K2", "P2", '{"a": 1}', True)


def test_a_versioned_stamp_is_stored_without_its_prefix_and_sets_the_version():
    reference = kovamapping.Reference("R", "P", "V2:abc")
    assert (reference.stamp, reference.stamp_version) == ("abc", 2)
    reference.stamp = "V1:xyz"
    assert (reference.stamp, reference.stamp_version) == ("xyz", 1)


def test_a_v0kss_stamp_is_stored_without_its_prefix_with_version_0():
    instance = kovamapping.Instance("I", "Q", "R")
    instance.stamp = "V0KSS:derived"
    assert (instance.stamp, instance.stamp_version) == ("derived", 0)


def test_an_unversioned_stamp_keeps_the_version_set_before():
    reference = kovamapping.Reference("R", "P", "V2:abc")
    reference.stamp = "plain"
    assert (reference.stamp, reference.stamp_version) == ("plain", 2)
    fresh = kovamapping.Reference("R", "P", "plain")
    assert (fresh.stamp, fresh.stamp_version) == ("plain", 3)


def test_only_one_digit_of_a_stamp_version_is_read():
    reference = kovamapping.Reference("R", "P")
    reference.stamp = "V12:abc"
    assert (reference.stamp, reference.stamp_version) == (":abc", 1)


def test_stamps_are_stored_as_strip_version_and_stamp_version_say():
    for text in ("V2:abc", "V0KSS:x", "V12:abc", "V9:", "V:abc", "abc", "v2:abc", "V2abc"):
        reference = kovamapping.Reference("R", "P", "V7:before")
        reference.stamp = text
        version = kovamapping.stamp_version(text)
        assert reference.stamp == kovamapping.strip_version(text), text
        assert reference.stamp_version == (7 if version == -1 else version), text


def test_stamp_version_is_stored_as_given_within_32_bits():
    reference = kovamapping.Reference("R", "P", "V2:abc")
    for version in (-1, 0, 12, 2**31 - 1, -(2**31)):
        reference.stamp_version = version
        assert reference.stamp_version == version
    assert reference.stamp == "abc"
    for version in (2**31, -(2**31) - 1, 2**64):
        with pytest.raises(ValueError):
            reference.stamp_version = version
    assert reference.stamp_version == -(2**31)


def test_is_local_takes_a_bool_only():
    reference = kovamapping.Reference("R", "P")
    for value in (1, 0, "yes", None):
        with pytest.raises(TypeError):
            reference.is_local = value
    with pytest.raises(TypeError):
        kovamapping.Reference("R", "P", is_local=1)
    assert reference.is_local is False


def test_the_objects_a_table_gives_share_the_ones_added():
    table = kovamapping.Table()
    reference = kovamapping.Reference("R", "P", "V1:s")
    table.add_reference(reference)
    found = table.find(kova_id="R")
    listed = table.references[0]
    assert found is not reference  # another Python object...
    assert found.shares(reference) and listed.shares(reference)  # ...on the same mapping object
    found.custom_data = "seen everywhere"
    assert reference.custom_data == listed.custom_data == "seen everywhere"
    assert table.objects[0].custom_data == "seen everywhere"


def test_a_change_through_a_handle_is_written_by_the_table():
    table = assembly()
    table.find(kova_id="GEAR.2").stamp = "V2:new"
    assert kovamapping.read(table.to_json()).find(kova_id="GEAR.2").stamp == "new"


def test_equal_objects_that_are_separate_do_not_share():
    first, second = kovamapping.Reference("R", "P"), kovamapping.Reference("R", "P")
    assert first == second
    assert not first.shares(second)
    second.plexo_id = "changed"
    assert first.plexo_id == "P"
    assert first.shares(first)
    assert not first.shares("R")


def test_objects_outlive_their_table():
    table = assembly()
    instance = table.references[0].instances[1]
    del table
    gc.collect()
    assert (instance.kova_id, instance.plexo_id, instance.ref_id, instance.stamp) == ("GEAR.2", "Q-G2", "GEAR",
                                                                                      "s-GEAR.2")


@pytest.mark.parametrize("left, right, equal", [
    (("A", "P"), ("A", "P"), True),
    (("A", "P"), ("A", "other"), True),   # same kOVA id
    (("A", "P"), ("other", "P"), True),   # else same Plexo id
    (("A", "P"), ("B", "Q"), False),
    (("A", "P"), ("a", "p"), False),      # ids are case-sensitive
])
def test_equality_is_the_either_id_rule(left, right, equal):
    assert (kovamapping.Reference(*left) == kovamapping.Reference(*right)) is equal
    assert (kovamapping.Reference(*left) != kovamapping.Reference(*right)) is not equal


def test_equality_holds_across_kinds_and_not_with_other_types():
    assert kovamapping.Reference("A", "P") == kovamapping.Instance("A", "Q", "X")
    assert kovamapping.Instance("B", "P", "X") == kovamapping.Reference("A", "P")
    assert kovamapping.Reference("A", "P") != "A"
    assert not (kovamapping.Instance("A", "P", "X") == ("A", "P"))


def test_objects_are_not_hashable():
    for obj in (kovamapping.Reference("A", "P"), kovamapping.Instance("A", "P", "R")):
        with pytest.raises(TypeError):
            hash(obj)
        with pytest.raises(TypeError):
            {obj}


def test_the_repr_shows_the_ids_and_the_stamp():
    assert repr(kovamapping.Reference("SHF-210", "prd-66cb", "V2:abc")) == (
        "Reference(kova_id='SHF-210', plexo_id='prd-66cb', stamp='abc', stamp_version=2)")
    assert repr(kovamapping.Instance("I'1", "Q", "R")) == (
        "Instance(kova_id=\"I'1\", plexo_id='Q', stamp='', stamp_version=3)")


def test_texts_keep_any_unicode_and_nul_characters():
    text = "Motorträger \u0000 \U0001F527 \u2028"
    reference = kovamapping.Reference(text, text, custom_data=text)
    assert reference.kova_id == reference.plexo_id == reference.custom_data == text
    table = kovamapping.Table()
    reference.stamp = "V2:s"
    table.add_reference(reference)
    assert kovamapping.read(table.to_json()).references[0].kova_id == text


def test_constructors_take_keywords():
    instance = kovamapping.Instance(kova_id="I", plexo_id="Q", ref_id="R", stamp="V1:s", custom_data="c",
                                    is_local=True)
    assert (instance.kova_id, instance.stamp, instance.stamp_version, instance.custom_data) == ("I", "s", 1, "c")
    with pytest.raises(TypeError):
        kovamapping.Instance("I", "Q")  # the ref id is needed
