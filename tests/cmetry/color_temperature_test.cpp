// The correlated colour temperature: the Planckian radiator nearest to a
// spectrum in the u, v of 1960, found by golden section in reciprocal
// temperature between 200 K and 1000000 K and rounded to whole kelvin.
//
// The radiators use the rounded constants h = 6.6262e-34, k = 1.3806e-23 and
// c = 299790000; the expected radiator values are the same double
// expression, so they compare exactly.

#include "qvimanager/cmetry/color_temperature.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/tables/cie_tables.h"
#include "qvimanager/cmetry/weightfactors.h"

#include "tests/cmetry/sample_spectra.h"
#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

using CMetry::CMetryCalculator;
using CMetry::ColorTemperature;
using CMetry::QVColorVector;
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
using TestSpectra::Scaled;
using TestSpectra::PaperValues;


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

QVMeasureConditions Emission(const char* observer = "TwoDegree")
{
    return Conditions("Emission", observer);
}

std::string Condition(const QVMeasureConditions& conditions, const char* key)
{
    return conditions.GetMeasureCondition(String(key));
}

// ---------------------------------------------------------------- spectra

QVSpectrum Spectrum(const Values& values, const QVMeasureConditions& conditions)
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


// A 1 nm table from 300 nm sampled at 380, 390, ..., 730 nm.
Values Sampled(const float* table)
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = table[80 + 10 * i];
    }
    return values;
}

QVSpectrum D65AsEmission()
{
    return Spectrum(Sampled(CMetry::Tables::IlluminantD65), Emission());
}

QVSpectrum AAsEmission()
{
    return Spectrum(Sampled(CMetry::Tables::IlluminantA), Emission());
}

// Light only from 380 to 420 nm.
Values VeryBlue()
{
    Values values{};
    for (std::size_t i = 0; i < 5; ++i) {
        values[i] = 1.0f;
    }
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


// ---------------------------------------------------------------- Planck's law

constexpr double kPlanck = 6.6262e-34;
constexpr double kBoltzmann = 1.3806e-23;
constexpr double kSpeedOfLight = 299790000.0;

// The spectral radiance at index i of the grid, rounded to float.
float PlanckValue(float temperature, std::size_t index)
{
    const double c1 = 2.0 * kPlanck * kSpeedOfLight * kSpeedOfLight;
    const double c2 = kSpeedOfLight * kPlanck / kBoltzmann;
    const double wavelength = static_cast<double>(380 + 10 * static_cast<int>(index)) * 1e-9;
    return static_cast<float>(c1 / std::pow(wavelength, 5) /
                              (std::exp(c2 / (static_cast<double>(temperature) * wavelength)) - 1.0));
}

// ---------------------------------------------------------------- paper white

class PaperWhiteInstalled {
public:
    explicit PaperWhiteInstalled(const Values& values)
    {
        QVSample sample;
        sample.SetSpectrum(Spectrum(values, Conditions()));
        TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>(new QVSample(sample)));
    }
    PaperWhiteInstalled(const PaperWhiteInstalled&) = delete;
    PaperWhiteInstalled& operator=(const PaperWhiteInstalled&) = delete;
    ~PaperWhiteInstalled() { TestAccess::SetPaperWhitePointer(SmartPointer<QVSample>()); }
};


using ColorTemperaturePaper = TestSpectra::NoPaperWhite;

} // namespace

// ================================================================ standard illuminants

TEST(ColorTemperatureIlluminants, D65TableAsEmissionGives6508Kelvin)
{
    // Not the published 6504 K: the table enters only at the 36 points from
    // 380 to 730 nm, 10 nm apart, weighted by the bare observer; the
    // radiators use the rounded radiation constants; and the nearest point is
    // taken in the u, v of 1960 by the fourth power of the distance. The
    // search itself is exact to half a kelvin.
    ColorTemperature search;
    EXPECT_EQ(6508.0f, search.GetColorTemperature(D65AsEmission()));
}

TEST(ColorTemperatureIlluminants, IlluminantATableAsEmissionGives2856Kelvin)
{
    // A is itself a Planckian radiator (2856 K by its definition): sampling
    // and constants leave it where it is published.
    ColorTemperature search;
    EXPECT_EQ(2856.0f, search.GetColorTemperature(AAsEmission()));
}

TEST(ColorTemperatureIlluminants, TheD65SearchTakes15Rounds)
{
    // 15 rounds of two evaluations each after the first three.
    ColorTemperature search;
    search.GetColorTemperature(D65AsEmission());
    EXPECT_EQ(15, TestAccess::Rounds(search));
}

TEST(ColorTemperatureIlluminants, AFlatReflectanceUnderATakesTheTemperatureOfA)
{
    ColorTemperature search;
    EXPECT_EQ(2856.0f, search.GetColorTemperature(Spectrum(Flat(2.0f), Conditions("A"))));
}

TEST(ColorTemperatureIlluminants, AnEmissiveSpectrumIsReadWithoutIlluminant)
{
    // The same flat values are equal energy as emission (about 5456 K) and
    // D65 light as a reflectance under D65.
    ColorTemperature search;
    const float emissive = search.GetColorTemperature(Spectrum(Flat(2.0f), Emission()));
    const float reflective = search.GetColorTemperature(Spectrum(Flat(2.0f), Conditions("D65")));
    EXPECT_EQ(5456.0f, emissive);
    EXPECT_EQ(6502.0f, reflective);
}

// ================================================================ Planck radiators

TEST(ColorTemperaturePlanck, RadiatorsComeBackWithinOneKelvin)
{
    // The library gives each of them exactly; one kelvin is the promise.
    const float temperatures[] = {2000.0f, 3000.0f, 5000.0f, 10000.0f, 20000.0f};
    ColorTemperature search;
    for (float temperature : temperatures) {
        const float found = search.GetColorTemperature(search.GetPlanckRadiator(temperature, Emission()));
        EXPECT_NEAR(temperature, found, 1.0f) << temperature;
    }
}

namespace {

// Runs the search for the radiator of `temperature` in a fresh child process
// with a watchdog: a search still running after three seconds (an ordinary
// one takes well under a millisecond) ends the child with code 3. The child
// exits with 0 when the result is exactly `expected`.
void SearchEndsAt(float temperature, float expected)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::thread([] {
                std::this_thread::sleep_for(std::chrono::seconds(3));
                std::fputs("the search did not end", stderr);
                std::_Exit(3);
            }).detach();
            ColorTemperature search;
            const float found = search.GetColorTemperature(search.GetPlanckRadiator(temperature, Emission()));
            std::fprintf(stderr, "found %.1f K", static_cast<double>(found));
            std::_Exit(found == expected ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "found")
        << temperature << " K";
}

} // namespace

TEST(ColorTemperaturePlanck, HotRadiatorsEndTheSearch)
{
    // Above about 13700 K neighbouring radiators can have the same float
    // u, v, so their distances to the sample tie. A tie moves only the middle
    // point, never an end of the bracket; the middle point can then swing
    // between two values for ever with the bracket wider than 0.5 K. These
    // radiators meet that; the search ends at the repeated bracket with its
    // nearest point (see ABracketRepeatingItselfEndsTheSearch below).
    SearchEndsAt(20067.0f, 20067.0f);
    SearchEndsAt(67500.0f, 67500.0f);
    SearchEndsAt(101250.0f, 101251.0f);
    SearchEndsAt(341719.0f, 341724.0f);
}

TEST(ColorTemperaturePlanck, RadiatorsComeBackUnderTheTenDegreeObserverToo)
{
    const float temperatures[] = {3000.0f, 6500.0f};
    ColorTemperature search;
    for (float temperature : temperatures) {
        const float found =
            search.GetColorTemperature(search.GetPlanckRadiator(temperature, Emission("TenDegree")));
        EXPECT_NEAR(temperature, found, 1.0f) << temperature;
    }
}

TEST(ColorTemperaturePlanck, ARadiatorGivenReflectiveConditionsIsStillEmissive)
{
    // The radiator's own conditions say "Emission" whatever was passed.
    ColorTemperature search;
    EXPECT_NEAR(4000.0f, search.GetColorTemperature(search.GetPlanckRadiator(4000.0f, Conditions("A"))), 1.0f);
}

// ================================================================ result

namespace {

// How a search ended.
enum class End { Tolerance, RepeatedBracket, MaximumRounds };

// The search written out over the public radiator: the distance of
// GetPlanckRadiatorXYZ's u, v to the target's, then the golden section with
// the same bracket, stop rules and rounding. The library builds the
// radiators of one search more cheaply; this is what it must come to.
float ReferenceSearch(ColorTemperature& search, const QVSpectrum& spectrum, int& rounds, End& end)
{
    QVMeasureConditions xyzConditions(spectrum.GetMeasureConditions());
    Set(xyzConditions, "ColorSpaceDescription.Type", "CIEXYZ");
    QVColorVector target;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEXYZ(spectrum, xyzConditions, target));
    EXPECT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(target, target));
    QVMeasureConditions radiatorConditions(spectrum.GetMeasureConditions());
    Set(radiatorConditions, "Colorimetric.Illumination", "Emission");
    const auto distanceAt = [&](float temperature) {
        QVColorVector radiator = search.GetPlanckRadiatorXYZ(temperature, radiatorConditions);
        EXPECT_TRUE(CMetryCalculator::GetVector_CIEuvY1960(radiator, radiator));
        return search.WeightDistance(radiator, target);
    };
    const auto smallest = [](const float (&d)[3]) {
        if (d[0] < d[1]) {
            return d[0] < d[2] ? 0 : 2;
        }
        return d[1] < d[2] ? 1 : 2;
    };
    float T[3] = {200.0f, 0.0f, 1000000.0f};
    T[1] = 2.0f / (1.0f / T[0] + 1.0f / T[2]);
    float D[3] = {distanceAt(T[0]), distanceAt(T[1]), distanceAt(T[2])};
    const int first = smallest(D);
    if (first == 0) {
        T[2] = T[1];
        T[1] = T[0];
        D[2] = D[1];
        D[1] = D[0];
    } else if (first == 2) {
        T[0] = T[1];
        T[1] = T[2];
        D[0] = D[1];
        D[1] = D[2];
    }
    float before[2][3] = {{-1.0f, -1.0f, -1.0f}, {-1.0f, -1.0f, -1.0f}};
    rounds = 0;
    end = End::Tolerance;
    while (!(T[1] - T[0] <= 0.5f && T[2] - T[1] <= 0.5f)) {
        if (rounds >= 500) {
            end = End::MaximumRounds;
            break;
        }
        if (T[0] == before[1][0] && T[1] == before[1][1] && T[2] == before[1][2]) {
            end = End::RepeatedBracket;
            break;
        }
        for (int i = 0; i < 3; ++i) {
            before[1][i] = before[0][i];
            before[0][i] = T[i];
        }
        ++rounds;
        float g = 1.0f / T[2] - 1.0f / T[1];
        float t = 1.0f / (1.0f / T[2] - 0.61803f * g);
        float d = distanceAt(t);
        if (d <= D[1]) {
            T[1] = t;
            D[1] = d;
        } else {
            T[2] = t;
            D[2] = d;
        }
        g = 1.0f / T[0] - 1.0f / T[1];
        t = 1.0f / (1.0f / T[0] - 0.61803f * g);
        d = distanceAt(t);
        if (d <= D[1]) {
            T[1] = t;
            D[1] = d;
        } else {
            T[0] = t;
            D[0] = d;
        }
    }
    return std::floor(T[smallest(D)] + 0.5f);
}

float ReferenceSearch(ColorTemperature& search, const QVSpectrum& spectrum, int& rounds)
{
    End end;
    return ReferenceSearch(search, spectrum, rounds, end);
}

} // namespace

TEST(ColorTemperatureResult, IsTheSearchOverThePublicRadiatorStepForStep)
{
    std::vector<QVSpectrum> spectra;
    for (float temperature = 1000.0f; temperature <= 30000.0f; temperature *= 1.13f) {
        spectra.push_back(ColorTemperature().GetPlanckRadiator(temperature, Emission()));
        spectra.push_back(ColorTemperature().GetPlanckRadiator(temperature, Emission("TenDegree")));
    }
    for (const float* table : {CMetry::Tables::IlluminantD65, CMetry::Tables::IlluminantA}) {
        float values[36];
        for (int i = 0; i < 36; ++i) {
            values[i] = table[80 + 10 * i];
        }
        spectra.emplace_back(values, Emission());
    }
    // Uneven emission spectra: random levels.
    std::uint32_t state = 11;
    for (int n = 0; n < 40; ++n) {
        float values[36];
        for (float& value : values) {
            state = state * 1664525u + 1013904223u;
            value = 1.0f + static_cast<float>(state >> 8) / 16777216.0f * 99.0f;
        }
        spectra.emplace_back(values, Emission());
    }
    ColorTemperature library;
    ColorTemperature reference;
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        int rounds = 0;
        const float expected = ReferenceSearch(reference, spectra[i], rounds);
        EXPECT_EQ(expected, library.GetColorTemperature(spectra[i])) << i;
        EXPECT_EQ(rounds, TestAccess::Rounds(library)) << i;
    }
}

TEST(ColorTemperatureResult, ABracketRepeatingItselfEndsTheSearch)
{
    // Radiators whose search reaches a bracket equal to the one two rounds
    // before, with a half still wider than 0.5 K: the rounds would repeat
    // for ever. The search ends there and returns the nearest point of that
    // bracket, rounded, as after a converged search.
    struct Case {
        float temperature;
        const char* observer;
        float expected;
        int rounds;
    };
    const Case cases[] = {
        {20067.0f, "TwoDegree", 20067.0f, 22},   {67500.0f, "TwoDegree", 67500.0f, 25},
        {101250.0f, "TwoDegree", 101251.0f, 26}, {341719.0f, "TwoDegree", 341724.0f, 26},
        {101250.0f, "TenDegree", 101251.0f, 24}, {341719.0f, "TenDegree", 341721.0f, 28},
    };
    ColorTemperature library;
    ColorTemperature reference;
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.temperature) + " K, " + c.observer);
        const QVSpectrum radiator = library.GetPlanckRadiator(c.temperature, Emission(c.observer));
        int rounds = 0;
        End end = End::Tolerance;
        EXPECT_EQ(c.expected, ReferenceSearch(reference, radiator, rounds, end));
        EXPECT_EQ(End::RepeatedBracket, end);
        EXPECT_EQ(c.rounds, rounds);
        EXPECT_EQ(c.expected, library.GetColorTemperature(radiator));
        EXPECT_EQ(c.rounds, TestAccess::Rounds(library));
    }
    // A neighbour of round temperature converges within the tolerance.
    int rounds = 0;
    End end = End::RepeatedBracket;
    EXPECT_EQ(20000.0f, ReferenceSearch(reference, library.GetPlanckRadiator(20000.0f, Emission()), rounds, end));
    EXPECT_EQ(End::Tolerance, end);
    EXPECT_EQ(20000.0f, library.GetColorTemperature(library.GetPlanckRadiator(20000.0f, Emission())));
    EXPECT_EQ(20, TestAccess::Rounds(library));
}

TEST(ColorTemperatureResult, VioletLightEndsAtARepeatedBracketNearTheTop)
{
    // Light at 380 nm alone under the ten degree observer lies beyond the
    // hot end of the locus: the distances near 1000000 K tie, and the search
    // ends at a repeated bracket just below the top.
    Values violet{};
    violet[0] = 1.0f;
    const QVSpectrum spectrum = Spectrum(violet, Emission("TenDegree"));
    ColorTemperature library;
    ColorTemperature reference;
    int rounds = 0;
    End end = End::Tolerance;
    EXPECT_EQ(999987.0f, ReferenceSearch(reference, spectrum, rounds, end));
    EXPECT_EQ(End::RepeatedBracket, end);
    EXPECT_EQ(26, rounds);
    EXPECT_EQ(999987.0f, library.GetColorTemperature(spectrum));
    EXPECT_EQ(26, TestAccess::Rounds(library));
}

TEST(ColorTemperatureSearchEnd, ABracketEqualToTheOneTwoRoundsBeforeEnds)
{
    // A swing between two brackets: the third call sees the first again.
    TestAccess::SearchEnd swing;
    const float a[3] = {100000.0f, 100001.0f, 100003.0f};
    const float b[3] = {100000.0f, 100002.0f, 100003.0f};
    EXPECT_FALSE(swing.Reached(a));
    EXPECT_FALSE(swing.Reached(b));
    EXPECT_TRUE(swing.Reached(a));
    EXPECT_EQ(2, swing.Rounds());
    // A bracket that stays put ends at its third sight as well.
    TestAccess::SearchEnd still;
    EXPECT_FALSE(still.Reached(a));
    EXPECT_FALSE(still.Reached(a));
    EXPECT_TRUE(still.Reached(a));
    EXPECT_EQ(2, still.Rounds());
    // A bracket equal only to the one just before does not end the search.
    TestAccess::SearchEnd back;
    const float c[3] = {100000.0f, 100001.5f, 100003.0f};
    EXPECT_FALSE(back.Reached(a));
    EXPECT_FALSE(back.Reached(b));
    EXPECT_FALSE(back.Reached(b));
    EXPECT_FALSE(back.Reached(c));
    EXPECT_EQ(4, back.Rounds());
    // All three temperatures count: a bracket that differs from the one two
    // rounds before in any one of them goes on.
    const float lower[3] = {99999.0f, 100001.0f, 100003.0f};
    const float middle[3] = {100000.0f, 100001.5f, 100003.0f};
    const float upper[3] = {100000.0f, 100001.0f, 100004.0f};
    for (const float(*third)[3] : {&lower, &middle, &upper}) {
        TestAccess::SearchEnd end;
        EXPECT_FALSE(end.Reached(a));
        EXPECT_FALSE(end.Reached(b));
        EXPECT_FALSE(end.Reached(*third));
        EXPECT_EQ(3, end.Rounds());
    }
}

TEST(ColorTemperatureSearchEnd, FiveHundredRoundsEndAnySearch)
{
    // A swing among three brackets never meets the one of two rounds
    // before: the round count ends it after 500 rounds.
    ASSERT_EQ(500, TestAccess::SearchEnd::MaximumRounds);
    const float brackets[3][3] = {
        {100000.0f, 100001.0f, 100003.0f}, {100000.0f, 100002.0f, 100003.0f}, {100000.0f, 100001.5f, 100003.0f}};
    TestAccess::SearchEnd end;
    int calls = 0;
    while (!end.Reached(brackets[calls % 3]) && calls < 1000) {
        ++calls;
    }
    EXPECT_EQ(500, calls);
    EXPECT_EQ(500, end.Rounds());
    // Once reached, it stays reached.
    EXPECT_TRUE(end.Reached(brackets[0]));
    EXPECT_EQ(500, end.Rounds());
}

TEST(ColorTemperatureResult, IsAlwaysAWholeNumber)
{
    ColorTemperature search;
    const QVSpectrum spectra[] = {
        D65AsEmission(),
        AAsEmission(),
        Spectrum(Greenish(), Emission()),
        Spectrum(Greenish(), Conditions("D65")),
        Spectrum(Reddish(), Conditions("D50", "TenDegree")),
        Spectrum(Flat(0.5f), Conditions("C")),
        search.GetPlanckRadiator(4321.25f, Emission()),
        Spectrum(VeryBlue(), Emission()),
    };
    for (const QVSpectrum& spectrum : spectra) {
        const float temperature = search.GetColorTemperature(spectrum);
        EXPECT_EQ(std::floor(temperature), temperature);
        EXPECT_GE(temperature, 200.0f);
        EXPECT_LE(temperature, 1000000.0f);
    }
}

TEST(ColorTemperatureResult, AFarOffChromaticityStillGetsATemperature)
{
    // A saturated green lies far from the locus: the nearest point counts.
    ColorTemperature search;
    Values green{};
    for (std::size_t i = 14; i <= 19; ++i) {
        green[i] = 1.0f;
    }
    const float temperature = search.GetColorTemperature(Spectrum(green, Emission()));
    EXPECT_GT(temperature, 4000.0f);
    EXPECT_LT(temperature, 8000.0f);
}

TEST(ColorTemperatureResult, AZeroSpectrumTakesTheEqualEnergyChromaticity)
{
    // XYZ of 0 has the u, v of equal energy, so it gets that temperature.
    ColorTemperature search;
    EXPECT_EQ(search.GetColorTemperature(Spectrum(Flat(1.0f), Emission())),
              search.GetColorTemperature(Spectrum(Flat(0.0f), Emission())));
}

TEST(ColorTemperatureResult, ScalingTheSpectrumChangesNothing)
{
    ColorTemperature search;
    EXPECT_EQ(search.GetColorTemperature(Spectrum(Greenish(), Emission())),
              search.GetColorTemperature(Spectrum(Scaled(Greenish(), 37.0f), Emission())));
}

// ================================================================ ends of the range

TEST(ColorTemperatureRange, ASampleRedderThanTheColdestRadiatorTakesTheLowEnd)
{
    // Nearer to 200 K than to the other two starting points: the bracket
    // starts as 200, 200, 400 and only its upper half narrows, by 0.382 in
    // reciprocal temperature each round, so 6 rounds bring it under 0.5 K.
    ColorTemperature search;
    EXPECT_EQ(200.0f, search.GetColorTemperature(search.GetPlanckRadiator(150.0f, Emission())));
    EXPECT_EQ(6, TestAccess::Rounds(search));
    Values longest{};
    longest[35] = 1.0f;
    EXPECT_EQ(200.0f, search.GetColorTemperature(Spectrum(longest, Emission())));
    EXPECT_EQ(6, TestAccess::Rounds(search));
}

TEST(ColorTemperatureRange, TheColdestRadiatorItselfGives200)
{
    ColorTemperature search;
    EXPECT_EQ(200.0f, search.GetColorTemperature(search.GetPlanckRadiator(200.0f, Emission())));
    EXPECT_EQ(201.0f, search.GetColorTemperature(search.GetPlanckRadiator(201.0f, Emission())));
}

TEST(ColorTemperatureRange, AVeryBlueSampleEndsAtTheTopWithoutRaising)
{
    // Beyond the hot end of the locus the distance hardly changes near
    // 1000000 K, and single-precision u, v cannot order the last points: the
    // search ends within a few kelvin of the top (999999 K here).
    ColorTemperature search;
    const float blue = search.GetColorTemperature(Spectrum(VeryBlue(), Emission()));
    EXPECT_GE(blue, 999990.0f);
    EXPECT_LE(blue, 1000000.0f);
    const float hot = search.GetColorTemperature(search.GetPlanckRadiator(10000000.0f, Emission()));
    EXPECT_GE(hot, 999990.0f);
    EXPECT_LE(hot, 1000000.0f);
}

// ================================================================ the radiator spectrum

TEST(PlanckRadiator, EachValueIsPlancksLawWithTheRoundedConstants)
{
    ColorTemperature search;
    const float temperatures[] = {200.0f, 2856.0f, 6504.0f, 12345.5f, 100000.0f};
    for (float temperature : temperatures) {
        const QVSpectrum radiator = search.GetPlanckRadiator(temperature, Emission());
        for (std::size_t i = 0; i < 36; ++i) {
            EXPECT_EQ(PlanckValue(temperature, i), radiator[static_cast<long>(i)]) << temperature << " K, " << i;
        }
    }
}

TEST(PlanckRadiator, TheGridRunsFrom380To730NanometresIn10NanometreSteps)
{
    // At 6000 K the radiance peaks near 483 nm: index 10 (480 nm) is above
    // both neighbours, which a step other than 10 nm would move.
    ColorTemperature search;
    const QVSpectrum radiator = search.GetPlanckRadiator(6000.0f, Emission());
    EXPECT_EQ(36, TestAccess::GetNrOfDataPoints(radiator));
    EXPECT_GT(radiator[10], radiator[9]);
    EXPECT_GT(radiator[10], radiator[11]);
    EXPECT_EQ(PlanckValue(6000.0f, 0), radiator[0]);
    EXPECT_EQ(PlanckValue(6000.0f, 35), radiator[35]);
}

TEST(PlanckRadiator, ColdRadiatorsUnderflowToZeroAtShortWavelengths)
{
    ColorTemperature search;
    const QVSpectrum radiator = search.GetPlanckRadiator(200.0f, Emission());
    EXPECT_EQ(0.0f, radiator[0]);
    EXPECT_GT(radiator[35], 0.0f);
    // At 100 K nothing is left in float.
    const QVSpectrum colder = search.GetPlanckRadiator(100.0f, Emission());
    EXPECT_FALSE(colder.IsValid());
}

TEST(PlanckRadiator, ConditionsSayEmissionAndKeepTheOtherKeys)
{
    QVMeasureConditions given = Conditions("A", "TenDegree", "Paper");
    Set(given, "ColorSpaceDescription.Type", "CIELCh");
    Set(given, "ColorSpaceDescription.DeltaEFormula", "CMC");
    Set(given, "Colorimetric.DensityStandard", "ANSIA");
    Set(given, "Physical.Filter", "UVCut");
    ColorTemperature search;
    const QVSpectrum radiator = search.GetPlanckRadiator(5000.0f, given);
    const QVMeasureConditions& conditions = radiator.GetMeasureConditions();
    EXPECT_EQ("Emission", Condition(conditions, "Colorimetric.Illumination"));
    EXPECT_EQ("TenDegree", Condition(conditions, "Colorimetric.Observer"));
    EXPECT_EQ("Paper", Condition(conditions, "Colorimetric.WhiteBase"));
    EXPECT_EQ("CIELCh", Condition(conditions, "ColorSpaceDescription.Type"));
    EXPECT_EQ("CMC", Condition(conditions, "ColorSpaceDescription.DeltaEFormula"));
    EXPECT_EQ("ANSIA", Condition(conditions, "Colorimetric.DensityStandard"));
    EXPECT_EQ("UVCut", Condition(conditions, "Physical.Filter"));
    // The conditions passed in are not changed.
    EXPECT_EQ("A", Condition(given, "Colorimetric.Illumination"));
}

// ================================================================ the radiator's XYZ

TEST(PlanckRadiatorXYZ, YIsExactly100AndXAndZScaleWithIt)
{
    ColorTemperature search;
    const float temperatures[] = {1000.0f, 2856.0f, 6504.0f, 25000.0f};
    for (float temperature : temperatures) {
        QVMeasureConditions xyzConditions = Emission();
        Set(xyzConditions, "ColorSpaceDescription.Type", "CIEXYZ");
        QVColorVector raw;
        ASSERT_TRUE(CMetryCalculator::GetVector_CIEXYZ(search.GetPlanckRadiator(temperature, Emission()),
                                                       xyzConditions, raw));
        const QVColorVector xyz = search.GetPlanckRadiatorXYZ(temperature, Emission());
        const double y = raw[1];
        EXPECT_EQ(100.0f, xyz[1]) << temperature;
        EXPECT_EQ(static_cast<float>(100.0 * static_cast<double>(raw[0]) / y), xyz[0]) << temperature;
        EXPECT_EQ(static_cast<float>(100.0 * static_cast<double>(raw[2]) / y), xyz[2]) << temperature;
        EXPECT_NE(raw[1], xyz[1]) << temperature; // the raw Y is not 100
    }
}

TEST(PlanckRadiatorXYZ, IsCIEXYZUnderEmission)
{
    ColorTemperature search;
    const QVColorVector xyz = search.GetPlanckRadiatorXYZ(5000.0f, Conditions("D50"));
    EXPECT_EQ("CIEXYZ", Condition(xyz.GetMeasureConditions(), "ColorSpaceDescription.Type"));
    EXPECT_EQ("Emission", Condition(xyz.GetMeasureConditions(), "Colorimetric.Illumination"));
}

TEST(PlanckRadiatorXYZ, UsesTheObserverOfTheConditions)
{
    ColorTemperature search;
    const QVColorVector two = search.GetPlanckRadiatorXYZ(3000.0f, Emission("TwoDegree"));
    const QVColorVector ten = search.GetPlanckRadiatorXYZ(3000.0f, Emission("TenDegree"));
    QVMeasureConditions tenConditions = Emission("TenDegree");
    Set(tenConditions, "ColorSpaceDescription.Type", "CIEXYZ");
    QVColorVector raw;
    ASSERT_TRUE(
        CMetryCalculator::GetVector_CIEXYZ(search.GetPlanckRadiator(3000.0f, Emission()), tenConditions, raw));
    EXPECT_EQ(static_cast<float>(100.0 * static_cast<double>(raw[0]) / static_cast<double>(raw[1])), ten[0]);
    EXPECT_NE(two[0], ten[0]);
}

// ================================================================ distance

TEST(ColorTemperatureWeightDistance, IsTheFourthPowerOfTheDistance)
{
    ColorTemperature search;
    const QVColorVector origin(0.0f, 0.0f, 0.0f, QVMeasureConditions());
    EXPECT_EQ(625.0f, search.WeightDistance(QVColorVector(3.0f, 4.0f, 0.0f, QVMeasureConditions()), origin));
    EXPECT_EQ(0.015625f, search.WeightDistance(QVColorVector(0.5f, 0.25f, 0.0f, QVMeasureConditions()),
                                               QVColorVector(0.25f, 0.0f, 0.0f, QVMeasureConditions())));
    const float d0 = 0.2f - 0.19f;
    const float d1 = 0.45f - 0.47f;
    const double square = std::pow(static_cast<double>(d0), 2) + std::pow(static_cast<double>(d1), 2);
    EXPECT_EQ(static_cast<float>(square * square),
              search.WeightDistance(QVColorVector(0.2f, 0.45f, 0.0f, QVMeasureConditions()),
                                    QVColorVector(0.19f, 0.47f, 0.0f, QVMeasureConditions())));
}

TEST(ColorTemperatureWeightDistance, IgnoresTheThirdAndFourthComponents)
{
    ColorTemperature search;
    QVColorVector first(3.0f, 4.0f, 100.0f, QVMeasureConditions());
    first[3] = -50.0f;
    const QVColorVector second(0.0f, 0.0f, -7.0f, QVMeasureConditions());
    EXPECT_EQ(625.0f, search.WeightDistance(first, second));
}

TEST(ColorTemperatureWeightDistance, IsSymmetric)
{
    ColorTemperature search;
    const QVColorVector first(0.2011f, 0.3105f, 12.0f, QVMeasureConditions());
    const QVColorVector second(0.1978f, 0.3122f, 100.0f, QVMeasureConditions());
    EXPECT_EQ(search.WeightDistance(first, second), search.WeightDistance(second, first));
    EXPECT_GT(search.WeightDistance(first, second), 0.0f);
}

TEST(ColorTemperatureWeightDistance, OfAVectorToItselfIsZero)
{
    ColorTemperature search;
    const QVColorVector vector(0.2011f, 0.3105f, 12.0f, QVMeasureConditions());
    EXPECT_EQ(0.0f, search.WeightDistance(vector, vector));
}

// ================================================================ paper white

TEST_F(ColorTemperaturePaper, PaperBaseWithoutAPaperWhiteRaises)
{
    ColorTemperature search;
    const QVSpectrum spectrum = Spectrum(Greenish(), Conditions("D65", "TwoDegree", "Paper"));
    EXPECT_EQ("Calculation of ColorTemperature failed",
              FailureText<CMetry::ExceptionCMetry>([&] { search.GetColorTemperature(spectrum); }));
}

TEST_F(ColorTemperaturePaper, WithAPaperWhiteTheSpectrumIsBasedOnItFirst)
{
    const PaperWhiteInstalled installed(PaperValues());
    ColorTemperature search;
    // Twice the paper white, based on it, is a flat 2.
    const float based =
        search.GetColorTemperature(Spectrum(Scaled(PaperValues(), 2.0f), Conditions("D65", "TwoDegree", "Paper")));
    const float flat = search.GetColorTemperature(Spectrum(Flat(2.0f), Conditions("D65", "TwoDegree", "Absolute")));
    const float unbased =
        search.GetColorTemperature(Spectrum(Scaled(PaperValues(), 2.0f), Conditions("D65", "TwoDegree", "Absolute")));
    EXPECT_EQ(flat, based);
    EXPECT_NE(unbased, based);
}

TEST_F(ColorTemperaturePaper, AnEmissiveSpectrumIsNeverBasedOnPaper)
{
    // No paper white, yet white base "Paper" on an emissive spectrum works.
    ColorTemperature search;
    QVMeasureConditions conditions = Conditions("Emission", "TwoDegree", "Paper");
    EXPECT_EQ(search.GetColorTemperature(D65AsEmission()),
              search.GetColorTemperature(Spectrum(Sampled(CMetry::Tables::IlluminantD65), conditions)));
}

// ================================================================ shared filter

TEST(ColorTemperatureSharedFilter, IsLeftSetForEmission)
{
    ColorTemperature search;
    search.GetColorTemperature(Spectrum(Greenish(), Conditions("D50", "TenDegree")));
    const Weightfactors* shared = TestAccess::SharedWeightfactors();
    ASSERT_NE(nullptr, shared);
    EXPECT_TRUE(TestAccess::Emission(*shared));
    const Weightfactors emission(Conditions("Emission", "TenDegree"));
    EXPECT_EQ(emission.GetFilterSum(0), shared->GetFilterSum(0));
    EXPECT_EQ(emission.GetFilterSum(2), shared->GetFilterSum(2));
}

// ================================================================ the object

TEST(ColorTemperatureObject, ACopyGivesTheSameResult)
{
    const ColorTemperature original;
    ColorTemperature copy(original);
    ColorTemperature fresh;
    EXPECT_EQ(fresh.GetColorTemperature(D65AsEmission()), copy.GetColorTemperature(D65AsEmission()));
    EXPECT_EQ(TestAccess::Rounds(fresh), TestAccess::Rounds(copy));
}

TEST(ColorTemperatureObject, AnAssignedObjectGivesTheSameResult)
{
    ColorTemperature source;
    source.GetColorTemperature(AAsEmission());
    ColorTemperature target;
    target = source;
    EXPECT_EQ(TestAccess::Rounds(source), TestAccess::Rounds(target));
    EXPECT_EQ(2856.0f, target.GetColorTemperature(AAsEmission()));
    EXPECT_EQ(6508.0f, target.GetColorTemperature(D65AsEmission()));
}

TEST(ColorTemperatureObject, RoundsAreThoseOfTheLastSearch)
{
    ColorTemperature search;
    EXPECT_EQ(0, TestAccess::Rounds(search));
    search.GetColorTemperature(search.GetPlanckRadiator(150.0f, Emission()));
    EXPECT_EQ(6, TestAccess::Rounds(search));
    search.GetColorTemperature(D65AsEmission());
    EXPECT_EQ(15, TestAccess::Rounds(search));
}

TEST(ColorTemperatureObject, ASecondSearchDoesNotDependOnTheFirst)
{
    ColorTemperature search;
    const float first = search.GetColorTemperature(D65AsEmission());
    search.GetColorTemperature(Spectrum(VeryBlue(), Emission()));
    EXPECT_EQ(first, search.GetColorTemperature(D65AsEmission()));
}

TEST(ColorTemperatureObject, ValueStringIsEmpty)
{
    const ColorTemperature search;
    EXPECT_STREQ("", search.GetValueString().c_str());
    EXPECT_TRUE(search.GetValueString().IsEmpty());
}
