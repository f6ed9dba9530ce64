// The colour-space calculation: a reflectance spectrum becomes tristimulus
// values through one float dot product per axis, and the other spaces follow
// from those by fixed formulas.
//
// Exact comparisons recompute each formula here from the XYZ (or Lab) the
// library gave, in double with the single-precision constants widened, and
// round to float where the calculator rounds. The white sums are read from
// the shared filter after the library set it to the same conditions.

#include "qvimanager/cmetry/calculator.h"

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/weightfactors.h"

#include "tests/cmetry/sample_spectra.h"
#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <string>

using CMetry::BaseCalculator;
using CMetry::CMetryCalculator;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSample;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using CMetry::Weightfactors;
using TestSupport::FailureText;
using Utilities::ExceptionNullpointer;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

using TestSpectra::Values;
using TestSpectra::Reddish;
using TestSpectra::Bluish;
using TestSpectra::Scaled;
using TestSpectra::PaperValues;

using Triple = std::array<float, 3>;

constexpr double kPi = 3.14159265358979323846;
// 16 / 116 as a float, widened.
constexpr double kSixteenOver116 = 0.13793103396892548;

// ---------------------------------------------------------------- conditions

void Set(QVMeasureConditions& conditions, const char* key, const char* value)
{
    conditions.SetMeasureCondition(String(key), String(value));
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

QVMeasureConditions WithSpace(QVMeasureConditions conditions, const char* space)
{
    Set(conditions, "ColorSpaceDescription.Type", space);
    return conditions;
}

std::string Condition(const QVColorVector& vector, const char* key)
{
    return vector.GetMeasureConditions().GetMeasureCondition(String(key));
}

std::string Space(const QVColorVector& vector)
{
    return Condition(vector, "ColorSpaceDescription.Type");
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


// A hump around 550 nm.
Values Greenish()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        const float d = (static_cast<float>(i) - 17.0f) / 5.0f;
        values[i] = 0.08f + 0.6f * static_cast<float>(std::exp(-static_cast<double>(d * d)));
    }
    return values;
}


// Every value below 0.008856: each ratio to the white is a weighted mean of
// the values, so all three axes take the linear branch of Lab.
Values Dark()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.003f + 0.0001f * static_cast<float>(i);
    }
    return values;
}


// ---------------------------------------------------------------- expected values

// Each axis the dot product of a weight row with the values, in float, in
// index order.
Triple DotProducts(const Weightfactors& factors, const Values& values)
{
    Triple result{};
    for (unsigned short axis = 0; axis < 3; ++axis) {
        const float* weight = factors[axis];
        float sum = 0.0f;
        for (std::size_t point = 0; point < 36; ++point) {
            sum += weight[point] * values[point];
        }
        result[axis] = sum;
    }
    return result;
}

// The same with the weight factors the shared filter holds now.
Triple DotProductsWithSharedRows(const Values& values)
{
    const Weightfactors* factors = TestAccess::SharedWeightfactors();
    if (factors == nullptr) {
        ADD_FAILURE() << "the shared filter holds no weight factors";
        return Triple{};
    }
    return DotProducts(*factors, values);
}

// The white sums of the shared filter now.
Triple WhiteSums()
{
    return {CMetryCalculator::asXYZFilter.GetFilterSum(0), CMetryCalculator::asXYZFilter.GetFilterSum(1),
            CMetryCalculator::asXYZFilter.GetFilterSum(2)};
}

Triple Components(const QVColorVector& vector)
{
    return {vector[0], vector[1], vector[2]};
}

// XYZ to Lab: each ratio to the white rounded to float, cube root above
// 0.008856, 7.787 r + 16/116 at or below it.
struct LabFormula {
    double f[3];
    double lightness; // before the clamp
    Triple lab;
};

LabFormula ExpectedLab(const Triple& xyz, const Triple& sums)
{
    LabFormula result{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const float t = sums[1] * xyz[axis];
        const auto r = static_cast<float>(static_cast<double>(t) / static_cast<double>(sums[axis]) / 100.0);
        if (static_cast<double>(r) > 0.008856) {
            result.f[axis] = std::pow(static_cast<double>(r), 1.0 / 3.0);
        } else {
            result.f[axis] = static_cast<double>(7.787f) * static_cast<double>(r) + kSixteenOver116;
        }
    }
    result.lightness = 116.0 * result.f[1] - 16.0;
    const double clamped = result.lightness < 0.0 ? 0.0 : result.lightness;
    result.lab = {static_cast<float>(clamped), static_cast<float>((result.f[0] - result.f[1]) * 500.0),
                  static_cast<float>((result.f[1] - result.f[2]) * 200.0)};
    return result;
}

// Lab to XYZ: cubed above f = 0.206893034423, linear at or below it.
Triple ExpectedXYZFromLab(const Triple& lab, const Triple& sums)
{
    const double fy = (static_cast<double>(lab[0]) + 16.0) / 116.0;
    const double f[3] = {static_cast<double>(lab[1]) / 500.0 + fy, fy, fy - static_cast<double>(lab[2]) / 200.0};
    Triple xyz{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double white = static_cast<double>(sums[axis]) * 100.0 / static_cast<double>(sums[1]);
        if (f[axis] > 0.206893034423) {
            xyz[axis] = static_cast<float>(std::pow(f[axis], 3.0) * white);
        } else {
            xyz[axis] = static_cast<float>((f[axis] - kSixteenOver116) * white / static_cast<double>(7.787f));
        }
    }
    return xyz;
}

// Rectangular to polar: hue in degrees, 0 and below moved up by 360.
Triple ExpectedPolar(float first, float c1, float c2)
{
    const double a = c1;
    const double b = c2;
    auto hue = static_cast<float>(std::atan2(b, a) * 57.29577951308232);
    if (hue <= 0.0f) {
        hue += 360.0f;
    }
    return {first, static_cast<float>(std::sqrt(a * a + b * b)), hue};
}

// u' and v' from X, Y, Z.
std::array<float, 2> ExpectedUPrimeVPrime(const Triple& xyz)
{
    const double x = xyz[0];
    const double y = xyz[1];
    const double d = x + 15.0 * y + 3.0 * static_cast<double>(xyz[2]);
    return {static_cast<float>(4.0 * x / d), static_cast<float>(9.0 * y / d)};
}

// The float length of a four-component difference, as the vector computes
// it: squares summed in float, root in double.
float Length(const std::array<float, 4>& d)
{
    float sum = 0.0f;
    for (float value : d) {
        sum += value * value;
    }
    return static_cast<float>(std::sqrt(static_cast<double>(sum)));
}

Triple ExpectedDelta(const QVColorVector& first, const QVColorVector& second, bool firstChromaInDouble)
{
    const std::array<float, 4> d = {first[0] - second[0], first[1] - second[1], first[2] - second[2],
                                    first[3] - second[3]};
    const double f1 = first[1];
    const double f2 = first[2];
    const double s1 = second[1];
    const double s2 = second[2];
    double c1 = std::sqrt(f1 * f1 + f2 * f2);
    if (!firstChromaInDouble) {
        c1 = static_cast<double>(static_cast<float>(c1));
    }
    const double c2 = static_cast<float>(std::sqrt(s1 * s1 + s2 * s2));
    const float deltaL = d[0];
    const auto deltaC = static_cast<float>(c1 - c2);
    const double length = Length(d);
    auto deltaH = static_cast<float>(std::sqrt(std::fabs(length * length -
                                                         static_cast<double>(deltaL) * static_cast<double>(deltaL) -
                                                         static_cast<double>(deltaC) * static_cast<double>(deltaC))));
    if (f1 * s2 - s1 * f2 > 0.0) {
        deltaH = -deltaH;
    }
    return {deltaL, deltaC, deltaH};
}

// The RGB table entry i: the linear value of the encoded level i / 2.
float TableEntry(int index)
{
    if (index == 0) {
        return 0.0f;
    }
    const float level = 0.5f * static_cast<float>(index);
    return static_cast<float>(std::pow(static_cast<double>(level / 255.0f), 1.0 / static_cast<double>(0.45f)));
}

// A linear value to a whole level: the last table entry not above the value
// among entries 0 to 510 (the top entry is never reached), halved and
// truncated; below entry 0 the level is 0.
float ExpectedLevel(float linear)
{
    int index = -1;
    for (int i = 0; i <= 510; ++i) {
        if (!(linear < TableEntry(i))) {
            index = i;
        }
    }
    return static_cast<float>(index / 2);
}

// Lab to RGB through the fallback matrix (float dot products) and the table.
Triple ExpectedRGB(const Triple& xyz)
{
    const float matrix[3][3] = {{0.03065f, -0.01394f, -0.00476f},
                                {-0.00969f, 0.01876f, 0.00042f},
                                {0.00068f, -0.00229f, 0.0107f}};
    Triple rgb{};
    for (std::size_t row = 0; row < 3; ++row) {
        float linear = 0.0f;
        for (std::size_t column = 0; column < 3; ++column) {
            linear += matrix[row][column] * xyz[column];
        }
        rgb[row] = ExpectedLevel(linear);
    }
    return rgb;
}

// The vq transform of CIELCh.
Triple ExpectedLCHvq(const Triple& lch)
{
    const double lightness = lch[0];
    const double chroma = lch[1];
    const double hue = lch[2];
    double vqL = 0.0;
    if (lightness < 16.0) {
        vqL = lightness / static_cast<double>(0.511f);
    } else {
        vqL = std::log(static_cast<double>(0.040975f) * lightness) / static_cast<double>(0.040975f) +
              static_cast<double>(0.01765f) * lightness + static_cast<double>(34.7231f);
    }
    const double vqC = 12.253 * std::log(0.638 + 0.072158 * chroma) + 0.181547 * chroma + static_cast<double>(5.50671f);
    const float sine[5] = {0.0f, 0.13893f, -0.0539f, -0.04029f, -0.01043f};
    const float cosine[5] = {0.0f, -0.09622f, -0.06742f, -0.02137f, 0.00587f};
    const auto r = static_cast<float>(hue * kPi / 180.0);
    auto h = static_cast<float>(static_cast<double>(0.17914f) + static_cast<double>(r));
    for (int n = 1; n <= 4; ++n) {
        const double angle = n * static_cast<double>(r);
        h = static_cast<float>(static_cast<double>(h) + static_cast<double>(sine[n]) * std::sin(angle) +
                               static_cast<double>(cosine[n]) * std::cos(angle));
    }
    return {static_cast<float>(vqL), static_cast<float>(vqC), static_cast<float>(static_cast<double>(h) * 180.0 / kPi)};
}

// ---------------------------------------------------------------- paper white

// Installs a paper white for the life of the object and removes it again,
// also when an assertion ends the test early.
class PaperWhiteInstalled {
public:
    explicit PaperWhiteInstalled(const QVSample& sample)
    {
        TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>(new QVSample(sample)));
    }
    PaperWhiteInstalled(const PaperWhiteInstalled&) = delete;
    PaperWhiteInstalled& operator=(const PaperWhiteInstalled&) = delete;
    ~PaperWhiteInstalled() { TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>()); }
};

QVSample SampleOf(const QVSpectrum& spectrum)
{
    QVSample sample;
    sample.SetSpectrum(spectrum);
    return sample;
}

QVSpectrum FirstSpectrum(const QVSample& sample)
{
    QVSpectrum spectrum;
    EXPECT_TRUE(sample.GetSpectrum(Conditions(), spectrum));
    return spectrum;
}


using PaperWhiteFixture = TestSpectra::NoPaperWhite;

// The fixtures carry the suite names.
class PaperWhiteMissing : public PaperWhiteFixture {};
class PaperWhiteValidity : public PaperWhiteFixture {};
class PaperWhiteBasing : public PaperWhiteFixture {};
class PaperWhiteValueString : public PaperWhiteFixture {};
class EmissionSpectrum : public PaperWhiteFixture {};

} // namespace

// ================================================================ perfect white

namespace {

// L* of the perfect white is 100 only to float rounding: the white's Y is the
// constant 100, while the perfect white's Y is the float sum of the Y weights
// (99.99992 under D65), so the ratio is just below 1 and L* is 99.99997.
void CheckPerfectWhiteLab(const char* illumination)
{
    SCOPED_TRACE(illumination);
    const QVMeasureConditions conditions = Conditions(illumination);
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Flat(1.0f), conditions), conditions, lab));
    EXPECT_NEAR(100.0, static_cast<double>(lab[0]), 1e-4);
    EXPECT_LT(std::fabs(lab[1]), 1e-3f);
    EXPECT_LT(std::fabs(lab[2]), 1e-3f);
}

} // namespace

TEST(CalculatorPerfectWhite, UnderD65GivesLightness100ToFloatRoundingAndNeutralAxes)
{
    CheckPerfectWhiteLab("D65");
}

TEST(CalculatorPerfectWhite, UnderD50GivesLightness100ToFloatRoundingAndNeutralAxes)
{
    CheckPerfectWhiteLab("D50");
}

TEST(CalculatorPerfectWhite, UnderAGivesLightness100ToFloatRoundingAndNeutralAxes)
{
    CheckPerfectWhiteLab("A");
}

TEST(CalculatorPerfectWhite, UnderD65LightnessIsTheFormulaOfTheWeightSums)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector xyz;
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(1.0f), conditions), conditions, xyz));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Flat(1.0f), conditions), conditions, lab));
    const LabFormula expected = ExpectedLab(Components(xyz), WhiteSums());
    EXPECT_EQ(expected.lab[0], lab[0]);
    EXPECT_EQ(expected.lab[1], lab[1]);
    EXPECT_EQ(expected.lab[2], lab[2]);
    // Not 100 itself: the float sum of the Y weights falls short of the
    // white's constant 100.
    EXPECT_LT(lab[0], 100.0f);
}

// The perfect white's X and Z are the float sums of the X and Z weights,
// which are the white's X and Z as well (the Y scale is 100 / 100 = 1), so
// they agree exactly. Y differs: the white's Y is the constant 100, the
// perfect white's Y the float sum of the Y weights, a little below 100.
TEST(CalculatorPerfectWhite, XYZMatchesTheWhiteOfGetNormValence)
{
    for (const char* illumination : {"D65", "D50", "A"}) {
        SCOPED_TRACE(illumination);
        const QVMeasureConditions conditions = Conditions(illumination);
        QVColorVector xyz;
        QVColorVector white;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(1.0f), conditions), conditions, xyz));
        ASSERT_TRUE(TestAccess::GetNormValence(conditions, white));
        EXPECT_NEAR(static_cast<double>(white[0]), static_cast<double>(xyz[0]), 1e-3);
        EXPECT_NEAR(static_cast<double>(white[2]), static_cast<double>(xyz[2]), 1e-3);
        EXPECT_EQ(white[0], xyz[0]);
        EXPECT_EQ(white[2], xyz[2]);
        EXPECT_EQ(100.0f, white[1]);
        EXPECT_NEAR(100.0, static_cast<double>(xyz[1]), 1e-3);
        EXPECT_NE(100.0f, xyz[1]);
    }
}

// ================================================================ GetVector_CIEXYZ

TEST(CalculatorXYZ, IsTheFloatDotProductOfTheWeightRowsInIndexOrder)
{
    const struct {
        const char* illumination;
        const char* observer;
    } cases[] = {{"D65", "TwoDegree"}, {"D50", "TenDegree"}, {"A", "TwoDegree"}};
    for (const auto& c : cases) {
        for (const Values& values : {Reddish(), Greenish(), Bluish(), Dark()}) {
            SCOPED_TRACE(std::string(c.illumination) + " " + c.observer);
            const QVMeasureConditions conditions = Conditions(c.illumination, c.observer);
            QVColorVector xyz;
            ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(values, conditions), conditions, xyz));
            const Triple expected = DotProductsWithSharedRows(values);
            EXPECT_EQ(expected[0], xyz[0]);
            EXPECT_EQ(expected[1], xyz[1]);
            EXPECT_EQ(expected[2], xyz[2]);
        }
    }
}

TEST(CalculatorXYZ, OutputTakesTheEvaluationConditionsWithTheSpectrumsPhysicalFilter)
{
    QVMeasureConditions measured = Conditions("A", "TenDegree");
    Set(measured, "Physical.Filter", "Polarizer");
    QVMeasureConditions evaluation = Conditions("D65", "TwoDegree", "Automatic");
    Set(evaluation, "Physical.Filter", "No");
    Set(evaluation, "ColorSpaceDescription.Type", "CIEXYZ");

    QVColorVector xyz(7.0f, 8.0f, 9.0f, Conditions("D50", "TenDegree"));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Reddish(), measured), evaluation, xyz));

    EXPECT_EQ("D65", Condition(xyz, "Colorimetric.Illumination"));
    EXPECT_EQ("TwoDegree", Condition(xyz, "Colorimetric.Observer"));
    EXPECT_EQ("Automatic", Condition(xyz, "Colorimetric.WhiteBase"));
    EXPECT_EQ("CIEXYZ", Space(xyz));
    EXPECT_EQ("Polarizer", Condition(xyz, "Physical.Filter"));
    QVMeasureConditions expected = evaluation;
    Set(expected, "Physical.Filter", "Polarizer");
    EXPECT_TRUE(xyz.GetMeasureConditions() == expected);

    // The values are those of the evaluation conditions, not the measured ones.
    const Triple expectedXYZ = DotProductsWithSharedRows(Reddish());
    EXPECT_EQ(expectedXYZ[0], xyz[0]);
    EXPECT_EQ(expectedXYZ[1], xyz[1]);
    EXPECT_EQ(expectedXYZ[2], xyz[2]);
}

TEST(CalculatorXYZ, KeepsComponentThreeOfTheOutput)
{
    QVColorVector xyz;
    xyz[3] = 42.5f;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish()), Conditions(), xyz));
    EXPECT_EQ(42.5f, xyz[3]);
    EXPECT_NE(0.0f, xyz[1]);
}

TEST(CalculatorXYZ, ChangingOnlyTheWhiteBaseKeepsTheCachedWeightfactors)
{
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish()), Conditions("D65", "TwoDegree", "Absolute"),
                                                   xyz));
    const Weightfactors* before = TestAccess::SharedWeightfactors();
    ASSERT_NE(nullptr, before);
    const Triple first = Components(xyz);

    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish()), Conditions("D65", "TwoDegree", "Automatic"),
                                                   xyz));
    EXPECT_EQ(before, TestAccess::SharedWeightfactors());
    const QVMeasureConditions* cached = TestAccess::CachedConditions(CMetryCalculator::asXYZFilter);
    ASSERT_NE(nullptr, cached);
    EXPECT_EQ(CMetry::WhiteBaseAutomatic, TestAccess::GetWhiteBase(*cached));
    EXPECT_EQ(first, Components(xyz));
}

TEST(CalculatorXYZ, WhiteBaseOfTheSpectrumItselfDoesNotBaseIt)
{
    // No paper white: only the evaluation conditions' white base counts.
    TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>());
    const QVSpectrum spectrum = Spectrum(Bluish(), Conditions("D65", "TwoDegree", "Paper"));
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(spectrum, Conditions("D65", "TwoDegree", "Absolute"), xyz));
    const Triple expected = DotProductsWithSharedRows(Bluish());
    EXPECT_EQ(expected[1], xyz[1]);
}

// ================================================================ GetNormValence

TEST(CalculatorNormValence, IsTheWeightSumsWithYExactly100)
{
    const struct {
        const char* illumination;
        const char* observer;
    } cases[] = {{"D65", "TwoDegree"}, {"A", "TwoDegree"}, {"D50", "TenDegree"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.illumination) + " " + c.observer);
        QVColorVector white;
        ASSERT_TRUE(TestAccess::GetNormValence(Conditions(c.illumination, c.observer), white));
        const Weightfactors* factors = TestAccess::SharedWeightfactors();
        ASSERT_NE(nullptr, factors);
        float sums[3] = {0.0f, 0.0f, 0.0f};
        for (unsigned short axis = 0; axis < 3; ++axis) {
            for (std::size_t point = 0; point < 36; ++point) {
                sums[axis] += (*factors)[axis][point];
            }
        }
        EXPECT_EQ(sums[0], white[0]);
        EXPECT_EQ(100.0f, white[1]);
        EXPECT_EQ(sums[2], white[2]);
        // The Y scale is the constant 100 / 100, not the float sum of the
        // Y row, which falls a little short.
        EXPECT_NE(100.0f, sums[1]);
        EXPECT_NEAR(100.0, static_cast<double>(sums[1]), 1e-3);
    }
}

TEST(CalculatorNormValence, OutputHasTheConditionsButPhysicalFilterNo)
{
    QVMeasureConditions conditions = Conditions("A", "TenDegree");
    Set(conditions, "Physical.Filter", "Polarizer");
    Set(conditions, "ColorSpaceDescription.Type", "CIEXYZ");
    QVColorVector white;
    white[3] = 3.0f;
    ASSERT_TRUE(TestAccess::GetNormValence(conditions, white));
    EXPECT_EQ("No", Condition(white, "Physical.Filter"));
    EXPECT_EQ("A", Condition(white, "Colorimetric.Illumination"));
    EXPECT_EQ("TenDegree", Condition(white, "Colorimetric.Observer"));
    EXPECT_EQ("CIEXYZ", Space(white));
    EXPECT_EQ(3.0f, white[3]);
}

// ================================================================ zero spectrum

TEST(CalculatorZeroSpectrum, GivesZeroXYZAndZeroLab)
{
    QVColorVector xyz;
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(0.0f)), Conditions(), xyz));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Flat(0.0f)), Conditions(), lab));
    EXPECT_EQ(0.0f, xyz[0]);
    EXPECT_EQ(0.0f, xyz[1]);
    EXPECT_EQ(0.0f, xyz[2]);
    // 116 * 16/116 - 16 is slightly below 0 with 16/116 as a float: clamped.
    EXPECT_EQ(0.0f, lab[0]);
    EXPECT_EQ(0.0f, lab[1]);
    EXPECT_EQ(0.0f, lab[2]);
}

TEST(CalculatorZeroSpectrum, xyYTakesTheChromaticityOfTheFlatSpectrumAndKeepsYZero)
{
    const QVMeasureConditions conditions = WithSpace(Conditions("D65"), "CIEXYZ");
    QVColorVector zero;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(0.0f), conditions), conditions, zero));
    QVColorVector flat;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(1e-5f), conditions), conditions, flat));
    const double sum = static_cast<double>(flat[0]) + static_cast<double>(flat[1]) + static_cast<double>(flat[2]);
    ASSERT_GT(sum, 0.0);

    QVColorVector xyY;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIExyY(zero, xyY));
    EXPECT_EQ(static_cast<float>(static_cast<double>(flat[0]) / sum), xyY[0]);
    EXPECT_EQ(static_cast<float>(static_cast<double>(flat[1]) / sum), xyY[1]);
    EXPECT_EQ(0.0f, xyY[2]);
    EXPECT_TRUE(xyY.GetMeasureConditions() == zero.GetMeasureConditions());

    // Through the spectrum as well.
    QVColorVector fromSpectrum;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIExyY(Spectrum(Flat(0.0f), conditions), conditions, fromSpectrum));
    EXPECT_EQ(xyY, fromSpectrum);
}

TEST(CalculatorZeroSpectrum, xyYUnderIlluminantATakesItsOwnFlatChromaticity)
{
    const QVMeasureConditions conditions = WithSpace(Conditions("A"), "CIEXYZ");
    QVColorVector flat;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(1e-5f), conditions), conditions, flat));
    const double sum = static_cast<double>(flat[0]) + static_cast<double>(flat[1]) + static_cast<double>(flat[2]);
    // Evaluated last under D65, so the zero vector must set the filter to A.
    QVColorVector d65;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(0.0f)), Conditions("D65"), d65));
    const QVColorVector zero(0.0f, 0.0f, 0.0f, conditions);
    QVColorVector xyY;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIExyY(zero, xyY));
    EXPECT_EQ(static_cast<float>(static_cast<double>(flat[0]) / sum), xyY[0]);
    EXPECT_EQ(static_cast<float>(static_cast<double>(flat[1]) / sum), xyY[1]);
    EXPECT_GT(xyY[0], 0.4f); // A is far redder than D65 (x about 0.31)
}

// The flat spectrum's evaluation under the vector's own conditions is not
// looked at: with white base "Paper" and no paper white it fails, its
// components stay 0 and the chromaticity becomes 0 / 0.
TEST(CalculatorZeroSpectrum, xyYUnderPaperBaseWithoutPaperWhiteIsNotANumber)
{
    TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>());
    const QVColorVector zero(0.0f, 0.0f, 0.0f, WithSpace(Conditions("D65", "TwoDegree", "Paper"), "CIEXYZ"));
    QVColorVector xyY;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIExyY(zero, xyY));
    EXPECT_TRUE(std::isnan(xyY[0]));
    EXPECT_TRUE(std::isnan(xyY[1]));
    EXPECT_EQ(0.0f, xyY[2]);
}

TEST(CalculatorxyY, IsXAndYOverTheSumWithYThird)
{
    const QVMeasureConditions conditions = Conditions("D50", "TenDegree");
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Reddish(), conditions), conditions, xyz));
    QVColorVector xyY;
    xyY[3] = 5.0f;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIExyY(Spectrum(Reddish(), conditions), conditions, xyY));
    const double sum = static_cast<double>(xyz[0]) + static_cast<double>(xyz[1]) + static_cast<double>(xyz[2]);
    EXPECT_EQ(static_cast<float>(static_cast<double>(xyz[0]) / sum), xyY[0]);
    EXPECT_EQ(static_cast<float>(static_cast<double>(xyz[1]) / sum), xyY[1]);
    EXPECT_EQ(xyz[1], xyY[2]);
    EXPECT_EQ(5.0f, xyY[3]);
    EXPECT_TRUE(xyY.GetMeasureConditions() == xyz.GetMeasureConditions());
}

// ================================================================ u'v'Y

TEST(CalculatorUvY, ZeroXYZGivesEqualEnergyChromaticityIn1976)
{
    const QVColorVector zero(0.0f, 0.0f, 0.0f, WithSpace(Conditions(), "CIEXYZ"));
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(zero, uv));
    EXPECT_EQ(0.21052632f, uv[0]);
    EXPECT_EQ(0.47368422f, uv[1]);
    EXPECT_EQ(0.0f, uv[2]);
    EXPECT_EQ("CIEuvY1976", Space(uv));
    // 4/19 and 9/19 rounded to float.
    EXPECT_EQ(static_cast<float>(4.0 / 19.0), uv[0]);
    EXPECT_EQ(static_cast<float>(9.0 / 19.0), uv[1]);
}

TEST(CalculatorUvY, ZeroXYZGivesEqualEnergyChromaticityIn1960WithVScaled)
{
    const QVColorVector zero(0.0f, 0.0f, 0.0f, WithSpace(Conditions(), "CIEXYZ"));
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(zero, uv));
    EXPECT_EQ(0.21052632f, uv[0]);
    EXPECT_EQ((0.47368422f + 0.47368422f) / 3.0f, uv[1]);
    EXPECT_EQ(0.0f, uv[2]);
    EXPECT_EQ("CIEuvY1960", Space(uv));
}

TEST(CalculatorUvY, ZeroSpectrumThroughXYZGivesTheConstants)
{
    const QVMeasureConditions conditions = WithSpace(Conditions(), "CIEXYZ");
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(0.0f), conditions), conditions, xyz));
    ASSERT_EQ("CIEXYZ", Space(xyz));
    QVColorVector uv1976;
    QVColorVector uv1960;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(xyz, uv1976));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(xyz, uv1960));
    EXPECT_EQ(0.21052632f, uv1976[0]);
    EXPECT_EQ(0.47368422f, uv1976[1]);
    EXPECT_EQ(0.21052632f, uv1960[0]);
    EXPECT_EQ((0.47368422f + 0.47368422f) / 3.0f, uv1960[1]);
}

TEST(CalculatorUvY, AnotherSpaceFailsAndLeavesTheOutput)
{
    for (const char* space : {"CIELab", "CIEuvY1976", "HunterLab", "RGB"}) {
        SCOPED_TRACE(space);
        const QVColorVector input(10.0f, 20.0f, 30.0f, WithSpace(Conditions(), space));
        QVColorVector out(1.0f, 2.0f, 3.0f, WithSpace(Conditions("A", "TenDegree"), "CIELCh"));
        out[3] = 4.0f;
        const QVColorVector before = out;
        EXPECT_FALSE(CMetryCalculator::GetVector_CIEuvY1976(input, out));
        EXPECT_EQ(before, out);
        EXPECT_FALSE(CMetryCalculator::GetVector_CIEuvY1960(input, out));
        EXPECT_EQ(before, out);
    }
}

TEST(CalculatorUvY, FromXYZIsFourAndNineTimesTheChromaticityOverTheDenominator)
{
    const QVColorVector xyz(41.24f, 21.26f, 1.93f, WithSpace(Conditions("D50"), "CIEXYZ"));
    QVColorVector uv;
    uv[3] = 6.0f;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(xyz, uv));
    const double sum = static_cast<double>(xyz[0]) + static_cast<double>(xyz[1]) + static_cast<double>(xyz[2]);
    const double x = xyz[0] / sum;
    const double y = xyz[1] / sum;
    const double z = xyz[2] / sum;
    const double d = x + 15.0 * y + 3.0 * z;
    EXPECT_EQ(static_cast<float>(4.0 * x / d), uv[0]);
    EXPECT_EQ(static_cast<float>(9.0 * y / d), uv[1]);
    EXPECT_EQ(21.26f, uv[2]);
    EXPECT_EQ(6.0f, uv[3]);
    EXPECT_EQ("CIEuvY1976", Space(uv));
    EXPECT_EQ("D50", Condition(uv, "Colorimetric.Illumination"));

    QVColorVector uv1960;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(xyz, uv1960));
    EXPECT_EQ(uv[0], uv1960[0]);
    EXPECT_EQ((uv[1] + uv[1]) / 3.0f, uv1960[1]);
    EXPECT_EQ(21.26f, uv1960[2]);
    EXPECT_EQ("CIEuvY1960", Space(uv1960));
}

// A non-zero sum whose denominator x + 15 y + 3 z vanishes also takes the
// equal-energy constants.
TEST(CalculatorUvY, FromXYZWithAVanishingDenominatorGivesTheConstants)
{
    const QVColorVector xyz(3.0f, 0.0f, -1.0f, WithSpace(Conditions(), "CIEXYZ"));
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(xyz, uv));
    EXPECT_EQ(0.21052632f, uv[0]);
    EXPECT_EQ(0.47368422f, uv[1]);
    EXPECT_EQ(0.0f, uv[2]);
}

TEST(CalculatorUvY, FromxyYWithYZeroGivesTheConstants)
{
    const QVColorVector xyY(0.3f, 0.4f, 0.0f, WithSpace(Conditions(), "CIExyY"));
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(xyY, uv));
    EXPECT_EQ(0.21052632f, uv[0]);
    EXPECT_EQ(0.47368422f, uv[1]);
    EXPECT_EQ(0.0f, uv[2]);
    EXPECT_EQ("CIEuvY1976", Space(uv));
    QVColorVector uv1960;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(xyY, uv1960));
    EXPECT_EQ(0.21052632f, uv1960[0]);
    EXPECT_EQ((0.47368422f + 0.47368422f) / 3.0f, uv1960[1]);
    EXPECT_EQ("CIEuvY1960", Space(uv1960));
}

TEST(CalculatorUvY, FromxyYWithYNotZeroUsesTheChromaticityFormula)
{
    const QVColorVector xyY(0.3127f, 0.329f, 55.5f, WithSpace(Conditions(), "CIExyY"));
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1976(xyY, uv));
    const double x = 0.3127f;
    const double y = 0.329f;
    const double d = -2.0 * x + 12.0 * y + 3.0;
    EXPECT_EQ(static_cast<float>(4.0 * x / d), uv[0]);
    EXPECT_EQ(static_cast<float>(9.0 * y / d), uv[1]);
    EXPECT_EQ(55.5f, uv[2]);
    QVColorVector uv1960;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(xyY, uv1960));
    EXPECT_EQ(uv[0], uv1960[0]);
    EXPECT_EQ((uv[1] + uv[1]) / 3.0f, uv1960[1]);
    EXPECT_EQ(55.5f, uv1960[2]);
}

// ================================================================ XYZ to Lab

TEST(CalculatorLabFromXYZ, NegativeYClampsLightnessToZeroButNotAAndB)
{
    const QVColorVector xyz(10.0f, -1.0f, 5.0f, WithSpace(Conditions(), "CIEXYZ"));
    QVColorVector lab;
    lab[3] = 9.0f;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, lab));
    const LabFormula expected = ExpectedLab(Components(xyz), WhiteSums());
    ASSERT_LT(expected.lightness, 0.0);
    EXPECT_EQ(0.0f, lab[0]);
    EXPECT_EQ(expected.lab[1], lab[1]);
    EXPECT_EQ(expected.lab[2], lab[2]);
    EXPECT_NE(0.0f, lab[1]);
    EXPECT_NE(0.0f, lab[2]);
    EXPECT_EQ(9.0f, lab[3]);
    // The output takes the input's conditions, colour space included.
    EXPECT_TRUE(lab.GetMeasureConditions() == xyz.GetMeasureConditions());
}

TEST(CalculatorLabFromXYZ, SmallRatiosTakeTheLinearBranch)
{
    const QVColorVector xyz(0.5f, 0.4f, 0.3f, WithSpace(Conditions(), "CIEXYZ"));
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, lab));
    const Triple sums = WhiteSums();
    const LabFormula expected = ExpectedLab(Components(xyz), sums);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        // Every ratio is at or below 0.008856: f is 7.787 r + 16/116.
        EXPECT_LT(expected.f[axis], std::pow(0.008856, 1.0 / 3.0));
    }
    EXPECT_EQ(expected.lab[0], lab[0]);
    EXPECT_EQ(expected.lab[1], lab[1]);
    EXPECT_EQ(expected.lab[2], lab[2]);
    // Y = 0.4: L = 116 (7.787 r + 16/116) - 16 = 903.3 r, about 3.6.
    EXPECT_NEAR(3.613, static_cast<double>(lab[0]), 1e-3);
}

TEST(CalculatorLabFromXYZ, LargerRatiosTakeTheCubeRoot)
{
    for (const Triple& values : {Triple{41.24f, 21.26f, 1.93f}, Triple{35.76f, 71.52f, 11.92f},
                                 Triple{18.05f, 7.22f, 95.05f}, Triple{20.0f, 20.0f, 20.0f}}) {
        const QVColorVector xyz(values[0], values[1], values[2], WithSpace(Conditions("D65"), "CIEXYZ"));
        QVColorVector lab;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, lab));
        const LabFormula expected = ExpectedLab(values, WhiteSums());
        EXPECT_GT(expected.f[1], 0.3);
        EXPECT_EQ(expected.lab[0], lab[0]);
        EXPECT_EQ(expected.lab[1], lab[1]);
        EXPECT_EQ(expected.lab[2], lab[2]);
    }
}

TEST(CalculatorLabFromXYZ, IsReadAgainstTheWhiteOfTheVectorsOwnConditions)
{
    const Triple values{41.24f, 21.26f, 1.93f};
    QVColorVector labD65;
    QVColorVector labA;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(
        QVColorVector(values[0], values[1], values[2], WithSpace(Conditions("D65"), "CIEXYZ")), labD65));
    const LabFormula expectedD65 = ExpectedLab(values, WhiteSums());
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(
        QVColorVector(values[0], values[1], values[2], WithSpace(Conditions("A"), "CIEXYZ")), labA));
    const LabFormula expectedA = ExpectedLab(values, WhiteSums());
    EXPECT_EQ(expectedD65.lab[1], labD65[1]);
    EXPECT_EQ(expectedA.lab[1], labA[1]);
    EXPECT_NE(labD65[1], labA[1]);
    EXPECT_NE(labD65[2], labA[2]);
}

TEST(CalculatorLab, FromASpectrumIsTheFormulaOfItsXYZ)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish(), Dark()}) {
        const QVMeasureConditions conditions = Conditions("D50", "TenDegree");
        QVColorVector xyz;
        QVColorVector lab;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(values, conditions), conditions, xyz));
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(values, conditions), conditions, lab));
        const LabFormula expected = ExpectedLab(Components(xyz), WhiteSums());
        EXPECT_EQ(expected.lab[0], lab[0]);
        EXPECT_EQ(expected.lab[1], lab[1]);
        EXPECT_EQ(expected.lab[2], lab[2]);
    }
}

TEST(CalculatorLab, FromASpectrumKeepsComponentThreeOfTheOutput)
{
    using Operation = bool (*)(const QVSpectrum&, const QVMeasureConditions&, QVColorVector&);
    const Operation operations[] = {CMetryCalculator::GetVector_CIELab, CMetryCalculator::GetVector_CIELCh_ab,
                                    CMetryCalculator::GetVector_LCHvq, CMetryCalculator::GetVector_CIELCh_uv};
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        SCOPED_TRACE(i);
        QVColorVector out;
        out[3] = 11.0f;
        ASSERT_TRUE(operations[i](Spectrum(Reddish()), Conditions(), out));
        EXPECT_EQ(11.0f, out[3]);
        EXPECT_NE(0.0f, out[0]);
    }
}

// ================================================================ Lab to XYZ

TEST(CalculatorXYZFromLab, FollowsTheInverseFormulaExactly)
{
    for (const Triple& values : {Triple{50.0f, 20.0f, -30.0f}, Triple{90.0f, -5.0f, 80.0f}, Triple{5.0f, 3.0f, -2.0f},
                                 Triple{0.0f, 0.0f, 0.0f}, Triple{30.0f, 70.0f, -90.0f}}) {
        const QVColorVector lab(values[0], values[1], values[2], Conditions("D50", "TenDegree"));
        QVColorVector xyz;
        xyz[3] = 2.0f;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(lab, xyz));
        const Triple expected = ExpectedXYZFromLab(values, WhiteSums());
        EXPECT_EQ(expected[0], xyz[0]);
        EXPECT_EQ(expected[1], xyz[1]);
        EXPECT_EQ(expected[2], xyz[2]);
        EXPECT_EQ(2.0f, xyz[3]);
        EXPECT_TRUE(xyz.GetMeasureConditions() == lab.GetMeasureConditions());
    }
}

// A float Lab keeps about seven significant digits, and the cube (or the
// linear slope) carries their error into XYZ threefold at most: the round
// trip holds to 1e-5 of the value, or 1e-5 absolute below 1.
TEST(CalculatorXYZFromLab, InvertsLabWithinFloatTolerance)
{
    const Triple colours[] = {
        {41.24f, 21.26f, 1.93f}, {35.76f, 71.52f, 11.92f}, {18.05f, 7.22f, 95.05f}, {95.0f, 100.0f, 108.0f},
        {20.0f, 20.0f, 20.0f},   {0.5f, 0.4f, 0.3f},       {0.05f, 0.08f, 0.02f},   {1.2f, 0.9f, 0.1f},
    };
    for (const Triple& colour : colours) {
        SCOPED_TRACE(colour[1]);
        const QVColorVector xyz(colour[0], colour[1], colour[2], WithSpace(Conditions("D65"), "CIEXYZ"));
        QVColorVector lab;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, lab));
        QVColorVector back;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(lab, back));
        for (short axis = 0; axis < 3; ++axis) {
            const double value = colour[static_cast<std::size_t>(axis)];
            EXPECT_NEAR(value, static_cast<double>(back[axis]), 1e-5 * std::max(1.0, std::fabs(value)));
        }
    }
}

TEST(CalculatorXYZFromLab, DarkColoursTakeTheLinearBranch)
{
    // L = 4.5 gives fy = 0.1767, below 0.206893034423.
    const Triple values{4.5f, 1.0f, -1.0f};
    const double fy = (4.5 + 16.0) / 116.0;
    ASSERT_LT(fy + 1.0 / 500.0, 0.206893034423);
    const QVColorVector lab(values[0], values[1], values[2], Conditions("D65"));
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(lab, xyz));
    const Triple sums = WhiteSums();
    const double whiteY = 100.0;
    EXPECT_EQ(static_cast<float>((fy - kSixteenOver116) * whiteY / static_cast<double>(7.787f)), xyz[1]);
    const Triple expected = ExpectedXYZFromLab(values, sums);
    EXPECT_EQ(expected[0], xyz[0]);
    EXPECT_EQ(expected[2], xyz[2]);
    // And back again.
    QVColorVector again;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(xyz, again));
    EXPECT_NEAR(4.5, static_cast<double>(again[0]), 1e-5);
    EXPECT_NEAR(1.0, static_cast<double>(again[1]), 1e-4);
    EXPECT_NEAR(-1.0, static_cast<double>(again[2]), 1e-4);
}

// ================================================================ LCh

TEST(CalculatorLCh, ChromaIsTheHypotenuseAndHueIsInDegrees)
{
    QVMeasureConditions conditions = Conditions("A", "TenDegree");
    Set(conditions, "Physical.Filter", "UVCut");
    const QVColorVector lab(62.5f, 3.0f, 4.0f, conditions);
    QVColorVector lch;
    lch[3] = 8.0f;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(lab, lch));
    EXPECT_EQ(62.5f, lch[0]);
    EXPECT_EQ(5.0f, lch[1]);
    EXPECT_EQ(static_cast<float>(std::atan2(4.0, 3.0) * 57.29577951308232), lch[2]);
    EXPECT_EQ(8.0f, lch[3]);
    EXPECT_TRUE(lch.GetMeasureConditions() == conditions);
}

TEST(CalculatorLCh, FollowsTheFormulaAllRoundTheCircle)
{
    for (int step = 0; step < 24; ++step) {
        const double angle = (step * 15.0 + 7.0) * kPi / 180.0;
        const auto a = static_cast<float>(40.0 * std::cos(angle));
        const auto b = static_cast<float>(40.0 * std::sin(angle));
        QVColorVector lch;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(QVColorVector(50.0f, a, b, Conditions()), lch));
        const Triple expected = ExpectedPolar(50.0f, a, b);
        EXPECT_EQ(expected[1], lch[1]);
        EXPECT_EQ(expected[2], lch[2]);
        EXPECT_GT(lch[2], 0.0f);
        EXPECT_LE(lch[2], 360.0f);
        EXPECT_NEAR(step * 15.0 + 7.0, static_cast<double>(lch[2]), 1e-3);
    }
}

namespace {

float Hue(float a, float b)
{
    QVColorVector lch;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(QVColorVector(50.0f, a, b, Conditions()), lch));
    return lch[2];
}

} // namespace

TEST(CalculatorLCh, AchromaticColourHasHue360)
{
    EXPECT_EQ(360.0f, Hue(1e-6f, -1e-6f));
    EXPECT_EQ(360.0f, Hue(0.0f, 0.0f));
    EXPECT_EQ(360.0f, Hue(-9.9e-6f, 9.9e-6f));
    // The chroma is still computed.
    QVColorVector lch;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(QVColorVector(50.0f, 1e-6f, -1e-6f, Conditions()), lch));
    EXPECT_EQ(ExpectedPolar(50.0f, 1e-6f, -1e-6f)[1], lch[1]);
    EXPECT_NEAR(std::sqrt(2.0) * 1e-6, static_cast<double>(lch[1]), 1e-12);
}

TEST(CalculatorLCh, AtTheAchromaticLimitTheHueIsTheAngle)
{
    // 1e-5 as a float is not below the limit: the angle is taken.
    EXPECT_EQ(180.0f, Hue(-1e-5f, 0.0f));
    EXPECT_EQ(90.0f, Hue(0.0f, 1e-5f));
}

TEST(CalculatorLCh, PositiveAWithBZeroGives360)
{
    EXPECT_EQ(360.0f, Hue(1.0f, 0.0f));
    EXPECT_EQ(360.0f, Hue(25.0f, 0.0f));
}

TEST(CalculatorLCh, AxisDirectionsGive90And180And270)
{
    EXPECT_EQ(90.0f, Hue(0.0f, 1.0f));
    EXPECT_EQ(180.0f, Hue(-1.0f, 0.0f));
    EXPECT_EQ(270.0f, Hue(0.0f, -1.0f));
    // Negative zero for b turns atan2 to -180, which moves up to 180.
    EXPECT_EQ(180.0f, Hue(-1.0f, -0.0f));
    EXPECT_EQ(315.0f, Hue(1.0f, -1.0f));
}

TEST(CalculatorLCh, WorksForLABvqAndCIELuvVectorsToo)
{
    for (const char* space : {"LABvq", "CIELuv"}) {
        SCOPED_TRACE(space);
        const QVMeasureConditions conditions = WithSpace(Conditions("D50"), space);
        const QVColorVector input(70.0f, -12.0f, 5.0f, conditions);
        QVColorVector out;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(input, out));
        const Triple expected = ExpectedPolar(70.0f, -12.0f, 5.0f);
        EXPECT_EQ(70.0f, out[0]);
        EXPECT_EQ(13.0f, out[1]);
        EXPECT_EQ(expected[2], out[2]);
        EXPECT_EQ(space, Space(out));
        EXPECT_TRUE(out.GetMeasureConditions() == conditions);
    }
}

TEST(CalculatorLCh, FromASpectrumIsThePolarFormOfItsLab)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector lab;
    QVColorVector lch;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Greenish(), conditions), conditions, lab));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(Spectrum(Greenish(), conditions), conditions, lch));
    const Triple expected = ExpectedPolar(lab[0], lab[1], lab[2]);
    EXPECT_EQ(expected[0], lch[0]);
    EXPECT_EQ(expected[1], lch[1]);
    EXPECT_EQ(expected[2], lch[2]);
}

// ================================================================ Luv

TEST(CalculatorLuv, PerfectWhiteUnderD65GivesTheChromaticityNotZero)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector luv;
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELuv(Spectrum(Flat(1.0f), conditions), conditions, luv));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Flat(1.0f), conditions), conditions, lab));
    EXPECT_NEAR(0.1978, static_cast<double>(luv[1]), 1e-4);
    EXPECT_NEAR(0.4683, static_cast<double>(luv[2]), 1e-4);
    EXPECT_EQ(lab[0], luv[0]);
}

TEST(CalculatorLuv, ComponentsAreUPrimeAndVPrimeOfTheLibraryXYZ)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish(), Dark()}) {
        const QVMeasureConditions conditions = Conditions("A", "TenDegree");
        QVColorVector xyz;
        QVColorVector lab;
        QVColorVector luv;
        luv[3] = 4.0f;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(values, conditions), conditions, xyz));
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(values, conditions), conditions, lab));
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELuv(Spectrum(values, conditions), conditions, luv));
        const std::array<float, 2> expected = ExpectedUPrimeVPrime(Components(xyz));
        EXPECT_EQ(lab[0], luv[0]);
        EXPECT_EQ(expected[0], luv[1]);
        EXPECT_EQ(expected[1], luv[2]);
        EXPECT_EQ(4.0f, luv[3]);
        EXPECT_TRUE(luv.GetMeasureConditions() == xyz.GetMeasureConditions());
    }
}

TEST(CalculatorLuv, ZeroSpectrumTakesTheFlatSpectrumsChromaticity)
{
    const QVMeasureConditions conditions = Conditions("D50");
    QVColorVector flat;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(1e-5f), conditions), conditions, flat));
    QVColorVector luv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELuv(Spectrum(Flat(0.0f), conditions), conditions, luv));
    const std::array<float, 2> expected = ExpectedUPrimeVPrime(Components(flat));
    EXPECT_EQ(0.0f, luv[0]);
    EXPECT_EQ(expected[0], luv[1]);
    EXPECT_EQ(expected[1], luv[2]);
    EXPECT_FALSE(std::isnan(luv[1]));
}

TEST(CalculatorLuv, LChuvIsThePolarFormOfLuv)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector luv;
    QVColorVector lchuv;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELuv(Spectrum(Bluish(), conditions), conditions, luv));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_uv(Spectrum(Bluish(), conditions), conditions, lchuv));
    const Triple expected = ExpectedPolar(luv[0], luv[1], luv[2]);
    EXPECT_EQ(expected[0], lchuv[0]);
    EXPECT_EQ(expected[1], lchuv[1]);
    EXPECT_EQ(expected[2], lchuv[2]);
    EXPECT_TRUE(lchuv.GetMeasureConditions() == luv.GetMeasureConditions());
}

// ================================================================ Hunter Lab

namespace {

Triple ExpectedHunter(const Triple& xyz, const Triple& white)
{
    const double x = xyz[0];
    const double y = xyz[1];
    const double z = xyz[2];
    auto root = static_cast<float>(std::sqrt(y));
    if (static_cast<double>(root) < 0.0001) {
        root = 1e-4f;
    }
    const double q = root;
    return {static_cast<float>(10.0 * q),
            static_cast<float>((100.0 / static_cast<double>(white[0]) * x - y) * 17.5 / q),
            static_cast<float>((y - 100.0 / static_cast<double>(white[2]) * z) * 7.0 / q)};
}

} // namespace

TEST(CalculatorHunterLab, FollowsTheFormulaAgainstTheWhiteOfTheConditions)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish(), Dark(), Flat(1.0f)}) {
        const QVMeasureConditions conditions = Conditions("D65", "TenDegree");
        QVColorVector xyz;
        QVColorVector white;
        QVColorVector hunter;
        hunter[3] = 1.5f;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(values, conditions), conditions, xyz));
        ASSERT_TRUE(TestAccess::GetNormValence(conditions, white));
        ASSERT_TRUE(CMetryCalculator::GetVector_HunterLab(Spectrum(values, conditions), conditions, hunter));
        const Triple expected = ExpectedHunter(Components(xyz), Components(white));
        EXPECT_EQ(expected[0], hunter[0]);
        EXPECT_EQ(expected[1], hunter[1]);
        EXPECT_EQ(expected[2], hunter[2]);
        EXPECT_EQ(1.5f, hunter[3]);
        EXPECT_TRUE(hunter.GetMeasureConditions() == xyz.GetMeasureConditions());
    }
}

TEST(CalculatorHunterLab, ZeroSpectrumUsesQOf1eMinus4)
{
    QVColorVector hunter;
    ASSERT_TRUE(CMetryCalculator::GetVector_HunterLab(Spectrum(Flat(0.0f)), Conditions(), hunter));
    EXPECT_EQ(static_cast<float>(10.0 * static_cast<double>(1e-4f)), hunter[0]);
    EXPECT_EQ(0.0f, hunter[1]);
    EXPECT_EQ(0.0f, hunter[2]);
}

TEST(CalculatorHunterLab, TinyYAlsoUsesQOf1eMinus4)
{
    // Y about 3e-10: its root, under 2e-5, is below the floor.
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector xyz;
    QVColorVector white;
    QVColorVector hunter;
    const Values tiny = Scaled(Reddish(), 1e-11f);
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(tiny, conditions), conditions, xyz));
    ASSERT_LT(std::sqrt(static_cast<double>(xyz[1])), 0.0001);
    ASSERT_TRUE(TestAccess::GetNormValence(conditions, white));
    ASSERT_TRUE(CMetryCalculator::GetVector_HunterLab(Spectrum(tiny, conditions), conditions, hunter));
    const Triple expected = ExpectedHunter(Components(xyz), Components(white));
    EXPECT_EQ(static_cast<float>(10.0 * static_cast<double>(1e-4f)), hunter[0]);
    EXPECT_EQ(expected[1], hunter[1]);
    EXPECT_EQ(expected[2], hunter[2]);
}

// ================================================================ Rx Ry Rz

TEST(CalculatorRxRyRz, SplitsXIntoItsShortWavelengthLobeAndTheRest)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish()}) {
        const QVMeasureConditions conditions = Conditions("D50", "TwoDegree");
        QVColorVector xyz;
        QVColorVector white;
        QVColorVector r;
        r[3] = 2.5f;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(values, conditions), conditions, xyz));
        ASSERT_TRUE(TestAccess::GetNormValence(conditions, white));
        ASSERT_TRUE(CMetryCalculator::GetVector_RxRyRz(Spectrum(values, conditions), conditions, r));
        const Weightfactors* factors = TestAccess::SharedWeightfactors();
        ASSERT_NE(nullptr, factors);
        // The lobe of x-bar from 380 to 500 nm: points 0 to 12.
        float lobe = 0.0f;
        for (std::size_t point = 0; point <= 12; ++point) {
            lobe += (*factors)[0][point];
        }
        const double t = static_cast<double>(lobe) / 100.0;
        const double u = static_cast<double>(white[0]) / 100.0 - t;
        const double zWhite = static_cast<double>(white[2]) / 100.0;
        const double x = xyz[0];
        const double z = xyz[2];
        EXPECT_EQ(static_cast<float>(x / u - (t * z) / (u * zWhite)), r[0]);
        EXPECT_EQ(xyz[1], r[1]);
        EXPECT_EQ(static_cast<float>(z / zWhite), r[2]);
        EXPECT_EQ(2.5f, r[3]);
        EXPECT_TRUE(r.GetMeasureConditions() == xyz.GetMeasureConditions());
    }
}

TEST(CalculatorRxRyRz, PerfectWhiteGivesAbout100OnEachAxis)
{
    QVColorVector r;
    ASSERT_TRUE(CMetryCalculator::GetVector_RxRyRz(Spectrum(Flat(1.0f)), Conditions("D65"), r));
    EXPECT_NEAR(100.0, static_cast<double>(r[0]), 1e-3);
    EXPECT_NEAR(100.0, static_cast<double>(r[1]), 1e-3);
    EXPECT_NEAR(100.0, static_cast<double>(r[2]), 1e-3);
}

// ================================================================ vq

// L exactly 16 takes the logarithmic branch; a spectrum cannot be made to
// land on it, so the two branches are shown on a dark and a light sample.
TEST(CalculatorLCHvq, DarkSampleTakesTheLinearLightness)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector lch;
    QVColorVector vq;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(Spectrum(Dark(), conditions), conditions, lch));
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq(Spectrum(Dark(), conditions), conditions, vq));
    ASSERT_LT(lch[0], 16.0f);
    const Triple expected = ExpectedLCHvq(Components(lch));
    EXPECT_EQ(static_cast<float>(static_cast<double>(lch[0]) / static_cast<double>(0.511f)), vq[0]);
    EXPECT_EQ(expected[0], vq[0]);
    EXPECT_EQ(expected[1], vq[1]);
    EXPECT_EQ(expected[2], vq[2]);
    EXPECT_TRUE(vq.GetMeasureConditions() == lch.GetMeasureConditions());
}

TEST(CalculatorLCHvq, LightSamplesTakeTheLogarithmicLightness)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish()}) {
        const QVMeasureConditions conditions = Conditions("D50", "TenDegree");
        QVColorVector lch;
        QVColorVector vq;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(Spectrum(values, conditions), conditions, lch));
        ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq(Spectrum(values, conditions), conditions, vq));
        ASSERT_GE(lch[0], 16.0f);
        const Triple expected = ExpectedLCHvq(Components(lch));
        EXPECT_EQ(expected[0], vq[0]);
        EXPECT_EQ(expected[1], vq[1]);
        EXPECT_EQ(expected[2], vq[2]);
    }
}

// The hue series maps 0 to 360 degrees onto 0 to 360 degrees; an achromatic
// colour (hue 360) stays at 360 and is not wrapped to 0. A black sample is
// achromatic (a grey one is not quite: its a and b are rounding residues of
// about 1e-4, above the 1e-5 limit).
TEST(CalculatorLCHvq, AchromaticHueStaysAt360)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector lch;
    QVColorVector vq;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(Spectrum(Flat(0.0f), conditions), conditions, lch));
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq(Spectrum(Flat(0.0f), conditions), conditions, vq));
    ASSERT_EQ(360.0f, lch[2]);
    const Triple expected = ExpectedLCHvq(Components(lch));
    EXPECT_EQ(0.0f, vq[0]);
    EXPECT_EQ(expected[1], vq[1]);
    EXPECT_EQ(expected[2], vq[2]);
    EXPECT_NEAR(360.0, static_cast<double>(vq[2]), 1e-3);
    // Chroma 0 maps to 12.253 log(0.638) + 5.50671, just below 0.
    EXPECT_NEAR(12.253 * std::log(0.638) + 5.50671, static_cast<double>(vq[1]), 1e-5);
}

// The constants round differently as float and as double only in the last
// digits, so the lightness rule is checked on a fine grey scale through both
// branches and the hue series on humps and notches all round the circle.
TEST(CalculatorLCHvq, FollowsTheFormulaOnAGreyScale)
{
    const QVMeasureConditions conditions = Conditions("D65");
    int dark = 0;
    int light = 0;
    for (int level = 1; level <= 1000; ++level) {
        const Values values = Flat(static_cast<float>(level) * 0.001f);
        QVColorVector lch;
        QVColorVector vq;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(Spectrum(values, conditions), conditions, lch));
        ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq(Spectrum(values, conditions), conditions, vq));
        const Triple expected = ExpectedLCHvq(Components(lch));
        ASSERT_EQ(expected[0], vq[0]) << "level " << level;
        ASSERT_EQ(expected[1], vq[1]) << "level " << level;
        ASSERT_EQ(expected[2], vq[2]) << "level " << level;
        (lch[0] < 16.0f ? dark : light) += 1;
    }
    EXPECT_GT(dark, 10);
    EXPECT_GT(light, 10);
}

TEST(CalculatorLCHvq, FollowsTheFormulaAllRoundTheHueCircle)
{
    const QVMeasureConditions conditions = Conditions("D50", "TenDegree");
    for (int centre = 0; centre < 36; ++centre) {
        for (float width : {2.5f, 4.0f, 7.0f}) {
            for (bool notch : {false, true}) {
                Values values{};
                for (std::size_t i = 0; i < 36; ++i) {
                    const float d = (static_cast<float>(i) - static_cast<float>(centre)) / width;
                    const auto hump = static_cast<float>(std::exp(-static_cast<double>(d * d)));
                    values[i] = notch ? 0.9f - 0.8f * hump : 0.05f + 0.8f * hump;
                }
                QVColorVector lch;
                QVColorVector vq;
                ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(Spectrum(values, conditions), conditions, lch));
                ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq(Spectrum(values, conditions), conditions, vq));
                const Triple expected = ExpectedLCHvq(Components(lch));
                ASSERT_EQ(expected[0], vq[0]) << "centre " << centre << " width " << width;
                ASSERT_EQ(expected[1], vq[1]) << "centre " << centre << " width " << width;
                ASSERT_EQ(expected[2], vq[2]) << "centre " << centre << " width " << width;
            }
        }
    }
}

TEST(CalculatorLABvq, IsThePolarToRectangularFormOfLCHvq)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish(), Dark()}) {
        const QVMeasureConditions conditions = Conditions("D65");
        QVColorVector vq;
        QVColorVector rectangular;
        rectangular[3] = 3.5f;
        ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq(Spectrum(values, conditions), conditions, vq));
        ASSERT_TRUE(CMetryCalculator::GetVector_LABvq(Spectrum(values, conditions), conditions, rectangular));
        const double angle = static_cast<double>(vq[2]) * kPi / 180.0;
        EXPECT_EQ(vq[0], rectangular[0]);
        EXPECT_EQ(static_cast<float>(static_cast<double>(vq[1]) * std::cos(angle)), rectangular[1]);
        EXPECT_EQ(static_cast<float>(static_cast<double>(vq[1]) * std::sin(angle)), rectangular[2]);
        EXPECT_EQ(3.5f, rectangular[3]);
        EXPECT_TRUE(rectangular.GetMeasureConditions() == vq.GetMeasureConditions());
    }
}

// ================================================================ delta vectors

namespace {

QVColorVector Vector(float first, float second, float third, const char* space = "CIELab")
{
    return QVColorVector(first, second, third, WithSpace(Conditions(), space));
}

void ExpectTriple(const Triple& expected, const QVColorVector& actual)
{
    EXPECT_EQ(expected[0], actual[0]);
    EXPECT_EQ(expected[1], actual[1]);
    EXPECT_EQ(expected[2], actual[2]);
}

} // namespace

TEST(DeltaVectorLCH, LabDifferenceFollowsTheFormula)
{
    const QVColorVector first = Vector(50.0f, 10.0f, 20.0f);
    const QVColorVector second = Vector(40.0f, 20.0f, 10.0f);
    QVColorVector delta;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, delta));
    ExpectTriple(ExpectedDelta(first, second, true), delta);
    EXPECT_EQ(10.0f, delta[0]);
    // Equal chroma: the whole difference in a and b is hue.
    EXPECT_NEAR(0.0, static_cast<double>(delta[1]), 1e-6);
    EXPECT_NEAR(std::sqrt(200.0), static_cast<double>(delta[2]), 1e-5);
}

TEST(DeltaVectorLCH, CrossProductAboveZeroMakesDeltaHNegative)
{
    // a1 b2 - a2 b1 = 10 * 10 - 20 * 20 < 0: delta H positive.
    const QVColorVector first = Vector(50.0f, 10.0f, 20.0f);
    const QVColorVector second = Vector(45.0f, 20.0f, 10.0f);
    QVColorVector delta;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, delta));
    EXPECT_GT(delta[2], 0.0f);
    ExpectTriple(ExpectedDelta(first, second, true), delta);

    // Swapped, a1 b2 - a2 b1 = 300 > 0: delta H negative, delta L too.
    QVColorVector swapped;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(second, first, swapped));
    EXPECT_LT(swapped[2], 0.0f);
    EXPECT_EQ(-delta[2], swapped[2]);
    EXPECT_EQ(-delta[0], swapped[0]);
    ExpectTriple(ExpectedDelta(second, first, true), swapped);
}

TEST(DeltaVectorLCH, SignRuleHoldsForAllThreeOperations)
{
    const QVColorVector first = Vector(60.0f, -15.0f, 30.0f, "LABvq");
    const QVColorVector second = Vector(55.0f, 25.0f, 5.0f, "LABvq");
    // a1 b2 - a2 b1 = -75 - 750 < 0.
    QVColorVector ab;
    QVColorVector vq;
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, ab));
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(first, second, vq));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(first, second, uv));
    EXPECT_GT(ab[2], 0.0f);
    EXPECT_GT(vq[2], 0.0f);
    EXPECT_GT(uv[2], 0.0f);
    QVColorVector vqSwapped;
    QVColorVector uvSwapped;
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(second, first, vqSwapped));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(second, first, uvSwapped));
    EXPECT_LT(vqSwapped[2], 0.0f);
    EXPECT_LT(uvSwapped[2], 0.0f);
    ExpectTriple(ExpectedDelta(second, first, false), vqSwapped);
    ExpectTriple(ExpectedDelta(second, first, false), uvSwapped);
}

TEST(DeltaVectorLCH, IdenticalVectorsGiveZero)
{
    // Chroma 5 is exact in float, so both precisions agree.
    const QVColorVector colour = Vector(42.0f, 3.0f, -4.0f);
    QVColorVector ab;
    QVColorVector vq;
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(colour, colour, ab));
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(colour, colour, vq));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(colour, colour, uv));
    for (const QVColorVector* delta : {&ab, &vq, &uv}) {
        EXPECT_EQ(0.0f, (*delta)[0]);
        EXPECT_EQ(0.0f, (*delta)[1]);
        EXPECT_EQ(0.0f, (*delta)[2]);
    }
}

// With a chroma that is not a float, the Lab difference subtracts the
// second chroma rounded to float from the first in double: identical
// vectors then differ by that rounding in delta C, and delta H takes the
// same amount through the fabs. The float variants give 0.
TEST(DeltaVectorLCH, IdenticalVectorsWithAnInexactChromaDifferByItsRounding)
{
    const QVColorVector colour = Vector(42.0f, 10.0f, 20.0f);
    QVColorVector ab;
    QVColorVector vq;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(colour, colour, ab));
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(colour, colour, vq));
    const double chroma = std::sqrt(500.0);
    const auto rounding = static_cast<float>(chroma - static_cast<double>(static_cast<float>(chroma)));
    ASSERT_NE(0.0f, rounding);
    EXPECT_EQ(0.0f, ab[0]);
    EXPECT_EQ(rounding, ab[1]);
    EXPECT_EQ(std::fabs(rounding), ab[2]);
    ExpectTriple(ExpectedDelta(colour, colour, true), ab);
    EXPECT_EQ(0.0f, vq[0]);
    EXPECT_EQ(0.0f, vq[1]);
    EXPECT_EQ(0.0f, vq[2]);
}

TEST(DeltaVectorLCH, OutputTakesTheFirstVectorsConditions)
{
    const QVMeasureConditions firstConditions = WithSpace(Conditions("A", "TenDegree"), "LCHvq");
    const QVColorVector first(50.0f, 10.0f, 20.0f, firstConditions);
    const QVColorVector second(40.0f, 5.0f, 25.0f, WithSpace(Conditions("D65", "TwoDegree"), "CIELCh"));
    QVColorVector delta(1.0f, 1.0f, 1.0f, WithSpace(Conditions("D50"), "CIEXYZ"));
    delta[3] = 7.0f;
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(first, second, delta));
    EXPECT_TRUE(delta.GetMeasureConditions() == firstConditions);
    EXPECT_EQ(7.0f, delta[3]);
    QVColorVector other;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, other));
    EXPECT_TRUE(other.GetMeasureConditions() == firstConditions);
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(first, second, other));
    EXPECT_TRUE(other.GetMeasureConditions() == firstConditions);
}

// The difference's length counts all four components, so a difference in
// component 3 shows up in delta H.
TEST(DeltaVectorLCH, ComponentThreeEntersDeltaHThroughTheLength)
{
    QVColorVector first = Vector(50.0f, 3.0f, 4.0f);
    const QVColorVector second = Vector(50.0f, 3.0f, 4.0f);
    first[3] = 3.0f;
    QVColorVector delta;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, delta));
    EXPECT_EQ(0.0f, delta[0]);
    EXPECT_EQ(0.0f, delta[1]);
    EXPECT_EQ(3.0f, delta[2]);
}

TEST(DeltaVectorChroma, OnlyTheLabDifferenceKeepsTheFirstChromaInDouble)
{
    // First chroma sqrt(500) = 22.3606797750; second 21.36 (as a float).
    // The difference, about 1.0007, has a finer step than the rounding of
    // the first chroma, so the two precisions differ in delta C.
    const QVColorVector first = Vector(50.0f, 10.0f, 20.0f);
    const QVColorVector second = Vector(48.0f, 21.36f, 0.0f);
    const Triple inDouble = ExpectedDelta(first, second, true);
    const Triple inFloat = ExpectedDelta(first, second, false);
    ASSERT_NE(inDouble[1], inFloat[1]);

    QVColorVector ab;
    QVColorVector vq;
    QVColorVector uv;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, ab));
    ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(first, second, vq));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(first, second, uv));
    ExpectTriple(inDouble, ab);
    ExpectTriple(inFloat, vq);
    ExpectTriple(inFloat, uv);
    EXPECT_NE(ab[1], vq[1]);
    EXPECT_EQ(static_cast<float>(std::sqrt(500.0) - static_cast<double>(21.36f)), ab[1]);
    EXPECT_EQ(static_cast<float>(std::sqrt(500.0)) - 21.36f, vq[1]);
}

TEST(DeltaVectorChroma, EachOperationFollowsItsOwnFormulaOnManyPairs)
{
    for (int i = 0; i < 40; ++i) {
        const auto a1 = static_cast<float>(std::cos(i * 0.37) * (10.0 + i));
        const auto b1 = static_cast<float>(std::sin(i * 0.53) * (12.0 + i));
        const auto a2 = static_cast<float>(std::sin(i * 0.71) * (8.0 + 0.5 * i));
        const auto b2 = static_cast<float>(std::cos(i * 0.29) * (15.0 - 0.2 * i));
        const QVColorVector first = Vector(40.0f + static_cast<float>(i) * 0.7f, a1, b1);
        const QVColorVector second = Vector(55.0f - static_cast<float>(i) * 0.3f, a2, b2);
        QVColorVector ab;
        QVColorVector vq;
        QVColorVector uv;
        ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, ab));
        ASSERT_TRUE(CMetryCalculator::GetVector_LCHvq_delta(first, second, vq));
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELCH_uv(first, second, uv));
        ExpectTriple(ExpectedDelta(first, second, true), ab);
        ExpectTriple(ExpectedDelta(first, second, false), vq);
        ExpectTriple(ExpectedDelta(first, second, false), uv);
    }
}

// ================================================================ in place

// A conversion from a vector may write into that same vector: it reads its
// input completely before it writes.
TEST(CalculatorInPlace, VectorConversionsMayWriteIntoTheirInput)
{
    const QVMeasureConditions xyzConditions = WithSpace(Conditions("D50", "TenDegree"), "CIEXYZ");
    const QVColorVector xyz(41.24f, 21.26f, 1.93f, xyzConditions);
    const QVColorVector lab(50.0f, 20.0f, -30.0f, Conditions("D65"));

    using Conversion = bool (*)(const QVColorVector&, QVColorVector&);
    const struct {
        Conversion conversion;
        const QVColorVector* input;
    } cases[] = {
        {CMetryCalculator::GetVector_CIELab, &xyz},       {CMetryCalculator::GetVector_CIExyY, &xyz},
        {CMetryCalculator::GetVector_CIEuvY1976, &xyz},   {CMetryCalculator::GetVector_CIEuvY1960, &xyz},
        {CMetryCalculator::GetVector_CIEXYZ, &lab},       {CMetryCalculator::GetVector_CIELCh_ab, &lab},
        {CMetryCalculator::GetVector_CIELab_RGB, &lab},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        QVColorVector separate = *cases[i].input;
        ASSERT_TRUE(cases[i].conversion(*cases[i].input, separate));
        QVColorVector inPlace = *cases[i].input;
        ASSERT_TRUE(cases[i].conversion(inPlace, inPlace));
        EXPECT_EQ(separate, inPlace);
    }
}

TEST(CalculatorInPlace, DeltaVectorsMayWriteIntoEitherInput)
{
    const QVColorVector first = Vector(50.0f, 10.0f, 20.0f);
    const QVColorVector second = Vector(48.0f, 21.36f, 3.0f);
    QVColorVector separate;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, second, separate));
    QVColorVector intoFirst = first;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(intoFirst, second, intoFirst));
    EXPECT_EQ(separate, intoFirst);
    QVColorVector intoSecond = second;
    ASSERT_TRUE(CMetryCalculator::GetVector_DeltaCIELCH_ab(first, intoSecond, intoSecond));
    EXPECT_EQ(Components(separate), Components(intoSecond));
    EXPECT_TRUE(intoSecond.GetMeasureConditions() == first.GetMeasureConditions());
}

// ================================================================ RGB

TEST(RGBFromLab, PerfectWhiteUnderD65Gives255)
{
    const QVMeasureConditions conditions = Conditions("D65");
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Flat(1.0f), conditions), conditions, lab));
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(lab, xyz));
    const Triple expected = ExpectedRGB(Components(xyz));
    // The matrix gives linear values just above 1 for this white.
    EXPECT_EQ((Triple{255.0f, 255.0f, 255.0f}), expected);
    QVColorVector rgb;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, rgb));
    ExpectTriple(expected, rgb);
    EXPECT_EQ("RGB", Space(rgb));
}

TEST(RGBFromLab, BlackGivesZero)
{
    QVColorVector rgb(9.0f, 9.0f, 9.0f, Conditions());
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(Vector(0.0f, 0.0f, 0.0f), rgb));
    EXPECT_EQ(0.0f, rgb[0]);
    EXPECT_EQ(0.0f, rgb[1]);
    EXPECT_EQ(0.0f, rgb[2]);
}

TEST(RGBFromLab, ColoursFollowTheMatrixAndTheTable)
{
    for (const Triple& values : {Triple{50.0f, 20.0f, -30.0f}, Triple{70.0f, -40.0f, 50.0f}, Triple{30.0f, 45.0f, 25.0f},
                                 Triple{85.0f, 2.0f, 10.0f}, Triple{10.0f, 0.0f, 0.0f}}) {
        const QVColorVector lab(values[0], values[1], values[2], Conditions("D65"));
        QVColorVector xyz;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(lab, xyz));
        const Triple expected = ExpectedRGB(Components(xyz));
        QVColorVector rgb;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, rgb));
        ExpectTriple(expected, rgb);
        for (short axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(std::floor(rgb[axis]), rgb[axis]);
            EXPECT_GE(rgb[axis], 0.0f);
            EXPECT_LE(rgb[axis], 255.0f);
        }
    }
}

TEST(RGBFromLab, OnlyTheOutputsColourSpaceChanges)
{
    const QVColorVector lab(50.0f, 20.0f, -30.0f, Conditions("D65", "TwoDegree"));
    QVMeasureConditions outputConditions = Conditions("A", "TenDegree", "Paper");
    Set(outputConditions, "Physical.Filter", "Polarizer");
    QVColorVector rgb(1.0f, 2.0f, 3.0f, outputConditions);
    rgb[3] = 4.0f;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, rgb));
    EXPECT_EQ("RGB", Space(rgb));
    EXPECT_EQ("TenDegree", Condition(rgb, "Colorimetric.Observer"));
    EXPECT_EQ("A", Condition(rgb, "Colorimetric.Illumination"));
    EXPECT_EQ("Paper", Condition(rgb, "Colorimetric.WhiteBase"));
    EXPECT_EQ("Polarizer", Condition(rgb, "Physical.Filter"));
    EXPECT_TRUE(rgb.GetMeasureConditions() == WithSpace(outputConditions, "RGB"));
    EXPECT_EQ(4.0f, rgb[3]);
}

TEST(RGBFromLab, LookupTableFlagStaysFalse)
{
    EXPECT_FALSE(CMetryCalculator::bsLookUpTableCreated);
    QVColorVector rgb;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(Vector(50.0f, 0.0f, 0.0f), rgb));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(Vector(60.0f, 10.0f, 0.0f), rgb));
    EXPECT_FALSE(CMetryCalculator::bsLookUpTableCreated);
}

TEST(RGBFromSpectrum, EqualsLabUnderTheOutputsConditionsThenRGB)
{
    for (const Values& values : {Reddish(), Greenish(), Bluish(), Flat(1.0f)}) {
        QVMeasureConditions outputConditions = WithSpace(Conditions("D50", "TenDegree"), "RGB");
        QVColorVector viaRGB(0.0f, 0.0f, 0.0f, outputConditions);
        ASSERT_TRUE(CMetryCalculator::GetVector_RGB(Spectrum(values, Conditions("A")), viaRGB));

        QVColorVector lab;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(values, Conditions("A")),
                                                       WithSpace(outputConditions, "CIELab"), lab));
        EXPECT_EQ("D50", Condition(lab, "Colorimetric.Illumination"));
        QVColorVector twoSteps(0.0f, 0.0f, 0.0f, outputConditions);
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, twoSteps));
        EXPECT_EQ(twoSteps, viaRGB);
    }
}

TEST(RGBFromSpectrum, FailsWithPaperBaseAndNoPaperWhite)
{
    TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>());
    QVColorVector rgb(1.0f, 2.0f, 3.0f, WithSpace(Conditions("D65", "TwoDegree", "Paper"), "RGB"));
    const QVColorVector before = rgb;
    EXPECT_FALSE(CMetryCalculator::GetVector_RGB(Spectrum(Reddish()), rgb));
    EXPECT_EQ(before, rgb);
}

TEST(RGBTable, OneAndAboveGive255AndZeroAndBelowGive0)
{
    CMetry::CreateLookupTableRGB();
    float out[3] = {-1.0f, -1.0f, -1.0f};
    const float high[3] = {1.0f, 2.0f, 1000.0f};
    CMetry::LookupRGB(out, high);
    EXPECT_EQ(255.0f, out[0]);
    EXPECT_EQ(255.0f, out[1]);
    EXPECT_EQ(255.0f, out[2]);
    const float low[3] = {0.0f, -0.5f, -1e-30f};
    CMetry::LookupRGB(out, low);
    EXPECT_EQ(0.0f, out[0]);
    EXPECT_EQ(0.0f, out[1]);
    EXPECT_EQ(0.0f, out[2]);
}

TEST(RGBTable, EveryEntryGivesHalfItsIndexAndJustBelowItTheEntryBefore)
{
    CMetry::CreateLookupTableRGB();
    for (int i = 1; i <= 510; ++i) {
        SCOPED_TRACE(i);
        const float entry = TableEntry(i);
        const float below = std::nextafter(entry, 0.0f);
        ASSERT_LT(TableEntry(i - 1), entry);
        const float atEntry[3] = {entry, entry, entry};
        const float belowEntry[3] = {below, below, below};
        float out[3] = {};
        CMetry::LookupRGB(out, atEntry);
        EXPECT_EQ(static_cast<float>(i / 2), out[0]);
        EXPECT_EQ(static_cast<float>(i / 2), out[1]);
        EXPECT_EQ(static_cast<float>(i / 2), out[2]);
        CMetry::LookupRGB(out, belowEntry);
        EXPECT_EQ(static_cast<float>((i - 1) / 2), out[0]);
        EXPECT_EQ(static_cast<float>((i - 1) / 2), out[2]);
    }
}

TEST(RGBTable, ValueBetweenTwoEntriesGivesTheLowerIndexHalved)
{
    CMetry::CreateLookupTableRGB();
    // Between entries 203 and 204: index 203, level 101.
    const auto between =
        static_cast<float>((static_cast<double>(TableEntry(203)) + static_cast<double>(TableEntry(204))) / 2.0);
    ASSERT_LT(TableEntry(203), between);
    ASSERT_LT(between, TableEntry(204));
    const float in[3] = {between, between, between};
    float out[3] = {};
    CMetry::LookupRGB(out, in);
    EXPECT_EQ(101.0f, out[0]);
    EXPECT_EQ(101.0f, out[1]);
    EXPECT_EQ(101.0f, out[2]);
    // Level 0.5 (entry 1) still truncates to 0.
    const float first[3] = {TableEntry(1), TableEntry(1), TableEntry(1)};
    CMetry::LookupRGB(out, first);
    EXPECT_EQ(0.0f, out[0]);
}

TEST(RGBSearch, GivesTheLastEntryNotAboveTheValueAndMinusOneBelowTheFirst)
{
    const float table[8] = {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f};
    EXPECT_EQ(-1, CMetry::SearchRGB(-0.5f, table, 8));
    EXPECT_EQ(0, CMetry::SearchRGB(0.0f, table, 8));
    EXPECT_EQ(0, CMetry::SearchRGB(0.5f, table, 8));
    EXPECT_EQ(1, CMetry::SearchRGB(1.0f, table, 8));
    EXPECT_EQ(3, CMetry::SearchRGB(3.0f, table, 8));
    EXPECT_EQ(3, CMetry::SearchRGB(3.99f, table, 8));
    EXPECT_EQ(4, CMetry::SearchRGB(4.0f, table, 8));
    EXPECT_EQ(5, CMetry::SearchRGB(5.5f, table, 8));
    EXPECT_EQ(6, CMetry::SearchRGB(6.0f, table, 8));
    EXPECT_EQ(6, CMetry::SearchRGB(6.9f, table, 8));
}

// The bisection never reaches the top entry: a value at or above it gives
// the index before it.
TEST(RGBSearch, TopEntryIsNeverReturned)
{
    const float table[8] = {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f};
    EXPECT_EQ(6, CMetry::SearchRGB(7.0f, table, 8));
    EXPECT_EQ(6, CMetry::SearchRGB(100.0f, table, 8));
}

TEST(RGBSearch, WorksOnATableNotStartingAtZero)
{
    const float table[5] = {10.0f, 20.0f, 30.0f, 40.0f, 50.0f};
    EXPECT_EQ(-1, CMetry::SearchRGB(9.0f, table, 5));
    EXPECT_EQ(0, CMetry::SearchRGB(10.0f, table, 5));
    EXPECT_EQ(1, CMetry::SearchRGB(29.0f, table, 5));
    EXPECT_EQ(2, CMetry::SearchRGB(30.0f, table, 5));
    EXPECT_EQ(3, CMetry::SearchRGB(45.0f, table, 5));
    EXPECT_EQ(3, CMetry::SearchRGB(60.0f, table, 5));
}

// ================================================================ paper white

TEST_F(PaperWhiteMissing, XYZWithPaperWhiteBaseFailsAndLeavesTheOutput)
{
    QVColorVector out(1.0f, 2.0f, 3.0f, WithSpace(Conditions("A", "TenDegree"), "CIEXYZ"));
    out[3] = 4.0f;
    const QVColorVector before = out;
    EXPECT_FALSE(
        CMetryCalculator::GetVector_CIEXYZ(Spectrum(Reddish()), Conditions("D65", "TwoDegree", "Paper"), out));
    EXPECT_EQ(before, out);
}

TEST_F(PaperWhiteMissing, LabWithPaperWhiteBaseFailsAndLeavesTheOutput)
{
    QVColorVector out(1.0f, 2.0f, 3.0f, Conditions("A", "TenDegree"));
    out[3] = 4.0f;
    const QVColorVector before = out;
    EXPECT_FALSE(
        CMetryCalculator::GetVector_CIELab(Spectrum(Reddish()), Conditions("D65", "TwoDegree", "Paper"), out));
    EXPECT_EQ(before, out);
}

TEST_F(PaperWhiteMissing, EveryOperationOnASpectrumFailsAndLeavesTheOutput)
{
    using Operation = bool (*)(const QVSpectrum&, const QVMeasureConditions&, QVColorVector&);
    const Operation operations[] = {
        CMetryCalculator::GetVector_CIExyY,  CMetryCalculator::GetVector_CIELCh_ab,
        CMetryCalculator::GetVector_LCHvq,   CMetryCalculator::GetVector_LABvq,
        CMetryCalculator::GetVector_CIELuv,  CMetryCalculator::GetVector_CIELCh_uv,
        CMetryCalculator::GetVector_HunterLab, CMetryCalculator::GetVector_RxRyRz,
    };
    const QVMeasureConditions paper = Conditions("D65", "TwoDegree", "Paper");
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        SCOPED_TRACE(i);
        QVColorVector out(1.0f, 2.0f, 3.0f, Conditions("A", "TenDegree"));
        const QVColorVector before = out;
        EXPECT_FALSE(operations[i](Spectrum(Greenish()), paper, out));
        EXPECT_EQ(before, out);
    }
}

TEST_F(PaperWhiteMissing, GetPaperWhiteRaisesNullpointer)
{
    EXPECT_EQ("Failed to dereference nullpointer.",
              FailureText<ExceptionNullpointer>([] { static_cast<void>(TestAccess::GetPaperWhite()); }));
}

TEST_F(PaperWhiteMissing, BasingASpectrumFailsAndLeavesIt)
{
    QVSpectrum spectrum = Spectrum(Bluish());
    const QVSpectrum before = spectrum;
    EXPECT_FALSE(TestAccess::GetSpecBasedToPapWhite(spectrum));
    EXPECT_EQ(before, spectrum);
    float values[36];
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = Bluish()[i];
    }
    EXPECT_FALSE(TestAccess::GetSpecBasedToPapWhite(Conditions(), values));
    for (std::size_t i = 0; i < 36; ++i) {
        EXPECT_EQ(Bluish()[i], values[i]);
    }
}

TEST_F(PaperWhiteMissing, AnEmptySampleCannotBaseASpectrum)
{
    const PaperWhiteInstalled installed{QVSample()};
    QVSpectrum spectrum = Spectrum(Bluish());
    const QVSpectrum before = spectrum;
    EXPECT_FALSE(TestAccess::GetSpecBasedToPapWhite(spectrum));
    EXPECT_EQ(before, spectrum);
    QVColorVector out;
    const QVColorVector outBefore = out;
    EXPECT_FALSE(CMetryCalculator::GetVector_CIEXYZ(spectrum, Conditions("D65", "TwoDegree", "Paper"), out));
    EXPECT_EQ(outBefore, out);
}

TEST_F(PaperWhiteValidity, FalseWithoutASample)
{
    EXPECT_FALSE(TestAccess::IsPaperWhiteValid(Conditions()));
}

TEST_F(PaperWhiteValidity, FalseWithAnEmptySample)
{
    const PaperWhiteInstalled installed{QVSample()};
    EXPECT_FALSE(TestAccess::IsPaperWhiteValid(Conditions()));
}

TEST_F(PaperWhiteValidity, FalseWithASpectrumOfZeros)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(Flat(0.0f)))};
    EXPECT_FALSE(TestAccess::IsPaperWhiteValid(Conditions()));
}

TEST_F(PaperWhiteValidity, TrueWithAValidSpectrum)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    EXPECT_TRUE(TestAccess::IsPaperWhiteValid(Conditions()));
    EXPECT_TRUE(TestAccess::IsPaperWhiteValid(Conditions("A", "TenDegree", "Paper")));
    EXPECT_EQ(Spectrum(PaperValues()), FirstSpectrum(TestAccess::GetPaperWhite()));
}

TEST_F(PaperWhiteBasing, SpectrumEqualToThePaperWhiteGivesThePerfectWhite)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    QVColorVector based;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(PaperValues()), Conditions("D65", "TwoDegree", "Paper"),
                                                   based));
    QVColorVector perfect;
    ASSERT_TRUE(
        CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(1.0f)), Conditions("D65", "TwoDegree", "Absolute"), perfect));
    EXPECT_EQ(perfect[0], based[0]);
    EXPECT_EQ(perfect[1], based[1]);
    EXPECT_EQ(perfect[2], based[2]);
    EXPECT_EQ("Paper", Condition(based, "Colorimetric.WhiteBase"));
}

TEST_F(PaperWhiteBasing, SpectrumTwiceThePaperWhiteGivesTheXYZOfAllTwos)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    QVColorVector based;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Scaled(PaperValues(), 2.0f)),
                                                   Conditions("D50", "TenDegree", "Paper"), based));
    QVColorVector twos;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Flat(2.0f)), Conditions("D50", "TenDegree", "Absolute"),
                                                   twos));
    EXPECT_EQ(twos[0], based[0]);
    EXPECT_EQ(twos[1], based[1]);
    EXPECT_EQ(twos[2], based[2]);
}

TEST_F(PaperWhiteBasing, ABasedSpectrumIsTheDotProductOfTheQuotients)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    QVColorVector based;
    ASSERT_TRUE(
        CMetryCalculator::GetVector_CIEXYZ(Spectrum(Reddish()), Conditions("D65", "TwoDegree", "Paper"), based));
    Values quotients{};
    for (std::size_t i = 0; i < 36; ++i) {
        quotients[i] = Reddish()[i] / PaperValues()[i];
    }
    const Triple expected = DotProductsWithSharedRows(quotients);
    EXPECT_EQ(expected[0], based[0]);
    EXPECT_EQ(expected[1], based[1]);
    EXPECT_EQ(expected[2], based[2]);
}

TEST_F(PaperWhiteBasing, AbsoluteAndAutomaticDoNotBaseTheSpectrum)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    for (const char* whiteBase : {"Absolute", "Automatic"}) {
        SCOPED_TRACE(whiteBase);
        QVColorVector xyz;
        ASSERT_TRUE(
            CMetryCalculator::GetVector_CIEXYZ(Spectrum(Reddish()), Conditions("D65", "TwoDegree", whiteBase), xyz));
        const Triple expected = DotProductsWithSharedRows(Reddish());
        EXPECT_EQ(expected[0], xyz[0]);
        EXPECT_EQ(expected[1], xyz[1]);
        EXPECT_EQ(expected[2], xyz[2]);
    }
}

TEST_F(PaperWhiteBasing, BasingASpectrumDividesEachValue)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    QVSpectrum spectrum = Spectrum(Greenish());
    ASSERT_TRUE(TestAccess::GetSpecBasedToPapWhite(spectrum));
    for (long i = 0; i < 36; ++i) {
        const auto index = static_cast<std::size_t>(i);
        EXPECT_EQ(Greenish()[index] / PaperValues()[index], spectrum[i]);
    }
}

TEST_F(PaperWhiteBasing, BasingABareArrayDividesByThePaperWhite)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    float values[36];
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = Greenish()[i];
    }
    ASSERT_TRUE(TestAccess::GetSpecBasedToPapWhite(Conditions("A"), values));
    for (std::size_t i = 0; i < 36; ++i) {
        EXPECT_EQ(Greenish()[i] / PaperValues()[i], values[i]);
    }
}

TEST_F(PaperWhiteBasing, APaperWhiteValueOfZeroGivesInfinity)
{
    Values paper = PaperValues();
    paper[5] = 0.0f;
    paper[6] = 0.0f;
    const PaperWhiteInstalled installed{SampleOf(Spectrum(paper))};
    float values[36];
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.5f;
    }
    values[6] = 0.0f;
    ASSERT_TRUE(TestAccess::GetSpecBasedToPapWhite(Conditions(), values));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), values[5]);
    EXPECT_TRUE(std::isnan(values[6]));
    EXPECT_EQ(0.5f / paper[4], values[4]);

    QVSpectrum spectrum = Spectrum(Flat(0.5f));
    ASSERT_TRUE(TestAccess::GetSpecBasedToPapWhite(spectrum));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), spectrum[5]);
}

TEST_F(PaperWhiteBasing, SetPaperWhiteAndAddPaperWhiteDoNothing)
{
    const QVSample sample = SampleOf(Spectrum(PaperValues()));
    TestAccess::SetPaperWhite(sample);
    TestAccess::AddPaperWhite(sample);
    EXPECT_FALSE(BaseCalculator::psPaperWhite.IsValid());
    EXPECT_FALSE(TestAccess::IsPaperWhiteValid(Conditions()));

    const PaperWhiteInstalled installed{SampleOf(Spectrum(Flat(0.25f)))};
    const QVSample* held = &*BaseCalculator::psPaperWhite;
    TestAccess::SetPaperWhite(sample);
    TestAccess::AddPaperWhite(sample);
    EXPECT_EQ(held, &*BaseCalculator::psPaperWhite);
    EXPECT_STREQ("MeasureValueList: 1", BaseCalculator::psPaperWhite->GetValueString().c_str());
    EXPECT_EQ(Spectrum(Flat(0.25f)), FirstSpectrum(TestAccess::GetPaperWhite()));
}

TEST_F(PaperWhiteValueString, SaysNotPresentWithoutASample)
{
    EXPECT_STREQ("Paper white: not present", BaseCalculator().GetValueString().c_str());
    EXPECT_STREQ("", CMetryCalculator().GetValueString().c_str());
}

TEST_F(PaperWhiteValueString, GivesTheSamplesValueString)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    EXPECT_STREQ("Paper white: MeasureValueList: 1", BaseCalculator().GetValueString().c_str());
}

// ================================================================ emission

namespace {

QVMeasureConditions EmissionConditions()
{
    return Conditions("Emission");
}

} // namespace

TEST_F(EmissionSpectrum, IsEvaluatedWithoutIlluminant)
{
    const Weightfactors emission(EmissionConditions());
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish(), EmissionConditions()),
                                                   Conditions("D65", "TwoDegree", "Absolute"), xyz));
    const Triple expected = DotProducts(emission, Greenish());
    EXPECT_EQ(expected[0], xyz[0]);
    EXPECT_EQ(expected[1], xyz[1]);
    EXPECT_EQ(expected[2], xyz[2]);
    EXPECT_EQ("Emission", Condition(xyz, "Colorimetric.Illumination"));
    EXPECT_EQ("TwoDegree", Condition(xyz, "Colorimetric.Observer"));
    // Under D65 the same values would give another XYZ.
    QVColorVector reflective;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish()), Conditions("D65"), reflective));
    EXPECT_NE(reflective[1], xyz[1]);
}

TEST_F(EmissionSpectrum, KeepsTheObserverOfTheEvaluationConditions)
{
    const Weightfactors emission(Conditions("Emission", "TenDegree"));
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Reddish(), EmissionConditions()),
                                                   Conditions("A", "TenDegree", "Automatic"), xyz));
    const Triple expected = DotProducts(emission, Reddish());
    EXPECT_EQ(expected[0], xyz[0]);
    EXPECT_EQ(expected[1], xyz[1]);
    EXPECT_EQ(expected[2], xyz[2]);
    EXPECT_EQ("TenDegree", Condition(xyz, "Colorimetric.Observer"));
    EXPECT_EQ("Emission", Condition(xyz, "Colorimetric.Illumination"));
}

TEST_F(EmissionSpectrum, IsNeverBasedOnPaperEvenWithoutAPaperWhite)
{
    const Weightfactors emission(EmissionConditions());
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish(), EmissionConditions()),
                                                   Conditions("D65", "TwoDegree", "Paper"), xyz));
    const Triple expected = DotProducts(emission, Greenish());
    EXPECT_EQ(expected[0], xyz[0]);
    EXPECT_EQ(expected[1], xyz[1]);
    EXPECT_EQ(expected[2], xyz[2]);
    EXPECT_EQ("Emission", Condition(xyz, "Colorimetric.Illumination"));
    EXPECT_EQ("Paper", Condition(xyz, "Colorimetric.WhiteBase"));
}

TEST_F(EmissionSpectrum, IsNeverBasedOnAnInstalledPaperWhite)
{
    const PaperWhiteInstalled installed{SampleOf(Spectrum(PaperValues()))};
    const Weightfactors emission(EmissionConditions());
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish(), EmissionConditions()),
                                                   Conditions("D65", "TwoDegree", "Paper"), xyz));
    const Triple expected = DotProducts(emission, Greenish());
    EXPECT_EQ(expected[0], xyz[0]);
    EXPECT_EQ(expected[1], xyz[1]);
    EXPECT_EQ(expected[2], xyz[2]);
}

TEST_F(EmissionSpectrum, LabOfAnEmissiveSpectrumIsReadAgainstTheEmissionWhite)
{
    QVColorVector xyz;
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(Greenish(), EmissionConditions()), Conditions("D65"), xyz));
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Greenish(), EmissionConditions()), Conditions("D65"), lab));
    const Weightfactors emission(EmissionConditions());
    const Triple sums = {emission.GetFilterSum(0), emission.GetFilterSum(1), emission.GetFilterSum(2)};
    const LabFormula expected = ExpectedLab(Components(xyz), sums);
    EXPECT_EQ(expected.lab[0], lab[0]);
    EXPECT_EQ(expected.lab[1], lab[1]);
    EXPECT_EQ(expected.lab[2], lab[2]);
    EXPECT_EQ("Emission", Condition(lab, "Colorimetric.Illumination"));
}
