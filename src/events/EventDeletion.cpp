#include "events/EventDeletion.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

namespace quorbel {

namespace {

std::string eventLine(EventList &list, std::size_t row, std::string_view dateFormat) {
    std::string line = std::to_string(list.momentShown(row, dateFormat).value_or(0));
    for (const auto &field : {list.priority(row), list.host(row), list.message(row)}) {
        line += ',';
        line += field.value_or(std::string_view());
    }
    line += '\n';
    return line;
}

}  // namespace

Dictionary takeForDeletion(EventList &list, const std::vector<RowRange> &rows, AppState &state) {
    std::unordered_map<std::string, std::int64_t> counts;
    for (const RowRange &range : rows) {
        for (std::size_t row = range.first; row < range.first + range.count; ++row) {
            ++counts[eventLine(list, row, state.newDateFormat)];
            --(state.*kSeverityClasses[list.classes(row).deleted].counter);
        }
    }
    Dictionary deleted;
    deleted.reserve(counts.size());
    while (!counts.empty()) {
        auto event = counts.extract(counts.begin());
        deleted.append(std::move(event.key()), std::to_string(event.mapped()));
    }
    return deleted;
}

}  // namespace quorbel
