#!/usr/bin/env python3
"""Service-call time over bare-kernel time, from the benchmark JSON.

Absolute times on a shared machine are noise; the ratio of a call to the
bare arithmetic it needs (BareLabKernel: 3 x 36 multiply-adds and the Lab
formulas on plain floats, with the library's own weights) is the figure to
watch. Exits 1 when Lab under unchanged conditions is above 3x the kernel.
"""
import json
import sys

LIMIT = 3.0
TARGET = "ServiceLabUnchanged"
KERNEL = "BareLabKernel"


def medians(path):
    with open(path, encoding="utf-8") as handle:
        report = json.load(handle)
    times = {}
    for entry in report["benchmarks"]:
        name = entry["name"]
        # With repetitions only the aggregates are reported: take the median.
        if entry.get("run_type") == "aggregate":
            if entry.get("aggregate_name") != "median":
                continue
            name = entry["run_name"]
        times[name] = entry["cpu_time"]
    return times


def main():
    if len(sys.argv) != 2:
        print("usage: ratios.py RESULTS.json", file=sys.stderr)
        return 2
    times = medians(sys.argv[1])
    if KERNEL not in times or TARGET not in times:
        print(f"ratios.py: {KERNEL} or {TARGET} missing from {sys.argv[1]}", file=sys.stderr)
        return 2
    kernel = times[KERNEL]
    print(f"{'benchmark':40} {'ns':>12} {'x kernel':>9}")
    for name, time in times.items():
        print(f"{name:40} {time:12.1f} {time / kernel:9.2f}")
    ratio = times[TARGET] / kernel
    verdict = "within" if ratio <= LIMIT else "ABOVE"
    print(f"\n{TARGET}: {ratio:.2f} x the bare kernel ({verdict} the limit of {LIMIT:g} x)")
    return 0 if ratio <= LIMIT else 1


if __name__ == "__main__":
    sys.exit(main())
