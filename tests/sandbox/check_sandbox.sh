#!/usr/bin/env bash
# Proves that a program run by tools/wine-run.sh changes nothing outside the
# prefix's folder: check_sandbox.sh PROBE_EXE
#
# The probe writes to the shell folders and tries every way out we know of
# toward a canary folder that lies outside the prefix. Then the disk is read:
# the shell-folder files must be inside the prefix, the canary and the real
# HOME's Wine-facing folders must be as they were, and no file carrying the
# run's token may exist outside the prefix.
#
# A second run in a prefix made with VARNEL_SANDBOX_OFF=1 (and a stand-in HOME)
# must be caught leaking by every one of the same checks; otherwise the checks
# could be passing because they look in the wrong place.
set -euo pipefail

probe=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
tools=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../tools" && pwd)
real_home=$HOME

work=$(mktemp -d "${TMPDIR:-/tmp}/bed-sandbox-check.XXXXXX")
own_dir=""
negative_dir=""
cleanup() {
  local d
  for d in "$own_dir" "$negative_dir"; do
    if [ -n "$d" ]; then
      HOME=$work/standin-home bash "$tools/wine-prefix.sh" destroy "$d" || true
    fi
  done
  rm -rf "$work"
}
trap cleanup EXIT

# The folders under HOME that an unsandboxed Wine writes to or links to.
wine_facing=(Desktop Documents Downloads Music Pictures Videos Templates .wine
  .local/share/applications .local/share/icons .local/share/mime
  .local/share/desktop-directories .config/menus)

snapshot() {  # snapshot ROOT [SUBPATH...]: names, kinds, sizes and times below ROOT
  local root=$1 p
  shift
  if [ $# -eq 0 ]; then
    find "$root" -printf '%P %y %s %T@\n' | sort
  else
    for p in "$@"; do
      if [ -e "$root/$p" ] || [ -L "$root/$p" ]; then
        find "$root/$p" -printf "$p/%P %y %s %T@\n" | sort
      else
        echo "$p absent"
      fi
    done
  fi
}

# HOME itself by names only (other programs may touch what is already there),
# and the Wine-facing folders in full.
snapshot_home() {
  find "$1" -mindepth 1 -maxdepth 1 -printf '%f %y\n' | sort
  snapshot "$1" "${wine_facing[@]}"
}

make_canary() {
  mkdir -p "$1/sub"
  echo keep >"$1/victim.txt"
  echo keep >"$1/sub/nested.txt"
}

failures=0
checks=0
leaks=()  # names of the checks that failed in the current run

check() {  # check NAME COMMAND...
  checks=$((checks + 1))
  if "${@:2}"; then
    return 0
  fi
  leaks+=("$1")
  return 0
}

# Run the probe in prefix DIR with HOME=$home_of_run; canary in $canary.
run_probe() {
  local dir=$1 token=$2 home_of_run=$3 canary=$4 out=$5
  VARNEL_WINE_DIR=$dir HOME=$home_of_run VARNEL_WINE_TIMEOUT=60 \
    bash "$tools/wine-run.sh" "$probe" "$token" "$canary" >"$out" 2>&1
}

folder_inside_prefix() {  # the report says the write worked and the file is a real file in the prefix
  local out=$1 dir=$2 token=$3 name=$4 hits f
  grep -qx "folder $name ok 0" "$out" || return 1
  hits=$(find "$dir/prefix/drive_c" -name "$token-$name.txt" -type f)
  [ "$(printf '%s\n' "$hits" | grep -c .)" = 1 ] || return 1
  f=$(readlink -f "$hits")
  # No link on the way: the resolved path is the path found, and it is in the prefix.
  [ "$f" = "$hits" ] && case $f in "$dir/prefix/"*) return 0 ;; *) return 1 ;; esac
}

escape_refused() { ! grep -q "^escape $2 ok" "$1"; }

no_token_outside() {  # no file named after the token anywhere we can think of, outside DIR
  local dir=$1 token=$2 home_of_run=$3 canary=$4
  [ -z "$(find "$canary" "$home_of_run" "$real_home" /tmp -maxdepth 3 -name "*$token*" -not -path "$dir/*" 2>/dev/null)" ]
}

verify_run() {  # verify_run DIR TOKEN HOME CANARY OUT CANARY_BEFORE HOME_BEFORE
  local dir=$1 token=$2 home_of_run=$3 canary=$4 out=$5 n
  leaks=()
  for n in desktop documents downloads music pictures videos templates appdata localappdata commondesktop temp; do
    check "folder-$n" folder_inside_prefix "$out" "$dir" "$token" "$n"
  done
  for n in z-drive unix-dos unix-nt unix-slash unix-mkdir; do
    check "escape-$n" escape_refused "$out" "$n"
  done
  # Wine reports a delete as done even when the kernel refused it: only the disk tells.
  check "canary-unchanged" test "$(snapshot "$canary")" = "$6"
  check "home-unchanged" test "$(snapshot_home "$home_of_run")" = "$7"
  check "no-token-outside" no_token_outside "$dir" "$token" "$home_of_run" "$canary"
}

# --- the real sandbox --------------------------------------------------------
if [ -n "${VARNEL_WINE_DIR:-}" ]; then
  dir=$VARNEL_WINE_DIR
else
  own_dir=$work/prefix
  dir=$own_dir
  bash "$tools/wine-prefix.sh" create "$dir"
fi
canary=$work/canary
make_canary "$canary"
token=varnel-probe-$$-$RANDOM
canary_before=$(snapshot "$canary")
home_before=$(snapshot_home "$real_home")
rc=0
run_probe "$dir" "$token" "$real_home" "$canary" "$work/probe.out" || rc=$?
checks=$((checks + 1))
if [ "$rc" != 0 ]; then
  echo "sandbox: probe exited with $rc"
  failures=$((failures + 1))
fi
verify_run "$dir" "$token" "$real_home" "$canary" "$work/probe.out" "$canary_before" "$home_before"
if [ ${#leaks[@]} -gt 0 ]; then
  echo "sandbox: LEAK in the sandboxed prefix: ${leaks[*]}"
  failures=$((failures + ${#leaks[@]}))
  sed 's/^/  probe: /' "$work/probe.out"
fi
if [ -n "$own_dir" ]; then
  bash "$tools/wine-prefix.sh" destroy "$own_dir"
  own_dir=""
fi

# --- negative control: the same checks must see an open prefix leak ----------
standin=$work/standin-home
ncanary=$work/canary-negative
mkdir -p "$standin"
make_canary "$ncanary"
negative_dir=$work/open-prefix
# Nothing of an open Wine may reach the real HOME or XDG folders either.
export XDG_CONFIG_HOME=$standin/.config XDG_DATA_HOME=$standin/.local/share XDG_CACHE_HOME=$standin/.cache
HOME=$standin VARNEL_SANDBOX_OFF=1 bash "$tools/wine-prefix.sh" create "$negative_dir"
# Wine links the shell folders to HOME through its mount manager service; when
# that service answers late on a busy machine it makes plain folders instead.
# The control needs the open layout Wine normally makes, so finish it by hand.
for user_dir in "$negative_dir"/prefix/drive_c/users/*; do
  [ "$(basename "$user_dir")" = Public ] && continue
  for f in Desktop Documents Downloads Music Pictures Videos AppData/Roaming/Microsoft/Windows/Templates; do
    if [ ! -L "$user_dir/$f" ]; then
      rm -rf "${user_dir:?}/$f"
      ln -s "$standin" "$user_dir/$f"
    fi
  done
done
ntoken=varnel-probe-open-$$-$RANDOM
ncanary_before=$(snapshot "$ncanary")
nhome_before=$(snapshot_home "$standin")
run_probe "$negative_dir" "$ntoken" "$standin" "$ncanary" "$work/open.out" || true
counted=$checks
verify_run "$negative_dir" "$ntoken" "$standin" "$ncanary" "$work/open.out" "$ncanary_before" "$nhome_before"
# Which checks an open prefix must trip. Folders Wine does not link to HOME
# (AppData, Temp, Public) stay in the prefix either way.
expected=(folder-desktop folder-documents folder-downloads folder-music folder-pictures folder-videos
  folder-templates escape-unix-dos escape-unix-nt escape-unix-slash escape-unix-mkdir escape-z-drive
  canary-unchanged home-unchanged no-token-outside)
checks=$counted
missed=0
for e in "${expected[@]}"; do
  checks=$((checks + 1))
  if ! printf '%s\n' "${leaks[@]}" | grep -qx -- "$e"; then
    echo "sandbox: the check $e did not notice an open prefix"
    missed=$((missed + 1))
  fi
done
if [ "$missed" -gt 0 ]; then
  failures=$((failures + missed))
  echo "sandbox: links in the open prefix:"
  find "$negative_dir/prefix" -type l -printf '  %p -> %l\n'
  sed 's/^/  probe: /' "$work/open.out"
fi
HOME=$standin bash "$tools/wine-prefix.sh" destroy "$negative_dir"
negative_dir=""

if [ "$failures" -gt 0 ]; then
  echo "[  FAILED  ] $failures of $checks sandbox checks."
  exit 1
fi
echo "[  PASSED  ] $checks checks."
