"""The schemas and the reader judge thousands of documents alike: documents of every version made by
kova-mapping generate, and mutants of them (keys dropped, values of other types, empty texts, other
versions, the wrong structure, unknown keys, clashing ids, stamps taken away...), made with a seeded
random generator so that every run tries the same documents.

For each document: the reader's verdict is kova-mapping check's "ok"; the schemas' verdict is whether
the document validates against one of them (each fixes "version"). They must agree, except where a
schema leaves the decision to the reader (schema_support.left_to_reader): there the reader may
refuse a document that validates, with the refusals that reason gives, and for every reason but the
envelope it must refuse it.
"""

import copy
import json
import random
from collections import Counter

import pytest

from conftest import DOCS, EXAMPLES
from schema_support import (UNDECIDED_REFUSALS, VERSIONS, check_records, left_to_reader, load_validators, refusal_of,
                            run, schema_versions, strict_json)

SEED = 20240611
MUTANTS = 2400
KEYS = ["kOVAId", "PlexoId", "RefId", "IsLocal", "IsSetKSS", "KOVASynchroStamp", "CEStamp", "CustomData", "Instances"]
VALUES = [None, True, False, 0, 1, -7, 2.5, "", "text", "V2:c3RhbXA=", "CESv1(x'01')", [], [1], {}, {"a": "b"}]


# The objects of a document, whatever its version and however mutated: (kind, object, container).
def objects(document):
    found = []
    if not isinstance(document, dict):
        return found
    references = document.get("References")
    if isinstance(references, dict):
        found += [("reference", value, references) for value in references.values() if isinstance(value, dict)]
        instances = document.get("RefInstances")
        if isinstance(instances, dict):
            found += [("instance", value, instances) for value in instances.values() if isinstance(value, dict)]
    elif isinstance(references, list):
        for reference in references:
            if isinstance(reference, dict):
                found.append(("reference", reference, references))
                instances = reference.get("Instances")
                if isinstance(instances, list):
                    found += [("instance", value, instances) for value in instances if isinstance(value, dict)]
    return found


def pick_object(rng, document):
    found = objects(document)
    return rng.choice(found) if found else None


# Mutations: each changes the document in place and returns False when it does not apply.
def drop_key(rng, document):
    if rng.random() < 0.15:
        key = rng.choice(["version", "References", "RefInstances"])
        return document.pop(key, None) is not None
    picked = pick_object(rng, document)
    if not picked or not picked[1]:
        return False
    del picked[1][rng.choice(sorted(picked[1]))]
    return True


def retype_key(rng, document):
    picked = pick_object(rng, document)
    if not picked:
        return False
    picked[1][rng.choice(KEYS)] = copy.deepcopy(rng.choice(VALUES))
    return True


def empty_text(rng, document):
    picked = pick_object(rng, document)
    if not picked:
        return False
    texts = [key for key, value in picked[1].items() if isinstance(value, str)]
    if not texts:
        return False
    picked[1][rng.choice(texts)] = ""
    return True


def other_version(rng, document):
    current = document.get("version")
    choices = [5, 13, 0, -1, 100, 2147483648, "12", str(current), None, True, [12], *VERSIONS]
    document["version"] = rng.choice([value for value in choices if value != current])
    return True


def real_version(rng, document):
    if not isinstance(document.get("version"), int) or isinstance(document.get("version"), bool):
        return False
    document["version"] = float(document["version"])
    return True


def other_structure(rng, document):
    references = document.get("References")
    if isinstance(references, dict):  # version 6
        choice = rng.randrange(6)
        if choice == 0:
            document["References"] = list(references.values())
        elif choice == 1:
            document["References"] = {**references, "Second-2": {"PlexoId": "prd-2", "CEStamp": "CESv1(x'02')"}}
        elif choice == 2 and references:
            document["References"] = {"": next(iter(references.values()))}
        elif choice == 3:
            document["RefInstances"] = rng.choice([[], None, 5, "x", list(document.get("RefInstances", {}).values())])
        elif choice == 4:
            instances = document.get("RefInstances")
            if not isinstance(instances, dict) or not instances:
                return False
            name = rng.choice(sorted(instances))
            instances[""] = instances.pop(name)
        else:
            document["References"] = rng.choice([None, "R", 5, []])
        return True
    if isinstance(references, list):
        choice = rng.randrange(5)
        if choice == 0:
            document["References"] = {str(i): value for i, value in enumerate(references)}
        elif choice == 1:
            document["References"] = rng.choice([None, "R", 5, {}])
        elif choice == 2:
            references.insert(rng.randrange(len(references) + 1), rng.choice([None, "R", 5, [], [{}]]))
        else:
            with_instances = [r for r in references if isinstance(r, dict)]
            if not with_instances:
                return False
            reference = rng.choice(with_instances)
            instances = reference.get("Instances")
            if choice == 3 or not isinstance(instances, list):
                reference["Instances"] = rng.choice([None, {}, "I", 0, {"A.1": {}}])
            else:
                instances.insert(rng.randrange(len(instances) + 1), rng.choice([None, "I", 5, [], [{}]]))
        return True
    return False


def unknown_keys(rng, document):
    targets = [document] + [found[1] for found in objects(document)]
    for _ in range(rng.randint(1, 3)):
        target = rng.choice(targets)
        key = rng.choice(["Extra", "kovaid", "plexoId", "Comment", "Instance", "REFERENCES", "Version", "X"])
        target[key] = copy.deepcopy(rng.choice(VALUES))
    return True


def optional_keys(rng, document):
    """Keys that the document's version does not demand, with values of any type."""
    picked = pick_object(rng, document)
    if not picked:
        return False
    key = rng.choice(["IsSetKSS", "CEStamp", "CustomData", "KOVASynchroStamp", "RefId"])
    picked[1][key] = copy.deepcopy(rng.choice(VALUES))
    return True


def clash(rng, document):
    """Another object's id, or a second root."""
    found = objects(document)
    if not found:
        return False
    kind, item, container = rng.choice(found)
    if kind == "reference" and rng.random() < 0.4:
        if isinstance(container, list):
            others = [r for r in container if isinstance(r, dict) and r is not item]
            if not others:
                return False
            rng.choice(others)["IsLocal"] = False
            item["IsLocal"] = False
            return True
        return False
    siblings = [value for value in (container.values() if isinstance(container, dict) else container)
                if isinstance(value, dict) and value is not item]
    if not siblings:
        return False
    key = rng.choice(["kOVAId", "PlexoId"])
    other = rng.choice(siblings)
    if key not in other:
        return False
    item[key] = copy.deepcopy(other[key])
    return True


def stamps(rng, document):
    picked = pick_object(rng, document)
    if not picked:
        return False
    item = picked[1]
    choice = rng.randrange(7)
    if choice == 0:
        item.pop("KOVASynchroStamp", None)
        item.pop("CEStamp", None)
    elif choice == 1:
        item.pop("KOVASynchroStamp", None)
        item["CEStamp"] = "CESv1(x'0a1b2c')"
    elif choice == 2:
        item["KOVASynchroStamp"] = ""
    elif choice == 3:
        item["CEStamp"] = rng.choice(["", 5, None, "CESv1(x'ff')"])
    elif choice == 4:
        item["KOVASynchroStamp"] = rng.choice(["V1:", "V0KSS:", "c3RhbXA=", "V9:x", "V12:x", "anything", " "])
    elif choice == 5:
        item["KOVASynchroStamp"] = copy.deepcopy(rng.choice([5, None, True, [], {}]))
    else:
        item["IsSetKSS"] = copy.deepcopy(rng.choice(VALUES))
    return True


def envelope_text(rng, document):
    picked = pick_object(rng, document)
    if not picked:
        return False
    picked[1][rng.choice(["kOVAId", "PlexoId", "CustomData"])] = f"rev V{rng.randint(1, 12)}:{rng.randint(0, 99)}:x"
    return True


MUTATIONS = [drop_key, retype_key, empty_text, other_version, real_version, other_structure, unknown_keys,
             optional_keys, clash, stamps, envelope_text]
WEIGHTS = [5, 5, 3, 2, 1, 3, 3, 3, 3, 4, 1]


def base_documents(tool):
    """Valid documents of every version: generated ones of several shapes and seeds, and the test
    documents the reader accepts."""
    texts = []
    for version in VERSIONS:
        shapes = [(0, 0), (1, 0), (1, 2), (1, 5)] if version == 6 else [(0, 0), (1, 0), (1, 3), (2, 2), (3, 1), (5, 2)]
        for references, instances in shapes:
            for seed in (1, 77):
                result = run(tool, "generate", "--references", references, "--instances", instances, "--version",
                             version, "--seed", seed)
                assert result.returncode == 0, result.stderr
                texts.append(result.stdout.decode("utf-8"))
    for path in sorted(DOCS.glob("v*_valid.json")) + [EXAMPLES / "v6_bracket.json", EXAMPLES / "v8_gearbox.json",
                                                         EXAMPLES / "v10_pump.json", EXAMPLES / "v12_conveyor.json"]:
        texts.append(path.read_text(encoding="utf-8"))
    return texts


@pytest.fixture(scope="module")
def corpus(tool, prefix, tmp_path_factory):
    """Every document tried: (text, value, mutations applied, the reader's record, schema versions)."""
    validators = load_validators(prefix)
    folder = tmp_path_factory.mktemp("agreement")
    rng = random.Random(SEED)
    bases = base_documents(tool)
    entries = [(text, ()) for text in bases]
    while len(entries) < len(bases) + MUTANTS:
        document = strict_json(rng.choice(bases))
        applied = []
        for _ in range(rng.choice([1, 1, 1, 2, 2, 3])):
            mutation = rng.choices(MUTATIONS, WEIGHTS)[0]
            if isinstance(document, dict) and mutation(rng, document):
                applied.append(mutation.__name__)
        if applied:
            entries.append((json.dumps(document, ensure_ascii=rng.random() < 0.5), tuple(applied)))
    paths = []
    for number, (text, _) in enumerate(entries):
        path = folder / f"{number:05}.json"
        path.write_text(text, encoding="utf-8")
        paths.append(path)
    records = check_records(tool, paths)
    tried = []
    for (text, applied), record in zip(entries, records):
        document = strict_json(text)
        tried.append((text, document, applied, record, schema_versions(validators, document)))
    return tried


def test_the_corpus_is_large_and_holds_both_verdicts_and_every_mutation(corpus):
    assert len(corpus) >= 2000
    valid = sum(1 for *_, versions in corpus if versions)
    accepted = sum(1 for _, _, _, record, _ in corpus if record["ok"])
    assert valid >= 500 and len(corpus) - valid >= 1000
    assert accepted >= 400
    applied = Counter(name for _, _, mutations, _, _ in corpus for name in mutations)
    assert set(applied) == {mutation.__name__ for mutation in MUTATIONS}
    # Documents of every version, valid and not.
    for version in VERSIONS:
        assert any(versions == [version] for *_, versions in corpus)
        assert any(not versions and isinstance(document, dict) and document.get("version") == version
                   for _, document, _, _, versions in corpus)


def test_every_document_the_reader_accepts_validates_against_the_schema_of_its_version(corpus):
    for text, _, mutations, record, versions in corpus:
        if record["ok"]:
            assert versions == [record["version"]], (mutations, text, record)


def test_every_document_no_schema_validates_is_refused_by_the_reader(corpus):
    for text, _, mutations, record, versions in corpus:
        if not versions:
            assert not record["ok"], (mutations, text)


def test_every_valid_document_is_read_unless_a_rule_left_to_the_reader_refuses_it(corpus):
    left = Counter()
    for text, document, mutations, record, versions in corpus:
        if not versions:
            continue
        reason = left_to_reader(text, document)
        if reason is None:
            assert record["ok"], (mutations, text, record)
            continue
        left[reason] += 1
        allowed = UNDECIDED_REFUSALS[reason]
        if allowed is not None:
            # The model of what the schemas leave to the reader says it refuses: it must.
            assert not record["ok"], (reason, mutations, text)
            assert refusal_of(record) in allowed, (reason, mutations, text, record)
    assert left["identity"] >= 50 and left["root"] >= 20 and left["version token"] >= 20 and left["envelope"] >= 10


def test_agreement_figures(corpus, capsys):
    valid = [entry for entry in corpus if entry[4]]
    left = [entry for entry in valid if left_to_reader(entry[0], entry[1]) is not None]
    disagreements = [entry for entry in corpus
                     if bool(entry[4]) != entry[3]["ok"] and not (entry[4] and left_to_reader(entry[0], entry[1]))]
    with capsys.disabled():
        print(f"\nschema agreement: {len(corpus)} documents, {len(valid)} valid against their schema "
              f"({len(left)} of them left to the reader), {len(corpus) - len(valid)} invalid, "
              f"{sum(1 for entry in corpus if entry[3]['ok'])} read by the reader, {len(disagreements)} disagreements")
    assert disagreements == []
