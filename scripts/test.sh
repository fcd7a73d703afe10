#!/usr/bin/env bash
# Builds everything and runs the whole test suite.
#   scripts/test.sh             plain build in build/
#   scripts/test.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

build=build
options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
  build=build-asan
  options=(-DCMAKE_BUILD_TYPE=Debug -DZONE_SANITIZE=ON -DZONE_BUILD_BENCH=OFF)
fi

jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B "$build" "${options[@]}" >/dev/null
cmake --build "$build" -j "$jobs"
cd "$build"
ctest --output-on-failure -j "$jobs"
