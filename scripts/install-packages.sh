#!/usr/bin/env bash
# Installs the Debian packages of the legs named (scripts/packages.txt; default: build)
# that are not installed yet, with sudo when not root. Does nothing when all are there.
#   scripts/install-packages.sh [build] [windows] [fuzz] [docs]
set -euo pipefail
cd "$(dirname "$0")/.."
legs=${*:-build}
wanted=$(awk -v legs=" $legs " '!/^#/ && NF >= 2 && index(legs, " " $2 " ") {print $1}' scripts/packages.txt)
missing=$(for p in $wanted; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || echo "$p"
done)
[ -n "$missing" ] || exit 0
if ! command -v apt-get >/dev/null; then
  echo "install-packages: missing $(echo $missing), and apt-get is not available" >&2
  exit 1
fi
SUDO=""; if [ "$(id -u)" != 0 ]; then SUDO="sudo"; fi
$SUDO apt-get update -qq
# shellcheck disable=SC2086
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
