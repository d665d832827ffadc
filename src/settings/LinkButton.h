#pragma once

#include <QPushButton>

namespace quorbel {

/// A button that is drawn as a text link, with the pointing hand over all of it.
class LinkButton : public QPushButton {
    Q_OBJECT

public:
    explicit LinkButton(QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};

}  // namespace quorbel
