#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz/) with clang, ASan and UBSan, and runs
# each of them for a while, starting from the seed corpus in fuzz/corpus/.
#   scripts/fuzz.sh [SECONDS]   seconds per target (default 60)
# Environment:
#   ZONE_FUZZ_BUILD    build directory (default build-fuzz)
#   ZONE_FUZZ_TARGETS  targets to run (default "instance association method")
# New inputs go to <build>/fuzz-work/<target> (the seed corpus is left as
# it is); crashing inputs and logs to <build>/fuzz-artifacts/<target>/.
# Exits non-zero when any target found a crash, a leak or a timeout.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

seconds=${1:-60}
build=${ZONE_FUZZ_BUILD:-build-fuzz}
targets=${ZONE_FUZZ_TARGETS:-instance association method}
jobs=$(nproc 2>/dev/null || echo 2)

cmake -S . -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZONE_FUZZ=ON -DZONE_BUILD_TESTS=OFF \
  -DZONE_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$jobs" --target fuzz_all

failed=()
for target in $targets; do
  work="$build/fuzz-work/$target"
  artifacts="$build/fuzz-artifacts/$target"
  log="$artifacts/fuzz.log"
  mkdir -p "$work" "$artifacts" "fuzz/corpus/$target"
  echo "== fuzz_$target for ${seconds}s"
  if "$build/fuzz/fuzz_$target" "$work" "fuzz/corpus/$target" -dict=fuzz/zone.dict \
       -max_total_time="$seconds" -timeout=30 -print_final_stats=1 \
       -artifact_prefix="$artifacts/" >"$log" 2>&1; then
    grep -E '^(#[0-9]+[[:space:]]+DONE|stat::(number_of_executed_units|average_exec_per_sec))' "$log" || true
  else
    failed+=("$target")
    grep -E -A40 '^==[0-9]+==ERROR|^SUMMARY|runtime error|ERROR: libFuzzer' "$log" | head -80 || true
    echo "fuzz_$target failed; input and log in $artifacts/"
  fi
done

if ((${#failed[@]})); then
  echo "fuzzing found problems in: ${failed[*]}"
  exit 1
fi
