#!/usr/bin/env bash
# Fails if the binary interface of the shared library is not the recorded one: a symbol less or
# more, another layout, another order of virtual operations.
#
# usage: scripts/check_abi.sh
set -euo pipefail
cd "$(dirname "$0")/.."

current=build/abi/current.abi
scripts/record_abi.sh "$current"
if ! abidiff abi/libVistaTrimEngine.abi "$current"; then
    echo "The binary interface has changed. If that is meant, docs/releasing.md says how to go on." >&2
    exit 1
fi
echo "The binary interface is the recorded one."
