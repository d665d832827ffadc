#include "platform/gui/StoredChoice.h"

#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <QComboBox>

namespace quorbel {

void addStored(QComboBox &chooser, std::string_view stored) {
    chooser.addItem(knownName(stored), toQString(stored));
}

void translateStored(QComboBox &chooser) {
    for (int item = 0; item < chooser.count(); ++item) {
        const QString stored = chooser.itemText(item);
        chooser.setItemData(item, stored);
        chooser.setItemText(item, knownName(stored));
    }
}

std::string storedChoice(const QComboBox &chooser) {
    return chooser.currentData().toString().toStdString();
}

int findStored(const QComboBox &chooser, std::string_view stored) {
    return chooser.findData(toQString(stored), Qt::UserRole,
                            Qt::MatchExactly | Qt::MatchCaseSensitive);
}

void chooseStored(QComboBox &chooser, const std::optional<std::string> &stored) {
    if (!stored) {
        chooser.setCurrentIndex(0);
        return;
    }
    const QString text = toQString(*stored);
    int item = findStored(chooser, *stored);
    if (item < 0 && !text.isEmpty()) {
        item = chooser.count();
        // However long it is, the sheet keeps its size.
        chooser.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        chooser.addItem(text, text);
    }
    chooser.setCurrentIndex(item);
}

}  // namespace quorbel
