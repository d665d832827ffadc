#include "events/EventDeletion.h"

#include "core/HashIndex.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

/// Counts equal lines.
class LineCounter {
public:
    explicit LineCounter(std::size_t expectedLines) {
        m_known.reserve(expectedLines);
        m_command.setName("update");
        m_command.begin("Events", LineCommand::Kind::kCounted);
    }

    void count(std::string_view line) {
        const std::size_t hash = hashBytes(line);
        const auto known = m_known.find(
            hash, [&](LineCommand::Place place) { return m_command.line(place) == line; });
        if (known) {
            m_command.again(*known);
        } else {
            m_known.insert(hash, m_command.add(line));
        }
    }

    LineCommand take() { return std::move(m_command); }

private:
    LineCommand m_command;
    HashIndex m_known;
};

void writeEventLine(EventList &list, std::size_t row, std::string_view dateFormat,
                    std::string &line) {
    line = std::to_string(list.momentShown(row, dateFormat).value_or(0));
    for (const auto &field : {list.priority(row), list.host(row), list.message(row)}) {
        line += ',';
        line += field.value_or(std::string_view());
    }
    line += '\n';
}

}  // namespace

LineCommand takeForDeletion(EventList &list, const std::vector<RowRange> &rows, AppState &state) {
    std::size_t total = 0;
    for (const RowRange &range : rows) {
        total += range.count;
    }
    LineCounter lines(total);
    std::string line;
    for (const RowRange &range : rows) {
        for (std::size_t row = range.first; row < range.first + range.count; ++row) {
            writeEventLine(list, row, state.newDateFormat, line);
            lines.count(line);
            --(state.*kSeverityCounters[list.classes(row).deleted]);
        }
    }
    return lines.take();
}

}  // namespace quorbel
