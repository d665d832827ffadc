#pragma once

class QVariant;
class QWidget;

namespace quorbel {

/// Sets a property of a widget at which rules of the style sheet look ("role", "state"). The rules
/// are applied anew where it changes, as properties are not watched.
void setLookProperty(QWidget &widget, const char *property, const QVariant &value);

}  // namespace quorbel
