// Double to text: the library's own digit algorithm, rounding half up on the
// magnitude after scaling by powers of ten in double precision.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using Utilities::ExceptionOutOfBound;
using Utilities::String;

namespace {

std::string Text(double value, short decimals, char separator = '.')
{
    return String(value, decimals, separator);
}

} // namespace

TEST(StringDouble, HalfRoundsUp)
{
    EXPECT_EQ("1", Text(0.5, 0));
    EXPECT_EQ("3", Text(2.5, 0));
    EXPECT_EQ("-3", Text(-2.5, 0));
}

TEST(StringDouble, ZeroWithDecimals)
{
    EXPECT_EQ("0.00", Text(0.0, 2));
    EXPECT_EQ("0", Text(0.0, 0));
}

TEST(StringDouble, NegativeValueThatRoundsToZeroLosesItsSign)
{
    EXPECT_EQ("0.00", Text(-0.001, 2));
    EXPECT_EQ("0", Text(-0.4, 0));
}

TEST(StringDouble, LargeValuesTakeTheExponentForm)
{
    EXPECT_EQ("1.50E+20", Text(1.5e20, 2));
    EXPECT_EQ("-1.50E+20", Text(-1.5e20, 2));
    EXPECT_EQ("1.0E+16", Text(1e16, 1));
}

TEST(StringDouble, ValuesBelowTenToTheSixteenAreWrittenInFull)
{
    EXPECT_EQ("1000000000000000", Text(1e15, 0));
    EXPECT_EQ("9999999999999", Text(9999999999999.0, 0));
    EXPECT_EQ("123456789012345", Text(123456789012345.0, 0));
}

TEST(StringDouble, ExponentFormIsDecidedByTheDoubleLogarithm)
{
    // log10(9999999999999998) rounds to exactly 16 in double precision, so
    // this value just below 1e16 takes the exponent form.
    EXPECT_EQ("1E+16", Text(9999999999999998.0, 0));
}

TEST(StringDouble, OwnRoundingWorksOnTheScaledValue)
{
    // 0.15 is stored a little below 0.15, but 0.15 * 10 rounds to exactly
    // 1.5 in double precision, so the half goes up; the C library's "%.1f"
    // would write 0.1.
    EXPECT_EQ("0.2", Text(0.15, 1));
    EXPECT_EQ("1234.57", Text(1234.5678, 2));
    EXPECT_EQ("100.00", Text(99.999, 2));
    EXPECT_EQ("42", Text(42.0, 0));
    EXPECT_EQ("0.1", Text(0.05, 1));
}

TEST(StringDouble, NegativeValues)
{
    EXPECT_EQ("-0.50", Text(-0.5, 2));
    EXPECT_EQ("-1.5", Text(-1.5, 1));
    EXPECT_EQ("-12.25", Text(-12.25, 2));
}

TEST(StringDouble, OtherSeparatorDropsTheSignBetweenMinusOneAndZero)
{
    EXPECT_EQ("0,50", Text(-0.5, 2, ','));
    EXPECT_EQ("-1,5", Text(-1.5, 1, ','));
    EXPECT_EQ("12,25", Text(12.25, 2, ','));
}

TEST(StringDouble, NegativeDecimalsCountAsNone)
{
    EXPECT_EQ("2", Text(2.4, -3));
}

TEST(StringDouble, NonFiniteValuesAreRefused)
{
    for (const double value : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        try {
            String text(value, 2, '.');
            FAIL() << "no exception for " << value;
        } catch (const ExceptionOutOfBound& failure) {
            EXPECT_STREQ("Can't convert a value that is not finite to text.",
                         failure.GetExceptionText().GetCharPointer());
        }
    }
}

TEST(StringDouble, RoundingThatOverflowsIsRefused)
{
    try {
        String text(1.0, 400, '.');
        FAIL() << "no exception";
    } catch (const ExceptionOutOfBound& failure) {
        EXPECT_STREQ("Can't convert a value that is not finite to text.",
                     failure.GetExceptionText().GetCharPointer());
    }
}

TEST(StringDouble, ManyDecimalsDoNotOverrunAnything)
{
    const String text(0.25, 100, '.');
    EXPECT_EQ(102UL, text.Length());
    EXPECT_EQ(0, std::string(text).compare(0, 4, "0.25"));
}

TEST(StringDouble, LargestDoubleHasThreeHundredAndEightAsExponent)
{
    const std::string text = Text(std::numeric_limits<double>::max(), 3);
    EXPECT_EQ("E+308", text.substr(text.size() - 5));
    EXPECT_EQ("1.798", text.substr(0, 5));
}

TEST(StringDouble, TinyValuesRoundToZero)
{
    EXPECT_EQ("0.000", Text(std::numeric_limits<double>::denorm_min(), 3));
}
