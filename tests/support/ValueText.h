#pragma once

#include "platform/Value.h"

#include <string>
#include <string_view>

namespace quorbel::testing {

inline std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        switch (character) {
            case '\n':
                result += "\\n";
                break;
            case '\r':
                result += "\\r";
                break;
            case '"':
                result += "\\\"";
                break;
            default:
                result += character;
        }
    }
    return result + '"';
}

/// A value in one line, with its types and the order of its keys, for tests to compare: the integer
/// 5, the real 5.0, the boolean true, "text", [...], {"key": ...}. Other types by their name only.
inline std::string textOf(const Value &value) {
    std::string inside;
    if (const auto *dictionary = value.dictionary()) {
        for (const auto &[key, element] : *dictionary) {
            inside += (inside.empty() ? "" : ", ") + inQuotes(key) + ": " + textOf(element);
        }
        return '{' + inside + '}';
    }
    if (const auto *array = value.array()) {
        for (const Value &element : *array) {
            inside += (inside.empty() ? "" : ", ") + textOf(element);
        }
        return '[' + inside + ']';
    }
    switch (value.type()) {
        case Value::Type::kNull:
            return "null";
        case Value::Type::kBoolean:
            return *value.boolean() ? "true" : "false";
        case Value::Type::kInteger:
            return std::to_string(*value.integer());
        case Value::Type::kUnsigned:
            return std::to_string(*value.unsignedInteger()) + 'u';
        case Value::Type::kReal:
            return std::to_string(*value.real());
        case Value::Type::kString:
            return inQuotes(*value.string());
        case Value::Type::kData:
            return "data";
        case Value::Type::kDate:
            return "date";
        default:
            return "other";
    }
}

}  // namespace quorbel::testing
