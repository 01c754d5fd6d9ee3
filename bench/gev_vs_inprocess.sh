#!/usr/bin/env bash
# The emulated medical camera over loopback GigE Vision beside the same camera
# in process: gev_bench (frames per second, grab-to-converted latency), then
# the wall time of a whole `colcal calibrate` on each, run in turn so that both
# see the same machine. Must run in a loopback-only network namespace
# (scripts/bench.sh does that); refuses otherwise.
# Usage: bench/gev_vs_inprocess.sh BUILD_DIR [RUNS]
set -euo pipefail
build=$1
runs=${2:-3}

others=$(ip -o link show up | awk -F': ' '$2 != "lo" {print $2}')
if [ -n "$others" ]; then
  echo "gev_vs_inprocess.sh: interfaces besides loopback are up ($others); run it through scripts/bench.sh" >&2
  exit 1
fi

work=$(mktemp -d)
camera_pid=
cleanup() {
  [ -n "$camera_pid" ] && kill "$camera_pid" 2>/dev/null && wait "$camera_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

XDG_DATA_HOME=$work/camera "$build/host/gevcamera/kalto-gev-camera" --serial 40000299 >"$work/camera.out" &
camera_pid=$!
for _ in $(seq 1 100); do
  grep -q serving "$work/camera.out" 2>/dev/null && break
  sleep 0.1
done
id=$(sed -n 's/^kalto-gev-camera: serving \(.*\) on .*$/\1/p' "$work/camera.out")
[ -n "$id" ] || { echo "gev_vs_inprocess.sh: kalto-gev-camera did not come up" >&2; exit 1; }
echo "camera: $id"

KALTO_GEV_CAMERA_ID=$id XDG_DATA_HOME=$work/bench "$build/bench/gev_bench" \
  --benchmark_repetitions=${REPS:-3} --benchmark_report_aggregates_only=true

# Whole calibrations, in process and over GigE Vision in turn.
colcal=$build/tools/colcal/colcal
time_run() {  # label, colcal arguments...
  local label=$1; shift
  local start end
  start=$(date +%s%N)
  XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=offscreen \
    "$colcal" "$@" >"$work/out.txt" 2>"$work/err.txt" \
    || { echo "$label: colcal failed:" >&2; cat "$work/err.txt" >&2; exit 1; }
  end=$(date +%s%N)
  echo "$label $(( (end - start) / 1000000 ))"
}
: >"$work/times"
for i in $(seq 1 "$runs"); do
  time_run inprocess calibrate >>"$work/times"
  time_run gige --genicam calibrate --camera "$id" >>"$work/times"
done
awk '{ sum[$1] += $2 / 1000; n[$1]++; list[$1] = list[$1] sprintf(" %.1f", $2 / 1000) }
     END {
       printf "colcal calibrate, wall time over %d runs each (s):\n", n["inprocess"]
       printf "  in process : mean %.1f  (%s )\n", sum["inprocess"] / n["inprocess"], list["inprocess"]
       printf "  GigE Vision: mean %.1f  (%s )\n", sum["gige"] / n["gige"], list["gige"]
       printf "  ratio GigE / in process: %.2f (goal <= 1.5)\n", (sum["gige"] / n["gige"]) / (sum["inprocess"] / n["inprocess"])
     }' "$work/times"
