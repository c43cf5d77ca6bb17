"""Shared fixtures of the kovamapping tests: the example documents, the test data and the tool."""

import os
import pathlib
import shutil

import pytest

import kovamapping

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
EXAMPLES = pathlib.Path(os.environ.get("KOVA_EXAMPLES_DIR", ROOT / "examples" / "documents"))
TEST_DATA = pathlib.Path(os.environ.get("KOVA_TEST_DATA_DIR", ROOT / "tests" / "data"))


@pytest.fixture
def examples() -> pathlib.Path:
    return EXAMPLES


@pytest.fixture
def test_data() -> pathlib.Path:
    return TEST_DATA


@pytest.fixture
def tool() -> str:
    """The kova-mapping tool built with the package."""
    path = os.environ.get("KOVA_MAPPING_TOOL") or shutil.which("kova-mapping")
    if not path:
        pytest.skip("kova-mapping is not built")
    return path


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
