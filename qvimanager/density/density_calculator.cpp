#include "qvimanager/density/density_calculator.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "qvimanager/foundation/exception.h"

namespace CMetry {

namespace {

constexpr unsigned short kPoints = QVSpectrum::NumberOfDataPoints;
// The small density as the double it widens to, for tests of an absolute
// value.
constexpr double kSmall = static_cast<double>(DensityCalculator::SmallDensity);
// The neutral ratio of GetDensityFilter and RecognizeColorField (bits
// 0x3F333333).
constexpr float kNeutralRatio = 0.7f;
// The expected dot gain factor of RecognizeColorField: 0.72 as a float,
// widened.
constexpr double kDotGainFactor = static_cast<double>(0.72f);

float DensityOf(double reflectance)
{
    return reflectance > 0.0 ? static_cast<float>(-std::log10(reflectance)) : DensityCalculator::NoLightDensity;
}

void CheckCell(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard)
{
    if (physicalFilter < 0 || physicalFilter >= DensityCalculator::PhysicalFilterCount || densityStandard < 0 ||
        densityStandard >= DensityCalculator::DensityStandardCount) {
        throw Utilities::ExceptionOutOfBound(
            Utilities::String("Density calibration: physical filter or density standard out of range"));
    }
}

void CheckPointer(const void* pointer)
{
    if (pointer == nullptr) {
        throw Utilities::ExceptionNullpointer(Utilities::String("Failed to access to nullpointer."));
    }
}

using CalibrationStore = float[DensityCalculator::PhysicalFilterCount][DensityCalculator::DensityStandardCount][4];

// The four values of one calibration cell, after the range check.
float* Cell(CalibrationStore& store, QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard)
{
    CheckCell(physicalFilter, densityStandard);
    return store[physicalFilter][densityStandard];
}

// Copies the four values of a cell; a null target raises.
void CopyFour(const float* from, float* to)
{
    CheckPointer(to);
    std::copy_n(from, 4, to);
}

// The colour densities, sorted, that GetGreyness and GetHueError read,
// after the vector step that withSlope chooses.
bool SortedColours(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard, QVWhiteBaseTYPE whiteBase,
                   bool withSlope, float (&sorted)[3])
{
    QVDensity density;
    const bool done = withSlope
                          ? DensityCalculator::GetDensityVectorWithSlope(spectrum, densityStandard, whiteBase, density)
                          : DensityCalculator::GetDensityVector(spectrum, densityStandard, whiteBase, density);
    if (!done) {
        return false;
    }
    DensityCalculator::SortColorDensities(density, sorted);
    return true;
}

// A percentage of the caller's tint list with its position (1 to 3).
struct TintEntry {
    float percent;
    int tag;
};

void SwapIfGreater(TintEntry& lower, TintEntry& upper, bool& swapped)
{
    swapped = false;
    if (lower.percent > upper.percent) {
        const TintEntry kept = lower;
        lower = upper;
        upper = kept;
        swapped = true;
    }
}

} // namespace

DensityFilter DensityCalculator::asDensityFilter;
float DensityCalculator::asDensitySlopeArray[PhysicalFilterCount][DensityStandardCount][4];
float DensityCalculator::asDensityOffsetArray[PhysicalFilterCount][DensityStandardCount][4];

Diagnostics::String DensityCalculator::GetValueString() const
{
    return Diagnostics::String();
}

bool DensityCalculator::GetDensityVector(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                         QVWhiteBaseTYPE whiteBase, QVDensity& out)
{
    asDensityFilter.SetDensityStandard(densityStandard);
    for (unsigned short filter = 0; filter < 4; ++filter) {
        const float* weights = asDensityFilter[filter].GetFilterSpectrum();
        float sum = 0.0f;
        for (unsigned short i = 0; i < kPoints; ++i) {
            sum += weights[i] * spectrum.values[i];
        }
        out.SetDensity(DensityOf(sum), static_cast<QVDensFilterTYPE>(filter));
    }
    // The black filter sums to 100 where the colour filters sum to 1: two
    // decades.
    out.SetDensity(static_cast<float>(static_cast<double>(out.GetDensity(DensFilterBlack)) + 2.0), DensFilterBlack);
    if (whiteBase == WhiteBaseAbsolute) {
        return true;
    }
    const QVMeasureConditions conditions = spectrum.GetPhysMeasCond();
    if (!IsPaperWhiteValid(conditions)) {
        return false;
    }
    QVSpectrum white;
    if (!GetPaperWhite().GetSpectrum(conditions, white)) {
        return false;
    }
    QVDensity whiteDensity;
    if (!GetDensityVector(white, densityStandard, WhiteBaseAbsolute, whiteDensity)) {
        return false;
    }
    for (unsigned short filter = 0; filter < 4; ++filter) {
        out[filter] = out[filter] - whiteDensity[filter];
    }
    return true;
}

bool DensityCalculator::GetDensityVectorWithSlope(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                                  QVWhiteBaseTYPE whiteBase, QVDensity& out)
{
    const bool result = GetDensityVector(spectrum, densityStandard, whiteBase, out);
    const QVPhysicalFilterTYPE physicalFilter = spectrum.GetPhysMeasCond().GetPhysicalFilter();
    if (result) {
        const float* slope = GetDensitySlope(physicalFilter, densityStandard);
        const float* offset = GetDensityOffset(physicalFilter, densityStandard);
        for (unsigned short filter = 0; filter < 4; ++filter) {
            const float added = whiteBase == WhiteBaseAbsolute ? offset[filter] : 0.0f;
            out[filter] = out[filter] * slope[filter] + added;
        }
    }
    return result;
}

void DensityCalculator::SortColorDensities(const QVDensity& density, float* const sorted)
{
    CheckPointer(sorted);
    const float cyan = density[static_cast<unsigned short>(DensFilterCyan)];
    const float magenta = density[static_cast<unsigned short>(DensFilterMagenta)];
    const float yellow = density[static_cast<unsigned short>(DensFilterYellow)];
    if (cyan >= magenta) {
        sorted[0] = cyan;
        sorted[1] = magenta;
    } else {
        sorted[0] = magenta;
        sorted[1] = cyan;
    }
    // Yellow goes after every value it does not exceed.
    if (yellow > sorted[0]) {
        sorted[2] = sorted[1];
        sorted[1] = sorted[0];
        sorted[0] = yellow;
    } else if (yellow > sorted[1]) {
        sorted[2] = sorted[1];
        sorted[1] = yellow;
    } else {
        sorted[2] = yellow;
    }
}

QVDensFilterTYPE DensityCalculator::GetDensityFilter(const QVDensity& density)
{
    float maximum = -100.0f;
    unsigned short winner = 0;
    for (unsigned short filter = 0; filter < 4; ++filter) {
        if (density[filter] > maximum) {
            maximum = density[filter];
            winner = filter;
        }
    }
    float sorted[3];
    SortColorDensities(density, sorted);
    const float ratio = std::fabs(static_cast<double>(sorted[0])) >= kSmall ? sorted[2] / sorted[0] : 1.0f;
    if (maximum < SmallDensity) {
        return DensFilterBlack;
    }
    if (ratio > kNeutralRatio) {
        return DensFilterBlack;
    }
    return static_cast<QVDensFilterTYPE>(winner);
}

bool DensityCalculator::GetDensity(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                   QVWhiteBaseTYPE whiteBase, float& density, QVDensFilterTYPE& filter,
                                   bool autoFilter)
{
    QVDensity vector;
    if (!GetDensityVectorWithSlope(spectrum, densityStandard, whiteBase, vector)) {
        density = NoLightDensity;
        filter = static_cast<QVDensFilterTYPE>(-1);
        return false;
    }
    if (autoFilter) {
        filter = GetDensityFilter(vector);
    }
    density = vector[static_cast<unsigned short>(filter)];
    return true;
}

bool DensityCalculator::GetDensitySpectrum(const QVSpectrum& spectrum, QVWhiteBaseTYPE whiteBase,
                                           float (&densities)[QVSpectrum::NumberOfDataPoints])
{
    QVSpectrum copy(spectrum);
    if (whiteBase != WhiteBaseAbsolute && !GetSpecBasedToPapWhite(copy)) {
        return false;
    }
    for (unsigned short i = 0; i < kPoints; ++i) {
        densities[i] = DensityOf(copy.values[i]);
    }
    return true;
}

bool DensityCalculator::GetMaxDensity(const QVSpectrum& spectrum, QVWhiteBaseTYPE whiteBase, float& density,
                                      unsigned short& waveLength)
{
    QVSpectrum copy(spectrum);
    bool result = true;
    if (whiteBase != WhiteBaseAbsolute) {
        // A failed paper-white step is reported, but the scan goes on with
        // the unbased values.
        result = GetSpecBasedToPapWhite(copy);
    }
    const int middle = copy.GetNrOfDataPoints() / 2 - 1;
    int best = 0;
    float minimum = 9999.0f;
    density = 0.0f;
    const int low = copy.GetArrayIndex(410);
    // The difference of the two indices, not the index of 700 nm: the scan
    // ends at 670 nm.
    const int high = copy.GetArrayIndex(700) - low;
    for (int i = low; i <= high; ++i) {
        const float value = copy.values[i];
        if (value < minimum) {
            minimum = value;
            best = i;
        } else if (value == minimum && std::abs(i - middle) < std::abs(best - middle)) {
            best = i;
        }
    }
    density = DensityOf(minimum);
    waveLength = copy.GetWaveLength(static_cast<unsigned short>(best));
    return result;
}

bool DensityCalculator::SolidAndTint(const QVSpectrum& solid, const QVSpectrum& tint,
                                     QVDensityStdTYPE densityStandard, QVWhiteBaseTYPE whiteBase,
                                     DensityFilterModeTYPE mode, bool withSlope, float& solidDensity,
                                     float& tintDensity)
{
    if (mode == DensityFilterModeMax) {
        float tintSpectrum[kPoints];
        unsigned short waveLength;
        // The solid's maximum is always taken relative to paper white.
        if (!GetDensitySpectrum(tint, whiteBase, tintSpectrum) ||
            !GetMaxDensity(solid, WhiteBasePaper, solidDensity, waveLength)) {
            return false;
        }
        tintDensity = tintSpectrum[solid.GetArrayIndex(waveLength)];
        return true;
    }
    QVDensity solidVector;
    QVDensity tintVector;
    const auto vector = withSlope ? GetDensityVectorWithSlope : GetDensityVector;
    if (!vector(solid, densityStandard, whiteBase, solidVector) ||
        !vector(tint, densityStandard, whiteBase, tintVector)) {
        return false;
    }
    // In mode 5 each reading selects its own filter.
    solidDensity = solidVector[mode];
    tintDensity = tintVector[mode];
    return true;
}

bool DensityCalculator::GetDotArea(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                                   DensityFilterModeTYPE mode, float& area)
{
    return GetDotArea(solid, tint, densityStandard, mode, 1.0f, area);
}

bool DensityCalculator::GetDotArea(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                                   DensityFilterModeTYPE mode, float n, float& area)
{
    float solidDensity;
    float tintDensity;
    if (!SolidAndTint(solid, tint, densityStandard, WhiteBasePaper, mode, false, solidDensity, tintDensity)) {
        return false;
    }
    const double factor = n;
    const auto a = static_cast<float>(1.0 - std::pow(10.0, -static_cast<double>(solidDensity) / factor));
    if (std::fabs(static_cast<double>(a)) < kSmall) {
        area = 0.0f;
    } else {
        area = static_cast<float>((1.0 - std::pow(10.0, -static_cast<double>(tintDensity) / factor)) / a);
    }
    return true;
}

bool DensityCalculator::GetContrast(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                                    QVWhiteBaseTYPE whiteBase, DensityFilterModeTYPE mode, float& contrast)
{
    float solidDensity;
    float tintDensity;
    if (!SolidAndTint(solid, tint, densityStandard, whiteBase, mode, true, solidDensity, tintDensity)) {
        return false;
    }
    if (std::fabs(static_cast<double>(solidDensity)) < kSmall) {
        contrast = 0.0f;
    } else {
        contrast = static_cast<float>((static_cast<double>(solidDensity) - tintDensity) / solidDensity);
    }
    return true;
}

bool DensityCalculator::GetTrapping(const QVSpectrum& firstInk, const QVSpectrum& secondInk,
                                    const QVSpectrum& overprint, QVDensityStdTYPE densityStandard,
                                    DensityFilterModeTYPE mode, float& trapping)
{
    if (mode == DensityFilterModeMax) {
        float first[kPoints];
        float second[kPoints];
        float both[kPoints];
        float maximum;
        unsigned short waveLength;
        // The second ink's density spectrum takes no part in the result, but
        // its failure ends the calculation.
        if (!GetDensitySpectrum(firstInk, WhiteBasePaper, first) ||
            !GetDensitySpectrum(secondInk, WhiteBasePaper, second) ||
            !GetDensitySpectrum(overprint, WhiteBasePaper, both) ||
            !GetMaxDensity(secondInk, WhiteBasePaper, maximum, waveLength)) {
            return false;
        }
        const unsigned short i = secondInk.GetArrayIndex(waveLength);
        if (std::fabs(static_cast<double>(maximum)) < kSmall) {
            trapping = 1.0f;
        } else {
            trapping = static_cast<float>((static_cast<double>(both[i]) - first[i]) / maximum);
        }
        return true;
    }
    QVDensity first;
    QVDensity second;
    QVDensity both;
    if (!GetDensityVector(firstInk, densityStandard, WhiteBasePaper, first) ||
        !GetDensityVector(secondInk, densityStandard, WhiteBasePaper, second) ||
        !GetDensityVector(overprint, densityStandard, WhiteBasePaper, both)) {
        return false;
    }
    return GetTrapping(first, second, both, mode, trapping);
}

bool DensityCalculator::GetTrapping(const QVDensity& firstInk, const QVDensity& secondInk, const QVDensity& overprint,
                                    DensityFilterModeTYPE mode, float& trapping)
{
    const float second = secondInk[mode];
    if (std::fabs(static_cast<double>(second)) < kSmall) {
        trapping = 1.0f;
    } else {
        trapping = static_cast<float>((static_cast<double>(overprint[mode]) - firstInk[mode]) / second);
    }
    return true;
}

bool DensityCalculator::GetGreyness(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                    QVWhiteBaseTYPE whiteBase, float& greyness, bool withSlope)
{
    float sorted[3];
    if (!SortedColours(spectrum, densityStandard, whiteBase, withSlope, sorted)) {
        return false;
    }
    greyness = std::fabs(static_cast<double>(sorted[0])) >= kSmall ? sorted[2] / sorted[0] : 1.0f;
    return true;
}

bool DensityCalculator::GetHueError(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                    QVWhiteBaseTYPE whiteBase, float& hueError, bool withSlope)
{
    float sorted[3];
    if (!SortedColours(spectrum, densityStandard, whiteBase, withSlope, sorted)) {
        return false;
    }
    // The guard looks at the strongest density, not at the denominator.
    hueError = std::fabs(static_cast<double>(sorted[0])) >= kSmall ? (sorted[1] - sorted[2]) / (sorted[0] - sorted[2])
                                                                    : 0.0f;
    return true;
}

bool DensityCalculator::RecognizeColorField(QVDensity* references, const QVSpectrum& spectrum,
                                            QVDensityStdTYPE densityStandard, float* tints, FieldTYPE field,
                                            [[maybe_unused]] QVDensFilterTYPE filter, QVDensity& density, AutoTableTYPE* table)
{
    field = FieldUnclassified;
    filter = static_cast<QVDensFilterTYPE>(-1);
    if (!GetDensityVector(spectrum, densityStandard, WhiteBasePaper, density)) {
        return false;
    }

    // Weakest and strongest colour, ties to the lower index.
    unsigned short weakest = DensFilterCyan;
    unsigned short strongest = DensFilterCyan;
    float low = 100.0f;
    float high = -100.0f;
    for (unsigned short colour = DensFilterCyan; colour <= DensFilterYellow; ++colour) {
        if (density[colour] < low) {
            low = density[colour];
            weakest = colour;
        }
        if (density[colour] > high) {
            high = density[colour];
            strongest = colour;
        }
    }

    CheckPointer(references);
    QVDensity solids;
    for (unsigned short colour = 0; colour < 4; ++colour) {
        solids[colour] = references[colour][colour];
    }
    float sortedSolids[3];
    SortColorDensities(solids, sortedSolids);

    float greyness;
    float hueError;
    if (!GetGreyness(spectrum, densityStandard, WhiteBasePaper, greyness, false) ||
        !GetHueError(spectrum, densityStandard, WhiteBasePaper, hueError, false)) {
        return false;
    }

    if (greyness > kNeutralRatio) {
        field = FieldSolidBlack;
        filter = DensFilterBlack;
        strongest = DensFilterBlack;
    } else if ((hueError > kNeutralRatio || greyness > 0.25f) && sortedSolids[0] > SmallDensity) {
        if (weakest == DensFilterCyan) {
            field = FieldOverprintCyanWeakest;
        } else if (weakest == DensFilterMagenta) {
            field = FieldOverprintMagentaWeakest;
        } else {
            field = FieldOverprintYellowWeakest;
        }
        return true;
    } else {
        field = FieldSolidBlack + strongest;
        filter = static_cast<QVDensFilterTYPE>(strongest);
    }

    CheckPointer(tints);
    TintEntry entries[4] = {{0.0f, 0}, {tints[3], 3}, {tints[2], 2}, {tints[1], 1}};
    for (int i = 1; i <= 3; ++i) {
        if (entries[i].percent >= 100.0f) {
            entries[i].percent = 0.0f;
        }
    }
    bool swapped;
    SwapIfGreater(entries[2], entries[3], swapped);
    SwapIfGreater(entries[1], entries[2], swapped);
    if (swapped) {
        SwapIfGreater(entries[2], entries[3], swapped);
    }

    if (entries[3].percent == 0.0f) {
        return true;
    }
    const float solidDensity = solids[strongest];
    if (solidDensity == 0.0f) {
        return true;
    }

    const auto a = static_cast<float>(1.0 - std::pow(10.0, -static_cast<double>(solidDensity)));
    float area;
    if (a > SmallDensity) {
        area = static_cast<float>((1.0 - std::pow(10.0, -static_cast<double>(density[strongest]))) / a * 100.0);
    } else {
        area = 100.0f;
    }

    // Expected dot gain on the nominal percentages.
    for (int i = 1; i <= 3; ++i) {
        const double p = entries[i].percent;
        entries[i].percent = static_cast<float>(p * ((1.0 - p / 100.0) * kDotGainFactor + 1.0));
    }

    auto limit = static_cast<float>((100.0 + entries[3].percent) / 2.0);
    if (area > limit) {
        return true;
    }
    entries[0].percent = 0.0f;
    for (int i = 3; i >= 1; --i) {
        const float previous = limit;
        limit = static_cast<float>((static_cast<double>(entries[i].percent) + entries[i - 1].percent) / 2.0);
        if (area <= previous && area > limit && entries[i].percent != 0.0f) {
            const int tag = entries[i].tag;
            field = strongest + 4 * tag - 3;
            CheckPointer(table);
            // The error is taken against the caller's nominal percentage.
            table[field - 1].tintError = static_cast<float>(static_cast<double>(area) - tints[tag]);
            table[field - 1].present = true;
            return true;
        }
    }
    field = FieldPaperOrTint;
    return true;
}

void DensityCalculator::InitializeDensityCalibration()
{
    for (int physicalFilter = 0; physicalFilter < PhysicalFilterCount; ++physicalFilter) {
        for (int standard = 0; standard < DensityStandardCount; ++standard) {
            ResetDensityCalibration(static_cast<QVPhysicalFilterTYPE>(physicalFilter),
                                    static_cast<QVDensityStdTYPE>(standard));
        }
    }
}

void DensityCalculator::ResetDensityCalibration(QVPhysicalFilterTYPE physicalFilter,
                                                const QVDensityStdTYPE& densityStandard)
{
    CheckCell(physicalFilter, densityStandard);
    for (int filter = 0; filter < 4; ++filter) {
        asDensitySlopeArray[physicalFilter][densityStandard][filter] = 1.0f;
        asDensityOffsetArray[physicalFilter][densityStandard][filter] = 0.0f;
    }
}

const float* DensityCalculator::GetDensitySlope(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard)
{
    return Cell(asDensitySlopeArray, physicalFilter, densityStandard);
}

const float* DensityCalculator::GetDensityOffset(QVPhysicalFilterTYPE physicalFilter,
                                                 QVDensityStdTYPE densityStandard)
{
    return Cell(asDensityOffsetArray, physicalFilter, densityStandard);
}

void DensityCalculator::GetDensitySlope(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard,
                                        float* out)
{
    CopyFour(Cell(asDensitySlopeArray, physicalFilter, densityStandard), out);
}

void DensityCalculator::GetDensityOffset(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard,
                                         float* out)
{
    CopyFour(Cell(asDensityOffsetArray, physicalFilter, densityStandard), out);
}

void DensityCalculator::SetDensitySlope(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard,
                                        float* in)
{
    float* cell = Cell(asDensitySlopeArray, physicalFilter, densityStandard);
    CheckPointer(in);
    CopyFour(in, cell);
}

void DensityCalculator::SetDensityOffset(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard,
                                         float* in)
{
    float* cell = Cell(asDensityOffsetArray, physicalFilter, densityStandard);
    CheckPointer(in);
    CopyFour(in, cell);
}

DensityFilter& DensityCalculator::GetActDensityStdFilter()
{
    return asDensityFilter;
}

} // namespace CMetry
