#!/usr/bin/env bash
# Builds KOVAMappingServices with its tests and runs them.
# Usage: scripts/test.sh [debug|release|asan|tsan|lint|bench-smoke|all]   (debug by default)
#   debug, release, asan  build that preset and run every test
#   tsan                  ThreadSanitizer build of the concurrency tests, and those tests
#   lint                  scripts/lint.sh: the layout of every C and C++ file (clang-format-14) and
#                         clang-tidy-14 over every file the debug preset compiles; fails on any
#                         file to reformat or any finding (a few minutes on two cores)
#   bench-smoke           the bench preset (Release, benchmarks and examples): runs every example
#                         program and checks its output, and runs every benchmark binary once on
#                         small documents; fails on a non-zero exit, a benchmark error or a
#                         missing output line (a few seconds after the build)
#   all                   debug, lint (on the debug preset's tree), asan, tsan and bench-smoke, then
#                         each fuzz target for 60 s (scripts/fuzz.sh 60); what continuous
#                         integration runs
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

# Runs one program of the smoke stage with its output in a log; fails when it exits non-zero or
# when its output lacks the line it must print (an extended regular expression; empty: no check).
# A Google Benchmark error ("ERROR OCCURRED") fails it too: such a benchmark still exits with 0.
smoke_run() {
  local log="$1" expect="$2"
  shift 2
  echo "--- $*"
  local status=0
  # Stamp computation is refused unless this switch is in the environment when the library loads.
  env DONOTUSE_ENABLEKSSGEN=1 "$@" >"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ]; then
    echo "exit status $status"
  elif grep -q 'ERROR OCCURRED' "$log"; then
    echo "a benchmark reported an error"
    status=1
  elif [ -n "$expect" ] && ! grep -Eq "$expect" "$log"; then
    echo "no line matching: $expect"
    status=1
  fi
  if [ "$status" -ne 0 ]; then
    tail -n 30 "$log"
    return 1
  fi
}

# The examples and a smoke run of the benchmarks, built by the bench preset: every example program
# is run and its output checked; every benchmark binary runs once on small documents (10k objects;
# 100k where a benchmark has no smaller size), so that none of them rots between full runs of
# bench/run.sh. A new example or benchmark binary fails the stage until it is given a run below.
bench_smoke() {
  local build=build/bench logs=build/bench/smoke failed=0 found=0 program name expect
  cmake --preset bench >/dev/null &&
    cmake --build --preset bench -j2 || return 1
  rm -rf "$logs"
  mkdir -p "$logs"

  local sources=() args=()
  shopt -s nullglob
  sources=(examples/*.cpp examples/*.c)
  shopt -u nullglob
  for program in "${sources[@]}"; do
    name=$(basename "${program%.*}")
    args=()
    case "$name" in
      build_table) expect='^root: ASM-100, second root refused: yes, objects: 5$' ;;
      c_host) expect='^done$'; args=(examples/documents) ;;
      *) echo "no smoke run for the example $name: add one to bench_smoke in scripts/test.sh"; failed=1; continue ;;
    esac
    smoke_run "$logs/$name.log" "$expect" "$build/examples/$name" "${args[@]}" || failed=1
  done

  local gb=(--benchmark_min_time=0.01)
  for program in "$build"/bench/kova_bench*; do
    [ -x "$program" ] || continue
    found=$((found + 1))
    name=$(basename "$program")
    case "$name" in
      kova_bench)
        smoke_run "$logs/$name.log" 'BM_StampMap20' "$program" "${gb[@]}" \
          --benchmark_filter='objects:10000$|Zlib|MTWithPrefix|DecompressMT|StampMap' ;;
      kova_bench_workflow)
        smoke_run "$logs/$name.log" 'walk/lookup/shape:1/objects:10000' "$program" "${gb[@]}" \
          --benchmark_filter='objects:10000(/|$)' ;;
      kova_bench_faces)
        smoke_run "$logs/$name.log" 'BM_WriteSideBySide/objects:100000' "$program" "${gb[@]}" \
          --benchmark_filter='objects:100000(/|$)|GetKovaId|GetIsLocal' ;;
      kova_bench_python)
        smoke_run "$logs/$name.log" 'BM_Audit/documents:1000/' "$program" "${gb[@]}" \
          --benchmark_filter='objects:10000(/|$)|documents:1000/' ;;
      kova_bench_audit)
        smoke_run "$logs/$name.log" 'BM_AuditSideBySide/documents:500' "$program" "${gb[@]}" \
          --benchmark_filter='documents:500/' ;;
      kova_bench_index_memory)
        smoke_run "$logs/$name-0.log" '^0 10000 [0-9.]+ [0-9.]+$' "$program" 0 10000 &&
          smoke_run "$logs/$name-1.log" '^1 10000 [0-9.]+ [0-9.]+$' "$program" 1 10000 ;;
      kova_bench_peak_memory)
        smoke_run "$logs/$name-keep.log" 'keep$' "$program" 1 10000 keep &&
          smoke_run "$logs/$name-hand-over.log" 'hand-over$' "$program" 0 10000 hand-over ;;
      kova_bench_page_faults)
        smoke_run "$logs/$name.log" '^fresh_4k_page_us [0-9.]+ huge_page_per_4k_us [0-9.]+$' "$program" 8 ;;
      kova_bench_profile)
        smoke_run "$logs/$name-read.log" '' "$program" read 1 10000 &&
          smoke_run "$logs/$name-write.log" '' "$program" write 0 10000 &&
          smoke_run "$logs/$name-decompress.log" '' "$program" decompress 1 10000 &&
          smoke_run "$logs/$name-stamp.log" '^[0-9]+ [A-Za-z0-9+/=]{44}$' "$program" stamp 100 ;;
      *)
        echo "no smoke run for the benchmark $name: add one to bench_smoke in scripts/test.sh"
        false ;;
    esac || failed=1
  done
  if [ "$found" -eq 0 ]; then
    echo "no benchmark binary in $build/bench"
    failed=1
  fi
  [ "$failed" -eq 0 ]
}

case "$preset" in
  all) ;;
  bench-smoke) bench_smoke; exit ;;
  lint) scripts/lint.sh; exit ;;
  *) run_preset "$preset"; exit ;;
esac

passed=0
failed=0
stage() {
  echo "=== $*"
  if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "=== FAILED: $*"; fi
}
stage run_preset debug
stage scripts/lint.sh
stage run_preset asan
stage run_preset tsan
stage bench_smoke
stage scripts/fuzz.sh 60
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
