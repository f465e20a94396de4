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

total_passed=0
total_failed=0
summary=()
stage_start=0
run_start=$(date +%s)

note() { summary+=("$1"); echo "$1"; }
fail_count() { total_failed=$((total_failed + ${1:-1})); }

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

# From one test's output: each failed gtest case from its RUN line on, or a
# case that never finished; the last 40 lines when there is neither.
failure_excerpt() {
  awk '
    /^\[ RUN      \]/ { buf = $0 "\n"; inrun = 1; last[NR % 40] = $0; next }
    inrun { buf = buf $0 "\n" }
    /^\[       OK \]/ { inrun = 0; buf = "" }
    /^\[  FAILED  \] .*\([0-9]+ ms\)$/ && inrun { printf "%s", buf; inrun = 0; buf = ""; shown++ }
    { last[NR % 40] = $0 }
    END {
      if (inrun && buf != "") { printf "%s", buf; shown++ }
      if (!shown) for (i = NR - 39; i <= NR; i++) if (i > 0) print last[i % 40]
    }'
}

# Reads a verbose ctest log and prints one line per test with its count of
# cases; adds to the totals. Every name in EXPECTED must have run.
summarize_ctest() {
  local label=$1 log=$2
  shift 2
  local expected=("$@") lines line name status passed failed why skipped skipnote num missing=0 e
  mapfile -t lines < <(awk '
    match($0, /Test +#[0-9]+: [^ ]+ /) {
      split(substr($0, RSTART, RLENGTH), a, /[#: ]+/)
      n = a[2]; name[n] = a[3]
      status[n] = ($0 ~ /Passed +[0-9.]+ sec/) ? "passed" : "failed"
      if ($0 ~ /\*\*\*/) { s = $0; sub(/.*\*\*\*/, "", s); sub(/ +[0-9.]+ sec.*/, "", s); why[n] = s }
      order[++count] = n
    }
    /^[0-9]+: \[  PASSED  \] [0-9]+ (test|check)/ { split($0, b, /[: ]+/); split($0, c, /\] /); split(c[2], d, " "); pass[b[1]] = d[1] }
    /^[0-9]+: \[  SKIPPED \] [0-9]+ test/ { split($0, b, /[: ]+/); split($0, c, /\] /); split(c[2], d, " "); skip[b[1]] = d[1] }
    /^[0-9]+: \[  FAILED  \] [0-9]+ (test|of)/ { split($0, b, /[: ]+/); split($0, c, /\] /); split(c[2], d, " "); fail[b[1]] = d[1] }
    END {
      for (i = 1; i <= count; i++) {
        n = order[i]
        printf "%s|%s|%s|%s|%s|%s\n", name[n], status[n], (n in pass) ? pass[n] : "", (n in fail) ? fail[n] : "", why[n], (n in skip) ? skip[n] : ""
      }
    }' "$log")
  for line in "${lines[@]}"; do
    IFS='|' read -r name status passed failed why skipped <<<"$line"
    skipnote=${skipped:+, $skipped skipped}
    if [ "$status" = passed ] && [ -n "$passed" ]; then
      total_passed=$((total_passed + passed))
      note "$(printf '%-8s %-14s passed  %5s cases%s' "$label" "$name" "$passed" "$skipnote")"
    elif [ "$status" = passed ]; then
      # A test that prints no count is one case.
      total_passed=$((total_passed + 1))
      note "$(printf '%-8s %-14s passed  %5s case (no count printed)' "$label" "$name" 1)"
    else
      [ -n "$passed" ] && total_passed=$((total_passed + passed))
      fail_count "${failed:-1}"
      note "$(printf '%-8s %-14s FAILED  %5s passed, %s failed%s %s' "$label" "$name" "${passed:-0}" "${failed:-?}" "$skipnote" "${why:+($why)}")"
      num=$(grep -m1 -E "Test +#[0-9]+: $name " "$log" | sed -E 's/.*Test +#([0-9]+):.*/\1/')
      echo "--- what failed in $label $name (all of its output is in $log)"
      grep -E "^$num: " "$log" | sed -E "s/^$num: //" | failure_excerpt
    fi
  done
  for e in "${expected[@]}"; do
    if ! printf '%s\n' "${lines[@]}" | cut -d'|' -f1 | grep -qx -- "$e"; then
      note "$(printf '%-8s %-14s FAILED  suite did not run' "$label" "$e")"
      missing=$((missing + 1))
    fi
  done
  fail_count "$missing"
  [ "$missing" = 0 ]
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
  note "deps     libxml2        FAILED  cross-build of libxml2 for Windows"
  fail_count 1
  libxml2_root=""
fi
t_deps=$(took)

# --- host, with AddressSanitizer and UBSan -----------------------------------
begin "host build (ASan/UBSan) and tests"
if quiet "$host_dir/configure.log" cmake -S . -B "$host_dir" -G Ninja -DVARNEL_SANITIZE=ON \
  && quiet "$host_dir/build.log" cmake --build "$host_dir" -j"$jobs"; then
  (cd "$host_dir" && ctest -V -j"$jobs" --timeout 600) >"$host_dir/ctest.log" 2>&1
  summarize_ctest host "$host_dir/ctest.log" unit platform xml language_files
else
  note "host     build          FAILED"
  fail_count 1
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
  && quiet "$win_dir/configure.log" cmake -S . -B "$win_dir" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$repo/cmake/toolchain-mingw64.cmake" -DVARNEL_LIBXML2_ROOT="$libxml2_root" \
  && quiet "$win_dir/build.log" cmake --build "$win_dir" -j"$jobs"; then
  prefix_dir=$(mktemp -d "${TMPDIR:-/tmp}/bed-test.XXXXXX")
  if ! start_xvfb 1280x1024 "$win_dir/xvfb.log"; then
    note "wine     xvfb           FAILED  could not start Xvfb (see $win_dir/xvfb.log)"
    fail_count 1
  elif quiet "$win_dir/prefix.log" bash tools/wine-prefix.sh create "$prefix_dir"; then
    (cd "$win_dir" && VARNEL_WINE_DIR=$prefix_dir VARNEL_WINE_TIMEOUT=300 ctest -V -j"$jobs" --timeout 400) \
      >"$win_dir/ctest.log" 2>&1
    summarize_ctest wine "$win_dir/ctest.log" unit platform sandbox xml bench scan_bench e2e scan_e2e uninstall_e2e hostile_e2e addons_e2e gui
  else
    note "wine     prefix         FAILED  could not make the Wine prefix"
    fail_count 1
  fi
  cleanup
else
  note "wine     build          FAILED"
  fail_count 1
fi
t_wine=$(took)

# --- fuzz smoke run -----------------------------------------------------------
begin "fuzz build and smoke run"
if quiet "$fuzz_dir/configure.log" cmake -S . -B "$fuzz_dir" -G Ninja -DVARNEL_FUZZ=ON \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  && quiet "$fuzz_dir/build.log" cmake --build "$fuzz_dir" -j"$jobs"; then
  bash tools/fuzz-smoke.sh "$fuzz_dir" "${VARNEL_FUZZ_SECONDS:-30}" | tee "$fuzz_dir/smoke.log"
  while IFS= read -r line; do
    case $line in
      "fuzz "*": ok"*)
        total_passed=$((total_passed + 1))
        summary+=("$(printf '%-8s %-14s passed  %s' fuzz "$(echo "$line" | sed -E 's/^fuzz ([^:]+):.*/\1/')" "$(echo "$line" | sed -E 's/^[^:]+: ok, //')")")
        ;;
      "fuzz "*": FAILED"*)
        fail_count 1
        summary+=("$(printf '%-8s %-14s FAILED  %s' fuzz "$(echo "$line" | sed -E 's/^fuzz ([^:]+):.*/\1/')" "see $fuzz_dir/fuzz-smoke/")")
        ;;
      *"no fuzz targets ran"*)
        fail_count 1
        summary+=("$(printf '%-8s %-14s FAILED  no fuzz targets were built' fuzz "(none)")")
        ;;
    esac
  done <"$fuzz_dir/smoke.log"
else
  note "fuzz     build          FAILED"
  fail_count 1
fi
t_fuzz=$(took)

# --- result ---------------------------------------------------------------------
echo
echo "=== summary"
printf '%s\n' "${summary[@]}"
echo "time: dependencies $t_deps, host $t_host, wine $t_wine, fuzz $t_fuzz, total $(($(date +%s) - run_start))s"
if [ "$total_failed" -eq 0 ] && [ "$total_passed" -gt 0 ]; then
  echo "overall: PASSED"
  status=0
else
  echo "overall: FAILED"
  status=1
fi
echo "$total_passed passed, $total_failed failed"
exit "$status"
