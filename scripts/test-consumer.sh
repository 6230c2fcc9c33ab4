#!/usr/bin/env bash
# Installs a built tree (default: build/default) into a scratch prefix and builds
# tests/consumer against it as an integrator would: with CMake (find_package(kvnsdk2
# 1.4)) and with pkg-config, as C and as C++, linked to the shared and to the static
# library; then runs every program. Also checks that find_package refuses 2.0.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/default}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

# CMake.
cmake -S tests/consumer -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/cmake" -j2 >/dev/null
programs=("$work"/cmake/c_kvnsdk2 "$work"/cmake/cxx_kvnsdk2 "$work"/cmake/c_static "$work"/cmake/cxx_static)
if cmake -S tests/consumer -B "$work/v2" -DCMAKE_PREFIX_PATH="$prefix" -DKVN_WANT_VERSION=2.0 >/dev/null 2>&1; then
  echo "find_package(kvnsdk2 2.0) accepted version 1.4" >&2
  exit 1
fi

# pkg-config.
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name kvnsdk2.pc | head -n 1)")
export PKG_CONFIG_PATH
libdir=$(pkg-config --variable=libdir kvnsdk2)
flags=(-Wall -Wextra -Werror)
mkdir -p "$work/pc"
cc "${flags[@]}" tests/consumer/consumer.c $(pkg-config --cflags --libs kvnsdk2) -Wl,-rpath,"$libdir" -o "$work/pc/c_shared"
c++ "${flags[@]}" -x c++ tests/consumer/consumer.c -x none $(pkg-config --cflags --libs kvnsdk2) -Wl,-rpath,"$libdir" \
  -o "$work/pc/cxx_shared"
cc "${flags[@]}" tests/consumer/consumer.c $(pkg-config --cflags kvnsdk2) \
  -Wl,-Bstatic $(pkg-config --static --libs kvnsdk2) -Wl,-Bdynamic -o "$work/pc/c_static"
c++ "${flags[@]}" -x c++ tests/consumer/consumer.c -x none $(pkg-config --cflags kvnsdk2) \
  -Wl,-Bstatic $(pkg-config --static --libs kvnsdk2) -Wl,-Bdynamic -o "$work/pc/cxx_static"
programs+=("$work"/pc/c_shared "$work"/pc/cxx_shared "$work"/pc/c_static "$work"/pc/cxx_static)

# Every program runs; the shared ones load the installed libkvnsdk2.so, the static
# ones need none.
for p in "${programs[@]}"; do
  needs=$(readelf -d "$p" | grep -c 'NEEDED.*libkvnsdk2' || true)
  case "$(basename "$p")" in
    *static) want=0 ;;
    *) want=1 ;;
  esac
  if [ "$needs" != "$want" ]; then
    echo "$p: linked to libkvnsdk2.so $needs times, expected $want" >&2
    exit 1
  fi
  echo "$(basename "$(dirname "$p")")/$(basename "$p"): $("$p")"
done
