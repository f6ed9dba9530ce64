#include "qvimanager/cmetry/color_temperature.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/foundation/containers.h"

#include <cmath>
#include <vector>

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

// Planck's law on the grid of the conditions: at each point
// c1 / wavelength^5 / (exp(c2 / (T x wavelength)) - 1) in double precision,
// delivered as float. The first quotient does not depend on the
// temperature: it is computed once per grid, the same double every time.
// The grid is the conditions' count and first wavelength with the step
// (high - low) / count + 1 ((730 - 380) / 36 + 1 = 10: the expression is
// odd, its value right).
class PlanckGrid {
public:
    explicit PlanckGrid(const QVMeasureConditions& conditions)
        : count(conditions.GetMeasureCondition(String("Physical.NumberOfDataPointsSpectrum")).GetShort())
    {
        const short low = conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMin")).GetShort();
        const short high = conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMax")).GetShort();
        const int step = (high - low) / count + 1;
        const double c1 = 2.0 * kPlanck * kSpeedOfLight * kSpeedOfLight;
        for (short i = 0; i < count; ++i) {
            const double wavelength = (low + i * step) * 1e-9;
            wavelengths.push_back(wavelength);
            quotients.push_back(c1 / std::pow(wavelength, 5));
        }
    }
    short Count() const { return count; }
    float Value(float temperature, short i) const
    {
        const double c2 = kSpeedOfLight * kPlanck / kBoltzmann;
        const auto at = static_cast<std::size_t>(i);
        return static_cast<float>(quotients[at] / (std::exp(c2 / (temperature * wavelengths[at])) - 1.0));
    }

private:
    short count;
    std::vector<double> wavelengths;
    std::vector<double> quotients;
};

// XYZ of a radiator normalised to Y = 100.
void NormaliseToY100(QVColorVector& xyz)
{
    const double y = xyz[1];
    xyz[0] = static_cast<float>(100.0 * xyz[0] / y);
    xyz[1] = 100.0f;
    xyz[2] = static_cast<float>(100.0 * xyz[2] / y);
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
    const PlanckGrid grid(conditions);
    Utilities::Vector<float> values(static_cast<unsigned long>(grid.Count()));
    for (short i = 0; i < grid.Count(); ++i) {
        values[static_cast<unsigned long>(i)] = grid.Value(temperature, i);
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
    NormaliseToY100(xyz);
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

    // The distance of the radiator at a temperature to the target: the u, v
    // of GetPlanckRadiatorXYZ(temperature, radiatorConditions). Its grid and
    // its two condition sets are the same for every temperature of the
    // search, so they are made once here and only the radiator's values are
    // computed per temperature: the same numbers without three condition
    // copies, three parsed condition values, an allocation and 36 powers
    // per step.
    const PlanckGrid grid(radiatorConditions);
    QVMeasureConditions emission(radiatorConditions);
    emission.SetMeasureCondition(kIlluminationKey, String("Emission"));
    QVMeasureConditions radiatorXYZConditions(radiatorConditions);
    radiatorXYZConditions.SetMeasureCondition(kColorSpaceKey, String("CIEXYZ"));
    radiatorXYZConditions.SetMeasureCondition(kIlluminationKey, String("Emission"));
    QVSpectrum radiatorSpectrum;
    radiatorSpectrum.conditions = emission;
    const bool onGrid = grid.Count() == QVSpectrum::NumberOfDataPoints;
    const auto distanceAt = [&](float temperature, bool& converted) {
        QVColorVector radiator;
        if (onGrid) {
            for (short i = 0; i < grid.Count(); ++i) {
                radiatorSpectrum.values[i] = grid.Value(temperature, i);
            }
            if (CMetryCalculator::GetVector_CIEXYZ(radiatorSpectrum, radiatorXYZConditions, radiator)) {
                NormaliseToY100(radiator);
            }
        } else {
            radiator = GetPlanckRadiatorXYZ(temperature, radiatorConditions);
        }
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
    // Where the bracket cannot narrow any more the search ends as if it had
    // converged (see SearchEnd); a search that converges ends long before.
    SearchEnd end;
    while (!(T[1] - T[0] <= Tolerance && T[2] - T[1] <= Tolerance)) {
        if (end.Reached(T)) {
            break;
        }
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
    rounds = end.Rounds();
    if (T[1] < MinTemperature || T[1] > MaxTemperature) {
        RaiseFailure();
    }
    return std::floor(T[Smallest(D)] + 0.5f);
}

bool ColorTemperature::SearchEnd::Reached(const float (&bracket)[3])
{
    // Ties move only the middle point: above about 13700 K neighbouring
    // radiators can have the same float u, v, and the middle point can then
    // swing between two values for ever with a half of the bracket wider
    // than the tolerance. A bracket that comes back to where it was two
    // rounds before is in such a swing (every distance is that of its
    // temperature, so the rounds would repeat for ever).
    if (rounds >= MaximumRounds ||
        (bracket[0] == before[1][0] && bracket[1] == before[1][1] && bracket[2] == before[1][2])) {
        return true;
    }
    for (int i = 0; i < 3; ++i) {
        before[1][i] = before[0][i];
        before[0][i] = bracket[i];
    }
    ++rounds;
    return false;
}

int ColorTemperature::SearchEnd::Rounds() const
{
    return rounds;
}

Diagnostics::String ColorTemperature::GetValueString() const
{
    return Diagnostics::String();
}

} // namespace CMetry
