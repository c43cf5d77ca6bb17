#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz preset: clang-14, AddressSanitizer + UndefinedBehaviorSanitizer)
# and runs each for SECONDS from its seeds, one job each, at low priority.
# Usage: scripts/fuzz.sh SECONDS [target...]   (all targets by default)
# Seeds: tests/data/documents and fuzz/seeds/<target>; the corpus grown by the runs stays in
# build/fuzz/corpus/<target> (not in git); findings go to build/fuzz/findings/<target>/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:?usage: scripts/fuzz.sh SECONDS [target...]}"
shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(translate_document translate_envelope decompress stamp_text stamp_parser stamp_map tool_inputs)

cmake --preset fuzz >/dev/null
nice -n 10 cmake --build --preset fuzz -j2

root="$PWD"
failed=0
for target in "${targets[@]}"; do
  seeds="$root/build/fuzz/seeds/$target"
  corpus="$root/build/fuzz/corpus/$target"
  findings="$root/build/fuzz/findings/$target"
  logs="$root/build/fuzz/logs/$target"
  rm -rf "$seeds" "$logs"
  mkdir -p "$seeds" "$corpus" "$findings" "$logs"
  case "$target" in
    translate_document|stamp_parser) cp tests/data/documents/* "$seeds/" ;;
    translate_envelope)  # first byte: how the declared size is changed (0: kept)
      for f in tests/data/documents/*; do { printf '\0'; cat "$f"; } > "$seeds/$(basename "$f")"; done ;;
    decompress) for f in tests/data/documents/*; do cp "$f" "$seeds/"; done ;;
  esac
  [ -d "fuzz/seeds/$target" ] && cp fuzz/seeds/"$target"/* "$seeds/"
  echo "== $target: ${seconds}s"
  status=0
  (cd "$logs" && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
     nice -n 10 "$root/build/fuzz/fuzz/fuzz_$target" -jobs=1 -workers=1 \
     -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2560 -malloc_limit_mb=2100 \
     -dict="$root/fuzz/mapping.dict" -artifact_prefix="$findings/" -print_final_stats=1 \
     "$corpus" "$seeds" >/dev/null 2>&1) || status=$?
  log="$logs/fuzz-0.log"
  grep -E '^#[0-9]+[[:space:]]+(DONE|INITED)' "$log" | tail -2 || true
  grep -E '^stat::number_of_executed_units' "$log" || true
  if [ "$status" -ne 0 ] || grep -qE 'ERROR: (AddressSanitizer|libFuzzer|LeakSanitizer)|runtime error:|fuzz check failed' "$log"; then
    echo "FINDING in $target (log: $log, inputs: $findings)"
    grep -E 'ERROR:|runtime error:|fuzz check failed|Test unit written' "$log" | head -5 || true
    failed=$((failed + 1))
  fi
done
echo "$(( ${#targets[@]} - failed )) passed, $failed failed"
[ "$failed" -eq 0 ]
