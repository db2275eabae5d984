#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace tallyforge {

/// Memory of zeros, aligned for pixels; std::bad_alloc when there is none. A large piece lies in large pages
/// where the machine has them, so that touching it for the first time costs a few faults instead of
/// thousands.
void* AllocateZeros(size_t bytes);
/// Gives back what AllocateZeros gave for as many bytes.
void FreeZeros(void* memory, size_t bytes) noexcept;

/// The allocator of pixels: what a container makes without a value is zero already and is not touched.
template <typename T>
struct PixelMemory {
    using value_type = T;

    PixelMemory() = default;
    template <typename Other>
    explicit(false) PixelMemory(const PixelMemory<Other>&) {}

    T* allocate(size_t count) {
        if (count > size_t(-1) / sizeof(T)) throw std::bad_alloc();
        return static_cast<T*>(AllocateZeros(count * sizeof(T)));
    }
    void deallocate(T* memory, size_t count) noexcept { FreeZeros(memory, count * sizeof(T)); }

    void construct(T*) noexcept {}
    template <typename... Values>
    void construct(T* place, Values&&... values) {
        std::construct_at(place, std::forward<Values>(values)...);
    }

    bool operator==(const PixelMemory&) const { return true; }
};

} // namespace tallyforge
