#ifndef QVIMANAGER_CMETRY_CALCULATOR_H
#define QVIMANAGER_CMETRY_CALCULATOR_H

// Colour-space calculation: a reflectance spectrum becomes a colour vector,
// and colour vectors convert between colour spaces.
//
// BaseCalculator holds the shared paper white and bases spectra on it.
// CMetryCalculator has one static operation per colour space. Each returns
// false for an ordinary failure and leaves its output alone; the service
// turns false into an exception.
//
// Numeric rules: vector components and spectrum values are floats; formula
// constants are single precision unless a comment says double; intermediate
// values named "rounded to float" are rounded there, everything else is
// evaluated in double and rounded once when stored. The mathematical
// functions are the C library's, in double.
//
// Shared state: asXYZFilter caches the Weightfactors of the last illuminant
// and observer; psPaperWhite is the paper white. Neither is synchronised:
// one thread at a time.
//
// Only the components a conversion names are written: component 3 of an
// output keeps what it held.

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/filter.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/smart_pointer.h"

namespace CMetry {

class BaseCalculator {
public:
    BaseCalculator() = default;
    BaseCalculator(const BaseCalculator&) = default;
    void Invariant() const {}
    // "Paper white: " and the sample's value string, or "not present".
    Diagnostics::String GetValueString() const;

    // The paper white, empty until the density service installs one.
    static Utilities::SmartPointer<QVSample> psPaperWhite;

protected:
    friend class TestAccess;
    friend class DensityService;
    friend class CMetryService;

    // Both do nothing: the paper white is installed with
    // SetPaperWhitePointer.
    static void SetPaperWhite(const QVSample& sample);
    static void AddPaperWhite(const QVSample& sample);
    static void SetPaperWhitePointer(Utilities::SmartPointer<QVSample> sample);
    // Raises ExceptionNullpointer with "Failed to dereference nullpointer."
    // when there is no paper white.
    static const QVSample& GetPaperWhite();
    // A paper white is held, it has a spectrum for the conditions, and that
    // spectrum has a value above 0.
    static bool IsPaperWhiteValid(const QVMeasureConditions& conditions);
    // Divides each value by the paper white's value at the same index (a 0
    // there gives an infinity or NaN). False, with the spectrum unchanged,
    // when there is no paper white or it has no spectrum for the spectrum's
    // conditions.
    static bool GetSpecBasedToPapWhite(QVSpectrum& spectrum);
    // The same on a bare array of the paper white's number of values, with
    // the paper white asked under `conditions`.
    static bool GetSpecBasedToPapWhite(const QVMeasureConditions& conditions, float* values);
};

class CMetryCalculator : public BaseCalculator {
public:
    CMetryCalculator() = default;
    CMetryCalculator(const CMetryCalculator&) = default;
    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

    // ------------------------------------------------------------ from spectra

    // The tristimulus values: each component the dot product of a weight row
    // with the spectrum, summed in float. An emissive spectrum (its own
    // illumination "Emission") is evaluated without illuminant and never
    // based on paper; with white base "Paper" the spectrum is first divided
    // by the paper white (false if there is none for it). The output takes
    // the evaluation conditions with the spectrum's physical filter.
    static bool GetVector_CIEXYZ(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                 QVColorVector& out);
    static bool GetVector_CIExyY(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                 QVColorVector& out);
    static bool GetVector_CIELab(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                 QVColorVector& out);
    static bool GetVector_CIELCh_ab(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                    QVColorVector& out);
    static bool GetVector_LCHvq(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                QVColorVector& out);
    static bool GetVector_LABvq(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                QVColorVector& out);
    // L*, and the chromaticity coordinates u' and v' themselves (not
    // 13 L* (u' - u'n)): a perfect white under D65 gives about 0.1978 and
    // 0.4683.
    static bool GetVector_CIELuv(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                 QVColorVector& out);
    static bool GetVector_CIELCh_uv(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                    QVColorVector& out);
    static bool GetVector_HunterLab(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                    QVColorVector& out);
    static bool GetVector_RxRyRz(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                 QVColorVector& out);
    // Lab under the output's own conditions, then GetVector_CIELab_RGB.
    static bool GetVector_RGB(const QVSpectrum& spectrum, QVColorVector& out);

    // ------------------------------------------------------------ from vectors

    // Lab to XYZ against the white of the input's conditions.
    static bool GetVector_CIEXYZ(const QVColorVector& lab, QVColorVector& out);
    // XYZ to x, y, Y. A sum of 0 takes the chromaticity of a flat spectrum
    // of 1e-5 under the input's conditions.
    static bool GetVector_CIExyY(const QVColorVector& xyz, QVColorVector& out);
    // XYZ to Lab against the white of the input's conditions; L* below 0 is
    // clamped to 0, a* and b* are not.
    static bool GetVector_CIELab(const QVColorVector& xyz, QVColorVector& out);
    // Rectangular to polar: L, C, h in degrees in (0, 360]; an achromatic
    // colour (both components below 1e-5 in magnitude) has hue 360.
    static bool GetVector_CIELCh_ab(const QVColorVector& rectangular, QVColorVector& out);
    // From "CIEXYZ" or "CIExyY" to u', v', Y; 4/19 and 9/19 when there is no
    // chromaticity. Any other space: false.
    static bool GetVector_CIEuvY1976(const QVColorVector& in, QVColorVector& out);
    // As 1976 with v' scaled by 2/3.
    static bool GetVector_CIEuvY1960(const QVColorVector& in, QVColorVector& out);
    // Lab to RGB through an "ArdoCMMScreen" component, or else through the
    // built-in matrix and table: whole numbers 0 to 255.
    static bool GetVector_CIELab_RGB(const QVColorVector& lab, QVColorVector& out);
    // Delta L, delta C and delta H of two Lab vectors (the sign of delta H
    // from the cross product of their a, b), and likewise of two LABvq and
    // two CIELuv vectors. Only the first keeps the first chroma in double.
    static bool GetVector_DeltaCIELCH_ab(const QVColorVector& first, const QVColorVector& second,
                                         QVColorVector& out);
    static bool GetVector_LCHvq_delta(const QVColorVector& first, const QVColorVector& second,
                                      QVColorVector& out);
    static bool GetVector_CIELCH_uv(const QVColorVector& first, const QVColorVector& second, QVColorVector& out);

    // ------------------------------------------------------------ differences
    //
    // The first sample is the reference: terms that depend on the colour
    // (SL, SC, SH, K1, K2) are taken from it alone. A difference that cannot
    // be computed is the float 1000000.

    static constexpr float FailedDifference = 1000000.0f;

    // Euclidean distance of the two Lab (Luv: L*, u', v'; LABvq) vectors.
    static float GetDeltaE_CIELAB(const QVSpectrum& first, const QVSpectrum& second,
                                  const QVMeasureConditions& conditions);
    static float GetDeltaE_CIELAB(const QVLab& first, const QVLab& second);
    // Lab of a bare array of 36 values against a reference Lab, without
    // copies and without setting the shared filter: the caller must have run
    // an ordinary evaluation under the reference's conditions first;
    // otherwise it raises ExceptionNullpointer with "Failed to access to
    // nullpointer.". Its constants are wider than those of the ordinary
    // conversion (7.787 and 16/116 in double) and L* is not clamped.
    static float GetDeltaE_CIELAB_SpeedOptimized(const QVLab& reference, const float* spectrum);
    static float GetDeltaE_CIELUV(const QVSpectrum& first, const QVSpectrum& second,
                                  const QVMeasureConditions& conditions);
    static float GetDeltaE_vq(const QVSpectrum& first, const QVSpectrum& second,
                              const QVMeasureConditions& conditions);
    // Friele-MacAdam-Chickering II, from XYZ. A first sample without
    // chromaticity (P and Q both 0) or without Y and Z gives 1000000.
    static float GetDeltaE_FMCII(const QVSpectrum& first, const QVSpectrum& second,
                                 const QVMeasureConditions& conditions);
    // CMC(l:c). An l or c of 0 divides by 0 (the result is not finite).
    static float GetDeltaE_CMC(const QVSpectrum& first, const QVSpectrum& second,
                               const QVMeasureConditions& conditions, float l, float c);
    // CIE 1994; a parameter of exactly 0 gives 1000000.
    static float GetDeltaE_94(const QVSpectrum& first, const QVSpectrum& second,
                              const QVMeasureConditions& conditions, float kL, float kC, float kH);
    static float GetDeltaE_94(const QVLab& first, const QVLab& second, float kL, float kC, float kH);
    // The Lab difference under a second illuminant after the two samples'
    // XYZ were scaled to match under the conditions' own illuminant. Leaves
    // the shared weight factors set for the second illuminant.
    static float GetMetamery(const QVSpectrum& first, const QVSpectrum& second,
                             const QVMeasureConditions& conditions, const QVIllumination& illumination);
    // The colour name class of a spectrum from its Lab, or ColorUndefined
    // (-1) when Lab cannot be computed. The lightness-dependent chroma limit
    // is computed and then replaced by 1001, so in practice every colour is
    // classed achromatic: White above L* 80, Gray above 30, Black up to 30.
    static ColorTYPE GetColorType(const QVSpectrum& spectrum);

    // ------------------------------------------------------------ statics

    // The one shared filter and its cached Weightfactors.
    static CMetryFilter asXYZFilter;
    // False at load and never set. The RGB table is built on the first use
    // of the table path and kept (its entries never change), which this flag
    // does not record.
    static bool bsLookUpTableCreated;

protected:
    friend class TestAccess;

    // The white of the conditions: each axis sum times (Y sum / 100), with
    // the conditions and a default physical filter.
    static bool GetNormValence(const QVMeasureConditions& conditions, QVColorVector& out);

private:
    // The three delta-vector operations.
    static bool DeltaLCH(const QVColorVector& first, const QVColorVector& second, bool firstChromaInDouble,
                         QVColorVector& out);
};

// The RGB fallback. CreateLookupTableRGB fills the table of 3 channels by 512
// entries: entry i is the linear value of the encoded level i / 2.
// SearchRGB bisects a table and gives the index below `value` (-1 under the
// first entry). LookupRGB turns three linear values into whole numbers from
// 0 to 255 (1 or more gives 255, below 0 gives 0).
void CreateLookupTableRGB();
int SearchRGB(float value, const float* table, int size);
void LookupRGB(float* out, const float* in);

} // namespace CMetry

#endif
