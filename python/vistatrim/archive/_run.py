"""Sends partitions to workers until all are finished."""
from __future__ import annotations

import hashlib
import math
import os
import time
from concurrent.futures import CancelledError
from contextlib import ExitStack
from dataclasses import dataclass
from typing import Any, Dict, List, Mapping, Optional, Tuple

from .. import _options, _vistatrim
from ._cluster import MemoryLimit, local_cluster, processors
from ._inputs import list_photographs
from ._manifest import ArchiveError, Counts, Manifest, now, open_manifest, run_record
from ._progress import Listener, Progress
from ._storage import UNFINISHED, Store
from ._work import NOTE, Job, run_partition

_LARGEST_PARTITION = 500  # about a minute of work: little to lose, little overhead
_PARTITIONS_PER_THREAD = 8  # for small archives, so that all threads finish at about the same time
_SENT_PER_THREAD = 3  # a worker that finishes one must find the next one waiting
_MANIFEST_SECONDS = 5.0

_GONE = "the scheduler is gone; a new run does the rest"


@dataclass(frozen=True)
class Summary:
    """What the output holds, and what this run added."""

    photographs: int
    failed: int
    crops: int
    partitions: int
    duplicates: int
    added: int  # photographs processed in this run
    seconds: float  # duration of this run

    def __str__(self) -> str:
        text = (f"{self.photographs:,} photographs, {self.failed:,} failed, {self.crops:,} crops "
                f"in {self.partitions:,} partitions; {self.added:,} in this run, "
                f"{self.seconds:.1f} s")
        if self.added:
            text += f", {self.added / max(self.seconds, 1e-9):.1f} photographs/s"
        if self.duplicates:
            text += f"; {self.duplicates:,} duplicates left out"
        return text


def _threads(client: Any) -> int:
    return sum(client.nthreads().values())


def _regions_file(path: _options.Plain) -> Tuple[_vistatrim.RegionsFile, str]:
    """The file, and a hash of its content for the manifest, because people move files."""
    if not isinstance(path, str):
        raise TypeError("regions must be the name of a file: a list is for one photograph")
    content = _options.content_of("regions", path)
    return _options.regions_file(path, content), _hash_of(content)


def _hash_of(content: bytes) -> str:
    return "sha256 " + hashlib.sha256(content).hexdigest()


def run(names: Any, *, output: str, client: Any, recursive: bool, background: object,
        partition_size: Optional[int], tries: int, workers: Optional[int],
        memory_limit: MemoryLimit, storage_options: Optional[Mapping[str, Any]],
        progress: Optional[Listener], options: Mapping[str, object]) -> Summary:
    checked = _options.checked(options)
    colour = _options.background_colour(background)
    if partition_size is not None:
        partition_size = _options._integer("partition_size", partition_size, 1, 1_000_000)
    if workers is not None:
        workers = _options._integer("workers", workers, 1, 10_000)
    tries = _options._integer("tries", tries, 1, 100)
    began = time.monotonic()
    recorded: Dict[str, Any] = {**checked, "background": colour}
    regions = None
    if "regions" in checked:
        regions, recorded["regions"] = _regions_file(checked.pop("regions"))
    ranking = None
    if "ranking" in checked:
        _options.requests_of(checked)  # rejects a file that is not a ranking
        ranking = _options.content_of("ranking", str(checked["ranking"]))
        recorded["ranking"] = _hash_of(ranking)
    photographs, duplicates = list_photographs(names, client, recursive, storage_options)
    if regions and photographs and not any(regions.names(os.fsencode(path))
                                           for path in photographs):
        raise ValueError("the file of regions names none of the photographs")
    threads = (workers or processors()) if client is None else max(1, _threads(client))
    if partition_size is None:
        even = -(-len(photographs) // (threads * _PARTITIONS_PER_THREAD))
        partition_size = min(_LARGEST_PARTITION, max(1, even))
    job = Job(output, _vistatrim.VERSION, checked, colour, tries, ranking,
              dict(storage_options or {}))
    manifest = open_manifest(Store(output, storage_options), recorded, photographs, duplicates,
                             partition_size)
    before = manifest.counts.photographs
    seconds = 0.0
    if len(manifest.counted) < manifest.partitions:
        record = run_record(threads)
        manifest.runs.append(record)
        try:
            with ExitStack() as stack:
                if client is None:
                    client = stack.enter_context(local_cluster(threads, memory_limit))
                _Run(client, job, manifest, regions, progress).finish()
        finally:
            seconds = time.monotonic() - began
            record["ended"] = now()
            record["seconds"] = round(seconds, 3)
            record["photographs"] = manifest.counts.photographs - before
            manifest.write()
        manifest.store.remove_hidden(UNFINISHED, NOTE)
    counts = manifest.counts
    return Summary(counts.photographs, counts.failed, counts.crops, manifest.partitions,
                   manifest.duplicates, counts.photographs - before, seconds)


@dataclass
class _Sent:
    future: Any
    photographs: List[str]


class _Run:
    def __init__(self, client: Any, job: Job, manifest: Manifest,
                 regions: Optional[_vistatrim.RegionsFile], progress: Optional[Listener]) -> None:
        self._client = client
        self._job = job
        self._manifest = manifest
        self._regions = regions
        self._progress = progress
        self._sent: Dict[int, _Sent] = {}
        self._faults: Dict[int, int] = {}
        self._began = time.monotonic()
        self._before = manifest.counts.photographs
        self._written = time.monotonic()
        self._known_threads = 1
        self._threads_counted = -math.inf  # when

    def finish(self) -> None:
        try:
            self._work()
        except (OSError, TimeoutError) as error:
            raise ArchiveError(_GONE) from error
        finally:
            for sent in self._sent.values():
                sent.future.release()

    def _work(self) -> None:
        # The partitions come from a generator and only a few are in flight at a time, so the
        # scheduler never holds the whole list.
        waiting = self._manifest.missing()
        left = True
        self._report_progress()
        while left or self._sent:
            while left and len(self._sent) < _SENT_PER_THREAD * self._threads():
                partition = next(waiting, None)
                if partition is None:
                    left = False
                else:
                    self._send(*partition)
            if not self._take_finished():
                time.sleep(0.02)

    def _threads(self) -> int:
        """Workers come and go, and asking the scheduler takes a round trip, so the count is cached."""
        if time.monotonic() - self._threads_counted > _MANIFEST_SECONDS:
            self._known_threads = max(1, _threads(self._client))
            self._threads_counted = time.monotonic()
        return self._known_threads

    def _send(self, index: int, photographs: List[str]) -> None:
        # Sent along, since workers may not have the file.
        regions = {} if self._regions is None else {
            path: found for path in photographs
            if (found := self._regions.regions_of(os.fsencode(path)))}
        future = self._client.submit(run_partition, self._job, index, photographs, regions,
                                     pure=False)
        self._sent[index] = _Sent(future, photographs)

    def _take_finished(self) -> bool:
        if self._client.status in ("closed", "closing"):
            raise ArchiveError(_GONE)
        if self._client.status != "running":  # it is trying to reconnect
            return False
        ended = [index for index, sent in self._sent.items() if sent.future.status != "pending"]
        for index in ended:
            sent = self._sent.pop(index)
            if sent.future.status == "finished":
                try:
                    counts = sent.future.result()
                except CancelledError:  # the scheduler disappeared before the result arrived
                    self._sent[index] = sent
                    return False
                self._count(index, counts)
            else:
                self._send_again(index, sent)
        if ended:
            self._report_progress()
            if time.monotonic() - self._written > _MANIFEST_SECONDS:
                self._manifest.write()
                self._written = time.monotonic()
        return bool(ended)

    def _count(self, index: int, counts: Counts) -> None:
        if index in self._manifest.counted:
            return
        if counts.photographs == 0:  # a worker of an earlier run has finished it in the meantime
            self._manifest.count_finished()
            return
        self._manifest.counted.add(index)
        self._manifest.counts.add(counts)

    def _send_again(self, index: int, sent: _Sent) -> None:
        """Retries after a cancelled task, a dead worker or an output that cannot be written."""
        error = _error_of(sent.future)
        if isinstance(error, (ArchiveError, ImportError)):
            raise ArchiveError(f"a worker cannot do its work: {error}") from error
        self._faults[index] = self._faults.get(index, 0) + 1
        if self._faults[index] > self._job.tries:
            raise ArchiveError(f"{len(sent.photographs)} photographs from {sent.photographs[0]} on "
                               f"(partition {index}) failed {self._faults[index]} times: "
                               f"{type(error).__name__}: {error}") from error
        self._send(index, sent.photographs)

    def _report_progress(self) -> None:
        if self._progress is None:
            return
        counts, total = self._manifest.counts, len(self._manifest.photographs)
        added = counts.photographs - self._before
        rate = added / max(time.monotonic() - self._began, 1e-9)
        remaining = (total - counts.photographs) / rate if added else 0.0
        self._progress(Progress(counts.photographs, total, counts.failed, rate, remaining))


def _error_of(future: Any) -> BaseException:
    """Why a task has no result. A lost or cancelled task has only its state."""
    if future.status == "error":
        error = future.exception()
        if isinstance(error, BaseException):
            return error
    return RuntimeError(f"the task was {future.status}")
