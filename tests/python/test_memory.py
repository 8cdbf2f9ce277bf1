"""No call leaks, whether it succeeds or fails."""
import gc

import numpy as np
import pytest

import vistatrim

# A narrow picture is analysed in about a millisecond.
PIXELS = np.random.default_rng(3).integers(0, 256, (8, 320, 3), dtype=np.uint8)


def resident_kilobytes():
    with open("/proc/self/status", encoding="ascii") as status:
        for line in status:
            if line.startswith("VmRSS"):
                return int(line.split()[1])
    raise AssertionError("no VmRSS")


def refused(call, *arguments, **options):
    with pytest.raises((ValueError, TypeError, vistatrim.PhotoError)):
        call(*arguments, **options)


def test_ten_thousand_calls_leak_no_memory(tmp_path):
    text = tmp_path / "text.jpg"
    text.write_text("no picture")
    photo = vistatrim.Photo(PIXELS)
    png = photo.encode((0, 0, 320, 8), format="png")

    def round_of_calls():
        vistatrim.suggest(PIXELS, top=2, density=1, aspect="1:1", faces="off")
        vistatrim.Photo(png).size
        photo.suggest(top=1, density=1, aspect="1:1", faces="off", explain=True)
        photo.crop((0, 0, 100, 8))
        vistatrim.Photo(PIXELS[:, ::-1])
        refused(vistatrim.suggest, text)
        refused(photo.suggest, size=(5000, 1))
        refused(photo.suggest, aspect="x")
        photo.encode((0, 0, 30, 8), format="png")
        vistatrim.Photo(bytearray(png)).crop((0, 0, 10, 5))

    for _ in range(100):  # caches of the interpreter and of the picture library fill up
        round_of_calls()
    gc.collect()
    before = resident_kilobytes()
    for _ in range(1000):
        round_of_calls()
    gc.collect()
    # Ten calls per round. Leaking one object of 100 bytes per round adds 100 kB; leaking one
    # working picture, 15 kB, adds 15 MB. The heap itself varies by about 1 MB.
    assert resident_kilobytes() - before < 4000


def test_maps_are_freed_with_the_last_array():
    photo = vistatrim.Photo(PIXELS)
    photo.maps()
    gc.collect()
    before = resident_kilobytes()
    for _ in range(300):
        photo.maps()
    gc.collect()
    assert resident_kilobytes() - before < 8000  # 300 times ten maps are 120 MB
