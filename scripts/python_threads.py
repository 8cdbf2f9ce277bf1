#!/usr/bin/env python3
"""How many more photographs two Python threads analyse than one.

usage: PYTHONPATH=build/release/python scripts/python_threads.py [PHOTO...]

Without photographs, those of the Debian package lomiri-wallpapers-16.04. They are decoded before
the clock starts, so that it measures the library and the interpreter lock, not the disk. One and
two threads take turns, so that what else the machine does meets both.
"""
import glob
import statistics
import sys
import threading
import time

import numpy as np

import vistatrim

ROUNDS = 5


def seconds(pictures, count):
    """Of all pictures, shared out among the threads."""
    waiting = list(pictures)

    def work():
        while True:
            try:
                picture = waiting.pop()
            except IndexError:
                return
            vistatrim.suggest(picture)

    workers = [threading.Thread(target=work) for _ in range(count)]
    began = time.perf_counter()
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return time.perf_counter() - began


def main():
    paths = sys.argv[1:] or sorted(glob.glob("/usr/share/backgrounds/*.jpg"))
    if not paths:
        sys.exit("python_threads.py: no photographs")
    pictures = [np.ascontiguousarray(vistatrim.Photo(path).preview(640)) for path in paths]
    seconds(pictures[:4], 2)
    rounds = [(seconds(pictures, 1), seconds(pictures, 2)) for _ in range(ROUNDS)]
    one, two = (statistics.median(column) for column in zip(*rounds))
    print(f"{len(pictures)} pictures: one thread {len(pictures) / one:.1f}/s, two threads "
          f"{len(pictures) / two:.1f}/s; {statistics.median(a / b for a, b in rounds):.2f} times")


if __name__ == "__main__":
    main()
