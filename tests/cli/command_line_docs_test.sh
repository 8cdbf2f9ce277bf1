#!/usr/bin/env bash
# Every option that --help lists is in the manual page, in docs/command_line.md and in the
# completion, and the completion offers no other. The markup of the manual page is valid.
#
# usage: command_line_docs_test.sh VISTATRIM SOURCE_FOLDER
set -euo pipefail
program=$1
source_folder=$2
manual=$source_folder/cli/vistatrim.1
guide=$source_folder/docs/command_line.md
completion=$source_folder/cli/completion/vistatrim.bash
faults=0

complain() {
    echo "$1"
    faults=$((faults + 1))
}

# shellcheck source=/dev/null
source "$completion"
offered() { # what the completion offers after the given words
    COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _vistatrim
    [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]}"
}
offers() { # whether WORD is among what it offers after the others; usage: offers WORD WORDS...
    # Not grep -q: it exits at the first match, and then the writer fails.
    offered "${@:2}" | grep -x -- "$1" >/dev/null
}

for command in suggest crop report maps contact-sheet; do
    offers "$command" vistatrim "" || complain "completion lacks the command $command"
    options=$("$program" "$command" --help | grep -oE '^  (-., ?)?--[a-z-]+|^  -.,--[a-z-]+' |
        grep -oE -- '--[a-z-]+' | sort -u)
    [ "$(wc -w <<<"$options")" -ge 9 ] || complain "$command: no options found in --help"
    for option in $options; do
        grep -qF -- "${option//-/\\-}" "$manual" || complain "vistatrim.1 lacks $option"
        grep -qF -- "\`$option" "$guide" || complain "command_line.md lacks $option"
    done
    if [ "$(offered vistatrim "$command" -- | sort -u)" != "$options" ]; then
        complain "completion of $command differs from --help:"
        diff <(offered vistatrim "$command" -- | sort -u) <(echo "$options") || true
    fi
done
offers coverage vistatrim suggest --rank-by "" || complain "no values for --rank-by"
for preset in $(grep -v '^#' "$source_folder/photo/values/presets.tsv" | cut -f 1); do
    offers "$preset" vistatrim crop --preset "" || complain "no $preset for --preset"
done
offers webp vistatrim crop --format "" || complain "no values for --format"

if command -v man >/dev/null; then
    warnings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$manual" \
        2>&1 >/dev/null)
    [ -z "$warnings" ] || complain "vistatrim.1: $warnings"
fi
[ "$faults" -eq 0 ] || exit 1
echo "manual page, guide and completion know every option"
