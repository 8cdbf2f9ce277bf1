"""Crops, and lists of them."""
from __future__ import annotations

import html
from dataclasses import dataclass, field
from typing import Any, Dict, Iterable, List, Mapping, Optional, Tuple

from . import _vistatrim
from ._pictures import crop_picture, data_uri

# The name of a photograph, and the photograph without its analysis: keeping a crop must not keep
# forty megabytes of maps alive.
Origin = Tuple[str, _vistatrim.Photograph]


@dataclass(frozen=True)
class Crop:
    """A rectangle of a photograph, in pixels as displayed, and why it was chosen."""

    x: int
    y: int
    width: int
    height: int
    aspect: str
    covers_content: bool
    scores: Mapping[str, float] = field(hash=False)
    expected_overlap: Optional[float] = None
    shape: Optional[str] = None  # "16x9" or "story", if each ratio or preset has its own crops
    fill: Optional[Tuple[int, int]] = None  # the size of the preset that the crop is for
    explanation: Optional[Mapping[str, Any]] = field(default=None, hash=False, repr=False)
    _origin: Optional[Origin] = field(default=None, compare=False, repr=False)

    @property
    def box(self) -> Tuple[int, int, int, int]:
        """(left, top, right, bottom) as PIL's ``crop()`` takes it: right and bottom are exclusive."""
        return self.x, self.y, self.x + self.width, self.y + self.height

    def __getstate__(self) -> Dict[str, Any]:
        # A pickled crop leaves its photograph behind.
        return {**self.__dict__, "_origin": None}

    def _repr_png_(self) -> Optional[bytes]:
        return self._picture("png")

    def _picture(self, ending: str) -> Optional[bytes]:
        if self._origin is None:
            return None
        name, source = self._origin
        return crop_picture(name, source, (self.x, self.y, self.width, self.height), ending)


def crop_of(found: Mapping[str, Any], origin: Origin) -> Crop:
    """The crop that one object of the program's JSON describes."""
    fill = found.get("fill")
    return Crop(found["x"], found["y"], found["width"], found["height"], found["aspect"],
                found["coversContent"], found["scores"], found.get("expectedOverlap"),
                found.get("shape"), (fill["width"], fill["height"]) if fill else None,
                found.get("explain"), origin)


class Crops(List[Crop]):
    """The crops of a photograph, best first. With ``explain=True``, ``explanation`` says how many
    candidates there were and, in ``explanation["note"]``, why there are fewer crops than requested.
    ``regions`` holds the faces and other regions that were found."""

    def __init__(self, crops: Iterable[Crop] = (),
                 explanation: Optional[Mapping[str, Any]] = None,
                 regions: Iterable[Mapping[str, Any]] = ()) -> None:
        super().__init__(crops)
        self.explanation = explanation
        self.regions = list(regions)

    def _repr_html_(self) -> str:
        return "<div>" + "".join(_figure(crop) for crop in self) + "</div>"


def _figure(crop: Crop) -> str:
    jpeg = crop._picture("jpg")
    image = "" if jpeg is None else f'<img src="{data_uri(jpeg)}" alt="" style="height:12em">'
    scores = ", ".join(f"{name} {value:.2f}" for name, value in crop.scores.items())
    place = f"{crop.width} × {crop.height} at {crop.x}, {crop.y} ({crop.aspect})"
    return ('<figure style="display:inline-block;margin:0 1em 1em 0">'
            f"{image}<figcaption><b>{html.escape(place)}</b><br>"
            f"<small>{html.escape(scores)}</small></figcaption></figure>")
