#ifndef QVIMANAGER_CMETRY_COLOR_TEMPERATURE_H
#define QVIMANAGER_CMETRY_COLOR_TEMPERATURE_H

// ColorTemperature: the correlated colour temperature of a spectrum, the
// temperature of the Planckian radiator whose CIE 1960 u, v chromaticity lies
// nearest to the spectrum's. A golden-section search in reciprocal
// temperature over a bracket of three temperatures, from 200 K to 1000000 K,
// stopping when both halves of the bracket are at most 0.5 K wide; the result
// is rounded to whole kelvin.
//
// A search whose bracket stops narrowing at the resolution of float (hot
// radiators above about 26000 K, where neighbouring temperatures give the
// same u, v and tied distances make the middle point swing for ever) ends
// when the bracket repeats itself, or after 500 rounds, with its nearest
// point, instead of running for ever.
//
// The radiation constants are the rounded values h = 6.6262e-34,
// k = 1.3806e-23 and c = 299790000, not the current ones.
//
// Every evaluation goes through the shared filter of the calculator and
// leaves it set for "Emission".

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/diagnostics/diagnostic_string.h"

namespace CMetry {

class ColorTemperature {
public:
    // 200 K, 1000000 K, 0.5 K.
    ColorTemperature();
    ColorTemperature(const ColorTemperature& other) = default;
    ColorTemperature& operator=(const ColorTemperature& other) = default;

    // The correlated colour temperature in whole kelvin. Raises
    // ExceptionCMetry with "Calculation of ColorTemperature failed" when the
    // spectrum's chromaticity or a first radiator cannot be computed (for
    // instance white base "Paper" without a paper white), or when the search
    // ends outside the range.
    float GetColorTemperature(const QVSpectrum& spectrum);
    // The Planckian spectrum of the temperature on the conditions' grid,
    // under conditions with illumination "Emission". Its wavelength step is
    // (high - low) / n + 1 in integers: 10 nm for the library's grid.
    QVSpectrum GetPlanckRadiator(float temperature, const QVMeasureConditions& conditions);
    // Its XYZ, normalised to Y = 100 (unnormalised if it cannot be
    // computed).
    QVColorVector GetPlanckRadiatorXYZ(float temperature, const QVMeasureConditions& conditions);
    // The fourth power of the distance of the first two components: only the
    // order of distances matters to the search.
    float WeightDistance(const QVColorVector& first, const QVColorVector& second);

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

private:
    friend class TestAccess;

    float MinTemperature;
    float MaxTemperature;
    float Tolerance;
    // Rounds of the last search, for the benchmark's figures and the tests.
    int rounds = 0;
};

} // namespace CMetry

#endif
