#ifndef QVIMANAGER_CMETRY_COLOR_TEMPERATURE_H
#define QVIMANAGER_CMETRY_COLOR_TEMPERATURE_H

// ColorTemperature: the correlated colour temperature of a spectrum, the
// temperature of the Planckian radiator whose CIE 1960 u, v chromaticity lies
// nearest to the spectrum's. A golden-section search in reciprocal
// temperature over a bracket of three temperatures, from 200 K to 1000000 K,
// stopping when both halves of the bracket are at most 0.5 K wide; the result
// is rounded to whole kelvin.
//
// The search has two further ends, for brackets that stop narrowing before
// both halves are within the tolerance:
//
//  - The bracket (its three temperatures) is the one of two rounds before.
//    Single-precision u, v and distances tie between neighbouring
//    temperatures; a tie moves only the middle point, which can then swing
//    between two values for ever. Every distance belongs to its
//    temperature, so such a search would repeat the same two rounds without
//    end.
//  - 500 rounds have been made: a guard against a longer swing. No input is
//    known to reach it; in scans of 300000 radiators from 1000 K to
//    2000000 K under both observers, 200000 random spectra under seven
//    illuminants and 1.5 million u, v targets, the longest search took 32
//    rounds.
//
// At either end the search goes on as after a converged one: a middle point
// outside 200 K to 1000000 K raises, otherwise the nearest of the three
// points is rounded to whole kelvin. That point lies within the bracket,
// one of whose halves is then wider than 0.5 K (for radiators the whole
// bracket spans a few kelvin, up to about 300 K near 1000000 K).
//
// Where the first end takes effect, found by scanning:
//  - Planckian radiators, and spectra of their chromaticity, from about
//    13700 K up (15300 K under the 10 degree observer): a handful below
//    20000 K, about 1 radiator in 200 from 20000 K to 30000 K, 1 in 40 to
//    40000 K, 1 in 13 to 60000 K, 1 in 4 to 100000 K, 2 in 5 to 200000 K
//    and more than half above that. Under the 2 degree observer, for
//    instance, the radiators of 20067 K, 67500 K, 101250 K and 341719 K.
//  - Most often among arbitrary spectra: chromaticities beyond the hot end
//    of the locus (very blue light), whose search ends near 1000000 K; for
//    instance light at 380 nm alone under the 10 degree observer.
//  - Some chromaticities far off the locus, with results from about
//    1000 K up.
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

    // The correlated colour temperature in whole kelvin, at whichever end
    // the search reaches first (the tolerance, a repeated bracket or 500
    // rounds; see above). Raises ExceptionCMetry with "Calculation of
    // ColorTemperature failed" when the spectrum's chromaticity or a first
    // radiator cannot be computed (for instance white base "Paper" without a
    // paper white), or when the search ends outside the range.
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

    // The two ends of a search whose bracket stops narrowing (see above).
    class SearchEnd {
    public:
        static constexpr int MaximumRounds = 500;
        // Called before each round with the bracket: true when the bracket
        // is the one of two rounds before or MaximumRounds rounds have been
        // made; otherwise the round is counted and false returned.
        bool Reached(const float (&bracket)[3]);
        int Rounds() const;

    private:
        // The brackets of the last two rounds, newest first; no temperature
        // is negative, so -1 matches none.
        float before[2][3] = {{-1.0f, -1.0f, -1.0f}, {-1.0f, -1.0f, -1.0f}};
        int rounds = 0;
    };

    float MinTemperature;
    float MaxTemperature;
    float Tolerance;
    // Rounds of the last search, for the benchmark's figures and the tests.
    int rounds = 0;
};

} // namespace CMetry

#endif
