#pragma once

#include "home/HourScale.h"

#include <QWidget>

#include <optional>

namespace quorbel {

/// A day's hours as columns, the day before as an outline around them: where it was lower, a notch.
/// A tick marks midnight.
class HourChart : public QWidget {
    Q_OBJECT

public:
    explicit HourChart(QWidget *parent);

    [[nodiscard]] const HourCounts &counts() const { return m_counts; }
    void setCounts(const HourCounts &counts);
    /// Whether the columns are red.
    void setSevere(bool isSevere);
    /// The column that stands out; nothing for none.
    void setMarked(std::optional<std::size_t> column);
    /// Whether the hours of the clock stand below, where there is room.
    void setLabelled(bool isLabelled);
    void setCompact(bool isCompact);

    /// The one at that place; nothing outside.
    [[nodiscard]] std::optional<std::size_t> columnAt(int x) const;
    /// From its left edge to its right one, in this widget.
    [[nodiscard]] QRect columnRect(std::size_t column) const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Picture;
    [[nodiscard]] int below() const;
    [[nodiscard]] QFont labelFont() const;

    HourCounts m_counts;
    bool m_isSevere = false;
    bool m_isLabelled = false;
    bool m_isCompact = false;
    std::optional<std::size_t> m_marked;
};

}  // namespace quorbel
