"""Bad input gives a clear exception, never a crash or wrong data: shapes,
types and values the functions refuse before the library sees them, the
library's refusals with its own texts, files that cannot be read. After
every error the module still gives the right numbers."""


import numpy as np
import pytest

from conftest import CHART, SPECTRAL_FIELDS, WHITE, bits, sample, write_cgats

PAPER_WHITE_HINT = 'the white base {} needs a paper white: give paper_white=..., or white_base="Absolute"'
OUT_OF_RANGE = "CMetryCalculator: Conversion out of Range"
UNREACHABLE_HINT = "no reflectance spectrum between 0 and 1 reaches this value"
LAB_FORMULA_HINT = "with Lab values the formula must be CIELab, 94 or CIEDE2000; give spectra for {}"


def known_results(qvi, spectra, white):
    """Results that depend on the engine's state: illuminant, paper white and
    the Lab-to-spectrum search."""
    return [qvi.color(spectra), qvi.color(spectra, "CIELuv", illuminant="A", observer="TenDegree"),
            qvi.density(spectra, paper_white=white), qvi.delta_e(spectra, spectra[::-1], "CMC"),
            qvi.lab_to_spectrum(qvi.color(spectra[:3]))]


@pytest.fixture(scope="module")
def baseline(qvi, spectra, white):
    return known_results(qvi, spectra, white)


@pytest.fixture(autouse=True)
def still_works(qvi, spectra, white, baseline):
    """After the test's errors the module gives the same numbers as before,
    and holds no paper white of an earlier call."""
    yield
    for before, after in zip(baseline, known_results(qvi, spectra, white)):
        np.testing.assert_array_equal(bits(after), bits(before))
    with pytest.raises(qvi.CMetryError) as refusal:
        qvi.density(spectra[0])
    assert refusal.value.text == "Missing WhiteReference"


def refused(qvi, error, call):
    """The exception `call` raises, which must be an `error`."""
    with pytest.raises(error) as caught:
        call()
    return caught.value


# ---------------------------------------------------------------- the exception classes

def test_hierarchy(qvi):
    """CMetryError < BusinessError < QVIError < Exception; the others under QVIError; CgatsError is a ValueError."""
    from qvimanager import errors
    assert issubclass(qvi.CMetryError, qvi.BusinessError)
    assert issubclass(qvi.BusinessError, qvi.QVIError)
    assert issubclass(qvi.ResourceError, qvi.QVIError) and issubclass(qvi.GUIError, qvi.QVIError)
    assert issubclass(qvi.QVIError, Exception)
    assert issubclass(qvi.CgatsError, qvi.QVIError) and issubclass(qvi.CgatsError, ValueError)
    assert not issubclass(qvi.QVIError, ValueError)
    for name in errors.__all__:
        assert getattr(errors, name) is getattr(qvi, name)


def test_exception_attributes_default(qvi):
    """An exception made from a message alone carries it as its text, no class and no row."""
    error = qvi.CMetryError("text")
    assert (str(error), error.text, error.exception_class, error.row) == ("text", "text", None, None)
    error = qvi.CgatsError("file:3: bad", file="file", line=3, text="bad")
    assert (str(error), error.text, error.file, error.line) == ("file:3: bad", "bad", "file", 3)


# ---------------------------------------------------------------- shapes

SPECTRA_SHAPE = "spectra must have shape (36,) or (N, 36); got shape {}"
SIDE_SHAPE = "{} must be spectra of shape (36,) or (N, 36), or Lab values of shape (3,) or (N, 3); got shape {}"
WRONG_SPECTRA = [(35,), (2, 35), (2, 3, 36), (), (0,), (37,), (36, 2)]


@pytest.mark.parametrize("shape", WRONG_SPECTRA, ids=str)
@pytest.mark.parametrize("function", ["color", "density", "density_filter", "cct"])
def test_wrong_shape_of_spectra(qvi, function, shape):
    """Spectra of any other shape than (36,) or (N, 36) raise ValueError naming the expected and given shapes."""
    error = refused(qvi, ValueError, lambda: getattr(qvi, function)(np.full(shape, 0.5), white_base="Absolute"))
    assert str(error) == SPECTRA_SHAPE.format(shape)


@pytest.mark.parametrize("shape", [(35,), (2, 35), (2, 3, 36), (), (4,), (2, 2), (0,)], ids=str)
def test_wrong_shape_of_delta_e_sides(qvi, spectra, shape):
    """Either side of delta_e of another shape than spectra or Lab values raises ValueError naming both."""
    error = refused(qvi, ValueError, lambda: qvi.delta_e(np.full(shape, 0.5), spectra))
    assert str(error) == SIDE_SHAPE.format("reference", shape)
    error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra, np.full(shape, 0.5)))
    assert str(error) == SIDE_SHAPE.format("sample", shape)


def test_delta_e_rows_must_pair(qvi, spectra):
    """Sides of different numbers of rows, neither of one row, raise ValueError with both counts."""
    error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra[:3], spectra[:4]))
    assert str(error) == ("reference and sample must have the same number of rows, or one of them one row; "
                          "got 3 and 4")
    error = refused(qvi, ValueError, lambda: qvi.delta_e(qvi.color(spectra[:2]), spectra[:5], "CIEDE2000"))
    assert str(error).endswith("got 2 and 5")
    error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra[:0], spectra[:2]))
    assert str(error).endswith("got 0 and 2")


@pytest.mark.parametrize("shape", [(4,), (2, 4), (2, 3, 3), (), (0,), (3, 1)], ids=str)
def test_wrong_shape_of_lab_values(qvi, shape):
    """Lab values of another shape than (3,) or (N, 3) raise ValueError naming both."""
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum(np.full(shape, 50.0)))
    assert str(error) == f"lab must have shape (3,) or (N, 3); got shape {shape}"


def test_wrong_shapes_of_l_a_b(qvi):
    """L, a and b must be numbers or 1-D arrays of one length, and come all three."""
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum([50, 60], [1, 2], 3))
    assert str(error) == ("lab_to_spectrum(): L, a and b must be numbers, or 1-D arrays of one length; "
                          "got shapes (2,), (2,), ()")
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum([[50]], [[1]], [[3]]))
    assert str(error).endswith("got shapes (1, 1), (1, 1), (1, 1)")
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum([50, 60], [1, 2, 3], [0, 0]))
    assert str(error).endswith("got shapes (2,), (3,), (2,)")
    for call in (lambda: qvi.lab_to_spectrum(50, 10), lambda: qvi.lab_to_spectrum(50, b=10)):
        assert str(refused(qvi, TypeError, call)) == "lab_to_spectrum() takes L, a and b, or one array of Lab values"


@pytest.mark.parametrize("shape", [(35,), (1, 36), (2, 36), ()], ids=str)
@pytest.mark.parametrize("function", ["color", "delta_e", "density", "density_filter"])
def test_wrong_shape_of_paper_white(qvi, spectra, function, shape):
    """A paper white must be one spectrum (36,)."""
    arguments = (spectra, spectra) if function == "delta_e" else (spectra,)
    error = refused(qvi, ValueError, lambda: getattr(qvi, function)(*arguments, paper_white=np.full(shape, 0.9)))
    assert str(error) == f"paper_white must be one spectrum of shape (36,); got shape {shape}"


# ---------------------------------------------------------------- values that are not finite

@pytest.mark.parametrize("value,name", [(np.nan, "NaN"), (np.inf, "inf"), (-np.inf, "-inf")], ids=str)
@pytest.mark.parametrize("function", ["color", "density", "density_filter", "cct"])
def test_spectra_must_be_finite(qvi, spectra, function, value, name):
    """A value that is not finite, anywhere, raises ValueError naming its row and wavelength."""
    call = getattr(qvi, function)
    for row, point in ((0, 0), (2, 4), (23, 35)):
        for dtype in (np.float32, np.float64):
            broken = spectra.astype(dtype)
            broken[row, point] = value
            error = refused(qvi, ValueError, lambda: call(broken, white_base="Absolute"))
            assert str(error) == (f"spectra row {row} holds {name} at {380 + 10 * point} nm: "
                                  "every value must be a finite number")
    broken = spectra[5].copy()
    broken[10] = value
    error = refused(qvi, ValueError, lambda: call(broken, white_base="Absolute"))
    assert str(error) == f"spectra row 0 holds {name} at 480 nm: every value must be a finite number"


@pytest.mark.parametrize("value,name", [(np.nan, "NaN"), (np.inf, "inf"), (-np.inf, "-inf")], ids=str)
def test_delta_e_sides_must_be_finite(qvi, spectra, value, name):
    """A value that is not finite on either side, spectra or Lab values, raises ValueError naming side and row."""
    lab = qvi.color(spectra)
    broken = spectra.copy()
    broken[3, 20] = value
    broken_lab = lab.copy()
    broken_lab[4, 1] = value
    for formula in ("CIELab", "CMC", "CIEDE2000"):
        error = refused(qvi, ValueError, lambda: qvi.delta_e(broken, spectra, formula))
        assert str(error) == f"reference row 3 holds {name} at 580 nm: every value must be a finite number"
        error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra[0], broken, formula))
        assert str(error) == f"sample row 3 holds {name} at 580 nm: every value must be a finite number"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(lab, broken_lab))
    assert str(error) == f"sample row 4 holds {name} in component 1: every value must be a finite number"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(broken_lab[4], spectra, "CIEDE2000"))
    assert str(error) == f"reference row 0 holds {name} in component 1: every value must be a finite number"


@pytest.mark.parametrize("value,name", [(np.nan, "NaN"), (np.inf, "inf"), (-np.inf, "-inf")], ids=str)
def test_lab_values_and_paper_white_must_be_finite(qvi, spectra, value, name):
    """Lab values and the paper white that are not finite raise ValueError saying where."""
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum([50, 60], [0, 0], [0, value]))
    assert str(error) == f"lab row 1 holds {name} in component 2: every value must be a finite number"
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum(value, 0, 0))
    assert str(error) == f"lab row 0 holds {name} in component 0: every value must be a finite number"
    paper = spectra[WHITE].copy()
    paper[1] = value
    for call in (lambda: qvi.color(spectra, paper_white=paper), lambda: qvi.density(spectra, paper_white=paper),
                 lambda: qvi.delta_e(spectra, spectra, paper_white=paper)):
        error = refused(qvi, ValueError, call)
        assert str(error).startswith("paper_white") and f"holds {name} at 390 nm" in str(error)


# ---------------------------------------------------------------- values beyond the float32 range

@pytest.mark.parametrize("value", [1e39, -1e39, 1e300], ids=str)
def test_float64_beyond_float32(qvi, spectra, value):
    """float64 values beyond the float32 range raise ValueError naming the value and where it is."""
    wide = spectra.astype(np.float64)
    wide[1, 4] = value
    message = f"spectra[1, 4] = {value!r} is beyond the float32 range (3.4e38)"
    for function in (qvi.color, qvi.density, qvi.density_filter, qvi.cct):
        assert str(refused(qvi, ValueError, lambda: function(wide, white_base="Absolute"))) == message
    assert str(refused(qvi, ValueError, lambda: qvi.delta_e(wide, spectra))) == message.replace("spectra", "reference")
    assert str(refused(qvi, ValueError, lambda: qvi.delta_e(spectra, wide))) == message.replace("spectra", "sample")
    lab = np.array([[50.0, 0.0, 0.0], [50.0, value, 0.0]])
    assert str(refused(qvi, ValueError, lambda: qvi.lab_to_spectrum(lab))) == (
        f"lab[1, 1] = {value!r} is beyond the float32 range (3.4e38)")
    assert str(refused(qvi, ValueError, lambda: qvi.lab_to_spectrum([50, 60], [0, value], [0, 0]))) == (
        f"a[1] = {value!r} is beyond the float32 range (3.4e38)")
    paper = wide[1]
    assert str(refused(qvi, ValueError, lambda: qvi.color(spectra, paper_white=paper))) == (
        f"paper_white[4] = {value!r} is beyond the float32 range (3.4e38)")


def test_a_single_value_beyond_float32_is_named(qvi, spectra):
    """A single number beyond the float32 range is named plainly, a parameter by its index."""
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum(1e39, 0, 0))
    assert str(error) == "L = 1e+39 is beyond the float32 range (3.4e38)"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra[0], spectra[1], "CMC", parameters=(1, 1e39)))
    assert str(error) == "parameters[1] = 1e+39 is beyond the float32 range (3.4e38)"


def test_huge_finite_values_whose_results_are_not_finite(qvi, spectra):
    """Finite values too large for the float arithmetic raise ValueError naming the row and the result."""
    huge = spectra[:3].copy()
    huge[1] = 1e38
    too_large = "its values are too large for the float arithmetic"
    for space in ("CIELab", "CIEXYZ", "CIExyY", "HunterLab", "LCHvq"):
        error = refused(qvi, ValueError, lambda: qvi.color(huge, space, white_base="Absolute"))
        assert str(error) == f"spectra row 1: its {space} value is not finite; {too_large}"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(huge, spectra[:3]))
    assert str(error) == f"sample row 1: its colour difference is not finite; {too_large}"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(huge, spectra[0], "CMC"))
    assert str(error) == f"reference row 1: its colour difference is not finite; {too_large}"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(huge, spectra[:3], "CIEDE2000"))
    assert str(error) == f"reference row 1: its CIELab value is not finite; {too_large}"
    error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra[0], huge, "CIEDE2000"))
    assert str(error) == f"sample row 1: its CIELab value is not finite; {too_large}"
    for function in (qvi.density, qvi.density_filter):
        error = refused(qvi, ValueError, lambda: function(huge, white_base="Absolute"))
        assert str(error) == f"spectra row 1: its density is not finite; {too_large}"
    error = refused(qvi, ValueError, lambda: qvi.cct(huge))
    assert str(error) == f"spectra row 1: its XYZ is not finite; {too_large}"
    lab = np.array([[50, 0, 0], [3e38, 3e38, 3e38]], dtype=np.float32)
    for formula in ("CIELab", "94"):
        error = refused(qvi, ValueError, lambda: qvi.delta_e(lab, lab[::-1], formula))
        assert str(error) == f"sample row 0: its colour difference is not finite; {too_large}"


# ---------------------------------------------------------------- types

ARRAYS = {
    "str": np.full(36, "0.5"),
    "object": np.full(36, 0.5, dtype=object),
    "complex": np.full(36, 0.5, dtype=complex),
    "bool": np.ones(36, dtype=bool),
}


@pytest.mark.parametrize("kind", ARRAYS)
def test_arrays_of_other_types_are_refused(qvi, spectra, kind):
    """String, object, complex and bool arrays raise TypeError naming the argument and the array's type."""
    array = ARRAYS[kind]
    ending = f"must hold real numbers; got an array of {array.dtype}"
    for function in (qvi.color, qvi.density, qvi.density_filter, qvi.cct):
        assert str(refused(qvi, TypeError, lambda: function(array))) == "spectra " + ending
        assert str(refused(qvi, TypeError, lambda: function(np.stack([array, array])))) == "spectra " + ending
    assert str(refused(qvi, TypeError, lambda: qvi.delta_e(array, spectra))) == "reference " + ending
    assert str(refused(qvi, TypeError, lambda: qvi.delta_e(spectra, array))) == "sample " + ending
    assert str(refused(qvi, TypeError, lambda: qvi.color(spectra, paper_white=array))) == "paper_white " + ending
    assert str(refused(qvi, TypeError, lambda: qvi.lab_to_spectrum(array[:3]))) == "lab " + ending
    assert str(refused(qvi, TypeError, lambda: qvi.lab_to_spectrum(array[:2], [0, 0], [0, 0]))) == "L " + ending
    if kind != "object":
        # An object array of numbers is a sequence of numbers, which parameters may be.
        parameters = array[:2]
        error = refused(qvi, TypeError, lambda: qvi.delta_e(spectra[0], spectra[1], "CMC", parameters=parameters))
        assert str(error).startswith("parameters must hold real numbers; got an array of ")


def test_python_values_of_other_types_are_refused(qvi, spectra):
    """Strings and booleans given as numbers raise TypeError."""
    assert str(refused(qvi, TypeError, lambda: qvi.lab_to_spectrum("50", 0, 0))) == (
        "L must hold real numbers; got an array of <U2")
    assert str(refused(qvi, TypeError, lambda: qvi.lab_to_spectrum(50, True, 0))) == (
        "a must hold real numbers; got an array of bool")
    refused(qvi, TypeError, lambda: qvi.delta_e(spectra[0], spectra[1], "CMC", parameters=5))
    refused(qvi, TypeError, lambda: qvi.read_cgats(5))
    refused(qvi, TypeError, lambda: qvi.read_cgats(None))


# ---------------------------------------------------------------- conditions

def test_unknown_keyword(qvi, spectra):
    """An unknown keyword argument raises TypeError listing the condition keywords."""
    known = ("the conditions are illuminant, observer, white_base, density_standard, density_filter_mode, "
             "physical_filter and conditions={key: value}")
    calls = {"color": lambda: qvi.color(spectra, illuminat="D50"),
             "delta_e": lambda: qvi.delta_e(spectra, spectra, illuminat="D50"),
             "density": lambda: qvi.density(spectra, illuminat="D50"),
             "density_filter": lambda: qvi.density_filter(spectra, illuminat="D50"),
             "cct": lambda: qvi.cct(spectra, illuminat="D50"),
             "lab_to_spectrum": lambda: qvi.lab_to_spectrum(50, 0, 0, illuminat="D50"),
             "measure_conditions": lambda: qvi.measure_conditions(illuminat="D50")}
    for name, call in calls.items():
        assert str(refused(qvi, TypeError, call)) == f"{name}() got an unexpected keyword argument 'illuminat'; {known}"
    error = refused(qvi, TypeError, lambda: qvi.cct(spectra, paper_white=spectra[0]))
    assert str(error).startswith("cct() got an unexpected keyword argument 'paper_white'")


@pytest.mark.parametrize("key", ["Foo.Bar", "Colorimetric.illumination", "Illumination", ""])
def test_unknown_key_in_the_conditions_dict(qvi, spectra, key):
    """A key the library does not know raises CMetryError with the library's text, before any row."""
    for call in (lambda: qvi.color(spectra, conditions={key: "x"}),
                 lambda: qvi.delta_e(spectra, spectra, conditions={key: "x"}),
                 lambda: qvi.density(spectra, conditions={key: "x"}),
                 lambda: qvi.cct(spectra, conditions={key: "x"}),
                 lambda: qvi.lab_to_spectrum(50, 0, 0, conditions={key: "x"}),
                 lambda: qvi.measure_conditions(conditions={key: "x"})):
        error = refused(qvi, qvi.CMetryError, call)
        assert error.text == f"Modification not supported for key: {key}"
        assert str(error) == f'{key} = "x": Modification not supported for key: {key}'
        assert error.exception_class == "ExceptionCMetry" and error.row is None


UNKNOWN_VALUES = [
    ("illuminant", "D51", "D51 is not a valid illuminationtype"),
    ("illuminant", "d50", "d50 is not a valid illuminationtype"),
    ("illuminant", "", " is not a valid illuminationtype"),
    ("illuminant", "Dxx", "Dxx is not a valid illuminationtype"),
    ("observer", "Three", "Three is not a valid observertype"),
    ("white_base", "Relative", "Relative is not a valid whitespacetype"),
    ("density_standard", "ISO", "ISO is not a valid density standard type"),
    ("density_filter_mode", "Red", "Red is not a valid density filter mode"),
    ("physical_filter", "UV", "UV is not a valid whitespacetype"),
]


@pytest.mark.parametrize("keyword,value,text", UNKNOWN_VALUES, ids=lambda value: str(value))
def test_unknown_value(qvi, spectra, keyword, value, text):
    """A value the library does not know raises CMetryError with the library's text, by keyword or by dict."""
    key = qvi.KEYWORDS[keyword]
    for call in (lambda: qvi.color(spectra, **{keyword: value}),
                 lambda: qvi.density(spectra, paper_white=spectra[WHITE], conditions={key: value}),
                 lambda: qvi.lab_to_spectrum(50, 0, 0, **{keyword: value}),
                 lambda: qvi.measure_conditions(conditions={key: value})):
        error = refused(qvi, qvi.CMetryError, call)
        assert error.text == text
        assert str(error) == f'{key} = "{value}": {text}'
        assert error.exception_class == "ExceptionCMetry" and error.row is None


def test_unknown_space_and_formula(qvi, spectra):
    """An unknown colour space or formula raises CMetryError with the library's text; CIEDE2000 is no formula key."""
    error = refused(qvi, qvi.CMetryError, lambda: qvi.color(spectra, "Lab"))
    assert (str(error), error.text, error.row) == (
        'ColorSpaceDescription.Type = "Lab": Lab is not a valid color space', "Lab is not a valid color space", None)
    error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(spectra, spectra, "DE76"))
    assert (error.text, error.row) == ("DE76 is not a valid delta E formula", None)
    error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(
        spectra, spectra, conditions={"ColorSpaceDescription.DeltaEFormula": "CIEDE2000"}))
    assert error.text == "CIEDE2000 is not a valid delta E formula"


def test_a_number_the_library_cannot_read(qvi, spectra):
    """A daylight temperature that is not a number raises ResourceError with the library's text."""
    error = refused(qvi, qvi.ResourceError, lambda: qvi.color(spectra, illuminant="Dxx, Temperature:abc"))
    assert error.text == "abc is not a valid number."
    assert str(error) == 'Colorimetric.Illumination = "Dxx, Temperature:abc": abc is not a valid number.'
    assert error.exception_class == "ExceptionOutOfBound" and error.row is None


def test_supported_values_of_an_unknown_key(qvi):
    """supported_values of a key the library does not know raises KeyError; of a non-str TypeError."""
    for key in ("Foo", "", "ColorSpaceDescription.Foo"):
        error = refused(qvi, KeyError, lambda: qvi.supported_values(key))
        assert error.args[0].startswith(f"{key!r} is not a condition key; the keys are Colorimetric.Illumination, ")
    assert str(refused(qvi, TypeError, lambda: qvi.supported_values(5))) == (
        "supported_values(): key must be a str, not int")


def test_a_key_given_twice(qvi, spectra):
    """A key given by keyword and dict, or by space=/formula= and dict, raises ValueError naming both places."""
    error = refused(qvi, ValueError, lambda: qvi.color(spectra, illuminant="D50",
                                                       conditions={"Colorimetric.Illumination": "D50"}))
    assert str(error) == ("color(): Colorimetric.Illumination is given twice, "
                          "by conditions['Colorimetric.Illumination'] and by illuminant")
    error = refused(qvi, ValueError, lambda: qvi.color(spectra, "CIELab",
                                                       conditions={"ColorSpaceDescription.Type": "CIELab"}))
    assert str(error) == ("color(): ColorSpaceDescription.Type is given twice, "
                          "by conditions['ColorSpaceDescription.Type'] and by space")
    error = refused(qvi, ValueError, lambda: qvi.delta_e(
        spectra, spectra, "CMC", conditions={"ColorSpaceDescription.DeltaEFormula": "CMC"}))
    assert str(error) == ("delta_e(): ColorSpaceDescription.DeltaEFormula is given twice, "
                          "by conditions['ColorSpaceDescription.DeltaEFormula'] and by formula")
    error = refused(qvi, ValueError, lambda: qvi.density(spectra, white_base="Absolute",
                                                         conditions={"Colorimetric.WhiteBase": "Paper"}))
    assert str(error).startswith("density(): Colorimetric.WhiteBase is given twice")


def test_values_of_other_types(qvi, spectra):
    """Condition values, space, formula and dict keys must be str; conditions a dict."""
    cases = [
        (lambda: qvi.color(spectra, illuminant=50), "color(): illuminant must be a str, not int"),
        (lambda: qvi.color(spectra, 5), "color(): space must be a str, not int"),
        (lambda: qvi.delta_e(spectra, spectra, 94), "delta_e(): formula must be a str, not int"),
        (lambda: qvi.cct(spectra, conditions={"Colorimetric.Illumination": None}),
         "cct(): conditions['Colorimetric.Illumination'] must be a str, not NoneType"),
        (lambda: qvi.density(spectra, conditions={1: "D50"}), "density(): the keys of conditions must be str, not int"),
        (lambda: qvi.color(spectra, conditions=[("Colorimetric.Illumination", "D50")]),
         "color(): conditions must be a dict of keys and values, not list"),
        (lambda: qvi.measure_conditions(observer=b"TenDegree"),
         "measure_conditions(): observer must be a str, not bytes"),
    ]
    for call, message in cases:
        assert str(refused(qvi, TypeError, call)) == message


def test_a_value_with_a_nul_character_is_refused(qvi, spectra):
    """A key or value holding a NUL character is refused, not cut short at the NUL."""
    error = refused(qvi, ValueError, lambda: qvi.color(spectra, illuminant="D50\0x"))
    assert str(error) == "color(): illuminant holds a NUL character"
    error = refused(qvi, ValueError, lambda: qvi.color(spectra, conditions={"Colorimetric.Illumination\0x": "D50"}))
    assert str(error) == "color(): conditions['Colorimetric.Illumination\\x00x'] holds a NUL character"


# ---------------------------------------------------------------- refusals of rows

def test_a_white_base_without_a_paper_white(qvi, spectra):
    """White bases Paper and Automatic without a paper white: the library's refusal, under the conditions given
    and with no row (the conditions are at fault, not a row), and what to give. An empty batch is refused too."""
    error = refused(qvi, qvi.CMetryError, lambda: qvi.density(spectra))
    assert (error.text, error.row, error.exception_class) == ("Missing WhiteReference", None, "ExceptionCMetry")
    assert str(error) == "Missing WhiteReference; " + PAPER_WHITE_HINT.format("Automatic")
    error = refused(qvi, qvi.CMetryError, lambda: qvi.density_filter(spectra[3], white_base="Paper"))
    assert (error.text, error.row) == ("Missing WhiteReference", None)
    assert str(error) == ('under Colorimetric.WhiteBase = "Paper": Missing WhiteReference; ' +
                          PAPER_WHITE_HINT.format("Paper"))
    error = refused(qvi, qvi.CMetryError, lambda: qvi.color(spectra[:0], white_base="Paper"))
    assert (error.text, error.row) == ("CMetryCalculator", None)
    assert str(error) == 'under Colorimetric.WhiteBase = "Paper": CMetryCalculator; ' + PAPER_WHITE_HINT.format("Paper")
    error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(spectra, spectra[0], white_base="Paper"))
    assert str(error) == 'under Colorimetric.WhiteBase = "Paper": CMetryCalculator; ' + PAPER_WHITE_HINT.format("Paper")


def test_lab_to_spectrum_of_an_unreachable_value(qvi):
    """A Lab value no spectrum reaches raises CMetryError with the library's text and its row."""
    error = refused(qvi, qvi.CMetryError, lambda: qvi.lab_to_spectrum(50, 200, 200))
    assert (error.text, error.row, error.exception_class) == (OUT_OF_RANGE, 0, "ExceptionCMetry")
    assert str(error) == f"{OUT_OF_RANGE}; {UNREACHABLE_HINT}"
    lab = np.array([[50, 0, 0], [60, 10, 10], [50, 200, 200], [40, 0, 0]], dtype=np.float32)
    error = refused(qvi, qvi.CMetryError, lambda: qvi.lab_to_spectrum(lab))
    assert (error.text, error.row) == (OUT_OF_RANGE, 2)
    assert str(error) == f"lab row 2: {OUT_OF_RANGE}; {UNREACHABLE_HINT}"
    for value in ((-5, 0, 0), (101, 0, 0), (1e30, 0, 0)):
        assert refused(qvi, qvi.CMetryError, lambda: qvi.lab_to_spectrum(*value)).text == OUT_OF_RANGE


@pytest.mark.parametrize("position,name", [(0, "kL"), (1, "kC"), (2, "kH")])
@pytest.mark.parametrize("value", [0.0, -1.0, np.nan, np.inf], ids=str)
def test_ciede2000_factors_must_be_positive(qvi, spectra, position, name, value):
    """A CIEDE2000 factor of 0, below 0 or not finite raises the library's CMetryError."""
    parameters = [1.0, 1.0, 1.0]
    parameters[position] = value
    text = f"DeltaE2000: the parametric factor {name} must be finite and greater than 0"
    error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(spectra[0], spectra[1], "CIEDE2000",
                                                              parameters=parameters))
    assert (str(error), error.text, error.row, error.exception_class) == (text, text, 0, "ExceptionCMetry")
    error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(spectra, spectra[::-1], "CIEDE2000",
                                                              parameters=parameters))
    assert str(error) == f"sample row 0: {text}"


@pytest.mark.parametrize("formula", ["CMC", "CIELuv", "LABvq", "FMCII"])
def test_lab_values_with_a_formula_of_spectra(qvi, spectra, formula):
    """With Lab values the library's formulas other than CIELab and 94 raise CMetryError "CMetryCalculator"."""
    lab = qvi.color(spectra)
    for references, samples in ((lab, lab[::-1]), (lab[0], lab[1]), (spectra, lab), (lab[2], spectra)):
        error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(references, samples, formula,
                                                                  white_base="Absolute"))
        assert (error.text, error.row, error.exception_class) == ("CMetryCalculator", None, "ExceptionCMetry")
        assert str(error).endswith("CMetryCalculator; " + LAB_FORMULA_HINT.format(formula))


def test_lab_values_with_a_formula_of_spectra_are_told_the_formula(qvi, spectra):
    """The refusal of a formula for Lab values names the formula whatever the white base."""
    lab = qvi.color(spectra)
    for white_base in ("Automatic", "Paper"):
        error = refused(qvi, qvi.CMetryError, lambda: qvi.delta_e(lab[0], lab[1], "CMC", white_base=white_base))
        assert str(error) == (f'under Colorimetric.WhiteBase = "{white_base}", ColorSpaceDescription.DeltaEFormula = '
                              '"CMC": CMetryCalculator; ' + LAB_FORMULA_HINT.format("CMC"))


NAMES = {"CMC": ("l", "c"), "94": ("kL", "kC", "kH")}


@pytest.mark.parametrize("formula,parameters", [("CMC", (np.nan, 1)), ("CMC", (1, np.inf)), ("94", (1, 1, np.nan))],
                         ids=str)
def test_parameters_must_be_finite(qvi, spectra, formula, parameters):
    """A parameter that is not finite raises ValueError naming the parameters, not a row of the spectra."""
    error = refused(qvi, ValueError, lambda: qvi.delta_e(spectra, spectra[::-1], formula, parameters=parameters))
    assert str(error) == (f"delta_e(): the parameters of {formula} ({', '.join(NAMES[formula])}) must be finite "
                          f"numbers; got {parameters!r}")


@pytest.mark.parametrize("illuminant", ["Userdefined", "F13", "F0"])
def test_an_illuminant_without_data_is_named(qvi, spectra, illuminant):
    """An illuminant the library accepts but has no data for is refused with a message naming it."""
    error = refused(qvi, (ValueError, qvi.QVIError), lambda: qvi.color(spectra, illuminant=illuminant))
    assert illuminant in str(error)


def test_an_illuminant_without_data_is_refused(qvi, spectra):
    """Userdefined needs a spectrum the module does not take: ValueError. An F number without a table is the
    library's refusal, with its class and text, under the conditions and with no row."""
    error = refused(qvi, ValueError, lambda: qvi.color(spectra, illuminant="Userdefined"))
    assert str(error) == ("color(): the illuminant Userdefined needs the illuminant's spectrum, which this module does "
                          "not take; give a standard illuminant")
    error = refused(qvi, qvi.BusinessError, lambda: qvi.color(spectra[0], illuminant="F13"))
    assert (error.text, error.exception_class, error.row) == ("Filter table is empty: its step size is 0",
                                                              "ExceptionCalculationProblem", None)
    assert str(error) == 'under Colorimetric.Illumination = "F13": Filter table is empty: its step size is 0'


def test_a_huge_paper_white_is_named(qvi, spectra):
    """A paper white whose density is not finite raises ValueError naming the paper white."""
    huge = np.full(36, 1e38, dtype=np.float32)
    message = "paper_white is too large for the float arithmetic: values relative to it are not finite"
    assert str(refused(qvi, ValueError, lambda: qvi.density(spectra, paper_white=huge))) == message
    # Found before the first row: an empty batch is refused too.
    assert str(refused(qvi, ValueError, lambda: qvi.density(spectra[:0], paper_white=huge))) == message


def test_cct_of_no_light(qvi):
    """A spectrum of zeros has no colour temperature: ValueError naming its row."""
    error = refused(qvi, ValueError, lambda: qvi.cct(np.zeros((2, 36), dtype=np.float32)))
    assert str(error) == ("spectra row 0 has no light: its X + Y + Z is 0, so it has no chromaticity and no colour "
                          "temperature")


def test_lab_to_spectrum_with_white_base_paper(qvi):
    """lab_to_spectrum takes no paper white: white base Paper is refused as such, not as an unreachable value."""
    error = refused(qvi, ValueError, lambda: qvi.lab_to_spectrum(50, 0, 0, white_base="Paper"))
    assert str(error) == ("lab_to_spectrum(): the white base Paper needs a paper white, which lab_to_spectrum does not "
                          "take; the spectra are absolute")


def test_refused_rows_leave_no_partial_result(qvi, spectra):
    """A refusal in a later row raises for the whole call; the next call computes every row."""
    lab = qvi.color(spectra[:4])
    broken = np.vstack([lab, [[50, 200, 200]]]).astype(np.float32)
    assert refused(qvi, qvi.CMetryError, lambda: qvi.lab_to_spectrum(broken)).row == 4
    found = qvi.lab_to_spectrum(lab)
    np.testing.assert_array_equal(bits(found), bits(np.array([qvi.lab_to_spectrum(row) for row in lab])))


# ---------------------------------------------------------------- files

def test_read_cgats_of_a_missing_file(qvi, tmp_path):
    """A missing file raises FileNotFoundError."""
    missing = tmp_path / "missing.txt"
    error = refused(qvi, FileNotFoundError, lambda: qvi.read_cgats(missing))
    assert error.filename == str(missing)
    refused(qvi, FileNotFoundError, lambda: qvi.read_cgats(str(tmp_path / "no" / "such.txt")))


def test_read_cgats_of_a_directory(qvi, tmp_path):
    """A directory raises CgatsError."""
    error = refused(qvi, qvi.CgatsError, lambda: qvi.read_cgats(tmp_path))
    assert (error.text, error.file, error.line) == ("is a directory, not a measurement file", str(tmp_path), None)
    assert str(error) == f"{tmp_path}: is a directory, not a measurement file"


BROKEN_FILES = {
    "empty": ("", None, "not a CGATS file: it is empty"),
    "no format": ("garbage\n", 1, "not a CGATS file: no BEGIN_DATA_FORMAT"),
    "binary": (bytes(range(256)) * 4, 1, "not a CGATS file: the first line does not name the file format"),
}


@pytest.mark.parametrize("name", BROKEN_FILES)
def test_read_cgats_of_files_that_are_not_cgats(qvi, tmp_path, name):
    """A file that is not CGATS raises CgatsError with the file, the line and the reason."""
    content, line, text = BROKEN_FILES[name]
    path = tmp_path / "broken.txt"
    if isinstance(content, bytes):
        path.write_bytes(content)
    else:
        path.write_text(content)
    error = refused(qvi, qvi.CgatsError, lambda: qvi.read_cgats(path))
    assert (error.text, error.file, error.line) == (text, str(path), line)
    assert str(error) == (f"{path}:{line}: {text}" if line else f"{path}: {text}")


def test_read_cgats_of_broken_content(qvi, tmp_path):
    """Rows and values that cannot be read raise CgatsError naming the line and the value."""
    cases = [
        ([[1, '"a"'] + [0.5] * 30], None, 8, "the row has 32 values for 38 fields"),
        ([[1, '"a"', "abc"] + [0.5] * 35], None, 8, 'the value "abc" of SPECTRAL_NM380 is not a number'),
        ([[1, '"a"'] + [0.5] * 35 + ["nan"]], None, 8, 'the value "nan" of SPECTRAL_NM730 is not a number'),
        ([[1, '"a"', "inf"] + [0.5] * 35], None, 8, 'the value "inf" of SPECTRAL_NM380 is not a number'),
        ([], None, 5, "the file holds no samples"),
        ([[1, '"a"', 1, 2]], ["SAMPLE_ID", "SAMPLE_NAME", "XYZ_X", "XYZ_Y"], 5,
         "no spectral field for 400 nm (fields such as SPECTRAL_NM400 ... SPECTRAL_NM700 are needed at least, "
         "or LAB_L, LAB_A and LAB_B without spectral fields)"),
        ([[1] + [0.5] * 35], ["SAMPLE_ID"] + SPECTRAL_FIELDS[:17] + SPECTRAL_FIELDS[18:], 5,
         "no spectral field for 550 nm (fields such as SPECTRAL_NM400 ... SPECTRAL_NM700 are needed at least, "
         "or LAB_L, LAB_A and LAB_B without spectral fields)"),
        ([[1, '"a"', "1e-40"] + [0.5] * 35], None, 8,
         'the value "1e-40" of SPECTRAL_NM380 is out of range: on the scale 0..1 it is too close to 0 for a float '
         '(1.2e-38); write 0'),
        ([[1, '"a"', "1e45"] + [50] * 35], None, 8,
         'the value "1e45" of SPECTRAL_NM380 is out of range: on the scale 0..100 it is beyond a float (3.4e38)'),
        ([[1, '"a"', "1e39", 0, 0]], ["SAMPLE_ID", "SAMPLE_NAME", "LAB_L", "LAB_A", "LAB_B"], 8,
         'the value "1e39" of LAB_L is out of range: a float holds 0 and magnitudes from 1.2e-38 to 3.4e38'),
    ]
    for index, (rows, fields, line, text) in enumerate(cases):
        path = write_cgats(tmp_path / f"broken{index}.txt", rows, fields)
        error = refused(qvi, qvi.CgatsError, lambda: qvi.read_cgats(path))
        assert (error.text, error.file, error.line) == (text, path, line), index
        assert str(error) == f"{path}:{line}: {text}"


def test_read_cgats_of_a_value_beyond_a_float_on_the_forced_scale(qvi, tmp_path):
    """A value that fits a float only once divided by 100 is refused when scale=1 keeps it."""
    path = write_cgats(tmp_path / "large.txt", [[1, '"a"', "1e39"] + [50] * 35])
    assert qvi.read_cgats(path).spectra[0, 0] == np.float32(1e37)
    error = refused(qvi, qvi.CgatsError, lambda: qvi.read_cgats(path, scale=1))
    assert error.text == ('the value "1e39" of SPECTRAL_NM380 is out of range: on the scale 0..1 it is beyond a '
                          'float (3.4e38)')


@pytest.mark.parametrize("rows,text", [
    ([[1, '"a"'] + [1.8] * 36, [2, '"b"'] + [0.5] * 36],
     "the reflectance scale is ambiguous: the largest value, 1.8 (sample 1, line 8), is high for 0..1 and low for "
     "0..100; give scale=1 or scale=100"),
    ([[1, '"a"'] + [50] * 36, [2, '"b"'] + [0.5] * 36, [3, '"c"'] + [0.5] * 36],
     "the reflectance scale is ambiguous: 1 of 3 samples has values above 2 (the first: sample 1, line 8: 50 in "
     "SPECTRAL_NM380), the others none (the first: sample 2, line 9); give scale=1 if the file is 0..1 (then those "
     "values are errors or fluorescence) or scale=100 if it is 0..100"),
], ids=["between", "mixed"])
def test_read_cgats_of_an_ambiguous_scale(qvi, tmp_path, rows, text):
    """An ambiguous scale raises CgatsError asking for the argument scale=1 or scale=100; each then reads it."""
    path = write_cgats(tmp_path / "ambiguous.txt", rows)
    error = refused(qvi, qvi.CgatsError, lambda: qvi.read_cgats(path))
    assert (error.text, error.file, error.line) == (text, path, None)
    assert "--scale" not in str(error)
    assert qvi.read_cgats(path, scale=1).scale == "0..1"
    assert qvi.read_cgats(path, scale=100).scale == "0..100"


@pytest.mark.parametrize("scale", [0, 2, 10, -100, 1.5, True, False, "1", "100", [1]], ids=repr)
def test_read_cgats_with_a_bad_scale(qvi, scale):
    """scale must be 1, 100 or None."""
    error = refused(qvi, ValueError, lambda: qvi.read_cgats(sample(CHART), scale=scale))
    assert str(error) == f"read_cgats(): scale must be 1, 100 or None (decided from the file); got {scale!r}"


EMISSION = ("MEAS_TYPE\tEMISSION",)


def test_read_cgats_of_an_emission_file_with_a_scale(qvi, tmp_path):
    """An emission file keeps its own scale and says none; read on a scale that is given, it says that one."""
    path = write_cgats(tmp_path / "light.txt", [[1, '"lamp"'] + [50] * 36], keywords=EMISSION)
    own = qvi.read_cgats(path)
    assert (own.emission, own.scale, float(own.spectra[0, 0])) == (True, "", 50.0)
    forced = qvi.read_cgats(path, scale=100)
    assert (forced.emission, forced.scale, float(forced.spectra[0, 0])) == (True, "0..100", 0.5)


def test_read_cgats_of_an_emission_file_beyond_a_float(qvi, tmp_path):
    """A value beyond a float in an emission file is refused with a message that names no empty scale."""
    path = write_cgats(tmp_path / "light.txt", [[1, '"lamp"', "1e39"] + [50] * 35], keywords=EMISSION)
    error = refused(qvi, qvi.CgatsError, lambda: qvi.read_cgats(path))
    assert error.text.startswith('the value "1e39" of SPECTRAL_NM380 is out of range: ')
    assert "scale  " not in error.text and error.text.endswith("it is beyond a float (3.4e38)")
