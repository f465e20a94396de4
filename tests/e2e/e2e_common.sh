# Shared by the end-to-end scripts; sourced, not run. The caller sets `label`
# (the script's name in messages). VARNEL_E2E_TIMEOUT bounds one Windows command.

e2e_here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
e2e_tools=$(cd "$e2e_here/../../tools" && pwd)
timeout_s=${VARNEL_E2E_TIMEOUT:-120}
. "$e2e_tools/xvfb.sh"

# A failure before the checks counts as one failed check, in the summary form
# that tools/test.sh reads.
die() {
  echo "FAILED $*"
  echo "[  FAILED  ] 1 of 1 checks."
  exit 1
}

# e2e_prepare FIXTURE_DIR CLI_EXE [HELPER_EXE]: brings the samples up to date (unless
# FIXTURE_DIR is empty), makes a fresh sandboxed prefix (sets dir, drive_c and work, the
# record folder; both go when the script ends unless VARNEL_E2E_KEEP=1), starts the display
# and puts the tool at C:\varnel-cli.exe, the helper at C:\varnel-e2e-helper.exe.
e2e_prepare() {
  fixtures=$1
  local exe
  for exe in "${@:2}"; do [ -f "$exe" ] || die "$exe not found"; done
  if [ -n "$fixtures" ]; then
    bash "$e2e_tools/build-fixtures.sh" "$fixtures" >/dev/null || die "the samples could not be built"
  fi
  dir=$(mktemp -d "${TMPDIR:-/tmp}/varnel-$label.XXXXXX")
  work=$dir/record
  trap e2e_cleanup EXIT
  trap 'exit 130' INT TERM
  bash "$e2e_tools/wine-prefix.sh" create "$dir" || die "could not make the prefix"
  drive_c=$dir/prefix/drive_c
  mkdir -p "$work/snap" "$drive_c/varnel-e2e"
  # Without a display, every installer and uninstaller that touches the shell
  # waits seconds for one; a private Xvfb server spares that.
  if [ -z "${DISPLAY:-}" ] && command -v Xvfb >/dev/null; then
    start_xvfb 1024x768 "$work/xvfb.log" && e2e_xvfb_pid=$xvfb_pid
  fi
  cp -f "$2" "$drive_c/varnel-cli.exe"
  if [ $# -ge 3 ]; then cp -f "$3" "$drive_c/varnel-e2e-helper.exe"; fi
  if [ -n "$fixtures" ]; then cp -f "$fixtures/samples.tsv" "$work/"; fi
}

e2e_cleanup() {
  if [ "${VARNEL_E2E_KEEP:-0}" = 1 ]; then
    # A running server would hold the caller's output open.
    "$dir/bin/wineserver" -k >/dev/null 2>&1
    timeout 20 "$dir/bin/wineserver" -w >/dev/null 2>&1
    echo "$label: kept $dir"
  else
    bash "$e2e_tools/wine-prefix.sh" destroy "$dir" >/dev/null 2>&1 || rm -rf "$dir"
  fi
  # Only now: Wine's processes complain when their display goes first.
  if [ -n "${e2e_xvfb_pid:-}" ]; then kill "$e2e_xvfb_pid" 2>/dev/null; fi
}

# Runs a Windows command in the prefix's sandbox from C:\, never with a Z: drive.
in_prefix() {
  rm -f "$dir/prefix/dosdevices/z:" "$dir/prefix/dosdevices/z::"
  (cd "$drive_c" && timeout -k 10 "$timeout_s" "$dir/bin/wine" "$@")
}

# install_samples ID...: the samples, in that order (all of them without an ID).
install_samples() {
  bash "$e2e_tools/install-fixtures.sh" "$dir" "$fixtures" "$@" >>"$work/install.log" 2>&1 ||
    { cat "$work/install.log"; die "the samples $* did not install"; }
}

# run_cli NAME ARGS...: C:\varnel-cli.exe ARGS, its output in work/NAME.out,
# NAME.err and its exit code in NAME.rc.
run_cli() {
  local name=$1
  shift
  in_prefix 'C:\varnel-cli.exe' "$@" >"$work/$name.out" 2>"$work/$name.err"
  echo $? >"$work/$name.rc"
  sed -i 's/\r$//' "$work/$name.out" "$work/$name.err"
}

# name_of ID: the sample's display name.
name_of() { awk -F'\t' -v id="$1" '$1 == id { print $8 }' "$fixtures/samples.tsv"; }

# snapshot NAME: the registry (by the helper) and the disk into work/snap/NAME.reg and
# NAME.disk, for footprint.py.
snapshot() {
  in_prefix 'C:\varnel-e2e-helper.exe' registry "C:\\varnel-e2e\\$1.reg" \
    || die "no registry snapshot $1"
  mv -f "$drive_c/varnel-e2e/$1.reg" "$work/snap/$1.reg"
  python3 "$e2e_here/footprint.py" disk "$drive_c" "$work/snap/$1.disk" || die "no disk snapshot $1"
}
