#!/usr/bin/env bash
# The main job: a release build, then a whole calibration of the emulated
# medical camera. Prints the before/after table and where the report is.
# Extra arguments go to `colcal calibrate` (e.g. --camera emu-custom-1).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCOLCAL_BENCH=OFF >/dev/null
cmake --build "$build" --target colcal >/dev/null

out=${COLCAL_OUT:-out}
mkdir -p "$out/reports" "$out/settings"
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
"$build/tools/colcal/colcal" calibrate --report-dir "$out/reports" --settings-dir "$out/settings" "$@"
