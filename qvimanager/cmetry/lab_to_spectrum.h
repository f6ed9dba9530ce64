#ifndef QVIMANAGER_CMETRY_LAB2SPEC_H
#define QVIMANAGER_CMETRY_LAB2SPEC_H

// Lab2Spec: a plausible 36-point reflectance spectrum for a Lab vector, the
// inverse of the tristimulus sum, which has no unique solution.
//
// A greedy coordinate search with no stored basis: starting from a flat 0.5,
// each round moves the one point whose response to a unit impulse (its XYZ
// under the vector's conditions) points most nearly along the remaining XYZ
// difference, by the projection of that difference on it, keeping every
// value in 0 to 1. The search ends
//   - with success when the XYZ difference is small (squared length below
//     0.001) and the Lab difference (CIELab, or CIE94 1:1:1) below the
//     tolerance,
//   - with failure when a round gains nothing measurable (below 1e-15),
//     which overrules a success found in the same round, or after more than
//     maxRounds rounds, so at most maxRounds + 1 rounds run.
// The spectrum built so far is written in both cases.

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"

namespace CMetry {

class Lab2Spec {
public:
    Lab2Spec() = default;
    Lab2Spec(const Lab2Spec& other) = default;
    Lab2Spec& operator=(const Lab2Spec& other) = default;

    // True when the colour was reached; the spectrum is written either way,
    // under the vector's conditions. Leaves the shared weight factors set for
    // those conditions.
    bool GetSpectrum(const QVColorVector& lab, QVSpectrum& spectrum, double tolerance, bool useDeltaE94,
                     int maxRounds);

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

private:
    friend class TestAccess;

    // Basis spectra of a band method that is switched off; the search does
    // not use them.
    Utilities::Vector<QVSpectrum> BasisSpectra;
    // Rounds of the last search, for the tests.
    int lastRounds = 0;
};

} // namespace CMetry

#endif
