#pragma once

#include "core/TimeCounts.h"
#include "events/timeline/TimeAxis.h"
#include "events/timeline/TimeTexts.h"

#include <QFont>
#include <QRect>
#include <QStringList>

#include <optional>
#include <vector>

class QPainter;

namespace quorbel {

/// What a timeline paints: columns of events, the severe ones at the base, or stacked by groups.
/// All are pale, those that are asked for full; severe ones have a mark below and, by rating, are
/// always full.
struct TimelinePicture {
    struct Column {
        int x;
        int width;
        RatingCounts all;                      ///< by rating, or by group: 1, 2, 3, and 0 on top
        std::optional<RatingCounts> matching;  ///< none while nothing is asked for
        std::size_t severe;
    };
    /// From one x up to another one.
    struct Band {
        int left;
        int right;
    };

    std::vector<Column> columns;
    bool isByRating = true;
    QStringList legend;  ///< of the groups from 1 on and, at last, group 0; empty by rating
    std::vector<TimeTick> ticks;
    std::optional<Band> asked;     ///< the span that the table is narrowed to
    std::optional<Band> selected;  ///< the one that is being chosen
    std::optional<Band> outlined;  ///< the column that the read-out is about
    std::optional<Band> waiting;   ///< where events stand that are held back
    QString readOut;
    bool hasFocus = false;

    // Places in a picture of some size.
    static QRect columnsArea(const QSize &size);
    static int heightFor(const QFont &labels, bool hasLegend);
    static QFont labelFont(const QFont &base);

    /// `font` is that of the labels.
    void paint(QPainter &painter, const QSize &size, const QFont &font) const;

private:
    void paintBand(QPainter &painter, const QRect &area, const Band &band, bool hasHandles) const;
    void paintColumns(QPainter &painter, const QRect &area) const;
    void paintLabels(QPainter &painter, const QRect &area, const QSize &size) const;
    void paintLegend(QPainter &painter, int top, int width) const;
};

}  // namespace quorbel
