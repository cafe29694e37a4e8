#!/bin/sh
# Installs what building and testing need, and nothing that is already there:
# Debian packages through apt-get, then the pinned page libraries through npm ci.
# 'setup.sh fuzz' installs only what the fuzz targets need (clang, libFuzzer, Qt Core).
set -eu
cd "$(dirname "$0")/.."

# Libraries and data: checked by package. qttranslations5-l10n holds Qt's own
# German texts (standard buttons, the command-line help).
PACKAGES="qtbase5-dev qtwebengine5-dev libqt5webchannel5-dev libqt5svg5-dev qttools5-dev qttools5-dev-tools
libqt5sql5-sqlite libqt5sql5-psql libpq-dev postgresql libpoppler-qt5-dev libsqlite3-dev libssl-dev
xvfb xauth fonts-dejavu-core
xdotool openbox x11-utils dbus at-spi2-core
qttranslations5-l10n"
# Tools: checked by command, since they may come from elsewhere than Debian.
# desktop-file-validate checks the installed desktop entry; make package needs
# dpkg-shlibdeps and file.
TOOLS="g++:g++ make:make cmake:cmake pkg-config:pkg-config xvfb-run:xvfb npm:npm python3:python3
desktop-file-validate:desktop-file-utils dpkg-shlibdeps:dpkg-dev file:file"
PAGE_LIBRARIES=yes
if [ "${1:-}" = fuzz ]; then
  PACKAGES="qtbase5-dev clang libclang-rt-dev"
  TOOLS="make:make cmake:cmake"
  PAGE_LIBRARIES=no
fi

missing=""
for p in $PACKAGES; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing="$missing $p"
  fi
done
for t in $TOOLS; do
  command -v "${t%%:*}" >/dev/null 2>&1 || missing="$missing ${t#*:}"
done

if [ -n "$missing" ]; then
  echo "setup: installing$missing"
  SUDO=""
  if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || { echo "setup: need root or sudo to install:$missing" >&2; exit 1; }
    SUDO=sudo
  fi
  $SUDO apt-get update -q
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends $missing
fi

# npm ci only when the installed tree does not match the lock file.
if [ "$PAGE_LIBRARIES" = yes ] && ! cmp -s package-lock.json node_modules/.package-lock.json.orvex 2>/dev/null; then
  npm ci --no-audit --no-fund
  cp package-lock.json node_modules/.package-lock.json.orvex
fi
