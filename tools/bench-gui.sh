#!/usr/bin/env bash
# Times VarnelUninstaller.exe under Wine with a thousand programs installed:
#
#   tools/bench-gui.sh [--entries N] [--rounds R]
#
# Makes a throwaway prefix, writes N synthetic Uninstall entries (a third each
# in HKLM 64-bit, HKLM 32-bit and HKCU) with their program folders, then runs
# varnel_gui_bench R times with cold caches (SoftwareCache.ini and the icon
# cache deleted), then R times with the caches the last run left (warm). Each
# line gives the time from process start to the visible main window and to the
# painted list, the list's time after the window showed, the GUI thread's
# longest reply to a message while the list was filled and during the analysis
# pass, the pass's end, the program's peak working set and the machine's load;
# the last lines set the fastest warm pass against the fastest cold one.
# Runs on $DISPLAY when set, else on a private Xvfb server. Uses the Windows
# build of the test command (build/bed-windows). A busy machine skews the
# figures, so run it on an idle one.
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VARNEL_BUILD_ROOT:-$repo/build}/bed-windows
entries=1000
rounds=2
while [ $# -gt 0 ]; do
  case $1 in
    --entries) entries=${2:?--entries needs a number}; shift ;;
    --rounds) rounds=${2:?--rounds needs a number}; shift ;;
    *) echo "usage: tools/bench-gui.sh [--entries N] [--rounds R]" >&2; exit 2 ;;
  esac
  shift
done

bash "$repo/tools/install-deps.sh" >/dev/null
libxml2_root=$(bash "$repo/tools/build-libxml2-windows.sh" | tail -n1)
cmake --preset windows -S "$repo" -B "$build" -DVARNEL_LIBXML2_ROOT="$libxml2_root" >/dev/null
cmake --build "$build" -j2 --target VarnelUninstaller varnel_gui_bench >/dev/null

prefix=$(mktemp -d "${TMPDIR:-/tmp}/bench-gui.XXXXXX")
xvfb_pid=""
cleanup() {
  bash "$repo/tools/wine-prefix.sh" destroy "$prefix" >/dev/null 2>&1 || true
  if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null || true; fi
}
trap cleanup EXIT
if [ -z "${DISPLAY:-}" ]; then
  . "$repo/tools/xvfb.sh"
  start_xvfb 1280x1024 || { echo "bench-gui: could not start Xvfb" >&2; exit 1; }
fi

bash "$repo/tools/wine-prefix.sh" create "$prefix" >/dev/null
drive_c=$prefix/prefix/drive_c
in_prefix() { (cd "$drive_c" && "$prefix/bin/wine" "$@"); }

app_dir="$drive_c/Program Files/Varnel Uninstaller"
mkdir -p "$app_dir"
cp "$build/app/VarnelUninstaller.exe" "$app_dir/"
cp -r "$build/app/Toolbox_Language" "$app_dir/"
cp "$build/bench/varnel_gui_bench.exe" "$drive_c/"

# Every program's app.exe is a link to one real executable with an icon, so
# the analysis extracts real icons; every second entry has no EstimatedSize,
# so its folder is walked.
python3 - "$drive_c" "$entries" <<'EOF'
import os, sys
drive_c, entries = sys.argv[1], int(sys.argv[2])
icon_exe = os.path.join(drive_c, "Program Files", "Varnel Uninstaller", "VarnelUninstaller.exe")
places = [r"HKEY_LOCAL_MACHINE\Software", r"HKEY_LOCAL_MACHINE\Software\Wow6432Node",
          r"HKEY_CURRENT_USER\Software"]
lines = ["Windows Registry Editor Version 5.00", ""]
for i in range(entries):
    # Fifty programs a vendor folder: Wine finds a name by listing its folder.
    rel = "VarnelBench\\Vendor%d\\App%04d" % (i // 50, i)
    folder = os.path.join(drive_c, *rel.split("\\"))
    for sub in ("", "data", "lib", os.path.join("lib", "plugins"), "locale"):
        os.makedirs(os.path.join(folder, sub), exist_ok=True)
        if sub:
            for f in range(4):
                with open(os.path.join(folder, sub, "file%d.dat" % f), "wb") as out:
                    out.write(b"\x5a" * (1024 + 37 * i))
    os.link(icon_exe, os.path.join(folder, "app.exe"))
    with open(os.path.join(folder, "uninst.exe"), "wb") as out:
        out.write(b"\x5a" * (1024 + 37 * i))
    win = "C:\\\\" + rel.replace("\\", "\\\\")
    lines.append(r"[%s\Microsoft\Windows\CurrentVersion\Uninstall\VarnelBench%04d]" %
                 (places[i % 3], i))
    lines += ['"DisplayName"="Bench Program %04d"' % i,
              '"DisplayVersion"="1.%d"' % i,
              '"Publisher"="Bench Publisher %d"' % (i % 17),
              '"UninstallString"="\\"%s\\\\uninst.exe\\" /S"' % win,
              '"DisplayIcon"="%s\\\\app.exe,0"' % win,
              '"InstallLocation"="%s"' % win,
              '"InstallDate"="2024%02d15"' % (i % 12 + 1),
              '"URLInfoAbout"="https://bench.example/%04d"' % i]
    if i % 2 == 0:
        lines.append('"EstimatedSize"=dword:%08x' % (3 + i))
    lines.append("")
with open(os.path.join(drive_c, "entries.reg"), "w", newline="\r\n") as out:
    out.write("\n".join(lines) + "\n")
EOF
in_prefix regedit /S 'C:\entries.reg'

user=$(ls "$drive_c/users" | grep -v -x Public | head -n1)
cache_win="C:\\users\\$user\\AppData\\Roaming\\Varnel\\Varnel Uninstaller\\SoftwareCache.ini"
cache_unix="$drive_c/users/$user/AppData/Roaming/Varnel/Varnel Uninstaller/SoftwareCache.ini"

run() {
  local line
  line=$(in_prefix 'C:\varnel_gui_bench.exe' 'C:\Program Files\Varnel Uninstaller\VarnelUninstaller.exe' \
    "$entries" "$cache_win" | tr -d '\r')
  printf '%-5s %s (load %s)\n' "$1" "$line" "$(cut -d' ' -f1-3 /proc/loadavg)"
  results+=("$1 $line")
}

# An unreported first start: Wine's and the program's files then come from
# the page cache in every timed run alike.
in_prefix 'C:\varnel_gui_bench.exe' 'C:\Program Files\Varnel Uninstaller\VarnelUninstaller.exe' \
  "$entries" "$cache_win" >/dev/null
results=()
for _ in $(seq "$rounds"); do
  rm -f "$cache_unix" "$(dirname "$cache_unix")/SoftwareIcons.dat"
  run cold
done
for _ in $(seq "$rounds"); do run warm; done

# The pass counts from the visible window: the start before it is the same
# in both.
fastest() {
  printf '%s\n' "${results[@]}" | grep "^$1 " | grep -o '[0-9]* ms after the window' |
    cut -d' ' -f1 | sort -n | head -n1
}
cold=$(fastest cold)
warm=$(fastest warm)
if [ -n "$cold" ] && [ -n "$warm" ] && [ "$cold" -gt 0 ]; then
  awk -v c="$cold" -v w="$warm" \
    'BEGIN { printf "analysis in the window: cold %d ms, warm %d ms, warm/cold %.2f\n", c, w, w / c }'
fi
peak=$(printf '%s\n' "${results[@]}" | grep -o 'peak working set [0-9.]*' | cut -d' ' -f4 |
  sort -g | tail -n1)
if [ -n "$peak" ]; then echo "peak working set, largest of the runs: $peak MB"; fi
