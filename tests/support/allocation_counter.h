#ifndef QVIMANAGER_TESTS_SUPPORT_ALLOCATION_COUNTER_H
#define QVIMANAGER_TESTS_SUPPORT_ALLOCATION_COUNTER_H

// Counts every heap allocation of the program that includes it: it replaces
// the global operators new and delete. Include it in exactly one file of a
// test program that runs on its own.

#include <cstdint>
#include <cstdlib>
#include <new>

namespace TestSupport {

inline unsigned long allocations = 0;

} // namespace TestSupport

void* operator new(std::size_t size)
{
    ++TestSupport::allocations;
    if (size > static_cast<std::size_t>(PTRDIFF_MAX)) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

// The forms that give null instead of throwing (the library makes its
// component factory with one while it loads) count too, and come from the
// same heap as the others, so any delete may free them.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

#endif
