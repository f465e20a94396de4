#!/usr/bin/env bash
# Installs the sample programs silently into a prefix made by wine-prefix.sh:
#
#   install-fixtures.sh PREFIX_DIR FIXTURE_DIR [ID...]
#
# FIXTURE_DIR is what build-fixtures.sh made; given IDs (first column of
# samples.tsv), only those samples are installed. The installers are copied to
# C:\varnel-fixtures\ and run in the order of samples.tsv (NSIS with /S, the MSI
# with msiexec /qn); `wine` returns only when the installer process has ended.
# Then every program is started once with --first-run, as a user would, so it
# leaves its own data beside what its installer wrote. Finally each Uninstall
# key must be in its root and view (and, under HKLM, not in the other view)
# with the expected DisplayName; the exit status is 1 otherwise.
set -euo pipefail

die() { echo "install-fixtures: $*" >&2; exit 2; }

[ $# -ge 2 ] || die "usage: $0 PREFIX_DIR FIXTURE_DIR [ID...]"
dir=$1
fixtures=$2
shift 2
only=("$@")
[ -f "$dir/env" ] || die "$dir is not a prefix made by wine-prefix.sh"
[ -f "$fixtures/samples.tsv" ] || die "$fixtures has no samples.tsv (run tools/build-fixtures.sh)"
dir=$(cd "$dir" && pwd -P)
drive_c=$dir/prefix/drive_c
timeout_s=${VARNEL_FIXTURE_TIMEOUT:-120}
uninstall='Software\Microsoft\Windows\CurrentVersion\Uninstall'

# Runs a Windows command in the prefix's sandbox from C:\, never with a Z: drive.
in_prefix() {
  rm -f "$dir/prefix/dosdevices/z:" "$dir/prefix/dosdevices/z::"
  (cd "$drive_c" && timeout -k 10 "$timeout_s" "$dir/bin/wine" "$@")
}

# The data of one value, or nothing; CR and the header lines stripped.
reg_value() {
  local key=$1 view=$2 name=$3
  { in_prefix reg query "$key" /v "$name" "/reg:$view" 2>/dev/null || true; } | tr -d '\r' |
    awk -v name="$name" -F '    ' '$2 == name { print $4 }'
}

# {6BA67843-0D45-...} -> 34876AB6...: the first three groups reversed, the
# digits of each later byte swapped.
packed_guid() {
  local hex=${1//[\{\}-]/} out="" i
  for i in 7 6 5 4 3 2 1 0 11 10 9 8 15 14 13 12; do out+=${hex:i:1}; done
  for ((i = 16; i < 32; i += 2)); do out+=${hex:i+1:1}${hex:i:1}; done
  printf '%s\n' "$out"
}

mkdir -p "$drive_c/varnel-fixtures"
failed=0
mapfile -t listed < <(grep -v '^#' "$fixtures/samples.tsv" | grep -v '^$')
samples=()
for line in "${listed[@]}"; do
  if [ ${#only[@]} -eq 0 ] || [[ " ${only[*]} " == *" ${line%%$'\t'*} "* ]]; then
    samples+=("$line")
  fi
done
[ ${#samples[@]} -gt 0 ] || die "samples.tsv lists no samples${only[*]:+ named ${only[*]}}"

for line in "${samples[@]}"; do
  IFS=$'\t' read -r id installer _ <<<"$line"
  [ -f "$fixtures/$installer" ] || die "$fixtures/$installer is missing"
  cp -f "$fixtures/$installer" "$drive_c/varnel-fixtures/"
  case $installer in
    *.msi) cmd=(msiexec /i "C:\\varnel-fixtures\\$installer" /qn) ;;
    *) cmd=("C:\\varnel-fixtures\\$installer" /S) ;;
  esac
  if in_prefix "${cmd[@]}"; then
    echo "installed $id"
  else
    echo "install-fixtures: $installer failed with exit code $?" >&2
    failed=1
  fi
done

for line in "${samples[@]}"; do
  IFS=$'\t' read -r id installer _ root view key program name _ <<<"$line"
  full="$root\\$uninstall\\$key"
  display=$(reg_value "$full" "$view" DisplayName)
  if [ -z "$display" ]; then
    echo "install-fixtures: $id: no $full with a DisplayName in the $view-bit view" >&2
    failed=1
    continue
  elif [ "$display" != "$name" ]; then
    echo "install-fixtures: $id: $full has DisplayName '$display', expected '$name'" >&2
    failed=1
    continue
  fi
  if [ "$root" = HKLM ]; then
    other=$((view == 64 ? 32 : 64))
    if in_prefix reg query "$full" "/reg:$other" >/dev/null 2>&1; then
      echo "install-fixtures: $id: $full is in the $other-bit view too" >&2
      failed=1
    fi
  fi
  if [[ $installer == *.msi ]]; then
    # The Installer keys are named by the packed product code.
    products="HKLM\\Software\\Classes\\Installer\\Products\\$(packed_guid "$key")"
    if [ -z "$(reg_value "$products" 64 ProductIcon)" ]; then
      echo "install-fixtures: $id: no ProductIcon under $products" >&2
      failed=1
    fi
  fi
  location=$(reg_value "$full" "$view" InstallLocation)
  if [ -z "$location" ]; then
    echo "install-fixtures: $id: $full has no InstallLocation" >&2
    failed=1
    continue
  fi
  if in_prefix "${location%\\}\\$program" --first-run >/dev/null; then
    echo "registered $id: $full ($view-bit view), first run done"
  else
    echo "install-fixtures: $id: ${location%\\}\\$program --first-run failed" >&2
    failed=1
  fi
done

exit "$failed"
