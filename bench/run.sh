#!/bin/sh
# Builds the "bench" preset, runs the benchmark suite, the peak-memory probe and the page-fault
# probe, and writes the figures into bench/README.md (between the RESULTS markers), with the
# machine, date and commit.
#
#   bench/run.sh [--quick] [--workflow | --python] [extra Google Benchmark arguments, e.g. --benchmark_filter=BM_Read]
#
# --quick runs each benchmark once (no repetitions). Otherwise every benchmark runs three times and
# the table shows the median. The machine is shared: compare ratios within one run.
# --workflow runs only the workflow suite (kova_bench_workflow) and the index memory probe, and
# rewrites only their section.
# --python runs only the Python package's suite (kova_bench_python, built when the package is) and
# rewrites only its section.
#
# The suite runs twice, with the same binary:
#   default    the C library's allocator as it comes;
#   warm-heap  the allocator told (through GLIBC_TUNABLES, a setting of the host process, not of
#              the library) to keep freed memory instead of giving it back to the kernel, and to
#              ask for transparent huge pages. This is how a host that reads large documents
#              would run on a machine where fresh memory is dear (see the page-fault line).
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
cd "$root"
repetitions=3
only_workflow=no
only_python=no
while :; do
  case "${1:-}" in
    --quick) repetitions=1; shift ;;
    --workflow) only_workflow=yes; shift ;;
    --python) only_python=yes; shift ;;
    *) break ;;
  esac
done

cmake --preset bench >/dev/null
cmake --build --preset bench -j2 >/dev/null

out=$(mktemp -d)
bin="$root/build/bench/bench"
warm_heap="glibc.malloc.trim_threshold=4294967296:glibc.malloc.mmap_threshold=4294967296:glibc.malloc.hugetlb=1"

run_suite() {
  # Stamp computation is refused unless this switch is in the environment when the library loads.
  env DONOTUSE_ENABLEKSSGEN=1 "$@" "$bin/kova_bench" \
    --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
    --benchmark_out="$json" --benchmark_out_format=json $extra
}
# The extra arguments are passed on split at blanks and never expanded as file names (a filter
# such as BM_Read.* stays as written).
set -f
extra="$*"
machine="$(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')"
commit="$(git rev-parse --short HEAD)$(git diff --quiet HEAD -- . || echo '+changes')"

# Where and when the figures were taken, for the sections the reports write.
header() { echo "Machine: $machine. Date: $(date -u +%Y-%m-%dT%H:%MZ). Commit: $commit. Medians of $repetitions run(s)."; }

# The Python package's suite: its calls beside the C++ calls they stand on, in both host
# configurations.
run_python() {
  "$@" "$bin/kova_bench_python" \
    --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
    --benchmark_out="$json" --benchmark_out_format=json $extra
}
python_suite() {
  if [ ! -x "$bin/kova_bench_python" ]; then
    echo "no kova_bench_python in $bin (the Python package is not built): its section is left as it was"
    return 0
  fi
  json="$out/python-default.json"; run_python env
  json="$out/python-warm-heap.json"; run_python env GLIBC_TUNABLES="$warm_heap"
  /usr/bin/python3 "$here/python_report.py" "$here/README.md" "$(header)" \
    default "$out/python-default.json" warm-heap "$out/python-warm-heap.json"
}
if [ "$only_python" = yes ]; then
  python_suite
  echo "Python package results written to $here/README.md (raw: $out)"
  exit 0
fi

# The workflow suite: steps of a host between reading and writing a table.
run_workflow() {
  "$@" "$bin/kova_bench_workflow" --benchmark_min_time=0.3 \
    --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
    --benchmark_out="$json" --benchmark_out_format=json $extra
}
json="$out/workflow-default.json"; run_workflow env
json="$out/workflow-warm-heap.json"; run_workflow env GLIBC_TUNABLES="$warm_heap"
: >"$out/memory.txt"
for shape in 0 1; do
  for objects in 10000 100000 1000000; do
    "$bin/kova_bench_index_memory" "$shape" "$objects" >>"$out/memory.txt" || true
  done
done
# Figures of another build of the library, measured beside these, may be added to the memory
# table: KOVA_MEMORY_BEFORE names a file of lines "before shape objects read indexed".
[ -n "${KOVA_MEMORY_BEFORE:-}" ] && cat "$KOVA_MEMORY_BEFORE" >>"$out/memory.txt"
/usr/bin/python3 "$here/workflow_report.py" "$here/README.md" "$out/memory.txt" "$(header)" \
  default "$out/workflow-default.json" warm-heap "$out/workflow-warm-heap.json"
if [ "$only_workflow" = yes ]; then
  echo "workflow results written to $here/README.md (raw: $out)"
  exit 0
fi

json="$out/default.json"; run_suite
json="$out/warm-heap.json"; run_suite GLIBC_TUNABLES="$warm_heap"

: >"$out/peak.txt"
for mode in keep hand-over; do
  for shape in 0 1; do
    for objects in 10000 100000 1000000; do
      "$bin/kova_bench_peak_memory" "$shape" "$objects" "$mode" >>"$out/peak.txt" || true
    done
  done
done
"$bin/kova_bench_page_faults" >"$out/faults.txt" || : >"$out/faults.txt"

/usr/bin/python3 "$here/report.py" "$out/peak.txt" "$out/faults.txt" "$here/README.md" \
  "$(nproc)" "$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')" \
  "$(date -u +%Y-%m-%dT%H:%MZ)" "$commit" \
  default "$out/default.json" warm-heap "$out/warm-heap.json"
python_suite
echo "results written to $here/README.md (raw: $out)"
