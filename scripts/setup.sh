#!/bin/sh
# Installs the Debian packages the project needs (once: nothing is done when
# they are all present). Runs apt-get as root, through sudo when needed.
# Recommended packages are left out: everything used is named here (xauth,
# for one, is only a recommendation of xvfb, and xvfb-run needs it).
set -eu

PACKAGES="build-essential cmake g++ clang libclang-rt-14-dev libgtest-dev libgmock-dev libbenchmark-dev
gnu-efi ovmf qemu-system-x86 mtools dosfstools gdisk python3 libstb-dev libjpeg-dev libpng-dev libsdl2-dev unifont
xvfb xauth rsync"

Missing=""
for Package in $PACKAGES; do
  if ! dpkg-query -W -f='${Status}' "$Package" 2>/dev/null | grep -q "install ok installed"; then
    Missing="$Missing $Package"
  fi
done
[ -z "$Missing" ] && exit 0

echo "Installing:$Missing"
if [ "$(id -u)" -eq 0 ]; then
  Sudo=""
elif command -v sudo >/dev/null 2>&1; then
  Sudo="sudo"
else
  echo "setup: these packages are missing and I am not root:$Missing" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
$Sudo apt-get update
# shellcheck disable=SC2086
$Sudo apt-get install -y --no-install-recommends $Missing
