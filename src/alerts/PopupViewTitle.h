#pragma once

#include <QWidget>

namespace quorbel {

/// The popup's title strip, in the colour of the level that its PopupView gives the event.
class PopupViewTitle final : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};

}  // namespace quorbel
