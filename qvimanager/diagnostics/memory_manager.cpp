#include "qvimanager/diagnostics/memory_manager.h"

#include "qvimanager/diagnostics/diagnostic_kit.h"

#include <algorithm>
#include <cstring>

namespace Diagnostics {

std::recursive_mutex& PoolGuard()
{
    static std::recursive_mutex* guard = new std::recursive_mutex();
    return *guard;
}

MemoryBlockBase::MemoryBlockBase() : referenceCount(0), size(0), memory(nullptr) {}

void MemoryBlockBase::AddReference()
{
    ++referenceCount;
}

void MemoryBlockBase::RemoveReference()
{
    --referenceCount;
    if (referenceCount == 0) {
        DiagnosticKit::Instance().Memory().Free(this);
    }
}

unsigned MemoryBlockBase::GetReferenceCount() const
{
    return referenceCount;
}

bool MemoryBlockBase::IsFree() const
{
    return referenceCount == 0;
}

bool MemoryBlockBase::IsUsed() const
{
    return memory != nullptr;
}

void MemoryBlockBase::AssignMemory(void* newMemory, unsigned newSize)
{
    memory = newMemory;
    size = newSize;
}

unsigned MemoryBlockBase::Size() const
{
    return size;
}

void MemoryBlockBase::CopyBlock(const void* source, unsigned count)
{
    CopyBlock(source, 0, count);
}

void MemoryBlockBase::CopyBlock(const void* source, unsigned offset, unsigned count)
{
    if (offset >= size) {
        return;
    }
    const unsigned copied = std::min(count, size - offset);
    if (copied > 0) {
        std::memmove(static_cast<char*>(memory) + offset, source, copied);
    }
}

const void* MemoryBlockBase::GetBlock() const
{
    return memory;
}

MemoryBlockBase* MemoryBlockBase::Clone() const
{
    MemoryBlockBase* copy = DiagnosticKit::Instance().Memory().Allocate(size);
    // With the pool exhausted the manager may hand back this very block;
    // copying a block onto itself leaves it as it is.
    if (copy != this && memory != nullptr) {
        copy->CopyBlock(memory, size);
    }
    return copy;
}

MemoryManager::~MemoryManager() = default;

void MemoryManager::Free(MemoryBlockBase*) {}

MemoryBlock<char>* MemoryManager::Allocate(char, unsigned size)
{
    return static_cast<MemoryBlock<char>*>(Allocate(size));
}

FixBlockSizeMemoryManager::FixBlockSizeMemoryManager() : blocks(), cursor(&blocks[0]), pool() {}

MemoryBlockBase* FixBlockSizeMemoryManager::Allocate(unsigned)
{
    if (!cursor->IsFree()) {
        AdvanceToFreeBlock();
    }
    if (!cursor->IsUsed()) {
        const auto index = static_cast<unsigned>(static_cast<MemoryBlock<char>*>(cursor) - blocks);
        cursor->AssignMemory(pool + index * BlockSize, BlockSize);
    }
    return cursor;
}

void FixBlockSizeMemoryManager::AdvanceToFreeBlock()
{
    MemoryBlockBase* const start = cursor;
    while (!cursor->IsFree()) {
        MemoryBlock<char>* next = static_cast<MemoryBlock<char>*>(cursor) + 1;
        if (next == blocks + BlockCount) {
            next = blocks;
        }
        cursor = next;
        if (cursor == start) {
            break;
        }
    }
}

} // namespace Diagnostics
