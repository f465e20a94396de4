#!/usr/bin/env bash
# Runs the benchmarks under Wine in a throwaway prefix and prints their figures:
#
#   tools/bench.sh [--entries N] [--rounds R]     the inventory
#   tools/bench.sh --scan [--clsids N] [--rounds R]  the leftover scan
#
# Uses the Windows build of the test command (build/bed-windows), configuring
# it when missing. Figures are ratios within one run; a busy machine skews
# them, so run it on an idle one.
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VARNEL_BUILD_ROOT:-$repo/build}/bed-windows
bash "$repo/tools/install-deps.sh" >/dev/null
libxml2_root=$(bash "$repo/tools/build-libxml2-windows.sh" | tail -n1)
cmake --preset windows -S "$repo" -B "$build" -DVARNEL_LIBXML2_ROOT="$libxml2_root" >/dev/null
bench=varnel_inventory_bench
if [ "${1:-}" = --scan ]; then
  bench=varnel_scan_bench
  shift
fi
cmake --build "$build" -j2 --target "$bench" >/dev/null

prefix=$(mktemp -d "${TMPDIR:-/tmp}/bench.XXXXXX")
trap 'bash "$repo/tools/wine-prefix.sh" destroy "$prefix" >/dev/null 2>&1 || true' EXIT
bash "$repo/tools/wine-prefix.sh" create "$prefix" >/dev/null
cp "$build/bench/$bench.exe" "$prefix/prefix/drive_c/"
bash "$repo/tools/wine-prefix.sh" exec "$prefix" wine "C:\\$bench.exe" "$@"
