#pragma once

#include <optional>
#include <string>

class QComboBox;

namespace quorbel {

/// Chooses the item whose text is stored, or the first one when nothing is stored. A stored text
/// that is no item becomes one, at the end: what is shown, and so what is saved again, is what was
/// stored. For an empty text no item is chosen.
void chooseStored(QComboBox &chooser, const std::optional<std::string> &stored);

}  // namespace quorbel
