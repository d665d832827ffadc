#pragma once

#include <QLabel>

namespace quorbel {

/// Shows an integer. Its text is the plain number; it is drawn as all counts are, smaller when it
/// would not fit. A zero is pale.
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
