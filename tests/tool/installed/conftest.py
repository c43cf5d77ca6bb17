"""Fixtures of the installed tool's tests: the tool, its prefix, the example and test documents."""

import json
import os
import pathlib
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ.get("KOVA_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[3]))
EXAMPLES = SOURCE / "examples" / "documents"
DOCS = SOURCE / "tests" / "data" / "documents"
HOSTILE = SOURCE / "tests" / "data" / "hostile"


@pytest.fixture(scope="session")
def tool() -> str:
    path = os.environ.get("KOVA_MAPPING_TOOL")
    if not path:
        pytest.skip("KOVA_MAPPING_TOOL is not set")
    return path


@pytest.fixture(scope="session")
def prefix() -> pathlib.Path:
    return pathlib.Path(os.environ["KOVA_TEST_PREFIX"])


def run(tool, *arguments, stdin=None, env=None, cwd=None, timeout=300):
    """The tool's completed process (text mode)."""
    environment = dict(os.environ)
    if env:
        environment.update(env)
    return subprocess.run([tool, *map(str, arguments)], input=stdin, capture_output=True, text=True,
                          env=environment, cwd=cwd, timeout=timeout)


def records(output: str) -> list:
    """The JSON records of NDJSON output, one a line; every line must be one JSON object."""
    parsed = []
    for line in output.splitlines():
        record = json.loads(line)
        assert isinstance(record, dict), line
        parsed.append(record)
    return parsed
