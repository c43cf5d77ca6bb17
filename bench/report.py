#!/usr/bin/env python3
"""Turns the Google Benchmark JSON files of one run (one per host configuration), the peak-memory
lines and the page-fault line into the results of bench/README.md, with the goals' ratios computed
from figures of the same run.

usage: report.py PEAK FAULTS README NPROC CPU DATE COMMIT LABEL JSON [LABEL JSON ...]"""
import json
import re
import sys

peak_txt, faults_txt, readme, nproc, cpu, date, commit = sys.argv[1:8]
configurations = list(zip(sys.argv[8::2], sys.argv[9::2]))


def load(path):
    rows = {}
    for b in json.load(open(path))["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        rows[b.get("run_name", b["name"])] = b
    return rows


rows = {}


def get(name, key):
    b = rows.get(name)
    return None if b is None or key not in b else b[key]


def fmt(v, unit=""):
    if v is None:
        return "n/a"
    if abs(v) >= 100:
        return f"{v:,.0f}{unit}"
    return f"{v:.3g}{unit}"


lines = [f"Machine: {nproc} cores, {cpu}. Date: {date}. Commit: {commit}."]
faults = open(faults_txt).read().split()
if len(faults) == 4:
    lines.append("")
    lines.append(f"Fresh memory on this machine: {float(faults[1]):.2f} us to touch a new 4 KiB page, "
                 f"{float(faults[3]):.2f} us per 4 KiB with transparent huge pages (kova_bench_page_faults).")


def report(label):
    lines.append("")
    lines.append(f"### Host configuration: {label}")
    lines.append("")
    lines.append("| Benchmark | Time/iter | Throughput | ns/object or ns/op |")
    lines.append("|---|---|---|---|")
    for name, b in rows.items():
        unit = b.get("time_unit", "ns")
        thr = ""
        if "bytes_per_second" in b:
            thr = f"{b['bytes_per_second'] / 1e6:,.1f} MB/s"
        elif "items_per_second" in b:
            thr = f"{b['items_per_second']:,.0f} items/s"
        per = b.get("ns_per_object")
        if per is None and "items_per_second" in b:
            per = 1e9 / b["items_per_second"]
        lines.append(f"| {name} | {fmt(b['real_time'])} {unit} | {thr} | {fmt(per)} |")

    lines.append("")
    lines.append("Goals, as ratios within this run:")
    lines.append("")
    lines.append("| Goal | Measure | Value | Target |")
    lines.append("|---|---|---|---|")
    for shape in (0, 1):
        for n in (10000, 100000, 1000000):
            suffix = f"shape:{shape}/objects:{n}"
            r = get(f"BM_Read/{suffix}", "bytes_per_second")
            s = get(f"BM_SimdjsonParse/{suffix}", "bytes_per_second")
            w = get(f"BM_Write/{suffix}", "bytes_per_second")
            if r and s:
                lines.append(f"| 1 read | read / simdjson, {suffix} | {r / s:.3f} | >= 0.5 |")
            if r and w:
                lines.append(f"| 1 write | write / read, {suffix} | {w / r:.2f} | >= 1 |")
    for bench in ("BM_Read", "BM_Insert"):
        for shape in (0, 1):
            small = get(f"{bench}/shape:{shape}/objects:10000", "ns_per_object")
            big = get(f"{bench}/shape:{shape}/objects:1000000", "ns_per_object")
            if small and big:
                lines.append(f"| 2 linear | {bench} shape {shape}: ns/object 1M / 10k | {big / small:.2f} | <= 1.3 |")
    for bench in ("BM_LookupInstanceFromKOVAId", "BM_LookupReferenceFromPlexoId"):
        small = get(f"{bench}/objects:10000", "items_per_second")
        big = get(f"{bench}/objects:1000000", "items_per_second")
        if small and big:
            lines.append(f"| 2 linear | {bench}: ns/look-up 1M / 10k | {small / big:.2f} | <= 1.3 |")
    def ratio(measure, numerator, denominator, target, digits=2):
        if numerator and denominator:
            lines.append(f"| 3 envelope | {measure} | {numerator / denominator:.{digits}f} | {target} |")

    ratio("CompressMTWithPrefix / zlib compress (level 6)", get("BM_CompressMTWithPrefix/100000", "bytes_per_second"),
          get("BM_ZlibCompress/100000", "bytes_per_second"), ">= 1.5")
    ratio("envelope bytes / zlib stream in base64 bytes", get("BM_CompressMTWithPrefix/100000", "out_bytes"),
          get("BM_ZlibCompress/100000", "out_bytes_base64"), "<= 1", 3)
    ratio("TryDecompressMT / zlib uncompress", get("BM_TryDecompressMT/100000", "bytes_per_second"),
          get("BM_ZlibUncompress/100000", "bytes_per_second"), ">= 1.5")
    st = get("BM_StampMap20", "items_per_second")
    if st:
        lines.append(f"| 5 stamps | map form, 20 attributes, stamps/s | {st:,.0f} | >= 200,000 |")


for label, path in configurations:
    rows = load(path)
    report(label)
lines.append("")
lines.append("Peak memory (default configuration):")
lines.append("")
lines.append("| Goal | Measure | Value | Target |")
lines.append("|---|---|---|---|")
modes = {"keep": "caller keeps its text", "hand-over": "caller hands its text over"}
targets = {"keep": "<= 4.0", "hand-over": "<= 3.2"}
for line in open(peak_txt):
    parts = line.split()
    if len(parts) == 6:
        lines.append(f"| 4 memory | peak / text, {parts[0]} {parts[1]} objects ({int(parts[2]):,} bytes of text), "
                     f"{modes.get(parts[5], parts[5])} | {float(parts[4]):.2f} | {targets.get(parts[5], '')} |")

table = "\n".join(lines)
text = open(readme).read()
begin, end = "<!-- RESULTS BEGIN -->", "<!-- RESULTS END -->"
if begin in text and end in text:
    text = re.sub(re.escape(begin) + ".*?" + re.escape(end), lambda _: begin + "\n" + table + "\n" + end, text, flags=re.S)
else:
    text += "\n" + begin + "\n" + table + "\n" + end + "\n"
open(readme, "w").write(text)
