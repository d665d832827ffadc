#pragma once

#include "home/HourScale.h"

#include <QAbstractButton>

#include <cstddef>
#include <cstdint>
#include <optional>

class QLabel;

namespace quorbel {

class HourChart;

/// One severity class on the home page: how many of its events are listed, and how many came in
/// each hour of the last day. A button that opens them; the arrow keys go from hour to hour.
class SeverityCard : public QAbstractButton {
    Q_OBJECT

public:
    explicit SeverityCard(QWidget *parent = nullptr);

    /// Once, when the form has put the caption and the number into its column.
    void complete(std::size_t severityClass);

    void setHours(const HourCounts &counts);
    /// Whether events of the class make the rating severe.
    void setSevere(bool isSevere);
    void setCompact(bool isCompact);
    [[nodiscard]] const HourChart &chart() const { return *m_chart; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    [[nodiscard]] QString name() const;
    [[nodiscard]] std::optional<std::size_t> columnAt(const QPoint &position) const;
    [[nodiscard]] QString hourText(std::size_t column, const QString &format) const;
    [[nodiscard]] QString tip(std::optional<std::size_t> column) const;
    void mark(std::optional<std::size_t> column);
    void step(int columns);
    void tell(std::size_t column);
    void showTotal();

    std::size_t m_class = 0;
    HourChart *m_chart = nullptr;
    QLabel *m_sign = nullptr;
    QLabel *m_day = nullptr;
    bool m_isCompact = false;
    std::optional<std::size_t> m_marked;
};

}  // namespace quorbel
