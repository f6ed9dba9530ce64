// Comparison and the stamp rules. A stamp is seen only through operator!=:
// two strings of equal length and equal stamp are "not unequal" whatever
// their text. So "x has the stamp of s" is tested as x != y being false for a
// y with s's stamp and a different text of the same length (GetAsUpper keeps
// the stamp), and "x has a fresh stamp" as x != y being true where the old
// rule would have shared one.

#include "qvimanager/foundation/string.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using Utilities::String;

TEST(StringCompare, EqualityNeedsEqualLengthAndEqualText)
{
    EXPECT_TRUE(String("abc") == String("abc"));
    EXPECT_FALSE(String("abc") == String("abd"));
    EXPECT_FALSE(String("abc") == String("ab"));
    EXPECT_TRUE(String() == String(""));
}

TEST(StringCompare, InequalityOfDifferentTexts)
{
    EXPECT_TRUE(String("abc") != String("abd"));
    EXPECT_TRUE(String("abc") != String("abcd"));
    EXPECT_FALSE(String("abc") != String("abc"));
}

TEST(StringCompare, UpperCaseCopyIsNeitherEqualNorUnequal)
{
    const String s("abc");
    const String upper = s.GetAsUpper();
    EXPECT_STREQ("ABC", upper.GetCharPointer());
    EXPECT_FALSE(s == upper);
    EXPECT_FALSE(s != upper);
}

TEST(StringCompare, LowerCaseCopyIsNeitherEqualNorUnequal)
{
    const String s("ABC");
    const String lower = s.GetAsLower();
    EXPECT_STREQ("abc", lower.GetCharPointer());
    EXPECT_FALSE(s == lower);
    EXPECT_FALSE(s != lower);
}

TEST(StringCompare, NulInsideEndsTheComparison)
{
    const String first(std::string("a\0b", 3));
    const String second(std::string("a\0c", 3));
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(first != second);
    EXPECT_FALSE(first < second);
    // Equal texts up to the NUL but different lengths are never equal.
    EXPECT_FALSE(first == String("a"));
}

TEST(StringCompare, LessIsByteOrderWithUnsignedBytes)
{
    EXPECT_TRUE(String("abc") < String("abd"));
    EXPECT_TRUE(String("ab") < String("abc"));
    EXPECT_FALSE(String("abc") < String("abc"));
    EXPECT_TRUE(String("Z") < String("a"));
    EXPECT_TRUE(String("z") < String("\xe9"));
    EXPECT_FALSE(String("\xe9") < String("z"));
}

TEST(StringStamp, CopyTakesTheSourceStamp)
{
    const String s("ab");
    const String copy(s);
    EXPECT_FALSE(copy != s.GetAsUpper());
}

TEST(StringStamp, AssignmentTakesTheSourceStamp)
{
    const String s("ab");
    String target("xy");
    EXPECT_TRUE(target != s.GetAsUpper());
    target = s;
    EXPECT_FALSE(target != s.GetAsUpper());
}

TEST(StringStamp, ConstructorsTakeFreshStamps)
{
    EXPECT_TRUE(String("ab") != String("cd"));
    EXPECT_TRUE(String('a') != String('b'));
    EXPECT_TRUE(String(12L) != String(34L));
    EXPECT_TRUE(String(12UL) != String(34UL));
    EXPECT_TRUE(String(static_cast<short>(12)) != String(static_cast<short>(34)));
    EXPECT_TRUE(String(static_cast<unsigned short>(12)) != String(static_cast<unsigned short>(34)));
    EXPECT_TRUE(String(1.5, 1, '.') != String(2.5, 1, '.'));
    EXPECT_TRUE(String(std::string("ab")) != String(std::string("cd")));
}

TEST(StringStamp, AppendTakesAFreshStamp)
{
    const String s("ab");
    String first(s);
    String second(s);
    first += String("x");
    second += String("y");
    // Had the appends kept the common stamp, the two would not be unequal.
    EXPECT_TRUE(first != second);
}

TEST(StringStamp, AppendingNothingKeepsTheStamp)
{
    const String s("ab");
    String copy(s);
    copy += String();
    EXPECT_FALSE(copy != s.GetAsUpper());
}

TEST(StringStamp, ReplaceTakesAFreshStampEvenWithoutReplacing)
{
    const String s("ab");
    String replaced(s);
    replaced.Replace(String("a"), String("x"));
    EXPECT_TRUE(replaced != s);

    String untouched(s);
    untouched.Replace(String("zz"), String("y"));
    EXPECT_STREQ("ab", untouched.GetCharPointer());
    EXPECT_TRUE(untouched != s.GetAsUpper());

    String emptyArgument(s);
    emptyArgument.Replace(String(), String("y"));
    EXPECT_TRUE(emptyArgument != s.GetAsUpper());
}

TEST(StringStamp, PlusWithEmptyRightSideIsACopyOfTheLeft)
{
    const String s("ab");
    const String sum = s + String();
    EXPECT_STREQ("ab", sum.GetCharPointer());
    EXPECT_FALSE(sum != s.GetAsUpper());
}

TEST(StringStamp, PlusWithEmptyLeftSideIsACopyOfTheRight)
{
    const String s("ab");
    const String sum = String() + s;
    EXPECT_STREQ("ab", sum.GetCharPointer());
    EXPECT_FALSE(sum != s.GetAsUpper());
}

TEST(StringStamp, PlusOfTwoTextsTakesAFreshStamp)
{
    const String s("ab");
    EXPECT_TRUE(s + String("x") != s + String("y"));
}

TEST(StringStamp, MidTakesAFreshStamp)
{
    const String s("ab");
    EXPECT_TRUE(s.Mid(0, 1) != s.Mid(1, 1));
}

namespace {

// The hash written out: h = (h * 64 + c) mod m, c sign-extended, h * 64 + c
// wrapping in 32 bits, the remainder taken in 64 bits.
unsigned long ReferenceHash(const std::string& text, unsigned long modulus)
{
    std::uint32_t hash = 0;
    for (const char byte : text) {
        const std::uint32_t sum =
            hash * 64U + static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(byte)));
        hash = static_cast<std::uint32_t>(static_cast<std::uint64_t>(sum) % static_cast<std::uint64_t>(modulus));
    }
    return hash;
}

} // namespace

TEST(StringHash, EveryModulusGivesTheWrittenOutSum)
{
    const std::string texts[] = {"", "a", "Colorimetric.Illumination", "BenchCounter10", "\xff\x80\x7f z",
                                 std::string(300, '\xe9'), "ColorSpaceDescription.DeltaEFormula"};
    const unsigned long moduli[] = {1UL, 7UL, 53UL, 54UL, 65536UL, 4294967291UL, 4294967295UL, 4294967296UL,
                                    4294967311UL, 18446744073709551615UL};
    for (const std::string& text : texts) {
        for (const unsigned long modulus : moduli) {
            EXPECT_EQ(ReferenceHash(text, modulus), String(text.c_str()).GetHash(modulus))
                << "modulus " << modulus << ", text of " << text.size() << " bytes";
        }
    }
}
