#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UBSan and runs every test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

build=${COLCAL_TEST_BUILD:-build/test}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCOLCAL_SANITIZE=ON -DBUILD_TESTING=ON -DCOLCAL_BENCH=OFF
cmake --build "$build"

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp:print_suppressions=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# A test that fails is run once more before the run fails: the camera tests
# time real frame delivery, which a loaded 2-core machine can stretch.
ctest --test-dir "$build" --output-on-failure -j2 --repeat until-pass:2 -LE genicam

# Runs a command in a network namespace of its own whose only interface is
# loopback: GigE Vision discovery broadcasts on every interface there is, and
# nothing may leave this machine.
in_loopback_namespace() {
  unshare -rn sh -c 'ip link set lo up && exec "$@"' loopback-only "$@"
}

# The GenICam suites (ctest label genicam, and any further ctest options), in
# such a namespace. They skip themselves anywhere else, so a skipped one means
# they did not really run: that fails the run.
genicam_log=$(mktemp)
trap 'rm -f "$genicam_log"' EXIT
run_genicam_suites() {
  in_loopback_namespace ctest -L genicam --output-on-failure -j2 --repeat until-pass:2 "$@" | tee "$genicam_log"
  if grep -q '(Skipped)' "$genicam_log"; then
    echo "test.sh: GenICam tests were skipped: they must run in the loopback-only namespace" >&2
    exit 1
  fi
}
run_genicam_suites --test-dir "$build"

# The threaded suites again under ThreadSanitizer. Qt itself is not
# instrumented: ignore_noninstrumented_modules drops the memory accesses its
# allocator calls make (a queued signal's event is allocated on one thread and
# freed on another under Qt's own lock), and tests/tsan.supp names the few
# reports that lie wholly inside Qt. Our own code is checked in full.
if [ "${COLCAL_SKIP_TSAN:-0}" != 1 ]; then
  tsan=${COLCAL_TSAN_BUILD:-build/tsan}
  cmake -S . -B "$tsan" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCOLCAL_TSAN=ON -DBUILD_TESTING=ON -DCOLCAL_BENCH=OFF
  cmake --build "$tsan" --target colcal_threaded_tests
  export TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp:ignore_noninstrumented_modules=1:halt_on_error=1:second_deadlock_stack=1"
  ctest --test-dir "$tsan" -L threaded --output-on-failure -j2 --repeat until-pass:2
  # The GenICam suites colcal_threaded_tests builds.
  run_genicam_suites --test-dir "$tsan"
  unset TSAN_OPTIONS
fi

# The libFuzzer targets, each for a bounded time (60 s; scripts/fuzz.sh tells
# how to make the longer run).
if [ "${COLCAL_SKIP_FUZZ:-0}" != 1 ]; then
  scripts/fuzz.sh
fi
