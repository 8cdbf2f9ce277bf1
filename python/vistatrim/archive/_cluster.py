"""Where the work is done: on an existing cluster or a local one."""
from __future__ import annotations

import os
from contextlib import contextmanager
from typing import Any, Iterator, Union

from ._manifest import ArchiveError

# Otherwise glibc returns the memory of each analysis to the system, and the next analysis faults it
# in again page by page.
_KEEP_FREED_MEMORY = {"MALLOC_TRIM_THRESHOLD_": str(512 << 20),
                      "MALLOC_MMAP_THRESHOLD_": str(32 << 20)}

MemoryLimit = Union[str, int, None]  # per process: "2GB", bytes, "auto" for its share, or None for no limit


def processors() -> int:
    return len(os.sched_getaffinity(0))


@contextmanager
def connected(address: str, timeout: float) -> Iterator[Any]:
    """A client of the scheduler at the address."""
    import distributed

    try:
        client = distributed.Client(address, timeout=timeout, set_as_default=False)
    except (OSError, TimeoutError) as error:
        raise ArchiveError(f"no scheduler answers at {address} within {timeout:g} s") from error
    except ValueError as error:
        raise ArchiveError(f"{address} is not the address of a scheduler: {error}") from error
    with client:
        yield client


@contextmanager
def local_cluster(workers: int, memory_limit: MemoryLimit) -> Iterator[Any]:
    """A client of a local cluster on loopback: processes with one thread each."""
    import dask
    import distributed

    spawn = {**dask.config.get("distributed.nanny.pre-spawn-environ", {}), **_KEEP_FREED_MEMORY}
    with dask.config.set({"distributed.nanny.pre-spawn-environ": spawn}):
        with distributed.LocalCluster(
                n_workers=workers, threads_per_worker=1, processes=True, host="127.0.0.1",
                dashboard_address=None, memory_limit=memory_limit) as cluster:
            with distributed.Client(cluster, set_as_default=False) as client:
                yield client
