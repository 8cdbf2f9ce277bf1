import os
from typing import Any, Dict, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np

from ._plot import plot as plot

__version__: str
__all__ = ["Crop", "Crops", "Photo", "PhotoError", "__version__", "plot", "presets", "suggest"]

# A ratio: '4:5', (4, 5), 0.8 or the name of a preset.
_Ratio = Union[str, float, Tuple[int, int]]
# A rectangle: (x, y, width, height) in pixels of the photograph.
_Rect = Sequence[int]
_Size = Tuple[int, int]
_Path = Union[str, os.PathLike[str]]
_Colour = Union[str, Tuple[int, int, int]]
_Weights = Union[Sequence[float], Mapping[str, float]]
# A file of JSON lines, or a list of regions as in one line of it.
_Regions = Union[str, os.PathLike[str], Sequence[Mapping[str, Any]]]
_Pixels = np.ndarray[Any, np.dtype[np.uint8]]

class PhotoError(Exception):
    file: str
    kind: str
    reason: str
    def __init__(self, file: str, kind: str, reason: str) -> None: ...

class Crop:
    @property
    def x(self) -> int: ...
    @property
    def y(self) -> int: ...
    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...
    @property
    def aspect(self) -> str: ...
    @property
    def shape(self) -> Optional[str]: ...
    @property
    def fill(self) -> Optional[Tuple[int, int]]: ...
    @property
    def covers_content(self) -> bool: ...
    @property
    def scores(self) -> Mapping[str, float]: ...
    @property
    def expected_overlap(self) -> Optional[float]: ...
    @property
    def explanation(self) -> Optional[Mapping[str, Any]]: ...
    @property
    def box(self) -> Tuple[int, int, int, int]: ...
    def _repr_png_(self) -> Optional[bytes]: ...

class Crops(List[Crop]):
    explanation: Optional[Mapping[str, Any]]
    regions: List[Mapping[str, Any]]
    def __init__(self, crops: Iterable[Crop] = ...,
                 explanation: Optional[Mapping[str, Any]] = ...,
                 regions: Iterable[Mapping[str, Any]] = ...) -> None: ...
    def _repr_html_(self) -> str: ...

class Photo:
    name: str
    def __init__(self, source: object, *, background: _Colour = ...) -> None: ...
    @property
    def size(self) -> Tuple[int, int]: ...
    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...
    def suggest(
        self, *,
        top: Optional[int] = ...,
        presets: Union[None, _Path, Sequence[_Path]] = ...,
        aspect: Union[None, _Ratio, Sequence[_Ratio]] = ...,
        preset: Union[None, str, Sequence[str]] = ...,
        scale: Union[None, float, Sequence[float]] = ...,
        each_ratio: Optional[bool] = ...,
        largest: Optional[bool] = ...,
        size: Optional[_Size] = ...,
        density: Optional[int] = ...,
        rank_by: Optional[str] = ...,
        ranking: Union[None, str, os.PathLike[str]] = ...,
        weights: Optional[_Weights] = ...,
        keep: Union[None, _Rect, Sequence[_Rect]] = ...,
        avoid: Union[None, _Rect, Sequence[_Rect]] = ...,
        must_keep: Union[None, _Rect, Sequence[_Rect]] = ...,
        must_avoid: Union[None, _Rect, Sequence[_Rect]] = ...,
        faces: Optional[str] = ...,
        regions: Optional[_Regions] = ...,
        ignore_metadata_regions: Optional[bool] = ...,
        explain: Optional[bool] = ...,
    ) -> Crops: ...
    def maps(self) -> Dict[str, np.ndarray[Any, np.dtype[np.float32]]]: ...
    def crop(self, crop: Union[Crop, Sequence[int]], *, size: Optional[_Size] = ...) -> _Pixels: ...
    def save(self, crop: Union[Crop, Sequence[int]], path: Union[str, os.PathLike[str]], *,
             size: Optional[_Size] = ..., format: Optional[str] = ...,
             quality: Optional[int] = ..., strip: bool = ...) -> None: ...
    def encode(self, crop: Union[Crop, Sequence[int]], *, size: Optional[_Size] = ...,
               format: Optional[str] = ..., quality: Optional[int] = ...,
               strip: bool = ...) -> bytes: ...
    def preview(self, long_side: int = ...) -> _Pixels: ...
    def _repr_png_(self) -> bytes: ...

def suggest(
    source: object, *,
    background: _Colour = ...,
    top: Optional[int] = ...,
    presets: Union[None, _Path, Sequence[_Path]] = ...,
    aspect: Union[None, _Ratio, Sequence[_Ratio]] = ...,
    preset: Union[None, str, Sequence[str]] = ...,
    scale: Union[None, float, Sequence[float]] = ...,
    each_ratio: Optional[bool] = ...,
    largest: Optional[bool] = ...,
    size: Optional[_Size] = ...,
    density: Optional[int] = ...,
    rank_by: Optional[str] = ...,
    ranking: Union[None, str, os.PathLike[str]] = ...,
    weights: Optional[_Weights] = ...,
    keep: Union[None, _Rect, Sequence[_Rect]] = ...,
    avoid: Union[None, _Rect, Sequence[_Rect]] = ...,
    must_keep: Union[None, _Rect, Sequence[_Rect]] = ...,
    must_avoid: Union[None, _Rect, Sequence[_Rect]] = ...,
    faces: Optional[str] = ...,
    regions: Optional[_Regions] = ...,
    ignore_metadata_regions: Optional[bool] = ...,
    explain: Optional[bool] = ...,
) -> Crops: ...
def presets(
    files: Union[_Path, Sequence[_Path]] = ...,
) -> Dict[str, Tuple[str, Optional[_Size]]]: ...
