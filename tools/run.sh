#!/usr/bin/env bash
# Builds VarnelUninstaller.exe and starts it under Wine in a demo prefix with
# the sample programs installed, then saves a screenshot of the main window:
#
#   tools/run.sh [--fresh] [--dpi 150]
#
# The demo prefix lives in build/demo/ and is made, with the samples
# installed, on the first run only; --fresh makes it anew. On $DISPLAY the
# program runs on that screen and stays open until it is closed; without a
# display it runs in a Wine virtual desktop on a private Xvfb server, and is
# closed after the screenshot. --dpi 150 adds a second run at 150 % scaling.
# Screenshots go to build/screenshots/ (VARNEL_SHOT_DIR), their paths printed.
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
builds=${VARNEL_BUILD_ROOT:-$repo/build}
win_dir=$builds/bed-windows
demo=$builds/demo
fixtures=$builds/demo-fixtures

fresh=0
dpi=""
while [ $# -gt 0 ]; do
  case $1 in
    --fresh) fresh=1 ;;
    --dpi) dpi=${2:?--dpi needs a percentage}; shift ;;
    *) echo "usage: tools/run.sh [--fresh] [--dpi 150]" >&2; exit 2 ;;
  esac
  shift
done
shots=${VARNEL_SHOT_DIR:-$builds/screenshots}

step() { echo "run: $*" >&2; }

step "dependencies"
bash "$repo/tools/install-deps.sh" >/dev/null
libxml2_root=$(bash "$repo/tools/build-libxml2-windows.sh" | tail -n1)

step "building VarnelUninstaller.exe"
cmake --preset windows -S "$repo" -B "$win_dir" -DVARNEL_LIBXML2_ROOT="$libxml2_root" >/dev/null
cmake --build "$win_dir" -j2 --target VarnelUninstaller varnel-gui-wait >/dev/null

xvfb_pid=""
cleanup() {
  if [ -f "$demo/env" ]; then "$demo/bin/wineserver" -k >/dev/null 2>&1 || true; fi
  if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null || true; fi
}
trap cleanup EXIT
own_display=0
if [ -z "${DISPLAY:-}" ]; then
  own_display=1
  # Room for the largest desktop below (the 150 % one is half as large again).
  scale=$(( ${dpi:-100} > 100 ? ${dpi:-100} : 100 ))
  . "$repo/tools/xvfb.sh"
  start_xvfb $((1280 * scale / 100))x$((960 * scale / 100)) ||
    { echo "run: could not start Xvfb" >&2; exit 1; }
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

# Debian's Wine looks for its own fonts in /usr/share/fonts, not where
# fonts-wine puts them; without Marlett the frame buttons show as "0 1 r".
fonts="$demo/prefix/drive_c/windows/Fonts"
[ -f "$fonts/marlett.ttf" ] || cp /usr/share/wine/fonts/marlett.ttf "$fonts/"

app='C:\Program Files\Varnel Uninstaller'
app_unix="$demo/prefix/drive_c/Program Files/Varnel Uninstaller"
mkdir -p "$app_unix"
cp -f "$win_dir/app/VarnelUninstaller.exe" "$app_unix/"
cp -rf "$win_dir/app/Toolbox_Language" "$app_unix/"
cp -f "$win_dir/bench/varnel-gui-wait.exe" "$demo/prefix/drive_c/varnel-gui-wait.exe"
mkdir -p "$shots"

in_prefix() {
  rm -f "$demo/prefix/dosdevices/z:" "$demo/prefix/dosdevices/z::"
  (cd "$demo/prefix/drive_c" && "$demo/bin/wine" "$@")
}

# One start of the program at LogPixels $1 (96 = 100 %); the screenshot to $2.
# The desktop grows with the scaling, as a user's screen at 150 % is larger:
# the main window is 940x640 at 100 %, so 1410x960 at 150 %.
show() {
  local pixels=$1 shot=$2 pid
  local size=$((1280 * pixels / 96))x$((960 * pixels / 96))
  in_prefix reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$pixels" /f >/dev/null 2>&1
  in_prefix reg add 'HKCU\Software\Wine\Explorer\Desktops' /v Default /d "$size" /f >/dev/null 2>&1
  "$demo/bin/wineserver" -k >/dev/null 2>&1 || true
  "$demo/bin/wineserver" -w >/dev/null 2>&1 || true
  if [ "$own_display" = 1 ]; then
    # Without a window manager only Wine's virtual desktop draws frames.
    # The same desktop the prefix's settings give every process, so that the
    # waiting probe sees the window.
    in_prefix explorer "/desktop=Default,$size" "$app\VarnelUninstaller.exe" >/dev/null 2>&1 &
  else
    in_prefix "$app\VarnelUninstaller.exe" >/dev/null 2>&1 &
  fi
  pid=$!
  step "waiting for the main window to paint its list"
  if ! rows=$(in_prefix 'C:\varnel-gui-wait.exe' 90 | tr -d '\r'); then
    echo "run: the main window did not paint its list; the screenshot shows what there is" >&2
    rows="?"
  fi
  if [ "$own_display" = 1 ]; then
    import -window root -crop "$size+0+0" +repage "$shot"
  else
    import -window root "$shot"
  fi
  step "screenshot ($rows programs listed, LogPixels $pixels): $shot"
  echo "$shot"
  if [ "$own_display" = 1 ]; then
    "$demo/bin/wineserver" -k >/dev/null 2>&1 || true
    wait "$pid" 2>/dev/null || true
  fi
}

# Without a window manager only Wine's virtual desktop draws window frames;
# every process of the prefix (the waiting probe too) then shares that desktop.
if [ "$own_display" = 1 ]; then
  in_prefix reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d Default /f >/dev/null 2>&1
else
  in_prefix reg delete 'HKCU\Software\Wine\Explorer' /v Desktop /f >/dev/null 2>&1 || true
fi

show 96 "$shots/main-window.png"
if [ -n "$dpi" ]; then
  [ "$own_display" = 1 ] || wait
  show $((96 * dpi / 100)) "$shots/main-window-${dpi}.png"
  in_prefix reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 96 /f >/dev/null 2>&1
fi
if [ "$own_display" = 0 ]; then
  step "VarnelUninstaller.exe runs on $DISPLAY; close its window to end"
  wait
fi
