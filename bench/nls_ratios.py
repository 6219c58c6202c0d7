#!/usr/bin/env python3
"""Ratios of the code-set benchmark, for docs/performance.md.

usage: qarq_bench_nls --benchmark_repetitions=8 \
           --benchmark_enable_random_interleaving=true --benchmark_min_time=0.1 \
           --benchmark_format=json > nls.json
       bench/nls_ratios.py nls.json

For each case and level: the best (least disturbed) and the median rate of
the repetitions, in MB of input per second, against ICU's faster way
(ucnv_convertEx or the algorithmic calls, whichever has the higher median)
measured in the same run; pure ASCII against memcpy of the same text.
"""
import json
import statistics
import sys
from collections import defaultdict

runs = defaultdict(list)
for b in json.load(open(sys.argv[1]))["benchmarks"]:
    if b.get("run_type") == "iteration" and not b.get("error_occurred"):
        runs[b["run_name"]].append(b["bytes_per_second"] / 1e6)


def rates(name):
    r = runs.get(name)
    return (max(r), statistics.median(r)) if r else None


def icu(case):
    both = [rates(f"{way}/{case}") for way in ("icuConvertEx", "icuAlgorithmic")]
    both = [x for x in both if x]
    return max(both, key=lambda x: x[1]) if both else None


print("| Case | level | qarq best / median | comparison best / median | ratio best, median |")
print("|---|---|---|---|---|")
cases = sorted({n.split("/")[1].rsplit("_", 1)[0] for n in runs if n.startswith("qarqConvert/")})
for case in cases:
    base = rates(f"memcpyBaseline/ascii") if case.endswith("ascii") or case.startswith("ascii") else icu(case)
    label = "memcpy" if case.endswith("ascii") or case.startswith("ascii") else "ICU"
    for level in ("scalar", "sse42", "avx2", "avx512"):
        q = rates(f"qarqConvert/{case}_{level}")
        if not q or not base:
            continue
        if label == "memcpy":
            ratio = f"{100 * q[0] / base[0]:.0f}%, {100 * q[1] / base[1]:.0f}%"
        else:
            ratio = f"{q[0] / base[0]:.2f}x, {q[1] / base[1]:.2f}x"
        print(f"| {case} | {level} | {q[0]:.0f} / {q[1]:.0f} | {label} {base[0]:.0f} / {base[1]:.0f} | {ratio} |")
