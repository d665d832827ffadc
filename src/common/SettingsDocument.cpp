#include "common/SettingsDocument.h"

#include "platform/KeyedArchive.h"

#include <cmath>
#include <limits>
#include <utility>
#include <variant>

namespace quorbel {

namespace {

std::int64_t integerPart(double number) {
    constexpr double kLimit = 9223372036854775808.0;
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= kLimit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (number < -kLimit) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(number);
}

std::int64_t asInteger(const Value &value) {
    if (const auto *integer = value.integer()) {
        return *integer;
    }
    if (const auto *flag = value.boolean()) {
        return *flag ? 1 : 0;
    }
    if (const auto *real = value.real()) {
        return integerPart(*real);
    }
    return value.unsignedInteger() != nullptr ? std::numeric_limits<std::int64_t>::max() : 0;
}

}  // namespace

std::optional<Dictionary> decodeSettings(const std::optional<std::string> &bytes) {
    if (!bytes) {
        return std::nullopt;
    }
    auto decoded = readKeyedArchive(*bytes);
    const auto *root = std::get_if<Value>(&decoded);
    if (root == nullptr || root->dictionary() == nullptr) {
        return std::nullopt;
    }
    return *root->dictionary();
}

std::int64_t settingInteger(const Dictionary &settings, std::string_view key) {
    const Value *value = settings.find(key);
    return value != nullptr ? asInteger(*value) : 0;
}

bool settingFlag(const Dictionary &settings, std::string_view key) {
    return settingInteger(settings, key) != 0;
}

std::optional<std::string> settingText(const Dictionary &settings, std::string_view key) {
    const Value *value = settings.find(key);
    if (value == nullptr || value->string() == nullptr) {
        return std::nullopt;
    }
    return *value->string();
}

std::vector<std::string> settingTexts(const Dictionary &settings, std::string_view key) {
    std::vector<std::string> texts;
    const Value *value = settings.find(key);
    if (value != nullptr && value->array() != nullptr) {
        for (const Value &element : *value->array()) {
            if (element.string() != nullptr) {
                texts.push_back(*element.string());
            }
        }
    }
    return texts;
}

Array settingArray(const Dictionary &settings, std::string_view key) {
    const Value *value = settings.find(key);
    return value != nullptr && value->array() != nullptr ? *value->array() : Array{};
}

Dictionary settingDictionary(const Dictionary &settings, std::string_view key) {
    const Value *value = settings.find(key);
    return value != nullptr && value->dictionary() != nullptr ? *value->dictionary() : Dictionary{};
}

}  // namespace quorbel
