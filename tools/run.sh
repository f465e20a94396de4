#!/usr/bin/env bash
# Builds the Windows programs and runs them under Wine in a demo prefix with
# the sample programs installed:
#
#   tools/run.sh [ARGS...]      (default ARGS: list)
#
# The demo prefix lives in build/demo/ and is made, with the samples
# installed, on the first run only; `tools/run.sh --fresh ...` makes it anew.
# Without a display the programs run against a private Xvfb server.
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
builds=${VARNEL_BUILD_ROOT:-$repo/build}
win_dir=$builds/bed-windows
demo=$builds/demo
fixtures=$builds/demo-fixtures

fresh=0
if [ "${1:-}" = --fresh ]; then
  fresh=1
  shift
fi
[ $# -gt 0 ] || set -- list

step() { echo "run: $*" >&2; }

step "dependencies"
bash "$repo/tools/install-deps.sh" >/dev/null
libxml2_root=$(bash "$repo/tools/build-libxml2-windows.sh" | tail -n1)

step "building varnel-cli.exe"
cmake -S "$repo" -B "$win_dir" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$repo/cmake/toolchain-mingw64.cmake" \
  -DVARNEL_LIBXML2_ROOT="$libxml2_root" >/dev/null
cmake --build "$win_dir" -j2 --target varnel-cli >/dev/null

xvfb_pid=""
cleanup() {
  if [ -f "$demo/env" ]; then "$demo/bin/wineserver" -k >/dev/null 2>&1 || true; fi
  if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null || true; fi
}
trap cleanup EXIT
if [ -z "${DISPLAY:-}" ]; then
  numfile=$(mktemp)
  Xvfb -displayfd 5 -screen 0 1280x1024x24 -nolisten tcp 5>"$numfile" >/dev/null 2>&1 &
  xvfb_pid=$!
  for _ in $(seq 100); do [ -s "$numfile" ] && break; sleep 0.1; done
  [ -s "$numfile" ] || { echo "run: could not start Xvfb" >&2; exit 1; }
  export DISPLAY=":$(head -n1 "$numfile")"
  rm -f "$numfile"
fi

if [ "$fresh" = 1 ] && [ -d "$demo" ]; then
  bash "$repo/tools/wine-prefix.sh" destroy "$demo" >/dev/null 2>&1 || rm -rf "$demo"
fi
if [ ! -f "$demo/samples-installed" ]; then
  rm -rf "$demo"
  step "making the demo prefix in $demo and installing the sample programs"
  bash "$repo/tools/build-fixtures.sh" "$fixtures" >/dev/null
  bash "$repo/tools/wine-prefix.sh" create "$demo" >/dev/null
  bash "$repo/tools/install-fixtures.sh" "$demo" "$fixtures" >/dev/null
  touch "$demo/samples-installed"
fi

cp -f "$win_dir/cli/varnel-cli.exe" "$demo/prefix/drive_c/varnel-cli.exe"
rm -f "$demo/prefix/dosdevices/z:" "$demo/prefix/dosdevices/z::"
step "varnel-cli $*"
cd "$demo/prefix/drive_c"
"$demo/bin/wine" 'C:\varnel-cli.exe' "$@" | tr -d '\r'
exit "${PIPESTATUS[0]}"
