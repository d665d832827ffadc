#include "platform/bus/SdBus.h"

#include <algorithm>
#include <cstdint>

namespace quorbel::bus {

namespace {

BusPointer open(int (*opener)(sd_bus **)) {
    sd_bus *bus = nullptr;
    return BusPointer(opener(&bus) < 0 ? nullptr : bus);
}

}  // namespace

BusPointer openSystemBus() {
    return open(sd_bus_open_system);
}

BusPointer openSessionBus() {
    return open(sd_bus_open_user);
}

std::optional<Clock::time_point> processingTime(sd_bus *bus) {
    std::uint64_t microseconds = UINT64_MAX;
    if (sd_bus_get_timeout(bus, &microseconds) < 0 || microseconds == UINT64_MAX) {
        return std::nullopt;
    }
    // Both clocks are CLOCK_MONOTONIC.
    return Clock::time_point(std::chrono::microseconds(microseconds));
}

std::chrono::milliseconds remaining(Clock::time_point then) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(then - Clock::now());
    return std::max(rest, std::chrono::milliseconds(0));
}

}  // namespace quorbel::bus
