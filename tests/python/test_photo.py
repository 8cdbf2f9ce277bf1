"""What a photograph provides: sizes, maps, crops, files."""
import io
import pickle
import threading
from pathlib import Path

import numpy as np
import pytest
from PIL import Image

import vistatrim
from conftest import program, scene


def test_sizes_are_those_of_the_photograph_as_displayed(formats):
    upright = vistatrim.Photo(formats / "baseline.jpg")
    assert upright.size == (upright.width, upright.height) == (330, 220)
    turned = vistatrim.Photo(str(formats / "orientation-6.jpg"))
    assert turned.size == (220, 330)
    assert repr(turned).endswith("orientation-6.jpg', 220 x 330)")


def test_maps_are_floats_of_the_working_size(photo):
    maps = photo.maps()
    assert {"ContrastMap", "SaliencyMap", "EdgeMap", "PeakMap"} <= set(maps)
    for name, values in maps.items():
        assert values.dtype == np.float32 and values.shape == (480, 640), name
        assert values.flags.owndata or values.base is not None
        assert np.isfinite(values).all() and values.min() >= 0 and values.max() <= 1.001, name


def test_maps_are_those_that_the_program_writes(photo, photo_path, tmp_path):
    program("maps", photo_path, "-o", tmp_path, check=True)
    maps = photo.maps()
    for name, values in maps.items():
        [path] = [path for path in tmp_path.iterdir() if path.stem.endswith("-" + name)]
        shown = np.asarray(Image.open(path)).astype(int)
        gain = 255 / values.max() if values.max() > 0 else 0
        # The program rounds in single precision: half a step and a little.
        assert np.abs(shown - values * gain).max() <= 0.51, name


def test_maps_outlive_the_photograph(photo_path):
    maps = vistatrim.Photo(photo_path).maps()
    expected = {name: values.copy() for name, values in maps.items()}
    for _ in range(3):
        vistatrim.Photo(photo_path).maps()
    assert all((maps[name] == expected[name]).all() for name in maps)
    maps["EdgeMap"][:] = 0  # it belongs to the caller


def test_crop_gives_the_pixels_of_the_box(tmp_path):
    image = scene(320, 240)
    photo = vistatrim.Photo(image)
    box = (17, 23, 217, 123)
    assert (photo.crop(box) == np.asarray(image.crop(box))).all()
    best = photo.suggest()[0]
    pixels = photo.crop(best)
    assert pixels.dtype == np.uint8 and pixels.shape == (best.height, best.width, 3)
    assert (pixels == np.asarray(image.crop(best.box))).all()


def test_crop_scales_to_exactly_the_size(photo):
    best = photo.suggest(aspect="4:5")[0]
    for size in ((108, 135), (1080, 1350), (7, 3)):
        assert photo.crop(best, size=size).shape == (size[1], size[0], 3)


def test_crop_takes_a_grey_photograph_as_colours(formats):
    pixels = vistatrim.Photo(formats / "grey.jpg").crop((0, 0, 50, 40))
    assert pixels.shape == (40, 50, 3)
    assert (pixels[..., 0] == pixels[..., 1]).all() and (pixels[..., 1] == pixels[..., 2]).all()


@pytest.mark.parametrize("box", [(0, 0, 641, 10), (0, 0, 10, 481), (640, 0, 641, 10)])
def test_boxes_outside_are_refused(box, photo):
    with pytest.raises(ValueError, match=r"a\.jpg.*inside"):
        photo.crop(box)


@pytest.mark.parametrize("box", [(0, 0, 0, 10), (5, 5, 4, 9), (0, 0, 10), (-1, 0, 5, 5)])
def test_wrong_boxes_are_refused(box, photo):
    with pytest.raises(ValueError, match="crop"):
        photo.crop(box)
    with pytest.raises(ValueError, match="crop"):
        photo.encode(box)


def test_boxes_of_wrong_types_are_refused(photo):
    for wrong in (None, 5, "box", (0, 0, 1.5, 2)):
        with pytest.raises(TypeError, match="crop"):
            photo.crop(wrong)


@pytest.mark.parametrize("ending, format", [
    ("jpg", "JPEG"), ("jpeg", "JPEG"), ("png", "PNG"), ("webp", "WEBP"), ("tif", "TIFF")])
def test_save_writes_the_format_of_the_ending(ending, format, photo, tmp_path):
    path = tmp_path / f"out.{ending}"
    best = photo.suggest(aspect="1:1")[0]
    photo.save(best, path, size=(64, 64))
    with Image.open(path) as image:
        assert image.format == format and image.size == (64, 64)
    photo.save(best, str(path))  # replaces the file
    with Image.open(path) as image:
        assert image.size == (best.width, best.height)


def test_save_to_png_and_tiff_keeps_every_bit(tmp_path):
    image = scene(300, 200)
    image.save(tmp_path / "a.png")
    box = (3, 4, 203, 154)
    for ending in ("png", "tif"):
        vistatrim.Photo(tmp_path / "a.png").save(box, tmp_path / f"out.{ending}")
        assert (np.asarray(Image.open(tmp_path / f"out.{ending}")) ==
                np.asarray(image.crop(box))).all()


def test_encode_gives_what_save_writes(photo, tmp_path):
    best = photo.suggest()[0]
    photo.save(best, tmp_path / "out.jpg", quality=70)
    assert photo.encode(best, quality=70) == (tmp_path / "out.jpg").read_bytes()
    assert len(photo.encode(best, quality=20)) < len(photo.encode(best, quality=95))
    assert Image.open(io.BytesIO(photo.encode(best, format="png"))).format == "PNG"


def test_strip_leaves_the_metadata_out(tmp_path):
    exif = Image.Exif()
    exif[0x010E] = "a disc"
    scene().save(tmp_path / "a.jpg", exif=exif)
    photo = vistatrim.Photo(tmp_path / "a.jpg")
    kept, stripped = (Image.open(io.BytesIO(photo.encode((0, 0, 100, 100), strip=strip)))
                      for strip in (False, True))
    assert kept.getexif()[0x010E] == "a disc"
    assert 0x010E not in stripped.getexif()


def test_wrong_outputs_are_refused(photo, tmp_path):
    box = (0, 0, 10, 10)
    with pytest.raises(ValueError, match="format"):
        photo.save(box, tmp_path / "out.doc")
    with pytest.raises(ValueError, match="format"):
        photo.encode(box, format="doc")
    with pytest.raises(ValueError, match="quality"):
        photo.encode(box, quality=101)
    with pytest.raises(TypeError, match="quality"):
        photo.encode(box, quality="high")
    with pytest.raises(TypeError, match="strip"):
        photo.encode(box, strip=1)
    with pytest.raises(TypeError, match="path"):
        photo.save(box, 5)
    with pytest.raises(ValueError, match="size"):
        photo.crop(box, size=(0, 5))
    with pytest.raises(vistatrim.PhotoError) as caught:
        photo.save(box, tmp_path / "missing" / "out.jpg")
    assert caught.value.kind == "not-writable"
    assert "missing" in str(caught.value)


def test_kinds_of_errors(broken):
    kinds = {}
    for name in ("empty.jpg", "text.jpg", "cut-short.jpg", "folder.jpg", "missing.jpg"):
        with pytest.raises(vistatrim.PhotoError) as caught:
            vistatrim.suggest(broken / name)
        kinds[name] = caught.value.kind
        assert pickle.loads(pickle.dumps(caught.value)).args == caught.value.args
    assert kinds == {"empty.jpg": "unreadable", "text.jpg": "unsupported",
                     "cut-short.jpg": "damaged", "folder.jpg": "unreadable",
                     "missing.jpg": "unreadable"}


@pytest.mark.parametrize("source", [None, 5, 1.5, [1, 2], {"a": 1}, object()])
def test_sources_of_wrong_types_are_refused(source):
    with pytest.raises(TypeError, match="photograph"):
        vistatrim.Photo(source)


def test_bytes_that_are_not_a_photograph_are_refused():
    for encoded in (b"", b"no picture", bytearray(50), memoryview(b"ab" * 40)):
        with pytest.raises(vistatrim.PhotoError, match="bytes>"):
            vistatrim.suggest(encoded)
    with pytest.raises(ValueError, match="contiguous"):
        vistatrim.Photo(memoryview(b"ab" * 40)[::2])
    with pytest.raises(ValueError, match="null byte"):
        vistatrim.Photo("a\0b.jpg")


def test_names_need_not_be_utf8(tmp_path):
    path = tmp_path / "caf\udce9.jpg"
    scene().save(str(tmp_path / "a.jpg"))
    (tmp_path / "a.jpg").rename(path)
    assert len(vistatrim.suggest(path)) == 5


def test_photographs_and_crops_can_be_pickled(photo, photo_path):
    explained = photo.suggest(top=2, explain=True)
    again = pickle.loads(pickle.dumps(explained))
    assert again == explained and again.explanation == explained.explanation is not None
    crops = photo.suggest(top=2)
    assert pickle.loads(pickle.dumps(photo)).suggest(top=2) == crops
    assert vistatrim.Photo(Path(photo_path).read_bytes()).suggest(top=2) == crops


def test_one_photograph_serves_many_threads(photo_path):
    expected = vistatrim.suggest(photo_path, top=4)
    photo = vistatrim.Photo(photo_path)
    found = [None] * 8

    def suggest(number):
        found[number] = photo.suggest(top=4)

    threads = [threading.Thread(target=suggest, args=(number,)) for number in range(len(found))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == [expected] * 8


def test_preview_is_upright_and_small(formats):
    assert vistatrim.Photo(formats / "large.jpg").preview(200).shape == (138, 200, 3)
    assert vistatrim.Photo(formats / "orientation-6.jpg").preview().shape == (330, 220, 3)
    with pytest.raises(ValueError, match="long_side"):
        vistatrim.Photo(formats / "large.jpg").preview(0)
