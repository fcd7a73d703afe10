#!/usr/bin/env bash
# ThreadSanitizer build (Debug, -DZONE_TSAN=ON) of the tests that run
# several threads at once, and their run: the provider under eight
# concurrent clients, the simulated switch's and the host's own
# concurrency tests. Only those targets (and what they need) are built.
#   scripts/tsan.sh
# Environment: ZONE_TSAN_BUILD, the build directory (default build-tsan).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

build=${ZONE_TSAN_BUILD:-build-tsan}
tests=(integration_concurrency_stress_test sim_concurrency_test host_concurrency_test)
jobs=$(nproc 2>/dev/null || echo 2)

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DZONE_TSAN=ON -DZONE_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$jobs" --target "${tests[@]}"

# Any race report fails the test program at once.
export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 ${TSAN_OPTIONS:-}"
cd "$build"
ctest --output-on-failure -R "^($(IFS='|'; echo "${tests[*]}"))\$"
