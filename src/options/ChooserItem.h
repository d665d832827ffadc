#pragma once

#include <QComboBox>

#include <cstdint>

namespace quorbel {

/// Chooses the item of a stored index; none where there is no such item.
inline void chooseItem(QComboBox &chooser, std::int64_t index) {
    chooser.setCurrentIndex(index >= 0 && index < chooser.count() ? static_cast<int>(index) : -1);
}

}  // namespace quorbel
