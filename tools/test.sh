#!/usr/bin/env bash
# The one test command: every suite on the host (ASan/UBSan) and under Wine,
# then a short fuzz run. Safe to run again; build folders are reused.
#
#   tools/test.sh [--clean]
#
# VARNEL_BUILD_ROOT (default build/) holds bed-host-san/, bed-windows/ and
# bed-fuzz/; --clean deletes those three first. VARNEL_FUZZ_SECONDS (default 30)
# is the time per fuzz target.
set -uo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$repo" || exit 1
builds=${VARNEL_BUILD_ROOT:-$repo/build}
host_dir=$builds/bed-host-san
win_dir=$builds/bed-windows
fuzz_dir=$builds/bed-fuzz
jobs=2

if [ "${1:-}" = --clean ]; then
  rm -rf "$host_dir" "$win_dir" "$fuzz_dir"
fi
mkdir -p "$host_dir" "$win_dir" "$fuzz_dir"

results=$builds/bed-results.tsv
: >"$results"
stage_start=0
run_start=$(date +%s)

row() { python3 tools/test_summary.py row "$results" "$@"; }

begin() {
  stage_start=$(date +%s)
  echo
  echo "=== $1"
}
took() { echo "$(($(date +%s) - stage_start))s"; }

# Runs a command with its output in LOG; on failure shows the end of it.
quiet() {
  local log=$1
  shift
  if "$@" >"$log" 2>&1; then
    return 0
  fi
  echo "--- last lines of $log"
  tail -n 40 "$log"
  return 1
}

# run_ctest LABEL DIR TIMEOUT EXPECTED...: every test of the build in DIR, one summary row
# each, with the whole output of each kept in DIR/junit.xml. Every name in EXPECTED must run.
run_ctest() {
  local label=$1 dir=$2 timeout=$3
  shift 3
  rm -f "$dir/junit.xml"
  (cd "$dir" && ctest -j"$jobs" --timeout "$timeout" --output-junit junit.xml \
    --test-output-size-passed 4000000 --test-output-size-failed 4000000) >"$dir/ctest.log" 2>&1
  python3 tools/test_summary.py ctest "$label" "$dir/junit.xml" "$results" "$@"
}

# --- dependencies -------------------------------------------------------------
begin "dependencies"
if ! bash tools/install-deps.sh; then
  echo "tools/install-deps.sh failed; nothing can be built"
  echo "overall: FAILED"
  echo "0 passed, 1 failed"
  exit 1
fi
libxml2_root=""
if libxml2_root=$(bash tools/build-libxml2-windows.sh | tail -n1) && [ -f "$libxml2_root/lib/libxml2.a" ]; then
  echo "libxml2 for Windows: $libxml2_root"
else
  row deps libxml2 0 1 "cross-build of libxml2 for Windows"
  libxml2_root=""
fi
t_deps=$(took)

# --- host, with AddressSanitizer and UBSan -----------------------------------
begin "host build (ASan/UBSan) and tests"
if quiet "$host_dir/configure.log" cmake --preset host-san -B "$host_dir" \
  && quiet "$host_dir/build.log" cmake --build "$host_dir" -j"$jobs"; then
  run_ctest host "$host_dir" 600 unit platform xml language_files
else
  row host build 0 1 ""
fi
t_host=$(took)

# --- Windows build, run under Wine in a throwaway sandboxed prefix ------------
begin "windows build and tests under Wine"
prefix_dir=""
xvfb_pid=""
cleanup() {
  if [ -n "$prefix_dir" ]; then
    bash "$repo/tools/wine-prefix.sh" destroy "$prefix_dir" || true
    prefix_dir=""
  fi
  if [ -n "$xvfb_pid" ]; then
    kill "$xvfb_pid" 2>/dev/null || true
    wait "$xvfb_pid" 2>/dev/null || true
    xvfb_pid=""
  fi
}
# A private X server for the tests that drive windows. It must be up before the
# prefix is made: the prefix's desktop process takes the display it starts with.
. tools/xvfb.sh
trap cleanup EXIT
trap 'cleanup; exit 130' INT TERM
if [ -n "$libxml2_root" ] \
  && quiet "$win_dir/configure.log" cmake --preset windows -B "$win_dir" \
    -DVARNEL_LIBXML2_ROOT="$libxml2_root" \
  && quiet "$win_dir/build.log" cmake --build "$win_dir" -j"$jobs"; then
  prefix_dir=$(mktemp -d "${TMPDIR:-/tmp}/bed-test.XXXXXX")
  if ! start_xvfb 1280x1024 "$win_dir/xvfb.log"; then
    row wine xvfb 0 1 "could not start Xvfb (see $win_dir/xvfb.log)"
  elif quiet "$win_dir/prefix.log" bash tools/wine-prefix.sh create "$prefix_dir"; then
    VARNEL_WINE_DIR=$prefix_dir VARNEL_WINE_TIMEOUT=300 run_ctest wine "$win_dir" 400 \
      unit platform sandbox xml bench scan_bench scan_e2e uninstall_e2e hostile_e2e addons_e2e gui
  else
    row wine prefix 0 1 "could not make the Wine prefix"
  fi
  cleanup
else
  row wine build 0 1 ""
fi
t_wine=$(took)

# --- fuzz smoke run -----------------------------------------------------------
begin "fuzz build and smoke run"
if quiet "$fuzz_dir/configure.log" cmake --preset fuzz -B "$fuzz_dir" \
  && quiet "$fuzz_dir/build.log" cmake --build "$fuzz_dir" -j"$jobs"; then
  bash tools/fuzz-smoke.sh "$fuzz_dir" "${VARNEL_FUZZ_SECONDS:-30}" | tee "$fuzz_dir/smoke.log"
  # "fuzz NAME: ok, DETAIL" or "fuzz NAME: FAILED ..." per target.
  sed -nE 's/^fuzz ([^:]+): ok, (.*)$/\1\t1\t0\t\2/p; s/^fuzz ([^:]+): FAILED.*$/\1\t0\t1\tsee fuzz-smoke\//p' \
    "$fuzz_dir/smoke.log" | while IFS=$'\t' read -r name passed failed detail; do
    row fuzz "$name" "$passed" "$failed" "$detail" >/dev/null
  done
  grep -q '^fuzz [^:]*: ok' "$fuzz_dir/smoke.log" || row fuzz "(none)" 0 1 "no fuzz target ran" >/dev/null
else
  row fuzz build 0 1 ""
fi
t_fuzz=$(took)

# --- result ---------------------------------------------------------------------
echo
echo "=== summary"
python3 tools/test_summary.py final "$results" \
  "dependencies $t_deps, host $t_host, wine $t_wine, fuzz $t_fuzz, total $(($(date +%s) - run_start))s"
