#include "service/message/FilterProblems.h"

#include "common/ActionThreshold.h"
#include "common/SettingsDocument.h"
#include "service/base/QuotedText.h"
#include "service/message/EventFilter.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace quorbel {

namespace {

constexpr std::string_view kActionsKey = "actionsArray";

std::string quotedField(const Dictionary &record, std::string_view key) {
    return quoted(settingText(record, key).value_or(""));
}

/// How a filter's name goes on in the line that says what is wrong with it; empty when nothing is.
std::string problemOf(const Dictionary &record) {
    const EventFilter filter(record);
    const SenderRange &senders = filter.conditions().senders();
    if (senders.isNobody()) {
        return "can never match: " + quotedField(record, "IP") + " is not an address";
    }
    if (!filter.conditions().hasFacility()) {
        return "can never match: there is no facility " + quotedField(record, "Facility");
    }
    if (!filter.conditions().hasSeverity()) {
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

/// The first kMostFilterProblems problems, and how many others there are.
class Problems {
public:
    void add(std::string problem) {
        if (m_lines.size() == kMostFilterProblems) {
            ++m_others;
        } else {
            m_lines.push_back(std::move(problem));
        }
    }
    std::vector<std::string> take() {
        if (m_others > 0) {
            m_lines.push_back("Other filters with problems: " + std::to_string(m_others));
        }
        return std::move(m_lines);
    }

private:
    std::vector<std::string> m_lines;
    std::size_t m_others = 0;
};

}  // namespace

std::vector<std::string> filterProblems(const Dictionary &settings) {
    struct List {
        std::string_view key;
        std::string_view what;
    };
    constexpr List kLists[] = {{"includeFiltersArray", "The include filter "},
                               {"excludeFiltersArray", "The exclude filter "},
                               {kActionsKey, "The filter of the action "}};
    Problems problems;
    for (const List &list : kLists) {
        for (const Value &value : settingArray(settings, list.key)) {
            const Dictionary *record = value.dictionary();
            const std::string problem = record != nullptr ? problemOf(*record) : "";
            if (!problem.empty()) {
                problems.add(std::string(list.what) + quotedField(*record, "Name") + ' ' + problem);
            }
        }
    }
    for (const Value &value : settingArray(settings, kActionsKey)) {
        const Dictionary *record = value.dictionary();
        const std::string problem = record != nullptr ? readThreshold(*record).problem : "";
        if (!problem.empty()) {
            problems.add("The threshold of the action " + quotedField(*record, "Name") +
                         " is ignored: " + problem);
        }
    }
    return problems.take();
}

}  // namespace quorbel
