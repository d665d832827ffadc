#pragma once

#include "platform/Value.h"

#include <optional>

struct sd_bus_message;

namespace quorbel {

/// Reads whatever comes next in a message. Arrays and structs become arrays, dictionaries by text
/// dictionaries, integers integers, a variant what it holds. Nothing when the message ends there,
/// when it nests too deep, or where it holds what has no such form (descriptors, dictionaries by
/// anything else). Bytes become data.
std::optional<Value> readAnyFromMessage(sd_bus_message *message);

}  // namespace quorbel
