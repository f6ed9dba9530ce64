#ifndef QVIMANAGER_CMETRY_CMETRY_SERVICE_H
#define QVIMANAGER_CMETRY_CMETRY_SERVICE_H

// CMetryService: the façade of colorimetry. An application hands it a
// spectrum or a vector and measure conditions; it reads the colour space or
// the difference formula from the conditions as text, dispatches to the
// calculators, and turns every failure into ExceptionCMetry with an
// untranslated text:
//   "GetVector not supported for ColorSpace <space>"
//   "Conversion not supported from ColorSpace <source> to ColorSpace CIEXYZ"
//       (the last word is always "CIEXYZ", whatever the target)
//   "GetDeltaE not supported for DeltaEFormula <formula>"
//   "CMetryCalculator"                          a calculation failed
//   "CMetryCalculator: Conversion out of Range" no spectrum for the Lab
// Exceptions of the calculators and conditions pass through unchanged.
// Formula parameters of exactly 0 mean the default 1.

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/lab_to_spectrum.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace CMetry {

class CMetryService {
public:
    CMetryService() = default;
    ~CMetryService() = default;

    // The spectrum in the colour space named by the conditions'
    // "ColorSpaceDescription.Type" (tried in this order: CIELab, CIELCh,
    // CIEXYZ, CIExyY, CIELChuv, LABvq, LCHvq, CIELuv, CIEuvY1976,
    // CIEuvY1960, HunterLab, RxRyRz, RGB). "CMYK" is not supported.
    static QVColorVector GetVector(const QVSpectrum& spectrum, const QVMeasureConditions& conditions);
    // The vector in another colour space: XYZ to Lab, Lab to XYZ, to the
    // polar forms (CIELab to CIELCh, LABvq to LCHvq, CIELuv to CIELChuv),
    // XYZ to xyY, XYZ or xyY to the uvY spaces, and any space to RGB by way of
    // CIELab. The same space returns the vector unchanged.
    static QVColorVector GetVector(const QVColorVector& vector, const Utilities::String& colorSpace);
    // By "ColorSpaceDescription.DeltaEFormula": CIELab, LABvq, CIELuv,
    // FMCII, CMC (p1 = l, p2 = c), 94 (p1 = kL, p2 = kC, p3 = kH).
    static float GetDeltaE(const QVSpectrum& first, const QVSpectrum& second, const QVMeasureConditions& conditions,
                           float p1, float p2, float p3);
    // By the first vector's formula: CIELab or 94 (through CIELab); any
    // other formula raises "CMetryCalculator".
    static float GetDeltaE(const QVColorVector& first, const QVColorVector& second, float p1, float p2, float p3);
    // Delta L, delta C, delta H of two CIELab, CIELuv or LABvq vectors, typed
    // CIELCh, CIELChuv or LCHvq.
    static QVColorVector GetDeltaVector(const QVColorVector& first, const QVColorVector& second);
    static const Utilities::Vector<Utilities::String>& GetSupportedValues(const Utilities::String& key);
    // The metamerism index under the illuminant of the second conditions.
    static float GetMetamery(const QVSpectrum& first, const QVSpectrum& second, const QVMeasureConditions& conditions,
                             const QVMeasureConditions& secondIlluminant);
    // The translated English name of the colour class ("Undefined" when
    // there is none).
    static Utilities::String GetColorType(const QVSpectrum& spectrum);
    // The correlated colour temperature in whole kelvin, by a fresh
    // ColorTemperature search. A search whose bracket stops narrowing ends
    // at a repeated bracket or after 500 rounds with its nearest point (see
    // ColorTemperature); its "Calculation of ColorTemperature failed" passes
    // through unchanged.
    static float GetColorTemperature(const QVSpectrum& spectrum);
    // A reflectance spectrum of the vector's Lab (tolerance 0.1 delta E, at
    // most 1000 rounds).
    static QVSpectrum GetSpectrum(const QVColorVector& vector);

    void Invariant() const {}
    // "CMetryService".
    Diagnostics::String GetValueString() const;

    // The one reconstruction search of the process.
    static Lab2Spec asLab2Spec;
};

} // namespace CMetry

#endif
