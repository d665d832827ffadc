#pragma once

#include <QWidget>

namespace quorbel {

/// Says what the charts of the home page show, as far as there is room.
class ChartLegend : public QWidget {
    Q_OBJECT

public:
    explicit ChartLegend(QWidget *parent = nullptr);

    /// Whether there is nothing to explain: no event has come yet.
    void setEmpty(bool isEmpty);
    void setCompact(bool isCompact);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Sign { kNone, kColumns, kOutline, kTick };
    struct Entry {
        Sign sign;
        QString text;
    };
    [[nodiscard]] QList<Entry> entries() const;
    [[nodiscard]] QFont textFont() const;
    [[nodiscard]] int widthOf(const Entry &entry) const;
    [[nodiscard]] QRect mirrored(const QRect &place) const;
    void describe();

    bool m_isEmpty = false;
    bool m_isCompact = false;
};

}  // namespace quorbel
