#pragma once

#include <cstddef>

namespace quorbel::testing {

/// Measures what operator new hands out, on all threads, in programs that link its source.
class AllocationMeter {
public:
    /// Begins to measure.
    AllocationMeter();

    /// The most bytes that were in use at one time since then, beyond those in use at the start.
    [[nodiscard]] std::size_t peak() const;

private:
    std::size_t m_start;
};

}  // namespace quorbel::testing
