// Text to number. The limits are those of 32-bit integers on every platform;
// every refusal is an ExceptionOutOfBound whose text is the string's text
// followed by the reason ("is to big" as it stands).

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <string>

using Utilities::String;

using TestSupport::FailureText;

TEST(StringUnsignedLong, AcceptsTheLargest32BitValue)
{
    EXPECT_EQ(4294967295UL, String("4294967295").GetUnsignedLong());
}

TEST(StringUnsignedLong, RefusesOneMoreOnThisMachineToo)
{
    EXPECT_EQ("4294967296 is to big for an unsigned long.",
              FailureText([] { String("4294967296").GetUnsignedLong(); }));
    EXPECT_EQ("4294967300 is to big for an unsigned long.",
              FailureText([] { String("4294967300").GetUnsignedLong(); }));
    EXPECT_EQ("99999999999 is to big for an unsigned long.",
              FailureText([] { String("99999999999").GetUnsignedLong(); }));
}

TEST(StringUnsignedLong, EmptyTextIsNotANumber)
{
    EXPECT_EQ(" is not a valid number.", FailureText([] { String().GetUnsignedLong(); }));
}

TEST(StringUnsignedLong, LettersAreNotANumber)
{
    EXPECT_EQ("abc is not a valid number.", FailureText([] { String("abc").GetUnsignedLong(); }));
}

TEST(StringUnsignedLong, MinusIsNotANumber)
{
    EXPECT_EQ("-5 is not a valid number.", FailureText([] { String("-5").GetUnsignedLong(); }));
}

TEST(StringUnsignedLong, BlanksTabsAndPlusAreSkippedAndTrailingTextEndsTheNumber)
{
    EXPECT_EQ(12UL, String("  +12x").GetUnsignedLong());
    EXPECT_EQ(7UL, String("\t 7").GetUnsignedLong());
    EXPECT_EQ(12UL, String("12abc").GetUnsignedLong());
    EXPECT_EQ(0UL, String("0").GetUnsignedLong());
    EXPECT_EQ(42UL, String("00042").GetUnsignedLong());
}

TEST(StringUnsignedLong, PlusWithoutDigitsIsZero)
{
    EXPECT_EQ(0UL, String("+").GetUnsignedLong());
    EXPECT_EQ(0UL, String("+abc").GetUnsignedLong());
}

TEST(StringUnsignedLong, OnlyOnePlusIsSkipped)
{
    EXPECT_EQ(0UL, String("++5").GetUnsignedLong());
}

TEST(StringUnsignedShort, AcceptsUpTo65535)
{
    EXPECT_EQ(65535, String("65535").GetUnsignedShort());
    EXPECT_EQ(0, String("0").GetUnsignedShort());
}

TEST(StringUnsignedShort, Refuses65536AsTooBigForAShort)
{
    EXPECT_EQ("65536 is to big for a short.", FailureText([] { String("65536").GetUnsignedShort(); }));
}

TEST(StringUnsignedShort, MinusIsNotANumber)
{
    EXPECT_EQ("-1 is not a valid number.", FailureText([] { String("-1").GetUnsignedShort(); }));
}

TEST(StringUnsignedShort, HugeValuesFailInTheCore)
{
    EXPECT_EQ("5000000000 is to big for an unsigned long.",
              FailureText([] { String("5000000000").GetUnsignedShort(); }));
}

TEST(StringShort, AcceptsTheLimits)
{
    EXPECT_EQ(-32768, String("-32768").GetShort());
    EXPECT_EQ(32767, String("32767").GetShort());
    EXPECT_EQ(0, String("-0").GetShort());
}

TEST(StringShort, RefusesBeyondTheLimits)
{
    EXPECT_EQ("32768 is to big for a short.", FailureText([] { String("32768").GetShort(); }));
    EXPECT_EQ("-32769 is to big for a short.", FailureText([] { String("-32769").GetShort(); }));
}

TEST(StringShort, BlankOrPlusAfterTheMinusIsAccepted)
{
    EXPECT_EQ(-5, String("- 5").GetShort());
    EXPECT_EQ(-5, String("-+5").GetShort());
    EXPECT_EQ(-5, String("  -5").GetShort());
    EXPECT_EQ(5, String("+5").GetShort());
}

TEST(StringShort, OnlyBlanksAreSkippedBeforeTheMinus)
{
    EXPECT_EQ("\t-5 is not a valid number.", FailureText([] { String("\t-5").GetShort(); }));
    EXPECT_EQ(5, String("\t5").GetShort());
}

TEST(StringShort, SecondMinusIsNotANumber)
{
    EXPECT_EQ("--5 is not a valid number.", FailureText([] { String("--5").GetShort(); }));
}

TEST(StringLong, AcceptsTheLimits)
{
    EXPECT_EQ(-2147483648L, String("-2147483648").GetLong());
    EXPECT_EQ(2147483647L, String("2147483647").GetLong());
}

TEST(StringLong, RefusesBeyondTheLimits)
{
    EXPECT_EQ("2147483648 is to big for a long.", FailureText([] { String("2147483648").GetLong(); }));
    EXPECT_EQ("-2147483649 is to big for a long.", FailureText([] { String("-2147483649").GetLong(); }));
    EXPECT_EQ("4294967296 is to big for an unsigned long.", FailureText([] { String("4294967296").GetLong(); }));
}

TEST(StringLong, BlankOrPlusAfterTheMinusIsAccepted)
{
    EXPECT_EQ(-5L, String("- 5").GetLong());
    EXPECT_EQ(-5L, String("-+5").GetLong());
    EXPECT_EQ(123L, String("   123 apples").GetLong());
}

TEST(StringLong, EmptyAndMinusAloneAreNotNumbers)
{
    EXPECT_EQ(" is not a valid number.", FailureText([] { String("").GetLong(); }));
    EXPECT_EQ("- is not a valid number.", FailureText([] { String("-").GetLong(); }));
}

TEST(StringDoubleValue, ReadsTheTextAsTheCLibraryDoes)
{
    EXPECT_EQ(1.5, String("1.5").GetDouble());
    EXPECT_EQ(-2500.0, String("  -2.5e3x").GetDouble());
    EXPECT_EQ(0.1, String("0.1").GetDouble());
    EXPECT_EQ(16.0, String("0x10").GetDouble());
}

TEST(StringDoubleValue, TextThatIsNoNumberGivesZero)
{
    EXPECT_EQ(0.0, String("abc").GetDouble());
    EXPECT_EQ(0.0, String().GetDouble());
    EXPECT_EQ(1.0, String("1,5").GetDouble());
}
