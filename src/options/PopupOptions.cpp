#include "options/PopupOptions.h"

#include "options/OptionsValues.h"
#include "options/SeverityBoxes.h"
#include "settings/NumberStepper.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSpinBox>

namespace quorbel {

namespace {

// Seconds.
constexpr int kShortestPopup = 1;
constexpr int kLongestPopup = 3600;
constexpr std::int64_t kFirstPopupTime = 10;

}  // namespace

PopupOptions::PopupOptions(const Controls &controls, QObject *parent)
    : OptionsGroup(parent),
      m(controls),
      m_popupTime(new NumberStepper(m.popupEventsTime, m.popupEventsStepper, kShortestPopup,
                                    kLongestPopup, this)),
      m_boxes(new SeverityBoxes(m.boxes, this)) {
    connect(m.popupEventsDisplay, &QAbstractButton::clicked, this,
            [this] { popupEvents(m.popupEventsDisplay); });
    connect(m_popupTime, &NumberStepper::edited, this, [this](std::int64_t value) {
        m_iPopupEvents = value;
        popupTimeout();
    });
    connect(m_boxes, &SeverityBoxes::changed, this, &PopupOptions::changed);
}

void PopupOptions::showValues(const OptionsValues &values) {
    m_iPopupEvents = values.iPopupEvents;
    m.popupEventsDisplay->setChecked(m_iPopupEvents != 0);
    m_boxes->setLabels(values.popupDisplayArray);
    m_popupTime->setValue(m_iPopupEvents);
    popupEvents();
}

void PopupOptions::takeValues(OptionsValues &values) const {
    values.iPopupEvents = m_iPopupEvents;
    values.popupDisplayArray = m_boxes->labels();
}

QWidgetList PopupOptions::tabOrder() const {
    return QWidgetList{m.popupEventsDisplay, m.popupEventsTime} + m_boxes->tabOrder();
}

void PopupOptions::popupTimeout() {
    Q_EMIT changed();
}

void PopupOptions::popupEvents(const QObject *sender) {
    const bool isOn = m.popupEventsDisplay->isChecked();
    m_popupTime->setEnabled(isOn);
    m_boxes->setEnabled(isOn);
    if (!isOn) {
        m_iPopupEvents = 0;
        m_popupTime->clear();
        m_boxes->uncheckAll();
    }
    if (sender == nullptr) {
        return;
    }
    if (isOn) {
        m_iPopupEvents = kFirstPopupTime;
        m_popupTime->setValue(kFirstPopupTime);
        m_boxes->checkAll();
    }
    Q_EMIT changed();
}

void PopupOptions::popupEventsDisplay(std::size_t severity) {
    m_boxes->take(severity);
}

}  // namespace quorbel
