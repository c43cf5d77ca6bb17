"""Auditing a vault of mapping documents on a Dask cluster.

Each task audits a batch of documents with kovamapping.audit (threads of the library's own, without
the GIL) on the worker that runs it; the client gathers the records. The same code runs on the
machine's own processes (LocalCluster) or on a real cluster: give the scheduler's address.

    python3 dask_audit.py FOLDER                      # a LocalCluster of 2 worker processes
    python3 dask_audit.py FOLDER tcp://scheduler:8786 # a running cluster (workers need kovamapping)

Documents go by path when the workers see the same files (a shared file system), or as bytes
(audit_documents(client, [(name, data), ...])) when they do not.
"""

from __future__ import annotations

import pathlib
import sys
from typing import Iterable, Sequence

import kovamapping


def audit_batch(batch: Sequence, workers: int = 1) -> list[kovamapping.AuditRecord]:
    """Runs on a Dask worker: the records of one batch of documents (paths, bytes or (name, bytes))."""
    return list(kovamapping.audit(batch, workers=workers))


def audit_documents(client, documents: Iterable, batch_size: int = 500, workers: int = 1) -> list[kovamapping.AuditRecord]:
    """The records of every document, in the order given, audited in batches on the client's cluster."""
    documents = list(documents)
    batches = [documents[start:start + batch_size] for start in range(0, len(documents), batch_size)]
    futures = client.map(audit_batch, batches, workers=workers, pure=False)
    return [record for records in client.gather(futures) for record in records]


def main(folder: str, scheduler: str | None = None) -> int:
    from distributed import Client, LocalCluster

    paths = sorted(str(path) for path in pathlib.Path(folder).rglob("*.json"))
    if scheduler:
        client = Client(scheduler)
        cluster = None
    else:
        cluster = LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None)
        client = Client(cluster)
    try:
        records = audit_documents(client, paths)
    finally:
        client.close()
        if cluster is not None:
            cluster.close()
    failed = [record for record in records if not record.ok]
    for record in failed:
        print(f"{record.path}: {'; '.join(record.messages)}")
    print(f"{len(records)} documents, {len(records) - len(failed)} ok, {len(failed)} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
