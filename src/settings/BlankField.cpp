#include "settings/BlankField.h"

namespace quorbel {

BlankField::BlankField(QWidget *parent) : QWidget(parent) {
    // A dialog looks for another place of the focus when the one it finds takes none at all.
    setFocusPolicy(Qt::ClickFocus);
    setFixedSize(0, 0);
}

}  // namespace quorbel
