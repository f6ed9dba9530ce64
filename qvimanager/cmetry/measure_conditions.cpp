#include "qvimanager/cmetry/measure_conditions.h"

#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/density/density_calculator.h"
#include "qvimanager/platform/language_service_interface.h"

using Utilities::Map;
using Utilities::MapIterator;
using Utilities::SmartPointer;
using Utilities::String;
using Utilities::Vector;

namespace CMetry {

namespace {

// ---------------------------------------------------------------- value strings
// Every list ends in the sentinel "Undefined", which the table leaves out
// and the validators accept.

const String kUndefined("Undefined");

const String kIlluminationValues[] = {"A",   "B", "C",           "D50",      "D55",      "D65",
                                      "D75", "Dxx", "F", "Userdefined", "Emission", "Undefined"};
const String kObserverValues[] = {"TwoDegree", "TenDegree", "Undefined"};
const String kWhiteBaseValues[] = {"Absolute", "Paper", "Automatic", "Undefined"};
const String kDensityStandardValues[] = {"DIN", "DINNB", "ANSIA", "ANSIT", "SPI", "User", "Undefined"};
const String kDensityFilterModeValues[] = {"Black", "Cyan", "Magenta", "Yellow", "Max", "Auto", "Undefined"};
const String kColorSpaceValues[] = {"CIELab",     "CIELCh",     "CIELuv", "CIELChuv", "CIEuvY1960",
                                    "CIEuvY1976", "CIEXYZ",     "CIExyY", "HunterLab", "RxRyRz",
                                    "LABvq",      "LCHvq",      "RGB",    "CMYK",      "Undefined"};
const String kDeltaEFormulaValues[] = {"CIELab", "CIELuv", "LABvq", "FMCII", "CMC", "94", "Undefined"};
const String kVectorFormValues[] = {"AbsoluteVector", "DeltaVector", "Undefined"};
const String kPhysicalFilterValues[] = {"No",     "Polarizer",        "UVCut", "D65",
                                        "Custom", "CalibrationCheck", "ND0",   "Undefined"};
const String kNumberOfDataPointsValues[] = {"36", "Undefined"};
const String kWavelengthMaxValues[] = {"730nm", "Undefined"};
const String kWavelengthMinValues[] = {"380nm", "Undefined"};

// Element names: three absolute, then three delta (four and four for CMYK).
const String kCIELabElements[] = {"L*", "a*", "b*", "delta L*", "delta a*", "delta b*", "Undefined"};
const String kCIELChElements[] = {"L*", "C*", "h*", "delta L*", "delta C*", "delta H*", "Undefined"};
const String kCIELuvElements[] = {"L", "u*", "v*", "delta L", "delta u*", "delta v*", "Undefined"};
const String kCIELChuvElements[] = {"L", "C", "h", "delta L", "delta C", "delta H", "Undefined"};
const String kCIEuvY1960Elements[] = {"u' 1960",       "v' 1960",       "Y 1960",      "delta u' 1960",
                                      "delta v' 1960", "delta L 1960", "Undefined"};
const String kCIEuvY1976Elements[] = {"u' 1976",       "v' 1976",       "Y 1976",      "delta u' 1976",
                                      "delta v' 1976", "delta L 1976", "Undefined"};
const String kCIEXYZElements[] = {"X", "Y", "Z", "delta X", "delta Y", "delta Z", "Undefined"};
const String kCIExyYElements[] = {"x", "y", "Y", "delta x", "delta y", "delta Y", "Undefined"};
const String kHunterLabElements[] = {"L(l)",       "a(l)",       "b(l)",      "delta L(l)",
                                     "delta a(l)", "delta b(l)", "Undefined"};
const String kRxRyRzElements[] = {"Rx", "Ry", "Rz", "delta Rx", "delta Ry", "delta Rz", "Undefined"};
const String kLABvqElements[] = {"L(vq)",       "a(vq)",       "b(vq)",    "delta L(vq)",
                                 "delta a(vq)", "delta b(vq)", "Undefined"};
const String kLCHvqElements[] = {"L(vq)",       "C(vq)",       "h(vq)",    "delta L(vq)",
                                 "delta C(vq)", "delta H(vq)", "Undefined"};
const String kRGBElements[] = {"R", "G", "B", "delta R", "delta G", "delta B", "Undefined"};
const String kCMYKElements[] = {"C",       "M",       "Y",       "K",        "delta C",
                                "delta M", "delta Y", "delta K", "Undefined"};

// ---------------------------------------------------------------- keys

const String kIlluminationKey("Colorimetric.Illumination");
const String kObserverKey("Colorimetric.Observer");
const String kWhiteBaseKey("Colorimetric.WhiteBase");
const String kDensityStandardKey("Colorimetric.DensityStandard");
const String kDensityFilterModeKey("Colorimetric.DensityFilterMode");
const String kColorSpaceKey("ColorSpaceDescription.Type");
const String kDeltaEFormulaKey("ColorSpaceDescription.DeltaEFormula");
const String kVectorFormKey("ColorSpaceDescription.AbsoluteOrDeltaVector");
const String kPhysicalFilterKey("Physical.Filter");
const String kNumberOfDataPointsKey("Physical.NumberOfDataPointsSpectrum");
const String kWavelengthMaxKey("Physical.WavelengthSpectrumMax");
const String kWavelengthMinKey("Physical.WavelengthSpectrumMin");
const String kCustomConditionKey("CustomCondition");
const String kEnable("Enable");
const String kDeltaVector("DeltaVector");

// Raises ExceptionCMetry: the message translated, then its placeholder
// filled with the value.
[[noreturn]] void Raise(const char* message, const char* placeholder, const String& value)
{
    String text = Utilities::LanguageServiceInterface().GetTranslation(String(message));
    text.Replace(String(placeholder), value);
    throw ExceptionCMetry(text);
}

// Walks a value list including its "Undefined" sentinel.
bool IsListed(const String* values, const String& value)
{
    for (const String* entry = values;; ++entry) {
        if (*entry == value) {
            return true;
        }
        if (*entry == kUndefined) {
            return false;
        }
    }
}

} // namespace

// ---------------------------------------------------------------- QVIllumination

QVIllumination::QVIllumination() : FValue(0), ColorTemperature(0), IlluminationTYPE(IlluminationUndefined) {}

QVIllumination::QVIllumination(QVIlluminationTYPE type) : FValue(0), ColorTemperature(0), IlluminationTYPE(type) {}

QVIlluminationTYPE QVIllumination::GetIlluminationTYPE() const
{
    return IlluminationTYPE;
}

void QVIllumination::SetIlluminationTYPE(QVIlluminationTYPE type)
{
    IlluminationTYPE = type;
}

short QVIllumination::GetColorTemperature() const
{
    return ColorTemperature;
}

void QVIllumination::SetColorTemperature(short temperature)
{
    ColorTemperature = temperature;
}

unsigned char QVIllumination::GetFValue() const
{
    return FValue;
}

void QVIllumination::SetFValue(unsigned char fValue)
{
    FValue = fValue;
}

bool QVIllumination::operator!=(const QVIllumination& other) const
{
    return IlluminationTYPE != other.IlluminationTYPE || FValue != other.FValue ||
           ColorTemperature != other.ColorTemperature;
}

bool QVIllumination::operator==(const QVIllumination& other) const
{
    return !(*this != other);
}

Diagnostics::String QVIllumination::GetValueString() const
{
    Diagnostics::String text("IlluminationTYPE: ");
    text += CMetry::GetValueString(IlluminationTYPE);
    if (IlluminationTYPE == IlluminationDxx) {
        text += "; ColorTemperature: ";
        text += Diagnostics::String(static_cast<short>(ColorTemperature));
    } else if (IlluminationTYPE == IlluminationFxx) {
        text += "; F-Value: ";
        text += Diagnostics::String(static_cast<unsigned short>(FValue));
    }
    return text;
}

// ---------------------------------------------------------------- the static table

QVMeasureConditions::Initialisator QVMeasureConditions::asInitialisator;

Map<String, Vector<String>>& QVMeasureConditions::SupportedValuesTable()
{
    static Map<String, Vector<String>> table;
    return table;
}

QVMeasureConditions::Initialisator::Initialisator() : SmartPointer<QVMeasureConditions>(nullptr)
{
    AddType(kIlluminationKey, kIlluminationValues);
    AddType(kObserverKey, kObserverValues);
    AddType(kWhiteBaseKey, kWhiteBaseValues);
    AddType(kDensityStandardKey, kDensityStandardValues);
    AddType(kDensityFilterModeKey, kDensityFilterModeValues);
    AddType(kColorSpaceKey, kColorSpaceValues);
    AddType(kDeltaEFormulaKey, kDeltaEFormulaValues);
    AddType(kPhysicalFilterKey, kPhysicalFilterValues);
    AddType(kNumberOfDataPointsKey, kNumberOfDataPointsValues);
    AddType(kWavelengthMaxKey, kWavelengthMaxValues);
    AddType(kWavelengthMinKey, kWavelengthMinValues);
    AddType(kVectorFormKey, kVectorFormValues);

    AddType(String("ColorSpaceDescription.CIELab"), kCIELabElements);
    AddType(String("ColorSpaceDescription.CIELCh"), kCIELChElements);
    AddType(String("ColorSpaceDescription.CIELuv"), kCIELuvElements);
    AddType(String("ColorSpaceDescription.CIELChuv"), kCIELChuvElements);
    AddType(String("ColorSpaceDescription.CIEuvY1960"), kCIEuvY1960Elements);
    AddType(String("ColorSpaceDescription.CIEuvY1976"), kCIEuvY1976Elements);
    AddType(String("ColorSpaceDescription.CIEXYZ"), kCIEXYZElements);
    AddType(String("ColorSpaceDescription.CIExyY"), kCIExyYElements);
    AddType(String("ColorSpaceDescription.HunterLab"), kHunterLabElements);
    AddType(String("ColorSpaceDescription.RxRyRz"), kRxRyRzElements);
    AddType(String("ColorSpaceDescription.LABvq"), kLABvqElements);
    AddType(String("ColorSpaceDescription.LCHvq"), kLCHvqElements);
    AddType(String("ColorSpaceDescription.RGB"), kRGBElements);
    AddType(String("ColorSpaceDescription.CMYK"), kCMYKElements);
    // The shared initial custom-conditions map is made here, at load time,
    // so that no condition set allocates it later.
    (void)InitialCustomConditions();
    // Last: the density calibration store starts neutral.
    DensityCalculator::InitializeDensityCalibration();
}

Diagnostics::String QVMeasureConditions::Initialisator::GetValueString() const
{
    return Diagnostics::String();
}

void QVMeasureConditions::Initialisator::AddType(const String& key, const String* values) const
{
    Vector<String> list(100);
    unsigned long count = 0;
    for (; !(values[count] == kUndefined); ++count) {
        list[count] = values[count];
    }
    list.SetSize(count);
    SupportedValuesTable()[key] = list;
}

const Vector<String>& QVMeasureConditions::GetSupportedValues(const String& key)
{
    return SupportedValuesTable()[key];
}

// ---------------------------------------------------------------- QVMeasureConditions

QVMeasureConditions::QVMeasureConditions()
    : illumination(IlluminationD65), observer(ObserverTwoDegree), whiteBase(WhiteBaseAutomatic),
      densityStandard(DensityStdDIN), densityFilterMode(DensityFilterModeAuto), colorSpace("CIELab"),
      deltaEFormula("CIELab"), physicalFilter(PhysicalFilterNo), vectorForm("AbsoluteVector"), customConditions(),
      userdefinedIllumination()
{
    // The custom conditions start as the shared map of the switch
    // "CustomCondition" set to "Disable" (see GetCustomConditions): nothing
    // is allocated until the first custom entry is written.
}

const Map<String, String>& QVMeasureConditions::InitialCustomConditions()
{
    static const Map<String, String> initial = [] {
        Map<String, String> map;
        // A literal key: a static initialiser of another file may get here
        // before this file's constant strings exist.
        map[String("CustomCondition")] = String("Disable");
        return map;
    }();
    return initial;
}

const Map<String, String>& QVMeasureConditions::GetCustomConditions() const
{
    // An own map is made by the first custom write and is never empty again
    // (a Map removes nothing).
    return customConditions.GetCount() == 0 ? InitialCustomConditions() : customConditions;
}

QVMeasureConditions::QVMeasureConditions(const QVMeasureConditions& other) = default;

QVMeasureConditions& QVMeasureConditions::operator=(const QVMeasureConditions& other)
{
    if (this != &other) {
        illumination = other.illumination;
        observer = other.observer;
        whiteBase = other.whiteBase;
        densityStandard = other.densityStandard;
        densityFilterMode = other.densityFilterMode;
        colorSpace = other.colorSpace;
        deltaEFormula = other.deltaEFormula;
        physicalFilter = other.physicalFilter;
        vectorForm = other.vectorForm;
        customConditions = other.customConditions;
        userdefinedIllumination = other.userdefinedIllumination;
    }
    return *this;
}

QVMeasureConditions::~QVMeasureConditions() = default;

bool QVMeasureConditions::operator==(const QVMeasureConditions& other) const
{
    return colorSpace == other.colorSpace && illumination == other.illumination && observer == other.observer &&
           whiteBase == other.whiteBase && densityStandard == other.densityStandard &&
           densityFilterMode == other.densityFilterMode && deltaEFormula == other.deltaEFormula &&
           physicalFilter == other.physicalFilter && vectorForm == other.vectorForm &&
           userdefinedIllumination == other.userdefinedIllumination;
}

void QVMeasureConditions::SetMeasureCondition(const String& key, const String& value)
{
    MeasureConditionGetStrings strings;
    if (key == kPhysicalFilterKey) {
        physicalFilter = strings.GetPhysicalFilter(value);
    } else if (key == kObserverKey) {
        observer = strings.GetObserver(value);
    } else if (key == kIlluminationKey) {
        SetIllumination(strings.GetIllumination(value));
    } else if (key == kWhiteBaseKey) {
        whiteBase = strings.GetWhiteBase(value);
    } else if (key == kDensityStandardKey) {
        densityStandard = strings.GetDensityStandard(value);
    } else if (key == kDensityFilterModeKey) {
        densityFilterMode = strings.GetDensityFilterMode(value);
    } else if (key == kColorSpaceKey) {
        colorSpace = strings.GetColorSpace(value);
    } else if (key == kVectorFormKey) {
        vectorForm = strings.GetRelativeOrAbsoluteVector(value);
    } else if (key == kDeltaEFormulaKey) {
        deltaEFormula = strings.GetDeltaEFormula(value);
    } else if (key == kNumberOfDataPointsKey || key == kWavelengthMaxKey || key == kWavelengthMinKey) {
        // The grid is fixed: the value is neither checked nor kept.
    } else {
        const MapIterator<String, String> switchEntry = GetCustomConditions().Find(kCustomConditionKey);
        const bool enabled = switchEntry.IsValid() && switchEntry.GetValue() == kEnable;
        if (!(key == kCustomConditionKey) && !enabled) {
            Raise("Modification not supported for key: %KEY%", "%KEY%", key);
        }
        if (customConditions.GetCount() == 0) {
            // The first write: the set takes its own copy of the map it held.
            customConditions = InitialCustomConditions();
        }
        customConditions[key] = value;
    }
}

void QVMeasureConditions::SetMeasureConditions(Map<String, String> conditions)
{
    for (MapIterator<String, String> entry = conditions.Begin(); entry.IsValid(); entry++) {
        SetMeasureCondition(entry.GetKey(), entry.GetValue());
    }
}

void QVMeasureConditions::SetDefaultMeasureCondition(const String& key, const String& value)
{
    asInitialisator->SetMeasureCondition(key, value);
}

String QVMeasureConditions::GetMeasureCondition(const String& key) const
{
    MeasureConditionGetStrings strings;
    if (key == kPhysicalFilterKey) {
        return strings.ToString(physicalFilter);
    }
    if (key == kNumberOfDataPointsKey) {
        return kNumberOfDataPointsValues[0];
    }
    if (key == kWavelengthMaxKey) {
        return kWavelengthMaxValues[0];
    }
    if (key == kWavelengthMinKey) {
        return kWavelengthMinValues[0];
    }
    if (key == kObserverKey) {
        return strings.ToString(observer);
    }
    if (key == kIlluminationKey) {
        return strings.ToString(illumination);
    }
    if (key == kWhiteBaseKey) {
        return strings.ToString(whiteBase);
    }
    if (key == kDensityStandardKey) {
        return strings.ToString(densityStandard);
    }
    if (key == kDensityFilterModeKey) {
        return strings.ToString(densityFilterMode);
    }
    if (key == kColorSpaceKey) {
        return colorSpace;
    }
    if (key == kVectorFormKey) {
        return vectorForm;
    }
    if (key == kDeltaEFormulaKey) {
        return deltaEFormula;
    }
    const Map<String, String>& custom = GetCustomConditions();
    const MapIterator<String, String> switchEntry = custom.Find(kCustomConditionKey);
    if (switchEntry.IsValid() && switchEntry.GetValue() == kEnable) {
        const MapIterator<String, String> entry = custom.Find(key);
        if (entry.IsValid()) {
            return entry.GetValue();
        }
    }
    return kUndefined;
}

QVSpectrum QVMeasureConditions::GetUserdefinedIllumination() const
{
    return *userdefinedIllumination.operator->();
}

void QVMeasureConditions::SetUserdefinedIllumination(QVSpectrum spectrum)
{
    userdefinedIllumination = SmartPointer<QVSpectrum>(new QVSpectrum(spectrum));
    SetMeasureCondition(kIlluminationKey, String("Userdefined"));
}

void QVMeasureConditions::SetPhysMeasCond(const QVMeasureConditions& other)
{
    physicalFilter = other.physicalFilter;
}

String QVMeasureConditions::GetElementName(short index) const
{
    const unsigned long offset = GetMeasureCondition(kVectorFormKey) == kDeltaVector ? 3 : 0;
    const unsigned long position = static_cast<unsigned short>(index) + offset;
    return GetSupportedValues(String("ColorSpaceDescription.") + colorSpace)[position];
}

Diagnostics::String QVMeasureConditions::GetValueString() const
{
    return Diagnostics::String();
}

QVPhysicalFilterTYPE QVMeasureConditions::GetPhysicalFilter() const
{
    return physicalFilter;
}

QVWhiteBaseTYPE QVMeasureConditions::GetWhiteBase() const
{
    return whiteBase;
}

QVObserverTYPE QVMeasureConditions::GetObserver() const
{
    return observer;
}

QVDensityStdTYPE QVMeasureConditions::GetDensityStandard() const
{
    return densityStandard;
}

DensityFilterModeTYPE QVMeasureConditions::GetDensityFilterMode() const
{
    return densityFilterMode;
}

QVIllumination QVMeasureConditions::GetIllumination() const
{
    return illumination;
}

void QVMeasureConditions::SetWhiteBase(QVWhiteBaseTYPE value)
{
    whiteBase = value;
}

void QVMeasureConditions::SetObserver(QVObserverTYPE value)
{
    observer = value;
}

void QVMeasureConditions::SetIllumination(const QVIllumination& value)
{
    illumination = value;
    if (value != QVIllumination(IlluminationUserdefined)) {
        userdefinedIllumination = SmartPointer<QVSpectrum>();
    }
}

// ---------------------------------------------------------------- MeasureConditionGetStrings

QVIllumination MeasureConditionGetStrings::GetIllumination(const String& value)
{
    // Exact names, codes 0 to 6 in code order.
    static const char* const kFixed[] = {"A", "B", "C", "D75", "D65", "D55", "D50"};
    for (std::int32_t code = 0; code < 7; ++code) {
        if (value == String(kFixed[code])) {
            return QVIllumination(static_cast<QVIlluminationTYPE>(code));
        }
    }
    if (value == String("F2")) {
        return QVIllumination(IlluminationF2);
    }
    if (value == String("F7")) {
        return QVIllumination(IlluminationF7);
    }
    if (value == String("F11")) {
        return QVIllumination(IlluminationF11);
    }
    if (value.Length() > 0 && value.GetCharPointer()[0] == 'F') {
        // The low byte of the number: a number above 255 is cut to 8 bits.
        QVIllumination fluorescent(IlluminationFxx);
        fluorescent.SetFValue(static_cast<unsigned char>(value.GetToken(1, 'F').GetShort()));
        return fluorescent;
    }
    if (value.GetToken(0, ':') == String("Dxx, Temperature")) {
        QVIllumination daylight(IlluminationDxx);
        daylight.SetColorTemperature(value.GetToken(1, ':').GetShort());
        return daylight;
    }
    if (value == kUndefined) {
        return QVIllumination(IlluminationUndefined);
    }
    if (value == String("Userdefined")) {
        return QVIllumination(IlluminationUserdefined);
    }
    if (value == String("Emission")) {
        return QVIllumination(IlluminationEmission);
    }
    Raise("%VALUE% is not a valid illuminationtype", "%VALUE%", value);
}

namespace {

// Finds `value` among `names` (codes first .. first + count - 1, in code
// order), or "Undefined".
template <typename Enumeration>
bool ParseEnumeration(const String& value, const char* const* names, std::int32_t first, std::int32_t count,
                      Enumeration undefined, Enumeration& result)
{
    for (std::int32_t i = 0; i < count; ++i) {
        if (value == String(names[i])) {
            result = static_cast<Enumeration>(first + i);
            return true;
        }
    }
    if (value == kUndefined) {
        result = undefined;
        return true;
    }
    return false;
}

const char* const kObserverNames[] = {"TwoDegree", "TenDegree"};
const char* const kWhiteBaseNames[] = {"Absolute", "Paper", "Automatic"};
const char* const kDensityStandardNames[] = {"DIN", "DINNB", "ANSIA", "ANSIT", "SPI", "User"};
const char* const kDensityFilterModeNames[] = {"Black", "Cyan", "Magenta", "Yellow", "Max", "Auto"};

// The name of a code among names[0 .. count - 1], or "Undefined".
String NameOf(std::int32_t code, const char* const* names, std::int32_t count)
{
    return code >= 0 && code < count ? String(names[code]) : kUndefined;
}

} // namespace

QVObserverTYPE MeasureConditionGetStrings::GetObserver(const String& value)
{
    QVObserverTYPE result = ObserverUndefined;
    if (!ParseEnumeration(value, kObserverNames, 0, 2, ObserverUndefined, result)) {
        Raise("%VALUE% is not a valid observertype", "%VALUE%", value);
    }
    return result;
}

QVWhiteBaseTYPE MeasureConditionGetStrings::GetWhiteBase(const String& value)
{
    QVWhiteBaseTYPE result = WhiteBaseUndefined;
    if (!ParseEnumeration(value, kWhiteBaseNames, 0, 3, WhiteBaseUndefined, result)) {
        Raise("%VALUE% is not a valid whitespacetype", "%VALUE%", value);
    }
    return result;
}

QVDensityStdTYPE MeasureConditionGetStrings::GetDensityStandard(const String& value)
{
    QVDensityStdTYPE result = DensityStdUndefined;
    if (!ParseEnumeration(value, kDensityStandardNames, 0, 6, DensityStdUndefined, result)) {
        Raise("%VALUE% is not a valid density standard type", "%VALUE%", value);
    }
    return result;
}

DensityFilterModeTYPE MeasureConditionGetStrings::GetDensityFilterMode(const String& value)
{
    DensityFilterModeTYPE result = DensityFilterModeUndefined;
    if (!ParseEnumeration(value, kDensityFilterModeNames, 0, 6, DensityFilterModeUndefined, result)) {
        Raise("%VALUE% is not a valid density filter mode", "%VALUE%", value);
    }
    return result;
}

namespace {

struct PhysicalFilterName {
    QVPhysicalFilterTYPE code;
    const char* name;
};

// In code order; "Undefined" is code 0.
const PhysicalFilterName kPhysicalFilterNames[] = {
    {PhysicalFilterNo, "No"},
    {PhysicalFilterPolarizer, "Polarizer"},
    {PhysicalFilterD65, "D65"},
    {PhysicalFilterUVCut, "UVCut"},
    {PhysicalFilterLastSelectable, "LastSelectable"},
    {PhysicalFilterCustom, "Custom"},
    {PhysicalFilterCalibrationCheck, "CalibrationCheck"},
    {PhysicalFilterND0, "ND0"},
};

} // namespace

QVPhysicalFilterTYPE MeasureConditionGetStrings::GetPhysicalFilter(const String& value)
{
    for (const PhysicalFilterName& entry : kPhysicalFilterNames) {
        if (value == String(entry.name)) {
            return entry.code;
        }
    }
    if (value == kUndefined) {
        return PhysicalFilterUndefined;
    }
    // The same words as the white base's message.
    Raise("%VALUE% is not a valid whitespacetype", "%VALUE%", value);
}

String MeasureConditionGetStrings::ToString(const QVIllumination& value) const
{
    static const char* const kNames[] = {"A", "B", "C", "D75", "D65", "D55", "D50"};
    const QVIlluminationTYPE type = value.GetIlluminationTYPE();
    switch (type) {
    case IlluminationDxx:
        return String("Dxx, Temperature:") + String(static_cast<long>(value.GetColorTemperature()));
    case IlluminationF2:
        return String("F2");
    case IlluminationF7:
        return String("F7");
    case IlluminationF11:
        return String("F11");
    case IlluminationFxx:
        return String("F") + String(static_cast<unsigned long>(value.GetFValue()));
    case IlluminationUserdefined:
        return String("Userdefined");
    case IlluminationEmission:
        return String("Emission");
    default:
        return NameOf(type, kNames, 7);
    }
}

String MeasureConditionGetStrings::ToString(QVObserverTYPE value) const
{
    return NameOf(value, kObserverNames, 2);
}

String MeasureConditionGetStrings::ToString(QVWhiteBaseTYPE value) const
{
    return NameOf(value, kWhiteBaseNames, 3);
}

String MeasureConditionGetStrings::ToString(QVDensityStdTYPE value) const
{
    return NameOf(value, kDensityStandardNames, 6);
}

String MeasureConditionGetStrings::ToString(DensityFilterModeTYPE value) const
{
    return NameOf(value, kDensityFilterModeNames, 6);
}

String MeasureConditionGetStrings::ToString(QVPhysicalFilterTYPE value) const
{
    for (const PhysicalFilterName& entry : kPhysicalFilterNames) {
        if (entry.code == value) {
            return String(entry.name);
        }
    }
    return kUndefined;
}

const String& MeasureConditionGetStrings::GetColorSpace(const String& value)
{
    if (!IsListed(kColorSpaceValues, value)) {
        Raise("%VALUE% is not a valid color space", "%VALUE%", value);
    }
    return value;
}

const String& MeasureConditionGetStrings::GetDeltaEFormula(const String& value)
{
    if (!IsListed(kDeltaEFormulaValues, value)) {
        Raise("%VALUE% is not a valid delta E formula", "%VALUE%", value);
    }
    return value;
}

const String& MeasureConditionGetStrings::GetRelativeOrAbsoluteVector(const String& value)
{
    if (!IsListed(kVectorFormValues, value)) {
        Raise("%VALUE% is not valid for absolute or relative vectors", "%VALUE%", value);
    }
    return value;
}

Diagnostics::String MeasureConditionGetStrings::GetValueString() const
{
    return Diagnostics::String();
}

// ---------------------------------------------------------------- diagnostic texts

namespace {

const char* const kNotDefined = "not defined";

// The text of a code among texts[0 .. count - 1] (null for a gap), or
// "not defined".
Diagnostics::String TextOf(std::int32_t code, const char* const* texts, std::int32_t count)
{
    if (code < 0 || code >= count || texts[code] == nullptr) {
        return Diagnostics::String(kNotDefined);
    }
    return Diagnostics::String(texts[code]);
}

} // namespace

Diagnostics::String GetValueString(ColorTYPE value)
{
    static const char* const kTexts[] = {"Magenta", nullptr, "Blue",   "Cyan",   "Turquo", "Green",
                                         "Olive",   "YellowGreen", "Beige", "Brown", "Yellow", "Orange",
                                         "Red",     "White", "Gray",   "Black"};
    return TextOf(value, kTexts, 16);
}

Diagnostics::String GetValueString(QVIlluminationTYPE value)
{
    static const char* const kTexts[] = {"A",   "not defined", "C",   "not defined", "D65",   "not defined", "D50",
                                         "Dxx", "F2",          "F7",  "F11",         "Fxx",   "User defined",
                                         "not defined"};
    return TextOf(value, kTexts, 14);
}

Diagnostics::String GetValueString(QVObserverTYPE value)
{
    static const char* const kTexts[] = {"2\x83", "10\x83"};
    return TextOf(value, kTexts, 2);
}

Diagnostics::String GetValueString(QVWhiteBaseTYPE value)
{
    static const char* const kTexts[] = {"Abs", "Pap", "Auto"};
    return TextOf(value, kTexts, 3);
}

Diagnostics::String GetValueString(QVDensityStdTYPE value)
{
    static const char* const kTexts[] = {"Densitometer filter DIN",   "Densitometer filter DINNB",
                                         "Densitometer filter ANSIA", "Densitometer filter ANSIT",
                                         "Densitometer filter SPI",   "User defined density standard"};
    return TextOf(value, kTexts, 6);
}

Diagnostics::String GetValueString(DStdTYPE value)
{
    if (value == DStdTypeDummy) {
        return Diagnostics::String("DStdTYPE DStdTypeDummy");
    }
    static const char* const kTexts[] = {"DStdTYPE ANSIA", "DStdTYPE ANSIT", "DStdTYPE DIN",
                                         "DStdTYPE DINNB", "DStdTYPE SPI",   "DStdTYPE PF",
                                         "DStdTYPE ANSIM", nullptr,          "DStdTYPE DS1"};
    return TextOf(value, kTexts, 9);
}

Diagnostics::String GetValueString(QVDensFilterTYPE value)
{
    static const char* const kTexts[] = {"Density color black", "Density color cyan", "Density color magenta",
                                         "Density color yellow"};
    return TextOf(value, kTexts, 4);
}

Diagnostics::String GetValueString(DensityFilterModeTYPE value)
{
    static const char* const kTexts[] = {"Density color black",  "Density color cyan", "Density color magenta",
                                         "Density color yellow", "max wave length",    "automatic filter selection"};
    return TextOf(value, kTexts, 6);
}

Diagnostics::String GetValueString(QVPhysicalFilterTYPE value)
{
    if (value == PhysicalFilterUndefined) {
        return Diagnostics::String(kNotDefined);
    }
    for (const PhysicalFilterName& entry : kPhysicalFilterNames) {
        if (entry.code == value) {
            return Diagnostics::String(entry.name);
        }
    }
    return Diagnostics::String(kNotDefined);
}

Diagnostics::String GetValueString(const float* values)
{
    if (values == nullptr) {
        throw Utilities::ExceptionNullpointer("Failed to access to nullpointer.");
    }
    Diagnostics::String text("Values: ");
    text += Diagnostics::String(values[0]);
    text += ", ";
    text += Diagnostics::String(values[1]);
    text += ", ";
    text += Diagnostics::String(values[2]);
    text += ", ...";
    return text;
}

} // namespace CMetry
