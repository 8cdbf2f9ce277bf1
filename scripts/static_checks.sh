#!/usr/bin/env bash
# Runs clang-tidy (.clang-tidy) and cppcheck (scripts/cppcheck_suppressions.txt) over the engine,
# the photograph library, the program, the bindings, the tools, the benchmarks and the fuzzers, in
# parallel on all processors. Prints the findings and fails if there are any.
#
# usage: scripts/static_checks.sh [FILE.cpp...]
#   FILE.cpp  check only these; default: all files tracked by git
#
# Tests are excluded: they would double the work, they pass invalid values on purpose, and their
# assertion macros cause findings of their own.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install_dependencies.sh build test check

folders=(src include photo cli python tools benchmarks fuzzers)
sources=("$@")
places=("$@")
if [ ${#sources[@]} -eq 0 ]; then
    places=("${folders[@]}")
    # Longest first, so that the last to finish are short.
    mapfile -t sources < <(git ls-files -- "${folders[@]/%//*.cpp}" | xargs ls -S)
fi

# Configures without building, for the compile commands that clang-tidy needs. For a file that no
# target compiles it uses those of a similar file.
database=build/static
cmake --preset release -B "$database" -DCMAKE_CXX_COMPILER=clang++ \
    -DVISTATRIM_BUILD_FUZZERS=ON -DVISTATRIM_BUILD_TESTS=OFF >/dev/null

failed=0

echo "clang-tidy: ${#sources[@]} files"
findings=$(mktemp)
trap 'rm -f "$findings"' EXIT
printf '%s\0' "${sources[@]}" |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy -p "$database" --quiet \
        >"$findings" 2>/dev/null || failed=1
# A finding in a header is reported once per file that includes it; sort -u removes the repeats.
grep -E '(warning|error): ' "$findings" | sed "s|^$PWD/||" | sort -u || true

echo "cppcheck"
cppcheck -j "$(nproc)" --quiet --error-exitcode=1 \
    --enable=warning,style,performance,portability --inconclusive \
    --std=c++17 --language=c++ --library=posix "${folders[@]/#/-I}" \
    --suppressions-list=scripts/cppcheck_suppressions.txt \
    --template='{file}:{line}: {severity}: {message} [{id}]' "${places[@]}" || failed=1

if [ "$failed" -ne 0 ]; then
    echo "static_checks.sh: see the findings above" >&2
    exit 1
fi
echo "No findings."
