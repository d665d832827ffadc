#include "core/RemovalCount.h"

#include <cstdint>
#include <optional>

namespace quorbel {

namespace {

bool isDue(std::int64_t moment, const std::optional<std::int64_t> &limit) {
    return limit && moment <= *limit;
}

}  // namespace

void RemovalCount::start(const RetentionRules::Limits &limits,
                         const RetentionRules::Limits &before) {
    m_limits = limits;
    m_before = before;
    restart();
}

void RemovalCount::look(EventChunk &chunk, std::size_t first, std::size_t last) {
    for (std::size_t position = first; position < last; ++position) {
        const EventRecord &record = chunk.record(position);
        const std::size_t shown = reader().classes(record.priority).shown;
        if (record.format != EventRecord::kTextDate && isDue(record.seconds, m_limits[shown]) &&
            !isDue(record.seconds, m_before[shown])) {
            ++m_counts[shown];
        }
    }
}

}  // namespace quorbel
