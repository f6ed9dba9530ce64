#include "qvimanager/cmetry/filter.h"

#include "qvimanager/cmetry/linalg.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/tables/cie_tables.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/language_service_interface.h"

#include <cmath>
#include <cstring>
#include <vector>

using Utilities::ExceptionCalculationProblem;
using Utilities::SmartPointer;
using Utilities::String;

namespace CMetry {

namespace {

[[noreturn]] void RaiseCalculationProblem(const char* message)
{
    throw ExceptionCalculationProblem(Utilities::LanguageServiceInterface().GetTranslation(String(message)));
}

// A table without values has step 0: counting its values would divide by
// zero, so it is refused wherever it would be handed out or copied.
[[noreturn]] void RaiseEmptyTable()
{
    RaiseCalculationProblem("Filter table is empty: its step size is 0");
}

// The internal codes of the daylight basis functions, beyond the public
// illumination codes.
constexpr std::int32_t kDaylightS0 = 14;
constexpr std::int32_t kDaylightS1 = 15;
constexpr std::int32_t kDaylightS2 = 16;

constexpr unsigned short kFluorescentRowLength = 81;

} // namespace

// ---------------------------------------------------------------- Filter

Filter::Filter() : sumValid(false), sum(0.0f), values() {}

Filter::Filter(const float* source) : sumValid(false), sum(0.0f), values()
{
    LinAlg::CopyVector(values, source, NumberOfValues);
    CalculateSum();
}

Filter::Filter(const Filter& other) = default;

Filter& Filter::operator=(const Filter& other)
{
    if (this != &other) {
        sumValid = other.sumValid;
        sum = other.sum;
        LinAlg::CopyVector(values, other.values, NumberOfValues);
    }
    return *this;
}

Filter::~Filter() = default;

float Filter::operator[](long index) const
{
    if (index < 0 || index >= NumberOfValues) {
        throw Utilities::ExceptionOutOfBound("Filter::operator[]: index out of range");
    }
    return values[index];
}

float& Filter::operator[](long index)
{
    if (index < 0 || index >= NumberOfValues) {
        throw Utilities::ExceptionOutOfBound("Filter::operator[]: index out of range");
    }
    sumValid = false;
    return values[index];
}

const float* Filter::GetFilterSpectrum() const
{
    return values;
}

float Filter::GetFilterSum()
{
    if (!sumValid) {
        CalculateSum();
    }
    return sum;
}

float Filter::operator*(const QVSpectrum& spectrum) const
{
    return LinAlg::DotProd(values, spectrum.values, NumberOfValues);
}

Filter Filter::FilterXFilter(const Filter& other) const
{
    float products[NumberOfValues];
    LinAlg::VxV(products, values, other.values, NumberOfValues);
    return Filter(products);
}

bool Filter::operator==(const Filter& other) const
{
    return std::memcmp(values, other.values, sizeof values) == 0;
}

Diagnostics::String Filter::GetValueString() const
{
    Diagnostics::String text("FilterSum: ");
    if (sumValid) {
        text += Diagnostics::String(sum);
    } else {
        text += "not defined";
    }
    return text;
}

void Filter::CalculateSum()
{
    sum = LinAlg::SumV(values, NumberOfValues);
    sumValid = true;
}

// ---------------------------------------------------------------- StandardFilter

StandardFilter::StandardFilter() : stepSize(0), maxWavelength(0), minWavelength(0), table(nullptr) {}

StandardFilter::StandardFilter(const float* values, unsigned short minimum, unsigned short maximum,
                               unsigned short step)
    : stepSize(step), maxWavelength(maximum), minWavelength(minimum), table(nullptr)
{
    const unsigned count = (maximum - minimum) / step + 1U;
    table = new float[count];
    LinAlg::CopyVector(table, values, count);
}

StandardFilter::StandardFilter(const StandardFilter& other)
    : stepSize(0), maxWavelength(0), minWavelength(0), table(nullptr)
{
    CopyFrom(other);
}

StandardFilter& StandardFilter::operator=(const StandardFilter& other)
{
    if (this != &other) {
        CopyFrom(other);
    }
    return *this;
}

StandardFilter::~StandardFilter()
{
    delete[] table;
}

void StandardFilter::CopyFrom(const StandardFilter& other)
{
    // The number of values is (maximum - minimum) / step + 1: a filter
    // without a table has step 0 and cannot be counted.
    if (other.stepSize == 0) {
        RaiseEmptyTable();
    }
    const unsigned count = (other.maxWavelength - other.minWavelength) / other.stepSize + 1U;
    auto* copy = new float[count];
    LinAlg::CopyVector(copy, other.table, count);
    delete[] table;
    table = copy;
    stepSize = other.stepSize;
    maxWavelength = other.maxWavelength;
    minWavelength = other.minWavelength;
}

const float* StandardFilter::GetFilter() const
{
    return table;
}

unsigned short StandardFilter::GetMinWavelength() const
{
    return minWavelength;
}

unsigned short StandardFilter::GetMaxWavelength() const
{
    return maxWavelength;
}

unsigned short StandardFilter::GetStepSize() const
{
    return stepSize;
}

void StandardFilter::SetUserIllumination(const QVMeasureConditions& conditions)
{
    delete[] table;
    table = nullptr;
    stepSize = 0;
    maxWavelength = 0;
    minWavelength = 0;
    const QVSpectrum spectrum = conditions.GetUserdefinedIllumination();
    const QVMeasureConditions& grid = spectrum.GetMeasureConditions();
    // GetShort stops at the unit: "380nm" is 380.
    const short minimum = grid.GetMeasureCondition(String("Physical.WavelengthSpectrumMin")).GetShort();
    const short maximum = grid.GetMeasureCondition(String("Physical.WavelengthSpectrumMax")).GetShort();
    const short count = grid.GetMeasureCondition(String("Physical.NumberOfDataPointsSpectrum")).GetShort();
    table = new float[static_cast<unsigned>(count)];
    LinAlg::CopyVector(table, spectrum.values, count);
    minWavelength = static_cast<unsigned short>(minimum);
    maxWavelength = static_cast<unsigned short>(maximum);
    stepSize = static_cast<unsigned short>((maximum - minimum) / (count - 1));
}

void StandardFilter::SetDxxIllumination(const QVMeasureConditions& conditions)
{
    // Everything up to the final scaling in double precision.
    const int temperature = conditions.GetIllumination().GetColorTemperature();
    const double corrected = temperature * 1.4388 / 1.438;
    const double t2 = corrected * corrected;
    const double t3 = t2 * corrected;
    double x = 0.0;
    if (corrected < 7000.0) {
        x = -4607000000.0 / t3 + 2967800.0 / t2 + 99.11 / corrected + 0.244063;
    } else {
        x = -2006400000.0 / t3 + 1901800.0 / t2 + 247.48 / corrected + 0.23704;
    }
    const double y = -3.0 * x * x + 2.87 * x - 0.275;
    const double m = 0.0241 + 0.2562 * x - 0.7341 * y;
    double m1 = (-1.3515 - 1.7703 * x + 5.9114 * y) / m;
    double m2 = (0.03 - 31.4424 * x + 30.0717 * y) / m;
    m1 = std::floor(m1 * 1000.0 + 0.5) / 1000.0;
    m2 = std::floor(m2 * 1000.0 + 0.5) / 1000.0;

    const StandardFilter s0 = CMetryFilter::GetIlluFilter(QVIllumination(static_cast<QVIlluminationTYPE>(kDaylightS0)));
    const StandardFilter s1 = CMetryFilter::GetIlluFilter(QVIllumination(static_cast<QVIlluminationTYPE>(kDaylightS1)));
    const StandardFilter s2 = CMetryFilter::GetIlluFilter(QVIllumination(static_cast<QVIlluminationTYPE>(kDaylightS2)));
    *this = s0;

    const unsigned count = (maxWavelength - minWavelength) / stepSize + 1U;
    std::vector<double> daylight(count);
    for (unsigned i = 0; i < count; ++i) {
        daylight[i] = s0.table[i] + s1.table[i] * m1 + s2.table[i] * m2;
    }
    const double scale = 100.0 / daylight[(560U - minWavelength) / stepSize];
    for (unsigned i = 0; i < count; ++i) {
        table[i] = static_cast<float>(daylight[i] * scale);
    }
}

Diagnostics::String StandardFilter::GetValueString() const
{
    return Diagnostics::String();
}

// ---------------------------------------------------------------- CMetryFilter

CMetryFilter::CMetryFilter()
    : weightfactors(), conditions(), filters(3), illumination(), observer(ObserverUndefined), cachedIllumination()
{
}

CMetryFilter::~CMetryFilter() = default;

CMetryFilter& CMetryFilter::operator=(const CMetryFilter&)
{
    return *this;
}

StandardFilter CMetryFilter::GetIlluFilter(const QVIllumination& illumination)
{
    using namespace Tables;
    switch (static_cast<std::int32_t>(illumination.GetIlluminationTYPE())) {
    case IlluminationA:
        return StandardFilter(IlluminantA, IlluminantAMinimum, IlluminantAMaximum, IlluminantAStep);
    case IlluminationB:
        return StandardFilter(IlluminantB, IlluminantBMinimum, IlluminantBMaximum, IlluminantBStep);
    case IlluminationC:
        return StandardFilter(IlluminantC, IlluminantCMinimum, IlluminantCMaximum, IlluminantCStep);
    case IlluminationD75:
        return StandardFilter(IlluminantD75, IlluminantD75Minimum, IlluminantD75Maximum, IlluminantD75Step);
    case IlluminationD65:
        return StandardFilter(IlluminantD65, IlluminantD65Minimum, IlluminantD65Maximum, IlluminantD65Step);
    case IlluminationD55:
        // The first 107 values of the 1 nm D65 table (300 to 406 nm), taken as
        // 5 nm data from 300 to 830 nm. Not CIE D55: kept as it is, since its
        // white point is part of the engine's results.
        return StandardFilter(IlluminantD65, 300, 830, 5);
    case IlluminationD50:
        return StandardFilter(IlluminantD50, IlluminantD50Minimum, IlluminantD50Maximum, IlluminantD50Step);
    case IlluminationF2:
    case IlluminationF7:
    case IlluminationF11:
    case IlluminationFxx: {
        unsigned number = illumination.GetFValue();
        if (illumination.GetIlluminationTYPE() == IlluminationF2) {
            number = 2;
        } else if (illumination.GetIlluminationTYPE() == IlluminationF7) {
            number = 7;
        } else if (illumination.GetIlluminationTYPE() == IlluminationF11) {
            number = 11;
        }
        if (number < 1 || number > 12) {
            RaiseEmptyTable();
        }
        return StandardFilter(IlluminantF + kFluorescentRowLength * (number - 1), IlluminantFMinimum,
                              IlluminantFMaximum, IlluminantFStep);
    }
    case kDaylightS0:
        return StandardFilter(DaylightS0, DaylightS0Minimum, DaylightS0Maximum, DaylightS0Step);
    case kDaylightS1:
        return StandardFilter(DaylightS1, DaylightS1Minimum, DaylightS1Maximum, DaylightS1Step);
    case kDaylightS2:
        return StandardFilter(DaylightS2, DaylightS2Minimum, DaylightS2Maximum, DaylightS2Step);
    default:
        RaiseCalculationProblem("Unsupported Illumination type");
    }
}

StandardFilter CMetryFilter::GetObserverFilter(const QVObserverTYPE& observer, unsigned short axis)
{
    using namespace Tables;
    if (observer == ObserverTwoDegree) {
        switch (axis) {
        case 0:
            return StandardFilter(TwoDegreeXBar, TwoDegreeXBarMinimum, TwoDegreeXBarMaximum, TwoDegreeXBarStep);
        case 1:
            return StandardFilter(TwoDegreeYBar, TwoDegreeYBarMinimum, TwoDegreeYBarMaximum, TwoDegreeYBarStep);
        case 2:
            return StandardFilter(TwoDegreeZBar, TwoDegreeZBarMinimum, TwoDegreeZBarMaximum, TwoDegreeZBarStep);
        default:
            RaiseEmptyTable();
        }
    }
    if (observer == ObserverTenDegree) {
        switch (axis) {
        case 0:
            return StandardFilter(TenDegreeXBar, TenDegreeXBarMinimum, TenDegreeXBarMaximum, TenDegreeXBarStep);
        case 1:
            return StandardFilter(TenDegreeYBar, TenDegreeYBarMinimum, TenDegreeYBarMaximum, TenDegreeYBarStep);
        case 2:
            return StandardFilter(TenDegreeZBar, TenDegreeZBarMinimum, TenDegreeZBarMaximum, TenDegreeZBarStep);
        default:
            RaiseEmptyTable();
        }
    }
    RaiseCalculationProblem("Unsupported Observer type");
}

float CMetryFilter::GetFilterSum(unsigned short axis) const
{
    if (!weightfactors.IsValid()) {
        return 0.0f;
    }
    return weightfactors->GetFilterSum(axis);
}

Diagnostics::String CMetryFilter::GetValueString() const
{
    Diagnostics::String text("Illumination: ");
    text += illumination.GetValueString();
    text += "; Observer: ";
    text += CMetry::GetValueString(observer);
    return text;
}

void CMetryFilter::SetMeasuringConditions(const QVMeasureConditions& newConditions)
{
    if (weightfactors.IsValid() && conditions.IsValid()) {
        const QVMeasureConditions& cached = *conditions;
        if (newConditions == cached) {
            return;
        }
        const bool sameSpectralConditions = newConditions.illumination == cached.illumination &&
                                            newConditions.observer == cached.observer &&
                                            newConditions.userdefinedIllumination == cached.userdefinedIllumination;
        if (!sameSpectralConditions) {
            // Taking back kept factors instead of building them is safe: they
            // were built from the same illumination and observer, and no one
            // writes to factors once built. User spectra are never kept (the
            // identity of a spectrum says nothing about its values).
            SmartPointer<Weightfactors> next;
            if (!newConditions.userdefinedIllumination.IsValid()) {
                next = TakeRecent(newConditions.illumination, newConditions.observer);
            }
            if (!next.IsValid()) {
                // May raise: then the cache stays as it was.
                next = SmartPointer<Weightfactors>(new Weightfactors(newConditions));
            }
            if (!cached.userdefinedIllumination.IsValid()) {
                KeepRecent(cached.illumination, cached.observer, weightfactors);
            }
            weightfactors = next;
        }
        *conditions = newConditions;
        return;
    }
    weightfactors = SmartPointer<Weightfactors>(new Weightfactors(newConditions));
    conditions = SmartPointer<QVMeasureConditions>(new QVMeasureConditions(newConditions));
}

SmartPointer<Weightfactors> CMetryFilter::TakeRecent(const QVIllumination& wanted, QVObserverTYPE wantedObserver)
{
    for (RecentFactors& slot : recent) {
        if (slot.factors.IsValid() && slot.observer == wantedObserver && slot.illumination == wanted) {
            SmartPointer<Weightfactors> found = slot.factors;
            slot.factors = SmartPointer<Weightfactors>();
            return found;
        }
    }
    return SmartPointer<Weightfactors>();
}

void CMetryFilter::KeepRecent(const QVIllumination& kept, QVObserverTYPE keptObserver,
                              const SmartPointer<Weightfactors>& factors)
{
    // Shift down over the first empty slot (or the oldest one).
    int last = NumberOfRecentFactors - 1;
    for (int i = 0; i < NumberOfRecentFactors; ++i) {
        if (!recent[i].factors.IsValid()) {
            last = i;
            break;
        }
    }
    for (int i = last; i > 0; --i) {
        recent[i] = recent[i - 1];
    }
    recent[0].illumination = kept;
    recent[0].observer = keptObserver;
    recent[0].factors = factors;
}

void CMetryFilter::SetMeasuringConditions(const QVIllumination&, QVObserverTYPE) {}

const QVIllumination& CMetryFilter::GetIllumination()
{
    cachedIllumination = conditions->GetIllumination();
    return cachedIllumination;
}

QVObserverTYPE CMetryFilter::GetObserver()
{
    return conditions->GetObserver();
}

} // namespace CMetry
