#pragma once

#include "platform/Value.h"

#include <optional>

struct sd_bus_message;

namespace quorbel {

/// How property-list values travel on the bus. A dictionary is `a{sv}`, an array `av`, a string
/// `s`, an integer `x`, an integer above the signed range `t`, a boolean `b`, a real `d`, data
/// `ay`; a date is the struct `(sd)` of "date" and the seconds since 2001, null the struct `(ss)`
/// of "null" and an empty text. Objects of foreign classes, and strings that hold a NUL, have no
/// form here.
bool fitsOnBus(const Value &value);

/// Appends a dictionary as `a{sv}`. Returns a negative errno on failure. Precondition: it fits.
int appendToMessage(sd_bus_message *message, const Dictionary &dictionary);

/// Reads an `a{sv}`. Nothing when the message holds another type or a value nests too deep.
std::optional<Dictionary> readFromMessage(sd_bus_message *message);

/// Reads a number, boolean or text of that type, integers as integers. Nothing when another type
/// comes next, or when that is none of these.
std::optional<Value> readBasicValue(sd_bus_message *message, char type);

/// Reads an array of bytes as data. Nothing when another type comes next.
std::optional<Value> readData(sd_bus_message *message);

}  // namespace quorbel
