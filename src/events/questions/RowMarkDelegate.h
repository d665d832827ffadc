#pragma once

#include "events/find/MatchDelegate.h"
#include "events/questions/RowMarks.h"

namespace quorbel {

/// Paints the event table's cells, and the mark of a kept filter over a whole row: a tint, a bar at
/// its beginning and the filter's name at its end. In a selected row the tint gives way.
class RowMarkDelegate : public MatchDelegate {
public:
    /// Both outlive this.
    RowMarkDelegate(const MatchMarks &matches, RowMarks &marks, QObject *parent)
        : MatchDelegate(matches, parent), m_marks(marks) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

private:
    struct Pill {
        QString text;
        QRect area;
    };
    [[nodiscard]] static Pill pillFor(const RowMarks::Mark &mark,
                                      const QStyleOptionViewItem &option);
    /// What of a cell the pill leaves to its text.
    [[nodiscard]] static QRect besidePill(const Pill &pill, const QStyleOptionViewItem &option);
    static void paintPill(QPainter &painter, const QStyleOptionViewItem &option, const Pill &pill,
                          const QColor &line);

    RowMarks &m_marks;
};

}  // namespace quorbel
