#!/usr/bin/env bash
# Installs missing packages, builds everything with warnings as errors and runs every test.
#
# usage: scripts/test.sh [PRESET] [CTEST_ARGUMENT...]
#   PRESET  release (default), debug, asan-ubsan, tsan or coverage
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-release}
shift || true

scripts/install_dependencies.sh build test
cmake --preset "$preset" -DVISTATRIM_WARNINGS_AS_ERRORS=ON
cmake --build --preset "$preset"
# The tests of the Python package run last, so that pytest prints their count.
ctest --preset "$preset" --output-on-failure --parallel "$(nproc)" --timeout 600 \
    --label-exclude '^python$' "$@"
build=build/$preset
if [ $# -eq 0 ] && [ -d "$build/python/vistatrim" ]; then
    tests/python/run_tests.sh /usr/bin/python3 "$build" "$build/cli/vistatrim"
fi
