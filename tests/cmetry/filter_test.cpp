// Spectral filters and tables: the 36-point Filter with its cached sum, the
// StandardFilter tables of the illuminants and observers (constant, daylight
// of a colour temperature, user-defined), and the CMetryFilter that caches
// the Weightfactors of the current conditions.
//
// Float results are compared exactly wherever the arithmetic is fixed (order
// of summation, single or double precision, one final rounding to float);
// values from published tables are compared as the float literals of their
// published digits.

#include "qvimanager/cmetry/filter.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/tables/cie_tables.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using CMetry::CMetryFilter;
using CMetry::Filter;
using CMetry::QVIllumination;
using CMetry::QVIlluminationTYPE;
using CMetry::QVMeasureConditions;
using CMetry::QVObserverTYPE;
using CMetry::QVSpectrum;
using CMetry::StandardFilter;
using CMetry::TestAccess;
using CMetry::Weightfactors;
using TestSupport::FailureText;
using Utilities::ExceptionCalculationProblem;
using Utilities::ExceptionNullpointer;
using Utilities::ExceptionOutOfBound;
using Utilities::String;

namespace {

constexpr long kPoints = Filter::NumberOfValues;

// "%.15g" of the float promoted to double: how a diagnostic text shows a
// float.
std::string Rendered(float value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.15g", static_cast<double>(value));
    return buffer;
}

// The sum of 36 values added in index order in single precision.
float ForwardFloatSum(const float* values)
{
    float sum = 0.0f;
    for (long i = 0; i < kPoints; ++i) {
        sum += values[i];
    }
    return sum;
}

// 0.1, 0.2, ... 3.6 as floats: a sum that is not a short decimal.
std::vector<float> Tenths()
{
    std::vector<float> values(kPoints);
    for (long i = 0; i < kPoints; ++i) {
        values[static_cast<std::size_t>(i)] = static_cast<float>(i + 1) * 0.1f;
    }
    return values;
}

bool SameBytes(const float* a, const float* b, long count)
{
    return std::memcmp(a, b, static_cast<std::size_t>(count) * sizeof(float)) == 0;
}

// ---------------------------------------------------------------- tables

QVIllumination Illumination(QVIlluminationTYPE type)
{
    return QVIllumination(type);
}

QVIllumination Internal(std::int32_t code)
{
    return QVIllumination(static_cast<QVIlluminationTYPE>(code));
}

QVIllumination FluorescentNumber(unsigned char number)
{
    QVIllumination illumination(CMetry::IlluminationFxx);
    illumination.SetFValue(number);
    return illumination;
}

QVIllumination Daylight(short temperature)
{
    QVIllumination illumination(CMetry::IlluminationDxx);
    illumination.SetColorTemperature(temperature);
    return illumination;
}

// (maximum - minimum) / step + 1.
unsigned Count(const StandardFilter& filter)
{
    return static_cast<unsigned>((filter.GetMaxWavelength() - filter.GetMinWavelength()) / filter.GetStepSize() + 1);
}

// The value at a wavelength on the filter's own grid.
float At(const StandardFilter& filter, unsigned short wavelength)
{
    return filter.GetFilter()[(wavelength - filter.GetMinWavelength()) / filter.GetStepSize()];
}

void ExpectGrid(const StandardFilter& filter, unsigned short minimum, unsigned short maximum, unsigned short step,
                unsigned count)
{
    EXPECT_EQ(minimum, filter.GetMinWavelength());
    EXPECT_EQ(maximum, filter.GetMaxWavelength());
    EXPECT_EQ(step, filter.GetStepSize());
    EXPECT_EQ(count, Count(filter));
    EXPECT_NE(nullptr, filter.GetFilter());
}

// Value by value against a constant table, with the wavelength in the
// message.
void ExpectValues(const StandardFilter& filter, const float* expected, unsigned count)
{
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_EQ(expected[i], filter.GetFilter()[i]) << filter.GetMinWavelength() + i * filter.GetStepSize() << " nm";
    }
}

const float* FluorescentRow(unsigned number)
{
    return CMetry::Tables::IlluminantF + 81 * (number - 1);
}

StandardFilter AnyTable()
{
    return CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationA));
}

// ---------------------------------------------------------------- daylight

enum class Branch { ByTemperature, Lower, Upper };

double CorrectedTemperature(int temperature)
{
    // The second radiation constant changed from 1.438e-2 to 1.4388e-2 m K.
    return temperature * 1.4388 / 1.438;
}

// CIE daylight on 300 to 830 nm at 5 nm, written out from the published
// method in double precision: chromaticity x from the corrected temperature
// (below 7000 K the first formula, from 7000 K the second), y from x, the
// factors M1 and M2 rounded half up to three decimals, S = S0 + S1 M1 + S2 M2
// from the component tables, scaled by 100 / S(560 nm) and rounded once to
// float. `branch` forces one of the two chromaticity formulas.
std::vector<float> ReferenceDaylight(int temperature, Branch branch = Branch::ByTemperature)
{
    const double t = CorrectedTemperature(temperature);
    const bool lower = branch == Branch::ByTemperature ? t < 7000.0 : branch == Branch::Lower;
    double x = 0.0;
    if (lower) {
        x = -4607000000.0 / (t * t * t) + 2967800.0 / (t * t) + 99.11 / t + 0.244063;
    } else {
        x = -2006400000.0 / (t * t * t) + 1901800.0 / (t * t) + 247.48 / t + 0.23704;
    }
    const double y = -3.0 * x * x + 2.87 * x - 0.275;
    const double m = 0.0241 + 0.2562 * x - 0.7341 * y;
    const double m1 = std::floor((-1.3515 - 1.7703 * x + 5.9114 * y) / m * 1000.0 + 0.5) / 1000.0;
    const double m2 = std::floor((0.03 - 31.4424 * x + 30.0717 * y) / m * 1000.0 + 0.5) / 1000.0;

    std::vector<double> s(107);
    for (std::size_t i = 0; i < s.size(); ++i) {
        s[i] = CMetry::Tables::DaylightS0[i] + CMetry::Tables::DaylightS1[i] * m1 + CMetry::Tables::DaylightS2[i] * m2;
    }
    const double scale = 100.0 / s[(560 - 300) / 5];
    std::vector<float> result(s.size());
    for (std::size_t i = 0; i < s.size(); ++i) {
        result[i] = static_cast<float>(s[i] * scale);
    }
    return result;
}

StandardFilter DaylightTable(short temperature)
{
    QVMeasureConditions conditions;
    TestAccess::SetIllumination(conditions, Daylight(temperature));
    StandardFilter filter = AnyTable();
    filter.SetDxxIllumination(conditions);
    return filter;
}

bool Matches(const StandardFilter& filter, const std::vector<float>& expected)
{
    return Count(filter) == expected.size() &&
           SameBytes(filter.GetFilter(), expected.data(), static_cast<long>(expected.size()));
}

void ExpectDaylight(const StandardFilter& filter, const std::vector<float>& expected)
{
    ASSERT_EQ(300, filter.GetMinWavelength());
    ASSERT_EQ(830, filter.GetMaxWavelength());
    ASSERT_EQ(5, filter.GetStepSize());
    ASSERT_EQ(expected.size(), Count(filter));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i], filter.GetFilter()[i]) << 300 + 5 * i << " nm";
    }
}

// ---------------------------------------------------------------- the cache

QVMeasureConditions With(const char* key, const char* value, QVMeasureConditions conditions = QVMeasureConditions())
{
    conditions.SetMeasureCondition(String(key), String(value));
    return conditions;
}

QVSpectrum UserSpectrum(float offset)
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = offset + 2.5f * static_cast<float>(i);
    }
    return QVSpectrum(values);
}

QVMeasureConditions WithUserSpectrum(const QVSpectrum& spectrum)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(spectrum);
    return conditions;
}

// A rebuilt Weightfactors may be placed at an address that a released one
// had, so the pointer alone cannot prove that the cache kept its object.
// A mark written into the cached weights can: a rebuild computes every weight
// afresh, so the mark survives exactly as long as the cache keeps the object.
constexpr float kMark = -12345.0f;

void MarkCachedFactors(const CMetryFilter& filter)
{
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    ASSERT_NE(nullptr, cached);
    // The weights are an ordinary heap array of the factors: writing to it
    // through the read-only view is well defined.
    const_cast<float*>((*cached)[0])[0] = kMark;
}

bool CachedFactorsCarryMark(const CMetryFilter& filter)
{
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    return cached != nullptr && (*cached)[0][0] == kMark;
}

} // namespace

// ================================================================ Filter

TEST(Filter, DefaultHasNoValidSumAndZeroValues)
{
    Filter filter;
    EXPECT_STREQ("FilterSum: not defined", filter.GetValueString().c_str());
    for (long i = 0; i < kPoints; ++i) {
        EXPECT_EQ(0.0f, filter[static_cast<long>(i)]) << i;
    }
    const Filter fresh;
    for (long i = 0; i < kPoints; ++i) {
        EXPECT_EQ(0.0f, fresh.GetFilterSpectrum()[i]) << i;
    }
}

TEST(Filter, DefaultSumIsZeroOnceComputed)
{
    Filter filter;
    EXPECT_EQ(0.0f, filter.GetFilterSum());
    EXPECT_STREQ("FilterSum: 0", filter.GetValueString().c_str());
}

TEST(Filter, ConstructionCopiesTheValuesAndComputesTheSum)
{
    const std::vector<float> values = Tenths();
    Filter filter(values.data());
    EXPECT_TRUE(SameBytes(values.data(), filter.GetFilterSpectrum(), kPoints));
    EXPECT_NE(values.data(), filter.GetFilterSpectrum());
    const std::string expected = "FilterSum: " + Rendered(ForwardFloatSum(values.data()));
    EXPECT_EQ(expected, filter.GetValueString().c_str());
    EXPECT_EQ(ForwardFloatSum(values.data()), filter.GetFilterSum());
}

TEST(Filter, SumIsAddedInIndexOrderInSinglePrecision)
{
    // 1e8 + 1 rounds back to 1e8 in single precision, so index order gives
    // 1e8, 0, 1. Double precision, or any order that adds the ones first,
    // gives 2 or 0.
    float values[kPoints] = {};
    values[0] = 1e8f;
    values[1] = 1.0f;
    values[2] = -1e8f;
    values[3] = 1.0f;
    Filter filter(values);
    EXPECT_EQ(1.0f, filter.GetFilterSum());
    EXPECT_STREQ("FilterSum: 1", filter.GetValueString().c_str());

    double exact = 0.0;
    for (const float value : values) {
        exact += value;
    }
    EXPECT_EQ(2.0, exact);
}

TEST(Filter, ValueStringRendersTheSumAsAFloatWithFifteenDigits)
{
    float values[kPoints] = {};
    values[0] = 0.1f;
    Filter filter(values);
    // 0.1f promoted to double.
    EXPECT_STREQ("FilterSum: 0.100000001490116", filter.GetValueString().c_str());

    float halves[kPoints];
    for (float& value : halves) {
        value = 0.5f;
    }
    EXPECT_STREQ("FilterSum: 18", Filter(halves).GetValueString().c_str());
}

TEST(Filter, WritingThroughTheIndexRecomputesTheSumOnTheNextRequest)
{
    const std::vector<float> values = Tenths();
    Filter filter(values.data());
    const float before = filter.GetFilterSum();

    filter[7] = 100.0f;
    EXPECT_STREQ("FilterSum: not defined", filter.GetValueString().c_str());

    std::vector<float> changed = values;
    changed[7] = 100.0f;
    const float after = ForwardFloatSum(changed.data());
    ASSERT_NE(before, after);
    EXPECT_EQ(after, filter.GetFilterSum());
    EXPECT_EQ("FilterSum: " + Rendered(after), std::string(filter.GetValueString().c_str()));
    EXPECT_EQ(100.0f, filter.GetFilterSpectrum()[7]);
}

TEST(Filter, TheWritableIndexInvalidatesTheSumEvenWithoutAWrite)
{
    const std::vector<float> values = Tenths();
    Filter filter(values.data());
    const float value = filter[3];
    EXPECT_EQ(values[3], value);
    EXPECT_STREQ("FilterSum: not defined", filter.GetValueString().c_str());
    EXPECT_EQ(ForwardFloatSum(values.data()), filter.GetFilterSum());
}

TEST(Filter, TheReadOnlyIndexKeepsTheSumValid)
{
    const std::vector<float> values = Tenths();
    Filter filter(values.data());
    const Filter& view = filter;
    for (long i = 0; i < kPoints; ++i) {
        EXPECT_EQ(values[static_cast<std::size_t>(i)], view[i]) << i;
    }
    EXPECT_EQ("FilterSum: " + Rendered(ForwardFloatSum(values.data())), std::string(view.GetValueString().c_str()));
}

TEST(Filter, ReadOnlyIndexOutside0To35IsRefused)
{
    const std::vector<float> values = Tenths();
    const Filter filter(values.data());
    for (const long index : {-1L, 36L, 37L, 1000000L, -1000000L}) {
        EXPECT_EQ("Filter::operator[]: index out of range",
                  FailureText<ExceptionOutOfBound>([&] { static_cast<void>(filter[index]); }))
            << index;
    }
    EXPECT_EQ(values[0], filter[0]);
    EXPECT_EQ(values[35], filter[35]);
}

TEST(Filter, WritableIndexOutside0To35IsRefused)
{
    const std::vector<float> values = Tenths();
    Filter filter(values.data());
    for (const long index : {-1L, 36L, 37L, 1000000L, -1000000L}) {
        EXPECT_EQ("Filter::operator[]: index out of range",
                  FailureText<ExceptionOutOfBound>([&] { filter[index] = 5.0f; }))
            << index;
    }
    EXPECT_TRUE(SameBytes(values.data(), filter.GetFilterSpectrum(), kPoints));
    // Nothing changed: the sum is still valid.
    EXPECT_EQ("FilterSum: " + Rendered(ForwardFloatSum(values.data())), std::string(filter.GetValueString().c_str()));
    filter[0] = 1.0f;
    filter[35] = 2.0f;
    EXPECT_EQ(1.0f, filter.GetFilterSpectrum()[0]);
    EXPECT_EQ(2.0f, filter.GetFilterSpectrum()[35]);
}

TEST(Filter, ProductWithASpectrumIsTheFloatDotProductFromIndexZero)
{
    float weights[kPoints];
    float reflectance[kPoints];
    for (long i = 0; i < kPoints; ++i) {
        weights[i] = 0.25f + static_cast<float>(i) * 0.37f;
        reflectance[i] = 0.3f + static_cast<float>(i) * 0.013f;
    }
    // Products 1e8, 1.5, -1e8, 1.5 first: from index 0 in single precision
    // the first 1.5 is lost against 1e8 and the second one stays.
    weights[0] = 1e8f;
    weights[1] = 3.0f;
    weights[2] = -1e8f;
    weights[3] = 3.0f;
    reflectance[0] = 1.0f;
    reflectance[1] = 0.5f;
    reflectance[2] = 1.0f;
    reflectance[3] = 0.5f;
    const Filter filter(weights);
    const QVSpectrum spectrum(reflectance);

    float forward = 0.0f;
    for (long i = 0; i < kPoints; ++i) {
        forward += weights[i] * reflectance[i];
    }
    EXPECT_EQ(forward, filter * spectrum);

    // The data tell the orders apart: backwards in single precision and
    // in double precision come out differently.
    float backward = 0.0f;
    double exact = 0.0;
    for (long i = kPoints - 1; i >= 0; --i) {
        backward += weights[i] * reflectance[i];
        exact += static_cast<double>(weights[i]) * static_cast<double>(reflectance[i]);
    }
    EXPECT_NE(forward, backward);
    EXPECT_NE(forward, static_cast<float>(exact));
}

TEST(Filter, FilterXFilterIsTheElementWiseProductWithItsSum)
{
    const std::vector<float> a = Tenths();
    float b[kPoints];
    for (long i = 0; i < kPoints; ++i) {
        b[i] = 1.5f - static_cast<float>(i) * 0.07f;
    }
    const Filter left(a.data());
    const Filter right(b);
    const Filter product = left.FilterXFilter(right);

    float expected[kPoints];
    for (long i = 0; i < kPoints; ++i) {
        expected[i] = a[static_cast<std::size_t>(i)] * b[i];
        EXPECT_EQ(expected[i], product[i]) << i;
    }
    EXPECT_EQ("FilterSum: " + Rendered(ForwardFloatSum(expected)), std::string(product.GetValueString().c_str()));
    EXPECT_TRUE(SameBytes(a.data(), left.GetFilterSpectrum(), kPoints));
    EXPECT_TRUE(SameBytes(b, right.GetFilterSpectrum(), kPoints));
}

TEST(Filter, EqualValuesWithDifferentSumFlagsCompareEqual)
{
    const std::vector<float> values = Tenths();
    const Filter valid(values.data());
    Filter invalid(values.data());
    invalid[4] = values[4];
    ASSERT_STREQ("FilterSum: not defined", invalid.GetValueString().c_str());
    ASSERT_STRNE("FilterSum: not defined", valid.GetValueString().c_str());
    EXPECT_TRUE(valid == invalid);
    EXPECT_TRUE(invalid == valid);
    EXPECT_TRUE(Filter() == Filter(std::vector<float>(kPoints, 0.0f).data()));
}

TEST(Filter, AnyDifferentValueMakesFiltersUnequal)
{
    const std::vector<float> values = Tenths();
    const Filter reference(values.data());
    for (const long index : {0L, 17L, 35L}) {
        std::vector<float> changed = values;
        changed[static_cast<std::size_t>(index)] += 1.0f;
        EXPECT_FALSE(reference == Filter(changed.data())) << index;
    }
}

TEST(Filter, ValuesAreComparedAsBytes)
{
    float positive[kPoints] = {};
    float negative[kPoints] = {};
    negative[17] = -0.0f;
    ASSERT_TRUE(positive[17] == negative[17]);
    EXPECT_FALSE(Filter(positive) == Filter(negative));

    float nan[kPoints] = {};
    nan[9] = std::bit_cast<float>(0x7fc00001U);
    ASSERT_FALSE(nan[9] == nan[9]);
    EXPECT_TRUE(Filter(nan) == Filter(nan));

    float otherNan[kPoints] = {};
    otherNan[9] = std::bit_cast<float>(0x7fc00002U);
    EXPECT_FALSE(Filter(nan) == Filter(otherNan));
}

TEST(Filter, CopyKeepsValuesSumAndFlag)
{
    const std::vector<float> values = Tenths();
    const Filter valid(values.data());
    const Filter validCopy(valid);
    EXPECT_TRUE(SameBytes(values.data(), validCopy.GetFilterSpectrum(), kPoints));
    EXPECT_EQ("FilterSum: " + Rendered(ForwardFloatSum(values.data())),
              std::string(validCopy.GetValueString().c_str()));

    Filter invalid(values.data());
    invalid[0] = 9.0f;
    const Filter invalidCopy(invalid);
    EXPECT_STREQ("FilterSum: not defined", invalidCopy.GetValueString().c_str());
    EXPECT_EQ(9.0f, invalidCopy[0]);
}

TEST(Filter, AssignmentKeepsValuesSumAndFlag)
{
    const std::vector<float> values = Tenths();
    const Filter valid(values.data());
    Filter target;
    target = valid;
    EXPECT_TRUE(SameBytes(values.data(), target.GetFilterSpectrum(), kPoints));
    EXPECT_EQ("FilterSum: " + Rendered(ForwardFloatSum(values.data())), std::string(target.GetValueString().c_str()));

    Filter invalid(values.data());
    invalid[35] = -3.0f;
    Filter other(values.data());
    other = invalid;
    EXPECT_STREQ("FilterSum: not defined", other.GetValueString().c_str());
    EXPECT_EQ(-3.0f, other.GetFilterSpectrum()[35]);
}

TEST(Filter, SelfAssignmentKeepsEverything)
{
    const std::vector<float> values = Tenths();
    Filter valid(values.data());
    Filter& alias = valid;
    valid = alias;
    EXPECT_TRUE(SameBytes(values.data(), valid.GetFilterSpectrum(), kPoints));
    EXPECT_EQ("FilterSum: " + Rendered(ForwardFloatSum(values.data())), std::string(valid.GetValueString().c_str()));

    Filter invalid(values.data());
    invalid[2] = 7.0f;
    Filter& invalidAlias = invalid;
    invalid = invalidAlias;
    EXPECT_STREQ("FilterSum: not defined", invalid.GetValueString().c_str());
    EXPECT_EQ(7.0f, invalid.GetFilterSpectrum()[2]);
}

TEST(Filter, FilterSpectrumIsTheFiltersOwnValues)
{
    const std::vector<float> values = Tenths();
    Filter filter(values.data());
    const float* spectrum = filter.GetFilterSpectrum();
    EXPECT_TRUE(SameBytes(values.data(), spectrum, kPoints));
    filter[20] = 42.0f;
    EXPECT_EQ(42.0f, spectrum[20]);
}

// ================================================================ illuminant tables

TEST(IlluminantTable, D65IsTheOneNanometreTableFrom300To830)
{
    const StandardFilter d65 = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD65));
    ExpectGrid(d65, 300, 830, 1, 531);
    EXPECT_EQ(0.0341f, At(d65, 300));
    EXPECT_EQ(1.6643f, At(d65, 305));
    EXPECT_EQ(100.0f, At(d65, 560));
    EXPECT_EQ(60.3125f, At(d65, 830));
    ExpectValues(d65, CMetry::Tables::IlluminantD65, 531);
}

TEST(IlluminantTable, AIsTheOneNanometreTableFrom300To830)
{
    const StandardFilter a = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationA));
    ExpectGrid(a, 300, 830, 1, 531);
    EXPECT_EQ(0.930483f, At(a, 300));
    EXPECT_EQ(100.0f, At(a, 560));
    EXPECT_EQ(241.675f, At(a, 780));
    EXPECT_EQ(261.602f, At(a, 830));
    ExpectValues(a, CMetry::Tables::IlluminantA, 531);
}

TEST(IlluminantTable, BIsFiveNanometreDataFrom320To770)
{
    const StandardFilter b = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationB));
    ExpectGrid(b, 320, 770, 5, 91);
    EXPECT_EQ(0.02f, At(b, 320));
    EXPECT_EQ(89.65f, At(b, 515));
    EXPECT_EQ(102.8f, At(b, 560));
    ExpectValues(b, CMetry::Tables::IlluminantB, 91);
}

TEST(IlluminantTable, CIsFiveNanometreDataFrom300To780)
{
    const StandardFilter c = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationC));
    ExpectGrid(c, 300, 780, 5, 97);
    EXPECT_EQ(0.0f, At(c, 300));
    EXPECT_EQ(105.3f, At(c, 560));
    EXPECT_EQ(59.1f, At(c, 780));
    ExpectValues(c, CMetry::Tables::IlluminantC, 97);
}

TEST(IlluminantTable, D75AndD50AreFiveNanometreDataFrom300To830)
{
    const StandardFilter d75 = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD75));
    ExpectGrid(d75, 300, 830, 5, 107);
    EXPECT_EQ(2.59f, At(d75, 305));
    EXPECT_EQ(55.54f, At(d75, 830));
    ExpectValues(d75, CMetry::Tables::IlluminantD75, 107);

    const StandardFilter d50 = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD50));
    ExpectGrid(d50, 300, 830, 5, 107);
    EXPECT_EQ(1.03f, At(d50, 305));
    EXPECT_EQ(74.44f, At(d50, 830));
    ExpectValues(d50, CMetry::Tables::IlluminantD50, 107);
}

TEST(IlluminantTable, D55IsTheStartOfTheOneNanometreD65TableTakenAsFiveNanometreData)
{
    // No daylight table of its own: the first 107 values of 1 nm D65
    // (300 to 406 nm) declared as 5 nm data from 300 to 830 nm.
    const StandardFilter d55 = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD55));
    ExpectGrid(d55, 300, 830, 5, 107);
    const float first[] = {0.0341f, 0.36014f, 0.68618f, 1.01222f, 1.33826f};
    for (unsigned i = 0; i < 5; ++i) {
        EXPECT_EQ(first[i], d55.GetFilter()[i]) << i;
    }
    EXPECT_EQ(87.9936f, d55.GetFilter()[106]);
    ExpectValues(d55, CMetry::Tables::IlluminantD65, 107);
    EXPECT_NE(CMetry::Tables::IlluminantD65, d55.GetFilter());
}

TEST(IlluminantTable, F2F7AndF11AreRowsOfTheFluorescentTable)
{
    const struct {
        QVIlluminationTYPE type;
        unsigned row;
        float at380;
        float at560;
    } cases[] = {
        {CMetry::IlluminationF2, 2, 1.18f, 16.16f},
        {CMetry::IlluminationF7, 7, 2.56f, 12.58f},
        {CMetry::IlluminationF11, 11, 0.91f, 2.83f},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.row);
        const StandardFilter f = CMetryFilter::GetIlluFilter(Illumination(each.type));
        ExpectGrid(f, 380, 780, 5, 81);
        EXPECT_EQ(each.at380, At(f, 380));
        EXPECT_EQ(each.at560, At(f, 560));
        ExpectValues(f, FluorescentRow(each.row), 81);
    }
}

TEST(IlluminantTable, F2F7AndF11IgnoreTheFNumber)
{
    QVIllumination f7(CMetry::IlluminationF7);
    f7.SetFValue(3);
    ExpectValues(CMetryFilter::GetIlluFilter(f7), FluorescentRow(7), 81);
    QVIllumination f2(CMetry::IlluminationF2);
    f2.SetFValue(13);
    ExpectValues(CMetryFilter::GetIlluFilter(f2), FluorescentRow(2), 81);
}

TEST(IlluminantTable, FxxTakesTheRowOfItsFNumber)
{
    const StandardFilter f1 = CMetryFilter::GetIlluFilter(FluorescentNumber(1));
    ExpectGrid(f1, 380, 780, 5, 81);
    EXPECT_EQ(1.87f, f1.GetFilter()[0]);
    EXPECT_EQ(2.36f, f1.GetFilter()[1]);
    EXPECT_EQ(2.94f, f1.GetFilter()[2]);
    ExpectValues(f1, CMetry::Tables::IlluminantF, 81);

    const StandardFilter f12 = CMetryFilter::GetIlluFilter(FluorescentNumber(12));
    ExpectGrid(f12, 380, 780, 5, 81);
    EXPECT_EQ(0.96f, At(f12, 380));
    EXPECT_EQ(0.64f, At(f12, 385));
    EXPECT_EQ(3.08f, At(f12, 560));
    EXPECT_EQ(0.05f, At(f12, 780));
    ExpectValues(f12, FluorescentRow(12), 81);
}

TEST(IlluminantTable, FxxWithFNumber2EqualsF2ValueByValue)
{
    const StandardFilter fxx = CMetryFilter::GetIlluFilter(FluorescentNumber(2));
    const StandardFilter f2 = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationF2));
    ExpectGrid(fxx, f2.GetMinWavelength(), f2.GetMaxWavelength(), f2.GetStepSize(), Count(f2));
    for (unsigned i = 0; i < 81; ++i) {
        EXPECT_EQ(f2.GetFilter()[i], fxx.GetFilter()[i]) << 380 + 5 * i << " nm";
    }
}

TEST(IlluminantTable, FxxOutsideFNumbers1To12IsAnEmptyTable)
{
    for (const unsigned char number : {0, 13, 255}) {
        EXPECT_EQ("Filter table is empty: its step size is 0",
                  FailureText<ExceptionCalculationProblem>(
                      [&] { static_cast<void>(CMetryFilter::GetIlluFilter(FluorescentNumber(number))); }))
            << static_cast<int>(number);
    }
}

TEST(IlluminantTable, IlluminantsWithoutAConstantTableAreUnsupported)
{
    const std::int32_t codes[] = {CMetry::IlluminationDxx,
                                  CMetry::IlluminationUserdefined,
                                  CMetry::IlluminationEmission,
                                  CMetry::IlluminationUndefined,
                                  17,
                                  100,
                                  -2};
    for (const std::int32_t code : codes) {
        EXPECT_EQ("Unsupported Illumination type",
                  FailureText<ExceptionCalculationProblem>(
                      [&] { static_cast<void>(CMetryFilter::GetIlluFilter(Internal(code))); }))
            << code;
    }
    // A colour temperature does not give daylight a constant table.
    EXPECT_EQ("Unsupported Illumination type",
              FailureText<ExceptionCalculationProblem>(
                  [] { static_cast<void>(CMetryFilter::GetIlluFilter(Daylight(6500))); }));
}

TEST(IlluminantTable, InternalCodes14To16AreTheDaylightComponents)
{
    const struct {
        std::int32_t code;
        const float* table;
        float at300;
        float at560;
        float at830;
    } cases[] = {
        {14, CMetry::Tables::DaylightS0, 0.04f, 100.0f, 61.9f},
        {15, CMetry::Tables::DaylightS1, 0.02f, 0.0f, -9.8f},
        {16, CMetry::Tables::DaylightS2, 0.0f, 0.0f, 6.5f},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.code);
        const StandardFilter s = CMetryFilter::GetIlluFilter(Internal(each.code));
        ExpectGrid(s, 300, 830, 5, 107);
        EXPECT_EQ(each.at300, At(s, 300));
        EXPECT_EQ(each.at560, At(s, 560));
        EXPECT_EQ(each.at830, At(s, 830));
        ExpectValues(s, each.table, 107);
    }
}

TEST(IlluminantTable, EveryCallReturnsANewCopy)
{
    const StandardFilter first = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD65));
    const StandardFilter second = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD65));
    EXPECT_NE(first.GetFilter(), second.GetFilter());
    EXPECT_NE(CMetry::Tables::IlluminantD65, first.GetFilter());
    EXPECT_NE(CMetry::Tables::IlluminantD65, second.GetFilter());
    EXPECT_TRUE(SameBytes(first.GetFilter(), second.GetFilter(), 531));
}

// ================================================================ observer tables

TEST(ObserverTable, TwoDegreeFunctionsStartAt360InStepsOf1)
{
    const StandardFilter x = CMetryFilter::GetObserverFilter(CMetry::ObserverTwoDegree, 0);
    const StandardFilter y = CMetryFilter::GetObserverFilter(CMetry::ObserverTwoDegree, 1);
    const StandardFilter z = CMetryFilter::GetObserverFilter(CMetry::ObserverTwoDegree, 2);
    ExpectGrid(x, 360, 830, 1, 471);
    ExpectGrid(y, 360, 830, 1, 471);
    ExpectGrid(z, 360, 650, 1, 291);
    EXPECT_EQ(0.0001299f, At(x, 360));
    EXPECT_EQ(0.000003917f, At(y, 360));
    EXPECT_EQ(0.0006061f, At(z, 360));
    EXPECT_EQ(0.5945f, At(x, 560));
    EXPECT_EQ(0.995f, At(y, 560));
    EXPECT_EQ(0.0039f, At(z, 560));
    EXPECT_EQ(0.0f, At(z, 650));
    ExpectValues(x, CMetry::Tables::TwoDegreeXBar, 471);
    ExpectValues(y, CMetry::Tables::TwoDegreeYBar, 471);
    ExpectValues(z, CMetry::Tables::TwoDegreeZBar, 291);
}

TEST(ObserverTable, TenDegreeFunctionsStartAt360InStepsOf1)
{
    const StandardFilter x = CMetryFilter::GetObserverFilter(CMetry::ObserverTenDegree, 0);
    const StandardFilter y = CMetryFilter::GetObserverFilter(CMetry::ObserverTenDegree, 1);
    const StandardFilter z = CMetryFilter::GetObserverFilter(CMetry::ObserverTenDegree, 2);
    ExpectGrid(x, 360, 830, 1, 471);
    ExpectGrid(y, 360, 830, 1, 471);
    ExpectGrid(z, 360, 560, 1, 201);
    EXPECT_EQ(1.222e-7f, At(x, 360));
    EXPECT_EQ(1.3398e-8f, At(y, 360));
    EXPECT_EQ(5.35027e-7f, At(z, 360));
    EXPECT_EQ(0.705224f, At(x, 560));
    EXPECT_EQ(0.99734f, At(y, 560));
    EXPECT_EQ(0.0f, At(z, 560));
    ExpectValues(x, CMetry::Tables::TenDegreeXBar, 471);
    ExpectValues(y, CMetry::Tables::TenDegreeYBar, 471);
    ExpectValues(z, CMetry::Tables::TenDegreeZBar, 201);
}

TEST(ObserverTable, AnAxisAbove2IsAnEmptyTable)
{
    for (const QVObserverTYPE observer : {CMetry::ObserverTwoDegree, CMetry::ObserverTenDegree}) {
        for (const unsigned short axis : {3, 4, 65535}) {
            EXPECT_EQ("Filter table is empty: its step size is 0",
                      FailureText<ExceptionCalculationProblem>(
                          [&] { static_cast<void>(CMetryFilter::GetObserverFilter(observer, axis)); }))
                << observer << " axis " << axis;
        }
    }
}

TEST(ObserverTable, UnknownObserversAreUnsupportedWhateverTheAxis)
{
    const QVObserverTYPE observers[] = {CMetry::ObserverUndefined, static_cast<QVObserverTYPE>(5),
                                        static_cast<QVObserverTYPE>(2)};
    for (const QVObserverTYPE observer : observers) {
        for (const unsigned short axis : {0, 1, 2, 3}) {
            EXPECT_EQ("Unsupported Observer type",
                      FailureText<ExceptionCalculationProblem>(
                          [&] { static_cast<void>(CMetryFilter::GetObserverFilter(observer, axis)); }))
                << observer << " axis " << axis;
        }
    }
}

TEST(ObserverTable, EveryCallReturnsANewCopy)
{
    const StandardFilter first = CMetryFilter::GetObserverFilter(CMetry::ObserverTenDegree, 1);
    const StandardFilter second = CMetryFilter::GetObserverFilter(CMetry::ObserverTenDegree, 1);
    EXPECT_NE(first.GetFilter(), second.GetFilter());
    EXPECT_NE(CMetry::Tables::TenDegreeYBar, first.GetFilter());
}

// ================================================================ StandardFilter

TEST(StandardFilter, CopyIsDeep)
{
    const StandardFilter original = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationB));
    const StandardFilter copy(original);
    EXPECT_NE(original.GetFilter(), copy.GetFilter());
    ExpectGrid(copy, 320, 770, 5, 91);
    EXPECT_TRUE(SameBytes(original.GetFilter(), copy.GetFilter(), 91));
}

TEST(StandardFilter, AssignmentIsDeepAndTakesTheOtherGrid)
{
    const StandardFilter source = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationB));
    StandardFilter target = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationA));
    target = source;
    EXPECT_NE(source.GetFilter(), target.GetFilter());
    ExpectGrid(target, 320, 770, 5, 91);
    EXPECT_TRUE(SameBytes(source.GetFilter(), target.GetFilter(), 91));

    // The other way round: a short table takes a long one.
    const StandardFilter longer = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD65));
    target = longer;
    ExpectGrid(target, 300, 830, 1, 531);
    EXPECT_TRUE(SameBytes(longer.GetFilter(), target.GetFilter(), 531));
}

TEST(StandardFilter, SelfAssignmentKeepsTheTable)
{
    StandardFilter filter = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationC));
    const float* table = filter.GetFilter();
    StandardFilter& alias = filter;
    filter = alias;
    EXPECT_EQ(table, filter.GetFilter());
    ExpectGrid(filter, 300, 780, 5, 97);
    ExpectValues(filter, CMetry::Tables::IlluminantC, 97);
}

TEST(StandardFilter, AFilterWithoutValuesCannotBeCopied)
{
    EXPECT_EQ("Filter table is empty: its step size is 0",
              FailureText<ExceptionCalculationProblem>([] { TestAccess::CopyEmptyStandardFilter(); }));
}

TEST(StandardFilter, AFilterWithoutValuesCannotBeAssignedAndTheTargetStaysAsItWas)
{
    StandardFilter target = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationD50));
    const float* table = target.GetFilter();
    EXPECT_EQ("Filter table is empty: its step size is 0",
              FailureText<ExceptionCalculationProblem>([&] { TestAccess::AssignEmptyStandardFilter(target); }));
    EXPECT_EQ(table, target.GetFilter());
    ExpectGrid(target, 300, 830, 5, 107);
    ExpectValues(target, CMetry::Tables::IlluminantD50, 107);
}

TEST(StandardFilter, ThePrivateDefaultHasNothing)
{
    EXPECT_TRUE(TestAccess::EmptyStandardFilterHasNothing());
}

TEST(StandardFilter, ValueStringIsEmpty)
{
    const StandardFilter filter = AnyTable();
    EXPECT_STREQ("", filter.GetValueString().c_str());
    EXPECT_TRUE(filter.GetValueString().IsEmpty());
}

// ================================================================ user-defined illumination

TEST(UserIllumination, TakesTheUserSpectrumOnItsOwnGrid)
{
    const QVSpectrum spectrum = UserSpectrum(40.0f);
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(spectrum);

    StandardFilter filter = AnyTable();
    filter.SetUserIllumination(conditions);
    ExpectGrid(filter, 380, 730, 10, 36);
    for (long i = 0; i < 36; ++i) {
        EXPECT_EQ(spectrum[i], filter.GetFilter()[i]) << 380 + 10 * i << " nm";
    }
}

TEST(UserIllumination, ReplacesATableOfAnyGrid)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(UserSpectrum(1.0f));
    StandardFilter filter = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationB));
    filter.SetUserIllumination(conditions);
    ExpectGrid(filter, 380, 730, 10, 36);
    EXPECT_EQ(1.0f, filter.GetFilter()[0]);
    EXPECT_EQ(1.0f + 2.5f * 35.0f, filter.GetFilter()[35]);

    // The result is an ordinary table: it copies like any other.
    const StandardFilter copy(filter);
    ExpectGrid(copy, 380, 730, 10, 36);
    EXPECT_TRUE(SameBytes(filter.GetFilter(), copy.GetFilter(), 36));
}

TEST(UserIllumination, WithoutAUserSpectrumItRaisesNullpointer)
{
    StandardFilter filter = AnyTable();
    const QVMeasureConditions conditions;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { filter.SetUserIllumination(conditions); }));
}

TEST(UserIllumination, ADroppedUserSpectrumRaisesNullpointer)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(UserSpectrum(1.0f));
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("D65"));
    StandardFilter filter = AnyTable();
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { filter.SetUserIllumination(conditions); }));
}

// ================================================================ daylight

TEST(Daylight, At6500KItIsExactly100At560OnThe5nmGridFrom300To830)
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("Dxx, Temperature:6500"));
    // Called on a table of another grid: the daylight grid replaces it.
    StandardFilter filter = CMetryFilter::GetIlluFilter(Illumination(CMetry::IlluminationB));
    filter.SetDxxIllumination(conditions);
    ExpectGrid(filter, 300, 830, 5, 107);
    EXPECT_EQ(100.0f, At(filter, 560));
}

TEST(Daylight, At6500KEveryValueEqualsTheDoublePrecisionMethod)
{
    // At 6500 K the corrected temperature is about 6503.6 K (lower branch),
    // and the rounded factors come out as M1 = -0.295 and M2 = -0.689.
    //
    // Exact float equality holds because the reference performs the same
    // published operations in the same written order in IEEE double
    // precision, and the build forbids contracting them into fused
    // multiply-adds: equal inputs give equal doubles. Rounding M1 and M2 to
    // three decimals and the single final rounding to float leave no room
    // for a difference of order.
    ExpectDaylight(DaylightTable(6500), ReferenceDaylight(6500));
}

TEST(Daylight, At6500KItReproducesTheTabulatedD65ToItsSixDigits)
{
    // The published D65 table was made from the same components; the run
    // time daylight agrees with it to one unit in its sixth significant
    // digit at every 5 nm point.
    const StandardFilter daylight = DaylightTable(6500);
    for (unsigned i = 0; i < 107; ++i) {
        const float published = CMetry::Tables::IlluminantD65[5 * i];
        const double unit = std::pow(10.0, std::floor(std::log10(std::fabs(published))) - 5.0);
        EXPECT_NEAR(published, daylight.GetFilter()[i], unit) << 300 + 5 * i << " nm";
    }
}

TEST(Daylight, At5000KEveryValueEqualsTheDoublePrecisionMethod)
{
    ExpectDaylight(DaylightTable(5000), ReferenceDaylight(5000));
}

TEST(Daylight, ItIs100At560AndFollowsTheMethodAtEveryTemperature)
{
    for (const short temperature : {4000, 5003, 6504, 10000, 25000}) {
        SCOPED_TRACE(temperature);
        const StandardFilter filter = DaylightTable(temperature);
        EXPECT_EQ(100.0f, At(filter, 560));
        ExpectDaylight(filter, ReferenceDaylight(temperature));
    }
}

TEST(Daylight, BelowACorrectedTemperatureOf7000KTheFirstFormulaAppliesAndFromItTheSecond)
{
    // T' = T * 1.4388 / 1.438 is below 7000 up to T = 6996 and above from
    // T = 6997. No integer temperature corrects to exactly 7000.
    EXPECT_LT(CorrectedTemperature(6996), 7000.0);
    EXPECT_GT(CorrectedTemperature(6997), 7000.0);

    // The two formulas nearly meet at 7000 K, and at 6996 and 6997 K their
    // factors round to the same three decimals, so the switch shows only at
    // temperatures where they round apart: 6969 K is the nearest below,
    // 7019 K the nearest above.
    EXPECT_TRUE(ReferenceDaylight(6996, Branch::Lower) == ReferenceDaylight(6996, Branch::Upper));
    EXPECT_TRUE(ReferenceDaylight(6997, Branch::Lower) == ReferenceDaylight(6997, Branch::Upper));

    const StandardFilter below = DaylightTable(6969);
    EXPECT_TRUE(Matches(below, ReferenceDaylight(6969, Branch::Lower)));
    EXPECT_FALSE(Matches(below, ReferenceDaylight(6969, Branch::Upper)));

    const StandardFilter above = DaylightTable(7019);
    EXPECT_TRUE(Matches(above, ReferenceDaylight(7019, Branch::Upper)));
    EXPECT_FALSE(Matches(above, ReferenceDaylight(7019, Branch::Lower)));

    // 7000 K itself corrects to about 7003.9 K and takes the second formula.
    EXPECT_TRUE(Matches(DaylightTable(7000), ReferenceDaylight(7000, Branch::Upper)));
}

TEST(Daylight, AroundTheSwitchEveryTemperatureFollowsTheFormulaOfItsCorrectedTemperature)
{
    int distinguishingBelow = 0;
    int distinguishingAbove = 0;
    for (short temperature = 6900; temperature <= 7100; ++temperature) {
        SCOPED_TRACE(temperature);
        const bool lower = CorrectedTemperature(temperature) < 7000.0;
        const std::vector<float> chosen = ReferenceDaylight(temperature, lower ? Branch::Lower : Branch::Upper);
        const std::vector<float> other = ReferenceDaylight(temperature, lower ? Branch::Upper : Branch::Lower);
        EXPECT_TRUE(Matches(DaylightTable(temperature), chosen));
        if (chosen != other) {
            ++(lower ? distinguishingBelow : distinguishingAbove);
        }
    }
    // The range holds temperatures that tell the formulas apart on both
    // sides of the switch.
    EXPECT_GT(distinguishingBelow, 0);
    EXPECT_GT(distinguishingAbove, 0);
}

// ================================================================ CMetryFilter

TEST(CMetryFilter, FilterSumIsZeroForEveryAxisBeforeTheFirstEvaluation)
{
    const CMetryFilter filter;
    for (const unsigned short axis : {0, 1, 2, 3}) {
        EXPECT_EQ(0.0f, filter.GetFilterSum(axis)) << axis;
    }
    EXPECT_EQ(nullptr, TestAccess::CachedWeightfactors(filter));
}

TEST(CMetryFilter, IlluminationAndObserverBeforeTheFirstEvaluationRaiseNullpointer)
{
    CMetryFilter filter;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { static_cast<void>(TestAccess::GetIllumination(filter)); }));
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { static_cast<void>(TestAccess::GetObserver(filter)); }));
}

TEST(CMetryFilter, AfterAnEvaluationIlluminationAndObserverAreThoseOfTheConditions)
{
    CMetryFilter filter;
    const QVMeasureConditions conditions =
        With("Colorimetric.Observer", "TenDegree", With("Colorimetric.Illumination", "Dxx, Temperature:5000"));
    TestAccess::SetMeasuringConditions(filter, conditions);
    const QVIllumination& illumination = TestAccess::GetIllumination(filter);
    EXPECT_EQ(CMetry::IlluminationDxx, illumination.GetIlluminationTYPE());
    EXPECT_EQ(5000, illumination.GetColorTemperature());
    EXPECT_TRUE(illumination == TestAccess::GetIllumination(conditions));
    EXPECT_EQ(CMetry::ObserverTenDegree, TestAccess::GetObserver(filter));
}

TEST(CMetryFilter, SumsAfterAnEvaluationAreThoseOfTheCachedWeightfactors)
{
    CMetryFilter filter;
    const QVMeasureConditions conditions = With("Colorimetric.Illumination", "A");
    TestAccess::SetMeasuringConditions(filter, conditions);
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    ASSERT_NE(nullptr, cached);
    EXPECT_EQ(100.0f, filter.GetFilterSum(1));
    EXPECT_EQ(0.0f, filter.GetFilterSum(3));
    const Weightfactors independent(conditions);
    for (const unsigned short axis : {0, 1, 2, 3}) {
        EXPECT_EQ(cached->GetFilterSum(axis), filter.GetFilterSum(axis)) << axis;
        EXPECT_EQ(independent.GetFilterSum(axis), filter.GetFilterSum(axis)) << axis;
    }
    EXPECT_GT(filter.GetFilterSum(0), 0.0f);
    EXPECT_GT(filter.GetFilterSum(2), 0.0f);
}

TEST(CMetryFilter, TheSameConditionsAgainKeepTheFactors)
{
    CMetryFilter filter;
    const QVMeasureConditions conditions = With("Colorimetric.Illumination", "C");
    TestAccess::SetMeasuringConditions(filter, conditions);
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, conditions);
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions(conditions));
    EXPECT_EQ(cached, TestAccess::CachedWeightfactors(filter));
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
}

TEST(CMetryFilter, ConditionsBesideIlluminationObserverAndUserSpectrumKeepTheFactors)
{
    CMetryFilter filter;
    QVMeasureConditions conditions = With("Colorimetric.Illumination", "D50");
    TestAccess::SetMeasuringConditions(filter, conditions);
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    const float sums[] = {filter.GetFilterSum(0), filter.GetFilterSum(1), filter.GetFilterSum(2)};
    MarkCachedFactors(filter);

    const char* const changes[][2] = {
        {"Colorimetric.WhiteBase", "Paper"},
        {"ColorSpaceDescription.Type", "CIELuv"},
        {"ColorSpaceDescription.DeltaEFormula", "CMC"},
        {"Colorimetric.DensityStandard", "ANSIA"},
        {"Physical.Filter", "Polarizer"},
        {"Colorimetric.DensityFilterMode", "Cyan"},
        {"ColorSpaceDescription.AbsoluteOrDeltaVector", "DeltaVector"},
        {"Colorimetric.WhiteBase", "Absolute"},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(change[0]);
        const QVMeasureConditions before = conditions;
        conditions.SetMeasureCondition(String(change[0]), String(change[1]));
        ASSERT_FALSE(conditions == before);
        TestAccess::SetMeasuringConditions(filter, conditions);
        EXPECT_EQ(cached, TestAccess::CachedWeightfactors(filter));
        EXPECT_TRUE(CachedFactorsCarryMark(filter));
        for (unsigned short axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(sums[axis], filter.GetFilterSum(axis)) << axis;
        }
        EXPECT_EQ(CMetry::IlluminationD50, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
        EXPECT_EQ(CMetry::ObserverTwoDegree, TestAccess::GetObserver(filter));
    }
}

TEST(CMetryFilter, AnObserverChangeBuildsNewFactors)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    const float x = filter.GetFilterSum(0);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Observer", "TenDegree"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_NE(x, filter.GetFilterSum(0));
    EXPECT_EQ(CMetry::ObserverTenDegree, TestAccess::GetObserver(filter));
}

TEST(CMetryFilter, AnIlluminationChangeBuildsNewFactors)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    const float x = filter.GetFilterSum(0);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "A"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_NE(x, filter.GetFilterSum(0));
    EXPECT_EQ(CMetry::IlluminationA, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
}

TEST(CMetryFilter, AnotherDaylightTemperatureBuildsNewFactors)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:5000"));
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:5001"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(5001, TestAccess::GetIllumination(filter).GetColorTemperature());
}

TEST(CMetryFilter, DaylightTemperaturesWithTheSameTableStillBuildNewFactors)
{
    // 6995 K and 6996 K round to the same daylight factors: the sums cannot
    // show the rebuild, the mark does.
    ASSERT_TRUE(Matches(DaylightTable(6996), ReferenceDaylight(6995)));
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:6995"));
    const float sums[] = {filter.GetFilterSum(0), filter.GetFilterSum(2)};
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:6996"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(sums[0], filter.GetFilterSum(0));
    EXPECT_EQ(sums[1], filter.GetFilterSum(2));
    EXPECT_EQ(6996, TestAccess::GetIllumination(filter).GetColorTemperature());
}

TEST(CMetryFilter, AnotherFNumberBuildsNewFactors)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "F3"));
    const float x = filter.GetFilterSum(0);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "F4"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_NE(x, filter.GetFilterSum(0));
    EXPECT_EQ(4, TestAccess::GetIllumination(filter).GetFValue());
}

TEST(CMetryFilter, ANewUserSpectrumBuildsNewFactorsEvenWithEqualValues)
{
    // The user spectrum counts by identity: two spectra with the same values
    // are two spectra.
    const QVMeasureConditions first = WithUserSpectrum(UserSpectrum(10.0f));
    const QVMeasureConditions second = WithUserSpectrum(UserSpectrum(10.0f));
    ASSERT_FALSE(first == second);

    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, first);
    const float sums[] = {filter.GetFilterSum(0), filter.GetFilterSum(2)};
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, second);
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(sums[0], filter.GetFilterSum(0));
    EXPECT_EQ(sums[1], filter.GetFilterSum(2));
}

TEST(CMetryFilter, AUserSpectrumWithOtherValuesGivesOtherSums)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, WithUserSpectrum(UserSpectrum(10.0f)));
    const float x = filter.GetFilterSum(0);
    const float z = filter.GetFilterSum(2);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, WithUserSpectrum(UserSpectrum(80.0f)));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_NE(x, filter.GetFilterSum(0));
    EXPECT_NE(z, filter.GetFilterSum(2));
    EXPECT_EQ(100.0f, filter.GetFilterSum(1));
}

TEST(CMetryFilter, TheSameSharedUserSpectrumKeepsTheFactors)
{
    // A copy of a condition set shares its user spectrum.
    const QVMeasureConditions first = WithUserSpectrum(UserSpectrum(10.0f));
    const QVMeasureConditions second = With("Colorimetric.WhiteBase", "Paper", first);
    ASSERT_FALSE(first == second);

    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, first);
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, second);
    EXPECT_EQ(cached, TestAccess::CachedWeightfactors(filter));
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(CMetry::IlluminationUserdefined, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
}

// The factors of the last four table illuminations are kept and taken back
// (the mark survives), with the numbers a fresh build gives.
TEST(CMetryFilter, SwitchingBackToAnIlluminantTakesBackItsFactors)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "D65"));
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "D50"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    const CMetry::Weightfactors freshD50(With("Colorimetric.Illumination", "D50"));
    for (unsigned short axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(freshD50.GetFilterSum(axis), filter.GetFilterSum(axis)) << axis;
    }
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "D65"));
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(CMetry::IlluminationD65, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
    const CMetry::Weightfactors freshD65((QVMeasureConditions()));
    for (unsigned short axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(freshD65.GetFilterSum(axis), filter.GetFilterSum(axis)) << axis;
        for (int point = 1; point < 36; ++point) {
            EXPECT_EQ(freshD65[axis][point], TestAccess::CachedWeightfactors(filter)->operator[](axis)[point]);
        }
    }
}

TEST(CMetryFilter, FourOtherIlluminantsKeepTheFactorsAFifthDropsThem)
{
    const char* const others[] = {"A", "C", "D50", "F2", "F7"};
    for (int count = 4; count <= 5; ++count) {
        SCOPED_TRACE(count);
        CMetryFilter filter;
        TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "D65"));
        MarkCachedFactors(filter);
        for (int i = 0; i < count; ++i) {
            TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", others[i]));
        }
        TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "D65"));
        EXPECT_EQ(count == 4, CachedFactorsCarryMark(filter));
    }
}

TEST(CMetryFilter, KeptFactorsBelongToTheirObserver)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    const float x = filter.GetFilterSum(0);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Observer", "TenDegree"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_NE(x, filter.GetFilterSum(0));
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(x, filter.GetFilterSum(0));
    EXPECT_EQ(CMetry::ObserverTwoDegree, TestAccess::GetObserver(filter));
}

TEST(CMetryFilter, FactorsOfAUserSpectrumAreNotKept)
{
    // Its values may have changed in between: switching back builds anew.
    const QVMeasureConditions user = WithUserSpectrum(UserSpectrum(10.0f));
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, user);
    MarkCachedFactors(filter);

    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "D65"));
    TestAccess::SetMeasuringConditions(filter, user);
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(CMetry::IlluminationUserdefined, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
}

TEST(CMetryFilter, AnotherDaylightTemperatureIsNotTakenBackForTheFirst)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:5000"));
    MarkCachedFactors(filter);
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:6500"));
    EXPECT_FALSE(CachedFactorsCarryMark(filter));
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "Dxx, Temperature:5000"));
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(5000, TestAccess::GetIllumination(filter).GetColorTemperature());
}

TEST(CMetryFilter, AFailedBuildKeepsTheKeptFactors)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    MarkCachedFactors(filter);
    TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "A"));
    EXPECT_THROW(TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "F13")),
                 ExceptionCalculationProblem);
    EXPECT_EQ(CMetry::IlluminationA, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
}

TEST(CMetryFilter, AFailedRebuildKeepsTheCache)
{
    CMetryFilter filter;
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    const Weightfactors* cached = TestAccess::CachedWeightfactors(filter);
    const float x = filter.GetFilterSum(0);
    MarkCachedFactors(filter);

    EXPECT_EQ("Filter table is empty: its step size is 0",
              FailureText<ExceptionCalculationProblem>(
                  [&] { TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "F13")); }));
    EXPECT_EQ(cached, TestAccess::CachedWeightfactors(filter));
    EXPECT_TRUE(CachedFactorsCarryMark(filter));
    EXPECT_EQ(x, filter.GetFilterSum(0));
    EXPECT_EQ(CMetry::IlluminationD65, TestAccess::GetIllumination(filter).GetIlluminationTYPE());
}

TEST(CMetryFilter, AFailedFirstEvaluationLeavesTheFilterEmpty)
{
    CMetryFilter filter;
    EXPECT_EQ("Filter table is empty: its step size is 0",
              FailureText<ExceptionCalculationProblem>(
                  [&] { TestAccess::SetMeasuringConditions(filter, With("Colorimetric.Illumination", "F13")); }));
    EXPECT_EQ(nullptr, TestAccess::CachedWeightfactors(filter));
    EXPECT_EQ(0.0f, filter.GetFilterSum(1));
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { static_cast<void>(TestAccess::GetObserver(filter)); }));
}

TEST(CMetryFilter, TheTwoArgumentFormDoesNothing)
{
    CMetryFilter fresh;
    TestAccess::SetMeasuringConditions(fresh, QVIllumination(CMetry::IlluminationA), CMetry::ObserverTenDegree);
    EXPECT_EQ(nullptr, TestAccess::CachedWeightfactors(fresh));
    EXPECT_EQ(0.0f, fresh.GetFilterSum(1));
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { static_cast<void>(TestAccess::GetIllumination(fresh)); }));
    EXPECT_STREQ("Illumination: IlluminationTYPE: not defined; Observer: not defined",
                 fresh.GetValueString().c_str());

    CMetryFilter evaluated;
    TestAccess::SetMeasuringConditions(evaluated, QVMeasureConditions());
    const Weightfactors* cached = TestAccess::CachedWeightfactors(evaluated);
    const float x = evaluated.GetFilterSum(0);
    MarkCachedFactors(evaluated);
    TestAccess::SetMeasuringConditions(evaluated, QVIllumination(CMetry::IlluminationA), CMetry::ObserverTenDegree);
    EXPECT_EQ(cached, TestAccess::CachedWeightfactors(evaluated));
    EXPECT_TRUE(CachedFactorsCarryMark(evaluated));
    EXPECT_EQ(x, evaluated.GetFilterSum(0));
    EXPECT_EQ(CMetry::IlluminationD65, TestAccess::GetIllumination(evaluated).GetIlluminationTYPE());
    EXPECT_EQ(CMetry::ObserverTwoDegree, TestAccess::GetObserver(evaluated));
}

TEST(CMetryFilter, AssignmentCopiesNothing)
{
    CMetryFilter evaluated;
    TestAccess::SetMeasuringConditions(evaluated, With("Colorimetric.Illumination", "A"));
    const Weightfactors* cached = TestAccess::CachedWeightfactors(evaluated);
    const float x = evaluated.GetFilterSum(0);

    CMetryFilter target;
    target = evaluated;
    EXPECT_EQ(nullptr, TestAccess::CachedWeightfactors(target));
    EXPECT_EQ(0.0f, target.GetFilterSum(0));
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { static_cast<void>(TestAccess::GetIllumination(target)); }));

    const CMetryFilter fresh;
    evaluated = fresh;
    EXPECT_EQ(cached, TestAccess::CachedWeightfactors(evaluated));
    EXPECT_EQ(x, evaluated.GetFilterSum(0));
    EXPECT_EQ(CMetry::IlluminationA, TestAccess::GetIllumination(evaluated).GetIlluminationTYPE());
}

TEST(CMetryFilter, ValueStringShowsTheUnwrittenIlluminationAndObserver)
{
    CMetryFilter filter;
    EXPECT_STREQ("Illumination: IlluminationTYPE: not defined; Observer: not defined",
                 filter.GetValueString().c_str());
    // The shown pair is never written: evaluations leave the text alone.
    TestAccess::SetMeasuringConditions(filter,
                                       With("Colorimetric.Observer", "TenDegree", With("Colorimetric.Illumination", "A")));
    EXPECT_STREQ("Illumination: IlluminationTYPE: not defined; Observer: not defined",
                 filter.GetValueString().c_str());
}

TEST(CMetryFilter, HoldsThreeFilters)
{
    CMetryFilter filter;
    EXPECT_EQ(3UL, TestAccess::FilterCount(filter));
    TestAccess::SetMeasuringConditions(filter, QVMeasureConditions());
    EXPECT_EQ(3UL, TestAccess::FilterCount(filter));
}

TEST(CMetryFilter, NonSpectralChangesUpdateTheCachedConditions)
{
    CMetry::CMetryFilter filter;
    CMetry::QVMeasureConditions conditions;
    CMetry::TestAccess::SetMeasuringConditions(filter, conditions);
    conditions.SetMeasureCondition(Utilities::String("Colorimetric.WhiteBase"), Utilities::String("Paper"));
    CMetry::TestAccess::SetMeasuringConditions(filter, conditions);
    const CMetry::QVMeasureConditions* cached = CMetry::TestAccess::CachedConditions(filter);
    ASSERT_NE(nullptr, cached);
    EXPECT_EQ(CMetry::WhiteBasePaper, CMetry::TestAccess::GetWhiteBase(*cached));
    EXPECT_TRUE(*cached == conditions);
}
