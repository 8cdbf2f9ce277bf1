#!/usr/bin/env bash
# From a fresh checkout to crops: installs missing packages, builds the program and runs it on
# photographs. Writes the crops, a contact sheet and a report page to out/. An unreadable
# photograph does not stop it, but makes the exit status 1.
#
# usage: scripts/demo.sh [PHOTO...]
#   PHOTO  default: the photographs of the Debian package lomiri-wallpapers-16.04
set -euo pipefail

photos=()
for photo in "$@"; do
    photos+=("$(realpath -- "$photo")")
done
cd "$(dirname "$0")/.."

if [ ${#photos[@]} -eq 0 ]; then
    scripts/install_dependencies.sh build sheet demo
    while IFS= read -r photo; do
        photos+=("$photo")
    done < <(dpkg -L lomiri-wallpapers-16.04 | grep -iE '\.(jpg|jpeg|png)$' | sort)
else
    scripts/install_dependencies.sh build sheet
fi

cmake --preset release -DVISTATRIM_BUILD_TESTS=OFF -DVISTATRIM_BUILD_BENCHMARKS=OFF -B build/demo
cmake --build build/demo --target vistatrim
vistatrim=build/demo/cli/vistatrim

mkdir -p out
status=0
"$vistatrim" suggest --top 3 "${photos[@]}" || status=1
"$vistatrim" crop --top 3 --force "${photos[@]}" -o out/crops || status=1
"$vistatrim" contact-sheet --top 3 --force "${photos[@]}" -o out/contact_sheet.jpg || status=1
"$vistatrim" report "${photos[@]}" --force -o out/report.html || status=1

echo
echo "Crops:         out/crops/"
echo "Contact sheet: out/contact_sheet.jpg"
echo "Report:        out/report.html (open it in a browser)"
exit "$status"
