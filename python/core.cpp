// qvimanager._core: the engine's calculations over numpy arrays, for the
// Python package qvimanager (python/qvimanager/__init__.py), which checks
// shapes and types, turns keyword arguments into condition pairs and
// documents the functions. Every batch runs here, one engine call per row,
// with the interpreter lock released.
//
// The engine keeps process-wide state (the weight factors of the last
// illuminant, the paper white, the Lab-to-spectrum search), so the calls of
// this module take one mutex while they use it; it is taken only after the
// interpreter lock is released, so that a thread waiting for it never holds
// the interpreter.
//
// Arrays arrive C-contiguous in float32: (N, 36) spectra, (N, 3) Lab values.
// Every input value must be finite, and so must every result: a row that
// breaks either rule raises ValueError with its index. A refusal of the
// library raises the class of qvimanager.errors that mirrors its branch of
// the exception tree, with the library's text.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "cgats/cgats.h"
#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/ciede2000.h"
#include "qvimanager/foundation/class_name.h"
#include "qvimanager/qvimanager.h"
#include "tools/qvi/input.h"
#include "tools/qvi/output.h"

namespace py = pybind11;

namespace {

using Utilities::String;
using Pairs = std::vector<std::pair<std::string, std::string>>;
using FloatArray = py::array_t<float, py::array::c_style | py::array::forcecast>;

constexpr std::size_t kPoints = CMetry::QVSpectrum::NumberOfDataPoints;
const char* const kSpaceKey = "ColorSpaceDescription.Type";
const char* const kFormulaKey = "ColorSpaceDescription.DeltaEFormula";

std::mutex engineMutex;

// A call's turn in the engine: the interpreter lock released, then the
// engine's mutex taken (and given back in the reverse order).
struct EngineTurn {
    py::gil_scoped_release released;
    std::lock_guard<std::mutex> lock{engineMutex};
};

// The branches of the library's exception tree, as qvimanager.errors
// names them.
const char* BranchOf(const Utilities::Exception& failure)
{
    if (dynamic_cast<const CMetry::ExceptionCMetry*>(&failure) != nullptr) {
        return "CMetryError";
    }
    if (dynamic_cast<const Utilities::ExceptionBusiness*>(&failure) != nullptr) {
        return "BusinessError";
    }
    if (dynamic_cast<const Utilities::ExceptionResource*>(&failure) != nullptr) {
        return "ResourceError";
    }
    if (dynamic_cast<const Utilities::ExceptionGUI*>(&failure) != nullptr) {
        return "GUIError";
    }
    return "QVIError";
}

// The class name without its namespace, e.g. "ExceptionCMetry".
std::string ClassNameOf(const Utilities::Exception& failure)
{
    const std::string name = Utilities::GetRuntimeClassName(typeid(failure)).GetCharPointer();
    const std::size_t colon = name.rfind("::");
    return colon == std::string::npos ? name : name.substr(colon + 2);
}

// A refusal of the library, carried out of the released section to the
// translator below, which raises it in Python.
class Refusal : public std::exception {
public:
    // `row` is the row of the batch that failed, or -1 for the setup of the
    // call; `context` goes in front of the text in the message and `hint`
    // after it.
    Refusal(const Utilities::Exception& failure, long row, std::string context, std::string hint = "")
        : branch(BranchOf(failure)), className(ClassNameOf(failure)),
          text(failure.GetExceptionText().GetCharPointer()), row(row)
    {
        message = context.empty() ? text : context + ": " + text;
        if (!hint.empty()) {
            message += "; " + hint;
        }
    }
    const char* what() const noexcept override { return message.c_str(); }

    std::string branch;
    std::string className;
    std::string text;
    long row;
    std::string message;
};

// A CGATS file that cannot be read as measurements.
class FileFailure : public std::exception {
public:
    explicit FileFailure(const Cgats::Error& error)
        : file(error.File()), line(error.Line()), text(error.Message()), message(error.what())
    {
    }
    const char* what() const noexcept override { return message.c_str(); }

    std::string file;
    std::size_t line;
    std::string text;
    std::string message;
};

std::string RowName(const char* what, std::size_t row)
{
    return std::string(what) + " row " + std::to_string(row);
}

// Raises ValueError unless the row's values are all finite.
void RequireFiniteRow(const float* values, std::size_t width, const char* what, std::size_t row)
{
    for (std::size_t i = 0; i < width; ++i) {
        if (!std::isfinite(values[i])) {
            const std::string value = std::isnan(values[i]) ? "NaN" : (values[i] > 0 ? "inf" : "-inf");
            std::string where = width == kPoints ? " at " + std::to_string(380 + 10 * i) + " nm"
                                                 : " in component " + std::to_string(i);
            throw std::invalid_argument(RowName(what, row) + " holds " + value + where +
                                        ": every value must be a finite number");
        }
    }
}

// Raises ValueError for a result that is not finite.
[[noreturn]] void RefuseResult(const char* what, std::size_t row, const char* result)
{
    throw std::invalid_argument(RowName(what, row) + ": its " + result +
                                " is not finite; its values are too large for the float arithmetic");
}

// A 2-D C-contiguous float32 array of `width` columns (checked again here;
// the package checks it first with the caller's words).
std::size_t Rows(const FloatArray& array, std::size_t width, const char* what)
{
    if (array.ndim() != 2 || static_cast<std::size_t>(array.shape(1)) != width) {
        throw std::invalid_argument(std::string(what) + " must have " + std::to_string(width) + " columns");
    }
    return static_cast<std::size_t>(array.shape(0));
}

// A new numpy array that takes over `values`.
py::array_t<float> ToArray(std::vector<float>&& values, std::vector<py::ssize_t> shape)
{
    auto* owned = new std::vector<float>(std::move(values));
    py::capsule release(owned, [](void* data) { delete static_cast<std::vector<float>*>(data); });
    return py::array_t<float>(shape, owned->data(), release);
}

CMetry::QVMeasureConditions BuildConditions(const Pairs& pairs)
{
    CMetry::QVMeasureConditions conditions;
    for (const auto& [key, value] : pairs) {
        try {
            conditions.SetMeasureCondition(String(key.c_str()), String(value.c_str()));
        } catch (const Utilities::Exception& failure) {
            throw Refusal(failure, -1, key + " = \"" + value + "\"");
        }
    }
    return conditions;
}

std::string ConditionOf(const CMetry::QVMeasureConditions& conditions, const char* key)
{
    return conditions.GetMeasureCondition(String(key)).GetCharPointer();
}

CMetry::QVSpectrum SpectrumOf(const float* values, const CMetry::QVMeasureConditions& conditions)
{
    float copy[kPoints];
    std::memcpy(copy, values, sizeof copy);
    return CMetry::QVSpectrum(copy, conditions);
}

// Installs the paper white of a call, or none, and puts back the one that
// was there before: each call of the module sees only its own.
class PaperWhiteScope {
public:
    PaperWhiteScope(const std::optional<std::vector<float>>& paperWhite, const CMetry::QVMeasureConditions& conditions)
        : saved(CMetry::BaseCalculator::psPaperWhite)
    {
        if (paperWhite) {
            CMetry::DensityService::SetPaperWhite(SpectrumOf(paperWhite->data(), conditions));
        } else {
            CMetry::BaseCalculator::psPaperWhite = Utilities::SmartPointer<CMetry::QVSample>();
        }
    }
    ~PaperWhiteScope() { CMetry::BaseCalculator::psPaperWhite = saved; }
    PaperWhiteScope(const PaperWhiteScope&) = delete;
    PaperWhiteScope& operator=(const PaperWhiteScope&) = delete;

private:
    Utilities::SmartPointer<CMetry::QVSample> saved;
};

std::optional<std::vector<float>> PaperWhiteValues(const std::optional<FloatArray>& paperWhite)
{
    if (!paperWhite) {
        return std::nullopt;
    }
    if (paperWhite->ndim() != 1 || static_cast<std::size_t>(paperWhite->shape(0)) != kPoints) {
        throw std::invalid_argument("paper_white must have shape (36,)");
    }
    std::vector<float> values(paperWhite->data(), paperWhite->data() + kPoints);
    RequireFiniteRow(values.data(), kPoints, "paper_white", 0);
    return values;
}

// What to give when a refusal comes from a white base that needs a paper
// white the call has not got.
std::string PaperWhiteHint(const Utilities::Exception& failure, const CMetry::QVMeasureConditions& conditions,
                           bool paperWhite)
{
    const std::string text = failure.GetExceptionText().GetCharPointer();
    const std::string whiteBase = ConditionOf(conditions, "Colorimetric.WhiteBase");
    if (paperWhite || (text != "CMetryCalculator" && text != "Missing WhiteReference") ||
        (whiteBase != "Paper" && whiteBase != "Automatic")) {
        return "";
    }
    return "the white base " + whiteBase + " needs a paper white: give paper_white=..., or white_base=\"Absolute\"";
}

// The conditions a call was given, as a text for refusals that come from
// them.
std::string Described(const Pairs& pairs)
{
    std::string text;
    for (const auto& [key, value] : pairs) {
        text += (text.empty() ? "" : ", ") + key + " = \"" + value + "\"";
    }
    return text;
}

CMetry::QVSpectrum Flat(float value, const CMetry::QVMeasureConditions& conditions)
{
    float values[kPoints];
    std::fill(std::begin(values), std::end(values), value);
    return CMetry::QVSpectrum(values, conditions);
}

// Runs the calculation of a call once on a typical input before the first
// row, so that a refusal that comes from the conditions (an illuminant
// without data, a white base without a paper white, a formula the input
// cannot take) is told as theirs, under the conditions given and with no
// row, even for an empty batch. `calculation` returns whether its result
// is finite: a result that is not comes from a paper white beyond the float
// arithmetic.
template <typename Calculation, typename Hint>
void Probe(const Pairs& pairs, bool paperWhite, Calculation calculation, Hint hint)
{
    bool finite = true;
    try {
        finite = calculation();
    } catch (const Utilities::Exception& failure) {
        const std::string described = Described(pairs);
        throw Refusal(failure, -1, described.empty() ? std::string() : "under " + described, hint(failure));
    }
    if (!finite && paperWhite) {
        throw std::invalid_argument("paper_white is too large for the float arithmetic: values relative to it are "
                                    "not finite");
    }
}

bool Finite(const CMetry::QVColorVector& vector)
{
    return std::isfinite(vector[0]) && std::isfinite(vector[1]) && std::isfinite(vector[2]);
}

// Where a refusal in row `row` of a batch of `count` rows happened: nothing
// for a single row.
std::string Where(const char* what, std::size_t row, std::size_t count)
{
    return count == 1 ? std::string() : RowName(what, row);
}

// ---------------------------------------------------------------- colour values

py::array_t<float> Color(const FloatArray& spectra, const Pairs& pairs, const std::optional<FloatArray>& paperWhite)
{
    const std::size_t count = Rows(spectra, kPoints, "spectra");
    const float* input = spectra.data();
    const std::optional<std::vector<float>> white = PaperWhiteValues(paperWhite);
    std::vector<float> result;
    std::size_t width = 3;
    {
        const EngineTurn turn;
        const CMetry::QVMeasureConditions conditions = BuildConditions(pairs);
        const std::string space = ConditionOf(conditions, kSpaceKey);
        // Three absolute and three delta names, four and four for CMYK.
        try {
            width = CMetry::QVMeasureConditions::GetSupportedValues(String(("ColorSpaceDescription." + space).c_str()))
                        .GetSize() /
                    2;
        } catch (const Utilities::Exception& failure) {
            throw Refusal(failure, -1, "space " + space);
        }
        if (width < 3) {
            width = 3;
        }
        const PaperWhiteScope scope(white, conditions);
        Probe(
            pairs, white.has_value(),
            [&] { return Finite(CMetry::CMetryService::GetVector(Flat(0.5f, conditions), conditions)); },
            [&](const Utilities::Exception& failure) { return PaperWhiteHint(failure, conditions, white.has_value()); });
        result.resize(count * width);
        std::size_t row = 0;
        try {
            for (; row < count; ++row) {
                const float* values = input + row * kPoints;
                RequireFiniteRow(values, kPoints, "spectra", row);
                const CMetry::QVColorVector vector =
                    CMetry::CMetryService::GetVector(SpectrumOf(values, conditions), conditions);
                float* out = result.data() + row * width;
                for (std::size_t axis = 0; axis < width; ++axis) {
                    out[axis] = vector[static_cast<short>(axis)];
                    if (!std::isfinite(out[axis])) {
                        RefuseResult("spectra", row, (space + " value").c_str());
                    }
                }
            }
        } catch (const Utilities::Exception& failure) {
            throw Refusal(failure, static_cast<long>(row), Where("spectra", row, count),
                          PaperWhiteHint(failure, conditions, white.has_value()));
        }
    }
    return ToArray(std::move(result), {static_cast<py::ssize_t>(count), static_cast<py::ssize_t>(width)});
}

// ---------------------------------------------------------------- colour differences

// The differences of `reference` and `sample` row by row; a single row on
// either side serves every row of the other. Rows of 36 are spectra, rows
// of 3 Lab values. Spectra on both sides go to GetDeltaE of spectra, unless
// `de2000`; otherwise each side is a Lab vector (spectra converted under
// the conditions, typed CIELab), compared by DeltaE2000 or by GetDeltaE of
// vectors.
py::array_t<float> DeltaE(const FloatArray& reference, const FloatArray& sample, const Pairs& pairs, bool de2000,
                          float p1, float p2, float p3, const std::optional<FloatArray>& paperWhite)
{
    const std::size_t referenceWidth = reference.ndim() == 2 ? static_cast<std::size_t>(reference.shape(1)) : 0;
    const std::size_t sampleWidth = sample.ndim() == 2 ? static_cast<std::size_t>(sample.shape(1)) : 0;
    const std::size_t references = Rows(reference, referenceWidth == 3 ? 3 : kPoints, "reference");
    const std::size_t samples = Rows(sample, sampleWidth == 3 ? 3 : kPoints, "sample");
    if (references != samples && references != 1 && samples != 1) {
        throw std::invalid_argument("reference and sample must have the same number of rows, or one of them one row; "
                                    "got " + std::to_string(references) + " and " + std::to_string(samples));
    }
    const std::size_t count = references == 1 ? samples : references;
    const float* first = reference.data();
    const float* second = sample.data();
    const std::optional<std::vector<float>> white = PaperWhiteValues(paperWhite);
    const bool viaLab = de2000 || referenceWidth == 3 || sampleWidth == 3;
    // The side whose rows the result follows, for messages.
    const char* const side = samples == 1 && references > 1 ? "reference" : "sample";
    std::vector<float> result(count);
    {
        const EngineTurn turn;
        const CMetry::QVMeasureConditions conditions = BuildConditions(pairs);
        CMetry::QVMeasureConditions labConditions = conditions;
        labConditions.SetMeasureCondition(String(kSpaceKey), String("CIELab"));
        const PaperWhiteScope scope(white, conditions);
        // The Lab vector of a row of one side.
        const auto labOf = [&](const float* values, std::size_t width, const char* what,
                               std::size_t row) -> CMetry::QVColorVector {
            if (width == 3) {
                return CMetry::QVColorVector(values[0], values[1], values[2], labConditions);
            }
            CMetry::QVColorVector lab = CMetry::CMetryService::GetVector(SpectrumOf(values, labConditions), labConditions);
            for (short axis = 0; axis < 3; ++axis) {
                if (!std::isfinite(lab[axis])) {
                    RefuseResult(what, row, "CIELab value");
                }
            }
            return lab;
        };
        const auto hintOf = [&](const Utilities::Exception& failure) {
            const std::string formula = ConditionOf(conditions, kFormulaKey);
            if (viaLab && !de2000 && formula != "CIELab" && formula != "94") {
                return "with Lab values the formula must be CIELab, 94 or CIEDE2000; give spectra for " + formula;
            }
            return PaperWhiteHint(failure, conditions, white.has_value());
        };
        Probe(
            pairs, white.has_value(),
            [&] {
                if (!viaLab) {
                    return std::isfinite(CMetry::CMetryService::GetDeltaE(
                        Flat(0.5f, conditions), Flat(0.4f, conditions), conditions, p1, p2, p3));
                }
                const bool finite = Finite(CMetry::CMetryService::GetVector(Flat(0.5f, labConditions), labConditions));
                if (!de2000) {
                    CMetry::CMetryService::GetDeltaE(CMetry::QVColorVector(50.0f, 10.0f, 10.0f, labConditions),
                                                     CMetry::QVColorVector(52.0f, 11.0f, 9.0f, labConditions), p1,
                                                     p2, p3);
                }
                return finite;
            },
            hintOf);
        std::optional<CMetry::QVColorVector> singleReference;
        std::size_t row = 0;
        try {
            for (std::size_t index = 0; index < references; ++index) {
                RequireFiniteRow(first + index * referenceWidth, referenceWidth, "reference", index);
            }
            for (std::size_t index = 0; index < samples; ++index) {
                RequireFiniteRow(second + index * sampleWidth, sampleWidth, "sample", index);
            }
            if (viaLab && references == 1) {
                singleReference = labOf(first, referenceWidth, "reference", 0);
            }
            for (; row < count; ++row) {
                const float* left = first + (references == 1 ? 0 : row) * referenceWidth;
                const float* right = second + (samples == 1 ? 0 : row) * sampleWidth;
                float difference;
                if (!viaLab) {
                    difference = CMetry::CMetryService::GetDeltaE(SpectrumOf(left, conditions),
                                                                  SpectrumOf(right, conditions), conditions, p1, p2, p3);
                } else {
                    const CMetry::QVColorVector leftLab =
                        singleReference ? *singleReference : labOf(left, referenceWidth, "reference", row);
                    const CMetry::QVColorVector rightLab = labOf(right, sampleWidth, "sample", samples == 1 ? 0 : row);
                    difference = de2000 ? CMetry::DeltaE2000(leftLab, rightLab, p1, p2, p3)
                                        : CMetry::CMetryService::GetDeltaE(leftLab, rightLab, p1, p2, p3);
                }
                if (!std::isfinite(difference)) {
                    RefuseResult(side, row, "colour difference");
                }
                result[row] = difference;
            }
        } catch (const Utilities::Exception& failure) {
            throw Refusal(failure, static_cast<long>(row), Where(side, row, count), hintOf(failure));
        }
    }
    return ToArray(std::move(result), {static_cast<py::ssize_t>(count)});
}

// ---------------------------------------------------------------- density

// The densities under the conditions and the names of the filters read.
py::tuple Density(const FloatArray& spectra, const Pairs& pairs, const std::optional<FloatArray>& paperWhite,
                  bool filterNames)
{
    const std::size_t count = Rows(spectra, kPoints, "spectra");
    const float* input = spectra.data();
    const std::optional<std::vector<float>> white = PaperWhiteValues(paperWhite);
    std::vector<float> result(count);
    std::vector<std::string> names(filterNames ? count : 0);
    {
        const EngineTurn turn;
        const CMetry::QVMeasureConditions conditions = BuildConditions(pairs);
        const PaperWhiteScope scope(white, conditions);
        Probe(
            pairs, white.has_value(),
            [&] { return std::isfinite(CMetry::DensityService::GetDensity(Flat(0.5f, conditions), conditions)); },
            [&](const Utilities::Exception& failure) { return PaperWhiteHint(failure, conditions, white.has_value()); });
        std::size_t row = 0;
        try {
            for (; row < count; ++row) {
                const float* values = input + row * kPoints;
                RequireFiniteRow(values, kPoints, "spectra", row);
                const CMetry::QVSpectrum spectrum = SpectrumOf(values, conditions);
                result[row] = CMetry::DensityService::GetDensity(spectrum, conditions);
                if (!std::isfinite(result[row])) {
                    RefuseResult("spectra", row, "density");
                }
                if (filterNames) {
                    names[row] = CMetry::DensityService::GetDensityFilterName(spectrum, conditions).GetCharPointer();
                }
            }
        } catch (const Utilities::Exception& failure) {
            throw Refusal(failure, static_cast<long>(row), Where("spectra", row, count),
                          PaperWhiteHint(failure, conditions, white.has_value()));
        }
    }
    py::array_t<float> densities = ToArray(std::move(result), {static_cast<py::ssize_t>(count)});
    if (!filterNames) {
        return py::make_tuple(densities, py::none());
    }
    return py::make_tuple(densities, py::cast(names));
}

// ---------------------------------------------------------------- colour temperature

py::array_t<float> Cct(const FloatArray& spectra, const Pairs& pairs)
{
    const std::size_t count = Rows(spectra, kPoints, "spectra");
    const float* input = spectra.data();
    std::vector<float> result(count);
    {
        const EngineTurn turn;
        const CMetry::QVMeasureConditions conditions = BuildConditions(pairs);
        CMetry::QVMeasureConditions xyzConditions = conditions;
        xyzConditions.SetMeasureCondition(String(kSpaceKey), String("CIEXYZ"));
        Probe(
            pairs, false,
            [&] { return std::isfinite(CMetry::CMetryService::GetColorTemperature(Flat(1.0f, conditions))); },
            [](const Utilities::Exception&) { return std::string(); });
        std::size_t row = 0;
        try {
            for (; row < count; ++row) {
                const float* values = input + row * kPoints;
                RequireFiniteRow(values, kPoints, "spectra", row);
                const CMetry::QVSpectrum spectrum = SpectrumOf(values, conditions);
                // The search follows the chromaticity of the XYZ: values whose
                // XYZ the float arithmetic cannot hold have none.
                const CMetry::QVColorVector xyz = CMetry::CMetryService::GetVector(spectrum, xyzConditions);
                for (short axis = 0; axis < 3; ++axis) {
                    if (!std::isfinite(xyz[axis])) {
                        RefuseResult("spectra", row, "XYZ");
                    }
                }
                if (xyz[0] + xyz[1] + xyz[2] == 0.0f) {
                    throw std::invalid_argument(RowName("spectra", row) +
                                                " has no light: its X + Y + Z is 0, so it has no chromaticity and no "
                                                "colour temperature");
                }
                result[row] = CMetry::CMetryService::GetColorTemperature(spectrum);
                if (!std::isfinite(result[row])) {
                    RefuseResult("spectra", row, "colour temperature");
                }
            }
        } catch (const Utilities::Exception& failure) {
            throw Refusal(failure, static_cast<long>(row), Where("spectra", row, count));
        }
    }
    return ToArray(std::move(result), {static_cast<py::ssize_t>(count)});
}

// ---------------------------------------------------------------- Lab to spectrum

py::array_t<float> LabToSpectrum(const FloatArray& lab, const Pairs& pairs)
{
    const std::size_t count = Rows(lab, 3, "lab");
    const float* input = lab.data();
    std::vector<float> result(count * kPoints);
    {
        const EngineTurn turn;
        CMetry::QVMeasureConditions conditions = BuildConditions(pairs);
        conditions.SetMeasureCondition(String(kSpaceKey), String("CIELab"));
        Probe(
            pairs, false, [&] { return Finite(CMetry::CMetryService::GetVector(Flat(0.5f, conditions), conditions)); },
            [](const Utilities::Exception&) { return std::string(); });
        std::size_t row = 0;
        try {
            for (; row < count; ++row) {
                const float* values = input + row * 3;
                RequireFiniteRow(values, 3, "lab", row);
                const CMetry::QVSpectrum spectrum =
                    CMetry::CMetryService::GetSpectrum(CMetry::QVColorVector(values[0], values[1], values[2], conditions));
                for (std::size_t point = 0; point < kPoints; ++point) {
                    result[row * kPoints + point] = spectrum[static_cast<long>(point)];
                }
            }
        } catch (const Utilities::Exception& failure) {
            std::string hint;
            if (std::string(failure.GetExceptionText().GetCharPointer()).find("Conversion out of Range") !=
                std::string::npos) {
                hint = "no reflectance spectrum between 0 and 1 reaches this value";
            }
            throw Refusal(failure, static_cast<long>(row), Where("lab", row, count), hint);
        }
    }
    return ToArray(std::move(result), {static_cast<py::ssize_t>(count), static_cast<py::ssize_t>(kPoints)});
}

// ---------------------------------------------------------------- conditions

std::vector<std::string> SupportedValues(const std::string& key)
{
    const EngineTurn turn;
    std::vector<std::string> values;
    const auto& supported = CMetry::QVMeasureConditions::GetSupportedValues(String(key.c_str()));
    for (unsigned long i = 0; i < supported.GetSize(); ++i) {
        values.emplace_back(supported[i].GetCharPointer());
    }
    return values;
}

// The value of every key of `keys` in a condition set made of `pairs`.
std::vector<std::string> ConditionValues(const Pairs& pairs, const std::vector<std::string>& keys)
{
    const EngineTurn turn;
    const CMetry::QVMeasureConditions conditions = BuildConditions(pairs);
    std::vector<std::string> values;
    for (const std::string& key : keys) {
        values.push_back(ConditionOf(conditions, key.c_str()));
    }
    return values;
}

// ---------------------------------------------------------------- CGATS files

// ids, names, values ((N, 36) spectra or (N, 3) Lab), what the file holds
// ("spectra" or "CIELab"), the scale ("0..1", "0..100" or ""), how the
// ends were filled ("" for none) and whether it is an emission file.
py::tuple ReadCgats(const std::string& path, double divisor)
{
    std::vector<std::string> ids;
    std::vector<std::string> names;
    std::vector<float> values;
    bool lab = false;
    std::string scaleText;
    std::string extension;
    bool emission = false;
    {
        py::gil_scoped_release released;
        try {
            // "-" is a file of that name here, never standard input.
            Qvi::MeasurementFile file(path == "-" ? "./-" : path);
            file.NameScaleOption("scale=", "scale=1", "scale=100");
            Qvi::Scale scale;
            if (divisor > 0.0) {
                scale.automatic = false;
                scale.divisor = divisor;
            }
            // One reading of the file where the scale allows (Stream); a
            // scale the whole file decides otherwise starts the rows again.
            const auto restart = [&] {
                ids.clear();
                names.clear();
                values.clear();
            };
            file.Stream(
                scale, [&] { lab = file.Holds() == Qvi::MeasurementFile::Content::Lab; },
                [&](const Qvi::Sample& sample) {
                    ids.push_back(sample.id);
                    names.push_back(sample.name);
                    if (lab) {
                        values.insert(values.end(), sample.lab.begin(), sample.lab.end());
                    } else {
                        values.insert(values.end(), sample.values.begin(), sample.values.end());
                    }
                },
                restart, false);
            scaleText = file.ScaleText();
            extension = file.Extension();
            emission = file.Emission();
        } catch (const Cgats::Error& error) {
            throw FileFailure(error);
        }
    }
    const auto count = static_cast<py::ssize_t>(ids.size());
    py::array_t<float> array = ToArray(std::move(values), {count, static_cast<py::ssize_t>(lab ? 3 : kPoints)});
    return py::make_tuple(py::cast(ids), py::cast(names), array, lab ? "CIELab" : "spectra", scaleText, extension,
                          emission);
}

// Raises the exception of qvimanager.errors named `branch`, made by its
// constructor from the message, with the extra attributes set.
void RaiseFromErrors(const char* branch, const std::string& message,
                     const std::vector<std::pair<const char*, py::object>>& attributes)
{
    py::module_ errors = py::module_::import("qvimanager.errors");
    py::object type = errors.attr(branch);
    py::object instance = type(message);
    for (const auto& [name, value] : attributes) {
        instance.attr(name) = value;
    }
    PyErr_SetObject(type.ptr(), instance.ptr());
}

} // namespace

PYBIND11_MODULE(_core, module)
{
    module.doc() = "The colour engine of QVIManager over numpy arrays (use the package qvimanager).";
    // How a file was read is returned with its data, not told on standard
    // error.
    Qvi::SetQuiet(true);

    py::register_exception_translator([](std::exception_ptr pointer) {
        if (!pointer) {
            return;
        }
        try {
            std::rethrow_exception(pointer);
        } catch (const Refusal& refusal) {
            RaiseFromErrors(refusal.branch.c_str(), refusal.message,
                            {{"text", py::str(refusal.text)},
                             {"exception_class", py::str(refusal.className)},
                             {"row", refusal.row < 0 ? py::object(py::none()) : py::object(py::int_(refusal.row))}});
        } catch (const FileFailure& failure) {
            RaiseFromErrors("CgatsError", failure.message,
                            {{"file", py::str(failure.file)},
                             {"line", failure.line == 0 ? py::object(py::none()) : py::object(py::int_(failure.line))},
                             {"text", py::str(failure.text)}});
        }
    });

    module.attr("__version__") = QVIMANAGER_VERSION;
    module.def("color", &Color, py::arg("spectra"), py::arg("conditions"), py::arg("paper_white"));
    module.def("delta_e", &DeltaE, py::arg("reference"), py::arg("sample"), py::arg("conditions"), py::arg("de2000"),
               py::arg("p1"), py::arg("p2"), py::arg("p3"), py::arg("paper_white"));
    module.def("density", &Density, py::arg("spectra"), py::arg("conditions"), py::arg("paper_white"),
               py::arg("filter_names"));
    module.def("cct", &Cct, py::arg("spectra"), py::arg("conditions"));
    module.def("lab_to_spectrum", &LabToSpectrum, py::arg("lab"), py::arg("conditions"));
    module.def("supported_values", &SupportedValues, py::arg("key"));
    module.def("condition_values", &ConditionValues, py::arg("conditions"), py::arg("keys"));
    module.def("read_cgats", &ReadCgats, py::arg("path"), py::arg("divisor"));
}
