#!/usr/bin/env bash
# From nothing to crops: installs what is missing, builds the host program and runs it on
# photographs. Writes the crops and a report page that shows them all into out/.
#
# usage: scripts/demo.sh [PHOTO...]
#   Without photographs it takes those of the Debian package lomiri-wallpapers-16.04.
set -euo pipefail

photos=()
for photo in "$@"; do
    photos+=("$(realpath -- "$photo")")
done
cd "$(dirname "$0")/.."

if [ ${#photos[@]} -eq 0 ]; then
    scripts/install_dependencies.sh build demo
    while IFS= read -r photo; do
        photos+=("$photo")
    done < <(dpkg -L lomiri-wallpapers-16.04 | grep -iE '\.(jpg|jpeg|png)$' | sort)
else
    scripts/install_dependencies.sh build
fi

cmake --preset release -DVISTATRIM_BUILD_TESTS=OFF -DVISTATRIM_BUILD_BENCHMARKS=OFF -B build/demo
cmake --build build/demo --target vistatrim
vistatrim=build/demo/host/vistatrim

mkdir -p out
"$vistatrim" suggest --top 3 "${photos[@]}"
"$vistatrim" crop --top 3 --force "${photos[@]}" -o out/crops
"$vistatrim" report "${photos[@]}" --force -o out/report.html

echo
echo "Crops:  out/crops/"
echo "Report: out/report.html (open it in a browser)"
