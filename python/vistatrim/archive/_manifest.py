"""The files of the output: which photographs, in which partitions, with which options.

manifest.json           options, version, counts, times
photographs-0000.jsonl  the photographs of the first run, one JSON string per line; later runs
                        that name more photographs add photographs-0001.jsonl and so on
part-000000.jsonl       a finished partition: one line per photograph, as the program writes them
"""
from __future__ import annotations

import json
import re
from dataclasses import dataclass, field
from datetime import datetime, timezone
from typing import Any, Dict, Iterable, Iterator, List, Mapping, Optional, Set, Tuple

from .. import _vistatrim
from ._inputs import key_of
from ._storage import UNFINISHED, Store

_FORMAT = 1
_MANIFEST = "manifest.json"
_PARTITION = re.compile(r"part-(\d{6,})\.jsonl")


class ArchiveError(Exception):
    """A run that cannot start or continue. Finished work stays, and a new run does the rest."""


@dataclass
class Counts:
    photographs: int = 0
    failed: int = 0
    crops: int = 0

    def add(self, other: "Counts") -> None:
        self.photographs += other.photographs
        self.failed += other.failed
        self.crops += other.crops


def partition_name(index: int) -> str:
    return f"part-{index:06d}.jsonl"


def counts_of(content: bytes) -> Counts:
    """Counts the lines of a finished partition."""
    counts = Counts()
    for line in content.splitlines():
        found = json.loads(line)
        counts.add(Counts(1, int("error" in found), len(found.get("crops", ()))))
    return counts


def ranges_text(numbers: Iterable[int]) -> str:
    """'0-57,60', which stays short for millions of finished partitions."""
    runs: List[List[int]] = []
    for number in sorted(numbers):
        if runs and number == runs[-1][1] + 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    return ",".join(f"{first}-{last}" if last > first else str(first) for first, last in runs)


def ranges_of(text: str) -> Set[int]:
    numbers: Set[int] = set()
    for piece in text.split(",") if text else ():
        first, _, last = piece.partition("-")
        numbers.update(range(int(first), int(last or first) + 1))
    return numbers


def now() -> str:
    return datetime.now(timezone.utc).isoformat(timespec="seconds")


@dataclass
class Manifest:
    store: Store
    options: Mapping[str, Any]
    duplicates: int = 0
    plans: List[Dict[str, int]] = field(default_factory=list)
    runs: List[Dict[str, Any]] = field(default_factory=list)
    counted: Set[int] = field(default_factory=set)
    counts: Counts = field(default_factory=Counts)
    photographs: List[str] = field(default_factory=list)

    @property
    def partitions(self) -> int:
        return sum(plan["partitions"] for plan in self.plans)

    def write(self) -> None:
        self.store.write_json(_MANIFEST, {
            "format": _FORMAT,
            "version": _vistatrim.VERSION,
            "options": self.options,
            "photographs": len(self.photographs),
            "duplicates": self.duplicates,
            "partitions": self.partitions,
            "finished": {
                "partitions": len(self.counted),
                "photographs": self.counts.photographs,
                "failed": self.counts.failed,
                "crops": self.counts.crops,
                "counted": ranges_text(self.counted),
            },
            "plans": self.plans,
            "runs": self.runs,
        })

    def missing(self) -> Iterator[Tuple[int, List[str]]]:
        """The partitions that are not finished, each with its photographs."""
        at = 0
        for plan in self.plans:
            for number in range(plan["partitions"]):
                index = plan["firstPartition"] + number
                first = at + number * plan["partitionSize"]
                if index not in self.counted:
                    yield index, self.photographs[
                        first:min(first + plan["partitionSize"], at + plan["photographs"])]
            at += plan["photographs"]

    def add_plan(self, photographs: List[str], partition_size: int) -> None:
        name = f"photographs-{len(self.plans):04d}.jsonl"
        self.store.write(name, "".join(json.dumps(path) + "\n" for path in photographs).encode())
        self.plans.append({
            "photographs": len(photographs),
            "firstPartition": self.partitions,
            "partitions": -(-len(photographs) // partition_size),
            "partitionSize": partition_size,
        })
        self.photographs += photographs

    def count_finished(self) -> None:
        """Finds the partitions in the output, and reads those not counted yet."""
        matches = (_PARTITION.fullmatch(name) for name in self.store.names())
        present = {int(match[1]) for match in matches if match}
        if self.counted - present:  # files were removed
            self.counted, self.counts = set(), Counts()
        for index in sorted(present - self.counted):
            self.counts.add(counts_of(self.store.read(partition_name(index))))
        self.counted = present


def _differences(old: Mapping[str, Any], new: Mapping[str, Any]) -> str:
    def text(options: Mapping[str, Any], name: str) -> str:
        return json.dumps(options[name]) if name in options else "not given"

    return "; ".join(f"{name} was {text(old, name)} and is {text(new, name)}"
                     for name in sorted({*old, *new}) if old.get(name) != new.get(name))


def open_manifest(store: Store, options: Mapping[str, Any], photographs: List[str],
                  duplicates: int, partition_size: int) -> Manifest:
    """The manifest of a new output, or the existing one with new photographs added. Photographs of
    earlier runs stay part of the archive."""
    existing = store.read_json(_MANIFEST)
    if existing is None:
        if any(not name.startswith(".") and not name.startswith("photographs-")
               for name in store.names()):
            raise ArchiveError("the output folder holds other files and no manifest.json")
        store.create()
        manifest = Manifest(store, options, duplicates)
    else:
        manifest = _read(store, existing, options)
        manifest.duplicates = max(manifest.duplicates, duplicates)
    store.remove_hidden(UNFINISHED)
    known = {key_of(path) for path in manifest.photographs}
    new = [path for path in photographs if key_of(path) not in known]
    if new:
        manifest.add_plan(new, partition_size)
    manifest.count_finished()
    manifest.write()
    return manifest


def _read(store: Store, existing: Mapping[str, Any], options: Mapping[str, Any]) -> Manifest:
    if existing.get("format") != _FORMAT:
        raise ArchiveError("manifest.json of the output folder is not from this program")
    if existing["version"] != _vistatrim.VERSION:
        raise ArchiveError(f"the output was written by version {existing['version']}, and this is "
                           f"{_vistatrim.VERSION}: choose another folder")
    # Compare as JSON: it turns tuples into lists.
    differences = _differences(existing["options"], json.loads(json.dumps(options)))
    if differences:
        raise ArchiveError(f"the output was written with other options: {differences}")
    finished = existing["finished"]
    manifest = Manifest(
        store, options, existing["duplicates"], existing["plans"], existing["runs"],
        ranges_of(finished["counted"]),
        Counts(finished["photographs"], finished["failed"], finished["crops"]))
    for number, _ in enumerate(manifest.plans):
        lines = store.read(f"photographs-{number:04d}.jsonl").splitlines()
        manifest.photographs += [json.loads(line) for line in lines]
    return manifest


def run_record(workers: Optional[int]) -> Dict[str, Any]:
    return {"started": now(), "ended": None, "seconds": 0.0, "photographs": 0, "workers": workers}
