#ifndef QVIMANAGER_CMETRY_FILTER_H
#define QVIMANAGER_CMETRY_FILTER_H

// Spectral filters and tables.
//
// Filter: a weighting curve on the 36-point grid, used by densitometry.
// StandardFilter: one illuminant or colour-matching function on its own
// range and step, copied from the constant tables (cmetry/tables/) or built
// at run time (daylight of a colour temperature, a user spectrum).
// CMetryFilter: selects the tables and caches the Weightfactors of the
// current conditions.
//
// Table failures raise ExceptionCalculationProblem with their text passed
// through LanguageServiceInterface::GetTranslation:
//   "Unsupported Illumination type"  no constant table for the illuminant
//                                    (Dxx, Userdefined, Emission, unknown)
//   "Unsupported Observer type"      unknown observer
//   "Filter table is empty: its step size is 0"
//                                    an F number outside 1 to 12 or an
//                                    observer axis above 2 gives a table
//                                    without values, which the library
//                                    refuses to copy, where it would divide
//                                    by the step size of 0.

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"

namespace CMetry {

class QVSpectrum;
class Weightfactors;

class Filter {
public:
    static constexpr long NumberOfValues = 36;

    // Sum not valid, sum 0, values 0.
    Filter();
    // Copies 36 values and computes their sum.
    explicit Filter(const float* values);
    Filter(const Filter& other);
    Filter& operator=(const Filter& other);
    ~Filter();

    // The value at the index. An index outside 0 to 35 raises
    // ExceptionOutOfBound with "Filter::operator[]: index out of range"
    // instead of reading outside the values.
    float operator[](long index) const;
    // Writable: the sum is recomputed on the next GetFilterSum. An index
    // outside 0 to 35 raises the same ExceptionOutOfBound ("Filter::
    // operator[]: index out of range") before anything changes: the values
    // and a valid sum stay as they were.
    float& operator[](long index);

    const float* GetFilterSpectrum() const;
    // The sum of the 36 values in index order in single precision,
    // recomputed first if a value may have changed.
    float GetFilterSum();

    // The dot product with the spectrum's 36 values, accumulated in single
    // precision from index 0.
    float operator*(const QVSpectrum& spectrum) const;
    // A new filter of the element-wise products.
    Filter FilterXFilter(const Filter& other) const;

    // The 36 values compared as bytes; sums and flags take no part.
    bool operator==(const Filter& other) const;

    void Invariant() const {}
    // "FilterSum: " and the sum, or "not defined" while it is not valid.
    Diagnostics::String GetValueString() const;

private:
    void CalculateSum();

    bool sumValid;
    float sum;
    float values[NumberOfValues];
};

class StandardFilter {
public:
    // Deep copies. A filter without values (step size 0) cannot be copied:
    // it raises ExceptionCalculationProblem with "Filter table is empty: its
    // step size is 0".
    StandardFilter(const StandardFilter& other);
    StandardFilter& operator=(const StandardFilter& other);
    ~StandardFilter();

    const float* GetFilter() const;
    unsigned short GetMinWavelength() const;
    unsigned short GetMaxWavelength() const;
    unsigned short GetStepSize() const;

    // The user-defined illumination of the conditions on the spectrum's own
    // grid (380 to 730 nm, step 10). No user spectrum raises
    // ExceptionNullpointer with "Failed to access to nullpointer.".
    void SetUserIllumination(const QVMeasureConditions& conditions);
    // CIE daylight of the colour temperature of the conditions' illumination,
    // on 300 to 830 nm at step 5, scaled to 100 at 560 nm. Computed in double
    // precision and stored as float. The temperature is corrected for the
    // second radiation constant (T * 1.4388 / 1.438) and 7000 K itself takes
    // the upper branch of the chromaticity formula.
    void SetDxxIllumination(const QVMeasureConditions& conditions);

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

private:
    friend class TestAccess;
    friend class CMetryFilter;
    friend class Weightfactors;

    // All fields 0, no table.
    StandardFilter();
    // A copy of `count` values of a constant table.
    StandardFilter(const float* values, unsigned short minimum, unsigned short maximum, unsigned short step);

    void CopyFrom(const StandardFilter& other);

    unsigned short stepSize;
    unsigned short maxWavelength;
    unsigned short minWavelength;
    float* table;
};

class CMetryFilter {
public:
    CMetryFilter();
    ~CMetryFilter();
    // Copies nothing.
    CMetryFilter& operator=(const CMetryFilter& other);

    // A new copy of the constant table of the illuminant: A, B, C, D75, D65,
    // D50, F2, F7, F11, Fxx (F number 1 to 12), the daylight components
    // (internal codes 14, 15, 16), and "D55", which is the first 107 values of
    // the 1 nm D65 table declared as 5 nm data from 300 to 830 nm.
    static StandardFilter GetIlluFilter(const QVIllumination& illumination);
    // A new copy of a colour-matching function, 1 nm from 360 nm: x-bar and
    // y-bar to 830 nm; z-bar to 650 nm (2 degrees) or 560 nm (10 degrees).
    static StandardFilter GetObserverFilter(const QVObserverTYPE& observer, unsigned short axis);

    // 0 before the first evaluation, otherwise Weightfactors::GetFilterSum.
    float GetFilterSum(unsigned short axis) const;

    void Invariant() const {}
    // "Illumination: ", the illumination's value string, "; Observer: " and
    // the observer's diagnostic text.
    Diagnostics::String GetValueString() const;

private:
    friend class TestAccess;
    friend class BaseCalculator;
    friend class CMetryCalculator;
    friend class ColorTemperature;
    friend class DensityCalculator;
    friend class Lab2Spec;

    CMetryFilter(const CMetryFilter&);

    // The cache: a new Weightfactors only when the illumination, the
    // observer or the identity of the user spectrum changes. The factors of
    // the last few table illuminations (not of a user spectrum) are kept
    // besides and taken back instead of being built again: weight factors
    // depend on the illumination and the observer alone, so a caller sees
    // the same numbers either way, only sooner when switching between
    // illuminants.
    void SetMeasuringConditions(const QVMeasureConditions& conditions);
    // The kept factors of the illumination and observer, or an empty
    // pointer; a hit leaves its slot empty.
    Utilities::SmartPointer<Weightfactors> TakeRecent(const QVIllumination& illumination, QVObserverTYPE observer);
    // Keeps factors that are being replaced, dropping the oldest.
    void KeepRecent(const QVIllumination& illumination, QVObserverTYPE observer,
                    const Utilities::SmartPointer<Weightfactors>& factors);
    // Does nothing.
    void SetMeasuringConditions(const QVIllumination& illumination, QVObserverTYPE observer);
    // From the cached conditions; before the first evaluation they raise
    // ExceptionNullpointer with "Failed to access to nullpointer.".
    const QVIllumination& GetIllumination();
    QVObserverTYPE GetObserver();

    Utilities::SmartPointer<Weightfactors> weightfactors;
    Utilities::SmartPointer<QVMeasureConditions> conditions;
    Utilities::Vector<Filter> filters;
    QVIllumination illumination;
    QVObserverTYPE observer;
    // What GetIllumination hands out by reference.
    QVIllumination cachedIllumination;

    struct RecentFactors {
        QVIllumination illumination;
        QVObserverTYPE observer = ObserverUndefined;
        Utilities::SmartPointer<Weightfactors> factors;
    };
    static constexpr int NumberOfRecentFactors = 4;
    // Most recent first; empty slots have no factors.
    RecentFactors recent[NumberOfRecentFactors];
};

} // namespace CMetry

#endif
