#pragma once

#include "core/TimeCounts.h"
#include "events/TimeAxis.h"
#include "events/TimeTexts.h"

#include <QFont>
#include <QRect>

#include <optional>
#include <vector>

class QPainter;

namespace quorbel {

/// What a timeline paints: columns of events, the severe ones at the base. All are pale, those that
/// are asked for full; severe ones are always full and have a mark below.
struct TimelinePicture {
    struct Column {
        int x;
        int width;
        RatingCounts all;
        std::optional<RatingCounts> matching;  ///< none while nothing is asked for
    };
    /// From one x up to another one.
    struct Band {
        int left;
        int right;
    };

    std::vector<Column> columns;
    std::vector<TimeTick> ticks;
    std::optional<Band> asked;     ///< the span that the table is narrowed to
    std::optional<Band> selected;  ///< the one that is being chosen
    std::optional<Band> outlined;  ///< the column that the read-out is about
    std::optional<Band> waiting;   ///< where events stand that are held back
    QString readOut;
    bool hasFocus = false;

    // Places in a picture of some size.
    static QRect columnsArea(const QSize &size);
    static int heightFor(const QFont &labels);
    static QFont labelFont(const QFont &base);

    /// `font` is that of the labels.
    void paint(QPainter &painter, const QSize &size, const QFont &font) const;

private:
    void paintBand(QPainter &painter, const QRect &area, const Band &band, bool hasHandles) const;
    void paintColumns(QPainter &painter, const QRect &area) const;
    void paintLabels(QPainter &painter, const QRect &area, const QSize &size) const;
};

}  // namespace quorbel
