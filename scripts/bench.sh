#!/usr/bin/env bash
# Release build of the benchmark programs, then each of them with repetitions.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

build=build/bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCOLCAL_BENCH=ON >/dev/null
cmake --build "$build" >/dev/null

for b in "$build"/bench/bench_*; do
  [ -f "$b" ] && [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" --benchmark_repetitions=${REPS:-9} --benchmark_report_aggregates_only=true "$@"
done
