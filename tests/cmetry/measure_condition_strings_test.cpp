// The two vocabularies of the measure conditions: the value strings that
// MeasureConditionGetStrings parses, formats and validates, and the
// diagnostic texts of QVIllumination and the free GetValueString overloads.
// They disagree on purpose (B, D75, D55 and Emission have a value string but
// print "not defined").

#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using namespace CMetry;
using TestSupport::FailureText;
using Utilities::ExceptionNullpointer;
using Utilities::ExceptionOutOfBound;
using Utilities::String;

namespace {

std::string Text(const Diagnostics::String& text)
{
    return text.c_str();
}

QVIllumination Parse(const std::string& value)
{
    MeasureConditionGetStrings strings;
    return strings.GetIllumination(String(value));
}

std::string Format(const QVIllumination& illumination)
{
    const MeasureConditionGetStrings strings;
    return strings.ToString(illumination);
}

QVIllumination Daylight(short temperature)
{
    QVIllumination illumination(IlluminationDxx);
    illumination.SetColorTemperature(temperature);
    return illumination;
}

QVIllumination Fluorescent(unsigned char fNumber)
{
    QVIllumination illumination(IlluminationFxx);
    illumination.SetFValue(fNumber);
    return illumination;
}

template <typename E>
E Code(std::int32_t code)
{
    return static_cast<E>(code);
}

// Texts every parser and validator must refuse, with the whole text in the
// message: empty, very long, bytes above 127, blanks around a valid value.
std::vector<std::string> HostileValues()
{
    return {"", std::string(10000, 'x'), "Caf\xC3\xA9", "\xFF\x80\x83", " TwoDegree", "Paper ", "Bogus"};
}

// Calls the parser or validator and gives the text of its ExceptionCMetry.
using Call = std::function<void(MeasureConditionGetStrings&, const String&)>;

std::string Refusal(const Call& call, const std::string& value)
{
    MeasureConditionGetStrings strings;
    return FailureText<ExceptionCMetry>([&] { call(strings, String(value)); });
}

} // namespace

// ---------------------------------------------------------------- QVIllumination

TEST(QVIllumination, DefaultIsUndefinedWithZeroParameters)
{
    const QVIllumination illumination;
    EXPECT_EQ(IlluminationUndefined, illumination.GetIlluminationTYPE());
    EXPECT_EQ(0, illumination.GetFValue());
    EXPECT_EQ(0, illumination.GetColorTemperature());
}

TEST(QVIllumination, FromATypeHasZeroParameters)
{
    for (std::int32_t code = -1; code <= 13; ++code) {
        SCOPED_TRACE(code);
        const QVIllumination illumination(Code<QVIlluminationTYPE>(code));
        EXPECT_EQ(code, illumination.GetIlluminationTYPE());
        EXPECT_EQ(0, illumination.GetFValue());
        EXPECT_EQ(0, illumination.GetColorTemperature());
    }
}

TEST(QVIllumination, SettersStoreEachFieldAlone)
{
    QVIllumination illumination(IlluminationA);
    illumination.SetColorTemperature(-32768);
    EXPECT_EQ(-32768, illumination.GetColorTemperature());
    EXPECT_EQ(0, illumination.GetFValue());
    EXPECT_EQ(IlluminationA, illumination.GetIlluminationTYPE());
    illumination.SetFValue(255);
    EXPECT_EQ(255, illumination.GetFValue());
    EXPECT_EQ(-32768, illumination.GetColorTemperature());
    illumination.SetIlluminationTYPE(IlluminationEmission);
    EXPECT_EQ(IlluminationEmission, illumination.GetIlluminationTYPE());
    EXPECT_EQ(255, illumination.GetFValue());
    EXPECT_EQ(-32768, illumination.GetColorTemperature());
}

TEST(QVIllumination, CopiesTakeAllThreeFields)
{
    QVIllumination original(IlluminationDxx);
    original.SetColorTemperature(6500);
    original.SetFValue(7);
    const QVIllumination copy(original);
    EXPECT_EQ(IlluminationDxx, copy.GetIlluminationTYPE());
    EXPECT_EQ(6500, copy.GetColorTemperature());
    EXPECT_EQ(7, copy.GetFValue());
    QVIllumination assigned;
    assigned = original;
    EXPECT_EQ(IlluminationDxx, assigned.GetIlluminationTYPE());
    EXPECT_EQ(6500, assigned.GetColorTemperature());
    EXPECT_EQ(7, assigned.GetFValue());
}

TEST(QVIllumination, EqualWhenAllThreeFieldsAreEqual)
{
    EXPECT_TRUE(QVIllumination() == QVIllumination());
    EXPECT_FALSE(QVIllumination() != QVIllumination());
    EXPECT_TRUE(QVIllumination() == QVIllumination(IlluminationUndefined));
    EXPECT_TRUE(Daylight(5000) == Daylight(5000));
    EXPECT_FALSE(Daylight(5000) != Daylight(5000));
    EXPECT_TRUE(Fluorescent(12) == Fluorescent(12));
}

TEST(QVIllumination, EachFieldAloneMakesADifference)
{
    const QVIllumination base(IlluminationD65);

    const QVIllumination otherType(IlluminationD50);
    EXPECT_TRUE(base != otherType);
    EXPECT_FALSE(base == otherType);

    // Parameters count also where the type does not use them.
    QVIllumination withFValue(IlluminationD65);
    withFValue.SetFValue(1);
    EXPECT_TRUE(base != withFValue);
    EXPECT_FALSE(base == withFValue);
    EXPECT_TRUE(withFValue != base);

    QVIllumination withTemperature(IlluminationD65);
    withTemperature.SetColorTemperature(1);
    EXPECT_TRUE(base != withTemperature);
    EXPECT_FALSE(base == withTemperature);
    EXPECT_TRUE(withTemperature != base);

    EXPECT_TRUE(Daylight(5000) != Daylight(6500));
    EXPECT_TRUE(Fluorescent(12) != Fluorescent(13));
    // F2 by name and by number are different illuminations.
    EXPECT_TRUE(QVIllumination(IlluminationF2) != Fluorescent(2));
}

TEST(QVIllumination, ValueStringNamesTheTypeByItsDiagnosticText)
{
    const std::vector<std::pair<QVIlluminationTYPE, std::string>> expected = {
        {IlluminationA, "IlluminationTYPE: A"},
        {IlluminationC, "IlluminationTYPE: C"},
        {IlluminationD65, "IlluminationTYPE: D65"},
        {IlluminationD50, "IlluminationTYPE: D50"},
        {IlluminationF2, "IlluminationTYPE: F2"},
        {IlluminationF7, "IlluminationTYPE: F7"},
        {IlluminationF11, "IlluminationTYPE: F11"},
        {IlluminationUserdefined, "IlluminationTYPE: User defined"},
        {IlluminationB, "IlluminationTYPE: not defined"},
        {IlluminationD75, "IlluminationTYPE: not defined"},
        {IlluminationD55, "IlluminationTYPE: not defined"},
        {IlluminationEmission, "IlluminationTYPE: not defined"},
        {IlluminationUndefined, "IlluminationTYPE: not defined"},
        {Code<QVIlluminationTYPE>(14), "IlluminationTYPE: not defined"},
    };
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Text(QVIllumination(entry.first).GetValueString()));
    }
}

TEST(QVIllumination, ValueStringOfDaylightAddsTheTemperature)
{
    EXPECT_EQ("IlluminationTYPE: Dxx; ColorTemperature: 6500", Text(Daylight(6500).GetValueString()));
    EXPECT_EQ("IlluminationTYPE: Dxx; ColorTemperature: -40", Text(Daylight(-40).GetValueString()));
    EXPECT_EQ("IlluminationTYPE: Dxx; ColorTemperature: 0", Text(QVIllumination(IlluminationDxx).GetValueString()));
}

TEST(QVIllumination, ValueStringOfFluorescentAddsTheFNumber)
{
    EXPECT_EQ("IlluminationTYPE: Fxx; F-Value: 12", Text(Fluorescent(12).GetValueString()));
    EXPECT_EQ("IlluminationTYPE: Fxx; F-Value: 255", Text(Fluorescent(255).GetValueString()));
}

TEST(QVIllumination, ValueStringShowsOnlyTheParameterTheTypeUses)
{
    QVIllumination both(IlluminationDxx);
    both.SetColorTemperature(5000);
    both.SetFValue(3);
    EXPECT_EQ("IlluminationTYPE: Dxx; ColorTemperature: 5000", Text(both.GetValueString()));
    both.SetIlluminationTYPE(IlluminationFxx);
    EXPECT_EQ("IlluminationTYPE: Fxx; F-Value: 3", Text(both.GetValueString()));
    both.SetIlluminationTYPE(IlluminationD65);
    EXPECT_EQ("IlluminationTYPE: D65", Text(both.GetValueString()));
}

// ---------------------------------------------------------------- illumination parser

TEST(MeasureConditionGetStringsIllumination, NamedIlluminantsGiveCodesZeroToSix)
{
    const std::vector<std::pair<std::string, QVIlluminationTYPE>> names = {
        {"A", IlluminationA},     {"B", IlluminationB},     {"C", IlluminationC},    {"D75", IlluminationD75},
        {"D65", IlluminationD65}, {"D55", IlluminationD55}, {"D50", IlluminationD50}};
    std::int32_t expectedCode = 0;
    for (const auto& name : names) {
        SCOPED_TRACE(name.first);
        EXPECT_EQ(expectedCode++, name.second);
        EXPECT_EQ(QVIllumination(name.second), Parse(name.first));
    }
}

TEST(MeasureConditionGetStringsIllumination, NamedLampsGiveCodesEightToTen)
{
    EXPECT_EQ(QVIllumination(IlluminationF2), Parse("F2"));
    EXPECT_EQ(QVIllumination(IlluminationF7), Parse("F7"));
    EXPECT_EQ(QVIllumination(IlluminationF11), Parse("F11"));
    EXPECT_EQ(8, Parse("F2").GetIlluminationTYPE());
    EXPECT_EQ(9, Parse("F7").GetIlluminationTYPE());
    EXPECT_EQ(10, Parse("F11").GetIlluminationTYPE());
    EXPECT_EQ(0, Parse("F2").GetFValue());
}

TEST(MeasureConditionGetStringsIllumination, UndefinedUserdefinedAndEmission)
{
    EXPECT_EQ(QVIllumination(IlluminationUndefined), Parse("Undefined"));
    EXPECT_EQ(QVIllumination(IlluminationUserdefined), Parse("Userdefined"));
    EXPECT_EQ(QVIllumination(IlluminationEmission), Parse("Emission"));
    EXPECT_EQ(-1, Parse("Undefined").GetIlluminationTYPE());
    EXPECT_EQ(12, Parse("Userdefined").GetIlluminationTYPE());
    EXPECT_EQ(13, Parse("Emission").GetIlluminationTYPE());
}

TEST(MeasureConditionGetStringsIllumination, AnyOtherTextStartingWithFIsCodeElevenWithItsNumber)
{
    EXPECT_EQ(Fluorescent(12), Parse("F12"));
    EXPECT_EQ(Fluorescent(3), Parse("F3"));
    EXPECT_EQ(Fluorescent(0), Parse("F0"));
    EXPECT_EQ(Fluorescent(255), Parse("F255"));
    // A leading zero makes it a number, not one of the named lamps.
    EXPECT_EQ(Fluorescent(2), Parse("F02"));
    EXPECT_EQ(Fluorescent(11), Parse("F011"));
}

TEST(MeasureConditionGetStringsIllumination, AnFNumberKeepsOnlyItsLowByte)
{
    EXPECT_EQ(Fluorescent(44), Parse("F300"));
    EXPECT_EQ(Fluorescent(0), Parse("F256"));
    EXPECT_EQ(Fluorescent(255), Parse("F-1"));
}

TEST(MeasureConditionGetStringsIllumination, AnFWithoutANumberFailsInTheNumberConversion)
{
    EXPECT_EQ(" is not a valid number.", FailureText<ExceptionOutOfBound>([] { (void)Parse("F"); }));
    EXPECT_EQ("x is not a valid number.", FailureText<ExceptionOutOfBound>([] { (void)Parse("Fx"); }));
    EXPECT_EQ("99999 is to big for a short.", FailureText<ExceptionOutOfBound>([] { (void)Parse("F99999"); }));
}

TEST(MeasureConditionGetStringsIllumination, AnyTextStartingWithFIsReadAsAnFNumber)
{
    // Only the three exact lamp names are codes 8 to 10; with a blank behind
    // it "F2" is a number like any other.
    EXPECT_EQ(Fluorescent(2), Parse("F2 "));
    EXPECT_EQ(Fluorescent(12), Parse("F 12"));
    EXPECT_EQ(Fluorescent(12), Parse("F12 lamp"));
    EXPECT_EQ("oo is not a valid number.", FailureText<ExceptionOutOfBound>([] { (void)Parse("Foo"); }));
    EXPECT_EQ("luorescent is not a valid number.",
              FailureText<ExceptionOutOfBound>([] { (void)Parse("Fluorescent"); }));
}

TEST(MeasureConditionGetStringsIllumination, DaylightTakesTheTemperatureBehindTheColon)
{
    EXPECT_EQ(Daylight(6500), Parse("Dxx, Temperature:6500"));
    EXPECT_EQ(Daylight(-40), Parse("Dxx, Temperature:-40"));
    EXPECT_EQ(Daylight(32767), Parse("Dxx, Temperature:32767"));
    EXPECT_EQ(Daylight(-32768), Parse("Dxx, Temperature:-32768"));
    EXPECT_EQ(0, Parse("Dxx, Temperature:6500").GetFValue());
}

TEST(MeasureConditionGetStringsIllumination, ADaylightTemperatureOutsideAShortIsRefused)
{
    EXPECT_EQ("99999 is to big for a short.",
              FailureText<ExceptionOutOfBound>([] { (void)Parse("Dxx, Temperature:99999"); }));
    EXPECT_EQ("32768 is to big for a short.",
              FailureText<ExceptionOutOfBound>([] { (void)Parse("Dxx, Temperature:32768"); }));
    EXPECT_EQ("-32769 is to big for a short.",
              FailureText<ExceptionOutOfBound>([] { (void)Parse("Dxx, Temperature:-32769"); }));
}

TEST(MeasureConditionGetStringsIllumination, ADaylightWithoutDigitsIsRefused)
{
    EXPECT_EQ(" is not a valid number.", FailureText<ExceptionOutOfBound>([] { (void)Parse("Dxx, Temperature:"); }));
    EXPECT_EQ("warm is not a valid number.",
              FailureText<ExceptionOutOfBound>([] { (void)Parse("Dxx, Temperature:warm"); }));
}

TEST(MeasureConditionGetStringsIllumination, TheTemperatureIsReadAsFarAsItIsANumber)
{
    EXPECT_EQ(Daylight(6500), Parse("Dxx, Temperature:6500K"));
    EXPECT_EQ(Daylight(6500), Parse("Dxx, Temperature: 6500"));
    EXPECT_EQ(Daylight(1), Parse("Dxx, Temperature:1:2"));
    EXPECT_EQ("Dxx, Temperature:6500", Format(Parse("Dxx, Temperature: 6500")));
}

TEST(MeasureConditionGetStringsIllumination, TheDaylightPrefixWithoutAColonHasNoTemperatureToken)
{
    // Token 1 behind the colon does not exist: the token split fails before
    // any number is read.
    EXPECT_EQ("String empty", FailureText<ExceptionOutOfBound>([] { (void)Parse("Dxx, Temperature"); }));
}

TEST(MeasureConditionGetStringsIllumination, TheDaylightPrefixMustMatchExactly)
{
    for (const std::string& value : std::vector<std::string>{"Dxx", "Dxx,Temperature:6500", "dxx, Temperature:6500",
                                                             "Dxx, temperature:6500", "Dxx, Temperature 6500"}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(value + " is not a valid illuminationtype",
                  Refusal([](MeasureConditionGetStrings& s, const String& v) { (void)s.GetIllumination(v); }, value));
    }
}

TEST(MeasureConditionGetStringsIllumination, RefusesUnknownTextWithTheWholeValue)
{
    std::vector<std::string> values = HostileValues();
    values.push_back("d65");
    values.push_back("D65 ");
    values.push_back("Userdefined2");
    values.push_back("D 65");
    for (const std::string& value : values) {
        SCOPED_TRACE(value.substr(0, 20));
        EXPECT_EQ(value + " is not a valid illuminationtype",
                  Refusal([](MeasureConditionGetStrings& s, const String& v) { (void)s.GetIllumination(v); }, value));
    }
}

// ---------------------------------------------------------------- enumeration parsers

TEST(MeasureConditionGetStringsParsers, ObserverValuesAndUndefined)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ(ObserverTwoDegree, strings.GetObserver(String("TwoDegree")));
    EXPECT_EQ(ObserverTenDegree, strings.GetObserver(String("TenDegree")));
    EXPECT_EQ(ObserverUndefined, strings.GetObserver(String("Undefined")));
}

TEST(MeasureConditionGetStringsParsers, WhiteBaseValuesAndUndefined)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ(WhiteBaseAbsolute, strings.GetWhiteBase(String("Absolute")));
    EXPECT_EQ(WhiteBasePaper, strings.GetWhiteBase(String("Paper")));
    EXPECT_EQ(WhiteBaseAutomatic, strings.GetWhiteBase(String("Automatic")));
    EXPECT_EQ(WhiteBaseUndefined, strings.GetWhiteBase(String("Undefined")));
}

TEST(MeasureConditionGetStringsParsers, DensityStandardValuesAndUndefined)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ(DensityStdDIN, strings.GetDensityStandard(String("DIN")));
    EXPECT_EQ(DensityStdDINNB, strings.GetDensityStandard(String("DINNB")));
    EXPECT_EQ(DensityStdANSIA, strings.GetDensityStandard(String("ANSIA")));
    EXPECT_EQ(DensityStdANSIT, strings.GetDensityStandard(String("ANSIT")));
    EXPECT_EQ(DensityStdSPI, strings.GetDensityStandard(String("SPI")));
    EXPECT_EQ(DensityStdUser, strings.GetDensityStandard(String("User")));
    EXPECT_EQ(DensityStdUndefined, strings.GetDensityStandard(String("Undefined")));
}

TEST(MeasureConditionGetStringsParsers, DensityFilterModeValuesAndUndefined)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ(DensityFilterModeBlack, strings.GetDensityFilterMode(String("Black")));
    EXPECT_EQ(DensityFilterModeCyan, strings.GetDensityFilterMode(String("Cyan")));
    EXPECT_EQ(DensityFilterModeMagenta, strings.GetDensityFilterMode(String("Magenta")));
    EXPECT_EQ(DensityFilterModeYellow, strings.GetDensityFilterMode(String("Yellow")));
    EXPECT_EQ(DensityFilterModeMax, strings.GetDensityFilterMode(String("Max")));
    EXPECT_EQ(DensityFilterModeAuto, strings.GetDensityFilterMode(String("Auto")));
    EXPECT_EQ(DensityFilterModeUndefined, strings.GetDensityFilterMode(String("Undefined")));
}

TEST(MeasureConditionGetStringsParsers, PhysicalFilterValuesLastSelectableAndUndefined)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ(PhysicalFilterNo, strings.GetPhysicalFilter(String("No")));
    EXPECT_EQ(PhysicalFilterPolarizer, strings.GetPhysicalFilter(String("Polarizer")));
    EXPECT_EQ(PhysicalFilterD65, strings.GetPhysicalFilter(String("D65")));
    EXPECT_EQ(PhysicalFilterUVCut, strings.GetPhysicalFilter(String("UVCut")));
    EXPECT_EQ(PhysicalFilterLastSelectable, strings.GetPhysicalFilter(String("LastSelectable")));
    EXPECT_EQ(5, strings.GetPhysicalFilter(String("LastSelectable")));
    EXPECT_EQ(PhysicalFilterCustom, strings.GetPhysicalFilter(String("Custom")));
    EXPECT_EQ(PhysicalFilterCalibrationCheck, strings.GetPhysicalFilter(String("CalibrationCheck")));
    EXPECT_EQ(PhysicalFilterND0, strings.GetPhysicalFilter(String("ND0")));
    EXPECT_EQ(PhysicalFilterUndefined, strings.GetPhysicalFilter(String("Undefined")));
    EXPECT_EQ(0, strings.GetPhysicalFilter(String("Undefined")));
}

TEST(MeasureConditionGetStringsParsers, EachParserRefusesUnknownTextWithItsMessage)
{
    const std::vector<std::pair<std::string, Call>> parsers = {
        {" is not a valid observertype",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetObserver(v); }},
        {" is not a valid whitespacetype",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetWhiteBase(v); }},
        {" is not a valid density standard type",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetDensityStandard(v); }},
        {" is not a valid density filter mode",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetDensityFilterMode(v); }},
        // The physical filter shares the white base's words.
        {" is not a valid whitespacetype",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetPhysicalFilter(v); }},
    };
    for (const auto& parser : parsers) {
        for (const std::string& value : HostileValues()) {
            SCOPED_TRACE(parser.first + " / " + value.substr(0, 20));
            EXPECT_EQ(value + parser.first, Refusal(parser.second, value));
        }
    }
}

TEST(MeasureConditionGetStringsParsers, AValueLookingLikeThePlaceholderIsFilledInOnce)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ("%VALUE% is not a valid observertype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetObserver(String("%VALUE%")); }));
    EXPECT_EQ("a%VALUE%b is not a valid color space",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetColorSpace(String("a%VALUE%b")); }));
    EXPECT_EQ("%VALUE%%VALUE% is not a valid illuminationtype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetIllumination(String("%VALUE%%VALUE%")); }));
}

TEST(MeasureConditionGetStringsParsers, ParsersAreCaseSensitive)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ("twodegree is not a valid observertype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetObserver(String("twodegree")); }));
    EXPECT_EQ("PAPER is not a valid whitespacetype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetWhiteBase(String("PAPER")); }));
    EXPECT_EQ("din is not a valid density standard type",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetDensityStandard(String("din")); }));
    EXPECT_EQ("auto is not a valid density filter mode",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetDensityFilterMode(String("auto")); }));
    EXPECT_EQ("uvcut is not a valid whitespacetype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetPhysicalFilter(String("uvcut")); }));
    EXPECT_EQ("undefined is not a valid observertype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetObserver(String("undefined")); }));
}

TEST(MeasureConditionGetStringsParsers, ParsersDoNotAcceptEachOthersValues)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ("Paper is not a valid observertype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetObserver(String("Paper")); }));
    EXPECT_EQ("No is not a valid whitespacetype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetWhiteBase(String("No")); }));
    EXPECT_EQ("Absolute is not a valid whitespacetype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetPhysicalFilter(String("Absolute")); }));
    EXPECT_EQ("Black is not a valid density standard type",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetDensityStandard(String("Black")); }));
    EXPECT_EQ("DIN is not a valid density filter mode",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetDensityFilterMode(String("DIN")); }));
    EXPECT_EQ("Polarizer is not a valid illuminationtype",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetIllumination(String("Polarizer")); }));
}

// ---------------------------------------------------------------- validators

TEST(MeasureConditionGetStringsValidators, EverySupportedValueAndUndefinedComesBackItself)
{
    const std::vector<std::string> spaces = {"CIELab",     "CIELCh", "CIELuv", "CIELChuv",  "CIEuvY1960",
                                             "CIEuvY1976", "CIEXYZ", "CIExyY", "HunterLab", "RxRyRz",
                                             "LABvq",      "LCHvq",  "RGB",    "CMYK",      "Undefined"};
    const std::vector<std::string> formulas = {"CIELab", "CIELuv", "LABvq", "FMCII", "CMC", "94", "Undefined"};
    const std::vector<std::string> forms = {"AbsoluteVector", "DeltaVector", "Undefined"};
    MeasureConditionGetStrings strings;
    for (const std::string& text : spaces) {
        const String value(text);
        const String& answer = strings.GetColorSpace(value);
        EXPECT_EQ(&value, &answer) << text; // the argument itself, by reference
        EXPECT_EQ(text, std::string(answer));
    }
    for (const std::string& text : formulas) {
        const String value(text);
        const String& answer = strings.GetDeltaEFormula(value);
        EXPECT_EQ(&value, &answer) << text;
        EXPECT_EQ(text, std::string(answer));
    }
    for (const std::string& text : forms) {
        const String value(text);
        const String& answer = strings.GetRelativeOrAbsoluteVector(value);
        EXPECT_EQ(&value, &answer) << text;
        EXPECT_EQ(text, std::string(answer));
    }
}

TEST(MeasureConditionGetStringsValidators, EachValidatorRefusesUnknownTextWithItsMessage)
{
    const std::vector<std::pair<std::string, Call>> validators = {
        {" is not a valid color space",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetColorSpace(v); }},
        {" is not a valid delta E formula",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetDeltaEFormula(v); }},
        {" is not valid for absolute or relative vectors",
         [](MeasureConditionGetStrings& s, const String& v) { (void)s.GetRelativeOrAbsoluteVector(v); }},
    };
    for (const auto& validator : validators) {
        std::vector<std::string> values = HostileValues();
        values.push_back("cielab");
        values.push_back("undefined");
        values.push_back("CIELab ");
        for (const std::string& value : values) {
            SCOPED_TRACE(validator.first + " / " + value.substr(0, 20));
            EXPECT_EQ(value + validator.first, Refusal(validator.second, value));
        }
    }
}

TEST(MeasureConditionGetStringsValidators, ValidatorsDoNotShareTheirLists)
{
    MeasureConditionGetStrings strings;
    EXPECT_EQ("FMCII is not a valid color space",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetColorSpace(String("FMCII")); }));
    EXPECT_EQ("RGB is not a valid delta E formula",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetDeltaEFormula(String("RGB")); }));
    EXPECT_EQ("CIELab is not valid for absolute or relative vectors",
              FailureText<ExceptionCMetry>([&] { (void)strings.GetRelativeOrAbsoluteVector(String("CIELab")); }));
}

TEST(MeasureConditionGetStrings, ValueStringIsEmpty)
{
    const MeasureConditionGetStrings strings;
    EXPECT_TRUE(strings.GetValueString().IsEmpty());
    EXPECT_EQ("", Text(strings.GetValueString()));
}

// ---------------------------------------------------------------- formatting

TEST(MeasureConditionGetStringsToString, EveryIlluminationCode)
{
    const std::vector<std::pair<std::int32_t, std::string>> expected = {
        {-1, "Undefined"}, {0, "A"},  {1, "B"},  {2, "C"},    {3, "D75"},          {4, "D65"},      {5, "D55"},
        {6, "D50"},        {8, "F2"}, {9, "F7"}, {10, "F11"}, {12, "Userdefined"}, {13, "Emission"}};
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Format(QVIllumination(Code<QVIlluminationTYPE>(entry.first))));
    }
}

TEST(MeasureConditionGetStringsToString, DaylightShowsItsTemperature)
{
    EXPECT_EQ("Dxx, Temperature:5000", Format(Daylight(5000)));
    EXPECT_EQ("Dxx, Temperature:-40", Format(Daylight(-40)));
    EXPECT_EQ("Dxx, Temperature:0", Format(QVIllumination(IlluminationDxx)));
    EXPECT_EQ("Dxx, Temperature:-32768", Format(Daylight(-32768)));
}

TEST(MeasureConditionGetStringsToString, FluorescentShowsItsFNumber)
{
    EXPECT_EQ("F12", Format(Fluorescent(12)));
    EXPECT_EQ("F0", Format(QVIllumination(IlluminationFxx)));
    EXPECT_EQ("F255", Format(Fluorescent(255)));
    EXPECT_EQ("F2", Format(Fluorescent(2)));
}

TEST(MeasureConditionGetStringsToString, UnusedParametersDoNotShow)
{
    QVIllumination lamp(IlluminationF7);
    lamp.SetFValue(99);
    lamp.SetColorTemperature(99);
    EXPECT_EQ("F7", Format(lamp));
    lamp.SetIlluminationTYPE(IlluminationD50);
    EXPECT_EQ("D50", Format(lamp));
}

TEST(MeasureConditionGetStringsToString, IlluminationCodesWithoutANameAreUndefined)
{
    for (const std::int32_t code : {14, 15, 100, -2, -100}) {
        SCOPED_TRACE(code);
        EXPECT_EQ("Undefined", Format(QVIllumination(Code<QVIlluminationTYPE>(code))));
    }
}

TEST(MeasureConditionGetStringsToString, ParsingTheTextGivesTheIlluminationBack)
{
    std::vector<QVIllumination> illuminations;
    for (std::int32_t code = -1; code <= 13; ++code) {
        if (code != IlluminationDxx && code != IlluminationFxx) {
            illuminations.emplace_back(Code<QVIlluminationTYPE>(code));
        }
    }
    illuminations.push_back(Daylight(6500));
    illuminations.push_back(Daylight(-40));
    illuminations.push_back(Fluorescent(12));
    illuminations.push_back(Fluorescent(0));
    for (const QVIllumination& illumination : illuminations) {
        SCOPED_TRACE(Format(illumination));
        EXPECT_EQ(illumination, Parse(Format(illumination)));
    }
    // The one exception: code 11 with F number 2 (likewise 7, 11) formats as
    // the named lamp and parses back as it.
    EXPECT_EQ(QVIllumination(IlluminationF2), Parse(Format(Fluorescent(2))));
    EXPECT_EQ(QVIllumination(IlluminationF7), Parse(Format(Fluorescent(7))));
    EXPECT_EQ(QVIllumination(IlluminationF11), Parse(Format(Fluorescent(11))));
}

TEST(MeasureConditionGetStringsToString, ObserverCodes)
{
    const MeasureConditionGetStrings strings;
    EXPECT_EQ("TwoDegree", std::string(strings.ToString(ObserverTwoDegree)));
    EXPECT_EQ("TenDegree", std::string(strings.ToString(ObserverTenDegree)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(ObserverUndefined)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(Code<QVObserverTYPE>(2))));
    EXPECT_EQ("Undefined", std::string(strings.ToString(Code<QVObserverTYPE>(-2))));
}

TEST(MeasureConditionGetStringsToString, WhiteBaseCodes)
{
    const MeasureConditionGetStrings strings;
    EXPECT_EQ("Absolute", std::string(strings.ToString(WhiteBaseAbsolute)));
    EXPECT_EQ("Paper", std::string(strings.ToString(WhiteBasePaper)));
    EXPECT_EQ("Automatic", std::string(strings.ToString(WhiteBaseAutomatic)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(WhiteBaseUndefined)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(Code<QVWhiteBaseTYPE>(3))));
}

TEST(MeasureConditionGetStringsToString, DensityStandardCodes)
{
    const MeasureConditionGetStrings strings;
    EXPECT_EQ("DIN", std::string(strings.ToString(DensityStdDIN)));
    EXPECT_EQ("DINNB", std::string(strings.ToString(DensityStdDINNB)));
    EXPECT_EQ("ANSIA", std::string(strings.ToString(DensityStdANSIA)));
    EXPECT_EQ("ANSIT", std::string(strings.ToString(DensityStdANSIT)));
    EXPECT_EQ("SPI", std::string(strings.ToString(DensityStdSPI)));
    EXPECT_EQ("User", std::string(strings.ToString(DensityStdUser)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(DensityStdUndefined)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(Code<QVDensityStdTYPE>(6))));
}

TEST(MeasureConditionGetStringsToString, DensityFilterModeCodes)
{
    const MeasureConditionGetStrings strings;
    EXPECT_EQ("Black", std::string(strings.ToString(DensityFilterModeBlack)));
    EXPECT_EQ("Cyan", std::string(strings.ToString(DensityFilterModeCyan)));
    EXPECT_EQ("Magenta", std::string(strings.ToString(DensityFilterModeMagenta)));
    EXPECT_EQ("Yellow", std::string(strings.ToString(DensityFilterModeYellow)));
    EXPECT_EQ("Max", std::string(strings.ToString(DensityFilterModeMax)));
    EXPECT_EQ("Auto", std::string(strings.ToString(DensityFilterModeAuto)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(DensityFilterModeUndefined)));
    EXPECT_EQ("Undefined", std::string(strings.ToString(Code<DensityFilterModeTYPE>(6))));
}

TEST(MeasureConditionGetStringsToString, PhysicalFilterCodes)
{
    const std::vector<std::pair<std::int32_t, std::string>> expected = {
        {0, "Undefined"}, {1, "No"},         {2, "Polarizer"},
        {3, "D65"},       {4, "UVCut"},      {5, "LastSelectable"},
        {6, "Undefined"}, {7, "Undefined"},  {8, "Undefined"},
        {9, "Undefined"}, {10, "Custom"},    {11, "CalibrationCheck"},
        {12, "ND0"},      {13, "Undefined"}, {-1, "Undefined"}};
    const MeasureConditionGetStrings strings;
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, std::string(strings.ToString(Code<QVPhysicalFilterTYPE>(entry.first))));
    }
}

TEST(MeasureConditionGetStringsToString, EveryEnumerationRoundTripsThroughItsParser)
{
    MeasureConditionGetStrings strings;
    for (std::int32_t code = -1; code <= 1; ++code) {
        EXPECT_EQ(code, strings.GetObserver(strings.ToString(Code<QVObserverTYPE>(code))));
    }
    for (std::int32_t code = -1; code <= 2; ++code) {
        EXPECT_EQ(code, strings.GetWhiteBase(strings.ToString(Code<QVWhiteBaseTYPE>(code))));
    }
    for (std::int32_t code = -1; code <= 5; ++code) {
        EXPECT_EQ(code, strings.GetDensityStandard(strings.ToString(Code<QVDensityStdTYPE>(code))));
        EXPECT_EQ(code, strings.GetDensityFilterMode(strings.ToString(Code<DensityFilterModeTYPE>(code))));
    }
    for (const std::int32_t code : {0, 1, 2, 3, 4, 5, 10, 11, 12}) {
        EXPECT_EQ(code, strings.GetPhysicalFilter(strings.ToString(Code<QVPhysicalFilterTYPE>(code))));
    }
}

// ---------------------------------------------------------------- diagnostic texts

TEST(MeasureConditionDiagnostics, IlluminationTypes)
{
    const std::vector<std::pair<std::int32_t, std::string>> expected = {{-1, "not defined"}, {0, "A"},
                                                                        {1, "not defined"},  {2, "C"},
                                                                        {3, "not defined"},  {4, "D65"},
                                                                        {5, "not defined"},  {6, "D50"},
                                                                        {7, "Dxx"},          {8, "F2"},
                                                                        {9, "F7"},           {10, "F11"},
                                                                        {11, "Fxx"},         {12, "User defined"},
                                                                        {13, "not defined"}, {14, "not defined"},
                                                                        {-2, "not defined"}};
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Text(GetValueString(Code<QVIlluminationTYPE>(entry.first))));
    }
}

TEST(MeasureConditionDiagnostics, ObserversEndInByte83)
{
    EXPECT_EQ(std::string("2\x83"), Text(GetValueString(ObserverTwoDegree)));
    EXPECT_EQ(std::string("10\x83"), Text(GetValueString(ObserverTenDegree)));
    EXPECT_EQ(2UL, Text(GetValueString(ObserverTwoDegree)).size());
    EXPECT_EQ(static_cast<char>(0x83), Text(GetValueString(ObserverTenDegree)).back());
    EXPECT_EQ("not defined", Text(GetValueString(ObserverUndefined)));
    EXPECT_EQ("not defined", Text(GetValueString(Code<QVObserverTYPE>(2))));
}

TEST(MeasureConditionDiagnostics, WhiteBases)
{
    EXPECT_EQ("Abs", Text(GetValueString(WhiteBaseAbsolute)));
    EXPECT_EQ("Pap", Text(GetValueString(WhiteBasePaper)));
    EXPECT_EQ("Auto", Text(GetValueString(WhiteBaseAutomatic)));
    EXPECT_EQ("not defined", Text(GetValueString(WhiteBaseUndefined)));
    EXPECT_EQ("not defined", Text(GetValueString(Code<QVWhiteBaseTYPE>(3))));
}

TEST(MeasureConditionDiagnostics, DensityStandards)
{
    EXPECT_EQ("Densitometer filter DIN", Text(GetValueString(DensityStdDIN)));
    EXPECT_EQ("Densitometer filter DINNB", Text(GetValueString(DensityStdDINNB)));
    EXPECT_EQ("Densitometer filter ANSIA", Text(GetValueString(DensityStdANSIA)));
    EXPECT_EQ("Densitometer filter ANSIT", Text(GetValueString(DensityStdANSIT)));
    EXPECT_EQ("Densitometer filter SPI", Text(GetValueString(DensityStdSPI)));
    EXPECT_EQ("User defined density standard", Text(GetValueString(DensityStdUser)));
    EXPECT_EQ("not defined", Text(GetValueString(DensityStdUndefined)));
    EXPECT_EQ("not defined", Text(GetValueString(Code<QVDensityStdTYPE>(6))));
}

TEST(MeasureConditionDiagnostics, DensityStandardsOfTheOtherOrder)
{
    const std::vector<std::pair<std::int32_t, std::string>> expected = {{0, "DStdTYPE ANSIA"},
                                                                        {1, "DStdTYPE ANSIT"},
                                                                        {2, "DStdTYPE DIN"},
                                                                        {3, "DStdTYPE DINNB"},
                                                                        {4, "DStdTYPE SPI"},
                                                                        {5, "DStdTYPE PF"},
                                                                        {6, "DStdTYPE ANSIM"},
                                                                        {7, "not defined"},
                                                                        {8, "DStdTYPE DS1"},
                                                                        {9, "not defined"},
                                                                        {-1, "not defined"},
                                                                        {536870910, "not defined"},
                                                                        {536870911, "DStdTYPE DStdTypeDummy"},
                                                                        {536870912, "not defined"}};
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Text(GetValueString(Code<DStdTYPE>(entry.first))));
    }
    EXPECT_EQ(536870911, DStdTypeDummy);
}

TEST(MeasureConditionDiagnostics, ColourClasses)
{
    const std::vector<std::pair<std::int32_t, std::string>> expected = {
        {0, "Magenta"}, {1, "not defined"},  {2, "Blue"},         {3, "Cyan"},        {4, "Turquo"},
        {5, "Green"},   {6, "Olive"},        {7, "YellowGreen"},  {8, "Beige"},       {9, "Brown"},
        {10, "Yellow"}, {11, "Orange"},      {12, "Red"},         {13, "White"},      {14, "Gray"},
        {15, "Black"},  {16, "not defined"}, {-1, "not defined"}, {-2, "not defined"}};
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Text(GetValueString(Code<ColorTYPE>(entry.first))));
    }
}

TEST(MeasureConditionDiagnostics, DensityChannels)
{
    EXPECT_EQ("Density color black", Text(GetValueString(DensFilterBlack)));
    EXPECT_EQ("Density color cyan", Text(GetValueString(DensFilterCyan)));
    EXPECT_EQ("Density color magenta", Text(GetValueString(DensFilterMagenta)));
    EXPECT_EQ("Density color yellow", Text(GetValueString(DensFilterYellow)));
    EXPECT_EQ("not defined", Text(GetValueString(Code<QVDensFilterTYPE>(4))));
    EXPECT_EQ("not defined", Text(GetValueString(Code<QVDensFilterTYPE>(-1))));
}

TEST(MeasureConditionDiagnostics, DensityFilterModes)
{
    EXPECT_EQ("Density color black", Text(GetValueString(DensityFilterModeBlack)));
    EXPECT_EQ("Density color cyan", Text(GetValueString(DensityFilterModeCyan)));
    EXPECT_EQ("Density color magenta", Text(GetValueString(DensityFilterModeMagenta)));
    EXPECT_EQ("Density color yellow", Text(GetValueString(DensityFilterModeYellow)));
    EXPECT_EQ("max wave length", Text(GetValueString(DensityFilterModeMax)));
    EXPECT_EQ("automatic filter selection", Text(GetValueString(DensityFilterModeAuto)));
    EXPECT_EQ("not defined", Text(GetValueString(DensityFilterModeUndefined)));
    EXPECT_EQ("not defined", Text(GetValueString(Code<DensityFilterModeTYPE>(6))));
}

TEST(MeasureConditionDiagnostics, PhysicalFilters)
{
    const std::vector<std::pair<std::int32_t, std::string>> expected = {
        {0, "not defined"}, {1, "No"},           {2, "Polarizer"},
        {3, "D65"},         {4, "UVCut"},        {5, "LastSelectable"},
        {6, "not defined"}, {7, "not defined"},  {8, "not defined"},
        {9, "not defined"}, {10, "Custom"},      {11, "CalibrationCheck"},
        {12, "ND0"},        {13, "not defined"}, {-1, "not defined"}};
    for (const auto& entry : expected) {
        SCOPED_TRACE(entry.first);
        EXPECT_EQ(entry.second, Text(GetValueString(Code<QVPhysicalFilterTYPE>(entry.first))));
    }
}

TEST(MeasureConditionDiagnostics, FloatValuesShowExactlyTheFirstThree)
{
    const float values[] = {1.0f, 2.5f, 0.1f, 7.0f};
    EXPECT_EQ("Values: 1, 2.5, 0.100000001490116, ...", Text(GetValueString(values)));
    // Three values are all it reads.
    const float three[] = {-3.0f, 0.0f, 1e10f};
    EXPECT_EQ("Values: -3, 0, 10000000000, ...", Text(GetValueString(three)));
}

TEST(MeasureConditionDiagnostics, FloatValuesRefuseANullPointer)
{
    const float* values = nullptr;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { (void)GetValueString(values); }));
}
