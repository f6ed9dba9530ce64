// The colour service: it reads the colour space or the difference formula
// from the conditions as text, dispatches to the calculators, and turns every
// failure into ExceptionCMetry with an untranslated text.
//
// Each dispatch row is checked against the calculator's own operation run on
// the same input, compared exactly: the service adds no arithmetic of its
// own, so any difference means a wrong row, a wrong argument or a wrong set
// of conditions. Where a row could be confused with another (CMC(1:1) against
// CMC(2:1), the order of the CIE 1994 weights, the same illuminant against the
// second one), the test first asserts that the alternatives differ for the
// chosen samples, so the comparison can fail.

#include "qvimanager/cmetry/cmetry_service.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/color_temperature.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/lab_to_spectrum.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/foundation/exception.h"

#include "tests/cmetry/sample_spectra.h"
#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>

using CMetry::CMetryCalculator;
using CMetry::CMetryService;
using CMetry::ColorTemperature;
using CMetry::ExceptionCMetry;
using CMetry::Lab2Spec;
using CMetry::QVColorVector;
using CMetry::QVIllumination;
using CMetry::QVLab;
using CMetry::QVMeasureConditions;
using CMetry::QVSample;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

using TestSpectra::Values;
using TestSpectra::Reddish;
using TestSpectra::Bluish;


constexpr float kFailed = 1000000.0f;

const char* const kType = "ColorSpaceDescription.Type";
const char* const kFormula = "ColorSpaceDescription.DeltaEFormula";
const char* const kFilter = "Physical.Filter";

std::string ServiceFailure(const std::function<void()>& call)
{
    return TestSupport::FailureText<ExceptionCMetry>(call);
}

// ---------------------------------------------------------------- conditions

void Set(QVMeasureConditions& conditions, const char* key, const char* value)
{
    conditions.SetMeasureCondition(String(key), String(value));
}

std::string Condition(const QVMeasureConditions& conditions, const char* key)
{
    return conditions.GetMeasureCondition(String(key));
}

std::string Condition(const QVColorVector& vector, const char* key)
{
    return Condition(vector.GetMeasureConditions(), key);
}

std::string Condition(const QVSpectrum& spectrum, const char* key)
{
    return Condition(spectrum.GetMeasureConditions(), key);
}

QVMeasureConditions Conditions(const char* illumination = "D65", const char* observer = "TwoDegree",
                               const char* whiteBase = "Absolute")
{
    QVMeasureConditions conditions;
    Set(conditions, "Colorimetric.Illumination", illumination);
    Set(conditions, "Colorimetric.Observer", observer);
    Set(conditions, "Colorimetric.WhiteBase", whiteBase);
    return conditions;
}

QVMeasureConditions WithType(QVMeasureConditions conditions, const char* type)
{
    Set(conditions, kType, type);
    return conditions;
}

QVMeasureConditions WithFormula(QVMeasureConditions conditions, const char* formula)
{
    Set(conditions, kFormula, formula);
    return conditions;
}

// The conditions of a vector to convert: everything differs from the
// defaults, so that a lost or replaced condition shows.
QVMeasureConditions VectorConditions(const char* type)
{
    QVMeasureConditions conditions = Conditions("D50", "TenDegree", "Absolute");
    Set(conditions, kFilter, "Polarizer");
    Set(conditions, kFormula, "CMC");
    Set(conditions, kType, type);
    return conditions;
}

// ---------------------------------------------------------------- spectra

QVSpectrum Spectrum(const Values& values, const QVMeasureConditions& conditions = Conditions())
{
    float raw[36];
    for (std::size_t i = 0; i < 36; ++i) {
        raw[i] = values[i];
    }
    return QVSpectrum(raw, conditions);
}

Values Flat(float value)
{
    Values values{};
    values.fill(value);
    return values;
}


// Near Reddish, but darker, less saturated and of another hue: the
// differences in lightness, chroma and hue are all far from 0.
Values Orangeish()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = i < 16 ? 0.12f + 0.003f * static_cast<float>(i) : 0.6f;
    }
    return values;
}


// A hump around 550 nm.
Values Greenish()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        const double d = (static_cast<double>(i) - 17.0) / 5.0;
        values[i] = static_cast<float>(0.08 + 0.6 * std::exp(-d * d));
    }
    return values;
}

// ---------------------------------------------------------------- vectors

QVColorVector Vector(float first, float second, float third, const QVMeasureConditions& conditions)
{
    return QVColorVector(first, second, third, conditions);
}

// The components of `source` under `conditions`: what the service builds
// from a calculator's output.
QVColorVector Rewrapped(const QVColorVector& source, const QVMeasureConditions& conditions)
{
    return QVColorVector(source[0], source[1], source[2], conditions);
}

void ExpectSameVector(const QVColorVector& expected, const QVColorVector& actual)
{
    for (short axis = 0; axis < 4; ++axis) {
        EXPECT_EQ(expected[axis], actual[axis]) << "component " << axis;
    }
    EXPECT_EQ(Condition(expected, kType), Condition(actual, kType));
    EXPECT_EQ(Condition(expected, kFilter), Condition(actual, kFilter));
    EXPECT_EQ(Condition(expected, "Colorimetric.Illumination"), Condition(actual, "Colorimetric.Illumination"));
    EXPECT_EQ(Condition(expected, "Colorimetric.Observer"), Condition(actual, "Colorimetric.Observer"));
    EXPECT_TRUE(expected.GetMeasureConditions() == actual.GetMeasureConditions());
}

void NoPaperWhite()
{
    TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>());
}

// Every test starts without a paper white, whatever a test before it in the
// same process installed.
class CMetryServiceTest : public ::testing::Test {
protected:
    void SetUp() override { NoPaperWhite(); }
    void TearDown() override { NoPaperWhite(); }
};

using SpectrumOperation = bool (*)(const QVSpectrum&, const QVMeasureConditions&, QVColorVector&);

struct SpectrumRow {
    const char* space;
    SpectrumOperation operation;
};

// The rows that go straight to one calculator operation.
std::array<SpectrumRow, 10> DirectSpectrumRows()
{
    return {{
        {"CIELab",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_CIELab(s, c, o);
         }},
        {"CIELCh",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_CIELCh_ab(s, c, o);
         }},
        {"CIEXYZ",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_CIEXYZ(s, c, o);
         }},
        {"CIExyY",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_CIExyY(s, c, o);
         }},
        {"CIELChuv",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_CIELCh_uv(s, c, o);
         }},
        {"LABvq",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_LABvq(s, c, o);
         }},
        {"LCHvq",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_LCHvq(s, c, o);
         }},
        {"CIELuv",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_CIELuv(s, c, o);
         }},
        {"HunterLab",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_HunterLab(s, c, o);
         }},
        {"RxRyRz",
         [](const QVSpectrum& s, const QVMeasureConditions& c, QVColorVector& o) {
             return CMetryCalculator::GetVector_RxRyRz(s, c, o);
         }},
    }};
}

const char* const kAllSpectrumSpaces[] = {
    "CIELab", "CIELCh", "CIEXYZ", "CIExyY", "CIELChuv", "LABvq", "LCHvq",
    "CIELuv", "CIEuvY1976", "CIEuvY1960", "HunterLab", "RxRyRz", "RGB",
};

// A spectrum measured under other conditions than those it is evaluated
// under: illuminant A, a polariser, and the type "CMYK", which the service
// must not read.
QVSpectrum MeasuredSpectrum(const Values& values)
{
    QVMeasureConditions own = Conditions("A", "TwoDegree", "Absolute");
    Set(own, kFilter, "Polarizer");
    Set(own, kType, "CMYK");
    return Spectrum(values, own);
}

QVMeasureConditions EvaluationConditions(const char* space)
{
    return WithType(Conditions("D50", "TenDegree", "Absolute"), space);
}

} // namespace

// ================================================================ GetVector of a spectrum

TEST_F(CMetryServiceTest, SpectrumToEachDirectSpaceEqualsTheCalculatorOperation)
{
    const QVSpectrum spectrum = MeasuredSpectrum(Reddish());
    for (const SpectrumRow& row : DirectSpectrumRows()) {
        SCOPED_TRACE(row.space);
        const QVMeasureConditions conditions = EvaluationConditions(row.space);
        QVColorVector expected;
        ASSERT_TRUE(row.operation(spectrum, conditions, expected));
        const QVColorVector actual = CMetryService::GetVector(spectrum, conditions);
        ExpectSameVector(expected, actual);
        // The space of the conditions argument, the physical filter of the
        // spectrum.
        EXPECT_EQ(row.space, Condition(actual, kType));
        EXPECT_EQ("Polarizer", Condition(actual, kFilter));
        EXPECT_EQ("D50", Condition(actual, "Colorimetric.Illumination"));
    }
}

TEST_F(CMetryServiceTest, SpectrumToUvY1976GoesThroughXYZUnderTheSameConditionsTypedCIEXYZ)
{
    const QVSpectrum spectrum = MeasuredSpectrum(Greenish());
    const QVMeasureConditions conditions = EvaluationConditions("CIEuvY1976");
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(spectrum, WithType(conditions, "CIEXYZ"), xyz));
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(xyz, expected));
    const QVColorVector actual = CMetryService::GetVector(spectrum, conditions);
    ExpectSameVector(expected, actual);
    EXPECT_EQ("CIEuvY1976", Condition(actual, kType));
    EXPECT_EQ("Polarizer", Condition(actual, kFilter));
    // Y stays the luminance of the XYZ step.
    EXPECT_EQ(xyz[1], actual[2]);
}

TEST_F(CMetryServiceTest, SpectrumToUvY1960GoesThroughXYZUnderTheSameConditionsTypedCIEXYZ)
{
    const QVSpectrum spectrum = MeasuredSpectrum(Greenish());
    const QVMeasureConditions conditions = EvaluationConditions("CIEuvY1960");
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(spectrum, WithType(conditions, "CIEXYZ"), xyz));
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(xyz, expected));
    const QVColorVector actual = CMetryService::GetVector(spectrum, conditions);
    ExpectSameVector(expected, actual);
    EXPECT_EQ("CIEuvY1960", Condition(actual, kType));
    // 1960 and 1976 differ in v only.
    const QVColorVector uv1976 = CMetryService::GetVector(spectrum, EvaluationConditions("CIEuvY1976"));
    EXPECT_EQ(uv1976[0], actual[0]);
    EXPECT_NE(uv1976[1], actual[1]);
}

TEST_F(CMetryServiceTest, SpectrumToRGBGoesThroughLabUnderTheConditionsAsTheyAre)
{
    const QVSpectrum spectrum = MeasuredSpectrum(Bluish());
    const QVMeasureConditions conditions = EvaluationConditions("RGB");
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab));
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, expected));
    const QVColorVector actual = CMetryService::GetVector(spectrum, conditions);
    ExpectSameVector(expected, actual);
    EXPECT_EQ("RGB", Condition(actual, kType));
    for (short axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(std::floor(actual[axis]), actual[axis]) << axis;
        EXPECT_GE(actual[axis], 0.0f) << axis;
        EXPECT_LE(actual[axis], 255.0f) << axis;
    }
    // A bluish sample is more blue than red.
    EXPECT_GT(actual[2], actual[0]);
}

TEST_F(CMetryServiceTest, SpectrumSpaceIsReadFromTheConditionsArgumentNotFromTheSpectrum)
{
    const QVSpectrum spectrum = Spectrum(Reddish(), WithType(Conditions(), "CIEXYZ"));
    const QVColorVector lab = CMetryService::GetVector(spectrum, WithType(Conditions(), "CIELab"));
    EXPECT_EQ("CIELab", Condition(lab, kType));
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, WithType(Conditions(), "CIELab"), expected));
    ExpectSameVector(expected, lab);

    // A spectrum typed "CMYK" evaluates like any other.
    const QVSpectrum cmyk = Spectrum(Reddish(), WithType(Conditions(), "CMYK"));
    ExpectSameVector(expected, CMetryService::GetVector(cmyk, WithType(Conditions(), "CIELab")));
}

TEST_F(CMetryServiceTest, SpectrumToCMYKIsNotSupported)
{
    const QVSpectrum spectrum = Spectrum(Reddish());
    EXPECT_EQ("GetVector not supported for ColorSpace CMYK",
              ServiceFailure([&] { CMetryService::GetVector(spectrum, WithType(Conditions(), "CMYK")); }));
}

TEST_F(CMetryServiceTest, SpectrumToUndefinedSpaceIsNotSupportedAndNamesIt)
{
    const QVSpectrum spectrum = Spectrum(Reddish());
    EXPECT_EQ("GetVector not supported for ColorSpace Undefined",
              ServiceFailure([&] { CMetryService::GetVector(spectrum, WithType(Conditions(), "Undefined")); }));
}

TEST_F(CMetryServiceTest, SpectrumOfAnUnsupportedSpaceFailsEvenWhenTheCalculationWouldFail)
{
    // The space is looked at before anything is calculated.
    const QVSpectrum spectrum = Spectrum(Reddish(), Conditions("D65", "TwoDegree", "Paper"));
    EXPECT_EQ("GetVector not supported for ColorSpace CMYK",
              ServiceFailure([&] {
                  CMetryService::GetVector(spectrum, WithType(Conditions("D65", "TwoDegree", "Paper"), "CMYK"));
              }));
}

TEST_F(CMetryServiceTest, SpectrumOnPaperWithoutPaperWhiteFailsWithCMetryCalculatorInEverySpace)
{
    const QVSpectrum spectrum = Spectrum(Reddish());
    for (const char* space : kAllSpectrumSpaces) {
        SCOPED_TRACE(space);
        const QVMeasureConditions conditions = WithType(Conditions("D65", "TwoDegree", "Paper"), space);
        EXPECT_EQ("CMetryCalculator", ServiceFailure([&] { CMetryService::GetVector(spectrum, conditions); }));
    }
}

TEST_F(CMetryServiceTest, SpectrumOnPaperWithAPaperWhiteSucceeds)
{
    // The failure above is the missing paper white, not the white base.
    QVSample paper;
    paper.SetSpectrum(Spectrum(Flat(0.9f)));
    TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>(new QVSample(paper)));
    const QVSpectrum spectrum = Spectrum(Reddish());
    const QVMeasureConditions conditions = WithType(Conditions("D65", "TwoDegree", "Paper"), "CIELab");
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, conditions, expected));
    ExpectSameVector(expected, CMetryService::GetVector(spectrum, conditions));
}

TEST_F(CMetryServiceTest, SpectrumCalculationExceptionsPassThroughUnchanged)
{
    // A user-defined illuminant without its spectrum fails inside the
    // weight factors, not in the service.
    QVMeasureConditions conditions = WithType(Conditions(), "CIELab");
    Set(conditions, "Colorimetric.Illumination", "Userdefined");
    const QVSpectrum spectrum = Spectrum(Reddish());
    EXPECT_EQ("Failed to access to nullpointer.",
              TestSupport::FailureText<Utilities::ExceptionNullpointer>(
                  [&] { CMetryService::GetVector(spectrum, conditions); }));
}

// ================================================================ GetVector of a vector

TEST_F(CMetryServiceTest, VectorToItsOwnTypeIsReturnedUnchangedConditionsIncluded)
{
    const char* const types[] = {"CIELab", "CIEXYZ", "CIELCh", "CMYK", "RGB", "CIEuvY1960"};
    for (const char* type : types) {
        SCOPED_TRACE(type);
        QVColorVector vector = Vector(1.5f, -2.25f, 3.125f, VectorConditions(type));
        vector[3] = 4.5f;
        const QVColorVector same = CMetryService::GetVector(vector, String(type));
        ExpectSameVector(vector, same);
        EXPECT_EQ(4.5f, same[3]);
        EXPECT_EQ("CMC", Condition(same, kFormula));
    }
}

namespace {

using VectorOperation = bool (*)(const QVColorVector&, QVColorVector&);

struct VectorRow {
    const char* source;
    const char* target;
    float first;
    float second;
    float third;
    VectorOperation operation;
};

std::array<VectorRow, 10> VectorRows()
{
    const VectorOperation toLab = [](const QVColorVector& in, QVColorVector& out) {
        return CMetryCalculator::GetVector_CIELab(in, out);
    };
    const VectorOperation toXYZ = [](const QVColorVector& in, QVColorVector& out) {
        return CMetryCalculator::GetVector_CIEXYZ(in, out);
    };
    const VectorOperation toPolar = [](const QVColorVector& in, QVColorVector& out) {
        return CMetryCalculator::GetVector_CIELCh_ab(in, out);
    };
    const VectorOperation toxyY = [](const QVColorVector& in, QVColorVector& out) {
        return CMetryCalculator::GetVector_CIExyY(in, out);
    };
    const VectorOperation to1960 = [](const QVColorVector& in, QVColorVector& out) {
        return CMetryCalculator::GetVector_CIEuvY1960(in, out);
    };
    const VectorOperation to1976 = [](const QVColorVector& in, QVColorVector& out) {
        return CMetryCalculator::GetVector_CIEuvY1976(in, out);
    };
    return {{
        {"CIEXYZ", "CIELab", 30.0f, 25.0f, 10.0f, toLab},
        {"CIELab", "CIEXYZ", 55.0f, 20.0f, -30.0f, toXYZ},
        {"CIELab", "CIELCh", 55.0f, 20.0f, -30.0f, toPolar},
        {"LABvq", "LCHvq", 48.0f, -12.0f, 7.0f, toPolar},
        {"CIELuv", "CIELChuv", 60.0f, 0.21f, 0.47f, toPolar},
        {"CIEXYZ", "CIExyY", 30.0f, 25.0f, 10.0f, toxyY},
        {"CIEXYZ", "CIEuvY1960", 30.0f, 25.0f, 10.0f, to1960},
        {"CIExyY", "CIEuvY1960", 0.35f, 0.36f, 40.0f, to1960},
        {"CIEXYZ", "CIEuvY1976", 30.0f, 25.0f, 10.0f, to1976},
        {"CIExyY", "CIEuvY1976", 0.35f, 0.36f, 40.0f, to1976},
    }};
}

} // namespace

TEST_F(CMetryServiceTest, VectorConversionRowsGiveTheCalculatorComponentsUnderTheInputConditionsRetyped)
{
    for (const VectorRow& row : VectorRows()) {
        SCOPED_TRACE(std::string(row.source) + " to " + row.target);
        QVColorVector vector = Vector(row.first, row.second, row.third, VectorConditions(row.source));
        // Component 3 does not survive a conversion: the result is built from
        // three components.
        vector[3] = 7.0f;
        QVColorVector calculated;
        ASSERT_TRUE(row.operation(vector, calculated));
        const QVColorVector expected = Rewrapped(calculated, VectorConditions(row.target));
        const QVColorVector actual = CMetryService::GetVector(vector, String(row.target));
        ExpectSameVector(expected, actual);
        EXPECT_EQ(row.target, Condition(actual, kType));
        EXPECT_EQ("Polarizer", Condition(actual, kFilter));
        EXPECT_EQ("D50", Condition(actual, "Colorimetric.Illumination"));
        EXPECT_EQ("TenDegree", Condition(actual, "Colorimetric.Observer"));
        EXPECT_EQ("CMC", Condition(actual, kFormula));
        EXPECT_EQ(0.0f, actual[3]);
        // The conversion changed something.
        EXPECT_FALSE(actual[0] == vector[0] && actual[1] == vector[1] && actual[2] == vector[2]);
    }
}

TEST_F(CMetryServiceTest, LabToRGBIsTheCalculatorOutputAsItLeftIt)
{
    QVColorVector lab = Vector(55.0f, 40.0f, 20.0f, VectorConditions("CIELab"));
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, expected));
    const QVColorVector actual = CMetryService::GetVector(lab, String("RGB"));
    ExpectSameVector(expected, actual);
    EXPECT_EQ("RGB", Condition(actual, kType));
    // The built-in conversion sets only the type on its output, so the
    // input's illuminant and filter are not carried over to RGB.
    EXPECT_EQ("D65", Condition(actual, "Colorimetric.Illumination"));
    EXPECT_EQ("No", Condition(actual, kFilter));
    // A reddish Lab.
    EXPECT_GT(actual[0], actual[2]);
    for (short axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(std::floor(actual[axis]), actual[axis]) << axis;
    }
}

TEST_F(CMetryServiceTest, XYZToRGBGoesThroughLabOnTheWay)
{
    const QVColorVector xyz = Vector(30.0f, 25.0f, 10.0f, VectorConditions("CIEXYZ"));
    QVColorVector labOut;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, labOut));
    const QVColorVector lab = Rewrapped(labOut, VectorConditions("CIELab"));
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, expected));
    const QVColorVector actual = CMetryService::GetVector(xyz, String("RGB"));
    ExpectSameVector(expected, actual);

    // Taking the XYZ components for Lab would give another colour.
    QVColorVector wrong;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(Rewrapped(xyz, VectorConditions("CIELab")), wrong));
    EXPECT_FALSE(wrong[0] == actual[0] && wrong[1] == actual[1] && wrong[2] == actual[2]);
}

TEST_F(CMetryServiceTest, LChToLabIsNotSupportedAndTheMessageEndsInCIEXYZ)
{
    const QVColorVector lch = Vector(50.0f, 30.0f, 120.0f, VectorConditions("CIELCh"));
    EXPECT_EQ("Conversion not supported from ColorSpace CIELCh to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetVector(lch, String("CIELab")); }));
}

TEST_F(CMetryServiceTest, LabToLCHvqIsNotSupportedAndTheMessageStillEndsInCIEXYZ)
{
    const QVColorVector lab = Vector(50.0f, 10.0f, 20.0f, VectorConditions("CIELab"));
    EXPECT_EQ("Conversion not supported from ColorSpace CIELab to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetVector(lab, String("LCHvq")); }));
}

TEST_F(CMetryServiceTest, LChToRGBFailsInTheStepToLab)
{
    const QVColorVector lch = Vector(50.0f, 30.0f, 120.0f, VectorConditions("CIELCh"));
    EXPECT_EQ("Conversion not supported from ColorSpace CIELCh to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetVector(lch, String("RGB")); }));
}

TEST_F(CMetryServiceTest, XyYToRGBFailsInTheStepToLab)
{
    // There is no way out of the chromaticity spaces, not even towards RGB.
    const QVColorVector xyY = Vector(0.35f, 0.36f, 40.0f, VectorConditions("CIExyY"));
    EXPECT_EQ("Conversion not supported from ColorSpace CIExyY to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetVector(xyY, String("RGB")); }));
}

TEST_F(CMetryServiceTest, PairsWithoutARowAreNotSupported)
{
    struct Pair {
        const char* source;
        const char* target;
    };
    const Pair pairs[] = {
        {"CIExyY", "CIEXYZ"},      {"CIEuvY1976", "CIEXYZ"}, {"CIELab", "CIELuv"}, {"CIELuv", "CIELab"},
        {"CIELab", "CIELChuv"},    {"LABvq", "CIELCh"},      {"CIELuv", "LCHvq"},  {"CIELab", "CIExyY"},
        {"HunterLab", "CIEuvY1976"}, {"CIELab", "CIEuvY1960"}, {"CMYK", "CIELab"}, {"CIEXYZ", "CMYK"},
        {"RGB", "CIELab"},         {"CIEXYZ", "LABvq"},
    };
    for (const Pair& pair : pairs) {
        SCOPED_TRACE(std::string(pair.source) + " to " + pair.target);
        const QVColorVector vector = Vector(40.0f, 0.3f, 0.4f, VectorConditions(pair.source));
        EXPECT_EQ(std::string("Conversion not supported from ColorSpace ") + pair.source + " to ColorSpace CIEXYZ",
                  ServiceFailure([&] { CMetryService::GetVector(vector, String(pair.target)); }));
    }
}

// ================================================================ GetDeltaE of spectra

namespace {

struct DeltaEPair {
    QVSpectrum first = Spectrum(Reddish());
    QVSpectrum second = Spectrum(Orangeish());
};

float ServiceDeltaE(const char* formula, float p1, float p2, float p3)
{
    const DeltaEPair pair;
    return CMetryService::GetDeltaE(pair.first, pair.second, WithFormula(Conditions(), formula), p1, p2, p3);
}

} // namespace

TEST_F(CMetryServiceTest, SpectrumDeltaECIELabEqualsTheCalculator)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "CIELab");
    const float expected = CMetryCalculator::GetDeltaE_CIELAB(pair.first, pair.second, conditions);
    ASSERT_NE(kFailed, expected);
    EXPECT_GT(expected, 1.0f);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 3.0f, 4.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaELABvqEqualsTheCalculator)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "LABvq");
    const float expected = CMetryCalculator::GetDeltaE_vq(pair.first, pair.second, conditions);
    ASSERT_NE(kFailed, expected);
    EXPECT_NE(CMetryCalculator::GetDeltaE_CIELAB(pair.first, pair.second, conditions), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaECIELuvEqualsTheCalculator)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "CIELuv");
    const float expected = CMetryCalculator::GetDeltaE_CIELUV(pair.first, pair.second, conditions);
    ASSERT_NE(kFailed, expected);
    EXPECT_NE(CMetryCalculator::GetDeltaE_CIELAB(pair.first, pair.second, conditions), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaEFMCIIEqualsTheCalculator)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "FMCII");
    const float expected = CMetryCalculator::GetDeltaE_FMCII(pair.first, pair.second, conditions);
    ASSERT_NE(kFailed, expected);
    EXPECT_NE(CMetryCalculator::GetDeltaE_CIELAB(pair.first, pair.second, conditions), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaECMCWithZeroParametersIsCMCOneToOne)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "CMC");
    const float oneToOne = CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 1.0f, 1.0f);
    const float twoToOne = CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 2.0f, 1.0f);
    ASSERT_NE(kFailed, oneToOne);
    ASSERT_NE(oneToOne, twoToOne);
    EXPECT_EQ(oneToOne, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(oneToOne, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 1.0f, 1.0f, 0.0f));
    EXPECT_TRUE(std::isfinite(ServiceDeltaE("CMC", 0.0f, 0.0f, 0.0f)));
}

TEST_F(CMetryServiceTest, SpectrumDeltaECMCTwoAndZeroIsCMCTwoToOne)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "CMC");
    const float twoToOne = CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 2.0f, 1.0f);
    ASSERT_NE(CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 1.0f, 1.0f), twoToOne);
    EXPECT_EQ(twoToOne, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaECMCPassesLightnessThenChroma)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "CMC");
    const float expected = CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 2.0f, 3.0f);
    ASSERT_NE(CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 3.0f, 2.0f), expected);
    // The third parameter is not used.
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 3.0f, 0.0f));
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 3.0f, 9.0f));
    // A zero chroma weight alone means 1.
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CMC(pair.first, pair.second, conditions, 1.0f, 2.0f),
              CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 2.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaE94WithZeroParametersIs94OneOneOne)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "94");
    const float expected = CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 1.0f, 1.0f, 1.0f);
    ASSERT_NE(kFailed, expected);
    // The calculator itself takes a weight of 0 for a failure.
    ASSERT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaE94PassesItsParametersInOrder)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "94");
    const float expected = CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 2.0f, 3.0f, 4.0f);
    const float permutations[] = {
        CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 2.0f, 4.0f, 3.0f),
        CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 3.0f, 2.0f, 4.0f),
        CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 3.0f, 4.0f, 2.0f),
        CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 4.0f, 2.0f, 3.0f),
        CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 4.0f, 3.0f, 2.0f),
    };
    for (float other : permutations) {
        ASSERT_NE(other, expected);
    }
    EXPECT_EQ(expected, CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 3.0f, 4.0f));
    // Each zero alone becomes 1.
    EXPECT_EQ(CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 1.0f, 3.0f, 4.0f),
              CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 3.0f, 4.0f));
    EXPECT_EQ(CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 2.0f, 1.0f, 4.0f),
              CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 0.0f, 4.0f));
    EXPECT_EQ(CMetryCalculator::GetDeltaE_94(pair.first, pair.second, conditions, 2.0f, 3.0f, 1.0f),
              CMetryService::GetDeltaE(pair.first, pair.second, conditions, 2.0f, 3.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaEOfAnUnknownFormulaIsNotSupportedAndNamesIt)
{
    const DeltaEPair pair;
    const QVMeasureConditions conditions = WithFormula(Conditions(), "Undefined");
    ASSERT_EQ("Undefined", Condition(conditions, kFormula));
    EXPECT_EQ("GetDeltaE not supported for DeltaEFormula Undefined",
              ServiceFailure([&] { CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f); }));
}

TEST_F(CMetryServiceTest, SpectrumDeltaEFormulaIsReadFromTheConditionsArgument)
{
    // The spectra carry "CMC"; the conditions say "CIELab".
    const QVSpectrum first = Spectrum(Reddish(), WithFormula(Conditions(), "CMC"));
    const QVSpectrum second = Spectrum(Orangeish(), WithFormula(Conditions(), "CMC"));
    const QVMeasureConditions conditions = WithFormula(Conditions(), "CIELab");
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB(first, second, conditions),
              CMetryService::GetDeltaE(first, second, conditions, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, SpectrumDeltaEOnPaperWithoutPaperWhiteFailsWithCMetryCalculatorForEachFormula)
{
    const DeltaEPair pair;
    const char* const formulas[] = {"CIELab", "LABvq", "CIELuv", "FMCII", "CMC", "94"};
    for (const char* formula : formulas) {
        SCOPED_TRACE(formula);
        const QVMeasureConditions conditions = WithFormula(Conditions("D65", "TwoDegree", "Paper"), formula);
        EXPECT_EQ("CMetryCalculator", ServiceFailure([&] {
                      CMetryService::GetDeltaE(pair.first, pair.second, conditions, 0.0f, 0.0f, 0.0f);
                  }));
    }
}

TEST_F(CMetryServiceTest, SpectrumDeltaEFMCIIOfABlackReferenceFailsWithCMetryCalculator)
{
    // The calculator reports a reference without Y and Z as 1000000.
    const QVSpectrum black = Spectrum(Flat(0.0f));
    const QVSpectrum other = Spectrum(Reddish());
    const QVMeasureConditions conditions = WithFormula(Conditions(), "FMCII");
    ASSERT_EQ(kFailed, CMetryCalculator::GetDeltaE_FMCII(black, other, conditions));
    EXPECT_EQ("CMetryCalculator",
              ServiceFailure([&] { CMetryService::GetDeltaE(black, other, conditions, 0.0f, 0.0f, 0.0f); }));
}

// ================================================================ GetDeltaE of vectors

namespace {

QVLab AsLab(const QVColorVector& vector)
{
    QVLab lab;
    lab = vector;
    return lab;
}

QVColorVector LabVector(float l, float a, float b, const char* formula)
{
    QVMeasureConditions conditions = VectorConditions("CIELab");
    Set(conditions, kFormula, formula);
    return Vector(l, a, b, conditions);
}

QVColorVector XYZVector(float x, float y, float z, const char* formula)
{
    QVMeasureConditions conditions = VectorConditions("CIEXYZ");
    Set(conditions, kFormula, formula);
    return Vector(x, y, z, conditions);
}

// The Lab of an XYZ vector as the service converts it.
QVLab LabOf(const QVColorVector& xyz)
{
    QVColorVector lab;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, lab));
    QVMeasureConditions conditions(xyz.GetMeasureConditions());
    Set(conditions, kType, "CIELab");
    return AsLab(Rewrapped(lab, conditions));
}

} // namespace

TEST_F(CMetryServiceTest, VectorDeltaECIELabOfLabVectorsEqualsTheLabDifference)
{
    const QVColorVector first = LabVector(55.0f, 20.0f, -30.0f, "CIELab");
    const QVColorVector second = LabVector(52.0f, 24.0f, -26.0f, "CIELab");
    const float expected = CMetryCalculator::GetDeltaE_CIELAB(AsLab(first), AsLab(second));
    EXPECT_FLOAT_EQ(std::sqrt(9.0f + 16.0f + 16.0f), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(first, second, 2.0f, 3.0f, 4.0f));
}

TEST_F(CMetryServiceTest, VectorDeltaECIELabConvertsXYZVectorsToLabFirst)
{
    const QVColorVector first = XYZVector(30.0f, 25.0f, 10.0f, "CIELab");
    const QVColorVector second = XYZVector(28.0f, 26.0f, 12.0f, "CIELab");
    const float expected = CMetryCalculator::GetDeltaE_CIELAB(LabOf(first), LabOf(second));
    // Not the distance of the XYZ components.
    ASSERT_NE(CMetryCalculator::GetDeltaE_CIELAB(AsLab(first), AsLab(second)), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(first, second, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, VectorDeltaECIELabTakesAnXYZAndALabVector)
{
    const QVColorVector first = XYZVector(30.0f, 25.0f, 10.0f, "CIELab");
    const QVColorVector second = LabVector(52.0f, 24.0f, -26.0f, "CIELab");
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB(LabOf(first), AsLab(second)),
              CMetryService::GetDeltaE(first, second, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, VectorDeltaEFormulaIsTheFirstVectorsFormula)
{
    const QVColorVector labFirst = LabVector(55.0f, 20.0f, -30.0f, "CIELab");
    const QVColorVector cmcSecond = LabVector(52.0f, 24.0f, -26.0f, "CMC");
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB(AsLab(labFirst), AsLab(cmcSecond)),
              CMetryService::GetDeltaE(labFirst, cmcSecond, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ("CMetryCalculator",
              ServiceFailure([&] { CMetryService::GetDeltaE(cmcSecond, labFirst, 0.0f, 0.0f, 0.0f); }));
}

TEST_F(CMetryServiceTest, VectorDeltaE94WithZeroParametersIs94OneOneOne)
{
    const QVColorVector first = LabVector(55.0f, 20.0f, -30.0f, "94");
    const QVColorVector second = LabVector(52.0f, 24.0f, -26.0f, "94");
    const float expected = CMetryCalculator::GetDeltaE_94(AsLab(first), AsLab(second), 1.0f, 1.0f, 1.0f);
    ASSERT_NE(kFailed, expected);
    ASSERT_NE(CMetryCalculator::GetDeltaE_CIELAB(AsLab(first), AsLab(second)), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(first, second, 0.0f, 0.0f, 0.0f));
}

TEST_F(CMetryServiceTest, VectorDeltaE94PassesItsParametersInOrderAndConvertsXYZ)
{
    const QVColorVector first = XYZVector(30.0f, 25.0f, 10.0f, "94");
    const QVColorVector second = XYZVector(28.0f, 26.0f, 12.0f, "94");
    const float expected = CMetryCalculator::GetDeltaE_94(LabOf(first), LabOf(second), 2.0f, 3.0f, 4.0f);
    ASSERT_NE(CMetryCalculator::GetDeltaE_94(LabOf(first), LabOf(second), 4.0f, 3.0f, 2.0f), expected);
    ASSERT_NE(CMetryCalculator::GetDeltaE_94(LabOf(first), LabOf(second), 3.0f, 2.0f, 4.0f), expected);
    ASSERT_NE(CMetryCalculator::GetDeltaE_94(LabOf(first), LabOf(second), 2.0f, 4.0f, 3.0f), expected);
    EXPECT_EQ(expected, CMetryService::GetDeltaE(first, second, 2.0f, 3.0f, 4.0f));
    EXPECT_EQ(CMetryCalculator::GetDeltaE_94(LabOf(first), LabOf(second), 2.0f, 1.0f, 4.0f),
              CMetryService::GetDeltaE(first, second, 2.0f, 0.0f, 4.0f));
}

TEST_F(CMetryServiceTest, VectorDeltaEOfSpectrumOnlyFormulasFailsWithTheBareCMetryCalculator)
{
    const char* const formulas[] = {"CMC", "LABvq", "FMCII", "CIELuv", "Undefined"};
    for (const char* formula : formulas) {
        SCOPED_TRACE(formula);
        const QVColorVector first = LabVector(55.0f, 20.0f, -30.0f, formula);
        const QVColorVector second = LabVector(52.0f, 24.0f, -26.0f, formula);
        EXPECT_EQ("CMetryCalculator",
                  ServiceFailure([&] { CMetryService::GetDeltaE(first, second, 1.0f, 1.0f, 1.0f); }));
    }
}

TEST_F(CMetryServiceTest, VectorDeltaEOfAnUnconvertibleVectorRaisesTheConversionFailure)
{
    QVMeasureConditions conditions = VectorConditions("CIELCh");
    Set(conditions, kFormula, "CIELab");
    const QVColorVector lch = Vector(50.0f, 30.0f, 120.0f, conditions);
    const QVColorVector lab = LabVector(52.0f, 24.0f, -26.0f, "CIELab");
    EXPECT_EQ("Conversion not supported from ColorSpace CIELCh to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetDeltaE(lch, lab, 0.0f, 0.0f, 0.0f); }));
    EXPECT_EQ("Conversion not supported from ColorSpace CIELCh to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetDeltaE(lab, lch, 0.0f, 0.0f, 0.0f); }));
}

TEST_F(CMetryServiceTest, VectorDeltaEOfExactlyOneMillionIsReportedAsAFailure)
{
    // A true difference equal to the failure value cannot be told from it.
    const QVColorVector first = LabVector(0.0f, 0.0f, 0.0f, "CIELab");
    const QVColorVector second = LabVector(1000000.0f, 0.0f, 0.0f, "CIELab");
    ASSERT_EQ(kFailed, CMetryCalculator::GetDeltaE_CIELAB(AsLab(first), AsLab(second)));
    EXPECT_EQ("CMetryCalculator", ServiceFailure([&] { CMetryService::GetDeltaE(first, second, 0.0f, 0.0f, 0.0f); }));
    // One step below is an ordinary difference.
    const QVColorVector near = LabVector(999000.0f, 0.0f, 0.0f, "CIELab");
    EXPECT_EQ(999000.0f, CMetryService::GetDeltaE(first, near, 0.0f, 0.0f, 0.0f));
}

// ================================================================ GetDeltaVector

TEST_F(CMetryServiceTest, DeltaVectorOfLabVectorsIsTypedCIELChWithTheCalculatorComponents)
{
    const QVColorVector first = Vector(55.0f, 20.0f, -30.0f, VectorConditions("CIELab"));
    const QVColorVector second = Vector(52.0f, 24.0f, -26.0f, VectorConditions("CIELab"));
    QVColorVector calculated;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, calculated));
    const QVColorVector actual = CMetryService::GetDeltaVector(first, second);
    ExpectSameVector(Rewrapped(calculated, VectorConditions("CIELCh")), actual);
    EXPECT_EQ("CIELCh", Condition(actual, kType));
    EXPECT_EQ("Polarizer", Condition(actual, kFilter));
    EXPECT_EQ(3.0f, actual[0]);
}

TEST_F(CMetryServiceTest, DeltaVectorOfLuvVectorsIsTypedCIELChuvWithTheCalculatorComponents)
{
    const QVColorVector first = Vector(60.0f, 0.21f, 0.47f, VectorConditions("CIELuv"));
    const QVColorVector second = Vector(58.0f, 0.19f, 0.48f, VectorConditions("CIELuv"));
    QVColorVector calculated;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(first, second, calculated));
    const QVColorVector actual = CMetryService::GetDeltaVector(first, second);
    ExpectSameVector(Rewrapped(calculated, VectorConditions("CIELChuv")), actual);
    EXPECT_EQ("CIELChuv", Condition(actual, kType));
}

TEST_F(CMetryServiceTest, DeltaVectorOfLABvqVectorsIsTypedLCHvqWithTheCalculatorComponents)
{
    const QVColorVector first = Vector(48.0f, -12.0f, 7.0f, VectorConditions("LABvq"));
    const QVColorVector second = Vector(45.0f, -10.0f, 9.0f, VectorConditions("LABvq"));
    QVColorVector calculated;
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(first, second, calculated));
    const QVColorVector actual = CMetryService::GetDeltaVector(first, second);
    ExpectSameVector(Rewrapped(calculated, VectorConditions("LCHvq")), actual);
    EXPECT_EQ("LCHvq", Condition(actual, kType));
}

TEST_F(CMetryServiceTest, DeltaVectorTypeIsTheFirstVectorsType)
{
    const QVColorVector lab = Vector(55.0f, 20.0f, -30.0f, VectorConditions("CIELab"));
    const QVColorVector xyz = Vector(52.0f, 24.0f, -26.0f, VectorConditions("CIEXYZ"));
    QVColorVector calculated;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(lab, xyz, calculated));
    ExpectSameVector(Rewrapped(calculated, VectorConditions("CIELCh")), CMetryService::GetDeltaVector(lab, xyz));
    EXPECT_EQ("CMetryCalculator", ServiceFailure([&] { CMetryService::GetDeltaVector(xyz, lab); }));
}

TEST_F(CMetryServiceTest, DeltaVectorOfOtherTypesFailsWithCMetryCalculator)
{
    const char* const types[] = {"CIEXYZ", "CIELCh", "CIELChuv", "LCHvq", "CIExyY", "RGB", "CMYK", "HunterLab"};
    for (const char* type : types) {
        SCOPED_TRACE(type);
        const QVColorVector first = Vector(55.0f, 20.0f, -30.0f, VectorConditions(type));
        const QVColorVector second = Vector(52.0f, 24.0f, -26.0f, VectorConditions(type));
        EXPECT_EQ("CMetryCalculator", ServiceFailure([&] { CMetryService::GetDeltaVector(first, second); }));
    }
}

// ================================================================ GetSupportedValues

TEST_F(CMetryServiceTest, SupportedValuesAreTheConditionsOwnList)
{
    const char* const keys[] = {"Colorimetric.Illumination", "ColorSpaceDescription.Type",
                                "ColorSpaceDescription.DeltaEFormula", "ColorSpaceDescription.CIELab",
                                "Physical.Filter"};
    for (const char* key : keys) {
        SCOPED_TRACE(key);
        EXPECT_EQ(&QVMeasureConditions::GetSupportedValues(String(key)),
                  &CMetryService::GetSupportedValues(String(key)));
    }
    const Utilities::Vector<String>& types = CMetryService::GetSupportedValues(String("ColorSpaceDescription.Type"));
    ASSERT_EQ(14u, types.GetSize());
    EXPECT_EQ("CIELab", std::string(types[0]));
    EXPECT_EQ("CMYK", std::string(types[13]));
    const Utilities::Vector<String>& formulas =
        CMetryService::GetSupportedValues(String("ColorSpaceDescription.DeltaEFormula"));
    ASSERT_EQ(6u, formulas.GetSize());
    EXPECT_EQ("94", std::string(formulas[5]));
}

TEST_F(CMetryServiceTest, SupportedValuesOfAnUnknownKeyAreTheSameEmptyList)
{
    const Utilities::Vector<String>& values = CMetryService::GetSupportedValues(String("No.Such.Key"));
    EXPECT_EQ(0u, values.GetSize());
    EXPECT_EQ(&QVMeasureConditions::GetSupportedValues(String("No.Such.Key")), &values);
}

// ================================================================ GetMetamery

TEST_F(CMetryServiceTest, MetameryTakesOnlyTheIlluminationOfTheSecondConditions)
{
    const QVSpectrum first = Spectrum(Reddish());
    const QVSpectrum second = Spectrum(Orangeish());
    const QVMeasureConditions conditions = Conditions();
    // Observer and white base of the second conditions are ignored: a
    // white base "Paper" without a paper white would fail.
    const QVMeasureConditions secondIlluminant = Conditions("A", "TenDegree", "Paper");
    const float expected =
        CMetryCalculator::GetMetamery(first, second, conditions, QVIllumination(CMetry::IlluminationA));
    const float sameIlluminant =
        CMetryCalculator::GetMetamery(first, second, conditions, QVIllumination(CMetry::IlluminationD65));
    ASSERT_NE(kFailed, expected);
    ASSERT_NE(sameIlluminant, expected);
    EXPECT_GT(expected, 0.1f);
    EXPECT_EQ(expected, CMetryService::GetMetamery(first, second, conditions, secondIlluminant));
}

TEST_F(CMetryServiceTest, MetameryPassesTheParametersOfTheSecondIlluminant)
{
    const QVSpectrum first = Spectrum(Bluish());
    const QVSpectrum second = Spectrum(Greenish());
    const QVMeasureConditions conditions = Conditions("D65");
    QVIllumination daylight(CMetry::IlluminationDxx);
    daylight.SetColorTemperature(5000);
    const float expected = CMetryCalculator::GetMetamery(first, second, conditions, daylight);
    QVIllumination otherDaylight(CMetry::IlluminationDxx);
    otherDaylight.SetColorTemperature(9000);
    ASSERT_NE(CMetryCalculator::GetMetamery(first, second, conditions, otherDaylight), expected);
    EXPECT_EQ(expected,
              CMetryService::GetMetamery(first, second, conditions, Conditions("Dxx, Temperature:5000")));
}

TEST_F(CMetryServiceTest, MetameryUnderTheSameIlluminantIsAboutZero)
{
    // The second sample is scaled to match the first under the first
    // illuminant, so under that illuminant only rounding remains.
    const QVSpectrum first = Spectrum(Reddish());
    const QVSpectrum second = Spectrum(Orangeish());
    EXPECT_NEAR(0.0f, CMetryService::GetMetamery(first, second, Conditions("D65"), Conditions("D65")), 1e-3f);
}

TEST_F(CMetryServiceTest, MetameryOnPaperWithoutPaperWhiteFailsWithCMetryCalculator)
{
    const QVSpectrum first = Spectrum(Reddish());
    const QVSpectrum second = Spectrum(Orangeish());
    const QVMeasureConditions conditions = Conditions("D65", "TwoDegree", "Paper");
    EXPECT_EQ("CMetryCalculator",
              ServiceFailure([&] { CMetryService::GetMetamery(first, second, conditions, Conditions("A")); }));
}

// ================================================================ GetColorType

TEST_F(CMetryServiceTest, ColorTypeOfALightSampleIsWhite)
{
    EXPECT_EQ("White", std::string(CMetryService::GetColorType(Spectrum(Flat(0.9f)))));
}

TEST_F(CMetryServiceTest, ColorTypeOfAMiddleGreySampleIsGray)
{
    EXPECT_EQ("Gray", std::string(CMetryService::GetColorType(Spectrum(Flat(0.2f)))));
}

TEST_F(CMetryServiceTest, ColorTypeOfADarkSampleIsBlack)
{
    EXPECT_EQ("Black", std::string(CMetryService::GetColorType(Spectrum(Flat(0.02f)))));
}

TEST_F(CMetryServiceTest, ColorTypeNamesTheCalculatorsClass)
{
    const Values samples[] = {Flat(0.9f), Flat(0.2f), Flat(0.02f), Reddish(), Bluish(), Greenish()};
    const char* const names[] = {"White", "Gray", "Black"};
    for (const Values& values : samples) {
        const QVSpectrum spectrum = Spectrum(values);
        const CMetry::ColorTYPE type = CMetryCalculator::GetColorType(spectrum);
        ASSERT_GE(type, CMetry::ColorWhite);
        ASSERT_LE(type, CMetry::ColorBlack);
        EXPECT_EQ(names[type - CMetry::ColorWhite], std::string(CMetryService::GetColorType(spectrum)));
    }
}

TEST_F(CMetryServiceTest, ColorTypeOfAFailingCalculationIsUndefined)
{
    // The class is computed under the spectrum's own conditions.
    const QVSpectrum onPaper = Spectrum(Flat(0.9f), Conditions("D65", "TwoDegree", "Paper"));
    ASSERT_EQ(CMetry::ColorUndefined, CMetryCalculator::GetColorType(onPaper));
    EXPECT_EQ("Undefined", std::string(CMetryService::GetColorType(onPaper)));
}

// ================================================================ GetColorTemperature

TEST_F(CMetryServiceTest, ColorTemperatureEqualsASearchOfItsOwn)
{
    ColorTemperature radiators;
    const QVSpectrum planck = radiators.GetPlanckRadiator(5000.0f, Conditions("Emission"));
    ColorTemperature search;
    const float expected = search.GetColorTemperature(planck);
    EXPECT_NEAR(5000.0f, expected, 2.0f);
    EXPECT_EQ(expected, CMetryService::GetColorTemperature(planck));

    const QVSpectrum grey = Spectrum(Flat(0.5f));
    ColorTemperature second;
    const float greyExpected = second.GetColorTemperature(grey);
    EXPECT_NE(expected, greyExpected);
    EXPECT_EQ(greyExpected, CMetryService::GetColorTemperature(grey));
}

TEST_F(CMetryServiceTest, ColorTemperatureFailurePassesThroughUnchanged)
{
    const QVSpectrum onPaper = Spectrum(Flat(0.5f), Conditions("D65", "TwoDegree", "Paper"));
    EXPECT_EQ("Calculation of ColorTemperature failed",
              ServiceFailure([&] { CMetryService::GetColorTemperature(onPaper); }));
}

// ================================================================ GetSpectrum

namespace {

float LabDistance(const QVColorVector& a, const QVColorVector& b)
{
    const double dl = static_cast<double>(a[0]) - b[0];
    const double da = static_cast<double>(a[1]) - b[1];
    const double db = static_cast<double>(a[2]) - b[2];
    return static_cast<float>(std::sqrt(dl * dl + da * da + db * db));
}

} // namespace

TEST_F(CMetryServiceTest, SpectrumOfAReachableLabLiesWithinATenthOfIt)
{
    const QVMeasureConditions conditions = WithType(Conditions(), "CIELab");
    const QVColorVector target = CMetryService::GetVector(Spectrum(Reddish()), conditions);
    const QVSpectrum found = CMetryService::GetSpectrum(target);
    const QVColorVector foundLab = CMetryService::GetVector(found, conditions);
    EXPECT_LT(LabDistance(target, foundLab), 0.1f);
    EXPECT_TRUE(found.GetMeasureConditions() == target.GetMeasureConditions());
    for (long i = 0; i < 36; ++i) {
        EXPECT_GE(found[i], 0.0f) << i;
        EXPECT_LE(found[i], 1.0f) << i;
    }
    // Something moved away from the flat start.
    bool moved = false;
    for (long i = 0; i < 36; ++i) {
        moved = moved || found[i] != 0.5f;
    }
    EXPECT_TRUE(moved);
}

TEST_F(CMetryServiceTest, SpectrumSearchUsesATenthCIELabAndAThousandRounds)
{
    const QVColorVector target = Vector(62.0f, 18.0f, 25.0f, WithType(Conditions("D50", "TenDegree"), "CIELab"));
    Lab2Spec search;
    QVSpectrum expected;
    ASSERT_TRUE(search.GetSpectrum(target, expected, 0.1, false, 1000));
    const QVSpectrum actual = CMetryService::GetSpectrum(target);
    EXPECT_TRUE(expected == actual);
    EXPECT_EQ(TestAccess::Rounds(search), TestAccess::Rounds(CMetryService::asLab2Spec));
    EXPECT_GT(TestAccess::Rounds(CMetryService::asLab2Spec), 1);
}

TEST_F(CMetryServiceTest, SpectrumOfAnUnreachableLabIsOutOfRange)
{
    const QVColorVector target = Vector(50.0f, 150.0f, 150.0f, WithType(Conditions(), "CIELab"));
    EXPECT_EQ("CMetryCalculator: Conversion out of Range",
              ServiceFailure([&] { CMetryService::GetSpectrum(target); }));
}

TEST_F(CMetryServiceTest, SpectrumOfAnXYZVectorIsThatOfItsLab)
{
    const QVColorVector xyz = CMetryService::GetVector(Spectrum(Greenish()), WithType(Conditions(), "CIEXYZ"));
    const QVColorVector lab = CMetryService::GetVector(xyz, String("CIELab"));
    const QVSpectrum fromXYZ = CMetryService::GetSpectrum(xyz);
    const QVSpectrum fromLab = CMetryService::GetSpectrum(lab);
    EXPECT_TRUE(fromLab == fromXYZ);
    EXPECT_EQ("CIELab", Condition(fromXYZ, kType));
    const QVColorVector foundLab = CMetryService::GetVector(fromXYZ, WithType(Conditions(), "CIELab"));
    EXPECT_LT(LabDistance(lab, foundLab), 0.1f);
}

TEST_F(CMetryServiceTest, SpectrumOfAnUnconvertibleVectorRaisesTheConversionFailure)
{
    const QVColorVector lch = Vector(50.0f, 30.0f, 120.0f, WithType(Conditions(), "CIELCh"));
    EXPECT_EQ("Conversion not supported from ColorSpace CIELCh to ColorSpace CIEXYZ",
              ServiceFailure([&] { CMetryService::GetSpectrum(lch); }));
}

// ================================================================ value string

TEST_F(CMetryServiceTest, ValueStringNamesTheService)
{
    const CMetryService service;
    EXPECT_STREQ("CMetryService", service.GetValueString().c_str());
}
