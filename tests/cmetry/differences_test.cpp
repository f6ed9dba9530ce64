// Colour differences, the metamerism index and the colour class.
//
// The first sample is the reference: every colour-dependent weight (SL, SC,
// SH, K1, K2) comes from it alone. A difference that cannot be computed is
// the float 1000000.
//
// The CMC(l:c) and CIE 1994 reference values below come from an independent
// double-precision evaluation of the published formulas, started from the Lab
// values written next to them (those Lab values rounded to float, exactly
// what the library holds). The library keeps Lab, LCh, the deltas and each
// quotient in float, so its result may differ from the double evaluation in
// the sixth or seventh digit: they are compared to 1e-4 relative. The Lab of
// each spectrum is asserted exactly first, so that a change of the Lab
// conversion shows there and not as a puzzling difference.
//
// The FMC II value is recomputed here from the XYZ the library gave, every
// named value rounded to float as the formula stores it, and compared
// exactly; a second evaluation in double throughout checks the formula itself
// to 1e-4 relative.

#include "qvimanager/cmetry/calculator.h"

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/foundation/exception.h"

#include "tests/cmetry/sample_spectra.h"
#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

using CMetry::CMetryCalculator;
using CMetry::ColorTYPE;
using CMetry::QVColorVector;
using CMetry::QVIllumination;
using CMetry::QVLab;
using CMetry::QVMeasureConditions;
using CMetry::QVSample;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using CMetry::Weightfactors;
using TestSupport::FailureText;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

using TestSpectra::Values;
using TestSpectra::Reddish;
using TestSpectra::Bluish;
using TestSpectra::Scaled;
using TestSpectra::PaperValues;

using Triple = std::array<float, 3>;

constexpr float kFailed = 1000000.0f;

// ---------------------------------------------------------------- conditions

QVMeasureConditions Conditions(const char* illumination = "D65", const char* observer = "TwoDegree",
                               const char* whiteBase = "Absolute")
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String(illumination));
    conditions.SetMeasureCondition(String("Colorimetric.Observer"), String(observer));
    conditions.SetMeasureCondition(String("Colorimetric.WhiteBase"), String(whiteBase));
    return conditions;
}

QVMeasureConditions PaperConditions()
{
    return Conditions("D65", "TwoDegree", "Paper");
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



Values Reddish2()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = i < 20 ? 0.06f + 0.004f * static_cast<float>(i) : 0.75f;
    }
    return values;
}


Values Bluish2()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.68f - 0.017f * static_cast<float>(i);
    }
    return values;
}

// A hump around 550 nm: hue about 130 degrees.
Values Greenish()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        const float d = (static_cast<float>(i) - 17.0f) / 5.0f;
        values[i] = 0.08f + 0.6f * static_cast<float>(std::exp(-static_cast<double>(d * d)));
    }
    return values;
}

Values Greenish2()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        const float d = (static_cast<float>(i) - 16.0f) / 5.0f;
        values[i] = 0.1f + 0.55f * static_cast<float>(std::exp(-static_cast<double>(d * d)));
    }
    return values;
}

// Lightness about 12: below 16.
Values DarkRising()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.011f + 0.0002f * static_cast<float>(i);
    }
    return values;
}

Values Rising(float start)
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = start + 0.002f * static_cast<float>(i);
    }
    return values;
}

// `level` from index `from` on, 0 before it.
Values LongWavelengthsOnly(float level, std::size_t from)
{
    Values values{};
    for (std::size_t i = from; i < 36; ++i) {
        values[i] = level;
    }
    return values;
}

// Nearly nothing below 600 nm, much from 600 nm on: chroma above 80.
Values SaturatedRed(float low, float high)
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = i < 22 ? low : high;
    }
    return values;
}

// Every value below 0.008856: all three axes on the linear branch of Lab.
Values VeryDark()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.003f + 0.0001f * static_cast<float>(i);
    }
    return values;
}

// ---------------------------------------------------------------- vectors

QVLab Lab(float lightness, float a, float b, float fourth = 0.0f)
{
    QVLab lab;
    lab[0] = lightness;
    lab[1] = a;
    lab[2] = b;
    lab[3] = fourth;
    return lab;
}

QVLab LabOf(const Values& values, const QVMeasureConditions& conditions = Conditions())
{
    QVLab lab;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(values), conditions, lab));
    return lab;
}

QVColorVector XYZOf(const Values& values, const QVMeasureConditions& conditions = Conditions())
{
    QVColorVector xyz;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(Spectrum(values), conditions, xyz));
    return xyz;
}

float DifferenceLength(const QVColorVector& first, const QVColorVector& second)
{
    QVColorVector difference(first);
    difference -= second;
    return difference.Length();
}

::testing::AssertionResult WithinRelative(double expected, float actual, double tolerance)
{
    const double error = std::fabs(static_cast<double>(actual) - expected);
    if (error <= tolerance * std::fabs(expected)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "actual " << actual << " expected " << expected << " relative error "
                                         << error / std::fabs(expected);
}

// The library's float steps against a double evaluation: see the head of the
// file.
constexpr double kFloatStepsTolerance = 1e-4;

// The distance of two floats in representable steps (both finite, same sign).
std::int64_t UlpDistance(float a, float b)
{
    const auto ia = static_cast<std::int64_t>(std::bit_cast<std::int32_t>(a));
    const auto ib = static_cast<std::int64_t>(std::bit_cast<std::int32_t>(b));
    return ia > ib ? ia - ib : ib - ia;
}

// The float halfway in representation between two positive floats.
float MidFloat(float low, float high)
{
    const auto lowBits = std::bit_cast<std::uint32_t>(low);
    const auto highBits = std::bit_cast<std::uint32_t>(high);
    return std::bit_cast<float>(lowBits + (highBits - lowBits) / 2);
}

// ---------------------------------------------------------------- paper white

class PaperWhiteInstalled {
public:
    explicit PaperWhiteInstalled(const Values& values)
    {
        QVSample sample;
        sample.SetSpectrum(Spectrum(values));
        TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>(new QVSample(sample)));
    }
    PaperWhiteInstalled(const PaperWhiteInstalled&) = delete;
    PaperWhiteInstalled& operator=(const PaperWhiteInstalled&) = delete;
    ~PaperWhiteInstalled() { TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>()); }
};


using NoPaperWhiteAtStart = TestSpectra::NoPaperWhite;

class DeltaEFailure : public NoPaperWhiteAtStart {};
class DeltaESpeedOptimizedPaper : public NoPaperWhiteAtStart {};
class MetameryFailure : public NoPaperWhiteAtStart {};
class ColorTypeConditions : public NoPaperWhiteAtStart {};

} // namespace

// ================================================================ identical samples

TEST(DeltaEIdenticalSamples, GiveExactlyZeroForTheEuclideanFormulasAndFMCII)
{
    const Values samples[] = {Reddish(), Bluish(), Greenish(), DarkRising(), Flat(0.5f), VeryDark()};
    for (const Values& values : samples) {
        const QVSpectrum spectrum = Spectrum(values);
        const QVSpectrum copy = Spectrum(values);
        EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELAB(spectrum, copy, Conditions()));
        EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELUV(spectrum, copy, Conditions()));
        EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_vq(spectrum, copy, Conditions()));
        EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_FMCII(spectrum, copy, Conditions()));
    }
}

namespace {

// CIE 1994 of a Lab value against itself: dL is 0, but dC is the first
// chroma in double less the second rounded to float, and dH follows it.
float Identical94(const QVLab& lab)
{
    const double a = lab[1];
    const double b = lab[2];
    const double c1 = std::sqrt(a * a + b * b);
    const auto c2 = static_cast<float>(c1);
    const auto deltaC = static_cast<float>(c1 - static_cast<double>(c2));
    const auto deltaH = static_cast<float>(std::sqrt(std::fabs(0.0 - static_cast<double>(deltaC) * deltaC)));
    const double sc = 1.0 + static_cast<double>(0.045f) * static_cast<double>(c2);
    const double sh = 1.0 + static_cast<double>(0.015f) * static_cast<double>(c2);
    return static_cast<float>(std::sqrt(std::pow(deltaC / sc, 2) + std::pow(deltaH / sh, 2)));
}

} // namespace

TEST(DeltaEIdenticalSamples, CMCAnd94DifferOnlyByTheRoundingOfTheFirstChroma)
{
    // The delta vector keeps the first chroma in double and the second in
    // float, so a sample against itself leaves that rounding as dC and dH.
    const Values samples[] = {Reddish(), Bluish(), Greenish(), DarkRising(), Flat(0.5f), VeryDark()};
    int notZero = 0;
    for (const Values& values : samples) {
        const QVSpectrum spectrum = Spectrum(values);
        const float cie94 = CMetryCalculator::GetDeltaE_94(spectrum, spectrum, Conditions(), 1.0f, 1.0f, 1.0f);
        EXPECT_EQ(Identical94(LabOf(values)), cie94);
        EXPECT_LE(cie94, 1e-5f);
        EXPECT_LE(CMetryCalculator::GetDeltaE_CMC(spectrum, spectrum, Conditions(), 1.0f, 1.0f), 1e-5f);
        EXPECT_LE(CMetryCalculator::GetDeltaE_CMC(spectrum, spectrum, Conditions(), 2.0f, 1.0f), 1e-5f);
        notZero += cie94 != 0.0f ? 1 : 0;
    }
    EXPECT_GT(notZero, 0);
    // On Lab values: a chroma of the square root of 2 is not a float.
    const QVLab lab = Lab(50.0f, 1.0f, 1.0f);
    EXPECT_EQ(Identical94(lab), CMetryCalculator::GetDeltaE_94(lab, lab, 1.0f, 1.0f, 1.0f));
    EXPECT_NE(0.0f, CMetryCalculator::GetDeltaE_94(lab, lab, 1.0f, 1.0f, 1.0f));
}

TEST(DeltaEIdenticalSamples, CMCAnd94GiveExactlyZeroWhenTheFirstChromaIsAFloat)
{
    const QVSpectrum black = Spectrum(Flat(0.0f));
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CMC(black, black, Conditions(), 1.0f, 1.0f));
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_94(black, black, Conditions(), 1.0f, 1.0f, 1.0f));
    // Chroma 5 exactly.
    const QVLab lab = Lab(50.0f, 3.0f, 4.0f);
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_94(lab, lab, 1.0f, 1.0f, 1.0f));
}

TEST(DeltaEIdenticalSamples, GiveZeroUnderOtherConditionsToo)
{
    const QVMeasureConditions conditions = Conditions("A", "TenDegree");
    const QVSpectrum spectrum = Spectrum(Greenish(), conditions);
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELAB(spectrum, spectrum, conditions));
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELUV(spectrum, spectrum, conditions));
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_vq(spectrum, spectrum, conditions));
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_FMCII(spectrum, spectrum, conditions));
}

// ================================================================ Euclidean formulas

TEST(DeltaECIELAB, OfSpectraIsTheLengthOfTheLabDifference)
{
    const std::array<std::array<Values, 2>, 4> pairs = {{{Reddish(), Reddish2()},
                                                         {Bluish(), Greenish()},
                                                         {DarkRising(), VeryDark()},
                                                         {Flat(1.0f), Flat(0.0f)}}};
    for (const auto& pair : pairs) {
        const QVLab first = LabOf(pair[0]);
        const QVLab second = LabOf(pair[1]);
        const float expected = DifferenceLength(first, second);
        EXPECT_EQ(expected, CMetryCalculator::GetDeltaE_CIELAB(Spectrum(pair[0]), Spectrum(pair[1]), Conditions()));
        EXPECT_GT(expected, 0.0f);
    }
}

TEST(DeltaECIELAB, OfSpectraIsReadUnderTheConditionsGiven)
{
    const QVMeasureConditions conditions = Conditions("A", "TenDegree");
    const float expected = DifferenceLength(LabOf(Reddish(), conditions), LabOf(Bluish(), conditions));
    EXPECT_EQ(expected, CMetryCalculator::GetDeltaE_CIELAB(Spectrum(Reddish()), Spectrum(Bluish()), conditions));
    EXPECT_NE(expected, CMetryCalculator::GetDeltaE_CIELAB(Spectrum(Reddish()), Spectrum(Bluish()), Conditions()));
}

TEST(DeltaECIELAB, OfTwoLabValuesIsTheEuclideanDistance)
{
    EXPECT_EQ(5.0f, CMetryCalculator::GetDeltaE_CIELAB(Lab(50.0f, 10.0f, 20.0f), Lab(47.0f, 14.0f, 20.0f)));
    EXPECT_EQ(13.0f, CMetryCalculator::GetDeltaE_CIELAB(Lab(10.0f, 0.0f, -3.0f), Lab(22.0f, 0.0f, -8.0f)));
    // Symmetric: the length of the negated difference.
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB(Lab(61.5f, -3.25f, 7.0f), Lab(60.0f, 1.0f, 2.5f)),
              CMetryCalculator::GetDeltaE_CIELAB(Lab(60.0f, 1.0f, 2.5f), Lab(61.5f, -3.25f, 7.0f)));
}

TEST(DeltaECIELAB, OfTwoLabValuesCountsComponentThree)
{
    // Differences 1, 2, 2 and 4: root of 25.
    EXPECT_EQ(5.0f, CMetryCalculator::GetDeltaE_CIELAB(Lab(50.0f, 10.0f, 20.0f, 3.0f), Lab(49.0f, 8.0f, 18.0f, -1.0f)));
    // Only component 3 differs.
    EXPECT_EQ(2.5f, CMetryCalculator::GetDeltaE_CIELAB(Lab(50.0f, 10.0f, 20.0f, 2.5f), Lab(50.0f, 10.0f, 20.0f)));
}

TEST(DeltaECIELAB, OfTwoLabValuesSumsTheSquaresInFloat)
{
    const QVLab first = Lab(63.7f, 47.91f, 47.65f, 0.0f);
    const QVLab second = Lab(64.46f, 51.23f, 52.39f, 0.0f);
    float sum = 0.0f;
    for (short axis = 0; axis < 4; ++axis) {
        const float d = first[axis] - second[axis];
        sum += d * d;
    }
    EXPECT_EQ(static_cast<float>(std::sqrt(static_cast<double>(sum))),
              CMetryCalculator::GetDeltaE_CIELAB(first, second));
}

TEST(DeltaECIELAB, OfTwoLabValuesIgnoresTheirConditions)
{
    QVLab first = Lab(50.0f, 10.0f, 20.0f);
    TestAccess::SetMeasureConditions(first, Conditions("A", "TenDegree", "Paper"));
    EXPECT_EQ(5.0f, CMetryCalculator::GetDeltaE_CIELAB(first, Lab(47.0f, 14.0f, 20.0f)));
}

TEST(DeltaECIELUV, IsTheLengthOfTheLuvDifference)
{
    const std::array<std::array<Values, 2>, 3> pairs = {
        {{Reddish(), Reddish2()}, {Bluish(), Greenish()}, {DarkRising(), Flat(0.0f)}}};
    for (const auto& pair : pairs) {
        QVColorVector first;
        QVColorVector second;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELuv(Spectrum(pair[0]), Conditions(), first));
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELuv(Spectrum(pair[1]), Conditions(), second));
        const float expected = DifferenceLength(first, second);
        EXPECT_EQ(expected, CMetryCalculator::GetDeltaE_CIELUV(Spectrum(pair[0]), Spectrum(pair[1]), Conditions()));
        EXPECT_GT(expected, 0.0f);
    }
}

TEST(DeltaECIELUV, ChromaticityCountsForLittleAgainstLightness)
{
    // u' and v' enter unscaled: a blue against a red is hardly more than
    // their lightness difference, while in Lab it is about 90.
    const QVLab blue = LabOf(Bluish());
    const QVLab red = LabOf(Reddish());
    const float lightnessDifference = std::fabs(blue[0] - red[0]);
    const float luv = CMetryCalculator::GetDeltaE_CIELUV(Spectrum(Bluish()), Spectrum(Reddish()), Conditions());
    EXPECT_GT(luv, lightnessDifference);
    EXPECT_LT(luv - lightnessDifference, 0.01f);
    EXPECT_GT(CMetryCalculator::GetDeltaE_CIELAB(Spectrum(Bluish()), Spectrum(Reddish()), Conditions()), 80.0f);
}

TEST(DeltaEvq, IsTheLengthOfTheLABvqDifference)
{
    const std::array<std::array<Values, 2>, 3> pairs = {
        {{Reddish(), Reddish2()}, {Bluish(), Greenish()}, {DarkRising(), VeryDark()}}};
    for (const auto& pair : pairs) {
        QVColorVector first;
        QVColorVector second;
        ASSERT_TRUE(CMetryCalculator::GetVector_LABvq(Spectrum(pair[0]), Conditions(), first));
        ASSERT_TRUE(CMetryCalculator::GetVector_LABvq(Spectrum(pair[1]), Conditions(), second));
        const float expected = DifferenceLength(first, second);
        EXPECT_EQ(expected, CMetryCalculator::GetDeltaE_vq(Spectrum(pair[0]), Spectrum(pair[1]), Conditions()));
        EXPECT_GT(expected, 0.0f);
    }
}

// ================================================================ failure value

TEST_F(DeltaEFailure, EveryFormulaOnSpectraGivesOneMillionWithPaperBaseAndNoPaperWhite)
{
    const QVSpectrum first = Spectrum(Reddish());
    const QVSpectrum second = Spectrum(Bluish());
    const QVMeasureConditions paper = PaperConditions();
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CIELAB(first, second, paper));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CIELUV(first, second, paper));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_vq(first, second, paper));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_FMCII(first, second, paper));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CMC(first, second, paper, 1.0f, 1.0f));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, second, paper, 1.0f, 1.0f, 1.0f));
    EXPECT_EQ(kFailed, CMetryCalculator::GetMetamery(first, second, paper, QVIllumination(CMetry::IlluminationA)));
}

TEST_F(DeltaEFailure, IdenticalSamplesGiveOneMillionTooWhenTheyCannotBeEvaluated)
{
    const QVSpectrum spectrum = Spectrum(Greenish());
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CIELAB(spectrum, spectrum, PaperConditions()));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CMC(spectrum, spectrum, PaperConditions(), 1.0f, 1.0f));
}

TEST_F(DeltaEFailure, AFailingSecondSampleAloneGivesOneMillion)
{
    // An emissive spectrum is never based on paper, so it evaluates; the
    // reflective one cannot.
    const QVSpectrum emissive = Spectrum(Greenish(), Conditions("Emission"));
    const QVSpectrum reflective = Spectrum(Bluish());
    const QVMeasureConditions paper = PaperConditions();
    QVColorVector check;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(emissive, paper, check));
    ASSERT_FALSE(CMetryCalculator::GetVector_CIEXYZ(reflective, paper, check));
    for (int order = 0; order < 2; ++order) {
        const QVSpectrum& first = order == 0 ? emissive : reflective;
        const QVSpectrum& second = order == 0 ? reflective : emissive;
        EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CIELAB(first, second, paper)) << order;
        EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CIELUV(first, second, paper)) << order;
        EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_vq(first, second, paper)) << order;
        EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_FMCII(first, second, paper)) << order;
        EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_CMC(first, second, paper, 1.0f, 1.0f)) << order;
        EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, second, paper, 1.0f, 1.0f, 1.0f)) << order;
        EXPECT_EQ(kFailed,
                  CMetryCalculator::GetMetamery(first, second, paper, QVIllumination(CMetry::IlluminationA)))
            << order;
    }
}

TEST_F(DeltaEFailure, WithAPaperWhiteInstalledTheSameCallsSucceed)
{
    const PaperWhiteInstalled installed(PaperValues());
    const QVSpectrum first = Spectrum(Reddish());
    const QVSpectrum second = Spectrum(Bluish());
    EXPECT_LT(CMetryCalculator::GetDeltaE_CIELAB(first, second, PaperConditions()), 1000.0f);
    EXPECT_LT(CMetryCalculator::GetDeltaE_CMC(first, second, PaperConditions(), 1.0f, 1.0f), 1000.0f);
    EXPECT_LT(CMetryCalculator::GetDeltaE_94(first, second, PaperConditions(), 1.0f, 1.0f, 1.0f), 1000.0f);
}

TEST(DeltaEFailureValue, IsTheFloatOneMillion)
{
    EXPECT_EQ(1000000.0f, CMetryCalculator::FailedDifference);
}

// ================================================================ CMC(l:c)

namespace {

struct CmcCase {
    const char* name;
    Values first;
    Values second;
    Triple firstLab;
    Triple secondLab;
    double oneToOne; // l = 1, c = 1
    double twoToOne; // l = 2, c = 1
};

// The Lab values are the library's, under D65, 2 degrees; the CMC values an
// independent double-precision evaluation of the published formulas from
// them: SL = 0.040975 L1 / (1 + 0.01765 L1) above L1 16, else 0.511;
// SC = 0.0638 C1 / (1 + 0.0131 C1) + 0.638; F = sqrt(C1^4 / (C1^4 + 1900));
// T = 0.56 + |0.2 cos(h1 + 168)| for h1 in 164..345, else
// 0.36 + |0.4 cos(h1 + 35)|; SH = (F T + 1 - F) SC; dH from
// sqrt(dE^2 - dL^2 - dC^2).
std::array<CmcCase, 8> CmcCases()
{
    return {{
        // h1 45.64: the 35-degree branch; L1 above 16.
        {"reddish", Reddish(), Reddish2(), {64.4649582f, 51.2351418f, 52.3920097f},
         {63.7064362f, 47.9156036f, 47.6523895f}, 2.125024459, 2.057444741},
        // h1 254.0: the 168-degree branch.
        {"bluish", Bluish(), Bluish2(), {68.1528931f, -5.77822208f, -20.1461086f},
         {67.9819336f, -5.47496939f, -19.2167149f}, 0.595460559, 0.5838944971},
        // h1 254.0 with a large hue difference: the other branch would give
        // 96.58 instead of 75.44.
        {"bluish against reddish", Bluish(), Reddish(), {68.1528931f, -5.77822208f, -20.1461086f},
         {64.4649582f, 51.2351418f, 52.3920097f}, 75.43597975, 75.39389518},
        // h1 129.7: the 35-degree branch; the other would give 7.206.
        {"greenish", Greenish(), Greenish2(), {74.1766052f, -46.3423958f, 55.8876305f},
         {72.5780029f, -53.2920532f, 43.4240799f}, 6.365769904, 6.278268704},
        {"greenish against bluish", Greenish(), Bluish(), {74.1766052f, -46.3423958f, 55.8876305f},
         {68.1528931f, -5.77822208f, -20.1461086f}, 35.47062312, 35.24849141},
        // L1 12.3: SL = 0.511.
        {"dark", DarkRising(), Flat(0.01f), {12.3097048f, 0.555830419f, 2.37940073f},
         {8.99143696f, 3.00971096e-05f, -8.02589693e-06f}, 7.194254204, 4.486806687},
        // A black reference: L1 0 (SL 0.511), C1 0 (SC 0.638, F 0, so SH =
        // SC whatever the branch), hue 360.
        {"black", Flat(0.0f), DarkRising(), {0.0f, 0.0f, 0.0f}, {12.3097048f, 0.555830419f, 2.37940073f},
         24.39198934, 12.63895715},
        // A flat grey is not exactly neutral (a about 1e-4): C1 about 1e-4,
        // so F is about 1e-11 and SH = SC to all digits.
        {"grey", Flat(0.5f), Rising(0.5f), {76.0692368f, 0.00010250121f, -4.10004832e-05f},
         {78.1901321f, 0.503841102f, 2.072685f}, 3.703872095, 3.437003994},
    }};
}

} // namespace

TEST(DeltaECMC, LabOfTheTestSpectraIsAsRecorded)
{
    for (const CmcCase& c : CmcCases()) {
        const QVLab first = LabOf(c.first);
        const QVLab second = LabOf(c.second);
        for (short axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(c.firstLab[static_cast<std::size_t>(axis)], first[axis]) << c.name << " first " << axis;
            EXPECT_EQ(c.secondLab[static_cast<std::size_t>(axis)], second[axis]) << c.name << " second " << axis;
        }
    }
}

TEST(DeltaECMC, OneToOneMatchesTheIndependentEvaluation)
{
    for (const CmcCase& c : CmcCases()) {
        const float oneToOne =
            CMetryCalculator::GetDeltaE_CMC(Spectrum(c.first), Spectrum(c.second), Conditions(), 1.0f, 1.0f);
        EXPECT_TRUE(WithinRelative(c.oneToOne, oneToOne, kFloatStepsTolerance)) << c.name;
    }
}

TEST(DeltaECMC, TwoToOneChangesOnlyTheLightnessTerm)
{
    for (const CmcCase& c : CmcCases()) {
        const float twoToOne =
            CMetryCalculator::GetDeltaE_CMC(Spectrum(c.first), Spectrum(c.second), Conditions(), 2.0f, 1.0f);
        EXPECT_TRUE(WithinRelative(c.twoToOne, twoToOne, kFloatStepsTolerance)) << c.name;
        EXPECT_LT(twoToOne,
                  CMetryCalculator::GetDeltaE_CMC(Spectrum(c.first), Spectrum(c.second), Conditions(), 1.0f, 1.0f))
            << c.name;
    }
}

TEST(DeltaECMC, ChromaFactorDividesOnlyTheChromaTerm)
{
    // Independent double evaluation with l = 1, c = 2.
    EXPECT_TRUE(WithinRelative(1.359093834,
                               CMetryCalculator::GetDeltaE_CMC(Spectrum(Reddish()), Spectrum(Reddish2()),
                                                               Conditions(), 1.0f, 2.0f),
                               kFloatStepsTolerance));
    EXPECT_TRUE(WithinRelative(6.268366385,
                               CMetryCalculator::GetDeltaE_CMC(Spectrum(Greenish()), Spectrum(Greenish2()),
                                                               Conditions(), 1.0f, 2.0f),
                               kFloatStepsTolerance));
}

TEST(DeltaECMC, ReferenceHuesLieInTheBranchesTheCasesClaim)
{
    // The premises of the branch cases: the first sample's hue.
    QVColorVector lch;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(LabOf(Bluish()), lch));
    EXPECT_GE(lch[2], 164.0f);
    EXPECT_LE(lch[2], 345.0f);
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(LabOf(Reddish()), lch));
    EXPECT_LT(lch[2], 164.0f);
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(LabOf(Greenish()), lch));
    EXPECT_LT(lch[2], 164.0f);
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(LabOf(Flat(0.0f)), lch));
    EXPECT_EQ(360.0f, lch[2]);
}

TEST(DeltaECMC, IsNotSymmetric)
{
    const float forward =
        CMetryCalculator::GetDeltaE_CMC(Spectrum(Bluish()), Spectrum(Reddish()), Conditions(), 1.0f, 1.0f);
    const float backward =
        CMetryCalculator::GetDeltaE_CMC(Spectrum(Reddish()), Spectrum(Bluish()), Conditions(), 1.0f, 1.0f);
    EXPECT_GT(std::fabs(forward - backward), 1.0f);
}

TEST(DeltaECMC, ALightnessFactorOfZeroGivesNoFiniteResult)
{
    EXPECT_FALSE(std::isfinite(
        CMetryCalculator::GetDeltaE_CMC(Spectrum(Reddish()), Spectrum(Reddish2()), Conditions(), 0.0f, 1.0f)));
    EXPECT_FALSE(std::isfinite(
        CMetryCalculator::GetDeltaE_CMC(Spectrum(Reddish()), Spectrum(Reddish2()), Conditions(), 1.0f, 0.0f)));
}

// ================================================================ CIE 1994

namespace {

struct Cie94Case {
    Triple first;
    Triple second;
    std::array<float, 3> k; // kL, kC, kH
    double expected;
};

// Independent double-precision evaluation of the published formula: SL = 1,
// SC = 1 + 0.045 C1, SH = 1 + 0.015 C1, dH from sqrt(dE^2 - dL^2 - dC^2).
// The first pair is a well-known test pair whose published value is 1.3950.
std::array<Cie94Case, 9> Cie94Cases()
{
    return {{
        {{50.0f, 2.6772f, -79.7751f}, {50.0f, 0.0f, -82.7485f}, {1.0f, 1.0f, 1.0f}, 1.3950385},
        {{60.0f, 40.0f, 30.0f}, {62.0f, 35.0f, 38.0f}, {1.0f, 1.0f, 1.0f}, 5.693900231},
        {{62.0f, 35.0f, 38.0f}, {60.0f, 40.0f, 30.0f}, {1.0f, 1.0f, 1.0f}, 5.623453343},
        // Achromatic reference: SC = SH = 1, so the plain Euclidean 7.0711.
        {{50.0f, 0.0f, 0.0f}, {55.0f, 3.0f, -4.0f}, {1.0f, 1.0f, 1.0f}, 7.071067812},
        {{30.0f, -20.0f, 50.0f}, {28.0f, -25.0f, 45.0f}, {2.0f, 1.0f, 1.0f}, 3.88027657},
        {{90.0f, -5.0f, 80.0f}, {88.0f, 0.0f, 90.0f}, {1.0f, 1.5f, 0.5f}, 5.403788716},
        {{60.0f, 40.0f, 30.0f}, {62.0f, 35.0f, 38.0f}, {2.0f, 1.0f, 1.0f}, 5.424066725},
        {{60.0f, 40.0f, 30.0f}, {62.0f, 35.0f, 38.0f}, {1.0f, 2.0f, 1.0f}, 5.676643191},
        {{60.0f, 40.0f, 30.0f}, {62.0f, 35.0f, 38.0f}, {1.0f, 1.0f, 2.0f}, 3.361747594},
    }};
}

} // namespace

TEST(DeltaE94, MatchesTheIndependentEvaluation)
{
    for (const Cie94Case& c : Cie94Cases()) {
        const float actual = CMetryCalculator::GetDeltaE_94(Lab(c.first[0], c.first[1], c.first[2]),
                                                            Lab(c.second[0], c.second[1], c.second[2]), c.k[0],
                                                            c.k[1], c.k[2]);
        EXPECT_TRUE(WithinRelative(c.expected, actual, kFloatStepsTolerance))
            << c.first[0] << " " << c.first[1] << " " << c.first[2] << " k " << c.k[0] << " " << c.k[1] << " "
            << c.k[2];
    }
}

TEST(DeltaE94, SwappedArgumentsGiveADifferentValue)
{
    const float forward = CMetryCalculator::GetDeltaE_94(Lab(60.0f, 40.0f, 30.0f), Lab(62.0f, 35.0f, 38.0f), 1.0f,
                                                         1.0f, 1.0f);
    const float backward = CMetryCalculator::GetDeltaE_94(Lab(62.0f, 35.0f, 38.0f), Lab(60.0f, 40.0f, 30.0f), 1.0f,
                                                          1.0f, 1.0f);
    EXPECT_TRUE(WithinRelative(5.693900231, forward, kFloatStepsTolerance));
    EXPECT_TRUE(WithinRelative(5.623453343, backward, kFloatStepsTolerance));
    EXPECT_GT(std::fabs(forward - backward), 0.05f);
}

TEST(DeltaE94, AParameterOfExactlyZeroGivesOneMillion)
{
    const QVLab first = Lab(60.0f, 40.0f, 30.0f);
    const QVLab second = Lab(62.0f, 35.0f, 38.0f);
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, second, 0.0f, 1.0f, 1.0f));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, second, 1.0f, 0.0f, 1.0f));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, second, 1.0f, 1.0f, 0.0f));
    // Negative zero is zero.
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, second, -0.0f, 1.0f, 1.0f));
    // Identical samples too: the parameters are checked first.
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_94(first, first, 1.0f, 1.0f, 0.0f));
    // Any other parameter is no failure.
    EXPECT_LT(CMetryCalculator::GetDeltaE_94(first, second, 0.5f, 0.5f, 0.5f), 100.0f);
}

TEST(DeltaE94, AParameterOfZeroOnSpectraGivesOneMillion)
{
    EXPECT_EQ(kFailed,
              CMetryCalculator::GetDeltaE_94(Spectrum(Reddish()), Spectrum(Bluish()), Conditions(), 0.0f, 1.0f, 1.0f));
    EXPECT_EQ(kFailed,
              CMetryCalculator::GetDeltaE_94(Spectrum(Reddish()), Spectrum(Bluish()), Conditions(), 1.0f, 0.0f, 1.0f));
    EXPECT_EQ(kFailed,
              CMetryCalculator::GetDeltaE_94(Spectrum(Reddish()), Spectrum(Bluish()), Conditions(), 1.0f, 1.0f, 0.0f));
}

TEST(DeltaE94, OnSpectraPassesItsParametersInOrder)
{
    const QVLab first = LabOf(Reddish());
    const QVLab second = LabOf(Bluish());
    const float onSpectra =
        CMetryCalculator::GetDeltaE_94(Spectrum(Reddish()), Spectrum(Bluish()), Conditions(), 1.0f, 2.0f, 3.0f);
    EXPECT_EQ(CMetryCalculator::GetDeltaE_94(first, second, 1.0f, 2.0f, 3.0f), onSpectra);
    // Every other order of the three gives another value.
    const std::array<std::array<float, 3>, 5> others = {
        {{1.0f, 3.0f, 2.0f}, {2.0f, 1.0f, 3.0f}, {2.0f, 3.0f, 1.0f}, {3.0f, 1.0f, 2.0f}, {3.0f, 2.0f, 1.0f}}};
    for (const auto& k : others) {
        EXPECT_NE(CMetryCalculator::GetDeltaE_94(first, second, k[0], k[1], k[2]), onSpectra)
            << k[0] << k[1] << k[2];
    }
}

TEST(DeltaE94, OnSpectraEvaluatesTheLabUnderTheConditionsGiven)
{
    const QVMeasureConditions conditions = Conditions("A", "TenDegree");
    EXPECT_EQ(CMetryCalculator::GetDeltaE_94(LabOf(Greenish(), conditions), LabOf(Bluish(), conditions), 1.0f, 1.0f,
                                             1.0f),
              CMetryCalculator::GetDeltaE_94(Spectrum(Greenish()), Spectrum(Bluish()), conditions, 1.0f, 1.0f, 1.0f));
}

// ================================================================ FMC II

namespace {

// Every named value rounded to float where it is stored; the constants
// 1.73e-05, 2.73, 0.2015 and 0.0003098 double, 0.077841 single.
float FmcIIStored(const QVColorVector& first, const QVColorVector& second)
{
    const float x1 = first[0];
    const float y1 = first[1];
    const float z1 = first[2];
    const auto y2 = static_cast<float>(static_cast<double>(y1) * static_cast<double>(y1));
    const auto y3 = static_cast<float>(static_cast<double>(y2) * static_cast<double>(y1));
    const auto y4 = static_cast<float>(static_cast<double>(y3) * static_cast<double>(y1));
    const double dy1 = y1;
    const double dy2 = y2;
    const double dy3 = y3;
    const double dy4 = y4;
    const auto k1 = static_cast<float>(static_cast<double>(0.55669f) + 0.049434 * dy1 - 0.00082575 * dy2 +
                                       7.9172e-06 * dy3 - 3.0087e-08 * dy4);
    const auto k2 =
        static_cast<float>(0.17548 + 0.027556 * dy1 - 0.00057262 * dy2 + 6.3893e-06 * dy3 - 2.6731e-08 * dy4);
    const auto P = [](float x, float y, float z) {
        return static_cast<float>(0.724 * static_cast<double>(x) + 0.382 * static_cast<double>(y) -
                                  0.098 * static_cast<double>(z));
    };
    const auto Q = [](float x, float y, float z) {
        return static_cast<float>(-0.48 * static_cast<double>(x) + 1.37 * static_cast<double>(y) +
                                  0.1276 * static_cast<double>(z));
    };
    const auto S = [](float z) { return static_cast<float>(0.686 * static_cast<double>(z)); };
    const float p1 = P(x1, y1, z1);
    const float q1 = Q(x1, y1, z1);
    const float s1 = S(z1);
    const float p2 = P(second[0], second[1], second[2]);
    const float q2 = Q(second[0], second[1], second[2]);
    const float s2 = S(second[2]);
    const auto dP = static_cast<float>(static_cast<double>(p2) - static_cast<double>(p1));
    const auto dQ = static_cast<float>(static_cast<double>(q2) - static_cast<double>(q1));
    const auto dS = static_cast<float>(static_cast<double>(s2) - static_cast<double>(s1));
    const auto pp = static_cast<float>(static_cast<double>(p1) * static_cast<double>(p1));
    const auto qq = static_cast<float>(static_cast<double>(q1) * static_cast<double>(q1));
    const auto p4 = static_cast<float>(static_cast<double>(pp) * static_cast<double>(pp));
    const auto q4 = static_cast<float>(static_cast<double>(qq) * static_cast<double>(qq));
    const auto n = static_cast<float>(static_cast<double>(pp) + static_cast<double>(qq));
    const auto a2 = static_cast<float>(
        1.73e-05 * static_cast<double>(n) /
        (1.0 + 2.73 * static_cast<double>(pp) * static_cast<double>(qq) / (static_cast<double>(p4) + q4)));
    const auto b2 = static_cast<float>(
        0.0003098 * (static_cast<double>(s1) * static_cast<double>(s1) + 0.2015 * static_cast<double>(y2)));
    const auto u = static_cast<float>(static_cast<double>(q1) * dP - static_cast<double>(p1) * dQ);
    const auto v = static_cast<float>(static_cast<double>(p1) * dP + static_cast<double>(q1) * dQ);
    const auto t1 = static_cast<float>(static_cast<double>(u) * u / (static_cast<double>(a2) * n));
    const double inner = static_cast<double>(s1) * v / n - dS;
    const auto t2 = static_cast<float>(inner * inner / b2);
    const auto t3 = static_cast<float>(static_cast<double>(k2) * k2 * static_cast<double>(0.077841f) * v * v /
                                       (static_cast<double>(a2) * n));
    return static_cast<float>(std::sqrt(static_cast<double>(k1) * k1 * (static_cast<double>(t1) + t2) + t3));
}

// The same formula in double throughout, nothing stored as float.
double FmcIIDouble(const QVColorVector& first, const QVColorVector& second)
{
    const double x1 = first[0];
    const double y1 = first[1];
    const double z1 = first[2];
    const double k1 = 0.55669 + 0.049434 * y1 - 0.00082575 * y1 * y1 + 7.9172e-06 * std::pow(y1, 3) -
                      3.0087e-08 * std::pow(y1, 4);
    const double k2 = 0.17548 + 0.027556 * y1 - 0.00057262 * y1 * y1 + 6.3893e-06 * std::pow(y1, 3) -
                      2.6731e-08 * std::pow(y1, 4);
    const auto P = [](double x, double y, double z) { return 0.724 * x + 0.382 * y - 0.098 * z; };
    const auto Q = [](double x, double y, double z) { return -0.48 * x + 1.37 * y + 0.1276 * z; };
    const double p1 = P(x1, y1, z1);
    const double q1 = Q(x1, y1, z1);
    const double s1 = 0.686 * z1;
    const double dP = P(second[0], second[1], second[2]) - p1;
    const double dQ = Q(second[0], second[1], second[2]) - q1;
    const double dS = 0.686 * second[2] - s1;
    const double n = p1 * p1 + q1 * q1;
    const double a2 = 1.73e-05 * n / (1.0 + 2.73 * p1 * p1 * q1 * q1 / (std::pow(p1, 4) + std::pow(q1, 4)));
    const double b2 = 0.0003098 * (s1 * s1 + 0.2015 * y1 * y1);
    const double u = q1 * dP - p1 * dQ;
    const double v = p1 * dP + q1 * dQ;
    const double t1 = u * u / (a2 * n);
    const double t2 = std::pow(s1 * v / n - dS, 2) / b2;
    const double t3 = k2 * k2 * 0.077841 * v * v / (a2 * n);
    return std::sqrt(k1 * k1 * (t1 + t2) + t3);
}

} // namespace

TEST(DeltaEFMCII, FollowsTheFormulaWithEveryNamedValueStoredAsFloat)
{
    const std::array<std::array<Values, 2>, 5> pairs = {{{Reddish(), Reddish2()},
                                                         {Greenish(), Greenish2()},
                                                         {Bluish(), Bluish2()},
                                                         {Bluish(), Reddish()},
                                                         {DarkRising(), Flat(0.01f)}}};
    for (const auto& pair : pairs) {
        const QVColorVector first = XYZOf(pair[0]);
        const QVColorVector second = XYZOf(pair[1]);
        const float actual = CMetryCalculator::GetDeltaE_FMCII(Spectrum(pair[0]), Spectrum(pair[1]), Conditions());
        EXPECT_EQ(FmcIIStored(first, second), actual);
        EXPECT_GT(actual, 0.0f);
        // And the formula itself, free of the float storage.
        EXPECT_TRUE(WithinRelative(FmcIIDouble(first, second), actual, kFloatStepsTolerance));
    }
}

TEST(DeltaEFMCII, FollowsTheStoredFormulaOnManyPairs)
{
    // Many pairs, so that a constant of the wrong width or a value not
    // rounded where it is stored shows in some last digit.
    const std::array<Values, 8> samples = {Reddish(),  Reddish2(),   Bluish(),    Bluish2(),
                                           Greenish(), Greenish2(), DarkRising(), Rising(0.3f)};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t j = 0; j < samples.size(); ++j) {
            if (i == j) {
                continue;
            }
            EXPECT_EQ(FmcIIStored(XYZOf(samples[i]), XYZOf(samples[j])),
                      CMetryCalculator::GetDeltaE_FMCII(Spectrum(samples[i]), Spectrum(samples[j]), Conditions()))
                << i << " against " << j;
        }
    }
}

TEST(DeltaEFMCII, FirstConstantIsTheFloatOf055669Widened)
{
    EXPECT_EQ(0.556689977645874, static_cast<double>(0.55669f));
}

TEST(DeltaEFMCII, IsNotSymmetric)
{
    const float forward = CMetryCalculator::GetDeltaE_FMCII(Spectrum(Bluish()), Spectrum(Reddish()), Conditions());
    const float backward = CMetryCalculator::GetDeltaE_FMCII(Spectrum(Reddish()), Spectrum(Bluish()), Conditions());
    EXPECT_EQ(FmcIIStored(XYZOf(Reddish()), XYZOf(Bluish())), backward);
    EXPECT_NE(forward, backward);
}

TEST(DeltaEFMCII, ABlackFirstSampleGivesOneMillion)
{
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_FMCII(Spectrum(Flat(0.0f)), Spectrum(Reddish()), Conditions()));
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_FMCII(Spectrum(Flat(0.0f)), Spectrum(Flat(0.0f)), Conditions()));
}

TEST(DeltaEFMCII, ABlackSecondSampleIsAnOrdinaryDifference)
{
    const float actual = CMetryCalculator::GetDeltaE_FMCII(Spectrum(Reddish()), Spectrum(Flat(0.0f)), Conditions());
    EXPECT_EQ(FmcIIStored(XYZOf(Reddish()), XYZOf(Flat(0.0f))), actual);
    EXPECT_NE(kFailed, actual);
}

TEST(DeltaEFMCII, AFirstSampleWithoutPositiveYAndZGivesOneMillion)
{
    // All values negative: X, Y and Z below 0, yet P and Q are not 0.
    const QVColorVector negative = XYZOf(Flat(-1.0f));
    ASSERT_LT(negative[1], 0.0f);
    ASSERT_LT(negative[2], 0.0f);
    EXPECT_EQ(kFailed, CMetryCalculator::GetDeltaE_FMCII(Spectrum(Flat(-1.0f)), Spectrum(Reddish()), Conditions()));
}

TEST(DeltaEFMCII, APositiveZAloneIsEnough)
{
    // Positive below 460 nm, negative above: Z above 0, Y below 0. Only both
    // not above 0 fail.
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = i < 8 ? 1.0f : -1.0f;
    }
    const QVColorVector first = XYZOf(values);
    ASSERT_LT(first[1], 0.0f);
    ASSERT_GT(first[2], 0.0f);
    const float actual = CMetryCalculator::GetDeltaE_FMCII(Spectrum(values), Spectrum(Reddish()), Conditions());
    EXPECT_NE(kFailed, actual);
    EXPECT_EQ(FmcIIStored(first, XYZOf(Reddish())), actual);
}

// ================================================================ speed-optimised Lab difference

TEST(DeltaESpeedOptimized, BeforeAnyEvaluationRaisesNullpointer)
{
    // The shared filter lives for the whole process. The child of a
    // thread-safe death test is a fresh run of this program that executes
    // only this statement, so there the filter has never been set, however
    // the program was started.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            if (TestAccess::SharedWeightfactors() != nullptr) {
                std::fputs("the shared filter was already set", stderr);
                std::exit(2);
            }
            const Values values = Greenish();
            const QVLab reference = Lab(50.0f, 0.0f, 0.0f);
            const std::string text = FailureText<Utilities::ExceptionNullpointer>(
                [&] { CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(reference, values.data()); });
            std::fputs(text.c_str(), stderr);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "^Failed to access to nullpointer\\.$");
}

TEST(DeltaESpeedOptimized, OnTheCubeRootBranchAgreesExactlyWithTheOrdinaryDifference)
{
    const QVLab reference = LabOf(Reddish());
    const Values samples[] = {Greenish(), Bluish(), Reddish2(), Flat(0.5f)};
    for (const Values& values : samples) {
        const QVLab ordinary = LabOf(values);
        // The ordinary evaluation has set the shared filter for D65, 2 degrees.
        EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB(reference, ordinary),
                  CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(reference, values.data()));
    }
}

TEST(DeltaESpeedOptimized, OfASampleAgainstItsOwnLabIsZeroOnTheCubeRootBranch)
{
    const Values samples[] = {Greenish(), Bluish(), Reddish(), Flat(1.0f), Flat(2.0f)};
    for (const Values& values : samples) {
        const QVLab own = LabOf(values);
        EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(own, values.data()));
    }
}

TEST(DeltaESpeedOptimized, CountsComponentThreeOfTheReference)
{
    const Values values = Greenish();
    const QVLab own = LabOf(values);
    QVLab withFourth = own;
    withFourth[3] = 3.0f;
    EXPECT_EQ(3.0f, CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(withFourth, values.data()));
}

namespace {

// Lab of a bare array with the shared filter as it stands: the linear branch
// with 7.787 and 16/116 in double, no clamp of L.
std::array<double, 3> SpeedOptimizedLab(const Values& values)
{
    const Weightfactors* factors = TestAccess::SharedWeightfactors();
    if (factors == nullptr) {
        ADD_FAILURE() << "the shared filter holds no weight factors";
        return {};
    }
    const float yWhite = CMetryCalculator::asXYZFilter.GetFilterSum(1);
    double f[3];
    for (unsigned short axis = 0; axis < 3; ++axis) {
        float tristimulus = 0.0f;
        for (std::size_t i = 0; i < 36; ++i) {
            tristimulus += (*factors)[axis][i] * values[i];
        }
        const float scaled = yWhite * tristimulus;
        const auto r = static_cast<float>(static_cast<double>(scaled) /
                                          static_cast<double>(CMetryCalculator::asXYZFilter.GetFilterSum(axis)) /
                                          100.0);
        f[axis] = static_cast<double>(r) > 0.008856 ? std::pow(static_cast<double>(r), 1.0 / 3.0)
                                                    : 7.787 * static_cast<double>(r) + 0.13793103448275862;
    }
    return {116.0 * f[1] - 16.0, (f[0] - f[1]) * 500.0, (f[1] - f[2]) * 200.0};
}

float LengthAgainst(const std::array<double, 3>& lab, const QVLab& reference)
{
    float sum = 0.0f;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const float d = static_cast<float>(lab[axis]) - reference[static_cast<short>(axis)];
        sum += d * d;
    }
    const float d3 = 0.0f - reference[3];
    sum += d3 * d3;
    return static_cast<float>(std::sqrt(static_cast<double>(sum)));
}

} // namespace

TEST(DeltaESpeedOptimized, OnTheLinearBranchUsesTheWiderConstants)
{
    const QVLab reference = LabOf(Greenish());
    const Values values = VeryDark();
    const QVLab ordinary = LabOf(values);
    ASSERT_LT(ordinary[0], 8.0f); // every ratio below 0.008856
    const float fast = CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(reference, values.data());
    EXPECT_EQ(LengthAgainst(SpeedOptimizedLab(values), reference), fast);
    // Within a few float steps of the ordinary difference.
    EXPECT_LE(UlpDistance(CMetryCalculator::GetDeltaE_CIELAB(reference, ordinary), fast), 4);
}

TEST(DeltaESpeedOptimized, NearBlackShowsTheWiderConstants)
{
    // With 16/116 in double, 116 f - 16 is 903.3 r; with the float 16/116 of
    // the ordinary conversion it is 6e-8 lower, which for r of 1e-11 turns
    // the sign, and the ordinary conversion clamps L to 0.
    const Values values = Flat(1e-11f);
    const QVLab black = Lab(0.0f, 0.0f, 0.0f);
    const QVLab ordinary = LabOf(values);
    EXPECT_EQ(0.0f, ordinary[0]);
    const std::array<double, 3> lab = SpeedOptimizedLab(values);
    EXPECT_GT(lab[0], 0.0);
    const float fast = CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(black, values.data());
    EXPECT_EQ(LengthAgainst(lab, black), fast);
    EXPECT_NE(CMetryCalculator::GetDeltaE_CIELAB(black, ordinary), fast);
}

TEST(DeltaESpeedOptimized, DoesNotClampANegativeLightness)
{
    const Values values = Flat(-0.01f);
    const QVLab black = Lab(0.0f, 0.0f, 0.0f);
    const QVLab ordinary = LabOf(values);
    EXPECT_EQ(0.0f, ordinary[0]); // the ordinary conversion clamps
    const std::array<double, 3> lab = SpeedOptimizedLab(values);
    EXPECT_LT(lab[0], -5.0); // about 903.3 times -0.01
    EXPECT_EQ(LengthAgainst(lab, black), CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(black, values.data()));
    // Against a reference of that negative L the lightness difference is gone.
    const QVLab negative = Lab(static_cast<float>(lab[0]), static_cast<float>(lab[1]), static_cast<float>(lab[2]));
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(negative, values.data()));
}

TEST(DeltaESpeedOptimized, UsesTheSharedFilterAsItStandsNotTheReferencesConditions)
{
    // Set the shared filter for A, then pass a reference that says D65: the
    // weights of A are used.
    const QVLab underA = LabOf(Greenish(), Conditions("A"));
    const QVLab underD65 = Lab(underA[0], underA[1], underA[2]);
    const Values values = Greenish();
    EXPECT_EQ(0.0f, CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(underD65, values.data()));
}

TEST_F(DeltaESpeedOptimizedPaper, BasesTheArrayOnThePaperWhiteFirst)
{
    const PaperWhiteInstalled installed(PaperValues());
    QVLab reference;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Greenish()), PaperConditions(), reference));
    ASSERT_EQ("Paper", std::string(reference.GetMeasureConditions().GetMeasureCondition(
                           String("Colorimetric.WhiteBase"))));
    // Twice the paper white, based on it, is flat 2: the same as a flat 2
    // against an absolute reference of the same Lab.
    const Values twicePaper = Scaled(PaperValues(), 2.0f);
    QVLab absolute = reference;
    TestAccess::SetMeasureConditions(absolute, Conditions());
    const Values two = Flat(2.0f);
    const float expected = CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(absolute, two.data());
    EXPECT_EQ(expected, CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(reference, twicePaper.data()));
    EXPECT_NE(expected, CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(absolute, twicePaper.data()));
}

TEST_F(DeltaESpeedOptimizedPaper, BasesACopyAndLeavesTheCallersArray)
{
    const PaperWhiteInstalled installed(PaperValues());
    QVLab reference;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(Spectrum(Greenish()), PaperConditions(), reference));
    const Values before = Scaled(PaperValues(), 2.0f);
    Values values = before;
    CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(reference, values.data());
    EXPECT_EQ(before, values);
}

TEST_F(DeltaESpeedOptimizedPaper, AReferenceOnPaperWithoutAPaperWhiteUsesTheArrayUnbased)
{
    // The basing fails and its result is ignored.
    QVLab reference = LabOf(Greenish());
    QVLab onPaper = reference;
    TestAccess::SetMeasureConditions(onPaper, PaperConditions());
    const Values values = Bluish();
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(reference, values.data()),
              CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(onPaper, values.data()));
}

// ================================================================ metamerism

namespace {

const QVIllumination kIlluminantA(CMetry::IlluminationA);

QVMeasureConditions UnderA(QVMeasureConditions conditions)
{
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("A"));
    return conditions;
}

// The index rebuilt step by step: the second sample's XYZ under the second
// illuminant scaled by the ratio that matches it to the first under the
// conditions' own illuminant (1 where its XYZ is 0), then the Lab
// difference.
float MetameryStepByStep(const Values& first, const Values& second, const QVMeasureConditions& conditions)
{
    const QVColorVector a1 = XYZOf(first, conditions);
    const QVColorVector a2 = XYZOf(second, conditions);
    float factors[3];
    for (short axis = 0; axis < 3; ++axis) {
        factors[axis] = a2[axis] != 0.0f ? a1[axis] / a2[axis] : 1.0f;
    }
    const QVColorVector correction(factors[0], factors[1], factors[2], conditions);
    const QVColorVector b1 = XYZOf(first, UnderA(conditions));
    QVColorVector b2 = XYZOf(second, UnderA(conditions));
    b2 *= correction;
    QVLab lab1;
    QVLab lab2;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(b1, lab1));
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(b2, lab2));
    return CMetryCalculator::GetDeltaE_CIELAB(lab1, lab2);
}

} // namespace

TEST(MetameryIndex, TheSameSpectrumTwiceGivesZero)
{
    const Values samples[] = {Reddish(), Greenish(), VeryDark(), Flat(0.3f)};
    for (const Values& values : samples) {
        EXPECT_EQ(0.0f, CMetryCalculator::GetMetamery(Spectrum(values), Spectrum(values), Conditions(), kIlluminantA));
    }
}

TEST(MetameryIndex, ASampleTwiceAsBrightIsCorrectedToZero)
{
    // Doubling is exact in float: each factor is exactly 0.5.
    EXPECT_EQ(0.0f, CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(Scaled(Greenish(), 2.0f)),
                                                  Conditions(), kIlluminantA));
}

TEST(MetameryIndex, IsTheLabDifferenceAfterTheCorrection)
{
    const std::array<std::array<Values, 2>, 4> pairs = {
        {{Greenish(), Greenish2()}, {Reddish(), Bluish()}, {Flat(0.5f), Rising(0.45f)}, {Bluish(), Bluish2()}}};
    for (const auto& pair : pairs) {
        const float index =
            CMetryCalculator::GetMetamery(Spectrum(pair[0]), Spectrum(pair[1]), Conditions(), kIlluminantA);
        EXPECT_EQ(MetameryStepByStep(pair[0], pair[1], Conditions()), index);
        EXPECT_GT(index, 0.0f);
        // Smaller than the plain difference under A: the match under D65
        // removes most of it.
        EXPECT_LT(index,
                  CMetryCalculator::GetDeltaE_CIELAB(Spectrum(pair[0]), Spectrum(pair[1]), UnderA(Conditions())));
    }
}

TEST(MetameryIndex, FollowsTheConditionsObserver)
{
    const QVMeasureConditions conditions = Conditions("D50", "TenDegree");
    const float index =
        CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(Greenish2()), conditions, kIlluminantA);
    EXPECT_EQ(MetameryStepByStep(Greenish(), Greenish2(), conditions), index);
    EXPECT_NE(MetameryStepByStep(Greenish(), Greenish2(), Conditions()), index);
}

TEST(MetameryIndex, ASecondSampleOfZerosTakesTheFactorOneOnEveryAxis)
{
    // A2 is 0 on every axis, so B2 stays 0 and the index is the distance of
    // the first sample's Lab under A from black.
    const float index =
        CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(Flat(0.0f)), Conditions(), kIlluminantA);
    const QVLab first = LabOf(Greenish(), UnderA(Conditions()));
    EXPECT_EQ(CMetryCalculator::GetDeltaE_CIELAB(first, Lab(0.0f, 0.0f, 0.0f)), index);
    EXPECT_EQ(MetameryStepByStep(Greenish(), Flat(0.0f), Conditions()), index);
}

TEST(MetameryIndex, AnAxisWhereTheSecondSampleIsZeroTakesTheFactorOne)
{
    // The 2-degree z-bar weights are exactly 0 from 670 nm on: a sample that
    // reflects only there has Z 0 under both illuminants, X and Y not.
    const Values longOnly = LongWavelengthsOnly(0.8f, 29);
    const QVColorVector a2 = XYZOf(longOnly);
    ASSERT_EQ(0.0f, a2[2]);
    ASSERT_GT(a2[0], 0.0f);
    ASSERT_GT(a2[1], 0.0f);
    const float index =
        CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(longOnly), Conditions(), kIlluminantA);
    EXPECT_TRUE(std::isfinite(index));
    EXPECT_EQ(MetameryStepByStep(Greenish(), longOnly, Conditions()), index);
}

TEST(MetameryIndex, AZeroAxisTakesTheFactorOneAlsoWhereTheSecondIlluminantSeesIt)
{
    // Two values whose products with the D65 z-bar weights are exact
    // negatives of each other (each value the other point's weight): Z is
    // exactly 0 under D65, so its factor is 1, yet not 0 under A, so the
    // factor shows in the index.
    const Weightfactors d65(Conditions());
    Values second{};
    second[5] = d65[2][12];
    second[12] = -d65[2][5];
    ASSERT_EQ(0.0f, XYZOf(second)[2]);
    ASSERT_NE(0.0f, XYZOf(second)[0]);
    ASSERT_NE(0.0f, XYZOf(second, UnderA(Conditions()))[2]);
    const float index =
        CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(second), Conditions(), kIlluminantA);
    EXPECT_EQ(MetameryStepByStep(Greenish(), second, Conditions()), index);
}

TEST_F(MetameryFailure, GivesOneMillionWhenAConversionFails)
{
    EXPECT_EQ(kFailed,
              CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(Greenish2()), PaperConditions(),
                                            kIlluminantA));
}

TEST_F(MetameryFailure, WithAPaperWhiteBasesBothSamples)
{
    const PaperWhiteInstalled installed(PaperValues());
    const float index =
        CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(Greenish2()), PaperConditions(), kIlluminantA);
    EXPECT_EQ(MetameryStepByStep(Greenish(), Greenish2(), PaperConditions()), index);
    EXPECT_NE(MetameryStepByStep(Greenish(), Greenish2(), Conditions()), index);
}

TEST(MetameryIndex, LeavesTheSharedWeightfactorsOnTheSecondIlluminant)
{
    CMetryCalculator::GetMetamery(Spectrum(Greenish()), Spectrum(Greenish2()), Conditions(), kIlluminantA);
    const Weightfactors* shared = TestAccess::SharedWeightfactors();
    ASSERT_NE(nullptr, shared);
    const Weightfactors underA(UnderA(Conditions()));
    const Weightfactors underD65(Conditions());
    EXPECT_EQ(underA.GetFilterSum(0), shared->GetFilterSum(0));
    EXPECT_EQ(underA.GetFilterSum(2), shared->GetFilterSum(2));
    EXPECT_NE(underD65.GetFilterSum(0), shared->GetFilterSum(0));
}

// ================================================================ colour class

namespace {

ColorTYPE TypeOf(const Values& values, const QVMeasureConditions& conditions = Conditions())
{
    return CMetryCalculator::GetColorType(Spectrum(values, conditions));
}

// The achromatic class by lightness.
ColorTYPE ByLightness(float lightness)
{
    if (lightness > 80.0f && lightness <= 100.0f) {
        return CMetry::ColorWhite;
    }
    if (lightness > 30.0f && lightness <= 80.0f) {
        return CMetry::ColorGray;
    }
    if (lightness >= 0.0f && lightness <= 30.0f) {
        return CMetry::ColorBlack;
    }
    return CMetry::ColorWhite;
}

// Chroma as the classification computes it: in double, rounded to float.
float ChromaOf(const QVLab& lab)
{
    const double a = lab[1];
    const double b = lab[2];
    return static_cast<float>(std::sqrt(a * a + b * b));
}

float LightnessOfFlat(float value)
{
    return LabOf(Flat(value))[0];
}

} // namespace

TEST(ColorTypeChroma, ASaturatedRedIsClassedByItsLightnessNotAsRed)
{
    // Hue 20 to 44 degrees with chroma 55 or more: with a lightness-dependent
    // chroma limit of 10 or less these would be red. The limit is 1001, so
    // they are black, grey and white by their lightness.
    const std::array<Values, 3> reds = {SaturatedRed(0.0f, 0.25f), SaturatedRed(0.03f, 0.9f),
                                        SaturatedRed(0.6f, 2.5f)};
    const ColorTYPE expected[] = {CMetry::ColorBlack, CMetry::ColorGray, CMetry::ColorWhite};
    for (std::size_t i = 0; i < reds.size(); ++i) {
        const QVLab lab = LabOf(reds[i]);
        EXPECT_GT(ChromaOf(lab), 55.0f) << i;
        const double hue = std::atan(static_cast<double>(lab[2]) / lab[1]) * 57.29577951308232;
        EXPECT_GE(hue, 20.0) << i;
        EXPECT_LT(hue, 45.0) << i;
        EXPECT_EQ(ByLightness(lab[0]), expected[i]) << i;
        EXPECT_EQ(expected[i], TypeOf(reds[i])) << i;
        EXPECT_NE(CMetry::ColorRed, TypeOf(reds[i])) << i;
    }
}

TEST(ColorTypeChroma, TheSaturatedRedOfChromaAbove80IsGrey)
{
    const Values red = SaturatedRed(0.03f, 0.9f);
    const QVLab lab = LabOf(red);
    EXPECT_GT(ChromaOf(lab), 80.0f);
    EXPECT_GT(lab[0], 30.0f);
    EXPECT_LE(lab[0], 80.0f);
    EXPECT_EQ(CMetry::ColorGray, TypeOf(red));
}

TEST(ColorTypeChroma, OnlyAChromaAbove1001IsChromatic)
{
    // Light from 650 nm on only, scaled up until the chroma passes 1001: the
    // hue stays near 43 degrees and the lightness far above 100. Bisect the
    // scale down to two neighbouring floats on either side of the limit.
    float low = 1000.0f;
    float high = 10000.0f;
    ASSERT_LE(ChromaOf(LabOf(LongWavelengthsOnly(low, 27))), 1001.0f);
    ASSERT_GT(ChromaOf(LabOf(LongWavelengthsOnly(high, 27))), 1001.0f);
    while (std::nextafter(low, high) != high) {
        const float middle = MidFloat(low, high);
        if (ChromaOf(LabOf(LongWavelengthsOnly(middle, 27))) > 1001.0f) {
            high = middle;
        } else {
            low = middle;
        }
    }
    const QVLab below = LabOf(LongWavelengthsOnly(low, 27));
    const QVLab above = LabOf(LongWavelengthsOnly(high, 27));
    ASSERT_GT(below[0], 100.0f);
    const double hue = std::atan(static_cast<double>(above[2]) / above[1]) * 57.29577951308232;
    ASSERT_GE(hue, 20.0);
    ASSERT_LT(hue, 45.0);
    // Not chromatic: lightness above 100 is white.
    EXPECT_EQ(CMetry::ColorWhite, TypeOf(LongWavelengthsOnly(low, 27)));
    // Chromatic: hue 20 to 44 with chroma 55 or more is red.
    EXPECT_EQ(CMetry::ColorRed, TypeOf(LongWavelengthsOnly(high, 27)));
}

TEST(ColorTypeChroma, AVeryBrightOrangeTakesTheChromaticTable)
{
    // Hue about 50 degrees, chroma above 70: orange.
    const Values orange = LongWavelengthsOnly(1000.0f, 22);
    const QVLab lab = LabOf(orange);
    ASSERT_GT(ChromaOf(lab), 1001.0f);
    EXPECT_EQ(CMetry::ColorOrange, TypeOf(orange));
}

TEST(ColorTypeLightness, AZeroSpectrumHasLightnessExactlyZeroAndIsBlack)
{
    EXPECT_EQ(0.0f, LabOf(Flat(0.0f))[0]);
    EXPECT_EQ(CMetry::ColorBlack, TypeOf(Flat(0.0f)));
}

TEST(ColorTypeLightness, ThePerfectWhiteIsWhite)
{
    EXPECT_EQ(CMetry::ColorWhite, TypeOf(Flat(1.0f)));
}

TEST(ColorTypeLightness, AMidGreyIsGrey)
{
    EXPECT_EQ(CMetry::ColorGray, TypeOf(Flat(0.25f)));
    EXPECT_EQ(CMetry::ColorGray, TypeOf(Flat(0.5f)));
}

TEST(ColorTypeLightness, ADarkGreyIsBlack)
{
    EXPECT_EQ(CMetry::ColorBlack, TypeOf(Flat(0.01f)));
    EXPECT_EQ(CMetry::ColorBlack, TypeOf(Flat(0.05f)));
}

TEST(ColorTypeLightness, LightnessAbove100IsWhite)
{
    ASSERT_GT(LabOf(Flat(2.0f))[0], 100.0f);
    EXPECT_EQ(CMetry::ColorWhite, TypeOf(Flat(2.0f)));
}

TEST(ColorTypeLightness, ThirtyIsTheUpperEdgeOfBlack)
{
    float low = 0.05f;
    float high = 0.1f;
    ASSERT_LE(LightnessOfFlat(low), 30.0f);
    ASSERT_GT(LightnessOfFlat(high), 30.0f);
    while (std::nextafter(low, high) != high) {
        const float middle = MidFloat(low, high);
        if (LightnessOfFlat(middle) > 30.0f) {
            high = middle;
        } else {
            low = middle;
        }
    }
    EXPECT_EQ(CMetry::ColorBlack, TypeOf(Flat(low))) << LightnessOfFlat(low);
    EXPECT_EQ(CMetry::ColorGray, TypeOf(Flat(high))) << LightnessOfFlat(high);
}

TEST(ColorTypeLightness, EightyIsTheUpperEdgeOfGrey)
{
    float low = 0.5f;
    float high = 0.6f;
    ASSERT_LE(LightnessOfFlat(low), 80.0f);
    ASSERT_GT(LightnessOfFlat(high), 80.0f);
    while (std::nextafter(low, high) != high) {
        const float middle = MidFloat(low, high);
        if (LightnessOfFlat(middle) > 80.0f) {
            high = middle;
        } else {
            low = middle;
        }
    }
    EXPECT_EQ(CMetry::ColorGray, TypeOf(Flat(low))) << LightnessOfFlat(low);
    EXPECT_EQ(CMetry::ColorWhite, TypeOf(Flat(high))) << LightnessOfFlat(high);
}

TEST_F(ColorTypeConditions, PaperBaseWithoutAPaperWhiteIsUndefined)
{
    EXPECT_EQ(CMetry::ColorUndefined, TypeOf(Flat(0.5f), PaperConditions()));
    EXPECT_EQ(-1, static_cast<int>(TypeOf(Flat(0.5f), PaperConditions())));
}

TEST_F(ColorTypeConditions, IsReadUnderTheSpectrumsOwnConditions)
{
    // A dark paper white: the spectrum equal to it is grey when absolute and
    // the perfect white when based on the paper.
    Values paper{};
    for (std::size_t i = 0; i < 36; ++i) {
        paper[i] = 0.3f + 0.005f * static_cast<float>(i);
    }
    const PaperWhiteInstalled installed(paper);
    EXPECT_EQ(CMetry::ColorGray, TypeOf(paper, Conditions()));
    EXPECT_EQ(CMetry::ColorWhite, TypeOf(paper, PaperConditions()));
}
