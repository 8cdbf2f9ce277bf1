#!/usr/bin/env bash
# Generates the seed inputs of the fuzzers.
#
# usage: scripts/make_fuzz_seeds.sh [DIRECTORY]
#   DIRECTORY  default: build/fuzz/seeds; gets one subdirectory per fuzzer
set -euo pipefail
cd "$(dirname "$0")/.."

seeds=${1:-build/fuzz/seeds}
cmake --preset fuzz -DVISTATRIM_WARNINGS_AS_ERRORS=ON >/dev/null
cmake --build --preset fuzz --target fuzz_seeds >/dev/null
build/fuzz/fuzzers/fuzz_seeds "$seeds"
# The program is built only if libvips is installed. Leaks are ignored, since libvips' libraries leak
# at exit.
if cmake --build --preset fuzz --target program_fuzz_seeds >/dev/null 2>&1; then
    ASAN_OPTIONS=detect_leaks=0 build/fuzz/fuzzers/program_fuzz_seeds "$seeds"
fi
for directory in "$seeds"/*/; do
    echo "$directory: $(find "$directory" -type f | wc -l) seeds"
done
