#!/usr/bin/env bash
# Builds the Debian package of this build tree, unpacks it into a temporary
# root with dpkg -x (no system install, no LD_LIBRARY_PATH) and uses it as a
# user would: a whole calibration of the emulated camera, the version, the
# viewer's help and its plug-in list.
#   package_test.sh CPACK CPACK_CONFIG VERSION
set -euo pipefail
cpack=$1 config=$2 version=$3

# Outside the build tree: the viewer takes the build's plug-ins when it runs
# from there, and the installed tree must stand on its own.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "package_test: $*" >&2; exit 1; }

# gzip: the sanitizer build's binaries are large and xz would double the run.
"$cpack" -G DEB --config "$config" -B "$work/cpack" -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip >"$work/cpack.log" 2>&1 \
  || { cat "$work/cpack.log" >&2; fail "cpack failed"; }
deb=$(ls "$work"/cpack/colcal_"$version"_*.deb) || fail "no colcal_${version}_*.deb made"

depends=$(dpkg-deb -f "$deb" Depends)
for p in libqt5core5a libqt5gui5 libqt5quick5 qml-module-qtquick-controls2 libaravis-0.8-0; do
  [[ $depends == *"$p"* ]] || fail "Depends lacks $p: $depends"
done

root="$work/root"
dpkg -x "$deb" "$root"
files=$(cd "$root" && find . -type f | sort)
for f in ./usr/bin/colcal ./usr/bin/kaltoviewer ./usr/lib/libkaltosdk.so ./usr/lib/kaltoviewer/plugins/libColorCalibration.so; do
  grep -qxF "$f" <<<"$files" || fail "package lacks $f; it holds: $files"
done
! grep -E '/(test_|bench|eval_|fuzz_)[^/]*$' <<<"$files" || fail "package holds test or benchmark programs"
# Libraries are found relative to the programs, never through a path of this machine.
while read -r f; do
  runpath=$(readelf -d "$root/$f" | sed -n 's/.*R\(UN\)\?PATH.*\[\(.*\)\]/\2/p')
  [[ -z $runpath || $runpath == '$ORIGIN'* ]] || fail "$f searches $runpath"
done <<<"$files"
# The translations travel inside the plug-in.
catalogues=$(strings -eb "$root/usr/lib/kaltoviewer/plugins/libColorCalibration.so" | grep -cE '^Color(CorrectionToolPlugin|Calibration)_[a-z]{2}\.qm$' || true)
[ "$catalogues" -eq 9 ] || fail "the plug-in carries $catalogues translation catalogues, not 9"

unset LD_LIBRARY_PATH QT_PLUGIN_PATH
# The package's programs are stripped, so LeakSanitizer could not match the
# suppressions by name; the same programs' leaks are checked by the suites
# that run them from the build tree.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
export XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" XDG_RUNTIME_DIR="$work/run"
mkdir -m 700 -p "$XDG_RUNTIME_DIR"
cd "$work"

[ "$("$root/usr/bin/colcal" --version)" = "colcal $version" ] || fail "colcal --version"
"$root/usr/bin/colcal" calibrate --report-dir "$work/reports" >"$work/calibrate.txt" 2>"$work/calibrate.err" \
  || { cat "$work/calibrate.txt" "$work/calibrate.err" >&2; fail "colcal calibrate exited non-zero"; }
rows=$(grep -cE '^ ?[0-9]{1,2} [a-z].* [0-9]+\.[0-9]{2} +[0-9]+\.[0-9]{2} +[0-9]+\.[0-9]{2} +[0-9]+\.[0-9]{2}$' "$work/calibrate.txt" || true)
[ "$rows" -eq 24 ] || { cat "$work/calibrate.txt" >&2; fail "calibrate printed $rows patch rows, not 24"; }
grep -qE '^mean +[0-9]+\.[0-9]{2} +[0-9]+\.[0-9]{2}' "$work/calibrate.txt" || fail "no mean row"
report=$(tail -n 1 "$work/calibrate.txt" | sed -n 's/^Report *//p')
[ -s "$report" ] || fail "no report at \"$report\""

QT_QPA_PLATFORM= "$root/usr/bin/kaltoviewer" --help >"$work/help.txt" 2>&1 || { cat "$work/help.txt" >&2; fail "kaltoviewer --help"; }
grep -q -- '--list-plugins' "$work/help.txt" || fail "kaltoviewer --help lists no options"
plugins=$("$root/usr/bin/kaltoviewer" --list-plugins)
grep -qP "^ColorCalibration\t$version\tRunning$" <<<"$plugins" || fail "the viewer did not load the installed plug-in: $plugins"
echo "package_test: $(basename "$deb") installs and runs"
