#pragma once

#include "reports/ReportTableModel.h"

#include <QFontMetrics>
#include <QRect>
#include <QStyleOptionViewItem>

class QPainter;

namespace quorbel {

/// What is painted behind the value of a report's group: how many events it has, a bar as long as
/// its share is beside the largest one's, and that share. All groups of a report have it in the
/// same place, behind the longest value.
class ReportTally {
public:
    /// Places all of it in rows of which `width` pixels are in sight. `names` is as wide as the
    /// longest value wants to be, with its marker; `all` says how wide the numbers get.
    ReportTally(const QFontMetrics &metrics, int width, int names, const GroupShare &all);

    /// What there is for a value with its marker: at most 60 % of the width.
    [[nodiscard]] int nameWidth() const { return m_nameWidth; }
    /// `option` has the row's rectangle, direction, font and palette.
    void paint(QPainter &painter, const QStyleOptionViewItem &option,
               const GroupShare &share) const;

private:
    /// From where the row begins, whichever side that is.
    struct Span {
        int begin = 0;
        int width = 0;  ///< 0: there is no room for it
    };

    static void paintText(QPainter &painter, const QStyleOptionViewItem &option, const Span &span,
                          const QString &text, const QColor &colour);
    [[nodiscard]] static QRect rect(const QStyleOptionViewItem &option, const Span &span);

    int m_nameWidth;
    Span m_count;
    Span m_bar;
    Span m_percent;
};

}  // namespace quorbel
