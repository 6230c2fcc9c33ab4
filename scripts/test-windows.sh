#!/usr/bin/env bash
# The Windows leg: cross-builds kvnsdk2.dll (with its import library), the static
# library, the examples and the tests with mingw-w64 (preset "mingw", build/mingw),
# runs the tests under Wine through ctest (the end-to-end ones against the Linux
# kvn-sim), then checks the DLL itself: its export table against the header's description,
# and an example program that loads it and talks to the terminal stand-in.
# Needs: g++-mingw-w64-x86-64-posix, googletest (sources), wine64, cmake, cc.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/mingw

# The end-to-end tests talk to the Linux simulator: KVN_SIM_PROGRAM if set, else the
# one the default preset builds (a no-op when the Linux leg has built it already).
# With a simulator at hand they must not skip.
sim=${KVN_SIM_PROGRAM:-}
if [ -z "$sim" ] && [ -f tools/sim/CMakeLists.txt ]; then
  cmake --preset default >/dev/null
  cmake --build --preset default --target kvn-sim
  sim=$PWD/build/default/tools/sim/kvn-sim
fi
if [ -n "$sim" ]; then export KVN_TEST_REQUIRE_SIM=1; fi

cmake --preset mingw -DKVN_SIM_PROGRAM="$sim" >/dev/null
cmake --build --preset mingw
ctest --preset mingw

# The DLL exports exactly the functions of the header's description, and needs no DLL
# beyond the system's (the C++ runtime is linked in).
for f in "$build/kvnsdk2.dll" "$build/libkvnsdk2.dll.a" "$build/libkvnsdk2_static.a" \
         "$build/examples/hello_terminal.exe"; do
  [ -f "$f" ] || { echo "missing $f" >&2; exit 1; }
done
declared=$(sort -u "$build/kvnsdk2_exports.txt")
exported=$(x86_64-w64-mingw32-objdump -p "$build/kvnsdk2.dll" \
  | awk '/\[Ordinal\/Name Pointer\] Table/ {t = 1; next} t && /^[[:space:]]*\[/ {print $NF} t && /^[[:space:]]*$/ {t = 0}' \
  | sort -u)
if [ "$declared" != "$exported" ]; then
  echo "kvnsdk2.dll exports differ from the description of include/kvnsdk2.h:" >&2
  diff <(echo "$declared") <(echo "$exported") >&2 || true
  exit 1
fi
# A program linked to the static library exports nothing of it: the static objects
# are compiled without dllexport (the test program links libkvnsdk2_static.a).
reexported=$(x86_64-w64-mingw32-objdump -p "$build/tests/kvnsdk2_tests.exe" \
  | awk '/\[Ordinal\/Name Pointer\] Table/ {t = 1; next} t && /^[[:space:]]*\[/ {print $NF} t && /^[[:space:]]*$/ {t = 0}' \
  | grep -c '^kvn_' || true)
if [ "$reexported" != 0 ]; then
  echo "kvnsdk2_tests.exe, linked to libkvnsdk2_static.a, exports $reexported kvn_* functions" >&2
  exit 1
fi
imports=$(x86_64-w64-mingw32-objdump -p "$build/kvnsdk2.dll" | awk '/DLL Name:/ {print tolower($3)}' | sort -u | tr '\n' ' ')
if [ "$imports" != "kernel32.dll msvcrt.dll ws2_32.dll " ]; then
  echo "kvnsdk2.dll imports unexpected DLLs: $imports" >&2
  exit 1
fi
echo "kvnsdk2.dll: $(echo "$declared" | wc -l) functions declared and exported; imports $imports"

# The example, linked against the import library, loads kvnsdk2.dll under Wine and
# exchanges one request with the terminal stand-in (which answers an unknown
# command with status -9).
scripts/wine-terminal start "$build" >/dev/null
trap 'scripts/wine-terminal stop "$build"' EXIT
read -r _ ip port < <(grep '^tcp ' "$build/wine-terminal.conf")
out=$(WINEPATH="Z:$PWD/$build" scripts/wine-run "$build/examples/hello_terminal.exe" "$ip" "$port" | tr -d '\r') || true
echo "$out"
grep -q "^connect $ip:$port: Success" <<<"$out" && grep -q "^date and time query: " <<<"$out" \
  || { echo "hello_terminal.exe did not complete its exchange through kvnsdk2.dll" >&2; exit 1; }
