"""kovamapping.diff: what changed between two mapping tables, as ``kova-mapping diff`` sees it."""

from __future__ import annotations

import dataclasses
from typing import Any, Union

from . import _kovamapping


@dataclasses.dataclass(frozen=True)
class Change:
    """One record of a diff.

    Attributes:
        kind: "removed", "added", "moved" or "changed".
        object: "reference" or "instance".
        kova_id: the object's kOVA id.
        parent: for an instance, the kOVA id of the reference it stands under (in the old table
            when removed, in the new one otherwise); None for a reference.
        fields: what changed, each field name to its (old, new) values. A move gives
            {"parent": (old parent, new parent)}; a change gives the document keys that differ,
            in the order PlexoId, IsLocal (bools), RefId, CustomData, KOVASynchroStamp (as
            "V<stamp version>:<stamp>", so that a change of either shows).
    """

    kind: str
    object: str
    kova_id: str
    parent: Union[str, None]
    fields: dict[str, tuple[Any, Any]]


def _field(name: str, before: str, after: str) -> tuple[str, tuple[Any, Any]]:
    if name == "IsLocal":
        return name, (before == "true", after == "true")
    return name, (before, after)


def diff(old, new) -> list[Change]:
    """The changes from old to new, in the order of ``kova-mapping diff``: removed, added, moved,
    changed, references before instances in each group.

    old and new are Tables, or anything kovamapping.read takes. Objects are matched by kOVA id
    (instances under the same reference first); the order of objects and the documents' versions
    are not compared.
    """
    from . import Table, read

    before = old if isinstance(old, Table) else read(old)
    after = new if isinstance(new, Table) else read(new)
    changes = []
    for kind, kind_of_object, kova_id, parent, old_parent, fields in _kovamapping._diff(before, after):
        if kind == "moved":
            shown = {"parent": (old_parent, parent)}
        else:
            shown = dict(_field(*field) for field in fields)
        changes.append(Change(kind, kind_of_object, kova_id, parent, shown))
    return changes
