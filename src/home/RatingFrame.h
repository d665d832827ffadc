#pragma once

#include "home/Rating.h"

#include <QColor>
#include <QFrame>

namespace quorbel {

QColor toQColor(const RatingColour &colour);

/// A white box with round corners whose border has a colour of its own. The border is as wide as
/// the frame's line width.
class RatingFrame : public QFrame {
    Q_OBJECT
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor)

public:
    explicit RatingFrame(QWidget *parent = nullptr);

    [[nodiscard]] QColor borderColor() const { return m_borderColor; }
    void setBorderColor(const QColor &colour);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_borderColor = Qt::transparent;
};

}  // namespace quorbel
