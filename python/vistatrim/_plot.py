"""Draws crops over their photograph with matplotlib, if it is installed."""
from __future__ import annotations

from typing import Any, Iterable, Optional, Union

from ._crop import Crop
from ._photo import Photo

_COLOURS = ("#ffb000", "#648fff", "#dc267f", "#785ef0", "#fe6100")


def plot(photo: Photo, crops: Union[Crop, Iterable[Crop]], *, ax: Optional[Any] = None) -> Any:
    """Draws the photograph and a numbered frame for each crop, best first. Returns the axes,
    whose coordinates are pixels of the photograph."""
    try:
        from matplotlib import pyplot
        from matplotlib.patches import Rectangle
    except ImportError as error:
        raise ImportError("vistatrim.plot needs matplotlib") from error

    if ax is None:
        _, ax = pyplot.subplots()
    width, height = photo.size
    ax.imshow(photo.preview(), extent=(0, width, height, 0))
    for rank, crop in enumerate([crops] if isinstance(crops, Crop) else crops, 1):
        colour = _COLOURS[(rank - 1) % len(_COLOURS)]
        ax.add_patch(Rectangle((crop.x, crop.y), crop.width, crop.height, fill=False,
                               edgecolor=colour, linewidth=2.5 if rank == 1 else 1.2))
        ax.text(crop.x, crop.y, f" {rank} ", color="black", backgroundcolor=colour, fontsize=8,
                verticalalignment="top", clip_on=True)
    ax.set_axis_off()
    return ax
