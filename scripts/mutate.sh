#!/bin/sh
# Measures how many faults the test suite catches. Copies the tree into a
# scratch folder, builds it for the host once, then for each mutation of
# scripts/mutations.txt changes one line, rebuilds the test executables, runs
# them (all but test_boot, which boots QEMU), records which tests failed and
# puts the line back. Writes a report with one line per mutation and the score.
#
#   scripts/mutate.sh [--jobs N] [--timeout S] [--dir DIR] [--list FILE]
#                     [--report FILE] [--worktree] [ID...]
#
#   ID...        run only these mutations
#   --jobs N     build jobs and test executables run at a time (default 2)
#   --timeout S  seconds one test executable may run before it counts as hung
#                (default 60)
#   --dir DIR    the scratch folder (default build-mutate/)
#   --list FILE  the mutations (default scripts/mutations.txt)
#   --report F   where the report goes (default DIR/report.txt)
#   --worktree   copy the files as they are now, edits and new files included,
#                instead of the last commit
#   --check      only check that each text is found once in the work tree
#                (no copy, no build)
#
# The tests run as under ctest, from the build folder; none needs a display
# of its own (the desktop tests use SDL's dummy driver, and the one test that
# opens a real window starts xvfb-run itself).
#
# The report's lines: ID, FILE:LINE, then caught (and the failing tests),
# survived, not-built (the mutant does not compile), stale (the text is no
# longer in the file) or ambiguous (it is on more than one line). Only caught
# and survived count in the score.
set -eu
cd "$(dirname "$0")/.."
Top=$(pwd)

Jobs=2 Timeout=60 Dir=build-mutate List=scripts/mutations.txt Report="" FromWorktree=0 Check=0
while [ $# -gt 0 ]; do
  case "$1" in
    --jobs) Jobs=$2; shift 2 ;;
    --timeout) Timeout=$2; shift 2 ;;
    --dir) Dir=$2; shift 2 ;;
    --list) List=$2; shift 2 ;;
    --report) Report=$2; shift 2 ;;
    --worktree) FromWorktree=1; shift ;;
    --check) Check=1; shift ;;
    -h|--help) sed -n '2,/^set -eu/p' "$0" | sed '$d; s/^# \{0,1\}//'; exit 0 ;;
    -*) echo "mutate: unknown option $1" >&2; exit 2 ;;
    *) break ;;
  esac
done
Only=" $* "
case "$Dir" in /*) ;; *) Dir=$Top/$Dir ;; esac
case "$List" in /*) ;; *) List=$Top/$List ;; esac
[ -n "$Report" ] || Report=$Dir/report.txt
Tree=$Dir/tree Build=$Dir/build Work=$Dir/work
mkdir -p "$Dir" "$Work"
Started=$(date +%s)
Tab=$(printf '\t')

# apply FILE TEXT REPLACEMENT: prints the line number; exit 3 when the text is
# not there, 4 when it is there more than once.
apply() {
  MUT_TEXT=$2 MUT_REPL=$3 awk '
    BEGIN { Text = ENVIRON["MUT_TEXT"]; Repl = ENVIRON["MUT_REPL"] }
    {
      Line[NR] = $0
      for (Rest = $0; (At = index(Rest, Text)) > 0; Rest = substr(Rest, At + length(Text))) { Count++; Where = NR }
    }
    END {
      if (Count == 0) exit 3
      if (Count > 1) exit 4
      for (N = 1; N <= NR; N++) {
        if (N == Where) {
          At = index(Line[N], Text)
          Line[N] = substr(Line[N], 1, At - 1) Repl substr(Line[N], At + length(Text))
        }
        print Line[N] > ENVIRON["MUT_OUT"]
      }
      print Where
    }' "$1"
}

# The list, one mutation a line: ID FILE TEXT => REPLACEMENT (see its header).
awk -v OFS='\t' '
  /^[ \t]*(#|$)/ { next }
  {
    Arrow = index($0, " => ")
    if (Arrow == 0 && $0 ~ / =>[ \t]*$/) Arrow = index($0, " =>")
    if (Arrow == 0 || NF < 3) { print "mutate: line " NR " has no \" => \": " $0 > "/dev/stderr"; Bad = 1; next }
    Head = substr($0, 1, Arrow - 1); Repl = substr($0, Arrow + 4)
    split(Head, Word, /[ \t]+/)
    Id = Word[1]; File = Word[2]
    Text = Head; sub(/^[ \t]*[^ \t]+[ \t]+[^ \t]+[ \t]+/, "", Text)
    gsub(/^[ \t]+|[ \t]+$/, "", Text); gsub(/^[ \t]+|[ \t]+$/, "", Repl)
    if (Text == "") { print "mutate: line " NR " has no text to find" > "/dev/stderr"; Bad = 1; next }
    if (Id in Seen) { print "mutate: id " Id " is used twice" > "/dev/stderr"; Bad = 1; next }
    Seen[Id] = 1
    print Id, File, Text, Repl
  }
  END { exit Bad }' "$List" > "$Work/mutations.tsv"
for Id in $Only; do
  cut -f1 "$Work/mutations.tsv" | grep -qx "$Id" || { echo "mutate: no mutation $Id in $List" >&2; exit 2; }
done

# --check: each entry against the work tree, nothing built.
if [ "$Check" = 1 ]; then
  Bad=0
  while IFS="$Tab" read -r Id File Text Repl; do
    case "$Only" in "  ") ;; *" $Id "*) ;; *) continue ;; esac
    if [ ! -f "$File" ]; then
      Status=stale
    elif Line=$(MUT_OUT=/dev/null apply "$File" "$Text" "$Repl"); then
      Status=ok File="$File:$Line"
    else
      case $? in 3) Status=stale ;; *) Status=ambiguous ;; esac
    fi
    [ "$Status" = ok ] || Bad=1
    echo "$Id $File: $Status"
  done < "$Work/mutations.tsv"
  exit $Bad
fi

# The copy: only files whose contents differ are written, so that make
# rebuilds no more than what changed since the last run.
echo "Copying the tree into $Tree"
rm -rf "$Work/export"
mkdir -p "$Work/export" "$Tree"
if [ "$FromWorktree" = 1 ]; then
  git ls-files -z --cached --others --exclude-standard | xargs -0 sh -c 'for F; do [ -e "$F" ] && printf "%s\0" "$F"; done' sh |
    tar --null -T - -cf - | tar -xf - -C "$Work/export"
  Source="the work tree of $(git rev-parse --short HEAD) as it was"
else
  git archive HEAD | tar -xf - -C "$Work/export"
  Source="commit $(git rev-parse --short HEAD)"
fi
rsync -rcp --delete "$Work/export/" "$Tree/"
rm -rf "$Work/export"

# The test executables: one per folder of tests/, but not test_boot.
Targets=""
for Area in "$Tree"/tests/*/; do
  Area=$(basename "$Area")
  case "$Area" in support|boot) continue ;; esac
  ls "$Tree/tests/$Area"/*.cpp > /dev/null 2>&1 && Targets="$Targets test_$Area"
done

if [ ! -f "$Build/CMakeCache.txt" ]; then
  echo "Configuring $Build"
  # gold links the two dozen test executables of each mutant faster than ld.
  cmake -S "$Tree" -B "$Build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSURVEYOR_EFI=OFF \
        -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=gold -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=gold \
        -DCMAKE_MODULE_LINKER_FLAGS=-fuse-ld=gold > "$Work/configure.log" 2>&1 ||
    { cat "$Work/configure.log" >&2; echo "mutate: the copy does not configure" >&2; exit 2; }
fi

build() { # build LOG: the test executables, nothing else
  # shellcheck disable=SC2086
  cmake --build "$Build" -j"$Jobs" --target $Targets > "$1" 2>&1
}

# run_tests: the names of the failing tests, one a line, in $Work/failed.
# The slowest executables go first so that the last ones left run in parallel.
run_tests() {
  for Target in $Targets; do echo "$Target"; done |
    while read -r Target; do printf '%s %s\n' "$(cat "$Work/$Target.seconds" 2>/dev/null || echo 0)" "$Target"; done |
    sort -rn | cut -d' ' -f2 |
    xargs -P "$Jobs" -I{} sh -c 'S=$(date +%s); "$1" "$2/{}" "$3" "$4/{}.failed"; echo $(( $(date +%s) - S )) > "$4/{}.seconds"' \
      sh "$Top/scripts/run-test-exe.sh" "$Build" "$Timeout" "$Work"
  for Target in $Targets; do cat "$Work/$Target.failed"; done | sort -u > "$Work/failed"
}

echo "Building the unmutated tree ($Jobs jobs)"
build "$Work/build.log" || { tail -30 "$Work/build.log" >&2; echo "mutate: the unmutated tree does not build; see $Work/build.log" >&2; exit 2; }
echo "Running the unmutated suite"
run_tests
if [ -s "$Work/failed" ]; then
  echo "mutate: the unmutated suite fails; fix these first (logs in $Work/test_*.failed.log):" >&2
  sed 's/^/  /' "$Work/failed" >&2
  exit 2
fi
Ready=$(date +%s)

# A mutation changes one line of a file of the copy. The original is kept
# aside and put back (with a fresh time, so that make rebuilds it), also when
# the run is interrupted.
Original="$Work/original"
Mutated=""
restore() {
  if [ -n "$Mutated" ]; then
    cat "$Original" > "$Tree/$Mutated"
    Mutated=""
  fi
}
trap 'restore; exit 130' INT TERM HUP


: > "$Report.tmp"
Caught=0 Survived=0 NotBuilt=0 Stale=0 Ambiguous=0 Count=0
Survivors=""
while IFS="$Tab" read -r Id File Text Repl <&3; do
  case "$Only" in "  ") ;; *" $Id "*) ;; *) continue ;; esac
  Count=$((Count + 1))
  Where="$File"
  if [ ! -f "$Tree/$File" ]; then
    Status=stale Names="(no such file)"
  else
    cp "$Tree/$File" "$Original"
    Status="" Names=""
    Line=$(MUT_OUT="$Work/mutant" apply "$Tree/$File" "$Text" "$Repl") || case $? in
      3) Status=stale ;;
      4) Status=ambiguous ;;
      *) echo "mutate: cannot apply $Id" >&2; exit 2 ;;
    esac
    if [ -z "$Status" ]; then
      Where="$File:$Line"
      Mutated=$File
      cat "$Work/mutant" > "$Tree/$File"
      if ! build "$Work/build.log"; then
        Status=not-built
        cp "$Work/build.log" "$Work/$Id.build.log"
      else
        run_tests
        if [ -s "$Work/failed" ]; then
          Status=caught Names=$(tr '\n' ' ' < "$Work/failed")
        else
          Status=survived
        fi
      fi
      restore
      cmp -s "$Original" "$Tree/$File" || { echo "mutate: $File was not restored" >&2; exit 2; }
    fi
  fi
  echo "$Id $Where: $Status"
  case $Status in
    caught) Caught=$((Caught + 1)) ;;
    survived) Survived=$((Survived + 1)); Survivors="$Survivors$Id $Where: $Text => $Repl
" ;;
    not-built) NotBuilt=$((NotBuilt + 1)) ;;
    stale) Stale=$((Stale + 1)) ;;
    ambiguous) Ambiguous=$((Ambiguous + 1)) ;;
  esac
  printf '%-16s %-48s %-9s %s\n' "$Id" "$Where" "$Status" "$Names" | sed 's/ *$//' >> "$Report.tmp"
done 3< "$Work/mutations.tsv"

Ended=$(date +%s)
Scored=$((Caught + Survived))
Percent=0
[ "$Scored" -gt 0 ] && Percent=$((Caught * 100 / Scored))
Run=$((Ended - Ready))
{
  echo "# Mutations of $Source, list $(basename "$List"), $(date -u '+%Y-%m-%d %H:%M UTC')"
  echo "# id             file:line                                        status    failing tests"
  cat "$Report.tmp"
  echo
  echo "caught $Caught of $Scored ($Percent%)"
  echo "not built $NotBuilt, stale $Stale, ambiguous $Ambiguous (not scored)"
  printf 'time %d min %d s: copy, build and unmutated suite %d s, %d mutations %d s' \
    $(((Ended - Started) / 60)) $(((Ended - Started) % 60)) $((Ready - Started)) "$Count" "$Run"
  [ "$Count" -gt 0 ] && printf ' (%d s each)' $((Run / Count))
  echo
} > "$Report"
rm -f "$Report.tmp"

echo
sed -n '/^caught /,$p' "$Report"
if [ -n "$Survivors" ]; then
  echo "Survivors:"
  printf '%s' "$Survivors" | sed 's/^/  /'
fi
echo "Report: $Report"
