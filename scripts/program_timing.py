#!/usr/bin/env python3
"""Measures time and memory of vistatrim on 12-megapixel JPEGs, as whole processes.

Each run of vistatrim is paired with a run of vipsthumbnail that writes one crop of the same
photograph. Ratios are taken pair by pair, so a machine whose speed drifts does not distort them.
Then it runs on a folder of photographs with one worker and with two. Use an otherwise idle
machine.

usage: scripts/program_timing.py VISTATRIM [PAIRS]
  With 0 pairs only the folder is measured.
  The photographs come from the Debian package lomiri-wallpapers-16.04
  (scripts/install_dependencies.sh sheet demo), scaled to 12 megapixels.
"""
import glob
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

SOURCES = sorted(glob.glob("/usr/share/backgrounds/*.jpg"))
ONE = "/usr/share/backgrounds/picosdeeuropa_by_Aitzol_Berasategi.jpg"
SIZE = ["4000", "--height", "3000", "--size", "force"]


def run(command):
    """Wall time and processor time in ms, peak resident memory in MiB."""
    start = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"exit status {process.returncode}: {' '.join(command)}")
    return 1000 * wall, 1000 * (usage.ru_utime + usage.ru_stime), usage.ru_maxrss / 1024


def median(values):
    return statistics.median(values)


def pairs(title, ours, theirs, count):
    run(ours)  # an unmeasured run of each warms the caches
    run(theirs)
    a, b = [], []
    for _ in range(count):
        a.append(run(ours))
        b.append(run(theirs))
    cells = []
    for i, digits in ((0, 0), (1, 0), (2, 1)):
        ratio = median([x[i] / y[i] for x, y in zip(a, b)])
        cells.append(f"{median([x[i] for x in a]):.{digits}f} / "
                     f"{median([y[i] for y in b]):.{digits}f} = {ratio:.2f}")
    print(f"| {title} | " + " | ".join(cells) + " |", flush=True)


def stages(program, photograph, count, command):
    """Medians of the stages that --timings prints."""
    found = []
    for _ in range(count):
        text = subprocess.run([program] + command + ["--timings", photograph], check=True,
                              capture_output=True, text=True).stderr
        found.append([float(part.split()[1]) for part in text.split(": ")[-1].split(", ")])
    return " | ".join(f"{median([row[i] for row in found]):.0f}" for i in range(4))


def together(commands):
    """Wall time in ms of commands run at the same time."""
    start = time.monotonic()
    processes = [subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                 for command in commands]
    if any([process.wait() != 0 for process in processes]):
        sys.exit(f"failed: {' '.join(commands[0])}")
    return 1000 * (time.monotonic() - start)


def folder(title, count, command, whole, halves):
    """Alternates one worker, two workers, and two programs with half the photographs each."""
    run(command + ["-j", "2", whole])
    one, two, apart = [], [], []
    for _ in range(count):
        one.append(run(command + ["-j", "1", whole]))
        two.append(run(command + ["-j", "2", whole]))
        apart.append(together([command + ["-j", "1", half] for half in halves]))
    cells = [f"{median([x[0] / y[0] for x, y in zip(one, two)]):.2f}",
             f"{median([x[0] / y for x, y in zip(one, apart)]):.2f}"]
    for i in range(3):
        cells.append(f"{median([x[i] for x in one]):.0f}, {median([x[i] for x in two]):.0f}")
    print(f"| {title} | " + " | ".join(cells) + " |", flush=True)


def one_photograph(program, count, place, base, progressive, out):
    print(f"Medians of {count} pairs: vistatrim / vipsthumbnail = ratio.\n")
    print("| | wall, ms | processor, ms | peak memory, MiB |\n|---|---|---|---|")
    spent = []
    for name, photograph in (("baseline", base), ("progressive", progressive)):
        small = ["vipsthumbnail", "--smartcrop", "attention", "--size", "640x640",
                 "-o", place + "/theirs.jpg", photograph]
        pairs(f"{name}, `suggest`; one crop of 640 x 640",
              [program, "suggest", photograph], small, count)
        ours = [program, "crop", "--top", "1", "--force", "-o", out, photograph]
        run(ours)
        crop = f"{out}/{name}-1.jpg"
        size = "x".join(subprocess.run(["vipsheader", "-f", side, crop], check=True,
                                       capture_output=True, text=True).stdout.strip()
                        for side in ("width", "height"))
        large = small[:3] + ["--size", size, "-o", place + "/theirs.jpg[Q=90]", photograph]
        pairs(f"{name}, `crop --top 1`; one crop of the same {size.replace('x', ' x ')}",
              ours, large, count)
        spent.append((f"{name}, `suggest`", stages(program, photograph, count, ["suggest"])))
        spent.append((f"{name}, `crop --top 1`",
                      stages(program, photograph, count, ours[1:-1])))
    print("\nWhere the time goes, ms:\n")
    print("| | read | analyse | score | write |\n|---|---|---|---|---|")
    for title, cells in spent:
        print(f"| {title} | {cells} |", flush=True)


def main():
    program = os.path.realpath(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 11
    place = tempfile.mkdtemp()
    try:
        base, progressive = place + "/baseline.jpg", place + "/progressive.jpg"
        subprocess.run(["vips", "thumbnail", ONE, base + "[Q=90]"] + SIZE, check=True)
        subprocess.run(["vips", "copy", base, progressive + "[Q=90,interlace]"], check=True)
        os.makedirs(place + "/in/a")
        os.mkdir(place + "/in/b")  # each photograph twice, so that two workers get equal shares
        for i, source in enumerate(SOURCES):
            subprocess.run(["vips", "thumbnail", source, f"{place}/in/a/{i}.jpg[Q=90]"] + SIZE,
                           check=True)
            os.link(f"{place}/in/a/{i}.jpg", f"{place}/in/b/again{i}.jpg")
        out = place + "/out"

        if count > 0:
            one_photograph(program, count, place, base, progressive, out)
        print(f"\n{2 * len(SOURCES)} photographs of 12 megapixels, `-j 1` against `-j 2`, "
              "medians of 5.\n")
        print("| | gain | of two programs at once | wall, ms | processor, ms | "
              "peak memory, MiB |\n|---|---|---|---|---|---|")
        halves = [place + "/in/a", place + "/in/b"]
        for title, command in (
                ("`suggest`", ["suggest"]),
                ("`crop --top 1`", ["crop", "--top", "1", "--force", "-o", out])):
            folder(title, 5, [program] + command + ["--quiet", "--recursive"], place + "/in",
                   halves)
    finally:
        shutil.rmtree(place)


if __name__ == "__main__":
    main()
