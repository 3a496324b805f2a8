#!/usr/bin/env bash
# Installs every Debian package Tessary needs to build, test and run.
# Idempotent: when everything is present it only checks and exits quietly.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libsqlite3-dev qt6-image-formats-plugins
  qt6-multimedia-dev qt6-webengine-dev
  libvips-dev libexiv2-dev libwebp-dev libtiff-dev
  libx11-dev
  libplist-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang-14 libclang-rt-14-dev
  libjpeg-dev
  zlib1g-dev
  xvfb xauth
  sox ccache
  poppler-utils
  desktop-file-utils appstream dpkg-dev fakeroot file man-db
)
if [ "${TESSARY_BENCH_TOOLS:-0}" = 1 ]; then
  packages+=(libvips-tools imagemagick time)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
