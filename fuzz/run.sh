#!/usr/bin/env bash
# Runs every fuzz target of a build for the given number of seconds each, on a copy of
# its seed corpus, and fails when one of them finds a crash (the input is kept and
# named). Usage: fuzz/run.sh BUILD_DIR SECONDS
# QELSDK_FUZZ_SEED, when set, fixes libFuzzer's random seed, so that a run is repeated
# by running it again (up to where the time runs out).
set -euo pipefail
if [ $# -ne 2 ]; then
  echo "usage: $0 BUILD_DIR SECONDS" >&2
  exit 2
fi
lBuild=$1
lSeconds=$2
lHere="$(cd "$(dirname "$0")" && pwd)"
lWork=$(mktemp -d)
trap 'rm -rf "$lWork"' EXIT

lFailed=0
lFound=0
for lFuzzer in "$lBuild"/fuzz/*_fuzz; do
  [ -x "$lFuzzer" ] || continue
  lFound=1
  lName=$(basename "$lFuzzer")
  mkdir -p "$lWork/$lName/corpus" "$lWork/$lName/crashes"
  if [ -d "$lHere/corpus/$lName" ]; then
    cp "$lHere/corpus/$lName"/* "$lWork/$lName/corpus/"
  fi
  lLog="$lWork/$lName/log"
  if "$lFuzzer" -max_total_time="$lSeconds" -print_final_stats=1 -timeout=10 \
      ${QELSDK_FUZZ_SEED:+-seed="$QELSDK_FUZZ_SEED"} \
      -artifact_prefix="$lWork/$lName/crashes/" "$lWork/$lName/corpus" >"$lLog" 2>&1; then
    lDone=$(grep -E "^#[0-9]+[[:space:]]+DONE" "$lLog" | tail -1)
    lRuns=$(grep -E "^stat::number_of_executed_units" "$lLog" | awk '{print $2}')
    echo "fuzz: $lName passed: $lRuns executions; ${lDone#*DONE   }"
  else
    lFailed=1
    tail -n 60 "$lLog" >&2
    for lCrash in "$lWork/$lName/crashes"/*; do
      [ -e "$lCrash" ] || continue
      cp "$lCrash" "./$lName-$(basename "$lCrash")"
      echo "fuzz: $lName failed; the input is ./$lName-$(basename "$lCrash")" >&2
    done
  fi
done
if [ "$lFound" -eq 0 ]; then
  echo "fuzz: no fuzz target in $lBuild/fuzz" >&2
  exit 1
fi
exit "$lFailed"
