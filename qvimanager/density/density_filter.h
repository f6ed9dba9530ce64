#ifndef QVIMANAGER_DENSITY_DENSITY_FILTER_H
#define QVIMANAGER_DENSITY_DENSITY_FILTER_H

// DensityFilter: the four spectral response filters of one density standard
// on the 36-point grid, indexed by QVDensFilterTYPE (0 black, 1 cyan,
// 2 magenta, 3 yellow). The colour filters of DIN, DINNB, ANSIA, ANSIT and
// SPI are constants of the program and sum to 1; the black filter is one
// visual response shared by those five and sums to 100. The user-defined
// standard (5) takes all four filters from a process-wide store.
//
// Not synchronised: the store and any shared filter belong to one thread at
// a time.

#include "qvimanager/cmetry/filter.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"

namespace CMetry {

class DensityFilter {
public:
    // Four empty filters, standard -1.
    DensityFilter();
    explicit DensityFilter(QVDensityStdTYPE standard);
    DensityFilter(const DensityFilter& other) = default;
    DensityFilter& operator=(const DensityFilter& other) = default;

    // Selects the standard's filters. Selecting the active standard again
    // does nothing, also for the user-defined one: filters changed in the
    // store while 5 is active take effect only after another standard was
    // selected in between. Any other value (6, -2, ...) is stored and gives
    // zero colour filters with the shared black filter.
    void SetDensityStandard(QVDensityStdTYPE standard);
    QVDensityStdTYPE GetDensStd() const;
    // A filter 4 or more raises ExceptionOutOfBound with "vector index >=
    // vector size".
    const Filter& operator[](unsigned short filter) const;

    // The store of the user-defined standard: four filters of 36 values,
    // all 1.0 at library start (not normalised: a spectrum of ones sums to
    // 36 in each). The index is checked like operator[]. Changing the store
    // changes no DensityFilter object.
    static void SetUserDensityStandardToDefault();
    static const float (&GetUserDefinedFilter(unsigned long index))[36];
    static void SetUserDefinedFilter(const float (&values)[36], unsigned long index);

    // "Density Standart: " and the standard's text.
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

    static Utilities::Vector<float[36]> asUserDensFilter;

private:
    QVDensityStdTYPE standard;
    Utilities::Vector<Filter> filters;
};

} // namespace CMetry

#endif
