#ifndef QVIMANAGER_CMETRY_WEIGHTFACTORS_H
#define QVIMANAGER_CMETRY_WEIGHTFACTORS_H

// Weightfactors: three weight vectors on the instrument's 36-point grid for
// one illuminant and observer, such that a tristimulus component is one dot
// product with a reflectance spectrum, accumulated in single precision:
//
//   component(axis) = sum over i of weight[axis][i] * reflectance[i]
//
// The factors are computed from 1 nm data over 360 to 780 nm (421 values):
// the illuminant is brought to 1 nm by Lagrange interpolation (a quadratic
// in the first and last interval, a cubic centred on every other), each 1 nm
// product of illuminant, observer and k contributes to the surrounding 10 nm
// grid points with interpolation coefficients, and the coarse weights
// outside the instrument's 380 to 730 nm are folded into its end points. The
// 780 nm weight is computed and dropped. k normalises Y to 100 (0.683 for an
// emissive source, whose weights are the observer alone).
//
// The sum of axis 1 is the constant 100; those of axes 0 and 2 are the white
// point (X, Z) of the illuminant and observer.
//
// All arithmetic is single precision in the stated order of summation.

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"

namespace CMetry {

class StandardFilter;

class Weightfactors {
public:
    // Computes everything: instrument data (with its checks), observer,
    // illuminant at 1 nm (not for Emission), k, weights, sums. Raises
    // ExceptionCalculationProblem for a grid it cannot use, for an
    // illuminant or observer without a table (from CMetryFilter), and
    // ExceptionNullpointer for a user-defined illumination that is missing.
    explicit Weightfactors(const QVMeasureConditions& conditions);
    Weightfactors(const Weightfactors& other);
    Weightfactors& operator=(const Weightfactors& other);
    ~Weightfactors();

    // The weights of an axis (36 values). An axis above 2 raises
    // ExceptionNullpointer with "Invalid Axis".
    const float* operator[](unsigned short axis) const;
    // The sum of an axis; 100 for axis 1; 0 for an axis above 2.
    float GetFilterSum(unsigned short axis) const;

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

protected:
    friend class TestAccess;

    // Internal range 360 to 780 nm, everything else 0 or empty.
    Weightfactors();

    // Reads the grid through the fixed condition keys and checks it, raising
    // ExceptionCalculationProblem in this order:
    //   fewer than 4 points  "Measure conditions: Too few measure data"
    //   a bandwidth that is empty or outside 360 to 780 nm
    //                        "Measure conditions: Check bandwidth of measure data"
    //   a step that does not divide 420 nm (or is 0)
    //                        "Measure conditions: measure data bandwith conflicts Step size is not a integer."
    //   ends off the internal grid
    //                        "Measure conditions: measure data bandwith conflicts with internal calculation bandwith."
    void SetInstrumentData(const QVMeasureConditions& conditions);
    void SetObserver(const QVObserverTYPE& observer);
    void InterpolateIllumination(const QVMeasureConditions& conditions);
    void SetKFactor();
    void CalculateWeightfactors();
    void CalculateSum();
    // Interpolation coefficients for x = offset + r, r from 0 to step - 1,
    // through the nodes 0, s, 2s (and 3s): three (four) arrays of `step`
    // floats, each numerator and denominator an exact integer and one float
    // division. The caller frees them with FreeCoefficients.
    float** GetLagrange2Coeff(unsigned short step, unsigned short offset);
    float** GetLagrange3Coeff(unsigned short step, unsigned short offset);
    static void FreeCoefficients(float** coefficients, unsigned short count);
    // The table extended to 360 to 780 nm on its own step, flat beyond its
    // ends (P = 420 / step + 1 values). The caller frees it (delete[]).
    float* AdjustIlluminationVector(const StandardFilter& table);
    // The 1 nm table on 360 to 780 nm (421 values), zero beyond its ends.
    // The caller frees it (delete[]).
    float* AdjustObserverVector(const StandardFilter& table);
    // Present but not part of the construction: nothing in the library calls
    // them.
    void BandpassCorrection();
    void Round();

private:
    // The grid checks, on given numbers.
    static void CheckInstrumentData(short points, short minimum, short maximum);
    void CopyFrom(const Weightfactors& other);
    void Release();

    float* illumination;
    float** observer;
    float kFactor;
    unsigned short internalMinimum;
    unsigned short internalMaximum;
    float** weights;
    unsigned short numberOfDataPoints;
    unsigned short instrumentMinimum;
    unsigned short instrumentMaximum;
    unsigned short instrumentStep;
    float sums[3];
    bool emission;
};

} // namespace CMetry

#endif
