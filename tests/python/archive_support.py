"""Small archives, and what their output must contain."""
import json
from pathlib import Path

from conftest import scene, suggested


def make_archive(folder, count, broken=0):
    """`count` photographs, the last `broken` of which cannot be read."""
    folder.mkdir(parents=True, exist_ok=True)
    paths = []
    for number in range(count):
        path = folder / f"p{number:04d}.jpg"
        if number < count - broken:
            scene(90 + number % 40, 60 + number % 30, seed=number).save(path, quality=85)
        elif number % 3:
            path.write_bytes(b"no picture %d" % number)
        elif number % 2:
            path.write_bytes(b"")
        # else there is no such file
        paths.append(str(path))
    return paths


def lines_of(output):
    """The lines of all finished partitions, in the order of the partitions."""
    lines = []
    for path in sorted(Path(output).glob("part-*.jsonl")):
        lines += [json.loads(line) for line in path.read_text().splitlines()]
    return lines


def check_lines(output, paths, *arguments):
    """Every photograph has exactly one line, and it is the program's. The face search is off: it
    takes longest, and other tests cover it."""
    found = {line["file"]: line for line in lines_of(output)}
    assert len(lines_of(output)) == len(found) == len(paths)
    expected = {line["file"]: line for line in suggested("--faces", "off", *arguments, *paths)}
    assert found == expected


def files_of(output):
    """The partitions, each with its inode and when it was written."""
    return {path.name: (path.stat().st_ino, path.stat().st_mtime_ns)
            for path in Path(output).glob("part-*.jsonl")}
