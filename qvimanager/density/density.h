#ifndef QVIMANAGER_DENSITY_DENSITY_H
#define QVIMANAGER_DENSITY_DENSITY_H

// QVDensity: one density reading, four floats indexed by QVDensFilterTYPE
// (0 black, 1 cyan, 2 magenta, 3 yellow), with the density standard, the
// user-defined filters and the physical conditions it was taken under.
//
// Only the value constructor and SetAllDensities mark a reading valid;
// SetDensity and the writable operator[] do not, so a vector that the
// density calculator fills stays not valid.

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"

namespace CMetry {

class QVDensity {
public:
    using UserFilterPointer = Utilities::SmartPointer<Utilities::Vector<float[36]>>;

    // Four zeros, not valid, standard -1, no user filter.
    QVDensity();
    // Valid.
    QVDensity(float black, float cyan, float magenta, float yellow, const QVMeasureConditions& conditions,
              QVDensityStdTYPE densityStandard, const UserFilterPointer& userFilter);
    // The densities and conditions are copied; the user filter is shared.
    QVDensity(const QVDensity& other) = default;
    QVDensity& operator=(const QVDensity& other) = default;

    // Every indexed access raises ExceptionOutOfBound with "vector index >=
    // vector size" for an index at or past the number of densities (4 unless
    // SetAllDensities changed it).
    float GetDensity(QVDensFilterTYPE filter) const;
    void SetDensity(float density, QVDensFilterTYPE filter);
    // Takes the vector's values and size and marks the reading valid.
    void SetAllDensities(const Utilities::Vector<float>& densities);
    float operator[](unsigned short index) const;
    float& operator[](unsigned short index);
    // Mode 5 (automatic filter selection) reads the filter that
    // DensityCalculator::GetDensityFilter picks for this reading; mode 4
    // (max wave length) gives 0.0; any other mode is an index.
    float operator[](DensityFilterModeTYPE mode) const;
    // The same on a writable reading (a read, never a reference).
    float operator[](DensityFilterModeTYPE mode);

    QVDensityStdTYPE GetDensityStd() const;
    void SetDensityStd(QVDensityStdTYPE densityStandard);
    UserFilterPointer GetUserDefinedFilter() const;
    void SetUserDefinedFilter(const UserFilterPointer& userFilter);
    QVMeasureConditions GetPhysMeasCond() const;
    void SetPhysMeasCond(const QVMeasureConditions& conditions);

    // "Densities: ", each value followed by ", ", then "Density Standart: "
    // and the standard's text.
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    friend class TestAccess;
    friend class DensityCalculator;

    bool IsValid() const;

    Utilities::Vector<float> densities;
    bool valid;
    UserFilterPointer userFilter;
    QVDensityStdTYPE densityStandard;
    QVMeasureConditions conditions;
};

} // namespace CMetry

#endif
