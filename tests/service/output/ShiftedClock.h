#pragma once

#include <atomic>
#include <cstdint>

namespace quorbel::testing {

/// By how many seconds the time of day is ahead for this process; null: it is as it is. For
/// programs that ShiftedClock.cpp is linked into.
extern const std::atomic<std::int64_t> *clockShift;

}  // namespace quorbel::testing
