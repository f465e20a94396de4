#!/usr/bin/env bash
# Runs a Windows executable under Wine: wine-run.sh EXE [ARGS...]
# The windows build uses it as CMAKE_CROSSCOMPILING_EMULATOR, so ctest runs
# the .exe tests through it.
#
# The executable (and any DLL beside it) is copied to C:\varnel-tests\ and run
# from there, so it never depends on a drive mapped to the real disk.
# VARNEL_WINE_DIR names a prefix made by wine-prefix.sh; without it a throwaway
# prefix is made for this one run. VARNEL_WINE_TIMEOUT (seconds, default 600)
# bounds the run; a run that hits it exits with 124.
# The exit code of the program is passed through.
set -euo pipefail

[ $# -ge 1 ] || { echo "usage: $0 EXE [ARGS...]" >&2; exit 2; }
exe=$1
shift
[ -f "$exe" ] || { echo "wine-run: $exe not found" >&2; exit 2; }

tools=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
timeout_s=${VARNEL_WINE_TIMEOUT:-600}

if [ -n "${VARNEL_WINE_DIR:-}" ]; then
  dir=$VARNEL_WINE_DIR
  [ -f "$dir/env" ] || { echo "wine-run: $dir is not a prefix made by wine-prefix.sh" >&2; exit 2; }
else
  dir=$(mktemp -d "${TMPDIR:-/tmp}/bed-run.XXXXXX")
  trap 'bash "$tools/wine-prefix.sh" destroy "$dir"' EXIT
  bash "$tools/wine-prefix.sh" create "$dir"
fi

prefix=$dir/prefix
dest=$prefix/drive_c/varnel-tests
name=$(basename "$exe")
mkdir -p "$dest"
# Copy under a temporary name first: another test may be starting the same file.
cp -f "$exe" "$dest/.$name.$$" && mv -f "$dest/.$name.$$" "$dest/$name"
for dll in "$(dirname "$exe")"/*.dll; do
  if [ -f "$dll" ]; then cp -f "$dll" "$dest/"; fi
done

# Wine may bring a Z: mapping back on a later start; never run with one.
if [ "$(. "$dir/env" && echo "$VARNEL_SANDBOX_OFF")" != 1 ]; then
  rm -f "$prefix/dosdevices/z:" "$prefix/dosdevices/z::"
fi

# Console programs built by mingw write CRLF; Linux readers want LF.
set +e
(cd "$dest" && exec timeout -k 10 "$timeout_s" "$dir/bin/wine" "C:\\varnel-tests\\$name" "$@") | tr -d '\r'
rc=${PIPESTATUS[0]}
set -e
if [ "$rc" = 124 ]; then
  echo "wine-run: $name did not finish within ${timeout_s}s" >&2
fi
exit "$rc"
