#include "platform/gui/LookProperty.h"

#include <QStyle>
#include <QVariant>
#include <QWidget>

namespace quorbel {

void setLookProperty(QWidget &widget, const char *property, const QVariant &value) {
    if (widget.property(property) != value) {
        widget.setProperty(property, value);
        widget.style()->unpolish(&widget);
        widget.style()->polish(&widget);
    }
}

}  // namespace quorbel
