#!/usr/bin/env python3
"""Shows a photograph's crops, cell by cell as in a notebook.

usage: look_at_crops.py PHOTO [PICTURE.png]
"""
import sys

# %% A photograph. Nothing is decoded yet.
import vistatrim

photo = vistatrim.Photo(sys.argv[1])
print(photo)

# %% The best crops of any ratio, and why. In a notebook, `crops` alone shows them as pictures.
crops = photo.suggest(top=3, explain=True)
for crop in crops:
    print(crop.box, crop.aspect, {name: round(value, 2) for name, value in crop.scores.items()})
print(crops.explanation["candidates"], "candidates were tried")

# %% Another request reuses the analysis.
portrait = photo.suggest(aspect="4:5", top=1)[0]
print("for a portrait:", portrait.box)

# %% The maps that the measures are read from.
for name, values in photo.maps().items():
    print(f"{name}: {values.shape[1]} x {values.shape[0]}, mean {values.mean():.3f}")

# %% The crops as frames over the photograph.
axes = vistatrim.plot(photo, crops)
if len(sys.argv) > 2:
    axes.figure.savefig(sys.argv[2], dpi=120, bbox_inches="tight")
