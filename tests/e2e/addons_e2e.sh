#!/usr/bin/env bash
# End-to-end check of browser toolbars and add-ons:
#
#   addons_e2e.sh CLI_EXE
#
# In a fresh sandboxed prefix, tests/fixtures/browsers/make_profiles.sh gives the user a
# registered toolbar, a Firefox profile with a legacy and a packed toolbar add-on and a
# Chrome profile with a toolbar extension. The tool lists them (`extensions`, `list`), then
# uninstalls the two Firefox add-ons and the Chrome extension; the browsers' folders are
# listed (path and checksum of every file) before and after each uninstall, so
# addons_check.py can tell that each run took only its add-on's file. No samples are
# installed. VARNEL_E2E_KEEP=1 keeps the prefix.
set -uo pipefail

[ $# -eq 1 ] || { echo "usage: $0 CLI_EXE" >&2; exit 2; }
label=addons_e2e
. "$(dirname "${BASH_SOURCE[0]}")/e2e_common.sh"
e2e_prepare "" "$1"
bash "$e2e_here/../fixtures/browsers/make_profiles.sh" "$dir" >"$work/profiles.log" 2>&1 ||
  { cat "$work/profiles.log"; die "the browser profiles could not be made"; }

# Every file of the browsers' data folders with its checksum, paths relative to C:\.
browser_files() {
  (cd "$drive_c" && find users/*/AppData/Roaming/Mozilla users/*/AppData/Local/Google -type f \
    -exec md5sum {} + | sort -k2) >"$work/$1.files"
}

run_cli extensions extensions --json
run_cli list list --json
browser_files before
run_cli rdf uninstall 'Fixture Rdf Toolbar (Firefox)' --json
browser_files rdf
run_cli xpi uninstall 'Fixture Xpi Toolbar (Firefox)' --json
browser_files xpi
run_cli chrome uninstall 'Fixture Chrome Toolbar (Chrome)' --json
browser_files chrome
(cd "$drive_c" && find users/*/AppData/Roaming/Varnel -path '*Backup*' -type f -exec md5sum {} + |
  sort -k2) >"$work/backup.files"

python3 "$e2e_here/addons_check.py" "$work"
