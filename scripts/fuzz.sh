#!/bin/sh
# Builds the libFuzzer targets (fuzz/*.cpp) with clang, address and
# undefined-behaviour sanitizers into build-fuzz/ and runs each of them for
# FUZZ_SECONDS seconds (default 60), or only the targets named as arguments.
# FUZZ_RUNS=N runs each target for N inputs from a fixed seed instead, so that
# a run gives the same result on every machine (CI uses it); the targets that
# open whole windows for every input (about 50 a second) run N/150 of them.
# Inputs go up to 64 KiB, so that the sample pictures of fuzz/seeds fit.
# Corpora are kept in build-fuzz/corpus/<target>; crashes in
# build-fuzz/crashes/.
set -eu
cd "$(dirname "$0")/.."
Seconds=${FUZZ_SECONDS:-60}
Jobs=$(nproc 2>/dev/null || echo 2)
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSURVEYOR_FUZZ=ON \
  -DSURVEYOR_EFI=OFF >/dev/null
cmake --build build-fuzz -j"$Jobs" --target fuzz_all

Targets="$*"
[ -n "$Targets" ] || Targets=$(cat build-fuzz/fuzz/targets.txt)
mkdir -p build-fuzz/crashes
Status=0
for Target in $Targets; do
  mkdir -p "build-fuzz/corpus/$Target"
  Seeds=""
  [ -d "fuzz/seeds/$Target" ] && Seeds="fuzz/seeds/$Target"
  if [ -n "${FUZZ_RUNS:-}" ]; then
    Runs=$FUZZ_RUNS
    case "$Target" in
      fuzz_resource_windows|fuzz_directory_entries|fuzz_hex_page) Runs=$((FUZZ_RUNS / 150)) ;;
    esac
    Limit="-runs=$Runs -seed=1"
    echo "== $Target ($Runs inputs)"
  else
    Limit="-max_total_time=$Seconds"
    echo "== $Target ($Seconds s)"
  fi
  # shellcheck disable=SC2086
  if ! "build-fuzz/fuzz/$Target" $Limit -max_len=65536 -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="build-fuzz/crashes/$Target-" \
      "build-fuzz/corpus/$Target" $Seeds 2>"build-fuzz/$Target.log"; then
    echo "FAILED: $Target (see build-fuzz/$Target.log)"
    tail -n 30 "build-fuzz/$Target.log"
    Status=1
  else
    grep -E "stat::number_of_executed_units|DONE +cov" "build-fuzz/$Target.log" || true
  fi
done
exit $Status
