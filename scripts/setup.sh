#!/usr/bin/env bash
# Installs the Debian packages the build needs; does nothing when all are there.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  # cpack -G DEB and its dependency list (dpkg-shlibdeps).
  dpkg-dev
  qtbase5-dev qt5-image-formats-plugins
  libdlib-dev libblas-dev liblapack-dev libjpeg-dev libpng-dev
  libgtest-dev libbenchmark-dev
  # The wizard, the live view and the viewer: Qt Quick, Multimedia, Widgets,
  # translations compiled at build time, and the fonts CJK texts need.
  qtdeclarative5-dev qtmultimedia5-dev qtquickcontrols2-5-dev
  qttools5-dev qttools5-dev-tools
  qml-module-qtquick2 qml-module-qtquick-controls2 qml-module-qtquick-layouts
  qml-module-qtquick-window2 qml-module-qtquick-dialogs qml-module-qtmultimedia
  qml-module-qttest qml-module-qt-labs-settings
  fonts-noto-cjk
  # GUI tests in a real X server.
  xvfb xauth
  # GenICam cameras through Aravis (its pkg-config file needs libusb's), and
  # the loopback-only network namespace its tests run in.
  libaravis-dev libusb-1.0-0-dev iproute2 util-linux
  # The libFuzzer targets: clang and its fuzzer runtime.
  clang libclang-rt-14-dev
)

# Only for scripts/bench.sh: the peer chart detector the finder's speed is
# compared with (never a dependency of the build or the plug-in).
if [ "${1:-}" = "--bench" ]; then
  packages+=(python3-opencv)
fi

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
