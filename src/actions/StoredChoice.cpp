#include "actions/StoredChoice.h"

#include "platform/gui/QtText.h"

#include <QComboBox>

namespace quorbel {

void chooseStored(QComboBox &chooser, const std::optional<std::string> &stored) {
    if (!stored) {
        chooser.setCurrentIndex(0);
        return;
    }
    const QString text = toQString(*stored);
    int item = chooser.findText(text);
    if (item < 0 && !text.isEmpty()) {
        item = chooser.count();
        // However long it is, the sheet keeps its size.
        chooser.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        chooser.addItem(text);
    }
    chooser.setCurrentIndex(item);
}

}  // namespace quorbel
