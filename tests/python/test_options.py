"""Wrong values are ValueErrors, wrong types TypeErrors; both name the option."""
import numpy as np
import pytest
from PIL import Image

import vistatrim

WRONG_VALUES = [
    dict(top=0), dict(top=10001), dict(top=2**80),
    dict(aspect="4by5"), dict(aspect="0:5"), dict(aspect=0.0), dict(aspect=-1.5),
    dict(aspect=float("nan")), dict(aspect=float("inf")), dict(aspect=(4, 0)),
    dict(aspect=["1:1", "x"]), dict(aspect=[(1, 2, 3)]),
    dict(scale=0), dict(scale=1.01), dict(scale=[0.5, float("nan")]),
    dict(size=(0, 10)), dict(size=(10,)), dict(size=(10**9, 1)),
    dict(density=0), dict(density=501),
    dict(rank_by="beauty"), dict(weights=[1, 2]), dict(weights=[1, 2, float("inf")]),
    dict(weights={"beauty": 1}),
    dict(keep=(1, 2, 3)), dict(keep=(-1, 0, 5, 5)), dict(avoid=(0, 0, 0, 5)),
    dict(ranking=""), dict(ranking="missing.json"),
    dict(faces="some"), dict(regions=""), dict(regions="missing.jsonl"), dict(regions=[{"x": 1}]),
    dict(regions=[{"x": 1, "y": 1, "width": 0, "height": 5}]),
    dict(regions=[{"x": 1, "y": 1, "width": 5, "height": 5, "colour": 5}]),
    dict(regions=[{"x": 1, "y": 1, "width": 5, "height": 5, "kind": "house"}]),
    dict(regions=[{"x": 1, "y": 1, "width": 5, "height": 5, "confidence": 2}]),
    dict(must_keep=[(0, 0, 5, 5), (1, 2)]), dict(must_avoid=(0, 0, 10**9, 1)),
]
WRONG_TYPES = [
    dict(top=1.5), dict(top="3"), dict(top=True), dict(aspect=object()), dict(aspect=[None]),
    dict(aspect=(1.5, None, 2)), dict(scale="half"), dict(scale=[True]), dict(size="10x10"),
    dict(size=10), dict(size=(1.0, 2.0)), dict(density=8.0), dict(rank_by=3), dict(weights="all"),
    dict(weights=[1, "a", 2]), dict(weights=None, keep=5), dict(keep="0,0,5,5"),
    dict(ranking=5), dict(faces=True), dict(regions=5), dict(regions=[5]), dict(ignore_metadata_regions=0),
    dict(regions=[{"x": "1", "y": 1, "width": 5, "height": 5}]),
    dict(regions=[{"x": 1, "y": 1, "width": 5, "height": 5, "label": 5}]),
    dict(keep=[(0, 0, 5, 1.5)]), dict(explain=1), dict(explain="yes"), dict(tpo=3),
]


def name_of(options):
    return next(name for name, value in options.items() if value is not None)


@pytest.mark.parametrize("options", WRONG_VALUES, ids=str)
def test_wrong_values_are_refused(options, photo):
    with pytest.raises(ValueError, match=name_of(options)):
        photo.suggest(**options)


@pytest.mark.parametrize("options", WRONG_TYPES, ids=str)
def test_wrong_types_are_refused(options, photo):
    with pytest.raises(TypeError, match=name_of(options)):
        photo.suggest(**options)


@pytest.mark.parametrize("name", ["ranking", "regions", "presets"])
def test_a_file_that_cannot_be_read_is_named(name, photo, tmp_path):
    for file, reason in (("none", "No such file or directory"), (".", "Is a directory"),
                         ("a\0b", "embedded null byte")):
        with pytest.raises(ValueError, match=f"{name}: cannot read .*{reason}"):
            photo.suggest(**{name: f"{tmp_path}/{file}"})


def test_size_excludes_ratio_and_scale(photo):
    for other in (dict(aspect="1:1"), dict(scale=0.5)):
        with pytest.raises(ValueError, match="size"):
            photo.suggest(size=(10, 10), **other)


def test_rankings_that_exclude_each_other(photo):
    for wrong in (dict(weights=[1, 0, 0], rank_by="peak"), dict(weights=[1, 0, 0], ranking="r.json"),
                  dict(rank_by="engine", ranking="r.json")):
        with pytest.raises(ValueError, match="weights"):
            photo.suggest(**wrong)


def test_each_ratio_needs_ratios_and_largest_excludes_scale(photo):
    with pytest.raises(ValueError, match="each_ratio"):
        photo.suggest(each_ratio=True)
    with pytest.raises(ValueError, match="largest"):
        photo.suggest(largest=True, scale=0.5)


def test_a_request_that_does_not_fit_names_the_photograph(photo, photo_path):
    with pytest.raises(ValueError, match=r"a\.jpg: .*does not fit"):
        photo.suggest(size=(641, 100))
    with pytest.raises(ValueError, match=r"a\.jpg: .*must-keep 700,0,5,5"):
        photo.suggest(must_keep=(700, 0, 5, 5))


def test_requests_that_do_not_fit_are_rejected_before_decoding(photo_path, tmp_path):
    path = tmp_path / "half.png"
    Image.open(photo_path).convert("RGB").save(path)
    path.write_bytes(path.read_bytes()[:path.stat().st_size // 2])
    damaged = vistatrim.Photo(path)
    with pytest.raises(ValueError, match="outside"):
        damaged.suggest(must_keep=(damaged.width, 0, 5, 5))
    with pytest.raises(vistatrim.PhotoError):
        damaged.suggest()


def test_numbers_of_numpy_are_accepted(photo):
    plain = photo.suggest(top=2, aspect=(4, 5), keep=[(10, 20, 30, 40)], scale=[0.5, 1.0])
    numpy = photo.suggest(top=np.int64(2), aspect=(np.int32(4), np.int32(5)),
                          keep=np.array([[10, 20, 30, 40]]), scale=np.array([0.5, 1.0]))
    assert plain == numpy


def test_none_means_not_given(photo):
    assert photo.suggest(top=None, aspect=None, keep=None, size=None) == photo.suggest()


def test_ratios_in_every_spelling(photo):
    expected = photo.suggest(aspect="4:5", top=2)
    assert expected[0].aspect == "4:5"
    for same in ((4, 5), (8, 10), 0.8, ["4:5"], [(4, 5)], [0.8], ("4:5",)):
        assert photo.suggest(aspect=same, top=2) == expected


@pytest.mark.parametrize("background", ["#12", "red?", "#gggggg", (1, 2), (1, 2, 300)])
def test_wrong_backgrounds_are_refused(background, photo_path):
    with pytest.raises(ValueError, match="background"):
        vistatrim.Photo(photo_path, background=background)


@pytest.mark.parametrize("background", [5, (1, 2, 3.5), None])
def test_backgrounds_of_wrong_types_are_refused(background, photo_path):
    with pytest.raises(TypeError, match="background"):
        vistatrim.Photo(photo_path, background=background)


@pytest.mark.parametrize("background, same", [("#fa0", "#ffaa00"), ("Tomato", (255, 99, 71)),
                                              ("black", "#000")])
def test_backgrounds_have_short_forms_and_names(background, same):
    clear = np.zeros((40, 60, 4), np.uint8)
    shown = vistatrim.Photo(clear, background=background).preview(60)
    assert np.array_equal(shown, vistatrim.Photo(clear, background=same).preview(60))
    other = vistatrim.Photo(clear, background="white").preview(60)
    assert not np.array_equal(shown, other)


def test_presets_are_listed_and_tables_add_to_them(tmp_path):
    known = vistatrim.presets()
    assert known["square"] == ("1:1", None)
    assert known["og-image"] == ("40:21", (1200, 630))
    table = tmp_path / "mine.tsv"
    table.write_text("poster\t2:3\t-\tthe wall\n")
    assert vistatrim.presets(table) == {**known, "poster": ("2:3", None)}
    assert vistatrim.presets() == known


def test_wrong_presets_are_named(photo, tmp_path):
    table = tmp_path / "bad.tsv"
    table.write_text("poster\ttwo to three\n")
    for options, fault in ((dict(preset="postre"), "preset.*square.*postre"),
                           (dict(presets=table), r"presets: .*bad\.tsv:1: 'two to three' is not"),
                           (dict(presets=tmp_path / "none.tsv"), "presets: cannot read .*none.tsv"),
                           (dict(preset="square", size=(10, 10)), "size cannot be given with preset"),
                           (dict(preset=""), "preset")):
        with pytest.raises(ValueError, match=fault):
            photo.suggest(**options)
    for options in (dict(preset=5), dict(preset=[5]), dict(presets=5)):
        with pytest.raises(TypeError, match=next(iter(options))):
            photo.suggest(**options)


def test_a_preset_with_a_size_tries_no_crop_that_would_be_scaled_up(photo):
    width, height = photo.size
    [small] = photo.suggest(preset="avatar")
    assert (small.shape, small.fill) == ("avatar", (400, 400))
    assert small.width >= min(400, width, height)
