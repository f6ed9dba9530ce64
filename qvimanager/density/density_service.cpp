#include "qvimanager/density/density_service.h"

#include <bit>
#include <cstdint>

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/density/density_calculator.h"
#include "qvimanager/density/density_filter.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/platform/language_service_interface.h"

using Utilities::String;

namespace CMetry {

namespace {

const String kDensityStandardKey("Colorimetric.DensityStandard");
const String kDensityFilterModeKey("Colorimetric.DensityFilterMode");
const String kPhysicalFilterKey("Physical.Filter");

String Translated(const char* text)
{
    return Utilities::LanguageServiceInterface().GetTranslation(String(text));
}

[[noreturn]] void Raise(const char* text)
{
    throw ExceptionCMetry(Translated(text));
}

} // namespace

float DensityService::CheckedDensity(const QVSpectrum& spectrum, const QVMeasureConditions& conditions, QVDensFilterTYPE& filter)
{
    const QVWhiteBaseTYPE whiteBase = conditions.GetWhiteBase();
    if ((whiteBase == WhiteBasePaper || whiteBase == WhiteBaseAutomatic) && !BaseCalculator::psPaperWhite.IsValid()) {
        Raise("Missing WhiteReference");
    }
    const QVDensityStdTYPE standard = conditions.GetDensityStandard();
    const DensityFilterModeTYPE mode = conditions.GetDensityFilterMode();
    bool autoFilter = true;
    filter = static_cast<QVDensFilterTYPE>(-1);
    if (mode >= DensityFilterModeBlack && mode <= DensityFilterModeYellow) {
        filter = static_cast<QVDensFilterTYPE>(mode);
        autoFilter = false;
    }
    float density = 0.0f;
    // The result is not read: a failure shows as the no-light density.
    DensityCalculator::GetDensity(spectrum, standard, whiteBase, density, filter, autoFilter);
    if (std::bit_cast<std::uint32_t>(density) == std::bit_cast<std::uint32_t>(DensityCalculator::NoLightDensity)) {
        Raise("Calculation of Density failed");
    }
    return density;
}

namespace {

QVDensityStdTYPE StandardOf(const QVMeasureConditions& conditions)
{
    return MeasureConditionGetStrings().GetDensityStandard(conditions.GetMeasureCondition(kDensityStandardKey));
}

DensityFilterModeTYPE ModeOf(const QVMeasureConditions& conditions)
{
    return MeasureConditionGetStrings().GetDensityFilterMode(conditions.GetMeasureCondition(kDensityFilterModeKey));
}

// The calibration cell of a condition set, kept while the cell is neutral.
struct SavedCalibration {
    DensityService::Calibration slope;
    DensityService::Calibration offset;
};

SavedCalibration Neutralise(const QVMeasureConditions& conditions)
{
    SavedCalibration saved;
    DensityService::GetDensityCalibration(conditions, saved.slope, saved.offset);
    DensityService::SetDensityCalibration(conditions, DensityService::Calibration(), DensityService::Calibration());
    return saved;
}

} // namespace

Diagnostics::String DensityService::GetValueString() const
{
    return Diagnostics::String();
}

float DensityService::GetDensity(const QVSpectrum& spectrum, const QVMeasureConditions& conditions)
{
    QVI_TRACE(nullptr, "CMetry", "DensityService", "GetDensity");
    QVDensFilterTYPE filter;
    return CheckedDensity(spectrum, conditions, filter);
}

String DensityService::GetDensityFilterName(const QVSpectrum& spectrum, const QVMeasureConditions& conditions)
{
    QVI_TRACE(nullptr, "CMetry", "DensityService", "GetDensityFilterName");
    QVDensFilterTYPE filter;
    CheckedDensity(spectrum, conditions, filter);
    DensityFilterModeTYPE mode = DensityFilterModeUndefined;
    if (filter >= DensFilterBlack && filter <= DensFilterYellow) {
        mode = static_cast<DensityFilterModeTYPE>(filter);
    }
    return MeasureConditionGetStrings().ToString(mode);
}

float DensityService::GetDotGain(const QVSpectrum& tint, const QVSpectrum& solid,
                                 const QVMeasureConditions& conditions, float nominalPercent)
{
    QVI_TRACE_BEGIN(nullptr, "CMetry", "DensityService", "GetDotGain");
    QVI_TRACE_PARAMETER("nominalPercent", nominalPercent);
    QVI_TRACE_CALL();
    // The dot area reads no calibration; the neutral cell during the call
    // (and after a failure) is part of the observable behaviour.
    const SavedCalibration saved = Neutralise(conditions);
    const QVDensityStdTYPE standard = StandardOf(conditions);
    const DensityFilterModeTYPE mode = ModeOf(conditions);
    float area;
    if (!DensityCalculator::GetDotArea(solid, tint, standard, mode, area)) {
        Raise("Calculation of dot gain failed");
    }
    const auto gain = static_cast<float>(static_cast<double>(area) * 100.0 - nominalPercent);
    SetDensityCalibration(conditions, saved.slope, saved.offset);
    return gain;
}

float DensityService::GetSlur(const Utilities::Vector<QVSpectrum>& tints, const QVSpectrum& solid,
                              const QVMeasureConditions& conditions)
{
    QVI_TRACE(nullptr, "CMetry", "DensityService", "GetSlur");
    const unsigned long count = tints.GetSize();
    if (count <= 1) {
        return 0.0f;
    }
    const SavedCalibration saved = Neutralise(conditions);
    const QVDensityStdTYPE standard = StandardOf(conditions);
    const DensityFilterModeTYPE mode = ModeOf(conditions);
    Utilities::Vector<float> areas(count);
    for (unsigned long i = 0; i < count; ++i) {
        if (!DensityCalculator::GetDotArea(solid, tints[i], standard, mode, areas[i])) {
            SetDensityCalibration(conditions, saved.slope, saved.offset);
            String text = Translated("Calculation of slur failed at Halftone ");
            text += String(i);
            throw ExceptionCMetry(text);
        }
    }
    float largest = areas[0];
    float sum = 0.0f;
    for (unsigned long i = 0; i < count; ++i) {
        if (areas[i] > largest) {
            largest = areas[i];
        }
        sum += areas[i];
    }
    // n x max - sum in float, like the sum, so that equal areas give
    // exactly 0; the scaling to percent in double.
    const float spread = static_cast<float>(count) * largest - sum;
    const auto slur = static_cast<float>(static_cast<double>(spread) * 100.0);
    SetDensityCalibration(conditions, saved.slope, saved.offset);
    return slur;
}

void DensityService::SetPaperWhite(const QVSpectrum& spectrum)
{
    QVI_TRACE(nullptr, "CMetry", "DensityService", "SetPaperWhite");
    Utilities::SmartPointer<QVSample> sample(new QVSample());
    sample->SetSpectrum(spectrum);
    BaseCalculator::SetPaperWhitePointer(sample);
}

Utilities::Vector<QVSpectrum> DensityService::GetUserdefinedFilter()
{
    Utilities::Vector<QVSpectrum> filters(4);
    for (unsigned long i = 0; i < 4; ++i) {
        filters[i] = QVSpectrum(DensityFilter::GetUserDefinedFilter(i));
    }
    return filters;
}

void DensityService::SetUserdefinedFilter(const Utilities::Vector<QVSpectrum>& filters)
{
    QVI_TRACE(nullptr, "CMetry", "DensityService", "SetUserdefinedFilter");
    // Entry by entry through the vector's checked index: with n < 4 entries
    // filters 0 to n - 1 are stored before the vector raises at index n.
    for (unsigned long i = 0; i < 4; ++i) {
        const QVSpectrum& filter = filters[i];
        float values[QVSpectrum::NumberOfDataPoints];
        for (unsigned short point = 0; point < QVSpectrum::NumberOfDataPoints; ++point) {
            values[point] = filter[point];
        }
        DensityFilter::SetUserDefinedFilter(values, i);
    }
}

void DensityService::SetDensityCalibration(const QVMeasureConditions& conditions, Calibration slope,
                                           Calibration offset)
{
    QVI_TRACE(nullptr, "CMetry", "DensityService", "SetDensityCalibration");
    float slopes[4];
    float offsets[4];
    for (unsigned long f = 0; f < 4; ++f) {
        slopes[f] = slope.IsValid() ? (*slope)[f] : 1.0f;
        offsets[f] = offset.IsValid() ? (*offset)[f] : 0.0f;
    }
    MeasureConditionGetStrings strings;
    const QVPhysicalFilterTYPE physicalFilter =
        strings.GetPhysicalFilter(conditions.GetMeasureCondition(kPhysicalFilterKey));
    const QVDensityStdTYPE standard = StandardOf(conditions);
    int firstFilter = physicalFilter;
    int lastFilter = physicalFilter;
    if (physicalFilter == PhysicalFilterUndefined) {
        firstFilter = 0;
        lastFilter = DensityCalculator::PhysicalFilterCount - 1;
    }
    int firstStandard = standard;
    int lastStandard = standard;
    if (standard == DensityStdUndefined) {
        firstStandard = 0;
        lastStandard = DensityCalculator::DensityStandardCount - 1;
    }
    for (int filter = firstFilter; filter <= lastFilter; ++filter) {
        for (int std = firstStandard; std <= lastStandard; ++std) {
            DensityCalculator::SetDensitySlope(static_cast<QVPhysicalFilterTYPE>(filter),
                                               static_cast<QVDensityStdTYPE>(std), slopes);
            DensityCalculator::SetDensityOffset(static_cast<QVPhysicalFilterTYPE>(filter),
                                                static_cast<QVDensityStdTYPE>(std), offsets);
        }
    }
}

void DensityService::GetDensityCalibration(const QVMeasureConditions& conditions, Calibration& slope,
                                           Calibration& offset)
{
    MeasureConditionGetStrings strings;
    const QVPhysicalFilterTYPE physicalFilter =
        strings.GetPhysicalFilter(conditions.GetMeasureCondition(kPhysicalFilterKey));
    const QVDensityStdTYPE standard = StandardOf(conditions);
    const float* slopes = DensityCalculator::GetDensitySlope(physicalFilter, standard);
    const float* offsets = DensityCalculator::GetDensityOffset(physicalFilter, standard);
    Calibration newSlope(new Utilities::Vector<float>(4));
    Calibration newOffset(new Utilities::Vector<float>(4));
    for (unsigned long f = 0; f < 4; ++f) {
        (*newSlope)[f] = slopes[f];
        (*newOffset)[f] = offsets[f];
    }
    slope = newSlope;
    offset = newOffset;
}

} // namespace CMetry
