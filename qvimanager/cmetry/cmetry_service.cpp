#include "qvimanager/cmetry/cmetry_service.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/color_temperature.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/platform/language_service_interface.h"

#include <cstring>

using Utilities::String;

namespace CMetry {

namespace {

const String kColorSpaceKey("ColorSpaceDescription.Type");
const String kDeltaEFormulaKey("ColorSpaceDescription.DeltaEFormula");

[[noreturn]] void Raise(const String& text)
{
    throw ExceptionCMetry(text);
}

[[noreturn]] void RaiseCalculatorFailure()
{
    Raise(String("CMetryCalculator"));
}

// The same answer as `value == String(text)` (both compare with strcmp),
// without building a String per comparison on the per-sample path.
bool Is(const String& value, const char* text)
{
    return std::strcmp(value.GetCharPointer(), text) == 0;
}

float DefaultIfZero(float parameter)
{
    return parameter == 0.0f ? 1.0f : parameter;
}

} // namespace

Lab2Spec CMetryService::asLab2Spec;

QVColorVector CMetryService::GetVector(const QVSpectrum& spectrum, const QVMeasureConditions& conditions)
{
    QVI_TRACE_BEGIN(nullptr, "CMetry", "CMetryService", "GetVector");
    QVI_TRACE_PARAMETER("spectrum", spectrum);
    QVI_TRACE_PARAMETER("ColorSpace", conditions.colorSpace);
    QVI_TRACE_CALL();
    // The colour space as GetMeasureCondition(kColorSpaceKey) gives it, read
    // in place.
    const String& space = conditions.colorSpace;
    QVColorVector out;
    bool ok = false;
    if (Is(space, "CIELab")) {
        ok = CMetryCalculator::GetVector_CIELab(spectrum, conditions, out);
    } else if (Is(space, "CIELCh")) {
        ok = CMetryCalculator::GetVector_CIELCh_ab(spectrum, conditions, out);
    } else if (Is(space, "CIEXYZ")) {
        ok = CMetryCalculator::GetVector_CIEXYZ(spectrum, conditions, out);
    } else if (Is(space, "CIExyY")) {
        ok = CMetryCalculator::GetVector_CIExyY(spectrum, conditions, out);
    } else if (Is(space, "CIELChuv")) {
        ok = CMetryCalculator::GetVector_CIELCh_uv(spectrum, conditions, out);
    } else if (Is(space, "LABvq")) {
        ok = CMetryCalculator::GetVector_LABvq(spectrum, conditions, out);
    } else if (Is(space, "LCHvq")) {
        ok = CMetryCalculator::GetVector_LCHvq(spectrum, conditions, out);
    } else if (Is(space, "CIELuv")) {
        ok = CMetryCalculator::GetVector_CIELuv(spectrum, conditions, out);
    } else if (Is(space, "CIEuvY1976") || Is(space, "CIEuvY1960")) {
        QVMeasureConditions xyzConditions(conditions);
        xyzConditions.SetMeasureCondition(kColorSpaceKey, String("CIEXYZ"));
        QVColorVector xyz;
        ok = CMetryCalculator::GetVector_CIEXYZ(spectrum, xyzConditions, xyz);
        if (ok) {
            ok = Is(space, "CIEuvY1976") ? CMetryCalculator::GetVector_CIEuvY1976(xyz, out)
                                         : CMetryCalculator::GetVector_CIEuvY1960(xyz, out);
        }
    } else if (Is(space, "HunterLab")) {
        ok = CMetryCalculator::GetVector_HunterLab(spectrum, conditions, out);
    } else if (Is(space, "RxRyRz")) {
        ok = CMetryCalculator::GetVector_RxRyRz(spectrum, conditions, out);
    } else if (Is(space, "RGB")) {
        QVColorVector lab;
        ok = CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab);
        if (ok) {
            ok = CMetryCalculator::GetVector_CIELab_RGB(lab, out);
        }
    } else {
        Raise(String("GetVector not supported for ColorSpace ") + space);
    }
    if (!ok) {
        RaiseCalculatorFailure();
    }
    QVI_TRACE_RETURN(out[0], ", ", out[1], ", ", out[2]);
    return out;
}

QVColorVector CMetryService::GetVector(const QVColorVector& vector, const String& colorSpace)
{
    QVI_TRACE_BEGIN(nullptr, "CMetry", "CMetryService", "GetVector");
    QVI_TRACE_PARAMETER("vector", vector);
    QVI_TRACE_PARAMETER("colorSpace", colorSpace);
    QVI_TRACE_CALL();
    if (vector.GetMeasureConditions().GetMeasureCondition(kColorSpaceKey) == colorSpace) {
        return vector;
    }
    QVMeasureConditions conditions(vector.GetMeasureConditions());
    const String source = conditions.GetMeasureCondition(kColorSpaceKey);
    QVColorVector out;
    bool ok = false;
    if (Is(source, "CIEXYZ") && Is(colorSpace, "CIELab")) {
        ok = CMetryCalculator::GetVector_CIELab(vector, out);
    } else if (Is(source, "CIELab") && Is(colorSpace, "CIEXYZ")) {
        ok = CMetryCalculator::GetVector_CIEXYZ(vector, out);
    } else if ((Is(source, "CIELab") && Is(colorSpace, "CIELCh")) || (Is(source, "LABvq") && Is(colorSpace, "LCHvq")) ||
               (Is(source, "CIELuv") && Is(colorSpace, "CIELChuv"))) {
        ok = CMetryCalculator::GetVector_CIELCh_ab(vector, out);
    } else if (Is(source, "CIEXYZ") && Is(colorSpace, "CIExyY")) {
        ok = CMetryCalculator::GetVector_CIExyY(vector, out);
    } else if (Is(source, "CIELab") && Is(colorSpace, "RGB")) {
        ok = CMetryCalculator::GetVector_CIELab_RGB(vector, out);
    } else if (Is(colorSpace, "RGB")) {
        const QVColorVector lab = GetVector(vector, String("CIELab"));
        ok = CMetryCalculator::GetVector_CIELab_RGB(lab, out);
    } else if ((Is(source, "CIEXYZ") || Is(source, "CIExyY")) && Is(colorSpace, "CIEuvY1960")) {
        ok = CMetryCalculator::GetVector_CIEuvY1960(vector, out);
    } else if ((Is(source, "CIEXYZ") || Is(source, "CIExyY")) && Is(colorSpace, "CIEuvY1976")) {
        ok = CMetryCalculator::GetVector_CIEuvY1976(vector, out);
    } else {
        // The last word names "CIEXYZ", whatever the target.
        Raise(String("Conversion not supported from ColorSpace ") + source + String(" to ColorSpace ") +
              String("CIEXYZ"));
    }
    if (!ok) {
        RaiseCalculatorFailure();
    }
    if (Is(colorSpace, "RGB")) {
        return out;
    }
    conditions.SetMeasureCondition(kColorSpaceKey, colorSpace);
    return QVColorVector(out[0], out[1], out[2], conditions);
}

float CMetryService::GetDeltaE(const QVSpectrum& first, const QVSpectrum& second,
                               const QVMeasureConditions& conditions, float p1, float p2, float p3)
{
    QVI_TRACE_BEGIN(nullptr, "CMetry", "CMetryService", "GetDeltaE");
    QVI_TRACE_PARAMETER("DeltaEFormula", conditions.deltaEFormula);
    QVI_TRACE_CALL();
    const String& formula = conditions.deltaEFormula;
    float result = CMetryCalculator::FailedDifference;
    if (Is(formula, "CIELab")) {
        result = CMetryCalculator::GetDeltaE_CIELAB(first, second, conditions);
    } else if (Is(formula, "LABvq")) {
        result = CMetryCalculator::GetDeltaE_vq(first, second, conditions);
    } else if (Is(formula, "CIELuv")) {
        result = CMetryCalculator::GetDeltaE_CIELUV(first, second, conditions);
    } else if (Is(formula, "FMCII")) {
        result = CMetryCalculator::GetDeltaE_FMCII(first, second, conditions);
    } else if (Is(formula, "CMC")) {
        result = CMetryCalculator::GetDeltaE_CMC(first, second, conditions, DefaultIfZero(p1), DefaultIfZero(p2));
    } else if (Is(formula, "94")) {
        result = CMetryCalculator::GetDeltaE_94(first, second, conditions, DefaultIfZero(p1), DefaultIfZero(p2),
                                                DefaultIfZero(p3));
    } else {
        Raise(String("GetDeltaE not supported for DeltaEFormula ") + formula);
    }
    // A true difference of exactly 1000000 is reported as a failure too.
    if (result == CMetryCalculator::FailedDifference) {
        RaiseCalculatorFailure();
    }
    QVI_TRACE_RETURN(result);
    return result;
}

float CMetryService::GetDeltaE(const QVColorVector& first, const QVColorVector& second, float p1, float p2, float p3)
{
    QVI_TRACE_BEGIN(nullptr, "CMetry", "CMetryService", "GetDeltaE");
    QVI_TRACE_PARAMETER("first", first);
    QVI_TRACE_PARAMETER("second", second);
    QVI_TRACE_CALL();
    const String formula = first.GetMeasureConditions().GetMeasureCondition(kDeltaEFormulaKey);
    float result = CMetryCalculator::FailedDifference;
    if (formula == String("CIELab") || formula == String("94")) {
        QVLab lab1;
        QVLab lab2;
        lab1 = GetVector(first, String("CIELab"));
        lab2 = GetVector(second, String("CIELab"));
        if (formula == String("CIELab")) {
            result = CMetryCalculator::GetDeltaE_CIELAB(lab1, lab2);
        } else {
            result = CMetryCalculator::GetDeltaE_94(lab1, lab2, DefaultIfZero(p1), DefaultIfZero(p2),
                                                    DefaultIfZero(p3));
        }
    }
    // Any other formula (LABvq and the spectrum-only ones) stays at the
    // failure value.
    if (result == CMetryCalculator::FailedDifference) {
        RaiseCalculatorFailure();
    }
    return result;
}

QVColorVector CMetryService::GetDeltaVector(const QVColorVector& first, const QVColorVector& second)
{
    QVI_TRACE(nullptr, "CMetry", "CMetryService", "GetDeltaVector");
    QVMeasureConditions conditions(first.GetMeasureConditions());
    const String type = conditions.GetMeasureCondition(kColorSpaceKey);
    QVColorVector out;
    bool ok = false;
    if (type == String("CIELab")) {
        ok = CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, out);
        conditions.SetMeasureCondition(kColorSpaceKey, String("CIELCh"));
    } else if (type == String("CIELuv")) {
        ok = CMetryCalculator::GetVector_CIELCH_uv(first, second, out);
        conditions.SetMeasureCondition(kColorSpaceKey, String("CIELChuv"));
    } else if (type == String("LABvq")) {
        ok = CMetryCalculator::GetVector_LCHvq_delta(first, second, out);
        conditions.SetMeasureCondition(kColorSpaceKey, String("LCHvq"));
    }
    if (!ok) {
        RaiseCalculatorFailure();
    }
    return QVColorVector(out[0], out[1], out[2], conditions);
}

const Utilities::Vector<String>& CMetryService::GetSupportedValues(const String& key)
{
    return QVMeasureConditions::GetSupportedValues(key);
}

float CMetryService::GetMetamery(const QVSpectrum& first, const QVSpectrum& second,
                                 const QVMeasureConditions& conditions, const QVMeasureConditions& secondIlluminant)
{
    QVI_TRACE(nullptr, "CMetry", "CMetryService", "GetMetamery");
    const float result =
        CMetryCalculator::GetMetamery(first, second, conditions, secondIlluminant.GetIllumination());
    if (result == CMetryCalculator::FailedDifference) {
        RaiseCalculatorFailure();
    }
    return result;
}

String CMetryService::GetColorType(const QVSpectrum& spectrum)
{
    QVI_TRACE(nullptr, "CMetry", "CMetryService", "GetColorType");
    static const char* const kNames[] = {"Magenta", nullptr, "Blue",  "Cyan",  "Turquo", "Green", "Olive", "YellowGreen",
                                         "Beige",   "Brown", "Yellow", "Orange", "Red",  "White", "Gray",  "Black"};
    const ColorTYPE type = CMetryCalculator::GetColorType(spectrum);
    const char* name = "Undefined";
    if (type >= 0 && type < 16 && kNames[type] != nullptr) {
        name = kNames[type];
    }
    return Utilities::LanguageServiceInterface().GetTranslation(String(name));
}

float CMetryService::GetColorTemperature(const QVSpectrum& spectrum)
{
    QVI_TRACE(nullptr, "CMetry", "CMetryService", "GetColorTemperature");
    ColorTemperature search;
    return search.GetColorTemperature(spectrum);
}

QVSpectrum CMetryService::GetSpectrum(const QVColorVector& vector)
{
    QVI_TRACE_BEGIN(nullptr, "CMetry", "CMetryService", "GetSpectrum");
    QVI_TRACE_PARAMETER("vector", vector);
    QVI_TRACE_CALL();
    const QVColorVector lab = GetVector(vector, String("CIELab"));
    QVSpectrum spectrum;
    if (!asLab2Spec.GetSpectrum(lab, spectrum, 0.1, false, 1000)) {
        Raise(String("CMetryCalculator: Conversion out of Range"));
    }
    return spectrum;
}

Diagnostics::String CMetryService::GetValueString() const
{
    return Diagnostics::String("CMetryService");
}

} // namespace CMetry
