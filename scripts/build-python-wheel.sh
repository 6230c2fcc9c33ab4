#!/usr/bin/env bash
# Builds the Python package's wheel with the shared library bundled in it
# (kvnsdk2/_native/), tagged for this platform, into DIST (default: dist/).
#
#   scripts/build-python-wheel.sh [DIST] [BUILD_DIR]     (BUILD_DIR: default build/default)
#
# Builds the library and the header's description first if they are missing or old.
set -euo pipefail
cd "$(dirname "$0")/.."
dist=$(realpath -m "${1:-dist}")
build=$(realpath -m "${2:-build/default}")
if [ "$build" = "$(realpath -m build/default)" ]; then
  cmake --preset default >/dev/null
fi
cmake --build "$build" --target kvnsdk2 kvnsdk2_description >/dev/null
mkdir -p "$dist"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A copy of the package's sources, so that the build leaves nothing in python/.
mkdir -p "$work/pkg" "$work/tools"
cp -r python/pyproject.toml python/setup.py python/README.md python/kvnsdk2 "$work/pkg/"
cp -r tools/describe "$work/tools/"
KVNSDK2_DESCRIPTION="$build/share/kvnsdk2/kvnsdk2.json" KVNSDK2_BUNDLE_LIBRARY="$build/libkvnsdk2.so" \
  /usr/bin/python3 -m pip wheel --no-build-isolation --no-deps --disable-pip-version-check -q -w "$dist" "$work/pkg"
ls "$dist"/kvnsdk2-*.whl
