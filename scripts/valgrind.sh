#!/usr/bin/env bash
# Runs every test program of a build under valgrind's memcheck: no errors and
# no definite or indirect leaks allowed. The zonecim processes the
# integration tests start are checked too.
#   scripts/valgrind.sh [build-dir]      (default build/, from scripts/test.sh)
set -uo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
log_dir=$build/valgrind
mkdir -p "$log_dir"
failed=0
for test in "$build"/tests/*_test; do
  name=$(basename "$test")
  # Death-free, deterministic runs only; timing-heavy suites are left to ASan.
  if ! valgrind --quiet --error-exitcode=99 --leak-check=full \
      --errors-for-leak-kinds=definite,indirect --trace-children=yes \
      --trace-children-skip='*/sh,*/bash,*/wbemcli,*/python3' \
      --log-file="$log_dir/$name.%p.log" "$test" >"$log_dir/$name.out" 2>&1; then
    echo "FAIL $name (see $log_dir/$name.*.log)"
    failed=$((failed + 1))
  else
    echo "ok   $name"
  fi
done
echo "$failed test programs failed under valgrind"
[ "$failed" -eq 0 ]
