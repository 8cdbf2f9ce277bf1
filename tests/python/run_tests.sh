#!/usr/bin/env bash
# Runs the tests of the Python package in a build directory, and prints their count.
#
# usage: run_tests.sh PYTHON BUILD_DIR PROGRAM [PYTEST_ARGUMENT...]
set -euo pipefail
python=$1
build=$(realpath "$2")
program=$(realpath "$3")
shift 3
cd "$(dirname "$0")/../.."

"$python" -c "import pytest, hypothesis, PIL" 2>/dev/null ||
    { echo "run_tests.sh: $python lacks pytest, hypothesis or PIL"; exit 77; }
export VISTATRIM_BUILD=$build VISTATRIM_PROGRAM=$program
export PYTHONPATH=$build/python${PYTHONPATH:+:$PYTHONPATH}
exec "$python" -B -m pytest -q tests/python "$@"
