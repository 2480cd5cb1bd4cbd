#!/usr/bin/env bash
# Installs the library from a configured build tree into a scratch prefix, then
# builds a small consumer against it twice: through find_package and through
# pkg-config. Usage: tools/check-install.sh BUILD_DIR
set -euo pipefail
lBuild=${1:?usage: check-install.sh BUILD_DIR}
lRoot=$(cd "$(dirname "$0")/.." && pwd)
lScratch=$(mktemp -d)
trap 'rm -rf "$lScratch"' EXIT

cmake --install "$lBuild" --prefix "$lScratch/prefix" >/dev/null
cmake -S "$lRoot/tools/consumer" -B "$lScratch/consumer" -G Ninja \
  -DCMAKE_PREFIX_PATH="$lScratch/prefix" >/dev/null
cmake --build "$lScratch/consumer" >/dev/null
"$lScratch/consumer/qelsdk_consumer"

lLibDir=$(find "$lScratch/prefix" -name qelsdk.pc -printf '%h\n' | head -n 1)
export PKG_CONFIG_PATH="$lLibDir"
# shellcheck disable=SC2046
c++ -o "$lScratch/consumer-pc" "$lRoot/tools/consumer/main.cpp" $(pkg-config --cflags --libs qelsdk)
"$lScratch/consumer-pc"
echo "install check: find_package and pkg-config consumers built and ran"
