// Density values: one reading of four filter densities with the standard, the
// user-defined filters and the physical conditions it was taken under.
//
// Only the value constructor and SetAllDensities mark a reading valid; every
// indexed access is range-checked against the number of densities the
// reading holds; the user filter is shared between copies.

#include "qvimanager/density/density.h"

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

using CMetry::DensityFilterModeTYPE;
using CMetry::QVDensFilterTYPE;
using CMetry::QVDensity;
using CMetry::QVMeasureConditions;
using CMetry::TestAccess;
using TestSupport::FailureText;
using Utilities::String;

namespace {

using UserFilter = Utilities::Vector<float[36]>;
using UserFilterPointer = QVDensity::UserFilterPointer;

const char* const kRangeError = "vector index >= vector size";

UserFilterPointer NewUserFilter(float first)
{
    UserFilterPointer filter(new UserFilter(4));
    (*filter)[0][0] = first;
    return filter;
}

QVMeasureConditions PolarizerConditions()
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Physical.Filter"), String("Polarizer"));
    return conditions;
}

QVDensity Reading(float black, float cyan, float magenta, float yellow)
{
    return QVDensity(black, cyan, magenta, yellow, QVMeasureConditions(), CMetry::DensityStdDIN, UserFilterPointer());
}

Utilities::Vector<float> Values(std::initializer_list<float> values)
{
    Utilities::Vector<float> vector(values.size());
    unsigned long i = 0;
    for (float value : values) {
        vector[i++] = value;
    }
    return vector;
}

DensityFilterModeTYPE Mode(int mode)
{
    return static_cast<DensityFilterModeTYPE>(mode);
}

QVDensFilterTYPE Filter(int filter)
{
    return static_cast<QVDensFilterTYPE>(filter);
}

} // namespace

// ---------------------------------------------------------------- construction

TEST(QVDensity, DefaultReadsZeroInAllFourFiltersWithStandardMinusOneAndIsNotValid)
{
    const QVDensity density;
    for (int filter = 0; filter < 4; ++filter) {
        EXPECT_EQ(0.0f, density.GetDensity(Filter(filter))) << filter;
        EXPECT_EQ(0.0f, density[static_cast<unsigned short>(filter)]) << filter;
        EXPECT_EQ(0.0f, density[Mode(filter)]) << filter;
    }
    EXPECT_EQ(CMetry::DensityStdUndefined, density.GetDensityStd());
    EXPECT_EQ(-1, density.GetDensityStd());
    EXPECT_FALSE(TestAccess::IsValid(density));
    EXPECT_FALSE(density.GetUserDefinedFilter().IsValid());
    EXPECT_TRUE(density.GetPhysMeasCond() == QVMeasureConditions());
    density.Invariant();
}

TEST(QVDensity, ValueConstructorStoresEverythingAndIsValid)
{
    const UserFilterPointer filter = NewUserFilter(3.0f);
    const QVDensity density(1.5f, 0.25f, 2.0f, 0.125f, PolarizerConditions(), CMetry::DensityStdANSIT, filter);
    EXPECT_TRUE(TestAccess::IsValid(density));
    EXPECT_EQ(1.5f, density.GetDensity(CMetry::DensFilterBlack));
    EXPECT_EQ(0.25f, density.GetDensity(CMetry::DensFilterCyan));
    EXPECT_EQ(2.0f, density.GetDensity(CMetry::DensFilterMagenta));
    EXPECT_EQ(0.125f, density.GetDensity(CMetry::DensFilterYellow));
    EXPECT_EQ(CMetry::DensityStdANSIT, density.GetDensityStd());
    EXPECT_TRUE(density.GetUserDefinedFilter() == filter);
    EXPECT_EQ(std::string("Polarizer"),
              std::string(density.GetPhysMeasCond().GetMeasureCondition(String("Physical.Filter"))));
}

TEST(QVDensity, ValueConstructorAcceptsAnEmptyUserFilter)
{
    const QVDensity density = Reading(0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_TRUE(TestAccess::IsValid(density));
    EXPECT_FALSE(density.GetUserDefinedFilter().IsValid());
}

// ---------------------------------------------------------------- copies

TEST(QVDensity, CopiesTakeTheValuesAndShareTheUserFilter)
{
    const UserFilterPointer filter = NewUserFilter(3.0f);
    QVDensity original(1.5f, 0.25f, 2.0f, 0.125f, PolarizerConditions(), CMetry::DensityStdSPI, filter);
    const QVDensity copy(original);
    QVDensity assigned;
    assigned = original;
    for (const QVDensity* density : {&copy, static_cast<const QVDensity*>(&assigned)}) {
        EXPECT_TRUE(TestAccess::IsValid(*density));
        EXPECT_EQ(1.5f, density->GetDensity(CMetry::DensFilterBlack));
        EXPECT_EQ(0.125f, density->GetDensity(CMetry::DensFilterYellow));
        EXPECT_EQ(CMetry::DensityStdSPI, density->GetDensityStd());
        EXPECT_TRUE(density->GetPhysMeasCond() == PolarizerConditions());
        // The same filter object, not an equal one.
        EXPECT_TRUE(density->GetUserDefinedFilter() == filter);
    }
    // Shared: a change through one holder shows through the others.
    (*original.GetUserDefinedFilter())[0][0] = 7.0f;
    EXPECT_EQ(7.0f, (*copy.GetUserDefinedFilter())[0][0]);
    EXPECT_EQ(7.0f, (*assigned.GetUserDefinedFilter())[0][0]);
}

TEST(QVDensity, CopiedDensitiesAndConditionsAreIndependent)
{
    QVDensity original = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    const QVDensity copy(original);
    original.SetDensity(9.0f, CMetry::DensFilterCyan);
    original[3] = 8.0f;
    original.SetPhysMeasCond(PolarizerConditions());
    original.SetDensityStd(CMetry::DensityStdUser);
    EXPECT_EQ(2.0f, copy.GetDensity(CMetry::DensFilterCyan));
    EXPECT_EQ(4.0f, copy.GetDensity(CMetry::DensFilterYellow));
    EXPECT_TRUE(copy.GetPhysMeasCond() == QVMeasureConditions());
    EXPECT_EQ(CMetry::DensityStdDIN, copy.GetDensityStd());
}

TEST(QVDensity, ReplacingTheUserFilterOnOneCopyLeavesTheOtherWithTheOldOne)
{
    const UserFilterPointer oldFilter = NewUserFilter(1.0f);
    const UserFilterPointer newFilter = NewUserFilter(2.0f);
    QVDensity first(0.0f, 0.0f, 0.0f, 0.0f, QVMeasureConditions(), CMetry::DensityStdUser, oldFilter);
    const QVDensity second(first);
    first.SetUserDefinedFilter(newFilter);
    EXPECT_TRUE(first.GetUserDefinedFilter() == newFilter);
    EXPECT_TRUE(second.GetUserDefinedFilter() == oldFilter);
    EXPECT_EQ(1.0f, (*second.GetUserDefinedFilter())[0][0]);

    QVDensity third;
    third = second;
    third.SetUserDefinedFilter(UserFilterPointer());
    EXPECT_FALSE(third.GetUserDefinedFilter().IsValid());
    EXPECT_TRUE(second.GetUserDefinedFilter() == oldFilter);
}

TEST(QVDensity, CopyOfAReadingThatIsNotValidIsNotValid)
{
    const QVDensity original;
    const QVDensity copy(original);
    QVDensity assigned = Reading(1.0f, 1.0f, 1.0f, 1.0f);
    assigned = original;
    EXPECT_FALSE(TestAccess::IsValid(copy));
    EXPECT_FALSE(TestAccess::IsValid(assigned));
    EXPECT_EQ(0.0f, assigned.GetDensity(CMetry::DensFilterBlack));
}

// ---------------------------------------------------------------- writing densities

TEST(QVDensity, SetDensityWritesOneFilterAndDoesNotMakeTheReadingValid)
{
    QVDensity density;
    density.SetDensity(0.5f, CMetry::DensFilterMagenta);
    EXPECT_EQ(0.5f, density.GetDensity(CMetry::DensFilterMagenta));
    EXPECT_EQ(0.0f, density.GetDensity(CMetry::DensFilterBlack));
    EXPECT_EQ(0.0f, density.GetDensity(CMetry::DensFilterCyan));
    EXPECT_EQ(0.0f, density.GetDensity(CMetry::DensFilterYellow));
    EXPECT_FALSE(TestAccess::IsValid(density));
}

TEST(QVDensity, WritableIndexWritesInPlaceAndDoesNotMakeTheReadingValid)
{
    QVDensity density;
    density[0] = 1.25f;
    float& yellow = density[3];
    yellow = 0.75f;
    EXPECT_EQ(1.25f, density.GetDensity(CMetry::DensFilterBlack));
    EXPECT_EQ(0.75f, density.GetDensity(CMetry::DensFilterYellow));
    EXPECT_FALSE(TestAccess::IsValid(density));
}

TEST(QVDensity, SettersKeepAValidReadingValid)
{
    QVDensity density = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    density.SetDensity(5.0f, CMetry::DensFilterBlack);
    density[1] = 6.0f;
    EXPECT_TRUE(TestAccess::IsValid(density));
}

TEST(QVDensity, SetAllDensitiesTakesTheValuesAndMakesTheReadingValid)
{
    QVDensity density;
    density.SetAllDensities(Values({0.5f, 1.0f, 1.5f, 2.0f}));
    EXPECT_TRUE(TestAccess::IsValid(density));
    EXPECT_EQ(0.5f, density.GetDensity(CMetry::DensFilterBlack));
    EXPECT_EQ(1.0f, density.GetDensity(CMetry::DensFilterCyan));
    EXPECT_EQ(1.5f, density.GetDensity(CMetry::DensFilterMagenta));
    EXPECT_EQ(2.0f, density.GetDensity(CMetry::DensFilterYellow));
}

TEST(QVDensity, SetAllDensitiesOfTheReadingsOwnValuesMakesItValid)
{
    QVDensity density;
    density.SetDensity(0.25f, CMetry::DensFilterCyan);
    ASSERT_FALSE(TestAccess::IsValid(density));
    Utilities::Vector<float> own(4);
    for (unsigned short i = 0; i < 4; ++i) {
        own[i] = density[i];
    }
    density.SetAllDensities(own);
    EXPECT_TRUE(TestAccess::IsValid(density));
    EXPECT_EQ(0.0f, density.GetDensity(CMetry::DensFilterBlack));
    EXPECT_EQ(0.25f, density.GetDensity(CMetry::DensFilterCyan));
}

TEST(QVDensity, SetAllDensitiesWithMoreValuesWidensTheRangeCheck)
{
    QVDensity density;
    density.SetAllDensities(Values({0.5f, 1.0f, 1.5f, 2.0f, 2.5f, 3.0f}));
    EXPECT_EQ(2.5f, density[static_cast<unsigned short>(4)]);
    EXPECT_EQ(3.0f, density[static_cast<unsigned short>(5)]);
    EXPECT_EQ(2.5f, density.GetDensity(Filter(4)));
    density[5] = 4.0f;
    EXPECT_EQ(4.0f, std::as_const(density)[static_cast<unsigned short>(5)]);
    EXPECT_EQ(kRangeError, FailureText([&] { (void)std::as_const(density)[static_cast<unsigned short>(6)]; }));
    EXPECT_EQ(kRangeError, FailureText([&] { density[6] = 0.0f; }));
    // Mode 4 is still the maximum mode, not an index.
    EXPECT_EQ(0.0f, density[CMetry::DensityFilterModeMax]);
}

TEST(QVDensity, SetAllDensitiesWithFewerValuesNarrowsTheRangeCheck)
{
    QVDensity density = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    density.SetAllDensities(Values({0.5f, 1.0f}));
    EXPECT_TRUE(TestAccess::IsValid(density));
    EXPECT_EQ(1.0f, density.GetDensity(CMetry::DensFilterCyan));
    EXPECT_EQ(kRangeError, FailureText([&] { (void)density.GetDensity(CMetry::DensFilterMagenta); }));
    EXPECT_EQ(kRangeError, FailureText([&] { density.SetDensity(1.0f, CMetry::DensFilterYellow); }));
    EXPECT_EQ(kRangeError, FailureText([&] { (void)std::as_const(density)[static_cast<unsigned short>(2)]; }));
    EXPECT_EQ(kRangeError, FailureText([&] { density[2] = 0.0f; }));
    EXPECT_EQ(kRangeError, FailureText([&] { (void)density[CMetry::DensityFilterModeYellow]; }));
}

// ---------------------------------------------------------------- index range

TEST(QVDensity, IndexFourIsOutOfRangeInEveryIndexedAccess)
{
    QVDensity density = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    const QVDensity& constant = density;
    const unsigned short four = 4;
    EXPECT_EQ(kRangeError, FailureText([&] { (void)constant[four]; }));
    EXPECT_EQ(kRangeError, FailureText([&] { density[four] = 1.0f; }));
    EXPECT_EQ(kRangeError, FailureText([&] { (void)constant.GetDensity(Filter(4)); }));
    EXPECT_EQ(kRangeError, FailureText([&] { density.SetDensity(1.0f, Filter(4)); }));
    // A failed write changes nothing.
    EXPECT_EQ(4.0f, constant[static_cast<unsigned short>(3)]);
}

// ---------------------------------------------------------------- reading by filter mode

TEST(QVDensity, ModeFourGivesZeroWhileIndexFourIsARangeError)
{
    QVDensity density = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    const QVDensity& constant = density;
    EXPECT_EQ(0.0f, constant[CMetry::DensityFilterModeMax]);
    EXPECT_EQ(0.0f, density[CMetry::DensityFilterModeMax]);
    EXPECT_EQ(0.0f, constant[Mode(4)]);
    EXPECT_EQ(kRangeError, FailureText([&] { (void)constant[static_cast<unsigned short>(4)]; }));
}

TEST(QVDensity, ModesZeroToThreeReadThatFilter)
{
    QVDensity density = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    const QVDensity& constant = density;
    EXPECT_EQ(1.0f, constant[CMetry::DensityFilterModeBlack]);
    EXPECT_EQ(2.0f, constant[CMetry::DensityFilterModeCyan]);
    EXPECT_EQ(3.0f, constant[CMetry::DensityFilterModeMagenta]);
    EXPECT_EQ(4.0f, constant[CMetry::DensityFilterModeYellow]);
    // The writable reading gives the same values.
    EXPECT_EQ(1.0f, density[CMetry::DensityFilterModeBlack]);
    EXPECT_EQ(2.0f, density[CMetry::DensityFilterModeCyan]);
    EXPECT_EQ(3.0f, density[CMetry::DensityFilterModeMagenta]);
    EXPECT_EQ(4.0f, density[CMetry::DensityFilterModeYellow]);
}

TEST(QVDensity, OtherModesAreIndicesAndRangeChecked)
{
    QVDensity density = Reading(1.0f, 2.0f, 3.0f, 4.0f);
    const QVDensity& constant = density;
    EXPECT_EQ(kRangeError, FailureText([&] { (void)constant[CMetry::DensityFilterModeUndefined]; }));
    EXPECT_EQ(kRangeError, FailureText([&] { (void)constant[Mode(6)]; }));
    EXPECT_EQ(kRangeError, FailureText([&] { (void)density[Mode(6)]; }));
}

TEST(QVDensity, AutomaticModeReadsTheStrongestFilterOfAColouredReading)
{
    // Strongest is cyan 1.2; colours sorted 1.2, 0.3, 0.2 give a ratio of
    // 0.2 / 1.2 = 0.17, not above 0.7: not neutral, so cyan is read.
    QVDensity density = Reading(0.1f, 1.2f, 0.3f, 0.2f);
    EXPECT_EQ(1.2f, std::as_const(density)[CMetry::DensityFilterModeAuto]);
    EXPECT_EQ(1.2f, density[CMetry::DensityFilterModeAuto]);
    // Yellow strongest: 0.9 against 0.1 and 0.2.
    EXPECT_EQ(0.9f, Reading(0.3f, 0.1f, 0.2f, 0.9f)[CMetry::DensityFilterModeAuto]);
    // Black itself may be the strongest of a coloured reading.
    EXPECT_EQ(1.5f, Reading(1.5f, 1.0f, 0.2f, 0.1f)[CMetry::DensityFilterModeAuto]);
}

TEST(QVDensity, AutomaticModeReadsBlackForANeutralReading)
{
    // Cyan 1.0 is the highest of the four, but the weakest colour 0.8 is
    // 0.8 of the strongest, above 0.7: a neutral patch, read through black.
    EXPECT_EQ(0.5f, Reading(0.5f, 1.0f, 0.9f, 0.8f)[CMetry::DensityFilterModeAuto]);
}

TEST(QVDensity, AutomaticModeReadsBlackWhenEveryDensityIsBelowTheSmallDensity)
{
    // The highest, 0.005 in yellow, is below 0.01.
    EXPECT_EQ(0.002f, Reading(0.002f, 0.001f, 0.0f, 0.005f)[CMetry::DensityFilterModeAuto]);
}

// ---------------------------------------------------------------- attributes

TEST(QVDensity, StandardCanBeSetAndRead)
{
    QVDensity density;
    density.SetDensityStd(CMetry::DensityStdDINNB);
    EXPECT_EQ(CMetry::DensityStdDINNB, density.GetDensityStd());
    density.SetDensityStd(CMetry::DensityStdUser);
    EXPECT_EQ(CMetry::DensityStdUser, density.GetDensityStd());
    EXPECT_FALSE(TestAccess::IsValid(density));
}

TEST(QVDensity, UserFilterCanBeSetAndRead)
{
    QVDensity density;
    const UserFilterPointer filter = NewUserFilter(2.5f);
    density.SetUserDefinedFilter(filter);
    EXPECT_TRUE(density.GetUserDefinedFilter() == filter);
    EXPECT_EQ(2.5f, (*density.GetUserDefinedFilter())[0][0]);
    EXPECT_EQ(4ul, density.GetUserDefinedFilter()->GetSize());
}

TEST(QVDensity, PhysicalConditionsCanBeSetAndRead)
{
    QVDensity density;
    density.SetPhysMeasCond(PolarizerConditions());
    EXPECT_TRUE(density.GetPhysMeasCond() == PolarizerConditions());
    EXPECT_FALSE(density.GetPhysMeasCond() == QVMeasureConditions());
    // A copy comes back: changing it leaves the reading alone.
    QVMeasureConditions read = density.GetPhysMeasCond();
    read.SetMeasureCondition(String("Physical.Filter"), String("UVCut"));
    EXPECT_EQ(std::string("Polarizer"),
              std::string(density.GetPhysMeasCond().GetMeasureCondition(String("Physical.Filter"))));
}

// ---------------------------------------------------------------- value string

TEST(QVDensity, ValueStringListsTheFourDensitiesAndTheStandard)
{
    const QVDensity density(1.5f, 0.25f, 2.0f, 0.125f, QVMeasureConditions(), CMetry::DensityStdDINNB,
                            UserFilterPointer());
    EXPECT_STREQ("Densities: 1.5, 0.25, 2, 0.125, Density Standart: Densitometer filter DINNB",
                 density.GetValueString().c_str());
}

TEST(QVDensity, ValueStringOfADefaultReading)
{
    EXPECT_STREQ("Densities: 0, 0, 0, 0, Density Standart: not defined", QVDensity().GetValueString().c_str());
}

TEST(QVDensity, ValueStringOfTheUserStandard)
{
    QVDensity density;
    density.SetDensityStd(CMetry::DensityStdUser);
    density[2] = -0.5f;
    EXPECT_STREQ("Densities: 0, 0, -0.5, 0, Density Standart: User defined density standard",
                 density.GetValueString().c_str());
}
