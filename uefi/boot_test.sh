#!/bin/sh
# Boots OVMF under QEMU (TCG, no display, console on the serial port) with a
# FAT folder holding surveyor.efi, the test driver and a startup script, and
# checks what the driver prints:
#   1. loaded alone, it finds no file driver and its load fails;
#   2. after the test driver (a file driver table of version 8), it reports
#      the version mismatch.
# Exit 77 (skipped) when QEMU or OVMF is missing.
set -u
SURVEYOR_EFI=$1
TEST_DRIVER_EFI=$2
QEMU=${QEMU:-qemu-system-x86_64}
OVMF_DIR=${OVMF_DIR:-/usr/share/OVMF}
LIMIT=${BOOT_TEST_TIMEOUT:-300}

command -v "$QEMU" >/dev/null 2>&1 || { echo "skipped: $QEMU not found"; exit 77; }
CODE=""
for Pair in "OVMF_CODE_4M.fd OVMF_VARS_4M.fd" "OVMF_CODE.fd OVMF_VARS.fd"; do
  set -- $Pair
  if [ -f "$OVMF_DIR/$1" ] && [ -f "$OVMF_DIR/$2" ]; then CODE=$OVMF_DIR/$1; VARS=$OVMF_DIR/$2; break; fi
done
[ -n "$CODE" ] || { echo "skipped: no OVMF firmware in $OVMF_DIR"; exit 77; }
[ -f "$SURVEYOR_EFI" ] && [ -f "$TEST_DRIVER_EFI" ] || { echo "missing image"; exit 1; }

WORK=$(mktemp -d "${TMPDIR:-/tmp}/surveyor-boot-XXXXXX")
trap 'rm -rf "$WORK"' EXIT INT TERM
mkdir "$WORK/fat"
cp "$SURVEYOR_EFI" "$WORK/fat/surveyor.efi"
cp "$TEST_DRIVER_EFI" "$WORK/fat/testfd.efi"
cp "$VARS" "$WORK/vars.fd"
printf '%s\r\n' '@echo -off' 'echo BOOT-TEST-BEGIN' 'fs0:' 'load fs0:\surveyor.efi' 'echo SCENARIO-2' \
  'load fs0:\testfd.efi' 'load fs0:\surveyor.efi' 'echo BOOT-TEST-END' 'reset -s' > "$WORK/fat/startup.nsh"

Start=$(date +%s)
timeout --foreground -k 5 "$LIMIT" "$QEMU" -machine q35,accel=tcg -m 256 -nographic -no-reboot -net none \
  -drive if=pflash,format=raw,readonly=on,file="$CODE" \
  -drive if=pflash,format=raw,file="$WORK/vars.fd" \
  -drive file=fat:rw:"$WORK/fat",format=raw,media=disk \
  -serial mon:stdio -monitor none </dev/null >"$WORK/serial.log" 2>&1
Status=$?
End=$(date +%s)
# The serial console carries escape sequences and "\r": keep the plain text.
tr -d '\r' <"$WORK/serial.log" | sed 's/\x1b\[[0-9;]*[A-Za-z]//g' >"$WORK/serial.txt"
echo "QEMU exit status $Status after $((End - Start)) s"

echo "---- driver lines ----"
grep -i "surveyor\|load\|SCENARIO" "$WORK/serial.txt" | grep -v "^Shell>" | head -20
echo "----"
Fail=0
expect() {
  if grep -q -- "$1" "$WORK/serial.txt"; then echo "ok: $1"; else echo "MISSING: $1"; Fail=1; fi
}
# Scenario 1: the lines between the start marker and the second scenario.
sed -n '/^BOOT-TEST-BEGIN/,/^SCENARIO-2/p' "$WORK/serial.txt" >"$WORK/one.txt"
sed -n '/^SCENARIO-2/,/^BOOT-TEST-END/p' "$WORK/serial.txt" >"$WORK/two.txt"
if grep -q "Surveyor: no file driver found!" "$WORK/one.txt" && grep -qi "load error" "$WORK/one.txt"; then
  echo "ok: scenario 1 (no file driver, load error)"
else
  echo "FAILED: scenario 1"; Fail=1
fi
if grep -q "Surveyor: file driver is of different version 8 VS 9" "$WORK/two.txt"; then
  echo "ok: scenario 2 (file driver of version 8)"
else
  echo "FAILED: scenario 2"; Fail=1
fi
expect "BOOT-TEST-END"
if [ $Fail -ne 0 ]; then
  echo "---- serial output ----"
  tail -n 60 "$WORK/serial.txt"
fi
exit $Fail
