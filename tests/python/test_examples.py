"""The shipped Python examples and the README's Python code run as documented."""

import os
import re
import subprocess
import sys

from conftest import EXAMPLES, ROOT


def run_python(arguments, cwd):
    environment = dict(os.environ)
    return subprocess.run([sys.executable, *arguments], cwd=cwd, env=environment, capture_output=True, text=True,
                          timeout=120)


def test_first_steps_reads_changes_writes_and_audits_the_example_documents():
    result = run_python([str(ROOT / "examples" / "python" / "first_steps.py"), str(EXAMPLES)], cwd=ROOT)
    assert result.returncode == 0, result.stderr
    lines = result.stdout.splitlines()
    assert lines[0] == "version 8, 3 references, 7 objects, root GBX-100"
    assert lines[1].startswith("Reference(kova_id='SHF-210', ") and "stamp='bmV3IHN0YW1w', stamp_version=2" in lines[1]
    assert lines[2] == "changes after a round trip: []"
    assert "broken_v11.json: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp" in lines
    assert "v12_conveyor.json: ok" in lines


def test_the_readme_python_example_runs():
    readme = (ROOT / "README.md").read_text(encoding="utf-8")
    section = readme[readme.index("### From Python"):readme.index("### What is in the box")]
    blocks = re.findall(r"```python\n(.*?)```", section, flags=re.S)
    assert blocks, "the README's Python section has no example"
    result = run_python(["-c", blocks[0]], cwd=ROOT)
    assert result.returncode == 0, result.stderr
    lines = result.stdout.splitlines()
    assert lines[0] == "GBX-100 7 ['DIN6885-A6x6x20.1']"
    assert lines[1] == "0x80004005 ['UNVALUATED MANDATORY FIELD IsLocal', 'UNVALUATED MANDATORY FIELD KOVASynchroStamp', 'UNVALUATED MANDATORY FIELD PlexoId']"
