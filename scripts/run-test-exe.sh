#!/bin/sh
# Runs one GoogleTest executable and writes the names of its failing tests to
# OUT, one `Suite.Test` a line. A test that crashes or hangs (the executable
# is stopped after TIMEOUT seconds) is named with "(crash)" or "(hang)" after
# it, and the executable runs again without the tests already finished, so
# that every failing test is named. After two hangs it gives up on the rest
# and says so, to keep a looping fault from costing minutes per executable.
# The gtest output of the last round is kept in OUT.log.
#
#   scripts/run-test-exe.sh EXE TIMEOUT OUT
set -u
Exe=$1 Timeout=$2 Out=$3
Name=$(basename "$Exe")
# The tests find their data relative to the build folder, as under ctest.
cd "$(dirname "$Exe")" || exit 2
: > "$Out"
Finished=""   # tests that ran to their end or crashed: left out of the next round
Hangs=0
Round=0
while :; do
  Round=$((Round + 1))
  Filter=""
  [ -n "$Finished" ] && Filter="--gtest_filter=-$Finished"
  timeout -k 5 "$Timeout" "./$Name" --gtest_color=no $Filter > "$Out.log" 2>&1
  Status=$?
  # Every "[  FAILED  ]" line names a test (the summary repeats them).
  awk '$2 == "FAILED" && $3 == "]" && $4 ~ /\./ { sub(/,$/, "", $4); print $4 }' "$Out.log" >> "$Out"
  if [ "$Status" -le 1 ] && grep -q '^\[==========\] .* ran\.' "$Out.log"; then
    break
  fi
  # The program ended inside a test, or was stopped there: that test is the
  # last one started and not finished.
  Culprit=$(awk '$2 == "RUN" { Last = $4 } ($2 == "OK" || $2 == "FAILED" || $2 == "SKIPPED") && $4 == Last { Last = "" }
                 END { print Last }' "$Out.log")
  if [ -z "$Culprit" ]; then
    echo "$Name(exit-$Status)" >> "$Out"
    break
  fi
  if [ "$Status" -eq 124 ] || [ "$Status" -eq 137 ]; then
    echo "$Culprit(hang)" >> "$Out"
    Hangs=$((Hangs + 1))
  else
    echo "$Culprit(crash)" >> "$Out"
  fi
  if [ "$Hangs" -ge 2 ] || [ "$Round" -ge 20 ]; then
    echo "$Name(rest-not-run)" >> "$Out"
    break
  fi
  Done=$(awk '($2 == "OK" || $2 == "FAILED" || $2 == "SKIPPED") && $3 == "]" && $4 ~ /\./ { sub(/,$/, "", $4); print $4 }' "$Out.log" |
         sort -u | tr '\n' ':')
  Finished="$Finished$Done$Culprit:"
done
sort -u -o "$Out" "$Out"
