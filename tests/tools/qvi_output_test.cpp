// qvi's number formatting, compiled into the test program.

#include "tools/qvi/output.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

namespace {

// What printf writes for the number, with a negative zero's sign dropped.
std::string Printf(double number, int decimals)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, number);
    std::string text(buffer);
    if (text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

} // namespace

TEST(QviFormatNumber, RoundsTheExactBinaryValueAsPrintfDoes)
{
    // Ties of the exact binary value go to even; 0.15 is below its tie.
    EXPECT_EQ("0.12", Qvi::FormatNumber(0.125, 2));
    EXPECT_EQ("0.38", Qvi::FormatNumber(0.375, 2));
    EXPECT_EQ("0.1", Qvi::FormatNumber(0.15, 1));
    EXPECT_EQ("2", Qvi::FormatNumber(2.5, 0));
    EXPECT_EQ("51.3483", Qvi::FormatNumber(51.34825, 4));
}

TEST(QviFormatNumber, NegativeZeroLosesItsSign)
{
    EXPECT_EQ("0.0000", Qvi::FormatNumber(-0.0, 4));
    EXPECT_EQ("0.00", Qvi::FormatNumber(-0.001, 2));
    EXPECT_EQ("-0.01", Qvi::FormatNumber(-0.006, 2));
}

TEST(QviFormatNumber, NonFiniteNumbersAreMissing)
{
    EXPECT_EQ("", Qvi::FormatNumber(std::numeric_limits<double>::infinity(), 4));
    EXPECT_EQ("", Qvi::FormatNumber(std::numeric_limits<double>::quiet_NaN(), 4));
}

TEST(QviFormatNumber, NumbersTooLongForTheBufferAreCutAsBefore)
{
    // 1e300 with 12 decimals needs 314 characters: printf's 63 are kept.
    EXPECT_EQ(Printf(1e300, 12), Qvi::FormatNumber(1e300, 12));
    EXPECT_EQ(63u, Qvi::FormatNumber(1e300, 12).size());
    EXPECT_EQ(Printf(-1e60, 4), Qvi::FormatNumber(-1e60, 4));
}

TEST(QviFormatNumber, AgreesWithPrintfOnRandomNumbers)
{
    std::uint64_t state = 7;
    const auto next = [&state] {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return state;
    };
    for (int i = 0; i < 300000; ++i) {
        // Random bit patterns over a wide range of exponents, and floats as
        // the library delivers them.
        std::uint64_t bits = next();
        double number;
        std::memcpy(&number, &bits, sizeof number);
        if (!std::isfinite(number) || std::fabs(number) > 1e40) {
            number = std::ldexp(static_cast<double>(static_cast<std::int64_t>(next()) >> 11), -40);
        }
        if (i % 2 == 0 && std::fabs(number) < 3e38) {
            number = static_cast<float>(number);
        }
        const int decimals = static_cast<int>(next() % 13);
        ASSERT_EQ(Printf(number, decimals), Qvi::FormatNumber(number, decimals)) << number << " " << decimals;
    }
}
