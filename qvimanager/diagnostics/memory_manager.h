#ifndef QVIMANAGER_DIAGNOSTICS_MEMORY_MANAGER_H
#define QVIMANAGER_DIAGNOSTICS_MEMORY_MANAGER_H

// Memory accounting for diagnostics.
//
// Every Diagnostics::String keeps its text in a block of a fixed pool, so
// that tracing never touches the heap after the pool is made and cannot
// disturb what it observes. The pool (FixBlockSizeMemoryManager) has 128
// blocks of 256 bytes. Nothing here reports failure: when every block is in
// use, a new string shares a block with its present holders and overwrites
// their text. Diagnostics output may be garbled, but it never stops the
// program.
//
// Strings are made on every thread, and copies share blocks: every change
// of a block's holders or text is made under PoolGuard(), which
// Diagnostics::String takes.

#include <cstdint>
#include <mutex>

namespace Diagnostics {

class MemoryManager;

// The lock of the pool and of every block's holders and text. Recursive: a
// string operation holds it while it makes other strings. It lives for the
// whole process, beyond the static objects.
std::recursive_mutex& PoolGuard();

// Bookkeeping of one block: how many strings hold it, and its memory.
class MemoryBlockBase {
public:
    MemoryBlockBase();

    void AddReference();
    // Counts one holder down. At 0 the block is handed to the manager's
    // Free, which does nothing: a block is free just by its count being 0,
    // and its memory stays assigned for reuse.
    void RemoveReference();
    unsigned GetReferenceCount() const;

    // The reference count is 0.
    bool IsFree() const;
    // Memory has been assigned. Not the opposite of IsFree: a free block that
    // was used before is both free and used.
    bool IsUsed() const;

    void AssignMemory(void* memory, unsigned size);
    unsigned Size() const;

protected:
    // Copies min(count, size) bytes to the start of the memory.
    void CopyBlock(const void* source, unsigned count);
    // Copies min(count, size - offset) bytes to the memory at offset. An
    // offset at or past the size copies nothing. Neither form writes past
    // the block; source and block may overlap.
    void CopyBlock(const void* source, unsigned offset, unsigned count);
    const void* GetBlock() const;
    // A new block from the diagnostics memory manager with all `size` bytes
    // of this one copied into it. Its reference count stays 0 until the
    // caller adds one.
    MemoryBlockBase* Clone() const;

private:
    std::uint32_t referenceCount;
    std::uint32_t size;
    void* memory;
};

// Typed forwarding for blocks of text.
template <typename T>
class MemoryBlock;

template <>
class MemoryBlock<char> : public MemoryBlockBase {
public:
    MemoryBlock<char>* Clone() const
    {
        return static_cast<MemoryBlock<char>*>(MemoryBlockBase::Clone());
    }
    void CopyBlock(const char* source, unsigned count)
    {
        MemoryBlockBase::CopyBlock(source, count);
    }
    void CopyBlock(const char* source, unsigned offset, unsigned count)
    {
        MemoryBlockBase::CopyBlock(source, offset, count);
    }
    operator const char*() const
    {
        return static_cast<const char*>(GetBlock());
    }
};

class MemoryManager {
public:
    virtual ~MemoryManager();
    // A block of at least the asked size, or what the manager can give.
    virtual MemoryBlockBase* Allocate(unsigned size) = 0;
    // Does nothing: a block is free when its reference count is 0.
    virtual void Free(MemoryBlockBase* block);

    // Typed front: the first argument only selects the element type.
    MemoryBlock<char>* Allocate(char, unsigned size);
};

// The fixed pool: 128 blocks of 256 bytes inside the manager itself. It does
// not use the heap after its own creation.
class FixBlockSizeMemoryManager : public MemoryManager {
public:
    static constexpr unsigned BlockCount = 128;
    static constexpr unsigned BlockSize = 256;

    FixBlockSizeMemoryManager();
    FixBlockSizeMemoryManager(const FixBlockSizeMemoryManager&) = delete;
    FixBlockSizeMemoryManager& operator=(const FixBlockSizeMemoryManager&) = delete;

    // The size is ignored: every block has 256 bytes. Returns the block at
    // the cursor (after moving on to a free one if it is held), with its
    // memory assigned on first use. Neither the reference count nor the
    // cursor is touched, so two calls with no AddReference between them
    // return the same block. With all blocks held it returns the held block
    // at the cursor.
    MemoryBlockBase* Allocate(unsigned size) override;
    using MemoryManager::Allocate;

private:
    // From the cursor, steps (wrapping from the last block to block 0) until
    // it stands on a free block, or is back where it started.
    void AdvanceToFreeBlock();

    // The pool's blocks hold text, the only element type in use, so the
    // typed front hands out objects that really are MemoryBlock<char>.
    MemoryBlock<char> blocks[BlockCount];
    MemoryBlockBase* cursor;
    char pool[BlockCount * BlockSize];
};

} // namespace Diagnostics

#endif
