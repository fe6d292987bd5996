#!/bin/sh
# Checks a linked image (IMAGE.so) before it becomes a PE file:
# - no static constructors: the gnu-efi start code runs none, so they would
#   silently never run in firmware;
# - relative relocations only: the start code applies nothing else, so any
#   other kind (a GLOB_DAT of a "unique" template static, say) would leave a
#   pointer unrelocated.
set -eu
if objdump -h "$1" | grep -q -e '\.init_array' -e '\.ctors'; then
  echo "$1: static constructors are not run in firmware; make the object constant-initialised" >&2
  exit 1
fi
Other=$(readelf -r "$1" | awk '/^[0-9a-f]+ +[0-9a-f]+ R_/ && $3 != "R_X86_64_RELATIVE" { print $3, $5 }')
if [ -n "$Other" ]; then
  echo "$1: relocations the firmware start code does not apply:" >&2
  echo "$Other" >&2
  exit 1
fi
