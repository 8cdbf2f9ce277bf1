"""Expands names, folders and URLs to a list of photographs."""
from __future__ import annotations

import functools
import os
from typing import Any, Dict, FrozenSet, Iterable, Iterator, List, Mapping, Optional, Tuple, Union

import fsspec

from .. import _vistatrim

Names = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]


def is_url(name: str) -> bool:
    return "://" in name


def key_of(name: str) -> str:
    """A key that is the same for all spellings of a name: 'a.jpg', './a.jpg', 'file:///folder/a.jpg'."""
    if not is_url(name):
        return os.path.abspath(name)
    protocol, _ = fsspec.core.split_protocol(name)
    path = str(fsspec.get_filesystem_class(protocol)._strip_protocol(name))
    return path if protocol in ("file", "local") else f"{protocol}://{path}"


@functools.lru_cache(maxsize=None)
def _endings() -> FrozenSet[str]:
    return frozenset("." + ending for ending in _vistatrim.readable_endings())


def _is_listed(name: str) -> bool:
    """True if a file in a remote folder counts as a photograph, judged by its ending alone: reading
    its content would take a request."""
    return not name.startswith(".") and os.path.splitext(name)[1].lower() in _endings()


def _walk(folder: str, recursive: bool) -> Iterator[str]:
    for name in sorted(os.listdir(folder), key=os.fsencode):
        path = os.path.join(folder, name)
        if name.startswith("."):
            continue
        if os.path.isdir(path):
            # Links to folders are not followed: they may form a cycle.
            if recursive and not os.path.islink(path):
                yield from _walk(path, recursive)
        elif _vistatrim.is_photograph_file(os.fsencode(path)):  # as `vistatrim` does
            yield path


def _walk_url(url: str, recursive: bool, storage_options: Mapping[str, Any]) -> Iterator[str]:
    files, root = fsspec.core.url_to_fs(url, **storage_options)
    depth = None if recursive else 1
    for path in sorted(files.find(root, maxdepth=depth)):
        inside = path[len(root.rstrip("/")) + 1:].split("/")
        if _is_listed(inside[-1]) and not any(part.startswith(".") for part in inside):
            yield str(files.unstrip_protocol(path))


def _expand(name: str, recursive: bool, storage_options: Mapping[str, Any]) -> Iterator[str]:
    """The photographs of a folder, or the name itself. A URL is a folder if it ends in a slash:
    querying the storage about each name would take one request per photograph."""
    if is_url(name):
        if name.endswith("/"):
            yield from _walk_url(name, recursive, storage_options)
        else:
            yield name
        return
    found = list(_walk(name, recursive)) if os.path.isdir(name) else []
    # A folder without photographs stays in the list, and gets a line that says what is wrong.
    yield from found or [name]


def list_photographs(names: Any, client: Any, recursive: bool,
                     storage_options: Optional[Mapping[str, Any]]) -> Tuple[List[str], int]:
    """Every photograph once, in the order of the input, and how many duplicates were left out.
    `names` is a name, some names, or a Dask bag of names."""
    if hasattr(names, "__dask_graph__"):
        names = client.compute(names).result() if client is not None else names.compute()
    if isinstance(names, (str, os.PathLike)):
        names = [names]
    options: Dict[str, Any] = dict(storage_options or {})
    found: Dict[str, str] = {}
    duplicates = 0
    for name in names:
        if not isinstance(name, (str, os.PathLike)):
            raise TypeError(f"photographs must be named by text, not {type(name).__name__}")
        for path in _expand(os.fsdecode(name), recursive, options):
            key = key_of(path)
            if key in found:
                duplicates += 1
            else:
                found[key] = path
    return list(found.values()), duplicates
