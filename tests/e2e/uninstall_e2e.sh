#!/usr/bin/env bash
# End-to-end check of `varnel-cli uninstall` with real uninstallers:
#
#   uninstall_e2e.sh CLI_EXE HELPER_EXE FIXTURE_DIR
#
# In a fresh sandboxed prefix: install the NSIS 32-bit and MSI samples, then the NSIS 64-bit
# one (snapshots of registry and disk before, between and after), add a per-user entry whose
# uninstaller ends and leaves it listed and one whose uninstaller has no quiet form, then
# uninstall through the tool: the NSIS 64-bit sample with its leftovers deleted (snapshot),
# then put back with `restore latest` (snapshot). Right after each uninstall returns, the
# script records whether the program's files are still there and which processes run
# (HELPER_EXE is e2e_helper.exe), so uninstall_check.py can tell that the tool waited for
# the uninstaller and everything it started. VARNEL_E2E_KEEP=1 keeps the prefix.
set -uo pipefail

[ $# -eq 3 ] || { echo "usage: $0 CLI_EXE HELPER_EXE FIXTURE_DIR" >&2; exit 2; }
label=uninstall_e2e
. "$(dirname "${BASH_SOURCE[0]}")/e2e_common.sh"
e2e_prepare "$3" "$1" "$2"
# The other samples first, then notes, each step snapshotted: notes' footprint is what
# its installer added, and everything else must outlive its cleanup.
snapshot base
install_samples sync ledger
snapshot others
install_samples notes
snapshot installed

# Stubborn Tool's uninstaller ends with code 5 and leaves its entry; Plain Tool's is a plain
# program (a copy of cmd.exe) that no quiet form is known for.
uninstall='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall'
mkdir -p "$drive_c/tools"
cp -f "$drive_c/windows/system32/cmd.exe" "$drive_c/tools/uninstall.exe" || die "no cmd.exe to copy"
add_entry() {
  in_prefix reg add "$uninstall\\$1" /v DisplayName /d "$2" /f >/dev/null &&
    in_prefix reg add "$uninstall\\$1" /v UninstallString /d "$3" /f >/dev/null ||
    die "could not add $2"
}
add_entry StubbornTool 'Stubborn Tool' 'C:\windows\system32\cmd.exe /c exit 5'
add_entry PlainTool 'Plain Tool' 'C:\tools\uninstall.exe'

run_cli list list --json

processes() { in_prefix 'C:\varnel-e2e-helper.exe' processes | tr -d '\r' >"$work/$1.processes"; }
# The programs' files left (paths relative to C:\), taken from the host at once, then the
# processes.
aftermath() {
  (cd "$drive_c" && find "Program Files" "Program Files (x86)" -type f 2>/dev/null) >"$work/$1.files"
  processes "$1"
}

processes before
# Notes with its leftovers: deleted through the guard, then put back from the backup. Its
# Internet Explorer toolbar is listed on its own and has no uninstaller: it goes with Notes,
# or its folder, Notes' own, would count as another program's.
run_cli notes uninstall "$(name_of notes)" "$(name_of notes) Web Clipper" --quiet --advanced \
  --delete --json
aftermath notes
snapshot cleaned
run_cli restore restore latest --json
snapshot restored
run_cli pair uninstall "$(name_of sync)" "$(name_of ledger)" --quiet --json
aftermath pair
run_cli stubborn uninstall 'Stubborn Tool'
run_cli plain uninstall 'Plain Tool' --quiet

python3 "$e2e_here/uninstall_check.py" "$work" "$drive_c"
