#!/bin/sh
# Builds the "bench" preset, runs the benchmark suite and the peak-memory probe, and writes the
# figures into bench/README.md (between the RESULTS markers), with the machine, date and commit.
#
#   bench/run.sh [--quick] [extra Google Benchmark arguments, e.g. --benchmark_filter=BM_Read]
#
# --quick runs each benchmark once (no repetitions). Otherwise every benchmark runs three times and
# the table shows the median. The machine is shared: compare ratios within one run.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
cd "$root"
repetitions=3
if [ "${1:-}" = "--quick" ]; then repetitions=1; shift; fi

cmake --preset bench >/dev/null
cmake --build --preset bench -j2 >/dev/null

out=$(mktemp -d)
# Stamp computation is refused unless this switch is in the environment when the library loads.
DONOTUSE_ENABLEKSSGEN=1 "$root/build/bench/bench/kova_bench" \
  --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
  --benchmark_out="$out/bench.json" --benchmark_out_format=json "$@"

: >"$out/peak.txt"
for shape in 0 1; do
  for objects in 10000 100000 1000000; do
    "$root/build/bench/bench/kova_bench_peak_memory" "$shape" "$objects" >>"$out/peak.txt" || true
  done
done

python3 "$here/report.py" "$out/bench.json" "$out/peak.txt" "$here/README.md" \
  "$(nproc)" "$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')" \
  "$(date -u +%Y-%m-%dT%H:%MZ)" "$(git rev-parse --short HEAD)$(git diff --quiet HEAD -- . || echo '+changes')"
echo "results written to $here/README.md (raw: $out)"
