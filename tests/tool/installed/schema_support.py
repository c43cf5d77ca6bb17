"""What the schema tests share: the installed schemas, a strict JSON reading, the tool's verdicts and
the rules the schemas leave to the reader.

The schemas decide whether a JSON value has the shape of a mapping document of its version. What
they leave to the reader is modelled here, so that a test can tell a refusal the schemas should
have made from one they cannot make:

- "identity": two references with the same kOVA id or the same Plexo id, or two instances of one
  reference alike (the table's either-id rule);
- "root": a second reference that is not local;
- "version token": a version written as a real number (12.0, 1.2e1), equal to the integer for a
  schema, refused by the reader;
- "envelope": a text shaped like an envelope prefix (V, digits, ':', digits, ':') anywhere in the
  document, where the reader tries to open an envelope.

JSON texts that the reader's parser refuses (NaN, a lone surrogate escape, a second document) are
not JSON values at all: strict_json refuses them too.
"""

import json
import os
import pathlib
import re
import subprocess

VERSIONS = range(6, 13)
SCHEMA_FOLDER = pathlib.Path("share") / "KOVAMappingServices" / "schemas"
ENVELOPE_PREFIX = re.compile(r"V[0-9]+:[0-9]+:")

# The reader's refusals that the schemas leave to it, by reason: the status and messages of
# check --json that each reason may give (None: any).
UNDECIDED_REFUSALS = {
    # An object refused by the table: the reader logs nothing (the tool then gives the status's
    # meaning), or in version 7 the failure of a reference's instances.
    "identity": {("0x80004005", ("document rejected",)), ("0x80004005", ("PROBLEM PARSING INSTANCES",))},
    "root": {("0x80004005", ("document rejected",))},
    "version token": {("0x8007065D", ("CANNOT READ VERSION ON KOVA JSON",))},
    "envelope": None,
}


def schema_file(prefix: pathlib.Path, version: int) -> pathlib.Path:
    return prefix / SCHEMA_FOLDER / f"mapping-document-v{version}.schema.json"


def load_validators(prefix: pathlib.Path) -> dict:
    """Draft 2020-12 validators of the installed schemas, by version."""
    from jsonschema import Draft202012Validator

    validators = {}
    for version in VERSIONS:
        schema = json.loads(schema_file(prefix, version).read_text(encoding="utf-8"))
        Draft202012Validator.check_schema(schema)
        validators[version] = Draft202012Validator(schema)
    return validators


def _refuse_constant(name):
    raise ValueError(f"{name} is not JSON")


def _no_lone_surrogate(value):
    if isinstance(value, str):
        if any(0xD800 <= ord(c) <= 0xDFFF for c in value):
            raise ValueError("a lone surrogate escape is not text")
    elif isinstance(value, list):
        for item in value:
            _no_lone_surrogate(item)
    elif isinstance(value, dict):
        for key, item in value.items():
            _no_lone_surrogate(key)
            _no_lone_surrogate(item)


def strict_json(data):
    """The JSON value of a UTF-8 text (bytes or str; one leading byte order mark skipped, as the reader
    does), refusing what the reader's parser refuses beyond Python's: NaN, Infinity, lone surrogate
    escapes. Raises ValueError (UnicodeDecodeError, json.JSONDecodeError) for a text that is not JSON.
    A repeated key keeps its last value, as the reader keeps it."""
    if isinstance(data, bytes):
        data = data.decode("utf-8")
    if data.startswith("\ufeff"):
        data = data[1:]
    value = json.loads(data, parse_constant=_refuse_constant)
    _no_lone_surrogate(value)
    return value


def schema_versions(validators: dict, document) -> list:
    """The versions whose schema the document validates against (at most one: each fixes "version")."""
    return [version for version, validator in validators.items() if validator.is_valid(document)]


def _version_is_real(text: str) -> bool:
    class Real(float):
        pass

    try:
        value = json.loads(text.lstrip("\ufeff"), parse_float=Real, parse_constant=_refuse_constant)
    except ValueError:
        return False
    return isinstance(value, dict) and isinstance(value.get("version"), Real)


def _same(one: dict, other: dict) -> bool:
    """The either-id rule: same kOVA id, or else same Plexo id."""
    return one["kOVAId"] == other["kOVAId"] or one["PlexoId"] == other["PlexoId"]


def _table_refusal(document: dict) -> str | None:
    """"identity" or "root" when the table refuses an object of a document valid against its schema,
    read in the reader's order; None when the table takes every object."""
    if document["version"] == 6:
        if not document["References"]:
            return None
        instances = []
        for name, instance in document.get("RefInstances", {}).items():
            current = {"kOVAId": name, "PlexoId": instance["PlexoId"]}
            if any(_same(current, earlier) for earlier in instances):
                return "identity"
            instances.append(current)
        return None
    references = []
    has_root = False
    for reference in document["References"]:
        instances = []
        for instance in reference.get("Instances", []):
            if any(_same(instance, earlier) for earlier in instances):
                return "identity"
            instances.append(instance)
        if any(_same(reference, earlier) for earlier in references):
            return "identity"
        if not reference["IsLocal"]:
            if has_root:
                return "root"
            has_root = True
        references.append(reference)
    return None


def left_to_reader(text: str, document) -> str | None:
    """Why the reader may refuse a document that its schema validates, or None when it must accept
    it (text is the document's JSON text, document its value). The first rule the reader applies
    gives the reason: it looks for an envelope before it parses, reads the version before the
    references, and stops at the first object that the table refuses."""
    if ENVELOPE_PREFIX.search(text):
        return "envelope"
    if _version_is_real(text):
        return "version token"
    return _table_refusal(document)


def run(tool, *arguments, env=None):
    """The tool's completed process (bytes), with env added to the environment."""
    environment = dict(os.environ, **(env or {}))
    return subprocess.run([tool, *map(str, arguments)], capture_output=True, env=environment, timeout=300)


def check_records(tool, paths, batch=500) -> list:
    """The records of kova-mapping check --json for each path, in order, a few hundred files a call."""
    records = []
    for start in range(0, len(paths), batch):
        chunk = [str(path) for path in paths[start:start + batch]]
        result = run(tool, "check", "--json", *chunk)
        assert result.returncode in (0, 1), result.stderr
        lines = result.stdout.decode("utf-8").splitlines()
        assert len(lines) == len(chunk), result.stderr
        for path, line in zip(chunk, lines):
            record = json.loads(line)
            assert record["file"] == path
            records.append(record)
    return records


def refusal_of(record: dict) -> tuple:
    return record["status"], tuple(record["messages"])
