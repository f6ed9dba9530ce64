"""The colour engine of QVIManager for numpy arrays.

The numbers are the library's own, bit for bit: the same float32 arithmetic
in the same order as a C++ application that calls it, one spectrum at a time.

Spectra are float32 arrays of 36 reflectance factors (0..1) at 380, 390, ...,
730 nm (``WAVELENGTHS``): one spectrum of shape (36,), or N of shape (N, 36).
Arrays of other real number types are converted to float32 (rounded to the
nearest float32). Lab values are arrays of shape (3,) or (N, 3).

Measure conditions are given in the library's own words, as keyword
arguments::

    illuminant="D50"                Colorimetric.Illumination
    observer="TenDegree"            Colorimetric.Observer
    white_base="Absolute"           Colorimetric.WhiteBase
    density_standard="ANSIT"        Colorimetric.DensityStandard
    density_filter_mode="Cyan"      Colorimetric.DensityFilterMode
    physical_filter="Polarizer"     Physical.Filter

or as a dictionary of keys and values, ``conditions={"Colorimetric.Illumination":
"D50", ...}``, or both (a key may be given only once). What is not given keeps
the library's default (``measure_conditions()`` shows them, and
``supported_values(key)`` what a key takes). A key or value the library does
not know raises CMetryError with the library's text. Each call tries its
calculation once under the conditions before the first row: a refusal that
comes from the conditions (an F number without a table, a white base without
a paper white) names them and has no row, even for an empty batch.

Every batch runs in C++ with the interpreter lock released; calls from
several threads take turns in the engine.
"""

import os
from collections.abc import Mapping

import numpy as np

from . import _core
from .errors import BusinessError, CgatsError, CMetryError, GUIError, QVIError, ResourceError

__version__ = _core.__version__

#: The wavelengths of the 36 values of a spectrum, in nm.
WAVELENGTHS = np.arange(380, 731, 10)

#: The keyword arguments of the measure conditions and the keys they set.
KEYWORDS = {
    "illuminant": "Colorimetric.Illumination",
    "observer": "Colorimetric.Observer",
    "white_base": "Colorimetric.WhiteBase",
    "density_standard": "Colorimetric.DensityStandard",
    "density_filter_mode": "Colorimetric.DensityFilterMode",
    "physical_filter": "Physical.Filter",
}

#: The keys of a condition set.
CONDITION_KEYS = (
    "Colorimetric.Illumination",
    "Colorimetric.Observer",
    "Colorimetric.WhiteBase",
    "Colorimetric.DensityStandard",
    "Colorimetric.DensityFilterMode",
    "ColorSpaceDescription.Type",
    "ColorSpaceDescription.DeltaEFormula",
    "ColorSpaceDescription.AbsoluteOrDeltaVector",
    "Physical.Filter",
    "Physical.NumberOfDataPointsSpectrum",
    "Physical.WavelengthSpectrumMax",
    "Physical.WavelengthSpectrumMin",
)

_SPACE = "ColorSpaceDescription.Type"
_FORMULA = "ColorSpaceDescription.DeltaEFormula"
_ILLUMINATION = "Colorimetric.Illumination"
_WHITE_BASE = "Colorimetric.WhiteBase"

#: The formula of delta_e that is not one of the library's formula keys.
CIEDE2000 = "CIEDE2000"

# How many parameters each formula takes, and their names.
_FORMULA_PARAMETERS = {"CMC": ("l", "c"), "94": ("kL", "kC", "kH"), CIEDE2000: ("kL", "kC", "kH")}

__all__ = [
    "WAVELENGTHS", "KEYWORDS", "CONDITION_KEYS", "CIEDE2000",
    "color", "delta_e", "density", "density_filter", "cct", "lab_to_spectrum", "read_cgats", "Measurements",
    "supported_values", "supported_conditions", "measure_conditions",
    "QVIError", "ResourceError", "BusinessError", "CMetryError", "GUIError", "CgatsError",
]


# ---------------------------------------------------------------- arguments

def _condition_pairs(function, conditions, keywords, given=(), defaults=()):
    """The (key, value) pairs of a call, in the order they are set: the
    function's defaults for keys not given otherwise, the dictionary, the
    keyword arguments, then what the function's own parameters give."""
    pairs = []
    origin = {}

    def add(key, value, where):
        if not isinstance(value, str):
            raise TypeError(f"{function}(): {where} must be a str, not {type(value).__name__}")
        if "\0" in key or "\0" in value:
            raise ValueError(f"{function}(): {where} holds a NUL character")
        if key == _ILLUMINATION and value == "Userdefined":
            raise ValueError(f"{function}(): the illuminant Userdefined needs the illuminant's spectrum, which this "
                             "module does not take; give a standard illuminant")
        if key in origin:
            raise ValueError(f"{function}(): {key} is given twice, by {origin[key]} and by {where}")
        origin[key] = where
        pairs.append((key, value))

    if conditions is not None:
        if not isinstance(conditions, Mapping):
            raise TypeError(f"{function}(): conditions must be a dict of keys and values, "
                            f"not {type(conditions).__name__}")
        for key, value in conditions.items():
            if not isinstance(key, str):
                raise TypeError(f"{function}(): the keys of conditions must be str, not {type(key).__name__}")
            add(key, value, f"conditions[{key!r}]")
    for name, value in keywords.items():
        key = KEYWORDS.get(name)
        if key is None:
            raise TypeError(f"{function}() got an unexpected keyword argument {name!r}; the conditions are "
                            + ", ".join(KEYWORDS) + " and conditions={key: value}")
        add(key, value, name)
    for key, value, where in given:
        add(key, value, where)
    return [(key, value) for key, value in defaults if key not in origin] + pairs


def _convert(name, values):
    """`values` as an array of float32, refusing what is not real numbers and
    numbers beyond the float32 range."""
    array = np.asarray(values)
    if array.dtype.kind not in "fiu":
        raise TypeError(f"{name} must hold real numbers; got an array of {array.dtype}")
    if array.dtype == np.float32:
        return array
    with np.errstate(over="ignore", invalid="ignore"):
        converted = array.astype(np.float32)
    beyond = np.isinf(converted) & np.isfinite(array)
    if beyond.any():
        index = tuple(int(i) for i in np.argwhere(beyond)[0])
        where = f"{name}{list(index)}" if index else name
        raise ValueError(f"{where} = {array[index]!r} is beyond the float32 range (3.4e38)")
    return converted


def _rows(name, values, width):
    """A C-contiguous (N, width) float32 array and whether `values` was a
    single row of shape (width,)."""
    array = _convert(name, values)
    if array.ndim == 1 and array.shape[0] == width:
        return np.ascontiguousarray(array.reshape(1, width)), True
    if array.ndim == 2 and array.shape[1] == width:
        return np.ascontiguousarray(array), False
    raise ValueError(f"{name} must have shape ({width},) or (N, {width}); got shape {array.shape}")


def _spectra_or_lab(name, values):
    """Rows of spectra (36 values) or of Lab values (3), and whether a single
    row was given."""
    array = _convert(name, values)
    width = array.shape[-1] if array.ndim in (1, 2) else None
    if width not in (3, 36):
        raise ValueError(f"{name} must be spectra of shape (36,) or (N, 36), or Lab values of shape (3,) or "
                         f"(N, 3); got shape {array.shape}")
    return _rows(name, array, width)


def _paper_white(paper_white):
    if paper_white is None:
        return None
    array = _convert("paper_white", paper_white)
    if array.shape != (36,):
        raise ValueError(f"paper_white must be one spectrum of shape (36,); got shape {array.shape}")
    return np.ascontiguousarray(array)


def _white_base_default(paper_white):
    """A paper white given without a white base asks for values relative to
    it: white base "Paper"."""
    return ((_WHITE_BASE, "Paper"),) if paper_white is not None else ()


# ---------------------------------------------------------------- calculations

def color(spectra, space=None, *, conditions=None, paper_white=None, **keywords):
    """The colour values of spectra in a colour space.

    ``space`` is a value of "ColorSpaceDescription.Type" (default "CIELab"):
    CIELab, CIELCh, CIELuv, CIELChuv, CIEuvY1960, CIEuvY1976, CIEXYZ, CIExyY,
    HunterLab, RxRyRz, LABvq, LCHvq or RGB. The result has one column per
    component of the space: an array of shape (N, 3) for spectra (N, 36), of
    shape (3,) for one spectrum (36,). "CIELuv" is the library's: L*, u' and
    v' (chromaticity coordinates, not u* and v*). (CMYK, the one space of four
    components, the library does not compute from spectra: it raises
    CMetryError "GetVector not supported for ColorSpace CMYK".)

    ``paper_white``: a spectrum (36,) of the paper; with it the white base is
    "Paper" (values relative to the paper) unless one is given.
    """
    rows, single = _rows("spectra", spectra, 36)
    given = () if space is None else ((_SPACE, space, "space"),)
    pairs = _condition_pairs("color", conditions, keywords, given, _white_base_default(paper_white))
    result = _core.color(rows, pairs, _paper_white(paper_white))
    return result[0] if single else result


def delta_e(reference, sample, formula=None, *, parameters=None, conditions=None, paper_white=None, **keywords):
    """Colour differences between references and samples.

    ``reference`` and ``sample`` are spectra ((36,) or (N, 36)) or Lab values
    ((3,) or (N, 3)), the two sides of the same or of different kinds. Rows
    are paired in order; a single row on one side serves every row of the
    other. The result is a float32 array of N differences, or one float32
    for two single rows.

    ``formula`` is a value of "ColorSpaceDescription.DeltaEFormula" (default
    "CIELab"): CIELab, CIELuv, LABvq, FMCII, CMC or 94, or "CIEDE2000".
    Between two sides of spectra the library's formulas take the spectra;
    CIEDE2000, and every formula where a side holds Lab values, take Lab
    values (spectra are converted to CIELab under the conditions, and Lab
    values are taken as measured under them). With Lab values the library
    computes CIELab and 94 only: the others raise CMetryError
    "CMetryCalculator".

    ``parameters``: (l, c) for CMC, (kL, kC, kH) for 94 and CIEDE2000. For
    the library's formulas a parameter of 0 stands for the default 1;
    CIEDE2000's must be greater than 0 (default (1, 1, 1)).

    ``paper_white``: a spectrum (36,) of the paper; with it the white base is
    "Paper" unless one is given.
    """
    references, single_reference = _spectra_or_lab("reference", reference)
    samples, single_sample = _spectra_or_lab("sample", sample)
    de2000 = formula == CIEDE2000
    given = () if formula is None or de2000 else ((_FORMULA, formula, "formula"),)
    pairs = _condition_pairs("delta_e", conditions, keywords, given, _white_base_default(paper_white))
    name = CIEDE2000 if de2000 else (formula if formula is not None else dict(pairs).get(_FORMULA, "CIELab"))
    expected = _FORMULA_PARAMETERS.get(name)
    if parameters is None:
        values = (1.0, 1.0, 1.0) if de2000 else (0.0, 0.0, 0.0)
    else:
        values = tuple(parameters)
        if expected is None:
            raise ValueError(f"delta_e(): the formula {name} takes no parameters")
        if len(values) != len(expected):
            raise ValueError(f"delta_e(): the formula {name} takes {len(expected)} parameters "
                             f"({', '.join(expected)}); got {len(values)}")
        converted = _convert("parameters", np.asarray(values))
        # CIEDE2000 refuses factors that are not finite itself.
        if converted.ndim != 1 or (not de2000 and not np.isfinite(converted).all()):
            raise ValueError(f"delta_e(): the parameters of {name} ({', '.join(expected)}) must be finite numbers; "
                             f"got {values!r}")
        values = tuple(float(value) for value in converted) + (0.0,) * (3 - len(values))
    result = _core.delta_e(references, samples, pairs, de2000, *values, _paper_white(paper_white))
    return result[0] if single_reference and single_sample else result


def density(spectra, *, conditions=None, paper_white=None, **keywords):
    """The densities of spectra under the density standard, filter mode and
    white base of the conditions (defaults: "DIN", "Auto", "Automatic").
    Modes "Black" to "Yellow" read that filter; "Max" and "Auto" choose one
    (density_filter tells which). A float32 array of N densities, or one
    float32 for one spectrum.

    The white bases "Paper" and "Automatic" need ``paper_white``, a spectrum
    (36,) of the paper; without it the library raises CMetryError "Missing
    WhiteReference". White base "Absolute" needs none.
    """
    rows, single = _rows("spectra", spectra, 36)
    pairs = _condition_pairs("density", conditions, keywords)
    result, _ = _core.density(rows, pairs, _paper_white(paper_white), False)
    return result[0] if single else result


def density_filter(spectra, *, conditions=None, paper_white=None, **keywords):
    """The filter that density reads for each spectrum under the same
    conditions: "Black", "Cyan", "Magenta" or "Yellow". A list of N names, or
    one name for one spectrum."""
    rows, single = _rows("spectra", spectra, 36)
    pairs = _condition_pairs("density_filter", conditions, keywords)
    _, names = _core.density(rows, pairs, _paper_white(paper_white), True)
    return names[0] if single else names


def cct(spectra, *, conditions=None, **keywords):
    """The correlated colour temperature of spectra in whole kelvin, under
    the observer of the conditions. The spectra are light sources: the
    illuminant is "Emission" unless one is given (another illuminant gives
    the temperature of the light the spectra reflect under it). A float32
    array of N temperatures, or one float32 for one spectrum. A spectrum of
    no light (X + Y + Z = 0) has no colour temperature: ValueError."""
    rows, single = _rows("spectra", spectra, 36)
    pairs = _condition_pairs("cct", conditions, keywords, defaults=((_ILLUMINATION, "Emission"),))
    result = _core.cct(rows, pairs)
    return result[0] if single else result


def lab_to_spectrum(L, a=None, b=None, *, conditions=None, **keywords):
    """Reflectance spectra whose CIELab values under the conditions'
    illuminant and observer come within 0.1 of the given ones (at most 1000
    rounds of the library's search).

    ``lab_to_spectrum(L, a, b)`` with numbers or arrays of one shape, or
    ``lab_to_spectrum(lab)`` with Lab values of shape (3,) or (N, 3). One
    spectrum of shape (36,) for one value, (N, 36) for N. A value that no
    spectrum between 0 and 1 reaches raises CMetryError "CMetryCalculator:
    Conversion out of Range". The spectra are absolute: white base "Paper"
    cannot be given.
    """
    if a is None and b is None:
        rows, single = _rows("lab", L, 3)
    elif a is None or b is None:
        raise TypeError("lab_to_spectrum() takes L, a and b, or one array of Lab values")
    else:
        components = [_convert(name, value) for name, value in (("L", L), ("a", a), ("b", b))]
        shapes = {component.shape for component in components}
        if len(shapes) != 1 or len(next(iter(shapes))) > 1:
            raise ValueError("lab_to_spectrum(): L, a and b must be numbers, or 1-D arrays of one length; got "
                             "shapes " + ", ".join(str(component.shape) for component in components))
        single = components[0].ndim == 0
        rows = np.ascontiguousarray(np.stack([np.atleast_1d(c) for c in components], axis=1), dtype=np.float32)
    pairs = _condition_pairs("lab_to_spectrum", conditions, keywords)
    space = dict(pairs).get(_SPACE)
    if space is not None and space != "CIELab":
        raise ValueError(f"lab_to_spectrum(): the values are CIELab; the colour space {space} cannot be given")
    if dict(pairs).get(_WHITE_BASE) == "Paper":
        raise ValueError("lab_to_spectrum(): the white base Paper needs a paper white, which lab_to_spectrum does not "
                         "take; the spectra are absolute")
    result = _core.lab_to_spectrum(rows, pairs)
    return result[0] if single else result


# ---------------------------------------------------------------- conditions

def supported_values(key):
    """The values the library lists for a condition key, in its order (a
    menu: "Dxx" stands for "Dxx, Temperature:K", "F" for "F1" to "F12").
    ``"ColorSpaceDescription." + space`` gives the names of the space's
    components: three absolute, then three delta names (four and four for
    CMYK). A key the library does not know raises KeyError."""
    if not isinstance(key, str):
        raise TypeError(f"supported_values(): key must be a str, not {type(key).__name__}")
    values = _core.supported_values(key)
    if not values:
        raise KeyError(f"{key!r} is not a condition key; the keys are " + ", ".join(CONDITION_KEYS))
    return values


def supported_conditions():
    """Every condition key with the values the library lists for it."""
    return {key: _core.supported_values(key) for key in CONDITION_KEYS}


def measure_conditions(*, conditions=None, **keywords):
    """The whole condition set that the given conditions make, as the library
    holds it: every key with its value (the defaults for what is not given)."""
    pairs = _condition_pairs("measure_conditions", conditions, keywords)
    return dict(zip(CONDITION_KEYS, _core.condition_values(pairs, list(CONDITION_KEYS))))


# ---------------------------------------------------------------- files

class Measurements:
    """The samples of a measurement file.

    ``ids``: SAMPLE_ID of each sample (its 1-based index where the file has
    none); ``names``: SAMPLE_NAME ("" where the file has none); ``spectra``:
    a float32 array (N, 36) on the scale 0..1, or None for a file of Lab
    values; ``lab``: a float32 array (N, 3) for a file of Lab values (LAB_L,
    LAB_A, LAB_B), else None; ``scale``: "0..1" or "0..100" as the file was
    read ("" for Lab values and emission); ``extension``: how the ends of a
    file that stops short of 380 or 730 nm were filled ("" when it covers
    them); ``emission``: True for a file of light sources (MEAS_TYPE
    EMISSION), whose values keep their own scale.

    It unpacks as ``ids, names, values``, the values being the spectra or the
    Lab values.
    """

    def __init__(self, path, ids, names, values, content, scale, extension, emission):
        self.path = path
        self.ids = ids
        self.names = names
        self.spectra = values if content == "spectra" else None
        self.lab = values if content == "CIELab" else None
        self.scale = scale
        self.extension = extension
        self.emission = emission

    @property
    def values(self):
        return self.spectra if self.spectra is not None else self.lab

    def __iter__(self):
        return iter((self.ids, self.names, self.values))

    def __len__(self):
        return len(self.ids)

    def __repr__(self):
        kind = "spectra" if self.spectra is not None else "Lab values"
        return f"<Measurements {self.path!r}: {len(self)} {kind}>"


def read_cgats(path, scale=None):
    """The samples of a CGATS measurement file, as qvi reads it.

    Spectra are taken at their 10 nm points (5 nm and 1 nm files keep
    those); a file must cover 400..700 nm without a gap, and 380..390 and
    710..730 nm take the nearest measured value. Reflectance written as
    0..100 is divided by 100: the scale is decided on the whole file (0..100
    when more than half of the samples have a value above 2, 0..1 when no
    value exceeds 1.5) unless ``scale`` is 1 or 100; an ambiguous file raises
    CgatsError and asks for ``scale``. Every value must fit a float32.

    Returns Measurements (``ids, names, spectra = read_cgats(path)``).
    """
    path = os.fspath(path)
    if not isinstance(path, str):
        path = os.fsdecode(path)
    if scale is None:
        divisor = 0.0
    elif scale in (1, 100) and not isinstance(scale, bool):
        divisor = float(scale)
    else:
        raise ValueError(f"read_cgats(): scale must be 1, 100 or None (decided from the file); got {scale!r}")
    # A missing file raises the usual FileNotFoundError.
    os.stat(path)
    return Measurements(path, *_core.read_cgats(path, divisor))
