#!/usr/bin/env bash
# Measures how much of the sources the tests run: builds the coverage preset, runs the tests and
# reads the counts with lcov. Prints the code that never ran and the totals; fails below 95 % of the
# lines or, for the engine, 85 % of the branches. docs/coverage.md lists what remains, and why.
#
# usage: scripts/coverage.sh [--again] [engine|program]
#   --again   only read the counts of the last run
#   engine    src/, run by every test except those of the program (default)
#   program   photo/ and cli/, run by tests/photo and tests/cli
#
# To the compiler, every call that might throw is a branch. Those count only in the last line: nobody
# can make each of them throw, so a total that includes them says nothing about the tests.
set -euo pipefail
cd "$(dirname "$0")/.."

again=no
if [ "${1:-}" = "--again" ]; then
    again=yes
    shift
fi
least_lines=95
case ${1:-engine} in
    engine)
        build=build/coverage
        folders=(src)
        least_branches=85
        settings=(-DVISTATRIM_BUILD_PROGRAM=OFF)
        targets=(all)
        tests=(.)
        ;;
    program)
        build=build/coverage_program
        folders=(photo cli)
        least_branches=0 # branches of code inlined from libraries are not ours
        settings=(-DVISTATRIM_BUILD_PROGRAM=ON)
        targets=(tests/photo/all tests/cli/all)
        tests=(tests/photo tests/cli)
        ;;
    *)
        echo "coverage.sh: engine or program, not '$1'" >&2
        exit 2
        ;;
esac

if [ "$again" = no ]; then
    scripts/install_dependencies.sh build test check
    cmake --preset coverage -B "$build" -DVISTATRIM_WARNINGS_AS_ERRORS=ON "${settings[@]}" >/dev/null
    cmake --build "$build" --target "${targets[@]}"
    lcov --quiet --zerocounters --directory "$build"
    # Left out: tests that read the messages of a program run as nobody, who may not write the
    # counts, which it then reports among them; and the browser, which runs scripts, not C++.
    for folder in "${tests[@]}"; do
        ctest --test-dir "$build/$folder" --output-on-failure --parallel "$(nproc)" --timeout 1200 \
            --exclude-regex '^report_(browser|accessibility)_test$|:(Suggest.ContinuesAfterBroken|Crop.AFolderThatCannotBeMadeIsNamedOnce|Folder.NamesAndListsTogetherKeepTheirOrder)'
    done
fi

# capture FILE: only the counts of the folders.
capture() {
    local file=$1
    lcov --quiet --rc lcov_branch_coverage=1 --capture "${folders[@]/#/--directory=$build/}" \
        --base-directory . --no-external --output-file "$file.all"
    lcov --quiet --rc lcov_branch_coverage=1 --extract "$file.all" "${patterns[@]}" \
        --output-file "$file"
}
patterns=()
for folder in "${folders[@]}"; do
    patterns+=("$PWD/$folder/*")
done
capture "$build/with_throws.info"

# lcov 1.16 has a setting for this, which has no effect on the counts of gcov 12.
python3 - "$build" "${folders[@]}" <<'PYTHON'
import glob, json, subprocess, sys

build, folders = sys.argv[1], sys.argv[2:]
throws = set()
for counts in [path for folder in folders
               for path in glob.glob(build + "/" + folder + "/**/*.gcda", recursive=True)]:
    text = subprocess.run(["gcov", "-b", "--json-format", "--stdout", counts],
                          check=True, capture_output=True).stdout
    for file in json.loads(text)["files"]:
        for line in file["lines"]:
            for index, branch in enumerate(line["branches"]):
                if branch["throw"]:
                    throws.add((file["file"], line["line_number"], index))
with open(build + "/with_throws.info") as source, open(build + "/coverage.info", "w") as target:
    for text in source:
        if text.startswith("SF:"):
            name, found, hit = text[3:].strip(), 0, 0
        elif text.startswith("BRDA:"):
            line, _, index, taken = text[5:].strip().split(",")
            if (name, int(line), int(index)) in throws:
                continue
            found += 1
            hit += taken not in ("-", "0")
        elif text.startswith("BRF:"):
            text = "BRF:%d\n" % found
        elif text.startswith("BRH:"):
            text = "BRH:%d\n" % hit
        target.write(text)
PYTHON

# A branch was never taken if its count is 0, or "-" if even its line never ran.
awk -v root="$PWD/" -F '[:,]' '
    $1 == "SF" { file = substr($0, 4); sub(root, "", file) }
    $1 == "DA" && $3 == 0 { print file ":" $2 ": never run" }
    $1 == "BRDA" { all[file ":" $2]++ }
    $1 == "BRDA" && ($5 == "-" || $5 == 0) { missed[file ":" $2]++ }
    END { for (at in missed) print at ": " missed[at] " of " all[at] " branches never taken" }
' "$build/coverage.info" | sort -t : -k 1,1 -k 2,2n

# total FILE KIND: "hit all percent" of the lines (L) or branches (BR).
total() {
    awk -F : -v kind="$2" '
        $1 == kind "F" { all += $2 }
        $1 == kind "H" { hit += $2 }
        END { printf "%d %d %.1f\n", hit, all, all ? 100 * hit / all : 0 }' "$1"
}
read -r line_hits line_count line_share < <(total "$build/coverage.info" L)
read -r branch_hits branch_count branch_share < <(total "$build/coverage.info" BR)
read -r _ _ throw_share < <(total "$build/with_throws.info" BR)
echo "lines: $line_hits of $line_count, $line_share %"
echo "branches: $branch_hits of $branch_count, $branch_share %"
echo "branches, with those to a throw: $throw_share %"

awk -v a="$line_share" -v b="$least_lines" -v c="$branch_share" -v d="$least_branches" \
    'BEGIN { exit !(a >= b && c >= d) }' || {
    echo "coverage.sh: below $least_lines % of the lines or $least_branches % of the branches" >&2
    exit 1
}
