#!/usr/bin/env bash
# Installs the packages that the named jobs need and that are missing, with apt. Needs root or sudo.
#
# usage: scripts/install_dependencies.sh JOB...
#   build   the libraries, the program, the Python package and the developer tools
#   test    the tests and the benchmarks
#   check   formatting, static checks, the second compiler
#   sheet   a font for the captions of contact sheets
#   demo    photographs for the demonstration
#   fit     refitting the composition model
set -euo pipefail

declare -A packages=(
    [build]="g++ cmake ninja-build pkg-config libvips-dev
             libcli11-dev nlohmann-json3-dev libdlib-dev libexiv2-dev pybind11-dev python3-dev
             python3-numpy"
    [test]="libgtest-dev libgmock-dev libbenchmark-dev binutils libopenblas-dev liblapacke-dev
            lomiri-wallpapers-16.04
            libvips-tools fonts-dejavu-core python3 chromium chromium-driver python3-selenium
            python3-jsonschema bash-completion zsh fish man-db python3-skimage
            python3-pytest python3-hypothesis python3-pil python3-matplotlib python3-distributed
            python3-fsspec python3-pip python3-setuptools python3-wheel mypy"
    [check]="clang clang-format clang-tidy cppcheck libclang-rt-14-dev abigail-tools lcov"
    [sheet]="fonts-dejavu-core"
    [demo]="lomiri-wallpapers-16.04"
    [fit]="python3 python3-numpy python3-scipy"
)

wanted=()
for job in "$@"; do
    [ -n "${packages[$job]:-}" ] || { echo "install_dependencies.sh: unknown job '$job'" >&2; exit 2; }
    for package in ${packages[$job]}; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
            wanted+=("$package")
    done
done
[ ${#wanted[@]} -gt 0 ] || exit 0

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "install_dependencies.sh: need root or sudo to install: ${wanted[*]}" >&2
        exit 1
    fi
}

echo "Installing: ${wanted[*]}"
as_root apt-get update -qq
as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    "${wanted[@]}" >/dev/null
