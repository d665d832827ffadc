#include "platform/AllocationMeter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> mostInUse{0};

void *counted(void *block) {
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    const std::size_t now = inUse += ::malloc_usable_size(block);
    std::size_t most = mostInUse;
    while (now > most && !mostInUse.compare_exchange_weak(most, now)) {
    }
    return block;
}

void release(void *block) noexcept {
    inUse -= ::malloc_usable_size(block);
    std::free(block);
}

}  // namespace

void *operator new(std::size_t size) {
    return counted(std::malloc(std::max<std::size_t>(size, 1)));
}
/// What asks this way is content with none.
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    void *block = std::malloc(std::max<std::size_t>(size, 1));
    return block == nullptr ? nullptr : counted(block);
}
void operator delete(void *block) noexcept {
    release(block);
}
void operator delete(void *block, std::size_t) noexcept {
    release(block);
}

namespace quorbel::testing {

AllocationMeter::AllocationMeter() : m_start(inUse) {
    mostInUse = m_start;
}

std::size_t AllocationMeter::peak() const {
    return mostInUse - m_start;
}

}  // namespace quorbel::testing
