#include "events/EventDeletion.h"

#include "core/HashIndex.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

/// Counts equal lines.
class LineCounter {
public:
    explicit LineCounter(std::size_t expectedLines) { m_numbers.reserve(expectedLines); }

    void count(const std::string &line) {
        const std::size_t hash = hashBytes(line);
        const auto known = m_numbers.find(
            hash, [&](std::uint32_t number) { return m_lines[number].first == line; });
        if (known) {
            ++m_lines[*known].second;
        } else {
            m_numbers.insert(hash, static_cast<std::uint32_t>(m_lines.size()));
            m_lines.emplace_back(line, 1);
        }
    }

    /// Each line with its count as text; the counter is empty afterwards.
    Dictionary take() {
        Dictionary counts;
        counts.reserve(m_lines.size());
        for (auto &[line, count] : m_lines) {
            counts.append(std::move(line), std::to_string(count));
        }
        m_lines.clear();
        m_numbers.clear();
        return counts;
    }

private:
    std::vector<std::pair<std::string, std::int64_t>> m_lines;
    HashIndex m_numbers;
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

Dictionary takeForDeletion(EventList &list, const std::vector<RowRange> &rows, AppState &state) {
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
