#include "platform/bus/AnyBusValue.h"

#include "platform/bus/BusValue.h"

#include <systemd/sd-bus.h>

#include <cstring>
#include <string>
#include <utility>

namespace quorbel {

namespace {

constexpr int kDeepest = 16;

std::optional<Value> readAny(sd_bus_message *message, int depth);

/// What is left of the container that was entered.
std::optional<Value> readElements(sd_bus_message *message, int depth) {
    Array elements;
    while (sd_bus_message_at_end(message, 0) == 0) {
        std::optional<Value> element = readAny(message, depth);
        if (!element) {
            return std::nullopt;
        }
        elements.push_back(std::move(*element));
    }
    return Value(std::move(elements));
}

std::optional<Value> readEntries(sd_bus_message *message, const char *members, int depth) {
    Dictionary entries;
    while (sd_bus_message_at_end(message, 0) == 0) {
        const char *key = nullptr;
        if (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, members) <= 0 ||
            sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &key) <= 0) {
            return std::nullopt;
        }
        std::string name = key;
        std::optional<Value> value = readAny(message, depth);
        if (!value || sd_bus_message_exit_container(message) < 0) {
            return std::nullopt;
        }
        entries.set(name, std::move(*value));
    }
    return Value(std::move(entries));
}

std::optional<Value> readContainer(sd_bus_message *message, char type, const char *contents,
                                   int depth) {
    if (depth == kDeepest || sd_bus_message_enter_container(message, type, contents) <= 0) {
        return std::nullopt;
    }
    const std::string_view inside = contents;
    std::optional<Value> read;
    if (type == SD_BUS_TYPE_VARIANT) {
        read = readAny(message, depth + 1);
    } else if (inside.starts_with("{s")) {
        const std::string members(inside.substr(1, inside.size() - 2));
        read = readEntries(message, members.c_str(), depth + 1);
    } else if (!inside.starts_with('{')) {
        read = readElements(message, depth + 1);
    }
    return read && sd_bus_message_exit_container(message) >= 0 ? read : std::nullopt;
}

std::optional<Value> readAny(sd_bus_message *message, int depth) {
    char type = '\0';
    const char *contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0) {
        return std::nullopt;
    }
    switch (type) {
        case SD_BUS_TYPE_ARRAY:
            return std::strcmp(contents, "y") == 0 ? readData(message)
                                                   : readContainer(message, type, contents, depth);
        case SD_BUS_TYPE_STRUCT:
        case SD_BUS_TYPE_VARIANT:
            return readContainer(message, type, contents, depth);
        default:
            return readBasicValue(message, type);
    }
}

}  // namespace

std::optional<Value> readAnyFromMessage(sd_bus_message *message) {
    return readAny(message, 0);
}

}  // namespace quorbel
