#!/usr/bin/env bash
# Runs clang-tidy (.clang-tidy) and cppcheck (scripts/cppcheck_suppressions.txt) over the library,
# the host, the tools, the benchmarks and the fuzzers, one file for each processor at a time.
# Prints what they find and fails if that is anything.
#
# usage: scripts/static_checks.sh [FILE.cpp...]
#   FILE.cpp  check these only; without it, all that git tracks
#
# The tests are left out: they are as much code again, they hand wrong things over on purpose, and
# the macros of their assertions bring findings of their own.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install_dependencies.sh build test check

folders=(src include host tools benchmarks fuzzers)
sources=("$@")
places=("$@")
if [ ${#sources[@]} -eq 0 ]; then
    places=("${folders[@]}")
    # The longest first: the last ones to finish are short.
    mapfile -t sources < <(git ls-files -- "${folders[@]/%//*.cpp}" | xargs ls -S)
fi

# Only configured: clang-tidy wants to know how each file would be compiled. Files that no target
# here compiles are taken for neighbours of those that are.
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
# A header's finding is told once for every file that includes it.
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
echo "No finding."
