#!/usr/bin/env bash
# Line and branch coverage of the library (src/ and include/) by the unit tests: a
# g++ build with --coverage, the tests, then gcovr's summary. Fails when coverage
# falls below the floors (QELSDK_LINE_FLOOR, QELSDK_BRANCH_FLOOR, in percent).
# Usage: tools/coverage.sh [BUILD_DIR]   (default build-coverage)
set -euo pipefail
cd "$(dirname "$0")/.."
lBuild=${1:-build-coverage}
lLineFloor=${QELSDK_LINE_FLOOR:-95}
lBranchFloor=${QELSDK_BRANCH_FLOOR:-85}

rm -rf "$lBuild"
cmake -S . -B "$lBuild" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=g++ \
  -DCMAKE_CXX_FLAGS="--coverage -O0" -DCMAKE_EXE_LINKER_FLAGS="--coverage" \
  -DQELSDK_BUILD_BENCHMARKS=OFF -DQELSDK_BUILD_TOOLS=OFF -DQELSDK_WARNINGS_AS_ERRORS=ON
cmake --build "$lBuild"
ctest --test-dir "$lBuild" --output-on-failure -j 2

# The compiler probe of the configure step leaves notes of a file that is not ours.
find "$lBuild/CMakeFiles" -path '*CompilerId*' -name '*.gcno' -delete
gcovr --root . --object-directory "$lBuild" --filter 'src/' --filter 'include/' \
  --exclude-throw-branches --exclude-unreachable-branches \
  --print-summary --txt "$lBuild/coverage.txt" \
  --fail-under-line "$lLineFloor" --fail-under-branch "$lBranchFloor"
