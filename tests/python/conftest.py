"""Shared fixtures of the kovamapping tests: the example documents, the test data and the tool, and
helpers that say what the kova-mapping tool says about a document."""

import os
import pathlib
import shutil
import subprocess

import pytest

import kovamapping

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
EXAMPLES = pathlib.Path(os.environ.get("KOVA_EXAMPLES_DIR", ROOT / "examples" / "documents"))
TEST_DATA = pathlib.Path(os.environ.get("KOVA_TEST_DATA_DIR", ROOT / "tests" / "data"))
TOOL = os.environ.get("KOVA_MAPPING_TOOL") or shutil.which("kova-mapping")

# The library's one failure status, and the status of text that is not UTF-8 or not JSON.
E_FAIL = 0x80004005
INVALID_DATA = 0x8007000D
# The statuses of a read stopped by an envelope whose size field is beyond 2147483647, or has no
# digits where it is read. The tool's check line shows no status for them: "error: REASON".
SIZE_OUT_OF_RANGE = 0x8000000B
SIZE_UNREADABLE = 0x8000FFFF


@pytest.fixture
def examples() -> pathlib.Path:
    return EXAMPLES


@pytest.fixture
def test_data() -> pathlib.Path:
    return TEST_DATA


@pytest.fixture
def tool() -> str:
    """The kova-mapping tool built with the package."""
    if not TOOL:
        pytest.skip("kova-mapping is not built")
    return TOOL


def make_table(shape=((("R1", "P1", False), (("I1", "Q1", "R2"),)),)) -> kovamapping.Table:
    """A table of references (kova id, plexo id, is_local), each with its instances (kova id, plexo
    id, ref id), every stamp "V2:s-<kova id>"."""
    table = kovamapping.Table()
    for (kova_id, plexo_id, is_local), instances in shape:
        reference = kovamapping.Reference(kova_id, plexo_id, f"V2:s-{kova_id}", is_local=is_local)
        table.add_reference(reference)
        for instance_id, instance_plexo, ref_id in instances:
            table.add_instance(kovamapping.Instance(instance_id, instance_plexo, ref_id, f"V1:s-{instance_id}"),
                               under=reference)
    return table


def assembly() -> kovamapping.Table:
    """A root with two instances, two local references with one instance each."""
    return make_table((
        (("ASM", "P-ASM", False), (("GEAR.1", "Q-G1", "GEAR"), ("GEAR.2", "Q-G2", "GEAR"))),
        (("GEAR", "P-GEAR", True), (("PIN.1", "Q-P1", "PIN"),)),
        (("PIN", "P-PIN", True), (("BOLT.1", "Q-B1", "BOLT"),)),
    ))


def kova_ids(objects) -> list:
    return [o.kova_id for o in objects]


def fields(table) -> list:
    """Every object of a table in document order with all its fields: what a round trip keeps."""
    rows = []
    for reference in table.references:
        rows.append(("reference", reference.kova_id, reference.plexo_id, reference.stamp, reference.stamp_version,
                     reference.custom_data, reference.is_local))
        for instance in reference.instances:
            rows.append(("instance", instance.kova_id, instance.plexo_id, instance.ref_id, instance.stamp,
                         instance.stamp_version, instance.custom_data, instance.is_local))
    return rows


def run_tool(*arguments, binary=False, env=None) -> subprocess.CompletedProcess:
    """Runs kova-mapping with arguments; its output as text (UTF-8, line ends kept as they are)
    unless binary."""
    if not TOOL:
        pytest.skip("kova-mapping is not built")
    result = subprocess.run([TOOL, *map(str, arguments)], capture_output=True, env=env, timeout=60)
    if not binary:
        result.stdout = result.stdout.decode("utf-8")
        result.stderr = result.stderr.decode("utf-8")
    return result


def one_line(text: str) -> str:
    """An id as the tool prints it on one line: control characters as \\u00XX."""
    return "".join(f"\\u{ord(c):04X}" if ord(c) < 0x20 or ord(c) == 0x7F else c for c in text)


def ok_line(version, references, instances, root) -> str:
    """What kova-mapping check prints after "FILE: " for a document that reads."""
    where = f"root {one_line(root)}" if root is not None else "no root"
    return f"ok, version {version}, {references} references, {instances} instances, {where}"


def error_line(status, messages) -> str:
    """What kova-mapping check prints after "FILE: " for a document that does not read."""
    if status in (SIZE_OUT_OF_RANGE, SIZE_UNREADABLE):
        return "error: " + "; ".join(messages)
    return f"error 0x{status:08X}: " + "; ".join(messages)


def tool_check(paths) -> dict:
    """kova-mapping check on paths: for each path, ("out", what follows "PATH: " on standard
    output) or ("err", the reason it printed on standard error for a file it could not read)."""
    paths = [str(path) for path in paths]
    result = run_tool("check", *paths)
    assert result.returncode in (0, 1), result.stderr
    found = {}
    for where, text, prefix in (("out", result.stdout, ""), ("err", result.stderr, "kova-mapping: ")):
        for line in text.splitlines():
            for path in paths:
                if line.startswith(f"{prefix}{path}: "):
                    found[path] = (where, line[len(prefix) + len(path) + 2:])
    assert sorted(found) == sorted(paths), (result.stdout, result.stderr)
    return found


def python_check(path) -> tuple:
    """What kovamapping.read says of a file, in the form of tool_check."""
    try:
        table = kovamapping.read(pathlib.Path(path))
    except kovamapping.Error as error:
        prefix = f"{path}: "
        if len(error.messages) == 1 and error.messages[0].startswith(prefix):
            return ("err", error.messages[0][len(prefix):])  # the file itself could not be taken
        return ("out", error_line(error.status, error.messages))
    except OSError as error:
        return ("oserror", type(error).__name__)
    root = table.root
    return ("out", ok_line(table.version, len(table.references), sum(len(r.instances) for r in table.references),
                           root.kova_id if root is not None else None))


def document_files(*folders) -> list:
    return sorted(path for folder in folders for path in folder.iterdir() if path.is_file())
