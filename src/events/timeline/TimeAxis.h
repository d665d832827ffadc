#pragma once

#include "events/timeline/TimeColumns.h"

#include <cstdint>
#include <map>
#include <optional>

namespace quorbel {

/// From a moment, in seconds since 1970, up to another one.
struct TimeSpan {
    std::int64_t from = 0;
    std::int64_t until = 0;  ///< past the last one
    bool operator==(const TimeSpan &) const = default;
};

/// Which moments the pixels of a picture stand for that shows time in columns: each of them some
/// whole pixels wide and as long as a clock likes it, beginning where a clock's hands are at it.
///
/// What there is to see lies in a range. Its newest column ends at the right edge, or beyond. While
/// any of it is in sight, the picture goes on with the range; so it does while it shows all of it.
class TimeAxis {
public:
    static constexpr int kNarrowest = 5;  ///< pixels of a column
    static constexpr int kWidest = 12;

    /// Pixels of the picture.
    void setWidth(int width);
    /// How much later the local clock reads than UTC, in seconds, for columns of up to an hour.
    void setClockOffset(std::int64_t seconds);
    /// The first and the last moment there is to see, from 1970 up to the year 10000.
    void setRange(std::int64_t first, std::int64_t last);
    void setNoRange() { m_hasRange = false; }
    /// Without one there are no columns, and nothing below may be asked or changed.
    [[nodiscard]] bool hasRange() const { return m_hasRange; }
    [[nodiscard]] TimeSpan range() const { return {m_first, m_last + 1}; }

    /// The numbers of the first column in sight and of the one past the last.
    [[nodiscard]] std::int64_t firstColumn() const;
    [[nodiscard]] std::int64_t endColumn() const;
    /// Those of the range.
    [[nodiscard]] std::int64_t oldestColumn() const { return columnOf(m_first); }
    [[nodiscard]] std::int64_t newestColumn() const { return columnOf(m_last); }
    [[nodiscard]] std::int64_t columnAt(int x) const;
    [[nodiscard]] std::int64_t columnOf(std::int64_t moment) const;
    [[nodiscard]] TimeSpan spanOf(std::int64_t column) const;
    [[nodiscard]] int leftOf(std::int64_t column) const;
    [[nodiscard]] int columnWidth() const { return m_view.columnWidth; }
    /// How long columns are, in seconds; see TimeColumns.
    [[nodiscard]] std::int64_t step() const { return m_view.step; }
    /// Where the moment is, or as far out of sight as fits a number.
    [[nodiscard]] int xOf(std::int64_t moment) const;
    [[nodiscard]] std::int64_t momentAt(int x) const;

    /// Shows so many times as much or, from 1 down, as little of time; what is at x stays there.
    void zoom(double factor, int x);
    /// Moves what is in sight to the right.
    void pan(int pixels);
    void bringIntoSight(std::int64_t column);
    void showAll();
    [[nodiscard]] bool showsAll() const { return m_view.showsAll; }

    /// What is in sight, to come back to it.
    struct View {
        std::int64_t step = 1;
        int columnWidth = kWidest;
        std::int64_t left = 0;  ///< in pixels from where the columns are counted
        bool showsAll = true;
        bool follows = true;
    };
    [[nodiscard]] const View &view() const { return m_view; }
    void setView(const View &view);

private:
    /// What the zooming keeps in its place: an exact moment, so that a hundred steps are as true as
    /// one.
    struct Pivot {
        int x;
        double moment;
    };

    [[nodiscard]] const TimeColumns &columns() const;
    /// From where the columns are counted.
    [[nodiscard]] std::int64_t pixelOf(std::int64_t moment) const;
    [[nodiscard]] double exactMomentAt(int x) const;
    [[nodiscard]] std::int64_t rightmost() const;
    [[nodiscard]] Pivot pivotAt(int x) const;
    void fitAll();
    void look(std::int64_t left, std::int64_t leftmost);
    void magnify(double secondsPerPixel);

    int m_width = 1;
    std::int64_t m_offset = 0;
    mutable std::map<std::int64_t, TimeColumns> m_columns;  // of each length that was asked for
    bool m_hasRange = false;
    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
    View m_view;
    std::optional<Pivot> m_pivot;  // of the last change, if that was a zooming
};

}  // namespace quorbel
