#include "common/ActionThreshold.h"

namespace quorbel {

namespace {

std::optional<std::int64_t> numberAt(const Dictionary &threshold, std::string_view key,
                                     std::int64_t most) {
    const Value *value = threshold.find(key);
    const std::int64_t *number = value != nullptr ? value->integer() : nullptr;
    return number != nullptr && *number >= 1 && *number <= most ? std::optional(*number)
                                                                : std::nullopt;
}

/// 0 and 1 stand for flags, as everywhere in the settings.
std::optional<bool> flagAt(const Dictionary &threshold, std::string_view key) {
    const Value *value = threshold.find(key);
    if (value == nullptr) {
        return false;
    }
    if (const bool *flag = value->boolean()) {
        return *flag;
    }
    const std::int64_t *number = value->integer();
    return number != nullptr && (*number == 0 || *number == 1) ? std::optional(*number == 1)
                                                               : std::nullopt;
}

std::string notANumber(std::string_view key, std::int64_t most) {
    return '"' + std::string(key) + "\" is no whole number from 1 to " + std::to_string(most);
}

}  // namespace

ThresholdReading readThreshold(const Dictionary &record) {
    const Value *value = record.find(kThresholdKey);
    if (value == nullptr) {
        return {};
    }
    const Dictionary *threshold = value->dictionary();
    if (threshold == nullptr) {
        return {.threshold = {}, .problem = "it is no record"};
    }
    if (threshold->empty()) {
        return {};
    }
    const auto matches = numberAt(*threshold, "Matches", ActionThreshold::kMostMatches);
    if (!matches) {
        return {.threshold = {}, .problem = notANumber("Matches", ActionThreshold::kMostMatches)};
    }
    const auto minutes = numberAt(*threshold, "Minutes", ActionThreshold::kMostMinutes);
    if (!minutes) {
        return {.threshold = {}, .problem = notANumber("Minutes", ActionThreshold::kMostMinutes)};
    }
    const auto perHost = flagAt(*threshold, "PerHost");
    if (!perHost) {
        return {.threshold = {}, .problem = "\"PerHost\" is neither yes nor no"};
    }
    return {.threshold = ActionThreshold{*matches, *minutes, *perHost}, .problem = {}};
}

Dictionary thresholdRecord(const ActionThreshold &threshold) {
    Dictionary record{{"Matches", threshold.matches}, {"Minutes", threshold.minutes}};
    if (threshold.perHost) {
        record.set("PerHost", true);
    }
    return record;
}

}  // namespace quorbel
