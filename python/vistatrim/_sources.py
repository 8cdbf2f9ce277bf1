"""What photographs can be made from: names of files, encoded bytes, arrays of pixels."""
from __future__ import annotations

import os
from typing import Any, List, Tuple

import numpy as np

from . import _vistatrim
from ._errors import named, wrong_type

# Modes whose bytes are grey, RGB or RGBA. Bytes of other modes (palette indices, CMYK) would be
# mistaken for such colours.
_PIL_MODES = ("L", "RGB", "RGBA")


def _file(path: str, background: List[float]) -> Tuple[str, _vistatrim.Photograph]:
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("the name of a photograph contains a null byte")
    with named(path):
        return path, _vistatrim.Photograph.from_file(name, background)


def _array(source: Any) -> np.ndarray[Any, np.dtype[np.uint8]]:
    mode = getattr(source, "mode", None)
    if isinstance(mode, str) and hasattr(source, "convert") and mode not in _PIL_MODES:
        raise ValueError(f"an image of mode {mode!r} must be converted first: convert('RGB') "
                         "or convert('RGBA')")
    if isinstance(source, np.ma.MaskedArray):
        raise TypeError("the pixels of a masked array must be filled first: filled(...)")
    pixels = np.asarray(source)
    if pixels.dtype != np.uint8:
        raise TypeError(f"pixels must be uint8, not {pixels.dtype}")
    if pixels.ndim not in (2, 3) or (pixels.ndim == 3 and pixels.shape[2] not in (1, 3, 4)):
        raise ValueError("pixels must be of the shape (h, w), (h, w, 1), (h, w, 3) or (h, w, 4), "
                         f"not {pixels.shape}")
    if 0 in pixels.shape:
        raise ValueError(f"an array of the shape {pixels.shape} has no pixels")
    return pixels


def _has_packed_rows(pixels: np.ndarray[Any, np.dtype[np.uint8]]) -> bool:
    """True if the library can read the array in place: each row is packed, at any row stride."""
    row = pixels[:1]
    height = pixels.shape[0]
    return bool(row.flags.c_contiguous
                and (height == 1 or abs(pixels.strides[0]) >= row.nbytes))


def open_source(source: object, background: List[float]) -> Tuple[str, _vistatrim.Photograph]:
    """A name for messages, and the photograph."""
    if isinstance(source, (str, os.PathLike)):
        path = os.fspath(source)
        return _file(path if isinstance(path, str) else os.fsdecode(path), background)
    if isinstance(source, (bytes, bytearray, memoryview)):
        name = f"<{len(source)} bytes>"
        if isinstance(source, memoryview) and (source.ndim != 1 or not source.contiguous):
            raise ValueError("an encoded file must be contiguous bytes")
        with named(name):
            return name, _vistatrim.Photograph.from_bytes(source, background)
    if hasattr(source, "__array_interface__") or hasattr(source, "__array__"):
        pixels = _array(source)
        if not _has_packed_rows(pixels):
            pixels = np.ascontiguousarray(pixels)
        name = "<array {}>".format(" x ".join(str(count) for count in pixels.shape))
        with named(name):
            return name, _vistatrim.Photograph.from_pixels(pixels, background)
    raise wrong_type("a photograph", "a path, bytes or an array of pixels", source)
