"""Good crops of photographs.

    import vistatrim
    crops = vistatrim.Photo("a.jpg").suggest(aspect="4:5", top=3)

All coordinates are pixels of the photograph as displayed: upright, origin at the top left.
"""
from ._crop import Crop, Crops
from ._errors import PhotoError
from ._options import known_presets as presets
from ._photo import Photo, suggest
from ._plot import plot
from ._vistatrim import VERSION as __version__

__all__ = ["Crop", "Crops", "Photo", "PhotoError", "__version__", "plot", "presets", "suggest"]
