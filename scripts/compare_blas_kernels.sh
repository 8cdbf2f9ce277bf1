#!/usr/bin/env bash
# How much do results depend on the linear algebra? Crops the photographs with our own fixed-order
# routines and with each OpenBLAS kernel set that the processor can run, and compares crops and
# scores with those of the fixed order.
#
# usage: scripts/compare_blas_kernels.sh [PHOTO...]
#   PHOTO  default: the photographs of the Debian package lomiri-wallpapers-16.04
#
# Builds the program twice, in build/release and build/blas.
set -euo pipefail
cd "$(dirname "$0")/.."

photos=("$@")
if [ ${#photos[@]} -eq 0 ]; then
    mapfile -t photos < <(dpkg -L lomiri-wallpapers-16.04 | grep '\.jpg$' | LC_ALL=C sort)
fi
cmake --preset release -DVISTATRIM_WARNINGS_AS_ERRORS=ON >/dev/null
cmake --build --preset release --target vistatrim >/dev/null
cmake --preset release -B build/blas -DVISTATRIM_LINEAR_ALGEBRA=blas \
    -DVISTATRIM_WARNINGS_AS_ERRORS=ON -DVISTATRIM_BUILD_PROGRAM=ON >/dev/null
cmake --build build/blas --target vistatrim >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
run() { # name build setting...
    local program
    program=build/$2/cli/vistatrim
    env "${@:3}" "$program" suggest --json --top 10 "${photos[@]}" >"$work/$1"
}
run "fixed order" release
run "OpenBLAS" blas
for core in SkylakeX Haswell Zen Sandybridge Nehalem Prescott; do
    case $core in
        SkylakeX) needs=avx512f ;;
        Haswell | Zen) needs=avx2 ;;
        Sandybridge) needs=avx ;;
        Nehalem) needs=sse4_2 ;;
        Prescott) needs=sse2 ;;
    esac
    grep -qw "$needs" /proc/cpuinfo && run "$core" blas "OPENBLAS_CORETYPE=$core"
done

python3 - "$work" <<'PYTHON'
import json, os, sys

def read(name):
    with open(os.path.join(sys.argv[1], name)) as lines:
        return [json.loads(line)["crops"] for line in lines]

def sides(crop):
    return tuple(crop[side] for side in ("x", "y", "width", "height"))

measures = ("composition", "coverage", "border", "peak", "centrePeak", "merged")
first = read("fixed order")
print("%-14s %-15s %-15s" % ("", "same crops", "same order"), *("%11s" % m for m in measures))
for name in sorted(os.listdir(sys.argv[1])):
    found = read(name)
    alike = total = order = 0
    largest = dict.fromkeys(measures, 0.0)
    for here, there in zip(first, found):
        scores = {sides(crop): crop["scores"] for crop in there}
        total += len(here)
        order += [sides(crop) for crop in here] == [sides(crop) for crop in there]
        for crop in here:
            if sides(crop) in scores:
                alike += 1
                for m in measures:
                    difference = abs(crop["scores"][m] - scores[sides(crop)][m])
                    largest[m] = max(largest[m], difference)
    print("%-14s %-15s %-15s" % (name, "%d of %d" % (alike, total), "%d of %d" % (order, len(first))),
          *("%11.2g" % largest[m] for m in measures))
PYTHON
