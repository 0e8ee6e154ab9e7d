#include "tests/support/failing_memory.h"

#include <cstdlib>
#include <new>

namespace failing_memory {

std::size_t allocations_left = 0;
bool fails_for_good = false;
bool one_failed = false;

} // namespace failing_memory

namespace {

bool FailsNow()
{
    using namespace failing_memory;
    if (allocations_left == 0 || --allocations_left > 0) {
        return false;
    }
    allocations_left = fails_for_good ? 1 : 0;
    return one_failed = true;
}

} // namespace

void* operator new(std::size_t size)
{
    if (FailsNow()) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

// The other forms too: memory of one must not come to the other's release.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

#ifndef _WIN32 // where aligned memory is another heap's
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    const auto step = static_cast<std::size_t>(alignment);
    return FailsNow() ? nullptr : std::aligned_alloc(step, (size + step - 1) / step * step);
}

void operator delete(void* memory, std::align_val_t) noexcept
{
    std::free(memory);
}
#endif

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
