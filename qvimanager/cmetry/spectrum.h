#ifndef QVIMANAGER_CMETRY_SPECTRUM_H
#define QVIMANAGER_CMETRY_SPECTRUM_H

// QVSpectrum: one reflectance curve on the library's fixed grid, with the
// conditions it was measured under. QVSample: the spectra of one measured
// object.
//
// The grid has 36 points from 380 nm to 730 nm in steps of 10 nm: index 0 is
// 380 nm, index 35 is 730 nm. The grid is read back through the fixed
// condition keys "Physical.WavelengthSpectrumMin" ("380nm"),
// "Physical.WavelengthSpectrumMax" ("730nm") and
// "Physical.NumberOfDataPointsSpectrum" ("36").

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"

namespace CMetry {

class QVSpectrum {
public:
    static constexpr unsigned short NumberOfDataPoints = 36;

    // All values 0, default conditions.
    QVSpectrum();
    // Elements 0 to 35 of the vector; a longer vector is cut, a shorter one
    // raises ExceptionOutOfBound with "vector index >= vector size".
    explicit QVSpectrum(const Utilities::Vector<float>& values);
    QVSpectrum(const Utilities::Vector<float>& values, const QVMeasureConditions& conditions);
    explicit QVSpectrum(const float (&values)[NumberOfDataPoints]);
    QVSpectrum(const float (&values)[NumberOfDataPoints], const QVMeasureConditions& conditions);
    QVSpectrum(const QVSpectrum& other);
    QVSpectrum& operator=(const QVSpectrum& other);
    ~QVSpectrum();

    // The 36 values exactly, the validity flag and the conditions.
    bool operator==(const QVSpectrum& other) const;

    // The value at the index. A spectrum does not change after construction,
    // short of assignment. An index outside 0 to 35 raises
    // ExceptionOutOfBound with "QVSpectrum::operator[]: index out of range"
    // instead of reading outside the values.
    const float& operator[](long index) const;

    // A new vector of the 36 values.
    Utilities::Vector<float> GetValues() const;
    const QVMeasureConditions& GetMeasureConditions() const;

    // At least one value is strictly greater than 0. The validity flag plays
    // no part: a spectrum of zeros is not valid, although its value string
    // says "valid".
    bool IsValid() const;

    void Invariant() const {}
    // "valid" or "invalid" after the validity flag, which every constructor
    // sets.
    Diagnostics::String GetValueString() const;

private:
    friend class TestAccess;
    friend class QVMeasureConditions;
    friend class BaseCalculator;
    friend class CMetryCalculator;
    friend class CMetryService;
    friend class ColorTemperature;
    friend class DensityCalculator;
    friend class DensityService;
    friend class Filter;
    friend class Lab2Spec;
    friend class StandardFilter;
    friend class Weightfactors;

    // A copy of the conditions.
    QVMeasureConditions GetPhysMeasCond() const;
    void SetMeasureConditions(const QVMeasureConditions& conditions);
    // 36.
    unsigned short GetNrOfDataPoints() const;
    // (wavelength - 380) / 10 truncated towards zero: 389 nm gives 0, 395
    // nm gives 1. Below the grid or past its end (740 nm) the index is 0.
    unsigned short GetArrayIndex(unsigned short wavelength) const;
    // 380 + 10 * index; an index past the grid gives 0.
    unsigned short GetWaveLength(unsigned short index) const;

    float values[NumberOfDataPoints];
    bool valid;
    QVMeasureConditions conditions;
};

// The spectra of one measured object, in the order they were added. A
// sample only grows.
class QVSample : public Utilities::List<QVSpectrum> {
public:
    QVSample() = default;
    QVSample(const QVSample& other) = default;
    QVSample& operator=(const QVSample& other) = default;
    ~QVSample() = default;

    // Appends a copy of each spectrum of `other`, in order, and returns the
    // new number of spectra. A sample may take in itself: its spectra are
    // then appended once.
    short AddSample(const QVSample& other);
    // Appends a copy of the spectrum at the end (it replaces nothing).
    void SetSpectrum(const QVSpectrum& spectrum);
    // The first spectrum, whatever the conditions: they are accepted and
    // ignored. False, with `spectrum` untouched, for an empty sample.
    bool GetSpectrum(const QVMeasureConditions& conditions, QVSpectrum& spectrum) const;
    // Compares the first spectra only. An empty sample on either side raises
    // ExceptionOutOfBound with "ListIterator::Current(): Can't return value
    // because iterator is invalid".
    bool operator==(const QVSample& other) const;

    void Invariant() const {}
    // "MeasureValueList: " and the number of spectra.
    Diagnostics::String GetValueString() const;
};

} // namespace CMetry

#endif
