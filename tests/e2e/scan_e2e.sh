#!/usr/bin/env bash
# End-to-end check of `varnel-cli scan` against real installed programs:
#
#   scan_e2e.sh CLI_EXE HELPER_EXE FIXTURE_DIR
#
# HELPER_EXE is e2e_helper.exe (registry snapshots, waiting for an uninstaller's
# whole process tree). In a fresh sandboxed prefix: snapshot the registry and
# the disk, then install the samples one by one, snapshotting after each, so
# every sample's footprint is known item by item. Add hostile per-user
# Uninstall entries, save `list --json`, and scan every sample and every hostile
# entry. Then run each sample's own uninstaller silently (last installed first),
# snapshot again and scan from the saved list record. scan_check.py compares.
# VARNEL_E2E_KEEP=1 keeps the prefix (its wineserver stopped) and the records.
set -uo pipefail

[ $# -eq 3 ] || { echo "usage: $0 CLI_EXE HELPER_EXE FIXTURE_DIR" >&2; exit 2; }
cli=$1
helper=$2
fixtures=$3
label=scan_e2e
timeout_s=${VARNEL_E2E_TIMEOUT:-120}
. "$(dirname "${BASH_SOURCE[0]}")/e2e_common.sh"

e2e_prepare "$fixtures" "$cli" "$helper"
mkdir -p "$work/snap" "$drive_c/varnel-e2e"
cp -f "$fixtures/samples.tsv" "$work/"
# In place before the first snapshot, so they are part of no footprint.
cp -f "$cli" "$drive_c/varnel-cli.exe"
cp -f "$helper" "$drive_c/varnel-e2e-helper.exe"

mapfile -t ids < <(grep -v '^#' "$fixtures/samples.tsv" | grep -v '^$' | cut -f1)
snapshot base
for id in "${ids[@]}"; do
  bash "$e2e_tools/install-fixtures.sh" "$dir" "$fixtures" "$id" >"$work/install-$id.log" 2>&1 \
    || { cat "$work/install-$id.log"; die "$id did not install"; }
  snapshot "installed-$id"
done

# Per-user Uninstall entries whose install location the scan must refuse: name,
# value type, location.
uninstall='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall'
cat >"$work/hostile.tsv" <<'EOF'
Hostile Drive Root	REG_SZ	C:\
Hostile Drive Letter	REG_SZ	C:
Hostile Users Folder	REG_SZ	C:\users\
Hostile Windows Folder	REG_SZ	C:\windows\
Hostile System Folder	REG_SZ	C:\windows\system32
Hostile Windows Macro	REG_SZ	%WINDIR%
Hostile Expandable Macro	REG_EXPAND_SZ	%WINDIR%\
Hostile Dotdot Path	REG_SZ	C:\Program Files\..\windows
EOF
while IFS=$'\t' read -r -u 3 name type location; do
  key="$uninstall\\${name// /}"
  in_prefix reg add "$key" /v DisplayName /d "$name" /f >/dev/null &&
    in_prefix reg add "$key" /v UninstallString /d 'C:\hostile\uninst.exe' /f >/dev/null &&
    in_prefix reg add "$key" /v InstallLocation /t "$type" /d "$location" /f >/dev/null ||
    die "could not add $name"
done 3<"$work/hostile.tsv"

run_cli list list --json
run_cli all list --json --all
cp -f "$work/list.out" "$drive_c/varnel-e2e/list.json"
# The per-user part of the Sync Agent is hidden behind its namesake; its own
# record is scanned from a file holding just that record.
python3 - "$work/all.out" "$drive_c/varnel-e2e/synctray.json" <<'EOF' || die "no record of synctray"
import json, sys
records = [r for r in json.load(open(sys.argv[1], encoding="utf-8"))
           if r.get("keyPath", "").endswith("\\QuillfeatherSyncAgentUser")]
json.dump(records[0], open(sys.argv[2], "w", encoding="utf-8"))
EOF
snapshot prescan

name_of() { awk -F'\t' -v id="$1" '$1 == id { print $8 }' "$fixtures/samples.tsv"; }
scan_sample() {
  local run=$1 id=$2 source=$3
  if [ "$id" = synctray ]; then
    run_cli "$run" scan --record 'C:\varnel-e2e\synctray.json' --json
  elif [ "$source" = record ]; then
    run_cli "$run" scan "$(name_of "$id")" --record 'C:\varnel-e2e\list.json' --json
  else
    run_cli "$run" scan "$(name_of "$id")" --json
  fi
}

for id in "${ids[@]}"; do scan_sample "scan-$id" "$id" live; done
n=0
while IFS=$'\t' read -r -u 3 name _; do
  n=$((n + 1))
  run_cli "hostile-$n" scan "$name" --json
done 3<"$work/hostile.tsv"
run_cli scan-unknown scan 'No Such Program Anywhere' --json
run_cli scan-usage scan
run_cli scan-badopt scan "$(name_of notes)" --json --no-such-option

# Each sample's own uninstaller, silently, last installed first.
for ((i = ${#ids[@]} - 1; i >= 0; i--)); do
  id=${ids[i]}
  line=$(awk -F'\t' -v id="$id" '$1 == id' "$fixtures/samples.tsv")
  IFS=$'\t' read -r _ installer _ _ _ key _ <<<"$line"
  if [[ $installer == *.msi ]]; then
    cmd=(msiexec /x "$key" /qn)
  else
    command=$(python3 - "$work/all.out" "$key" <<'EOF'
import json, sys
for r in json.load(open(sys.argv[1], encoding="utf-8")):
    if r.get("keyPath", "").lower().endswith("\\" + sys.argv[2].lower()):
        print(r["uninstallString"])
        break
EOF
)
    exe=${command#\"}
    exe=${exe%%\"*}
    [ -n "$exe" ] || die "no uninstall command for $id"
    cmd=("$exe" /S)
  fi
  in_prefix 'C:\varnel-e2e-helper.exe' wait-run "${cmd[@]}" >"$work/uninstall-$id.log" 2>&1
  echo $? >"$work/uninstall-$id.rc"
  snapshot "uninstalled-$id"
  scan_sample "rescan-$id" "$id" record
done

python3 "$e2e_here/scan_check.py" "$work"
