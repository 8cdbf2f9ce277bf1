#!/usr/bin/env bash
# A contact sheet has a row for each photograph, whatever it is called and even if it is broken,
# with the photograph first and its crops behind it.
#
# usage: contact_sheet_test.sh VISTATRIM SOURCE_FOLDER
set -euo pipefail
program=$1
source_folder=$2
command -v vipsthumbnail >/dev/null || exit 77
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
faults=0

vips black "$folder/black.png" 900 600 --bands 3
vips linear "$folder/black.png" "$folder/red.png" "1 1 1" "200 30 30" --uchar
vips linear "$folder/black.png" "$folder/blue.png" "1 1 1" "30 30 200" --uchar
vips copy "$folder/red.png" "$folder/red.jpg"
mv "$folder/red.jpg" "$folder/r [x] & <y>.jpg"
echo "no picture" >"$folder/broken.jpg"

sheet=$folder/made/sheet.jpg
status=0
"$source_folder/scripts/contact_sheet.sh" "$program" "$sheet" 2 "$folder/r [x] & <y>.jpg" \
    "$folder/broken.jpg" "$folder/blue.png" 2>/dev/null || status=$?
[ "$status" -eq 1 ] || { echo "exit status $status with a broken photograph"; faults=1; }

# Cells of 372 x 240 below a line of 30 rows, rows of 282 below a line of heads, 12 around.
expect() { # WHAT X Y "R G B", give or take the coding of the picture
    local got wanted band
    read -ra got <<<"$(vips getpoint "$sheet" "$2" "$3")"
    read -ra wanted <<<"$4"
    for band in 0 1 2; do
        local off=$((got[band] - wanted[band]))
        if [ "${off#-}" -gt 8 ]; then
            echo "$1: ${got[*]}, not ${wanted[*]}"
            faults=1
            return
        fi
    done
}
[ "$(vipsheader -f width "$sheet")" -eq 1128 ] || { echo "width"; faults=1; }
[ "$(vipsheader -f height "$sheet")" -eq 900 ] || { echo "height"; faults=1; }
for cell in 0 1 2; do
    x=$((12 + 372 * cell + 186))
    expect "red, cell $cell" "$x" $((42 + 30 + 120)) "200 30 30"
    expect "broken, cell $cell" "$x" $((42 + 282 + 30 + 120)) "255 255 255"
    expect "blue, cell $cell" "$x" $((42 + 2 * 282 + 30 + 120)) "30 30 200"
done
[ "$faults" -eq 0 ] || exit 1
echo "every row is as it should be"
