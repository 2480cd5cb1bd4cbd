#!/usr/bin/env bash
# Runs every unit test program of a build under valgrind's memcheck, two at a time;
# fails when one of them reports a memory error or a leak.
# Usage: tools/memcheck.sh [BUILD_DIR]   (default build, the README build)
set -euo pipefail
cd "$(dirname "$0")/.."
lBuild=${1:-build}
lLogs=$(mktemp -d)
trap 'rm -rf "$lLogs"' EXIT

lPrograms=$(find "$lBuild/tests" -maxdepth 1 -type f -name '*_test' -perm -u+x | sort)
if [ -z "$lPrograms" ]; then
  echo "memcheck: no test program in $lBuild/tests" >&2
  exit 1
fi
# One program: its log is kept only when it fails.
lRun='lLog="$1/$(basename "$2").log"
  if valgrind --error-exitcode=1 --leak-check=full --quiet "$2" --gtest_brief=1 >"$lLog" 2>&1; then
    echo "memcheck: $(basename "$2") clean"
  else
    cat "$lLog" >&2
    echo "memcheck: $(basename "$2") FAILED" >&2
    exit 1
  fi'
echo "$lPrograms" | xargs -P 2 -I{} bash -c "$lRun" memcheck "$lLogs" {}
echo "memcheck: every test program is clean"
