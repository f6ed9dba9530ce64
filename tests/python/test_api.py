"""Every public function and name of qvimanager does what its docstring says:
shapes and types of results, the ways of giving conditions, the conversion
of input arrays, empty batches and the reading of measurement files. Where
two routes must give the same numbers they are compared bit for bit."""

import os
import pathlib

import numpy as np
import pytest

from conftest import CHART, EMISSION_FILE, SPECTRAL_FIELDS, WHITE, bits, sample, write_cgats

LAB_FIELDS = ["LAB_L", "LAB_A", "LAB_B"]


def same(first, second):
    """Two float32 results are equal bit for bit, shapes included."""
    assert np.shape(first) == np.shape(second)
    np.testing.assert_array_equal(bits(first), bits(second))


@pytest.fixture(scope="module")
def lights(qvi):
    return qvi.read_cgats(sample(EMISSION_FILE)).spectra


def spaces():
    import qvimanager
    return [space for space in qvimanager.supported_values("ColorSpaceDescription.Type") if space != "CMYK"]


def formulas():
    import qvimanager
    return qvimanager.supported_values("ColorSpaceDescription.DeltaEFormula") + [qvimanager.CIEDE2000]


# ---------------------------------------------------------------- names

def test_every_exported_name_exists(qvi):
    """__all__ names only what the package defines, with the documented kinds."""
    for name in qvi.__all__:
        assert hasattr(qvi, name), name
    for name in ("color", "delta_e", "density", "density_filter", "cct", "lab_to_spectrum", "read_cgats",
                 "supported_values", "supported_conditions", "measure_conditions"):
        assert callable(getattr(qvi, name)) and getattr(qvi, name).__doc__
    assert qvi.CIEDE2000 == "CIEDE2000"


def test_version_is_the_extension_version(qvi):
    """__version__ is a dotted version string, the one the extension was built with."""
    assert isinstance(qvi.__version__, str)
    assert qvi.__version__ == qvi._core.__version__
    assert all(number.isdigit() for number in qvi.__version__.split("."))


def test_wavelengths(qvi):
    """WAVELENGTHS are the 36 points 380, 390, ..., 730 nm."""
    assert list(qvi.WAVELENGTHS) == list(range(380, 731, 10))
    assert len(qvi.WAVELENGTHS) == 36


def test_keywords_and_condition_keys(qvi):
    """KEYWORDS maps the six keyword arguments to keys of CONDITION_KEYS."""
    assert list(qvi.KEYWORDS) == ["illuminant", "observer", "white_base", "density_standard",
                                  "density_filter_mode", "physical_filter"]
    assert len(set(qvi.CONDITION_KEYS)) == len(qvi.CONDITION_KEYS) == 12
    assert set(qvi.KEYWORDS.values()) <= set(qvi.CONDITION_KEYS)
    assert len(set(qvi.KEYWORDS.values())) == len(qvi.KEYWORDS)


# ---------------------------------------------------------------- conditions

def test_supported_conditions_lists_every_key(qvi):
    """supported_conditions() gives each condition key with supported_values(key)."""
    table = qvi.supported_conditions()
    assert list(table) == list(qvi.CONDITION_KEYS)
    for key, values in table.items():
        assert values == qvi.supported_values(key)
        assert values and all(isinstance(value, str) and value for value in values)
    assert table["Colorimetric.Observer"] == ["TwoDegree", "TenDegree"]
    assert table["Colorimetric.WhiteBase"] == ["Absolute", "Paper", "Automatic"]
    assert table["ColorSpaceDescription.DeltaEFormula"] == ["CIELab", "CIELuv", "LABvq", "FMCII", "CMC", "94"]
    assert "CMYK" in table["ColorSpaceDescription.Type"]


def test_supported_values_of_a_space_name_its_components(qvi):
    """"ColorSpaceDescription." + space gives three absolute and three delta names, four and four for CMYK."""
    assert qvi.supported_values("ColorSpaceDescription.CIELab") == ["L*", "a*", "b*",
                                                                    "delta L*", "delta a*", "delta b*"]
    assert qvi.supported_values("ColorSpaceDescription.CMYK") == ["C", "M", "Y", "K",
                                                                  "delta C", "delta M", "delta Y", "delta K"]
    for space in spaces():
        assert len(qvi.supported_values("ColorSpaceDescription." + space)) == 6, space


def test_measure_conditions_defaults(qvi):
    """measure_conditions() is the whole default condition set."""
    assert qvi.measure_conditions() == {
        "Colorimetric.Illumination": "D65",
        "Colorimetric.Observer": "TwoDegree",
        "Colorimetric.WhiteBase": "Automatic",
        "Colorimetric.DensityStandard": "DIN",
        "Colorimetric.DensityFilterMode": "Auto",
        "ColorSpaceDescription.Type": "CIELab",
        "ColorSpaceDescription.DeltaEFormula": "CIELab",
        "ColorSpaceDescription.AbsoluteOrDeltaVector": "AbsoluteVector",
        "Physical.Filter": "No",
        "Physical.NumberOfDataPointsSpectrum": "36",
        "Physical.WavelengthSpectrumMax": "730nm",
        "Physical.WavelengthSpectrumMin": "380nm",
    }


def test_measure_conditions_with_given_values(qvi):
    """Given values replace the defaults of their keys only, by keyword or by dict alike."""
    keywords = {"illuminant": "Dxx, Temperature:5000", "observer": "TenDegree", "white_base": "Absolute",
                "density_standard": "ANSIT", "density_filter_mode": "Cyan", "physical_filter": "Polarizer"}
    expected = qvi.measure_conditions()
    expected.update({qvi.KEYWORDS[name]: value for name, value in keywords.items()})
    expected["ColorSpaceDescription.Type"] = "CIEXYZ"
    dictionary = {qvi.KEYWORDS[name]: value for name, value in keywords.items()}
    assert qvi.measure_conditions(conditions={**dictionary, "ColorSpaceDescription.Type": "CIEXYZ"}) == expected
    assert qvi.measure_conditions(conditions={"ColorSpaceDescription.Type": "CIEXYZ"}, **keywords) == expected


def filter_codes(names):
    """Filter names as numbers, for comparisons as arrays."""
    return np.array([["Black", "Cyan", "Magenta", "Yellow"].index(name) for name in names], dtype=np.float32)


# Each function called with the same conditions as keyword arguments and as
# a dictionary.
CALLS = {
    "color": lambda qvi, s, w, **c: qvi.color(s, **c),
    "color_paper": lambda qvi, s, w, **c: qvi.color(s, paper_white=w, **c),
    "delta_e": lambda qvi, s, w, **c: qvi.delta_e(s, s[::-1], **c),
    "delta_e_cmc": lambda qvi, s, w, **c: qvi.delta_e(s, s[0], "CMC", parameters=(2, 1), **c),
    "delta_e_2000": lambda qvi, s, w, **c: qvi.delta_e(s, s[::-1], "CIEDE2000", **c),
    "density": lambda qvi, s, w, **c: qvi.density(s, paper_white=w, **c),
    "density_filter": lambda qvi, s, w, **c: filter_codes(qvi.density_filter(s, paper_white=w, **c)),
    "cct": lambda qvi, s, w, **c: qvi.cct(s, **c),
    "lab_to_spectrum": lambda qvi, s, w, **c: qvi.lab_to_spectrum(qvi.color(s[:4], **c), **c),
}
KEYWORD_SETS = [
    {"illuminant": "D50", "observer": "TenDegree"},
    {"illuminant": "A", "white_base": "Absolute", "density_standard": "ANSIT", "density_filter_mode": "Max"},
    {"illuminant": "F11", "white_base": "Automatic", "density_filter_mode": "Magenta", "physical_filter": "UVCut"},
]


@pytest.mark.parametrize("keywords", KEYWORD_SETS, ids=lambda keywords: ",".join(keywords.values()))
@pytest.mark.parametrize("call", CALLS)
def test_keywords_and_conditions_dict_agree(qvi, spectra, white, call, keywords):
    """Conditions given as keyword arguments, as a dict, or split between both give identical results."""
    dictionary = {qvi.KEYWORDS[name]: value for name, value in keywords.items()}
    by_keywords = CALLS[call](qvi, spectra, white, **keywords)
    by_dict = CALLS[call](qvi, spectra, white, conditions=dictionary)
    first, *rest = keywords
    split = CALLS[call](qvi, spectra, white, conditions={qvi.KEYWORDS[first]: keywords[first]},
                        **{name: keywords[name] for name in rest})
    same(by_keywords, by_dict)
    same(by_keywords, split)


# ---------------------------------------------------------------- color

@pytest.mark.parametrize("space", spaces())
def test_color_in_every_space(qvi, spectra, space):
    """color gives (N, 3) float32 for (N, 36) and (3,) for one spectrum; the space by parameter or by dict."""
    values = qvi.color(spectra, space)
    assert values.dtype == np.float32 and values.shape == (len(spectra), 3)
    assert np.all(np.isfinite(values))
    same(qvi.color(spectra, conditions={"ColorSpaceDescription.Type": space}), values)
    one = qvi.color(spectra[5], space)
    assert one.dtype == np.float32 and one.shape == (3,)
    same(one, values[5])


def test_color_default_space_is_cielab(qvi, spectra):
    """Without a space, color gives CIELab."""
    same(qvi.color(spectra), qvi.color(spectra, "CIELab"))
    lab = qvi.color(spectra[WHITE])
    assert 90 < lab[0] < 100 and abs(lab[1]) < 2 and abs(lab[2]) < 2


def test_color_of_cmyk_is_refused(qvi, spectra):
    """CMYK, by parameter or by dict, for one spectrum or many, raises the library's CMetryError."""
    calls = [lambda: qvi.color(spectra[0], "CMYK"), lambda: qvi.color(spectra, "CMYK"),
             lambda: qvi.color(spectra, conditions={"ColorSpaceDescription.Type": "CMYK"})]
    for call in calls:
        with pytest.raises(qvi.CMetryError) as refusal:
            call()
        assert refusal.value.text == "GetVector not supported for ColorSpace CMYK"
        assert refusal.value.exception_class == "ExceptionCMetry"
        assert str(refusal.value).endswith("GetVector not supported for ColorSpace CMYK")


def test_color_with_a_paper_white(qvi, spectra, white):
    """A paper white alone means white base Paper; white base Absolute ignores it."""
    relative = qvi.color(spectra, paper_white=white)
    same(relative, qvi.color(spectra, paper_white=white, white_base="Paper"))
    assert relative[WHITE][0] == pytest.approx(100.0, abs=1e-4)
    assert relative[WHITE][1:] == pytest.approx([0.0, 0.0], abs=1e-3)
    same(qvi.color(spectra, paper_white=white, white_base="Absolute"), qvi.color(spectra, white_base="Absolute"))
    same(qvi.color(spectra[3], paper_white=white), relative[3])


# ---------------------------------------------------------------- delta_e

def test_delta_e_shapes(qvi, spectra):
    """N rows against N give N float32 differences; two single rows give one float32."""
    values = qvi.delta_e(spectra, spectra[::-1])
    assert values.dtype == np.float32 and values.shape == (len(spectra),)
    one = qvi.delta_e(spectra[2], spectra[21])
    assert isinstance(one, np.float32)
    same(one, values[2])
    batch_of_one = qvi.delta_e(spectra[2:3], spectra[21:22])
    assert batch_of_one.shape == (1,)
    same(batch_of_one[0], one)


@pytest.mark.parametrize("formula", formulas())
def test_a_single_row_serves_every_row_of_the_other_side(qvi, spectra, formula):
    """A single row on either side, spectra or Lab values, is paired with every row of the other."""
    lab = qvi.color(spectra)
    kinds = [(spectra, spectra)] + ([(lab, lab), (spectra, lab)] if formula in ("CIELab", "94", "CIEDE2000") else [])
    for references, samples in kinds:
        for index in (0, 7):
            repeated = np.repeat(references[index:index + 1], len(samples), axis=0)
            same(qvi.delta_e(references[index], samples, formula), qvi.delta_e(repeated, samples, formula))
            repeated = np.repeat(samples[index:index + 1], len(references), axis=0)
            same(qvi.delta_e(references, samples[index], formula), qvi.delta_e(references, repeated, formula))
            same(qvi.delta_e(references[index:index + 1], samples, formula),
                 qvi.delta_e(references[index], samples, formula))


@pytest.mark.parametrize("formula", formulas())
def test_every_formula(qvi, spectra, formula):
    """Each formula gives finite differences >= 0, about 0 for a colour with itself; the library's formulas by
    parameter or by dict alike."""
    values = qvi.delta_e(spectra, spectra[::-1], formula)
    assert np.all(np.isfinite(values)) and np.all(values >= 0)
    itself = qvi.delta_e(spectra, spectra, formula)
    # CMC and 94 take the hue difference as what remains of the others: a
    # float rounding of it stays.
    assert np.all(itself == 0) if formula not in ("CMC", "94") else np.all((itself >= 0) & (itself < 1e-5))
    if formula != qvi.CIEDE2000:
        same(qvi.delta_e(spectra, spectra[::-1], conditions={"ColorSpaceDescription.DeltaEFormula": formula}),
             values)


def test_default_formula_is_cielab(qvi, spectra):
    """Without a formula delta_e is the CIELab difference, the distance of the Lab values."""
    values = qvi.delta_e(spectra, spectra[::-1])
    same(values, qvi.delta_e(spectra, spectra[::-1], "CIELab"))
    lab = qvi.color(spectra)
    np.testing.assert_allclose(values, np.linalg.norm(lab - lab[::-1], axis=1), rtol=1e-5)


def test_formulas_differ(qvi, spectra):
    """The formulas are different formulas."""
    results = {formula: qvi.delta_e(spectra, spectra[::-1], formula) for formula in formulas()}
    for first in results:
        for second in results:
            if first < second:
                assert not np.array_equal(results[first], results[second]), (first, second)


@pytest.mark.parametrize("formula", ["CIELab", "94", "CIEDE2000"])
def test_lab_values_and_spectra_give_the_same_differences(qvi, spectra, formula):
    """Lab values, spectra, or one of each give bit-identical differences for the formulas of Lab values."""
    lab = qvi.color(spectra, illuminant="D50")
    expected = qvi.delta_e(spectra, spectra[::-1], formula, illuminant="D50")
    for references, samples in ((lab, lab), (spectra, lab), (lab, spectra)):
        same(qvi.delta_e(references, samples[::-1], formula, illuminant="D50"), expected)


def test_parameters_of_the_formulas(qvi, spectra):
    """parameters: 0 stands for the default 1; other values change the result; by formula or by dict alike."""
    first, second = spectra, spectra[::-1]
    cmc = qvi.delta_e(first, second, "CMC")
    same(qvi.delta_e(first, second, "CMC", parameters=(0, 0)), cmc)
    same(qvi.delta_e(first, second, "CMC", parameters=(1, 1)), cmc)
    two_to_one = qvi.delta_e(first, second, "CMC", parameters=(2, 1))
    assert not np.array_equal(two_to_one, cmc)
    same(qvi.delta_e(first, second, parameters=[2.0, 1.0], conditions={"ColorSpaceDescription.DeltaEFormula": "CMC"}),
         two_to_one)
    same(qvi.delta_e(first, second, "CMC", parameters=np.array([2, 1])), two_to_one)
    cie94 = qvi.delta_e(first, second, "94")
    same(qvi.delta_e(first, second, "94", parameters=(0, 0, 0)), cie94)
    same(qvi.delta_e(first, second, "94", parameters=(1, 1, 1)), cie94)
    assert not np.array_equal(qvi.delta_e(first, second, "94", parameters=(2, 1, 1)), cie94)
    de2000 = qvi.delta_e(first, second, "CIEDE2000")
    same(qvi.delta_e(first, second, "CIEDE2000", parameters=(1, 1, 1)), de2000)
    halved = qvi.delta_e(first, second, "CIEDE2000", parameters=(2, 1, 1))
    assert np.all(halved <= de2000) and not np.array_equal(halved, de2000)


@pytest.mark.parametrize("formula,parameters,message", [
    ("CMC", (1, 1, 1), "delta_e(): the formula CMC takes 2 parameters (l, c); got 3"),
    ("94", (1, 1), "delta_e(): the formula 94 takes 3 parameters (kL, kC, kH); got 2"),
    ("CIEDE2000", (1,), "delta_e(): the formula CIEDE2000 takes 3 parameters (kL, kC, kH); got 1"),
    ("CIELab", (1,), "delta_e(): the formula CIELab takes no parameters"),
    (None, (1, 1), "delta_e(): the formula CIELab takes no parameters"),
    ("FMCII", (1, 1), "delta_e(): the formula FMCII takes no parameters"),
])
def test_parameters_are_counted(qvi, spectra, formula, parameters, message):
    """A formula takes its own number of parameters, or none."""
    with pytest.raises(ValueError) as refusal:
        qvi.delta_e(spectra[0], spectra[1], formula, parameters=parameters)
    assert str(refusal.value) == message


def test_delta_e_with_a_paper_white(qvi, spectra, white):
    """A paper white alone means white base Paper for delta_e too."""
    relative = qvi.delta_e(spectra, spectra[::-1], paper_white=white)
    same(relative, qvi.delta_e(spectra, spectra[::-1], paper_white=white, white_base="Paper"))
    lab = qvi.color(spectra, paper_white=white)
    np.testing.assert_allclose(relative, np.linalg.norm(lab - lab[::-1], axis=1), rtol=1e-5)


# ---------------------------------------------------------------- density

def test_density_shapes_and_white_bases(qvi, spectra, white):
    """density: N float32 densities, one float32 for one spectrum; a paper white alone means white base Paper."""
    absolute = qvi.density(spectra, white_base="Absolute")
    assert absolute.dtype == np.float32 and absolute.shape == (len(spectra),)
    assert np.all(np.isfinite(absolute)) and np.all(absolute > 0)
    one = qvi.density(spectra[4], white_base="Absolute")
    assert isinstance(one, np.float32)
    same(one, absolute[4])
    relative = qvi.density(spectra, paper_white=white)
    same(relative, qvi.density(spectra, paper_white=white, white_base="Paper"))
    assert abs(relative[WHITE]) < 1e-6
    assert not np.array_equal(relative, absolute)
    automatic = qvi.density(spectra, paper_white=white, white_base="Automatic")
    assert np.all(np.isfinite(automatic))
    same(qvi.density(spectra, paper_white=white, white_base="Absolute"), absolute)


@pytest.mark.parametrize("mode", ["Black", "Cyan", "Magenta", "Yellow", "Max", "Auto"])
def test_density_filter_names_the_filter_read(qvi, spectra, mode):
    """density_filter names the filter density reads: the mode's own, or the one Max and Auto choose."""
    names = qvi.density_filter(spectra, white_base="Absolute", density_filter_mode=mode)
    assert isinstance(names, list) and len(names) == len(spectra)
    assert set(names) <= {"Black", "Cyan", "Magenta", "Yellow"}
    if mode not in ("Max", "Auto"):
        assert set(names) == {mode}
    assert qvi.density_filter(spectra[3], white_base="Absolute", density_filter_mode=mode) == names[3]
    densities = qvi.density(spectra, white_base="Absolute", density_filter_mode=mode)
    by_name = [qvi.density(spectra[index], white_base="Absolute", density_filter_mode=name)
               for index, name in enumerate(names)]
    same(np.array(by_name, dtype=np.float32), densities)


def test_density_standards_differ(qvi, spectra):
    """Each density standard gives its own densities."""
    results = [qvi.density(spectra, white_base="Absolute", density_standard=standard, density_filter_mode="Cyan")
               for standard in ("DIN", "DINNB", "ANSIA", "ANSIT", "SPI")]
    assert len({result.tobytes() for result in results}) == len(results)


# ---------------------------------------------------------------- cct

def test_cct_of_light_sources(qvi, lights):
    """cct: whole kelvin as float32; the illuminant is Emission unless given; one float32 for one spectrum."""
    values = qvi.cct(lights)
    assert values.dtype == np.float32 and values.shape == (len(lights),)
    assert np.all(values == np.round(values))
    same(values, qvi.cct(lights, illuminant="Emission"))
    same(values, qvi.cct(lights, conditions={"Colorimetric.Illumination": "Emission"}))
    assert np.all(np.abs(values - [2856, 6774, 5003, 5503, 6504, 7504]) < 10)
    one = qvi.cct(lights[2])
    assert isinstance(one, np.float32)
    same(one, values[2])


def test_cct_under_another_illuminant(qvi, lights, spectra):
    """Another illuminant gives the temperature of the light reflected under it."""
    under_a = qvi.cct(lights, illuminant="A")
    assert not np.array_equal(under_a, qvi.cct(lights))
    same(under_a, qvi.cct(lights, conditions={"Colorimetric.Illumination": "A"}))
    # The perfect white reflects the illuminant itself.
    perfect = np.ones(36, dtype=np.float32)
    assert abs(qvi.cct(perfect, illuminant="D65") - 6504) < 10
    assert abs(qvi.cct(perfect, illuminant="A") - 2856) < 10
    assert abs(qvi.cct(spectra[WHITE], illuminant="D50") - 5003) < 300


def test_cct_depends_on_the_observer(qvi, lights):
    """cct follows the observer of the conditions."""
    assert not np.array_equal(qvi.cct(lights, observer="TenDegree"), qvi.cct(lights))


# ---------------------------------------------------------------- lab_to_spectrum

def test_lab_to_spectrum_forms_of_input(qvi, spectra):
    """L, a, b numbers give (36,); 1-D arrays of one length and one (N, 3) array give (N, 36); all agree."""
    lab = qvi.color(spectra[:6])
    batch = qvi.lab_to_spectrum(lab)
    assert batch.dtype == np.float32 and batch.shape == (6, 36)
    same(qvi.lab_to_spectrum(lab[:, 0], lab[:, 1], lab[:, 2]), batch)
    same(qvi.lab_to_spectrum(list(lab[:, 0]), list(lab[:, 1]), list(lab[:, 2])), batch)
    for row in range(6):
        one = qvi.lab_to_spectrum(float(lab[row, 0]), float(lab[row, 1]), float(lab[row, 2]))
        assert one.dtype == np.float32 and one.shape == (36,)
        same(one, batch[row])
        same(qvi.lab_to_spectrum(lab[row]), batch[row])
        same(qvi.lab_to_spectrum(lab[row, 0], lab[row, 1], lab[row, 2]), batch[row])
    assert np.all((batch >= 0) & (batch <= 1))


@pytest.mark.parametrize("conditions", [{}, {"illuminant": "D50", "observer": "TenDegree"}, {"illuminant": "A"}],
                         ids=["defaults", "D50,TenDegree", "A"])
def test_lab_to_spectrum_round_trip(qvi, spectra, conditions):
    """The spectra found have the given Lab values within 0.1 delta E under the same conditions."""
    lab = qvi.color(spectra, **conditions)
    found = qvi.lab_to_spectrum(lab, **conditions)
    assert np.all(qvi.delta_e(qvi.color(found, **conditions), lab, **conditions) <= 0.1)
    lab = np.array([[50, 10, 20], [70, -20, 5], [30, 0, -25]], dtype=np.float32)
    found = qvi.lab_to_spectrum(lab, **conditions)
    assert np.all(qvi.delta_e(qvi.color(found, **conditions), lab, **conditions) <= 0.1)


def test_lab_to_spectrum_is_repeatable(qvi, spectra):
    """The search gives the same spectrum whatever was computed before."""
    lab = qvi.color(spectra[:5])
    first = qvi.lab_to_spectrum(lab)
    qvi.lab_to_spectrum(50, 60, -30)
    qvi.color(spectra, illuminant="A", observer="TenDegree")
    same(qvi.lab_to_spectrum(lab), first)
    same(np.array([qvi.lab_to_spectrum(row) for row in lab]), first)


def test_lab_to_spectrum_takes_cielab_only(qvi):
    """The colour space may be given as CIELab only."""
    same(qvi.lab_to_spectrum(50, 0, 0, conditions={"ColorSpaceDescription.Type": "CIELab"}),
         qvi.lab_to_spectrum(50, 0, 0))
    with pytest.raises(ValueError) as refusal:
        qvi.lab_to_spectrum(50, 0, 0, conditions={"ColorSpaceDescription.Type": "CIEXYZ"})
    assert str(refusal.value) == "lab_to_spectrum(): the values are CIELab; the colour space CIEXYZ cannot be given"


# ---------------------------------------------------------------- read_cgats

def test_read_cgats_of_a_reflectance_file(qvi):
    """Measurements of a 0..1 file: ids, names, (N, 36) float32 spectra, scale, no Lab, not emission."""
    measurements = qvi.read_cgats(sample(CHART))
    assert len(measurements) == 24
    assert measurements.ids == [str(number) for number in range(1, 25)]
    assert measurements.names[:3] == ["dark skin", "light skin", "blue sky"]
    spectra = measurements.spectra
    assert spectra.dtype == np.float32 and spectra.shape == (24, 36) and spectra.flags.c_contiguous
    assert spectra[0, 0] == np.float32(0.048) and spectra[23, 35] == np.float32(0.032)
    assert measurements.lab is None and measurements.values is spectra
    assert measurements.scale == "0..1" and measurements.extension == "" and measurements.emission is False
    ids, names, values = measurements
    assert ids is measurements.ids and names is measurements.names and values is spectra
    assert measurements.path == sample(CHART)
    assert repr(measurements) == f"<Measurements {sample(CHART)!r}: 24 spectra>"


def test_read_cgats_of_an_emission_file(qvi):
    """A file of light sources is emission and keeps its own scale."""
    measurements = qvi.read_cgats(sample(EMISSION_FILE))
    assert measurements.emission is True and measurements.scale == ""
    assert measurements.names == ["A", "C", "D50", "D55", "D65", "D75"]
    assert measurements.spectra.max() > 2


def test_read_cgats_divides_a_0_to_100_file(qvi, tmp_path):
    """Reflectance written as 0..100 is divided by 100."""
    steps = [6.25, 12.5, 25, 37.5, 50, 62.5, 75, 87.5]
    percent = [[index + 1, f'"patch {index}"'] + [steps[(index + point) % 8] for point in range(36)]
               for index in range(4)]
    measurements = qvi.read_cgats(write_cgats(tmp_path / "percent.txt", percent))
    assert measurements.scale == "0..100"
    expected = np.array([row[2:] for row in percent], dtype=np.float32) / np.float32(100)
    same(measurements.spectra, expected)
    assert measurements.names == [f"patch {index}" for index in range(4)]
    fraction = [[index + 1, '""'] + [value / 100 for value in row[2:]] for index, row in enumerate(percent)]
    same(qvi.read_cgats(write_cgats(tmp_path / "fraction.txt", fraction)).spectra, expected)


def test_read_cgats_scale_argument(qvi, tmp_path):
    """scale=1 or scale=100 forces the scale; 1.0 and 100.0 count as 1 and 100."""
    rows = [[index + 1, '"x"'] + [0.25 + 0.5 * index] * 36 for index in range(2)]
    path = write_cgats(tmp_path / "fraction.txt", rows)
    read = qvi.read_cgats(path)
    assert read.scale == "0..1"
    forced = qvi.read_cgats(path, scale=100)
    assert forced.scale == "0..100"
    np.testing.assert_allclose(forced.spectra, read.spectra / 100, rtol=1e-6)
    same(qvi.read_cgats(path, scale=100.0).spectra, forced.spectra)
    same(qvi.read_cgats(path, scale=1).spectra, read.spectra)
    percent = write_cgats(tmp_path / "percent.txt", [[1, '"y"'] + [50] * 36, [2, '"z"'] + [75] * 36])
    kept = qvi.read_cgats(percent, scale=1)
    assert kept.scale == "0..1" and kept.spectra[0, 0] == 50 and kept.spectra[1, 0] == 75
    same(qvi.read_cgats(percent, scale=1.0).spectra, kept.spectra)


def test_read_cgats_of_lab_values(qvi, tmp_path):
    """A file of LAB_L, LAB_A, LAB_B gives .lab (N, 3) float32 and .spectra None; it unpacks the Lab values."""
    path = write_cgats(tmp_path / "lab.txt", [["A1", '"first"', 50, 10.5, -20], ["A2", '"second"', 62.25, -3, 4]],
                       ["SAMPLE_ID", "SAMPLE_NAME"] + LAB_FIELDS)
    measurements = qvi.read_cgats(path)
    assert measurements.spectra is None and measurements.scale == "" and measurements.emission is False
    same(measurements.lab, np.array([[50, 10.5, -20], [62.25, -3, 4]], dtype=np.float32))
    ids, names, values = measurements
    assert ids == ["A1", "A2"] and names == ["first", "second"] and values is measurements.lab
    assert len(measurements) == 2
    assert repr(measurements) == f"<Measurements {path!r}: 2 Lab values>"
    # The scale does not touch Lab values.
    same(qvi.read_cgats(path, scale=100).lab, measurements.lab)


def test_read_cgats_without_ids_and_names(qvi, tmp_path):
    """Without SAMPLE_ID the ids are the 1-based indices; without SAMPLE_NAME the names are ""."""
    path = write_cgats(tmp_path / "bare.txt", [[0.5] * 36, [0.25] * 36, [0.125] * 36], SPECTRAL_FIELDS)
    ids, names, spectra = qvi.read_cgats(path)
    assert ids == ["1", "2", "3"] and names == ["", "", ""]
    same(spectra[:, 0], np.array([0.5, 0.25, 0.125], dtype=np.float32))


def test_read_cgats_takes_the_10_nm_points_of_a_5_nm_file(qvi, tmp_path):
    """A 5 nm file keeps its 10 nm points."""
    wavelengths = range(380, 731, 5)
    values = [f"{0.1 + 0.001 * index:.3f}" for index in range(len(wavelengths))]
    path = write_cgats(tmp_path / "five.txt", [["A1"] + values],
                       ["SAMPLE_ID"] + [f"SPECTRAL_NM{wavelength}" for wavelength in wavelengths])
    same(qvi.read_cgats(path).spectra[0], np.array(values[::2], dtype=np.float32))


def test_read_cgats_extends_a_short_file(qvi, tmp_path):
    """A 400..700 nm file takes the nearest value at 380..390 and 710..730 nm, and says so in .extension."""
    fields = [f"SPECTRAL_NM{wavelength}" for wavelength in range(400, 701, 10)]
    values = [0.25 + index / 64 for index in range(31)]
    measurements = qvi.read_cgats(write_cgats(tmp_path / "short.txt", [values], fields))
    assert measurements.extension == "380..390 nm from 400 nm, 710..730 nm from 700 nm"
    same(measurements.spectra[0], np.array([values[0]] * 2 + values + [values[-1]] * 3, dtype=np.float32))


def test_read_cgats_paths(qvi, tmp_path, monkeypatch):
    """str, bytes and os.PathLike paths read the same file; "-" is a file of that name, not standard input."""
    rows = [[1, '"a"'] + [0.5] * 36, [2, '"b"'] + [0.25] * 36]
    path = write_cgats(tmp_path / "file.txt", rows)

    class Place(os.PathLike):
        def __fspath__(self):
            return path

    expected = qvi.read_cgats(path)
    for given in (pathlib.Path(path), os.fsencode(path), Place()):
        read = qvi.read_cgats(given)
        assert read.ids == expected.ids and read.path == path
        same(read.spectra, expected.spectra)
    dash = [[7, '"from the file"'] + [0.75] * 36]
    write_cgats(tmp_path / "-", dash)
    monkeypatch.chdir(tmp_path)
    measurements = qvi.read_cgats("-")
    assert measurements.ids == ["7"] and measurements.names == ["from the file"]
    assert qvi.read_cgats(pathlib.Path("-")).ids == ["7"]


def test_read_cgats_is_quiet(qvi, tmp_path, capfd):
    """Reading a file writes nothing on standard output or error: how it was read is in the result."""
    qvi.read_cgats(write_cgats(tmp_path / "percent.txt", [[1, '"a"'] + [50] * 36]))
    qvi.read_cgats(sample(CHART))
    assert capfd.readouterr() == ("", "")


# ---------------------------------------------------------------- input arrays

def conversions(values):
    """The same values as other arrays: other types, orders and strides."""
    wide = np.zeros((values.shape[0], values.shape[1] * 2), dtype=np.float32)
    wide[:, ::2] = values
    reversed_rows = np.ascontiguousarray(values[::-1])[::-1]
    return {
        "float64": values.astype(np.float64),
        "big-endian": values.astype(">f4"),
        "fortran": np.asfortranarray(values),
        "fortran-float64": np.asfortranarray(values.astype(np.float64)),
        "strided-columns": wide[:, ::2],
        "negative-strides": reversed_rows,
        "list": values.tolist(),
    }


CONVERTED_CALLS = {
    "color": lambda qvi, s: qvi.color(s, "CIEXYZ"),
    "delta_e-reference": lambda qvi, s: qvi.delta_e(s, s[0]),
    "delta_e-sample": lambda qvi, s: qvi.delta_e(np.asarray(s, dtype=np.float32)[::-1].copy(), s, "CMC"),
    "density": lambda qvi, s: qvi.density(s, white_base="Absolute"),
    "density_filter": lambda qvi, s: filter_codes(qvi.density_filter(s, white_base="Absolute")),
    "cct": lambda qvi, s: qvi.cct(s),
    "paper_white": lambda qvi, s: qvi.color(np.full(36, 0.5, dtype=np.float32), paper_white=s[3]),
}


@pytest.mark.parametrize("call", CONVERTED_CALLS)
def test_converted_spectra_give_identical_results(qvi, spectra, call):
    """float64, big-endian, Fortran-order, strided and list inputs give the float32 C-contiguous results."""
    expected = CONVERTED_CALLS[call](qvi, spectra)
    for name, converted in conversions(spectra).items():
        result = CONVERTED_CALLS[call](qvi, converted)
        assert np.shape(result) == np.shape(expected), name
        np.testing.assert_array_equal(bits(result), bits(expected), err_msg=name)
    # A slice of every third row is the same as a copy of those rows.
    rows = spectra[1::3]
    assert not rows.flags.c_contiguous
    np.testing.assert_array_equal(bits(CONVERTED_CALLS[call](qvi, rows)),
                                  bits(CONVERTED_CALLS[call](qvi, np.ascontiguousarray(rows))))


def test_converted_lab_values_give_identical_results(qvi, spectra):
    """Lab values of other types, orders and strides give the float32 C-contiguous results."""
    lab = qvi.color(spectra[:6])
    expected_spectra = qvi.lab_to_spectrum(lab)
    expected_differences = qvi.delta_e(lab, lab[0], "94")
    for name, converted in conversions(lab).items():
        np.testing.assert_array_equal(bits(qvi.lab_to_spectrum(converted)), bits(expected_spectra), err_msg=name)
        np.testing.assert_array_equal(bits(qvi.delta_e(converted, lab[0], "94")), bits(expected_differences),
                                      err_msg=name)


def test_float64_values_are_rounded_to_the_nearest_float32(qvi, spectra):
    """float64 values that are not float32 values give the results of their nearest float32."""
    rough = spectra.astype(np.float64) + 1e-9
    same(qvi.color(rough), qvi.color(rough.astype(np.float32)))
    lab = np.array([[50.000000001, 10.1, -20.3]])
    same(qvi.lab_to_spectrum(lab), qvi.lab_to_spectrum(lab.astype(np.float32)))


@pytest.mark.parametrize("dtype", [np.int8, np.uint8, np.int32, np.int64, np.uint64])
def test_integer_arrays_are_taken_as_numbers(qvi, dtype):
    """Integer arrays give the results of the same numbers as float32."""
    values = (np.arange(72).reshape(2, 36) % 2).astype(dtype)
    same(qvi.color(values), qvi.color(values.astype(np.float32)))
    same(qvi.density(values + 1, white_base="Absolute"), qvi.density((values + 1).astype(np.float32),
                                                                     white_base="Absolute"))
    lab = np.array([[50, 10, 20]]).astype(dtype)
    same(qvi.lab_to_spectrum(lab), qvi.lab_to_spectrum(lab.astype(np.float32)))
    same(qvi.lab_to_spectrum(50, 10, 20), qvi.lab_to_spectrum(50.0, 10.0, 20.0))


def test_inputs_are_left_untouched(qvi, spectra, white):
    """The functions do not change their input arrays; results are new writable arrays."""
    given = spectra.copy()
    paper = white.copy()
    lab = qvi.color(given, paper_white=paper)
    qvi.delta_e(given, given[::-1], "CIEDE2000")
    qvi.density(given, paper_white=paper)
    qvi.cct(given)
    lab_copy = lab.copy()
    qvi.lab_to_spectrum(lab[:3])
    same(given, spectra)
    same(paper, white)
    same(lab, lab_copy)
    result = qvi.color(given)
    assert result.flags.writeable
    result[:] = 0
    assert np.any(qvi.color(given) != 0)


# ---------------------------------------------------------------- empty and one-row batches

def test_empty_batches(qvi, spectra):
    """A batch of no rows gives a result of no rows of the right width."""
    none = np.zeros((0, 36), dtype=np.float32)
    for space in spaces():
        result = qvi.color(none, space)
        assert result.dtype == np.float32 and result.shape == (0, 3)
    for result in (qvi.delta_e(none, none), qvi.delta_e(none, spectra[0]), qvi.delta_e(spectra[0], none),
                   qvi.delta_e(np.zeros((0, 3)), np.zeros((0, 3)), "CIEDE2000"),
                   qvi.density(none, white_base="Absolute"), qvi.cct(none)):
        assert result.dtype == np.float32 and result.shape == (0,)
    assert qvi.density_filter(none, white_base="Absolute") == []
    for result in (qvi.lab_to_spectrum(np.zeros((0, 3))), qvi.lab_to_spectrum([], [], [])):
        assert result.dtype == np.float32 and result.shape == (0, 36)


def test_one_row_batches_stay_batches(qvi, spectra):
    """A batch of one row, (1, 36) or (1, 3), gives a batch of one result, not a single value."""
    one = spectra[:1]
    assert qvi.color(one).shape == (1, 3)
    assert qvi.delta_e(one, one).shape == (1,)
    assert qvi.delta_e(one, spectra[0]).shape == (1,)
    assert qvi.density(one, white_base="Absolute").shape == (1,)
    assert qvi.density_filter(one, white_base="Absolute") == [qvi.density_filter(spectra[0], white_base="Absolute")]
    assert qvi.cct(one).shape == (1,)
    assert qvi.lab_to_spectrum(qvi.color(one)).shape == (1, 36)
    assert qvi.lab_to_spectrum([50], [0], [0]).shape == (1, 36)
