#!/usr/bin/env bash
# End-to-end check of `varnel-cli list` against real installed programs:
#
#   list_e2e.sh CLI_EXE FIXTURE_DIR
#
# Brings the samples in FIXTURE_DIR up to date (tools/build-fixtures.sh), makes
# a fresh sandboxed prefix, gives its user a short date format and a decimal
# separator that differ from Wine's defaults, installs the samples, copies the
# tool to C:\ and runs it there, records what the installers wrote to the
# registry, and lets list_check.py compare the two. VARNEL_E2E_KEEP=1 keeps
# the prefix (its wineserver stopped) and the recorded files for a look afterwards.
set -uo pipefail

[ $# -eq 2 ] || { echo "usage: $0 CLI_EXE FIXTURE_DIR" >&2; exit 2; }
cli=$1
fixtures=$2
label=list_e2e
timeout_s=${VARNEL_E2E_TIMEOUT:-120}
. "$(dirname "${BASH_SOURCE[0]}")/e2e_common.sh"
here=$e2e_here
tools=$e2e_tools

[ -f "$cli" ] || die "$cli not found"
bash "$tools/build-fixtures.sh" "$fixtures" || die "the samples could not be built"

e2e_make_prefix
e2e_start_display
mkdir -p "$work/reg"

# Day before month and a comma for decimals: output that merely copies Wine's
# en-US defaults cannot pass.
for setting in sShortDate=dd.MM.yyyy sDate=. 'sDecimal=,' sThousand=.; do
  in_prefix reg add 'HKCU\Control Panel\International' /v "${setting%%=*}" /d "${setting#*=}" /f \
    >/dev/null || die "could not set ${setting%%=*}"
done

bash "$tools/install-fixtures.sh" "$dir" "$fixtures" || die "the samples did not install"

# What the installers wrote, in both views; a key missing from a view leaves an empty file.
uninstall='Software\Microsoft\Windows\CurrentVersion\Uninstall'
cp -f "$fixtures/samples.tsv" "$work/"
while IFS=$'\t' read -r -u 3 id _ _ root _ key _; do
  case $id in '' | '#'*) continue ;; esac
  for view in 32 64; do
    in_prefix reg query "$root\\$uninstall\\$key" "/reg:$view" 2>/dev/null | tr -d '\r' \
      >"$work/reg/$id.$view.txt"
  done
done 3<"$fixtures/samples.tsv"
in_prefix reg query 'HKCU\Control Panel\International' | tr -d '\r' >"$work/international.txt"
in_prefix reg query 'HKLM\Software\Classes\Installer\Products' /s /reg:64 2>/dev/null | tr -d '\r' \
  >"$work/installer-products.txt"

cp -f "$cli" "$drive_c/varnel-cli.exe"
run_cli list list --json
run_cli list2 list --json
run_cli all list --json --all
run_cli badopt list --json --no-such-option

python3 "$here/list_check.py" "$work" "$drive_c"
