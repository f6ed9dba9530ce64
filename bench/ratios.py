#!/usr/bin/env python3
"""Ratios and limits from the benchmark JSON.

Absolute times on a shared machine are noise; the ratio of a call to the
bare work it needs is the figure to watch. Every figure is the median of
the repetitions. Exits 1 when a limit is broken:

- ServiceLabUnchanged above 3 x BareLabKernel (3 x 36 multiply-adds and the
  Lab formulas on plain floats, with the library's own weights);
- ResolveComponent above 3 x LookupAndCreateComponent (one lookup in a map of
  as many names, and the creator's making of the component in its pointer);
- StartupScanTwentyPlugins above 20 ms: the naming service's first
  Instance() with twenty plug-in files, as the child process measured it.

Ratios are of CPU times, which another program on the machine disturbs far
less than wall times. The scan is timed by the child itself (manual time),
so its wall time is the figure there.
"""
import json
import re
import sys

KERNEL = "BareLabKernel"
LAB = "ServiceLabUnchanged"
LAB_LIMIT = 3.0
RESOLVE = "ResolveComponent"
RESOLVE_BASE = "LookupAndCreateComponent"
RESOLVE_LIMIT = 3.0
SCAN = "StartupScanTwentyPlugins"
SCAN_LIMIT_MS = 20.0

TO_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def plain_name(name):
    """The benchmark's name without the pieces that the benchmark options
    add (/iterations:N, /min_time:T, /repeats:N, /manual_time, /real_time)."""
    return re.sub(r"/(iterations:\d+|min_time:[\d.]+|repeats:\d+|manual_time|real_time)", "", name)


def medians(path):
    """{name: entry} with times in ns, under their plain names."""
    with open(path, encoding="utf-8") as handle:
        report = json.load(handle)
    entries = {}
    for entry in report["benchmarks"]:
        name = entry["name"]
        # A run that reported an error has no time worth the name: the
        # benchmark counts as missing.
        if entry.get("error_occurred"):
            print(f"ratios.py: {name}: {entry.get('error_message', 'error')}", file=sys.stderr)
            continue
        # With repetitions only the aggregates are reported: take the median.
        if entry.get("run_type") == "aggregate":
            if entry.get("aggregate_name") != "median":
                continue
            name = entry["run_name"]
        manual = "/manual_time" in name
        name = plain_name(name)
        scale = TO_NS[entry.get("time_unit", "ns")]
        entries[name] = {
            "cpu": entry["cpu_time"] * scale,
            "real": entry["real_time"] * scale,
            "manual": manual,
            "entry": entry,
        }
    return entries


def main():
    if len(sys.argv) != 2:
        print("usage: ratios.py RESULTS.json", file=sys.stderr)
        return 2
    entries = medians(sys.argv[1])
    missing = [name for name in (KERNEL, LAB, RESOLVE, RESOLVE_BASE, SCAN) if name not in entries]
    if missing:
        print(f"ratios.py: {', '.join(missing)} missing from {sys.argv[1]}", file=sys.stderr)
        return 2

    kernel = entries[KERNEL]["cpu"]
    print(f"{'benchmark':40} {'ns':>12} {'x kernel':>9}")
    for name, values in entries.items():
        if not values["manual"]:
            print(f"{name:40} {values['cpu']:12.1f} {values['cpu'] / kernel:9.2f}")

    failed = False

    lab = entries[LAB]["cpu"] / kernel
    failed |= lab > LAB_LIMIT
    verdict = "within" if lab <= LAB_LIMIT else "ABOVE"
    print(f"\n{LAB}: {lab:.2f} x the bare kernel ({verdict} the limit of {LAB_LIMIT:g} x)")

    resolve = entries[RESOLVE]["cpu"] / entries[RESOLVE_BASE]["cpu"]
    failed |= resolve > RESOLVE_LIMIT
    verdict = "within" if resolve <= RESOLVE_LIMIT else "ABOVE"
    print(f"{RESOLVE}: {entries[RESOLVE]['cpu']:.1f} ns, {resolve:.2f} x {RESOLVE_BASE} "
          f"({entries[RESOLVE_BASE]['cpu']:.1f} ns; {verdict} the limit of {RESOLVE_LIMIT:g} x)")

    scan = entries[SCAN]
    scan_ms = scan["real"] / 1e6
    failed |= scan_ms > SCAN_LIMIT_MS
    verdict = "within" if scan_ms <= SCAN_LIMIT_MS else "ABOVE"
    wall = scan["entry"].get("child_wall_us")
    whole = f"; the whole child {wall / 1e3:.2f} ms" if wall is not None else ""
    print(f"{SCAN}: {scan_ms:.2f} ms ({verdict} the limit of {SCAN_LIMIT_MS:g} ms{whole})")

    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
