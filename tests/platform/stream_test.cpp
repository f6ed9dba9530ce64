// Streams: the two blocks a stream may use, appending with its growth
// rules, the NUL behind the contents, the level, copies and comparison.

#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/stream.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

using Utilities::Stream;
using Utilities::String;

namespace {

// The size, the inline block, the block pointer and the level: no table of
// virtual operations and nothing else.
static_assert(!std::is_polymorphic_v<Stream>);
static_assert(sizeof(Stream) == 2 * sizeof(unsigned long) + 10000 + sizeof(char*));
// A number is no stream.
static_assert(!std::is_convertible_v<unsigned long, Stream>);

String Repeated(unsigned long count, char character)
{
    return String(std::string(count, character));
}

// A stream holding `count` times `character`, written with AddString.
Stream Filled(unsigned long count, char character)
{
    Stream stream;
    stream.AddString(Repeated(count, character), false);
    return stream;
}

std::string Contents(const Stream& stream)
{
    return std::string(stream.GetCharPointer(), stream.GetLevel());
}

bool UsesOwnBlock(const Stream& stream)
{
    const auto object = reinterpret_cast<std::uintptr_t>(&stream);
    const auto block = reinterpret_cast<std::uintptr_t>(stream.GetCharPointer());
    return block >= object && block < object + sizeof(Stream);
}

bool AllZero(const char* bytes, unsigned long count)
{
    for (unsigned long index = 0; index < count; ++index) {
        if (bytes[index] != '\0') {
            return false;
        }
    }
    return true;
}

} // namespace

TEST(StreamConstruction, StartsEmptyInItsOwnBlockOfTenThousand)
{
    const Stream stream;
    EXPECT_EQ(10000UL, stream.GetSize());
    EXPECT_EQ(0UL, stream.GetLevel());
    EXPECT_STREQ("", stream.GetString().GetCharPointer());
    EXPECT_TRUE(UsesOwnBlock(stream));
}

TEST(StreamConstruction, RequestUpToTenThousandKeepsItsOwnBlock)
{
    for (const unsigned long requested : {0UL, 1UL, 5000UL, 10000UL}) {
        const Stream stream(requested);
        EXPECT_EQ(10000UL, stream.GetSize()) << requested;
        EXPECT_EQ(0UL, stream.GetLevel()) << requested;
        EXPECT_TRUE(UsesOwnBlock(stream)) << requested;
    }
}

TEST(StreamConstruction, RequestAboveTenThousandTakesAHeapBlockOfThatSize)
{
    const Stream justAbove(10001);
    EXPECT_EQ(10001UL, justAbove.GetSize());
    EXPECT_EQ(0UL, justAbove.GetLevel());
    EXPECT_FALSE(UsesOwnBlock(justAbove));
    EXPECT_STREQ("", justAbove.GetString().GetCharPointer());

    const Stream large(250000);
    EXPECT_EQ(250000UL, large.GetSize());
    EXPECT_FALSE(UsesOwnBlock(large));
}

TEST(StreamConstruction, BytesNeverWrittenReadAsZero)
{
    const Stream own;
    EXPECT_TRUE(AllZero(own.GetCharPointer(), own.GetSize()));
    const Stream heap(30000);
    EXPECT_TRUE(AllZero(heap.GetCharPointer(), heap.GetSize()));
}

TEST(StreamAddString, AppendsTheTextAndANulThatIsNotCounted)
{
    Stream stream;
    stream.AddString("abc", false);
    EXPECT_EQ(3UL, stream.GetLevel());
    EXPECT_EQ('\0', stream.GetCharPointer()[3]);
    stream.AddString("de", false);
    EXPECT_EQ(5UL, stream.GetLevel());
    EXPECT_EQ("abcde", Contents(stream));
    EXPECT_EQ('\0', stream.GetCharPointer()[5]);
    EXPECT_STREQ("abcde", stream.GetString().GetCharPointer());
}

TEST(StreamAddString, NewLineAddsExactlyTwoBytesThirteenAndTen)
{
    Stream stream;
    stream.AddString("abc", true);
    EXPECT_EQ(5UL, stream.GetLevel());
    EXPECT_EQ(std::string("abc\r\n"), Contents(stream));
    EXPECT_EQ(13, stream.GetCharPointer()[3]);
    EXPECT_EQ(10, stream.GetCharPointer()[4]);
    EXPECT_EQ('\0', stream.GetCharPointer()[5]);

    // An empty line is the two bytes alone.
    stream.AddString("", true);
    EXPECT_EQ(7UL, stream.GetLevel());
    EXPECT_EQ(std::string("abc\r\n\r\n"), Contents(stream));
}

TEST(StreamAddString, TakesTheTextUpToItsFirstNul)
{
    Stream stream;
    stream.AddString(String(std::string("ab\0cd", 5)), false);
    EXPECT_EQ(2UL, stream.GetLevel());
    EXPECT_EQ("ab", Contents(stream));
}

TEST(StreamAddString, AnEmptyTextAddsNothing)
{
    Stream stream;
    stream.AddString("", false);
    EXPECT_EQ(0UL, stream.GetLevel());
    EXPECT_EQ(10000UL, stream.GetSize());
}

TEST(StreamAddString, FillingToWithinThreeBytesGrowsByTheTextAndOneHundredThousand)
{
    // 0 + 9997 + 4 is above 10,000.
    Stream stream;
    const String text = Repeated(9997, 'x');
    stream.AddString(text, false);
    EXPECT_EQ(10000UL + 9997UL + 100000UL, stream.GetSize());
    EXPECT_EQ(9997UL, stream.GetLevel());
    EXPECT_FALSE(UsesOwnBlock(stream));
    EXPECT_EQ(std::string(text), Contents(stream));
    EXPECT_EQ('\0', stream.GetCharPointer()[9997]);
}

TEST(StreamAddString, FourBytesToSpareNeedNoGrowthEvenWithANewLine)
{
    // 0 + 9996 + 4 is not above 10,000: the text, the line end and the NUL
    // take 9,999 bytes.
    Stream stream;
    stream.AddString(Repeated(9996, 'x'), true);
    EXPECT_EQ(10000UL, stream.GetSize());
    EXPECT_TRUE(UsesOwnBlock(stream));
    EXPECT_EQ(9998UL, stream.GetLevel());
    EXPECT_EQ('\r', stream.GetCharPointer()[9996]);
    EXPECT_EQ('\n', stream.GetCharPointer()[9997]);
    EXPECT_EQ('\0', stream.GetCharPointer()[9998]);
}

TEST(StreamAddString, TheGrowthRuleCountsTheLevelAlreadyInUse)
{
    Stream stream;
    stream.AddString(Repeated(9000, 'a'), false);
    // 9000 + 996 + 4 is not above 10,000.
    stream.AddString(Repeated(996, 'b'), false);
    EXPECT_EQ(10000UL, stream.GetSize());
    // 9996 + 1 + 4 is.
    stream.AddString("c", false);
    EXPECT_EQ(10000UL + 1UL + 100000UL, stream.GetSize());
    EXPECT_EQ(9997UL, stream.GetLevel());
    EXPECT_EQ(std::string(9000, 'a') + std::string(996, 'b') + "c", Contents(stream));
}

TEST(StreamAddString, GrowingAgainFromAHeapBlockKeepsTheContents)
{
    Stream stream;
    stream.AddString("head", true);
    stream.AddString(Repeated(20000, 'x'), false);
    EXPECT_EQ(10000UL + 20000UL + 100000UL, stream.GetSize());
    const unsigned long firstSize = stream.GetSize();
    stream.AddString(Repeated(150000, 'y'), false);
    EXPECT_EQ(firstSize + 150000UL + 100000UL, stream.GetSize());
    EXPECT_EQ(6UL + 20000UL + 150000UL, stream.GetLevel());
    EXPECT_EQ("head\r\n" + std::string(20000, 'x') + std::string(150000, 'y'), Contents(stream));
    EXPECT_EQ(std::string(stream.GetString()), Contents(stream));
}

TEST(StreamAddString, GrowingKeepsTheBytesBehindTheLevel)
{
    Stream stream;
    std::memcpy(stream.GetCharPointer(), "ab", 2);
    stream.GetCharPointer()[9999] = 'T';
    stream.SetLevel(2);
    stream.AddString(Repeated(9995, 'x'), false);
    ASSERT_EQ(10000UL + 9995UL + 100000UL, stream.GetSize());
    EXPECT_EQ("ab" + std::string(9995, 'x'), Contents(stream));
    EXPECT_EQ('\0', stream.GetCharPointer()[9997]);
    EXPECT_EQ('\0', stream.GetCharPointer()[9998]);
    EXPECT_EQ('T', stream.GetCharPointer()[9999]);
    // The bytes the block gained are zeros.
    EXPECT_TRUE(AllZero(stream.GetCharPointer() + 10000, stream.GetSize() - 10000));
}

TEST(StreamGetString, EndsAtTheFirstNul)
{
    Stream stream;
    std::memcpy(stream.GetCharPointer(), "abc\0def", 7);
    stream.SetLevel(7);
    EXPECT_STREQ("abc", stream.GetString().GetCharPointer());
    EXPECT_EQ(3UL, stream.GetString().Length());
}

TEST(StreamGetString, ReachesPastTheLevelUpToTheNul)
{
    Stream stream;
    stream.AddString("abcdef", false);
    stream.SetLevel(2);
    EXPECT_STREQ("abcdef", stream.GetString().GetCharPointer());
}

TEST(StreamGetString, ABlockWithoutNulGivesAllOfIt)
{
    Stream stream;
    std::memset(stream.GetCharPointer(), 'z', stream.GetSize());
    stream.SetLevel(stream.GetSize());
    const String text = stream.GetString();
    EXPECT_EQ(10000UL, text.Length());
    EXPECT_EQ(std::string(10000, 'z'), std::string(text));

    Stream heap(12345);
    std::memset(heap.GetCharPointer(), 'q', heap.GetSize());
    EXPECT_EQ(12345UL, heap.GetString().Length());
}

TEST(StreamSetLevel, AboveTheSizeGivesTheSize)
{
    Stream stream;
    stream.SetLevel(10001);
    EXPECT_EQ(10000UL, stream.GetLevel());
    stream.SetLevel(ULONG_MAX);
    EXPECT_EQ(stream.GetSize(), stream.GetLevel());

    Stream heap(50000);
    heap.SetLevel(50001);
    EXPECT_EQ(50000UL, heap.GetLevel());
}

TEST(StreamSetLevel, UpToTheSizeIsKept)
{
    Stream stream;
    stream.SetLevel(0);
    EXPECT_EQ(0UL, stream.GetLevel());
    stream.SetLevel(123);
    EXPECT_EQ(123UL, stream.GetLevel());
    stream.SetLevel(10000);
    EXPECT_EQ(10000UL, stream.GetLevel());
}

TEST(StreamSetLevel, AnnouncesBytesWrittenThroughThePointerAndWritesNothing)
{
    Stream stream;
    std::memcpy(stream.GetCharPointer(), "hello", 5);
    stream.SetLevel(5);
    EXPECT_EQ("hello", Contents(stream));
    stream.SetLevel(0);
    EXPECT_EQ(0UL, stream.GetLevel());
    // Nothing was cut: the bytes are still there.
    EXPECT_STREQ("hello", stream.GetString().GetCharPointer());
    stream.AddString("J", false);
    EXPECT_STREQ("J", stream.GetString().GetCharPointer());
    EXPECT_EQ('l', stream.GetCharPointer()[2]);
}

TEST(StreamSetLevel, OverBytesNeverWrittenGivesZeros)
{
    Stream stream;
    stream.AddString("ab", false);
    stream.SetLevel(40);
    EXPECT_EQ(std::string("ab") + std::string(38, '\0'), Contents(stream));
}

TEST(StreamSetLevel, AFullStreamGrowsOnTheNextAddString)
{
    Stream stream;
    stream.SetLevel(10000);
    stream.AddString("", false);
    EXPECT_EQ(10000UL + 0UL + 100000UL, stream.GetSize());
    EXPECT_EQ(10000UL, stream.GetLevel());
    EXPECT_EQ('\0', stream.GetCharPointer()[10000]);
}

TEST(StreamCopy, HasTheSameSizeLevelAndBytes)
{
    Stream own;
    own.AddString("own block", true);
    const Stream ownCopy(own);
    EXPECT_EQ(own.GetSize(), ownCopy.GetSize());
    EXPECT_EQ(own.GetLevel(), ownCopy.GetLevel());
    EXPECT_TRUE(UsesOwnBlock(ownCopy));
    EXPECT_EQ(0, std::memcmp(own.GetCharPointer(), ownCopy.GetCharPointer(), own.GetSize()));

    Stream heap(40000);
    heap.AddString("heap block", false);
    // Bytes behind the level are copied too.
    heap.GetCharPointer()[30000] = 'T';
    const Stream heapCopy(heap);
    EXPECT_EQ(40000UL, heapCopy.GetSize());
    EXPECT_EQ(heap.GetLevel(), heapCopy.GetLevel());
    EXPECT_NE(heap.GetCharPointer(), heapCopy.GetCharPointer());
    EXPECT_EQ(0, std::memcmp(heap.GetCharPointer(), heapCopy.GetCharPointer(), heap.GetSize()));
}

TEST(StreamCopy, CopiesAreIndependent)
{
    for (const unsigned long requested : {0UL, 60000UL}) {
        Stream original(requested);
        original.AddString("first", false);
        Stream copy(original);
        original.AddString(" and more", false);
        copy.AddString("!", false);
        EXPECT_STREQ("first and more", original.GetString().GetCharPointer());
        EXPECT_STREQ("first!", copy.GetString().GetCharPointer());

        Stream assigned;
        assigned = original;
        original.SetLevel(0);
        original.AddString("x", false);
        EXPECT_STREQ("first and more", assigned.GetString().GetCharPointer());
        EXPECT_EQ(14UL, assigned.GetLevel());
    }
}

TEST(StreamCopy, AssignmentMakesTheTargetWhatACopyWouldBe)
{
    Stream own;
    own.AddString("own", false);
    Stream heap(30000);
    heap.AddString("heap", false);
    Stream grown = Filled(20000, 'g');

    Stream target;
    target = heap;
    EXPECT_EQ(30000UL, target.GetSize());
    EXPECT_STREQ("heap", target.GetString().GetCharPointer());
    EXPECT_FALSE(UsesOwnBlock(target));

    target = grown;
    EXPECT_EQ(grown.GetSize(), target.GetSize());
    EXPECT_EQ(20000UL, target.GetLevel());
    EXPECT_TRUE(target == grown);

    // Back from a heap block to the stream's own block.
    target = own;
    EXPECT_EQ(10000UL, target.GetSize());
    EXPECT_TRUE(UsesOwnBlock(target));
    EXPECT_STREQ("own", target.GetString().GetCharPointer());
    EXPECT_EQ(3UL, target.GetLevel());

    // A block of the same size is reused.
    Stream other(30000);
    other.AddString("other", false);
    target = heap;
    char* const block = target.GetCharPointer();
    target = other;
    EXPECT_EQ(block, target.GetCharPointer());
    EXPECT_STREQ("other", target.GetString().GetCharPointer());
}

TEST(StreamCopy, SelfAssignmentChangesNothing)
{
    for (const unsigned long requested : {0UL, 20000UL}) {
        Stream stream(requested);
        stream.AddString("same", true);
        char* const block = stream.GetCharPointer();
        const Stream& self = stream;
        stream = self;
        EXPECT_EQ(block, stream.GetCharPointer());
        EXPECT_EQ(6UL, stream.GetLevel());
        EXPECT_EQ(std::string("same\r\n"), Contents(stream));
    }
}

TEST(StreamAppendOperator, AppendsTheOthersLevelBytesAndANul)
{
    Stream stream;
    stream.AddString("abc", false);
    Stream other;
    other.AddString("defgh", false);
    other.SetLevel(2);
    stream += other;
    EXPECT_EQ(5UL, stream.GetLevel());
    EXPECT_EQ("abcde", Contents(stream));
    EXPECT_EQ('\0', stream.GetCharPointer()[5]);
    EXPECT_EQ(2UL, other.GetLevel());
}

TEST(StreamAppendOperator, CopiesNulsInsideTheOthersContents)
{
    Stream other;
    std::memcpy(other.GetCharPointer(), "a\0b", 3);
    other.SetLevel(3);
    Stream stream;
    stream.AddString("x", false);
    stream += other;
    EXPECT_EQ(std::string("xa\0b", 4), Contents(stream));
}

TEST(StreamAppendOperator, GrowsByTheOthersLevelAndTenThousand)
{
    Stream stream = Filled(9000, 'a');
    const Stream other = Filled(999, 'b');
    // 9000 + 999 + 2 is above 10,000.
    stream += other;
    EXPECT_EQ(10000UL + 999UL + 10000UL, stream.GetSize());
    EXPECT_EQ(9999UL, stream.GetLevel());
    EXPECT_EQ(std::string(9000, 'a') + std::string(999, 'b'), Contents(stream));
    EXPECT_EQ('\0', stream.GetCharPointer()[9999]);
}

TEST(StreamAppendOperator, TwoBytesToSpareNeedNoGrowth)
{
    Stream stream = Filled(9000, 'a');
    // 9000 + 998 + 2 is not above 10,000.
    stream += Filled(998, 'b');
    EXPECT_EQ(10000UL, stream.GetSize());
    EXPECT_EQ(9998UL, stream.GetLevel());
    EXPECT_EQ('\0', stream.GetCharPointer()[9998]);
}

TEST(StreamAppendOperator, StepsAreSmallerThanThoseOfAddString)
{
    const String text = Repeated(999, 'b');
    Stream byText = Filled(9000, 'a');
    Stream byStream = Filled(9000, 'a');
    byText.AddString(text, false);
    Stream other;
    other.AddString(text, false);
    byStream += other;
    EXPECT_EQ(10000UL + 999UL + 100000UL, byText.GetSize());
    EXPECT_EQ(10000UL + 999UL + 10000UL, byStream.GetSize());
    EXPECT_TRUE(byText == byStream);
}

TEST(StreamAppendOperator, AStreamAppendedToItselfDoubles)
{
    Stream small;
    small.AddString("abc", false);
    small += small;
    EXPECT_EQ("abcabc", Contents(small));
    EXPECT_EQ(10000UL, small.GetSize());

    // 6000 + 6000 + 2 is above 10,000: the copy comes from the new block.
    Stream large = Filled(6000, 'x');
    large.GetCharPointer()[0] = 'S';
    large += large;
    EXPECT_EQ(10000UL + 6000UL + 10000UL, large.GetSize());
    EXPECT_EQ(12000UL, large.GetLevel());
    const std::string half = "S" + std::string(5999, 'x');
    EXPECT_EQ(half + half, Contents(large));
}

TEST(StreamAddOperator, GivesTheContentsOfBothAndLeavesThemUnchanged)
{
    Stream left;
    left.AddString("left", false);
    Stream right;
    right.AddString("right", true);
    const Stream sum = left + right;
    EXPECT_EQ(std::string("leftright\r\n"), Contents(sum));
    EXPECT_EQ('\0', sum.GetCharPointer()[11]);
    EXPECT_EQ(10000UL, sum.GetSize());
    EXPECT_EQ("left", Contents(left));
    EXPECT_EQ(std::string("right\r\n"), Contents(right));

    const Stream twice = left + left;
    EXPECT_EQ("leftleft", Contents(twice));
}

TEST(StreamAddOperator, TheCopyGrowsWhenTheLevelsAddUpToMoreThanTheSize)
{
    const Stream left = Filled(9000, 'a');
    const Stream right = Filled(1001, 'b');
    const Stream sum = left + right;
    EXPECT_EQ(10000UL + 1001UL + 10000UL, sum.GetSize());
    EXPECT_EQ(10001UL, sum.GetLevel());
    EXPECT_EQ(std::string(9000, 'a') + std::string(1001, 'b'), Contents(sum));
    EXPECT_EQ('\0', sum.GetCharPointer()[10001]);
    EXPECT_EQ(10000UL, left.GetSize());
}

TEST(StreamAddOperator, TheCopyKeepsTheSizeOfTheLeftStream)
{
    Stream left(50000);
    left.AddString("left", false);
    const Stream sum = left + Filled(100, 'r');
    EXPECT_EQ(50000UL, sum.GetSize());
    EXPECT_EQ(104UL, sum.GetLevel());
}

TEST(StreamAddOperator, FillingTheCopyExactlyLeavesNoRoomForTheNul)
{
    // 9000 + 1000 is not above 10,000: the copy is full, and no NUL is
    // written behind it.
    const Stream sum = Filled(9000, 'a') + Filled(1000, 'b');
    EXPECT_EQ(10000UL, sum.GetSize());
    EXPECT_EQ(10000UL, sum.GetLevel());
    const std::string expected = std::string(9000, 'a') + std::string(1000, 'b');
    EXPECT_EQ(expected, Contents(sum));
    EXPECT_EQ(expected, std::string(sum.GetString()));

    // One byte less leaves room for it.
    const Stream shorter = Filled(8999, 'a') + Filled(1000, 'b');
    EXPECT_EQ(9999UL, shorter.GetLevel());
    EXPECT_EQ('\0', shorter.GetCharPointer()[9999]);
    EXPECT_EQ(9999UL, shorter.GetString().Length());
}

TEST(StreamAddOperator, AFullCopyStillTakesMoreText)
{
    Stream sum = Filled(9000, 'a') + Filled(1000, 'b');
    sum.AddString("c", false);
    EXPECT_EQ(10000UL + 1UL + 100000UL, sum.GetSize());
    EXPECT_EQ(10001UL, sum.GetLevel());
    EXPECT_EQ('c', sum.GetCharPointer()[10000]);
}

TEST(StreamEquality, TheSameObjectIsEqual)
{
    Stream stream;
    stream.AddString("x", false);
    const Stream& same = stream;
    EXPECT_TRUE(stream == same);
    EXPECT_FALSE(stream != same);
}

TEST(StreamEquality, SameBytesAndLevelAreEqualWhateverTheCapacity)
{
    Stream own;
    own.AddString("contents", true);
    Stream heap(75000);
    heap.AddString("contents", true);
    Stream grown;
    grown.AddString(Repeated(9997, 'x'), false);
    grown.SetLevel(0);
    grown.AddString("contents", true);
    ASSERT_NE(own.GetSize(), heap.GetSize());
    ASSERT_NE(own.GetSize(), grown.GetSize());
    EXPECT_TRUE(own == heap);
    EXPECT_TRUE(heap == grown);
    EXPECT_TRUE(grown == own);
    EXPECT_FALSE(own != heap);
}

TEST(StreamEquality, ADifferentLevelIsNotEqual)
{
    Stream shorter;
    shorter.AddString("abc", false);
    Stream longer;
    longer.AddString("abcd", false);
    EXPECT_FALSE(shorter == longer);
    EXPECT_TRUE(shorter != longer);
    // Even with the same bytes in the block.
    longer.SetLevel(4);
    shorter.AddString("d", false);
    shorter.SetLevel(3);
    EXPECT_FALSE(shorter == longer);
}

TEST(StreamEquality, DifferentBytesWithinTheLevelAreNotEqual)
{
    Stream left;
    left.AddString("abc", false);
    Stream right;
    right.AddString("abd", false);
    EXPECT_FALSE(left == right);
    EXPECT_TRUE(left != right);
}

TEST(StreamEquality, BytesBehindTheLevelDoNotCount)
{
    Stream left;
    left.AddString("abcXYZ", false);
    left.SetLevel(3);
    Stream right;
    right.AddString("abc", false);
    EXPECT_TRUE(left == right);
    EXPECT_FALSE(left != right);

    // Empty streams are equal whatever their blocks hold.
    left.SetLevel(0);
    const Stream empty(20000);
    EXPECT_TRUE(left == empty);
}
