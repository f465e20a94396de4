#!/usr/bin/env bash
# Runs every libFuzzer target of a fuzz build for a fixed time and fails on any
# crash, hang or sanitizer report:  fuzz-smoke.sh BUILD_DIR [SECONDS]
#
# Seeds come from fuzz/corpus/NAME/ when it exists; that folder is only read.
# New inputs and crash artifacts go to BUILD_DIR/fuzz-smoke/NAME/.
set -euo pipefail

[ $# -ge 1 ] || { echo "usage: $0 BUILD_DIR [SECONDS]" >&2; exit 2; }
build=$(cd "$1" && pwd)
seconds=${2:-${VARNEL_FUZZ_SECONDS:-60}}
repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

targets=()
for exe in "$build"/fuzz/*_fuzz; do
  if [ -x "$exe" ]; then targets+=("$exe"); fi
done
if [ ${#targets[@]} -eq 0 ]; then
  echo "fuzz: no *_fuzz targets in $build/fuzz"
  echo "[  FAILED  ] no fuzz targets ran."
  exit 1
fi

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

passed=0
failed=0
for exe in "${targets[@]}"; do
  name=$(basename "$exe")
  out=$build/fuzz-smoke/$name
  rm -rf "$out"
  mkdir -p "$out/corpus" "$out/artifacts"
  corpora=("$out/corpus")
  seeds=$repo/fuzz/corpus/$name
  if [ -d "$seeds" ]; then corpora+=("$seeds"); fi
  rc=0
  "$exe" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$out/artifacts/" "${corpora[@]}" >"$out/log" 2>&1 || rc=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$out/log" | tail -n1)
  # A report can come from a path that still exits 0 (a recovered UBSan check,
  # a leak seen late), so the log is read as well as the exit code.
  if [ "$rc" != 0 ] || grep -qE 'ERROR: (AddressSanitizer|LeakSanitizer|libFuzzer)|runtime error:|^SUMMARY: ' "$out/log"; then
    failed=$((failed + 1))
    echo "fuzz $name: FAILED (exit $rc); log and artifacts in $out"
    grep -E 'ERROR:|runtime error:|SUMMARY:|Test unit written' "$out/log" | head -n 20 | sed 's/^/  /'
  else
    passed=$((passed + 1))
    seeded=$([ -d "$seeds" ] && echo "seeded from fuzz/corpus/$name" || echo "no seeds")
    echo "fuzz $name: ok, ${runs:-?} runs in ${seconds}s, $seeded"
  fi
done

if [ "$failed" -gt 0 ]; then
  echo "[  FAILED  ] $failed of $((passed + failed)) fuzz targets."
  exit 1
fi
echo "[  PASSED  ] $passed fuzz targets."
