"""The module's numbers are the C++ library's, bit for bit: every function on
the bundled sample files, compared with python_reference, which calls the
library one spectrum at a time."""

import numpy as np
import pytest

from conftest import EMISSION_FILE, REFLECTANCE_FILES, bits, reference, sample

# Condition sets the colour values are checked under (keyword arguments of
# the module; the reference takes the same as KEY=VALUE).
CONDITION_SETS = [
    {},
    {"illuminant": "D50", "observer": "TenDegree"},
    {"illuminant": "F11"},
    {"illuminant": "Dxx, Temperature:5000", "observer": "TenDegree"},
    {"illuminant": "A", "white_base": "Absolute"},
]


def keys(keywords):
    """Keyword arguments as the library's keys."""
    import qvimanager
    return {qvimanager.KEYWORDS[name]: value for name, value in keywords.items()}


def expect_same(lines, values, width):
    """The module's values (N, width) equal the reference's lines."""
    assert all(line.refused is None for line in lines), [line.refused for line in lines if line.refused]
    expected = np.array([line.values for line in lines], dtype=np.float32).reshape(-1, width)
    assert values.dtype == np.float32
    assert values.shape == expected.shape
    np.testing.assert_array_equal(bits(values), bits(expected))


@pytest.mark.parametrize("name", REFLECTANCE_FILES + [EMISSION_FILE])
def test_read_cgats_reads_what_the_library_reads(qvi, name):
    ids, names, spectra = qvi.read_cgats(sample(name))
    lines = reference("spectra", sample(name))
    assert ids == [line.id for line in lines]
    assert len(names) == len(ids) and all(isinstance(text, str) and text for text in names)
    expect_same(lines, spectra, 36)


def spaces():
    import qvimanager
    return [space for space in qvimanager.supported_values("ColorSpaceDescription.Type") if space != "CMYK"]


@pytest.mark.parametrize("space", spaces())
@pytest.mark.parametrize("conditions", CONDITION_SETS, ids=lambda c: ",".join(c.values()) or "defaults")
@pytest.mark.parametrize("name", REFLECTANCE_FILES)
def test_color_in_every_space(qvi, name, conditions, space):
    spectra = qvi.read_cgats(sample(name)).spectra
    lines = reference("color", sample(name), **keys(conditions), **{"ColorSpaceDescription.Type": space})
    expect_same(lines, qvi.color(spectra, space, **conditions), 3)


@pytest.mark.parametrize("white_base", ["Paper", "Automatic", "Absolute"])
def test_color_against_a_paper_white(qvi, white_base):
    measurements = qvi.read_cgats(sample("chart24_babelcolor_avg.cgats"))
    white = measurements.spectra[measurements.ids.index("19")]
    lines = reference("color", sample("chart24_babelcolor_avg.cgats"), **{"paper-white": "19"},
                      **{"Colorimetric.WhiteBase": white_base, "Colorimetric.Illumination": "D50"})
    values = qvi.color(measurements.spectra, paper_white=white, white_base=white_base, illuminant="D50")
    expect_same(lines, values, 3)
    if white_base == "Paper":
        # The paper white's own colour is the perfect white.
        assert values[measurements.ids.index("19")][0] == pytest.approx(100.0, abs=1e-4)


def test_a_paper_white_alone_means_white_base_paper(qvi):
    measurements = qvi.read_cgats(sample("chart24_ohta.cgats"))
    white = measurements.spectra[18]
    lines = reference("color", sample("chart24_ohta.cgats"), **{"paper-white": "19"},
                      **{"Colorimetric.WhiteBase": "Paper"})
    expect_same(lines, qvi.color(measurements.spectra, paper_white=white), 3)


# The pairs of files of one layout.
FILE_PAIRS = [
    ("chart24_babelcolor_avg.cgats", "chart24_ohta.cgats"),
    ("it8_7-1_faust_E131102_ektachrome.cgats", "it8_7-1_faust_N130501_fujichrome.cgats"),
]
FORMULAS = [
    ("CIELab", None), ("CIELuv", None), ("LABvq", None), ("FMCII", None),
    ("CMC", None), ("CMC", (2.0, 1.0)), ("94", None), ("94", (2.0, 1.0, 1.0)),
]


@pytest.mark.parametrize("formula,parameters", FORMULAS, ids=lambda value: str(value))
@pytest.mark.parametrize("pair", FILE_PAIRS, ids=lambda pair: pair[0])
@pytest.mark.parametrize("conditions", CONDITION_SETS[:2], ids=["defaults", "D50,TenDegree"])
def test_delta_e_of_spectra(qvi, pair, formula, parameters, conditions):
    first = qvi.read_cgats(sample(pair[0])).spectra
    second = qvi.read_cgats(sample(pair[1])).spectra
    settings = {"ColorSpaceDescription.DeltaEFormula": formula, **keys(conditions)}
    if parameters is not None:
        settings["parameters"] = ",".join(str(value) for value in parameters)
    lines = reference("delta-e", sample(pair[0]), sample(pair[1]), **settings)
    values = qvi.delta_e(first, second, formula, parameters=parameters, **conditions)
    expect_same(lines, values.reshape(-1, 1), 1)


@pytest.mark.parametrize("factors", [None, (2.0, 1.0, 1.0), (1.0, 0.5, 1.5)], ids=str)
@pytest.mark.parametrize("pair", FILE_PAIRS, ids=lambda pair: pair[0])
def test_delta_e_2000_of_spectra_and_of_lab_values(qvi, pair, factors):
    first = qvi.read_cgats(sample(pair[0])).spectra
    second = qvi.read_cgats(sample(pair[1])).spectra
    lines = reference("delta-e", sample(pair[0]), sample(pair[1]),
                      de2000=",".join(str(value) for value in (factors or (1.0, 1.0, 1.0))))
    from_spectra = qvi.delta_e(first, second, "CIEDE2000", parameters=factors)
    expect_same(lines, from_spectra.reshape(-1, 1), 1)
    # The same from Lab values, and from one side of each.
    lab_first, lab_second = qvi.color(first), qvi.color(second)
    for left, right in ((lab_first, lab_second), (first, lab_second), (lab_first, second)):
        np.testing.assert_array_equal(bits(qvi.delta_e(left, right, "CIEDE2000", parameters=factors)),
                                      bits(from_spectra))


@pytest.mark.parametrize("formula,parameters", [("CIELab", None), ("94", None), ("94", (2.0, 1.0, 1.0))],
                         ids=str)
def test_delta_e_of_lab_values(qvi, formula, parameters):
    pair = FILE_PAIRS[1]
    first = qvi.read_cgats(sample(pair[0])).spectra
    second = qvi.read_cgats(sample(pair[1])).spectra
    settings = {"ColorSpaceDescription.DeltaEFormula": formula, "lab": 1, "Colorimetric.Illumination": "D50"}
    if parameters is not None:
        settings["parameters"] = ",".join(str(value) for value in parameters)
    lines = reference("delta-e", sample(pair[0]), sample(pair[1]), **settings)
    lab_first = qvi.color(first, illuminant="D50")
    lab_second = qvi.color(second, illuminant="D50")
    values = qvi.delta_e(lab_first, lab_second, formula, parameters=parameters, illuminant="D50")
    expect_same(lines, values.reshape(-1, 1), 1)


def test_one_reference_serves_every_sample(qvi):
    spectra = qvi.read_cgats(sample("munsell_matt_1269.cgats")).spectra
    for formula in ("CIELab", "CMC", "CIEDE2000"):
        single = qvi.delta_e(spectra[7], spectra, formula)
        repeated = qvi.delta_e(np.repeat(spectra[7:8], len(spectra), axis=0), spectra, formula)
        np.testing.assert_array_equal(bits(single), bits(repeated))
        reverse = qvi.delta_e(spectra, spectra[7], formula)
        repeated = qvi.delta_e(spectra, np.repeat(spectra[7:8], len(spectra), axis=0), formula)
        np.testing.assert_array_equal(bits(reverse), bits(repeated))
        if formula != "CMC":
            # Symmetric formulas; CMC weighs by the reference.
            np.testing.assert_array_equal(bits(reverse), bits(single))
            assert single[7] == 0.0


DENSITY_STANDARDS = ["DIN", "DINNB", "ANSIA", "ANSIT", "SPI"]
FILTER_MODES = ["Black", "Cyan", "Magenta", "Yellow", "Max", "Auto"]


@pytest.mark.parametrize("mode", FILTER_MODES)
@pytest.mark.parametrize("standard", DENSITY_STANDARDS)
@pytest.mark.parametrize("name", REFLECTANCE_FILES[:3])
def test_density_and_its_filter(qvi, name, standard, mode):
    spectra = qvi.read_cgats(sample(name)).spectra
    conditions = {"density_standard": standard, "density_filter_mode": mode, "white_base": "Absolute"}
    lines = reference("density", sample(name), **keys(conditions))
    values = qvi.density(spectra, **conditions)
    filters = qvi.density_filter(spectra, **conditions)
    assert filters == [["Black", "Cyan", "Magenta", "Yellow"][int(line.values[1])] for line in lines]
    expect_same([_first(line) for line in lines], values.reshape(-1, 1), 1)


def _first(line):
    """The line with its density only."""
    line.values = line.values[:1]
    return line


@pytest.mark.parametrize("white_base", ["Paper", "Automatic"])
@pytest.mark.parametrize("mode", ["Cyan", "Auto"])
def test_density_relative_to_a_paper_white(qvi, white_base, mode):
    measurements = qvi.read_cgats(sample("chart24_babelcolor_avg.cgats"))
    white = measurements.spectra[measurements.ids.index("19")]
    conditions = {"white_base": white_base, "density_filter_mode": mode}
    lines = reference("density", sample("chart24_babelcolor_avg.cgats"), **{"paper-white": "19"}, **keys(conditions))
    values = qvi.density(measurements.spectra, paper_white=white, **conditions)
    expect_same([_first(line) for line in lines], values.reshape(-1, 1), 1)
    assert abs(values[measurements.ids.index("19")]) < 1e-6


@pytest.mark.parametrize("observer", ["TwoDegree", "TenDegree"])
def test_cct_of_light_sources(qvi, observer):
    spectra = qvi.read_cgats(sample(EMISSION_FILE)).spectra
    lines = reference("cct", sample(EMISSION_FILE), **{"Colorimetric.Illumination": "Emission",
                                                       "Colorimetric.Observer": observer})
    values = qvi.cct(spectra, observer=observer)
    expect_same(lines, values.reshape(-1, 1), 1)
    # A, C, D50, D55, D65, D75 within a few kelvin of their nominal values
    # (colour temperature is defined for the 2 degree observer).
    if observer == "TwoDegree":
        assert np.all(np.abs(values - [2856, 6774, 5003, 5503, 6504, 7504]) < 10)


@pytest.mark.parametrize("illuminant", ["D65", "D50"])
def test_cct_of_reflected_light(qvi, illuminant):
    spectra = qvi.read_cgats(sample("chart24_ohta.cgats")).spectra
    lines = reference("cct", sample("chart24_ohta.cgats"), **{"Colorimetric.Illumination": illuminant})
    expect_same(lines, qvi.cct(spectra, illuminant=illuminant).reshape(-1, 1), 1)


@pytest.mark.parametrize("conditions", [{}, {"illuminant": "D50", "observer": "TenDegree"}],
                         ids=["defaults", "D50,TenDegree"])
@pytest.mark.parametrize("name", REFLECTANCE_FILES[:2])
def test_lab_to_spectrum(qvi, name, conditions):
    lines = reference("lab-to-spectrum", sample(name), **keys(conditions))
    accepted = [line for line in lines if line.refused is None]
    assert len(accepted) > len(lines) // 2
    lab = np.array([line.values[:3] for line in accepted], dtype=np.float32)
    spectra = qvi.lab_to_spectrum(lab, **conditions)
    expected = np.array([line.values[3:] for line in accepted], dtype=np.float32)
    np.testing.assert_array_equal(bits(spectra), bits(expected))
    # Value by value, as L, a, b, the same.
    first = accepted[0].values
    np.testing.assert_array_equal(bits(qvi.lab_to_spectrum(first[0], first[1], first[2], **conditions)),
                                  bits(expected[0]))
    # A value the search refuses is refused with the library's text.
    for line in lines:
        if line.refused is not None:
            lab_line = reference("color", sample(name), **keys(conditions))[lines.index(line)]
            with pytest.raises(qvi.CMetryError) as refusal:
                qvi.lab_to_spectrum(lab_line.values, **conditions)
            assert (refusal.value.exception_class, refusal.value.text) == line.refused
