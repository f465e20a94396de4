#!/usr/bin/env bash
# Builds the sample programs and their installers (tests/fixtures/):
#
#   build-fixtures.sh OUT_DIR
#
# OUT_DIR receives the installers named in tests/fixtures/samples.tsv and a
# copy of that table; OUT_DIR/stage/ keeps the intermediate files. What is
# up to date is not built again. The last line printed is OUT_DIR, absolute.
set -euo pipefail

die() { echo "build-fixtures: $*" >&2; exit 2; }

[ $# -eq 1 ] || die "usage: $0 OUT_DIR"
repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
src=$repo/tests/fixtures
mkdir -p "$1"
out=$(cd "$1" && pwd -P)
# Tests that run side by side build into the same folder: one at a time, the
# later one then finds everything up to date.
exec 9>"$out/.build.lock"
flock 9

for tool in x86_64-w64-mingw32-gcc x86_64-w64-mingw32-windres x86_64-w64-mingw32-widl makensis \
  wixl msiinfo python3; do
  command -v "$tool" >/dev/null || die "$tool not found (tools/install-deps.sh installs it)"
done

# True when TARGET is missing or something in INPUTS (files or folders) is newer.
stale() {
  local target=$1
  shift
  [ -e "$target" ] || return 0
  [ -n "$(find "$@" -newer "$target" -print -quit)" ]
}

# A word list of made-up words from a fixed seed: the same bytes on every build,
# large enough that the sample's EstimatedSize is not a rounding artefact.
make_dictionary() {
  python3 - "$1" <<'EOF'
import sys
state = 20240611
letters = "etaoinshrdlucmfwypvbgkqjxz"
words = []
for _ in range(40000):
    word = ""
    for _ in range(3 + state % 8):
        state = (state * 1103515245 + 12345) % 2**31
        word += letters[(state >> 8) % 13 if state % 3 else (state >> 8) % 26]
    words.append(word)
with open(sys.argv[1], "w", newline="\r\n") as f:
    f.write("\n".join(sorted(set(words))) + "\n")
EOF
}

build_program() {
  local stage=$1 program=$2 name=$3 publisher=$4 version=$5 v1 v2 v3 v4
  # Bare words: sample_app.c and sample_app.rc make them strings.
  local defines=(-DAPP_NAME="$name" -DAPP_VENDOR="$publisher" -DAPP_VERSION="$version"
    -DAPP_EXE="$program")
  IFS=. read -r v1 v2 v3 v4 <<<"$version"
  x86_64-w64-mingw32-windres "${defines[@]}" \
    -DAPP_VERSION_BIN="${v1:-0},${v2:-0},${v3:-0},${v4:-0}" \
    -I "$stage" "$src/app/sample_app.rc" -O coff -o "$stage/app.res"
  x86_64-w64-mingw32-gcc -municode -O2 -s -Wall -Wextra -Wpedantic -Werror "${defines[@]}" \
    "$src/app/sample_app.c" "$stage/app.res" -o "$stage/$program.tmp" -lshell32
  mv -f "$stage/$program.tmp" "$stage/$program"
}

# Quillfeather Notes' in-process server (also its Control Panel applet) and its
# type library.
build_notes_server() {
  local stage=$1
  x86_64-w64-mingw32-gcc -shared -O2 -s -Wall -Wextra -Wpedantic -Werror \
    "$src/app/sample_shell.c" -o "$stage/QuillNotesShell.dll.tmp" -lole32
  mv -f "$stage/QuillNotesShell.dll.tmp" "$stage/QuillNotesShell.dll"
  x86_64-w64-mingw32-widl --win64 -t -o "$stage/QuillNotes.tlb.tmp" "$src/app/quill_notes.idl"
  mv -f "$stage/QuillNotes.tlb.tmp" "$stage/QuillNotes.tlb"
}

build_msi() {
  local stage=$1 source=$2 target=$3 product_code=$4 code
  cp -p "$src/$source" "$stage/payload/"
  # wixl looks for the files a .wxs names beside the .wxs.
  (cd "$stage/payload" && wixl -a x64 -o "$target.tmp" "$(basename "$source")")
  code=$(msiinfo export "$target.tmp" Property | tr -d '\r' |
    awk -F'\t' '$1 == "ProductCode" { print $2 }')
  if [ "$code" != "$product_code" ]; then
    rm -f "$target.tmp"
    die "$source has product code '$code', samples.tsv says '$product_code'"
  fi
  mv -f "$target.tmp" "$target"
}

built=0
# The table on its own descriptor: the tools in the loop keep the real stdin.
while IFS=$'\t' read -r -u 3 id installer source _root _view key program name publisher version \
  colour; do
  case $id in '' | '#'*) continue ;; esac
  stage=$out/stage/$id
  mkdir -p "$stage"

  if stale "$stage/app.ico" "$src/app/make_icon.py" "$src/samples.tsv"; then
    python3 "$src/app/make_icon.py" "$stage/app.ico.tmp" "$colour"
    mv -f "$stage/app.ico.tmp" "$stage/app.ico"
  fi
  if stale "$stage/$program" "$src/app" "$src/samples.tsv" "$stage/app.ico"; then
    build_program "$stage" "$program" "$name" "$publisher" "$version"
  fi
  extras=()
  if [ "$id" = notes ]; then
    if [ ! -f "$stage/en-US.dic" ]; then
      make_dictionary "$stage/en-US.dic.tmp"
      mv -f "$stage/en-US.dic.tmp" "$stage/en-US.dic"
    fi
    if stale "$stage/QuillNotes.tlb" "$src/app/sample_shell.c" "$src/app/quill_notes.idl"; then
      build_notes_server "$stage"
    fi
    extras=("$stage/en-US.dic" "$stage/QuillNotesShell.dll" "$stage/QuillNotes.tlb")
  fi

  target=$out/$installer
  if stale "$target" "$src/$source" "$src/nsis/sample_common.nsh" "$src/payload/$id" \
    "$src/payload/shared" "$stage/$program" "$stage/app.ico" ${extras[@]+"${extras[@]}"}; then
    # The payload folder is assembled afresh so that files removed from the
    # sources do not linger in it; -p keeps their times for the checks above.
    rm -rf "$stage/payload"
    mkdir -p "$stage/payload"
    if [ -d "$src/payload/$id" ]; then cp -Rp "$src/payload/$id/." "$stage/payload/"; fi
    # What several samples install alike (the spelling engine in Common Files).
    cp -Rp "$src/payload/shared" "$stage/payload/"
    cp -p "$stage/$program" "$stage/app.ico" ${extras[@]+"${extras[@]}"} "$stage/payload/"
    case $source in
      *.nsi)
        makensis -V2 -DPAYLOAD="$stage/payload" -DOUTFILE="$target.tmp" "$src/$source" >/dev/null
        mv -f "$target.tmp" "$target"
        ;;
      *.wxs) build_msi "$stage" "$source" "$target" "$key" ;;
      *) die "$id: unknown installer source $source" ;;
    esac
    echo "built $installer"
    built=$((built + 1))
  fi
done 3<"$src/samples.tsv"

cmp -s "$src/samples.tsv" "$out/samples.tsv" || cp -f "$src/samples.tsv" "$out/samples.tsv"
echo "$built installer(s) built, the others were up to date"
echo "$out"
