#!/usr/bin/env bash
# The Python package's tests: builds what they need (the library, kvn-sim, kvnctl, the
# description), builds the wheel with the library bundled, installs it into a fresh
# virtual environment and runs pytest there (the package's tests and the cookbook's
# examples, against kvn-sim). The package then finds the library it bundles.
#
#   scripts/test-python.sh [PYTEST_ARGS...]
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
start=$(date +%s)
scripts/install-packages.sh build python
cmake --preset default >/dev/null
cmake --build --preset default --target kvnsdk2 kvn-sim kvnctl kvnsdk2_description kvnsdk2_python
build=$root/build/default

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
scripts/build-python-wheel.sh "$work/dist" "$build" >/dev/null
/usr/bin/python3 -m venv --system-site-packages "$work/venv"
"$work/venv/bin/pip" install --no-build-isolation --no-deps --disable-pip-version-check -q "$work"/dist/kvnsdk2-*.whl

# From a scratch directory: the tests import the installed package, not python/.
cd "$work"
unset KVNSDK2_LIBRARY
KVN_SIM=$build/tools/sim/kvn-sim KVNCTL=$build/tools/kvnctl/kvnctl \
KVNSDK2_DESCRIPTION=$build/share/kvnsdk2/kvnsdk2.json \
  "$work/venv/bin/python" -m pytest -p no:cacheprovider -q "$root/python/tests" "$@"
echo "Python leg (build, wheel, tests): $(( $(date +%s) - start )) s"
