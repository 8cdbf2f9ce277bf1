#!/usr/bin/env bash
# Do the tests notice faults? Plants small faults in a copy of the sources, one at a time, and
# reports those that no test program notices.
#
# usage: scripts/mutation_test.sh [engine|program] [SEED [COUNT [FIRST-LAST]]]
#   engine       faults in src/, all tests except those of the program (default)
#   program      faults in photo/ and cli/, the tests of both; without headers, which only declare there
#   SEED COUNT   select the faults (default 1 320); the same values and sources give the same faults
#   FIRST-LAST   only this range of them, for example 17-17 to retry a survivor
#
# Everything is in build/mutation (build/mutation_program): patches/NNNN.patch, results.tsv (number,
# outcome, program, fault) and the modified tree. Outcomes: noticed, SURVIVED, does not compile. Faults already in
# results.tsv are skipped, so an interrupted run continues; delete the file to start over. Programs
# that take more than MUTATION_SLOWEST seconds (20) are skipped. Two concurrent runs, each with its
# own range, need two folders: MUTATION_FOLDER=build/second.
#
# Limits are in processor time, which other load on the machine does not affect: a program that a
# fault keeps running is killed after ten times its normal time plus a few seconds. A limit in wall
# time only catches programs that wait forever.
set -euo pipefail
cd "$(dirname "$0")/.."

part=engine
case ${1:-} in
    engine | program)
        part=$1
        shift
        ;;
esac
case $part in
    engine)
        folder=build/mutation
        sources_in=(src -name '*.cpp' -o -name '*.h')
        settings=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1
            -DVISTATRIM_BUILD_PROGRAM=OFF)
        targets=(all)
        changed=(libvistaTrimWhole.so)
        tests=(tests)
        ;;
    program)
        folder=build/mutation_program
        # The first writes a source at build time, the second is for builds without dlib.
        sources_in=(photo cli -name '*.cpp' ! -name make_face_model.cpp ! -name no_face_finder.cpp)
        settings=(-DCMAKE_BUILD_TYPE=Release -DVISTATRIM_BUILD_PROGRAM=ON)
        targets=(tests/photo/all tests/cli/all)
        changed=(libvistaTrimPhoto.so libvistaTrimCli.so vistatrim)
        tests=(tests/photo tests/cli)
        ;;
esac
seed=${1:-1}
count=${2:-320}
range=${3:-1-$count}
slowest=${MUTATION_SLOWEST:-20}
jobs=${MUTATION_JOBS:-2}
niceness=${MUTATION_NICE:-19} # for builds and programs

work=$PWD/${MUTATION_FOLDER:-$folder}
tree=$work/tree
build=$tree/build/mutation
patches=$work/patches
results=$work/results.tsv
durations=$work/durations.tsv
mkdir -p "$work"

# Works on a copy, so the working tree never changes. Only files that differ are written and thus
# rebuilt; this also restores a file that a killed run left with a fault in it.
git ls-files -z | while IFS= read -r -d '' file; do
    [ -f "$file" ] || continue
    cmp -s "$file" "$tree/$file" || install -D -m "$(stat -c %a "$file")" "$file" "$tree/$file"
done
rm -rf "$patches"
"${CXX:-c++}" -std=c++17 -O1 tools/mutate_sources.cpp -o "$work/mutate_sources"
mapfile -t sources < <(cd "$tree" && find "${sources_in[@]}" | LC_ALL=C sort)
(cd "$tree" && "$work/mutate_sources" "$seed" "$count" "$patches" "${sources[@]}")

# Links everything into one shared library: a fault costs one object, one link and a few tests
# that need the objects themselves.
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$tree" -B "$build" -G Ninja "${launcher[@]}" -DVISTATRIM_TESTS_SHARED=ON \
    "${settings[@]}" -DVISTATRIM_BUILD_TOOLS=OFF -DVISTATRIM_BUILD_BENCHMARKS=OFF \
    -DCMAKE_LINK_DEPENDS_NO_SHARED=ON -DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST >"$work/configure.log"
nice -n "$niceness" ninja -C "$build" -j"$jobs" "${targets[@]}" >"$work/build.log"

export OPENBLAS_NUM_THREADS=1 # the faults are in our code; leave the other cores free
export GTEST_FAIL_FAST=1
waits=3600 # seconds
run_program() { # seconds program; runs it in $work, with limits on time and memory
    (
        cd "$work"
        ulimit -c 0
        ulimit -v 16000000
        ulimit -t "$1"
        nice -n "$niceness" timeout -k 2 "$waits" "$build/$2" >"$work/test.log" 2>&1
    )
}
build_targets() {
    (
        ulimit -t 900
        nice -n "$niceness" timeout -k 2 "$waits" ninja -C "$build" -j"$jobs" "$@" >"$work/build.log" 2>&1
    )
}

# Without a fault every program must pass. Records how long each takes, to skip the slow ones.
if [ ! -s "$durations" ]; then
    : >"$durations.new"
    for program in $(cd "$build" && find "${tests[@]}" -type f -name '*_test' -perm -u+x | LC_ALL=C sort); do
        TIMEFORMAT='%3U %3S'
        { time run_program 300 "$program"; } 2>"$work/time.log" ||
            { echo "fails without a fault: $program" >&2; exit 1; }
        awk -v program="$program" '{ printf "%d\t%s\n", 1000 * ($1 + $2), program }' \
            "$work/time.log" >>"$durations.new"
    done
    sort -n "$durations.new" >"$durations"
    rm "$durations.new"
fi
declare -A took
programs=()
while IFS=$'\t' read -r milliseconds program; do
    if [ "$milliseconds" -gt $((slowest * 1000)) ]; then
        echo "skipped, takes $milliseconds ms: $program"
        continue
    fi
    took[$program]=$milliseconds
    programs+=("$program")
done <"$durations"

# Prints the first program of the list that fails. Most lists are never reached, so each is linked
# only before it runs; all at once, because even an empty build takes a second.
first_failure() {
    local program seconds
    [ $# -gt 0 ] || return 0
    build_targets "$@" || { echo "does not compile"; return; }
    for program in "$@"; do
        seconds=$((15 + took[$program] / 100))
        run_program "$seconds" "$program" || { echo "$program"; return; }
    done
}

# Fault numbers are valid only for these sources.
stamp="$seed $count $(cat "$patches"/*.patch | sha256sum | cut -c1-16)"
if [ "$(cat "$work/stamp" 2>/dev/null)" != "$stamp" ]; then
    [ ! -s "$results" ] || mv "$results" "$results.old"
    echo "$stamp" >"$work/stamp"
fi
touch "$results"
for patch in "$patches"/*.patch; do
    number=$(basename "$patch" .patch)
    [ $((10#$number)) -ge "${range%-*}" ] && [ $((10#$number)) -le "${range#*-}" ] || continue
    grep -q "^$number"$'\t' "$results" && continue
    fault=$(head -1 "$patch" | cut -c3-)
    file=$(sed -n 's,^+++ b/,,p' "$patch")
    module=$(echo "$file" | cut -d/ -f"$([ "$part" = engine ] && echo 2 || echo 1)")

    # The program named after the source runs first, then the others of its folder. Tests of photo/
    # cannot notice a fault in cli/.
    own=()
    near=()
    far=()
    for program in "${programs[@]}"; do
        case $program in
            tests/$module/$(basename "${file%.*}")_test) own+=("$program") ;;
            tests/$module/*) near+=("$program") ;;
            tests/photo/*) ;;
            *) far+=("$program") ;;
        esac
    done

    patch -s -p1 -d "$tree" <"$patch"
    witness=-
    if ! build_targets "${changed[@]}"; then
        outcome="does not compile"
    else
        witness=$(first_failure "${own[@]}")
        [ -n "$witness" ] || witness=$(first_failure "${near[@]}")
        [ -n "$witness" ] || witness=$(first_failure "${far[@]}")
        case $witness in
            "") outcome=SURVIVED ;;
            "does not compile") outcome=$witness witness=- ;;
            *) outcome=noticed ;;
        esac
    fi
    patch -s -R -p1 -d "$tree" <"$patch"
    printf '%s\t%s\t%s\t%s\n' "$number" "$outcome" "${witness:--}" "$fault" | tee -a "$results"
done

echo
awk -F'\t' '{ n[$2]++ } END {
    valid = n["noticed"] + n["SURVIVED"]
    printf "%d faults compiled, %d noticed (%.1f %%), %d survived; %d did not compile\n",
        valid, n["noticed"], valid ? 100 * n["noticed"] / valid : 0, n["SURVIVED"],
        n["does not compile"]
}' "$results"
awk -F'\t' '$2 == "SURVIVED" { print $1 }' "$results" | while read -r number; do
    echo
    cat "$patches/$number.patch"
done
