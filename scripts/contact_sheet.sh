#!/usr/bin/env bash
# One picture to look at: a row for each photograph, the photograph on the left and its best
# crops beside it, under the name of its file.
#
# usage: scripts/contact_sheet.sh VISTATRIM SHEET.jpg CROPS PHOTO...
#   VISTATRIM  the program
#   CROPS      how many crops of each photograph
#   Exit status 1 if a photograph has none; its row says so.
set -euo pipefail

program=$(realpath -- "$1")
sheet=$(realpath -m -- "$2")
crops=$3
shift 3
# The JPEG format ends at 65,535 rows of pixels.
[ $# -le 200 ] || { echo "contact_sheet.sh: at most 200 photographs, not $#" >&2; exit 2; }
photos=()
for photo in "$@"; do
    photos+=("$(realpath -- "$photo")")
done

width=360 # of a cell
height=240
gap=12
caption_height=30
row_width=$(((width + gap) * (crops + 1)))

# libvips reads options out of names with brackets and lists out of names with blanks, so the
# files it sees have plain names of ours.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

small() { # PICTURE SMALL.jpg: to fit a cell, in sRGB, on white where it is transparent
    local colours=() # without a profile they count as sRGB; a conversion would change them
    if vipsheader -a "$1" | grep icc-profile-data >/dev/null; then
        colours=(--export-profile srgb)
    fi
    vipsthumbnail "$1" --size "${width}x$height" "${colours[@]}" \
        -o "$folder/$2[Q=95,strip,background=255]"
}

caption() { # TEXT LINE.png WIDTH
    local escaped # libvips takes markup
    escaped=$(sed 's/&/\&amp;/g; s/</\&lt;/g' <<<"$1")
    vips text ink.png "$escaped" --font "sans 12" --dpi 96
    vips invert ink.png paper.png
    vips gravity paper.png "$2" west "$3" "$caption_height" --extend white
}

status=0
heads=()
for ((i = 0; i <= crops; ++i)); do
    [ "$i" -eq 0 ] && head="Photograph" || head="Crop $i"
    caption "$head" "head$i.png" $((width + gap))
    heads+=("head$i.png")
done
vips arrayjoin "${heads[*]}" heads.png

rows=()
index=0
for photo in "${photos[@]}"; do
    index=$((index + 1))
    row=$index/row.png
    rows+=("$row")
    mkdir "$index"
    ln -s "$photo" "$index/photo"
    if ! "$program" crop "$index/photo" -o "$index" --top "$crops" --resize "${width}x$height" \
        --format png >"$index/names" 2>"$index/reason"; then
        reason=$(sed 's/^vistatrim: [^:]*: //' "$index/reason" | head -n 1)
        caption "$(basename -- "$photo"): $reason" "$row" "$row_width"
        status=1
        continue
    fi
    caption "$(basename -- "$photo")" "$index/caption.png" "$row_width"
    small "$index/photo" "$index/0.jpg"
    cells=("$index/0.jpg")
    while IFS= read -r crop; do
        small "$crop" "$index/${#cells[@]}.jpg"
        cells+=("$index/${#cells[@]}.jpg")
    done <"$index/names"
    vips arrayjoin "${cells[*]}" "$index/cells.png" --hspacing $((width + gap)) \
        --vspacing "$height" --halign centre --valign centre --background 255
    vips embed "$index/cells.png" "$index/wide.png" 0 0 "$row_width" $((height + gap)) \
        --extend white
    vips join "$index/caption.png" "$index/wide.png" "$row" vertical
done

vips arrayjoin "${rows[*]}" rows.png --across 1 --background 255
vips join heads.png rows.png joined.png vertical --expand --background 255
vips embed joined.png sheet.jpg "$gap" "$gap" $((row_width + gap)) \
    $(($(vipsheader -f height joined.png) + 2 * gap)) --extend white
mkdir -p "$(dirname "$sheet")"
mv sheet.jpg "$sheet"
exit "$status"
