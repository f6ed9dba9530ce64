// QVMeasureConditions: the key interface (twelve keys, their defaults and
// supported values, the custom conditions), the element names of the colour
// spaces, equality, copying, the physical-filter transfer, the missing
// process-wide default set and the user-defined illumination.
//
// Every refusal is checked word for word with its placeholder filled, and a
// refused set must leave the object exactly as it was.

#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

using CMetry::ExceptionCMetry;
using CMetry::QVIllumination;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using TestSupport::FailureText;
using Utilities::ExceptionNullpointer;
using Utilities::ExceptionOutOfBound;
using Utilities::Map;
using Utilities::String;
using Utilities::Vector;

namespace {

const char* const kIlluminationKey = "Colorimetric.Illumination";
const char* const kObserverKey = "Colorimetric.Observer";
const char* const kWhiteBaseKey = "Colorimetric.WhiteBase";
const char* const kDensityStandardKey = "Colorimetric.DensityStandard";
const char* const kDensityFilterModeKey = "Colorimetric.DensityFilterMode";
const char* const kColorSpaceKey = "ColorSpaceDescription.Type";
const char* const kDeltaEFormulaKey = "ColorSpaceDescription.DeltaEFormula";
const char* const kVectorFormKey = "ColorSpaceDescription.AbsoluteOrDeltaVector";
const char* const kPhysicalFilterKey = "Physical.Filter";
const char* const kNumberOfDataPointsKey = "Physical.NumberOfDataPointsSpectrum";
const char* const kWavelengthMaxKey = "Physical.WavelengthSpectrumMax";
const char* const kWavelengthMinKey = "Physical.WavelengthSpectrumMin";
const char* const kCustomConditionKey = "CustomCondition";

// The twelve keys with the value a fresh object answers.
const std::vector<std::pair<std::string, std::string>> kDefaults = {
    {kIlluminationKey, "D65"},      {kObserverKey, "TwoDegree"},        {kWhiteBaseKey, "Automatic"},
    {kDensityStandardKey, "DIN"},   {kDensityFilterModeKey, "Auto"},    {kColorSpaceKey, "CIELab"},
    {kDeltaEFormulaKey, "CIELab"},  {kVectorFormKey, "AbsoluteVector"}, {kPhysicalFilterKey, "No"},
    {kNumberOfDataPointsKey, "36"}, {kWavelengthMaxKey, "730nm"},       {kWavelengthMinKey, "380nm"},
};

// The nine keys that store a value, each with an accepted value that differs
// from its default.
const std::vector<std::pair<std::string, std::string>> kChangedValues = {
    {kIlluminationKey, "A"},        {kObserverKey, "TenDegree"},      {kWhiteBaseKey, "Paper"},
    {kDensityStandardKey, "ANSIA"}, {kDensityFilterModeKey, "Black"}, {kColorSpaceKey, "RGB"},
    {kDeltaEFormulaKey, "CMC"},     {kVectorFormKey, "DeltaVector"},  {kPhysicalFilterKey, "Polarizer"},
};

std::string Read(const QVMeasureConditions& conditions, const std::string& key)
{
    return conditions.GetMeasureCondition(String(key));
}

void Set(QVMeasureConditions& conditions, const std::string& key, const std::string& value)
{
    conditions.SetMeasureCondition(String(key), String(value));
}

std::vector<std::string> Texts(const Vector<String>& values)
{
    std::vector<std::string> texts;
    for (unsigned long i = 0; i < values.GetSize(); ++i) {
        texts.push_back(values[i]);
    }
    return texts;
}

std::vector<std::string> SupportedValues(const std::string& key)
{
    return Texts(QVMeasureConditions::GetSupportedValues(String(key)));
}

// What the object answers for the twelve keys, "CustomCondition" and the
// given custom keys, in that order.
std::vector<std::string> Snapshot(const QVMeasureConditions& conditions,
                                  const std::vector<std::string>& customKeys = {})
{
    std::vector<std::string> answers;
    for (const auto& entry : kDefaults) {
        answers.push_back(Read(conditions, entry.first));
    }
    answers.push_back(Read(conditions, kCustomConditionKey));
    for (const std::string& key : customKeys) {
        answers.push_back(Read(conditions, key));
    }
    return answers;
}

// An object with every stored key away from its default and the custom
// conditions open, holding "Foo.Bar".
QVMeasureConditions ChangedConditions()
{
    QVMeasureConditions conditions;
    for (const auto& entry : kChangedValues) {
        Set(conditions, entry.first, entry.second);
    }
    Set(conditions, kCustomConditionKey, "Enable");
    Set(conditions, "Foo.Bar", "custom value");
    return conditions;
}

std::string ElementName(const QVMeasureConditions& conditions, short index)
{
    return conditions.GetElementName(index);
}

} // namespace

// ---------------------------------------------------------------- defaults

TEST(QVMeasureConditionsDefaults, AFreshObjectAnswersTheDefaultOfEveryKey)
{
    const QVMeasureConditions conditions;
    for (const auto& entry : kDefaults) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Read(conditions, entry.first));
    }
}

TEST(QVMeasureConditionsDefaults, AFreshObjectHoldsTheDefaultCodes)
{
    const QVMeasureConditions conditions;
    const QVIllumination illumination = TestAccess::GetIllumination(conditions);
    EXPECT_EQ(CMetry::IlluminationD65, illumination.GetIlluminationTYPE());
    EXPECT_EQ(0, illumination.GetColorTemperature());
    EXPECT_EQ(0, illumination.GetFValue());
    EXPECT_EQ(CMetry::ObserverTwoDegree, TestAccess::GetObserver(conditions));
    EXPECT_EQ(CMetry::WhiteBaseAutomatic, TestAccess::GetWhiteBase(conditions));
    EXPECT_EQ(CMetry::DensityStdDIN, TestAccess::GetDensityStandard(conditions));
    EXPECT_EQ(CMetry::DensityFilterModeAuto, TestAccess::GetDensityFilterMode(conditions));
    EXPECT_EQ(CMetry::PhysicalFilterNo, TestAccess::GetPhysicalFilter(conditions));
}

TEST(QVMeasureConditionsDefaults, CustomConditionsStartDisabledWithTheirSwitchEntryOnly)
{
    const QVMeasureConditions conditions;
    const Map<String, String>& custom = TestAccess::CustomConditions(conditions);
    EXPECT_EQ(1UL, custom.GetCount());
    ASSERT_TRUE(custom.Find(String(kCustomConditionKey)).IsValid());
    EXPECT_EQ("Disable", std::string(custom.Find(String(kCustomConditionKey)).GetValue()));
    // The query never answers "Disable".
    EXPECT_EQ("Undefined", Read(conditions, kCustomConditionKey));
}

TEST(QVMeasureConditionsDefaults, AFreshObjectHasNoUserdefinedIllumination)
{
    const QVMeasureConditions conditions;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { (void)conditions.GetUserdefinedIllumination(); }));
}

TEST(QVMeasureConditionsDefaults, ValueStringIsEmpty)
{
    const QVMeasureConditions conditions;
    EXPECT_TRUE(conditions.GetValueString().IsEmpty());
    EXPECT_STREQ("", conditions.GetValueString().c_str());
}

// ---------------------------------------------------------------- supported values

TEST(QVMeasureConditionsSupportedValues, EveryKeyListsItsValuesInTableOrder)
{
    EXPECT_EQ(
        (std::vector<std::string>{"A", "B", "C", "D50", "D55", "D65", "D75", "Dxx", "F", "Userdefined", "Emission"}),
        SupportedValues(kIlluminationKey));
    EXPECT_EQ((std::vector<std::string>{"TwoDegree", "TenDegree"}), SupportedValues(kObserverKey));
    EXPECT_EQ((std::vector<std::string>{"Absolute", "Paper", "Automatic"}), SupportedValues(kWhiteBaseKey));
    EXPECT_EQ((std::vector<std::string>{"DIN", "DINNB", "ANSIA", "ANSIT", "SPI", "User"}),
              SupportedValues(kDensityStandardKey));
    EXPECT_EQ((std::vector<std::string>{"Black", "Cyan", "Magenta", "Yellow", "Max", "Auto"}),
              SupportedValues(kDensityFilterModeKey));
    EXPECT_EQ((std::vector<std::string>{"CIELab", "CIELCh", "CIELuv", "CIELChuv", "CIEuvY1960", "CIEuvY1976", "CIEXYZ",
                                        "CIExyY", "HunterLab", "RxRyRz", "LABvq", "LCHvq", "RGB", "CMYK"}),
              SupportedValues(kColorSpaceKey));
    EXPECT_EQ((std::vector<std::string>{"CIELab", "CIELuv", "LABvq", "FMCII", "CMC", "94"}),
              SupportedValues(kDeltaEFormulaKey));
    EXPECT_EQ((std::vector<std::string>{"AbsoluteVector", "DeltaVector"}), SupportedValues(kVectorFormKey));
    EXPECT_EQ((std::vector<std::string>{"No", "Polarizer", "UVCut", "D65", "Custom", "CalibrationCheck", "ND0"}),
              SupportedValues(kPhysicalFilterKey));
    EXPECT_EQ((std::vector<std::string>{"36"}), SupportedValues(kNumberOfDataPointsKey));
    EXPECT_EQ((std::vector<std::string>{"730nm"}), SupportedValues(kWavelengthMaxKey));
    EXPECT_EQ((std::vector<std::string>{"380nm"}), SupportedValues(kWavelengthMinKey));
}

TEST(QVMeasureConditionsSupportedValues, EveryColourSpaceListsItsElementNames)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> expected = {
        {"CIELab", {"L*", "a*", "b*", "delta L*", "delta a*", "delta b*"}},
        {"CIELCh", {"L*", "C*", "h*", "delta L*", "delta C*", "delta H*"}},
        {"CIELuv", {"L", "u*", "v*", "delta L", "delta u*", "delta v*"}},
        {"CIELChuv", {"L", "C", "h", "delta L", "delta C", "delta H"}},
        {"CIEuvY1960", {"u' 1960", "v' 1960", "Y 1960", "delta u' 1960", "delta v' 1960", "delta L 1960"}},
        {"CIEuvY1976", {"u' 1976", "v' 1976", "Y 1976", "delta u' 1976", "delta v' 1976", "delta L 1976"}},
        {"CIEXYZ", {"X", "Y", "Z", "delta X", "delta Y", "delta Z"}},
        {"CIExyY", {"x", "y", "Y", "delta x", "delta y", "delta Y"}},
        {"HunterLab", {"L(l)", "a(l)", "b(l)", "delta L(l)", "delta a(l)", "delta b(l)"}},
        {"RxRyRz", {"Rx", "Ry", "Rz", "delta Rx", "delta Ry", "delta Rz"}},
        {"LABvq", {"L(vq)", "a(vq)", "b(vq)", "delta L(vq)", "delta a(vq)", "delta b(vq)"}},
        {"LCHvq", {"L(vq)", "C(vq)", "h(vq)", "delta L(vq)", "delta C(vq)", "delta H(vq)"}},
        {"RGB", {"R", "G", "B", "delta R", "delta G", "delta B"}},
        {"CMYK", {"C", "M", "Y", "K", "delta C", "delta M", "delta Y", "delta K"}},
    };
    ASSERT_EQ(SupportedValues(kColorSpaceKey).size(), expected.size());
    for (const auto& space : expected) {
        SCOPED_TRACE(space.first);
        EXPECT_EQ(space.second, SupportedValues("ColorSpaceDescription." + space.first));
    }
}

TEST(QVMeasureConditionsSupportedValues, TheTableHoldsAllTwelveKeysAndFourteenElementLists)
{
    const auto& table = TestAccess::SupportedValuesTable();
    for (const auto& entry : kDefaults) {
        SCOPED_TRACE(entry.first);
        ASSERT_TRUE(table.Find(String(entry.first)).IsValid());
        EXPECT_LT(0UL, table.Find(String(entry.first)).GetValue().GetSize());
    }
    for (const std::string& space : SupportedValues(kColorSpaceKey)) {
        SCOPED_TRACE(space);
        ASSERT_TRUE(table.Find(String("ColorSpaceDescription." + space)).IsValid());
        EXPECT_LT(0UL, table.Find(String("ColorSpaceDescription." + space)).GetValue().GetSize());
    }
    // The switch of the custom conditions is no entry of the table.
    EXPECT_FALSE(table.Find(String(kCustomConditionKey)).IsValid());
}

TEST(QVMeasureConditionsSupportedValues, AnUnknownKeyGivesAnEmptyListThatStaysInTheTable)
{
    const String key("Unknown.KeyOfTheSupportedValuesTest");
    ASSERT_FALSE(TestAccess::SupportedValuesTable().Find(key).IsValid());

    const Vector<String>* first = nullptr;
    EXPECT_NO_THROW(first = &QVMeasureConditions::GetSupportedValues(key));
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(0UL, first->GetSize());
    EXPECT_TRUE(TestAccess::SupportedValuesTable().Find(key).IsValid());

    const Vector<String>* second = nullptr;
    EXPECT_NO_THROW(second = &QVMeasureConditions::GetSupportedValues(key));
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(0UL, second->GetSize());
    // The same entry answers both times.
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, &TestAccess::SupportedValuesTable().Find(key).GetValue());
}

TEST(QVMeasureConditionsSupportedValues, KeysAreCaseSensitive)
{
    EXPECT_TRUE(SupportedValues("colorimetric.observer").empty());
    EXPECT_EQ(2UL, SupportedValues(kObserverKey).size());
}

// ---------------------------------------------------------------- set and read back

TEST(QVMeasureConditionsKeys, EverySupportedValueReadsBackOrIsRefusedAndTouchesNoOtherKey)
{
    const std::vector<std::string> keys = {kIlluminationKey,    kObserverKey,          kWhiteBaseKey,
                                           kDensityStandardKey, kDensityFilterModeKey, kColorSpaceKey,
                                           kDeltaEFormulaKey,   kVectorFormKey,        kPhysicalFilterKey};
    for (const std::string& key : keys) {
        const std::vector<std::string> values = SupportedValues(key);
        ASSERT_FALSE(values.empty()) << key;
        for (const std::string& value : values) {
            SCOPED_TRACE(key + " = " + value);
            QVMeasureConditions conditions;
            // The menu offers two illumination entries that the parser is
            // stricter about: they need a number behind them.
            if (key == kIlluminationKey && value == "Dxx") {
                EXPECT_EQ("Dxx is not a valid illuminationtype",
                          FailureText<ExceptionCMetry>([&] { Set(conditions, key, value); }));
                EXPECT_EQ(Snapshot(QVMeasureConditions()), Snapshot(conditions));
                continue;
            }
            if (key == kIlluminationKey && value == "F") {
                EXPECT_EQ(" is not a valid number.",
                          FailureText<ExceptionOutOfBound>([&] { Set(conditions, key, value); }));
                EXPECT_EQ(Snapshot(QVMeasureConditions()), Snapshot(conditions));
                continue;
            }
            Set(conditions, key, value);
            EXPECT_EQ(value, Read(conditions, key));
            for (const auto& entry : kDefaults) {
                if (entry.first != key) {
                    EXPECT_EQ(entry.second, Read(conditions, entry.first)) << entry.first;
                }
            }
        }
    }
}

TEST(QVMeasureConditionsKeys, EveryStoredKeyAcceptsUndefinedAndReadsItBack)
{
    for (const auto& entry : kChangedValues) {
        SCOPED_TRACE(entry.first);
        QVMeasureConditions conditions;
        Set(conditions, entry.first, "Undefined");
        EXPECT_EQ("Undefined", Read(conditions, entry.first));
    }
}

TEST(QVMeasureConditionsKeys, UndefinedIsStoredAsTheUndefinedCode)
{
    QVMeasureConditions conditions;
    for (const auto& entry : kChangedValues) {
        Set(conditions, entry.first, "Undefined");
    }
    EXPECT_EQ(CMetry::IlluminationUndefined, TestAccess::GetIllumination(conditions).GetIlluminationTYPE());
    EXPECT_EQ(CMetry::ObserverUndefined, TestAccess::GetObserver(conditions));
    EXPECT_EQ(CMetry::WhiteBaseUndefined, TestAccess::GetWhiteBase(conditions));
    EXPECT_EQ(CMetry::DensityStdUndefined, TestAccess::GetDensityStandard(conditions));
    EXPECT_EQ(CMetry::DensityFilterModeUndefined, TestAccess::GetDensityFilterMode(conditions));
    EXPECT_EQ(CMetry::PhysicalFilterUndefined, TestAccess::GetPhysicalFilter(conditions));
}

TEST(QVMeasureConditionsKeys, SupportedValuesAreStoredAsTheirCodes)
{
    QVMeasureConditions conditions;
    const std::vector<std::pair<std::string, CMetry::QVObserverTYPE>> observers = {
        {"TwoDegree", CMetry::ObserverTwoDegree}, {"TenDegree", CMetry::ObserverTenDegree}};
    for (const auto& entry : observers) {
        Set(conditions, kObserverKey, entry.first);
        EXPECT_EQ(entry.second, TestAccess::GetObserver(conditions)) << entry.first;
    }
    const std::vector<std::pair<std::string, CMetry::QVWhiteBaseTYPE>> whiteBases = {
        {"Absolute", CMetry::WhiteBaseAbsolute},
        {"Paper", CMetry::WhiteBasePaper},
        {"Automatic", CMetry::WhiteBaseAutomatic}};
    for (const auto& entry : whiteBases) {
        Set(conditions, kWhiteBaseKey, entry.first);
        EXPECT_EQ(entry.second, TestAccess::GetWhiteBase(conditions)) << entry.first;
    }
    const std::vector<std::pair<std::string, CMetry::QVDensityStdTYPE>> standards = {
        {"DIN", CMetry::DensityStdDIN},     {"DINNB", CMetry::DensityStdDINNB}, {"ANSIA", CMetry::DensityStdANSIA},
        {"ANSIT", CMetry::DensityStdANSIT}, {"SPI", CMetry::DensityStdSPI},     {"User", CMetry::DensityStdUser}};
    for (const auto& entry : standards) {
        Set(conditions, kDensityStandardKey, entry.first);
        EXPECT_EQ(entry.second, TestAccess::GetDensityStandard(conditions)) << entry.first;
    }
    const std::vector<std::pair<std::string, CMetry::DensityFilterModeTYPE>> modes = {
        {"Black", CMetry::DensityFilterModeBlack},     {"Cyan", CMetry::DensityFilterModeCyan},
        {"Magenta", CMetry::DensityFilterModeMagenta}, {"Yellow", CMetry::DensityFilterModeYellow},
        {"Max", CMetry::DensityFilterModeMax},         {"Auto", CMetry::DensityFilterModeAuto}};
    for (const auto& entry : modes) {
        Set(conditions, kDensityFilterModeKey, entry.first);
        EXPECT_EQ(entry.second, TestAccess::GetDensityFilterMode(conditions)) << entry.first;
    }
    const std::vector<std::pair<std::string, CMetry::QVPhysicalFilterTYPE>> filters = {
        {"No", CMetry::PhysicalFilterNo},         {"Polarizer", CMetry::PhysicalFilterPolarizer},
        {"UVCut", CMetry::PhysicalFilterUVCut},   {"D65", CMetry::PhysicalFilterD65},
        {"Custom", CMetry::PhysicalFilterCustom}, {"CalibrationCheck", CMetry::PhysicalFilterCalibrationCheck},
        {"ND0", CMetry::PhysicalFilterND0},       {"LastSelectable", CMetry::PhysicalFilterLastSelectable}};
    for (const auto& entry : filters) {
        Set(conditions, kPhysicalFilterKey, entry.first);
        EXPECT_EQ(entry.second, TestAccess::GetPhysicalFilter(conditions)) << entry.first;
    }
    const std::vector<std::pair<std::string, CMetry::QVIlluminationTYPE>> illuminations = {
        {"A", CMetry::IlluminationA},
        {"B", CMetry::IlluminationB},
        {"C", CMetry::IlluminationC},
        {"D75", CMetry::IlluminationD75},
        {"D65", CMetry::IlluminationD65},
        {"D55", CMetry::IlluminationD55},
        {"D50", CMetry::IlluminationD50},
        {"F2", CMetry::IlluminationF2},
        {"F7", CMetry::IlluminationF7},
        {"F11", CMetry::IlluminationF11},
        {"Userdefined", CMetry::IlluminationUserdefined},
        {"Emission", CMetry::IlluminationEmission}};
    for (const auto& entry : illuminations) {
        Set(conditions, kIlluminationKey, entry.first);
        EXPECT_EQ(QVIllumination(entry.second), TestAccess::GetIllumination(conditions)) << entry.first;
    }
}

TEST(QVMeasureConditionsKeys, LastSelectableIsAcceptedAsPhysicalFilterAlthoughNotOffered)
{
    const std::vector<std::string> offered = SupportedValues(kPhysicalFilterKey);
    EXPECT_EQ(0, std::count(offered.begin(), offered.end(), std::string("LastSelectable")));
    QVMeasureConditions conditions;
    Set(conditions, kPhysicalFilterKey, "LastSelectable");
    EXPECT_EQ("LastSelectable", Read(conditions, kPhysicalFilterKey));
    EXPECT_EQ(CMetry::PhysicalFilterLastSelectable, TestAccess::GetPhysicalFilter(conditions));
}

TEST(QVMeasureConditionsKeys, TheFixedKeysAcceptAnyValueAndKeepTheirAnswer)
{
    const std::vector<std::string> values = {
        "37", "740nm", "", "Undefined", "garbage", std::string(10000, 'x'), "\xC3\xA9\xFF"};
    for (const std::string& key :
         std::vector<std::string>{kNumberOfDataPointsKey, kWavelengthMaxKey, kWavelengthMinKey}) {
        for (const std::string& value : values) {
            SCOPED_TRACE(std::string(key) + " = " + value.substr(0, 20));
            QVMeasureConditions conditions;
            EXPECT_NO_THROW(Set(conditions, key, value));
            EXPECT_EQ(Snapshot(QVMeasureConditions()), Snapshot(conditions));
            EXPECT_TRUE(conditions == QVMeasureConditions());
        }
    }
}

TEST(QVMeasureConditionsKeys, PrivateSettersShowThroughTheKeys)
{
    QVMeasureConditions conditions;
    TestAccess::SetObserver(conditions, CMetry::ObserverTenDegree);
    EXPECT_EQ("TenDegree", Read(conditions, kObserverKey));
    TestAccess::SetWhiteBase(conditions, CMetry::WhiteBasePaper);
    EXPECT_EQ("Paper", Read(conditions, kWhiteBaseKey));

    QVIllumination daylight(CMetry::IlluminationDxx);
    daylight.SetColorTemperature(5000);
    TestAccess::SetIllumination(conditions, daylight);
    EXPECT_EQ("Dxx, Temperature:5000", Read(conditions, kIlluminationKey));

    // Code 11 with F number 2 formats as the text of code 8.
    QVIllumination fluorescent(CMetry::IlluminationFxx);
    fluorescent.SetFValue(2);
    TestAccess::SetIllumination(conditions, fluorescent);
    EXPECT_EQ("F2", Read(conditions, kIlluminationKey));
    EXPECT_EQ(fluorescent, TestAccess::GetIllumination(conditions));
}

// ---------------------------------------------------------------- illumination values

TEST(QVMeasureConditionsIllumination, DxxAloneIsRefused)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("Dxx is not a valid illuminationtype",
              FailureText<ExceptionCMetry>([&] { Set(conditions, kIlluminationKey, "Dxx"); }));
    EXPECT_EQ("D65", Read(conditions, kIlluminationKey));
}

TEST(QVMeasureConditionsIllumination, FAloneFailsAsAMissingNumber)
{
    QVMeasureConditions conditions;
    EXPECT_EQ(" is not a valid number.",
              FailureText<ExceptionOutOfBound>([&] { Set(conditions, kIlluminationKey, "F"); }));
    EXPECT_EQ("D65", Read(conditions, kIlluminationKey));
}

TEST(QVMeasureConditionsIllumination, DaylightWithATemperatureRoundTrips)
{
    QVMeasureConditions conditions;
    for (const std::string& value :
         std::vector<std::string>{"Dxx, Temperature:6500", "Dxx, Temperature:-40", "Dxx, Temperature:0",
                                  "Dxx, Temperature:32767", "Dxx, Temperature:-32768"}) {
        SCOPED_TRACE(value);
        Set(conditions, kIlluminationKey, value);
        EXPECT_EQ(value, Read(conditions, kIlluminationKey));
    }
    Set(conditions, kIlluminationKey, "Dxx, Temperature:6500");
    const QVIllumination illumination = TestAccess::GetIllumination(conditions);
    EXPECT_EQ(CMetry::IlluminationDxx, illumination.GetIlluminationTYPE());
    EXPECT_EQ(6500, illumination.GetColorTemperature());
    EXPECT_EQ(0, illumination.GetFValue());
}

TEST(QVMeasureConditionsIllumination, ATemperatureBeyondAShortIsRefusedAndChangesNothing)
{
    QVMeasureConditions conditions = ChangedConditions();
    const QVMeasureConditions before = conditions;
    const std::vector<std::string> answers = Snapshot(conditions, {"Foo.Bar"});
    EXPECT_EQ("99999 is to big for a short.",
              FailureText<ExceptionOutOfBound>([&] { Set(conditions, kIlluminationKey, "Dxx, Temperature:99999"); }));
    EXPECT_EQ(answers, Snapshot(conditions, {"Foo.Bar"}));
    EXPECT_TRUE(conditions == before);
    EXPECT_EQ(QVIllumination(CMetry::IlluminationA), TestAccess::GetIllumination(conditions));
}

TEST(QVMeasureConditionsIllumination, ATemperatureWithoutDigitsIsRefused)
{
    QVMeasureConditions conditions;
    EXPECT_EQ(" is not a valid number.",
              FailureText<ExceptionOutOfBound>([&] { Set(conditions, kIlluminationKey, "Dxx, Temperature:"); }));
    EXPECT_EQ("D65", Read(conditions, kIlluminationKey));
}

TEST(QVMeasureConditionsIllumination, FluorescentWithANumberReadsBackWithCodeEleven)
{
    QVMeasureConditions conditions;
    Set(conditions, kIlluminationKey, "F12");
    EXPECT_EQ("F12", Read(conditions, kIlluminationKey));
    const QVIllumination illumination = TestAccess::GetIllumination(conditions);
    EXPECT_EQ(CMetry::IlluminationFxx, illumination.GetIlluminationTYPE());
    EXPECT_EQ(12, illumination.GetFValue());
    EXPECT_EQ(0, illumination.GetColorTemperature());
}

TEST(QVMeasureConditionsIllumination, TheThreeNamedLampsHaveTheirOwnCodes)
{
    QVMeasureConditions conditions;
    const std::vector<std::pair<std::string, CMetry::QVIlluminationTYPE>> lamps = {
        {"F2", CMetry::IlluminationF2}, {"F7", CMetry::IlluminationF7}, {"F11", CMetry::IlluminationF11}};
    for (const auto& lamp : lamps) {
        SCOPED_TRACE(lamp.first);
        Set(conditions, kIlluminationKey, lamp.first);
        EXPECT_EQ(lamp.first, Read(conditions, kIlluminationKey));
        EXPECT_EQ(QVIllumination(lamp.second), TestAccess::GetIllumination(conditions));
    }
}

TEST(QVMeasureConditionsIllumination, ALeadingZeroMakesCodeElevenThatFormatsWithoutIt)
{
    QVMeasureConditions conditions;
    Set(conditions, kIlluminationKey, "F02");
    const QVIllumination illumination = TestAccess::GetIllumination(conditions);
    EXPECT_EQ(CMetry::IlluminationFxx, illumination.GetIlluminationTYPE());
    EXPECT_EQ(2, illumination.GetFValue());
    EXPECT_EQ("F2", Read(conditions, kIlluminationKey));
}

TEST(QVMeasureConditionsIllumination, AnFNumberAbove255KeepsItsLowByte)
{
    QVMeasureConditions conditions;
    Set(conditions, kIlluminationKey, "F300");
    EXPECT_EQ(44, TestAccess::GetIllumination(conditions).GetFValue());
    EXPECT_EQ("F44", Read(conditions, kIlluminationKey));
}

TEST(QVMeasureConditionsIllumination, UndefinedUserdefinedAndEmissionReadBack)
{
    QVMeasureConditions conditions;
    const std::vector<std::pair<std::string, CMetry::QVIlluminationTYPE>> values = {
        {"Undefined", CMetry::IlluminationUndefined},
        {"Userdefined", CMetry::IlluminationUserdefined},
        {"Emission", CMetry::IlluminationEmission}};
    for (const auto& value : values) {
        SCOPED_TRACE(value.first);
        Set(conditions, kIlluminationKey, value.first);
        EXPECT_EQ(value.first, Read(conditions, kIlluminationKey));
        EXPECT_EQ(QVIllumination(value.second), TestAccess::GetIllumination(conditions));
    }
}

// ---------------------------------------------------------------- refused values

TEST(QVMeasureConditionsRefusals, EveryStoredKeyRefusesUnknownTextWithItsMessage)
{
    const std::vector<std::pair<std::string, std::string>> messages = {
        {kIlluminationKey, "Bogus is not a valid illuminationtype"},
        {kObserverKey, "Bogus is not a valid observertype"},
        {kWhiteBaseKey, "Bogus is not a valid whitespacetype"},
        {kDensityStandardKey, "Bogus is not a valid density standard type"},
        {kDensityFilterModeKey, "Bogus is not a valid density filter mode"},
        {kColorSpaceKey, "Bogus is not a valid color space"},
        {kDeltaEFormulaKey, "Bogus is not a valid delta E formula"},
        {kVectorFormKey, "Bogus is not valid for absolute or relative vectors"},
        {kPhysicalFilterKey, "Bogus is not a valid whitespacetype"},
    };
    for (const auto& entry : messages) {
        SCOPED_TRACE(entry.first);
        QVMeasureConditions conditions;
        EXPECT_EQ(entry.second, FailureText<ExceptionCMetry>([&] { Set(conditions, entry.first, "Bogus"); }));
    }
}

TEST(QVMeasureConditionsRefusals, ValuesAreCaseSensitive)
{
    const std::vector<std::pair<std::string, std::string>> messages = {
        {kIlluminationKey, "d65 is not a valid illuminationtype"},
        {kObserverKey, "twodegree is not a valid observertype"},
        {kWhiteBaseKey, "PAPER is not a valid whitespacetype"},
        {kDensityStandardKey, "din is not a valid density standard type"},
        {kDensityFilterModeKey, "auto is not a valid density filter mode"},
        {kColorSpaceKey, "cielab is not a valid color space"},
        {kDeltaEFormulaKey, "cielab is not a valid delta E formula"},
        {kVectorFormKey, "deltavector is not valid for absolute or relative vectors"},
        {kPhysicalFilterKey, "no is not a valid whitespacetype"},
    };
    for (const auto& entry : messages) {
        SCOPED_TRACE(entry.first);
        const std::string value = entry.second.substr(0, entry.second.find(' '));
        QVMeasureConditions conditions;
        EXPECT_EQ(entry.second, FailureText<ExceptionCMetry>([&] { Set(conditions, entry.first, value); }));
    }
}

TEST(QVMeasureConditionsRefusals, EmptyLongAndHighByteTextsAreRefusedWithTheWholeValue)
{
    const std::vector<std::pair<std::string, std::string>> tails = {
        {kIlluminationKey, " is not a valid illuminationtype"},
        {kObserverKey, " is not a valid observertype"},
        {kWhiteBaseKey, " is not a valid whitespacetype"},
        {kDensityStandardKey, " is not a valid density standard type"},
        {kDensityFilterModeKey, " is not a valid density filter mode"},
        {kColorSpaceKey, " is not a valid color space"},
        {kDeltaEFormulaKey, " is not a valid delta E formula"},
        {kVectorFormKey, " is not valid for absolute or relative vectors"},
        {kPhysicalFilterKey, " is not a valid whitespacetype"},
    };
    const std::vector<std::string> values = {"",    std::string(10000, 'x'), "D65\xC2\xB0", "\xFF\x80\x83", " D65",
                                             "D65 "};
    for (const auto& entry : tails) {
        for (const std::string& value : values) {
            SCOPED_TRACE(entry.first + " = " + value.substr(0, 20));
            QVMeasureConditions conditions = ChangedConditions();
            const QVMeasureConditions before = conditions;
            const std::vector<std::string> answers = Snapshot(conditions, {"Foo.Bar"});
            EXPECT_EQ(value + entry.second, FailureText<ExceptionCMetry>([&] { Set(conditions, entry.first, value); }));
            EXPECT_EQ(answers, Snapshot(conditions, {"Foo.Bar"}));
            EXPECT_TRUE(conditions == before);
        }
    }
}

TEST(QVMeasureConditionsRefusals, ARefusedSetLeavesEveryKeyAsItWas)
{
    struct Case {
        std::string key;
        std::string value;
    };
    const std::vector<Case> cases = {
        {kIlluminationKey, "Bogus"},   {kIlluminationKey, "Dxx"},      {kObserverKey, "Bogus"},
        {kWhiteBaseKey, "Bogus"},      {kDensityStandardKey, "Bogus"}, {kDensityFilterModeKey, "Bogus"},
        {kColorSpaceKey, "Bogus"},     {kDeltaEFormulaKey, "Bogus"},   {kVectorFormKey, "Bogus"},
        {kPhysicalFilterKey, "Bogus"},
    };
    for (const Case& failing : cases) {
        SCOPED_TRACE(failing.key + " = " + failing.value);
        QVMeasureConditions conditions = ChangedConditions();
        const QVMeasureConditions before = conditions;
        const std::vector<std::string> answers = Snapshot(conditions, {"Foo.Bar"});
        EXPECT_NE("no exception", FailureText<ExceptionCMetry>([&] { Set(conditions, failing.key, failing.value); }));
        EXPECT_EQ(answers, Snapshot(conditions, {"Foo.Bar"}));
        EXPECT_TRUE(conditions == before);
    }
    // The numeric failures of the illumination forms change nothing either.
    for (const std::string& value : std::vector<std::string>{
             "F", "Fx", "Foo", "Dxx, Temperature:", "Dxx, Temperature:99999", "Dxx, Temperature"}) {
        SCOPED_TRACE(value);
        QVMeasureConditions conditions = ChangedConditions();
        const QVMeasureConditions before = conditions;
        const std::vector<std::string> answers = Snapshot(conditions, {"Foo.Bar"});
        EXPECT_NE("no exception", FailureText<ExceptionOutOfBound>([&] { Set(conditions, kIlluminationKey, value); }));
        EXPECT_EQ(answers, Snapshot(conditions, {"Foo.Bar"}));
        EXPECT_TRUE(conditions == before);
    }
}

TEST(QVMeasureConditionsRefusals, KeysAreComparedExactly)
{
    QVMeasureConditions conditions;
    for (const std::string& key :
         std::vector<std::string>{"colorimetric.observer", "Colorimetric.Observer ", " Physical.Filter",
                                  "Physical.filter", "Colorimetric", "Observer"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ("Modification not supported for key: " + key,
                  FailureText<ExceptionCMetry>([&] { Set(conditions, key, "TenDegree"); }));
    }
    EXPECT_EQ(Snapshot(QVMeasureConditions()), Snapshot(conditions));
}

// ---------------------------------------------------------------- custom conditions

TEST(QVMeasureConditionsCustom, AnUnknownKeyIsRefusedWithTheKeyInTheMessage)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("Modification not supported for key: Foo.Bar",
              FailureText<ExceptionCMetry>([&] { Set(conditions, "Foo.Bar", "x"); }));
    EXPECT_EQ("Modification not supported for key: ", FailureText<ExceptionCMetry>([&] { Set(conditions, "", "x"); }));
    // The key is filled in as it is, even when it looks like a placeholder.
    EXPECT_EQ("Modification not supported for key: %VALUE%",
              FailureText<ExceptionCMetry>([&] { Set(conditions, "%VALUE%", "x"); }));
    // A table key that is no condition key is refused too.
    EXPECT_EQ("Modification not supported for key: ColorSpaceDescription.CIELab",
              FailureText<ExceptionCMetry>([&] { Set(conditions, "ColorSpaceDescription.CIELab", "L*"); }));
    // Nothing was added to the custom conditions.
    EXPECT_EQ(1UL, TestAccess::CustomConditions(conditions).GetCount());
}

TEST(QVMeasureConditionsCustom, EnablingOpensTheMapToAnyKey)
{
    QVMeasureConditions conditions;
    Set(conditions, kCustomConditionKey, "Enable");
    EXPECT_EQ("Enable", Read(conditions, kCustomConditionKey));
    EXPECT_NO_THROW(Set(conditions, "Foo.Bar", "x"));
    EXPECT_EQ("x", Read(conditions, "Foo.Bar"));
    Set(conditions, "Foo.Bar", "y");
    EXPECT_EQ("y", Read(conditions, "Foo.Bar"));
    Set(conditions, "", "empty key");
    EXPECT_EQ("empty key", Read(conditions, ""));
    Set(conditions, "Other", "");
    EXPECT_EQ("", Read(conditions, "Other"));
    // A custom key not set reads "Undefined".
    EXPECT_EQ("Undefined", Read(conditions, "Never.Set"));
    // The twelve keys are untouched.
    EXPECT_EQ(Snapshot(QVMeasureConditions()).size(), Snapshot(conditions).size());
    for (const auto& entry : kDefaults) {
        EXPECT_EQ(entry.second, Read(conditions, entry.first)) << entry.first;
    }
}

TEST(QVMeasureConditionsCustom, OpenCustomConditionsStillParseTheKnownKeys)
{
    QVMeasureConditions conditions;
    Set(conditions, kCustomConditionKey, "Enable");
    EXPECT_EQ("Bogus is not a valid observertype",
              FailureText<ExceptionCMetry>([&] { Set(conditions, kObserverKey, "Bogus"); }));
    EXPECT_FALSE(TestAccess::CustomConditions(conditions).Find(String(kObserverKey)).IsValid());
    EXPECT_EQ("TwoDegree", Read(conditions, kObserverKey));
    // The fixed keys stay fixed.
    Set(conditions, kWavelengthMaxKey, "740nm");
    EXPECT_EQ("730nm", Read(conditions, kWavelengthMaxKey));
    EXPECT_FALSE(TestAccess::CustomConditions(conditions).Find(String(kWavelengthMaxKey)).IsValid());
}

TEST(QVMeasureConditionsCustom, DisablingHidesTheKeysWhileTheMapKeepsThem)
{
    QVMeasureConditions conditions;
    Set(conditions, kCustomConditionKey, "Enable");
    Set(conditions, "Foo.Bar", "x");
    Set(conditions, kCustomConditionKey, "Disable");

    EXPECT_EQ("Undefined", Read(conditions, "Foo.Bar"));
    EXPECT_EQ("Undefined", Read(conditions, kCustomConditionKey));
    const Map<String, String>& custom = TestAccess::CustomConditions(conditions);
    ASSERT_TRUE(custom.Find(String("Foo.Bar")).IsValid());
    EXPECT_EQ("x", std::string(custom.Find(String("Foo.Bar")).GetValue()));
    EXPECT_EQ("Disable", std::string(custom.Find(String(kCustomConditionKey)).GetValue()));

    // Closed again: the key is refused.
    EXPECT_EQ("Modification not supported for key: Foo.Bar",
              FailureText<ExceptionCMetry>([&] { Set(conditions, "Foo.Bar", "z"); }));

    // Opened again: the old value is back.
    Set(conditions, kCustomConditionKey, "Enable");
    EXPECT_EQ("x", Read(conditions, "Foo.Bar"));
}

TEST(QVMeasureConditionsCustom, TheSwitchTakesAnyTextButOnlyEnableOpens)
{
    for (const std::string& value :
         std::vector<std::string>{"Disable", "enable", "ENABLE", "Enable ", "", "Yes", "Undefined"}) {
        SCOPED_TRACE(value);
        QVMeasureConditions conditions;
        EXPECT_NO_THROW(Set(conditions, kCustomConditionKey, value));
        EXPECT_EQ(value,
                  std::string(TestAccess::CustomConditions(conditions).Find(String(kCustomConditionKey)).GetValue()));
        EXPECT_EQ("Undefined", Read(conditions, kCustomConditionKey));
        EXPECT_EQ("Modification not supported for key: Foo.Bar",
                  FailureText<ExceptionCMetry>([&] { Set(conditions, "Foo.Bar", "x"); }));
    }
}

TEST(QVMeasureConditionsCustom, TheSwitchReadsEnableOrUndefinedNeverDisable)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("Undefined", Read(conditions, kCustomConditionKey));
    Set(conditions, kCustomConditionKey, "Enable");
    EXPECT_EQ("Enable", Read(conditions, kCustomConditionKey));
    Set(conditions, kCustomConditionKey, "Disable");
    EXPECT_EQ("Undefined", Read(conditions, kCustomConditionKey));
}

TEST(QVMeasureConditionsCustom, ASetHoldsTheSharedInitialMapUntilItsFirstCustomWrite)
{
    // Building and copying a set allocate nothing for its custom conditions:
    // until a custom entry is written it holds the one initial map of the
    // library, "CustomCondition" = "Disable".
    const QVMeasureConditions fresh;
    QVMeasureConditions copy(fresh);
    QVMeasureConditions assigned;
    assigned = fresh;
    EXPECT_TRUE(TestAccess::HoldsTheInitialCustomConditions(fresh));
    EXPECT_TRUE(TestAccess::HoldsTheInitialCustomConditions(copy));
    EXPECT_TRUE(TestAccess::HoldsTheInitialCustomConditions(assigned));
    // A refused custom write changes nothing.
    EXPECT_EQ("Modification not supported for key: Foo.Bar",
              FailureText<ExceptionCMetry>([&] { Set(copy, "Foo.Bar", "x"); }));
    EXPECT_TRUE(TestAccess::HoldsTheInitialCustomConditions(copy));

    // The first write gives the set a map of its own; the others keep the
    // initial one, which still holds only the switch at "Disable".
    Set(copy, kCustomConditionKey, "Enable");
    EXPECT_FALSE(TestAccess::HoldsTheInitialCustomConditions(copy));
    const Map<String, String>& own = TestAccess::CustomConditions(copy);
    EXPECT_EQ(1UL, own.GetCount());
    EXPECT_EQ("Enable", std::string(own.Find(String(kCustomConditionKey)).GetValue()));
    const Map<String, String>& initial = TestAccess::CustomConditions(fresh);
    EXPECT_EQ(1UL, initial.GetCount());
    EXPECT_EQ("Disable", std::string(initial.Find(String(kCustomConditionKey)).GetValue()));
    EXPECT_TRUE(TestAccess::HoldsTheInitialCustomConditions(fresh));

    // Writing the switch back to "Disable" keeps the own map.
    Set(copy, kCustomConditionKey, "Disable");
    EXPECT_FALSE(TestAccess::HoldsTheInitialCustomConditions(copy));
    EXPECT_EQ("Disable", std::string(TestAccess::CustomConditions(copy).Find(String(kCustomConditionKey)).GetValue()));

    // A copy of a set with its own map has its own copy of it.
    Set(copy, kCustomConditionKey, "Enable");
    Set(copy, "Foo.Bar", "x");
    QVMeasureConditions second(copy);
    EXPECT_FALSE(TestAccess::HoldsTheInitialCustomConditions(second));
    EXPECT_NE(&TestAccess::CustomConditions(copy), &TestAccess::CustomConditions(second));
    EXPECT_EQ(2UL, TestAccess::CustomConditions(second).GetCount());
    Set(second, "Foo.Bar", "y");
    EXPECT_EQ("x", Read(copy, "Foo.Bar"));
    EXPECT_EQ("y", Read(second, "Foo.Bar"));
    // Assigning a fresh set brings the initial map back.
    second = fresh;
    EXPECT_TRUE(TestAccess::HoldsTheInitialCustomConditions(second));
    EXPECT_EQ("Undefined", Read(second, "Foo.Bar"));
}

TEST(QVMeasureConditionsCustom, ReadingAnUnknownKeyGivesUndefinedAndNeverRaises)
{
    const QVMeasureConditions conditions;
    for (const std::string& key :
         std::vector<std::string>{"Foo.Bar", "", "colorimetric.observer", "ColorSpaceDescription.CIELab", "Physical",
                                  std::string(10000, 'k')}) {
        SCOPED_TRACE(key.substr(0, 30));
        std::string answer;
        EXPECT_NO_THROW(answer = Read(conditions, key));
        EXPECT_EQ("Undefined", answer);
    }
}

// ---------------------------------------------------------------- several at once

TEST(QVMeasureConditionsSetMany, AppliesEveryPair)
{
    Map<String, String> map;
    map[String(kObserverKey)] = String("TenDegree");
    map[String(kPhysicalFilterKey)] = String("Polarizer");
    map[String(kColorSpaceKey)] = String("RGB");
    map[String(kIlluminationKey)] = String("Dxx, Temperature:5000");
    map[String(kWavelengthMinKey)] = String("anything");
    QVMeasureConditions conditions;
    conditions.SetMeasureConditions(map);
    EXPECT_EQ("TenDegree", Read(conditions, kObserverKey));
    EXPECT_EQ("Polarizer", Read(conditions, kPhysicalFilterKey));
    EXPECT_EQ("RGB", Read(conditions, kColorSpaceKey));
    EXPECT_EQ("Dxx, Temperature:5000", Read(conditions, kIlluminationKey));
    EXPECT_EQ("380nm", Read(conditions, kWavelengthMinKey));
    EXPECT_EQ("Automatic", Read(conditions, kWhiteBaseKey));
}

TEST(QVMeasureConditionsSetMany, AnEmptyMapChangesNothing)
{
    QVMeasureConditions conditions = ChangedConditions();
    const QVMeasureConditions before = conditions;
    conditions.SetMeasureConditions(Map<String, String>());
    EXPECT_EQ(Snapshot(before, {"Foo.Bar"}), Snapshot(conditions, {"Foo.Bar"}));
    EXPECT_TRUE(conditions == before);
}

TEST(QVMeasureConditionsSetMany, WalksByBucketAndStopsAtTheFirstFailure)
{
    // The walk follows the map's buckets, not the order of insertion.
    ASSERT_EQ(23UL, String(kObserverKey).GetHash(53));
    ASSERT_EQ(28UL, String(kIlluminationKey).GetHash(53));
    ASSERT_EQ(38UL, String(kColorSpaceKey).GetHash(53));

    Map<String, String> map;
    map[String(kColorSpaceKey)] = String("RGB");
    map[String(kIlluminationKey)] = String("Bogus");
    map[String(kObserverKey)] = String("TenDegree");

    QVMeasureConditions conditions;
    EXPECT_EQ("Bogus is not a valid illuminationtype",
              FailureText<ExceptionCMetry>([&] { conditions.SetMeasureConditions(map); }));
    EXPECT_EQ("TenDegree", Read(conditions, kObserverKey)); // before the failure: applied
    EXPECT_EQ("D65", Read(conditions, kIlluminationKey));   // the failure: unchanged
    EXPECT_EQ("CIELab", Read(conditions, kColorSpaceKey));  // after the failure: not applied
}

TEST(QVMeasureConditionsSetMany, WithinABucketTheWalkFollowsInsertionOrder)
{
    ASSERT_EQ(18UL, String(kDeltaEFormulaKey).GetHash(53));
    ASSERT_EQ(18UL, String(kPhysicalFilterKey).GetHash(53));
    {
        Map<String, String> map;
        map[String(kPhysicalFilterKey)] = String("Nope");
        map[String(kDeltaEFormulaKey)] = String("CMC");
        QVMeasureConditions conditions;
        EXPECT_EQ("Nope is not a valid whitespacetype",
                  FailureText<ExceptionCMetry>([&] { conditions.SetMeasureConditions(map); }));
        EXPECT_EQ("CIELab", Read(conditions, kDeltaEFormulaKey));
    }
    {
        Map<String, String> map;
        map[String(kDeltaEFormulaKey)] = String("CMC");
        map[String(kPhysicalFilterKey)] = String("Nope");
        QVMeasureConditions conditions;
        EXPECT_EQ("Nope is not a valid whitespacetype",
                  FailureText<ExceptionCMetry>([&] { conditions.SetMeasureConditions(map); }));
        EXPECT_EQ("CMC", Read(conditions, kDeltaEFormulaKey));
        EXPECT_EQ("No", Read(conditions, kPhysicalFilterKey));
    }
}

TEST(QVMeasureConditionsSetMany, ACustomKeyInAnEarlierBucketThanTheSwitchIsRefused)
{
    ASSERT_EQ(23UL, String("Foo.Bar").GetHash(53));
    ASSERT_EQ(48UL, String(kCustomConditionKey).GetHash(53));
    Map<String, String> map;
    map[String(kCustomConditionKey)] = String("Enable");
    map[String("Foo.Bar")] = String("x");

    QVMeasureConditions closed;
    EXPECT_EQ("Modification not supported for key: Foo.Bar",
              FailureText<ExceptionCMetry>([&] { closed.SetMeasureConditions(map); }));
    EXPECT_EQ("Undefined", Read(closed, kCustomConditionKey)); // the switch came later: not applied

    QVMeasureConditions open;
    Set(open, kCustomConditionKey, "Enable");
    EXPECT_NO_THROW(open.SetMeasureConditions(map));
    EXPECT_EQ("x", Read(open, "Foo.Bar"));
    EXPECT_EQ("Enable", Read(open, kCustomConditionKey));
}

TEST(QVMeasureConditionsSetMany, TheNumericFailureOfAnIlluminationPropagatesUnchanged)
{
    Map<String, String> map;
    map[String(kObserverKey)] = String("TenDegree");
    map[String(kIlluminationKey)] = String("F");
    map[String(kColorSpaceKey)] = String("RGB");
    QVMeasureConditions conditions;
    EXPECT_EQ(" is not a valid number.",
              FailureText<ExceptionOutOfBound>([&] { conditions.SetMeasureConditions(map); }));
    EXPECT_EQ("TenDegree", Read(conditions, kObserverKey));
    EXPECT_EQ("D65", Read(conditions, kIlluminationKey));
    EXPECT_EQ("CIELab", Read(conditions, kColorSpaceKey));
}

// ---------------------------------------------------------------- no default set

TEST(QVMeasureConditionsDefaultSet, SettingADefaultAlwaysFailsOnTheMissingObject)
{
    std::vector<std::pair<std::string, std::string>> calls(kChangedValues.begin(), kChangedValues.end());
    calls.emplace_back(kNumberOfDataPointsKey, "36");
    calls.emplace_back(kWavelengthMaxKey, "730nm");
    calls.emplace_back(kWavelengthMinKey, "380nm");
    calls.emplace_back(kCustomConditionKey, "Enable");
    calls.emplace_back("Foo.Bar", "x");
    calls.emplace_back(kObserverKey, "Bogus");
    calls.emplace_back("", "");
    for (const auto& call : calls) {
        SCOPED_TRACE(call.first + " = " + call.second);
        EXPECT_EQ("Failed to access to nullpointer.", FailureText<ExceptionNullpointer>([&] {
                      QVMeasureConditions::SetDefaultMeasureCondition(String(call.first), String(call.second));
                  }));
    }
    // Fresh objects still take the constructor's defaults.
    const QVMeasureConditions fresh;
    for (const auto& entry : kDefaults) {
        EXPECT_EQ(entry.second, Read(fresh, entry.first)) << entry.first;
    }
}

// ---------------------------------------------------------------- element names

TEST(QVMeasureConditionsElementName, AbsoluteFormGivesTheAbsoluteNamesOfEverySpace)
{
    for (const std::string& space : SupportedValues(kColorSpaceKey)) {
        SCOPED_TRACE(space);
        const std::vector<std::string> names = SupportedValues("ColorSpaceDescription." + space);
        const short absolute = space == "CMYK" ? 4 : 3;
        ASSERT_EQ(static_cast<std::size_t>(2 * absolute), names.size());
        QVMeasureConditions conditions;
        Set(conditions, kColorSpaceKey, space);
        for (short index = 0; index < absolute; ++index) {
            EXPECT_EQ(names[static_cast<std::size_t>(index)], ElementName(conditions, index)) << index;
        }
    }
}

TEST(QVMeasureConditionsElementName, DeltaFormGivesTheDeltaNamesOfEverySpace)
{
    for (const std::string& space : SupportedValues(kColorSpaceKey)) {
        if (space == "CMYK") {
            continue; // Its own test below.
        }
        SCOPED_TRACE(space);
        const std::vector<std::string> names = SupportedValues("ColorSpaceDescription." + space);
        ASSERT_EQ(6UL, names.size());
        QVMeasureConditions conditions;
        Set(conditions, kColorSpaceKey, space);
        Set(conditions, kVectorFormKey, "DeltaVector");
        for (short index = 0; index < 3; ++index) {
            EXPECT_EQ(names[static_cast<std::size_t>(index) + 3], ElementName(conditions, index)) << index;
        }
        EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 3); }));
    }
}

TEST(QVMeasureConditionsElementName, CIELabNamesInBothForms)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("L*", ElementName(conditions, 0));
    EXPECT_EQ("a*", ElementName(conditions, 1));
    EXPECT_EQ("b*", ElementName(conditions, 2));
    Set(conditions, kVectorFormKey, "DeltaVector");
    EXPECT_EQ("delta L*", ElementName(conditions, 0));
    EXPECT_EQ("delta a*", ElementName(conditions, 1));
    EXPECT_EQ("delta b*", ElementName(conditions, 2));
}

TEST(QVMeasureConditionsElementName, CmykDeltaFormIsOffsetByThreeLikeEverySpace)
{
    QVMeasureConditions conditions;
    Set(conditions, kColorSpaceKey, "CMYK");
    EXPECT_EQ("C", ElementName(conditions, 0));
    EXPECT_EQ("M", ElementName(conditions, 1));
    EXPECT_EQ("Y", ElementName(conditions, 2));
    EXPECT_EQ("K", ElementName(conditions, 3));
    Set(conditions, kVectorFormKey, "DeltaVector");
    EXPECT_EQ("K", ElementName(conditions, 0));
    EXPECT_EQ("delta C", ElementName(conditions, 1));
    EXPECT_EQ("delta M", ElementName(conditions, 2));
    EXPECT_EQ("delta Y", ElementName(conditions, 3));
    EXPECT_EQ("delta K", ElementName(conditions, 4));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 5); }));
}

TEST(QVMeasureConditionsElementName, TheThirdDeltaNameOfTheUvYSpacesIsDeltaL)
{
    QVMeasureConditions conditions;
    Set(conditions, kVectorFormKey, "DeltaVector");
    Set(conditions, kColorSpaceKey, "CIEuvY1960");
    EXPECT_EQ("delta L 1960", ElementName(conditions, 2));
    Set(conditions, kColorSpaceKey, "CIEuvY1976");
    EXPECT_EQ("delta L 1976", ElementName(conditions, 2));
}

TEST(QVMeasureConditionsElementName, AbsoluteIndicesPastTheAbsoluteNamesReadOnIntoTheDeltaNames)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("delta L*", ElementName(conditions, 3));
    EXPECT_EQ("delta b*", ElementName(conditions, 5));
    Set(conditions, kColorSpaceKey, "CMYK");
    EXPECT_EQ("delta K", ElementName(conditions, 7));
}

TEST(QVMeasureConditionsElementName, OnlyDeltaVectorShiftsTheIndex)
{
    QVMeasureConditions conditions;
    Set(conditions, kVectorFormKey, "Undefined");
    EXPECT_EQ("L*", ElementName(conditions, 0));
    Set(conditions, kVectorFormKey, "AbsoluteVector");
    EXPECT_EQ("L*", ElementName(conditions, 0));
}

TEST(QVMeasureConditionsElementName, AnIndexPastTheListIsRefused)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 6); }));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 32767); }));
    Set(conditions, kColorSpaceKey, "CMYK");
    EXPECT_EQ("delta K", ElementName(conditions, 7));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 8); }));
}

TEST(QVMeasureConditionsElementName, ANegativeIndexIsRefusedAsALargeOne)
{
    QVMeasureConditions conditions;
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, -1); }));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, -32768); }));
    Set(conditions, kVectorFormKey, "DeltaVector");
    // -3 as an unsigned 16-bit number plus 3 does not wrap round to 0.
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, -3); }));
}

TEST(QVMeasureConditionsElementName, TheUndefinedColourSpaceHasNoNames)
{
    QVMeasureConditions conditions;
    Set(conditions, kColorSpaceKey, "Undefined");
    EXPECT_EQ("Undefined", Read(conditions, kColorSpaceKey));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 0); }));
    Set(conditions, kVectorFormKey, "DeltaVector");
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)ElementName(conditions, 0); }));
}

// ---------------------------------------------------------------- equality and copies

TEST(QVMeasureConditionsEquality, TwoFreshObjectsAreEqual)
{
    const QVMeasureConditions first;
    const QVMeasureConditions second;
    EXPECT_TRUE(first == second);
    EXPECT_TRUE(second == first);
    EXPECT_TRUE(first == first);
}

TEST(QVMeasureConditionsEquality, EachStoredKeyAloneMakesADifference)
{
    for (const auto& entry : kChangedValues) {
        SCOPED_TRACE(entry.first);
        const QVMeasureConditions fresh;
        QVMeasureConditions changed;
        Set(changed, entry.first, entry.second);
        EXPECT_FALSE(changed == fresh);
        EXPECT_FALSE(fresh == changed);
    }
}

TEST(QVMeasureConditionsEquality, EveryIlluminationParameterCounts)
{
    QVMeasureConditions warm;
    QVMeasureConditions cold;
    Set(warm, kIlluminationKey, "Dxx, Temperature:5000");
    Set(cold, kIlluminationKey, "Dxx, Temperature:6500");
    EXPECT_FALSE(warm == cold);
    Set(cold, kIlluminationKey, "Dxx, Temperature:5000");
    EXPECT_TRUE(warm == cold);

    QVMeasureConditions twelve;
    QVMeasureConditions thirteen;
    Set(twelve, kIlluminationKey, "F12");
    Set(thirteen, kIlluminationKey, "F13");
    EXPECT_FALSE(twelve == thirteen);

    // Code 8 and code 11 with F number 2 read the same and still differ.
    QVMeasureConditions named;
    QVMeasureConditions numbered;
    Set(named, kIlluminationKey, "F2");
    Set(numbered, kIlluminationKey, "F02");
    EXPECT_EQ(Read(named, kIlluminationKey), Read(numbered, kIlluminationKey));
    EXPECT_FALSE(named == numbered);
}

TEST(QVMeasureConditionsEquality, TheFixedKeysMakeNoDifference)
{
    QVMeasureConditions changed;
    Set(changed, kNumberOfDataPointsKey, "40");
    Set(changed, kWavelengthMaxKey, "780nm");
    Set(changed, kWavelengthMinKey, "360nm");
    EXPECT_TRUE(changed == QVMeasureConditions());
}

TEST(QVMeasureConditionsEquality, CustomConditionsTakeNoPart)
{
    QVMeasureConditions custom;
    Set(custom, kCustomConditionKey, "Enable");
    Set(custom, "Foo.Bar", "x");
    EXPECT_TRUE(custom == QVMeasureConditions());
    EXPECT_TRUE(QVMeasureConditions() == custom);
}

TEST(QVMeasureConditionsEquality, ACopyIsEqualAndTakesEveryField)
{
    QVMeasureConditions original = ChangedConditions();
    Set(original, kIlluminationKey, "Dxx, Temperature:-40");
    const QVMeasureConditions copy(original);
    EXPECT_TRUE(copy == original);
    EXPECT_TRUE(original == copy);
    EXPECT_EQ(Snapshot(original, {"Foo.Bar"}), Snapshot(copy, {"Foo.Bar"}));
    EXPECT_EQ("custom value", Read(copy, "Foo.Bar"));
    EXPECT_EQ("Enable", Read(copy, kCustomConditionKey));
    EXPECT_EQ(TestAccess::GetIllumination(original), TestAccess::GetIllumination(copy));
    EXPECT_EQ(2UL, TestAccess::CustomConditions(copy).GetCount());
}

TEST(QVMeasureConditionsEquality, AssignmentTakesEveryField)
{
    const QVMeasureConditions original = ChangedConditions();
    QVMeasureConditions target;
    Set(target, kCustomConditionKey, "Enable");
    Set(target, "Only.In.Target", "y");
    target = original;
    EXPECT_TRUE(target == original);
    EXPECT_EQ(Snapshot(original, {"Foo.Bar", "Only.In.Target"}), Snapshot(target, {"Foo.Bar", "Only.In.Target"}));
    EXPECT_EQ("custom value", Read(target, "Foo.Bar"));
    // The map is replaced, not merged.
    EXPECT_EQ("Undefined", Read(target, "Only.In.Target"));
}

TEST(QVMeasureConditionsEquality, ACopyIsIndependentOfItsOriginal)
{
    QVMeasureConditions original = ChangedConditions();
    const QVMeasureConditions copy(original);
    Set(original, kObserverKey, "TwoDegree");
    Set(original, "Foo.Bar", "changed");
    EXPECT_EQ("TenDegree", Read(copy, kObserverKey));
    EXPECT_EQ("custom value", Read(copy, "Foo.Bar"));
    EXPECT_FALSE(copy == original);
}

TEST(QVMeasureConditionsEquality, SelfAssignmentKeepsEverything)
{
    QVMeasureConditions conditions = ChangedConditions();
    conditions.SetUserdefinedIllumination(QVSpectrum());
    const std::vector<std::string> answers = Snapshot(conditions, {"Foo.Bar"});
    QVMeasureConditions& alias = conditions;
    conditions = alias;
    EXPECT_EQ(answers, Snapshot(conditions, {"Foo.Bar"}));
    EXPECT_NO_THROW((void)conditions.GetUserdefinedIllumination());
    EXPECT_TRUE(conditions == alias);
}

// ---------------------------------------------------------------- physical filter transfer

TEST(QVMeasureConditionsPhysMeasCond, CopiesThePhysicalFilterAndNothingElse)
{
    // The source differs from the target in every stored key, and it holds a
    // user spectrum while the target holds none.
    QVMeasureConditions source;
    source.SetUserdefinedIllumination(QVSpectrum());
    Set(source, kPhysicalFilterKey, "CalibrationCheck");
    QVMeasureConditions target = ChangedConditions();
    for (const auto& entry : kChangedValues) {
        ASSERT_NE(Read(source, entry.first), Read(target, entry.first)) << entry.first;
    }

    const std::vector<std::string> before = Snapshot(target, {"Foo.Bar"});
    target.SetPhysMeasCond(source);
    const std::vector<std::string> after = Snapshot(target, {"Foo.Bar"});

    EXPECT_EQ("CalibrationCheck", Read(target, kPhysicalFilterKey));
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (i < kDefaults.size() && kDefaults[i].first == kPhysicalFilterKey) {
            continue;
        }
        EXPECT_EQ(before[i], after[i]) << i;
    }
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { (void)target.GetUserdefinedIllumination(); }));
    EXPECT_FALSE(target == source);
}

TEST(QVMeasureConditionsPhysMeasCond, CopiesFiltersOutsideTheOfferedList)
{
    QVMeasureConditions source;
    QVMeasureConditions target;
    Set(source, kPhysicalFilterKey, "LastSelectable");
    target.SetPhysMeasCond(source);
    EXPECT_EQ("LastSelectable", Read(target, kPhysicalFilterKey));
    EXPECT_TRUE(target == source);
    Set(source, kPhysicalFilterKey, "Undefined");
    target.SetPhysMeasCond(source);
    EXPECT_EQ("Undefined", Read(target, kPhysicalFilterKey));
    EXPECT_EQ(CMetry::PhysicalFilterUndefined, TestAccess::GetPhysicalFilter(target));
}

TEST(QVMeasureConditionsPhysMeasCond, KeepsTheUserdefinedIlluminationOfTheTarget)
{
    QVMeasureConditions target;
    target.SetUserdefinedIllumination(QVSpectrum());
    QVMeasureConditions source;
    Set(source, kPhysicalFilterKey, "ND0");
    target.SetPhysMeasCond(source);
    EXPECT_EQ("ND0", Read(target, kPhysicalFilterKey));
    EXPECT_EQ("Userdefined", Read(target, kIlluminationKey));
    EXPECT_NO_THROW((void)target.GetUserdefinedIllumination());
}

// ---------------------------------------------------------------- user-defined illumination

TEST(QVMeasureConditionsUserSpectrum, SettingASpectrumSelectsTheUserdefinedIllumination)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(QVSpectrum());
    EXPECT_EQ("Userdefined", Read(conditions, kIlluminationKey));
    EXPECT_EQ(QVIllumination(CMetry::IlluminationUserdefined), TestAccess::GetIllumination(conditions));
    QVSpectrum spectrum;
    EXPECT_NO_THROW(spectrum = conditions.GetUserdefinedIllumination());
    EXPECT_TRUE(spectrum == QVSpectrum());
}

TEST(QVMeasureConditionsUserSpectrum, SettingUserdefinedAgainKeepsTheSpectrum)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(QVSpectrum());
    Set(conditions, kIlluminationKey, "Userdefined");
    EXPECT_NO_THROW((void)conditions.GetUserdefinedIllumination());
    TestAccess::SetIllumination(conditions, QVIllumination(CMetry::IlluminationUserdefined));
    EXPECT_NO_THROW((void)conditions.GetUserdefinedIllumination());
}

TEST(QVMeasureConditionsUserSpectrum, AnyOtherIlluminationDropsTheSpectrum)
{
    for (const std::string& value :
         std::vector<std::string>{"D65", "A", "Undefined", "Emission", "F2", "F12", "Dxx, Temperature:6500"}) {
        SCOPED_TRACE(value);
        QVMeasureConditions conditions;
        conditions.SetUserdefinedIllumination(QVSpectrum());
        Set(conditions, kIlluminationKey, value);
        EXPECT_EQ("Failed to access to nullpointer.",
                  FailureText<ExceptionNullpointer>([&] { (void)conditions.GetUserdefinedIllumination(); }));
        // Choosing "Userdefined" afterwards brings nothing back.
        Set(conditions, kIlluminationKey, "Userdefined");
        EXPECT_EQ("Failed to access to nullpointer.",
                  FailureText<ExceptionNullpointer>([&] { (void)conditions.GetUserdefinedIllumination(); }));
    }
}

TEST(QVMeasureConditionsUserSpectrum, AUserdefinedTypeWithParametersDropsTheSpectrum)
{
    QVIllumination withFValue(CMetry::IlluminationUserdefined);
    withFValue.SetFValue(1);
    QVIllumination withTemperature(CMetry::IlluminationUserdefined);
    withTemperature.SetColorTemperature(1);
    for (const QVIllumination& illumination : {withFValue, withTemperature}) {
        QVMeasureConditions conditions;
        conditions.SetUserdefinedIllumination(QVSpectrum());
        TestAccess::SetIllumination(conditions, illumination);
        EXPECT_EQ("Failed to access to nullpointer.",
                  FailureText<ExceptionNullpointer>([&] { (void)conditions.GetUserdefinedIllumination(); }));
    }
}

TEST(QVMeasureConditionsUserSpectrum, ARefusedIlluminationKeepsTheSpectrum)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(QVSpectrum());
    EXPECT_NE("no exception", FailureText<ExceptionCMetry>([&] { Set(conditions, kIlluminationKey, "Dxx"); }));
    EXPECT_NE("no exception", FailureText<ExceptionOutOfBound>([&] { Set(conditions, kIlluminationKey, "F"); }));
    EXPECT_EQ("Userdefined", Read(conditions, kIlluminationKey));
    EXPECT_NO_THROW((void)conditions.GetUserdefinedIllumination());
}

TEST(QVMeasureConditionsUserSpectrum, EqualityAsksForTheSameSpectrumNotAnEqualOne)
{
    QVMeasureConditions first;
    QVMeasureConditions second;
    first.SetUserdefinedIllumination(QVSpectrum());
    second.SetUserdefinedIllumination(QVSpectrum());
    EXPECT_EQ(Snapshot(first), Snapshot(second));
    EXPECT_FALSE(first == second);

    const QVMeasureConditions copy(first);
    EXPECT_TRUE(copy == first);
    QVMeasureConditions assigned;
    assigned = first;
    EXPECT_TRUE(assigned == first);

    // Only one side with a spectrum: unequal.
    QVMeasureConditions plain;
    Set(plain, kIlluminationKey, "Userdefined");
    EXPECT_EQ(Read(plain, kIlluminationKey), Read(first, kIlluminationKey));
    EXPECT_FALSE(plain == first);

    // Both dropped: equal again.
    Set(first, kIlluminationKey, "D65");
    Set(second, kIlluminationKey, "D65");
    EXPECT_TRUE(first == second);
}

TEST(QVMeasureConditionsUserSpectrum, ACopySharesTheSpectrumAndOutlivesTheOriginal)
{
    QVMeasureConditions* original = new QVMeasureConditions;
    original->SetUserdefinedIllumination(QVSpectrum());
    const QVMeasureConditions copy(*original);
    delete original;
    EXPECT_EQ("Userdefined", Read(copy, kIlluminationKey));
    QVSpectrum spectrum;
    EXPECT_NO_THROW(spectrum = copy.GetUserdefinedIllumination());
    EXPECT_TRUE(spectrum == QVSpectrum());
}

// ---------------------------------------------------------------- the table filler

TEST(QVMeasureConditionsInitialisator, HoldsNoObjectAndHasAnEmptyValueString)
{
    const QVMeasureConditions::Initialisator filler;
    EXPECT_FALSE(filler.IsValid());
    EXPECT_TRUE(filler.GetValueString().IsEmpty());
    // Filling again leaves the lists as they were.
    EXPECT_EQ((std::vector<std::string>{"TwoDegree", "TenDegree"}), SupportedValues(kObserverKey));
    EXPECT_EQ(14UL, SupportedValues(kColorSpaceKey).size());
}

TEST(QVMeasureConditionsInitialisator, AddTypeCopiesUpToTheFirstUndefined)
{
    const QVMeasureConditions::Initialisator filler;
    const String values[] = {"a", "b", "Undefined", "c", "Undefined"};
    filler.AddType(String("Test.AddType"), values);
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), SupportedValues("Test.AddType"));

    const String onlySentinel[] = {"Undefined"};
    filler.AddType(String("Test.AddType"), onlySentinel);
    EXPECT_TRUE(SupportedValues("Test.AddType").empty());
    EXPECT_TRUE(TestAccess::SupportedValuesTable().Find(String("Test.AddType")).IsValid());
}

TEST(QVMeasureConditionsInitialisator, AddTypeTakesAHundredValues)
{
    std::vector<String> values;
    for (long i = 0; i < 100; ++i) {
        values.emplace_back(i);
    }
    values.emplace_back("Undefined");
    const QVMeasureConditions::Initialisator filler;
    filler.AddType(String("Test.Hundred"), values.data());
    const std::vector<std::string> stored = SupportedValues("Test.Hundred");
    ASSERT_EQ(100UL, stored.size());
    EXPECT_EQ("0", stored.front());
    EXPECT_EQ("99", stored.back());
}
