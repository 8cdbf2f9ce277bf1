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
ctest --preset "$preset" --output-on-failure --parallel "$(nproc)" --timeout 600 "$@"
