#pragma once

#include "core/EventQuery.h"
#include "platform/gui/RowTableView.h"

#include <vector>

namespace quorbel {

/// Paints the event table's cells, and in them marks what a filter's texts were found in. What is
/// found behind the end of what fits marks the ellipsis.
class MatchDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    /// Marks the filter's texts from now on, but for those that must not occur.
    void mark(const EventQuery &filter);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

private:
    struct Range {
        qsizetype begin;
        qsizetype end;
    };

    [[nodiscard]] std::vector<Range> marksIn(const QString &text) const;
    static void paintMarks(QPainter &painter, const QStyleOptionViewItem &option,
                           const std::vector<Range> &marks);

    std::vector<TextPattern> m_patterns;
};

}  // namespace quorbel
