#!/usr/bin/python3
"""Turns the JSON output of kova_bench_workflow (one file per host configuration) and the lines of
kova_bench_index_memory into the workflow section of bench/README.md (between the WORKFLOW
markers): ns per step of every workflow, and the goals as ratios of figures of the same run.

usage: workflow_report.py README MEMORY HEADER LABEL JSON [LABEL JSON ...]
  MEMORY  lines "shape objects read_bytes indexed_bytes", optionally preceded by "before" or
          "after" (figures of another build of the library measured beside this one)
  HEADER  one line saying where and when the figures were taken"""
import json
import re
import sys

readme, memory_txt, header = sys.argv[1:4]
configurations = list(zip(sys.argv[4::2], sys.argv[5::2]))

SHAPES = (0, 1)
SIZES = (10000, 100000, 1000000)
WORKFLOWS = ("lookup", "sync", "rename", "list-and-find", "two-tables", "remove-readd", "threads")


def load(path):
    rows = {}
    for b in json.load(open(path))["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        m = re.match(r"(\w+)/([\w-]+)/shape:(\d)/objects:(\d+)", name)
        if not m:
            continue
        unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b.get("time_unit", "ns")]
        # With several threads Google Benchmark divides the wall time by the iterations of all of
        # them: one step on one thread took that many times as long.
        threads = re.search(r"/threads:(\d+)", name)
        scale = int(threads.group(1)) if threads else 1
        rows[(m.group(1), m.group(2), int(m.group(3)), int(m.group(4)))] = b["real_time"] * unit * scale
    return rows


def fmt(v):
    if v is None:
        return "n/a"
    if v >= 100:
        return f"{v:,.0f}"
    return f"{v:.3g}"


def ratio(a, b):
    return None if a is None or b is None or b == 0 else a / b


results = {label: load(path) for label, path in configurations}
out = [header, ""]

for label, rows in results.items():
    out.append(f"**{label}**: ns per step (real time; `threads` is the time of one step on one of the two threads)")
    out.append("")
    out.append("| step | " + " | ".join(f"shape {s} {n // 1000}k" for s in SHAPES for n in SIZES) + " |")
    out.append("|---|" + "---:|" * (len(SHAPES) * len(SIZES)))
    for who in ("library", "plain", "walk"):
        for w in WORKFLOWS:
            cells = [rows.get((who, w, s, n)) for s in SHAPES for n in SIZES]
            if all(c is None for c in cells):
                continue
            out.append(f"| {who}/{w} | " + " | ".join(fmt(c) for c in cells) + " |")
    out.append("")


def worst(values):
    """The largest ratio and where it was measured."""
    best = None
    for where, v in values:
        if v is not None and (best is None or v > best[1]):
            best = (where, v)
    return best


goals = []


def goal(text, measure, found, target, ok):
    if found is None:
        goals.append(f"| {text} | {measure} | n/a | {target} | not measured |")
        return
    where, value = found
    goals.append(f"| {text} | {measure} | {value:.2f} ({where}) | {target} | {'met' if ok(value) else 'not met'} |")


default_label, default_rows = configurations[0][0], results[configurations[0][0]]
warm_label = "warm-heap" if "warm-heap" in results else default_label
warm_rows = results[warm_label]

for w in WORKFLOWS[1:]:
    goal(f"`{w}` step at most 3x the `lookup` step", f"{w} / lookup, worst size and shape ({default_label})",
         worst((f"shape {s} {n // 1000}k", ratio(default_rows.get(("library", w, s, n)), default_rows.get(("library", "lookup", s, n))))
               for s in SHAPES for n in SIZES), "<= 3", lambda v: v <= 3)
for w in WORKFLOWS:
    goal(f"`{w}` step at most 1.5x the plain model's", f"library / plain, worst size and shape ({default_label})",
         worst((f"shape {s} {n // 1000}k", ratio(default_rows.get(("library", w, s, n)), default_rows.get(("plain", w, s, n))))
               for s in SHAPES for n in SIZES), "<= 1.5", lambda v: v <= 1.5)
for w in WORKFLOWS:
    goal(f"`{w}` step at 1M at most 2x the step at 10k", f"1M / 10k, worst shape ({warm_label})",
         worst((f"shape {s}", ratio(warm_rows.get(("library", w, s, 1000000)), warm_rows.get(("library", w, s, 10000))))
               for s in SHAPES), "<= 2", lambda v: v <= 2)
for w in ("two-tables", "threads"):
    goal(f"`{w}` within 1.2x of `sync`", f"{w} / sync, worst size and shape ({default_label})",
         worst((f"shape {s} {n // 1000}k", ratio(default_rows.get(("library", w, s, n)), default_rows.get(("library", "sync", s, n))))
               for s in SHAPES for n in SIZES), "<= 1.2", lambda v: v <= 1.2)
slowest = worst((f"shape {s}, {w}", ratio(default_rows.get(("library", w, s, 100000)), default_rows.get(("walk", "lookup", s, 100000))))
                for s in SHAPES for w in WORKFLOWS if w != "remove-readd")
goal("at 100k, every step but `remove-readd` at least 100x faster than the walk", f"step / walk, slowest ({default_label})",
     None if slowest is None else (slowest[0], 1 / slowest[1]), ">= 100", lambda v: v >= 100)

# Index memory: bytes per object once the indexes are in use, this build and, when given, another.
memory = {}
for line in open(memory_txt):
    parts = line.split()
    if not parts:
        continue
    build = "after"
    if parts[0] in ("before", "after"):
        build, parts = parts[0], parts[1:]
    shape, objects, read, indexed = int(parts[0]), int(parts[1]), float(parts[2]), float(parts[3])
    memory[(build, shape, objects)] = (read, indexed)
if memory:
    out.append("Heap bytes per object of a table read from a generated document (`kova_bench_index_memory`), once read")
    out.append("and once its indexes are in use" + (", before (the previous index design) and after:" if any(k[0] == "before" for k in memory) else ":"))
    out.append("")
    out.append("| shape | objects | " + " | ".join(f"{b} read | {b} indexed" for b in ("before", "after") if any(k[0] == b for k in memory)) + " |")
    builds = [b for b in ("before", "after") if any(k[0] == b for k in memory)]
    out.append("|---:|---:|" + "---:|---:|" * len(builds))
    for s in SHAPES:
        for n in SIZES:
            cells = []
            for b in builds:
                read, indexed = memory.get((b, s, n), (None, None))
                cells += [fmt(read), fmt(indexed)]
            out.append(f"| {s} | {n:,} | " + " | ".join(cells) + " |")
    out.append("")
    if "before" in builds:
        growth = worst((f"shape {s} {n // 1000}k", memory[("after", s, n)][1] - memory[("before", s, n)][1])
                       for s in SHAPES for n in SIZES if ("after", s, n) in memory and ("before", s, n) in memory)
        goal("index memory per object within 16 bytes of the previous design's", "after - before, indexed, largest",
             growth, "<= 16 bytes", lambda v: v <= 16)

out.append("| Goal | Measure | Value (where) | Target | Verdict |")
out.append("|---|---|---|---|---|")
out += goals
out.append("")

text = open(readme).read()
block = "<!-- WORKFLOW BEGIN -->\n" + "\n".join(out) + "\n<!-- WORKFLOW END -->"
if "<!-- WORKFLOW BEGIN -->" in text:
    text = re.sub(r"<!-- WORKFLOW BEGIN -->.*<!-- WORKFLOW END -->", lambda _: block, text, flags=re.S)
else:
    text = text.rstrip("\n") + "\n\n" + block + "\n"
open(readme, "w").write(text)
