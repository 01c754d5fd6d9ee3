#!/usr/bin/env bash
# Release build of the benchmark programs, then each of them with repetitions.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --bench

build=build/bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCOLCAL_BENCH=ON >/dev/null
cmake --build "$build" >/dev/null

for b in "$build"/bench/bench_*; do
  [ -f "$b" ] && [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" --benchmark_repetitions=${REPS:-9} --benchmark_report_aggregates_only=true "$@"
done

# Whole-process time of `colcal find-chart` beside the peer detector on the
# real chart photographs, run in turn so that both see the same machine.
echo "== colcal find-chart against the peer detector (whole process, wall time)"
photos=()
for f in ../shared/testdata/charts/*.jpg ../shared/testdata/charts/*.png; do
  case "$f" in *_chipmask.png) continue ;; esac
  photos+=("$f")
done
/usr/bin/python3 bench/findchart_vs_peer.py "$build/tools/colcal/colcal" "${RUNS:-5}" "${photos[@]}"

# The emulated camera over loopback GigE Vision beside the same camera in
# process (frames per second, grab-to-converted latency, whole calibrations),
# in a network namespace of its own whose only interface is loopback: GigE
# Vision discovery broadcasts on every interface there is.
echo "== GigE Vision (kalto-gev-camera on loopback) beside the in-process emulated camera"
unshare -rn sh -c 'ip link set lo up && exec "$@"' gev bench/gev_vs_inprocess.sh "$build" "${RUNS:-3}"
