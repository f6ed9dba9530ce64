// Mid, searching, Replace, the hash and case conversion.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <gtest/gtest.h>

#include <string>

using Utilities::ExceptionOutOfBound;
using Utilities::String;

TEST(StringMid, CountZeroMeansToTheEnd)
{
    EXPECT_STREQ("cd", String("abcd").Mid(2, 0).GetCharPointer());
}

TEST(StringMid, StartPastTheEndGivesEmpty)
{
    EXPECT_STREQ("", String("abcd").Mid(9, 1).GetCharPointer());
    EXPECT_STREQ("", String("abcd").Mid(4, 1).GetCharPointer());
    EXPECT_STREQ("", String().Mid(0, 0).GetCharPointer());
}

TEST(StringMid, CountPastTheEndTakesTheRest)
{
    EXPECT_STREQ("bcd", String("abcd").Mid(1, 100).GetCharPointer());
    EXPECT_STREQ("bcd", String("abcd").Mid(1, static_cast<unsigned long>(-1)).GetCharPointer());
}

TEST(StringMid, CountInsideTakesExactlyThat)
{
    EXPECT_STREQ("bc", String("abcd").Mid(1, 2).GetCharPointer());
    EXPECT_STREQ("a", String("abcd").Mid(0, 1).GetCharPointer());
}

TEST(StringPosition, FirstAtOrAfterStart)
{
    const String s("abcb");
    EXPECT_EQ(1, s.GetPosition('b', 0));
    EXPECT_EQ(1, s.GetPosition('b', 1));
    EXPECT_EQ(3, s.GetPosition('b', 2));
    EXPECT_EQ(-1, s.GetPosition('z', 0));
}

TEST(StringPosition, StartPastTheEndFindsNothing)
{
    EXPECT_EQ(-1, String("abcb").GetPosition('b', 4));
    EXPECT_EQ(-1, String("abcb").GetPosition('b', 1000));
}

TEST(StringPosition, EmptyStringFindsNothing)
{
    EXPECT_EQ(-1, String().GetPosition('a', 0));
    EXPECT_EQ(-1, String().GetPosition('\0', 0));
}

TEST(StringReversePosition, LastAtOrBeforeStart)
{
    const String s("abcb");
    EXPECT_EQ(1, s.GetReversePosition('b', 2));
    EXPECT_EQ(3, s.GetReversePosition('b', 3));
    EXPECT_EQ(0, s.GetReversePosition('a', 0));
    EXPECT_EQ(-1, s.GetReversePosition('c', 1));
    EXPECT_EQ(-1, s.GetReversePosition('z', 3));
}

TEST(StringReversePosition, NegativeOrTooLargeStartMeansTheLastCharacter)
{
    const String s("abcb");
    EXPECT_EQ(3, s.GetReversePosition('b', -1));
    EXPECT_EQ(3, s.GetReversePosition('b', -100));
    EXPECT_EQ(3, s.GetReversePosition('b', 5));
    EXPECT_EQ(3, s.GetReversePosition('b', 4));
}

TEST(StringReversePosition, EmptyStringFindsNothing)
{
    EXPECT_EQ(-1, String().GetReversePosition('a', -1));
    EXPECT_EQ(-1, String().GetReversePosition('a', 0));
}

TEST(StringFindSubstring, EmptyArgumentGivesTheStartWhateverItIs)
{
    EXPECT_EQ(7, String("abc").FindSubstring(String(), 7));
    EXPECT_EQ(7, String().FindSubstring(String(), 7));
    EXPECT_EQ(-3, String("abc").FindSubstring(String(), -3));
}

TEST(StringFindSubstring, FirstOccurrenceFromStart)
{
    const String s("abcdcd");
    EXPECT_EQ(2, s.FindSubstring(String("cd"), 0));
    EXPECT_EQ(2, s.FindSubstring(String("cd"), 2));
    EXPECT_EQ(4, s.FindSubstring(String("cd"), 3));
    EXPECT_EQ(0, s.FindSubstring(String("abcdcd"), 0));
    EXPECT_EQ(-1, s.FindSubstring(String("ce"), 0));
}

TEST(StringFindSubstring, ResumesOnePositionFurtherAfterAMismatch)
{
    EXPECT_EQ(1, String("aab").FindSubstring(String("ab"), 0));
    EXPECT_EQ(2, String("aaab").FindSubstring(String("ab"), 0));
}

TEST(StringFindSubstring, MatchRunningPastTheEndIsNotFound)
{
    EXPECT_EQ(-1, String("abc").FindSubstring(String("cd"), 0));
    EXPECT_EQ(-1, String("abab").FindSubstring(String("abx"), 0));
    EXPECT_EQ(-1, String("ab").FindSubstring(String("abc"), 0));
}

TEST(StringFindSubstring, NegativeStartFindsNothing)
{
    EXPECT_EQ(-1, String("abc").FindSubstring(String("a"), -1));
}

TEST(StringFindSubstring, EmptyStringFindsNothing)
{
    EXPECT_EQ(-1, String().FindSubstring(String("a"), 0));
}

TEST(StringReplace, ReplacementIsNeverSearchedAgain)
{
    String s("aa");
    s.Replace(String("a"), String("aa"));
    EXPECT_STREQ("aaaa", s.GetCharPointer());
}

TEST(StringReplace, EveryOccurrenceLeftToRightWithoutOverlap)
{
    String s("aaa");
    s.Replace(String("aa"), String("b"));
    EXPECT_STREQ("ba", s.GetCharPointer());

    String message("Key %KEY% is unknown: %KEY%!");
    message.Replace(String("%KEY%"), String("Colorimetric.Observer"));
    EXPECT_STREQ("Key Colorimetric.Observer is unknown: Colorimetric.Observer!", message.GetCharPointer());
}

TEST(StringReplace, EmptyReplacementRemoves)
{
    String s("a-b-c");
    s.Replace(String("-"), String());
    EXPECT_STREQ("abc", s.GetCharPointer());
}

TEST(StringReplace, EmptyArgumentsChangeNothing)
{
    String s("abc");
    s.Replace(String(), String("x"));
    EXPECT_STREQ("abc", s.GetCharPointer());
    String empty;
    empty.Replace(String("a"), String("x"));
    EXPECT_STREQ("", empty.GetCharPointer());
}

TEST(StringReplace, NoOccurrenceChangesNothing)
{
    String s("abc");
    s.Replace(String("x"), String("y"));
    EXPECT_STREQ("abc", s.GetCharPointer());
}

TEST(StringReplace, ArgumentsMayBeTheStringItself)
{
    String s("abc");
    s.Replace(String("b"), s);
    EXPECT_STREQ("aabcc", s.GetCharPointer());
    String t("abc");
    t.Replace(t, String("x"));
    EXPECT_STREQ("x", t.GetCharPointer());
}

TEST(StringReplace, GrowsAcrossTheInlineLimit)
{
    String s("%VALUE%");
    s.Replace(String("%VALUE%"), String("a value much longer than the buffer"));
    EXPECT_STREQ("a value much longer than the buffer", s.GetCharPointer());
    s.Replace(String("a value much longer than the buffer"), String("short"));
    EXPECT_STREQ("short", s.GetCharPointer());
}

TEST(StringAppend, AppendsAndFollowsTheStorageRule)
{
    String s("abc");
    s += String("def");
    EXPECT_STREQ("abcdef", s.GetCharPointer());
    s += String("ghijklmnopqrstu");
    EXPECT_EQ(21UL, s.Length());
    EXPECT_STREQ("abcdefghijklmnopqrstu", s.GetCharPointer());
    s += String("v");
    EXPECT_STREQ("abcdefghijklmnopqrstuv", s.GetCharPointer());
}

TEST(StringAppend, AppendingAStringToItselfIsSafe)
{
    String shortText("abc");
    shortText += shortText;
    EXPECT_STREQ("abcabc", shortText.GetCharPointer());
    String longText("a text longer than twenty");
    longText += longText;
    EXPECT_STREQ("a text longer than twentya text longer than twenty", longText.GetCharPointer());
}

TEST(StringAppend, EmptyRightSideDoesNothing)
{
    String s("abc");
    s += String();
    EXPECT_STREQ("abc", s.GetCharPointer());
}

TEST(StringAppend, PlusJoinsTwoTexts)
{
    EXPECT_STREQ("abcdef", (String("abc") + String("def")).GetCharPointer());
    EXPECT_STREQ("0123456789abcdefghijklmnop",
                 (String("0123456789") + String("abcdefghijklmnop")).GetCharPointer());
}

TEST(StringHash, SingleLettersLandInConsecutiveBuckets)
{
    EXPECT_EQ(44UL, String("a").GetHash(53));
    EXPECT_EQ(45UL, String("b").GetHash(53));
    EXPECT_EQ(46UL, String("c").GetHash(53));
}

TEST(StringHash, DescriptorKeysHashInTheirIterationOrder)
{
    // Reference values from the same recurrence evaluated with unbounded
    // integers and an explicit 32-bit mask.
    EXPECT_EQ(19UL, String("category").GetHash(53));
    EXPECT_EQ(23UL, String("name").GetHash(53));
    EXPECT_EQ(25UL, String("version").GetHash(53));
    EXPECT_EQ(28UL, String("Colorimetric.Illumination").GetHash(53));
}

TEST(StringHash, SumWrapsIn32Bits)
{
    EXPECT_EQ(1721961721UL, String("category").GetHash(4294967291UL));
    EXPECT_EQ(3016928302UL, String("version").GetHash(4294967291UL));
    EXPECT_EQ(3805719598UL, String("Colorimetric.Illumination").GetHash(4294967291UL));
    EXPECT_EQ(3805719598UL, String("Colorimetric.Illumination").GetHash(1UL << 40));
}

TEST(StringHash, HighBytesCountAsNegative)
{
    // 0xff sign-extends to 0xffffffff = 4294967295, which is 41 modulo 53;
    // read unsigned it would be 255, which is 43.
    EXPECT_EQ(41UL, String("\xff").GetHash(53));
    EXPECT_EQ(1UL, String("\xe9t\xe9").GetHash(53));
    EXPECT_EQ(4294880489UL, String("\xe9t\xe9").GetHash(4294967291UL));
}

TEST(StringHash, EmptyStringGivesZero)
{
    EXPECT_EQ(0UL, String().GetHash(53));
    EXPECT_EQ(0UL, String().GetHash(0));
}

TEST(StringHash, ModulusZeroIsRefused)
{
    try {
        String("a").GetHash(0);
        FAIL() << "no exception";
    } catch (const ExceptionOutOfBound& failure) {
        EXPECT_STREQ("String::GetHash(): modulus is 0", failure.GetExceptionText().GetCharPointer());
    }
}

TEST(StringCase, UpperAndLowerChangeLettersOnly)
{
    EXPECT_STREQ("ABCXYZ09.-", String("abcXYZ09.-").GetAsUpper().GetCharPointer());
    EXPECT_STREQ("abcxyz09.-", String("abcXYZ09.-").GetAsLower().GetCharPointer());
}

TEST(StringCase, BytesAbove127AreKept)
{
    EXPECT_STREQ("\xe9\xff", String("\xe9\xff").GetAsUpper().GetCharPointer());
    EXPECT_STREQ("\xc9\xff", String("\xc9\xff").GetAsLower().GetCharPointer());
}

TEST(StringCase, LongTextsAreConvertedWhole)
{
    EXPECT_STREQ("A TEXT LONGER THAN TWENTY CHARACTERS",
                 String("a text longer than twenty characters").GetAsUpper().GetCharPointer());
}
