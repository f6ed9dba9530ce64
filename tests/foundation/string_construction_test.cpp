#include "qvimanager/foundation/string.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <utility>

using Utilities::String;

namespace {

// True when the text lives in the string's own inline buffer.
bool IsInline(const String& s)
{
    const auto* begin = reinterpret_cast<const char*>(&s);
    const char* text = s.GetCharPointer();
    return text >= begin && text < begin + sizeof(String);
}

} // namespace

TEST(StringConstruction, DefaultIsEmpty)
{
    const String s;
    EXPECT_EQ(0UL, s.Length());
    EXPECT_STREQ("", s.GetCharPointer());
}

TEST(StringConstruction, NineteenCharactersStayInline)
{
    const String s("0123456789012345678");
    EXPECT_EQ(19UL, s.Length());
    EXPECT_TRUE(IsInline(s));
    EXPECT_STREQ("0123456789012345678", s.GetCharPointer());
}

TEST(StringConstruction, TwentyCharactersGoToTheHeap)
{
    const String s("01234567890123456789");
    EXPECT_EQ(20UL, s.Length());
    EXPECT_FALSE(IsInline(s));
    EXPECT_STREQ("01234567890123456789", s.GetCharPointer());
}

TEST(StringConstruction, NullPointerGivesEmptyString)
{
    const String s(static_cast<const char*>(nullptr));
    EXPECT_EQ(0UL, s.Length());
    EXPECT_STREQ("", s.GetCharPointer());
}

TEST(StringConstruction, CharacterZeroGivesEmptyString)
{
    const String s('\0');
    EXPECT_EQ(0UL, s.Length());
    EXPECT_STREQ("", s.GetCharPointer());
}

TEST(StringConstruction, OneCharacter)
{
    const String s('x');
    EXPECT_EQ(1UL, s.Length());
    EXPECT_STREQ("x", s.GetCharPointer());
}

TEST(StringConstruction, LongZeroGivesOneDigit)
{
    EXPECT_STREQ("0", String(0L).GetCharPointer());
}

TEST(StringConstruction, LongWritesSignAndDigitsOnly)
{
    EXPECT_STREQ("123456", String(123456L).GetCharPointer());
    EXPECT_STREQ("-42", String(-42L).GetCharPointer());
    EXPECT_STREQ("1000000", String(1000000L).GetCharPointer());
}

TEST(StringConstruction, MostNegative32BitLong)
{
    EXPECT_STREQ("-2147483648", String(-2147483648L).GetCharPointer());
    EXPECT_STREQ("2147483647", String(2147483647L).GetCharPointer());
}

TEST(StringConstruction, LongWritesItsFullWidth)
{
    EXPECT_STREQ("-9223372036854775808", String(LONG_MIN).GetCharPointer());
    EXPECT_STREQ("9223372036854775807", String(LONG_MAX).GetCharPointer());
}

TEST(StringConstruction, UnsignedLong)
{
    EXPECT_STREQ("0", String(0UL).GetCharPointer());
    EXPECT_STREQ("4294967295", String(4294967295UL).GetCharPointer());
    EXPECT_STREQ("18446744073709551615", String(ULONG_MAX).GetCharPointer());
}

TEST(StringConstruction, ShortFormsGiveTheSameTextAsTheWideForms)
{
    EXPECT_STREQ("-32768", String(static_cast<short>(-32768)).GetCharPointer());
    EXPECT_STREQ("32767", String(static_cast<short>(32767)).GetCharPointer());
    EXPECT_STREQ("65535", String(static_cast<unsigned short>(65535)).GetCharPointer());
    EXPECT_STREQ("0", String(static_cast<unsigned short>(0)).GetCharPointer());
    EXPECT_STREQ("-7", String(-7).GetCharPointer());
    EXPECT_STREQ("7", String(7U).GetCharPointer());
}

TEST(StringConstruction, StdStringCopiesEveryByteIncludingNul)
{
    const std::string source("a\0b", 3);
    const String s(source);
    EXPECT_EQ(3UL, s.Length());
    EXPECT_EQ(0, std::memcmp("a\0b", s.GetCharPointer(), 4));
}

TEST(StringConstruction, ConversionToStdStringStopsAtFirstNul)
{
    const String s(std::string("ab\0cd", 5));
    const std::string back = s;
    EXPECT_EQ(std::string("ab"), back);
    EXPECT_EQ(std::string("hello"), static_cast<std::string>(String("hello")));
}

TEST(StringConstruction, CopyHasTheSameText)
{
    const String heap("a text longer than twenty characters");
    const String copy(heap);
    EXPECT_STREQ(heap.GetCharPointer(), copy.GetCharPointer());
    EXPECT_NE(heap.GetCharPointer(), copy.GetCharPointer());
    const String shortText("abc");
    const String shortCopy(shortText);
    EXPECT_TRUE(IsInline(shortCopy));
    EXPECT_STREQ("abc", shortCopy.GetCharPointer());
}

TEST(StringConstruction, SelfAssignmentDoesNothing)
{
    String s("a text longer than twenty characters");
    const char* before = s.GetCharPointer();
    const String& self = s;
    s = self;
    EXPECT_EQ(before, s.GetCharPointer());
    EXPECT_STREQ("a text longer than twenty characters", s.GetCharPointer());
}

TEST(StringConstruction, AssignmentFollowsTheStorageRule)
{
    String s("a text longer than twenty characters");
    s = String("short");
    EXPECT_TRUE(IsInline(s));
    EXPECT_STREQ("short", s.GetCharPointer());
    s = String("another text longer than twenty");
    EXPECT_FALSE(IsInline(s));
    EXPECT_STREQ("another text longer than twenty", s.GetCharPointer());
}

TEST(StringConstruction, MoveLeavesTheSourceEmpty)
{
    String heap("a text longer than twenty characters");
    String target(std::move(heap));
    EXPECT_STREQ("a text longer than twenty characters", target.GetCharPointer());
    EXPECT_EQ(0UL, heap.Length()); // NOLINT(bugprone-use-after-move): the moved-from state is specified
    EXPECT_STREQ("", heap.GetCharPointer());

    String shortText("abc");
    String other("xyz");
    other = std::move(shortText);
    EXPECT_STREQ("abc", other.GetCharPointer());
    EXPECT_TRUE(IsInline(other));
    EXPECT_EQ(0UL, shortText.Length()); // NOLINT(bugprone-use-after-move)
}

TEST(StringConstruction, MovedStringKeepsTheSourceStamp)
{
    String source("ab");
    const String upper = source.GetAsUpper();
    const String moved(std::move(source));
    // Same stamp as the source: operator!= takes the shortcut.
    EXPECT_FALSE(moved != upper);
}

TEST(StringConstruction, GetValueStringHasTheSameText)
{
    EXPECT_STREQ("Colorimetric.Illumination", String("Colorimetric.Illumination").GetValueString().c_str());
}
