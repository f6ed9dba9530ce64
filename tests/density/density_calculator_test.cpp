// Density calculator: filter densities of a reflectance spectrum, the density
// spectrum and the maximum density, dot area, print contrast, trapping,
// greyness and hue error, the classification of a measured patch and the
// calibration store.
//
// Most spectra here are read through the narrow-band standard (DINNB): its
// colour filters are single points of weight 1 at 620 nm (cyan), 530 nm
// (magenta) and 430 nm (yellow), so the sum of a colour filter is exactly the
// spectrum's value at that point and its density is -log10 of that value,
// taken in double and stored as a float. The black filter is the visual
// response that sums to 100 over 400 to 730 nm; black results go through a
// float sum of 34 products and are compared with a tolerance.
//
// The paper white is usually flat 0.5: dividing by 0.5 is exact, so a
// spectrum written as 0.5 x beta is based to exactly beta.

#include "qvimanager/density/density_calculator.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/density/density.h"
#include "qvimanager/density/density_filter.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

using CMetry::AutoTableTYPE;
using CMetry::DensityCalculator;
using CMetry::DensityFilter;
using CMetry::DensityFilterModeTYPE;
using CMetry::QVDensFilterTYPE;
using CMetry::QVDensity;
using CMetry::QVDensityStdTYPE;
using CMetry::QVMeasureConditions;
using CMetry::QVPhysicalFilterTYPE;
using CMetry::QVSample;
using CMetry::QVSpectrum;
using CMetry::QVWhiteBaseTYPE;
using CMetry::TestAccess;
using TestSupport::FailureText;
using Utilities::ExceptionNullpointer;
using Utilities::ExceptionOutOfBound;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

using Values = std::array<float, 36>;

const char* const kRangeError = "vector index >= vector size";
const char* const kNullError = "Failed to access to nullpointer.";
const char* const kCellError = "Density calibration: physical filter or density standard out of range";

constexpr QVDensityStdTYPE kNarrow = CMetry::DensityStdDINNB;
constexpr QVWhiteBaseTYPE kAbs = CMetry::WhiteBaseAbsolute;
constexpr QVWhiteBaseTYPE kPap = CMetry::WhiteBasePaper;
constexpr QVWhiteBaseTYPE kAuto = CMetry::WhiteBaseAutomatic;
constexpr DensityFilterModeTYPE kModeBlack = CMetry::DensityFilterModeBlack;
constexpr DensityFilterModeTYPE kModeCyan = CMetry::DensityFilterModeCyan;
constexpr DensityFilterModeTYPE kModeMagenta = CMetry::DensityFilterModeMagenta;
constexpr DensityFilterModeTYPE kModeYellow = CMetry::DensityFilterModeYellow;
constexpr DensityFilterModeTYPE kModeMax = CMetry::DensityFilterModeMax;
constexpr DensityFilterModeTYPE kModeAuto = CMetry::DensityFilterModeAuto;
constexpr QVPhysicalFilterTYPE kNoFilter = CMetry::PhysicalFilterNo;
constexpr QVPhysicalFilterTYPE kPolarizer = CMetry::PhysicalFilterPolarizer;

// The paper white most tests install.
constexpr float kPaper = 0.5f;

// The narrow-band points.
constexpr int kCyanNm = 620;
constexpr int kMagentaNm = 530;
constexpr int kYellowNm = 430;

std::size_t Index(int nanometres)
{
    return static_cast<std::size_t>((nanometres - 380) / 10);
}

int WaveLengthOf(std::size_t index)
{
    return 380 + 10 * static_cast<int>(index);
}

Values Flat(float value)
{
    Values values{};
    values.fill(value);
    return values;
}

Values With(Values values, int nanometres, float value)
{
    values[Index(nanometres)] = value;
    return values;
}

// Flat `rest`, with the three narrow-band points set.
Values NarrowBand(float rest, float cyan, float magenta, float yellow)
{
    return With(With(With(Flat(rest), kCyanNm, cyan), kMagentaNm, magenta), kYellowNm, yellow);
}

// A patch on the usual paper white: beta is the reflectance relative to the
// paper (1 = paper), at every point and at the three narrow-band points.
Values OnPaper(float cyan, float magenta, float yellow)
{
    return NarrowBand(kPaper, kPaper * cyan, kPaper * magenta, kPaper * yellow);
}

QVSpectrum Spectrum(const Values& values)
{
    float raw[36];
    for (std::size_t i = 0; i < 36; ++i) {
        raw[i] = values[i];
    }
    return QVSpectrum(raw);
}

QVSpectrum Spectrum(const Values& values, const QVMeasureConditions& conditions)
{
    QVSpectrum spectrum = Spectrum(values);
    TestAccess::SetMeasureConditions(spectrum, conditions);
    return spectrum;
}

QVMeasureConditions PolarizerConditions()
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Physical.Filter"), String("Polarizer"));
    return conditions;
}

// The density of one reflectance: -log10 in double, stored as a float.
float Density(float reflectance)
{
    return static_cast<float>(-std::log10(static_cast<double>(reflectance)));
}

// The black filter of the status standards, in double.
std::array<double, 36> BlackWeights()
{
    const DensityFilter filter(kNarrow);
    std::array<double, 36> weights{};
    for (std::size_t i = 0; i < 36; ++i) {
        weights[i] = static_cast<double>(filter[CMetry::DensFilterBlack][static_cast<long>(i)]);
    }
    return weights;
}

// The black density of a spectrum computed in double: the filter sums to
// 100, which the 2.0 of the black reading takes back out.
double BlackDensity(const Values& values)
{
    const std::array<double, 36> weights = BlackWeights();
    double sum = 0.0;
    for (std::size_t i = 0; i < 36; ++i) {
        sum += weights[i] * static_cast<double>(values[i]);
    }
    return -std::log10(sum) + 2.0;
}

void InstallPaperWhite(const Values& values)
{
    SmartPointer<QVSample> sample(new QVSample());
    sample->SetSpectrum(Spectrum(values));
    TestAccess::SetPaperWhitePointer(sample);
}

void InstallEmptyPaperWhite()
{
    TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>(new QVSample()));
}

QVDensity Reading(float black, float cyan, float magenta, float yellow)
{
    return QVDensity(black, cyan, magenta, yellow, QVMeasureConditions(), CMetry::DensityStdDIN,
                     QVDensity::UserFilterPointer());
}

QVDensity VectorOf(const Values& values, QVDensityStdTYPE standard, QVWhiteBaseTYPE whiteBase)
{
    QVDensity out;
    EXPECT_TRUE(DensityCalculator::GetDensityVector(Spectrum(values), standard, whiteBase, out));
    return out;
}

void ExpectSameDensities(const QVDensity& expected, const QVDensity& actual)
{
    for (unsigned short filter = 0; filter < 4; ++filter) {
        EXPECT_EQ(expected[filter], actual[filter]) << "filter " << filter;
    }
}

void SetSlope(QVPhysicalFilterTYPE physical, QVDensityStdTYPE standard, std::array<float, 4> values)
{
    DensityCalculator::SetDensitySlope(physical, standard, values.data());
}

void SetOffset(QVPhysicalFilterTYPE physical, QVDensityStdTYPE standard, std::array<float, 4> values)
{
    DensityCalculator::SetDensityOffset(physical, standard, values.data());
}

QVDensFilterTYPE FilterNumber(int filter)
{
    return static_cast<QVDensFilterTYPE>(filter);
}

DensityFilterModeTYPE Mode(int mode)
{
    return static_cast<DensityFilterModeTYPE>(mode);
}

// The dot area of ideal densities, as a fraction: Yule-Nielsen with factor n,
// from the relative reflectances of solid and tint.
double IdealArea(double solidBeta, double tintBeta, double n)
{
    return (1.0 - std::pow(tintBeta, 1.0 / n)) / (1.0 - std::pow(solidBeta, 1.0 / n));
}

// Every test begins and ends with a neutral calibration store, no paper white
// and a filter set with no standard selected.
class DensityCalculatorFixture : public ::testing::Test {
protected:
    void SetUp() override { Reset(); }
    void TearDown() override { Reset(); }

    static void Reset()
    {
        DensityCalculator::InitializeDensityCalibration();
        TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>());
        DensityCalculator::asDensityFilter = DensityFilter();
    }
};

class DensityCalculatorVector : public DensityCalculatorFixture {};
class DensityCalculatorSlope : public DensityCalculatorFixture {};
class DensityCalculatorFilterChoice : public DensityCalculatorFixture {};
class DensityCalculatorDensity : public DensityCalculatorFixture {};
class DensityCalculatorSpectrum : public DensityCalculatorFixture {};
class DensityCalculatorMaxDensity : public DensityCalculatorFixture {};
class DensityCalculatorDotArea : public DensityCalculatorFixture {};
class DensityCalculatorContrast : public DensityCalculatorFixture {};
class DensityCalculatorTrapping : public DensityCalculatorFixture {};
class DensityCalculatorGreyness : public DensityCalculatorFixture {};
class DensityCalculatorHueError : public DensityCalculatorFixture {};
class DensityCalculatorSort : public DensityCalculatorFixture {};
class DensityCalculatorRecognize : public DensityCalculatorFixture {};
class DensityCalculatorCalibration : public DensityCalculatorFixture {};
class DensityCalculatorActiveFilter : public DensityCalculatorFixture {};

} // namespace

// ---------------------------------------------------------------- constants

TEST_F(DensityCalculatorVector, ConstantsHaveTheirBitPatterns)
{
    EXPECT_EQ(9.99f, DensityCalculator::NoLightDensity);
    EXPECT_EQ(0x411FD70Au, std::bit_cast<std::uint32_t>(DensityCalculator::NoLightDensity));
    EXPECT_EQ(0.01f, DensityCalculator::SmallDensity);
    EXPECT_EQ(0x3C23D70Au, std::bit_cast<std::uint32_t>(DensityCalculator::SmallDensity));
}

// ---------------------------------------------------------------- GetDensityVector

TEST_F(DensityCalculatorVector, ZeroSpectrumReadsNoLightInTheColoursAndTwoMoreInBlack)
{
    // 9.99f lies in [8, 16), where floats are spaced 2^-20; adding 2.0 stays
    // on that grid, so the sum is exact and is the float nearest 11.99.
    const float blackOfZero = 11.99f;
    for (int standard = CMetry::DensityStdDIN; standard <= CMetry::DensityStdSPI; ++standard) {
        QVDensity out;
        EXPECT_TRUE(DensityCalculator::GetDensityVector(QVSpectrum(), static_cast<QVDensityStdTYPE>(standard), kAbs,
                                                        out));
        EXPECT_EQ(blackOfZero, out[0]) << standard;
        for (unsigned short colour = 1; colour < 4; ++colour) {
            EXPECT_EQ(9.99f, out[colour]) << standard << " " << colour;
            EXPECT_EQ(0x411FD70Au, std::bit_cast<std::uint32_t>(out[colour])) << standard << " " << colour;
        }
    }
}

TEST_F(DensityCalculatorVector, ReflectanceOfZeroOrLessReadsNoLight)
{
    const QVDensity out = VectorOf(NarrowBand(0.5f, -0.2f, 0.0f, 0.25f), kNarrow, kAbs);
    EXPECT_EQ(9.99f, out[1]);
    EXPECT_EQ(9.99f, out[2]);
    EXPECT_EQ(Density(0.25f), out[3]);
}

TEST_F(DensityCalculatorVector, NarrowBandColoursReadTheirSinglePoint)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    QVDensity out;
    ASSERT_TRUE(DensityCalculator::GetDensityVector(Spectrum(values), kNarrow, kAbs, out));
    EXPECT_EQ(Density(0.1f), out[1]);
    EXPECT_EQ(Density(0.25f), out[2]);
    EXPECT_EQ(Density(0.8f), out[3]);
    // A float sum of 34 products near 50 is good to a few parts in 1e7;
    // through log10 that is well inside 2e-6.
    EXPECT_NEAR(BlackDensity(values), out[0], 2e-6);
    // The calculator writes single densities: the reading is not marked
    // valid.
    EXPECT_FALSE(TestAccess::IsValid(out));
}

TEST_F(DensityCalculatorVector, FlatSpectrumReadsItsReflectanceInEveryStandard)
{
    // The colour filters sum to 1 and the black filter to 100 within 2e-5 of
    // the sum, so each density is 1.0 within 1e-5.
    for (int standard = CMetry::DensityStdDIN; standard <= CMetry::DensityStdSPI; ++standard) {
        const QVDensity out = VectorOf(Flat(0.1f), static_cast<QVDensityStdTYPE>(standard), kAbs);
        for (unsigned short filter = 0; filter < 4; ++filter) {
            EXPECT_NEAR(1.0, out[filter], 1e-5) << standard << " " << filter;
        }
    }
}

TEST_F(DensityCalculatorVector, PaperWhiteDensitiesAreSubtracted)
{
    Values paper{};
    for (std::size_t i = 0; i < 36; ++i) {
        paper[i] = 0.6f + 0.01f * static_cast<float>(i);
    }
    InstallPaperWhite(paper);
    const Values values = NarrowBand(0.4f, 0.05f, 0.125f, 0.3f);
    QVDensity out;
    ASSERT_TRUE(DensityCalculator::GetDensityVector(Spectrum(values), kNarrow, kPap, out));
    // Each colour: the sample's density minus the paper's density at the
    // same point, in float.
    EXPECT_EQ(Density(0.05f) - Density(paper[Index(kCyanNm)]), out[1]);
    EXPECT_EQ(Density(0.125f) - Density(paper[Index(kMagentaNm)]), out[2]);
    EXPECT_EQ(Density(0.3f) - Density(paper[Index(kYellowNm)]), out[3]);
    EXPECT_NEAR(-std::log10(0.05 / 0.84), out[1], 1e-6);
    // Black: two readings of about 2.4, each good to 2e-6 (see above).
    EXPECT_NEAR(BlackDensity(values) - BlackDensity(paper), out[0], 4e-6);
}

TEST_F(DensityCalculatorVector, AutomaticWhiteBaseGivesTheSameNumbersAsPaper)
{
    InstallPaperWhite(Flat(kPaper));
    const Values values = OnPaper(0.1f, 0.3f, 0.7f);
    const QVDensity paper = VectorOf(values, kNarrow, kPap);
    const QVDensity automatic = VectorOf(values, kNarrow, kAuto);
    ExpectSameDensities(paper, automatic);
    EXPECT_NEAR(1.0, paper[1], 1e-6);
}

TEST_F(DensityCalculatorVector, WithoutPaperWhiteFailsAndKeepsTheAbsoluteDensities)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    const QVDensity absolute = VectorOf(values, kNarrow, kAbs);
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        QVDensity out;
        EXPECT_FALSE(DensityCalculator::GetDensityVector(Spectrum(values), kNarrow, whiteBase, out)) << whiteBase;
        ExpectSameDensities(absolute, out);
        EXPECT_EQ(Density(0.1f), out[1]);
    }
}

TEST_F(DensityCalculatorVector, PaperWhiteWithoutLightOrWithoutSpectrumFails)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    const QVDensity absolute = VectorOf(values, kNarrow, kAbs);

    InstallPaperWhite(Flat(0.0f));
    QVDensity dark;
    EXPECT_FALSE(DensityCalculator::GetDensityVector(Spectrum(values), kNarrow, kPap, dark));
    ExpectSameDensities(absolute, dark);

    InstallEmptyPaperWhite();
    QVDensity empty;
    EXPECT_FALSE(DensityCalculator::GetDensityVector(Spectrum(values), kNarrow, kAuto, empty));
    ExpectSameDensities(absolute, empty);
}

TEST_F(DensityCalculatorVector, AbsoluteNeedsNoPaperWhite)
{
    QVDensity out;
    EXPECT_TRUE(DensityCalculator::GetDensityVector(Spectrum(Flat(0.5f)), kNarrow, kAbs, out));
    EXPECT_EQ(Density(0.5f), out[2]);
}

// ---------------------------------------------------------------- GetDensityVectorWithSlope

TEST_F(DensityCalculatorSlope, AbsoluteDensitiesTakeSlopeAndOffset)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    const QVDensity plain = VectorOf(values, kNarrow, kAbs);
    // Slopes are powers of two: the products are exact, the sums round once.
    const std::array<float, 4> slope = {2.0f, 0.5f, 4.0f, 1.0f};
    const std::array<float, 4> offset = {0.25f, -0.125f, 0.5f, 0.0f};
    SetSlope(kNoFilter, kNarrow, slope);
    SetOffset(kNoFilter, kNarrow, offset);
    QVDensity out;
    ASSERT_TRUE(DensityCalculator::GetDensityVectorWithSlope(Spectrum(values), kNarrow, kAbs, out));
    for (unsigned short filter = 0; filter < 4; ++filter) {
        EXPECT_EQ(plain[filter] * slope[filter] + offset[filter], out[filter]) << filter;
    }
    EXPECT_EQ(Density(0.1f) * 0.5f - 0.125f, out[1]);
}

TEST_F(DensityCalculatorSlope, PaperBasedDensitiesTakeTheSlopeButNotTheOffset)
{
    InstallPaperWhite(Flat(kPaper));
    const Values values = OnPaper(0.1f, 0.25f, 0.8f);
    const QVDensity plain = VectorOf(values, kNarrow, kPap);
    const std::array<float, 4> slope = {2.0f, 0.5f, 4.0f, 1.0f};
    SetSlope(kNoFilter, kNarrow, slope);
    SetOffset(kNoFilter, kNarrow, {0.25f, -0.125f, 0.5f, 1.0f});
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        QVDensity out;
        ASSERT_TRUE(DensityCalculator::GetDensityVectorWithSlope(Spectrum(values), kNarrow, whiteBase, out));
        for (unsigned short filter = 0; filter < 4; ++filter) {
            EXPECT_EQ(plain[filter] * slope[filter], out[filter]) << whiteBase << " " << filter;
        }
    }
}

TEST_F(DensityCalculatorSlope, TheSpectrumsPhysicalFilterAndTheStandardChooseTheCell)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    SetSlope(kPolarizer, kNarrow, {2.0f, 2.0f, 2.0f, 2.0f});
    SetOffset(kPolarizer, kNarrow, {0.5f, 0.5f, 0.5f, 0.5f});
    SetSlope(kNoFilter, CMetry::DensityStdDIN, {4.0f, 4.0f, 4.0f, 4.0f});

    QVDensity plain;
    ASSERT_TRUE(DensityCalculator::GetDensityVectorWithSlope(Spectrum(values), kNarrow, kAbs, plain));
    ExpectSameDensities(VectorOf(values, kNarrow, kAbs), plain);

    QVDensity polarized;
    ASSERT_TRUE(DensityCalculator::GetDensityVectorWithSlope(Spectrum(values, PolarizerConditions()), kNarrow, kAbs,
                                                             polarized));
    for (unsigned short filter = 0; filter < 4; ++filter) {
        EXPECT_EQ(plain[filter] * 2.0f + 0.5f, polarized[filter]) << filter;
    }
}

TEST_F(DensityCalculatorSlope, FailureLeavesTheAbsoluteDensitiesUncalibrated)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    const QVDensity absolute = VectorOf(values, kNarrow, kAbs);
    SetSlope(kNoFilter, kNarrow, {2.0f, 2.0f, 2.0f, 2.0f});
    QVDensity out;
    EXPECT_FALSE(DensityCalculator::GetDensityVectorWithSlope(Spectrum(values), kNarrow, kPap, out));
    ExpectSameDensities(absolute, out);
}

TEST_F(DensityCalculatorSlope, StandardOutsideTheStoreIsRefused)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    for (int code : {-1, 6, 100}) {
        SCOPED_TRACE(code);
        const QVDensityStdTYPE standard = static_cast<QVDensityStdTYPE>(code);
        const QVDensity uncalibrated = VectorOf(values, standard, kAbs);
        DensityCalculator::asDensityFilter = DensityFilter();
        QVDensity out;
        EXPECT_EQ(kCellError, FailureText([&] {
                      DensityCalculator::GetDensityVectorWithSlope(Spectrum(values), standard, kAbs, out);
                  }));
        // The densities were computed before the cell was looked up, under
        // that standard.
        ExpectSameDensities(uncalibrated, out);
        EXPECT_EQ(standard, DensityCalculator::GetActDensityStdFilter().GetDensStd());
    }
}

TEST_F(DensityCalculatorSlope, AFailedPaperWhiteStepReadsNoCellAndRaisesNothing)
{
    const Values values = NarrowBand(0.5f, 0.1f, 0.25f, 0.8f);
    const QVDensity absolute = VectorOf(values, CMetry::DensityStdUndefined, kAbs);
    QVDensity out;
    bool result = true;
    EXPECT_EQ("no exception", FailureText([&] {
                  result = DensityCalculator::GetDensityVectorWithSlope(Spectrum(values), CMetry::DensityStdUndefined,
                                                                        kPap, out);
              }));
    EXPECT_FALSE(result);
    ExpectSameDensities(absolute, out);
}

// ---------------------------------------------------------------- GetDensityFilter

TEST_F(DensityCalculatorFilterChoice, StrongestColourIsChosen)
{
    EXPECT_EQ(CMetry::DensFilterCyan, DensityCalculator::GetDensityFilter(Reading(0.3f, 1.2f, 0.4f, 0.1f)));
    EXPECT_EQ(CMetry::DensFilterMagenta, DensityCalculator::GetDensityFilter(Reading(0.2f, 0.1f, 0.9f, 0.3f)));
    EXPECT_EQ(CMetry::DensFilterYellow, DensityCalculator::GetDensityFilter(Reading(0.3f, 0.2f, 0.4f, 1.1f)));
    // Black takes part in the search for the strongest.
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(1.5f, 0.5f, 0.2f, 0.1f)));
}

TEST_F(DensityCalculatorFilterChoice, NeutralGreyReadsBlackEvenWhenAColourIsHighest)
{
    // Weakest over strongest colour: 0.7 / 0.9 = 0.78 > 0.7.
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(0.5f, 0.9f, 0.8f, 0.7f)));
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(0.0f, 1.0f, 1.0f, 1.0f)));
}

TEST_F(DensityCalculatorFilterChoice, RatioOfExactlyPointSevenIsNotNeutral)
{
    // 0.7f / 1.0f is 0.7f itself, which is not greater than 0.7f.
    EXPECT_EQ(CMetry::DensFilterCyan, DensityCalculator::GetDensityFilter(Reading(0.0f, 1.0f, 0.85f, 0.7f)));
    const float justAbove = std::nextafter(0.7f, 1.0f);
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(0.0f, 1.0f, 0.85f, justAbove)));
}

TEST_F(DensityCalculatorFilterChoice, HighestBelowTheSmallDensityReadsBlack)
{
    // Cyan reads highest but below 0.01.
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(0.001f, 0.0099f, 0.002f, 0.003f)));
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(0.0f, 0.0f, 0.0f, 0.0f)));
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(-0.5f, -0.2f, -0.3f, -0.9f)));
}

TEST_F(DensityCalculatorFilterChoice, TieGoesToTheLowestIndex)
{
    EXPECT_EQ(CMetry::DensFilterCyan, DensityCalculator::GetDensityFilter(Reading(0.2f, 1.0f, 1.0f, 0.1f)));
    EXPECT_EQ(CMetry::DensFilterMagenta, DensityCalculator::GetDensityFilter(Reading(0.1f, 0.2f, 0.9f, 0.9f)));
    EXPECT_EQ(CMetry::DensFilterBlack, DensityCalculator::GetDensityFilter(Reading(1.0f, 1.0f, 0.2f, 0.1f)));
}

TEST_F(DensityCalculatorFilterChoice, ReadingOfFewerThanFourDensitiesRaisesTheRangeError)
{
    QVDensity short3;
    Utilities::Vector<float> three(3);
    three[0] = 0.1f;
    three[1] = 0.9f;
    three[2] = 0.2f;
    short3.SetAllDensities(three);
    EXPECT_EQ(kRangeError, FailureText([&] { DensityCalculator::GetDensityFilter(short3); }));
}

// ---------------------------------------------------------------- GetDensity

TEST_F(DensityCalculatorDensity, AutomaticFilterPicksAndWritesBackTheFilter)
{
    // Cyan 1.0 against magenta and yellow of 0.097: a clear cyan.
    const Values values = NarrowBand(0.8f, 0.1f, 0.8f, 0.8f);
    float density = -1.0f;
    QVDensFilterTYPE filter = CMetry::DensFilterYellow;
    EXPECT_TRUE(DensityCalculator::GetDensity(Spectrum(values), kNarrow, kAbs, density, filter, true));
    EXPECT_EQ(CMetry::DensFilterCyan, filter);
    EXPECT_EQ(Density(0.1f), density);

    // A neutral patch reads black.
    filter = CMetry::DensFilterYellow;
    EXPECT_TRUE(DensityCalculator::GetDensity(Spectrum(Flat(0.1f)), kNarrow, kAbs, density, filter, true));
    EXPECT_EQ(CMetry::DensFilterBlack, filter);
    EXPECT_NEAR(1.0, density, 1e-6);
}

TEST_F(DensityCalculatorDensity, FixedFilterReadsThatFilterAndKeepsIt)
{
    const Values values = NarrowBand(0.8f, 0.1f, 0.25f, 0.5f);
    float density = -1.0f;
    QVDensFilterTYPE filter = CMetry::DensFilterMagenta;
    EXPECT_TRUE(DensityCalculator::GetDensity(Spectrum(values), kNarrow, kAbs, density, filter, false));
    EXPECT_EQ(CMetry::DensFilterMagenta, filter);
    EXPECT_EQ(Density(0.25f), density);

    filter = CMetry::DensFilterYellow;
    EXPECT_TRUE(DensityCalculator::GetDensity(Spectrum(values), kNarrow, kAbs, density, filter, false));
    EXPECT_EQ(Density(0.5f), density);
}

TEST_F(DensityCalculatorDensity, AppliesTheCalibration)
{
    SetSlope(kNoFilter, kNarrow, {1.0f, 1.0f, 2.0f, 1.0f});
    SetOffset(kNoFilter, kNarrow, {0.0f, 0.0f, 0.25f, 0.0f});
    float density = -1.0f;
    QVDensFilterTYPE filter = CMetry::DensFilterMagenta;
    EXPECT_TRUE(DensityCalculator::GetDensity(Spectrum(NarrowBand(0.8f, 0.8f, 0.25f, 0.8f)), kNarrow, kAbs, density,
                                              filter, false));
    EXPECT_EQ(Density(0.25f) * 2.0f + 0.25f, density);
}

TEST_F(DensityCalculatorDensity, FailureGivesNoLightAndNoFilter)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    for (bool autoFilter : {true, false}) {
        float density = 0.5f;
        QVDensFilterTYPE filter = CMetry::DensFilterCyan;
        EXPECT_FALSE(DensityCalculator::GetDensity(spectrum, kNarrow, kPap, density, filter, autoFilter));
        EXPECT_EQ(9.99f, density);
        EXPECT_EQ(-1, static_cast<int>(filter));
    }
    // An invalid paper white fails the same way.
    InstallPaperWhite(Flat(0.0f));
    float density = 0.5f;
    QVDensFilterTYPE filter = CMetry::DensFilterCyan;
    EXPECT_FALSE(DensityCalculator::GetDensity(spectrum, kNarrow, kAuto, density, filter, true));
    EXPECT_EQ(9.99f, density);
    EXPECT_EQ(-1, static_cast<int>(filter));
}

TEST_F(DensityCalculatorDensity, FilterFourOrMoreRaisesTheRangeError)
{
    float density = 0.0f;
    QVDensFilterTYPE filter = FilterNumber(4);
    EXPECT_EQ(kRangeError, FailureText([&] {
                  DensityCalculator::GetDensity(Spectrum(Flat(0.5f)), kNarrow, kAbs, density, filter, false);
              }));
}

TEST_F(DensityCalculatorDensity, StandardOutsideTheStoreRaisesWithDensityAndFilterUntouched)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    for (bool autoFilter : {true, false}) {
        float density = 0.5f;
        QVDensFilterTYPE filter = CMetry::DensFilterMagenta;
        EXPECT_EQ(kCellError, FailureText([&] {
                      DensityCalculator::GetDensity(spectrum, CMetry::DensityStdUndefined, kAbs, density, filter,
                                                    autoFilter);
                  }));
        EXPECT_EQ(0.5f, density);
        EXPECT_EQ(CMetry::DensFilterMagenta, filter);
    }
    // Without a paper white the vector fails first: the failure outputs, no
    // exception.
    float density = 0.5f;
    QVDensFilterTYPE filter = CMetry::DensFilterMagenta;
    bool result = true;
    EXPECT_EQ("no exception", FailureText([&] {
                  result = DensityCalculator::GetDensity(spectrum, CMetry::DensityStdUndefined, kPap, density, filter,
                                                         true);
              }));
    EXPECT_FALSE(result);
    EXPECT_EQ(9.99f, density);
    EXPECT_EQ(-1, static_cast<int>(filter));
}

// ---------------------------------------------------------------- GetDensitySpectrum

TEST_F(DensityCalculatorSpectrum, AbsoluteIsMinusLogOfEachValueWithoutTheTwoDecades)
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.02f + 0.025f * static_cast<float>(i);
    }
    values[0] = 0.0f;
    values[1] = -0.3f;
    float densities[36];
    ASSERT_TRUE(DensityCalculator::GetDensitySpectrum(Spectrum(values), kAbs, densities));
    EXPECT_EQ(9.99f, densities[0]);
    EXPECT_EQ(9.99f, densities[1]);
    for (std::size_t i = 2; i < 36; ++i) {
        EXPECT_EQ(Density(values[i]), densities[i]) << i;
    }
    float ofTen[36];
    ASSERT_TRUE(DensityCalculator::GetDensitySpectrum(Spectrum(Flat(0.01f)), kAbs, ofTen));
    EXPECT_NEAR(2.0, ofTen[Index(550)], 1e-6);
}

TEST_F(DensityCalculatorSpectrum, PaperBasedDividesPointByPoint)
{
    Values paper{};
    for (std::size_t i = 0; i < 36; ++i) {
        paper[i] = 0.6f + 0.01f * static_cast<float>(i);
    }
    InstallPaperWhite(paper);
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        float densities[36];
        ASSERT_TRUE(DensityCalculator::GetDensitySpectrum(Spectrum(Flat(0.3f)), whiteBase, densities));
        for (std::size_t i = 0; i < 36; ++i) {
            EXPECT_EQ(Density(0.3f / paper[i]), densities[i]) << whiteBase << " " << i;
        }
    }
}

TEST_F(DensityCalculatorSpectrum, FailureLeavesTheArrayUntouched)
{
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        float densities[36];
        for (float& value : densities) {
            value = 123.0f;
        }
        EXPECT_FALSE(DensityCalculator::GetDensitySpectrum(Spectrum(Flat(0.3f)), whiteBase, densities));
        for (std::size_t i = 0; i < 36; ++i) {
            EXPECT_EQ(123.0f, densities[i]) << whiteBase << " " << i;
        }
    }
}

// ---------------------------------------------------------------- GetMaxDensity

TEST_F(DensityCalculatorMaxDensity, FindsTheDeepestPointAndItsWavelength)
{
    const Values values = With(With(Flat(0.5f), 500, 0.05f), 600, 0.2f);
    float density = 0.0f;
    unsigned short waveLength = 0;
    EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(values), kAbs, density, waveLength));
    EXPECT_EQ(500, waveLength);
    EXPECT_EQ(Density(0.05f), density);
}

TEST_F(DensityCalculatorMaxDensity, ScanRunsFrom410To670Nanometres)
{
    float density = 0.0f;
    unsigned short waveLength = 0;
    // The deepest point at 680 nm lies past the scan: 600 nm is found.
    const Values beyond = With(With(Flat(0.5f), 680, 0.01f), 600, 0.3f);
    EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(beyond), kAbs, density, waveLength));
    EXPECT_EQ(600, waveLength);
    EXPECT_EQ(Density(0.3f), density);

    // The same below 410 nm, and past 680 nm.
    for (int outside : {380, 390, 400, 690, 700, 730}) {
        const Values values = With(With(Flat(0.5f), outside, 0.01f), 600, 0.3f);
        EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(values), kAbs, density, waveLength));
        EXPECT_EQ(600, waveLength) << outside;
    }
    // Both ends are scanned.
    for (int inside : {410, 670}) {
        const Values values = With(With(Flat(0.5f), inside, 0.01f), 600, 0.3f);
        EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(values), kAbs, density, waveLength));
        EXPECT_EQ(inside, waveLength);
        EXPECT_EQ(Density(0.01f), density);
    }
}

TEST_F(DensityCalculatorMaxDensity, EqualMinimaGoToThePointNearestTheGridMiddle)
{
    // The middle is index 17, 550 nm.
    struct Case {
        int first;
        int second;
        int expected;
    };
    const Case cases[] = {
        {450, 560, 560}, // 10 and 1 points from the middle
        {560, 620, 560}, // 1 and 7
        {500, 590, 590}, // 5 and 4: the later point replaces the earlier
        {530, 570, 530}, // 2 and 2: the earlier point stays
    };
    for (const Case& c : cases) {
        const Values values = With(With(Flat(0.5f), c.first, 0.1f), c.second, 0.1f);
        float density = 0.0f;
        unsigned short waveLength = 0;
        EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(values), kAbs, density, waveLength));
        EXPECT_EQ(c.expected, waveLength) << c.first << " " << c.second;
        EXPECT_EQ(Density(0.1f), density);
    }
    float density = 0.0f;
    unsigned short waveLength = 0;
    EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(Flat(0.5f)), kAbs, density, waveLength));
    EXPECT_EQ(550, waveLength);
    EXPECT_EQ(WaveLengthOf(17), waveLength);
}

TEST_F(DensityCalculatorMaxDensity, ZeroMinimumReadsNoLight)
{
    float density = 0.0f;
    unsigned short waveLength = 0;
    EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(With(Flat(0.5f), 500, 0.0f)), kAbs, density, waveLength));
    EXPECT_EQ(9.99f, density);
    EXPECT_EQ(500, waveLength);
}

TEST_F(DensityCalculatorMaxDensity, PaperBasedScansTheBasedValues)
{
    // Absolute, 600 nm is deepest; relative to a paper that is dark there
    // too, 500 nm is.
    InstallPaperWhite(With(Flat(0.6f), 600, 0.25f));
    const Values values = With(With(Flat(0.3f), 600, 0.2f), 500, 0.25f);
    float density = 0.0f;
    unsigned short waveLength = 0;
    EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(values), kAbs, density, waveLength));
    EXPECT_EQ(600, waveLength);
    EXPECT_EQ(Density(0.2f), density);
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        EXPECT_TRUE(DensityCalculator::GetMaxDensity(Spectrum(values), whiteBase, density, waveLength));
        EXPECT_EQ(500, waveLength) << whiteBase;
        EXPECT_EQ(Density(0.25f / 0.6f), density) << whiteBase;
    }
}

TEST_F(DensityCalculatorMaxDensity, FailedPaperWhiteStepStillDeliversValues)
{
    const Values values = With(With(Flat(0.5f), 500, 0.05f), 600, 0.2f);
    float density = 0.0f;
    unsigned short waveLength = 0;
    EXPECT_FALSE(DensityCalculator::GetMaxDensity(Spectrum(values), kPap, density, waveLength));
    EXPECT_EQ(500, waveLength);
    EXPECT_EQ(Density(0.05f), density);
}

// ---------------------------------------------------------------- GetDotArea

TEST_F(DensityCalculatorDotArea, SolidAgainstItselfIsOne)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(With(OnPaper(0.1f, 0.8f, 0.9f), 500, kPaper * 0.2f));
    // The solid's 1 - 10^(-Ds/n) is rounded to float before it divides the
    // same quantity in double: the quotient is 1 within one float step.
    for (DensityFilterModeTYPE mode : {kModeBlack, kModeCyan, kModeMagenta, kModeYellow, kModeMax, kModeAuto}) {
        float area = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetDotArea(solid, solid, kNarrow, mode, area)) << mode;
        EXPECT_NEAR(1.0, area, 1.2e-7) << mode;
        EXPECT_TRUE(DensityCalculator::GetDotArea(solid, solid, kNarrow, mode, 2.0f, area)) << mode;
        EXPECT_NEAR(1.0, area, 1.2e-7) << mode;
    }
}

TEST_F(DensityCalculatorDotArea, MurrayDaviesIsRelativeToPaperWhite)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    float area = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, area));
    // (1 - 0.55) / (1 - 0.1). The densities are float differences of float
    // densities (about 1e-7 each), which moves the fraction by less than 1e-6.
    EXPECT_NEAR(0.5, area, 1e-6);
    EXPECT_NEAR(IdealArea(0.1, 0.55, 1.0), area, 1e-6);
    // The short form is the long one with factor 1.
    float longForm = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, 1.0f, longForm));
    EXPECT_EQ(area, longForm);
}

TEST_F(DensityCalculatorDotArea, YuleNielsenDividesTheDensitiesByTheFactor)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    for (float n : {2.0f, 1.7f}) {
        float area = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, n, area));
        EXPECT_NEAR(IdealArea(0.1, 0.55, static_cast<double>(n)), area, 1e-6) << n;
    }
    // n = 2: (1 - sqrt(0.55)) / (1 - sqrt(0.1)) = 0.37787.
    float area = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, 2.0f, area));
    EXPECT_NEAR(0.37787, area, 1e-5);
}

TEST_F(DensityCalculatorDotArea, SolidSoLightThatItsFactorIsBelowTheSmallDensityGivesZero)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    // beta 0.995: 1 - 10^(-Ds) = 0.005. beta 1.005 (lighter than the paper):
    // -0.005, small in magnitude as well.
    for (float beta : {0.995f, 1.005f}) {
        const QVSpectrum solid = Spectrum(OnPaper(beta, 1.0f, 1.0f));
        float area = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, area)) << beta;
        EXPECT_EQ(0.0f, area) << beta;
        area = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, 2.0f, area)) << beta;
        EXPECT_EQ(0.0f, area) << beta;
    }
    // A solid lighter than the paper by more than that divides: beta 1.5
    // gives (1 - 0.55) / (1 - 1.5) = -0.9.
    float lighter = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(Spectrum(OnPaper(1.5f, 1.0f, 1.0f)), tint, kNarrow, kModeCyan, lighter));
    EXPECT_NEAR(-0.9, lighter, 1e-6);
    // beta 0.98: 0.02 is usable. The area is 22.5; a density error of 1e-7
    // moves a factor of 0.02 by about 1e-5 of itself, hence 1e-3 here.
    float area = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(Spectrum(OnPaper(0.98f, 1.0f, 1.0f)), tint, kNarrow, kModeCyan, area));
    EXPECT_NEAR(IdealArea(0.98, 0.55, 1.0), area, 1e-3);
}

TEST_F(DensityCalculatorDotArea, ModeFourReadsTheTintAtTheSolidsDeepestPoint)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(With(Flat(kPaper), 500, kPaper * 0.1f));
    // The tint is deeper elsewhere; only 500 nm counts.
    const QVSpectrum tint = Spectrum(With(With(Flat(kPaper), 500, kPaper * 0.55f), 600, kPaper * 0.2f));
    float area = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeMax, area));
    // The based values are exactly 0.1f and 0.55f; the densities are floats.
    EXPECT_NEAR(0.5, area, 1e-6);
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, CMetry::DensityStdANSIT, kModeMax, 2.0f, area));
    EXPECT_NEAR(IdealArea(0.1, 0.55, 2.0), area, 1e-6);
}

TEST_F(DensityCalculatorDotArea, AutomaticModeLetsEachReadingPickItsOwnFilter)
{
    InstallPaperWhite(Flat(kPaper));
    // The solid reads cyan 1.0; the tint reads magenta 0.30 ahead of cyan
    // 0.097.
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.8f, 0.5f, 1.0f));
    float area = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeAuto, area));
    // (1 - 0.5) / (1 - 0.1), where reading both through cyan would give
    // (1 - 0.8) / (1 - 0.1).
    EXPECT_NEAR(IdealArea(0.1, 0.5, 1.0), area, 1e-6);
    float cyanArea = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, cyanArea));
    EXPECT_NEAR(IdealArea(0.1, 0.8, 1.0), cyanArea, 1e-6);
}

TEST_F(DensityCalculatorDotArea, IgnoresTheCalibration)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    float plain = -1.0f;
    ASSERT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, plain));
    SetSlope(kNoFilter, kNarrow, {3.0f, 3.0f, 3.0f, 3.0f});
    SetOffset(kNoFilter, kNarrow, {0.5f, 0.5f, 0.5f, 0.5f});
    float calibrated = -1.0f;
    ASSERT_TRUE(DensityCalculator::GetDotArea(solid, tint, kNarrow, kModeCyan, calibrated));
    EXPECT_EQ(plain, calibrated);
}

TEST_F(DensityCalculatorDotArea, FailsWithoutPaperWhiteAndLeavesTheArea)
{
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    for (DensityFilterModeTYPE mode : {kModeCyan, kModeMax, kModeAuto}) {
        float area = -1.0f;
        EXPECT_FALSE(DensityCalculator::GetDotArea(solid, tint, kNarrow, mode, area)) << mode;
        EXPECT_EQ(-1.0f, area) << mode;
        EXPECT_FALSE(DensityCalculator::GetDotArea(solid, tint, kNarrow, mode, 2.0f, area)) << mode;
        EXPECT_EQ(-1.0f, area) << mode;
    }
}

TEST_F(DensityCalculatorDotArea, ModeSixRaisesTheRangeError)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    float area = -1.0f;
    EXPECT_EQ(kRangeError, FailureText([&] { DensityCalculator::GetDotArea(solid, solid, kNarrow, Mode(6), area); }));
}

// ---------------------------------------------------------------- GetContrast

TEST_F(DensityCalculatorContrast, PaperBasedContrastOfTheFilterDensities)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    // (1 - (-log10 0.55)) / 1, densities good to about 1e-7.
    const double expected = 1.0 + std::log10(0.55);
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        float contrast = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, whiteBase, kModeCyan, contrast));
        EXPECT_NEAR(expected, contrast, 1e-6) << whiteBase;
    }
}

TEST_F(DensityCalculatorContrast, AbsoluteContrastNeedsNoPaperWhite)
{
    const QVSpectrum solid = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    const QVSpectrum tint = Spectrum(NarrowBand(0.8f, 0.55f, 0.8f, 0.8f));
    float contrast = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeCyan, contrast));
    const float ds = Density(0.1f);
    const float dt = Density(0.55f);
    EXPECT_EQ(static_cast<float>((static_cast<double>(ds) - static_cast<double>(dt)) / static_cast<double>(ds)),
              contrast);
}

TEST_F(DensityCalculatorContrast, HonoursSlopeAndOffset)
{
    const QVSpectrum solid = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    const QVSpectrum tint = Spectrum(NarrowBand(0.8f, 0.55f, 0.8f, 0.8f));
    SetSlope(kNoFilter, kNarrow, {1.0f, 2.0f, 1.0f, 1.0f});
    SetOffset(kNoFilter, kNarrow, {0.0f, 0.25f, 0.0f, 0.0f});
    float contrast = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeCyan, contrast));
    const float ds = Density(0.1f) * 2.0f + 0.25f;
    const float dt = Density(0.55f) * 2.0f + 0.25f;
    EXPECT_EQ(static_cast<float>((static_cast<double>(ds) - static_cast<double>(dt)) / static_cast<double>(ds)),
              contrast);
}

TEST_F(DensityCalculatorContrast, PaperBaseIgnoresTheOffset)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 1.0f, 1.0f));
    const QVSpectrum tint = Spectrum(OnPaper(0.55f, 1.0f, 1.0f));
    float plain = -1.0f;
    ASSERT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kPap, kModeCyan, plain));
    SetOffset(kNoFilter, kNarrow, {0.5f, 0.5f, 0.5f, 0.5f});
    float withOffset = -1.0f;
    ASSERT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kPap, kModeCyan, withOffset));
    EXPECT_EQ(plain, withOffset);
}

TEST_F(DensityCalculatorContrast, SolidBelowTheSmallDensityGivesZero)
{
    // -log10(0.995) = 0.0022.
    const QVSpectrum solid = Spectrum(NarrowBand(0.8f, 0.995f, 0.8f, 0.8f));
    const QVSpectrum tint = Spectrum(NarrowBand(0.8f, 0.55f, 0.8f, 0.8f));
    float contrast = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeCyan, contrast));
    EXPECT_EQ(0.0f, contrast);
}

TEST_F(DensityCalculatorContrast, ModeFourTakesTheTintsWhiteBaseButAlwaysThePaperBasedSolid)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(With(Flat(kPaper), 500, kPaper * 0.1f));
    const QVSpectrum tint = Spectrum(With(Flat(kPaper), 500, kPaper * 0.55f));
    // Ds = 1 (paper based, whatever the caller asks). Dt is -log10(0.275)
    // absolute and -log10(0.55) relative to the paper.
    float contrast = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeMax, contrast));
    EXPECT_NEAR(1.0 + std::log10(0.275), contrast, 1e-6);
    for (QVWhiteBaseTYPE whiteBase : {kPap, kAuto}) {
        EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, whiteBase, kModeMax, contrast));
        EXPECT_NEAR(1.0 + std::log10(0.55), contrast, 1e-6) << whiteBase;
    }
}

TEST_F(DensityCalculatorContrast, ModeFourNeedsAPaperWhiteEvenForAbsolute)
{
    const QVSpectrum solid = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    const QVSpectrum tint = Spectrum(NarrowBand(0.8f, 0.55f, 0.8f, 0.8f));
    float contrast = -1.0f;
    EXPECT_FALSE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeMax, contrast));
    EXPECT_EQ(-1.0f, contrast);
    EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeCyan, contrast));
}

TEST_F(DensityCalculatorContrast, FailsWithoutPaperWhiteAndLeavesTheContrast)
{
    const QVSpectrum solid = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    const QVSpectrum tint = Spectrum(NarrowBand(0.8f, 0.55f, 0.8f, 0.8f));
    for (DensityFilterModeTYPE mode : {kModeCyan, kModeMax, kModeAuto}) {
        float contrast = -1.0f;
        EXPECT_FALSE(DensityCalculator::GetContrast(solid, tint, kNarrow, kPap, mode, contrast)) << mode;
        EXPECT_EQ(-1.0f, contrast) << mode;
    }
}

TEST_F(DensityCalculatorContrast, StandardOutsideTheStoreRaisesInEveryModeButFour)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum solid = Spectrum(OnPaper(0.1f, 0.1f, 0.1f));
    const QVSpectrum tint = Spectrum(OnPaper(0.5f, 0.5f, 0.5f));
    for (DensityFilterModeTYPE mode : {kModeBlack, kModeCyan, kModeMagenta, kModeYellow, kModeAuto}) {
        for (QVWhiteBaseTYPE whiteBase : {kAbs, kPap}) {
            SCOPED_TRACE(std::to_string(mode) + " " + std::to_string(whiteBase));
            float contrast = -7.0f;
            EXPECT_EQ(kCellError, FailureText([&] {
                          DensityCalculator::GetContrast(solid, tint, CMetry::DensityStdUndefined, whiteBase, mode,
                                                         contrast);
                      }));
            EXPECT_EQ(-7.0f, contrast);
        }
    }
    // Mode 4 reads no calibration and no standard: the same contrast as
    // under any standard.
    float expected = -7.0f;
    ASSERT_TRUE(DensityCalculator::GetContrast(solid, tint, kNarrow, kAbs, kModeMax, expected));
    float contrast = -7.0f;
    EXPECT_EQ("no exception", FailureText([&] {
                  EXPECT_TRUE(DensityCalculator::GetContrast(solid, tint, CMetry::DensityStdUndefined, kAbs, kModeMax,
                                                             contrast));
              }));
    EXPECT_EQ(expected, contrast);
}

TEST_F(DensityCalculatorContrast, ModeSixRaisesTheRangeError)
{
    const QVSpectrum solid = Spectrum(NarrowBand(0.8f, 0.1f, 0.8f, 0.8f));
    float contrast = -1.0f;
    EXPECT_EQ(kRangeError, FailureText([&] {
                  DensityCalculator::GetContrast(solid, solid, kNarrow, kAbs, Mode(6), contrast);
              }));
}

// ---------------------------------------------------------------- GetTrapping

TEST_F(DensityCalculatorTrapping, FilterDensitiesRelativeToPaperWhite)
{
    InstallPaperWhite(Flat(kPaper));
    // Through magenta: D1 = -log10 0.9, D2 = 1, Dop = -log10 0.125.
    const QVSpectrum first = Spectrum(OnPaper(1.0f, 0.9f, 0.1f));
    const QVSpectrum second = Spectrum(OnPaper(1.0f, 0.1f, 1.0f));
    const QVSpectrum overprint = Spectrum(OnPaper(1.0f, 0.125f, 0.1f));
    float trapping = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, kModeMagenta, trapping));
    EXPECT_NEAR(-std::log10(0.125) + std::log10(0.9), trapping, 1e-6);
}

TEST_F(DensityCalculatorTrapping, SecondInkBelowTheSmallDensityGivesOne)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum first = Spectrum(OnPaper(1.0f, 0.9f, 0.1f));
    // -log10(0.99) = 0.0044 in magenta and as the deepest point.
    const QVSpectrum second = Spectrum(OnPaper(1.0f, 0.99f, 1.0f));
    const QVSpectrum overprint = Spectrum(OnPaper(1.0f, 0.125f, 0.1f));
    for (DensityFilterModeTYPE mode : {kModeMagenta, kModeMax}) {
        float trapping = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, mode, trapping)) << mode;
        EXPECT_EQ(1.0f, trapping) << mode;
    }
}

TEST_F(DensityCalculatorTrapping, ModeFourReadsAtTheSecondInksDeepestPoint)
{
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum first = Spectrum(With(With(Flat(kPaper), 540, kPaper * 0.9f), 450, kPaper * 0.05f));
    const QVSpectrum second = Spectrum(With(Flat(kPaper), 540, kPaper * 0.1f));
    const QVSpectrum overprint = Spectrum(With(With(Flat(kPaper), 540, kPaper * 0.2f), 450, kPaper * 0.04f));
    float trapping = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, kModeMax, trapping));
    // (-log10 0.2 + log10 0.9) / 1.
    EXPECT_NEAR(-std::log10(0.2) + std::log10(0.9), trapping, 1e-6);
}

TEST_F(DensityCalculatorTrapping, IgnoresTheCalibration)
{
    InstallPaperWhite(Flat(kPaper));
    // In automatic mode the first ink and the overprint read yellow, the
    // second ink magenta: slopes that differ per filter would show.
    const QVSpectrum first = Spectrum(OnPaper(1.0f, 0.9f, 0.1f));
    const QVSpectrum second = Spectrum(OnPaper(1.0f, 0.1f, 1.0f));
    const QVSpectrum overprint = Spectrum(OnPaper(1.0f, 0.125f, 0.08f));
    for (DensityFilterModeTYPE mode : {kModeMagenta, kModeAuto, kModeMax}) {
        DensityCalculator::InitializeDensityCalibration();
        float plain = -1.0f;
        ASSERT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, mode, plain)) << mode;
        SetSlope(kNoFilter, kNarrow, {3.0f, 1.5f, 0.5f, 2.0f});
        SetOffset(kNoFilter, kNarrow, {0.5f, 0.5f, 0.5f, 0.5f});
        float calibrated = -1.0f;
        ASSERT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, mode, calibrated)) << mode;
        EXPECT_EQ(plain, calibrated) << mode;
    }
    // Automatic: (-log10 0.08 - 1) / 1.
    float trapping = -1.0f;
    ASSERT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, kModeAuto, trapping));
    EXPECT_NEAR(-std::log10(0.08) - 1.0, trapping, 1e-6);
}

TEST_F(DensityCalculatorTrapping, FailsWithoutPaperWhiteAndLeavesTheTrapping)
{
    const QVSpectrum first = Spectrum(OnPaper(1.0f, 0.9f, 0.1f));
    const QVSpectrum second = Spectrum(OnPaper(1.0f, 0.1f, 1.0f));
    const QVSpectrum overprint = Spectrum(OnPaper(1.0f, 0.125f, 0.1f));
    for (DensityFilterModeTYPE mode : {kModeMagenta, kModeMax, kModeAuto}) {
        float trapping = -1.0f;
        EXPECT_FALSE(DensityCalculator::GetTrapping(first, second, overprint, kNarrow, mode, trapping)) << mode;
        EXPECT_EQ(-1.0f, trapping) << mode;
    }
}

TEST_F(DensityCalculatorTrapping, DensityFormComputesAndAlwaysSucceeds)
{
    const QVDensity first = Reading(0.0f, 0.05f, 0.1f, 1.0f);
    const QVDensity second = Reading(0.0f, 0.1f, 1.2f, 0.05f);
    const QVDensity overprint = Reading(0.0f, 0.2f, 1.05f, 1.1f);
    float trapping = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kModeMagenta, trapping));
    EXPECT_EQ(static_cast<float>((static_cast<double>(1.05f) - static_cast<double>(0.1f)) / static_cast<double>(1.2f)),
              trapping);
    // Automatic: the first ink reads yellow, the second magenta, the
    // overprint yellow.
    EXPECT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kModeAuto, trapping));
    EXPECT_EQ(static_cast<float>((static_cast<double>(1.1f) - static_cast<double>(1.0f)) / static_cast<double>(1.2f)),
              trapping);
    // Mode 4 reads 0 from a density vector: the second ink is below the small
    // density.
    EXPECT_TRUE(DensityCalculator::GetTrapping(first, second, overprint, kModeMax, trapping));
    EXPECT_EQ(1.0f, trapping);
}

TEST_F(DensityCalculatorTrapping, DensityFormSecondInkBelowTheSmallDensityGivesOne)
{
    const QVDensity first = Reading(0.0f, 0.05f, 0.1f, 1.0f);
    const QVDensity overprint = Reading(0.0f, 0.2f, 1.05f, 1.1f);
    for (float second : {0.0f, 0.009f, -0.009f}) {
        float trapping = -1.0f;
        EXPECT_TRUE(DensityCalculator::GetTrapping(first, Reading(0.0f, 0.0f, second, 0.0f), overprint, kModeMagenta,
                                                   trapping));
        EXPECT_EQ(1.0f, trapping) << second;
    }
    // A negative second ink beyond the small density divides.
    float trapping = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetTrapping(first, Reading(0.0f, 0.0f, -0.5f, 0.0f), overprint, kModeMagenta,
                                               trapping));
    EXPECT_EQ(static_cast<float>((static_cast<double>(1.05f) - static_cast<double>(0.1f)) / -0.5), trapping);
}

TEST_F(DensityCalculatorTrapping, ModeSixRaisesTheRangeError)
{
    const QVDensity reading = Reading(0.5f, 0.5f, 0.5f, 0.5f);
    float trapping = -1.0f;
    EXPECT_EQ(kRangeError,
              FailureText([&] { DensityCalculator::GetTrapping(reading, reading, reading, Mode(6), trapping); }));
    InstallPaperWhite(Flat(kPaper));
    const QVSpectrum spectrum = Spectrum(OnPaper(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(kRangeError, FailureText([&] {
                  DensityCalculator::GetTrapping(spectrum, spectrum, spectrum, kNarrow, Mode(6), trapping);
              }));
}

// ---------------------------------------------------------------- GetGreyness

TEST_F(DensityCalculatorGreyness, WeakestOverStrongestColour)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.05f, 0.1f, 0.25f, 0.5f));
    float greyness = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetGreyness(spectrum, kNarrow, kAbs, greyness, false));
    // Black (dark at every other point) takes no part.
    EXPECT_EQ(Density(0.5f) / Density(0.1f), greyness);
}

TEST_F(DensityCalculatorGreyness, PaperBased)
{
    InstallPaperWhite(Flat(kPaper));
    float greyness = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetGreyness(Spectrum(OnPaper(0.1f, 0.25f, 0.5f)), kNarrow, kPap, greyness, false));
    EXPECT_NEAR(std::log10(0.5) / std::log10(0.1), greyness, 1e-6);
}

TEST_F(DensityCalculatorGreyness, StrongestBelowTheSmallDensityGivesOne)
{
    float greyness = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetGreyness(Spectrum(Flat(0.99f)), kNarrow, kAbs, greyness, false));
    EXPECT_EQ(1.0f, greyness);
    EXPECT_TRUE(DensityCalculator::GetGreyness(Spectrum(NarrowBand(0.5f, 0.999f, 1.0f, 0.995f)), kNarrow, kAbs,
                                               greyness, false));
    EXPECT_EQ(1.0f, greyness);
}

TEST_F(DensityCalculatorGreyness, WithSlopeUsesTheCalibratedDensities)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.05f, 0.1f, 0.25f, 0.5f));
    SetSlope(kNoFilter, kNarrow, {1.0f, 0.5f, 1.0f, 1.0f});
    float greyness = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetGreyness(spectrum, kNarrow, kAbs, greyness, false));
    EXPECT_EQ(Density(0.5f) / Density(0.1f), greyness);
    // Cyan 1.0 x 0.5 now falls behind magenta 0.60.
    EXPECT_TRUE(DensityCalculator::GetGreyness(spectrum, kNarrow, kAbs, greyness, true));
    EXPECT_EQ(Density(0.5f) / Density(0.25f), greyness);
}

TEST_F(DensityCalculatorGreyness, FailsWithoutPaperWhiteAndLeavesTheGreyness)
{
    for (bool withSlope : {false, true}) {
        float greyness = -1.0f;
        EXPECT_FALSE(DensityCalculator::GetGreyness(Spectrum(Flat(0.3f)), kNarrow, kPap, greyness, withSlope));
        EXPECT_EQ(-1.0f, greyness);
    }
}

TEST_F(DensityCalculatorGreyness, WithSlopeAStandardOutsideTheStoreRaises)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.5f, 0.1f, 0.25f, 0.8f));
    float greyness = -7.0f;
    EXPECT_EQ(kCellError, FailureText([&] {
                  DensityCalculator::GetGreyness(spectrum, CMetry::DensityStdUndefined, kAbs, greyness, true);
              }));
    EXPECT_EQ(-7.0f, greyness);
    // Without the calibration the standard is only a filter set: no colour
    // filters, every colour reads no light, and the ratio is 1.
    EXPECT_TRUE(DensityCalculator::GetGreyness(spectrum, CMetry::DensityStdUndefined, kAbs, greyness, false));
    EXPECT_EQ(1.0f, greyness);
}

// ---------------------------------------------------------------- GetHueError

TEST_F(DensityCalculatorHueError, MiddleMinusWeakestOverStrongestMinusWeakest)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.05f, 0.1f, 0.25f, 0.5f));
    float hueError = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetHueError(spectrum, kNarrow, kAbs, hueError, false));
    const float c = Density(0.1f);
    const float m = Density(0.25f);
    const float y = Density(0.5f);
    EXPECT_EQ((m - y) / (c - y), hueError);
    EXPECT_NEAR(std::log10(2.0) / std::log10(5.0), hueError, 1e-6);
}

TEST_F(DensityCalculatorHueError, EqualColourDensitiesDivideZeroByZero)
{
    // Every colour reads 1.0: the strongest passes the guard and the
    // denominator is 0, so the result is 0 / 0, not a number.
    const QVDensity vector = VectorOf(Flat(0.1f), kNarrow, kAbs);
    ASSERT_EQ(1.0f, vector[1]);
    ASSERT_EQ(1.0f, vector[2]);
    ASSERT_EQ(1.0f, vector[3]);
    float hueError = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetHueError(Spectrum(Flat(0.1f)), kNarrow, kAbs, hueError, false));
    EXPECT_TRUE(std::isnan(hueError));
}

TEST_F(DensityCalculatorHueError, AllColoursBelowTheSmallDensityGiveZero)
{
    float hueError = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetHueError(Spectrum(Flat(0.99f)), kNarrow, kAbs, hueError, false));
    EXPECT_EQ(0.0f, hueError);
    hueError = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetHueError(Spectrum(NarrowBand(0.5f, 0.999f, 1.0f, 0.995f)), kNarrow, kAbs,
                                               hueError, false));
    EXPECT_EQ(0.0f, hueError);
}

TEST_F(DensityCalculatorHueError, WithSlopeUsesTheCalibratedDensities)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.05f, 0.1f, 0.25f, 0.5f));
    SetSlope(kNoFilter, kNarrow, {1.0f, 0.5f, 1.0f, 1.0f});
    SetOffset(kNoFilter, kNarrow, {0.0f, 0.0f, 0.0f, 0.125f});
    float hueError = -1.0f;
    EXPECT_TRUE(DensityCalculator::GetHueError(spectrum, kNarrow, kAbs, hueError, true));
    const float c = Density(0.1f) * 0.5f;
    const float m = Density(0.25f);
    const float y = Density(0.5f) + 0.125f;
    // Sorted: magenta, cyan, yellow.
    EXPECT_EQ((c - y) / (m - y), hueError);
}

TEST_F(DensityCalculatorHueError, WithSlopeAStandardOutsideTheStoreRaises)
{
    const QVSpectrum spectrum = Spectrum(NarrowBand(0.5f, 0.1f, 0.25f, 0.8f));
    float hueError = -7.0f;
    EXPECT_EQ(kCellError, FailureText([&] {
                  DensityCalculator::GetHueError(spectrum, CMetry::DensityStdUndefined, kAbs, hueError, true);
              }));
    EXPECT_EQ(-7.0f, hueError);
    EXPECT_EQ("no exception", FailureText([&] {
                  DensityCalculator::GetHueError(spectrum, CMetry::DensityStdUndefined, kAbs, hueError, false);
              }));
}

TEST_F(DensityCalculatorHueError, FailsWithoutPaperWhiteAndLeavesTheHueError)
{
    for (bool withSlope : {false, true}) {
        float hueError = -1.0f;
        EXPECT_FALSE(DensityCalculator::GetHueError(Spectrum(Flat(0.3f)), kNarrow, kAuto, hueError, withSlope));
        EXPECT_EQ(-1.0f, hueError);
    }
}

// ---------------------------------------------------------------- SortColorDensities

TEST_F(DensityCalculatorSort, DescendingOrderOfTheThreeColours)
{
    struct Case {
        float cyan;
        float magenta;
        float yellow;
        std::array<float, 3> expected;
    };
    const Case cases[] = {
        {0.3f, 0.9f, 0.5f, {0.9f, 0.5f, 0.3f}}, {0.9f, 0.3f, 0.5f, {0.9f, 0.5f, 0.3f}},
        {0.3f, 0.5f, 0.9f, {0.9f, 0.5f, 0.3f}}, {0.5f, 0.3f, 0.9f, {0.9f, 0.5f, 0.3f}},
        {0.9f, 0.5f, 0.3f, {0.9f, 0.5f, 0.3f}}, {0.5f, 0.9f, 0.3f, {0.9f, 0.5f, 0.3f}},
        {0.5f, 0.5f, 0.5f, {0.5f, 0.5f, 0.5f}}, {-0.2f, 0.1f, 0.0f, {0.1f, 0.0f, -0.2f}},
    };
    for (const Case& c : cases) {
        // Black is left out, however high it reads.
        const QVDensity reading = Reading(5.0f, c.cyan, c.magenta, c.yellow);
        float sorted[3] = {-9.0f, -9.0f, -9.0f};
        DensityCalculator::SortColorDensities(reading, sorted);
        EXPECT_EQ(c.expected[0], sorted[0]) << c.cyan << " " << c.magenta << " " << c.yellow;
        EXPECT_EQ(c.expected[1], sorted[1]) << c.cyan << " " << c.magenta << " " << c.yellow;
        EXPECT_EQ(c.expected[2], sorted[2]) << c.cyan << " " << c.magenta << " " << c.yellow;
    }
}

TEST_F(DensityCalculatorSort, TiesKeepCyanBeforeMagentaAndYellowLast)
{
    // +0 and -0 compare equal but can be told apart by their sign.
    float sorted[3];
    DensityCalculator::SortColorDensities(Reading(0.0f, 0.0f, -0.0f, 0.0f), sorted);
    EXPECT_FALSE(std::signbit(sorted[0]));
    EXPECT_TRUE(std::signbit(sorted[1]));
    EXPECT_FALSE(std::signbit(sorted[2]));

    // Yellow equal to the strongest goes after it.
    DensityCalculator::SortColorDensities(Reading(0.0f, -0.0f, 0.0f, 0.0f), sorted);
    EXPECT_TRUE(std::signbit(sorted[0])); // cyan -0 first on the tie with magenta
    EXPECT_FALSE(std::signbit(sorted[1]));
    EXPECT_FALSE(std::signbit(sorted[2]));

    // Yellow equal to the middle goes after it.
    DensityCalculator::SortColorDensities(Reading(0.0f, 1.0f, -0.0f, 0.0f), sorted);
    EXPECT_EQ(1.0f, sorted[0]);
    EXPECT_TRUE(std::signbit(sorted[1]));
    EXPECT_FALSE(std::signbit(sorted[2]));
}

TEST_F(DensityCalculatorSort, NullPointerRaises)
{
    const QVDensity reading = Reading(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(kNullError,
              FailureText<ExceptionNullpointer>([&] { DensityCalculator::SortColorDensities(reading, nullptr); }));
}

// ---------------------------------------------------------------- RecognizeColorField

namespace {

// Reference solids black 1.5, cyan 1.4, magenta 1.3, yellow 1.0. Only each
// reference's own filter counts; the others read 5.0 to show it.
std::array<QVDensity, 4> References()
{
    return {Reading(1.5f, 5.0f, 5.0f, 5.0f), Reading(5.0f, 1.4f, 5.0f, 5.0f), Reading(5.0f, 5.0f, 1.3f, 5.0f),
            Reading(5.0f, 5.0f, 5.0f, 1.0f)};
}

using Table = std::array<AutoTableTYPE, 12>;

Table FreshTable()
{
    Table table{};
    for (AutoTableTYPE& entry : table) {
        entry.tintError = -7.0f;
        entry.present = false;
    }
    return table;
}

void ExpectUntouched(const Table& table, std::size_t except = 99)
{
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (i != except) {
            EXPECT_EQ(-7.0f, table[i].tintError) << "entry " << i;
            EXPECT_FALSE(table[i].present) << "entry " << i;
        }
    }
}

// Tints in the caller's layout: index 0 is not read.
std::array<float, 4> Tints(float first, float second, float third)
{
    return {55.0f, first, second, third};
}

bool Recognize(std::array<QVDensity, 4>& references, const Values& values, std::array<float, 4>& tints,
               QVDensity& density, Table& table)
{
    return DensityCalculator::RecognizeColorField(references.data(), Spectrum(values), kNarrow, tints.data(),
                                                  CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                  table.data());
}

// The measured dot area in percent of a patch of relative reflectance beta
// against a reference solid of density `solid`, in double.
double AreaPercent(double beta, double solid)
{
    return (1.0 - beta) / (1.0 - std::pow(10.0, -solid)) * 100.0;
}

// Densities and the solid's factor pass through float: the area in percent
// is good to a few 1e-5.
constexpr double kAreaTolerance = 1e-4;

} // namespace

TEST_F(DensityCalculatorRecognize, DensityOutputIsThePaperBasedVector)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    const Values values = OnPaper(0.47f, 0.9f, 0.95f);
    QVDensity density;
    EXPECT_TRUE(Recognize(references, values, tints, density, table));
    ExpectSameDensities(VectorOf(values, kNarrow, kPap), density);
}

TEST_F(DensityCalculatorRecognize, SolidLeavesTheTableAlone)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    // Cyan 1.40: a dot area of about 100 %, above (100 + 91.52) / 2.
    const Values solid = OnPaper(0.04f, 0.9f, 0.95f);
    EXPECT_TRUE(Recognize(references, solid, tints, density, table));
    ExpectUntouched(table);
    // A solid is measured against the tint list, so the list must be there.
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>([&] {
                  DensityCalculator::RecognizeColorField(references.data(), Spectrum(solid), kNarrow, nullptr,
                                                         CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                         table.data());
              }));
}

TEST_F(DensityCalculatorRecognize, FortyPercentTintIsMatchedWithItsTableEntry)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    // Cyan, beta 0.47: area 0.53 / (1 - 10^-1.4) = 55.2 %. With the expected
    // gain 40 % becomes 57.28 and 80 % becomes 91.52: 55.2 lies between
    // (0 + 57.28) / 2 and (57.28 + 91.52) / 2, so it is the 40 % tint, tag 1:
    // field 1 + 4 - 3 = 2, entry 1.
    EXPECT_TRUE(Recognize(references, OnPaper(0.47f, 0.9f, 0.95f), tints, density, table));
    EXPECT_TRUE(table[1].present);
    EXPECT_NEAR(AreaPercent(0.47, 1.4) - 40.0, table[1].tintError, kAreaTolerance);
    EXPECT_NEAR(15.1975, table[1].tintError, 1e-3);
    ExpectUntouched(table, 1);
}

TEST_F(DensityCalculatorRecognize, EightyPercentTintIsMatchedWithItsTableEntry)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    // Magenta, beta 0.16: area 0.84 / (1 - 10^-1.3) = 88.43 %, between 74.4
    // and 95.76: the 80 % tint, tag 2: field 2 + 8 - 3 = 7, entry 6.
    EXPECT_TRUE(Recognize(references, OnPaper(0.9f, 0.16f, 0.85f), tints, density, table));
    EXPECT_TRUE(table[6].present);
    EXPECT_NEAR(AreaPercent(0.16, 1.3) - 80.0, table[6].tintError, kAreaTolerance);
    ExpectUntouched(table, 6);
}

TEST_F(DensityCalculatorRecognize, TagIsThePositionInTheCallersTintList)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    // 40 % at position 1, 20 % at 2, 80 % at 3. With gain: 57.28, 31.52 and
    // 91.52; the limits are 95.76, 74.4, 44.4, 15.76.
    auto tints = Tints(40.0f, 20.0f, 80.0f);
    QVDensity density;

    // Yellow, beta 0.25: 0.75 / 0.9 = 83.33 %: 80 %, tag 3, field 3 + 12 - 3
    // = 12, entry 11.
    Table yellow = FreshTable();
    EXPECT_TRUE(Recognize(references, OnPaper(0.95f, 0.9f, 0.25f), tints, density, yellow));
    EXPECT_TRUE(yellow[11].present);
    EXPECT_NEAR(AreaPercent(0.25, 1.0) - 80.0, yellow[11].tintError, kAreaTolerance);
    ExpectUntouched(yellow, 11);

    // Cyan, beta 0.7: 31.24 %: 20 %, tag 2, field 1 + 8 - 3 = 6, entry 5.
    Table cyan = FreshTable();
    EXPECT_TRUE(Recognize(references, OnPaper(0.7f, 0.9f, 0.95f), tints, density, cyan));
    EXPECT_TRUE(cyan[5].present);
    EXPECT_NEAR(AreaPercent(0.7, 1.4) - 20.0, cyan[5].tintError, kAreaTolerance);
    ExpectUntouched(cyan, 5);

    // Cyan, beta 0.47: 55.2 %: 40 %, tag 1, entry 1.
    Table forty = FreshTable();
    EXPECT_TRUE(Recognize(references, OnPaper(0.47f, 0.9f, 0.95f), tints, density, forty));
    EXPECT_TRUE(forty[1].present);
    EXPECT_NEAR(AreaPercent(0.47, 1.4) - 40.0, forty[1].tintError, kAreaTolerance);
    ExpectUntouched(forty, 1);
}

TEST_F(DensityCalculatorRecognize, NeutralPatchIsABlackTint)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    // Half the paper everywhere: greyness 1, read through black against the
    // black solid 1.5: 0.5 / (1 - 10^-1.5) = 51.63 %: 40 %, field 1, entry 0.
    // The black reading passes through two float sums: within 1e-4 as well.
    EXPECT_TRUE(Recognize(references, Flat(kPaper * 0.5f), tints, density, table));
    EXPECT_TRUE(table[0].present);
    EXPECT_NEAR(AreaPercent(0.5, 1.5) - 40.0, table[0].tintError, kAreaTolerance);
    ExpectUntouched(table, 0);
}

TEST_F(DensityCalculatorRecognize, GreynessAboveSevenTenthsIsReadThroughBlack)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    // Half the paper, with colours 0.30, 0.26 and 0.22: greyness 0.74. Not an
    // overprint (greyness above 0.25) but a black tint: about 51 %, 40 %,
    // entry 0.
    const Values values = With(With(Flat(kPaper * 0.5f), kMagentaNm, kPaper * 0.55f), kYellowNm, kPaper * 0.6f);
    const double black = BlackDensity(values) - BlackDensity(Flat(kPaper));
    EXPECT_TRUE(Recognize(references, values, tints, density, table));
    EXPECT_TRUE(table[0].present);
    // Two black readings of about 2e-6 each, times about 120 % per unit of
    // density.
    EXPECT_NEAR(AreaPercent(std::pow(10.0, -black), 1.5) - 40.0, table[0].tintError, 1e-3);
    ExpectUntouched(table, 0);
}

TEST_F(DensityCalculatorRecognize, ExpectedDotGainMovesTheLimits)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    QVDensity density;
    // With the gain 40 % and 80 % are expected at 57.28 and 91.52 %: the
    // limits are 95.76, 74.4 and 28.64 (without gain: 90, 60 and 20).
    // 71.86 % is still the 40 % tint.
    Table seventyTwo = FreshTable();
    EXPECT_TRUE(Recognize(references, OnPaper(0.31f, 0.9f, 0.95f), tints, density, seventyTwo));
    EXPECT_TRUE(seventyTwo[1].present);
    EXPECT_NEAR(AreaPercent(0.31, 1.4) - 40.0, seventyTwo[1].tintError, kAreaTolerance);
    ExpectUntouched(seventyTwo, 1);
    // 94.98 % is still the 80 % tint, not a solid.
    Table ninetyFive = FreshTable();
    EXPECT_TRUE(Recognize(references, OnPaper(0.088f, 0.9f, 0.95f), tints, density, ninetyFive));
    EXPECT_TRUE(ninetyFive[5].present);
    EXPECT_NEAR(AreaPercent(0.088, 1.4) - 80.0, ninetyFive[5].tintError, kAreaTolerance);
    ExpectUntouched(ninetyFive, 5);
    // 24.0 % lies below 28.64: nothing.
    Table twentyFour = FreshTable();
    EXPECT_TRUE(Recognize(references, OnPaper(0.77f, 0.95f, 0.97f), tints, density, twentyFour));
    ExpectUntouched(twentyFour);
}

TEST_F(DensityCalculatorRecognize, OverprintsLeaveTheTableAloneAndNeverReadTheTints)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    // Red, green and blue: the hue error is 0.91 in each. A patch of three
    // colours 1.0, 0.70, 0.40: greyness 0.40.
    const Values overprints[] = {OnPaper(0.9f, 0.1f, 0.08f), OnPaper(0.1f, 0.9f, 0.08f), OnPaper(0.1f, 0.08f, 0.9f),
                                 OnPaper(0.1f, 0.2f, 0.4f)};
    for (const Values& values : overprints) {
        QVDensity density;
        EXPECT_TRUE(DensityCalculator::RecognizeColorField(references.data(), Spectrum(values), kNarrow, nullptr,
                                                           CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                           nullptr));
        ExpectSameDensities(VectorOf(values, kNarrow, kPap), density);
        auto tints = Tints(40.0f, 80.0f, 20.0f);
        Table table = FreshTable();
        EXPECT_TRUE(Recognize(references, values, tints, density, table));
        ExpectUntouched(table);
    }
}

TEST_F(DensityCalculatorRecognize, OverprintNeedsAStrongReferenceSolid)
{
    InstallPaperWhite(Flat(kPaper));
    // With all reference solids at 0 the same patches are solids and go on to
    // the tint list.
    std::array<QVDensity, 4> references = {Reading(0.0f, 0.0f, 0.0f, 0.0f), Reading(0.0f, 0.0f, 0.0f, 0.0f),
                                           Reading(0.0f, 0.0f, 0.0f, 0.0f), Reading(0.0f, 0.0f, 0.0f, 0.0f)};
    for (const Values& values : {OnPaper(0.9f, 0.1f, 0.08f), OnPaper(0.1f, 0.2f, 0.4f)}) {
        QVDensity density;
        EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>([&] {
                      DensityCalculator::RecognizeColorField(references.data(), Spectrum(values), kNarrow, nullptr,
                                                             CMetry::FieldUnclassified, CMetry::DensFilterBlack,
                                                             density, nullptr);
                  }));
        // And a reference solid of 0 stops before the table.
        auto tints = Tints(40.0f, 80.0f, 20.0f);
        Table table = FreshTable();
        EXPECT_TRUE(Recognize(references, values, tints, density, table));
        ExpectUntouched(table);
    }
}

TEST_F(DensityCalculatorRecognize, TintsOfHundredOrMoreOrZeroStopWithoutATableEntry)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    const Values fortyPercent = OnPaper(0.47f, 0.9f, 0.95f);
    for (const std::array<float, 4>& list : {Tints(100.0f, 0.0f, 150.0f), Tints(0.0f, 0.0f, 0.0f),
                                             Tints(100.0f, 100.0f, 100.0f)}) {
        auto tints = list;
        Table table = FreshTable();
        QVDensity density;
        EXPECT_TRUE(Recognize(references, fortyPercent, tints, density, table));
        ExpectUntouched(table);
        EXPECT_TRUE(DensityCalculator::RecognizeColorField(references.data(), Spectrum(fortyPercent), kNarrow,
                                                           tints.data(), CMetry::FieldUnclassified,
                                                           CMetry::DensFilterBlack, density, nullptr));
    }
    // 99.9 still counts.
    auto tints = Tints(40.0f, 99.9f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    EXPECT_TRUE(Recognize(references, fortyPercent, tints, density, table));
    EXPECT_TRUE(table[1].present);
}

TEST_F(DensityCalculatorRecognize, TintEntryOfZeroNeverMatches)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    // Cyan, beta 0.85: 15.6 %, below (0 + 57.28) / 2, where only the empty
    // third entry is left: paper or unclassified, no table entry.
    const Values light = OnPaper(0.85f, 0.95f, 0.97f);
    EXPECT_TRUE(Recognize(references, light, tints, density, table));
    ExpectUntouched(table);
    EXPECT_TRUE(DensityCalculator::RecognizeColorField(references.data(), Spectrum(light), kNarrow, tints.data(),
                                                       CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                       nullptr));
    // Paper itself.
    EXPECT_TRUE(Recognize(references, Flat(kPaper), tints, density, table));
    ExpectUntouched(table);
}

TEST_F(DensityCalculatorRecognize, WeakReferenceSolidCountsAsFullArea)
{
    InstallPaperWhite(Flat(kPaper));
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    QVDensity density;
    // Cyan solid 0.003: 1 - 10^-0.003 = 0.0069, not above 0.01: the area is
    // 100 % and the patch stays a solid.
    auto weak = References();
    weak[1] = Reading(5.0f, 0.003f, 5.0f, 5.0f);
    Table table = FreshTable();
    EXPECT_TRUE(Recognize(weak, OnPaper(0.47f, 0.9f, 0.95f), tints, density, table));
    ExpectUntouched(table);
    // A cyan solid of 0 stops before any area.
    weak[1] = Reading(5.0f, 0.0f, 5.0f, 5.0f);
    EXPECT_TRUE(Recognize(weak, OnPaper(0.47f, 0.9f, 0.95f), tints, density, table));
    ExpectUntouched(table);
}

TEST_F(DensityCalculatorRecognize, NullPointersRaiseWhenReached)
{
    InstallPaperWhite(Flat(kPaper));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    QVDensity density;
    const QVSpectrum fortyPercent = Spectrum(OnPaper(0.47f, 0.9f, 0.95f));
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>([&] {
                  DensityCalculator::RecognizeColorField(nullptr, fortyPercent, kNarrow, tints.data(),
                                                         CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                         table.data());
              }));
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>([&] {
                  DensityCalculator::RecognizeColorField(references.data(), fortyPercent, kNarrow, nullptr,
                                                         CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                         table.data());
              }));
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>([&] {
                  DensityCalculator::RecognizeColorField(references.data(), fortyPercent, kNarrow, tints.data(),
                                                         CMetry::FieldUnclassified, CMetry::DensFilterBlack, density,
                                                         nullptr);
              }));
}

TEST_F(DensityCalculatorRecognize, FailsWithoutPaperWhiteBeforeReadingAnyPointer)
{
    QVDensity density;
    EXPECT_FALSE(DensityCalculator::RecognizeColorField(nullptr, Spectrum(OnPaper(0.47f, 0.9f, 0.95f)), kNarrow,
                                                        nullptr, CMetry::FieldUnclassified, CMetry::DensFilterBlack,
                                                        density, nullptr));
    auto references = References();
    auto tints = Tints(40.0f, 80.0f, 0.0f);
    Table table = FreshTable();
    EXPECT_FALSE(Recognize(references, OnPaper(0.47f, 0.9f, 0.95f), tints, density, table));
    ExpectUntouched(table);
}

// ---------------------------------------------------------------- calibration store

TEST_F(DensityCalculatorCalibration, InitialiseMakesEveryCellNeutral)
{
    SetSlope(kPolarizer, CMetry::DensityStdANSIT, {2.0f, 3.0f, 4.0f, 5.0f});
    SetOffset(CMetry::PhysicalFilterND0, CMetry::DensityStdUser, {0.1f, 0.2f, 0.3f, 0.4f});
    DensityCalculator::InitializeDensityCalibration();
    for (int physical = 0; physical < DensityCalculator::PhysicalFilterCount; ++physical) {
        for (int standard = 0; standard < DensityCalculator::DensityStandardCount; ++standard) {
            const float* slope = DensityCalculator::GetDensitySlope(static_cast<QVPhysicalFilterTYPE>(physical),
                                                                    static_cast<QVDensityStdTYPE>(standard));
            const float* offset = DensityCalculator::GetDensityOffset(static_cast<QVPhysicalFilterTYPE>(physical),
                                                                      static_cast<QVDensityStdTYPE>(standard));
            for (int filter = 0; filter < 4; ++filter) {
                EXPECT_EQ(1.0f, slope[filter]) << physical << " " << standard << " " << filter;
                EXPECT_EQ(0.0f, offset[filter]) << physical << " " << standard << " " << filter;
            }
        }
    }
}

TEST_F(DensityCalculatorCalibration, SetAndGetInBothForms)
{
    std::array<float, 4> slope = {2.0f, 3.0f, 4.0f, 5.0f};
    std::array<float, 4> offset = {0.1f, -0.2f, 0.3f, -0.4f};
    DensityCalculator::SetDensitySlope(kPolarizer, CMetry::DensityStdANSIT, slope.data());
    DensityCalculator::SetDensityOffset(kPolarizer, CMetry::DensityStdANSIT, offset.data());
    // The store copied the values.
    slope.fill(9.0f);
    offset.fill(9.0f);

    const float* storedSlope = DensityCalculator::GetDensitySlope(kPolarizer, CMetry::DensityStdANSIT);
    const float* storedOffset = DensityCalculator::GetDensityOffset(kPolarizer, CMetry::DensityStdANSIT);
    std::array<float, 4> slopeOut{};
    std::array<float, 4> offsetOut{};
    DensityCalculator::GetDensitySlope(kPolarizer, CMetry::DensityStdANSIT, slopeOut.data());
    DensityCalculator::GetDensityOffset(kPolarizer, CMetry::DensityStdANSIT, offsetOut.data());
    const std::array<float, 4> expectedSlope = {2.0f, 3.0f, 4.0f, 5.0f};
    const std::array<float, 4> expectedOffset = {0.1f, -0.2f, 0.3f, -0.4f};
    for (std::size_t filter = 0; filter < 4; ++filter) {
        EXPECT_EQ(expectedSlope[filter], storedSlope[filter]) << filter;
        EXPECT_EQ(expectedOffset[filter], storedOffset[filter]) << filter;
        EXPECT_EQ(expectedSlope[filter], slopeOut[filter]) << filter;
        EXPECT_EQ(expectedOffset[filter], offsetOut[filter]) << filter;
    }
    // Neighbouring cells stay neutral.
    EXPECT_EQ(1.0f, DensityCalculator::GetDensitySlope(kNoFilter, CMetry::DensityStdANSIT)[0]);
    EXPECT_EQ(1.0f, DensityCalculator::GetDensitySlope(kPolarizer, CMetry::DensityStdSPI)[0]);
    EXPECT_EQ(0.0f, DensityCalculator::GetDensityOffset(kPolarizer, CMetry::DensityStdANSIA)[3]);
    // The pointer form shows the store itself.
    std::array<float, 4> again = {7.0f, 7.0f, 7.0f, 7.0f};
    DensityCalculator::SetDensitySlope(kPolarizer, CMetry::DensityStdANSIT, again.data());
    EXPECT_EQ(7.0f, storedSlope[2]);
}

TEST_F(DensityCalculatorCalibration, ResetTouchesOnlyItsCell)
{
    SetSlope(kPolarizer, CMetry::DensityStdANSIT, {2.0f, 3.0f, 4.0f, 5.0f});
    SetOffset(kPolarizer, CMetry::DensityStdANSIT, {0.1f, 0.2f, 0.3f, 0.4f});
    SetSlope(kPolarizer, CMetry::DensityStdSPI, {2.0f, 3.0f, 4.0f, 5.0f});
    SetOffset(kNoFilter, CMetry::DensityStdANSIT, {0.1f, 0.2f, 0.3f, 0.4f});
    const QVDensityStdTYPE standard = CMetry::DensityStdANSIT;
    DensityCalculator::ResetDensityCalibration(kPolarizer, standard);
    for (int filter = 0; filter < 4; ++filter) {
        EXPECT_EQ(1.0f, DensityCalculator::GetDensitySlope(kPolarizer, standard)[filter]);
        EXPECT_EQ(0.0f, DensityCalculator::GetDensityOffset(kPolarizer, standard)[filter]);
    }
    EXPECT_EQ(3.0f, DensityCalculator::GetDensitySlope(kPolarizer, CMetry::DensityStdSPI)[1]);
    EXPECT_EQ(0.2f, DensityCalculator::GetDensityOffset(kNoFilter, CMetry::DensityStdANSIT)[1]);
}

TEST_F(DensityCalculatorCalibration, CellOutsideTheStoreRaises)
{
    struct Cell {
        int physical;
        int standard;
    };
    const Cell cells[] = {{13, 0}, {-1, 0}, {0, 6}, {0, -1}, {100, 100}};
    std::array<float, 4> values = {1.0f, 1.0f, 1.0f, 1.0f};
    for (const Cell& cell : cells) {
        const auto physical = static_cast<QVPhysicalFilterTYPE>(cell.physical);
        const auto standard = static_cast<QVDensityStdTYPE>(cell.standard);
        EXPECT_EQ(kCellError, FailureText([&] { DensityCalculator::ResetDensityCalibration(physical, standard); }));
        EXPECT_EQ(kCellError, FailureText([&] { DensityCalculator::GetDensitySlope(physical, standard); }));
        EXPECT_EQ(kCellError, FailureText([&] { DensityCalculator::GetDensityOffset(physical, standard); }));
        EXPECT_EQ(kCellError,
                  FailureText([&] { DensityCalculator::GetDensitySlope(physical, standard, values.data()); }));
        EXPECT_EQ(kCellError,
                  FailureText([&] { DensityCalculator::GetDensityOffset(physical, standard, values.data()); }));
        EXPECT_EQ(kCellError,
                  FailureText([&] { DensityCalculator::SetDensitySlope(physical, standard, values.data()); }));
        EXPECT_EQ(kCellError,
                  FailureText([&] { DensityCalculator::SetDensityOffset(physical, standard, values.data()); }));
    }
    // The cell is checked before the value pointer, and a refused call
    // changes nothing: the store stays neutral, the values as they were.
    EXPECT_EQ(kCellError, FailureText([] {
                  DensityCalculator::SetDensitySlope(CMetry::PhysicalFilterNo, CMetry::DensityStdUndefined, nullptr);
              }));
    EXPECT_EQ(kCellError, FailureText([] {
                  DensityCalculator::GetDensityOffset(CMetry::PhysicalFilterNo, static_cast<QVDensityStdTYPE>(6),
                                                      nullptr);
              }));
    std::array<float, 4> untouched = {7.0f, 7.0f, 7.0f, 7.0f};
    EXPECT_EQ(kCellError, FailureText([&] {
                  DensityCalculator::GetDensitySlope(CMetry::PhysicalFilterNo, CMetry::DensityStdUndefined,
                                                     untouched.data());
              }));
    EXPECT_EQ(7.0f, untouched[0]);
    EXPECT_EQ(7.0f, untouched[3]);
    for (int physical = 0; physical < DensityCalculator::PhysicalFilterCount; ++physical) {
        for (int standard = 0; standard < DensityCalculator::DensityStandardCount; ++standard) {
            for (int filter = 0; filter < 4; ++filter) {
                EXPECT_EQ(1.0f, DensityCalculator::asDensitySlopeArray[physical][standard][filter]);
                EXPECT_EQ(0.0f, DensityCalculator::asDensityOffsetArray[physical][standard][filter]);
            }
        }
    }
    // The corners of the store are inside.
    EXPECT_EQ("no exception", FailureText([&] {
                  DensityCalculator::GetDensitySlope(CMetry::PhysicalFilterUndefined, CMetry::DensityStdDIN);
                  DensityCalculator::GetDensityOffset(CMetry::PhysicalFilterND0, CMetry::DensityStdUser);
              }));
}

TEST_F(DensityCalculatorCalibration, NullValuePointerRaises)
{
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>(
                              [] { DensityCalculator::GetDensitySlope(kNoFilter, CMetry::DensityStdDIN, nullptr); }));
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>(
                              [] { DensityCalculator::GetDensityOffset(kNoFilter, CMetry::DensityStdDIN, nullptr); }));
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>(
                              [] { DensityCalculator::SetDensitySlope(kNoFilter, CMetry::DensityStdDIN, nullptr); }));
    EXPECT_EQ(kNullError, FailureText<ExceptionNullpointer>(
                              [] { DensityCalculator::SetDensityOffset(kNoFilter, CMetry::DensityStdDIN, nullptr); }));
}

// ---------------------------------------------------------------- GetActDensityStdFilter

TEST_F(DensityCalculatorActiveFilter, HoldsTheLastStandardAskedFor)
{
    DensityFilter& active = DensityCalculator::GetActDensityStdFilter();
    EXPECT_EQ(&DensityCalculator::asDensityFilter, &active);
    EXPECT_EQ(&active, &DensityCalculator::GetActDensityStdFilter());
    EXPECT_EQ(CMetry::DensityStdUndefined, active.GetDensStd());

    QVDensity out;
    DensityCalculator::GetDensityVector(Spectrum(Flat(0.5f)), CMetry::DensityStdANSIA, kAbs, out);
    EXPECT_EQ(CMetry::DensityStdANSIA, active.GetDensStd());

    float density = 0.0f;
    QVDensFilterTYPE filter = CMetry::DensFilterBlack;
    DensityCalculator::GetDensity(Spectrum(Flat(0.5f)), CMetry::DensityStdSPI, kAbs, density, filter, true);
    EXPECT_EQ(CMetry::DensityStdSPI, DensityCalculator::GetActDensityStdFilter().GetDensStd());

    // Operations without a standard leave it where it is.
    float densities[36];
    DensityCalculator::GetDensitySpectrum(Spectrum(Flat(0.5f)), kAbs, densities);
    unsigned short waveLength = 0;
    DensityCalculator::GetMaxDensity(Spectrum(Flat(0.5f)), kAbs, density, waveLength);
    EXPECT_EQ(CMetry::DensityStdSPI, active.GetDensStd());

    // A failed paper-white step still switched the filter.
    DensityCalculator::GetDensityVector(Spectrum(Flat(0.5f)), CMetry::DensityStdDINNB, kPap, out);
    EXPECT_EQ(CMetry::DensityStdDINNB, active.GetDensStd());

    // Its filters are the standard's.
    EXPECT_EQ(1.0f, active[CMetry::DensFilterCyan][static_cast<long>(Index(kCyanNm))]);
}
