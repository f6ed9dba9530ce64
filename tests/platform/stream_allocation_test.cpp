// Streams when memory for a heap block cannot be had: std::bad_alloc
// passes, and a stream that was to change is left as it was. Replaces the
// global array operators new and delete, so it runs on its own.

#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/stream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {

// How many of the next array allocations above 10,000 bytes fail. Smaller
// ones, which the test framework may make, always succeed.
int refusals = 0;

} // namespace

void* operator new[](std::size_t size)
{
    if (size > 10000 && refusals > 0) {
        --refusals;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

using Utilities::Stream;
using Utilities::String;

std::string Contents(const Stream& stream)
{
    return std::string(stream.GetCharPointer(), stream.GetLevel());
}

TEST(StreamAllocation, ARequestedHeapBlockThatCannotBeHadThrowsBadAlloc)
{
    refusals = 1;
    EXPECT_THROW(Stream stream(20000), std::bad_alloc);
    EXPECT_EQ(0, refusals);
}

TEST(StreamAllocation, AddStringThatCannotGrowLeavesTheStreamAsItWas)
{
    Stream stream;
    stream.AddString("kept", true);
    // The text is made before the refusal, which is meant for the stream.
    const String text(std::string(10000, 'x'));
    refusals = 1;
    EXPECT_THROW(stream.AddString(text, false), std::bad_alloc);
    EXPECT_EQ(10000UL, stream.GetSize());
    EXPECT_EQ(6UL, stream.GetLevel());
    EXPECT_EQ(std::string("kept\r\n"), Contents(stream));
    // The next attempt succeeds.
    stream.AddString(text, false);
    EXPECT_EQ(10006UL, stream.GetLevel());
}

TEST(StreamAllocation, AStreamOnTheHeapThatCannotGrowKeepsItsBlock)
{
    Stream stream(20000);
    stream.AddString("kept", false);
    char* const block = stream.GetCharPointer();
    const String text(std::string(20000, 'x'));
    refusals = 1;
    EXPECT_THROW(stream.AddString(text, false), std::bad_alloc);
    EXPECT_EQ(block, stream.GetCharPointer());
    EXPECT_EQ(20000UL, stream.GetSize());
    EXPECT_STREQ("kept", stream.GetString().GetCharPointer());
}

TEST(StreamAllocation, AppendOperatorThatCannotGrowLeavesTheStreamAsItWas)
{
    Stream stream;
    stream.AddString("kept", false);
    Stream other;
    other.SetLevel(10000);
    refusals = 1;
    EXPECT_THROW(stream += other, std::bad_alloc);
    EXPECT_EQ(10000UL, stream.GetSize());
    EXPECT_EQ("kept", Contents(stream));
}

TEST(StreamAllocation, AddOperatorThatCannotGrowItsCopyThrows)
{
    Stream left;
    left.AddString("left", false);
    Stream right;
    right.SetLevel(10000);
    refusals = 1;
    EXPECT_THROW(static_cast<void>(left + right), std::bad_alloc);
    EXPECT_EQ("left", Contents(left));
}

TEST(StreamAllocation, ACopyThatCannotBeHadThrowsAndLeavesTheSource)
{
    Stream source(30000);
    source.AddString("source", false);
    refusals = 1;
    EXPECT_THROW(Stream copy(source), std::bad_alloc);
    EXPECT_STREQ("source", source.GetString().GetCharPointer());
}

TEST(StreamAllocation, AssignmentThatCannotHaveTheBlockLeavesTheTargetAsItWas)
{
    Stream source(30000);
    source.AddString("source", false);
    Stream target(40000);
    target.AddString("target", false);
    char* const block = target.GetCharPointer();
    refusals = 1;
    EXPECT_THROW(target = source, std::bad_alloc);
    EXPECT_EQ(block, target.GetCharPointer());
    EXPECT_EQ(40000UL, target.GetSize());
    EXPECT_EQ("target", Contents(target));
}

} // namespace
