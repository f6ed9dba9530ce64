#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/memory_manager.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

using Diagnostics::DiagnosticKit;
using Diagnostics::FixBlockSizeMemoryManager;
using Diagnostics::MemoryBlock;
using Diagnostics::MemoryBlockBase;
using Diagnostics::MemoryManager;

namespace {

constexpr unsigned kBlockCount = 128;
constexpr unsigned kBlockSize = 256;

// The pool's blocks are elements of one array, so block i is the first
// block plus i.
MemoryBlock<char>* AsCharBlock(MemoryBlockBase* block)
{
    return static_cast<MemoryBlock<char>*>(block);
}

const char* MemoryOf(const MemoryBlock<char>* block)
{
    return static_cast<const char*>(*block);
}

bool LiesInside(const void* object, std::size_t objectSize, const void* start, std::size_t length)
{
    const char* const objectStart = static_cast<const char*>(object);
    const char* const begin = static_cast<const char*>(start);
    return begin >= objectStart && begin + length <= objectStart + objectSize;
}

// A pool of its own for each test, on the heap because it holds 32 KiB.
class PoolTest : public ::testing::Test {
protected:
    PoolTest() : manager(std::make_unique<FixBlockSizeMemoryManager>()) {}

    // Allocates and takes a reference, as a string does.
    MemoryBlock<char>* Take()
    {
        MemoryBlock<char>* block = AsCharBlock(manager->Allocate(1U));
        block->AddReference();
        return block;
    }

    std::unique_ptr<FixBlockSizeMemoryManager> manager;
};

// A block whose memory is a buffer of the test: the block's own bytes
// followed by a guard area that must never be written.
class CopyBlockTest : public ::testing::Test {
protected:
    static constexpr unsigned kGuardSize = 64;
    static constexpr char kBlank = '.';
    static constexpr char kGuard = '#';

    CopyBlockTest()
    {
        std::memset(buffer, kBlank, kBlockSize);
        std::memset(buffer + kBlockSize, kGuard, kGuardSize);
        for (unsigned i = 0; i < sizeof source; ++i) {
            source[i] = static_cast<char>('A' + i % 26);
        }
        block.AssignMemory(buffer, kBlockSize);
    }

    bool GuardIntact() const
    {
        for (unsigned i = 0; i < kGuardSize; ++i) {
            if (buffer[kBlockSize + i] != kGuard) {
                return false;
            }
        }
        return true;
    }

    // Bytes [from, to) of the block still hold the blank.
    bool Blank(unsigned from, unsigned to) const
    {
        for (unsigned i = from; i < to; ++i) {
            if (buffer[i] != kBlank) {
                return false;
            }
        }
        return true;
    }

    char buffer[kBlockSize + kGuardSize];
    char source[300];
    MemoryBlock<char> block;
};

} // namespace

// --- MemoryBlockBase on its own -------------------------------------------

TEST(MemoryBlockBase, FreshBlockHasNoReferencesNoSizeAndNoMemory)
{
    const MemoryBlockBase block;
    EXPECT_EQ(block.GetReferenceCount(), 0U);
    EXPECT_EQ(block.Size(), 0U);
    EXPECT_TRUE(block.IsFree());
    EXPECT_FALSE(block.IsUsed());
}

TEST(MemoryBlockBase, FreshTypedBlockConvertsToANullText)
{
    const MemoryBlock<char> block;
    EXPECT_EQ(MemoryOf(&block), nullptr);
}

TEST(MemoryBlockBase, AssignMemorySetsSizeAndMemoryButNotTheCount)
{
    char buffer[kBlockSize];
    MemoryBlock<char> block;
    block.AssignMemory(buffer, 100);
    EXPECT_EQ(block.Size(), 100U);
    EXPECT_EQ(MemoryOf(&block), buffer);
    EXPECT_TRUE(block.IsUsed());
    EXPECT_TRUE(block.IsFree());
    EXPECT_EQ(block.GetReferenceCount(), 0U);
}

TEST(MemoryBlockBase, AddReferenceCountsUpAndMakesTheBlockHeld)
{
    MemoryBlockBase block;
    block.AddReference();
    EXPECT_EQ(block.GetReferenceCount(), 1U);
    EXPECT_FALSE(block.IsFree());
    block.AddReference();
    EXPECT_EQ(block.GetReferenceCount(), 2U);
    EXPECT_FALSE(block.IsFree());
}

TEST(MemoryBlockBase, RemoveReferenceAboveZeroKeepsTheBlockHeld)
{
    MemoryBlockBase block;
    block.AddReference();
    block.AddReference();
    block.RemoveReference();
    EXPECT_EQ(block.GetReferenceCount(), 1U);
    EXPECT_FALSE(block.IsFree());
}

TEST(MemoryBlockBase, RemoveReferenceToZeroFreesTheBlockAndKeepsItsMemory)
{
    char buffer[kBlockSize];
    std::memcpy(buffer, "kept text", 10);
    MemoryBlock<char> block;
    block.AssignMemory(buffer, kBlockSize);
    block.AddReference();
    block.RemoveReference();
    EXPECT_EQ(block.GetReferenceCount(), 0U);
    EXPECT_TRUE(block.IsFree());
    EXPECT_TRUE(block.IsUsed());
    EXPECT_EQ(block.Size(), kBlockSize);
    EXPECT_EQ(MemoryOf(&block), buffer);
    EXPECT_STREQ(MemoryOf(&block), "kept text");
}

TEST(MemoryBlockBase, FreeAndUsedAreNotOpposites)
{
    char buffer[kBlockSize];
    MemoryBlockBase block;
    // Neither held nor given memory: free, not used.
    EXPECT_TRUE(block.IsFree());
    EXPECT_FALSE(block.IsUsed());
    // Held, no memory: neither free nor used.
    block.AddReference();
    EXPECT_FALSE(block.IsFree());
    EXPECT_FALSE(block.IsUsed());
    // Held with memory: used, not free.
    block.AssignMemory(buffer, kBlockSize);
    EXPECT_FALSE(block.IsFree());
    EXPECT_TRUE(block.IsUsed());
    // Released after use: both free and used.
    block.RemoveReference();
    EXPECT_TRUE(block.IsFree());
    EXPECT_TRUE(block.IsUsed());
}

// --- CopyBlock --------------------------------------------------------------

TEST_F(CopyBlockTest, CopyOf300BytesCopies256AndWritesNothingPastTheBlock)
{
    block.CopyBlock(source, 300);
    EXPECT_EQ(std::memcmp(buffer, source, kBlockSize), 0);
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyShorterThanTheBlockCopiesExactlyTheCount)
{
    block.CopyBlock(source, 10);
    EXPECT_EQ(std::memcmp(buffer, source, 10), 0);
    EXPECT_TRUE(Blank(10, kBlockSize));
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyOfZeroBytesChangesNothing)
{
    block.CopyBlock(source, 0);
    EXPECT_TRUE(Blank(0, kBlockSize));
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyAtAnOffsetWithRoomCopiesTheWholeCount)
{
    block.CopyBlock(source, 100, 20);
    EXPECT_TRUE(Blank(0, 100));
    EXPECT_EQ(std::memcmp(buffer + 100, source, 20), 0);
    EXPECT_TRUE(Blank(120, kBlockSize));
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyAtAnOffsetCopiesOnlyUpToTheEndOfTheBlock)
{
    // min(10, 256 - 250) = 6 bytes.
    block.CopyBlock(source, 250, 10);
    EXPECT_TRUE(Blank(0, 250));
    EXPECT_EQ(std::memcmp(buffer + 250, source, 6), 0);
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyAtTheLastByteCopiesOneByte)
{
    block.CopyBlock(source, 255, 300);
    EXPECT_TRUE(Blank(0, 255));
    EXPECT_EQ(buffer[255], source[0]);
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyAtAnOffsetEqualToTheSizeCopiesNothing)
{
    block.CopyBlock(source, 256, 10);
    EXPECT_TRUE(Blank(0, kBlockSize));
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyAtAnOffsetPastTheSizeCopiesNothing)
{
    block.CopyBlock(source, 1000, 10);
    EXPECT_TRUE(Blank(0, kBlockSize));
    EXPECT_TRUE(GuardIntact());
}

TEST_F(CopyBlockTest, CopyFromInsideTheBlockItselfMovesTheBytes)
{
    std::memcpy(buffer, "0123456789", 10);
    // Source and target overlap: bytes 0..9 move to 2..11.
    block.CopyBlock(buffer, 2, 10);
    EXPECT_EQ(std::memcmp(buffer, "010123456789", 12), 0);
    EXPECT_TRUE(Blank(12, kBlockSize));
    EXPECT_TRUE(GuardIntact());
}

TEST(MemoryBlockBase, CopyIntoABlockWithoutMemoryWritesNothing)
{
    MemoryBlock<char> block;
    const char source[4] = {'a', 'b', 'c', '\0'};
    // Size 0: every offset is at or past the size.
    block.CopyBlock(source, 4);
    block.CopyBlock(source, 0, 4);
    EXPECT_EQ(MemoryOf(&block), nullptr);
    EXPECT_EQ(block.Size(), 0U);
}

// --- The pool ---------------------------------------------------------------

TEST_F(PoolTest, PoolHas128BlocksOf256Bytes)
{
    EXPECT_EQ(FixBlockSizeMemoryManager::BlockCount, 128U);
    EXPECT_EQ(FixBlockSizeMemoryManager::BlockSize, 256U);
}

TEST_F(PoolTest, FirstAllocateReturnsAFreeBlockWith256BytesOfThePool)
{
    MemoryBlock<char>* first = AsCharBlock(manager->Allocate(1U));
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->IsUsed());
    EXPECT_TRUE(first->IsFree());
    EXPECT_EQ(first->GetReferenceCount(), 0U);
    EXPECT_EQ(first->Size(), kBlockSize);
    // Both the bookkeeping and the memory are inside the manager.
    EXPECT_TRUE(LiesInside(manager.get(), sizeof(FixBlockSizeMemoryManager), first, sizeof(MemoryBlock<char>)));
    EXPECT_TRUE(LiesInside(manager.get(), sizeof(FixBlockSizeMemoryManager), MemoryOf(first), kBlockSize));
    // A fresh pool is zeroed.
    for (unsigned i = 0; i < kBlockSize; ++i) {
        ASSERT_EQ(MemoryOf(first)[i], '\0') << "byte " << i;
    }
}

TEST_F(PoolTest, FirstAllocateReturnsBlockZero)
{
    // Block 0 is the one whose 127 successors are all blocks of the pool:
    // taking 128 blocks in a row yields first + 0 up to first + 127.
    MemoryBlock<char>* first = Take();
    for (unsigned i = 1; i < kBlockCount; ++i) {
        ASSERT_EQ(Take(), first + i) << "block " << i;
    }
    EXPECT_TRUE(LiesInside(manager.get(), sizeof(FixBlockSizeMemoryManager), first,
                           kBlockCount * sizeof(MemoryBlock<char>)));
}

TEST_F(PoolTest, TwoAllocatesWithoutAReferenceReturnTheSameBlock)
{
    MemoryBlockBase* once = manager->Allocate(1U);
    MemoryBlockBase* twice = manager->Allocate(200U);
    EXPECT_EQ(once, twice);
    EXPECT_EQ(twice->GetReferenceCount(), 0U);
}

TEST_F(PoolTest, AfterAReferenceOnBlockZeroTheNextAllocateReturnsBlockOne)
{
    MemoryBlock<char>* first = AsCharBlock(manager->Allocate(1U));
    first->AddReference();
    MemoryBlock<char>* second = AsCharBlock(manager->Allocate(1U));
    EXPECT_EQ(second, first + 1);
    EXPECT_TRUE(second->IsFree());
    EXPECT_EQ(second->Size(), kBlockSize);
    EXPECT_EQ(MemoryOf(second), MemoryOf(first) + kBlockSize);
}

TEST_F(PoolTest, BlockIOwnsThe256BytesAtIOffsetIntoThePool)
{
    MemoryBlock<char>* first = Take();
    for (unsigned i = 1; i < kBlockCount; ++i) {
        MemoryBlock<char>* block = Take();
        ASSERT_EQ(block, first + i);
        EXPECT_EQ(MemoryOf(block), MemoryOf(first) + i * kBlockSize) << "block " << i;
        EXPECT_EQ(block->Size(), kBlockSize) << "block " << i;
    }
    // The last block's memory ends inside the manager: the pool is its own.
    EXPECT_TRUE(LiesInside(manager.get(), sizeof(FixBlockSizeMemoryManager), MemoryOf(first),
                           kBlockCount * kBlockSize));
}

TEST_F(PoolTest, ARequestFor1000BytesGetsA256ByteBlock)
{
    MemoryBlockBase* block = manager->Allocate(1000U);
    EXPECT_EQ(block->Size(), 256U);
}

TEST_F(PoolTest, ARequestForNoBytesGetsA256ByteBlock)
{
    MemoryBlockBase* block = manager->Allocate(0U);
    EXPECT_EQ(block->Size(), 256U);
}

TEST_F(PoolTest, AllocateDoesNotTouchTheReferenceCount)
{
    MemoryBlockBase* block = manager->Allocate(1U);
    manager->Allocate(1U);
    manager->Allocate(1U);
    EXPECT_EQ(block->GetReferenceCount(), 0U);
    EXPECT_TRUE(block->IsFree());
}

TEST_F(PoolTest, AFreeBlockAtTheCursorIsReturnedAgain)
{
    // The cursor stays on a block until it is found held, so a block that
    // was taken and given back at once is handed out again.
    MemoryBlock<char>* first = Take();
    first->RemoveReference();
    EXPECT_EQ(AsCharBlock(manager->Allocate(1U)), first);
}

TEST_F(PoolTest, AReleasedBlockBehindTheCursorComesBackOnlyWhenTheSearchWraps)
{
    MemoryBlock<char>* first = Take();
    const char* const firstMemory = MemoryOf(first);
    for (unsigned i = 1; i <= 10; ++i) {
        ASSERT_EQ(Take(), first + i);
    }
    // Block 0 becomes free while the cursor stands on block 10.
    first->RemoveReference();
    ASSERT_TRUE(first->IsFree());
    for (unsigned i = 11; i < kBlockCount; ++i) {
        MemoryBlock<char>* next = AsCharBlock(manager->Allocate(1U));
        ASSERT_EQ(next, first + i) << "expected the next free block after the cursor";
        next->AddReference();
    }
    // The cursor is on block 127, the last one; the search wraps to block 0.
    MemoryBlock<char>* wrapped = AsCharBlock(manager->Allocate(1U));
    EXPECT_EQ(wrapped, first);
    EXPECT_EQ(MemoryOf(wrapped), firstMemory);
    EXPECT_EQ(wrapped->Size(), kBlockSize);
    EXPECT_TRUE(wrapped->IsFree());
}

TEST_F(PoolTest, AfterWrappingTheSearchTakesFreeBlocksInOrderFromBlockZero)
{
    MemoryBlock<char>* first = Take();
    for (unsigned i = 1; i < kBlockCount; ++i) {
        ASSERT_EQ(Take(), first + i);
    }
    // Free blocks 40 and 5 (in that order) and 0 while the cursor is on 127.
    first[40].RemoveReference();
    first[5].RemoveReference();
    first[0].RemoveReference();
    EXPECT_EQ(Take(), first + 0);
    EXPECT_EQ(Take(), first + 5);
    EXPECT_EQ(Take(), first + 40);
}

TEST_F(PoolTest, With128LiveBlocksAllocateReturnsTheHeldBlockAtTheCursor)
{
    MemoryBlock<char>* first = Take();
    for (unsigned i = 1; i < kBlockCount; ++i) {
        ASSERT_EQ(Take(), first + i);
    }
    // All held; the cursor stands on block 127, the last one taken.
    MemoryBlockBase* block = manager->Allocate(1U);
    EXPECT_EQ(block, first + 127);
    EXPECT_GT(block->GetReferenceCount(), 0U);
    EXPECT_FALSE(block->IsFree());
    EXPECT_EQ(block->Size(), kBlockSize);
    // The cursor does not move: the same block again.
    EXPECT_EQ(manager->Allocate(1U), block);
}

TEST_F(PoolTest, With128LiveBlocksAllocateReturnsTheBlockWhereTheCursorStands)
{
    MemoryBlock<char>* first = Take();
    for (unsigned i = 1; i < kBlockCount; ++i) {
        ASSERT_EQ(Take(), first + i);
    }
    // Give block 40 back and take it again: the cursor now stands on 40.
    first[40].RemoveReference();
    ASSERT_EQ(Take(), first + 40);
    MemoryBlockBase* block = manager->Allocate(1U);
    EXPECT_EQ(block, first + 40);
    EXPECT_EQ(block->GetReferenceCount(), 1U);
    EXPECT_FALSE(block->IsFree());
}

TEST_F(PoolTest, TypedAllocateReturnsTheSameBlockAsTheVirtualOne)
{
    MemoryManager& base = *manager;
    MemoryBlockBase* untyped = base.Allocate(10U);
    MemoryBlock<char>* typed = base.Allocate(char(), 10U);
    EXPECT_EQ(static_cast<MemoryBlockBase*>(typed), untyped);
    untyped->AddReference();
    MemoryBlock<char>* typedNext = manager->Allocate('x', 1000U);
    EXPECT_EQ(typedNext, AsCharBlock(untyped) + 1);
    EXPECT_EQ(static_cast<MemoryBlockBase*>(typedNext), manager->Allocate(1U));
}

TEST_F(PoolTest, FreeDoesNotChangeTheBlock)
{
    MemoryBlock<char>* block = Take();
    const char* const memory = MemoryOf(block);
    manager->Free(block);
    EXPECT_EQ(block->GetReferenceCount(), 1U);
    EXPECT_EQ(MemoryOf(block), memory);
    EXPECT_EQ(block->Size(), kBlockSize);
    // Still held, so the next block is handed out.
    EXPECT_EQ(AsCharBlock(manager->Allocate(1U)), block + 1);
}

TEST_F(PoolTest, ReleasingAPoolBlockToZeroKeepsItsMemoryAndText)
{
    MemoryBlock<char>* block = Take();
    const char* const memory = MemoryOf(block);
    block->CopyBlock("still here", 11);
    block->RemoveReference();
    EXPECT_TRUE(block->IsFree());
    EXPECT_TRUE(block->IsUsed());
    EXPECT_EQ(block->Size(), kBlockSize);
    EXPECT_EQ(MemoryOf(block), memory);
    EXPECT_STREQ(MemoryOf(block), "still here");
}

TEST_F(PoolTest, AReusedBlockKeepsItsMemory)
{
    MemoryBlock<char>* first = Take();
    const char* const memory = MemoryOf(first);
    for (unsigned i = 1; i < kBlockCount; ++i) {
        ASSERT_EQ(Take(), first + i);
    }
    first->RemoveReference();
    ASSERT_EQ(Take(), first);
    EXPECT_EQ(MemoryOf(first), memory);
    EXPECT_EQ(first->Size(), kBlockSize);
}

// --- Clone ------------------------------------------------------------------

TEST(MemoryBlockClone, CloneComesFromTheKitsPoolWithAllBytesCopied)
{
    char buffer[kBlockSize];
    for (unsigned i = 0; i < kBlockSize; ++i) {
        buffer[i] = static_cast<char>(i);
    }
    MemoryBlock<char> original;
    original.AssignMemory(buffer, kBlockSize);
    original.AddReference();

    MemoryManager& kitPool = DiagnosticKit::Instance().Memory();
    MemoryBlock<char>* expected = kitPool.Allocate(char(), 1U);
    MemoryBlock<char>* clone = original.Clone();

    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone, expected);
    EXPECT_NE(clone, &original);
    EXPECT_NE(MemoryOf(clone), buffer);
    EXPECT_EQ(clone->Size(), original.Size());
    EXPECT_EQ(std::memcmp(MemoryOf(clone), buffer, kBlockSize), 0);
    // The original is untouched.
    EXPECT_EQ(original.GetReferenceCount(), 1U);
    EXPECT_EQ(MemoryOf(&original), buffer);
}

TEST(MemoryBlockClone, CloneHasNoReferenceUntilTheCallerAddsOne)
{
    char buffer[kBlockSize] = {'a', 'b', 'c'};
    MemoryBlock<char> original;
    original.AssignMemory(buffer, kBlockSize);

    MemoryManager& kitPool = DiagnosticKit::Instance().Memory();
    MemoryBlock<char>* clone = original.Clone();
    EXPECT_EQ(clone->GetReferenceCount(), 0U);
    EXPECT_TRUE(clone->IsFree());
    // Unreferenced, it is what the pool hands out next.
    EXPECT_EQ(kitPool.Allocate(char(), 1U), clone);

    clone->AddReference();
    EXPECT_EQ(clone->GetReferenceCount(), 1U);
    EXPECT_NE(kitPool.Allocate(char(), 1U), clone);
    clone->RemoveReference();
}

TEST(MemoryBlockClone, CloneOfAPoolBlockIsAnotherBlockWithTheSameText)
{
    MemoryManager& kitPool = DiagnosticKit::Instance().Memory();
    MemoryBlock<char>* original = kitPool.Allocate(char(), 1U);
    original->AddReference();
    original->CopyBlock("some diagnostic text", 21);

    MemoryBlock<char>* clone = original->Clone();
    EXPECT_NE(clone, original);
    EXPECT_NE(MemoryOf(clone), MemoryOf(original));
    EXPECT_EQ(clone->Size(), kBlockSize);
    EXPECT_EQ(std::memcmp(MemoryOf(clone), MemoryOf(original), kBlockSize), 0);
    EXPECT_STREQ(MemoryOf(clone), "some diagnostic text");

    // The copy is independent of the original.
    clone->AddReference();
    clone->CopyBlock("X", 1);
    EXPECT_STREQ(MemoryOf(original), "some diagnostic text");
    EXPECT_STREQ(MemoryOf(clone), "Xome diagnostic text");

    clone->RemoveReference();
    original->RemoveReference();
}

TEST(MemoryBlockClone, CloneWithTheKitsPoolExhaustedIsTheHeldBlockAtTheCursor)
{
    MemoryManager& kitPool = DiagnosticKit::Instance().Memory();
    std::vector<MemoryBlock<char>*> held;
    for (unsigned i = 0; i < kBlockCount; ++i) {
        MemoryBlock<char>* block = kitPool.Allocate(char(), 1U);
        ASSERT_TRUE(block->IsFree()) << "block " << i << " of the kit's pool was already held";
        block->AddReference();
        held.push_back(block);
    }
    MemoryBlock<char>* last = held.back();
    last->CopyBlock("last", 5);

    // Cloning the block at the cursor gives back that very block, unchanged.
    MemoryBlock<char>* clone = last->Clone();
    EXPECT_EQ(clone, last);
    EXPECT_STREQ(MemoryOf(clone), "last");
    EXPECT_EQ(last->GetReferenceCount(), 1U);

    // Cloning another block overwrites the block at the cursor.
    held.front()->CopyBlock("front", 6);
    MemoryBlock<char>* other = held.front()->Clone();
    EXPECT_EQ(other, last);
    EXPECT_STREQ(MemoryOf(last), "front");
    EXPECT_STREQ(MemoryOf(held.front()), "front");

    for (MemoryBlock<char>* block : held) {
        block->RemoveReference();
    }
}
