#!/bin/sh
# Builds the command-line program and runs the driver's file manager on the
# given folders (each becomes a volume), or on the bundled sample volume when
# none is given.
set -eu
Root=$(cd "$(dirname "$0")/.." && pwd)
"$Root/scripts/setup.sh"
Jobs=$(nproc 2>/dev/null || echo 2)
cmake -S "$Root" -B "$Root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$Root/build" -j"$Jobs" --target surveyor surveyor_assets
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  # No display for the desktop window: show the file manager as text instead.
  echo "No display (DISPLAY is not set): showing the file manager as text." >&2
  Count=$#
  for Dir in "$@"; do set -- "$@" --volume "$Dir"; done
  shift "$Count"
  printf 'open 0\ndump\n' | "$Root/build/tools/surveyor" --no-settings "$@" run -
  exit
fi
exec "$Root/build/tools/surveyor" browse "$@"
