"""tree and diff --format dot: the structure read back from the output, bounded output on hostile
shapes (deep chains, long cycles, shared sub-assemblies), and Graphviz accepting every graph."""

import html
import json
import re
import shutil
import subprocess
import time

import pytest

from conftest import EXAMPLES, SOURCE, run

BOX = {"branch": "├── ", "last": "└── ", "through": "│   ", "blank": "    "}
ASCII = {"branch": "|-- ", "last": "`-- ", "through": "|   ", "blank": "    "}


def reference(kova_id, targets=(), local=True):
    """A reference whose instances instantiate targets, named ID.1, ID.2..."""
    return {"kOVAId": kova_id, "PlexoId": "prd-" + kova_id, "IsLocal": local, "KOVASynchroStamp": "V2:AAAA",
            "Instances": [{"kOVAId": f"{kova_id}.{n}", "PlexoId": f"ins-{kova_id}.{n}", "IsLocal": False,
                           "RefId": target, "KOVASynchroStamp": "V2:AAAA"} for n, target in enumerate(targets, 1)]}


def write_document(path, references):
    path.write_text(json.dumps({"version": 12, "References": references}, ensure_ascii=False), encoding="utf-8")
    return path


def tree_lines(text, drawing=BOX):
    """(level, kind, id text, marks) of each line, the level read from the drawing in front."""
    parsed = []
    for line in text.splitlines():
        level, rest = 0, line
        while rest.startswith((drawing["through"], drawing["blank"])):
            rest, level = rest[4:], level + 1
        if rest.startswith((drawing["branch"], drawing["last"])):
            rest, level = rest[4:], level + 1
        match = re.fullmatch(r"(reference|instance) (.*?)(?: \(([a-z ,]+)\))?", rest)
        assert match, line
        marks = match.group(3).split(", ") if match.group(3) else []
        parsed.append((level, match.group(1), match.group(2), marks))
    return parsed


def show_value(text):
    """An id as the tool shows it on a line: as it is, or quoted when it needs to be."""
    if text and not any(ord(c) <= 0x20 or c in '"\\\x7f' for c in text):
        return text
    return json.dumps(text, ensure_ascii=False)


def dot_statements(text):
    """The node and edge statements of a graph the tool wrote: {name: attributes} and
    [(from, to, attributes)], attribute values unquoted (DOT escapes kept)."""
    nodes, edges = {}, []
    value = r'"(?:[^"\\]|\\.)*"|[^,\]\s]+'
    for line in text.splitlines():
        match = re.fullmatch(r"  (\w+)(?: -> (\w+))?(?: \[(.*)\])?;", line)
        if not match or match.group(1) in ("node", "edge"):
            continue
        attributes = {key: raw[1:-1] if raw.startswith('"') else raw
                      for key, raw in re.findall(rf"(\w+)=({value})", match.group(3) or "")}
        if match.group(2):
            edges.append((match.group(1), match.group(2), attributes))
        else:
            nodes[match.group(1)] = attributes
    return nodes, edges


def render_svg(dot_text):
    """Graphviz's SVG of the graph; dot must accept it without a warning."""
    assert shutil.which("dot"), "dot not found: install the Debian package graphviz"
    result = subprocess.run(["dot", "-Tsvg"], input=dot_text, capture_output=True, text=True, timeout=120)
    assert result.returncode == 0, result.stderr
    assert result.stderr == ""
    return result.stdout


def svg_texts(svg):
    """The text lines of the picture, in order."""
    return [html.unescape(text) for text in re.findall(r"<text[^>]*>([^<]*)</text>", svg)]


def test_every_instance_stands_under_its_reference_and_above_what_it_instantiates(tool, tmp_path):
    for seed in (1, 2, 3):
        path = tmp_path / f"generated{seed}.json"
        assert run(tool, "generate", "--references", 40, "--instances", 3, "--seed", seed, "-o", path).returncode == 0
        document = json.loads(path.read_text(encoding="utf-8"))
        held = {ref["kOVAId"]: [(inst["kOVAId"], inst["RefId"]) for inst in ref.get("Instances", [])]
                for ref in document["References"]}
        result = run(tool, "tree", "--ascii", path)
        assert result.returncode == 0, result.stderr
        lines = tree_lines(result.stdout, ASCII)
        listed = []
        for index, (level, kind, kova_id, marks) in enumerate(lines):
            if kind == "instance":
                # Its parent is the nearest line above one level up; the next line is its target.
                parent = next(line for line in reversed(lines[:index]) if line[0] == level - 1)
                assert parent[1] == "reference"
                target = lines[index + 1]
                assert target[0] == level + 1 and target[1] == "reference"
                listed.append((parent[2], kova_id, target[2]))
            elif kova_id in held and held[kova_id] and not {"cycle", "see above", "depth limit"} & set(marks):
                # An expanded reference lists all its instances, in order, right below it.
                children = [line[2] for line in lines[index + 1:] if line[0] == level + 1]
                assert children[:len(held[kova_id])] == [inst for inst, _ in held[kova_id]]
        # Every reference is reached from the root here, so every instance is listed exactly once.
        assert sorted(listed) == sorted((ref, inst, target) for ref, pairs in held.items() for inst, target in pairs)
        assert lines[0][:3] == (0, "reference", "Assembly-1") and "root" in lines[0][3]


def test_a_chain_of_10000_levels_is_cut_at_the_depth_limit_quickly(tool, tmp_path):
    count = 10000
    chain = [reference(f"L{k}", [f"L{k + 1}"] if k + 1 < count else [], local=k > 0) for k in range(count)]
    path = write_document(tmp_path / "deep.json", chain)
    started = time.monotonic()
    result = run(tool, "tree", path)
    assert result.returncode == 0, result.stderr
    assert time.monotonic() - started < 30
    lines = tree_lines(result.stdout)
    assert len(lines) == 1 + 2 * 100  # the default limit: 100 levels of instances
    assert lines[-1] == (200, "reference", "L100", ["local", "depth limit"])
    assert [line[0] for line in lines] == list(range(201))

    # The largest limit allowed: output in proportion to it, the rest still not listed.
    deepest = run(tool, "tree", "--max-depth", 1000, "--ascii", path)
    assert deepest.returncode == 0
    assert len(deepest.stdout) < 10_000_000
    assert tree_lines(deepest.stdout, ASCII)[-1] == (2000, "reference", "L1000", ["local", "depth limit"])
    graph = run(tool, "tree", "--format", "dot", "--max-depth", 1000, path)
    nodes, edges = dot_statements(graph.stdout)
    assert len(nodes) == 2001 and len(edges) == 2000


def test_a_cycle_1000_levels_long_is_shown_once_and_not_followed(tool, tmp_path):
    count = 1000
    ring = [reference(f"C{k}", [f"C{(k + 1) % count}"], local=k > 0) for k in range(count)]
    path = write_document(tmp_path / "ring.json", ring)
    result = run(tool, "tree", "--max-depth", 1000, path)
    assert result.returncode == 0, result.stderr
    lines = tree_lines(result.stdout)
    assert len(lines) == 1 + 2 * count
    assert lines[0] == (0, "reference", "C0", ["root"])
    assert lines[-1] == (2 * count, "reference", "C0", ["root", "cycle"])
    assert sum("cycle" in line[3] for line in lines) == 1
    # In the graph, the edge that closes the cycle does not rank its target.
    nodes, edges = dot_statements(run(tool, "tree", "--format", "dot", "--max-depth", 1000, path).stdout)
    assert len(nodes) == 2 * count
    assert [edge for edge in edges if edge[2].get("constraint") == "false"] == [
        (f"i{count - 1}", "r0", {"style": "dashed", "constraint": "false"})]


def test_shared_sub_assemblies_are_listed_once_however_many_paths_lead_to_them(tool, tmp_path):
    # Each level holds three instances of the next: 3^39 paths from the root to the last level.
    levels, width = 40, 3
    dag = [reference(f"D{k}", [f"D{k + 1}"] * width if k + 1 < levels else [], local=k > 0) for k in range(levels)]
    path = write_document(tmp_path / "dag.json", dag)
    started = time.monotonic()
    result = run(tool, "tree", path)
    assert result.returncode == 0, result.stderr
    assert time.monotonic() - started < 30
    lines = tree_lines(result.stdout)
    assert len(lines) == 1 + (levels - 1) * width * 2
    # The first instance of each level expands the next; the others point back to it, except at the
    # last level, which has nothing to repeat.
    assert sum(line[3] == ["local", "see above"] for line in lines) == (levels - 2) * (width - 1)
    assert sum(line[1] == "reference" and line[2] == f"D{levels - 1}" for line in lines) == width
    nodes, edges = dot_statements(run(tool, "tree", "--format", "dot", path).stdout)
    assert len(nodes) == levels + (levels - 1) * width
    assert len(edges) == 2 * (levels - 1) * width


def test_a_reference_cut_by_the_depth_limit_is_expanded_where_it_comes_higher(tool, tmp_path):
    path = write_document(tmp_path / "shallow.json", [
        reference("R", ["A", "X"], local=False), reference("A", ["X"]), reference("X", ["Y"]), reference("Y")])
    result = run(tool, "tree", "--max-depth", 2, "--ascii", path)
    assert result.returncode == 0
    assert result.stdout == (
        "reference R (root)\n"
        "|-- instance R.1\n"
        "|   `-- reference A (local)\n"
        "|       `-- instance A.1\n"
        "|           `-- reference X (local, depth limit)\n"
        "`-- instance R.2\n"
        "    `-- reference X (local)\n"
        "        `-- instance X.1\n"
        "            `-- reference Y (local)\n")
    # In the graph X is expanded, so it carries no mark of the limit.
    nodes, _ = dot_statements(run(tool, "tree", "--format", "dot", "--max-depth", 2, path).stdout)
    assert nodes["r2"]["label"] == "X\\n(local)"


@pytest.mark.parametrize("name", ["v6_bracket.json", "v8_gearbox.json", "v10_pump.json", "v12_conveyor.json",
                                  "v12_conveyor.envelope"])
def test_graphviz_accepts_the_graph_of_every_example_and_shows_the_lines_ids(tool, name):
    text = run(tool, "tree", EXAMPLES / name)
    graph = run(tool, "tree", "--format", "dot", EXAMPLES / name)
    assert text.returncode == 0 and graph.returncode == 0
    assert graph.stdout.startswith("digraph tree {\n") and graph.stdout.endswith("}\n")
    shown = set(svg_texts(render_svg(graph.stdout)))
    ids = {kova_id for _, _, kova_id, _ in tree_lines(text.stdout)}
    assert ids <= shown
    assert {"(root)", "(local)"} & shown


def test_hostile_ids_are_escaped_so_that_the_picture_shows_them_as_the_text_does(tool, tmp_path):
    hostile = ['quo"te', "back\\slash", "ends with \\", "new\nline", "ünïcødé €", "<b>&amp;</b>", "",
               "tab\there", "\\N \\G \\L", "\x01bell", "node", "{x}|y;", "-> edge"]
    references = [reference("ROOT", hostile, local=False)] + [reference(kova_id) for kova_id in hostile]
    path = write_document(tmp_path / "hostile.json", references)
    text = run(tool, "tree", path)
    assert text.returncode == 0, text.stderr
    lines = tree_lines(text.stdout)
    assert [line[2] for line in lines if line[1] == "reference"][1:] == [show_value(k) for k in hostile]
    graph = run(tool, "tree", "--format", "dot", path)
    nodes, edges = dot_statements(graph.stdout)
    assert len(nodes) == 1 + 2 * len(hostile) and len(edges) == 2 * len(hostile)
    shown = svg_texts(render_svg(graph.stdout))
    for kova_id in hostile:
        assert show_value(kova_id) in shown
        assert show_value(f"ROOT.{hostile.index(kova_id) + 1}") in shown

    # The diff graph of the same ids, removed from one table and added to the other.
    empty = write_document(tmp_path / "empty.json", [reference("ROOT", local=False)])
    diff = run(tool, "diff", "--format", "dot", empty, path)
    assert diff.returncode == 1
    shown = svg_texts(render_svg(diff.stdout))
    for kova_id in hostile:
        assert show_value(kova_id) in shown


def later_conveyor():
    """A later save of the conveyor: RLR-1010.2 removed, RLR-1010.3 and CVR-1040 added,
    ISO4762-M8x30.2 moved to Motorträger-1030, FRM-1020.1's Plexo id and RLR-1010.1's RefId changed."""
    document = json.loads((EXAMPLES / "v12_conveyor.json").read_text(encoding="utf-8"))
    root, roller, frame, support = document["References"]
    root["Instances"] = [inst for inst in root["Instances"] if inst["kOVAId"] != "RLR-1010.2"]
    root["Instances"].append(dict(root["Instances"][0], kOVAId="RLR-1010.3", PlexoId="ins-77aa0d9a61c2f485"))
    root["Instances"][0]["RefId"] = "Motorträger-1030"
    next(inst for inst in root["Instances"] if inst["kOVAId"] == "FRM-1020.1")["PlexoId"] = "ins-5f2d98b04ea7c137"
    support["Instances"] = [frame["Instances"].pop()]
    document["References"].append(dict(roller, kOVAId="CVR-1040", PlexoId="prd-1c2d3e4f5a6b7c8d"))
    return document


def test_diff_dot_colours_added_removed_moved_and_changed_objects(tool, tmp_path):
    later = tmp_path / "later.json"
    later.write_text(json.dumps(later_conveyor(), ensure_ascii=False), encoding="utf-8")
    text = run(tool, "diff", EXAMPLES / "v12_conveyor.json", later)
    assert text.returncode == 1
    assert text.stdout.splitlines()[-1] == "summary: 2 added, 1 removed, 1 moved, 2 changed"
    graph = run(tool, "diff", "--format", "dot", EXAMPLES / "v12_conveyor.json", later)
    assert graph.returncode == 1 and graph.stderr == ""
    render_svg(graph.stdout)
    nodes, edges = dot_statements(graph.stdout)
    by_id = {attributes["label"].split("\\n")[0]: (name, attributes) for name, attributes in nodes.items()}
    colours = {kova_id: attributes["color"] for kova_id, (_, attributes) in by_id.items()}
    assert colours == {
        "CNV-1000": "gray50", "RLR-1010": "gray50", "FRM-1020": "gray50", "Motorträger-1030": "gray50",
        "ISO4762-M8x30.1": "gray50", "Motorträger-1030.1": "gray50", "ISO4762-M8x30": "gray50",
        "RLR-1010.2": "red", "RLR-1010.3": "forestgreen", "CVR-1040": "forestgreen",
        "ISO4762-M8x30.2": "blue", "FRM-1020.1": "darkorange", "RLR-1010.1": "darkorange"}
    assert by_id["ISO4762-M8x30.2"][1]["label"] == "ISO4762-M8x30.2\\n(local)\\nmoved from FRM-1020"
    assert by_id["FRM-1020.1"][1]["label"] == "FRM-1020.1\\nchanged: PlexoId"
    assert by_id["ISO4762-M8x30"][1]["label"] == "ISO4762-M8x30\\n(absent)"
    name = {kova_id: node for kova_id, (node, _) in by_id.items()}
    edge = {(source, target): attributes for source, target, attributes in edges}
    # The moved instance: solid blue from where it is, dashed blue from where it was.
    assert edge[(name["Motorträger-1030"], name["ISO4762-M8x30.2"])] == {"color": "blue"}
    assert edge[(name["FRM-1020"], name["ISO4762-M8x30.2"])] == {"style": "dashed", "color": "blue"}
    # Removed and added instances bring their edges in their colour.
    assert edge[(name["CNV-1000"], name["RLR-1010.2"])] == {"color": "red"}
    assert edge[(name["RLR-1010.2"], name["RLR-1010"])] == {"style": "dashed", "color": "red"}
    assert edge[(name["CNV-1000"], name["RLR-1010.3"])] == {"color": "forestgreen"}
    # A changed RefId: the new target as usual, the old one in orange.
    assert edge[(name["RLR-1010.1"], name["Motorträger-1030"])] == {"style": "dashed"}
    assert edge[(name["RLR-1010.1"], name["RLR-1010"])] == {"style": "dashed", "color": "darkorange"}


def test_diff_dot_of_equal_tables_is_all_grey_and_the_text_form_stays_the_default(tool):
    old, new = EXAMPLES / "v12_conveyor.json", EXAMPLES / "v12_conveyor.envelope"
    graph = run(tool, "diff", "--format", "dot", old, new)
    assert graph.returncode == 0
    nodes, _ = dot_statements(graph.stdout)
    assert len(nodes) == 4 + 6 + 1  # references, instances, the absent standard part
    assert {attributes["color"] for attributes in nodes.values()} == {"gray50"}
    plain = run(tool, "diff", old, new)
    assert plain.stdout == run(tool, "diff", "--format", "text", old, new).stdout
    assert plain.stdout == "summary: 0 added, 0 removed, 0 moved, 0 changed\n"


def test_the_pictures_script_renders_the_tree_of_the_documentation(tool, tmp_path):
    script = SOURCE / "docs" / "make-pictures.sh"
    result = subprocess.run(["bash", str(script), tool, str(tmp_path)], capture_output=True, text=True, timeout=120)
    assert result.returncode == 0, result.stderr
    made = (tmp_path / "tree.svg").read_text(encoding="utf-8")
    assert made.startswith("<?xml") and "<svg" in made
    graph = run(tool, "tree", "--format", "dot", EXAMPLES / "v12_conveyor.json").stdout
    labels = [line for _, attributes in dot_statements(graph)[0].items()
              for line in attributes["label"].split("\\n")]
    assert sorted(svg_texts(made)) == sorted(labels)
    # The picture in docs/ is up to date: the same labels.
    assert sorted(svg_texts((SOURCE / "docs" / "tree.svg").read_text(encoding="utf-8"))) == sorted(labels)
    assert not list(tmp_path.glob("*.tmp"))
