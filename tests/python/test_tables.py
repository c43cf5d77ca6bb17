"""Tables: their live sequences, iteration, look-ups, and the identity and root rules of changes."""

import gc

import pytest

import kovamapping
from conftest import E_FAIL, assembly, fields, kova_ids, make_table


def test_a_new_table_is_empty_at_the_current_version():
    table = kovamapping.Table()
    assert (len(table), list(table), table.objects, table.root, table.version) == (0, [], [], None, 12)
    assert len(table.references) == 0 and not table.references


def test_len_counts_references_and_instances():
    table = assembly()
    assert len(table) == 3 + 4
    assert len(table.references) == 3
    assert [len(r.instances) for r in table.references] == [2, 1, 1]


def test_objects_lists_each_reference_followed_by_its_instances():
    assert kova_ids(assembly().objects) == ["ASM", "GEAR.1", "GEAR.2", "GEAR", "PIN.1", "PIN", "BOLT.1"]


def test_iterating_a_table_gives_the_objects_in_document_order():
    table = assembly()
    assert kova_ids(table) == kova_ids(table.objects)
    assert [type(o).__name__ for o in table] == ["Reference", "Instance", "Instance", "Reference", "Instance",
                                                 "Reference", "Instance"]


def test_objects_is_a_new_list_each_time():
    table = assembly()
    objects = table.objects
    objects.clear()
    assert len(table.objects) == 7


def test_references_follows_the_table_as_it_changes():
    table = kovamapping.Table()
    references = table.references
    table.add_reference(kovamapping.Reference("A", "PA", "V1:s"))
    assert len(references) == 1 and references[0].kova_id == "A"
    table.remove(references[0])
    assert len(references) == 0


def test_instances_follows_the_reference_as_it_changes():
    table = make_table()
    reference = table.references[0]
    instances = reference.instances
    table.add_instance(kovamapping.Instance("I2", "Q2", "R3", "V1:t"), under=reference)
    assert kova_ids(instances) == ["I1", "I2"]
    table.remove(instances[0])
    assert kova_ids(instances) == ["I2"]


def test_references_takes_python_indexes():
    references = assembly().references
    assert references[0].kova_id == "ASM"
    assert references[-1].kova_id == "PIN"
    assert references[-3].kova_id == "ASM"
    for index in (3, -4, 100):
        with pytest.raises(IndexError):
            references[index]


def test_a_slice_of_references_or_instances_is_a_list():
    table = assembly()
    assert isinstance(table.references[0:2], list)
    assert kova_ids(table.references[1:]) == ["GEAR", "PIN"]
    assert kova_ids(table.references[::-1]) == ["PIN", "GEAR", "ASM"]
    assert table.references[5:] == []
    assert kova_ids(table.references[0].instances[::-1]) == ["GEAR.2", "GEAR.1"]


def test_in_follows_the_either_id_rule():
    references = assembly().references
    assert kovamapping.Reference("GEAR", "another plexo id") in references
    assert kovamapping.Reference("another kova id", "P-GEAR") in references
    assert kovamapping.Reference("X", "Y") not in references
    assert "GEAR" not in references  # only mapping objects are members
    assert kovamapping.Instance("GEAR", "P-GEAR", "x") not in references  # references hold references
    assert kovamapping.Instance("GEAR.1", "?", "?") in references[0].instances


def test_iteration_works_on_a_snapshot_taken_when_it_starts():
    table = assembly()
    seen = []
    for item in table:
        seen.append(item.kova_id)
        if item.kova_id == "ASM":
            table.remove(table.references[1])  # GEAR and PIN.1 go
            table.add_reference(kovamapping.Reference("NEW", "P-NEW", "V1:s", is_local=True))
    assert seen == ["ASM", "GEAR.1", "GEAR.2", "GEAR", "PIN.1", "PIN", "BOLT.1"]
    assert kova_ids(table) == ["ASM", "GEAR.1", "GEAR.2", "PIN", "BOLT.1", "NEW"]


def test_iterating_references_and_instances_works_on_snapshots():
    table = assembly()
    seen = []
    for reference in table.references:
        seen.append(reference.kova_id)
        if reference.kova_id == "ASM":
            table.clear()
    assert seen == ["ASM", "GEAR", "PIN"]
    table = assembly()
    reference = table.references[0]
    names = []
    for instance in reference.instances:
        names.append(instance.kova_id)
        if instance.kova_id == "GEAR.1":
            table.remove(reference.instances[1])
            table.add_instance(kovamapping.Instance("GEAR.3", "Q-G3", "GEAR", "V1:s"), under=reference)
    assert names == ["GEAR.1", "GEAR.2"]
    assert kova_ids(reference.instances) == ["GEAR.1", "GEAR.3"]


def test_field_changes_made_while_iterating_are_seen_since_objects_are_shared():
    table = assembly()
    iterator = iter(table)
    next(iterator)
    table.references[0].instances[0].plexo_id = "changed"
    assert next(iterator).plexo_id == "changed"


def test_find_by_kova_id_gives_the_reference_before_an_instance_of_the_same_id():
    table = assembly()
    table.add_reference(kovamapping.Reference("GEAR.1", "P-other", "V1:s", is_local=True))
    found = table.find(kova_id="GEAR.1")
    assert isinstance(found, kovamapping.Reference) and found.plexo_id == "P-other"


def test_find_gives_an_instance_when_no_reference_has_the_id():
    table = assembly()
    found = table.find(plexo_id="Q-P1")
    assert isinstance(found, kovamapping.Instance) and found.kova_id == "PIN.1"
    assert table.find(kova_id="BOLT.1").plexo_id == "Q-B1"


def test_find_gives_the_first_instance_under_the_earliest_reference():
    table = make_table(((("A", "PA", False), (("I", "Q-first", "X"),)), (("B", "PB", True), (("I", "Q-second", "X"),))))
    assert table.find(kova_id="I").plexo_id == "Q-first"


def test_find_gives_none_when_nothing_has_the_id():
    table = assembly()
    assert table.find(kova_id="nothing") is None
    assert table.find(plexo_id="ASM") is None  # a kOVA id, not a Plexo id


def test_find_takes_exactly_one_of_the_two_ids():
    table = assembly()
    with pytest.raises(TypeError):
        table.find()
    with pytest.raises(TypeError):
        table.find(kova_id="ASM", plexo_id="P-ASM")
    with pytest.raises(TypeError):
        table.find("ASM")  # keywords only


def test_find_sees_an_id_changed_through_a_handle():
    table = assembly()
    gear = table.references[1]
    gear.kova_id = "GEAR-renamed"
    assert table.find(kova_id="GEAR") is None
    assert table.find(kova_id="GEAR-renamed").shares(gear)


def test_a_reference_with_the_same_kova_id_or_plexo_id_is_refused_and_nothing_changes():
    table = assembly()
    before = fields(table)
    twins = (kovamapping.Reference("GEAR", "new", is_local=True), kovamapping.Reference("new", "P-PIN", is_local=True))
    for twin in twins:
        with pytest.raises(kovamapping.Error) as raised:
            table.add_reference(twin)
        assert raised.value.status == E_FAIL
        assert raised.value.messages == ["the table holds a reference with the same kOVA id or Plexo id"]
    assert fields(table) == before


def test_a_second_reference_that_is_not_local_is_refused():
    table = assembly()
    with pytest.raises(kovamapping.Error) as raised:
        table.add_reference(kovamapping.Reference("OTHER", "P-OTHER"))
    assert raised.value.status == E_FAIL
    assert "root" in str(raised.value)
    assert len(table.references) == 3
    table.add_reference(kovamapping.Reference("OTHER", "P-OTHER", is_local=True))
    assert len(table.references) == 4


def test_the_root_is_the_reference_that_is_not_local():
    table = kovamapping.Table()
    table.add_reference(kovamapping.Reference("L", "PL", "V1:s", is_local=True))
    assert table.root is None
    table.add_reference(kovamapping.Reference("R", "PR", "V1:s"))
    assert table.root.kova_id == "R"
    table.root.is_local = True
    assert table.root is None
    table.references[0].is_local = False
    assert table.root.kova_id == "L"


def test_add_instance_puts_it_under_the_tables_reference_that_is_the_same_as_under():
    table = assembly()
    stand_in = kovamapping.Reference("PIN", "not the same object")
    table.add_instance(kovamapping.Instance("NUT.1", "Q-N1", "NUT", "V1:n"), under=stand_in)
    assert kova_ids(table.references[2].instances) == ["BOLT.1", "NUT.1"]
    assert len(stand_in.instances) == 0


def test_add_instance_under_a_reference_that_is_not_in_the_table_is_refused():
    table = assembly()
    with pytest.raises(kovamapping.Error) as raised:
        table.add_instance(kovamapping.Instance("X.1", "Q-X", "X"), under=kovamapping.Reference("X", "PX"))
    assert raised.value.messages == ["the reference is not in the table"]
    assert len(table) == 7


def test_an_instance_id_is_unique_under_its_reference_only():
    table = assembly()
    with pytest.raises(kovamapping.Error) as raised:
        table.add_instance(kovamapping.Instance("GEAR.1", "Q-new", "GEAR"), under=table.references[0])
    assert raised.value.status == E_FAIL
    table.add_instance(kovamapping.Instance("GEAR.1", "Q-G1", "GEAR", "V1:x"), under=table.references[1])
    assert kova_ids(table.references[1].instances) == ["PIN.1", "GEAR.1"]


def test_adding_a_reference_adds_the_instances_it_holds():
    first = assembly()
    gear = first.references[1]
    first.remove(gear)
    second = kovamapping.Table()
    second.add_reference(gear)
    assert kova_ids(second) == ["GEAR", "PIN.1"]


def test_removing_a_reference_removes_its_instances_from_the_table():
    table = assembly()
    gear = table.references[1]
    table.remove(gear)
    assert kova_ids(table) == ["ASM", "GEAR.1", "GEAR.2", "PIN", "BOLT.1"]
    assert table.find(kova_id="PIN.1") is None
    assert kova_ids(gear.instances) == ["PIN.1"]  # the reference itself keeps them


def test_removing_an_instance_takes_it_from_the_reference_that_holds_it():
    # The same instance id stands under two references: the object given is the one removed.
    table = make_table(((("A", "PA", False), (("I", "Q", "X"),)), (("B", "PB", True), (("I", "Q", "X"),))))
    under_b = table.references[1].instances[0]
    table.remove(under_b)
    assert [len(r.instances) for r in table.references] == [1, 0]


def test_removing_an_instance_that_is_only_the_same_takes_the_first_that_is():
    table = make_table(((("A", "PA", False), (("I", "Q", "X"),)), (("B", "PB", True), (("I", "Q", "X"),))))
    table.remove(kovamapping.Instance("I", "another plexo id", "X"))
    assert [len(r.instances) for r in table.references] == [0, 1]


def test_removing_an_instance_from_under_a_given_reference():
    table = make_table(((("A", "PA", False), (("I", "Q", "X"),)), (("B", "PB", True), (("I", "Q", "X"),))))
    table.remove(table.references[0].instances[0], under=table.references[1])
    assert [len(r.instances) for r in table.references] == [1, 0]
    with pytest.raises(kovamapping.Error) as raised:
        table.remove(table.references[0].instances[0], under=table.references[1])
    assert raised.value.messages == ["the instance is not under that reference of the table"]


def test_removing_twice_is_refused():
    table = assembly()
    gear, pin_1 = table.references[1], table.references[1].instances[0]
    table.remove(pin_1)
    with pytest.raises(kovamapping.Error) as raised:
        table.remove(pin_1)
    assert (raised.value.status, raised.value.messages) == (E_FAIL, ["the instance is not in the table"])
    table.remove(gear)
    with pytest.raises(kovamapping.Error) as raised:
        table.remove(gear)
    assert (raised.value.status, raised.value.messages) == (E_FAIL, ["the reference is not in the table"])
    assert kova_ids(table) == ["ASM", "GEAR.1", "GEAR.2", "PIN", "BOLT.1"]


def test_clear_empties_the_table_and_brings_it_to_the_current_version(examples):
    table = kovamapping.read(examples / "v8_gearbox.json")
    assert table.version == 8
    table.clear()
    assert (len(table), table.version, table.root) == (0, 12, None)


def test_objects_taken_from_a_table_live_on_after_clear_and_after_the_table():
    table = assembly()
    gear = table.references[1]
    pin_1 = gear.instances[0]
    table.clear()
    assert gear.kova_id == "GEAR" and kova_ids(gear.instances) == ["PIN.1"]
    del table
    gc.collect()
    assert pin_1.plexo_id == "Q-P1"


def test_the_repr_of_a_table_counts_its_references_and_instances():
    assert repr(assembly()) == "<Table: 3 references, 4 instances>"
    assert repr(assembly().references) == "<References of 3>"


def test_to_pandas_gives_one_row_per_object_in_document_order():
    pandas = pytest.importorskip("pandas")
    table = assembly()
    table.references[0].custom_data = "root data"
    frame = table.to_pandas()
    assert isinstance(frame, pandas.DataFrame)
    assert list(frame.columns) == ["kind", "kova_id", "plexo_id", "ref_id", "parent", "stamp", "stamp_version",
                                   "custom_data", "is_local"]
    assert list(frame["kova_id"]) == kova_ids(table)
    assert list(frame["kind"]) == ["reference" if isinstance(o, kovamapping.Reference) else "instance" for o in table]
    rows = frame.to_dict("records")
    assert rows[0]["custom_data"] == "root data" and rows[0]["ref_id"] is None and rows[0]["parent"] is None
    assert (rows[4]["ref_id"], rows[4]["parent"], rows[4]["stamp"], rows[4]["stamp_version"]) == ("PIN", "GEAR",
                                                                                                  "s-PIN.1", 1)


def test_to_pandas_of_an_empty_table_has_the_columns_and_no_row():
    pytest.importorskip("pandas")
    frame = kovamapping.Table().to_pandas()
    assert len(frame) == 0 and "kova_id" in frame.columns
