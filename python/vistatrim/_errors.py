"""The exceptions of this package, and the translation of the library's failures into them."""
from __future__ import annotations

from contextlib import contextmanager
from typing import Iterator

from . import _vistatrim

# The request is invalid, or does not fit this photograph.
_WRONG_VALUES = ("invalid-request", "does-not-fit")


class PhotoError(Exception):
    """A photograph that cannot be read, or a crop that cannot be written.

    ``file`` is its name, ``kind`` is ``unreadable``, ``unsupported``, ``damaged``,
    ``not-writable`` or ``internal``, and ``reason`` is one line without the name.
    """

    def __init__(self, file: str, kind: str, reason: str) -> None:
        super().__init__(file, kind, reason)
        self.file = file
        self.kind = kind
        self.reason = reason

    def __str__(self) -> str:
        return f"{self.file}: {self.reason}"


@contextmanager
def named(file: str) -> Iterator[None]:
    """Turns failures of the library into exceptions that name the photograph."""
    try:
        yield
    except _vistatrim.Failure as failure:
        kind, reason, _ = failure.args
        if kind in _WRONG_VALUES:
            raise ValueError(f"{file}: {reason}") from None
        if kind == "out-of-memory":
            raise MemoryError(f"{file}: {reason}") from None
        raise PhotoError(file, kind, reason) from None


def wrong_type(name: str, form: str, value: object) -> TypeError:
    return TypeError(f"{name} must be {form}, not {type(value).__name__}")


def wrong_value(name: str, form: str, value: object) -> ValueError:
    return ValueError(f"{name} must be {form}, not {value!r}")

