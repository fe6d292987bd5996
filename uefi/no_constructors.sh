#!/bin/sh
# Fails when the linked image IMAGE.so has static constructors: the gnu-efi
# start code runs none, so they would silently never run in firmware.
set -eu
if objdump -h "$1" | grep -q -e '\.init_array' -e '\.ctors'; then
  echo "$1: static constructors are not run in firmware; make the object constant-initialised" >&2
  exit 1
fi
