"""kovamapping.Error: what the library refused, with its status and its reasons."""

from __future__ import annotations

from typing import Iterable


class Error(ValueError):
    """A refusal of the library: a document that does not read, a change a table refuses, an
    envelope that does not open, a stamp that is not computed.

    Attributes:
        status: the library's status, as an unsigned 32-bit number (0x80004005 is its one
            failure code; others come from the services it runs on). The message shows it in
            hexadecimal.
        messages: the reasons, in order: for a document, the reader's messages as
            ``kova-mapping check`` reports them ("UNVALUATED MANDATORY FIELD IsLocal", ...).
    """

    status: int
    messages: list[str]

    def __init__(self, message: str, status: int, messages: Iterable[str] = ()) -> None:
        super().__init__(message)
        self.status = status
        self.messages = list(messages)

    def __reduce__(self):
        # Errors travel between processes (a Dask worker's result) with their attributes.
        return (type(self), (str(self), self.status, self.messages))
