#!/bin/sh
# Builds everything a boot needs and writes a bootable disk image: GPT with
# one FAT32 EFI system partition holding the launcher as
# \EFI\BOOT\BOOTX64.EFI, environment.efi and surveyor.efi beside it,
# \efi\kivora\... (resource file, icons, an example surveyor.cfg) and the
# bundled sample files, plus the contents of each --add folder at the root.
# Made with mtools, dosfstools and sgdisk only (no loop mounts, no
# privileges); every file gets one fixed date, so the same sources give the
# same image.
#
#   scripts/make-image.sh [--add DIR]... [--size MIB] [OUT]   (default build/surveyor-usb.img, 64 MiB)
set -eu
Root=$(cd "$(dirname "$0")/.." && pwd)
Out="$Root/build/surveyor-usb.img"
SizeMib=64
Adds=""
while [ $# -gt 0 ]; do
  case "$1" in
    --add) [ $# -ge 2 ] && [ -d "$2" ] || { echo "make-image: --add needs a folder" >&2; exit 2; }
           Adds="$Adds
$(cd "$2" && pwd)"; shift 2 ;;
    --size) SizeMib=$2; shift 2 ;;
    -h|--help) sed -n '2,11p' "$0"; exit 0 ;;
    -*) echo "make-image: unknown option $1" >&2; exit 2 ;;
    *) Out=$1; shift ;;
  esac
done
[ "$SizeMib" -ge 40 ] 2>/dev/null || { echo "make-image: FAT32 needs at least 40 MiB" >&2; exit 2; }

"$Root/scripts/setup.sh"
Jobs=$(nproc 2>/dev/null || echo 2)
cmake -S "$Root" -B "$Root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$Root/build" -j"$Jobs" --target environment_efi launcher_efi surveyor_efi surveyor_assets >/dev/null

set --
while IFS= read -r Dir; do
  if [ -n "$Dir" ]; then set -- "$@" "$Dir"; fi
done <<ADDS
$Adds
ADDS
exec "$Root/uefi/write_image.sh" "$Root/build" "$Out" "$SizeMib" "$@"
