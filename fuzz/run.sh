#!/usr/bin/env bash
# Runs fuzz targets of a fuzz build for a bounded time each.
#
#   fuzz/run.sh [--build DIR] [--seconds N] [--jobs J] [TARGET...]
#
# DIR is the fuzz preset's build folder (default build/fuzz), N the seconds
# per target (default 60), J how many targets run at once (default 1);
# without TARGETs every target runs. Each target starts from its seeds
# (fuzz/corpus/<target>, the bundled files it reads, fuzz/regressions/
# <target>) with its dictionary; what it learns goes to DIR/fuzz-corpus/
# <target>, which a later run continues from. An input that crashes, hangs
# (over 10 s), leaks or breaks a check is saved in DIR/fuzz-findings/
# <target>/, the run fails, and the input belongs in fuzz/regressions/
# <target>/ once the fault is fixed. A summary line per target gives its
# executions.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="$root/build/fuzz"
seconds=60
jobs=1
targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --build) build="$2"; shift 2 ;;
    --seconds) seconds="${2:-60}"; shift 2 ;;
    --jobs) jobs="$2"; shift 2 ;;
    -h|--help) sed -n '2,17p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    -*) echo "run.sh: unknown option $1" >&2; exit 2 ;;
    *) targets+=("$1"); shift ;;
  esac
done
[ -n "$seconds" ] || seconds=60
build="$(cd "$build" && pwd)"
if [ ${#targets[@]} -eq 0 ]; then
  for program in "$build"/fuzz/*_fuzzer; do
    name="$(basename "$program")"
    targets+=("${name%_fuzzer}")
  done
fi
if [ ${#targets[@]} -eq 0 ]; then
  echo "run.sh: no fuzz targets in $build/fuzz (build the fuzz preset first)" >&2
  exit 2
fi

# The seeds, dictionary and largest input of each target.
options() {
  local target="$1"
  seeds=("$here/corpus/$target")
  dictionary=""
  maxlen=4096
  case "$target" in
    cgats) seeds+=("$root/data/samples"); dictionary=cgats.dict; maxlen=65536 ;;
    qvi) dictionary=qvi.dict; maxlen=65536 ;;
    measure_conditions) dictionary=conditions.dict ;;
    simulator_configuration) seeds+=("$root/data/simulator"); dictionary=simulator.dict ;;
    preferences) dictionary=preferences.dict ;;
    descriptors) dictionary=descriptors.dict ;;
  esac
  [ -d "$here/regressions/$target" ] && seeds+=("$here/regressions/$target")
  return 0
}

run_one() {
  local target="$1"
  local program="$build/fuzz/${target}_fuzzer"
  if [ ! -x "$program" ]; then
    echo "run.sh: no program $program" >&2
    return 2
  fi
  options "$target"
  local corpus="$build/fuzz-corpus/$target"
  local findings="$build/fuzz-findings/$target"
  local log="$build/fuzz-logs/$target.log"
  mkdir -p "$corpus" "$findings" "$(dirname "$log")"
  local arguments=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len="$maxlen"
                   -print_final_stats=1 -artifact_prefix="$findings/")
  [ -n "$dictionary" ] && arguments+=(-dict="$here/dictionaries/$dictionary")
  local existing=()
  for folder in "${seeds[@]}"; do
    [ -d "$folder" ] && existing+=("$folder")
  done
  # Scratch files of the targets (input files, qvi's temporary files) stay
  # in a folder of this run.
  local scratch
  scratch="$(mktemp -d "${TMPDIR:-/tmp}/qvimanager-fuzz-$target-XXXXXX")"
  local status=0
  (cd "$scratch" && TMPDIR="$scratch" QVIMANAGER_FUZZ_SCRATCH="$scratch" \
     "$program" "${arguments[@]}" "$corpus" "${existing[@]}") >"$log" 2>&1 || status=$?
  rm -rf "$scratch"
  local executions
  executions="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)"
  if [ "$status" -ne 0 ]; then
    echo "$target: FAILED after ${executions:-?} executions (status $status); log $log, input in $findings/"
    grep -E "^(==[0-9]+==ERROR|SUMMARY|fuzz check failed)" "$log" | head -5 || true
    return 1
  fi
  echo "$target: ${executions:-?} executions in ${seconds} s, corpus $(find "$corpus" -type f | wc -l) inputs"
}

failed=0
running=0
pids=()
for target in "${targets[@]}"; do
  run_one "$target" &
  pids+=($!)
  running=$((running + 1))
  if [ "$running" -ge "$jobs" ]; then
    wait "${pids[0]}" || failed=1
    pids=("${pids[@]:1}")
    running=$((running - 1))
  fi
done
for pid in "${pids[@]}"; do
  wait "$pid" || failed=1
done
exit "$failed"
