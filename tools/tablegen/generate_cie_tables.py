#!/usr/bin/env python3
"""Writes the constant spectral tables of the colour engine.

Reads the CIE tables in cie/ (see cie/README.md for the published source of
each file) and writes qvimanager/cmetry/tables/cie_tables.h and .cpp. The
published digits are kept as they stand: every value becomes the float
literal of its published text, since the rounding of the tables is part of
the engine's results.

Usage: generate_cie_tables.py [OUTPUT_DIRECTORY]
(default: the repository's qvimanager/cmetry/tables)
"""

import csv
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
CIE = os.path.join(HERE, "cie")
DEFAULT_OUTPUT = os.path.join(HERE, "..", "..", "qvimanager", "cmetry", "tables")


def read(file_name):
    """Rows of a CIE table: [(wavelength, [value texts...])], and the header."""
    with open(os.path.join(CIE, file_name), newline="") as handle:
        rows = list(csv.reader(handle))
    header, body = rows[0], rows[1:]
    return header, [(int(row[0]), row[1:]) for row in body]


def column(file_name, name, first, last):
    """The value texts of one column from `first` to `last` nm, checked to
    run without gaps at the table's own step."""
    header, rows = read(file_name)
    index = header.index(name) - 1
    selected = [(w, values[index]) for w, values in rows if first <= w <= last]
    wavelengths = [w for w, _ in selected]
    if not wavelengths or wavelengths[0] != first or wavelengths[-1] != last:
        raise SystemExit(f"{file_name}:{name} does not cover {first}..{last} nm")
    steps = {b - a for a, b in zip(wavelengths, wavelengths[1:])}
    if len(steps) > 1:
        raise SystemExit(f"{file_name}:{name} has an uneven step")
    return [text for _, text in selected]


def literal(text):
    """The float literal of a published number, its digits unchanged."""
    text = text.strip()
    float(text)  # refuses anything that is not a number
    if "." not in text and "e" not in text.lower():
        text += ".0"
    return text + "f"


# name, comment (the public table reproduced), values, first nm, last nm, step
TABLES = []


def table(name, source, values, first, last, step):
    if len(values) != (last - first) // step + 1:
        raise SystemExit(f"{name}: {len(values)} values for {first}..{last} nm at {step} nm")
    TABLES.append((name, source, values, first, last, step))


def build():
    table("IlluminantA", "CIE standard illuminant A, 1 nm (ISO/CIE 11664-2:2022 Table A.1)",
          column("illuminant_A_1nm.csv", "A", 300, 830), 300, 830, 1)
    table("IlluminantB", "CIE illuminant B, 5 nm, 320 to 770 nm (CIE 15:2004; 515 nm as in Wyszecki & Stiles)",
          column("illuminant_B_5nm.csv", "B", 320, 770), 320, 770, 5)
    table("IlluminantC", "CIE illuminant C, 5 nm (CIE 015:2018 Table 5)",
          column("illuminant_C_5nm.csv", "C", 300, 780), 300, 780, 5)
    table("IlluminantD75", "CIE illuminant D75 at two decimals, 5 nm (CIE daylight method)",
          column("illuminant_D75_5nm.csv", "D75", 300, 830), 300, 830, 5)
    table("IlluminantD65", "CIE standard illuminant D65, 1 nm (ISO/CIE 11664-2:2022 Table B.1)",
          column("illuminant_D65_1nm.csv", "D65", 300, 830), 300, 830, 1)
    table("IlluminantD50", "CIE illuminant D50 at two decimals, 5 nm",
          column("illuminant_D50_5nm.csv", "D50", 300, 830), 300, 830, 5)
    fluorescent = []
    for number in range(1, 13):
        fluorescent += column("illuminant_F1_F12_5nm.csv", f"F{number}", 380, 780)
    TABLES.append(("IlluminantF", "CIE fluorescent illuminants F1 to F12, 5 nm, 380 to 780 nm, one row of 81 "
                   "values after the other (CIE 015:2018 Tables 10.1 to 10.3)", fluorescent, 380, 780, 5))
    for component in ("S0", "S1", "S2"):
        table(f"Daylight{component}", f"CIE daylight component {component}, 5 nm (CIE 015:2018 Table 6)",
              column("daylight_S0_S1_S2_5nm.csv", component, 300, 830), 300, 830, 5)
    for observer, file_name, z_end, source in (
            ("TwoDegree", "cmf_1931_2deg_1nm.csv", 650, "CIE 1931 2-degree standard observer, 1 nm "
             "(CIE 018:2019 Table 6)"),
            ("TenDegree", "cmf_1964_10deg_1nm.csv", 560, "CIE 1964 10-degree standard observer, 1 nm "
             "(ISO/CIE 11664-1:2019 Table 2)")):
        table(f"{observer}XBar", f"{source}, x-bar", column(file_name, "xbar", 360, 830), 360, 830, 1)
        table(f"{observer}YBar", f"{source}, y-bar", column(file_name, "ybar", 360, 830), 360, 830, 1)
        table(f"{observer}ZBar", f"{source}, z-bar up to {z_end} nm, where it has reached zero",
              column(file_name, "zbar", 360, z_end), 360, z_end, 1)


BANNER = """// GENERATED, DO NOT EDIT.
// Made by tools/tablegen/generate_cie_tables.py from the CIE tables in
// tools/tablegen/cie/ (their README names the published source of each).
// Every value is the float literal of its published digits.
"""


def header_text():
    lines = [BANNER, "#ifndef QVIMANAGER_CMETRY_TABLES_CIE_TABLES_H",
             "#define QVIMANAGER_CMETRY_TABLES_CIE_TABLES_H", "",
             "namespace CMetry {", "namespace Tables {", ""]
    for name, source, values, first, last, step in TABLES:
        lines.append(f"// {source}: {first} to {last} nm, step {step} nm, {len(values)} values.")
        lines.append(f"constexpr unsigned short {name}Minimum = {first};")
        lines.append(f"constexpr unsigned short {name}Maximum = {last};")
        lines.append(f"constexpr unsigned short {name}Step = {step};")
        lines.append(f"extern const float {name}[{len(values)}];")
        lines.append("")
    lines += ["} // namespace Tables", "} // namespace CMetry", "", "#endif", ""]
    return "\n".join(lines)


def source_text():
    lines = [BANNER, '#include "qvimanager/cmetry/tables/cie_tables.h"', "",
             "namespace CMetry {", "namespace Tables {", ""]
    for name, source, values, first, last, step in TABLES:
        lines.append(f"// {source}")
        lines.append(f"const float {name}[{len(values)}] = {{")
        for start in range(0, len(values), 6):
            chunk = ", ".join(literal(v) for v in values[start:start + 6])
            lines.append(f"    {chunk},")
        lines.append("};")
        lines.append("")
    lines += ["} // namespace Tables", "} // namespace CMetry", ""]
    return "\n".join(lines)


def main():
    output = sys.argv[1] if len(sys.argv) > 1 else DEFAULT_OUTPUT
    build()
    os.makedirs(output, exist_ok=True)
    for file_name, text in (("cie_tables.h", header_text()), ("cie_tables.cpp", source_text())):
        with open(os.path.join(output, file_name), "w", newline="\n") as handle:
            handle.write(text)


if __name__ == "__main__":
    main()
