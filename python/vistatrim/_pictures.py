"""Small pictures for notebooks and pages."""
from __future__ import annotations

import base64
from typing import Tuple

from . import _vistatrim
from ._errors import named

_LONG_SIDE = 480

Box = Tuple[int, int, int, int]  # x, y, width, height


def small_size(width: int, height: int) -> Tuple[int, int]:
    """The size at which a crop is shown: its own, or scaled down to a longer side of 480."""
    if max(width, height) <= _LONG_SIDE:
        return width, height
    return _vistatrim.fitted_size((width, height), (_LONG_SIDE, _LONG_SIDE))


def crop_picture(name: str, source: _vistatrim.Photograph, box: Box, ending: str) -> bytes:
    with named(name):
        return source.encode(box, small_size(box[2], box[3]), ending, 82, True)


def photo_picture(name: str, source: _vistatrim.Photograph) -> bytes:
    with named(name):
        return _vistatrim.encode_pixels(source.preview(_LONG_SIDE), "png", 82)


def data_uri(jpeg: bytes) -> str:
    return "data:image/jpeg;base64," + base64.b64encode(jpeg).decode("ascii")
