// Nothing in String may crash or read past its data, whatever the input:
// empty strings, NULs inside, very long texts, bytes above 127.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using Utilities::ExceptionOutOfBound;
using Utilities::String;

namespace {

const unsigned long kTenMegabytes = 10UL * 1024UL * 1024UL;

} // namespace

TEST(StringHostileInput, EveryOperationOnTheEmptyString)
{
    const String empty;
    EXPECT_EQ(0UL, empty.GetHash(53));
    EXPECT_EQ(-1, empty.GetPosition('a', 5));
    EXPECT_EQ(-1, empty.GetReversePosition('a', 5));
    EXPECT_EQ(-1, empty.FindSubstring(String("a"), 0));
    EXPECT_EQ(0UL, empty.GetTokenCount(','));
    EXPECT_STREQ("", empty.GetToken(0, ',').GetCharPointer());
    EXPECT_STREQ("", empty.Mid(0, 5).GetCharPointer());
    EXPECT_STREQ("", empty.GetAsUpper().GetCharPointer());
    EXPECT_STREQ("", empty.GetAsLower().GetCharPointer());
    EXPECT_STREQ("", empty.GetValueString().c_str());
    EXPECT_EQ(0.0, empty.GetDouble());
    EXPECT_THROW(empty.GetShort(), ExceptionOutOfBound);
    EXPECT_THROW(empty.GetUnsignedShort(), ExceptionOutOfBound);
    EXPECT_THROW(empty.GetLong(), ExceptionOutOfBound);
    EXPECT_THROW(empty.GetUnsignedLong(), ExceptionOutOfBound);
    EXPECT_EQ(std::string(), static_cast<std::string>(empty));
}

TEST(StringHostileInput, NulInsideAStdString)
{
    const String s(std::string("12\0" "34,5", 7));
    EXPECT_EQ(7UL, s.Length());
    EXPECT_EQ(12UL, s.GetUnsignedLong());
    EXPECT_EQ(12L, s.GetLong());
    EXPECT_EQ(12.0, s.GetDouble());
    EXPECT_EQ(2, s.GetPosition('\0', 0));
    EXPECT_EQ(2, s.GetReversePosition('\0', -1));
    EXPECT_EQ(2UL, s.GetTokenCount('\0'));
    EXPECT_STREQ("34,5", s.GetToken(1, '\0').GetCharPointer());
    EXPECT_EQ(3, s.FindSubstring(String("34"), 0));
    const String tail = s.Mid(3, 0);
    EXPECT_STREQ("34,5", tail.GetCharPointer());
    const String copy(s);
    EXPECT_EQ(7UL, copy.Length());
    EXPECT_EQ(0, std::memcmp(s.GetCharPointer(), copy.GetCharPointer(), 8));
    EXPECT_STREQ("12", s.GetValueString().c_str());
}

TEST(StringHostileInput, NulInsideSurvivesAppendAndReplace)
{
    String s(std::string("a\0b", 3));
    s += String(std::string("\0c", 2));
    EXPECT_EQ(5UL, s.Length());
    EXPECT_EQ(0, std::memcmp("a\0b\0c", s.GetCharPointer(), 6));
    s.Replace(String("b"), String("xyz"));
    EXPECT_EQ(7UL, s.Length());
    EXPECT_EQ(0, std::memcmp("a\0xyz\0c", s.GetCharPointer(), 8));
}

TEST(StringHostileInput, TenMegabyteStrings)
{
    const String big(std::string(kTenMegabytes, 'a'));
    EXPECT_EQ(kTenMegabytes, big.Length());

    String doubled(big);
    doubled += big;
    EXPECT_EQ(2 * kTenMegabytes, doubled.Length());

    String replaced(big);
    replaced.Replace(String("a"), String("bb"));
    EXPECT_EQ(2 * kTenMegabytes, replaced.Length());
    EXPECT_EQ(-1, replaced.GetPosition('a', 0));

    EXPECT_EQ(-1, big.FindSubstring(String("ab"), 0));
    EXPECT_EQ(static_cast<long>(kTenMegabytes - 1), big.GetReversePosition('a', -1));
    EXPECT_EQ(1UL, big.GetTokenCount(','));
    EXPECT_EQ(kTenMegabytes, big.GetToken(0, ',').Length());
    EXPECT_EQ(kTenMegabytes, big.GetAsUpper().Length());
    EXPECT_EQ(255U, std::strlen(big.GetValueString().c_str()));
    EXPECT_LT(big.GetHash(53), 53UL);
}

TEST(StringHostileInput, TenMegabyteNumberIsRefused)
{
    const String digits(std::string(kTenMegabytes, '9'));
    try {
        digits.GetUnsignedLong();
        FAIL() << "no exception";
    } catch (const ExceptionOutOfBound& failure) {
        const String& text = failure.GetExceptionText();
        EXPECT_EQ(kTenMegabytes + std::strlen(" is to big for an unsigned long."), text.Length());
        EXPECT_EQ(static_cast<long>(kTenMegabytes), text.FindSubstring(String(" is to big"), 0));
    }
}

TEST(StringHostileInput, ManyReplacementsDoNotExhaustTheStack)
{
    String s(std::string(kTenMegabytes, ','));
    s.Replace(String(","), String());
    EXPECT_EQ(0UL, s.Length());
}

TEST(StringHostileInput, BytesAbove127)
{
    const String s("\xe9t\xe9");
    EXPECT_EQ(3UL, s.Length());
    EXPECT_EQ(1, s.GetPosition('t', 0));
    EXPECT_EQ(2, s.GetReversePosition('\xe9', -1));
    EXPECT_EQ(2UL, s.GetTokenCount('t'));
    EXPECT_STREQ("\xe9", s.GetToken(1, 't').GetCharPointer());
    try {
        s.GetUnsignedLong();
        FAIL() << "no exception";
    } catch (const ExceptionOutOfBound& failure) {
        EXPECT_STREQ("\xe9t\xe9 is not a valid number.", failure.GetExceptionText().GetCharPointer());
    }
    EXPECT_EQ(0.0, s.GetDouble());
}

TEST(StringHostileInput, HugeIndicesAndCounts)
{
    const String s("abc");
    const unsigned long huge = static_cast<unsigned long>(-1);
    EXPECT_STREQ("", s.Mid(huge, huge).GetCharPointer());
    EXPECT_STREQ("bc", s.Mid(1, huge).GetCharPointer());
    EXPECT_EQ(-1, s.GetPosition('a', huge));
    EXPECT_THROW(s.GetToken(huge, ','), ExceptionOutOfBound);
    EXPECT_THROW(s.GetLeftTokens(huge, ','), ExceptionOutOfBound);
    EXPECT_THROW(s.GetRightTokens(huge, ','), ExceptionOutOfBound);
    EXPECT_EQ(-1, s.FindSubstring(String("a"), 1L << 40));
}

TEST(StringHostileInput, LongNumberTextsWithLeadingZeros)
{
    EXPECT_EQ(4294967295UL, String(std::string(1000, '0') + "4294967295").GetUnsignedLong());
    EXPECT_EQ(-32768, String(std::string(50, ' ') + "-" + std::string(50, '0') + "32768").GetShort());
}
