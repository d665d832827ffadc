#include "control/SettingsProblems.h"

#include "common/Severity.h"
#include "platform/DateFormat.h"
#include "service/message/FilterProblems.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorbel {

namespace {

/// What is wrong with a value, for the end of a sentence; empty when nothing is.
using Check = std::string (*)(const Value &value);

struct Key {
    std::string_view name;
    Check check;
};

constexpr std::int64_t kAnyNumber = INT64_MAX;

std::optional<std::int64_t> wholeNumber(const Value &value) {
    if (const auto *flag = value.boolean()) {
        return *flag ? 1 : 0;
    }
    const auto *integer = value.integer();
    return integer != nullptr ? std::optional(*integer) : std::nullopt;
}

template <std::int64_t kLeast, std::int64_t kMost>
std::string checkNumber(const Value &value) {
    const auto number = wholeNumber(value);
    if (!number) {
        return "is no whole number";
    }
    return *number < kLeast || *number > kMost
               ? "is " + std::to_string(*number) + ", which means nothing"
               : "";
}

std::string checkFlag(const Value &value) {
    return checkNumber<0, 1>(value).empty() ? "" : "is neither yes nor no";
}

std::string checkText(const Value &value) {
    return value.string() != nullptr ? "" : "is no text";
}

std::string checkDateFormat(const Value &value) {
    if (value.string() == nullptr) {
        return checkText(value);
    }
    return DateFormat(*value.string()).render(0).empty() ? "is no date format" : "";
}

std::string checkSecurity(const Value &value) {
    constexpr std::array<std::string_view, 4> kKnown{"", "None", "STARTTLS", "SSL/TLS"};
    if (value.string() == nullptr) {
        return checkText(value);
    }
    return std::ranges::find(kKnown, *value.string()) == kKnown.end()
               ? "is \"" + *value.string() + "\": no e-mails are sent then"
               : "";
}

std::string checkLabels(const Value &value) {
    if (value.array() == nullptr) {
        return "is no list";
    }
    for (const Value &one : *value.array()) {
        const std::string text = one.string() != nullptr ? *one.string() : "";
        if (std::ranges::find(kSeverityClasses, text, &SeverityClass::label) ==
            kSeverityClasses.end()) {
            return "has \"" + text + "\", which is no severity";
        }
    }
    return "";
}

std::string checkRecords(const Value &value) {
    if (value.array() == nullptr) {
        return "is no list";
    }
    const auto isRecord = [](const Value &one) { return one.dictionary() != nullptr; };
    return std::ranges::all_of(*value.array(), isRecord) ? "" : "has something that is no record";
}

constexpr Key kKeys[] = {
    {"hostsDisplay", checkFlag},
    {"dateFormat", checkDateFormat},
    {"popupEvents", checkNumber<0, kAnyNumber>},
    {"popupSound", checkText},
    {"popupDisplayArray", checkLabels},
    {"popupPlayArray", checkLabels},
    {"includeFiltersArray", checkRecords},
    {"excludeFiltersArray", checkRecords},
    {"actionsArray", checkRecords},
    {"actionsEmailServer", checkText},
    {"actionsEmailPort", checkNumber<0, 65535>},
    {"actionsEmailSecurity", checkSecurity},
    {"actionsEmailSender", checkText},
    {"actionsEmailUsername", checkText},
    {"actionsEmailPassword", checkText},
    {"actionsEmailTimeout", checkNumber<0, kAnyNumber>},
    {"actionsFormatSubject", checkText},
    {"actionsFormatBody", checkText},
    {"textInterval", checkNumber<0, kAnyNumber>},
    {"textLocation", checkText},
    {"databaseInterval", checkNumber<0, kAnyNumber>},
    {"databaseLocation", checkText},
};

void checkKey(const Dictionary &settings, std::string_view key, Check check,
              std::vector<std::string> &problems) {
    const Value *value = settings.find(key);
    const std::string problem = value != nullptr ? check(*value) : "";
    if (!problem.empty()) {
        problems.push_back(std::string(key) + ' ' + problem);
    }
}

}  // namespace

std::vector<std::string> settingsProblems(const Dictionary &settings) {
    std::vector<std::string> problems;
    for (const Key &key : kKeys) {
        checkKey(settings, key.name, key.check, problems);
    }
    for (const SeverityClass &severity : kSeverityClasses) {
        const std::string part(severity.keyPart);
        checkKey(settings, "severity" + part, checkNumber<kNormal, kSevere>, problems);
        checkKey(settings, "removal" + part, checkNumber<0, kAnyNumber>, problems);
        checkKey(settings, "removal" + part + "Units", checkNumber<0, 4>, problems);
    }
    for (std::string &problem : filterProblems(settings)) {
        problems.push_back(std::move(problem));
    }
    return problems;
}

}  // namespace quorbel
