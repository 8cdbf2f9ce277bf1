#!/usr/bin/env bash
# Records the binary interface of the shared library, taken from its debug information, in
# abi/libVistaTrimEngine.abi. Run it after an intended change of the interface and commit the
# file; docs/releasing.md explains which changes are allowed.
#
# usage: scripts/record_abi.sh [OUTPUT]
set -euo pipefail
cd "$(dirname "$0")/.."

output=${1:-abi/libVistaTrimEngine.abi}

# Keeps this machine's paths out of the debug information, and thus out of the file.
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B build/abi -G Ninja "${launcher[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$PWD/=" -DVISTATRIM_BUILD_TESTS=OFF \
    -DVISTATRIM_BUILD_BENCHMARKS=OFF -DVISTATRIM_BUILD_PROGRAM=OFF -DVISTATRIM_BUILD_TOOLS=OFF >/dev/null
cmake --build build/abi --target VistaTrimEngine >/dev/null

mkdir -p "$(dirname "$output")"
abidw --exported-interfaces-only --headers-dir include/vistaTrim --drop-private-types \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed \
    build/abi/src/libVistaTrimEngine.so --out-file "$output"
if grep -qF "$PWD" "$output"; then
    echo "record_abi.sh: $output contains a path of this machine" >&2
    exit 1
fi
