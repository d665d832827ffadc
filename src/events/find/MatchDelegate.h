#pragma once

#include "events/find/MatchMarks.h"
#include "platform/gui/RowTableView.h"

namespace quorbel {

/// Paints the event table's cells, and in them marks what a filter's texts were found in. What is
/// found behind the end of what fits marks the ellipsis.
class MatchDelegate : public RowDelegate {
public:
    /// Marks what `marks` says. Both outlive this.
    MatchDelegate(const MatchMarks &marks, QObject *parent) : RowDelegate(parent), m_marks(marks) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

protected:
    /// The name beside a picture is a rating's, and is shown in the user's language.
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    [[nodiscard]] std::vector<TextRange> ranges(const QString &shown,
                                                const QStyleOptionViewItem &item,
                                                const QModelIndex &index) const;

    const MatchMarks &m_marks;
};

}  // namespace quorbel
