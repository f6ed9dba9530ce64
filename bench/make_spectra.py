#!/usr/bin/env python3
"""Writes a CGATS file of N reflectance spectra, the same file every time.

usage: make_spectra.py N > FILE

SAMPLE_ID and SPECTRAL_NM380 ... SPECTRAL_NM730 on a 0..1 scale with five
decimals: random walks between 0.001 and 0.999 from a 64-bit linear
congruential generator with a fixed seed, so that the file depends on N
alone (not on the Python version). For the speed comparisons; the files are
not kept in the repository.
"""
import sys

MULTIPLIER = 6364136223846793005
INCREMENT = 1442695040888963407
MASK = (1 << 64) - 1


def main():
    if len(sys.argv) != 2 or not sys.argv[1].isdigit() or int(sys.argv[1]) < 1:
        print("usage: make_spectra.py N > FILE", file=sys.stderr)
        return 2
    count = int(sys.argv[1])
    state = 12345

    def uniform():
        nonlocal state
        state = (state * MULTIPLIER + INCREMENT) & MASK
        return (state >> 11) / float(1 << 53)

    out = sys.stdout
    out.write("CGATS.17\n")
    out.write('ORIGINATOR\t"make_spectra.py"\n')
    out.write('DESCRIPTOR\t"%d generated reflectance spectra"\n' % count)
    out.write("NUMBER_OF_FIELDS\t37\n")
    out.write("BEGIN_DATA_FORMAT\n")
    out.write("SAMPLE_ID\t" + "\t".join("SPECTRAL_NM%d" % (380 + 10 * i) for i in range(36)) + "\n")
    out.write("END_DATA_FORMAT\n")
    out.write("NUMBER_OF_SETS\t%d\n" % count)
    out.write("BEGIN_DATA\n")
    for sample in range(1, count + 1):
        level = 0.05 + 0.85 * uniform()
        values = []
        for _ in range(36):
            level = min(0.999, max(0.001, level + 0.06 * (uniform() - 0.5)))
            values.append("%.5f" % level)
        out.write("%d\t%s\n" % (sample, "\t".join(values)))
    out.write("END_DATA\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
