"""The options of a request: one table that the functions, the command line of the archive and its
manifest read. A new option is one line of OPTIONS."""
from __future__ import annotations

import math
import numbers
import operator
import os
from dataclasses import dataclass
from typing import Any, Callable, Dict, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

from . import _vistatrim
from ._errors import wrong_type, wrong_value

# A checked option value: plain objects that JSON can hold.
Plain = Union[None, bool, int, float, str, List[Any]]
Check = Callable[..., Plain]  # takes a name and a value; with uses_presets also the table
FromText = Callable[[str], object]

_LARGEST_PIXEL = 100_000_000  # sums of two still fit 32 bits
_WISHES = ("keep", "avoid", "must_keep", "must_avoid")


def _integer(name: str, value: object, least: int, most: int) -> int:
    form = f"an integer from {least} to {most}"
    if isinstance(value, bool):
        raise wrong_type(name, form, value)
    try:
        number = operator.index(value)  # type: ignore[arg-type]
    except TypeError:
        raise wrong_type(name, form, value) from None
    if not least <= number <= most:
        raise wrong_value(name, form, number)
    return number


def _real(name: str, value: object) -> float:
    if isinstance(value, bool) or not isinstance(value, numbers.Real):
        raise wrong_type(name, "a number", value)
    number = float(value)
    if not math.isfinite(number):
        raise wrong_value(name, "a finite number", number)
    return number


def _items(name: str, form: str, value: object) -> Sequence[object]:
    """The items of a list, tuple or array. Strings and mappings are rejected."""
    if isinstance(value, (str, bytes, Mapping)) or not isinstance(value, Iterable):
        raise wrong_type(name, form, value)
    return list(value)


def integer(least: int, most: int) -> Check:
    return lambda name, value: _integer(name, value, least, most)


def truth(name: str, value: object) -> Plain:
    if not isinstance(value, bool):
        raise wrong_type(name, "True or False", value)
    return value


def one_of(*names: str) -> Check:
    def check(name: str, value: object) -> Plain:
        if not isinstance(value, str):
            raise wrong_type(name, "one of " + ", ".join(names), value)
        if value not in names:
            raise wrong_value(name, "one of " + ", ".join(names), value)
        return value

    return check


def _ratio(name: str, value: object, table: _vistatrim.Presets) -> List[Any]:
    """Width and height in lowest terms; then the name for each_ratio, if it was written
    differently: '21:9' is [7, 3, '21x9'], 'square' is [1, 1, 'square']."""
    form = "a ratio such as '4:5', (4, 5) or 0.8, or the name of a preset"
    found: Optional[Tuple[int, int]]
    if isinstance(value, str):
        preset = table.find(value)
        if preset is not None:
            return [preset[2], preset[3], preset[0]]
        found = _vistatrim.parse_ratio(value)
        if found is None:
            raise wrong_value(name, form, value)
        shape = value.replace(":", "x").replace("/", "x")
        return list(found) if shape == _shape_of(list(found)) else [*found, shape]
    if isinstance(value, (tuple, list)):
        if len(value) != 2:
            raise wrong_value(name, form, value)
        width, height = (_integer(name, side, 1, _LARGEST_PIXEL) for side in value)
        divisor = math.gcd(width, height)
        return [width // divisor, height // divisor]
    number = _real(name, value)
    if number <= 0:
        raise wrong_value(name, form, value)
    return list(_vistatrim.ratio_of_value(number))


def _shape_of(ratio: Sequence[Any]) -> str:
    return str(ratio[2]) if len(ratio) > 2 else f"{ratio[0]}x{ratio[1]}"


def ratios(name: str, value: object, table: _vistatrim.Presets) -> Plain:
    """One ratio, or a list of them. A tuple of two numbers is one ratio."""
    if isinstance(value, (str, numbers.Real)):
        return [_ratio(name, value, table)]
    if isinstance(value, tuple) and len(value) == 2:
        if all(isinstance(side, numbers.Integral) for side in value):
            return [_ratio(name, value, table)]
    return [_ratio(name, item, table)
            for item in _items(name, "a ratio or a list of ratios", value)]


def content_of(name: str, path: str) -> bytes:
    """The content of the file that an option names."""
    try:
        with open(path, "rb") as file:
            return file.read()
    except (OSError, ValueError) as error:  # ValueError: a name with a zero byte
        reason = error.strerror if isinstance(error, OSError) else error
        raise ValueError(f"{name}: cannot read {path}: {reason}") from None


def preset_files(name: str, value: object, table: _vistatrim.Presets) -> Plain:
    """Adds the rows of one file, or of a list of them, to the table."""
    one = isinstance(value, (str, os.PathLike))
    for file in [value] if one else _items(name, "a file or a list of files", value):
        path = str(file_name(name, file))
        content = content_of(name, path)
        try:
            table.add_table(content, os.fsencode(path))
        except _vistatrim.Failure as failure:
            raise ValueError(f"{name}: {failure.args[1]}") from None
    return None  # the manifest keeps the requested shapes, not their source


def known_presets(files: object = ()) -> Dict[str, Tuple[str, Optional[Tuple[int, int]]]]:
    """The named shapes: the ratio of each, ``'16:9'``, and its size (width, height) or None.
    ``files`` (one or a list) add to the built-in table. Raises ValueError for a file that cannot be
    read or understood."""
    table = _vistatrim.Presets()
    preset_files("files", files, table)
    found = {}
    for name in table.names():
        shape = table.find(name)
        assert shape is not None
        found[name] = (shape[1].replace("x", ":"), shape[4])
    return found


def presets(name: str, value: object, table: _vistatrim.Presets) -> Plain:
    """For each name: width and height of the ratio, the name, the size or None."""
    form = "the name of a preset; there are " + ", ".join(table.names())
    shapes = []
    for item in [value] if isinstance(value, str) else _items(name, form, value):
        if not isinstance(item, str):
            raise wrong_type(name, form, item)
        found = table.find(item)
        if found is None:
            raise wrong_value(name, form, item)
        fill = list(found[4]) if found[4] is not None else None
        shapes.append([found[2], found[3], found[0], fill])
    return list(shapes)


def scales(name: str, value: object) -> Plain:
    values: Sequence[object] = [value] if isinstance(value, numbers.Real) else _items(
        name, "a number or a list of numbers", value)
    checked = [_real(name, item) for item in values]
    for scale in checked:
        if not 0 < scale <= 1:
            raise wrong_value(name, "above 0 and at most 1", scale)
    return list(checked)


def size(name: str, value: object) -> Plain:
    if value is None:
        return None
    sides = _items(name, "a pair (width, height)", value)
    if len(sides) != 2:
        raise wrong_value(name, "a pair (width, height)", value)
    return [_integer(name, side, 1, _LARGEST_PIXEL) for side in sides]


def regions(name: str, value: object) -> Plain:
    """One rectangle (x, y, width, height), or a list of them."""
    form = "a rectangle (x, y, width, height) or a list of them"
    items = _items(name, form, value)
    if items and not any(isinstance(item, Iterable) for item in items):
        items = [items]
    checked = []
    for item in items:
        sides = _items(name, form, item)
        if len(sides) != 4:
            raise wrong_value(name, form, item)
        checked.append([_integer(name, side, least, _LARGEST_PIXEL)
                        for side, least in zip(sides, (0, 0, 1, 1))])
    return list(checked)


def weights(name: str, value: object) -> Plain:
    """Numbers in the order of the measures, or a mapping from their names."""
    measures = _vistatrim.WEIGHTED_MEASURES
    if isinstance(value, Mapping):
        for measure in value:
            if measure not in measures:
                raise wrong_value(name, "of " + ", ".join(measures), measure)
        return [_real(name, value.get(measure, 0.0)) for measure in measures]
    numbers_given = [_real(name, item) for item in _items(name, "three or five numbers", value)]
    if len(numbers_given) not in (3, 5):
        raise wrong_value(name, "three or five numbers", value)
    return list(numbers_given + [0.0] * (5 - len(numbers_given)))


def faces(name: str, value: object) -> Plain:
    which = one_of("off", "large", "all")(name, value)
    if which != "off" and not _vistatrim.HAS_FACE_FINDER:
        raise ValueError(f"{name}: this build has no face finder; regions takes faces from another "
                         "detector")
    return which


_REGION_DEFAULTS: Dict[str, Any] = {"kind": "other", "confidence": 1.0, "label": "", "wish": "keep"}


def _region(name: str, value: object) -> List[Any]:
    """x, y, width, height, kind, confidence, label and wish of a region, as described in
    docs/regions.schema.json. Fractions of pixels are rounded outward."""
    form = "a dict with x, y, width and height"
    if not isinstance(value, Mapping):
        raise wrong_type(name, form, value)
    for key in value:
        if key not in ("x", "y", "width", "height", *_REGION_DEFAULTS):
            raise ValueError(f"{name}: a region has no {key!r}")
    sides = []
    for key in ("x", "y", "width", "height"):
        if key not in value:
            raise wrong_value(name, form, value)
        sides.append(_real(name, value[key]))
        if abs(sides[-1]) > _LARGEST_PIXEL or (key in ("width", "height") and sides[-1] <= 0):
            raise wrong_value(name, f"a region with a valid {key}", value)
    x, y, width, height = sides
    left, top = math.floor(x), math.floor(y)
    kind, confidence, label, wish = ({**_REGION_DEFAULTS, **value}[key]
                                     for key in _REGION_DEFAULTS)
    if not isinstance(label, str):
        raise wrong_type(name + " label", "text", label)
    share = _real(name + " confidence", confidence)
    if not 0 <= share <= 1:
        raise wrong_value(name + " confidence", "0 to 1", share)
    return [left, top, math.ceil(x + width) - left, math.ceil(y + height) - top,
            one_of("face", "animal", "subject", "other")(name + " kind", kind), share, label,
            one_of("keep", "must-keep", "avoid", "must-avoid", "none")(name + " wish", wish)]


def file_name(name: str, value: object) -> Plain:
    if not isinstance(value, (str, os.PathLike)):
        raise wrong_type(name, "the name of a file", value)
    if not os.fspath(value):
        raise wrong_value(name, "the name of a file", value)
    return os.fsdecode(value)


def found_regions(name: str, value: object) -> Plain:
    """The name of a file of JSON lines, or a list of regions."""
    if isinstance(value, (str, os.PathLike)):
        return file_name(name, value)
    return [_region(name, item) for item in _items(name, "a file or a list of regions", value)]


def _numbers(text: str) -> object:
    return [float(piece) for piece in text.split(",")]


def _pair(text: str) -> object:
    width, height = text.split("x")
    return int(width), int(height)


def _rectangle(text: str) -> object:
    x, y, width, height = text.split(",")
    return [(int(x), int(y), int(width), int(height))]


@dataclass(frozen=True)
class Option:
    """One option: its checks, and how it is written on a command line."""

    name: str
    check: Check
    form: str  # empty: a flag without a value
    help: str
    from_text: FromText = str
    repeats: bool = False
    short: str = ""
    field: str = ""  # of the request; empty: same as name
    for_analysis: bool = False  # used by the analysis, not by each request
    uses_presets: bool = False  # reads the table of presets or adds to it

    @property
    def flag(self) -> str:
        return "--" + self.name.replace("_", "-")


_REGION = "pixels of the photograph as displayed"

OPTIONS: Tuple[Option, ...] = (
    Option("top", integer(1, 10000), "N", "crops for each photograph (5)", int, short="-n"),
    Option("presets", preset_files, "FILE", "more presets, from a table like presets.tsv",
           repeats=True, uses_presets=True),
    Option("aspect", ratios, "W:H", "a ratio to try, or the name of a preset (six ratios)",
           repeats=True, uses_presets=True),
    Option("preset", presets, "NAME", "the best crop of a named shape", repeats=True,
           uses_presets=True),
    Option("scale", scales, "S", "crop side over photograph side (0.5, 0.55 to 1)", _numbers, True,
           field="scales"),
    Option("each_ratio", truth, "", "the best crop of each ratio instead of the best of all of them"),
    Option("largest", truth, "", "only the largest crops of each ratio"),
    Option("size", size, "WxH", "crops of exactly this size, in pixels of the photograph", _pair),
    Option("density", integer(1, 500), "N", "positions tried along the side with more free room (8)",
           int),
    Option("rank_by", one_of("people", "composition", "coverage", "border", "peak", "centre-peak",
                             "engine", "all"), "MEASURE",
           "people (what people choose), a measure, or engine (people)"),
    Option("ranking", file_name, "FILE", "rank by this file, fitted to your own choices"),
    Option("weights", weights, "a,b,c,d,e",
           "rank by the engine, with these weights of composition, coverage, border, peak and "
           "centre peak", _numbers),
    Option("keep", regions, "X,Y,W,H", f"prefer crops that contain this region ({_REGION})",
           _rectangle, True),
    Option("avoid", regions, "X,Y,W,H", "prefer crops that stay clear of this region", _rectangle,
           True),
    Option("must_keep", regions, "X,Y,W,H", "only crops that contain this whole region", _rectangle,
           True),
    Option("must_avoid", regions, "X,Y,W,H", "only crops that do not touch this region",
           _rectangle, True),
    Option("faces", faces, "WHICH", "look for faces: off, large or all (all)", for_analysis=True),
    Option("regions", found_regions, "FILE", "JSON lines of regions that another detector found",
           for_analysis=True),
    Option("ignore_metadata_regions", truth, "",
           "ignore faces and subjects that a photograph's own metadata names", for_analysis=True),
    Option("explain", truth, "", "also why: ranks, wishes met, candidates tried"),
)
NAMES = tuple(option.name for option in OPTIONS)


def checked(options: Mapping[str, object]) -> Dict[str, Plain]:
    """The options with their values checked, in the order of the table. An option of value
    None counts as not given."""
    for name in options:
        if name not in NAMES:
            raise TypeError(f"suggest() got an unexpected option '{name}'; there are "
                            + ", ".join(NAMES))
    table = _vistatrim.Presets()
    found = {}
    for option in OPTIONS:
        value = options.get(option.name)
        if value is not None:
            more = (table,) if option.uses_presets else ()
            found[option.name] = option.check(option.name, value, *more)
    found.pop("presets", None)
    if "size" in found:
        for other in ("aspect", "preset", "scale", "largest"):
            if found.get(other):
                raise ValueError(f"size cannot be given with {other}")
    if found.get("largest") and "scale" in found:
        raise ValueError("largest cannot be given with scale")
    rank_by = found.get("rank_by", "people")
    if "weights" in found and rank_by not in ("people", "engine", "all"):
        raise ValueError("weights apply to all measures; rank_by names one of them")
    if "ranking" in found and ("weights" in found or rank_by in ("engine", "all")):
        raise ValueError("ranking has no effect on the engine's own ranking by weights")
    if found.get("each_ratio") and not found.get("aspect"):
        raise ValueError("each_ratio needs aspect")
    return found


# (shape, fill, request): name and size of the shape, or None if all shapes share one request.
ShapeRequest = Tuple[Optional[str], Optional[Tuple[int, int]], _vistatrim.Request]


def requests_of(values: Mapping[str, Plain]) -> List[ShapeRequest]:
    """The requests that checked options describe: one, or one for each shape."""
    aspects, named = values.get("aspect") or [], values.get("preset") or []
    assert isinstance(aspects, list) and isinstance(named, list)
    if not values.get("each_ratio") and not named:
        return [(None, None, _request_of(values))]
    shapes: Dict[str, Tuple[List[Any], Optional[Tuple[int, int]]]] = {}
    for aspect in aspects:
        shapes.setdefault(_shape_of(aspect), (aspect[:2], None))
    for width, height, name, fill in named:
        shapes.setdefault(name, ([width, height], (fill[0], fill[1]) if fill else None))
    return [(name, fill, _request_of({"top": 1, **values, "aspect": [ratio]}))
            for name, (ratio, fill) in shapes.items()]


def check(photograph: _vistatrim.Photograph, requests: Iterable[ShapeRequest]) -> None:
    """Raises for a request that the photograph cannot meet, before it is decoded."""
    for _, _, request in requests:
        photograph.check(request)


def suggest(analysis: _vistatrim.Analysis, requests: Iterable[ShapeRequest]) -> Dict[str, Any]:
    """The object that the program writes as JSON, without the file name. Crops and explanations of
    several requests are combined."""
    total: Dict[str, Any] = {}
    for shape, fill, request in requests:
        found = analysis.suggest(request, fill)
        if shape is not None:
            found["crops"] = [_with_shape(crop, shape, rank, fill)
                              for rank, crop in enumerate(found["crops"], 1)]
        if not total:
            total = found
            continue
        total["crops"] += found["crops"]
        if "explain" in total:
            _add_explanation(total["explain"], found["explain"])
    return total


def _with_shape(crop: Mapping[str, Any], shape: str, rank: int,
                fill: Optional[Tuple[int, int]]) -> Dict[str, Any]:
    """Adds the shape after the ratio, where the program puts it."""
    result: Dict[str, Any] = {}
    for name, value in crop.items():
        result[name] = value
        if name == "aspect":
            result.update(shape=shape, rank=rank)
            if fill is not None:
                result["fill"] = {"width": fill[0], "height": fill[1]}
    return result


def _add_explanation(total: Dict[str, Any], more: Mapping[str, Any]) -> None:
    for name in ("candidates", "passing"):
        total[name] += more[name]
    for wish, other in zip(total["wishes"], more["wishes"]):
        wish["metByCandidates"] += other["metByCandidates"]
    total["note"] = total["note"] or more["note"]


def _ranking(path: str) -> _vistatrim.Ranking:
    content = content_of("ranking", path)
    try:
        return _vistatrim.Ranking(content, os.fsencode(path))
    except _vistatrim.Failure as failure:
        raise ValueError(f"ranking: {failure.args[1]}") from None


def _request_of(values: Mapping[str, Plain]) -> _vistatrim.Request:
    request = _vistatrim.Request()
    wishes: List[Tuple[str, int, int, int, int]] = []
    for option in OPTIONS:
        value = values.get(option.name)
        if value is None or option.for_analysis or option.name in ("each_ratio", "preset"):
            continue
        if option.name == "largest":
            if value:
                request.scales = [1.0]
        elif option.name == "ranking":
            request.ranking = _ranking(str(value))
        elif option.name == "aspect":
            assert isinstance(value, list)
            request.aspects = [aspect[:2] for aspect in value]
        elif option.name in _WISHES:
            assert isinstance(value, list)
            kind = option.name.replace("_", "-")
            wishes += [(kind, x, y, width, height) for x, y, width, height in value]
        else:
            setattr(request, option.field or option.name, value)
    request.wishes = wishes
    return request


# What an analysis depends on: `faces`, whether metadata is ignored, the regions.
RegionUse = Tuple[str, bool, Tuple[Tuple[Any, ...], ...]]


def regions_file(path: str, content: bytes) -> _vistatrim.RegionsFile:
    try:
        return _vistatrim.RegionsFile(content, os.fsencode(path))
    except _vistatrim.Failure as failure:
        raise ValueError(f"regions: {failure.args[1]}") from None


def region_use_of(options: Mapping[str, Plain], photograph: str) -> RegionUse:
    """The use of regions that checked options describe, for the photograph of this name."""
    given = options.get("regions")
    if isinstance(given, str):
        regions = regions_file(given, content_of("regions", given)).regions_of(
            os.fsencode(photograph))
    else:
        regions = [tuple(region) for region in given] if isinstance(given, list) else []
    return (str(options.get("faces") or "all"), bool(options.get("ignore_metadata_regions")),
            tuple(regions))


def region_options(use: RegionUse) -> _vistatrim.RegionOptions:
    options = _vistatrim.RegionOptions()
    face_search, ignores_metadata, regions = use
    options.faces = face_search
    options.use_named = not ignores_metadata
    options.regions = regions
    return options


def background_colour(value: object) -> List[float]:
    """'#rrggbb', '#rgb', a CSS colour name or (red, green, blue), 0 to 255 each."""
    name, form = "background", "'#rrggbb', '#rgb', a colour's name or (red, green, blue)"
    if isinstance(value, str):
        colour = _vistatrim.parse_colour(value)
        if colour is None:
            raise wrong_value(name, form, value)
        return list(colour)
    channels = _items(name, form, value)
    if len(channels) != 3:
        raise wrong_value(name, form, value)
    return [float(_integer(name, channel, 0, 255)) for channel in channels]
