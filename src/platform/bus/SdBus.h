#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <memory>
#include <optional>

namespace quorbel::bus {

/// Closes without flushing: flushing waits for a peer that may never read.
struct CloseBus {
    void operator()(sd_bus *bus) const { sd_bus_close_unref(bus); }
};
using BusPointer = std::unique_ptr<sd_bus, CloseBus>;

struct UnrefMessage {
    void operator()(sd_bus_message *message) const { sd_bus_message_unref(message); }
};
using MessagePointer = std::unique_ptr<sd_bus_message, UnrefMessage>;

struct UnrefSlot {
    void operator()(sd_bus_slot *slot) const { sd_bus_slot_unref(slot); }
};
/// Once this is gone, what was called or watched for is not heard of any more.
using SlotPointer = std::unique_ptr<sd_bus_slot, UnrefSlot>;

using Clock = std::chrono::steady_clock;

/// Connections that have begun to open; null when the bus refuses at once. Neither waits: whether
/// the bus answers shows in sd_bus_is_ready().
BusPointer openSystemBus();
BusPointer openSessionBus();

/// When the connection wants to be processed even if its descriptor is quiet.
std::optional<Clock::time_point> processingTime(sd_bus *bus);

/// The rest of the time until `then`, at least 0, rounded up so that waiting for it is enough.
std::chrono::milliseconds remaining(Clock::time_point then);

}  // namespace quorbel::bus
