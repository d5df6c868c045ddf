#!/bin/sh
# Installs the Debian 12 packages the project builds and tests with. Idempotent; as root, or
# as a user (through sudo, or su where a fresh machine has no sudo).
set -eu
PKGS="build-essential cmake ninja-build ccache pkg-config clang libclang-rt-14-dev
 clang-format libcups2-dev cups-client cups-ipp-utils cups-ppdc avahi-daemon dbus libxml2-dev libxml2-utils libicu-dev uuid-dev
 googletest libgtest-dev libgmock-dev libbenchmark-dev
 libplist-dev libplist-utils
 libfontconfig-dev libharfbuzz-dev libcairo2-dev libpango1.0-dev libgdk-pixbuf-2.0-0 fonts-dejavu-core
 ghostscript poppler-utils fonts-liberation fonts-noto-core
 qt6-base-dev qt6-tools-dev libqt6opengl6-dev libxkbcommon-dev libqpdf-dev qpdf xvfb xauth librsvg2-bin netpbm libgdk-pixbuf-2.0-dev"
missing=""
for p in $PKGS; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
export DEBIAN_FRONTEND=noninteractive
cmd="apt-get update -qq && apt-get install -y -qq --no-install-recommends$missing"
if [ "$(id -u)" -eq 0 ]; then
  sh -c "$cmd"
elif command -v sudo >/dev/null 2>&1; then
  sudo sh -c "$cmd"
else
  # A fresh Debian machine has no sudo: ask for the root password once.
  echo "Installing as root:$missing"
  su root -c "DEBIAN_FRONTEND=noninteractive $cmd"
fi
