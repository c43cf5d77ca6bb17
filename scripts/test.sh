#!/usr/bin/env bash
# Builds KOVAMappingServices with its tests and runs them.
# Usage: scripts/test.sh [debug|release|asan|tsan|all]   (debug by default)
#   debug, release, asan  build that preset and run every test
#   tsan                  ThreadSanitizer build of the concurrency tests, and those tests
#   all                   debug, asan and tsan, then each fuzz target for 60 s (scripts/fuzz.sh 60);
#                         what continuous integration runs
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-debug}"
scripts/setup-debian.sh

run_preset() {
  # Chained with &&: as a stage of "all" it runs where set -e does not apply.
  local name="$1" target=()
  [ "$name" = tsan ] && target=(--target kova_concurrency_tests kova_capi_concurrency_tests)
  cmake --preset "$name" >/dev/null &&
    cmake --build --preset "$name" -j2 "${target[@]}" &&
    ctest --preset "$name" -j2 --output-on-failure
}

if [ "$preset" != all ]; then
  run_preset "$preset"
  exit
fi

passed=0
failed=0
stage() {
  echo "=== $*"
  if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "=== FAILED: $*"; fi
}
stage run_preset debug
stage run_preset asan
stage run_preset tsan
stage scripts/fuzz.sh 60
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
