#!/usr/bin/env bash
# Times `qvi color` against spec2cie of the Debian package argyll on the same
# generated file of spectra (D65, 2 degrees), whole processes, paired runs
# (qvi, peer, qvi, peer, ...). Prints every pair and the median ratios
# peer / qvi of wall time and of peak memory; qvi's peak is also measured on
# a file a tenth the size, to show that it does not grow with the file.
#
# usage: bench/compare_peer.sh [ROUNDS]        (default 5 pairs)
# environment: QVI=path to qvi (default build/bench/tools/qvi, built by
#              `cmake --workflow --preset bench`), SPECTRA=number of spectra
#              (default 100000), KEEP=1 keeps the working directory.
# needs: apt-get install argyll time python3
#
# The peer reads its own CTI3 variant of CGATS; its txt2ti3 converts the
# generated file once, before any timing. The peer is asked not to copy the
# spectra into its output (-n): qvi writes none either. The peer writes XYZ
# and Lab, qvi writes Lab.
# Exit status: 0 when qvi is at least 10 times faster, 1 when not, 2 when
# something is missing.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
rounds="${1:-5}"
spectra="${SPECTRA:-100000}"
qvi="${QVI:-$root/build/bench/tools/qvi}"

missing=()
for tool in spec2cie txt2ti3; do
  command -v "$tool" >/dev/null 2>&1 || missing+=("$tool (package argyll)")
done
[ -x /usr/bin/time ] || missing+=("/usr/bin/time (package time)")
command -v python3 >/dev/null 2>&1 || missing+=("python3")
if [ ${#missing[@]} -gt 0 ]; then
  printf 'compare_peer.sh: missing: %s\n' "${missing[@]}" >&2
  echo "install with: apt-get install argyll time python3" >&2
  exit 2
fi
if [ ! -x "$qvi" ]; then
  echo "compare_peer.sh: no qvi at $qvi; build it with: cmake --workflow --preset bench" >&2
  exit 2
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/qvi-peer.XXXXXX")"
if [ "${KEEP:-0}" != 1 ]; then
  trap 'rm -rf "$work"' EXIT
fi

echo "generating $spectra spectra and $((spectra / 10)) spectra in $work"
python3 "$here/make_spectra.py" "$spectra" >"$work/spectra.cgats"
python3 "$here/make_spectra.py" "$((spectra / 10))" >"$work/tenth.cgats"
echo "converting for the peer (txt2ti3, not timed)"
txt2ti3 "$work/spectra.cgats" "$work/spectra" >/dev/null

# Runs a command under /usr/bin/time; prints "seconds kilobytes".
measure() {
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >/dev/null 2>"$work/stderr" || {
    echo "compare_peer.sh: failed: $*" >&2
    cat "$work/stderr" >&2
    exit 2
  }
  tail -n 1 "$work/time"
}

run_qvi() {
  measure "$qvi" color "$1" --illuminant D65 --observer 2 -o "$work/qvi.cgats"
}
run_peer() {
  measure spec2cie -n -i D65 -o 1931_2 "$work/spectra.ti3" "$work/peer.ti3"
}

tenth="$(run_qvi "$work/tenth.cgats")"
echo "qvi on $((spectra / 10)) spectra: ${tenth% *} s, peak ${tenth#* } KB"

results="$work/pairs"
: >"$results"
printf '%5s %10s %12s %10s %12s\n' pair "qvi s" "qvi KB" "peer s" "peer KB"
for ((round = 1; round <= rounds; ++round)); do
  a="$(run_qvi "$work/spectra.cgats")"
  b="$(run_peer)"
  printf '%5d %10s %12s %10s %12s\n' "$round" "${a% *}" "${a#* }" "${b% *}" "${b#* }"
  echo "$a $b" >>"$results"
done

python3 - "$results" "$work/qvi.cgats" "$work/peer.ti3" "$spectra" "${tenth#* }" <<'EOF'
import statistics
import sys

pairs = [list(map(float, line.split())) for line in open(sys.argv[1]) if line.strip()]
time_ratio = statistics.median(peer_s / max(qvi_s, 0.01) for qvi_s, _, peer_s, _ in pairs)
memory_ratio = statistics.median(peer_kb / qvi_kb for _, qvi_kb, _, peer_kb in pairs)
qvi_peak = statistics.median(qvi_kb for _, qvi_kb, _, _ in pairs)


def lab_rows(path, prefix):
    """SAMPLE_ID -> (L, a, b) from the fields prefix + L, A, B of a CGATS file."""
    rows = {}
    fields = None
    in_format = in_data = False
    for line in open(path):
        words = line.split()
        if not words:
            continue
        if words[0] == "BEGIN_DATA_FORMAT":
            in_format, fields = True, []
        elif words[0] == "END_DATA_FORMAT":
            in_format = False
        elif in_format:
            fields += words
        elif words[0] == "BEGIN_DATA":
            in_data = True
        elif words[0] == "END_DATA":
            in_data = False
        elif in_data:
            values = dict(zip(fields, words))
            rows[values["SAMPLE_ID"]] = tuple(float(values[prefix + k]) for k in "LAB")
    return rows


# The peer's LAB_ fields are relative to D50 (its profile connection
# space); D65LAB_ is Lab relative to the D65 white, as qvi computes it.
ours, theirs = lab_rows(sys.argv[2], "LAB_"), lab_rows(sys.argv[3], "D65LAB_")
differences = [sum((p - q) ** 2 for p, q in zip(ours[key], theirs[key])) ** 0.5 for key in ours if key in theirs]
print()
print(f"median ratio of wall time   peer / qvi: {time_ratio:.1f}")
print(f"median ratio of peak memory peer / qvi: {memory_ratio:.1f}")
print(f"qvi peak memory: {float(sys.argv[5]):.0f} KB for {int(sys.argv[4]) // 10} spectra, "
      f"{qvi_peak:.0f} KB for {sys.argv[4]}")
if differences:
    print(f"Lab agreement over {len(differences)} samples (delta E 1976): "
          f"mean {statistics.mean(differences):.4f}, max {max(differences):.4f} "
          "(each weights the spectra with its own tables)")
met = time_ratio >= 10.0
print(f"target (at least 10 x faster): {'met' if met else 'NOT met'}")
sys.exit(0 if met else 1)
EOF
