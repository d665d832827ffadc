#include "platform/bus/BusValue.h"

#include "platform/Utf8.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace quorbel {

namespace {

// D-Bus allows 64 containers inside one another, the variants included.
constexpr int kContainerLimit = 64;
constexpr int kDictionaryContainers = 3;  // array, entry, variant
constexpr int kArrayContainers = 2;       // array, variant
constexpr int kStructContainers = 1;

constexpr std::string_view kDateMarker = "date";
constexpr std::string_view kNullMarker = "null";

// sd-bus refuses the 66 code points that Unicode keeps from being characters, although they are
// well-formed UTF-8 and the bus daemon passes them on.
bool isNoncharacter(char32_t code) {
    return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

bool textFits(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) {
        return false;
    }
    while (true) {
        text.remove_prefix(asciiPrefixLength(text));
        if (text.empty()) {
            return true;
        }
        const Utf8Character character = firstUtf8Character(text);
        if (character.length == 0 || isNoncharacter(character.code)) {
            return false;
        }
        text.remove_prefix(character.length);
    }
}

bool fits(const Value &value, int containers) {
    if (const std::string *text = value.string()) {
        return textFits(*text);
    }
    if (const Dictionary *dictionary = value.dictionary()) {
        const int inside = containers + kDictionaryContainers;
        return inside <= kContainerLimit &&
               std::ranges::all_of(*dictionary, [inside](const Dictionary::Entry &entry) {
                   return textFits(entry.first) && fits(entry.second, inside);
               });
    }
    if (const Array *array = value.array()) {
        const int inside = containers + kArrayContainers;
        return inside <= kContainerLimit &&
               std::ranges::all_of(*array,
                                   [inside](const Value &item) { return fits(item, inside); });
    }
    switch (value.type()) {
        case Value::Type::kForeign:
            return false;
        case Value::Type::kNull:
        case Value::Type::kDate:
        case Value::Type::kData:
            return containers + kStructContainers <= kContainerLimit;
        default:
            return true;
    }
}

template <typename Append>
int appendContainer(sd_bus_message *message, char type, const char *contents, Append append) {
    int result = sd_bus_message_open_container(message, type, contents);
    if (result >= 0) {
        result = append();
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int appendVariant(sd_bus_message *message, const Value &value);

int appendBasicVariant(sd_bus_message *message, char type, const void *value) {
    const char contents[] = {type, '\0'};
    return appendContainer(message, SD_BUS_TYPE_VARIANT, contents,
                           [&] { return sd_bus_message_append_basic(message, type, value); });
}

int appendMarkedVariant(sd_bus_message *message, std::string_view marker, char type,
                        const void *value) {
    const char members[] = {SD_BUS_TYPE_STRING, type, '\0'};
    const std::string contents = "(" + std::string(members) + ")";
    return appendContainer(message, SD_BUS_TYPE_VARIANT, contents.c_str(), [&] {
        return appendContainer(message, SD_BUS_TYPE_STRUCT, members, [&] {
            const int result =
                sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, marker.data());
            return result < 0 ? result : sd_bus_message_append_basic(message, type, value);
        });
    });
}

int appendDataVariant(sd_bus_message *message, const Data &data) {
    return appendContainer(message, SD_BUS_TYPE_VARIANT, "ay", [&] {
        return sd_bus_message_append_array(message, SD_BUS_TYPE_BYTE, data.bytes.data(),
                                           data.bytes.size());
    });
}

int appendArrayVariant(sd_bus_message *message, const Array &array) {
    return appendContainer(message, SD_BUS_TYPE_VARIANT, "av", [&] {
        return appendContainer(message, SD_BUS_TYPE_ARRAY, "v", [&] {
            int result = 0;
            for (auto item = array.begin(); result >= 0 && item != array.end(); ++item) {
                result = appendVariant(message, *item);
            }
            return result;
        });
    });
}

int appendVariant(sd_bus_message *message, const Value &value) {
    switch (value.type()) {
        case Value::Type::kNull:
            return appendMarkedVariant(message, kNullMarker, SD_BUS_TYPE_STRING, "");
        case Value::Type::kBoolean: {
            const int boolean = *value.boolean() ? 1 : 0;
            return appendBasicVariant(message, SD_BUS_TYPE_BOOLEAN, &boolean);
        }
        case Value::Type::kInteger:
            return appendBasicVariant(message, SD_BUS_TYPE_INT64, value.integer());
        case Value::Type::kUnsigned:
            return appendBasicVariant(message, SD_BUS_TYPE_UINT64, value.unsignedInteger());
        case Value::Type::kReal:
            return appendBasicVariant(message, SD_BUS_TYPE_DOUBLE, value.real());
        case Value::Type::kString:
            return appendBasicVariant(message, SD_BUS_TYPE_STRING, value.string()->c_str());
        case Value::Type::kData:
            return appendDataVariant(message, *value.data());
        case Value::Type::kDate:
            return appendMarkedVariant(message, kDateMarker, SD_BUS_TYPE_DOUBLE,
                                       &value.date()->secondsSince2001);
        case Value::Type::kArray:
            return appendArrayVariant(message, *value.array());
        case Value::Type::kDictionary:
            return appendContainer(message, SD_BUS_TYPE_VARIANT, "a{sv}",
                                   [&] { return appendToMessage(message, *value.dictionary()); });
        case Value::Type::kForeign:
            break;
    }
    return -EINVAL;
}

std::optional<Value> readVariant(sd_bus_message *message, int containers);

template <typename T>
std::optional<T> readBasic(sd_bus_message *message, char type) {
    T value{};
    if (sd_bus_message_read_basic(message, type, &value) <= 0) {
        return std::nullopt;
    }
    return value;
}

template <typename T>
std::optional<Value> readNumber(sd_bus_message *message, char type) {
    const std::optional<T> number = readBasic<T>(message, type);
    return number ? std::optional<Value>(*number) : std::nullopt;
}

std::optional<Value> readText(sd_bus_message *message, char type) {
    const std::optional<const char *> text = readBasic<const char *>(message, type);
    return text ? std::optional<Value>(*text) : std::nullopt;
}

std::optional<Value> readBoolean(sd_bus_message *message) {
    const std::optional<int> boolean = readBasic<int>(message, SD_BUS_TYPE_BOOLEAN);
    return boolean ? std::optional<Value>(*boolean != 0) : std::nullopt;
}

}  // namespace

std::optional<Value> readBasicValue(sd_bus_message *message, char type) {
    switch (type) {
        case SD_BUS_TYPE_STRING:
        case SD_BUS_TYPE_OBJECT_PATH:
        case SD_BUS_TYPE_SIGNATURE:
            return readText(message, type);
        case SD_BUS_TYPE_BOOLEAN:
            return readBoolean(message);
        case SD_BUS_TYPE_BYTE:
            return readNumber<std::uint8_t>(message, type);
        case SD_BUS_TYPE_INT16:
            return readNumber<std::int16_t>(message, type);
        case SD_BUS_TYPE_UINT16:
            return readNumber<std::uint16_t>(message, type);
        case SD_BUS_TYPE_INT32:
            return readNumber<std::int32_t>(message, type);
        case SD_BUS_TYPE_UINT32:
            return readNumber<std::uint32_t>(message, type);
        case SD_BUS_TYPE_INT64:
            return readNumber<std::int64_t>(message, type);
        case SD_BUS_TYPE_UINT64:
            return readNumber<std::uint64_t>(message, type);
        case SD_BUS_TYPE_DOUBLE:
            return readNumber<double>(message, type);
        default:
            return std::nullopt;
    }
}

std::optional<Value> readData(sd_bus_message *message) {
    const void *bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message, SD_BUS_TYPE_BYTE, &bytes, &size) < 0) {
        return std::nullopt;
    }
    return Data{std::string(static_cast<const char *>(bytes), size)};
}

namespace {

std::optional<Value> readArray(sd_bus_message *message, int containers) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "v") <= 0) {
        return std::nullopt;
    }
    Array array;
    while (sd_bus_message_at_end(message, 0) == 0) {
        std::optional<Value> item = readVariant(message, containers + kArrayContainers);
        if (!item) {
            return std::nullopt;
        }
        array.push_back(std::move(*item));
    }
    if (sd_bus_message_exit_container(message) < 0) {
        return std::nullopt;
    }
    return array;
}

std::optional<Value> readMarked(sd_bus_message *message, const char *members) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_STRUCT, members) <= 0) {
        return std::nullopt;
    }
    const std::optional<Value> marker = readBasicValue(message, members[0]);
    const std::optional<Value> value = readBasicValue(message, members[1]);
    if (sd_bus_message_exit_container(message) < 0 || !marker || !value) {
        return std::nullopt;
    }
    if (const double *seconds = value->real(); seconds != nullptr && *marker == kDateMarker) {
        return Date{*seconds};
    }
    if (value->string() != nullptr && *marker == kNullMarker) {
        return Null{};
    }
    return std::nullopt;
}

std::optional<Dictionary> readDictionary(sd_bus_message *message, int containers) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
        return std::nullopt;
    }
    Dictionary dictionary;
    std::unordered_set<std::string_view> keys;  // into the message
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const auto key = readBasic<const char *>(message, SD_BUS_TYPE_STRING);
        std::optional<Value> value = readVariant(message, containers + kDictionaryContainers);
        if (!key || !value || sd_bus_message_exit_container(message) < 0) {
            return std::nullopt;
        }
        if (keys.insert(*key).second) {
            dictionary.append(*key, std::move(*value));
        }
    }
    if (sd_bus_message_exit_container(message) < 0) {
        return std::nullopt;
    }
    return dictionary;
}

std::optional<Value> readValue(sd_bus_message *message, std::string_view signature,
                               int containers) {
    if (signature.size() == 1) {
        return readBasicValue(message, signature.front());
    }
    if (signature == "ay") {
        return readData(message);
    }
    if (signature == "av") {
        return readArray(message, containers);
    }
    if (signature == "(sd)") {
        return readMarked(message, "sd");
    }
    if (signature == "(ss)") {
        return readMarked(message, "ss");
    }
    if (signature == "a{sv}") {
        return readDictionary(message, containers);
    }
    return std::nullopt;
}

std::optional<Value> readVariant(sd_bus_message *message, int containers) {
    char type = '\0';
    const char *contents = nullptr;
    if (containers > kContainerLimit || sd_bus_message_peek_type(message, &type, &contents) <= 0 ||
        type != SD_BUS_TYPE_VARIANT) {
        return std::nullopt;
    }
    const std::string signature = contents;
    if (sd_bus_message_enter_container(message, type, signature.c_str()) <= 0) {
        return std::nullopt;
    }
    std::optional<Value> value = readValue(message, signature, containers);
    if (sd_bus_message_exit_container(message) < 0) {
        return std::nullopt;
    }
    return value;
}

}  // namespace

bool fitsOnBus(const Value &value) {
    return fits(value, 0);
}

int appendToMessage(sd_bus_message *message, const Dictionary &dictionary) {
    return appendContainer(message, SD_BUS_TYPE_ARRAY, "{sv}", [&] {
        int result = 0;
        for (auto entry = dictionary.begin(); result >= 0 && entry != dictionary.end(); ++entry) {
            result = appendContainer(message, SD_BUS_TYPE_DICT_ENTRY, "sv", [&] {
                const int key =
                    sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, entry->first.c_str());
                return key < 0 ? key : appendVariant(message, entry->second);
            });
        }
        return result;
    });
}

std::optional<Dictionary> readFromMessage(sd_bus_message *message) {
    return readDictionary(message, 0);
}

}  // namespace quorbel
