#include "options/LevelOptions.h"

#include "options/ChooserItem.h"
#include "options/OptionsValues.h"

namespace quorbel {

LevelOptions::LevelOptions(const LevelControls &controls, QObject *parent)
    : OptionsGroup(parent), m_controls(controls) {
    for (const QComboBox *level : m_controls) {
        connect(level, &QComboBox::activated, this, &LevelOptions::eventsSeverity);
    }
}

void LevelOptions::showValues(const OptionsValues &values) {
    m_levels = static_cast<const SeverityLevels &>(values);
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        chooseItem(*m_controls[i], m_levels.*kSeverityLevels[i]);
    }
}

void LevelOptions::takeValues(OptionsValues &values) const {
    static_cast<SeverityLevels &>(values) = m_levels;
}

QWidgetList LevelOptions::tabOrder() const {
    return {m_controls.begin(), m_controls.end()};
}

void LevelOptions::eventsSeverity() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        m_levels.*kSeverityLevels[i] = m_controls[i]->currentIndex();
    }
    Q_EMIT changed();
}

}  // namespace quorbel
