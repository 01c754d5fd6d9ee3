#!/usr/bin/env bash
# Installs the Debian packages the build needs; does nothing when all are there.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qtbase5-dev qt5-image-formats-plugins
  libdlib-dev libblas-dev liblapack-dev libjpeg-dev libpng-dev
  libgtest-dev libbenchmark-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}" >&2
if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1; then
  as_root=(sudo)
else
  echo "setup: need root or sudo to install: ${missing[*]}" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q
"${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
