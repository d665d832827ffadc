#pragma once

#include <optional>
#include <string>
#include <string_view>

class QComboBox;

namespace quorbel {

// A chooser whose items stand for texts that are stored, sent or compared, while the user reads
// them in a language of the user's own.

/// Adds an item that stands for a text and shows the known name of it, see knownName().
void addStored(QComboBox &chooser, std::string_view stored);

/// Lets the items that a chooser has stand for the texts that they show, and show their known
/// names.
void translateStored(QComboBox &chooser);

/// What the chosen item stands for; empty for none.
std::string storedChoice(const QComboBox &chooser);

/// The item that stands for this text to the letter; -1 when there is none.
int findStored(const QComboBox &chooser, std::string_view stored);

/// Chooses the item that stands for what is stored, or the first one when nothing is stored. A
/// stored text that is no item becomes one, at the end: what is shown, and so what is saved again,
/// is what was stored. For an empty text no item is chosen.
void chooseStored(QComboBox &chooser, const std::optional<std::string> &stored);

}  // namespace quorbel
