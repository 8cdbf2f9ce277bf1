#!/usr/bin/env bash
# Fails if the binary interface of the shared library differs from the recorded one: a symbol added
# or removed, a changed layout, a changed order of virtual operations.
#
# usage: scripts/check_abi.sh
set -euo pipefail
cd "$(dirname "$0")/.."

current=build/abi/current.abi
scripts/record_abi.sh "$current"
if ! abidiff abi/libVistaTrimEngine.abi "$current"; then
    echo "The binary interface has changed. If that is intended, follow docs/releasing.md." >&2
    exit 1
fi
echo "The binary interface matches the recorded one."
