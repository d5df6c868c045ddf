#!/bin/sh
# Installs the Debian 12 packages the project builds and tests with. Idempotent; run as root.
set -eu
PKGS="build-essential cmake ninja-build ccache pkg-config clang libclang-rt-14-dev
 libcups2-dev cups-client cups-ipp-utils cups-ppdc avahi-daemon dbus libxml2-dev libxml2-utils libicu-dev uuid-dev
 googletest libgtest-dev libgmock-dev libbenchmark-dev
 libplist-dev libplist-utils
 libfontconfig-dev libharfbuzz-dev libcairo2-dev libpango1.0-dev fonts-dejavu-core
 ghostscript poppler-utils fonts-liberation fonts-noto-core"
missing=""
for p in $PKGS; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
# shellcheck disable=SC2086
$SUDO apt-get install -y -qq --no-install-recommends $missing
