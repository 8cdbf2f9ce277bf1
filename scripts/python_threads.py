#!/usr/bin/env python3
"""Measures how much faster two Python threads analyse photographs than one.

usage: PYTHONPATH=build/release/python scripts/python_threads.py [PHOTO...]

Without photographs, those of the Debian package lomiri-wallpapers-16.04. They are decoded before
the clock starts, so that it measures the library and the interpreter lock, not the disk. One and
two threads take turns. On a busy machine two threads may get no more processor time than one; the
number of threads at work at a time then shows what they would gain on an idle machine.
"""
import glob
import statistics
import sys
import threading
import time

import numpy as np

import vistatrim

ROUNDS = 5


def at_work(pictures, count):
    """Seconds of all pictures, shared out among the threads; and how many threads were at work at
    a time: running, or ready to run and without a processor. A thread that waits for a lock is
    neither."""
    waiting = list(pictures)
    busy = []

    def work():
        before = scheduled()
        while waiting:
            try:
                picture = waiting.pop()
            except IndexError:
                break
            vistatrim.suggest(picture)
        busy.append(scheduled() - before)

    workers = [threading.Thread(target=work) for _ in range(count)]
    began = time.perf_counter()
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    spent = time.perf_counter() - began
    return spent, sum(busy) / spent


def scheduled():
    """Seconds that this thread ran or waited for a processor."""
    with open("/proc/thread-self/schedstat", encoding="ascii") as statistics_of_it:
        running, ready, _ = statistics_of_it.read().split()
    return (int(running) + int(ready)) / 1e9


def main():
    paths = sys.argv[1:] or sorted(glob.glob("/usr/share/backgrounds/*.jpg"))
    if not paths:
        sys.exit("python_threads.py: no photographs")
    pictures = [np.ascontiguousarray(vistatrim.Photo(path).preview(640)) for path in paths]
    at_work(pictures[:4], 2)
    rounds = [(at_work(pictures, 1), at_work(pictures, 2)) for _ in range(ROUNDS)]
    gain = statistics.median(one[0] / two[0] for one, two in rounds)
    threads = statistics.median(two[1] for _, two in rounds)
    print(f"{len(pictures)} pictures: two threads are {gain:.2f} times as fast as one on the clock; "
          f"{threads:.2f} of the two are at work at a time")


if __name__ == "__main__":
    main()
