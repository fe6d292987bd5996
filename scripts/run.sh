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
exec "$Root/build/tools/surveyor" browse "$@"
