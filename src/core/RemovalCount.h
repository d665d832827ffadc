#pragma once

#include "common/RetentionRules.h"
#include "common/Severity.h"
#include "core/EventPass.h"

#include <array>
#include <cstddef>

namespace quorbel {

/// Counts the events of a list that have been kept for longer than new settings say, and not for
/// longer than the old ones, by the class that also picks their image. What came with a date that
/// is no number is kept for good.
class RemovalCount : public EventPass {
public:
    /// The list outlives this.
    explicit RemovalCount(EventList &list) : EventPass(list) {}

    /// Counts anew what is due by these limits and was not by those before.
    void start(const RetentionRules::Limits &limits, const RetentionRules::Limits &before);
    /// Of the events that were looked at.
    [[nodiscard]] const std::array<std::size_t, kSeverityClassCount> &counts() const {
        return m_counts;
    }

private:
    void clear() override { m_counts = {}; }
    void look(EventChunk &chunk, std::size_t first, std::size_t last) override;

    RetentionRules::Limits m_limits;
    RetentionRules::Limits m_before;
    std::array<std::size_t, kSeverityClassCount> m_counts{};
};

}  // namespace quorbel
