"""The work on one partition. It does not need Dask."""
from __future__ import annotations

import json
import os
import tempfile
import time
from collections import deque
from concurrent.futures import Future, ThreadPoolExecutor
from contextlib import contextmanager
from dataclasses import dataclass
from typing import Any, Callable, Deque, Dict, Iterator, List, Mapping, Optional, Tuple, Union

import fsspec

from .. import _options, _vistatrim
from ._inputs import is_url
from ._manifest import ArchiveError, Counts, partition_name
from ._storage import Store

NOTE = ".trying"  # ending of the files that record tries
_READ_AHEAD = 4  # photographs

# The name of a file that the library opens itself, the bytes of a file, or why it cannot be read.
Content = Union[str, bytes, Exception]


@dataclass(frozen=True)
class Job:
    """Data that all partitions of a run share."""

    output: str
    version: str
    options: Mapping[str, Any]  # checked
    background: List[float]
    tries: int
    ranking: Optional[bytes]  # content of the file, which workers may not have
    storage_options: Mapping[str, Any]


# Regions by photograph, for those of a partition that have any.
Regions = Mapping[str, List[Tuple[Any, ...]]]


def run_partition(job: Job, index: int, photographs: List[str], regions: Regions) -> Counts:
    """Writes the partition's file, unless it exists already. If two workers process one partition,
    both write the same lines to the same name."""
    if job.version != _vistatrim.VERSION:
        raise ArchiveError(f"a worker has version {_vistatrim.VERSION} of vistatrim, and the run "
                           f"was started by {job.version}")
    store = Store(job.output, job.storage_options)
    counts = Counts()
    if store.exists(partition_name(index)):
        return counts
    _vistatrim.set_threads_per_picture(1)  # the other processors have workers of their own
    with _with_ranking(job) as options:
        requests = _options.requests_of(options)
    faces, ignores_metadata, _ = _options.region_use_of(job.options, "")
    tries = _Tries(store, index, job.tries)
    lines = []
    with tries:
        for number, (path, content) in enumerate(_read_ahead(photographs, job)):
            use = (faces, ignores_metadata, tuple(regions.get(path, ())))
            line = tries.guarded(number, lambda: _line(
                content(), requests, _options.region_options(use), job))
            counts.add(Counts(1, int("error" in line), len(line.get("crops", ()))))
            lines.append(_text(path, line))
    store.write(partition_name(index), "".join(lines).encode())
    tries.forget()
    return counts


@contextmanager
def _with_ranking(job: Job) -> Iterator[Mapping[str, Any]]:
    """The options, with the ranking in a file on this worker."""
    if job.ranking is None:
        yield job.options
        return
    with tempfile.NamedTemporaryFile() as file:
        file.write(job.ranking)
        file.flush()
        yield {**job.options, "ranking": file.name}


class _Tries:
    """Finds the photograph that kills the workers that try it.

    The first try of a partition leaves a note that it began. A worker that finds such a note
    replaces one that died, and records each photograph before it starts on it, so that the next
    worker knows where this one died. This costs one small write for an ordinary partition, and
    one per photograph for a partition whose worker died.
    """

    def __init__(self, store: Store, index: int, most: int) -> None:
        self._store = store
        self._name = f".part-{index:06d}{NOTE}"
        self._most = most
        note = store.read_json(self._name)
        self._is_careful = note is not None
        self._deaths: Dict[str, int] = dict(note["deaths"]) if note else {}
        if note and note["at"] is not None:
            at = str(note["at"])
            self._deaths[at] = self._deaths.get(at, 0) + 1
        self._note(None)

    def __enter__(self) -> None:
        pass

    def __exit__(self, *_: object) -> None:
        # Whatever happened, the worker is alive: the last photograph did not kill it.
        if self._is_careful:
            self._note(None)

    def guarded(self, number: int, work: Callable[[], Dict[str, Any]]) -> Dict[str, Any]:
        deaths = self._deaths.get(str(number), 0)
        if deaths >= self._most:
            return {"error": f"not finished: the worker died in each of {deaths} tries, probably "
                             "out of memory"}
        if self._is_careful:
            self._note(number)
        return work()

    def forget(self) -> None:
        self._store.remove(self._name)

    def _note(self, at: Optional[int]) -> None:
        self._store.write_json(self._name, {"at": at, "deaths": self._deaths})


def _line(content: Content, requests: List[_options.ShapeRequest],
          regions: _vistatrim.RegionOptions, job: Job) -> Dict[str, Any]:
    """The object that the program writes as JSON, without the file name."""
    if isinstance(content, Exception):
        return {"error": f"cannot be read: {content or type(content).__name__}".replace("\n", " ")}
    if not content:
        return {"error": "the file is empty"}
    for remaining in reversed(range(job.tries)):
        try:
            if isinstance(content, str):
                source = _vistatrim.Photograph.from_file(os.fsencode(content), job.background)
            else:
                source = _vistatrim.Photograph.from_bytes(content, job.background)
            _options.check(source, requests)
            return _options.suggest(_vistatrim.Analysis(source, regions), requests)
        except _vistatrim.Failure as failure:
            kind, _, reason = failure.args
            if kind != "out-of-memory" or not remaining:
                return {"error": reason}
        except MemoryError:
            if not remaining:
                return {"error": "not enough memory"}
    raise AssertionError("there is at least one try")


def _text(path: str, line: Mapping[str, Any]) -> str:
    # Like the program, replaces bytes that are not UTF-8.
    name = os.fsencode(path).decode("utf-8", "replace")
    return json.dumps({"file": name, **line}, ensure_ascii=False, separators=(",", ":")) + "\n"


def _read_ahead(photographs: List[str], job: Job) -> Iterator[Tuple[str, Callable[[], Content]]]:
    """The photographs, each with a function that returns its content. The next ones are fetched
    during an analysis, so storage causes waiting only where it is slower than the analysis."""
    with ThreadPoolExecutor(_READ_AHEAD) as pool:
        ahead: Deque["Future[Content]"] = deque()
        fetched = 0
        for path in photographs:
            while fetched < len(photographs) and len(ahead) < _READ_AHEAD:
                ahead.append(pool.submit(_fetch, photographs[fetched], job))
                fetched += 1
            yield path, ahead.popleft().result


def _fetch(path: str, job: Job) -> Content:
    if not is_url(path):
        _announce(path)
        return path
    for remaining in reversed(range(job.tries)):
        try:
            files, inside = fsspec.core.url_to_fs(path, **job.storage_options)
            return bytes(files.cat_file(inside))
        except (FileNotFoundError, PermissionError, IsADirectoryError) as error:
            return error
        except Exception as error:  # whatever the storage's own library raises
            if not remaining:
                return error
            time.sleep(0.2)
    raise AssertionError("there is at least one try")


def _announce(path: str) -> None:
    """Has the system read the file in the background; the library then finds it in memory."""
    if not hasattr(os, "posix_fadvise"):
        return
    try:
        file = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    except OSError:
        return  # the library will report the error
    try:
        os.posix_fadvise(file, 0, 0, os.POSIX_FADV_WILLNEED)
    except OSError:
        pass
    finally:
        os.close(file)
