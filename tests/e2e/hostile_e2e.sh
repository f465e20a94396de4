#!/usr/bin/env bash
# End-to-end check of hostile uninstall entries against the console tool:
#
#   hostile_e2e.sh CLI_EXE HELPER_EXE FIXTURE_DIR
#
# In one fresh sandboxed prefix: install the NSIS 64-bit sample, then add per-user Uninstall
# entries (anyone can write one) whose install location names a place no program owns: the
# drive root (also as "C:" and "C:\/"), the Users, Windows and system folders (also through
# "\\?\", macros and ".."), the roaming application data as %APPDATA% (REG_EXPAND_SZ), Program
# Files long and in its 8.3 form, and the sample's folder through "plugins\..". Their
# uninstallers do nothing ("cmd /c exit 0") or are missing.
# Snapshot registry and disk (HELPER_EXE is e2e_helper.exe), `scan` each entry, then
# `uninstall --advanced --delete` each, snapshot again. hostile_check.py checks that no scan
# offered a file, a folder or a key of Windows and that nothing was deleted but the entries'
# own keys, the sample's files included. VARNEL_E2E_KEEP=1 keeps the prefix and the records.
set -uo pipefail

[ $# -eq 3 ] || { echo "usage: $0 CLI_EXE HELPER_EXE FIXTURE_DIR" >&2; exit 2; }
label=hostile_e2e
. "$(dirname "${BASH_SOURCE[0]}")/e2e_common.sh"
e2e_prepare "$3" "$1" "$2"
install_samples notes

# The sample's folder, found on the disk (C:\-relative), and the 8.3 form of Program Files
# as this Windows makes it.
program=$(awk -F'\t' '$1 == "notes" { print $7 }' "$fixtures/samples.tsv")
found=$(cd "$drive_c" && find "Program Files" -name "$program" -print -quit)
[ -n "$found" ] || die "no $program on the disk"
sample='C:\'$(dirname "$found" | tr / '\\')
short=$(in_prefix cmd /c 'dir /x C:\' | tr -d '\r' |
  sed -nE 's/.*<DIR> +([^ ]+~[^ ]+) +Program Files$/C:\\\1/p')
[ -n "$short" ] || die "no short form of Program Files"

# data/hostile.tsv: name, value type, install location, uninstall command; filled in here and
# kept in the record, then all imported at once: one Windows start instead of three per entry.
python3 - "$e2e_here/data/hostile.tsv" "$work/hostile.tsv" "$drive_c/varnel-e2e/hostile.reg" \
  "$short" "$sample" <<'EOF' || die "no .reg file"
import string, sys
rows = string.Template(open(sys.argv[1], encoding="utf-8").read()).substitute(
    short=sys.argv[4], sample=sys.argv[5], run_nothing=r"C:\windows\system32\cmd.exe /c exit 0")
open(sys.argv[2], "w", encoding="utf-8").write(rows)
def text(s):
    return '"' + s.replace("\\", "\\\\").replace('"', '\\"') + '"'
lines = ["Windows Registry Editor Version 5.00", ""]
for row in rows.splitlines():
    name, kind, location, command = row.split("\t")
    lines.append("[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                 + name.replace(" ", "") + "]")
    lines.append('"DisplayName"=' + text(name))
    lines.append('"UninstallString"=' + text(command))
    if kind == "REG_EXPAND_SZ":
        data = (location + "\0").encode("utf-16-le")
        lines.append('"InstallLocation"=hex(2):' + ",".join(f"{b:02x}" for b in data))
    else:
        lines.append('"InstallLocation"=' + text(location))
    lines.append("")
open(sys.argv[3], "w", encoding="utf-16").write("\r\n".join(lines) + "\r\n")
EOF
in_prefix reg import 'C:\varnel-e2e\hostile.reg' >"$work/import.log" 2>&1 || die "reg import failed"

snapshot before
mapfile -t names < <(cut -f1 "$work/hostile.tsv")
for n in "${!names[@]}"; do run_cli "scan-$((n + 1))" scan "${names[n]}" --json; done
for n in "${!names[@]}"; do
  run_cli "uninstall-$((n + 1))" uninstall "${names[n]}" --advanced --delete --json
done
snapshot after

python3 "$e2e_here/hostile_check.py" "$work" "$sample"
