#pragma once

#include "core/EventQuery.h"
#include "platform/gui/TextMarks.h"

#include <vector>

namespace quorbel {

/// Where a filter's texts are found in what is shown, but for those that must not occur.
class MatchMarks {
public:
    void use(const EventQuery &filter);

    [[nodiscard]] bool isEmpty() const { return m_patterns.empty(); }
    /// At most so many of each text.
    static constexpr std::size_t kMost = 500;
    [[nodiscard]] std::vector<TextRange> in(const QString &text) const;
    [[nodiscard]] bool isAnyIn(const QString &text) const;

private:
    std::vector<TextPattern> m_patterns;
};

}  // namespace quorbel
