#!/usr/bin/env bash
# Every option that --help lists is in option_effects.tsv with a test of its effect; that test
# exists and passes the option to the program. No script can tell whether the test is a good one.
#
# usage: option_effects_test.sh VISTATRIM TESTS_FOLDER
set -euo pipefail
program=$1
tests=$2
table=$tests/option_effects.tsv
faults=0

complain() {
    echo "$1"
    faults=$((faults + 1))
}

body() { # of the test Suite.Name, from its macro to the brace that ends it
    awk -v suite="${1%.*}" -v name="${1#*.}" '
        $0 ~ "^TEST(_F)?\\(" suite ", " name "\\)" { inside = 1 }
        inside { print }
        inside && /^}/ { exit }' "$tests"/*_test.cpp
}

options=$(for command in suggest crop report maps contact-sheet; do
    "$program" "$command" --help | grep -oE '^  (-., ?)?--[a-z-]+|^  -.,--[a-z-]+' |
        grep -oE -- '--[a-z-]+'
done | sort -u | grep -vx -- --help)
[ "$(wc -w <<<"$options")" -ge 40 ] || complain "no options found in --help"
for option in $options; do
    grep -q "^$option"$'\t' "$table" || complain "option_effects.tsv has no test of $option"
done

while IFS=$'\t' read -r option test words; do
    case $option in '#'* | '') continue ;; esac
    grep -qx -- "$option" <<<"$options" || complain "option_effects.tsv: there is no option $option"
    # How the test passes the option, if not by its name.
    found=$(body "$test")
    [ -n "$found" ] || complain "$option: there is no test $test"
    grep -qF -- "${words:-\"$option\"}" <<<"$found" || complain "$option: $test does not use it"
done <"$table"

[ "$faults" -eq 0 ] || exit 1
echo "every option has a test of its effect"
