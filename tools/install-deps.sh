#!/usr/bin/env bash
# Installs the Debian packages the build and the test bed need; skips what is there.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang libclang-rt-14-dev
  g++-mingw-w64-x86-64-posix mingw-w64-tools
  wine wine64 xvfb xauth x11-utils imagemagick fonts-wine
  googletest libgtest-dev libbenchmark-dev
  nlohmann-json3-dev libxml2-dev libssl-dev
  nsis msitools wixl python3
  dpkg-dev autoconf automake libtool pkg-config
  bubblewrap
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

