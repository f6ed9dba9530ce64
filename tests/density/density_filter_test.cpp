// Density filters: the response filters of the five status standards, the
// shared visual black filter and the store of the user-defined standard.

#include "qvimanager/density/density_filter.h"

#include "qvimanager/cmetry/linalg.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cmath>

using CMetry::DensityFilter;
using CMetry::Filter;
using CMetry::LinAlg;
using CMetry::QVDensityStdTYPE;
using TestSupport::FailureText;

namespace {

const QVDensityStdTYPE kStatusStandards[] = {CMetry::DensityStdDIN, CMetry::DensityStdDINNB, CMetry::DensityStdANSIA,
                                             CMetry::DensityStdANSIT, CMetry::DensityStdSPI};

float Sum(const Filter& filter)
{
    return LinAlg::SumV(filter.GetFilterSpectrum(), 36);
}

// The grid points where the filter is not 0, as (first index, last index).
std::pair<int, int> Span(const Filter& filter)
{
    int first = -1;
    int last = -1;
    for (int i = 0; i < 36; ++i) {
        if (filter[i] != 0.0f) {
            if (first < 0) {
                first = i;
            }
            last = i;
        }
    }
    return {first, last};
}

int Index(int nanometres)
{
    return (nanometres - 380) / 10;
}

} // namespace

TEST(DensityFilter, NewFilterHasNoStandardAndFourEmptyFilters)
{
    const DensityFilter filter;
    EXPECT_EQ(CMetry::DensityStdUndefined, filter.GetDensStd());
    for (unsigned short i = 0; i < 4; ++i) {
        EXPECT_EQ(0.0f, Sum(filter[i]));
    }
    EXPECT_STREQ("Density Standart: not defined", filter.GetValueString().c_str());
}

TEST(DensityFilter, EachColourFilterSumsToOne)
{
    // To the precision of the published digits: the ANSI T magenta values
    // as printed add up to 0.99998101, the others closer to 1.
    for (QVDensityStdTYPE standard : kStatusStandards) {
        const DensityFilter filter(standard);
        for (unsigned short colour = 1; colour < 4; ++colour) {
            EXPECT_NEAR(1.0, Sum(filter[colour]), 2e-5) << standard << " " << colour;
        }
    }
    // And to float precision of the printed sum.
    EXPECT_NEAR(0.99998101, Sum(DensityFilter(CMetry::DensityStdANSIT)[CMetry::DensFilterMagenta]), 2e-7);
}

TEST(DensityFilter, BlackFilterSumsToHundredAndIsSharedByTheStatusStandards)
{
    const DensityFilter din(CMetry::DensityStdDIN);
    // The published values add up to 99.99988584; in float to within 1e-5 of
    // that.
    EXPECT_NEAR(99.99988584, Sum(din[CMetry::DensFilterBlack]), 1e-5);
    EXPECT_NEAR(100.0, Sum(din[CMetry::DensFilterBlack]), 2e-4);
    EXPECT_EQ(0.0f, din[CMetry::DensFilterBlack][0]); // 380 nm
    EXPECT_EQ(0.0f, din[CMetry::DensFilterBlack][1]); // 390 nm
    EXPECT_EQ(0.0005454f, din[CMetry::DensFilterBlack][2]);
    EXPECT_EQ(9.457845f, din[CMetry::DensFilterBlack][Index(570)]);
    EXPECT_EQ(0.01001628f, din[CMetry::DensFilterBlack][35]);
    for (QVDensityStdTYPE standard : kStatusStandards) {
        EXPECT_TRUE(DensityFilter(standard)[CMetry::DensFilterBlack] == din[CMetry::DensFilterBlack]) << standard;
    }
}

TEST(DensityFilter, ColourFiltersLieOnTheirWavelengths)
{
    struct Expected {
        QVDensityStdTYPE standard;
        int cyan[2];
        int magenta[2];
        int yellow[2];
    };
    const Expected expected[] = {
        {CMetry::DensityStdDIN, {590, 650}, {500, 560}, {400, 460}},
        {CMetry::DensityStdDINNB, {620, 620}, {530, 530}, {430, 430}},
        {CMetry::DensityStdANSIA, {600, 730}, {500, 590}, {420, 490}},
        {CMetry::DensityStdANSIT, {570, 710}, {480, 610}, {380, 540}},
        {CMetry::DensityStdSPI, {590, 660}, {500, 570}, {390, 470}},
    };
    for (const Expected& row : expected) {
        const DensityFilter filter(row.standard);
        EXPECT_EQ(std::make_pair(Index(row.cyan[0]), Index(row.cyan[1])), Span(filter[CMetry::DensFilterCyan]));
        EXPECT_EQ(std::make_pair(Index(row.magenta[0]), Index(row.magenta[1])), Span(filter[CMetry::DensFilterMagenta]));
        EXPECT_EQ(std::make_pair(Index(row.yellow[0]), Index(row.yellow[1])), Span(filter[CMetry::DensFilterYellow]));
    }
}

TEST(DensityFilter, ValuesAreTheTablesOwn)
{
    const DensityFilter din(CMetry::DensityStdDIN);
    EXPECT_EQ(0.27027026f, din[CMetry::DensFilterCyan][Index(620)]);
    EXPECT_EQ(0.04054054f, din[CMetry::DensFilterMagenta][Index(500)]);
    EXPECT_EQ(0.10810811f, din[CMetry::DensFilterYellow][Index(450)]);
    EXPECT_EQ(1.0f, DensityFilter(CMetry::DensityStdDINNB)[CMetry::DensFilterMagenta][Index(530)]);
    const DensityFilter ansiA(CMetry::DensityStdANSIA);
    EXPECT_EQ(0.00004801f, ansiA[CMetry::DensFilterCyan][Index(730)]);
    EXPECT_EQ(0.31942147f, ansiA[CMetry::DensFilterMagenta][Index(530)]);
    const DensityFilter ansiT(CMetry::DensityStdANSIT);
    EXPECT_EQ(0.00042192f, ansiT[CMetry::DensFilterYellow][0]);
    EXPECT_EQ(0.00003195f, ansiT[CMetry::DensFilterCyan][Index(710)]);
    const DensityFilter spi(CMetry::DensityStdSPI);
    EXPECT_EQ(0.48156747f, spi[CMetry::DensFilterYellow][Index(430)]);
    EXPECT_EQ(0.49147895f, spi[CMetry::DensFilterMagenta][Index(540)]);
}

TEST(DensityFilter, SelectingTheActiveStandardAgainChangesNothing)
{
    DensityFilter filter(CMetry::DensityStdANSIA);
    const Filter before = filter[CMetry::DensFilterCyan];
    filter.SetDensityStandard(CMetry::DensityStdANSIA);
    EXPECT_TRUE(filter[CMetry::DensFilterCyan] == before);
    filter.SetDensityStandard(CMetry::DensityStdSPI);
    EXPECT_FALSE(filter[CMetry::DensFilterCyan] == before);
    EXPECT_EQ(CMetry::DensityStdSPI, filter.GetDensStd());
    EXPECT_STREQ("Density Standart: Densitometer filter SPI", filter.GetValueString().c_str());
}

TEST(DensityFilter, UserStandardTakesAllFourFiltersFromTheStore)
{
    DensityFilter::SetUserDensityStandardToDefault();
    const DensityFilter user(CMetry::DensityStdUser);
    for (unsigned short i = 0; i < 4; ++i) {
        // The default store is not normalised: 36 ones.
        EXPECT_EQ(36.0f, Sum(user[i])) << i;
    }
    EXPECT_STREQ("Density Standart: User defined density standard", user.GetValueString().c_str());
}

TEST(DensityFilter, StoreStartsAtAllOnes)
{
    for (unsigned long i = 0; i < 4; ++i) {
        for (float value : DensityFilter::GetUserDefinedFilter(i)) {
            EXPECT_EQ(1.0f, value);
        }
    }
}

TEST(DensityFilter, UserFiltersChangedWhileActiveWaitForAnotherSelection)
{
    DensityFilter::SetUserDensityStandardToDefault();
    DensityFilter filter(CMetry::DensityStdUser);
    float black[36] = {};
    black[10] = 5.0f;
    DensityFilter::SetUserDefinedFilter(black, CMetry::DensFilterBlack);
    EXPECT_EQ(5.0f, DensityFilter::GetUserDefinedFilter(CMetry::DensFilterBlack)[10]);
    filter.SetDensityStandard(CMetry::DensityStdUser);
    EXPECT_EQ(36.0f, Sum(filter[CMetry::DensFilterBlack]));
    filter.SetDensityStandard(CMetry::DensityStdDIN);
    filter.SetDensityStandard(CMetry::DensityStdUser);
    // The stored black replaces the shared visual filter.
    EXPECT_EQ(5.0f, Sum(filter[CMetry::DensFilterBlack]));
    EXPECT_EQ(36.0f, Sum(filter[CMetry::DensFilterCyan]));
    DensityFilter::SetUserDensityStandardToDefault();
}

TEST(DensityFilter, OtherStandardsAreStoredWithZeroColourFilters)
{
    for (int value : {6, -2, 100}) {
        const DensityFilter filter(static_cast<QVDensityStdTYPE>(value));
        EXPECT_EQ(value, filter.GetDensStd());
        for (unsigned short colour = 1; colour < 4; ++colour) {
            EXPECT_EQ(0.0f, Sum(filter[colour]));
        }
        EXPECT_NEAR(100.0, Sum(filter[CMetry::DensFilterBlack]), 2e-4);
        EXPECT_STREQ("Density Standart: not defined", filter.GetValueString().c_str());
    }
}

TEST(DensityFilter, IndexFourOrMoreIsRefused)
{
    const DensityFilter filter(CMetry::DensityStdDIN);
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)filter[4]; }));
    EXPECT_EQ("vector index >= vector size", FailureText([] { (void)DensityFilter::GetUserDefinedFilter(4); }));
    const float values[36] = {};
    EXPECT_EQ("vector index >= vector size", FailureText([&] { DensityFilter::SetUserDefinedFilter(values, 4); }));
}

TEST(DensityFilter, CopiesAreDeep)
{
    DensityFilter source(CMetry::DensityStdANSIT);
    const DensityFilter copy(source);
    source.SetDensityStandard(CMetry::DensityStdDINNB);
    EXPECT_EQ(CMetry::DensityStdANSIT, copy.GetDensStd());
    EXPECT_TRUE(copy[CMetry::DensFilterYellow] == DensityFilter(CMetry::DensityStdANSIT)[CMetry::DensFilterYellow]);
    DensityFilter assigned;
    assigned = copy;
    EXPECT_EQ(CMetry::DensityStdANSIT, assigned.GetDensStd());
}

TEST(DensityFilter, WrittenFiltersRecomputeTheirSums)
{
    // Values are written through the writable index, so a filter's sum is
    // computed afresh when it is asked for.
    DensityFilter filter(CMetry::DensityStdDINNB);
    Filter cyan = filter[CMetry::DensFilterCyan];
    EXPECT_EQ(1.0f, cyan.GetFilterSum());
    EXPECT_STREQ("FilterSum: not defined", filter[CMetry::DensFilterCyan].GetValueString().c_str());
}
