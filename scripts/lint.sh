#!/usr/bin/env bash
# Static checks: clang-tidy (checks in .clang-tidy) over every source the
# build compiles, and cppcheck. Needs a configured build directory (default
# build/, from scripts/test.sh). Prints findings; exits 1 when there are any.
set -uo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
[ -f "$build/compile_commands.json" ] || { echo "configure $build first (scripts/test.sh)"; exit 2; }

sources=$(git ls-files 'src/*.cpp')
status=0
tidy=$(clang-tidy -p "$build" --quiet $sources 2>/dev/null | grep -E 'warning:|error:')
[ -z "$tidy" ] || { echo "$tidy"; status=1; }

# The CMPI factories copy every text they are given, so temporaries passed to
# them do not dangle; cppcheck cannot know that.
check=$(cppcheck --quiet --inline-suppr --enable=warning,performance,portability --std=c++20 \
  --suppress=missingIncludeSystem --suppress=returnDanglingLifetime \
  --suppress=danglingTemporaryLifetime --suppress=danglingLifetime \
  -I include/cmpi -I src src/ 2>&1 | grep -E '^[^ ]+:[0-9]+:[0-9]+:')
[ -z "$check" ] || { echo "$check"; status=1; }
exit $status
