#!/usr/bin/env python3
"""Makes thumbnails with Pillow: a sharpened square of each photograph, written to a folder.

usage: pillow_pipeline.py FOLDER PHOTO...
"""
import sys
from pathlib import Path

from PIL import Image, ImageFilter, ImageOps

import vistatrim


def thumbnail(path: Path, side: int) -> Image.Image:
    # Pillow keeps the stored orientation; crops are in pixels of the photograph as displayed.
    image = ImageOps.exif_transpose(Image.open(path)).convert("RGB")
    best = vistatrim.suggest(image, aspect="1:1", top=1)[0]
    square = image.crop(best.box).resize((side, side), Image.Resampling.LANCZOS)
    return square.filter(ImageFilter.UnsharpMask(radius=1, percent=60))


def main() -> None:
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for path in map(Path, sys.argv[2:]):
        try:
            thumbnail(path, 256).save(folder / f"{path.stem}.webp", quality=80)
        except (OSError, ValueError) as error:
            print(f"{path}: {error}", file=sys.stderr)


if __name__ == "__main__":
    main()
