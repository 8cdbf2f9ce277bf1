#!/usr/bin/env bash
# Builds the fuzzers with the address and undefined-behaviour sanitizers and runs each for a
# while, one after the other. Ends with an error at the first finding; the input that caused it
# stays in build/fuzz/findings.
#
# usage: scripts/fuzz.sh [SECONDS] [FUZZER...]
#   SECONDS  for each fuzzer; 20 by default
#   FUZZER   pixels, selection, request_sequence, ...; all by default
#
# The corpus stays in build/fuzz/corpus, and the next run continues from it. With FUZZ_SEED
# set to a number other than 0, runs that begin with the same corpus try the same inputs.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-20}
shift || true

cmake --preset fuzz -DVISTATRIM_WARNINGS_AS_ERRORS=ON
cmake --build --preset fuzz
scripts/make_fuzz_seeds.sh build/fuzz/seeds

fuzzers=("$@")
if [ ${#fuzzers[@]} -eq 0 ]; then
    for program in build/fuzz/fuzzers/*_fuzzer; do
        name=$(basename "$program")
        fuzzers+=("${name%_fuzzer}")
    done
fi

# One thread each, since the faults sought are in this library. A small quarantine, because the
# analysis allocates and frees megabytes in every run.
export OPENBLAS_NUM_THREADS=1
export ASAN_OPTIONS=quarantine_size_mb=16:${ASAN_OPTIONS:-}
mkdir -p build/fuzz/findings
for name in "${fuzzers[@]}"; do
    echo "== $name, $seconds s"
    mkdir -p "build/fuzz/corpus/$name"
    log=build/fuzz/$name.log
    if ! "build/fuzz/fuzzers/${name}_fuzzer" -max_total_time="$seconds" -max_len=4096 -len_control=0 \
        -timeout=120 -rss_limit_mb=3000 -print_final_stats=1 -seed="${FUZZ_SEED:-0}" \
        -artifact_prefix="build/fuzz/findings/$name-" \
        "build/fuzz/corpus/$name" "build/fuzz/seeds/$name" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "$name found something; the whole log is $log"
        exit 1
    fi
    grep -E '^Done|stat::(number_of_executed_units|new_units_added|peak_rss_mb)' "$log"
done
