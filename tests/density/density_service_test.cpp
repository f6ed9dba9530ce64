// The density service: densities, filter names, dot gain and slur read under
// the standard, filter mode, white base and physical filter of a condition
// set, with the calculator's failures turned into ExceptionCMetry; and the
// front of the process-wide paper white, user-defined filters and
// calibration store.
//
// Expected numbers are worked out by hand in each test. Most of them use the
// narrow-band standard DINNB, whose colour filters are single points of
// weight 1: cyan at 620 nm (index 24), magenta at 530 nm (index 15) and
// yellow at 430 nm (index 5). The black filter is the visual response, which
// sums to 100 (99.99988584 as published) and gets two decades added.

#include "qvimanager/density/density_service.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/density/density_calculator.h"
#include "qvimanager/density/density_filter.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <initializer_list>
#include <string>
#include <typeinfo>

using CMetry::BaseCalculator;
using CMetry::DensityCalculator;
using CMetry::DensityFilter;
using CMetry::DensityService;
using CMetry::ExceptionCMetry;
using CMetry::QVDensityStdTYPE;
using CMetry::QVMeasureConditions;
using CMetry::QVPhysicalFilterTYPE;
using CMetry::QVSample;
using CMetry::QVSpectrum;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

using Calibration = DensityService::Calibration;

constexpr int kCyanIndex = 24;    // 620 nm
constexpr int kMagentaIndex = 15; // 530 nm
constexpr int kYellowIndex = 5;   // 430 nm

const char* const kMissingWhite = "Missing WhiteReference";
const char* const kDensityFailed = "Calculation of Density failed";
const char* const kDotGainFailed = "Calculation of dot gain failed";
const char* const kRangeError = "vector index >= vector size";
const char* const kCellError = "Density calibration: physical filter or density standard out of range";

// -log10(0.8): the density of the 0.8 background of the patches.
constexpr double kBackground = 0.09691001300805639;
// log10(8): a 0.1 patch on 0.8 paper.
constexpr double kLog8 = 0.9030899869919435;

std::string ServiceFailure(const std::function<void()>& call)
{
    return TestSupport::FailureText<ExceptionCMetry>(call);
}

// ---------------------------------------------------------------- spectra

QVSpectrum Flat(float value)
{
    float values[36];
    for (float& point : values) {
        point = value;
    }
    return QVSpectrum(values);
}

// `background` everywhere except one grid point.
QVSpectrum Patch(float background, int index, float value, const QVMeasureConditions& conditions = QVMeasureConditions())
{
    float values[36];
    for (float& point : values) {
        point = background;
    }
    values[index] = value;
    return QVSpectrum(values, conditions);
}

// 0.8 with 0.1 at the filter's point: that filter reads 1.0, the other two
// colours 0.0969.
QVSpectrum CyanPatch()
{
    return Patch(0.8f, kCyanIndex, 0.1f);
}
QVSpectrum MagentaPatch()
{
    return Patch(0.8f, kMagentaIndex, 0.1f);
}
QVSpectrum YellowPatch()
{
    return Patch(0.8f, kYellowIndex, 0.1f);
}

// ---------------------------------------------------------------- conditions

QVMeasureConditions Conditions(const char* whiteBase, const char* standard, const char* mode,
                               const char* physicalFilter = "No")
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.WhiteBase"), String(whiteBase));
    conditions.SetMeasureCondition(String("Colorimetric.DensityStandard"), String(standard));
    conditions.SetMeasureCondition(String("Colorimetric.DensityFilterMode"), String(mode));
    conditions.SetMeasureCondition(String("Physical.Filter"), String(physicalFilter));
    return conditions;
}

QVMeasureConditions Absolute(const char* mode, const char* standard = "DINNB")
{
    return Conditions("Absolute", standard, mode);
}

// ---------------------------------------------------------------- calibration

Calibration Four(float f0, float f1, float f2, float f3)
{
    Calibration values(new Utilities::Vector<float>(4));
    (*values)[0] = f0;
    (*values)[1] = f1;
    (*values)[2] = f2;
    (*values)[3] = f3;
    return values;
}

struct Cell {
    float slope[4];
    float offset[4];
};

Cell StoredCell(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE standard)
{
    Cell cell{};
    DensityCalculator::GetDensitySlope(physicalFilter, standard, cell.slope);
    DensityCalculator::GetDensityOffset(physicalFilter, standard, cell.offset);
    return cell;
}

::testing::AssertionResult CellIs(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE standard,
                                  std::initializer_list<float> slope, std::initializer_list<float> offset)
{
    const Cell cell = StoredCell(physicalFilter, standard);
    int f = 0;
    for (float value : slope) {
        if (cell.slope[f] != value) {
            return ::testing::AssertionFailure() << "slope " << f << " of cell (" << physicalFilter << ", "
                                                 << standard << ") is " << cell.slope[f] << ", not " << value;
        }
        ++f;
    }
    f = 0;
    for (float value : offset) {
        if (cell.offset[f] != value) {
            return ::testing::AssertionFailure() << "offset " << f << " of cell (" << physicalFilter << ", "
                                                 << standard << ") is " << cell.offset[f] << ", not " << value;
        }
        ++f;
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult CellIsNeutral(QVPhysicalFilterTYPE physicalFilter, QVDensityStdTYPE standard)
{
    return CellIs(physicalFilter, standard, {1.0f, 1.0f, 1.0f, 1.0f}, {0.0f, 0.0f, 0.0f, 0.0f});
}

// The calibration the tests write: a different slope and offset per filter.
Calibration TestSlope()
{
    return Four(0.5f, 2.0f, 3.0f, 4.0f);
}
Calibration TestOffset()
{
    return Four(0.0625f, 0.5f, 0.25f, 0.125f);
}
const std::initializer_list<float> kTestSlope = {0.5f, 2.0f, 3.0f, 4.0f};
const std::initializer_list<float> kTestOffset = {0.0625f, 0.5f, 0.25f, 0.125f};

QVDensityStdTYPE Standard(int standard)
{
    return static_cast<QVDensityStdTYPE>(standard);
}
QVPhysicalFilterTYPE Physical(int physicalFilter)
{
    return static_cast<QVPhysicalFilterTYPE>(physicalFilter);
}

// ---------------------------------------------------------------- process-wide state

void ResetSharedState()
{
    BaseCalculator::psPaperWhite = SmartPointer<QVSample>();
    DensityCalculator::InitializeDensityCalibration();
    DensityFilter::SetUserDensityStandardToDefault();
    // No standard selected, so the next selection of any standard is a new
    // one.
    DensityCalculator::GetActDensityStdFilter().SetDensityStandard(CMetry::DensityStdUndefined);
}

// Every test starts and ends without a paper white, with a neutral
// calibration store and the default user-defined filters.
class DensityServiceTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetSharedState();
    }
    void TearDown() override
    {
        ResetSharedState();
    }
};

// A paper white of 0.8 at every point.
class DensityServiceOnPaper : public DensityServiceTest {
protected:
    void SetUp() override
    {
        DensityServiceTest::SetUp();
        DensityService::SetPaperWhite(Flat(0.8f));
    }
};

} // namespace

// ---------------------------------------------------------------- GetDensity

TEST_F(DensityServiceTest, AbsoluteWhiteBaseNeedsNoPaperWhite)
{
    ASSERT_FALSE(BaseCalculator::psPaperWhite.IsValid());
    // Cyan reads the 0.1 at 620 nm: -log10(0.1) = 1.
    EXPECT_NEAR(1.0, DensityService::GetDensity(CyanPatch(), Absolute("Cyan")), 1e-6);
}

TEST_F(DensityServiceTest, PaperAndAutomaticWhiteBaseNeedAPaperWhite)
{
    EXPECT_EQ(kMissingWhite, ServiceFailure([] {
                  DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Cyan"));
              }));
    EXPECT_EQ(kMissingWhite, ServiceFailure([] {
                  DensityService::GetDensity(CyanPatch(), Conditions("Automatic", "DINNB", "Cyan"));
              }));
    // The default white base is "Automatic".
    EXPECT_EQ(kMissingWhite, ServiceFailure([] { DensityService::GetDensity(CyanPatch(), QVMeasureConditions()); }));
}

TEST_F(DensityServiceOnPaper, PaperWhiteBaseSubtractsThePaperDensity)
{
    // 1.0 - (-log10(0.8)) = log10(8) for the patch's own filter, 0 for the
    // others, which read the paper.
    EXPECT_NEAR(kLog8, DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Cyan")), 1e-6);
    EXPECT_NEAR(kLog8, DensityService::GetDensity(CyanPatch(), Conditions("Automatic", "DINNB", "Cyan")), 1e-6);
    EXPECT_NEAR(0.0, DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Magenta")), 1e-6);
    // And needs no paper white when absolute.
    EXPECT_NEAR(1.0, DensityService::GetDensity(CyanPatch(), Absolute("Cyan")), 1e-6);
}

TEST_F(DensityServiceTest, FixedModesReadThatFilter)
{
    // The patch at 620 nm: cyan 1.0, magenta and yellow -log10(0.8).
    EXPECT_NEAR(1.0, DensityService::GetDensity(CyanPatch(), Absolute("Cyan")), 1e-6);
    EXPECT_NEAR(kBackground, DensityService::GetDensity(CyanPatch(), Absolute("Magenta")), 1e-6);
    EXPECT_NEAR(kBackground, DensityService::GetDensity(CyanPatch(), Absolute("Yellow")), 1e-6);
    EXPECT_NEAR(1.0, DensityService::GetDensity(MagentaPatch(), Absolute("Magenta")), 1e-6);
    EXPECT_NEAR(1.0, DensityService::GetDensity(YellowPatch(), Absolute("Yellow")), 1e-6);
    // Black of a flat 0.1: 2 - log10(0.1 x 99.99988584) = 1.0000005.
    EXPECT_NEAR(1.0, DensityService::GetDensity(Flat(0.1f), Absolute("Black")), 1e-5);
    // A fixed mode reads its filter even where another is stronger.
    EXPECT_NEAR(kBackground, DensityService::GetDensity(MagentaPatch(), Absolute("Cyan")), 1e-6);
}

TEST_F(DensityServiceTest, AutomaticModeReadsTheStrongestColourOfAColouredPatch)
{
    // The patch filter reads 1.0, the other colours 0.097, so the ratio is
    // 0.097, far from neutral. Black sees the 0.1 only through the small
    // weight of the visual response at that point (about 5 of 100 at
    // 620 nm): 2 - log10(80 - 0.7 x 5.07) = 0.117, well below 1.
    EXPECT_NEAR(1.0, DensityService::GetDensity(CyanPatch(), Absolute("Auto")), 1e-6);
    EXPECT_NEAR(1.0, DensityService::GetDensity(MagentaPatch(), Absolute("Auto")), 1e-6);
    EXPECT_NEAR(1.0, DensityService::GetDensity(YellowPatch(), Absolute("Auto")), 1e-6);
}

TEST_F(DensityServiceTest, AutomaticModeReadsBlackForANeutralPatch)
{
    // 0.1 everywhere, 0.05 at 620 nm: cyan 1.301 is the strongest, but the
    // weakest colour, 1.0, is 0.77 of it: neutral, so black is read:
    // 2 - log10(0.1 x 99.99988584 - 0.05 x 5.072025) = 1.01116.
    const QVSpectrum grey = Patch(0.1f, kCyanIndex, 0.05f);
    EXPECT_NEAR(1.01116, DensityService::GetDensity(grey, Absolute("Auto")), 1e-4);
    EXPECT_NEAR(std::log10(20.0), DensityService::GetDensity(grey, Absolute("Cyan")), 1e-6);
}

TEST_F(DensityServiceTest, MaxModeSelectsTheFilterAutomatically)
{
    EXPECT_NEAR(1.0, DensityService::GetDensity(CyanPatch(), Absolute("Max")), 1e-6);
    EXPECT_NEAR(1.0, DensityService::GetDensity(MagentaPatch(), Absolute("Max")), 1e-6);
    EXPECT_NEAR(1.01116, DensityService::GetDensity(Patch(0.1f, kCyanIndex, 0.05f), Absolute("Max")), 1e-4);
    EXPECT_EQ(DensityService::GetDensity(YellowPatch(), Absolute("Auto")),
              DensityService::GetDensity(YellowPatch(), Absolute("Max")));
}

TEST_F(DensityServiceTest, ColourReadingOfExactlyTheNoLightDensityFails)
{
    // A zero sum is the no-light density 9.99 in every colour filter: a
    // successful reading, refused for its value.
    const QVSpectrum zeros = Flat(0.0f);
    for (const char* mode : {"Cyan", "Magenta", "Yellow"}) {
        EXPECT_EQ(kDensityFailed, ServiceFailure([&] { DensityService::GetDensity(zeros, Absolute(mode)); }))
            << mode;
    }
}

TEST_F(DensityServiceTest, BlackReadingOfAZeroSpectrumIsNotAFailure)
{
    // Black gets two decades on top: 9.99 + 2 = 11.99.
    const float expected = static_cast<float>(static_cast<double>(9.99f) + 2.0);
    const QVSpectrum zeros = Flat(0.0f);
    float density = 0.0f;
    EXPECT_EQ("no exception", ServiceFailure([&] { density = DensityService::GetDensity(zeros, Absolute("Black")); }));
    EXPECT_FLOAT_EQ(11.99f, density);
    EXPECT_EQ(expected, density);
    // Automatic selection takes black too: 11.99 is the highest of the four,
    // and the three colours are equal (neutral).
    EXPECT_EQ(expected, DensityService::GetDensity(zeros, Absolute("Auto")));
    EXPECT_EQ(expected, DensityService::GetDensity(zeros, Absolute("Max")));
}

TEST_F(DensityServiceTest, PaperWhiteThatCannotBaseMakesTheCalculationFail)
{
    // A paper white is held, but it is all zeros: it cannot base anything,
    // the calculation fails and reports the no-light density.
    DensityService::SetPaperWhite(Flat(0.0f));
    EXPECT_EQ(kDensityFailed, ServiceFailure([] {
                  DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Cyan"));
              }));
    EXPECT_EQ(kDensityFailed, ServiceFailure([] {
                  DensityService::GetDensity(CyanPatch(), Conditions("Automatic", "DINNB", "Black"));
              }));
}

TEST_F(DensityServiceTest, CalibrationAppliesToTheDensity)
{
    const float din = DensityService::GetDensity(CyanPatch(), Absolute("Cyan", "DIN"));
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    // Cyan: 1.0 x 2 + 0.5; magenta: 0.0969 x 3 + 0.25.
    EXPECT_NEAR(2.5, DensityService::GetDensity(CyanPatch(), Absolute("Cyan")), 1e-6);
    EXPECT_NEAR(kBackground * 3.0 + 0.25, DensityService::GetDensity(CyanPatch(), Absolute("Magenta")), 1e-6);
    // Another standard has its own, neutral cell.
    EXPECT_EQ(din, DensityService::GetDensity(CyanPatch(), Absolute("Cyan", "DIN")));
}

TEST_F(DensityServiceOnPaper, OffsetAppliesToAbsoluteDensitiesOnly)
{
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    // log10(8) x 2, without the offset 0.5.
    EXPECT_NEAR(2.0 * kLog8, DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Cyan")), 1e-6);
    EXPECT_NEAR(2.0 * kLog8, DensityService::GetDensity(CyanPatch(), Conditions("Automatic", "DINNB", "Cyan")),
                1e-6);
}

TEST_F(DensityServiceTest, CalibrationCellIsThatOfTheSpectrumsPhysicalFilter)
{
    // The cell of the polarizer; a spectrum measured without filter reads
    // the neutral cell, one measured with the polarizer reads this one.
    DensityService::SetDensityCalibration(Conditions("Absolute", "DINNB", "Cyan", "Polarizer"), TestSlope(),
                                          TestOffset());
    EXPECT_NEAR(1.0, DensityService::GetDensity(CyanPatch(), Absolute("Cyan")), 1e-6);
    const QVSpectrum polarized =
        Patch(0.8f, kCyanIndex, 0.1f, Conditions("Absolute", "DINNB", "Cyan", "Polarizer"));
    EXPECT_NEAR(2.5, DensityService::GetDensity(polarized, Absolute("Cyan")), 1e-6);
}

TEST_F(DensityServiceTest, CalibratedReadingOfExactlyTheNoLightDensityFails)
{
    // The value alone counts: slope 0 and offset 9.99 make any reading
    // 9.99 exactly, black included.
    DensityService::SetDensityCalibration(Absolute("Cyan"), Four(0.0f, 0.0f, 0.0f, 0.0f),
                                          Four(9.99f, 9.99f, 9.99f, 9.99f));
    EXPECT_EQ(kDensityFailed, ServiceFailure([] { DensityService::GetDensity(CyanPatch(), Absolute("Cyan")); }));
    EXPECT_EQ(kDensityFailed, ServiceFailure([] { DensityService::GetDensity(CyanPatch(), Absolute("Black")); }));
    // One step above 9.99 is an ordinary reading.
    const float above = std::nextafter(9.99f, 100.0f);
    DensityService::SetDensityCalibration(Absolute("Cyan"), Four(0.0f, 0.0f, 0.0f, 0.0f),
                                          Four(above, above, above, above));
    EXPECT_EQ(above, DensityService::GetDensity(CyanPatch(), Absolute("Cyan")));
}

// ---------------------------------------------------------------- GetDensityFilterName

TEST_F(DensityServiceTest, FilterNameOfAFixedModeIsThatFilter)
{
    EXPECT_EQ(std::string("Black"), std::string(DensityService::GetDensityFilterName(CyanPatch(), Absolute("Black"))));
    EXPECT_EQ(std::string("Cyan"), std::string(DensityService::GetDensityFilterName(YellowPatch(), Absolute("Cyan"))));
    EXPECT_EQ(std::string("Magenta"),
              std::string(DensityService::GetDensityFilterName(CyanPatch(), Absolute("Magenta"))));
    EXPECT_EQ(std::string("Yellow"),
              std::string(DensityService::GetDensityFilterName(CyanPatch(), Absolute("Yellow"))));
}

TEST_F(DensityServiceTest, FilterNameOfAutomaticSelectionIsTheSelectedFilter)
{
    for (const char* mode : {"Auto", "Max"}) {
        EXPECT_EQ(std::string("Cyan"), std::string(DensityService::GetDensityFilterName(CyanPatch(), Absolute(mode))))
            << mode;
        EXPECT_EQ(std::string("Magenta"),
                  std::string(DensityService::GetDensityFilterName(MagentaPatch(), Absolute(mode))))
            << mode;
        EXPECT_EQ(std::string("Yellow"),
                  std::string(DensityService::GetDensityFilterName(YellowPatch(), Absolute(mode))))
            << mode;
        // Neutral grey (see the automatic density above).
        EXPECT_EQ(std::string("Black"),
                  std::string(DensityService::GetDensityFilterName(Patch(0.1f, kCyanIndex, 0.05f), Absolute(mode))))
            << mode;
        // All zeros: black at 11.99 is the highest.
        EXPECT_EQ(std::string("Black"), std::string(DensityService::GetDensityFilterName(Flat(0.0f), Absolute(mode))))
            << mode;
    }
}

TEST_F(DensityServiceTest, FilterNameHasTheFailuresOfTheDensity)
{
    EXPECT_EQ(kMissingWhite, ServiceFailure([] {
                  DensityService::GetDensityFilterName(CyanPatch(), Conditions("Paper", "DINNB", "Cyan"));
              }));
    EXPECT_EQ(kMissingWhite, ServiceFailure([] {
                  DensityService::GetDensityFilterName(CyanPatch(), Conditions("Automatic", "DINNB", "Auto"));
              }));
    EXPECT_EQ(kDensityFailed,
              ServiceFailure([] { DensityService::GetDensityFilterName(Flat(0.0f), Absolute("Magenta")); }));
    DensityService::SetPaperWhite(Flat(0.0f));
    EXPECT_EQ(kDensityFailed, ServiceFailure([] {
                  DensityService::GetDensityFilterName(CyanPatch(), Conditions("Paper", "DINNB", "Auto"));
              }));
}

TEST_F(DensityServiceOnPaper, FilterNameOnPaper)
{
    // Based on the paper the patch reads log10(8) in its filter and 0 in
    // the other colours.
    EXPECT_EQ(std::string("Magenta"), std::string(DensityService::GetDensityFilterName(
                                          MagentaPatch(), Conditions("Paper", "DINNB", "Auto"))));
}

TEST_F(DensityServiceTest, AnUndefinedStandardHasNoCalibrationCell)
{
    // The reading is calibrated, and density standard "Undefined" addresses
    // no cell of the store: its range error passes through.
    const QVMeasureConditions undefined = Absolute("Cyan", "Undefined");
    EXPECT_EQ(kCellError, TestSupport::FailureText([&] { DensityService::GetDensity(CyanPatch(), undefined); }));
    EXPECT_EQ(kCellError,
              TestSupport::FailureText([&] { DensityService::GetDensityFilterName(CyanPatch(), undefined); }));
    // A missing paper white is found first.
    const QVMeasureConditions onPaper = Conditions("Paper", "Undefined", "Cyan");
    EXPECT_EQ(kMissingWhite, ServiceFailure([&] { DensityService::GetDensity(CyanPatch(), onPaper); }));
    EXPECT_EQ(kMissingWhite, ServiceFailure([&] { DensityService::GetDensityFilterName(CyanPatch(), onPaper); }));
    DensityService::SetPaperWhite(Flat(0.8f));
    EXPECT_EQ(kCellError, TestSupport::FailureText([&] { DensityService::GetDensity(CyanPatch(), onPaper); }));
    EXPECT_EQ(kCellError,
              TestSupport::FailureText([&] { DensityService::GetDensityFilterName(CyanPatch(), onPaper); }));
}

// ---------------------------------------------------------------- GetDotGain
//
// Paper white 0.8, DINNB, cyan. The solid holds 0.08 at 620 nm: relative to
// the paper 0.1, Ds = 1, so 1 - 10^-Ds = 0.9. A tint of 0.4 there is 0.5 of
// the paper: 1 - 10^-Dt = 0.5. The Murray-Davies area is 0.5 / 0.9 = 5/9.

namespace {

QVSpectrum Solid()
{
    return Patch(0.8f, kCyanIndex, 0.08f);
}
// Area 5/9.
QVSpectrum HalfTint()
{
    return Patch(0.8f, kCyanIndex, 0.4f);
}
// 0.25 of the paper: area 0.75 / 0.9 = 5/6.
QVSpectrum DarkTint()
{
    return Patch(0.8f, kCyanIndex, 0.2f);
}
// 0.75 of the paper: area 0.25 / 0.9 = 5/18.
QVSpectrum LightTint()
{
    return Patch(0.8f, kCyanIndex, 0.6f);
}

Utilities::Vector<QVSpectrum> Tints(std::initializer_list<QVSpectrum> spectra)
{
    Utilities::Vector<QVSpectrum> tints(spectra.size());
    unsigned long i = 0;
    for (const QVSpectrum& spectrum : spectra) {
        tints[i++] = spectrum;
    }
    return tints;
}

} // namespace

TEST_F(DensityServiceOnPaper, DotGainIsTheAreaInPercentMinusTheNominal)
{
    // 100 x 5/9 - 40 = 140/9 = 15.556. The tint comes first: the other way
    // round the area would be 9/5, a gain of 140.
    EXPECT_NEAR(140.0 / 9.0, DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Cyan"), 40.0f), 1e-4);
    EXPECT_NEAR(500.0 / 9.0, DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Cyan"), 0.0f), 1e-4);
    // 100 x 5/6 - 80 = 10/3.
    EXPECT_NEAR(10.0 / 3.0, DensityService::GetDotGain(DarkTint(), Solid(), Absolute("Cyan"), 80.0f), 1e-4);
    // The solid against itself covers everything: 100 - 100.
    EXPECT_NEAR(0.0, DensityService::GetDotGain(Solid(), Solid(), Absolute("Cyan"), 100.0f), 1e-4);
}

TEST_F(DensityServiceOnPaper, DotGainIsAlwaysRelativeToPaperWhite)
{
    // The white base of the conditions plays no part.
    EXPECT_NEAR(140.0 / 9.0,
                DensityService::GetDotGain(HalfTint(), Solid(), Conditions("Paper", "DINNB", "Cyan"), 40.0f), 1e-4);
    EXPECT_NEAR(140.0 / 9.0,
                DensityService::GetDotGain(HalfTint(), Solid(), Conditions("Automatic", "DINNB", "Cyan"), 40.0f),
                1e-4);
}

TEST_F(DensityServiceOnPaper, DotGainReadsTheFilterModeOfTheConditions)
{
    // Automatic selection picks cyan for both patches (the other colours
    // read the paper, 0); the maximum mode finds the deepest point at
    // 620 nm. Either way the area is 5/9.
    EXPECT_NEAR(140.0 / 9.0, DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Auto"), 40.0f), 1e-4);
    EXPECT_NEAR(140.0 / 9.0, DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Max"), 40.0f), 1e-4);
    // Through magenta both read the paper: Ds = 0, so 1 - 10^-Ds is below
    // the small density and the area is 0.
    EXPECT_NEAR(-40.0, DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Magenta"), 40.0f), 1e-4);
}

TEST_F(DensityServiceOnPaper, DotGainIgnoresAndRestoresTheCalibration)
{
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    EXPECT_NEAR(140.0 / 9.0, DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Cyan"), 40.0f), 1e-4);
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
}

TEST_F(DensityServiceTest, DotGainWithoutPaperWhiteFails)
{
    // The dot area needs the paper white, whatever the white base.
    EXPECT_EQ(kDotGainFailed, ServiceFailure([] {
                  DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Cyan"), 40.0f);
              }));
    EXPECT_EQ(kDotGainFailed, ServiceFailure([] {
                  DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Max"), 40.0f);
              }));
}

TEST_F(DensityServiceTest, FailedDotGainLeavesTheAddressedCellNeutral)
{
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    DensityService::SetDensityCalibration(Absolute("Cyan", "DIN"), TestSlope(), TestOffset());
    ASSERT_EQ(kDotGainFailed, ServiceFailure([] {
                  DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Cyan"), 40.0f);
              }));
    EXPECT_TRUE(CellIsNeutral(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB));
    // Cells the conditions do not address keep their values.
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDIN, kTestSlope, kTestOffset));
}

TEST_F(DensityServiceOnPaper, DotGainUnderAnUndefinedPhysicalFilterSpreadsRowZeroOverAllRows)
{
    // Row 0 and every other row get the test values, then the row of "No"
    // something else.
    DensityService::SetDensityCalibration(Conditions("Absolute", "DINNB", "Cyan", "Undefined"), TestSlope(),
                                          TestOffset());
    DensityService::SetDensityCalibration(Absolute("Cyan"), Four(7.0f, 7.0f, 7.0f, 7.0f), Calibration());
    ASSERT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, {7.0f, 7.0f, 7.0f, 7.0f},
                       {0.0f, 0.0f, 0.0f, 0.0f}));
    // Saved from row 0, neutral in all rows, restored into all rows.
    DensityService::GetDotGain(HalfTint(), Solid(), Conditions("Absolute", "DINNB", "Cyan", "Undefined"), 40.0f);
    for (int physical = 0; physical < DensityCalculator::PhysicalFilterCount; ++physical) {
        EXPECT_TRUE(CellIs(Physical(physical), CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
    }
}

TEST_F(DensityServiceOnPaper, DotGainUnderAnUndefinedStandardRaisesTheStoresRangeError)
{
    // The calibration of that cell cannot be saved: the store's range error
    // comes first, and no cell is touched.
    DensityService::SetDensityCalibration(Absolute("Cyan", "Undefined"), TestSlope(), TestOffset());
    EXPECT_EQ(kCellError, TestSupport::FailureText([] {
                  DensityService::GetDotGain(HalfTint(), Solid(), Absolute("Cyan", "Undefined"), 40.0f);
              }));
    for (int standard = 0; standard < DensityCalculator::DensityStandardCount; ++standard) {
        EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, Standard(standard), kTestSlope, kTestOffset)) << standard;
    }
}

// ---------------------------------------------------------------- GetSlur

TEST_F(DensityServiceTest, SlurOfNoTintOrOneTintIsZeroWithoutTouchingAnything)
{
    // No paper white, and a standard whose calibration cannot even be read:
    // neither matters, nothing is calculated.
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    const QVMeasureConditions unreadable = Absolute("Cyan", "Undefined");
    float slur = -1.0f;
    EXPECT_EQ("no exception", ServiceFailure([&] {
                  slur = DensityService::GetSlur(Utilities::Vector<QVSpectrum>(), Solid(), unreadable);
              }));
    EXPECT_EQ(0.0f, slur);
    slur = -1.0f;
    EXPECT_EQ("no exception", ServiceFailure([&] {
                  slur = DensityService::GetSlur(Tints({HalfTint()}), Solid(), unreadable);
              }));
    EXPECT_EQ(0.0f, slur);
    EXPECT_EQ(0.0f, DensityService::GetSlur(Tints({HalfTint()}), Solid(), Absolute("Cyan")));
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
}

TEST_F(DensityServiceOnPaper, SlurOfTwoTintsUnderAnUndefinedStandardRaisesTheStoresRangeError)
{
    DensityService::SetDensityCalibration(Absolute("Cyan", "Undefined"), TestSlope(), TestOffset());
    EXPECT_EQ(kCellError, TestSupport::FailureText([] {
                  DensityService::GetSlur(Tints({HalfTint(), DarkTint()}), Solid(), Absolute("Cyan", "Undefined"));
              }));
    for (int standard = 0; standard < DensityCalculator::DensityStandardCount; ++standard) {
        EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, Standard(standard), kTestSlope, kTestOffset)) << standard;
    }
}

TEST_F(DensityServiceOnPaper, SlurOfEqualAreasIsZero)
{
    EXPECT_EQ(0.0f, DensityService::GetSlur(Tints({HalfTint(), HalfTint()}), Solid(), Absolute("Cyan")));
    EXPECT_EQ(0.0f, DensityService::GetSlur(Tints({DarkTint(), DarkTint()}), Solid(), Absolute("Cyan")));
    // n x largest and the sum are both float: a + a + a rounds exactly as
    // 3 x a does, so three equal areas give exactly 0 as well.
    EXPECT_EQ(0.0f, DensityService::GetSlur(Tints({DarkTint(), DarkTint(), DarkTint()}), Solid(), Absolute("Cyan")));
}

TEST_F(DensityServiceOnPaper, SlurIsTheLargestAreaTimesTheCountMinusTheSumInPercent)
{
    // Areas 5/9, 5/6 (the largest, in the middle), 5/18:
    // (3 x 15/18 - (10 + 15 + 5)/18) x 100 = 15/18 x 100 = 83.333.
    EXPECT_NEAR(250.0 / 3.0,
                DensityService::GetSlur(Tints({HalfTint(), DarkTint(), LightTint()}), Solid(), Absolute("Cyan")),
                1e-3);
    // Areas 5/9 and 5/6: (2 x 15/18 - 25/18) x 100 = 5/18 x 100 = 27.778.
    EXPECT_NEAR(250.0 / 9.0, DensityService::GetSlur(Tints({HalfTint(), DarkTint()}), Solid(), Absolute("Cyan")),
                1e-3);
    // The order of the tints does not matter.
    EXPECT_NEAR(250.0 / 9.0, DensityService::GetSlur(Tints({DarkTint(), HalfTint()}), Solid(), Absolute("Cyan")),
                1e-3);
}

TEST_F(DensityServiceOnPaper, SlurIgnoresAndRestoresTheCalibration)
{
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    EXPECT_NEAR(250.0 / 9.0, DensityService::GetSlur(Tints({HalfTint(), DarkTint()}), Solid(), Absolute("Cyan")),
                1e-3);
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
}

TEST_F(DensityServiceTest, FailedSlurNamesTheHalftoneAndRestoresTheCalibration)
{
    // Without paper white the first tint already fails.
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    EXPECT_EQ("Calculation of slur failed at Halftone 0", ServiceFailure([] {
                  DensityService::GetSlur(Tints({HalfTint(), DarkTint(), LightTint()}), Solid(), Absolute("Cyan"));
              }));
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
    EXPECT_EQ("Calculation of slur failed at Halftone 0", ServiceFailure([] {
                  DensityService::GetSlur(Tints({HalfTint(), DarkTint()}), Solid(), Absolute("Max"));
              }));
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
}

// ---------------------------------------------------------------- SetPaperWhite

TEST_F(DensityServiceTest, SetPaperWhiteInstallsACopyOfTheSpectrum)
{
    QVSpectrum paper = Flat(0.8f);
    DensityService::SetPaperWhite(paper);
    ASSERT_TRUE(BaseCalculator::psPaperWhite.IsValid());
    EXPECT_EQ(1ul, BaseCalculator::psPaperWhite->GetItemCount());
    QVSpectrum held;
    ASSERT_TRUE(BaseCalculator::psPaperWhite->GetSpectrum(QVMeasureConditions(), held));
    EXPECT_TRUE(held == Flat(0.8f));
    // Changing the caller's spectrum afterwards changes nothing.
    paper = Flat(0.5f);
    ASSERT_TRUE(BaseCalculator::psPaperWhite->GetSpectrum(QVMeasureConditions(), held));
    EXPECT_TRUE(held == Flat(0.8f));
    // And the white reference is there now.
    EXPECT_NEAR(kLog8, DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Cyan")), 1e-6);
}

TEST_F(DensityServiceTest, SetPaperWhiteReplacesThePaperWhite)
{
    DensityService::SetPaperWhite(Flat(0.8f));
    const SmartPointer<QVSample> first = BaseCalculator::psPaperWhite;
    DensityService::SetPaperWhite(Flat(0.5f));
    // A new sample with the one new spectrum; the old one is left as it was.
    EXPECT_FALSE(BaseCalculator::psPaperWhite == first);
    EXPECT_EQ(1ul, BaseCalculator::psPaperWhite->GetItemCount());
    EXPECT_EQ(1ul, first->GetItemCount());
    QVSpectrum held;
    ASSERT_TRUE(BaseCalculator::psPaperWhite->GetSpectrum(QVMeasureConditions(), held));
    EXPECT_TRUE(held == Flat(0.5f));
    // 0.1 against 0.5: log10(5).
    EXPECT_NEAR(std::log10(5.0), DensityService::GetDensity(CyanPatch(), Conditions("Paper", "DINNB", "Cyan")), 1e-6);
}

// ---------------------------------------------------------------- user-defined filters

namespace {

// Filter f holds base + f + 0.01 x i at point i.
Utilities::Vector<QVSpectrum> Numbered(unsigned long count, float base = 0.0f)
{
    Utilities::Vector<QVSpectrum> filters(count);
    for (unsigned long f = 0; f < count; ++f) {
        float values[36];
        for (int i = 0; i < 36; ++i) {
            values[i] = base + static_cast<float>(f) + 0.01f * static_cast<float>(i);
        }
        filters[f] = QVSpectrum(values);
    }
    return filters;
}

::testing::AssertionResult StoreIsDefault()
{
    for (unsigned long f = 0; f < 4; ++f) {
        for (int i = 0; i < 36; ++i) {
            if (DensityFilter::GetUserDefinedFilter(f)[i] != 1.0f) {
                return ::testing::AssertionFailure() << "filter " << f << " point " << i << " is "
                                                     << DensityFilter::GetUserDefinedFilter(f)[i];
            }
        }
    }
    return ::testing::AssertionSuccess();
}

// User filter f holds the 36 values of `expected`, read both through the
// service and from the filter store.
::testing::AssertionResult UserFilterIs(unsigned long f, const QVSpectrum& expected)
{
    const Utilities::Vector<QVSpectrum> read = DensityService::GetUserdefinedFilter();
    if (!(read[f] == expected)) {
        return ::testing::AssertionFailure() << "GetUserdefinedFilter()[" << f << "] differs";
    }
    for (long i = 0; i < 36; ++i) {
        if (DensityFilter::GetUserDefinedFilter(f)[i] != expected[i]) {
            return ::testing::AssertionFailure() << "stored filter " << f << " point " << i << " is "
                                                 << DensityFilter::GetUserDefinedFilter(f)[i] << ", not "
                                                 << expected[i];
        }
    }
    return ::testing::AssertionSuccess();
}

// The class and text of what SetUserdefinedFilter raises, as
// "Class: text", or "no exception".
std::string SetUserFiltersFailure(const Utilities::Vector<QVSpectrum>& filters)
{
    try {
        DensityService::SetUserdefinedFilter(filters);
    } catch (const Utilities::Exception& failure) {
        const char* kind = typeid(failure) == typeid(Utilities::ExceptionOutOfBound) ? "ExceptionOutOfBound"
                                                                                    : "another exception";
        return std::string(kind) + ": " + std::string(failure.GetExceptionText());
    }
    return "no exception";
}

} // namespace

TEST_F(DensityServiceTest, UserFiltersStartAtAllOnes)
{
    const Utilities::Vector<QVSpectrum> filters = DensityService::GetUserdefinedFilter();
    ASSERT_EQ(4ul, filters.GetSize());
    for (unsigned long f = 0; f < 4; ++f) {
        for (long i = 0; i < 36; ++i) {
            EXPECT_EQ(1.0f, filters[f][i]) << f << " " << i;
        }
        EXPECT_TRUE(filters[f] == Flat(1.0f));
    }
    EXPECT_TRUE(StoreIsDefault());
}

TEST_F(DensityServiceTest, UserFiltersRoundTrip)
{
    const Utilities::Vector<QVSpectrum> written = Numbered(4);
    EXPECT_EQ("no exception", SetUserFiltersFailure(written));
    const Utilities::Vector<QVSpectrum> read = DensityService::GetUserdefinedFilter();
    ASSERT_EQ(4ul, read.GetSize());
    for (unsigned long f = 0; f < 4; ++f) {
        EXPECT_TRUE(UserFilterIs(f, written[f])) << f;
    }
}

TEST_F(DensityServiceTest, UserFiltersTakeTheFirstFourOfALongerVector)
{
    // Five entries: 0 to 3 are stored, the fifth is ignored.
    const Utilities::Vector<QVSpectrum> written = Numbered(5);
    EXPECT_EQ("no exception", SetUserFiltersFailure(written));
    for (unsigned long f = 0; f < 4; ++f) {
        EXPECT_TRUE(UserFilterIs(f, written[f])) << f;
        EXPECT_FALSE(UserFilterIs(f, written[4])) << f;
    }
}

TEST_F(DensityServiceTest, FewerThanFourUserFiltersStoreThoseGivenThenRaiseAtTheFirstMissingOne)
{
    // The store holds a pattern of its own first, so that a filter left
    // alone is told apart from one written.
    const Utilities::Vector<QVSpectrum> before = Numbered(4, 10.0f);
    for (unsigned long count : {0ul, 1ul, 2ul, 3ul}) {
        SCOPED_TRACE(count);
        ASSERT_EQ("no exception", SetUserFiltersFailure(before));
        const Utilities::Vector<QVSpectrum> given = Numbered(count);
        // The vector's own range error at index `count`, after filters 0 to
        // count - 1 were stored.
        EXPECT_EQ("ExceptionOutOfBound: vector index >= vector size", SetUserFiltersFailure(given));
        for (unsigned long f = 0; f < 4; ++f) {
            if (f < count) {
                EXPECT_TRUE(UserFilterIs(f, given[f])) << f;
            } else {
                EXPECT_TRUE(UserFilterIs(f, before[f])) << f;
            }
        }
    }
}

TEST_F(DensityServiceTest, AnEmptyVectorOfUserFiltersLeavesTheDefaultStore)
{
    EXPECT_EQ(kRangeError, TestSupport::FailureText([] { DensityService::SetUserdefinedFilter(Numbered(0)); }));
    EXPECT_TRUE(StoreIsDefault());
}

TEST_F(DensityServiceTest, NewUserFiltersTakeEffectWhenTheUserStandardIsSelectedAnew)
{
    // A flat 0.01 through the default filters of 36 ones: cyan sums to 0.36,
    // -log10(0.36) = 0.44370; black gets two decades more.
    const QVSpectrum flat = Flat(0.01f);
    const QVMeasureConditions user = Absolute("Cyan", "User");
    EXPECT_NEAR(0.4436975, DensityService::GetDensity(flat, user), 1e-6);
    EXPECT_NEAR(2.4436975, DensityService::GetDensity(flat, Absolute("Black", "User")), 1e-6);

    // The new cyan filter is the single point 620 nm with weight 1.
    Utilities::Vector<QVSpectrum> filters = DensityService::GetUserdefinedFilter();
    filters[CMetry::DensFilterCyan] = Patch(0.0f, kCyanIndex, 1.0f);
    DensityService::SetUserdefinedFilter(filters);

    // The user standard is still the one in use: the old filters stay.
    EXPECT_NEAR(0.4436975, DensityService::GetDensity(flat, user), 1e-6);
    // Another standard in between, then the user standard anew:
    // -log10(0.01) = 2.
    DensityService::GetDensity(flat, Absolute("Cyan", "DIN"));
    EXPECT_NEAR(2.0, DensityService::GetDensity(flat, user), 1e-6);
    // The other filters are unchanged.
    EXPECT_NEAR(2.4436975, DensityService::GetDensity(flat, Absolute("Black", "User")), 1e-6);
}

// ---------------------------------------------------------------- calibration store

TEST_F(DensityServiceTest, CalibrationStartsNeutral)
{
    Calibration slope;
    Calibration offset;
    DensityService::GetDensityCalibration(Absolute("Cyan"), slope, offset);
    ASSERT_TRUE(slope.IsValid());
    ASSERT_TRUE(offset.IsValid());
    ASSERT_EQ(4ul, slope->GetSize());
    ASSERT_EQ(4ul, offset->GetSize());
    for (unsigned long f = 0; f < 4; ++f) {
        EXPECT_EQ(1.0f, (*slope)[f]);
        EXPECT_EQ(0.0f, (*offset)[f]);
    }
}

TEST_F(DensityServiceTest, CalibrationOfOneCellRoundTrips)
{
    DensityService::SetDensityCalibration(Conditions("Absolute", "ANSIA", "Cyan", "UVCut"), TestSlope(),
                                          TestOffset());
    Calibration slope;
    Calibration offset;
    DensityService::GetDensityCalibration(Conditions("Paper", "ANSIA", "Auto", "UVCut"), slope, offset);
    for (unsigned long f = 0; f < 4; ++f) {
        EXPECT_EQ((*TestSlope())[f], (*slope)[f]) << f;
        EXPECT_EQ((*TestOffset())[f], (*offset)[f]) << f;
    }
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterUVCut, CMetry::DensityStdANSIA, kTestSlope, kTestOffset));
    // Only that cell.
    for (int physical = 0; physical < DensityCalculator::PhysicalFilterCount; ++physical) {
        for (int standard = 0; standard < DensityCalculator::DensityStandardCount; ++standard) {
            if (physical != CMetry::PhysicalFilterUVCut || standard != CMetry::DensityStdANSIA) {
                EXPECT_TRUE(CellIsNeutral(Physical(physical), Standard(standard)));
            }
        }
    }
}

TEST_F(DensityServiceTest, EmptyCalibrationPointersMeanNeutralValues)
{
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    DensityService::SetDensityCalibration(Absolute("Cyan"), Calibration(), Calibration());
    EXPECT_TRUE(CellIsNeutral(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB));
    // Each pointer on its own.
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), Calibration());
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, {0.0f, 0.0f, 0.0f, 0.0f}));
    DensityService::SetDensityCalibration(Absolute("Cyan"), Calibration(), TestOffset());
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, {1.0f, 1.0f, 1.0f, 1.0f}, kTestOffset));
}

TEST_F(DensityServiceTest, UndefinedPhysicalFilterWritesAllThirteenRows)
{
    DensityService::SetDensityCalibration(Conditions("Absolute", "SPI", "Cyan", "Undefined"), TestSlope(),
                                          TestOffset());
    for (int physical = 0; physical < 13; ++physical) {
        EXPECT_TRUE(CellIs(Physical(physical), CMetry::DensityStdSPI, kTestSlope, kTestOffset)) << physical;
        // Of that standard only.
        EXPECT_TRUE(CellIsNeutral(Physical(physical), CMetry::DensityStdDIN)) << physical;
        EXPECT_TRUE(CellIsNeutral(Physical(physical), CMetry::DensityStdUser)) << physical;
    }
}

TEST_F(DensityServiceTest, UndefinedDensityStandardWritesAllSixStandards)
{
    DensityService::SetDensityCalibration(Conditions("Absolute", "Undefined", "Cyan", "CalibrationCheck"),
                                          TestSlope(), TestOffset());
    for (int standard = 0; standard < 6; ++standard) {
        EXPECT_TRUE(CellIs(CMetry::PhysicalFilterCalibrationCheck, Standard(standard), kTestSlope, kTestOffset))
            << standard;
        // Of that physical filter only.
        EXPECT_TRUE(CellIsNeutral(CMetry::PhysicalFilterNo, Standard(standard))) << standard;
        EXPECT_TRUE(CellIsNeutral(CMetry::PhysicalFilterUndefined, Standard(standard))) << standard;
    }
}

TEST_F(DensityServiceTest, BothUndefinedWriteTheWholeStore)
{
    DensityService::SetDensityCalibration(Conditions("Absolute", "Undefined", "Cyan", "Undefined"), TestSlope(),
                                          TestOffset());
    for (int physical = 0; physical < 13; ++physical) {
        for (int standard = 0; standard < 6; ++standard) {
            EXPECT_TRUE(CellIs(Physical(physical), Standard(standard), kTestSlope, kTestOffset));
        }
    }
}

TEST_F(DensityServiceTest, GetDensityCalibrationReplacesBothPointersWithNewVectors)
{
    DensityService::SetDensityCalibration(Absolute("Cyan"), TestSlope(), TestOffset());
    const Calibration oldSlope = Four(9.0f, 9.0f, 9.0f, 9.0f);
    const Calibration oldOffset = Four(8.0f, 8.0f, 8.0f, 8.0f);
    Calibration slope = oldSlope;
    Calibration offset = oldOffset;
    DensityService::GetDensityCalibration(Absolute("Cyan"), slope, offset);
    EXPECT_FALSE(slope == oldSlope);
    EXPECT_FALSE(offset == oldOffset);
    EXPECT_EQ(9.0f, (*oldSlope)[0]);
    EXPECT_EQ(8.0f, (*oldOffset)[3]);
    EXPECT_EQ(2.0f, (*slope)[1]);
    EXPECT_EQ(0.125f, (*offset)[3]);
    // The vectors are copies: changing them leaves the store alone.
    (*slope)[1] = 42.0f;
    EXPECT_TRUE(CellIs(CMetry::PhysicalFilterNo, CMetry::DensityStdDINNB, kTestSlope, kTestOffset));
}

TEST_F(DensityServiceTest, GetDensityCalibrationHasNoWildcards)
{
    // An undefined physical filter reads the row of code 0 itself.
    float rowZeroSlope[4] = {3.0f, 3.0f, 3.0f, 3.0f};
    float rowZeroOffset[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    DensityCalculator::SetDensitySlope(CMetry::PhysicalFilterUndefined, CMetry::DensityStdDIN, rowZeroSlope);
    DensityCalculator::SetDensityOffset(CMetry::PhysicalFilterUndefined, CMetry::DensityStdDIN, rowZeroOffset);
    Calibration slope;
    Calibration offset;
    DensityService::GetDensityCalibration(Conditions("Absolute", "DIN", "Cyan", "Undefined"), slope, offset);
    EXPECT_EQ(3.0f, (*slope)[0]);
    EXPECT_EQ(0.5f, (*offset)[2]);
    // An undefined density standard addresses no cell: the store's range
    // error, and both pointers stay as they were.
    const Utilities::Vector<float>* slopeBefore = &*slope;
    const Utilities::Vector<float>* offsetBefore = &*offset;
    EXPECT_EQ(kCellError, TestSupport::FailureText([&] {
                  DensityService::GetDensityCalibration(Absolute("Cyan", "Undefined"), slope, offset);
              }));
    EXPECT_EQ(slopeBefore, &*slope);
    EXPECT_EQ(offsetBefore, &*offset);
    EXPECT_EQ(3.0f, (*slope)[0]);
    EXPECT_EQ(0.5f, (*offset)[2]);
    Calibration empty;
    EXPECT_EQ(kCellError, TestSupport::FailureText([&] {
                  DensityService::GetDensityCalibration(Absolute("Cyan", "Undefined"), empty, empty);
              }));
    EXPECT_FALSE(empty.IsValid());
}

TEST(DensityStaticClasses, ValueStringsAreEmpty)
{
    EXPECT_TRUE(CMetry::TestAccess::DensityServiceValueString() == Diagnostics::String(""));
    EXPECT_TRUE(CMetry::TestAccess::DensityCalculatorValueString() == Diagnostics::String(""));
}
