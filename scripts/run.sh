#!/usr/bin/env bash
# The main job: a release build, then the calibration engine on a sample measured chart.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCOLCAL_BENCH=OFF >/dev/null
cmake --build "$build" --target colcal >/dev/null

"$build/tools/colcal/colcal" engine tools/colcal/samples/measured_chart.csv "$@"
