#ifndef QVIMANAGER_DENSITY_DENSITY_SERVICE_H
#define QVIMANAGER_DENSITY_DENSITY_SERVICE_H

// DensityService: densitometry for callers that think in condition sets. It
// reads the density standard, filter mode, white base and physical filter
// from a QVMeasureConditions and raises ExceptionCMetry, with its text
// passed through LanguageServiceInterface::GetTranslation, where the
// calculator answers false:
//
//   "Missing WhiteReference"          GetDensity, GetDensityFilterName:
//                                     white base "Paper" or "Automatic" and
//                                     no paper white set
//   "Calculation of Density failed"   GetDensity, GetDensityFilterName: the
//                                     density is exactly 9.99f (also a valid
//                                     colour reading of that value; a black
//                                     reading of 11.99 is not)
//   "Calculation of dot gain failed"  GetDotGain
//   "Calculation of slur failed at Halftone " and the tint's index
//                                     GetSlur
//
// Density standard "Undefined" addresses no cell of the calibration store:
// where a call reads a cell (the calibrated density, the save of GetDotGain
// and GetSlur, GetDensityCalibration) the store's ExceptionOutOfBound with
// "Density calibration: physical filter or density standard out of range"
// passes through, as each declaration below says.
//
// Not synchronised: it works on the process-wide paper white, filter set and
// calibration store.

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace CMetry {

class DensityService {
public:
    using Calibration = Utilities::SmartPointer<Utilities::Vector<float>>;

    ~DensityService() = default;
    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

    // The density under the conditions' standard, filter mode and white
    // base. Modes "Black" to "Yellow" read that filter; "Max" and "Auto"
    // select the filter automatically. Calibration applies: under density
    // standard "Undefined" the calibration store has no cell, and once the
    // white reference is there (or not needed) the store's
    // ExceptionOutOfBound with "Density calibration: physical filter or
    // density standard out of range" passes through.
    static float GetDensity(const QVSpectrum& spectrum, const QVMeasureConditions& conditions);
    // The name of the filter GetDensity reads ("Black", "Cyan", "Magenta",
    // "Yellow"), with GetDensity's two failures and its range error under
    // density standard "Undefined".
    static Utilities::String GetDensityFilterName(const QVSpectrum& spectrum, const QVMeasureConditions& conditions);
    // Murray-Davies dot area of the tint against the solid, relative to
    // paper white, in percent minus the nominal percentage. The calibration
    // cell of the conditions is neutral during the call and restored after
    // success; after the failure it stays neutral. Under density standard
    // "Undefined" the cell cannot be saved: GetDensityCalibration's range
    // error is raised first and nothing changes.
    static float GetDotGain(const QVSpectrum& tint, const QVSpectrum& solid, const QVMeasureConditions& conditions,
                            float nominalPercent);
    // (n x largest area - sum of the areas) x 100 over the n tints; 0.0 for
    // one tint or none, without touching anything. The calibration is
    // neutral during the call and restored on every path. With two tints or
    // more under density standard "Undefined", GetDensityCalibration's range
    // error is raised first and nothing changes.
    static float GetSlur(const Utilities::Vector<QVSpectrum>& tints, const QVSpectrum& solid,
                         const QVMeasureConditions& conditions);
    // Installs a new paper white holding a copy of the spectrum.
    static void SetPaperWhite(const QVSpectrum& spectrum);
    // The four filters of the user-defined standard as spectra.
    static Utilities::Vector<QVSpectrum> GetUserdefinedFilter();
    // Stores the first four spectra as the user-defined filters 0 to 3, in
    // that order (they take effect when the user standard is next selected
    // anew); entries past the fourth are ignored. The entries are read
    // through the vector's checked index, so a vector of n < 4 entries
    // stores filters 0 to n - 1 and then raises the vector's
    // ExceptionOutOfBound with "vector index >= vector size" at index n;
    // filters n to 3 keep their values.
    static void SetUserdefinedFilter(const Utilities::Vector<QVSpectrum>& filters);
    // Writes four slopes and four offsets (1.0 and 0.0 for an empty
    // pointer) into the cells addressed by the conditions: physical filter
    // "Undefined" addresses all 13 physical filters, density standard
    // "Undefined" all 6 standards.
    static void SetDensityCalibration(const QVMeasureConditions& conditions, Calibration slope, Calibration offset);
    // Replaces both pointers with new four-value vectors read from the one
    // cell of the conditions. No wildcards: a density standard "Undefined"
    // addresses no cell and raises the calibration store's
    // ExceptionOutOfBound with "Density calibration: physical filter or
    // density standard out of range", leaving both pointers as they were.
    // (A physical filter "Undefined" is code 0, a row of its own.)
    static void GetDensityCalibration(const QVMeasureConditions& conditions, Calibration& slope,
                                      Calibration& offset);

private:
    friend class TestAccess;

    // The density of GetDensity with its two failures; `filter` receives
    // the filter that was read.
    static float CheckedDensity(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                QVDensFilterTYPE& filter);

    DensityService() = default;
    DensityService(const DensityService&) = default;
    DensityService& operator=(const DensityService&) = default;
};

} // namespace CMetry

#endif
