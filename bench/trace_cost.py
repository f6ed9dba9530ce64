#!/usr/bin/env python3
"""Whether a trace point compiled in but filtered out costs anything.

usage: trace_cost.py TRACED UNTRACED OUT_DIR [ROUNDS]
       trace_cost.py --compare OUT_DIR

TRACED and UNTRACED are the two programs of trace_cost_bench.cpp: the
service's Lab call with its trace point on the switch but filtered out
(ServiceLabTracedFilteredOut), and the same call in the library built
without trace points (ServiceLabUntraced); each times BareLabKernel too.

The programs run in turn, ROUNDS times each (default 3): traced, untraced,
traced, untraced, ... Each run repeats both benchmarks, interleaved at
random, and writes OUT_DIR/traced_N.json or OUT_DIR/untraced_N.json
(--compare reads those again without running anything).

The figure of a run is its service call's CPU time over its own kernel's,
each the minimum of its repetitions. The kernel is the same code in both
programs, so dividing by it takes out how fast the machine was in that
process; and on a shared machine another program only ever adds time, so
the minimum is the least disturbed measurement. Of each program the best
(lowest) figure of its rounds counts. Exits 1 when the traced figure is
more than 5 % above the untraced one, or when a run failed or reported an
error (DebugOutput.txt written: the trace point was not filtered out).
"""
import json
import os
import subprocess
import sys

from ratios import TO_NS, plain_name

KERNEL = "BareLabKernel"
TRACED = "ServiceLabTracedFilteredOut"
UNTRACED = "ServiceLabUntraced"
LIMIT = 0.05
ROUNDS = 3
REPETITIONS = 5
MIN_TIME_S = 0.05


class RunFailed(Exception):
    pass


def run(program, out):
    """Runs one program into the JSON file `out`; its console report is
    shown only when it fails."""
    command = [
        program,
        f"--benchmark_out={out}",
        "--benchmark_out_format=json",
        f"--benchmark_repetitions={REPETITIONS}",
        f"--benchmark_min_time={MIN_TIME_S}",
        "--benchmark_enable_random_interleaving=true",
    ]
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if result.returncode != 0:
        raise RunFailed(f"{os.path.basename(program)} exited with {result.returncode}:\n{result.stdout}")


def minima(path):
    """{name: least CPU time in ns of its repetitions}. A benchmark that
    reported an error fails the run."""
    with open(path, encoding="utf-8") as handle:
        report = json.load(handle)
    least = {}
    for entry in report["benchmarks"]:
        if entry.get("error_occurred"):
            raise RunFailed(f"{path}: {entry['name']}: {entry.get('error_message', 'error')}")
        if entry.get("run_type") == "aggregate":
            continue
        name = plain_name(entry.get("run_name", entry["name"]))
        cpu = entry["cpu_time"] * TO_NS[entry.get("time_unit", "ns")]
        least[name] = min(cpu, least.get(name, cpu))
    return least


def figure(path, service):
    """(service ns, kernel ns, their ratio) of one run."""
    least = minima(path)
    missing = [name for name in (service, KERNEL) if name not in least]
    if missing:
        raise RunFailed(f"{path}: {', '.join(missing)} missing")
    return least[service], least[KERNEL], least[service] / least[KERNEL]


def outputs(out_dir, variant):
    """The JSON files of one program in OUT_DIR, in the order of the rounds."""
    names = [name for name in os.listdir(out_dir) if name.startswith(variant + "_") and name.endswith(".json")]
    names.sort(key=lambda name: int(name[len(variant) + 1 : -len(".json")]))
    return [os.path.join(out_dir, name) for name in names]


def compare(out_dir):
    best = {}
    print(f"{'run':16} {'service ns':>11} {'kernel ns':>10} {'x kernel':>9}")
    for variant, service in (("traced", TRACED), ("untraced", UNTRACED)):
        paths = outputs(out_dir, variant)
        if not paths:
            raise RunFailed(f"no {variant}_N.json in {out_dir}")
        for path in paths:
            service_ns, kernel_ns, ratio = figure(path, service)
            label = os.path.basename(path)[: -len(".json")]
            print(f"{label:16} {service_ns:11.1f} {kernel_ns:10.1f} {ratio:9.3f}")
            best[variant] = min(ratio, best.get(variant, ratio))

    difference = best["traced"] / best["untraced"] - 1.0
    verdict = "within" if difference <= LIMIT else "ABOVE"
    print(f"\n{TRACED}: {best['traced']:.3f} x {KERNEL} (best of its runs)")
    print(f"{UNTRACED}: {best['untraced']:.3f} x {KERNEL} (best of its runs)")
    print(f"traced over untraced: {difference * 100:+.1f} % ({verdict} the limit of {LIMIT * 100:g} %)")
    return 0 if difference <= LIMIT else 1


def main():
    arguments = sys.argv[1:]
    if len(arguments) == 2 and arguments[0] == "--compare":
        out_dir = arguments[1]
    elif len(arguments) in (3, 4):
        traced, untraced, out_dir = arguments[:3]
        rounds = int(arguments[3]) if len(arguments) == 4 else ROUNDS
        os.makedirs(out_dir, exist_ok=True)
        for name in os.listdir(out_dir):
            if name.endswith(".json"):
                os.remove(os.path.join(out_dir, name))
    else:
        print(__doc__.split("\n\n")[1], file=sys.stderr)
        return 2
    try:
        if arguments[0] != "--compare":
            for index in range(rounds):
                run(traced, os.path.abspath(os.path.join(out_dir, f"traced_{index}.json")))
                run(untraced, os.path.abspath(os.path.join(out_dir, f"untraced_{index}.json")))
        return compare(out_dir)
    except RunFailed as failure:
        print(f"trace_cost.py: {failure}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
