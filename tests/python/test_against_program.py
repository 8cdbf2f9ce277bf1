"""The same photograph gives the same crops as `vistatrim suggest --json`."""
import io
import json
import re

import numpy as np
import pytest
from PIL import Image

import vistatrim
from conftest import program, scene, suggested, write_ranking
from vistatrim import _options

# Options of the program and the same options of the package. All options of the table appear.
REQUESTS = [
    ([], {}),
    (["--top", "3", "--aspect", "4:5"], dict(top=3, aspect="4:5")),
    (["--aspect", "16:9", "--aspect", "1:1", "--aspect", "1.5"], dict(aspect=["16:9", (1, 1), 1.5])),
    (["--scale", "0.5,0.75", "--scale", "1"], dict(scale=[0.5, 0.75, 1])),
    (["--aspect", "16:9", "--aspect", "1:1", "--aspect", "16:9", "--each-ratio", "--largest",
      "--keep", "10,10,30,20", "--explain"],
     dict(aspect=["16:9", "1:1", "16:9"], each_ratio=True, largest=True, keep=(10, 10, 30, 20),
          explain=True)),
    (["--aspect", "16:9", "--aspect", "1:1", "--each-ratio", "--top", "2"],
     dict(aspect=["16:9", "1:1"], each_ratio=True, top=2)),
    (["--aspect", "21:9", "--aspect", "1.5", "--aspect", "64:36", "--each-ratio"],
     dict(aspect=["21:9", "1.5", "64:36"], each_ratio=True)),
    (["--aspect", "cinema", "--aspect", "1:1", "--each-ratio"],
     dict(aspect=["cinema", "1:1"], each_ratio=True)),
    (["--preset", "story", "--preset", "og-image", "--aspect", "3:2", "--top", "2", "--explain"],
     dict(preset=["story", "og-image"], aspect="3:2", top=2, explain=True)),
    (["--preset", "thumbnail", "--scale", "0.2,0.5"], dict(preset="thumbnail", scale=[0.2, 0.5])),
    (["--size", "60x60", "--top", "2"], dict(size=(60, 60), top=2)),
    (["--density", "12", "--rank-by", "coverage"], dict(density=12, rank_by="coverage")),
    *((["--rank-by", name], dict(rank_by=name))
      for name in ("people", "composition", "border", "peak", "centre-peak", "engine")),
    (["--weights", "0.5,0.3,0.2"], dict(weights=[0.5, 0.3, 0.2])),
    (["--weights", "0,0.4,0,0.5,0.1"], dict(weights={"coverage": 0.4, "peak": 0.5,
                                                     "centrePeak": 0.1})),
    (["--keep", "10,10,30,20", "--avoid", "100,80,20,20", "--must-keep", "20,20,10,10",
      "--must-keep", "40,30,5,5", "--must-avoid", "0,0,3,3", "--explain"],
     dict(keep=(10, 10, 30, 20), avoid=[(100, 80, 20, 20)],
          must_keep=[(20, 20, 10, 10), (40, 30, 5, 5)], must_avoid=(0, 0, 3, 3), explain=True)),
]


def line_of(photo, **options):
    return photo._result(options)


def test_the_table_has_every_option_of_the_program():
    """Except those for lists of photographs, for the output and for how the program runs."""
    flags = set(re.findall(r"--[a-z][a-z-]*", program("suggest", "--help").stdout.decode()))
    others = {"--help", "--recursive", "--null", "--files-from", "--background", "--json", "--csv", "--output",
              "--force", "--resume", "--jobs", "--quiet", "--timings"}
    assert others < flags
    assert {option.flag for option in _options.OPTIONS} == flags - others


def test_requests_cover_every_option():
    for_analysis = {option.name for option in _options.OPTIONS if option.for_analysis}
    assert for_analysis == {"faces", "regions", "ignore_metadata_regions"}  # in tests of their own
    assert {name for _, options in REQUESTS for name in options} | for_analysis | {
        "ranking", "presets"} == set(_options.NAMES)


def test_a_table_of_presets_adds_the_same_shapes_as_in_the_program(formats, tmp_path):
    table = tmp_path / "mine.tsv"
    table.write_text("poster\t2:3\nsquare\t-\t64x64\n")
    path = formats / "baseline.jpg"
    [line] = suggested("--presets", table, "--preset", "poster", "--preset", "square", path)
    del line["file"]
    photo = vistatrim.Photo(path)
    assert line_of(photo, presets=table, preset=["poster", "square"]) == line
    assert [crop.shape for crop in photo.suggest(presets=[table], preset=["poster", "square"])] == [
        "poster", "square"]


@pytest.mark.parametrize("arguments, options", REQUESTS, ids=lambda value: str(value)[:40])
def test_every_option_gives_what_the_program_gives(arguments, options, formats):
    path = formats / "baseline.jpg"
    [line] = suggested(*arguments, path)
    assert "crops" in line
    del line["file"]
    for crop in line["crops"]:
        crop.pop("ratio", None)  # aspect as written on the command line
    assert line_of(vistatrim.Photo(path), **options) == line


def test_every_format_gives_what_the_program_gives(formats):
    paths = sorted(formats.iterdir())
    assert len(paths) >= 25
    lines = suggested(*paths)
    assert [line.pop("file") for line in lines] == [str(path) for path in paths]
    endings = set()
    for path, line in zip(paths, lines):
        assert "crops" in line, path
        assert line_of(vistatrim.Photo(path)) == line, path
        if path.suffix not in endings:
            endings.add(path.suffix)
            assert line_of(vistatrim.Photo(path.read_bytes())) == line, path


def test_crops_carry_what_the_line_holds(formats):
    path = formats / "large.jpg"
    [line] = suggested("--explain", path)
    crops = vistatrim.suggest(path, explain=True)
    assert len(crops) == len(line["crops"]) == 5
    for crop, found in zip(crops, line["crops"]):
        assert (crop.x, crop.y, crop.width, crop.height) == tuple(
            found[side] for side in ("x", "y", "width", "height"))
        assert crop.box == (crop.x, crop.y, crop.x + crop.width, crop.y + crop.height)
        assert crop.scores == found["scores"]
        assert crop.covers_content == found["coversContent"]
        assert crop.aspect == found["aspect"] == found["explain"]["aspect"]
        assert crop.explanation == found["explain"]
        assert crop.expected_overlap == found.get("expectedOverlap")
    assert crops.explanation == line["explain"]


def test_a_ranking_file_gives_what_the_program_gives(formats, tmp_path):
    path = formats / "large.jpg"
    write_ranking(tmp_path / "r.json")
    [line] = suggested("--ranking", tmp_path / "r.json", path)
    del line["file"]
    photo = vistatrim.Photo(path)
    assert line_of(photo, ranking=tmp_path / "r.json") == line != line_of(photo)
    (tmp_path / "wrong.json").write_text('{"format": "vistatrim-ranking", "version": 2}')
    with pytest.raises(ValueError, match=r"ranking: .*wrong\.json.*version"):
        photo.suggest(ranking=tmp_path / "wrong.json")


REGIONS = [{"x": 20, "y": 30, "width": 40.5, "height": 30, "kind": "face", "confidence": 0.9,
            "label": "Ada"},
           {"x": 200.5, "y": 100, "width": 50, "height": 60, "wish": "must-avoid"},
           {"x": 100, "y": 20, "width": 10, "height": 10, "wish": "none"}]


def test_regions_of_a_file_or_a_list_give_what_the_program_gives(formats, tmp_path):
    path = formats / "baseline.jpg"
    regions = tmp_path / "regions.jsonl"
    regions.write_text(json.dumps({"file": path.name, "regions": REGIONS}) + "\n")
    [line] = suggested("--regions", regions, "--explain", path)
    assert len(line["regions"]) == 3 and line["regions"][0]["label"] == "Ada"
    del line["file"]
    photo = vistatrim.Photo(path)
    plain = line_of(photo)
    assert "regions" not in plain
    assert line_of(photo, regions=regions, explain=True) == line
    assert line_of(photo, regions=REGIONS, explain=True) == line
    assert line_of(photo) == plain  # another analysis
    assert photo.suggest(regions=REGIONS).regions == line["regions"]


def test_faces_and_metadata_give_what_the_program_gives(tmp_path):
    """A face for the face finder, and one that metadata names."""
    face = pytest.importorskip("skimage.data").astronaut()
    path = tmp_path / "a.jpg"
    Image.fromarray(face).save(path)
    photo = vistatrim.Photo(path)
    found = {}
    for faces in ("off", "large", "all"):
        [line] = suggested("--faces", faces, path)
        del line["file"]
        assert line_of(photo, faces=faces) == line
        found[faces] = line.get("regions", [])
    if vistatrim._vistatrim.HAS_FACE_FINDER:
        assert found["all"] and not found["off"]
        assert photo.suggest().regions == found["all"]

    named = tmp_path / "named.jpg"
    jpeg = path.read_bytes()
    packet = b"http://ns.adobe.com/xap/1.0/\0" + XMP
    named.write_bytes(jpeg[:2] + b"\xff\xe1" + (len(packet) + 2).to_bytes(2, "big") + packet +
                      jpeg[2:])
    photo = vistatrim.Photo(named)
    for arguments, options in (([], {}), (["--ignore-metadata-regions"],
                                          {"ignore_metadata_regions": True})):
        [line] = suggested(*arguments, named)
        del line["file"]
        assert line_of(photo, **options) == line
        assert any(region["source"] == "metadata"
                   for region in line.get("regions", ())) == (not options)


XMP = b"""<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF
 xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description rdf:about=""
 xmlns:mwg-rs="http://www.metadataworkinggroup.com/schemas/regions/"
 xmlns:stArea="http://ns.adobe.com/xmp/sType/Area#"><mwg-rs:Regions rdf:parseType="Resource">
 <mwg-rs:RegionList><rdf:Bag><rdf:li rdf:parseType="Resource"><mwg-rs:Type>Face</mwg-rs:Type>
 <mwg-rs:Area stArea:x="0.4" stArea:y="0.3" stArea:w="0.2" stArea:h="0.2" stArea:unit="normalized"/>
 </rdf:li></rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions></rdf:Description></rdf:RDF></x:xmpmeta>"""


def test_background_shows_through(formats):
    path = formats / "transparent.png"
    for background in ("#ff0000", "black", "white"):
        [line] = suggested("--background", background, path)
        del line["file"]
        assert line_of(vistatrim.Photo(path, background=background)) == line
    [line] = suggested("--background", "#102030", path)
    assert line_of(vistatrim.Photo(path, background=(16, 32, 48)))["crops"] == line["crops"]


@pytest.mark.parametrize("mode", ["L", "RGB", "RGBA"])
def test_pixels_give_what_a_file_of_them_gives(mode, tmp_path):
    image = scene(310, 190)
    if mode == "RGBA":
        image.putalpha(Image.linear_gradient("L").resize(image.size))
    image = image.convert(mode)
    path = tmp_path / "a.png"
    image.save(path)
    [line] = suggested(path)
    del line["file"]
    assert line_of(vistatrim.Photo(image)) == line
    assert line_of(vistatrim.Photo(np.asarray(image))) == line
    file = io.BytesIO()
    image.save(file, "png")
    for encoded in (file.getvalue(), bytearray(file.getvalue()), file.getbuffer()):
        assert line_of(vistatrim.Photo(encoded)) == line


def test_unreadable_files_have_the_reason_of_the_program(broken):
    paths = sorted(path for path in broken.iterdir() if path.is_file())
    paths.append(broken / "missing.jpg")
    lines = suggested(*paths)
    assert len(lines) == len(paths) == 4
    for path, line in zip(paths, lines):
        with pytest.raises(vistatrim.PhotoError) as caught:
            vistatrim.suggest(path)
        assert caught.value.reason == line["error"]
        assert caught.value.file == str(path)
        assert str(caught.value) == f"{path}: {line['error']}"
