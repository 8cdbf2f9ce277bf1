"""Crops for archives of photographs, on one machine or a Dask cluster.

    from vistatrim import archive
    archive.suggest(["photographs/"], output="crops", aspect="4:5")

The same on a command line: python3 -m vistatrim.archive photographs/ --output crops --aspect 4:5
"""
from __future__ import annotations

from typing import Any, Mapping, Optional

from ._cluster import MemoryLimit
from ._manifest import ArchiveError
from ._progress import Listener, Progress
from ._run import Summary, run

__all__ = ["ArchiveError", "Progress", "Summary", "suggest"]


def suggest(photographs: Any, *, output: str, client: Any = None, recursive: bool = False,
            background: object = "white", partition_size: Optional[int] = None, tries: int = 2,
            workers: Optional[int] = None, memory_limit: MemoryLimit = "auto",
            storage_options: Optional[Mapping[str, Any]] = None,
            progress: Optional[Listener] = None, **options: Any) -> Summary:
    """Writes the best crops of many photographs as files of JSON lines.

    photographs      names of files or folders, URLs that fsspec reads, or a Dask bag of them
    output           folder or URL; an existing output is completed
    client           a distributed.Client; without one, a local cluster is started
    partition_size   photographs per partition; by default up to 500
    tries            how often to try a photograph whose worker dies or runs out of memory
    workers          processes of the local cluster; by default one per processor
    memory_limit     of each process: "2GB", bytes, or "auto" for its share of the memory
    storage_options  what fsspec needs to reach photographs and output
    progress         called with a Progress after each partition
    options          those of vistatrim.suggest()

    A photograph that fails gets a line with `error`. Raises ArchiveError if the run cannot go on,
    or if the output was written with other options.
    """
    return run(photographs, output=output, client=client, recursive=recursive,
               background=background, partition_size=partition_size, tries=tries, workers=workers,
               memory_limit=memory_limit, storage_options=storage_options, progress=progress,
               options=options)
