#!/bin/sh
# Writes a bootable disk image: GPT with one FAT32 EFI system partition
# holding the launcher as \EFI\BOOT\BOOTX64.EFI, environment.efi and
# surveyor.efi beside it, \efi\kivora\... (resource file, icons, an example
# surveyor.cfg) and the bundled sample files, plus the contents of each
# --add folder at the root. Built with mtools, dosfstools and sgdisk only (no
# loop mounts, no privileges). Every file gets the same fixed date, so the
# same sources give the same image.
#
#   scripts/make-image.sh [--add DIR]... [--size MIB] [OUT]   (default build/surveyor-usb.img, 64 MiB)
set -eu
Root=$(cd "$(dirname "$0")/.." && pwd)
Out="$Root/build/surveyor-usb.img"
SizeMib=64
Adds=""
while [ $# -gt 0 ]; do
  case "$1" in
    --add) [ $# -ge 2 ] || { echo "make-image: --add needs a folder" >&2; exit 2; }
           [ -d "$2" ] || { echo "make-image: not a folder: $2" >&2; exit 2; }
           Adds="$Adds
$(cd "$2" && pwd)"; shift 2 ;;
    --size) SizeMib=$2; shift 2 ;;
    -h|--help) sed -n '2,11p' "$0"; exit 0 ;;
    -*) echo "make-image: unknown option $1" >&2; exit 2 ;;
    *) Out=$1; shift ;;
  esac
done
[ "$SizeMib" -ge 40 ] || { echo "make-image: FAT32 needs at least 40 MiB" >&2; exit 2; }

"$Root/scripts/setup.sh"
Jobs=$(nproc 2>/dev/null || echo 2)
cmake -S "$Root" -B "$Root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$Root/build" -j"$Jobs" --target environment_efi launcher_efi surveyor_efi surveyor_assets >/dev/null

Work=$(mktemp -d "${TMPDIR:-/tmp}/surveyor-image-XXXXXX")
trap 'rm -rf "$Work"' EXIT INT TERM

# The files of the partition, staged with one date.
Stage="$Work/stage"
mkdir -p "$Stage/EFI/BOOT" "$Stage/EFI/kivora"
cp "$Root/build/BOOTX64.EFI" "$Root/build/environment.efi" "$Root/build/surveyor.efi" "$Stage/EFI/BOOT/"
cp -R "$Root/build/system/efi/kivora/." "$Stage/EFI/kivora/"
cat >"$Stage/EFI/kivora/surveyor.cfg" <<'CFG'
# The comparison volumes of the file manager, by volume label: the context
# menu of a file compares it with the same path on these two volumes.
# compare1 = BACKUP
# compare2 = OLDBACKUP
CFG
cp -R "$Root/build/sample/." "$Stage/"
printf '%s\n' "$Adds" | while IFS= read -r Dir; do
  if [ -n "$Dir" ]; then cp -R "$Dir/." "$Stage/"; fi
done
find "$Stage" -exec touch -h -d "2026-01-02 03:04:05" {} +

# The partition: 1 MiB in, to the end of the disk less the backup GPT.
PartMib=$((SizeMib - 2))
Part="$Work/part.img"
mkfs.fat -F 32 -n SURVEYOR -i 53555256 -C "$Part" $((PartMib * 1024)) >/dev/null
(cd "$Stage" && for Entry in * .[!.]*; do
  [ -e "$Entry" ] || continue
  MTOOLS_NO_VFAT=0 mcopy -i "$Part" -s -m -Q "$Entry" ::/
done)

# The disk: GPT, the partition as an EFI system partition, then its bytes.
mkdir -p "$(dirname "$Out")"
rm -f "$Out"
truncate -s "${SizeMib}M" "$Out"
sgdisk --clear --new=1:2048:+"${PartMib}M" --typecode=1:EF00 --change-name=1:SURVEYOR \
  --disk-guid=53555256-4559-4f52-8000-000000000001 --partition-guid=1:53555256-4559-4f52-8000-000000000002 \
  "$Out" >/dev/null
dd if="$Part" of="$Out" bs=1M seek=1 conv=notrunc status=none
echo "$Out"
