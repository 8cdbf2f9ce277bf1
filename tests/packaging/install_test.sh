#!/usr/bin/env bash
# Installs the built library into a temporary prefix, then builds and runs a host against it,
# once through find_package and once through pkg-config. Then moves the prefix and repeats: an
# installed package must not depend on where it was built.
#
# usage: install_test.sh BUILD_DIR SOURCE_DIR COMPILER
set -euo pipefail
build=$1
source=$2
compiler=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

use_prefix() {
    local prefix=$1 dir=$2
    cmake -G Ninja -S "$source/tests/packaging/consumer" -B "$dir/cmake" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" >"$dir.log"
    cmake --build "$dir/cmake" >>"$dir.log"
    "$dir/cmake/consumer"

    local libdir
    libdir=$(dirname "$(find "$prefix" -name VistaTrimEngine.pc)")
    export PKG_CONFIG_PATH=$libdir
    # shellcheck disable=SC2046
    "$compiler" -std=c++17 "$source/tests/packaging/consumer/consumer.cpp" -o "$dir/by_pkg_config" \
        $(pkg-config --cflags --libs VistaTrimEngine)
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir VistaTrimEngine) "$dir/by_pkg_config"
}

cmake --install "$build" --prefix "$work/first" >"$work/install.log"
mkdir "$work/a" "$work/b"
use_prefix "$work/first" "$work/a"

mv "$work/first" "$work/second"
use_prefix "$work/second" "$work/b"
if grep -rn -e "$work/first" -e "$build" "$work/second" --include='*.cmake' --include='*.pc'; then
    echo "an installed file contains a path from the build" >&2
    exit 1
fi
