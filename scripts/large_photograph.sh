#!/usr/bin/env bash
# Makes a synthetic photograph of 100 megapixels, as PNG and JPEG, and measures suggest and crop on
# both: wall time, processor time and peak memory. crop runs with one worker and with two.
#
# usage: scripts/large_photograph.sh VISTATRIM [CROPS [WIDTH]]
#   CROPS  5 by default
#   WIDTH  in pixels, 12000 by default
#
# The picture is one of the Debian package lomiri-wallpapers-16.04
# (scripts/install_dependencies.sh sheet demo), scaled up, with noise.
set -euo pipefail
program=$(realpath "$1")
crops=${2:-5}
width=${3:-12000}
height=$((width * 8334 / 12000))
source=/usr/share/backgrounds/picosdeeuropa_by_Aitzol_Berasategi.jpg
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

vips thumbnail "$source" up.v "$width" --height "$height" --size force
vips gaussnoise noise.v "$width" "$height" --sigma 3
vips add up.v noise.v sum.v
vips cast sum.v large.v uchar
vips pngsave large.v large.png --strip
vips jpegsave large.v large.jpg --Q 90 --strip
rm ./*.v

measured() { # usage: measured TITLE COMMAND...
    /usr/bin/python3 - "$@" <<'PYTHON'
import os
import subprocess
import sys
import time
start = time.monotonic()
process = subprocess.Popen(sys.argv[2:], stdout=subprocess.DEVNULL)
_, status, usage = os.wait4(process.pid, 0)
if status != 0:
    sys.exit("failed: " + " ".join(sys.argv[2:]))
print(f"{sys.argv[1]}: {time.monotonic() - start:.1f} s, "
      f"{usage.ru_utime + usage.ru_stime:.1f} s of processor time, "
      f"{usage.ru_maxrss / 1024:.0f} MiB", flush=True)
PYTHON
}
for photograph in large.png large.jpg; do
    measured "suggest $photograph" "$program" suggest "$photograph"
    for workers in 1 2; do
        rm -rf out
        measured "crop -n $crops -j $workers $photograph" \
            "$program" crop -n "$crops" -j "$workers" "$photograph" -o out
    done
    echo "  $(stat -c %s out/* | awk '{ sum += $1 } END { printf "%.0f", sum / 1e6 }') MB of crops"
done
