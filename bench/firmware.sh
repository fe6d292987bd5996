#!/bin/sh
# Figures of the file manager on firmware, under QEMU's TCG emulation (no
# KVM), from one boot of a test image:
# - the time from QEMU's start to "Surveyor: ready";
# - the time of the frame after each key (input handling, painting, flushing
#   the changed rectangles to the screen), from the environment's own timing
#   lines on the serial port (surveyor.cfg "timing = on"):
#   moving the selection, a window filling the screen (Alt+F10), and entering
#   a folder of 4096 files (listing it on FAT and showing it);
# - the sizes of the images.
#
#   bench/firmware.sh
set -eu
Root=$(cd "$(dirname "$0")/.." && pwd)
Work=$(mktemp -d "${TMPDIR:-/tmp}/surveyor-bench-XXXXXX")
trap 'rm -rf "$Work"' EXIT INT TERM

mkdir -p "$Work/add/EFI/kivora" "$Work/add/many"
printf 'timing = on\n' >"$Work/add/EFI/kivora/surveyor.cfg"
I=1
while [ $I -le 4096 ]; do
  printf 'file %d\n' $I >"$Work/add/many/file$I.txt"
  I=$((I + 1))
done
"$Root/scripts/make-image.sh" --add "$Work/add" --size 96 "$Work/bench.img" >/dev/null

# Keys, one frame each: five moves of the selection, the window filling the
# screen and back, then "m" (the folder "many") and Enter into it.
Keys="down down down down down alt+f10 alt+f10 m ret"
"$Root/scripts/boot.sh" --image "$Work/bench.img" --headless --serial "$Work/serial.log" \
  --keys "$Keys" --shot "$Work/last.png" | tee "$Work/boot.txt"

echo
grep "ready after" "$Work/boot.txt" | sed 's/^boot: /time from QEMU start to /'
tr -d '\r' <"$Work/serial.log" | awk -v keys="$Keys" '
  BEGIN { n = split (keys, key, " ") }
  /Surveyor: ready/ { ready = 1; next }
  ready && /Surveyor: frame/ {
    k++
    if (k <= n) printf "%-14s %s\n", "key " key[k], substr ($0, index ($0, "frame") + 6)
  }'
echo
for Image in BOOTX64.EFI environment.efi surveyor.efi surveyor-usb.img; do
  printf '%-20s %10d bytes\n' "$Image" "$(stat -c %s "$Root/build/$Image")"
done
