#include "service/message/FilterProblems.h"

#include "common/SettingsDocument.h"
#include "service/base/QuotedText.h"
#include "service/message/EventFilter.h"

#include <string_view>

namespace quorbel {

namespace {

std::string quotedField(const Dictionary &record, std::string_view key) {
    return quoted(settingText(record, key).value_or(""));
}

/// How a filter's name goes on in the line that says what is wrong with it; empty when nothing is.
std::string problemOf(const Dictionary &record) {
    const EventFilter filter(record);
    const SenderRange &senders = filter.senders();
    if (senders.isNobody()) {
        return "can never match: " + quotedField(record, "IP") + " is not an address";
    }
    if (!filter.hasFacility()) {
        return "can never match: there is no facility " + quotedField(record, "Facility");
    }
    if (!filter.hasSeverity()) {
        return "can never match: there is no severity " + quotedField(record, "Severity");
    }
    if (senders.isMaskTooLong()) {
        return "has the mask " + std::to_string(SenderRange::maskOf(record)) +
               ", which is treated as " + std::to_string(senders.addressBits());
    }
    if (senders.ignoresAddress()) {
        return "matches any host: its mask is 0, so the address " + quotedField(record, "IP") +
               " is ignored";
    }
    return "";
}

}  // namespace

std::vector<std::string> filterProblems(const Dictionary &settings) {
    struct List {
        std::string_view key;
        std::string_view what;
    };
    constexpr List kLists[] = {{"includeFiltersArray", "The include filter "},
                               {"excludeFiltersArray", "The exclude filter "},
                               {"actionsArray", "The filter of the action "}};
    std::vector<std::string> problems;
    std::size_t others = 0;
    for (const List &list : kLists) {
        for (const Value &value : settingArray(settings, list.key)) {
            const Dictionary *record = value.dictionary();
            const std::string problem = record != nullptr ? problemOf(*record) : "";
            if (problem.empty()) {
                continue;
            }
            if (problems.size() == kMostFilterProblems) {
                ++others;
            } else {
                problems.push_back(std::string(list.what) + quotedField(*record, "Name") + ' ' +
                                   problem);
            }
        }
    }
    if (others > 0) {
        problems.push_back("Other filters with problems: " + std::to_string(others));
    }
    return problems;
}

}  // namespace quorbel
