"""kovamapping.audit: many documents checked in parallel threads of the library's own."""

from __future__ import annotations

import dataclasses
import os
import sys
import time
from typing import Iterable, Iterator, Optional, Union

from . import _kovamapping


@dataclasses.dataclass(frozen=True)
class AuditRecord:
    """What one document holds, or why it does not read.

    Attributes:
        path: the path given, the name given with the bytes, or None for bare bytes.
        ok: whether the document reads.
        status: the reader's status as an unsigned number (0 when ok; 0x8007000D for text that is
            not UTF-8), or None when the file could not be read at all.
        messages: why it does not read (the reader's messages as ``kova-mapping check`` reports
            them, or the file's error); empty when ok.
        version: the document's version, references, instances: its counts, root: the kOVA id of
            its root reference (None without one). None and 0 when not ok.
        seconds: the time taken to read and check it.
    """

    path: Union[str, os.PathLike, None]
    ok: bool
    status: Optional[int]
    messages: list[str]
    version: Optional[int]
    references: int
    instances: int
    root: Optional[str]
    seconds: float


def _item(source):
    if isinstance(source, tuple):
        if len(source) != 2:
            raise TypeError("audit: a tuple source is (name, bytes)")
        name, data = source
        memoryview(data)  # TypeError when not bytes-like
        return (name, data)
    if isinstance(source, (bytes, bytearray, memoryview)):
        return (None, source)
    if isinstance(source, (str, os.PathLike)):
        return (source, None)
    raise TypeError(
        "audit: each document is a path (str or os.PathLike), bytes, or a (name, bytes) pair, "
        f"not {type(source).__name__}"
    )


class _Progress:
    """A one-line progress bar on standard error: count, rate and time left."""

    def __init__(self, total: int, stream=None) -> None:
        self.total = total
        self.done = 0
        self.failed = 0
        self.stream = stream if stream is not None else sys.stderr
        self.start = time.monotonic()
        self.shown = 0.0

    def update(self, ok: bool) -> None:
        self.done += 1
        self.failed += 0 if ok else 1
        now = time.monotonic()
        if now - self.shown >= 0.1 or self.done == self.total:
            self.shown = now
            self.show(now)

    def show(self, now: float) -> None:
        elapsed = max(now - self.start, 1e-9)
        rate = self.done / elapsed
        left = (self.total - self.done) / rate if rate > 0 else 0.0
        width = 30
        filled = int(width * self.done / self.total) if self.total else width
        bar = "#" * filled + "." * (width - filled)
        self.stream.write(
            f"\raudit [{bar}] {self.done}/{self.total} ({self.failed} failed) "
            f"{rate:,.0f} docs/s, {left:.0f} s left "
        )
        if self.done == self.total:
            self.stream.write("\n")
        self.stream.flush()


def audit(
    paths: Iterable[Union[str, os.PathLike, bytes, tuple]],
    workers: Optional[int] = None,
    progress: bool = False,
) -> Iterator[AuditRecord]:
    """Checks many documents in parallel and yields one AuditRecord per document, in the order given.

    paths holds paths (str or os.PathLike: here a str is a path), documents as bytes, or
    (name, bytes) pairs. workers threads (default: the number of CPUs) read and check the
    documents without the GIL, running ahead of the consumer by a bounded window; a document that
    does not read, or a file that cannot be opened, gives a record that says so and the others go
    on. progress=True shows a progress bar on standard error.
    """
    # The arguments are checked now, not when the iteration starts.
    items = [_item(source) for source in paths]
    count = workers if workers is not None else (os.cpu_count() or 1)
    if not isinstance(count, int) or isinstance(count, bool) or count < 1:
        raise ValueError(f"audit: workers must be a positive int, not {workers!r}")
    run = _kovamapping._AuditRun(items, count)
    return _records(run, _Progress(len(items)) if progress else None)


def _records(run, bar: Optional[_Progress]) -> Iterator[AuditRecord]:
    if bar is not None and len(run) == 0:
        bar.show(time.monotonic())
    for fields in run:
        record = AuditRecord(*fields)
        if bar is not None:
            bar.update(record.ok)
        yield record
