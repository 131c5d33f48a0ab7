#include "tests/common/WatchedNew.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<test::NewWatcher> theWatcher{nullptr};

constexpr std::size_t kUsualAlignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

void* AllocateOrNot(std::size_t size, std::size_t alignment, const void* caller)
{
    const test::NewWatcher watcher = theWatcher;
    void* memory = nullptr;
    const bool isThere = !watcher || watcher(size, caller);
    return isThere && posix_memalign(&memory, alignment, std::max(size, std::size_t(1))) == 0 ? memory
                                                                                              : nullptr;
}

void* Allocate(std::size_t size, std::size_t alignment, const void* caller)
{
    if (void* const memory = AllocateOrNot(size, alignment, caller))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return Allocate(size, kUsualAlignment, __builtin_return_address(0));
}
void* operator new[](std::size_t size)
{
    return Allocate(size, kUsualAlignment, __builtin_return_address(0));
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return Allocate(size, std::size_t(alignment), __builtin_return_address(0));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return AllocateOrNot(size, kUsualAlignment, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return AllocateOrNot(size, kUsualAlignment, __builtin_return_address(0));
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
void operator delete(void* memory, std::align_val_t) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept
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

namespace test {

void WatchNew(NewWatcher watcher)
{
    theWatcher = watcher;
}

} // namespace test
