#ifndef QVIMANAGER_DENSITY_DENSITY_CALCULATOR_H
#define QVIMANAGER_DENSITY_DENSITY_CALCULATOR_H

// DensityCalculator: the print-control arithmetic. From reflectance spectra
// on the 36-point grid it derives filter densities, the density spectrum,
// the maximum density, dot area, print contrast, trapping, greyness and hue
// error, and it classifies a measured patch. It owns the calibration store
// (slope and offset per physical filter, density standard and filter
// colour) and the one DensityFilter through which every density is read.
//
// Numbers: log10 and pow are taken in double precision; every named result
// is stored as a float. A reflectance of zero or less has the no-light
// density 9.99f (bits 0x411FD70A). A density counts as usable from 0.01f;
// tests of an absolute value compare in double precision against that
// float's exact value 0.009999999776482582.
//
// Operations that return bool give true on success and leave their outputs
// untouched on failure unless stated otherwise. The white base is only ever
// tested against "Abs" (0): "Auto" behaves exactly as "Pap" here.
//
// Not synchronised: the filter set and the calibration store are process
// wide, so density calculation must be serialised by the caller.

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/density/density.h"
#include "qvimanager/density/density_filter.h"
#include "qvimanager/diagnostics/diagnostic_string.h"

namespace CMetry {

// One entry per tint field, filled by RecognizeColorField; the caller's
// array is indexed by field number minus 1 (12 entries).
struct AutoTableTYPE {
    // Measured dot area in percent minus the nominal tint percentage.
    float tintError;
    // Set when the tint error was written; never cleared here.
    bool present;
};

// The classification of a measured field:
//   -1        not yet classified
//    0        paper or an unclassified tint
//    1 to 12  tint: colour + 4 x tag - 3 (colour 0 to 3 as QVDensFilterTYPE,
//             tag 1 to 3 the position in the caller's tint list)
//   13 to 15  overprint whose weakest colour density is cyan, magenta, yellow
//   16 to 19  solid black, cyan, magenta, yellow
using FieldTYPE = int;

constexpr FieldTYPE FieldUnclassified = -1;
constexpr FieldTYPE FieldPaperOrTint = 0;
constexpr FieldTYPE FieldOverprintCyanWeakest = 13;
constexpr FieldTYPE FieldOverprintMagentaWeakest = 14;
constexpr FieldTYPE FieldOverprintYellowWeakest = 15;
constexpr FieldTYPE FieldSolidBlack = 16;

class DensityCalculator : public BaseCalculator {
public:
    // The no-light density, 9.99 as a float.
    static constexpr float NoLightDensity = 9.99f;
    // The smallest usable density, 0.01 as a float.
    static constexpr float SmallDensity = 0.01f;

    ~DensityCalculator() = default;
    DensityCalculator& operator=(const DensityCalculator&) = default;
    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

    // The four filter densities of the standard (the filter set in use is
    // switched to it and stays there). Black gets 2.0 added, so a spectrum
    // of zeros reads 11.99 there and 9.99 in the colours. With white base
    // "Pap" or "Auto" the paper white's densities (under the spectrum's
    // physical conditions) are subtracted; without a valid paper white the
    // result is false and the absolute densities stay in `out`.
    static bool GetDensityVector(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                 QVWhiteBaseTYPE whiteBase, QVDensity& out);
    // GetDensityVector, then on success density x slope + offset per filter
    // from the calibration cell of the spectrum's physical filter and the
    // standard; the offset applies to white base "Abs" only. The cell is
    // read only after a successful GetDensityVector: a standard outside 0 to
    // 5 (-1, "Undefined", among them) then raises ExceptionOutOfBound with
    // "Density calibration: physical filter or density standard out of
    // range", with `out` holding the uncalibrated densities and the filter
    // set switched to that standard. A failed paper-white step gives false
    // without reading the cell, so without raising.
    static bool GetDensityVectorWithSlope(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard,
                                          QVWhiteBaseTYPE whiteBase, QVDensity& out);
    // The filter a reading should be read through: the highest of the four
    // densities (lowest index on a tie), but black (0) when that density is
    // below 0.01 or when the weakest colour density is more than 0.7 of the
    // strongest (a neutral patch).
    static QVDensFilterTYPE GetDensityFilter(const QVDensity& density);
    // GetDensityVectorWithSlope, then the density at `filter`, or at the
    // filter GetDensityFilter picks when autoFilter is true (written back to
    // `filter`). On failure density is 9.99 and filter -1: the only failure
    // outputs of this class. The calibration's range error for a standard
    // outside 0 to 5 ("Density calibration: physical filter or density
    // standard out of range") passes through with density and filter
    // untouched.
    static bool GetDensity(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard, QVWhiteBaseTYPE whiteBase,
                           float& density, QVDensFilterTYPE& filter, bool autoFilter);
    // -log10 of each value (9.99 for a value of zero or less), after basing
    // on the paper white unless the white base is "Abs". No 2.0 is added.
    static bool GetDensitySpectrum(const QVSpectrum& spectrum, QVWhiteBaseTYPE whiteBase,
                                   float (&densities)[QVSpectrum::NumberOfDataPoints]);
    // The deepest point of the reflectance between 410 nm and 670 nm: the
    // scan runs from the index of 410 nm up to the index of 700 nm minus the
    // index of 410 nm, i.e. indices 3 to 29. Equal minima go to the point
    // nearest the grid middle (index 17). The result is that of the paper
    // white step (true for "Abs"), but the values are delivered in any case.
    static bool GetMaxDensity(const QVSpectrum& spectrum, QVWhiteBaseTYPE whiteBase, float& density,
                              unsigned short& waveLength);
    // The dot area as a fraction, always relative to paper white: Murray-
    // Davies (n = 1) or Yule-Nielsen with factor n. 0 when the solid's
    // 1 - 10^(-Ds/n) is below the small density.
    static bool GetDotArea(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                           DensityFilterModeTYPE mode, float& area);
    static bool GetDotArea(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                           DensityFilterModeTYPE mode, float n, float& area);
    // (Ds - Dt) / Ds, 0 for a solid density below the small density. The
    // only two-spectrum operation that applies the calibration. In mode 4
    // the tint's density spectrum uses the caller's white base but the
    // solid's maximum density always uses paper white. Every mode but 4
    // reads the calibration cell as GetDensityVectorWithSlope does: a
    // standard outside 0 to 5 raises its ExceptionOutOfBound ("Density
    // calibration: physical filter or density standard out of range") with
    // `contrast` untouched; mode 4 reads no calibration and no standard.
    static bool GetContrast(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                            QVWhiteBaseTYPE whiteBase, DensityFilterModeTYPE mode, float& contrast);
    // (Dop - D1) / D2 relative to paper white, 1.0 for a second-ink density
    // below the small density. The QVDensity form always returns true.
    static bool GetTrapping(const QVSpectrum& firstInk, const QVSpectrum& secondInk, const QVSpectrum& overprint,
                            QVDensityStdTYPE densityStandard, DensityFilterModeTYPE mode, float& trapping);
    static bool GetTrapping(const QVDensity& firstInk, const QVDensity& secondInk, const QVDensity& overprint,
                            DensityFilterModeTYPE mode, float& trapping);
    // Weakest over strongest colour density, 1.0 when the strongest is below
    // the small density. withSlope reads the calibration cell as
    // GetDensityVectorWithSlope does: a standard outside 0 to 5 then raises
    // its ExceptionOutOfBound ("Density calibration: physical filter or
    // density standard out of range") with `greyness` untouched.
    static bool GetGreyness(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard, QVWhiteBaseTYPE whiteBase,
                            float& greyness, bool withSlope);
    // (middle - weakest) / (strongest - weakest) of the colour densities, 0
    // when the strongest is below the small density. Only the strongest is
    // guarded: three equal colour densities above it divide 0 by 0 and give
    // NaN (float division; nothing traps). withSlope reads the calibration
    // as GetGreyness does, with the same range error for a standard outside
    // 0 to 5 (`hueError` untouched).
    static bool GetHueError(const QVSpectrum& spectrum, QVDensityStdTYPE densityStandard, QVWhiteBaseTYPE whiteBase,
                            float& hueError, bool withSlope);
    // The densities of filters 1, 2 and 3 in descending order into
    // sorted[0..2]. A null `sorted` raises ExceptionNullpointer with "Failed
    // to access to nullpointer.".
    static void SortColorDensities(const QVDensity& density, float* const sorted);
    // Classifies the measured spectrum against four reference solids
    // (references[c] is the solid of colour c) and the nominal tint
    // percentages tints[1], tints[2], tints[3]. `field` and `filter` are
    // working variables only. What the caller sees is the result, the
    // spectrum's density vector (white base "Pap") in `density`, and for a
    // recognised tint field f the entry table[f - 1] (tint error and
    // present). A null pointer among references, tints and table raises
    // ExceptionNullpointer with "Failed to access to nullpointer." when the
    // classification reaches it.
    static bool RecognizeColorField(QVDensity* references, const QVSpectrum& spectrum,
                                    QVDensityStdTYPE densityStandard, float* tints, FieldTYPE field,
                                    QVDensFilterTYPE filter, QVDensity& density, AutoTableTYPE* table);

    // The calibration store: slope (neutral 1.0) and offset (neutral 0.0) of
    // the four filter colours per physical filter (0 to 12) and density
    // standard (0 to 5). It is neutral from library start. Every accessor
    // below checks the cell first: a physical filter or standard outside
    // those ranges (a standard of -1, "Undefined", among them) raises
    // ExceptionOutOfBound with "Density calibration: physical filter or
    // density standard out of range" (it would address memory outside the
    // store) and reads or writes nothing. A cell inside them is checked
    // before a null value pointer, which raises ExceptionNullpointer with
    // "Failed to access to nullpointer.".
    static void InitializeDensityCalibration();
    static void ResetDensityCalibration(QVPhysicalFilterTYPE physicalFilter, const QVDensityStdTYPE& densityStandard);
    static const float* GetDensitySlope(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard);
    static const float* GetDensityOffset(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard);
    static void GetDensitySlope(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard, float* out);
    static void GetDensityOffset(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard, float* out);
    static void SetDensitySlope(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard, float* in);
    static void SetDensityOffset(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE densityStandard, float* in);

    // The filter set in use: it holds the standard last asked for.
    static DensityFilter& GetActDensityStdFilter();

    static constexpr int PhysicalFilterCount = 13;
    static constexpr int DensityStandardCount = 6;

    static DensityFilter asDensityFilter;
    static float asDensitySlopeArray[PhysicalFilterCount][DensityStandardCount][4];
    static float asDensityOffsetArray[PhysicalFilterCount][DensityStandardCount][4];

private:
    friend class TestAccess;

    // The solid's and the tint's density as the mode reads them: in mode 4
    // the solid's maximum density (relative to paper white) and the tint's
    // density spectrum (under `whiteBase`) at that wavelength; otherwise
    // both density vectors under `whiteBase`, calibrated when withSlope.
    static bool SolidAndTint(const QVSpectrum& solid, const QVSpectrum& tint, QVDensityStdTYPE densityStandard,
                             QVWhiteBaseTYPE whiteBase, DensityFilterModeTYPE mode, bool withSlope,
                             float& solidDensity, float& tintDensity);

    DensityCalculator() = default;
    DensityCalculator(const DensityCalculator&) = default;
};

} // namespace CMetry

#endif
