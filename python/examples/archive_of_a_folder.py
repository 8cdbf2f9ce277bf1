#!/usr/bin/env python3
"""Finds crops for all photographs of a folder on all processors, then prints how many there are.

usage: archive_of_a_folder.py FOLDER OUTPUT
"""
import json
import sys
from pathlib import Path

from vistatrim import archive


def main() -> None:
    folder, output = sys.argv[1:]
    summary = archive.suggest(folder, output=output, recursive=True, aspect=["1:1", "16:9"], top=2,
                              progress=lambda progress: print(progress, file=sys.stderr))
    print(summary)
    for path in sorted(Path(output).glob("part-*.jsonl")):
        for line in path.read_text().splitlines():
            found = json.loads(line)
            print(found["file"], len(found.get("crops", ())), found.get("error", ""))


if __name__ == "__main__":  # the workers are processes that import this file
    main()
