// Tokens: the pieces between single-character separators. The operations
// disagree about empty pieces on purpose.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <string>

using Utilities::String;

using TestSupport::FailureText;

TEST(StringTokens, EmptyPiecesCount)
{
    EXPECT_EQ(3UL, String("a,,b").GetTokenCount(','));
    EXPECT_EQ(1UL, String("abc").GetTokenCount(','));
    EXPECT_EQ(2UL, String("a,").GetTokenCount(','));
    EXPECT_EQ(2UL, String(",").GetTokenCount(','));
}

TEST(StringTokens, EmptyStringHasNoTokens)
{
    EXPECT_EQ(0UL, String().GetTokenCount(','));
}

TEST(StringTokens, TokenBetweenTwoSeparatorsIsEmpty)
{
    const String s("a,,b");
    EXPECT_STREQ("a", s.GetToken(0, ',').GetCharPointer());
    EXPECT_STREQ("", s.GetToken(1, ',').GetCharPointer());
    EXPECT_STREQ("b", s.GetToken(2, ',').GetCharPointer());
}

TEST(StringTokens, LastTokenIsTheRest)
{
    EXPECT_STREQ("Illumination", String("Colorimetric.Illumination").GetToken(1, '.').GetCharPointer());
    EXPECT_STREQ("abc", String("abc").GetToken(0, ',').GetCharPointer());
    EXPECT_STREQ("", String("a,").GetToken(1, ',').GetCharPointer());
    EXPECT_STREQ("", String().GetToken(0, ',').GetCharPointer());
}

TEST(StringTokens, MissingSeparatorThrowsStringEmptyAlsoOnANonEmptyString)
{
    EXPECT_EQ("String empty", FailureText([] { String("a,b").GetToken(5, ','); }));
    EXPECT_EQ("String empty", FailureText([] { String("a,b").GetToken(2, ','); }));
    EXPECT_EQ("String empty", FailureText([] { String().GetToken(1, ','); }));
}

TEST(StringTokens, LeftTokensJoinTokensZeroToN)
{
    const String s("a,b,c");
    EXPECT_STREQ("a", s.GetLeftTokens(0, ',').GetCharPointer());
    EXPECT_STREQ("a,b", s.GetLeftTokens(1, ',').GetCharPointer());
    EXPECT_STREQ("a,b,c", s.GetLeftTokens(2, ',').GetCharPointer());
    EXPECT_STREQ("", String(",b").GetLeftTokens(0, ',').GetCharPointer());
    EXPECT_STREQ("a,", String("a,,b").GetLeftTokens(1, ',').GetCharPointer());
}

TEST(StringTokens, RightTokensJoinTokensNToTheLast)
{
    const String s("a,b,c");
    EXPECT_STREQ("a,b,c", s.GetRightTokens(0, ',').GetCharPointer());
    EXPECT_STREQ("b,c", s.GetRightTokens(1, ',').GetCharPointer());
    EXPECT_STREQ("c", s.GetRightTokens(2, ',').GetCharPointer());
    EXPECT_STREQ("", String("a,").GetRightTokens(1, ',').GetCharPointer());
    EXPECT_STREQ(",b", String("a,,b").GetRightTokens(1, ',').GetCharPointer());
}

TEST(StringTokens, LeftAndRightTokensRefuseATooLargeNumber)
{
    EXPECT_EQ("Token number too large", FailureText([] { String("a,b,c").GetLeftTokens(3, ','); }));
    EXPECT_EQ("Token number too large", FailureText([] { String("a,b,c").GetRightTokens(3, ','); }));
    EXPECT_EQ("Token number too large", FailureText([] { String().GetLeftTokens(0, ','); }));
    EXPECT_EQ("Token number too large", FailureText([] { String().GetRightTokens(0, ','); }));
}

TEST(StringTokens, LeftTokensTakeAFreshStampEvenForTheWholeText)
{
    const String s("ab");
    EXPECT_TRUE(s.GetLeftTokens(0, ',') != s.GetAsUpper());
    EXPECT_TRUE(s.GetRightTokens(0, ',') != s.GetAsUpper());
}
