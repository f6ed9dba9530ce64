#include "qvimanager/cmetry/weightfactors.h"

#include "qvimanager/cmetry/filter.h"
#include "qvimanager/cmetry/linalg.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/language_service_interface.h"

#include <cmath>

using Utilities::String;

namespace CMetry {

namespace {

constexpr unsigned short kInternalMinimum = 360;
constexpr unsigned short kInternalMaximum = 780;
// 360 to 780 nm at 1 nm.
constexpr long kInternalPoints = kInternalMaximum - kInternalMinimum + 1;

String Translated(const char* message)
{
    return Utilities::LanguageServiceInterface().GetTranslation(String(message));
}

[[noreturn]] void RaiseCalculationProblem(const char* message)
{
    throw Utilities::ExceptionCalculationProblem(Translated(message));
}

// Frees a float array on every way out of a scope.
struct OwnedArray {
    float* values;
    explicit OwnedArray(float* owned) : values(owned) {}
    ~OwnedArray()
    {
        delete[] values;
    }
    OwnedArray(const OwnedArray&) = delete;
    OwnedArray& operator=(const OwnedArray&) = delete;
};

} // namespace

// ---------------------------------------------------------------- life cycle

Weightfactors::Weightfactors()
    : illumination(nullptr), observer(nullptr), kFactor(0.0f), internalMinimum(kInternalMinimum),
      internalMaximum(kInternalMaximum), weights(nullptr), numberOfDataPoints(0), instrumentMinimum(0),
      instrumentMaximum(0), instrumentStep(0), sums{0.0f, 0.0f, 0.0f}, emission(false)
{
}

Weightfactors::Weightfactors(const QVMeasureConditions& conditions) : Weightfactors()
{
    try {
        SetInstrumentData(conditions);
        SetObserver(conditions.GetObserver());
        if (!emission) {
            InterpolateIllumination(conditions);
        }
        SetKFactor();
        CalculateWeightfactors();
        CalculateSum();
    } catch (...) {
        Release();
        throw;
    }
}

Weightfactors::Weightfactors(const Weightfactors& other) : Weightfactors()
{
    CopyFrom(other);
}

Weightfactors& Weightfactors::operator=(const Weightfactors& other)
{
    if (this != &other) {
        Release();
        CopyFrom(other);
    }
    return *this;
}

Weightfactors::~Weightfactors()
{
    Release();
}

void Weightfactors::CopyFrom(const Weightfactors& other)
{
    kFactor = other.kFactor;
    internalMinimum = other.internalMinimum;
    internalMaximum = other.internalMaximum;
    numberOfDataPoints = other.numberOfDataPoints;
    instrumentMinimum = other.instrumentMinimum;
    instrumentMaximum = other.instrumentMaximum;
    instrumentStep = other.instrumentStep;
    emission = other.emission;
    for (int axis = 0; axis < 3; ++axis) {
        sums[axis] = other.sums[axis];
    }
    if (other.illumination != nullptr) {
        illumination = new float[kInternalPoints];
        LinAlg::CopyVector(illumination, other.illumination, kInternalPoints);
    }
    if (other.observer != nullptr) {
        observer = new float*[3]();
        for (int axis = 0; axis < 3; ++axis) {
            observer[axis] = new float[kInternalPoints];
            LinAlg::CopyVector(observer[axis], other.observer[axis], kInternalPoints);
        }
    }
    if (other.weights != nullptr) {
        weights = new float*[3]();
        for (int axis = 0; axis < 3; ++axis) {
            weights[axis] = new float[numberOfDataPoints];
            LinAlg::CopyVector(weights[axis], other.weights[axis], numberOfDataPoints);
        }
    }
}

namespace {

void FreeAxes(float**& axes)
{
    if (axes != nullptr) {
        for (int axis = 0; axis < 3; ++axis) {
            delete[] axes[axis];
        }
        delete[] axes;
        axes = nullptr;
    }
}

} // namespace

void Weightfactors::Release()
{
    delete[] illumination;
    illumination = nullptr;
    FreeAxes(observer);
    FreeAxes(weights);
}

// ---------------------------------------------------------------- public

const float* Weightfactors::operator[](unsigned short axis) const
{
    if (axis > 2) {
        throw Utilities::ExceptionNullpointer(Translated("Invalid Axis"));
    }
    return weights[axis];
}

float Weightfactors::GetFilterSum(unsigned short axis) const
{
    return axis > 2 ? 0.0f : sums[axis];
}

Diagnostics::String Weightfactors::GetValueString() const
{
    return Diagnostics::String();
}

// ---------------------------------------------------------------- construction steps

void Weightfactors::CheckInstrumentData(short points, short minimum, short maximum)
{
    const char* const bandwidth = "Measure conditions: Check bandwidth of measure data";
    const char* const internal = "Measure conditions: measure data bandwith conflicts with internal calculation bandwith.";
    if (points < 4) {
        RaiseCalculationProblem("Measure conditions: Too few measure data");
    }
    if (maximum <= minimum || maximum <= kInternalMinimum || kInternalMaximum <= minimum || maximum <= minimum) {
        RaiseCalculationProblem(bandwidth);
    }
    // With at least 4 points and a positive bandwidth the step is known; a
    // step of 0 (fewer nm than points) divides nothing.
    const int step = (maximum - minimum) / (points - 1);
    if (step == 0 || (kInternalMaximum - kInternalMinimum) % step != 0) {
        RaiseCalculationProblem("Measure conditions: measure data bandwith conflicts Step size is not a integer.");
    }
    if ((kInternalMinimum - minimum) % step != 0 || (kInternalMinimum - maximum) % step != 0) {
        RaiseCalculationProblem(internal);
    }
}

void Weightfactors::SetInstrumentData(const QVMeasureConditions& conditions)
{
    const short points = conditions.GetMeasureCondition(String("Physical.NumberOfDataPointsSpectrum")).GetShort();
    const short maximum = conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMax")).GetShort();
    const short minimum = conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMin")).GetShort();
    CheckInstrumentData(points, minimum, maximum);
    numberOfDataPoints = static_cast<unsigned short>(points);
    instrumentMaximum = static_cast<unsigned short>(maximum);
    instrumentMinimum = static_cast<unsigned short>(minimum);
    instrumentStep = static_cast<unsigned short>((maximum - minimum) / (points - 1));
    if (conditions.GetIllumination().GetIlluminationTYPE() == IlluminationEmission) {
        emission = true;
    }
}

void Weightfactors::SetObserver(const QVObserverTYPE& observerType)
{
    float** adjusted = new float*[3]();
    try {
        for (unsigned short axis = 0; axis < 3; ++axis) {
            adjusted[axis] = AdjustObserverVector(CMetryFilter::GetObserverFilter(observerType, axis));
        }
    } catch (...) {
        FreeAxes(adjusted);
        throw;
    }
    FreeAxes(observer);
    observer = adjusted;
}

float* Weightfactors::AdjustObserverVector(const StandardFilter& table)
{
    auto* adjusted = new float[kInternalPoints];
    const long first = table.GetMinWavelength();
    const long last = table.GetMaxWavelength();
    const float* values = table.GetFilter();
    for (long i = 0; i < kInternalPoints; ++i) {
        const long wavelength = kInternalMinimum + i;
        adjusted[i] = (wavelength < first || wavelength > last) ? 0.0f : values[wavelength - first];
    }
    return adjusted;
}

float* Weightfactors::AdjustIlluminationVector(const StandardFilter& table)
{
    const long step = table.GetStepSize();
    const long points = (kInternalMaximum - kInternalMinimum) / step + 1;
    const long first = table.GetMinWavelength();
    const long last = table.GetMaxWavelength();
    const long tableCount = (last - first) / step + 1;
    auto* adjusted = new float[points];
    const float* values = table.GetFilter();
    for (long p = 0; p < points; ++p) {
        const long wavelength = kInternalMinimum + p * step;
        if (wavelength < first) {
            adjusted[p] = values[0];
        } else if (wavelength > last) {
            adjusted[p] = values[tableCount - 1];
        } else {
            adjusted[p] = values[(wavelength - first) / step];
        }
    }
    return adjusted;
}

float** Weightfactors::GetLagrange2Coeff(unsigned short step, unsigned short offset)
{
    const long s = step;
    auto** c = new float*[3];
    for (int node = 0; node < 3; ++node) {
        c[node] = new float[step];
    }
    for (long r = 0; r < s; ++r) {
        const long x = offset + r;
        c[0][r] = static_cast<float>((x - s) * (x - 2 * s)) / static_cast<float>(2 * s * s);
        c[1][r] = static_cast<float>(x * (x - 2 * s)) / static_cast<float>(-(s * s));
        c[2][r] = static_cast<float>(x * (x - s)) / static_cast<float>(2 * s * s);
    }
    return c;
}

float** Weightfactors::GetLagrange3Coeff(unsigned short step, unsigned short offset)
{
    const long s = step;
    auto** c = new float*[4];
    for (int node = 0; node < 4; ++node) {
        c[node] = new float[step];
    }
    for (long r = 0; r < s; ++r) {
        const long x = offset + r;
        c[0][r] = static_cast<float>((x - s) * (x - 2 * s) * (x - 3 * s)) / static_cast<float>(-6 * s * s * s);
        c[1][r] = static_cast<float>(x * (x - 2 * s) * (x - 3 * s)) / static_cast<float>(2 * s * s * s);
        c[2][r] = static_cast<float>(x * (x - s) * (x - 3 * s)) / static_cast<float>(-2 * s * s * s);
        c[3][r] = static_cast<float>(x * (x - s) * (x - 2 * s)) / static_cast<float>(6 * s * s * s);
    }
    return c;
}

void Weightfactors::FreeCoefficients(float** coefficients, unsigned short count)
{
    for (unsigned short node = 0; node < count; ++node) {
        delete[] coefficients[node];
    }
    delete[] coefficients;
}

void Weightfactors::InterpolateIllumination(const QVMeasureConditions& conditions)
{
    StandardFilter table;
    const QVIlluminationTYPE type = conditions.GetIllumination().GetIlluminationTYPE();
    if (type == IlluminationUserdefined) {
        table.SetUserIllumination(conditions);
    } else if (type == IlluminationDxx) {
        table.SetDxxIllumination(conditions);
    } else {
        table = CMetryFilter::GetIlluFilter(conditions.GetIllumination());
    }
    const OwnedArray v(AdjustIlluminationVector(table));
    const long s = table.GetStepSize();
    const long points = (kInternalMaximum - kInternalMinimum) / s + 1;
    auto* out = new float[kInternalPoints];
    delete[] illumination;
    illumination = out;

    // A quadratic through the first three points for the first interval.
    float** first = GetLagrange2Coeff(static_cast<unsigned short>(s), 0);
    for (long r = 0; r < s; ++r) {
        float sum = 0.0f;
        for (int node = 0; node < 3; ++node) {
            sum += first[node][r] * v.values[node];
        }
        out[r] = sum;
    }
    FreeCoefficients(first, 3);

    // A cubic through four points centred on every inner interval.
    float** inner = GetLagrange3Coeff(static_cast<unsigned short>(s), static_cast<unsigned short>(s));
    for (long j = 0; j <= points - 4; ++j) {
        for (long r = 0; r < s; ++r) {
            float sum = 0.0f;
            for (int node = 0; node < 4; ++node) {
                sum += inner[node][r] * v.values[j + node];
            }
            out[s * (j + 1) + r] = sum;
        }
    }
    FreeCoefficients(inner, 4);

    // A quadratic through the last three points for the last interval.
    float** last = GetLagrange2Coeff(static_cast<unsigned short>(s), static_cast<unsigned short>(s));
    for (long r = 0; r < s; ++r) {
        float sum = 0.0f;
        for (int node = 0; node < 3; ++node) {
            sum += last[node][r] * v.values[points - 3 + node];
        }
        out[s * (points - 2) + r] = sum;
    }
    FreeCoefficients(last, 3);

    out[s * (points - 1)] = v.values[points - 1];
}

void Weightfactors::SetKFactor()
{
    if (emission) {
        kFactor = 0.683f;
        return;
    }
    // 420 values: 360 to 779 nm; the 780 nm entry takes no part.
    kFactor = 100.0f / LinAlg::DotProd(illumination, observer[1], kInternalMaximum - kInternalMinimum);
}

void Weightfactors::CalculateWeightfactors()
{
    const long s = instrumentStep;
    const long n = (kInternalMaximum - kInternalMinimum) / s;
    const long points = numberOfDataPoints;
    if (weights == nullptr) {
        weights = new float*[3]();
        for (int axis = 0; axis < 3; ++axis) {
            weights[axis] = new float[points]();
        }
    }
    const OwnedArray coarse(new float[n + 1]);
    const OwnedArray products(new float[kInternalPoints]);
    float* const F = coarse.values;
    float* const W = products.values;
    float** a = GetLagrange2Coeff(static_cast<unsigned short>(s), 0);
    float** b = GetLagrange3Coeff(static_cast<unsigned short>(s), static_cast<unsigned short>(s));
    float** c = GetLagrange2Coeff(static_cast<unsigned short>(s), static_cast<unsigned short>(s));

    // I(q, m): the s coefficients m against the s products of interval q.
    const auto I = [W, s](long q, const float* m) { return LinAlg::DotProd(m, W + q * s, s); };

    for (int axis = 0; axis < 3; ++axis) {
        for (long j = 0; j < kInternalPoints; ++j) {
            W[j] = emission ? observer[axis][j] * kFactor : illumination[j] * observer[axis][j] * kFactor;
        }

        F[0] = I(0, a[0]);
        F[0] += I(1, b[0]);
        F[1] = I(0, a[1]);
        F[1] += I(1, b[1]);
        F[1] += I(2, b[0]);
        F[2] = I(0, a[2]);
        F[2] += I(1, b[2]);
        F[2] += I(2, b[1]);
        F[2] += I(3, b[0]);
        for (long i = 3; i <= n - 3; ++i) {
            F[i] = I(i - 2, b[3]);
            F[i] += I(i - 1, b[2]);
            F[i] += I(i, b[1]);
            F[i] += I(i + 1, b[0]);
        }
        F[n - 2] = I(n - 4, b[3]);
        F[n - 2] += I(n - 3, b[2]);
        F[n - 2] += I(n - 2, b[1]);
        F[n - 2] += I(n - 1, c[0]);
        F[n - 1] = I(n - 3, b[3]);
        F[n - 1] += I(n - 2, b[2]);
        F[n - 1] += I(n - 1, c[1]);
        F[n] = I(n - 2, b[3]);
        F[n] += I(n - 1, c[2]);
        F[n] += W[n * s];

        // 380 nm lies d coarse points above 360 nm; 730 nm lies -e below 780.
        const long d = (instrumentMinimum - kInternalMinimum) / s;
        const long e = (instrumentMaximum - kInternalMinimum) / s - n;
        float* weight = weights[axis];
        if (d < 0) {
            for (long i = 0; i < 1 - d; ++i) {
                weight[i] = 0.0f;
            }
        } else {
            weight[0] = 0.0f;
        }
        if (e < 1) {
            weight[points - 1] = 0.0f;
        } else {
            for (long i = points - 1 - e; i < points; ++i) {
                weight[i] = 0.0f;
            }
        }
        // Coarse points outside the instrument's range fold into its end
        // points; F[n] (780 nm) is dropped.
        for (long i = 0; i < n; ++i) {
            long p = i - d;
            if (p < 0) {
                p = 0;
            }
            if (p > points - 1) {
                p = points - 1;
            }
            if (p == 0 || p == points - 1) {
                weight[p] += F[i];
            } else {
                weight[p] = F[i];
            }
        }
    }
    FreeCoefficients(a, 3);
    FreeCoefficients(b, 4);
    FreeCoefficients(c, 3);
}

void Weightfactors::CalculateSum()
{
    sums[0] = LinAlg::SumV(weights[0], numberOfDataPoints);
    sums[1] = 100.0f;
    sums[2] = LinAlg::SumV(weights[2], numberOfDataPoints);
}

void Weightfactors::BandpassCorrection()
{
    const long count = numberOfDataPoints;
    for (int axis = 0; axis < 3; ++axis) {
        const float* w = weights[axis];
        auto* corrected = new float[count];
        corrected[0] = 1.083f * w[0] - 0.083f * w[1];
        for (long i = 1; i < count - 1; ++i) {
            corrected[i] = 1.166f * w[i] - 0.083f * w[i - 1] - 0.083f * w[i + 1];
        }
        corrected[count - 1] = 1.083f * w[count - 1] - 0.083f * w[count - 2];
        delete[] weights[axis];
        weights[axis] = corrected;
    }
}

void Weightfactors::Round()
{
    for (int axis = 0; axis < 3; ++axis) {
        for (long i = 0; i < numberOfDataPoints; ++i) {
            weights[axis][i] = static_cast<float>(std::floor(weights[axis][i] * 1000.0 + 0.5) / 1000.0);
        }
    }
}

} // namespace CMetry
