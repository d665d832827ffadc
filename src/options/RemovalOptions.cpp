#include "options/RemovalOptions.h"

#include "options/ChooserItem.h"
#include "settings/NumberStepper.h"

#include <QCheckBox>
#include <QLineEdit>

namespace quorbel {

RemovalOptions::RemovalOptions(const AllRemovalControls &controls, QObject *parent)
    : OptionsGroup(parent), m_controls(controls) {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        connectControls(i);
    }
}

void RemovalOptions::connectControls(std::size_t severity) {
    const RemovalControls &controls = m_controls[severity];
    connect(controls.removal, &QAbstractButton::clicked, this,
            [this, severity] { eventRemoval(severity, m_controls[severity].removal); });
    connect(controls.removalTime, &NumberStepper::edited, this,
            [this, severity](std::int64_t value) {
                m_values.*kRemovalMembers[severity].amount = value;
                eventsRemoval();
            });
    connect(controls.units, &QComboBox::activated, this, &RemovalOptions::eventsRemoval);
}

void RemovalOptions::showValues(const OptionsValues &values) {
    m_values = static_cast<const RemovalValues &>(values);
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const RemovalControls &controls = m_controls[i];
        const std::int64_t amount = m_values.*kRemovalMembers[i].amount;
        controls.removal->setChecked(amount != 0);
        if (amount != 0) {
            controls.removalTime->setValue(amount);
            chooseItem(*controls.units, m_values.*kRemovalMembers[i].units);
        }
        eventRemoval(i);
    }
}

void RemovalOptions::takeValues(OptionsValues &values) const {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        values.*kRemovalMembers[i].amount = m_values.*kRemovalMembers[i].amount;
        values.*kRemovalMembers[i].units = m_controls[i].units->currentIndex();
    }
}

QWidgetList RemovalOptions::tabOrder() const {
    QWidgetList order;
    for (const RemovalControls &controls : m_controls) {
        order << controls.removal << controls.time << controls.units;
    }
    return order;
}

void RemovalOptions::eventsRemoval() {
    Q_EMIT changed();
}

void RemovalOptions::eventRemoval(std::size_t severity, const QObject *sender) {
    const RemovalControls &controls = m_controls[severity];
    const bool isOn = controls.removal->isChecked();
    controls.removalTime->setEnabled(isOn);
    controls.units->setEnabled(isOn);
    if (!isOn) {
        m_values.*kRemovalMembers[severity].amount = 0;
        controls.removalTime->clear();
        controls.units->setCurrentIndex(-1);
    }
    if (sender == nullptr) {
        return;
    }
    if (isOn) {
        m_values.*kRemovalMembers[severity].amount = 1;
        controls.removalTime->setValue(1);
        controls.units->setCurrentIndex(0);
    }
    Q_EMIT changed();
}

}  // namespace quorbel
