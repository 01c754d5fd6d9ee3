#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer and UBSan) and runs
# each for a bounded time from its seed corpus:
#   fuzz_settings   settings texts through the feature-persistence parser of a
#                   camera's node map, the settings filter and the results parser
#   fuzz_findchart  image files through colcal find-chart's decoding and the chart finder
#
#   scripts/fuzz.sh            # 60 s each (what scripts/test.sh runs)
#   COLCAL_FUZZ_SECONDS=0 COLCAL_FUZZ_RUNS=1000000 scripts/fuzz.sh   # the longer run: 10^6 inputs each
#   COLCAL_FUZZ_TARGETS=fuzz_settings scripts/fuzz.sh                # one of them
# The corpora grow in build/fuzz/corpus/ from run to run.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build=${COLCAL_FUZZ_BUILD:-build/fuzz}
targets=(${COLCAL_FUZZ_TARGETS:-fuzz_settings fuzz_findchart})
launcher=()
command -v ccache >/dev/null 2>&1 && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCOLCAL_FUZZ=ON -DBUILD_TESTING=OFF -DCOLCAL_BENCH=OFF \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
cmake --build "$build" --target "${targets[@]}"

# Seeds of fuzz_settings: the settings texts the emulated cameras write, and the sample files.
settings="$build/corpus/settings"
mkdir -p "$settings"
colcal=${COLCAL_BIN:-build/test/tools/colcal/colcal}
for camera in emu-cmed-0 emu-custom-1; do
  if [ ! -s "$settings/$camera.pfs" ] && [ -x "$colcal" ]; then
    XDG_DATA_HOME="$build/flash" "$colcal" settings save --camera "$camera" "$settings/$camera.pfs" >/dev/null 2>&1 || true
  fi
done
find tests tools -name '*.pfs' -exec cp -t "$settings" {} + 2>/dev/null || true

# Seeds of fuzz_findchart: tiny PNG, JPEG and TIFF files of every pixel layout
# colcal reads. No chart photos: under the fuzzer's instrumentation the chart
# search on one takes 20-60 s (5 s on a 13x10 image), so a handful of them
# would use up a bounded run before its first mutation. The finder on real
# photos is what tests/chart checks under AddressSanitizer.
images="$build/corpus/findchart"
mkdir -p "$images"
cp fuzz/seeds/images/* "$images"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp:print_suppressions=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
seconds=${COLCAL_FUZZ_SECONDS:-60}
runs=${COLCAL_FUZZ_RUNS:--1}
for target in "${targets[@]}"; do
  case "$target" in
    # The longest line a camera writes (its LUT) is 12 kB, a whole settings text 15 kB.
    fuzz_settings) corpus=$settings max_len=16384 ;;
    fuzz_findchart) corpus=$images max_len=65536 ;;
    *) echo "fuzz.sh: unknown target $target" >&2; exit 2 ;;
  esac
  echo "fuzz.sh: $target" >&2
  # Crashes, leaks and slow inputs are written to $build/artifacts/, not into the work tree.
  mkdir -p "$build/artifacts"
  "$build/fuzz/$target" -max_total_time="$seconds" -runs="$runs" -max_len="$max_len" -print_final_stats=1 \
    -artifact_prefix="$build/artifacts/$target-" "$corpus"
done
