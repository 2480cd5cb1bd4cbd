#!/usr/bin/env bash
# Runs clang-tidy with the repository's .clang-tidy over every .cpp under src/ and tools/
# (found when the script runs, so new files are checked without editing it) and exits
# non-zero when any check reports. The headers under include/, src/ and tools/ are
# checked through the sources that include them.
#
#   bash tools/run-clang-tidy.sh BUILD_DIR            # every source, two at a time
#   bash tools/run-clang-tidy.sh BUILD_DIR FILE...    # only the given sources
#   QELSDK_TIDY_JOBS=4 bash tools/run-clang-tidy.sh BUILD_DIR
#
# BUILD_DIR is a configured build with compile_commands.json (every top-level build
# writes one). A source the build does not compile gets the flags of its nearest
# neighbour in that file. One file by hand, with the same settings:
#   clang-tidy -p BUILD_DIR --quiet --extra-arg=-std=c++17 src/qelsdk/core/qelstring.cpp
set -euo pipefail

if [ $# -lt 1 ]; then
  echo "usage: $0 BUILD_DIR [FILE...]" >&2
  exit 2
fi
lBuild=$(cd "$1" && pwd)
shift
if [ ! -f "$lBuild/compile_commands.json" ]; then
  echo "$0: no compile_commands.json in $lBuild; configure the build first" >&2
  exit 2
fi
lTidy=${CLANG_TIDY:-$(command -v clang-tidy-14 || command -v clang-tidy)}
lJobs=${QELSDK_TIDY_JOBS:-2}
lRoot=$(cd "$(dirname "$0")/.." && pwd)

lFiles=()
if [ $# -gt 0 ]; then
  for lFile in "$@"; do lFiles+=("$(cd "$(dirname "$lFile")" && pwd)/$(basename "$lFile")"); done
else
  while IFS= read -r -d '' lFile; do lFiles+=("$lFile"); done \
    < <(find "$lRoot/src" "$lRoot/tools" -name '*.cpp' -print0 | sort -z)
fi

# The header filter is anchored at this checkout so that a parent directory named
# include or src does not pull in headers from elsewhere.
lFilter="^$(printf '%s' "$lRoot" | sed 's/[][\.^$*+?(){}|]/\\&/g')/(include|src|tools)/"

# g++ 12 compiles C++17 by default, so CMake writes no -std flag for it; clang-tidy parses
# as clang, whose default is older.
lStd=--extra-arg=-std=c++17

# Each file's report is printed in one piece, so that parallel runs do not interleave.
export lTidy lBuild lFilter lStd
lStart=$SECONDS
lStatus=0
printf '%s\0' "${lFiles[@]}" | xargs -0 -n 1 -P "$lJobs" bash -c '
  lOut=$("$lTidy" -p "$lBuild" --quiet "$lStd" --header-filter="$lFilter" "$1" 2>&1) && exit 0
  printf "%s\n" "$lOut"
  exit 1' _ || lStatus=$?
echo "clang-tidy: ${#lFiles[@]} files in $((SECONDS - lStart)) s" >&2
if [ "$lStatus" -ne 0 ]; then
  echo "clang-tidy: findings above" >&2
  exit 1
fi
