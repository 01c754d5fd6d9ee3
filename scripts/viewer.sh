#!/usr/bin/env bash
# Builds kaltoviewer and the calibrator plug-in (Release) and starts the viewer
# on the emulated cameras. Arguments go to kaltoviewer, e.g.
#   scripts/viewer.sh --camera emu-cmed-0 --run-command ColorCalibration.Start
#   scripts/viewer.sh --language ja
#   scripts/viewer.sh --list-plugins
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCOLCAL_BENCH=OFF >/dev/null
cmake --build "$build" --target kaltoviewer ColorCalibration >/dev/null

viewer="$build/host/viewer/kaltoviewer"
listing=0
for arg in "$@"; do
  case "$arg" in --list-plugins|--help|-h|--version|-v) listing=1 ;; esac
done
if [ "$listing" = 0 ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] \
   && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  cat >&2 <<MSG
viewer.sh: no display here (neither DISPLAY nor WAYLAND_DISPLAY is set).
Run the viewer in a virtual X server instead:
  xvfb-run -a -s "-screen 0 1600x1000x24" scripts/viewer.sh $*
or list the plug-ins without a window:
  scripts/viewer.sh --list-plugins
MSG
  exit 2
fi
exec "$viewer" "$@"
