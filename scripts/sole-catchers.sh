#!/bin/sh
# Lists, from a report of scripts/mutate.sh, the tests that are the only ones
# to catch some mutation: one `Suite.Test` a line, followed by the ids of
# those mutations. Removing such a test lets those mutations survive.
#
#   scripts/sole-catchers.sh [REPORT]     (default build-mutate/report.txt)
set -eu
cd "$(dirname "$0")/.."
Report=${1:-build-mutate/report.txt}
[ -f "$Report" ] || { echo "sole-catchers: no report $Report" >&2; exit 2; }
awk '
  $3 == "caught" && NF == 4 {
    Test = $4
    sub(/\((crash|hang)\)$/, "", Test)
    Ids[Test] = Ids[Test] " " $1
  }
  END { for (Test in Ids) print Test Ids[Test] }' "$Report" | sort
