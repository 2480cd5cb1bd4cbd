#!/usr/bin/env bash
# Installs through apt-get what building, testing, benchmarking, the sanitizer builds,
# the install check and continuous integration need, and only what is missing: with
# everything present it changes nothing and needs no root.
# Usage: tools/install-deps.sh [GROUP...]   GROUP: build tests benchmarks sanitizers
# install checks (all of them when none is named).
set -euo pipefail

declare -A lGroups=(
  [build]="cmake ninja-build g++"
  [tests]="libgtest-dev libgmock-dev"
  [benchmarks]="libbenchmark-dev"
  [sanitizers]="clang libclang-rt-14-dev"
  [install]="pkg-config"
  [checks]="clang-tidy gcovr valgrind"
)

lNames=("$@")
[ ${#lNames[@]} -eq 0 ] && lNames=(build tests benchmarks sanitizers install checks)

lMissing=()
for lName in "${lNames[@]}"; do
  if [ -z "${lGroups[$lName]+set}" ]; then
    echo "install-deps: unknown group '$lName' (known: ${!lGroups[*]})" >&2
    exit 2
  fi
  for lPackage in ${lGroups[$lName]}; do
    dpkg -s "$lPackage" >/dev/null 2>&1 || lMissing+=("$lPackage")
  done
done
[ ${#lMissing[@]} -eq 0 ] && exit 0

lSudo=()
[ "$(id -u)" -ne 0 ] && lSudo=(sudo)
echo "install-deps: installing ${lMissing[*]}"
"${lSudo[@]}" apt-get update
"${lSudo[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y --no-install-recommends "${lMissing[@]}"
