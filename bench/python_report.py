#!/usr/bin/python3
"""Turns the JSON output of kova_bench_python (one file per host configuration) into the Python
package's section of bench/README.md (between the PYTHON markers): the Python calls beside the C++
calls they stand on, and the package's goals as figures of the same run, each with its verdict.

usage: python_report.py README HEADER LABEL JSON [LABEL JSON ...]
  HEADER  one line saying where and when the figures were taken"""
import json
import re
import sys

readme, header = sys.argv[1:3]
configurations = list(zip(sys.argv[3::2], sys.argv[4::2]))

SHAPES = (0, 1)
SIZES = (10000, 100000, 1000000)
LARGE = 1000000  # the document and the table the goals are about
AUDIT_DOCUMENTS = 10000


def load(path):
    rows = {}
    for b in json.load(open(path))["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        if b.get("error_occurred"):
            continue
        # Benchmarks timed by hand are named with "/manual_time" at the end.
        rows[re.sub(r"/manual_time$", "", b.get("run_name", b["name"]))] = b
    return rows


def fmt(v, digits=3):
    if v is None:
        return "n/a"
    if abs(v) >= 100:
        return f"{v:,.0f}"
    return f"{v:.{digits}g}"


def ratio(v):
    return "n/a" if v is None else f"{v:.2f}"


def ms(ns_per_object, objects):
    return None if ns_per_object is None else ns_per_object * objects / 1e6


def verdict(value, target, at_most):
    if value is None:
        return "not measured"
    return "met" if (value <= target if at_most else value >= target) else "not met"


out = [header, ""]
goals = {}  # goal -> list of (measure, value, target text, verdict) per configuration

for label, path in configurations:
    rows = load(path)

    def counter(name, key):
        b = rows.get(name)
        return None if b is None else b.get(key)

    out.append(f"**{label}**")
    out.append("")
    out.append("Reading and writing (ms per document; ratios are the Python call's time over the C++ call's):")
    out.append("")
    out.append("| document | C++ read | `read(str)` | ratio | `read(bytes)` | ratio "
               "| C++ write | `to_json()` | ratio |")
    out.append("|---|---:|---:|---:|---:|---:|---:|---:|---:|")
    for shape in SHAPES:
        for n in SIZES:
            read = f"BM_Read/shape:{shape}/objects:{n}"
            write = f"BM_Write/shape:{shape}/objects:{n}"
            if read not in rows and write not in rows:
                continue
            cells = [
                fmt(ms(counter(read, "cxx_ns_per_object"), n)),
                fmt(ms(counter(read, "python_str_ns_per_object"), n)),
                ratio(counter(read, "python_str_x")),
                fmt(ms(counter(read, "python_bytes_ns_per_object"), n)),
                ratio(counter(read, "python_bytes_x")),
                fmt(ms(counter(write, "cxx_ns_per_object"), n)),
                fmt(ms(counter(write, "python_ns_per_object"), n)),
                ratio(counter(write, "python_x")),
            ]
            out.append(f"| shape {shape}, {n:,} objects | " + " | ".join(cells) + " |")
    out.append("")
    out.append("Walking a table, ns per object: `for o in table: o.kova_id`, the Python loop alone "
               "(`for o in table: pass`), and the C++ walk reading `GetKOVAID()`:")
    out.append("")
    out.append("| table | `o.kova_id` | loop alone | C++ |")
    out.append("|---|---:|---:|---:|")
    for shape in SHAPES:
        for n in SIZES:
            name = f"BM_Iterate/shape:{shape}/objects:{n}"
            if name not in rows:
                continue
            cells = [counter(name, "python_ns_per_object"), counter(name, "python_loop_only_ns_per_object"),
                     counter(name, "cxx_ns_per_object")]
            out.append(f"| shape {shape}, {n:,} objects | " + " | ".join(fmt(c) for c in cells) + " |")
    out.append("")
    out.append("Auditing documents on disk (100 objects each), documents a second; the C++ columns read the same "
               "files with `TranslateToMappingTable` on threads of their own, without Python:")
    out.append("")
    out.append("| documents | `audit`, 1 worker | `audit`, 2 workers | 2 workers / 1 "
               "| C++, 1 thread | C++, 2 threads | 2 threads / 1 |")
    out.append("|---|---:|---:|---:|---:|---:|---:|")
    for name, b in rows.items():
        m = re.fullmatch(r"BM_Audit/documents:(\d+)", name)
        if not m:
            continue

        def rate(key):
            v = b.get(key)
            return None if not v else 1e9 / v

        cells = [fmt(rate("python_1_worker_ns_per_document")), fmt(rate("python_2_workers_ns_per_document")),
                 ratio(b.get("speedup_2_workers")), fmt(rate("cxx_1_thread_ns_per_document")),
                 fmt(rate("cxx_2_threads_ns_per_document")), ratio(b.get("cxx_speedup_2_threads"))]
        out.append(f"| {int(m.group(1)):,} | " + " | ".join(cells) + " |")
    out.append("")

    def goal(name, measure, value, target, at_most, target_text, shown=ratio):
        goals.setdefault(name, []).append(
            (f"{measure} ({label})", shown(value), target_text, verdict(value, target, at_most)))

    for shape in SHAPES:
        goal("read", f"`read(str)` / C++ read, shape {shape}, 1M objects",
             counter(f"BM_Read/shape:{shape}/objects:{LARGE}", "python_str_x"), 1.15, True, "<= 1.15")
    for shape in SHAPES:
        goal("write", f"`to_json()` / C++ write, shape {shape}, 1M objects",
             counter(f"BM_Write/shape:{shape}/objects:{LARGE}", "python_x"), 1.15, True, "<= 1.15")
    for shape in SHAPES:
        goal("iterate", f"`for o in table: o.kova_id`, ns per object, shape {shape}, 1M objects",
             counter(f"BM_Iterate/shape:{shape}/objects:{LARGE}", "python_ns_per_object"), 1000, True, "< 1,000",
             fmt)
    audit = f"BM_Audit/documents:{AUDIT_DOCUMENTS}"
    goal("audit", f"`audit` of {AUDIT_DOCUMENTS:,} documents: rate on 2 workers / rate on 1 "
         f"(C++ on two threads, same run: {ratio(counter(audit, 'cxx_speedup_2_threads'))})",
         counter(audit, "speedup_2_workers"), 1.7, False, ">= 1.7")

out.append("Goals:")
out.append("")
out.append("| Goal | Measure | Value | Target | Verdict |")
out.append("|---|---|---:|---|---|")
for name, entries in goals.items():
    for measure, value, target, said in entries:
        out.append(f"| {name} | {measure} | {value} | {target} | {said} |")

table = "\n".join(out)
text = open(readme).read()
begin, end = "<!-- PYTHON BEGIN -->", "<!-- PYTHON END -->"
if begin in text and end in text:
    text = re.sub(re.escape(begin) + ".*?" + re.escape(end), lambda _: begin + "\n" + table + "\n" + end, text,
                  flags=re.S)
else:
    text += "\n" + begin + "\n" + table + "\n" + end + "\n"
open(readme, "w").write(text)
