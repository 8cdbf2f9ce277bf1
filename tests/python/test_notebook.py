"""What notebooks show."""
import io
import re

import numpy as np
import pytest
from PIL import Image

import vistatrim
from conftest import scene


def test_a_crop_shows_as_its_pixels():
    image = scene(300, 200)
    best = vistatrim.Photo(image).suggest()[0]
    shown = Image.open(io.BytesIO(best._repr_png_()))
    assert shown.format == "PNG"
    assert (np.asarray(shown) == np.asarray(image.crop(best.box))).all()


def test_large_crops_are_shown_small(formats):
    photo = vistatrim.Photo(formats / "large.jpg")
    best = photo.suggest(aspect="3:2")[0]
    shown = Image.open(io.BytesIO(best._repr_png_()))
    assert shown.size == (480, 320)
    whole = Image.open(io.BytesIO(photo._repr_png_()))
    assert whole.size == (480, 332)


def test_lists_of_crops_show_a_figure_each(photo):
    crops = photo.suggest(top=3)
    page = crops._repr_html_()
    assert page.count("<figure") == page.count("data:image/jpeg;base64,") == 3
    for crop in crops:
        assert f"{crop.width} × {crop.height} at {crop.x}, {crop.y}" in page
    assert re.search(r"coverage 0\.\d\d", page)
    assert vistatrim.Crops()._repr_html_() == "<div></div>"


def test_a_crop_without_its_photograph_shows_as_text(photo):
    import pickle
    crop = pickle.loads(pickle.dumps(photo.suggest(top=1)[0]))
    assert crop._repr_png_() is None
    assert repr(crop).startswith("Crop(x=")


def test_plot_draws_a_frame_for_each_crop(photo):
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")
    from matplotlib.patches import Rectangle

    crops = photo.suggest(top=3)
    axes = vistatrim.plot(photo, crops)
    frames = [patch for patch in axes.patches if isinstance(patch, Rectangle)]
    assert [(frame.get_x(), frame.get_y(), frame.get_width(), frame.get_height())
            for frame in frames] == [(crop.x, crop.y, crop.width, crop.height) for crop in crops]
    assert [text.get_text().strip() for text in axes.texts] == ["1", "2", "3"]
    assert axes.get_xlim() == (0, 640) and axes.get_ylim() == (480, 0)
    assert vistatrim.plot(photo, crops[0], ax=axes) is axes


def test_plot_without_matplotlib_says_what_is_missing(photo, monkeypatch):
    import sys
    monkeypatch.setitem(sys.modules, "matplotlib", None)
    with pytest.raises(ImportError, match="needs matplotlib"):
        vistatrim.plot(photo, [])
