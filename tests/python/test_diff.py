"""diff: what changed between two tables, with the meaning and order of kova-mapping diff."""

import json

import pytest

import kovamapping
from conftest import assembly, make_table, run_tool


def show(text: str) -> str:
    """An id or value as the tool shows it: as it is, or as a JSON string literal when it is empty
    or holds blanks, quotes, backslashes or control characters."""
    plain = text != "" and not any(ord(c) <= 0x20 or ord(c) == 0x7F or c in '"\\' for c in text)
    return text if plain else json.dumps(text, ensure_ascii=False)


def value(field_value) -> str:
    if isinstance(field_value, bool):
        return "true" if field_value else "false"
    return show(field_value)


def tool_lines(changes) -> list:
    """The lines kova-mapping diff prints for these changes, summary included."""
    signs = {"removed": "-", "added": "+"}
    lines = []
    for change in changes:
        where = f"{change.object} {show(change.kova_id)}"
        if change.kind in signs:
            lines.append(f"{signs[change.kind]} {where}" + (f" (in {show(change.parent)})" if change.parent else ""))
        elif change.kind == "moved":
            old, new = change.fields["parent"]
            lines.append(f"> {where}: {show(old)} -> {show(new)}")
        else:
            shown = ", ".join(f"{name} {value(old)} -> {value(new)}" for name, (old, new) in change.fields.items())
            lines.append(f"~ {where}: {shown}")
    count = {kind: sum(c.kind == kind for c in changes) for kind in ("added", "removed", "moved", "changed")}
    lines.append(f"summary: {count['added']} added, {count['removed']} removed, {count['moved']} moved, "
                 f"{count['changed']} changed")
    return lines


def assert_same_as_the_tool(tmp_path, old_text: str, new_text: str) -> list:
    (tmp_path / "old.json").write_text(old_text, encoding="utf-8")
    (tmp_path / "new.json").write_text(new_text, encoding="utf-8")
    result = run_tool("diff", tmp_path / "old.json", tmp_path / "new.json")
    assert result.returncode in (0, 1), result.stderr
    changes = kovamapping.diff(old_text, new_text)
    assert tool_lines(changes) == result.stdout.splitlines()
    assert result.returncode == (1 if changes else 0)
    return changes


def edited_conveyor(examples):
    old = kovamapping.read(examples / "v12_conveyor.json")
    new = kovamapping.read(old.to_json())
    new.remove(new.find(kova_id="RLR-1010.2"))
    new.add_reference(kovamapping.Reference("CVR-1040", "prd-cvr", "V2:abc", is_local=True))
    new.add_instance(kovamapping.Instance("RLR-1010.3", "ins-new", "RLR-1010", "V1:zz"),
                     under=new.find(kova_id="CNV-1000"))
    bolt = new.find(kova_id="ISO4762-M8x30.2")
    new.remove(bolt)
    new.add_instance(bolt, under=new.find(kova_id="Motorträger-1030"))
    new.find(kova_id="RLR-1010").stamp_version = 1
    new.find(kova_id="FRM-1020.1").plexo_id = "ins-other"
    new.find(kova_id="Motorträger-1030.1").custom_data = "Ausführung rechts"
    new.find(kova_id="RLR-1010.1").custom_data = 'say "hi"'
    new.find(kova_id="FRM-1020").is_local = False
    new.find(kova_id="CNV-1000").is_local = True
    return old, new


def test_diff_lists_what_kova_mapping_diff_lists_for_an_edited_document(tmp_path, examples):
    old, new = edited_conveyor(examples)
    changes = assert_same_as_the_tool(tmp_path, old.to_json(), new.to_json())
    assert [c.kind for c in changes] == ["removed", "added", "added", "moved"] + ["changed"] * 6


def test_diff_of_generated_documents_of_different_seeds_is_the_tools(tmp_path):
    texts = []
    for seed in (1, 2):
        generated = run_tool("generate", "--references", 6, "--instances", 3, "--seed", seed)
        assert generated.returncode == 0, generated.stderr
        texts.append(generated.stdout)
    changes = assert_same_as_the_tool(tmp_path, *texts)
    assert changes


def test_diff_of_generated_documents_of_different_sizes_is_the_tools(tmp_path):
    small = run_tool("generate", "--references", 4, "--instances", 3).stdout
    large = run_tool("generate", "--references", 6, "--instances", 2).stdout
    changes = assert_same_as_the_tool(tmp_path, small, large)
    assert {"added", "removed"} <= {c.kind for c in changes}
    assert_same_as_the_tool(tmp_path, large, small)


def test_diff_matches_instances_under_the_same_reference_first(tmp_path):
    # The instance id "I" stands under both references; each is compared with its own.
    shape = ((("A", "PA", False), (("I", "QA", "X"),)), (("B", "PB", True), (("I", "QB", "X"),)))
    old, new = make_table(shape), make_table(shape)
    new.references[1].instances[0].custom_data = "only under B"
    changes = assert_same_as_the_tool(tmp_path, old.to_json(), new.to_json())
    assert [(c.kind, c.kova_id, c.parent, c.fields) for c in changes] == [
        ("changed", "I", "B", {"CustomData": ("null", "only under B")})]


def test_a_table_compared_with_itself_or_its_conversion_has_no_change(tmp_path, examples):
    text = (examples / "v8_gearbox.json").read_text(encoding="utf-8")
    assert assert_same_as_the_tool(tmp_path, text, kovamapping.read(text).to_json()) == []
    table = assembly()
    assert kovamapping.diff(table, table) == []


def test_the_order_of_objects_and_the_version_are_not_compared():
    old = assembly()
    new = kovamapping.Table()
    for reference in reversed(assembly().references):
        new.add_reference(reference)
    assert [r.kova_id for r in new.references] != [r.kova_id for r in old.references]
    assert kovamapping.diff(old, new) == []


def test_a_removed_instance_names_the_reference_it_stood_under_in_the_old_table():
    old, new = assembly(), assembly()
    new.remove(new.find(kova_id="PIN.1"))
    assert kovamapping.diff(old, new) == [kovamapping.Change("removed", "instance", "PIN.1", "GEAR", {})]


def test_an_added_reference_has_no_parent():
    old, new = assembly(), assembly()
    new.add_reference(kovamapping.Reference("NUT", "P-NUT", "V1:n", is_local=True))
    assert kovamapping.diff(old, new) == [kovamapping.Change("added", "reference", "NUT", None, {})]


def test_a_moved_instance_gives_its_old_and_new_parent():
    old, new = assembly(), assembly()
    pin_1 = new.find(kova_id="PIN.1")
    new.remove(pin_1)
    new.add_instance(pin_1, under=new.find(kova_id="PIN"))
    assert kovamapping.diff(old, new) == [
        kovamapping.Change("moved", "instance", "PIN.1", "PIN", {"parent": ("GEAR", "PIN")})]


def test_an_instance_that_moved_and_changed_gives_both_changes():
    old, new = assembly(), assembly()
    pin_1 = new.find(kova_id="PIN.1")
    new.remove(pin_1)
    pin_1.ref_id = "SCREW"
    new.add_instance(pin_1, under=new.find(kova_id="PIN"))
    changes = kovamapping.diff(old, new)
    assert [(c.kind, c.kova_id, c.parent) for c in changes] == [("moved", "PIN.1", "PIN"), ("changed", "PIN.1", "PIN")]
    assert changes[1].fields == {"RefId": ("PIN", "SCREW")}


def test_changed_fields_come_in_document_key_order_with_is_local_as_bools():
    old, new = assembly(), assembly()
    gear = new.find(kova_id="GEAR")
    gear.stamp = "V2:other"
    gear.custom_data = "data"
    gear.is_local = False
    new.root.is_local = True
    gear.plexo_id = "P-GEAR-2"
    changes = kovamapping.diff(old, new)
    assert [c.kova_id for c in changes] == ["ASM", "GEAR"]
    assert list(changes[1].fields.items()) == [
        ("PlexoId", ("P-GEAR", "P-GEAR-2")),
        ("IsLocal", (True, False)),
        ("CustomData", ("null", "data")),
        ("KOVASynchroStamp", ("V2:s-GEAR", "V2:other")),
    ]


def test_a_change_of_the_stamp_version_alone_shows_in_the_stamp():
    old, new = assembly(), assembly()
    new.find(kova_id="BOLT.1").stamp_version = 2
    assert kovamapping.diff(old, new)[0].fields == {"KOVASynchroStamp": ("V1:s-BOLT.1", "V2:s-BOLT.1")}


def test_diff_takes_tables_text_bytes_and_paths(tmp_path, examples):
    old, new = edited_conveyor(examples)
    expected = kovamapping.diff(old, new)
    (tmp_path / "new.json").write_text(new.to_json(), encoding="utf-8")
    assert kovamapping.diff(old.to_json(), tmp_path / "new.json") == expected
    assert kovamapping.diff(old.to_json().encode("utf-8"), new) == expected


def test_diff_of_a_document_that_does_not_read_raises_error(examples):
    with pytest.raises(kovamapping.Error):
        kovamapping.diff(examples / "broken_v11.json", examples / "v12_conveyor.json")
