#include "qvimanager/cmetry/color_temperature.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/foundation/containers.h"

#include <cmath>

using Utilities::String;

namespace CMetry {

namespace {

constexpr double kPlanck = 6.6262e-34;
constexpr double kBoltzmann = 1.3806e-23;
constexpr double kSpeedOfLight = 299790000.0;

const String kColorSpaceKey("ColorSpaceDescription.Type");
const String kIlluminationKey("Colorimetric.Illumination");

[[noreturn]] void RaiseFailure()
{
    throw ExceptionCMetry(String("Calculation of ColorTemperature failed"));
}

// The index of the smallest distance; ties go to the later index.
int Smallest(const float (&distance)[3])
{
    if (distance[0] < distance[1]) {
        return distance[0] < distance[2] ? 0 : 2;
    }
    return distance[1] < distance[2] ? 1 : 2;
}

} // namespace

ColorTemperature::ColorTemperature() : MinTemperature(200.0f), MaxTemperature(1000000.0f), Tolerance(0.5f) {}

QVSpectrum ColorTemperature::GetPlanckRadiator(float temperature, const QVMeasureConditions& conditions)
{
    const double c1 = 2.0 * kPlanck * kSpeedOfLight * kSpeedOfLight;
    const double c2 = kSpeedOfLight * kPlanck / kBoltzmann;
    const short count = conditions.GetMeasureCondition(String("Physical.NumberOfDataPointsSpectrum")).GetShort();
    const short low = conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMin")).GetShort();
    const short high = conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMax")).GetShort();
    // (730 - 380) / 36 + 1 = 10: the expression is odd, its value right.
    const int step = (high - low) / count + 1;
    Utilities::Vector<float> values(static_cast<unsigned long>(count));
    for (short i = 0; i < count; ++i) {
        const double wavelength = (low + i * step) * 1e-9;
        values[static_cast<unsigned long>(i)] = static_cast<float>(
            c1 / std::pow(wavelength, 5) / (std::exp(c2 / (temperature * wavelength)) - 1.0));
    }
    QVMeasureConditions emission(conditions);
    emission.SetMeasureCondition(kIlluminationKey, String("Emission"));
    return QVSpectrum(values, emission);
}

QVColorVector ColorTemperature::GetPlanckRadiatorXYZ(float temperature, const QVMeasureConditions& conditions)
{
    const QVSpectrum radiator = GetPlanckRadiator(temperature, conditions);
    QVMeasureConditions xyzConditions(conditions);
    xyzConditions.SetMeasureCondition(kColorSpaceKey, String("CIEXYZ"));
    xyzConditions.SetMeasureCondition(kIlluminationKey, String("Emission"));
    QVColorVector xyz;
    if (!CMetryCalculator::GetVector_CIEXYZ(radiator, xyzConditions, xyz)) {
        return xyz;
    }
    const double y = xyz[1];
    xyz[0] = static_cast<float>(100.0 * xyz[0] / y);
    xyz[1] = 100.0f;
    xyz[2] = static_cast<float>(100.0 * xyz[2] / y);
    return xyz;
}

float ColorTemperature::WeightDistance(const QVColorVector& first, const QVColorVector& second)
{
    const float d0 = first[0] - second[0];
    const float d1 = first[1] - second[1];
    return static_cast<float>(std::pow(std::pow(d0, 2) + std::pow(d1, 2), 2));
}

float ColorTemperature::GetColorTemperature(const QVSpectrum& spectrum)
{
    // The target: the sample's u, v.
    QVMeasureConditions xyzConditions(spectrum.GetMeasureConditions());
    xyzConditions.SetMeasureCondition(kColorSpaceKey, String("CIEXYZ"));
    QVColorVector target;
    bool ok = CMetryCalculator::GetVector_CIEXYZ(spectrum, xyzConditions, target);
    if (ok) {
        ok = CMetryCalculator::GetVector_CIEuvY1960(target, target);
    }
    QVMeasureConditions radiatorConditions(spectrum.GetMeasureConditions());
    radiatorConditions.SetMeasureCondition(kIlluminationKey, String("Emission"));

    // The distance of the radiator at a temperature to the target.
    const auto distanceAt = [&](float temperature, bool& converted) {
        QVColorVector radiator = GetPlanckRadiatorXYZ(temperature, radiatorConditions);
        converted = CMetryCalculator::GetVector_CIEuvY1960(radiator, radiator) && converted;
        return WeightDistance(radiator, target);
    };

    float T[3] = {MinTemperature, 0.0f, MaxTemperature};
    T[1] = 2.0f / (1.0f / T[0] + 1.0f / T[2]);
    float D[3];
    for (int i = 0; i < 3; ++i) {
        D[i] = distanceAt(T[i], ok);
    }
    if (!ok) {
        RaiseFailure();
    }
    // Re-centre the bracket on the nearest point.
    switch (Smallest(D)) {
    case 0:
        T[2] = T[1];
        T[1] = T[0];
        D[2] = D[1];
        D[1] = D[0];
        break;
    case 2:
        T[0] = T[1];
        T[1] = T[2];
        D[0] = D[1];
        D[1] = D[2];
        break;
    default:
        break;
    }
    // Golden section in reciprocal temperature; a tie goes to the new point.
    // Above about 26000 K neighbouring radiators can have the same float
    // u, v: ties then move only the middle point, which can swing between
    // two values for ever with a half of the bracket wider than the
    // tolerance. A bracket that comes back to where it was two rounds before
    // cannot narrow any more, and the search ends there as if converged; so
    // does any search after kMaximumRounds rounds. A search that converges
    // is not affected: it ends long before either.
    constexpr int kMaximumRounds = 500;
    float before[2][3] = {{-1.0f, -1.0f, -1.0f}, {-1.0f, -1.0f, -1.0f}};
    rounds = 0;
    while (!(T[1] - T[0] <= Tolerance && T[2] - T[1] <= Tolerance)) {
        if (rounds >= kMaximumRounds ||
            (T[0] == before[1][0] && T[1] == before[1][1] && T[2] == before[1][2])) {
            break;
        }
        for (int i = 0; i < 3; ++i) {
            before[1][i] = before[0][i];
            before[0][i] = T[i];
        }
        ++rounds;
        float g = 1.0f / T[2] - 1.0f / T[1];
        float t = 1.0f / (1.0f / T[2] - 0.61803f * g);
        float d = distanceAt(t, ok);
        if (d <= D[1]) {
            T[1] = t;
            D[1] = d;
        } else {
            T[2] = t;
            D[2] = d;
        }
        g = 1.0f / T[0] - 1.0f / T[1];
        t = 1.0f / (1.0f / T[0] - 0.61803f * g);
        d = distanceAt(t, ok);
        if (d <= D[1]) {
            T[1] = t;
            D[1] = d;
        } else {
            T[0] = t;
            D[0] = d;
        }
    }
    if (T[1] < MinTemperature || T[1] > MaxTemperature) {
        RaiseFailure();
    }
    return std::floor(T[Smallest(D)] + 0.5f);
}

Diagnostics::String ColorTemperature::GetValueString() const
{
    return Diagnostics::String();
}

} // namespace CMetry
