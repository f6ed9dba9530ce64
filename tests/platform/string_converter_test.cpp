// Conversions between 16-bit text and the 8-bit text of the locale: the
// result rules (null source, a target too small, text that cannot be
// converted), the lengths, round trips in a UTF-8 locale and in the "C"
// locale, and the platform's converter object.
//
// Each test sets the locale it needs; gtest_discover_tests runs each in a
// process of its own.

#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/platform/string_converter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <initializer_list>
#include <string>
#include <thread>
#include <type_traits>
#include <typeinfo>
#include <vector>

using Utilities::SmartPointer;
using Utilities::StringConverter;

namespace {

static_assert(std::has_virtual_destructor_v<StringConverter>);
// The table of virtual operations and nothing else.
static_assert(sizeof(StringConverter) == sizeof(void*));

using Units = std::vector<unsigned short>;

// "é€😀": two, three and four bytes in UTF-8; one, one and two units (a
// surrogate pair) in UTF-16.
const std::string MixedBytes = "\xC3\xA9"
                               "\xE2\x82\xAC"
                               "\xF0\x9F\x98\x80";
const Units MixedUnits = {0x00E9, 0x20AC, 0xD83D, 0xDE00};

// `units` with its terminator.
Units Terminated(const Units& units)
{
    Units text = units;
    text.push_back(0);
    return text;
}

constexpr char ByteSentinel = '#';
constexpr unsigned short UnitSentinel = 0xBEEF;

struct CharResult {
    bool result;
    std::string text;
};

struct UnitResult {
    bool result;
    Units text;
};

// UnicodeToChar into a target of `targetLength` bytes, followed by a
// sentinel that must stay untouched. The text is what stands before the
// terminator; a target without one fails the test.
CharResult ToChar(const unsigned short* source, unsigned long targetLength)
{
    std::vector<char> target(targetLength + 1, ByteSentinel);
    const bool result = StringConverter::UnicodeToChar(source, target.data(), targetLength);
    EXPECT_EQ(ByteSentinel, target[targetLength]) << "written behind the target";
    const auto end = std::find(target.begin(), target.begin() + static_cast<long>(targetLength), '\0');
    if (end == target.begin() + static_cast<long>(targetLength)) {
        ADD_FAILURE() << "the target has no terminator";
        return {result, "<no terminator>"};
    }
    return {result, std::string(target.begin(), end)};
}

CharResult ToChar(const Units& source, unsigned long targetLength)
{
    const Units terminated = Terminated(source);
    return ToChar(terminated.data(), targetLength);
}

// CharToUnicode in the same way.
UnitResult ToUnits(const char* source, unsigned long targetLength)
{
    std::vector<unsigned short> target(targetLength + 1, UnitSentinel);
    const bool result = StringConverter::CharToUnicode(source, target.data(), targetLength);
    EXPECT_EQ(UnitSentinel, target[targetLength]) << "written behind the target";
    const auto end = std::find(target.begin(), target.begin() + static_cast<long>(targetLength), 0);
    if (end == target.begin() + static_cast<long>(targetLength)) {
        ADD_FAILURE() << "the target has no terminator";
        return {result, Units {UnitSentinel}};
    }
    return {result, Units(target.begin(), end)};
}

UnitResult ToUnits(const std::string& source, unsigned long targetLength)
{
    return ToUnits(source.c_str(), targetLength);
}

unsigned long CharLength(const Units& source)
{
    return StringConverter::CharLength(Terminated(source).data());
}

class StringConverterUtf8 : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C.UTF-8")) << "the locale C.UTF-8 is not installed";
    }
    void TearDown() override
    {
        std::setlocale(LC_ALL, "C");
    }
};

class StringConverterCLocale : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C"));
    }
};

using StringConverterNullSource = StringConverterCLocale;
using StringConverterNullTarget = StringConverterCLocale;

} // namespace

TEST_F(StringConverterNullSource, UnicodeToCharGivesAnEmptyTargetAndTrue)
{
    const CharResult converted = ToChar(nullptr, 4);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ("", converted.text);
}

TEST_F(StringConverterNullSource, CharToUnicodeGivesAnEmptyTargetAndTrue)
{
    const UnitResult converted = ToUnits(nullptr, 4);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(Units(), converted.text);
}

TEST_F(StringConverterNullSource, ATargetOfOneHoldsTheEmptyText)
{
    EXPECT_TRUE(ToChar(nullptr, 1).result);
    EXPECT_TRUE(ToUnits(nullptr, 1).result);
}

TEST_F(StringConverterNullSource, ATargetLengthOfZeroGivesFalseAndWritesNothing)
{
    char bytes[1] = {ByteSentinel};
    EXPECT_FALSE(StringConverter::UnicodeToChar(nullptr, bytes, 0));
    EXPECT_EQ(ByteSentinel, bytes[0]);
    unsigned short units[1] = {UnitSentinel};
    EXPECT_FALSE(StringConverter::CharToUnicode(nullptr, units, 0));
    EXPECT_EQ(UnitSentinel, units[0]);
}

TEST_F(StringConverterNullSource, LengthsAreZero)
{
    EXPECT_EQ(0UL, StringConverter::CharLength(nullptr));
    EXPECT_EQ(0UL, StringConverter::UnicodeLength(nullptr));
}

TEST_F(StringConverterNullTarget, GivesFalse)
{
    const Units source = Terminated({'a'});
    EXPECT_FALSE(StringConverter::UnicodeToChar(source.data(), nullptr, 10));
    EXPECT_FALSE(StringConverter::CharToUnicode("a", nullptr, 10));
    EXPECT_FALSE(StringConverter::UnicodeToChar(nullptr, nullptr, 10));
    EXPECT_FALSE(StringConverter::CharToUnicode(nullptr, nullptr, 10));
}

TEST_F(StringConverterCLocale, ATargetLengthOfZeroGivesFalseAndWritesNothing)
{
    const Units source = Terminated({'a'});
    char bytes[1] = {ByteSentinel};
    EXPECT_FALSE(StringConverter::UnicodeToChar(source.data(), bytes, 0));
    EXPECT_EQ(ByteSentinel, bytes[0]);
    unsigned short units[1] = {UnitSentinel};
    EXPECT_FALSE(StringConverter::CharToUnicode("a", units, 0));
    EXPECT_EQ(UnitSentinel, units[0]);
}

TEST_F(StringConverterCLocale, EmptyTextGivesAnEmptyTargetAndTrue)
{
    const CharResult bytes = ToChar(Units(), 1);
    EXPECT_TRUE(bytes.result);
    EXPECT_EQ("", bytes.text);
    const UnitResult units = ToUnits("", 1);
    EXPECT_TRUE(units.result);
    EXPECT_EQ(Units(), units.text);
    EXPECT_EQ(0UL, CharLength(Units()));
    EXPECT_EQ(0UL, StringConverter::UnicodeLength(""));
}

TEST_F(StringConverterCLocale, AsciiTextMakesTheRoundTrip)
{
    const std::string text = "Hello, world ~ 0123456789";
    const Units units(text.begin(), text.end());
    const CharResult bytes = ToChar(units, 100);
    EXPECT_TRUE(bytes.result);
    EXPECT_EQ(text, bytes.text);
    const UnitResult back = ToUnits(text, 100);
    EXPECT_TRUE(back.result);
    EXPECT_EQ(units, back.text);
    EXPECT_EQ(text.size(), CharLength(units));
    EXPECT_EQ(text.size(), StringConverter::UnicodeLength(text.c_str()));
}

TEST_F(StringConverterCLocale, ACharacterBeyondAsciiGivesAnEmptyTargetAndTrue)
{
    const CharResult converted = ToChar(Units {'a', 0x00E9, 'b'}, 10);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ("", converted.text);
    EXPECT_EQ(0UL, CharLength(Units {'a', 0x00E9, 'b'}));
}

TEST_F(StringConverterCLocale, AByteBeyondAsciiGivesAnEmptyTargetAndTrue)
{
    const UnitResult converted = ToUnits("a\xC3\xA9", 10);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(Units(), converted.text);
    EXPECT_EQ(0UL, StringConverter::UnicodeLength("a\xC3\xA9"));
}

TEST_F(StringConverterCLocale, ATooSmallTargetGivesFalseAndAnEmptyTarget)
{
    const CharResult bytes = ToChar(Units {'a', 'b', 'c'}, 3);
    EXPECT_FALSE(bytes.result);
    EXPECT_EQ("", bytes.text);
    const UnitResult units = ToUnits("abc", 3);
    EXPECT_FALSE(units.result);
    EXPECT_EQ(Units(), units.text);
}

TEST_F(StringConverterCLocale, TextThatCannotBeConvertedIsNotTooLarge)
{
    // The target runs out before the character that cannot be converted:
    // the text decides, so the result is still an empty target and true.
    const CharResult bytes = ToChar(Units {'a', 'b', 'c', 'd', 0x00E9}, 2);
    EXPECT_TRUE(bytes.result);
    EXPECT_EQ("", bytes.text);
    const UnitResult units = ToUnits("abcd\xE9", 2);
    EXPECT_TRUE(units.result);
    EXPECT_EQ(Units(), units.text);
}

TEST_F(StringConverterUtf8, NonAsciiTextMakesTheRoundTrip)
{
    const CharResult bytes = ToChar(MixedUnits, 64);
    EXPECT_TRUE(bytes.result);
    EXPECT_EQ(MixedBytes, bytes.text);
    const UnitResult units = ToUnits(MixedBytes, 64);
    EXPECT_TRUE(units.result);
    EXPECT_EQ(MixedUnits, units.text);
}

TEST_F(StringConverterUtf8, ACharacterBeyondTheBasicPlaneIsASurrogatePair)
{
    const UnitResult units = ToUnits("\xF0\x9F\x98\x80", 3);
    EXPECT_TRUE(units.result);
    EXPECT_EQ((Units {0xD83D, 0xDE00}), units.text);
    EXPECT_EQ(2UL, StringConverter::UnicodeLength("\xF0\x9F\x98\x80"));
    EXPECT_EQ(4UL, CharLength(Units {0xD83D, 0xDE00}));
}

TEST_F(StringConverterUtf8, LengthsCountUnitsWithoutTheTerminator)
{
    EXPECT_EQ(9UL, CharLength(MixedUnits));
    EXPECT_EQ(4UL, StringConverter::UnicodeLength(MixedBytes.c_str()));
    EXPECT_EQ(3UL, CharLength(Units {'a', 'b', 'c'}));
    EXPECT_EQ(3UL, StringConverter::UnicodeLength("abc"));
}

TEST_F(StringConverterUtf8, LengthsOfALongTextAreCountedWhole)
{
    Units euros(1000, 0x20AC);
    std::string bytes;
    for (int index = 0; index < 1000; ++index) {
        bytes += "\xE2\x82\xAC";
    }
    EXPECT_EQ(3000UL, CharLength(euros));
    EXPECT_EQ(1000UL, StringConverter::UnicodeLength(bytes.c_str()));
    const CharResult converted = ToChar(euros, 3001);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(bytes, converted.text);
    const UnitResult back = ToUnits(bytes, 1001);
    EXPECT_TRUE(back.result);
    EXPECT_EQ(euros, back.text);
}

TEST_F(StringConverterUtf8, AnExactTargetWorksAndOneLessGivesFalse)
{
    // Nine bytes and the terminator.
    const CharResult exactBytes = ToChar(MixedUnits, 10);
    EXPECT_TRUE(exactBytes.result);
    EXPECT_EQ(MixedBytes, exactBytes.text);
    const CharResult shortBytes = ToChar(MixedUnits, 9);
    EXPECT_FALSE(shortBytes.result);
    EXPECT_EQ("", shortBytes.text);

    // Four units and the terminator.
    const UnitResult exactUnits = ToUnits(MixedBytes, 5);
    EXPECT_TRUE(exactUnits.result);
    EXPECT_EQ(MixedUnits, exactUnits.text);
    const UnitResult shortUnits = ToUnits(MixedBytes, 4);
    EXPECT_FALSE(shortUnits.result);
    EXPECT_EQ(Units(), shortUnits.text);
}

TEST_F(StringConverterUtf8, ATargetThatEndsInsideACharacterGivesFalse)
{
    // Room for "é" and one byte of "€".
    const CharResult bytes = ToChar(MixedUnits, 4);
    EXPECT_FALSE(bytes.result);
    EXPECT_EQ("", bytes.text);
    // Room for "é", "€" and one unit of the surrogate pair.
    const UnitResult units = ToUnits(MixedBytes, 4);
    EXPECT_FALSE(units.result);
}

TEST_F(StringConverterUtf8, ALoneSurrogateGivesAnEmptyTargetAndTrue)
{
    for (const Units& invalid : {Units {'a', 0xD800, 'b'}, Units {0xDC00}, Units {'a', 0xDE00, 0xD83D}}) {
        const CharResult converted = ToChar(invalid, 32);
        EXPECT_TRUE(converted.result);
        EXPECT_EQ("", converted.text);
        EXPECT_EQ(0UL, CharLength(invalid));
    }
}

TEST_F(StringConverterUtf8, AHighSurrogateAtTheEndGivesAnEmptyTargetAndTrue)
{
    const CharResult converted = ToChar(Units {'a', 0xD83D}, 32);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ("", converted.text);
    EXPECT_EQ(0UL, CharLength(Units {'a', 0xD83D}));
}

TEST_F(StringConverterUtf8, InvalidBytesGiveAnEmptyTargetAndTrue)
{
    // A lead byte without its follower, a byte never used, a text that ends
    // inside a character, an overlong form, a lone follower.
    for (const char* invalid : {"\xC3\x28", "a\xFF", "a\xE2\x82", "\xC0\xAF", "\x80"}) {
        const UnitResult converted = ToUnits(invalid, 32);
        EXPECT_TRUE(converted.result) << invalid;
        EXPECT_EQ(Units(), converted.text) << invalid;
        EXPECT_EQ(0UL, StringConverter::UnicodeLength(invalid)) << invalid;
    }
}

TEST_F(StringConverterUtf8, InvalidTextInATooSmallTargetGivesAnEmptyTargetAndTrue)
{
    const CharResult bytes = ToChar(Units {'a', 'b', 'c', 'd', 0xD800}, 3);
    EXPECT_TRUE(bytes.result);
    EXPECT_EQ("", bytes.text);
    const UnitResult units = ToUnits("abcd\xFF", 3);
    EXPECT_TRUE(units.result);
    EXPECT_EQ(Units(), units.text);
}

TEST_F(StringConverterUtf8, NoByteOrderMarkIsWrittenOrRead)
{
    // U+FEFF at the start is a character like any other.
    const Units units = {0xFEFF, 'a'};
    const CharResult bytes = ToChar(units, 8);
    EXPECT_TRUE(bytes.result);
    EXPECT_EQ("\xEF\xBB\xBF"
              "a",
              bytes.text);
    const UnitResult back = ToUnits(bytes.text, 8);
    EXPECT_EQ(units, back.text);
    EXPECT_EQ((Units {'a'}), ToUnits("a", 8).text);
}

TEST_F(StringConverterUtf8, TheLocaleIsReadAtEachCall)
{
    EXPECT_EQ(9UL, CharLength(MixedUnits));
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C"));
    EXPECT_EQ(0UL, CharLength(MixedUnits));
    const CharResult converted = ToChar(MixedUnits, 64);
    EXPECT_TRUE(converted.result);
    EXPECT_EQ("", converted.text);
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C.UTF-8"));
    EXPECT_EQ(MixedBytes, ToChar(MixedUnits, 64).text);
}

TEST_F(StringConverterUtf8, ThreadsConvertAtTheSameTime)
{
    std::atomic<int> failures {0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&failures] {
            const Units source = Terminated(MixedUnits);
            for (int round = 0; round < 200; ++round) {
                char bytes[16];
                unsigned short units[8];
                if (!StringConverter::UnicodeToChar(source.data(), bytes, sizeof bytes) || bytes != MixedBytes ||
                    !StringConverter::CharToUnicode(bytes, units, 8) ||
                    Units(units, units + 4) != MixedUnits || units[4] != 0) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(0, failures.load());
}

TEST(StringConverterInstance, NewInstanceGivesThePlatformsConverter)
{
    const SmartPointer<StringConverter> converter = StringConverter::NewInstance();
    ASSERT_TRUE(converter.IsValid());
    EXPECT_NE(typeid(StringConverter), typeid(*converter));
    const SmartPointer<StringConverter> other = StringConverter::NewInstance();
    EXPECT_NE(&*converter, &*other);
    EXPECT_EQ(1, converter.GetReferenceCount());
}
