#!/usr/bin/env python3
"""Checks what `suggest --json` prints against its published schema.

Also checks the schema of --regions against what the program accepts.

usage: suggest_schema_test.py VISTATRIM SCHEMA REGIONS_SCHEMA
"""
import json
import os
import subprocess
import sys
import tempfile

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed")
    sys.exit(77)


def write_photo(path, width, height):
    """Writes a dark picture with a bright area, in the simplest format there is."""
    pixels = bytearray()
    for y in range(height):
        for x in range(width):
            bright = width // 3 < x < width // 2 and height // 3 < y < height // 2
            pixels += bytes((230, 90, 40) if bright else (60 + x % 7, 70, 60 + y % 5))
    with open(path, "wb") as file:
        file.write(b"P6 %d %d 255\n" % (width, height) + bytes(pixels))


def validator_of(path):
    with open(path, encoding="utf-8") as file:
        schema = json.load(file)
    validator_class = jsonschema.validators.validator_for(schema)
    validator_class.check_schema(schema)
    return validator_class(schema)


def check_regions_schema(program, output, regions):
    """The program accepts the lines that the schema allows, and no others."""
    place = {"x": 10, "y": 20.5, "width": 30, "h": 40}
    lines = [{"file": "a.ppm", "regions": []},
             {"file": "a.ppm", "regions": [place]},
             {"file": "a.ppm", "regions": [{**place, "kind": "face", "label": "Ada",
                                            "confidence": 0.5, "wish": "avoid", "more": [1]}]},
             {"file": "a.ppm", "regions": [{**place, "wish": "none"}]},
             [], {"file": "a.ppm"}, {"file": "", "regions": []}, {"regions": []},
             {"file": "a.ppm", "regions": [{"x": 1, "y": 2, "width": 3}]},
             {"file": "a.ppm", "regions": [{**place, "width": 0}]},
             {"file": "a.ppm", "regions": [{**place, "x": "10"}]},
             {"file": "a.ppm", "regions": [{**place, "kind": "cat"}]},
             {"file": "a.ppm", "regions": [{**place, "wish": "hold"}]},
             {"file": "a.ppm", "regions": [{**place, "confidence": 1.5}]}]
    with tempfile.TemporaryDirectory() as folder:
        photo, path = os.path.join(folder, "a.ppm"), os.path.join(folder, "regions.jsonl")
        write_photo(photo, 300, 200)
        accepted = 0
        for line in lines:
            with open(path, "w", encoding="utf-8") as file:
                file.write(json.dumps(line) + "\n")
            done = subprocess.run([program, "suggest", "--json", "--explain", photo, "--regions",
                                   path], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  check=False)
            assert (done.returncode == 0) == regions.is_valid(line), line
            if done.returncode == 0:
                output.validate(json.loads(done.stdout))
                accepted += 1
    assert accepted == 4, accepted


def main():
    program, schema_path, regions_path = sys.argv[1:4]
    validator = validator_of(schema_path)
    check_regions_schema(program, validator, validator_of(regions_path))

    with tempfile.TemporaryDirectory() as folder:
        good, tiny, broken = (os.path.join(folder, name) for name in
                              ("good.ppm", "tiny.ppm", "broken.jpg"))
        write_photo(good, 300, 200)
        write_photo(tiny, 1, 1)
        with open(broken, "w", encoding="utf-8") as file:
            file.write("no picture")
        runs = [[], ["--explain"], ["--explain", "--keep", "10,10,50,50", "--must-avoid",
                                    "0,0,300,200"], ["--size", "100x50"], ["--top", "500"]]
        lines = 0
        for options in runs:
            done = subprocess.run([program, "suggest", "--json", *options, good, tiny, broken],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
            for line in done.stdout.decode("utf-8").splitlines():
                validator.validate(json.loads(line))
                lines += 1
        assert lines == 3 * len(runs), lines

        # The schema does reject wrong lines.
        line = json.loads(subprocess.run([program, "suggest", "--json", good], check=True,
                                         stdout=subprocess.PIPE).stdout)
        for spoil in (lambda: line["crops"][0].pop("x"),
                      lambda: line["crops"][1].update(width=0),
                      lambda: line.update(error="and crops as well")):
            spoil()
            assert not validator.is_valid(line)
            line = json.loads(subprocess.run([program, "suggest", "--json", good], check=True,
                                             stdout=subprocess.PIPE).stdout)
    print(f"{lines} lines match the schema")


if __name__ == "__main__":
    main()
