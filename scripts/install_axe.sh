#!/usr/bin/env bash
# Installs axe-core, which checks accessibility, into build/axe for the test of the report page.
# Needs npm. The version and its checksum are pinned, so that the test does not change.
#
# usage: scripts/install_axe.sh
set -euo pipefail
cd "$(dirname "$0")/.."

version=4.14.1
checksum=29348999450cdf2849a8e70b7912fc2da85a849da39c0d0d5394f51d4a9ed95c
file=build/axe/node_modules/axe-core/axe.min.js

matches() {
    [ -f "$file" ] && sha256sum --check --status <<<"$checksum  $file"
}

matches && exit 0
command -v npm >/dev/null || { echo "install_axe.sh: needs npm" >&2; exit 1; }
npm install --silent --no-save --no-package-lock --ignore-scripts --prefix build/axe \
    "axe-core@$version"
matches || { echo "install_axe.sh: $file has the wrong checksum" >&2; exit 1; }
