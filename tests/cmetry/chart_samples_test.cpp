// The 24 colours of a colour rendition chart, measured (data/samples), as
// Lab and LCh under D65 and D50 with the 2-degree observer: plausibility
// checks a colour scientist would make at a glance.

#include "qvimanager/cmetry/calculator.h"

#include "tests/support/cgats.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

using CMetry::CMetryCalculator;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using TestSupport::CgatsSample;
using Utilities::String;

namespace {

struct HueRange {
    int id;
    const char* name;
    float from;
    float to;
};

// Hue angles (degrees) in which each chromatic patch must lie.
const HueRange kHues[] = {
    {1, "dark skin", 30.0f, 70.0f},      {2, "light skin", 30.0f, 70.0f},
    {3, "blue sky", 240.0f, 290.0f},     {4, "foliage", 100.0f, 150.0f},
    {5, "blue flower", 270.0f, 320.0f},  {6, "bluish green", 150.0f, 200.0f},
    {7, "orange", 45.0f, 75.0f},         {8, "purplish blue", 270.0f, 310.0f},
    {9, "moderate red", 0.0f, 40.0f},    {10, "purple", 295.0f, 335.0f},
    {11, "yellow green", 100.0f, 130.0f}, {12, "orange yellow", 65.0f, 90.0f},
    {13, "blue", 270.0f, 310.0f},        {14, "green", 120.0f, 160.0f},
    {15, "red", 0.0f, 45.0f},            {16, "yellow", 80.0f, 105.0f},
    {17, "magenta", 320.0f, 360.0f},     {18, "cyan", 200.0f, 250.0f},
};

struct LabLCh {
    QVColorVector lab;
    QVColorVector lch;
};

LabLCh Evaluate(const CgatsSample& sample, const std::string& illumination)
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String(illumination));
    conditions.SetMeasureCondition(String("Colorimetric.Observer"), String("TwoDegree"));
    LabLCh result;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(QVSpectrum(sample.values), conditions, result.lab));
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELCh_ab(result.lab, result.lch));
    return result;
}

class ChartSamples : public testing::TestWithParam<std::tuple<std::string, std::string>> {};

} // namespace

TEST_P(ChartSamples, LabValuesArePlausible)
{
    const auto [file, illumination] = GetParam();
    const std::vector<CgatsSample> samples = TestSupport::ReadCgats(TestSupport::SampleFile(file));
    ASSERT_EQ(24U, samples.size());
    std::vector<LabLCh> colours;
    for (const CgatsSample& sample : samples) {
        colours.push_back(Evaluate(sample, illumination));
        const float lightness = colours.back().lab[0];
        EXPECT_GT(lightness, 0.0f) << sample.name;
        EXPECT_LT(lightness, 100.0f) << sample.name;
    }
    // Patch 19 is the white, 24 the black, 19 to 24 the neutral ramp.
    EXPECT_GT(colours[18].lab[0], 90.0f);
    EXPECT_LT(colours[23].lab[0], 25.0f);
    for (int i = 18; i < 24; ++i) {
        EXPECT_LT(colours[static_cast<std::size_t>(i)].lch[1], 4.0f) << samples[static_cast<std::size_t>(i)].name;
        if (i > 18) {
            EXPECT_LT(colours[static_cast<std::size_t>(i)].lab[0], colours[static_cast<std::size_t>(i - 1)].lab[0]);
        }
    }
    for (const HueRange& range : kHues) {
        const CgatsSample& sample = samples[static_cast<std::size_t>(range.id - 1)];
        ASSERT_EQ(range.id, sample.id);
        ASSERT_EQ(std::string(range.name), sample.name);
        const float hue = colours[static_cast<std::size_t>(range.id - 1)].lch[2];
        EXPECT_GE(hue, range.from) << range.name;
        EXPECT_LE(hue, range.to) << range.name;
        EXPECT_GT(colours[static_cast<std::size_t>(range.id - 1)].lch[1], 10.0f) << range.name;
    }
    // Yellow is the lightest chromatic patch, blue among the darkest.
    EXPECT_GT(colours[15].lab[0], 75.0f);
    EXPECT_LT(colours[12].lab[0], 35.0f);
}

INSTANTIATE_TEST_SUITE_P(TwentyFourPatchChart, ChartSamples,
                         testing::Combine(testing::Values(std::string("chart24_ohta.cgats"), std::string("chart24_babelcolor_avg.cgats")),
                                          testing::Values(std::string("D65"), std::string("D50"))),
                         [](const testing::TestParamInfo<ChartSamples::ParamType>& info) {
                             std::string name = std::get<0>(info.param) + "_" + std::get<1>(info.param);
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) {
                                     c = '_';
                                 }
                             }
                             return name;
                         });
