#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer and UBSan) and runs
# each for a bounded time from a seed corpus of real settings files.
#   scripts/fuzz.sh            # 60 s each (what scripts/test.sh runs)
#   COLCAL_FUZZ_SECONDS=0 COLCAL_FUZZ_RUNS=1000000 scripts/fuzz.sh   # the longer run: 10^6 inputs each
set -euo pipefail
cd "$(dirname "$0")/.."
build=${COLCAL_FUZZ_BUILD:-build/fuzz}
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCOLCAL_FUZZ=ON -DBUILD_TESTING=OFF -DCOLCAL_BENCH=OFF \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache >/dev/null
cmake --build "$build" --target fuzz_settings

# Seeds: the settings texts the emulated cameras write, and the sample files.
corpus="$build/corpus/settings"
mkdir -p "$corpus"
colcal=${COLCAL_BIN:-build/test/tools/colcal/colcal}
for camera in emu-cmed-0 emu-custom-1; do
  if [ ! -s "$corpus/$camera.pfs" ] && [ -x "$colcal" ]; then
    XDG_DATA_HOME="$build/flash" "$colcal" settings save --camera "$camera" "$corpus/$camera.pfs" >/dev/null 2>&1 || true
  fi
done
find tests tools -name '*.pfs' -exec cp -t "$corpus" {} + 2>/dev/null || true

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp:print_suppressions=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
seconds=${COLCAL_FUZZ_SECONDS:-60}
runs=${COLCAL_FUZZ_RUNS:--1}
"$build/fuzz/fuzz_settings" -max_total_time="$seconds" -runs="$runs" -max_len=65536 -print_final_stats=1 "$corpus"
