// The CIE 2000 colour difference.
//
// The reference values are the 34 pairs of the published implementation
// notes of the formula (data/ciede2000, with its provenance). Their L*, a*,
// b* are read as floats, which is what a QVColorVector holds, and the
// result, a float, must print to the published 4 decimals exactly, in both
// argument orders. Two rows are close calls, and pass as they stand:
// - Row 10 puts the two hues 180 degrees apart: from the float inputs the
//   difference comes out exactly -180, which keeps its sign and takes the
//   plain mean (the published 7.1792; the other branch gives 7.2195).
// - Row 23 gives the float 1.00004947 (the double of the decimal inputs is
//   1.0000495), four float steps below the point where it would print
//   1.0001.
// Every other numeric check is exact: the scaling by the parametric factors
// and the final rounding are exact operations on the double result, and the
// formula is symmetric to the last bit.

#include "qvimanager/cmetry/ciede2000.h"

#include "qvimanager/cmetry/cmetry_service.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/foundation/string.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

using CMetry::CMetryService;
using CMetry::DeltaE2000;
using CMetry::ExceptionCMetry;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using Utilities::String;

namespace {

const char* const kType = "ColorSpaceDescription.Type";

QVMeasureConditions Conditions(const char* type = "CIELab", const char* illumination = "D65")
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String(kType), String(type));
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String(illumination));
    return conditions;
}

QVColorVector Lab(float L, float a, float b)
{
    return QVColorVector(L, a, b, Conditions());
}

std::string Failure(const std::function<void()>& call)
{
    return TestSupport::FailureText<ExceptionCMetry>(call);
}

// The value as the published table writes it: rounded to 4 decimals.
std::string FourDecimals(float value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.4f", static_cast<double>(value));
    return text;
}

// ---------------------------------------------------------------- the table

struct ReferencePair {
    int row; // 1 to 34, as numbered in the published table
    float first[3];
    float second[3];
    std::string published;
};

std::vector<ReferencePair> ReadReferencePairs()
{
    std::ifstream file(QVIMANAGER_CIEDE2000_DIR "/sharma2005_table1.csv");
    std::vector<ReferencePair> pairs;
    std::string line;
    if (!file || !std::getline(file, line)) { // the header line
        return pairs;
    }
    while (std::getline(file, line)) {
        std::stringstream fields(line);
        std::string cell[7];
        for (std::string& field : cell) {
            std::getline(fields, field, ',');
        }
        ReferencePair pair{static_cast<int>(pairs.size()) + 1, {}, {}, cell[6]};
        for (int i = 0; i < 3; ++i) {
            // strtof rounds the decimal to the nearest float directly.
            pair.first[i] = std::strtof(cell[i].c_str(), nullptr);
            pair.second[i] = std::strtof(cell[3 + i].c_str(), nullptr);
        }
        pairs.push_back(pair);
    }
    return pairs;
}

QVColorVector First(const ReferencePair& pair)
{
    return Lab(pair.first[0], pair.first[1], pair.first[2]);
}

QVColorVector Second(const ReferencePair& pair)
{
    return Lab(pair.second[0], pair.second[1], pair.second[2]);
}

TEST(DeltaE2000, ReferenceTableHasItsThirtyFourPairs)
{
    const std::vector<ReferencePair> pairs = ReadReferencePairs();
    ASSERT_EQ(pairs.size(), 34u);
    EXPECT_EQ(pairs.front().published, "2.0425");
    EXPECT_EQ(pairs.back().published, "0.9082");
}

TEST(DeltaE2000, EveryPublishedPairRoundsToItsFourDecimals)
{
    const std::vector<ReferencePair> pairs = ReadReferencePairs();
    ASSERT_EQ(pairs.size(), 34u);
    for (const ReferencePair& pair : pairs) {
        EXPECT_EQ(FourDecimals(DeltaE2000(First(pair), Second(pair))), pair.published) << "row " << pair.row;
    }
}

TEST(DeltaE2000, EveryPublishedPairRoundsToItsFourDecimalsWithTheArgumentsSwapped)
{
    const std::vector<ReferencePair> pairs = ReadReferencePairs();
    ASSERT_EQ(pairs.size(), 34u);
    for (const ReferencePair& pair : pairs) {
        EXPECT_EQ(FourDecimals(DeltaE2000(Second(pair), First(pair))), pair.published) << "row " << pair.row;
    }
}

TEST(DeltaE2000, SwappingTheArgumentsGivesTheSameFloat)
{
    const std::vector<ReferencePair> pairs = ReadReferencePairs();
    ASSERT_EQ(pairs.size(), 34u);
    for (const ReferencePair& pair : pairs) {
        EXPECT_EQ(DeltaE2000(First(pair), Second(pair)), DeltaE2000(Second(pair), First(pair))) << "row " << pair.row;
        EXPECT_EQ(DeltaE2000(First(pair), Second(pair), 0.5f, 2.0f, 3.0f),
                  DeltaE2000(Second(pair), First(pair), 0.5f, 2.0f, 3.0f))
            << "row " << pair.row;
    }
}

// ---------------------------------------------------------------- properties

TEST(DeltaE2000, IdenticalColoursGiveZero)
{
    const float colours[][3] = {{50.0f, 0.0f, 0.0f},    {0.0f, 0.0f, 0.0f},      {100.0f, 0.0f, 0.0f},
                                {50.0f, 2.5f, 0.0f},    {60.2574f, -34.0099f, 36.2677f},
                                {22.7233f, 20.0904f, -46.694f}, {50.0f, -0.0f, -82.7485f}};
    for (const auto& c : colours) {
        EXPECT_EQ(DeltaE2000(Lab(c[0], c[1], c[2]), Lab(c[0], c[1], c[2])), 0.0f)
            << c[0] << " " << c[1] << " " << c[2];
    }
}

TEST(DeltaE2000, TheDefaultFactorsAreOne)
{
    const QVColorVector first = Lab(60.2574f, -34.0099f, 36.2677f);
    const QVColorVector second = Lab(60.4626f, -34.1751f, 39.4387f);
    EXPECT_EQ(DeltaE2000(first, second), DeltaE2000(first, second, 1.0f, 1.0f, 1.0f));
}

TEST(DeltaE2000, FactorsOfTwoHalveEveryDifferenceExactly)
{
    // Each term, the rotation term included, is divided by 2 in the
    // product's terms: the sum by 4, the root by 2, all exact.
    for (const ReferencePair& pair : ReadReferencePairs()) {
        EXPECT_EQ(DeltaE2000(First(pair), Second(pair), 2.0f, 2.0f, 2.0f), DeltaE2000(First(pair), Second(pair)) / 2)
            << "row " << pair.row;
    }
}

TEST(DeltaE2000, KLScalesOnlyTheLightnessTerm)
{
    // Neutral colours: no chroma and no hue difference.
    const QVColorVector first = Lab(50.0f, 0.0f, 0.0f);
    const QVColorVector second = Lab(61.0f, 0.0f, 0.0f);
    const float plain = DeltaE2000(first, second);
    EXPECT_GT(plain, 0.0f);
    EXPECT_EQ(DeltaE2000(first, second, 2.0f, 1.0f, 1.0f), plain / 2);
    EXPECT_EQ(DeltaE2000(first, second, 1.0f, 3.0f, 5.0f), plain);
}

TEST(DeltaE2000, KCScalesOnlyTheChromaTerm)
{
    // The same hue (0 degrees) at two chromas, the same lightness.
    const QVColorVector first = Lab(50.0f, 10.0f, 0.0f);
    const QVColorVector second = Lab(50.0f, 20.0f, 0.0f);
    const float plain = DeltaE2000(first, second);
    EXPECT_GT(plain, 0.0f);
    EXPECT_EQ(DeltaE2000(first, second, 1.0f, 2.0f, 1.0f), plain / 2);
    EXPECT_EQ(DeltaE2000(first, second, 3.0f, 1.0f, 5.0f), plain);
}

TEST(DeltaE2000, KHScalesOnlyTheHueTerm)
{
    // The same chroma (a* is 0, so the a* correction leaves it alone) at
    // two hues, the same lightness.
    const QVColorVector first = Lab(50.0f, 0.0f, 10.0f);
    const QVColorVector second = Lab(50.0f, 0.0f, -10.0f);
    const float plain = DeltaE2000(first, second);
    EXPECT_GT(plain, 0.0f);
    EXPECT_EQ(DeltaE2000(first, second, 1.0f, 1.0f, 2.0f), plain / 2);
    EXPECT_EQ(DeltaE2000(first, second, 3.0f, 5.0f, 1.0f), plain);
}

// The lightness weight SL of the formula for two neutral colours, in double.
double NeutralDifference(double L1, double L2)
{
    const double offset = ((L1 + L2) / 2.0 - 50.0) * ((L1 + L2) / 2.0 - 50.0);
    const double sl = 1.0 + 0.015 * offset / std::sqrt(20.0 + offset);
    return (L2 - L1) / sl;
}

// The same in float, each step rounded.
float NeutralDifferenceInFloat(float L1, float L2)
{
    const float mean = (L1 + L2) / 2.0f - 50.0f;
    const float offset = mean * mean;
    const float sl = 1.0f + 0.015f * offset / std::sqrt(20.0f + offset);
    return (L2 - L1) / sl;
}

TEST(DeltaE2000, TheResultIsTheDoubleRoundedOnceToFloat)
{
    // For neutral colours the formula is |L2 - L1| / SL. The pair is chosen
    // so that float arithmetic at each step gives another float: the check
    // could tell the two apart.
    const float L1 = 20.0f;
    const float L2 = 35.0f;
    const auto once = static_cast<float>(NeutralDifference(L1, L2));
    ASSERT_NE(once, NeutralDifferenceInFloat(L1, L2));
    EXPECT_EQ(DeltaE2000(Lab(L1, 0.0f, 0.0f), Lab(L2, 0.0f, 0.0f)), once);
}

// ---------------------------------------------------------------- hue rules

TEST(DeltaE2000, AnAchromaticColourHasHueZeroWhateverTheSignsOfItsZeros)
{
    // With one chroma 0 the mean hue is the sum of the hues: a hue of 180 for
    // the neutral colour (atan2 of a negative zero) would change the result.
    const QVColorVector chromatic = Lab(50.0f, -1.0f, 2.0f);
    const float expected = DeltaE2000(Lab(50.0f, 0.0f, 0.0f), chromatic);
    EXPECT_EQ(FourDecimals(expected), "2.3669");
    EXPECT_EQ(DeltaE2000(Lab(50.0f, -0.0f, 0.0f), chromatic), expected);
    EXPECT_EQ(DeltaE2000(Lab(50.0f, -0.0f, -0.0f), chromatic), expected);
    EXPECT_EQ(DeltaE2000(Lab(50.0f, 0.0f, -0.0f), chromatic), expected);
    EXPECT_EQ(DeltaE2000(chromatic, Lab(50.0f, -0.0f, -0.0f)), expected);
}

// ---------------------------------------------------------------- inputs

TEST(DeltaE2000, ComponentThreeIsNotRead)
{
    QVColorVector first = Lab(50.0f, 2.5f, 0.0f);
    const QVColorVector second = Lab(58.0f, 24.0f, 15.0f);
    const float plain = DeltaE2000(first, second);
    first[3] = 40.0f;
    EXPECT_EQ(DeltaE2000(first, second), plain);
    EXPECT_EQ(DeltaE2000(second, first), plain);
}

TEST(DeltaE2000, TheTwoConditionSetsAreNotCompared)
{
    const QVColorVector first(50.0f, 2.5f, 0.0f, Conditions("CIELab", "D50"));
    const QVColorVector second(58.0f, 24.0f, 15.0f, Conditions("CIELab", "A"));
    EXPECT_EQ(DeltaE2000(first, second), DeltaE2000(Lab(50.0f, 2.5f, 0.0f), Lab(58.0f, 24.0f, 15.0f)));
}

TEST(DeltaE2000, XYZVectorsAreConvertedAsTheServiceConvertsThemUnderTheirOwnConditions)
{
    const QVColorVector xyz1(41.24f, 21.26f, 1.93f, Conditions("CIEXYZ"));
    const QVColorVector xyz2(35.76f, 71.52f, 11.92f, Conditions("CIEXYZ"));
    const QVColorVector lab1 = CMetryService::GetVector(xyz1, String("CIELab"));
    const QVColorVector lab2 = CMetryService::GetVector(xyz2, String("CIELab"));
    const float expected = DeltaE2000(lab1, lab2);
    EXPECT_GT(expected, 1.0f);
    EXPECT_EQ(DeltaE2000(xyz1, xyz2), expected);
    EXPECT_EQ(DeltaE2000(xyz1, lab2), expected);
    EXPECT_EQ(DeltaE2000(lab1, xyz2), expected);
    EXPECT_EQ(DeltaE2000(xyz1, xyz1), 0.0f);

    // Under illuminant A the same tristimulus values are other Lab colours.
    const QVColorVector xyzA(41.24f, 21.26f, 1.93f, Conditions("CIEXYZ", "A"));
    const QVColorVector labA = CMetryService::GetVector(xyzA, String("CIELab"));
    EXPECT_NE(labA[1], lab1[1]);
    EXPECT_EQ(DeltaE2000(xyzA, xyz2), DeltaE2000(labA, lab2));
    EXPECT_NE(DeltaE2000(xyzA, xyz2), expected);
}

TEST(DeltaE2000, OtherColourSpacesAreRefused)
{
    const QVColorVector lab = Lab(50.0f, 2.5f, 0.0f);
    for (const char* space : {"CIELCh", "CIELuv", "CIELChuv", "CIEuvY1960", "CIEuvY1976", "CIExyY", "HunterLab",
                              "RxRyRz", "LABvq", "LCHvq", "RGB", "CMYK"}) {
        const QVColorVector other(50.0f, 2.5f, 0.0f, Conditions(space));
        const std::string text = std::string("DeltaE2000 not supported for ColorSpace ") + space;
        EXPECT_EQ(Failure([&] { DeltaE2000(other, lab); }), text);
        EXPECT_EQ(Failure([&] { DeltaE2000(lab, other); }), text);
    }
}

TEST(DeltaE2000, DeltaVectorsAreRefused)
{
    QVMeasureConditions conditions = Conditions();
    conditions.SetMeasureCondition(String("ColorSpaceDescription.AbsoluteOrDeltaVector"), String("DeltaVector"));
    const QVColorVector delta(1.0f, 2.0f, 3.0f, conditions);
    const QVColorVector lab = Lab(50.0f, 2.5f, 0.0f);
    EXPECT_EQ(Failure([&] { DeltaE2000(delta, lab); }), "DeltaE2000 not supported for a DeltaVector");
    EXPECT_EQ(Failure([&] { DeltaE2000(lab, delta); }), "DeltaE2000 not supported for a DeltaVector");
}

TEST(DeltaE2000, FactorsThatAreNotFiniteAndPositiveAreRefused)
{
    const QVColorVector first = Lab(50.0f, 2.5f, 0.0f);
    const QVColorVector second = Lab(58.0f, 24.0f, 15.0f);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float bad : {0.0f, -0.0f, -1.0f, -infinity, infinity, nan}) {
        EXPECT_EQ(Failure([&] { DeltaE2000(first, second, bad, 1.0f, 1.0f); }),
                  "DeltaE2000: the parametric factor kL must be finite and greater than 0")
            << bad;
        EXPECT_EQ(Failure([&] { DeltaE2000(first, second, 1.0f, bad, 1.0f); }),
                  "DeltaE2000: the parametric factor kC must be finite and greater than 0")
            << bad;
        EXPECT_EQ(Failure([&] { DeltaE2000(first, second, 1.0f, 1.0f, bad); }),
                  "DeltaE2000: the parametric factor kH must be finite and greater than 0")
            << bad;
    }
    // The smallest and the largest float are valid factors. A difference
    // beyond the largest float, which only a factor far below 1 gives, is
    // infinite.
    const float tiny = DeltaE2000(first, second, std::numeric_limits<float>::denorm_min(), 1.0f, 1.0f);
    EXPECT_TRUE(std::isinf(tiny) && tiny > 0.0f);
    const float large = DeltaE2000(first, second, std::numeric_limits<float>::max(), 1.0f, 1.0f);
    EXPECT_TRUE(std::isfinite(large) && large > 0.0f);
}

TEST(DeltaE2000, FactorsAreCheckedInOrderAndBeforeTheVectors)
{
    const QVColorVector lch(50.0f, 2.5f, 0.0f, Conditions("CIELCh"));
    EXPECT_EQ(Failure([&] { DeltaE2000(lch, lch, 1.0f, 0.0f, 0.0f); }),
              "DeltaE2000: the parametric factor kC must be finite and greater than 0");
    EXPECT_EQ(Failure([&] { DeltaE2000(lch, lch, -1.0f, 0.0f, 0.0f); }),
              "DeltaE2000: the parametric factor kL must be finite and greater than 0");
}

TEST(DeltaE2000, FiniteComponentsGiveAFiniteResultAndOthersDoNot)
{
    const float largest = std::numeric_limits<float>::max();
    EXPECT_TRUE(std::isfinite(DeltaE2000(Lab(50.0f, largest, -largest), Lab(50.0f, -largest, largest))));
    EXPECT_TRUE(std::isfinite(DeltaE2000(Lab(0.0f, largest, 0.0f), Lab(largest, 0.0f, 1e-30f))));
    EXPECT_TRUE(std::isfinite(
        DeltaE2000(Lab(50.0f, std::numeric_limits<float>::denorm_min(), 0.0f), Lab(50.0f, 0.0f, 1e-45f))));

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const QVColorVector plain = Lab(50.0f, 2.5f, 0.0f);
    EXPECT_FALSE(std::isfinite(DeltaE2000(Lab(nan, 2.5f, 0.0f), plain)));
    EXPECT_FALSE(std::isfinite(DeltaE2000(plain, Lab(50.0f, nan, 0.0f))));
    EXPECT_FALSE(std::isfinite(DeltaE2000(plain, Lab(50.0f, 2.5f, infinity))));
    EXPECT_FALSE(std::isfinite(DeltaE2000(Lab(-infinity, 2.5f, 0.0f), plain)));
}

} // namespace
