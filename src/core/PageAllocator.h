#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <new>

namespace quorbel {

/// Gives large blocks pages of their own, which go back to the system when they are freed: between
/// other blocks of the heap they would stay the program's. For std::vector.
template <typename T>
struct PageAllocator {
    using value_type = T;
    /// Smaller blocks are the heap's.
    static constexpr std::size_t kLeastBytes = std::size_t{64} << 10U;

    PageAllocator() = default;
    template <typename Other>
    explicit PageAllocator(const PageAllocator<Other> & /*other*/) {}

    T *allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(T);
        if (bytes < kLeastBytes) {
            return static_cast<T *>(::operator new(bytes));
        }
        void *pages =
            ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) {
            throw std::bad_alloc();
        }
        return static_cast<T *>(pages);
    }
    void deallocate(T *block, std::size_t count) {
        const std::size_t bytes = count * sizeof(T);
        if (bytes < kLeastBytes) {
            ::operator delete(block);
        } else {
            ::munmap(block, bytes);
        }
    }
    bool operator==(const PageAllocator & /*other*/) const = default;
};

}  // namespace quorbel
