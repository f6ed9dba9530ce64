#ifndef QVIMANAGER_CMETRY_MEASURE_CONDITIONS_H
#define QVIMANAGER_CMETRY_MEASURE_CONDITIONS_H

// Measure conditions: the vocabulary of the colorimetry engine.
//
// Every spectrum, colour vector and density value carries a
// QVMeasureConditions: illuminant, observer, white reference, density
// standard and filter mode, physical filter, colour space, vector form and
// colour-difference formula. Callers speak to it in text only, a dotted key
// and a value string ("Colorimetric.Illumination" = "D65"); the calculators
// read the typed fields as friends.
//
// The enumerations have two vocabularies that disagree on purpose: the value
// strings, which MeasureConditionGetStrings parses and formats and the key
// interface accepts and returns, and the diagnostic texts of the free
// GetValueString overloads (B, D75, D55 and Emission print "not defined").
//
// Every failure is raised as ExceptionCMetry with its English text passed
// through LanguageServiceInterface::GetTranslation and then its placeholder
// filled; numeric failures inside illumination values come from
// String::GetShort unchanged. A failing set leaves the object unchanged.

#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

#include <cstdint>

namespace CMetry {

// ---------------------------------------------------------------- enumerations
// All 32-bit signed.

enum QVIlluminationTYPE : std::int32_t {
    IlluminationUndefined = -1,
    IlluminationA = 0,
    IlluminationB = 1,
    IlluminationC = 2,
    IlluminationD75 = 3,
    IlluminationD65 = 4,
    IlluminationD55 = 5,
    IlluminationD50 = 6,
    IlluminationDxx = 7, // daylight of a given colour temperature
    IlluminationF2 = 8,
    IlluminationF7 = 9,
    IlluminationF11 = 10,
    IlluminationFxx = 11, // fluorescent lamp of a given F number
    IlluminationUserdefined = 12,
    IlluminationEmission = 13
};

enum QVObserverTYPE : std::int32_t {
    ObserverUndefined = -1,
    ObserverTwoDegree = 0,
    ObserverTenDegree = 1
};

enum QVWhiteBaseTYPE : std::int32_t {
    WhiteBaseUndefined = -1,
    WhiteBaseAbsolute = 0,
    WhiteBasePaper = 1,
    WhiteBaseAutomatic = 2
};

enum QVDensityStdTYPE : std::int32_t {
    DensityStdUndefined = -1,
    DensityStdDIN = 0,
    DensityStdDINNB = 1,
    DensityStdANSIA = 2,
    DensityStdANSIT = 3,
    DensityStdSPI = 4,
    DensityStdUser = 5
};

enum DensityFilterModeTYPE : std::int32_t {
    DensityFilterModeUndefined = -1,
    DensityFilterModeBlack = 0,
    DensityFilterModeCyan = 1,
    DensityFilterModeMagenta = 2,
    DensityFilterModeYellow = 3,
    DensityFilterModeMax = 4,
    DensityFilterModeAuto = 5
};

// One density channel. No value strings.
enum QVDensFilterTYPE : std::int32_t {
    DensFilterBlack = 0,
    DensFilterCyan = 1,
    DensFilterMagenta = 2,
    DensFilterYellow = 3
};

// The one enumeration whose undefined code is 0; codes 6 to 9 are unused.
enum QVPhysicalFilterTYPE : std::int32_t {
    PhysicalFilterUndefined = 0,
    PhysicalFilterNo = 1,
    PhysicalFilterPolarizer = 2,
    PhysicalFilterD65 = 3,
    PhysicalFilterUVCut = 4,
    PhysicalFilterLastSelectable = 5,
    PhysicalFilterCustom = 10,
    PhysicalFilterCalibrationCheck = 11,
    PhysicalFilterND0 = 12
};

// Density standards in another order than QVDensityStdTYPE: never cast one
// into the other. Diagnostic texts only.
enum DStdTYPE : std::int32_t {
    DStdANSIA = 0,
    DStdANSIT = 1,
    DStdDIN = 2,
    DStdDINNB = 3,
    DStdSPI = 4,
    DStdPF = 5,
    DStdANSIM = 6,
    DStdDS1 = 8,
    DStdTypeDummy = 0x1FFFFFFF // forces the enumeration to full width
};

// Colour classes of a measured patch. Diagnostic texts only; code 1 has no
// name, and -1 is the failure of a classification.
enum ColorTYPE : std::int32_t {
    ColorUndefined = -1,
    ColorMagenta = 0,
    ColorBlue = 2,
    ColorCyan = 3,
    ColorTurquo = 4,
    ColorGreen = 5,
    ColorOlive = 6,
    ColorYellowGreen = 7,
    ColorBeige = 8,
    ColorBrown = 9,
    ColorYellow = 10,
    ColorOrange = 11,
    ColorRed = 12,
    ColorWhite = 13,
    ColorGray = 14,
    ColorBlack = 15
};

// ---------------------------------------------------------------- QVIllumination

// An illuminant with its parameters: the F number for code 11 (Fxx), the
// colour temperature in kelvin for code 7 (Dxx).
class QVIllumination {
public:
    // Type -1, parameters 0.
    QVIllumination();
    // The type, parameters 0.
    explicit QVIllumination(QVIlluminationTYPE type);
    QVIllumination(const QVIllumination& other) = default;
    QVIllumination& operator=(const QVIllumination& other) = default;

    QVIlluminationTYPE GetIlluminationTYPE() const;
    void SetIlluminationTYPE(QVIlluminationTYPE type);
    short GetColorTemperature() const;
    void SetColorTemperature(short temperature);
    unsigned char GetFValue() const;
    void SetFValue(unsigned char fValue);

    // All three fields count, also those the type does not use.
    bool operator==(const QVIllumination& other) const;
    bool operator!=(const QVIllumination& other) const;

    void Invariant() const {}
    // "IlluminationTYPE: " and the type's diagnostic text; for Dxx then
    // "; ColorTemperature: " and the temperature, for Fxx "; F-Value: " and
    // the F number.
    Diagnostics::String GetValueString() const;

private:
    std::uint8_t FValue;
    std::int16_t ColorTemperature;
    QVIlluminationTYPE IlluminationTYPE;
};

// ---------------------------------------------------------------- QVMeasureConditions

class QVSpectrum;

// A condition set. The keys and their supported values, in list order:
//
//   "Colorimetric.Illumination"       A, B, C, D50, D55, D65, D75, Dxx, F,
//                                     Userdefined, Emission        (D65)
//   "Colorimetric.Observer"           TwoDegree, TenDegree         (TwoDegree)
//   "Colorimetric.WhiteBase"          Absolute, Paper, Automatic   (Automatic)
//   "Colorimetric.DensityStandard"    DIN, DINNB, ANSIA, ANSIT, SPI, User (DIN)
//   "Colorimetric.DensityFilterMode"  Black, Cyan, Magenta, Yellow, Max, Auto
//                                                                  (Auto)
//   "ColorSpaceDescription.Type"      CIELab, CIELCh, CIELuv, CIELChuv,
//                                     CIEuvY1960, CIEuvY1976, CIEXYZ, CIExyY,
//                                     HunterLab, RxRyRz, LABvq, LCHvq, RGB,
//                                     CMYK                         (CIELab)
//   "ColorSpaceDescription.DeltaEFormula"  CIELab, CIELuv, LABvq, FMCII, CMC,
//                                     94                           (CIELab)
//   "ColorSpaceDescription.AbsoluteOrDeltaVector"  AbsoluteVector,
//                                     DeltaVector             (AbsoluteVector)
//   "Physical.Filter"                 No, Polarizer, UVCut, D65, Custom,
//                                     CalibrationCheck, ND0        (No)
//   "Physical.NumberOfDataPointsSpectrum"  36, fixed
//   "Physical.WavelengthSpectrumMax"  730nm, fixed
//   "Physical.WavelengthSpectrumMin"  380nm, fixed
//
// The supported-values lists are a menu: the parsers are stricter. "Dxx"
// alone is refused, "Dxx, Temperature:6500" is accepted; "F" alone is
// refused, "F12" is code 11 with F number 12, while "F2", "F7" and "F11" are
// codes 8, 9 and 10. Every parser and validator accepts "Undefined".
//
// "CustomCondition" is a further key: "Enable" opens a map of custom keys,
// any other text closes it again (the map keeps what it holds). The switch
// is itself an entry of that map, which a fresh set holds as its only entry
// with the value "Disable"; reading the key gives "Enable" when enabled and
// "Undefined" otherwise, never "Disable".
class QVMeasureConditions {
public:
    // D65, TwoDegree, Automatic, DIN, Auto, CIELab, CIELab, No,
    // AbsoluteVector, custom conditions disabled, no user spectrum.
    QVMeasureConditions();
    // Copies take every field; a user-defined spectrum is shared.
    QVMeasureConditions(const QVMeasureConditions& other);
    QVMeasureConditions& operator=(const QVMeasureConditions& other);
    ~QVMeasureConditions();

    // Compares, up to the first difference: colour space, illumination,
    // observer, white base, density standard, density filter mode, delta-E
    // formula, physical filter, vector form, and whether both share the same
    // user-defined spectrum (identity, not spectral equality). The custom
    // conditions take no part.
    bool operator==(const QVMeasureConditions& other) const;

    // Parses or validates the value for the key and stores it. The three
    // fixed keys ignore any value. Another key raises "Modification not
    // supported for key: %KEY%" unless it is "CustomCondition" or the custom
    // conditions are enabled, when it is stored among them.
    void SetMeasureCondition(const Utilities::String& key, const Utilities::String& value);
    // Sets each pair in the map's iteration order; the first failure ends
    // the walk and the pairs before it stay set.
    void SetMeasureConditions(Utilities::Map<Utilities::String, Utilities::String> conditions);
    // There is no process-wide default set: this always raises
    // ExceptionNullpointer with "Failed to access to nullpointer.".
    static void SetDefaultMeasureCondition(const Utilities::String& key, const Utilities::String& value);
    // The value string for the key. An unknown key (or a custom key while the
    // custom conditions are disabled) gives "Undefined"; it never raises.
    Utilities::String GetMeasureCondition(const Utilities::String& key) const;

    // A copy of the user-defined illumination. Raises ExceptionNullpointer
    // with "Failed to access to nullpointer." when there is none.
    QVSpectrum GetUserdefinedIllumination() const;
    // Keeps a copy of the spectrum and sets the illumination to
    // "Userdefined". Setting any other illumination drops the spectrum.
    void SetUserdefinedIllumination(QVSpectrum spectrum);

    // The supported values of a key, or the element names of a colour space
    // under "ColorSpaceDescription." and its name (three absolute names,
    // then three delta names; four and four for CMYK). An unknown key gives
    // an empty list, and that empty entry stays in the table.
    static const Utilities::Vector<Utilities::String>& GetSupportedValues(const Utilities::String& key);

    // Copies the physical filter of `other`, nothing else.
    void SetPhysMeasCond(const QVMeasureConditions& other);

    // The name of element `index` of the colour space, among the delta names
    // (offset 3) in delta-vector form. The offset is 3 for CMYK too, so in
    // delta form index 0 of CMYK is "K". Raises ExceptionOutOfBound with
    // "vector index >= vector size" past the list; a negative index counts
    // as a large unsigned one.
    Utilities::String GetElementName(short index) const;

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

    // Fills the static table of supported values and element names at load
    // time, from value-string arrays that end in "Undefined". It is a smart
    // pointer that never holds an object.
    class Initialisator : public Utilities::SmartPointer<QVMeasureConditions> {
    public:
        Initialisator();
        void Invariant() const override {}
        // The empty text.
        Diagnostics::String GetValueString() const override;
        // Copies `values` up to, not including, the first "Undefined" into
        // the table's entry for `key` (100 values at most).
        void AddType(const Utilities::String& key, const Utilities::String* values) const;
    };

private:
    friend class TestAccess;
    friend class QVSpectrum;
    friend class BaseCalculator;
    friend class CMetryCalculator;
    friend class CMetryFilter;
    friend class CMetryService;
    friend class ColorTemperature;
    friend class DensityCalculator;
    friend class DensityService;
    friend class Lab2Spec;
    friend class StandardFilter;
    friend class Weightfactors;

    QVPhysicalFilterTYPE GetPhysicalFilter() const;
    QVWhiteBaseTYPE GetWhiteBase() const;
    QVObserverTYPE GetObserver() const;
    QVDensityStdTYPE GetDensityStandard() const;
    DensityFilterModeTYPE GetDensityFilterMode() const;
    QVIllumination GetIllumination() const;
    void SetWhiteBase(QVWhiteBaseTYPE whiteBase);
    void SetObserver(QVObserverTYPE observer);
    // Stores the illumination; any illumination but a plain "Userdefined"
    // (type 12, parameters 0) drops the user-defined spectrum.
    void SetIllumination(const QVIllumination& illumination);

    static Utilities::Map<Utilities::String, Utilities::Vector<Utilities::String>>& SupportedValuesTable();

    // The custom-conditions map of this set: the switch "CustomCondition"
    // and the custom keys, in the map's order. It always holds the switch:
    // a fresh set holds exactly "CustomCondition" = "Disable".
    const Utilities::Map<Utilities::String, Utilities::String>& GetCustomConditions() const;
    // The one map that every set holds until its first custom entry is
    // written: "CustomCondition" = "Disable" and nothing else. Made at load
    // time, before the first condition set can read it.
    static const Utilities::Map<Utilities::String, Utilities::String>& InitialCustomConditions();

    QVIllumination illumination;
    QVObserverTYPE observer;
    QVWhiteBaseTYPE whiteBase;
    QVDensityStdTYPE densityStandard;
    DensityFilterModeTYPE densityFilterMode;
    Utilities::String colorSpace;
    Utilities::String deltaEFormula;
    QVPhysicalFilterTYPE physicalFilter;
    Utilities::String vectorForm;
    // The set's own copy of its custom-conditions map, made by the first
    // custom write: a copy of InitialCustomConditions() with the write
    // applied, so the switch is its first insertion. While it is empty the
    // set's map is the shared InitialCustomConditions(), so building and
    // copying a condition set allocate nothing for it. Read it only through
    // GetCustomConditions().
    Utilities::Map<Utilities::String, Utilities::String> customConditions;
    Utilities::SmartPointer<QVSpectrum> userdefinedIllumination;

    static Initialisator asInitialisator;
};

// ---------------------------------------------------------------- MeasureConditionGetStrings

// Stateless converter between value strings and enumerations. The parsers
// compare exactly, in code order, and accept "Undefined"; a text they do not
// know raises ExceptionCMetry:
//   GetIllumination       "%VALUE% is not a valid illuminationtype"
//   GetObserver           "%VALUE% is not a valid observertype"
//   GetWhiteBase          "%VALUE% is not a valid whitespacetype"
//   GetPhysicalFilter     "%VALUE% is not a valid whitespacetype" (the same
//                         words as the white base)
//   GetDensityStandard    "%VALUE% is not a valid density standard type"
//   GetDensityFilterMode  "%VALUE% is not a valid density filter mode"
// The ToString forms give "Undefined" for a code without a name.
class MeasureConditionGetStrings {
public:
    MeasureConditionGetStrings() = default;
    MeasureConditionGetStrings(const MeasureConditionGetStrings&) = default;
    MeasureConditionGetStrings& operator=(const MeasureConditionGetStrings&) = default;
    ~MeasureConditionGetStrings() = default;

    // "A" ... "D50" give codes 0 to 6; "F2", "F7", "F11" codes 8 to 10; any
    // other text starting with "F" code 11 with the low byte of the number
    // behind it; "Dxx, Temperature:" and a number code 7; "Undefined",
    // "Userdefined", "Emission" codes -1, 12, 13.
    QVIllumination GetIllumination(const Utilities::String& value);
    QVObserverTYPE GetObserver(const Utilities::String& value);
    QVWhiteBaseTYPE GetWhiteBase(const Utilities::String& value);
    QVDensityStdTYPE GetDensityStandard(const Utilities::String& value);
    DensityFilterModeTYPE GetDensityFilterMode(const Utilities::String& value);
    // "No", "Polarizer", "D65", "UVCut", "LastSelectable" (parsed although not
    // offered), "Custom", "CalibrationCheck", "ND0", "Undefined".
    QVPhysicalFilterTYPE GetPhysicalFilter(const Utilities::String& value);

    // Dxx: "Dxx, Temperature:" and the temperature; Fxx: "F" and the number.
    Utilities::String ToString(const QVIllumination& illumination) const;
    Utilities::String ToString(QVObserverTYPE observer) const;
    Utilities::String ToString(QVWhiteBaseTYPE whiteBase) const;
    Utilities::String ToString(QVDensityStdTYPE densityStandard) const;
    Utilities::String ToString(DensityFilterModeTYPE densityFilterMode) const;
    Utilities::String ToString(QVPhysicalFilterTYPE physicalFilter) const;

    // Validators: each returns its argument when it is a supported value or
    // "Undefined", and otherwise raises
    //   "%VALUE% is not a valid color space",
    //   "%VALUE% is not a valid delta E formula",
    //   "%VALUE% is not valid for absolute or relative vectors".
    const Utilities::String& GetColorSpace(const Utilities::String& value);
    const Utilities::String& GetDeltaEFormula(const Utilities::String& value);
    const Utilities::String& GetRelativeOrAbsoluteVector(const Utilities::String& value);

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;
};

// ---------------------------------------------------------------- diagnostics

// The diagnostic texts of the enumerations ("not defined" for a code without
// one).
Diagnostics::String GetValueString(ColorTYPE color);
Diagnostics::String GetValueString(QVIlluminationTYPE illumination);
Diagnostics::String GetValueString(QVObserverTYPE observer);
Diagnostics::String GetValueString(QVWhiteBaseTYPE whiteBase);
Diagnostics::String GetValueString(QVDensityStdTYPE densityStandard);
Diagnostics::String GetValueString(DStdTYPE densityStandard);
Diagnostics::String GetValueString(QVDensFilterTYPE densityFilter);
Diagnostics::String GetValueString(DensityFilterModeTYPE densityFilterMode);
Diagnostics::String GetValueString(QVPhysicalFilterTYPE physicalFilter);
// "Values: " and exactly the first three values, then ", ...". A null
// pointer raises ExceptionNullpointer with "Failed to access to
// nullpointer." instead of reading through it.
Diagnostics::String GetValueString(const float* values);

} // namespace CMetry

#endif
