#!/usr/bin/env bash
# Records the end-to-end results for the synthetic images anew: tests/golden/*.txt.
#
# Run it when results are meant to change, review the difference, and explain it in the commit.
# Use a build with the default linear algebra, which gives the same bits everywhere.
#
# usage: scripts/record_goldens.sh [BUILD_FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/release}
[ -f "$build/CMakeCache.txt" ] || cmake -G Ninja -B "$build" -DCMAKE_BUILD_TYPE=Release
cmake --build "$build" --target record_goldens
"$(find "$build" -name record_goldens -type f -perm -u+x | head -n 1)" tests/golden
git --no-pager diff --stat -- tests/golden
