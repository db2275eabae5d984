#include "coregraphics/PixelMemory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include <sys/mman.h>

namespace tallyforge {

namespace {

constexpr size_t kLargePage = size_t(2) << 20;
// The sanitizers watch the edges of what comes from calloc, not of what comes from the kernel.
#if ADDRESS_SANITIZER
constexpr size_t kFromTheKernel = SIZE_MAX;
#else
constexpr size_t kFromTheKernel = kLargePage;
#endif

/// The kernel's memory begins with any small page: more is asked for, and what sticks out given back.
void* map(size_t bytes) {
    if (bytes > SIZE_MAX - 2 * kLargePage) throw std::bad_alloc();
    constexpr size_t kPage = 4096;
    const size_t whole = (bytes + kPage - 1) / kPage * kPage;
    void* got = mmap(nullptr, whole + kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (got == MAP_FAILED) throw std::bad_alloc();
    auto* begin = static_cast<std::byte*>(got);
    const size_t before = (kLargePage - reinterpret_cast<uintptr_t>(begin) % kLargePage) % kLargePage;
    if (before > 0) munmap(begin, before);
    if (before < kLargePage) munmap(begin + before + whole, kLargePage - before);
    madvise(begin + before, whole, MADV_HUGEPAGE); // where it is refused, the pages are small
    return begin + before;
}

} // namespace

void* AllocateZeros(size_t bytes) {
    if (bytes >= kFromTheKernel) return map(bytes);
    void* memory = std::calloc(std::max(bytes, size_t(1)), 1);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void FreeZeros(void* memory, size_t bytes) noexcept {
    if (bytes >= kFromTheKernel)
        munmap(memory, bytes);
    else
        std::free(memory);
}

} // namespace tallyforge
