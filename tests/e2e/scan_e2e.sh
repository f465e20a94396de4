#!/usr/bin/env bash
# End-to-end check of `varnel-cli list` and `scan` against real installed programs:
#
#   scan_e2e.sh CLI_EXE HELPER_EXE FIXTURE_DIR
#
# HELPER_EXE is e2e_helper.exe (registry snapshots, waiting for an uninstaller's
# whole process tree). In a fresh sandboxed prefix: snapshot the registry and
# the disk, then install the samples one by one, snapshotting after each, so
# every sample's footprint is known item by item (the user's date format and
# decimal separator differ from Wine's defaults). Save `list --json` (list_check.py
# compares it with data/list_expected.json) and scan every sample. Then run each
# sample's own uninstaller silently (last installed first), snapshot again and
# scan from the saved list record. scan_check.py compares.
# VARNEL_E2E_KEEP=1 keeps the prefix (its wineserver stopped) and the records.
set -uo pipefail

[ $# -eq 3 ] || { echo "usage: $0 CLI_EXE HELPER_EXE FIXTURE_DIR" >&2; exit 2; }
label=scan_e2e
. "$(dirname "${BASH_SOURCE[0]}")/e2e_common.sh"
e2e_prepare "$3" "$1" "$2"

# Day before month and a comma for decimals: a list that merely copies Wine's
# en-US defaults cannot pass.
for setting in sShortDate=dd.MM.yyyy sDate=. 'sDecimal=,' sThousand=.; do
  in_prefix reg add 'HKCU\Control Panel\International' /v "${setting%%=*}" /d "${setting#*=}" /f \
    >/dev/null || die "could not set ${setting%%=*}"
done
mapfile -t ids < <(grep -v '^#' "$fixtures/samples.tsv" | grep -v '^$' | cut -f1)
snapshot base
date +%d.%m.%Y >"$work/dates.txt" # the install day, on either side of midnight
for id in "${ids[@]}"; do
  install_samples "$id"
  snapshot "installed-$id"
done
date +%d.%m.%Y >>"$work/dates.txt"

run_cli list list --json
run_cli list2 list --json
run_cli all list --json --all
cp -f "$work/list.out" "$drive_c/varnel-e2e/list.json"
# record KEY: the --all record of that Uninstall key, as JSON.
record() {
  python3 -c 'import json, sys
print(json.dumps(next(r for r in json.load(open(sys.argv[1], encoding="utf-8"))
                      if r["keyPath"].lower().endswith("\\" + sys.argv[2].lower()))))' \
    "$work/all.out" "$1"
}
# The per-user part of the Sync Agent is hidden behind its namesake; its own
# record is scanned from a file holding just that record.
record QuillfeatherSyncAgentUser >"$drive_c/varnel-e2e/synctray.json" || die "no record of synctray"
snapshot prescan

scan_sample() {
  if [ "$2" = synctray ]; then
    run_cli "$1" scan --record 'C:\varnel-e2e\synctray.json' --json
  else
    run_cli "$1" scan "$(name_of "$2")" "${@:3}" --json
  fi
}
for id in "${ids[@]}"; do scan_sample "scan-$id" "$id"; done

# Each sample's own uninstaller, silently, last installed first.
for ((i = ${#ids[@]} - 1; i >= 0; i--)); do
  id=${ids[i]}
  IFS=$'\t' read -r _ installer _ _ _ key _ < <(awk -F'\t' -v id="$id" '$1 == id' "$fixtures/samples.tsv")
  if [[ $installer == *.msi ]]; then
    cmd=(msiexec /x "$key" /qn)
  else
    exe=$(record "$key" | python3 -c 'import json, sys; print(json.load(sys.stdin)["uninstallString"].lstrip("\"").split("\"")[0])')
    [ -n "$exe" ] || die "no uninstall command for $id"
    cmd=("$exe" /S)
  fi
  in_prefix 'C:\varnel-e2e-helper.exe' wait-run "${cmd[@]}" >"$work/uninstall-$id.log" 2>&1
  echo $? >"$work/uninstall-$id.rc"
  snapshot "uninstalled-$id"
  scan_sample "rescan-$id" "$id" --record 'C:\varnel-e2e\list.json'
done

python3 "$e2e_here/scan_check.py" "$work" "$drive_c"
