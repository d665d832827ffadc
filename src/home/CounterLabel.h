#pragma once

#include <QLabel>

namespace quorbel {

/// Shows an integer. Its text is the plain number; its digits are drawn in groups of three, smaller
/// when they would not fit. A zero is pale.
class CounterLabel : public QLabel {
    Q_OBJECT

public:
    explicit CounterLabel(QWidget *parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

}  // namespace quorbel
