#!/usr/bin/env bash
# The GUI suite: a fresh sandboxed prefix with five Uninstall entries of known
# fields, the program in C:\varnel-tests\app\, two sample installers in
# C:\varnel-fixtures\ for the uninstall cases, and the driver run against it.
#
#   gui_test.sh DRIVER_EXE APP_DIR FIXTURE_DIR
#
# APP_DIR holds VarnelUninstaller.exe and Toolbox_Language\; FIXTURE_DIR is
# where tools/build-fixtures.sh builds the samples (skipping what is up to
# date). Without DISPLAY a private Xvfb server is started.
set -uo pipefail

[ $# -eq 3 ] || { echo "usage: $0 DRIVER_EXE APP_DIR FIXTURE_DIR" >&2; exit 2; }
driver=$1
app_dir=$2
fixtures=$3
tools=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../tools" && pwd)
. "$tools/xvfb.sh"

die() {
  echo "FAILED $*"
  echo "[  FAILED  ] 1 of 1 checks."
  exit 1
}
[ -f "$driver" ] || die "$driver not found"
[ -f "$app_dir/VarnelUninstaller.exe" ] || die "$app_dir/VarnelUninstaller.exe not found"
fixtures=$(bash "$tools/build-fixtures.sh" "$fixtures" | tail -n 1) || die "could not build the samples"

dir=$(mktemp -d "${TMPDIR:-/tmp}/varnel-gui.XXXXXX")
xvfb_pid=""
cleanup() {
  bash "$tools/wine-prefix.sh" destroy "$dir" >/dev/null 2>&1 || rm -rf "$dir"
  if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null; wait "$xvfb_pid" 2>/dev/null; fi
}
trap cleanup EXIT
trap 'exit 130' INT TERM

if [ -z "${DISPLAY:-}" ]; then
  start_xvfb 1280x1024 || die "could not start Xvfb"
fi

bash "$tools/wine-prefix.sh" create "$dir" >/dev/null || die "could not make the prefix"
drive_c=$dir/prefix/drive_c
mkdir -p "$drive_c/varnel-tests/app"
cp -f "$app_dir/VarnelUninstaller.exe" "$drive_c/varnel-tests/app/"
cp -rf "$app_dir/Toolbox_Language" "$drive_c/varnel-tests/app/"
mkdir -p "$drive_c/varnel-fixtures"
for installer in oak-sketchpad-setup.exe quill-sync-user-setup.exe; do
  cp -f "$fixtures/$installer" "$drive_c/varnel-fixtures/" || die "$installer not built"
done

# One import for all entries: HKLM 64-bit view, the 32-bit view through
# Wow6432Node, and the user's.
uninstall='SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall'
today=$(date +%Y%m%d)
entry() {  # ROOTPATH KEY NAME PUBLISHER VERSION DATE SIZE_KB HELP
  printf '[%s\\%s]\r\n' "$1" "$2"
  printf '"DisplayName"="%s"\r\n' "$3"
  printf '"UninstallString"="C:\\\\Apps\\\\%s\\\\unins.exe"\r\n' "$2"
  [ -n "$4" ] && printf '"Publisher"="%s"\r\n' "$4"
  [ -n "$5" ] && printf '"DisplayVersion"="%s"\r\n' "$5"
  [ -n "$6" ] && printf '"InstallDate"="%s"\r\n' "$6"
  printf '"EstimatedSize"=dword:%08x\r\n' "$7"
  [ -n "$8" ] && printf '"HelpLink"="%s"\r\n' "$8"
  printf '\r\n'
}
{
  printf 'Windows Registry Editor Version 5.00\r\n\r\n'
  entry "HKEY_LOCAL_MACHINE\\$uninstall" A_Alpha "Alpha Editor" "Alpha Soft" 2.0 "$today" 60000 \
    https://example.org/alpha
  entry "HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall" \
    B_Beta "Beta Viewer" "Beta Ltd" 1.1 20200102 900 ""
  entry "HKEY_CURRENT_USER\\$uninstall" C_Gamma "Gamma Notes" "" "" "" 3 ""
  entry "HKEY_LOCAL_MACHINE\\$uninstall" D_Delta "Delta Office Suite" Delta 5.0 20190303 2000000 ""
  entry "HKEY_LOCAL_MACHINE\\$uninstall" E_Update "Security Update for Thing (KB123456)" "" "" \
    20230505 2048 ""
} >"$drive_c/varnel-tests/entries.reg"
rm -f "$dir/prefix/dosdevices/z:" "$dir/prefix/dosdevices/z::"
(cd "$drive_c" && timeout -k 10 120 "$dir/bin/wine" regedit /S 'C:\varnel-tests\entries.reg') \
  >/dev/null 2>&1 || die "could not write the Uninstall entries"

VARNEL_WINE_DIR=$dir VARNEL_WINE_TIMEOUT=${VARNEL_GUI_TIMEOUT:-240} \
  bash "$tools/wine-run.sh" "$driver"
