#pragma once

#include <QColor>
#include <QFrame>

namespace quorbel {

/// Fills a box's bounds with a gradient from its left edge to its right one.
void drawBar(QWidget &box, const QColor &left, const QColor &right);

/// A plain blue bar.
class ViewBar : public QFrame {
    Q_OBJECT

public:
    explicit ViewBar(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

}  // namespace quorbel
