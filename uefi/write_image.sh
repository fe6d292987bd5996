#!/bin/sh
# Writes the bootable disk image from a build folder (scripts/make-image.sh
# builds first and calls this; so does the build's surveyor_image target).
#
#   uefi/write_image.sh BUILD OUT SIZE_MIB [ADD_DIR]...
set -eu
Build=$1
Out=$2
SizeMib=$3
shift 3

Work=$(mktemp -d "${TMPDIR:-/tmp}/surveyor-image-XXXXXX")
trap 'rm -rf "$Work"' EXIT INT TERM

# The files of the partition, staged with one date.
Stage="$Work/stage"
mkdir -p "$Stage/EFI/BOOT" "$Stage/EFI/kivora"
cp "$Build/BOOTX64.EFI" "$Build/environment.efi" "$Build/surveyor.efi" "$Stage/EFI/BOOT/"
cp -R "$Build/system/efi/kivora/." "$Stage/EFI/kivora/"
cat >"$Stage/EFI/kivora/surveyor.cfg" <<'CFG'
# The comparison of a disk with its backups, by volume labels: the disk to
# check is shown as drive C:, and the context menu of a file or folder there
# compares it with the same path on the two backups.
# source = DATA
# compare1 = BACKUP
# compare2 = OLDBACKUP
# The time of each frame on the serial port, for measurements:
# timing = on
CFG
cp -R "$Build/sample/." "$Stage/"
for Dir in "$@"; do cp -R "$Dir/." "$Stage/"; done
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
