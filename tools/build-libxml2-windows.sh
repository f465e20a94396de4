#!/usr/bin/env bash
# Cross-builds a static libxml2 for the windows build from Debian's own source
# package, the same version as the host's libxml2-dev, and caches it outside
# the repository. Prints the install folder on its last line.
#
#   build-libxml2-windows.sh [--print-root]
#
# VARNEL_CACHE (default /var/cache/varnel) holds libxml2-<version>-mingw64/.
# A folder there with a .complete stamp is used as it is.
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cache=${VARNEL_CACHE:-/var/cache/varnel}
jobs=${VARNEL_JOBS:-2}

version=$(dpkg-query -W -f='${source:Version}' libxml2-dev 2>/dev/null || true)
[ -n "$version" ] || { echo "build-libxml2-windows: libxml2-dev is not installed (tools/install-deps.sh)" >&2; exit 1; }
root=$cache/libxml2-$version-mingw64

if [ "${1:-}" = --print-root ]; then
  echo "$root"
  exit 0
fi

if [ -f "$root/.complete" ]; then
  echo "$root"
  exit 0
fi

mkdir -p "$cache"
exec 9>"$cache/.libxml2.lock"
flock 9
# Someone else may have finished it while we waited for the lock.
if [ -f "$root/.complete" ]; then
  echo "$root"
  exit 0
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/varnel-libxml2.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
echo "build-libxml2-windows: fetching Debian source libxml2 $version" >&2
# Source entries are needed once, for this build only: add them beside the
# machine's own sources (never editing those) when no configured one has them.
if ! apt-get source --print-uris -qq libxml2 >/dev/null 2>&1; then
  for list in /etc/apt/sources.list.d/*.sources; do
    [ -f "$list" ] && [ "$(basename "$list")" != varnel-deb-src.sources ] || continue
    sed -E 's/^Types:.*/Types: deb-src/' "$list"
    echo
  done >/etc/apt/sources.list.d/varnel-deb-src.sources
  grep -hs '^deb ' /etc/apt/sources.list /etc/apt/sources.list.d/*.list |
    sed 's/^deb /deb-src /' >/etc/apt/sources.list.d/varnel-deb-src.list || true
  apt-get update -qq
fi
if ! apt-get source -qq "libxml2=$version" >apt-source.log 2>&1; then
  # The mirror may have moved on to a newer point release; the host headers
  # then differ only in Debian's patches, so take what it has.
  echo "build-libxml2-windows: $version not on the mirror, taking the newest source" >&2
  apt-get source -qq libxml2 >apt-source.log 2>&1 || { cat apt-source.log >&2; exit 1; }
fi
src=$(find . -maxdepth 1 -type d -name 'libxml2-*' | head -n1)
[ -n "$src" ] || { cat apt-source.log >&2; exit 1; }

# Only what parsing add-on manifests needs: no encodings beyond the built-in
# ones, no compression, no network, no bindings.
cmake -S "$src" -B build -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$repo/cmake/toolchain-mingw64.cmake" \
  -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_PREFIX="$root.partial" \
  -DBUILD_SHARED_LIBS=OFF \
  -DLIBXML2_WITH_ICONV=OFF -DLIBXML2_WITH_ICU=OFF \
  -DLIBXML2_WITH_LZMA=OFF -DLIBXML2_WITH_ZLIB=OFF \
  -DLIBXML2_WITH_PYTHON=OFF -DLIBXML2_WITH_HTTP=OFF -DLIBXML2_WITH_FTP=OFF \
  -DLIBXML2_WITH_MODULES=OFF -DLIBXML2_WITH_PROGRAMS=OFF -DLIBXML2_WITH_TESTS=OFF \
  >configure.log 2>&1 || { cat configure.log >&2; exit 1; }
cmake --build build -j"$jobs" >build.log 2>&1 || { tail -n 50 build.log >&2; exit 1; }
rm -rf "$root.partial"
cmake --install build >install.log 2>&1 || { cat install.log >&2; exit 1; }
[ -f "$root.partial/lib/libxml2.a" ] || { echo "build-libxml2-windows: no libxml2.a was installed" >&2; exit 1; }
echo "$version" >"$root.partial/.complete"
rm -rf "$root"
mv "$root.partial" "$root"
echo "$root"
