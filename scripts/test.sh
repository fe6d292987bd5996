#!/bin/sh
# Builds everything into build/ and runs every test (unit, integration,
# end-to-end, the boot of surveyor.efi under QEMU), then a short run of every
# fuzz target under address and undefined-behaviour sanitizers when clang is
# there. Exits non-zero when anything fails.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh

Jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$Jobs"
(cd build && ctest --output-on-failure -j"$Jobs")

if command -v clang++ >/dev/null 2>&1; then
  FUZZ_SECONDS=${FUZZ_SECONDS:-15} scripts/fuzz.sh
else
  echo "clang not found: fuzzing skipped"
fi
echo "All tests passed."
