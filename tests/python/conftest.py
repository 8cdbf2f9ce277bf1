"""Photographs of every kind, and the program whose results the package must match.

VISTATRIM_PROGRAM names the program. The package is found by PYTHONPATH.
"""
import json
import os
import random
import subprocess
from pathlib import Path

import numpy as np
import pytest
from hypothesis import settings
from PIL import Image, ImageDraw

import vistatrim

# The machine that runs the tests may be busy: the number of examples is fixed, not their time.
settings.register_profile("vistatrim", deadline=None, derandomize=True, max_examples=60)
settings.load_profile("vistatrim")

SOURCES = Path(__file__).resolve().parents[2]


def scene(width=300, height=200, seed=1):
    """A grey background with grain and a bright disc: something that a crop should contain."""
    generator = np.random.default_rng(seed)
    pixels = generator.integers(90, 110, (height, width, 3), dtype=np.uint8)
    image = Image.fromarray(pixels)
    place = random.Random(seed)
    x, y = place.randrange(max(1, width - 50)), place.randrange(max(1, height - 50))
    ImageDraw.Draw(image).ellipse((x, y, x + 49, y + 49), fill=(230, 90 + seed % 60, 40))
    return image


def write_all_formats(folder):
    """One photograph in each format and kind of pixels."""
    image = scene(330, 220)
    image.save(folder / "baseline.jpg", quality=92)
    image.save(folder / "progressive.jpg", quality=80, progressive=True)
    image.convert("L").save(folder / "grey.jpg")
    image.convert("CMYK").save(folder / "cmyk.jpg")
    exif = Image.Exif()
    for orientation in range(2, 9):
        exif[0x0112] = orientation
        image.save(folder / f"orientation-{orientation}.jpg", exif=exif)
    image.save(folder / "plain.png")
    image.convert("P", palette=Image.Palette.ADAPTIVE).save(folder / "palette.png")
    image.convert("1").save(folder / "bilevel.png")
    wide = np.asarray(image.convert("L")).astype(np.uint16) * 257
    Image.fromarray(wide).save(folder / "sixteen-bits.png")
    mask = Image.linear_gradient("L").resize(image.size)
    transparent = image.copy()
    transparent.putalpha(mask)
    transparent.save(folder / "transparent.png")
    image.save(folder / "lossy.webp")
    transparent.save(folder / "lossless.webp", lossless=True)
    image.save(folder / "plain.tif")
    image.save(folder / "compressed.tif", compression="tiff_lzw")
    image.convert("P").save(folder / "moving.gif")
    image.save(folder / "binary.ppm")
    image.convert("L").save(folder / "binary.pgm")
    photo = vistatrim.Photo(folder / "plain.png")
    for ending in ("avif", "heic"):
        photo.save((0, 0, 330, 220), folder / f"written.{ending}")
    scene(1300, 900).save(folder / "large.jpg")
    scene(60, 90).save(folder / "small.png")
    Image.new("RGB", (1, 1)).save(folder / "one-pixel.png")


def write_broken(folder):
    """One file for each reason why a photograph cannot be read."""
    (folder / "empty.jpg").write_bytes(b"")
    (folder / "text.jpg").write_text("no picture")
    whole = folder / "whole.jpg"
    scene(400, 300).save(whole)
    (folder / "cut-short.jpg").write_bytes(whole.read_bytes()[:3000])
    whole.unlink()
    (folder / "folder.jpg").mkdir()


@pytest.fixture(scope="session")
def formats(tmp_path_factory):
    folder = tmp_path_factory.mktemp("formats")
    write_all_formats(folder)
    return folder


@pytest.fixture(scope="session")
def broken(tmp_path_factory):
    folder = tmp_path_factory.mktemp("broken")
    write_broken(folder)
    return folder


@pytest.fixture(scope="session")
def photo_path(tmp_path_factory):
    path = tmp_path_factory.mktemp("photograph") / "a.jpg"
    scene(640, 480, seed=7).save(path, quality=90)
    return path


@pytest.fixture(scope="session")
def photo(photo_path):
    return vistatrim.Photo(photo_path)


def write_ranking(path):
    """A model of one layer with random weights, in the format of tools/fit_ranking.py."""
    inputs, parts, features = 14, 11, 53
    generator = np.random.default_rng(5)
    path.write_text(json.dumps({
        "format": "vistatrim-ranking", "version": 1, "grid": 16,
        "inputMeans": [0.5] * inputs, "inputScales": [2.0] * inputs,
        "layers": [{"outputs": parts, "dilation": 1, "biases": [0.1] * parts,
                    "weights": generator.normal(0, 0.1, parts * inputs * 9).tolist()}],
        "featureWeights": generator.normal(0, 1, features).tolist(),
        "sharpness": 2.0, "overlapOffset": 0.1, "overlapSlope": 0.9}))


def program(*arguments, check=False):
    """Runs the program and returns the finished process."""
    done = subprocess.run([os.environ["VISTATRIM_PROGRAM"], *map(os.fspath, arguments)],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    assert not check or done.returncode == 0, done.stderr.decode()
    return done


def suggested(*arguments):
    """The lines of `vistatrim suggest --json`."""
    done = program("suggest", "--json", "--quiet", *arguments)
    assert done.returncode in (0, 1), done.stderr.decode()
    return [json.loads(line) for line in done.stdout.decode().splitlines()]
