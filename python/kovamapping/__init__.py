"""kovamapping: mapping tables, mapping documents and synchro stamps from Python.

The Python face of the KOVAMappingServices C++ library, with its exact semantics: the same reader
and writer, the same identity and root rules, the same stamps, the same messages as the
``kova-mapping`` tool.

Documents
    read(source) -> Table            a document's text (str), its UTF-8 bytes, or a path
    Table.to_json(compress=False)    the document the library writes (current version)
    Table.write(path, compress=False)   the same, written atomically
    pack(text), unpack(text)         the compressed envelope

Tables and objects
    Table(), Reference(kova_id, plexo_id, ...), Instance(kova_id, plexo_id, ref_id, ...)
    table.references, reference.instances (live sequences), table.objects, iter(table), len(table)
    table.find(kova_id=...) / table.find(plexo_id=...), add_reference, add_instance, remove, clear
    Objects are handles: a change through one is seen through every other, and the table's.

Stamps
    compute_stamp(attributes, text=False), versioned, stamp_version, strip_version, from_ce_stamp

Whole vaults
    diff(old, new) -> [Change]       as kova-mapping diff
    audit(paths, workers=None, progress=False) -> AuditRecord per document, in parallel threads
    Table.to_pandas(), audit_frame(paths, ...)   pandas DataFrames (pandas optional)

Failures raise kovamapping.Error (a ValueError) with .status and .messages; files that cannot be
read raise the usual OSError subclasses. The library's work (reading, writing, packing, unpacking,
stamp computation, audits) runs without the GIL.

Threads: reading documents from several threads at once is safe. A table and its objects are used
by one thread at a time, as in C++; while a table is being written without the GIL, changes from
other threads wait until the writing is done.
"""

from ._error import Error
from ._kovamapping import (
    Instance,
    Instances,
    Reference,
    References,
    Table,
    __version__,
    from_ce_stamp,
    pack,
    read,
    stamp_version,
    strip_version,
    unpack,
    versioned,
)
from ._stamps import compute_stamp
from ._diff import Change, diff
from ._audit import AuditRecord, audit
from ._frames import audit_frame, table_to_pandas as _table_to_pandas

Table.to_pandas = _table_to_pandas

__all__ = [
    "AuditRecord",
    "Change",
    "Error",
    "Instance",
    "Instances",
    "Reference",
    "References",
    "Table",
    "__version__",
    "audit",
    "audit_frame",
    "compute_stamp",
    "diff",
    "from_ce_stamp",
    "pack",
    "read",
    "stamp_version",
    "strip_version",
    "unpack",
    "versioned",
]
