#include "core/common/LargePages_p.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace kr {

namespace {

constexpr std::size_t kLargePage = std::size_t(2) << 20;
constexpr std::size_t kLeastOwnPages = kLargePage / 4;

std::size_t RoundUp(std::size_t value, std::size_t step)
{
    return (value + step - 1) / step * step;
}

} // namespace

void AdviseLargePages(void* begin, std::size_t bytes)
{
#ifdef MADV_HUGEPAGE
    const std::uintptr_t first = RoundUp(reinterpret_cast<std::uintptr_t>(begin), kLargePage);
    const std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(begin) + bytes) / kLargePage * kLargePage;
    if (last > first)
        madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
    (void)begin;
    (void)bytes;
#endif
}

namespace detail {

// Small requests are for the ordinary heap. Larger ones get pages of their own, which can be aligned, so that
// the first and last part are large pages too, and which go back to the system at once. From a quarter of a
// large page on, clearing a whole one takes less than finding that many small ones.
void* AllocateScratch(std::size_t bytes)
{
    if (bytes == 0)
        return nullptr;
    if (bytes < kLeastOwnPages) {
        void* memory = std::calloc(1, bytes);
        if (!memory)
            throw std::bad_alloc();
        return memory;
    }
    const std::size_t length = RoundUp(bytes, kLargePage);
    void* raw =
        mmap(nullptr, length + kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED)
        throw std::bad_alloc();
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = RoundUp(begin, kLargePage);
    if (aligned > begin)
        munmap(raw, aligned - begin);
    if (const std::size_t behind = kLargePage - (aligned - begin))
        munmap(reinterpret_cast<void*>(aligned + length), behind);
    AdviseLargePages(reinterpret_cast<void*>(aligned), length);
    return reinterpret_cast<void*>(aligned);
}

void FreeScratch(void* memory, std::size_t bytes) noexcept
{
    if (bytes < kLeastOwnPages)
        std::free(memory);
    else
        munmap(memory, RoundUp(bytes, kLargePage));
}

} // namespace detail

} // namespace kr
