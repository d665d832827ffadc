#pragma once

#include "core/EventQuery.h"

#include <QAbstractButton>

namespace quorbel {

/// A text condition in the find field. A click turns it from "contains" to "does not contain" and
/// back, one on its cross removes it; so do Space, and Delete or Backspace.
class FindChip : public QAbstractButton {
    Q_OBJECT

public:
    FindChip(TextCondition condition, QWidget *parent);

    [[nodiscard]] const TextCondition &condition() const { return m_condition; }
    /// As it is named elsewhere: “sdb”, not “smartd”.
    [[nodiscard]] QString name() const;
    /// All that is to be known of it, in a sentence.
    [[nodiscard]] QString description() const;
    void turn();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QRect crossRect() const;

Q_SIGNALS:
    void turned();
    void removed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void describe();
    [[nodiscard]] QString shownText() const;
    [[nodiscard]] QFont notFont() const;

    TextCondition m_condition;
    bool m_isCrossPressed = false;
};

}  // namespace quorbel
