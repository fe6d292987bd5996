#!/bin/sh
# Boots a Surveyor disk image in QEMU with OVMF: in a window when there is a
# display, without one with --headless. Waits for the launcher's
# "Surveyor: ready", sends the keys, waits until the screen settles and saves
# it; headless, it then powers the machine off (after "Surveyor: done" when
# --wait-done is given). Exit status 0 when the file manager was shown (and,
# with --wait-done, ended).
#
#   scripts/boot.sh [--image IMG] [--headless] [--vars FILE] [--disk IMG]...
#                   [--keys 'KEYS']... [--plug IMG]... [--shot FILE.png]...
#                   [--wait-done] [--serial FILE]
#
# KEYS are QEMU key names (qcodes) separated by spaces, combinations joined
# with '+': 'down down ret ctrl+c alt+f'. Several --keys and --shot options
# run in the order given; so does --plug, which plugs a disk image in as a
# USB stick while the file manager runs and waits until it has become a
# volume. --vars keeps the UEFI variable store in FILE between boots (it is
# made from OVMF's empty store the first time).
# --disk adds a further disk (a second volume). SURVEYOR_QEMU_ACCEL picks
# QEMU's accelerator (default tcg); SURVEYOR_BOOT_TIMEOUT the seconds to wait
# for the desktop (default 180).
set -eu
Root=$(cd "$(dirname "$0")/.." && pwd)
Image="$Root/build/surveyor-usb.img"
Headless=0
Vars=""
Disks=""
Steps=""
WaitDone=0
SerialCopy=""
while [ $# -gt 0 ]; do
  case "$1" in
    --image) Image=$2; shift 2 ;;
    --headless) Headless=1; shift ;;
    --vars) Vars=$2; shift 2 ;;
    --disk) Disks="$Disks $2"; shift 2 ;;
    --keys) Steps="$Steps
keys $2"; shift 2 ;;
    --shot) Steps="$Steps
shot $2"; shift 2 ;;
    --plug) [ -f "$2" ] || { echo "boot: no image $2 to plug in" >&2; exit 2; }
            Steps="$Steps
plug $(cd "$(dirname "$2")" && pwd)/$(basename "$2")"; shift 2 ;;
    --wait-done) WaitDone=1; shift ;;
    --serial) SerialCopy=$2; shift 2 ;;
    -h|--help) sed -n '2,22p' "$0"; exit 0 ;;
    *) echo "boot: unknown argument $1" >&2; exit 2 ;;
  esac
done

"$Root/scripts/setup.sh"
[ -f "$Image" ] || { echo "boot: no image $Image (make one with scripts/make-image.sh)" >&2; exit 2; }
Code=""
for Pair in "OVMF_CODE_4M.fd OVMF_VARS_4M.fd" "OVMF_CODE.fd OVMF_VARS.fd"; do
  set -- $Pair
  if [ -f "/usr/share/OVMF/$1" ] && [ -f "/usr/share/OVMF/$2" ]; then
    Code=/usr/share/OVMF/$1; Template=/usr/share/OVMF/$2; break
  fi
done
[ -n "$Code" ] || { echo "boot: OVMF is not installed" >&2; exit 2; }

Work=$(mktemp -d "${TMPDIR:-/tmp}/surveyor-boot-XXXXXX")
Qemu=""
cleanup () {
  [ -n "$Qemu" ] && kill "$Qemu" 2>/dev/null || true
  [ -n "$SerialCopy" ] && [ -f "$Work/serial.log" ] && cp "$Work/serial.log" "$SerialCopy"
  rm -rf "$Work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

if [ -n "$Vars" ]; then
  [ -f "$Vars" ] || cp "$Template" "$Vars"
else
  Vars="$Work/vars.fd"
  cp "$Template" "$Vars"
fi
set -- -machine q35,accel="${SURVEYOR_QEMU_ACCEL:-tcg}" -m 512 -no-reboot -net none \
  -rtc base=2026-01-02T03:04:05,clock=vm \
  -drive if=pflash,format=raw,readonly=on,file="$Code" -drive if=pflash,format=raw,file="$Vars" \
  -drive file="$Image",format=raw,media=disk \
  -serial file:"$Work/serial.log" -qmp unix:"$Work/qmp.sock",server=on,wait=off
for Disk in $Disks; do set -- "$@" -drive file="$Disk",format=raw,media=disk; done
case "$Steps" in *"
plug "*) set -- "$@" -device qemu-xhci,id=usb ;; esac
if [ "$Headless" = 1 ] || [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  Headless=1
  set -- "$@" -display none
fi

Started=$(date +%s.%N)
qemu-system-x86_64 "$@" </dev/null >"$Work/qemu.log" 2>&1 &
Qemu=$!

# Waits until the serial console shows TEXT; false when QEMU ended or time ran out.
await () {
  Limit=$(( $(date +%s) + ${SURVEYOR_BOOT_TIMEOUT:-180} ))
  while ! grep -q "$1" "$Work/serial.log" 2>/dev/null; do
    kill -0 "$Qemu" 2>/dev/null || return 1
    [ "$(date +%s)" -lt "$Limit" ] || return 1
    sleep 0.2
  done
}

qmp () { python3 "$Root/scripts/qmp.py" "$Work/qmp.sock" "$@"; }

fail () {
  echo "boot: $1" >&2
  echo "---- serial console ----" >&2
  tr -d '\r' <"$Work/serial.log" 2>/dev/null | sed 's/\x1b\[[0-9;]*[A-Za-z]//g' | tail -n 25 >&2
  cat "$Work/qemu.log" >&2
  exit 1
}

await "Surveyor: ready" || fail "the file manager was not shown"
echo "boot: ready after $(awk "BEGIN { printf \"%.1f\", $(date +%s.%N) - $Started }") s"
Status=0
printf '%s\n' "$Steps" | while IFS= read -r Step; do
  case "$Step" in
    keys\ *) qmp keys "${Step#keys }" ;;
    shot\ *) qmp settle "${Step#shot }" && echo "boot: screen saved to ${Step#shot }" ;;
    plug\ *)
      Known=$(grep -c "Surveyor: volume" "$Work/serial.log" || true)
      qmp plug "${Step#plug }"
      Limit=$(( $(date +%s) + 60 ))
      until [ "$(grep -c "Surveyor: volume" "$Work/serial.log" || true)" -gt "$Known" ]; do
        [ "$(date +%s)" -lt "$Limit" ] || { echo "boot: ${Step#plug } did not become a volume" >&2; break; }
        sleep 0.2
      done ;;
  esac
done
if [ "$WaitDone" = 1 ]; then
  await "Surveyor: done" || Status=1
  [ "$Status" = 0 ] && echo "boot: the file manager ended"
fi
if [ "$Headless" = 1 ]; then
  # Give the firmware a moment to write what the launcher flushed.
  sleep 0.5
  qmp quit || true
fi
wait "$Qemu" 2>/dev/null || true
Qemu=""
[ "$Status" = 0 ] || fail "the file manager did not end"
exit 0
