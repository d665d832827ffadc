#include "platform/bus/NotificationInfo.h"

#include <cstring>

namespace quorbel::bus {

namespace {

// sd-bus refuses texts that the bus passes on: those with a code point that Unicode keeps from
// being a character. Nothing leads past such a text.
constexpr std::string_view kUnreadable = "\xEF\xBF\xBD";

enum class Read { kText, kOther, kRefused };

Read readText(sd_bus_message *message, std::string_view &text) {
    const char *start = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &start) <= 0) {
        return Read::kRefused;
    }
    text = start;
    return Read::kText;
}

// A variant of another type is skipped.
Read readVariantText(sd_bus_message *message, std::string_view &text) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, "s") <= 0) {
        return sd_bus_message_skip(message, "v") < 0 ? Read::kRefused : Read::kOther;
    }
    const Read read = readText(message, text);
    return sd_bus_message_exit_container(message) < 0 ? Read::kRefused : read;
}

// Reads entries up to the end; false at one that sd-bus refuses to read or to pass over, with
// kUnreadable for its value.
bool readEntries(sd_bus_message *message, bool variants, NotificationInfo &info) {
    const char *members = variants ? "sv" : "ss";
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, members) > 0) {
        std::string_view key;
        std::string_view value;
        if (readText(message, key) == Read::kRefused) {
            return false;
        }
        const Read read = variants ? readVariantText(message, value) : readText(message, value);
        if (read != Read::kOther) {
            info.emplace_back(key, read == Read::kText ? value : kUnreadable);
        }
        if (read == Read::kRefused || sd_bus_message_exit_container(message) < 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool readNotificationInfo(sd_bus_message *message, NotificationInfo &info) {
    info.clear();
    char type = '\0';
    const char *contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0 || type != SD_BUS_TYPE_ARRAY) {
        return false;
    }
    const bool variants = std::strcmp(contents, "{sv}") == 0;
    if ((!variants && std::strcmp(contents, "{ss}") != 0) ||
        sd_bus_message_enter_container(message, type, variants ? "{sv}" : "{ss}") <= 0) {
        return false;
    }
    return !readEntries(message, variants, info) || sd_bus_message_exit_container(message) >= 0;
}

}  // namespace quorbel::bus
