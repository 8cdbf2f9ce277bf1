"""A photograph and its operations."""
from __future__ import annotations

import os
import threading
from typing import Any, Dict, Mapping, Optional, Sequence, Tuple, Union

import numpy as np

from . import _options, _vistatrim
from ._crop import Crop, Crops, crop_of
from ._errors import named, wrong_type, wrong_value
from ._pictures import photo_picture
from ._sources import open_source

Region = Union[Crop, Sequence[int]]


def _box_of(crop: object) -> Tuple[int, int, int, int]:
    """x, y, width, height of a Crop or of a box (left, top, right, bottom)."""
    if isinstance(crop, Crop):
        return crop.x, crop.y, crop.width, crop.height
    form = "a Crop or a box (left, top, right, bottom)"
    sides = _options._items("crop", form, crop)
    if len(sides) != 4:
        raise wrong_value("crop", form, crop)
    left, top, right, bottom = (
        _options._integer("crop", side, 0, _options._LARGEST_PIXEL) for side in sides)
    if right <= left or bottom <= top:
        raise wrong_value("crop", "a box that holds at least one pixel", crop)
    return left, top, right - left, bottom - top


def _size_of(size: object) -> Optional[Tuple[int, int]]:
    sides = _options.size("size", size)
    if sides is None:
        return None
    assert isinstance(sides, list)
    return sides[0], sides[1]


class Photo:
    """A photograph: a path, an encoded file as bytes, or pixels.

    Pixels are an upright sRGB uint8 array of shape (h, w), (h, w, 1), (h, w, 3) or (h, w, 4);
    anything with ``__array_interface__`` will do. Arrays whose rows are packed are not copied:
    do not change them, or a bytearray, while the photograph is in use. ``background`` shows
    through where a photograph is transparent.

    The first request analyses the photograph; later requests with the same options for faces and
    regions reuse the analysis. The methods may be called from several threads.
    """

    def __init__(self, source: object, *, background: object = "white") -> None:
        self._given = source
        self._background = background
        self.name, self._source = open_source(source, _options.background_colour(background))
        self._gate = threading.Lock()
        self._analysis: Optional[_vistatrim.Analysis] = None
        self._region_use = _options.region_use_of({}, self.name)  # what the analysis depends on

    @property
    def size(self) -> Tuple[int, int]:
        """(width, height) as displayed, in pixels."""
        return self._source.size

    @property
    def width(self) -> int:
        return self.size[0]

    @property
    def height(self) -> int:
        return self.size[1]

    def suggest(self, **options: Any) -> Crops:
        """The best crops, best first. The options are those of ``vistatrim suggest``."""
        found = self._result(options)
        origin = (self.name, self._source)
        return Crops((crop_of(crop, origin) for crop in found["crops"]), found.get("explain"),
                     found.get("regions", ()))

    def maps(self) -> Dict[str, np.ndarray[Any, np.dtype[np.float32]]]:
        """The maps that the measures are read from, by name: float32 arrays (h, w), about 0 to 1.
        Their size is that of the working picture, whose longer side is 640 pixels."""
        with named(self.name):
            return self._analysis_for(None).maps()

    def crop(self, crop: Region, *,
             size: Optional[Tuple[int, int]] = None) -> np.ndarray[Any, np.dtype[np.uint8]]:
        """The pixels of a crop at full resolution, or scaled to exactly ``size`` (width, height):
        a uint8 array (h, w, 3), sRGB."""
        box = self._inside(crop)
        scaled = _size_of(size)
        with named(self.name):
            return self._source.crop(box, scaled)

    def save(self, crop: Region, path: Union[str, "os.PathLike[str]"], *,
             size: Optional[Tuple[int, int]] = None, format: Optional[str] = None,
             quality: Optional[int] = None, strip: bool = False) -> None:
        """Writes a crop. The extension of ``path`` sets the format, unless ``format`` does. Depth,
        colour profile and metadata are kept as far as the format can hold them; ``strip`` leaves
        the metadata out. An existing file is replaced."""
        if not isinstance(path, (str, os.PathLike)):
            raise wrong_type("path", "the name of a file", path)
        name = os.fsdecode(path)
        ending = os.path.splitext(name)[1][1:] if format is None else format
        box = self._inside(crop)
        arguments = self._file_arguments(size, ending, quality, strip)
        with named(name):
            self._source.save(os.fsencode(name), box, *arguments)

    def encode(self, crop: Region, *, size: Optional[Tuple[int, int]] = None,
               format: Optional[str] = None, quality: Optional[int] = None,
               strip: bool = False) -> bytes:
        """The file that ``save`` would write, as bytes. Without ``format`` it is the photograph's
        format, or PNG if crops cannot be written in that."""
        ending = self._source.native_ending if format is None else format
        box = self._inside(crop)
        arguments = self._file_arguments(size, ending, quality, strip)
        with named(self.name):
            return self._source.encode(box, *arguments)

    def preview(self, long_side: int = 1024) -> np.ndarray[Any, np.dtype[np.uint8]]:
        """The photograph with a longer side of at most ``long_side`` pixels: uint8 (h, w, 3)."""
        side = _options._integer("long_side", long_side, 1, 65535)
        with named(self.name):
            return self._source.preview(side)

    def __repr__(self) -> str:
        return f"Photo({self.name!r}, {self.width} x {self.height})"

    def __reduce__(self) -> Tuple[Any, ...]:
        return _rebuilt, (self._given, self._background)

    def _repr_png_(self) -> bytes:
        return photo_picture(self.name, self._source)

    def _result(self, options: Mapping[str, object]) -> Dict[str, Any]:
        """The object that the program writes as JSON, without the file name."""
        checked = _options.checked(options)
        requests = _options.requests_of(checked)
        use = _options.region_use_of(checked, self.name)
        with named(self.name):
            _options.check(self._source, requests)
            return _options.suggest(self._analysis_for(use), requests)

    def _analysis_for(self, use: Optional[_options.RegionUse]) -> _vistatrim.Analysis:
        """The analysis for this use of faces and regions; for None, any that exists."""
        with self._gate:
            if self._analysis is None or use not in (None, self._region_use):
                self._region_use = use or self._region_use
                self._analysis = _vistatrim.Analysis(self._source,
                                                     _options.region_options(self._region_use))
            return self._analysis

    def _inside(self, crop: Region) -> Tuple[int, int, int, int]:
        box = _box_of(crop)
        if box[0] + box[2] > self.width or box[1] + box[3] > self.height:
            raise ValueError(f"{self.name}: the crop does not lie inside the photograph, which is "
                             f"{self.width} x {self.height}")
        return box

    def _file_arguments(self, size: object, ending: object, quality: object,
                        strip: object) -> Tuple[Optional[Tuple[int, int]], str, Optional[int], bool]:
        if not isinstance(ending, str):
            raise wrong_type("format", "the name of a format", ending)
        if not _vistatrim.is_format(ending):
            raise wrong_value("format", "jpg, png, webp, tif, avif or heic", ending)
        checked = None if quality is None else _options._integer("quality", quality, 1, 100)
        return _size_of(size), ending, checked, bool(_options.truth("strip", strip))


def _rebuilt(source: object, background: object) -> Photo:
    return Photo(source, background=background)


def suggest(source: object, *, background: object = "white", **options: Any) -> Crops:
    """The best crops of a photograph, if it takes only one request."""
    return Photo(source, background=background).suggest(**options)
