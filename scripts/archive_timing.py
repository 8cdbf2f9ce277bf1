#!/usr/bin/env python3
"""Compares the photographs per second of the archive engine and the program on this machine.

usage: archive_timing.py VISTATRIM [COUNT [ROUNDS]]

Needs vistatrim on PYTHONPATH. Takes COUNT (60) copies of the photographs of the Debian package
lomiri-wallpapers-16.04. In each of ROUNDS (3) rounds the program runs with one and two jobs and
the engine with one and two workers, one after the other, so that other load on the machine affects
all of them. Prints medians of the whole command, of its start (a run over one photograph), and of the
photographs per second without the start, in wall time and in processor time, which other load affects
less; then the overhead of a partition, and bytes per photograph.
"""
import glob
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from vistatrim import archive
from vistatrim.archive import _run
from vistatrim.archive._manifest import Counts


def processor_seconds():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def seconds(*command):
    """Wall time and processor time."""
    began, used = time.perf_counter(), processor_seconds()
    subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    return time.perf_counter() - began, processor_seconds() - used


def commands(program, jobs, output):
    """The program and the engine, each with this many worker processes."""
    return {
        f"vistatrim suggest -j {jobs}": [program, "suggest", "--json", "-j", jobs],
        f"archive, {jobs} worker{'s' if jobs > 1 else ''}": [
            sys.executable, "-m", "vistatrim.archive", "--quiet", "-j", jobs, "--output", output],
    }


def engine_alone(folder):
    """Seconds for a run of 1,000 empty partitions, and bytes that the client holds per
    photograph."""
    import distributed

    names = (f"/archive/of/photographs/{number:09d}.jpg" for number in range(500_000))
    _run.run_partition = lambda job, index, photographs, regions: Counts(len(photographs))
    with distributed.Client(processes=False, n_workers=2, threads_per_worker=1,
                            dashboard_address=None) as client:
        before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        began = time.perf_counter()
        archive.suggest(names, output=str(folder / "none"), client=client)
        spent = time.perf_counter() - began
        return spent, (resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before) / 500_000 * 1024


def main():
    program = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 60
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    sources = sorted(glob.glob("/usr/share/backgrounds/*.jpg"))
    if not sources:
        sys.exit("archive_timing.py: lomiri-wallpapers-16.04 is not installed")
    with tempfile.TemporaryDirectory() as temporary:
        folder = Path(temporary)
        (folder / "in").mkdir()
        (folder / "one").mkdir()
        for number in range(count):
            shutil.copy(sources[number % len(sources)], folder / "in" / f"p{number:04d}.jpg")
        shutil.copy(sources[0], folder / "one")
        whole, start = {}, {}
        for _ in range(rounds):
            for jobs in (1, 2):
                for name, command in commands(program, jobs, folder / "out").items():
                    for place, times in (("one", start), ("in", whole)):
                        shutil.rmtree(folder / "out", ignore_errors=True)
                        times.setdefault(name, []).append(seconds(*command, folder / place))
        print(f"{count} photographs, medians of {rounds} rounds")
        for name in whole:
            clock, used = map(statistics.median, zip(*whole[name]))
            clock_one, used_one = map(statistics.median, zip(*start[name]))
            print(f"{name:24} {clock:6.1f} s, start {clock_one:4.1f} s, "
                  f"{(count - 1) / (clock - clock_one):5.1f} photographs/s; processors "
                  f"{used:5.1f} s, start {used_one:4.1f} s, "
                  f"{(count - 1) / (used - used_one):5.1f} photographs per processor-second")
        lines = sum(path.stat().st_size for path in (folder / "out").glob("part-*.jsonl"))
        read = sum(path.stat().st_size for path in (folder / "in").iterdir())
        print(f"read {read / count / 1e6:.2f} MB per photograph, written {lines / count / 1e3:.2f} kB")
        spent, held = engine_alone(folder)
        print(f"engine: 1,000 empty partitions of 500 in {spent:.1f} s, {spent:.2f} ms each; the "
              f"client holds {held:.0f} bytes a photograph")


if __name__ == "__main__":
    main()
