// Spectrum reconstruction: a greedy coordinate search from a flat 0.5. Each
// round moves the one point whose impulse response (its XYZ) points most
// nearly along the remaining XYZ difference, by the projection of that
// difference on it, and keeps the value in 0 to 1. The search succeeds when
// the squared XYZ difference is below 0.001 and the Lab difference below the
// tolerance; it fails when a round gains less than 1e-15, which overrules a
// success in the same round, or after more than maxRounds rounds. The
// spectrum built so far is written either way.
//
// Besides the behaviours one by one, the search is rerun here step by step
// (ReferenceSearch below, on the library's own XYZ evaluation and vector
// operations, in the same float and double steps) and the spectra are
// compared exactly: a change of the point chosen, of the step or of the stop
// rule shows as a different spectrum.

#include "qvimanager/cmetry/lab_to_spectrum.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/linalg.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/weightfactors.h"

#include "tests/cmetry/test_access.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

using CMetry::CMetryCalculator;
using CMetry::Lab2Spec;
using CMetry::LinAlg;
using CMetry::QVColorVector;
using CMetry::QVLab;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using CMetry::Weightfactors;
using Utilities::String;

namespace {

using Values = std::array<float, 36>;

constexpr double kTolerance = 0.1;
constexpr int kRounds = 1000;

void Set(QVMeasureConditions& conditions, const char* key, const char* value)
{
    conditions.SetMeasureCondition(String(key), String(value));
}

std::string Condition(const QVMeasureConditions& conditions, const char* key)
{
    return conditions.GetMeasureCondition(String(key));
}

QVMeasureConditions Conditions(const char* illumination = "D65", const char* observer = "TwoDegree")
{
    QVMeasureConditions conditions;
    Set(conditions, "Colorimetric.Illumination", illumination);
    Set(conditions, "Colorimetric.Observer", observer);
    Set(conditions, "Colorimetric.WhiteBase", "Absolute");
    Set(conditions, "ColorSpaceDescription.Type", "CIELab");
    return conditions;
}

QVColorVector Lab(float l, float a, float b, const QVMeasureConditions& conditions = Conditions())
{
    return QVColorVector(l, a, b, conditions);
}

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

Values ValuesOf(const QVSpectrum& spectrum)
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = spectrum[static_cast<long>(i)];
    }
    return values;
}

int CountEqual(const QVSpectrum& spectrum, float value)
{
    int count = 0;
    for (long i = 0; i < 36; ++i) {
        count += spectrum[i] == value ? 1 : 0;
    }
    return count;
}

int CountDifferentFrom(const QVSpectrum& spectrum, float value)
{
    return 36 - CountEqual(spectrum, value);
}

void ExpectWithinZeroAndOne(const QVSpectrum& spectrum)
{
    for (long i = 0; i < 36; ++i) {
        EXPECT_GE(spectrum[i], 0.0f) << "point " << i;
        EXPECT_LE(spectrum[i], 1.0f) << "point " << i;
    }
}

QVColorVector LabOf(const QVSpectrum& spectrum, const QVMeasureConditions& conditions)
{
    QVColorVector lab;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab));
    return lab;
}

QVLab AsLab(const QVColorVector& vector)
{
    QVLab lab;
    lab = vector;
    return lab;
}

// A spectrum the search must overwrite.
QVSpectrum Sentinel()
{
    QVMeasureConditions other = Conditions("A", "TenDegree");
    Set(other, "Physical.Filter", "UVCut");
    return Spectrum(Flat(0.25f), other);
}

struct Outcome {
    bool reached = false;
    int rounds = 0;
    Values values{};
};

std::array<float, 3> TristimulusOf(const float (&values)[36], const QVMeasureConditions& conditions)
{
    QVColorVector xyz;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(QVSpectrum(values, conditions), conditions, xyz));
    return {xyz[0], xyz[1], xyz[2]};
}

// The search, step by step, for comparison. `clampTarget` false leaves a
// negative target component as it is.
Outcome ReferenceSearch(const QVColorVector& lab, double tolerance, bool useDeltaE94, int maxRounds,
                        bool clampTarget = true)
{
    const QVMeasureConditions conditions(lab.GetMeasureConditions());
    float response[36][3];
    float norm[36];
    for (int i = 0; i < 36; ++i) {
        float impulse[36] = {};
        impulse[i] = 1.0f;
        const std::array<float, 3> xyz = TristimulusOf(impulse, conditions);
        for (int axis = 0; axis < 3; ++axis) {
            response[i][axis] = xyz[static_cast<std::size_t>(axis)];
        }
        norm[i] = LinAlg::BetragV(response[i], 3);
    }
    const QVLab wanted = AsLab(lab);
    QVColorVector targetVector;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(wanted, targetVector));
    float target[3] = {targetVector[0], targetVector[1], targetVector[2]};
    float s[36];
    for (float& value : s) {
        value = 0.5f;
    }
    std::array<float, 3> current = TristimulusOf(s, conditions);
    float diff[3];
    for (int axis = 0; axis < 3; ++axis) {
        if (clampTarget && target[axis] < 0.0f) {
            target[axis] = 0.0f;
        }
        diff[axis] = target[axis] - current[static_cast<std::size_t>(axis)];
    }
    Outcome outcome;
    double dist = 1e+38;
    for (;;) {
        ++outcome.rounds;
        double best = 1e+38;
        int bestPoint = 36;
        double bestCosine = 0.0;
        const double length = LinAlg::BetragV(diff, 3);
        for (int i = 0; i < 36; ++i) {
            const float dot = LinAlg::DotProd(response[i], diff, 3);
            if (dot >= 0.0f ? !(s[i] < 1.0f) : !(s[i] > 0.0f)) {
                continue;
            }
            const double denominator = norm[i] * length;
            double cosine = denominator > 0.0 ? dot / denominator : 0.0;
            cosine = cosine < -1.0 ? -1.0 : (cosine > 1.0 ? 1.0 : cosine);
            const double angle = std::acos(std::fabs(cosine));
            if (angle < best) {
                best = angle;
                bestPoint = i;
                bestCosine = cosine;
            }
        }
        if (bestPoint < 36 && norm[bestPoint] > 0.0f) {
            float moved = static_cast<float>(s[bestPoint] + bestCosine * length / norm[bestPoint]);
            moved = moved < 0.0f ? 0.0f : (moved > 1.0f ? 1.0f : moved);
            s[bestPoint] = moved;
        }
        current = TristimulusOf(s, conditions);
        for (int axis = 0; axis < 3; ++axis) {
            diff[axis] = target[axis] - current[static_cast<std::size_t>(axis)];
        }
        const double previous = dist;
        dist = LinAlg::DotProd(diff, diff, 3);
        bool reached = false;
        if (dist < 0.001) {
            QVColorVector found;
            EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(
                QVColorVector(current[0], current[1], current[2], conditions), found));
            const float difference = useDeltaE94
                                         ? CMetryCalculator::GetDeltaE_94(AsLab(found), wanted, 1.0f, 1.0f, 1.0f)
                                         : CMetryCalculator::GetDeltaE_CIELAB(AsLab(found), wanted);
            reached = difference < tolerance;
        }
        if (previous - dist < 1e-15 || outcome.rounds > maxRounds) {
            outcome.reached = false;
            break;
        }
        if (reached) {
            outcome.reached = true;
            break;
        }
    }
    for (std::size_t i = 0; i < 36; ++i) {
        outcome.values[i] = s[i];
    }
    return outcome;
}

struct SearchRun {
    bool reached = false;
    int rounds = 0;
    QVSpectrum spectrum;
};

SearchRun Search(const QVColorVector& lab, double tolerance = kTolerance, bool useDeltaE94 = false,
           int maxRounds = kRounds)
{
    Lab2Spec search;
    SearchRun run;
    run.spectrum = Sentinel();
    run.reached = search.GetSpectrum(lab, run.spectrum, tolerance, useDeltaE94, maxRounds);
    run.rounds = TestAccess::Rounds(search);
    return run;
}

class Lab2SpecTest : public ::testing::Test {};

} // namespace

// ================================================================ the flat start

TEST_F(Lab2SpecTest, LabOfTheFlatHalfIsReachedInTheFirstRoundWithTheSpectrumUnchanged)
{
    const QVColorVector lab = LabOf(Spectrum(Flat(0.5f)), Conditions());
    const SearchRun run = Search(lab);
    EXPECT_TRUE(run.reached);
    EXPECT_EQ(1, run.rounds);
    EXPECT_EQ(36, CountEqual(run.spectrum, 0.5f));
}

TEST_F(Lab2SpecTest, LabOfTheFlatHalfIsReachedUnderOtherConditionsToo)
{
    const QVMeasureConditions conditions = Conditions("D50", "TenDegree");
    const QVColorVector lab = LabOf(Spectrum(Flat(0.5f), conditions), conditions);
    const SearchRun run = Search(lab, kTolerance, true, kRounds);
    EXPECT_TRUE(run.reached);
    EXPECT_EQ(1, run.rounds);
    EXPECT_EQ(36, CountEqual(run.spectrum, 0.5f));
}

// ================================================================ the white point

TEST_F(Lab2SpecTest, WhiteLabDrivesThePointsToOne)
{
    // The target is the white point, which only all points at 1 reach
    // exactly; the search stops as soon as it is within the tolerance.
    const SearchRun run = Search(Lab(100.0f, 0.0f, 0.0f));
    EXPECT_TRUE(run.reached);
    ExpectWithinZeroAndOne(run.spectrum);
    EXPECT_GE(CountEqual(run.spectrum, 1.0f), 34);
    float sum = 0.0f;
    for (long i = 0; i < 36; ++i) {
        EXPECT_GE(run.spectrum[i], 0.5f) << i;
        sum += run.spectrum[i];
    }
    EXPECT_GT(sum / 36.0f, 0.95f);
    // One point moves per round, starting from 0.5.
    EXPECT_GE(run.rounds, CountDifferentFrom(run.spectrum, 0.5f));
    const QVColorVector found = LabOf(run.spectrum, Conditions());
    EXPECT_LT(CMetryCalculator::GetDeltaE_CIELAB(AsLab(found), AsLab(Lab(100.0f, 0.0f, 0.0f))), 0.1f);
}

// ================================================================ out of reach

TEST_F(Lab2SpecTest, VeryHighChromaFailsWithValuesClampedAtZeroAndOne)
{
    const QVColorVector lab = Lab(50.0f, 150.0f, 150.0f);
    const SearchRun run = Search(lab);
    EXPECT_FALSE(run.reached);
    ExpectWithinZeroAndOne(run.spectrum);
    EXPECT_GT(CountEqual(run.spectrum, 0.0f), 0);
    EXPECT_GT(CountEqual(run.spectrum, 1.0f), 0);
    // The search stalled before the limit of rounds.
    EXPECT_LE(run.rounds, kRounds);
}

TEST_F(Lab2SpecTest, FailedSearchStillWritesTheSpectrumUnderTheVectorsConditions)
{
    QVMeasureConditions conditions = Conditions("D50", "TenDegree");
    Set(conditions, "Physical.Filter", "Polarizer");
    const SearchRun run = Search(Lab(50.0f, 150.0f, 150.0f, conditions));
    ASSERT_FALSE(run.reached);
    EXPECT_FALSE(run.spectrum == Sentinel());
    EXPECT_EQ(0, CountEqual(run.spectrum, 0.25f));
    EXPECT_TRUE(run.spectrum.GetMeasureConditions() == conditions);
    EXPECT_EQ("Polarizer", Condition(run.spectrum.GetMeasureConditions(), "Physical.Filter"));
}

TEST_F(Lab2SpecTest, OutOfReachColourIsStillApproachedInTheRightDirection)
{
    // Red and yellow at once: the short wavelengths go to 0, the long ones
    // to 1.
    const SearchRun run = Search(Lab(50.0f, 150.0f, 150.0f));
    EXPECT_EQ(0.0f, run.spectrum[8]);
    EXPECT_EQ(1.0f, run.spectrum[30]);
    const QVColorVector found = LabOf(run.spectrum, Conditions());
    EXPECT_GT(found[1], 30.0f);
    EXPECT_GT(found[2], 30.0f);
}

// ================================================================ the limit of rounds

TEST_F(Lab2SpecTest, ColourNeedingSeveralRoundsIsReachedWithEnoughRounds)
{
    const SearchRun run = Search(Lab(62.0f, 18.0f, 25.0f));
    EXPECT_TRUE(run.reached);
    EXPECT_GT(run.rounds, 4);
    const QVColorVector found = LabOf(run.spectrum, Conditions());
    EXPECT_LT(CMetryCalculator::GetDeltaE_CIELAB(AsLab(found), AsLab(Lab(62.0f, 18.0f, 25.0f))), 0.1f);
}

TEST_F(Lab2SpecTest, MaxRoundsZeroRunsOneRoundAndFails)
{
    const SearchRun run = Search(Lab(62.0f, 18.0f, 25.0f), kTolerance, false, 0);
    EXPECT_FALSE(run.reached);
    EXPECT_EQ(1, run.rounds);
    EXPECT_LE(CountDifferentFrom(run.spectrum, 0.5f), 1);
    // The one round did move a point, and the spectrum is written.
    EXPECT_EQ(1, CountDifferentFrom(run.spectrum, 0.5f));
    EXPECT_TRUE(run.spectrum.GetMeasureConditions() == Conditions());
}

TEST_F(Lab2SpecTest, MaxRoundsThreeRunsFourRoundsAndMovesAtMostFourPoints)
{
    const SearchRun run = Search(Lab(62.0f, 18.0f, 25.0f), kTolerance, false, 3);
    EXPECT_FALSE(run.reached);
    EXPECT_EQ(4, run.rounds);
    EXPECT_LE(CountDifferentFrom(run.spectrum, 0.5f), 4);
    EXPECT_GE(CountDifferentFrom(run.spectrum, 0.5f), 1);
}

TEST_F(Lab2SpecTest, NegativeMaxRoundsRunsOneRoundLikeZero)
{
    const SearchRun zero = Search(Lab(62.0f, 18.0f, 25.0f), kTolerance, false, 0);
    const SearchRun negative = Search(Lab(62.0f, 18.0f, 25.0f), kTolerance, false, -5);
    EXPECT_FALSE(negative.reached);
    EXPECT_EQ(1, negative.rounds);
    EXPECT_TRUE(zero.spectrum == negative.spectrum);
}

TEST_F(Lab2SpecTest, RoundLimitEndsASlowSearchAfterMaxRoundsPlusOne)
{
    // Reachable in CIE 1994 terms, but under CIELab the search crawls on
    // past a thousand rounds.
    const SearchRun run = Search(Lab(40.0f, -40.0f, 60.0f), kTolerance, false, kRounds);
    EXPECT_FALSE(run.reached);
    EXPECT_EQ(kRounds + 1, run.rounds);
    ExpectWithinZeroAndOne(run.spectrum);
}

TEST_F(Lab2SpecTest, FewerRoundsAreAPrefixOfTheSameSearch)
{
    // The search keeps nothing between calls, so a shorter run is the start
    // of a longer one: each point moved by the run of 3 rounds has moved to
    // the same value in the reference run of 3.
    const Outcome reference = ReferenceSearch(Lab(62.0f, 18.0f, 25.0f), kTolerance, false, 3);
    const SearchRun run = Search(Lab(62.0f, 18.0f, 25.0f), kTolerance, false, 3);
    EXPECT_EQ(reference.rounds, run.rounds);
    EXPECT_EQ(reference.values, ValuesOf(run.spectrum));
}

// ================================================================ the measure of the tolerance

TEST_F(Lab2SpecTest, BothDifferenceMeasuresReachAReachableColour)
{
    const QVColorVector target = Lab(50.0f, 40.0f, -20.0f);
    const SearchRun lab = Search(target, kTolerance, false, kRounds);
    const SearchRun cie94 = Search(target, kTolerance, true, kRounds);
    EXPECT_TRUE(lab.reached);
    EXPECT_TRUE(cie94.reached);
    const QVColorVector foundLab = LabOf(lab.spectrum, Conditions());
    const QVColorVector found94 = LabOf(cie94.spectrum, Conditions());
    EXPECT_LT(CMetryCalculator::GetDeltaE_CIELAB(AsLab(foundLab), AsLab(target)), 0.1f);
    EXPECT_LT(CMetryCalculator::GetDeltaE_94(AsLab(found94), AsLab(target), 1.0f, 1.0f, 1.0f), 0.1f);
}

TEST_F(Lab2SpecTest, CIE94MeasureStopsEarlierForASaturatedColour)
{
    // CIE 1994 weighs a chroma difference less, so it accepts a spectrum the
    // CIELab measure still rejects.
    const QVColorVector target = Lab(50.0f, 60.0f, 20.0f);
    const SearchRun lab = Search(target, kTolerance, false, kRounds);
    const SearchRun cie94 = Search(target, kTolerance, true, kRounds);
    ASSERT_TRUE(lab.reached);
    ASSERT_TRUE(cie94.reached);
    EXPECT_LT(cie94.rounds, lab.rounds);
    const QVColorVector found94 = LabOf(cie94.spectrum, Conditions());
    EXPECT_LT(CMetryCalculator::GetDeltaE_94(AsLab(found94), AsLab(target), 1.0f, 1.0f, 1.0f), 0.1f);
    EXPECT_GE(CMetryCalculator::GetDeltaE_CIELAB(AsLab(found94), AsLab(target)), 0.1f);
}

TEST_F(Lab2SpecTest, CIE94MeasureReachesWhatCIELabRunsOutOfRoundsFor)
{
    const QVColorVector target = Lab(40.0f, -40.0f, 60.0f);
    EXPECT_FALSE(Search(target, kTolerance, false, kRounds).reached);
    const SearchRun cie94 = Search(target, kTolerance, true, kRounds);
    EXPECT_TRUE(cie94.reached);
    EXPECT_LE(cie94.rounds, kRounds);
}

TEST_F(Lab2SpecTest, ZeroToleranceIsNeverReached)
{
    // "Below the tolerance" is strict: nothing is below 0, so the search
    // runs until a round gains nothing.
    const SearchRun run = Search(Lab(62.0f, 18.0f, 25.0f), 0.0, false, kRounds);
    EXPECT_FALSE(run.reached);
    EXPECT_GT(run.rounds, Search(Lab(62.0f, 18.0f, 25.0f)).rounds);
    EXPECT_LE(run.rounds, kRounds);
}

TEST_F(Lab2SpecTest, LargeToleranceStillNeedsTheXYZDifferenceSmall)
{
    // The tolerance is looked at only once the squared XYZ difference is
    // below 0.001, so a tolerance of 50 ends no earlier here.
    const SearchRun wide = Search(Lab(62.0f, 18.0f, 25.0f), 50.0, false, kRounds);
    const SearchRun normal = Search(Lab(62.0f, 18.0f, 25.0f));
    EXPECT_TRUE(wide.reached);
    EXPECT_GT(wide.rounds, 1);
    EXPECT_EQ(normal.rounds, wide.rounds);
    EXPECT_TRUE(normal.spectrum == wide.spectrum);
}

namespace {

// The Lab difference of a spectrum from the wanted Lab as the search measures
// it: the Lab of the spectrum's XYZ under the vector's conditions, first.
float FoundDifference(const QVSpectrum& spectrum, const QVColorVector& wanted, bool useDeltaE94)
{
    const QVMeasureConditions& conditions = wanted.GetMeasureConditions();
    QVColorVector xyz;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(spectrum, conditions, xyz));
    QVColorVector found;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab(QVColorVector(xyz[0], xyz[1], xyz[2], conditions), found));
    return useDeltaE94 ? CMetryCalculator::GetDeltaE_94(AsLab(found), AsLab(wanted), 1.0f, 1.0f, 1.0f)
                       : CMetryCalculator::GetDeltaE_CIELAB(AsLab(found), AsLab(wanted));
}

float SquaredXYZDifference(const QVSpectrum& spectrum, const QVColorVector& wanted)
{
    const QVMeasureConditions& conditions = wanted.GetMeasureConditions();
    QVColorVector xyz;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(spectrum, conditions, xyz));
    QVColorVector target;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(AsLab(wanted), target));
    float sum = 0.0f;
    for (short axis = 0; axis < 3; ++axis) {
        const float difference = target[axis] - xyz[axis];
        sum += difference * difference;
    }
    return sum;
}

} // namespace

TEST_F(Lab2SpecTest, ToleranceIsAStrictBound)
{
    const QVColorVector target = Lab(62.0f, 18.0f, 25.0f);
    const SearchRun normal = Search(target);
    ASSERT_TRUE(normal.reached);
    const float reachedDifference = FoundDifference(normal.spectrum, target, false);
    ASSERT_LT(reachedDifference, 0.1f);

    // A tolerance just above the difference of the last round ends in the
    // same round; a tolerance equal to it does not.
    const SearchRun above =
        Search(target, std::nextafter(static_cast<double>(reachedDifference), 1.0), false, kRounds);
    EXPECT_TRUE(above.reached);
    EXPECT_EQ(normal.rounds, above.rounds);
    const SearchRun equal = Search(target, static_cast<double>(reachedDifference), false, kRounds);
    EXPECT_GT(equal.rounds, normal.rounds);
}

TEST_F(Lab2SpecTest, ToleranceReachedInARoundWithoutGainCountsAsFailure)
{
    // With a tolerance this small the search goes on until a round gains
    // nothing; in that very round the colour is within the tolerance, and
    // still the search reports failure.
    const QVColorVector target = Lab(30.0f, -20.0f, -20.0f);
    const double tolerance = 1e-5;
    const SearchRun run = Search(target, tolerance, false, kRounds);
    EXPECT_FALSE(run.reached);
    EXPECT_LT(run.rounds, kRounds);
    EXPECT_LT(SquaredXYZDifference(run.spectrum, target), 0.001f);
    EXPECT_LT(FoundDifference(run.spectrum, target, false), tolerance);
    const Outcome expected = ReferenceSearch(target, tolerance, false, kRounds);
    EXPECT_EQ(expected.rounds, run.rounds);
    EXPECT_EQ(expected.values, ValuesOf(run.spectrum));
}

// ================================================================ conditions and shared state

TEST_F(Lab2SpecTest, SpectrumCarriesTheVectorsConditions)
{
    QVMeasureConditions conditions = Conditions("D50", "TenDegree");
    Set(conditions, "Physical.Filter", "Polarizer");
    Set(conditions, "ColorSpaceDescription.DeltaEFormula", "CMC");
    const SearchRun run = Search(Lab(62.0f, 18.0f, 25.0f, conditions));
    ASSERT_TRUE(run.reached);
    EXPECT_TRUE(run.spectrum.GetMeasureConditions() == conditions);
    EXPECT_EQ("D50", Condition(run.spectrum.GetMeasureConditions(), "Colorimetric.Illumination"));
    EXPECT_EQ("TenDegree", Condition(run.spectrum.GetMeasureConditions(), "Colorimetric.Observer"));
    EXPECT_EQ("Polarizer", Condition(run.spectrum.GetMeasureConditions(), "Physical.Filter"));
    EXPECT_EQ("CMC", Condition(run.spectrum.GetMeasureConditions(), "ColorSpaceDescription.DeltaEFormula"));
    // The colour is reached under those conditions.
    const QVColorVector found = LabOf(run.spectrum, conditions);
    EXPECT_LT(CMetryCalculator::GetDeltaE_CIELAB(AsLab(found), AsLab(Lab(62.0f, 18.0f, 25.0f, conditions))), 0.1f);
}

TEST_F(Lab2SpecTest, SearchLeavesTheSharedWeightFactorsSetForTheVectorsConditions)
{
    const QVMeasureConditions d50 = Conditions("D50", "TenDegree");
    const QVMeasureConditions d65 = Conditions("D65", "TwoDegree");
    const Weightfactors forD50(d50);
    const Weightfactors forD65(d65);
    ASSERT_NE(forD50.GetFilterSum(0), forD65.GetFilterSum(0));
    ASSERT_NE(forD50.GetFilterSum(2), forD65.GetFilterSum(2));

    // Set the shared factors for other conditions first.
    LabOf(Spectrum(Flat(0.5f), d65), d65);
    ASSERT_NE(nullptr, TestAccess::SharedWeightfactors());
    ASSERT_EQ(forD65.GetFilterSum(0), TestAccess::SharedWeightfactors()->GetFilterSum(0));

    Search(Lab(62.0f, 18.0f, 25.0f, d50));
    ASSERT_NE(nullptr, TestAccess::SharedWeightfactors());
    EXPECT_EQ(forD50.GetFilterSum(0), TestAccess::SharedWeightfactors()->GetFilterSum(0));
    EXPECT_EQ(forD50.GetFilterSum(2), TestAccess::SharedWeightfactors()->GetFilterSum(2));
}

TEST_F(Lab2SpecTest, FailedSearchAlsoLeavesTheSharedWeightFactorsSetForTheVectorsConditions)
{
    const QVMeasureConditions d50 = Conditions("D50", "TenDegree");
    const Weightfactors forD50(d50);
    LabOf(Spectrum(Flat(0.5f), Conditions("A")), Conditions("A"));
    ASSERT_NE(forD50.GetFilterSum(0), TestAccess::SharedWeightfactors()->GetFilterSum(0));
    ASSERT_FALSE(Search(Lab(50.0f, 150.0f, 150.0f, d50)).reached);
    EXPECT_EQ(forD50.GetFilterSum(0), TestAccess::SharedWeightfactors()->GetFilterSum(0));
}

TEST_F(Lab2SpecTest, ResultDependsOnTheVectorsIlluminantAndObserver)
{
    const SearchRun d65 = Search(Lab(62.0f, 18.0f, 25.0f, Conditions("D65", "TwoDegree")));
    const SearchRun d50 = Search(Lab(62.0f, 18.0f, 25.0f, Conditions("D50", "TenDegree")));
    ASSERT_TRUE(d65.reached);
    ASSERT_TRUE(d50.reached);
    EXPECT_NE(ValuesOf(d65.spectrum), ValuesOf(d50.spectrum));
}

// ================================================================ negative targets

TEST_F(Lab2SpecTest, NegativeTargetComponentCountsAsZero)
{
    const QVColorVector lab = Lab(5.0f, -80.0f, 0.0f);
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(AsLab(lab), xyz));
    ASSERT_LT(xyz[0], 0.0f);
    ASSERT_GT(xyz[1], 0.0f);
    ASSERT_GT(xyz[2], 0.0f);

    const SearchRun run = Search(lab);
    EXPECT_FALSE(run.reached);
    ExpectWithinZeroAndOne(run.spectrum);
    EXPECT_GT(CountEqual(run.spectrum, 0.0f), 0);

    const Outcome clamped = ReferenceSearch(lab, kTolerance, false, kRounds, true);
    const Outcome unclamped = ReferenceSearch(lab, kTolerance, false, kRounds, false);
    ASSERT_NE(clamped.values, unclamped.values);
    EXPECT_EQ(clamped.values, ValuesOf(run.spectrum));
    EXPECT_EQ(clamped.rounds, run.rounds);
    EXPECT_EQ(clamped.reached, run.reached);
}

TEST_F(Lab2SpecTest, NegativeTargetOfAnOutOfReachColourCountsAsZero)
{
    // The very saturated colour above has a negative Z as its target.
    const QVColorVector lab = Lab(50.0f, 150.0f, 150.0f);
    QVColorVector xyz;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(AsLab(lab), xyz));
    ASSERT_LT(xyz[2], 0.0f);
    const Outcome clamped = ReferenceSearch(lab, kTolerance, false, kRounds, true);
    const Outcome unclamped = ReferenceSearch(lab, kTolerance, false, kRounds, false);
    ASSERT_NE(clamped.values, unclamped.values);
    const SearchRun run = Search(lab);
    EXPECT_EQ(clamped.values, ValuesOf(run.spectrum));
    EXPECT_EQ(clamped.rounds, run.rounds);
}

// ================================================================ the steps of the search

TEST_F(Lab2SpecTest, EachRoundMovesTheBestAlignedPointByItsProjection)
{
    struct Case {
        float l;
        float a;
        float b;
        const char* illumination;
        const char* observer;
        bool useDeltaE94;
    };
    const Case cases[] = {
        {62.0f, 18.0f, 25.0f, "D65", "TwoDegree", false},  {62.0f, 18.0f, 25.0f, "D50", "TenDegree", false},
        {40.0f, 10.0f, -40.0f, "D65", "TwoDegree", false}, {50.0f, 60.0f, 20.0f, "D65", "TwoDegree", true},
        {100.0f, 0.0f, 0.0f, "D65", "TwoDegree", false},   {70.0f, -40.0f, -40.0f, "A", "TwoDegree", false},
        {20.0f, -60.0f, -10.0f, "D65", "TwoDegree", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.l) + " " + std::to_string(c.a) + " " + std::to_string(c.b) + " " +
                     c.illumination);
        const QVColorVector lab = Lab(c.l, c.a, c.b, Conditions(c.illumination, c.observer));
        const Outcome expected = ReferenceSearch(lab, kTolerance, c.useDeltaE94, kRounds);
        const SearchRun run = Search(lab, kTolerance, c.useDeltaE94, kRounds);
        EXPECT_EQ(expected.reached, run.reached);
        EXPECT_EQ(expected.rounds, run.rounds);
        EXPECT_EQ(expected.values, ValuesOf(run.spectrum));
    }
}

TEST_F(Lab2SpecTest, FirstRoundMovesTheOnePointMostAlongTheDifference)
{
    // Darker than the flat start and otherwise neutral: the first round
    // lowers one point.
    const QVColorVector lab = Lab(60.0f, 0.0f, 0.0f);
    const SearchRun run = Search(lab, kTolerance, false, 0);
    ASSERT_EQ(1, CountDifferentFrom(run.spectrum, 0.5f));
    for (long i = 0; i < 36; ++i) {
        if (run.spectrum[i] != 0.5f) {
            EXPECT_LT(run.spectrum[i], 0.5f) << i;
        }
    }
    EXPECT_EQ(ReferenceSearch(lab, kTolerance, false, 0).values, ValuesOf(run.spectrum));
}

// ================================================================ determinism

TEST_F(Lab2SpecTest, SameCallTwiceGivesIdenticalSpectra)
{
    Lab2Spec search;
    const QVColorVector lab = Lab(62.0f, 18.0f, 25.0f);
    QVSpectrum first;
    QVSpectrum second;
    const bool firstReached = search.GetSpectrum(lab, first, kTolerance, false, kRounds);
    const int firstRounds = TestAccess::Rounds(search);
    const bool secondReached = search.GetSpectrum(lab, second, kTolerance, false, kRounds);
    EXPECT_EQ(firstReached, secondReached);
    EXPECT_EQ(firstRounds, TestAccess::Rounds(search));
    EXPECT_TRUE(first == second);
    EXPECT_EQ(ValuesOf(first), ValuesOf(second));
}

TEST_F(Lab2SpecTest, SearchKeepsNothingBetweenCalls)
{
    Lab2Spec search;
    const QVColorVector lab = Lab(62.0f, 18.0f, 25.0f);
    QVSpectrum before;
    ASSERT_TRUE(search.GetSpectrum(lab, before, kTolerance, false, kRounds));
    const int rounds = TestAccess::Rounds(search);
    // Another colour under other conditions in between.
    QVSpectrum other;
    search.GetSpectrum(Lab(40.0f, 10.0f, -40.0f, Conditions("A", "TenDegree")), other, kTolerance, true, 7);
    EXPECT_EQ(8, TestAccess::Rounds(search));
    QVSpectrum after;
    ASSERT_TRUE(search.GetSpectrum(lab, after, kTolerance, false, kRounds));
    EXPECT_EQ(rounds, TestAccess::Rounds(search));
    EXPECT_TRUE(before == after);
    // A fresh search gives the same too.
    EXPECT_TRUE(Search(lab).spectrum == after);
}

TEST_F(Lab2SpecTest, TypeOfTheVectorIsNotLookedAt)
{
    // The components are taken for Lab whatever the vector's type says.
    QVMeasureConditions xyzTyped = Conditions();
    Set(xyzTyped, "ColorSpaceDescription.Type", "CIEXYZ");
    const SearchRun typedXYZ = Search(QVColorVector(62.0f, 18.0f, 25.0f, xyzTyped));
    const SearchRun typedLab = Search(Lab(62.0f, 18.0f, 25.0f));
    EXPECT_EQ(typedLab.reached, typedXYZ.reached);
    EXPECT_EQ(ValuesOf(typedLab.spectrum), ValuesOf(typedXYZ.spectrum));
    EXPECT_EQ("CIEXYZ", Condition(typedXYZ.spectrum.GetMeasureConditions(), "ColorSpaceDescription.Type"));
}

// ================================================================ value string

TEST_F(Lab2SpecTest, ValueStringIsEmpty)
{
    const Lab2Spec search;
    EXPECT_STREQ("", search.GetValueString().c_str());
}
