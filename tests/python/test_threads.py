"""The library works without the interpreter lock."""
import sys
import threading
import time

import numpy as np
import pytest

import vistatrim
from conftest import scene

PIXELS = np.asarray(scene(640, 480))


class Counter(threading.Thread):
    """Counts until it is stopped, and releases the lock after each step."""

    def __init__(self):
        super().__init__(daemon=True)
        self.count = 0
        self.stop = False

    def run(self):
        while not self.stop:
            self.count += 1
            time.sleep(0.0001)


@pytest.fixture
def counter():
    # The interpreter never takes the lock from a thread, so the counter advances only during calls
    # that release it.
    usual = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    thread = Counter()
    thread.start()
    yield thread
    thread.stop = True
    thread.join()
    sys.setswitchinterval(usual)


def test_other_threads_run_while_the_library_works(photo_path, counter):
    photo = vistatrim.Photo(PIXELS)
    photo.suggest()
    file = vistatrim.Photo(photo_path)
    box, size = (0, 0, 640, 480), (1500, 1100)
    calls = {
        "analysis": lambda: vistatrim.Photo(PIXELS)._analysis_for(None),
        "request": lambda: photo.suggest(density=40, explain=True),
        "maps": photo.maps,
        "crop": lambda: file.crop(box, size=size),
        "encode": lambda: photo.encode(box, format="png", size=size),
        "preview": lambda: file.preview(640),
    }
    for name, call in calls.items():
        before = counter.count
        for _ in range(20):  # a busy machine might not run the other thread during each call
            call()
            if counter.count > before:
                break
        assert counter.count > before, name


def test_two_threads_hardly_wait_for_each_other():
    """On average at least 1.8 of two threads are busy: they run, or are ready to run on a machine
    without a free processor. A thread that waits for a lock is neither."""
    def ready():
        with open("/proc/thread-self/schedstat", encoding="ascii") as file:
            return sum(int(number) for number in file.read().split()[:2]) / 1e9

    busy = []

    def work():
        before = ready()
        began = time.perf_counter()
        for _ in range(12):
            vistatrim.suggest(PIXELS)
        busy.append((ready() - before) / (time.perf_counter() - began))

    threads = [threading.Thread(target=work) for _ in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sum(busy) >= 1.8


def test_threads_with_photographs_of_their_own_give_the_same_crops():
    expected = vistatrim.suggest(PIXELS, faces="off")
    found = []

    def work():
        for _ in range(3):
            found.append(vistatrim.suggest(PIXELS, faces="off"))

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == [expected] * 12
