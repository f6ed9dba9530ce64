// The road of one measurement: an application wraps the 36 values an
// instrument gave in a spectrum with its conditions, asks the colour service
// for the colour space named in the conditions, and gets a colour vector
// that carries those conditions. And the way back: the Lab of each patch of
// a colour rendition chart turned into a spectrum whose Lab lies within the
// tolerance of the target.

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/cmetry_service.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/cgats.h"

#include <gtest/gtest.h>

#include <string>

using CMetry::CMetryCalculator;
using CMetry::CMetryService;
using CMetry::QVColorVector;
using CMetry::QVLab;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using Utilities::String;

TEST(MeasurementRoad, ASpectrumWithConditionsBecomesALabVectorThatCarriesThem)
{
    const std::vector<TestSupport::CgatsSample> samples =
        TestSupport::ReadCgats(TestSupport::SampleFile("chart24_babelcolor_avg.cgats"));
    const TestSupport::CgatsSample& red = samples[14];
    ASSERT_EQ("red", red.name);

    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("ColorSpaceDescription.Type"), String("CIELab"));
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("D50"));
    conditions.SetMeasureCondition(String("Colorimetric.Observer"), String("TwoDegree"));
    conditions.SetMeasureCondition(String("Physical.Filter"), String("UVCut"));
    const QVSpectrum spectrum(red.values, conditions);

    const QVColorVector lab = CMetryService::GetVector(spectrum, conditions);

    // The service dispatched on "CIELab": the same as the calculator's Lab.
    QVColorVector expected;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, conditions, expected));
    EXPECT_TRUE(lab == expected);
    // The vector carries the conditions it was evaluated under.
    EXPECT_TRUE(lab.GetMeasureConditions() == conditions);
    EXPECT_STREQ("D50", lab.GetMeasureConditions().GetMeasureCondition(String("Colorimetric.Illumination")).GetCharPointer());
    EXPECT_STREQ("UVCut", lab.GetMeasureConditions().GetMeasureCondition(String("Physical.Filter")).GetCharPointer());
    EXPECT_STREQ("a*", lab.GetMeasureConditions().GetElementName(1).GetCharPointer());
    // A red: light enough, strongly positive a*, positive b*.
    EXPECT_GT(lab[0], 35.0f);
    EXPECT_LT(lab[0], 50.0f);
    EXPECT_GT(lab[1], 40.0f);
    EXPECT_GT(lab[2], 15.0f);
    // The weight factors the calculator used are those of D50 / 2 degrees.
    ASSERT_NE(nullptr, TestAccess::SharedWeightfactors());
    EXPECT_EQ(CMetry::Weightfactors(conditions).GetFilterSum(0), TestAccess::SharedWeightfactors()->GetFilterSum(0));
}

namespace {

class ChartReconstruction : public testing::TestWithParam<std::string> {};

} // namespace

TEST_P(ChartReconstruction, EveryPatchIsReconstructedWithinTheTolerance)
{
    // Every one of the 24 patches of both charts is reached: the search ends
    // with success, and the Lab of the spectrum it gives lies within 0.1 of
    // the target (the service's tolerance).
    const std::vector<TestSupport::CgatsSample> samples = TestSupport::ReadCgats(TestSupport::SampleFile(GetParam()));
    ASSERT_EQ(24U, samples.size());
    const QVMeasureConditions conditions;
    for (const TestSupport::CgatsSample& sample : samples) {
        const QVColorVector target = CMetryService::GetVector(QVSpectrum(sample.values), conditions);
        const QVSpectrum reconstructed = CMetryService::GetSpectrum(target);
        for (long i = 0; i < 36; ++i) {
            EXPECT_GE(reconstructed[i], 0.0f) << sample.name;
            EXPECT_LE(reconstructed[i], 1.0f) << sample.name;
        }
        QVLab back;
        back = CMetryService::GetVector(reconstructed, conditions);
        QVLab wanted;
        wanted = target;
        EXPECT_LT(CMetryCalculator::GetDeltaE_CIELAB(back, wanted), 0.1f) << sample.name;
    }
}

INSTANTIATE_TEST_SUITE_P(TwentyFourPatchChart, ChartReconstruction,
                         testing::Values(std::string("chart24_ohta.cgats"), std::string("chart24_babelcolor_avg.cgats")),
                         [](const testing::TestParamInfo<std::string>& info) {
                             return info.param.substr(0, info.param.find('.'));
                         });
