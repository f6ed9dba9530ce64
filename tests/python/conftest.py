"""Shared helpers of the Python module's tests: the bundled samples and the
C++ reference program (python_reference), whose numbers the module must
match bit for bit."""

import os
import pathlib
import subprocess

import numpy as np
import pytest

SOURCE_DIR = os.environ["QVIMANAGER_SOURCE_DIR"]
SAMPLES = os.path.join(SOURCE_DIR, "data", "samples")
REFERENCE = os.environ["QVIMANAGER_PYTHON_REFERENCE"]

#: The bundled files of reflectance spectra.
REFLECTANCE_FILES = [
    "chart24_babelcolor_avg.cgats",
    "chart24_ohta.cgats",
    "it8_7-1_faust_E131102_ektachrome.cgats",
    "it8_7-1_faust_N130501_fujichrome.cgats",
    "munsell_matt_1269.cgats",
]
#: The bundled file of light sources.
EMISSION_FILE = "illuminants_cie_spd.cgats"


#: The chart most tests use, and the index of its white patch.
CHART = "chart24_ohta.cgats"
WHITE = 18

#: The CGATS fields of the 36 wavelengths.
SPECTRAL_FIELDS = [f"SPECTRAL_NM{wavelength}" for wavelength in range(380, 731, 10)]


def write_cgats(path, rows, fields=None, keywords=()):
    """A CGATS file of `rows` under `fields` (default: SAMPLE_ID, SAMPLE_NAME
    and the 36 spectral fields), with extra header lines `keywords`."""
    fields = fields or ["SAMPLE_ID", "SAMPLE_NAME"] + SPECTRAL_FIELDS
    lines = ["CGATS.17", *keywords, f"NUMBER_OF_FIELDS\t{len(fields)}", "BEGIN_DATA_FORMAT", "\t".join(fields),
             "END_DATA_FORMAT", f"NUMBER_OF_SETS\t{len(rows)}", "BEGIN_DATA"]
    lines += ["\t".join(str(value) for value in row) for row in rows]
    lines.append("END_DATA")
    pathlib.Path(path).write_text("\n".join(lines) + "\n")
    return str(path)


def sample(name):
    return os.path.join(SAMPLES, name)


class Line:
    """A line of the reference program: the sample's id and its results as
    float32, or the refusal (class and text)."""

    def __init__(self, text):
        fields = text.split("\t")
        self.id = fields[0]
        if len(fields) > 1 and fields[1] == "refused":
            self.refused = (fields[2], fields[3])
            self.values = None
        else:
            self.refused = None
            self.values = np.array([int(field, 16) for field in fields[1:]], dtype=np.uint32).view(np.float32)


def reference(command, *arguments, **settings):
    """The reference program's lines for a command; settings are KEY=VALUE
    words (conditions and the program's own settings)."""
    words = [REFERENCE, command, *arguments] + [f"{key}={value}" for key, value in settings.items()]
    done = subprocess.run(words, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return [Line(text) for text in done.stdout.splitlines()]


def bits(values):
    """The bit patterns of float32 values, for comparisons that tell -0.0
    from 0.0 and see NaN as equal to itself."""
    return np.asarray(values, dtype=np.float32).view(np.uint32)


@pytest.fixture(scope="session")
def qvi():
    import qvimanager
    return qvimanager


@pytest.fixture(scope="module")
def spectra(qvi):
    """The spectra of CHART."""
    return qvi.read_cgats(sample(CHART)).spectra


@pytest.fixture(scope="module")
def white(spectra):
    """The white patch of CHART."""
    return spectra[WHITE]
