#include "options/ShowingOptions.h"

#include "options/OptionsValues.h"
#include "platform/DateFormat.h"
#include "platform/gui/NoteLabel.h"
#include "platform/gui/QtText.h"

#include <QComboBox>
#include <QRadioButton>

#include <chrono>
#include <optional>

namespace quorbel {

namespace {

/// Checks one of two radio buttons: the one that the Tab key leads to.
void check(QRadioButton &chosen, QRadioButton &other) {
    chosen.setChecked(true);
    chosen.setFocusPolicy(Qt::StrongFocus);
    other.setFocusPolicy(Qt::ClickFocus);
}

std::optional<std::string> chosenItem(const QComboBox &chooser) {
    if (chooser.currentIndex() < 0) {
        return std::nullopt;
    }
    return chooser.currentText().toStdString();
}

}  // namespace

ShowingOptions::ShowingOptions(const Controls &controls, QObject *parent)
    : OptionsGroup(parent), m(controls) {
    for (const auto *button : {m.hostsDisplayIP, m.hostsDisplayName}) {
        connect(button, &QAbstractButton::clicked, this, &ShowingOptions::hostsDisplay);
    }
    for (const auto *button : {m.localeDateFormat, m.definedDateFormat}) {
        connect(button, &QAbstractButton::clicked, this, &ShowingOptions::dateFormat);
    }
    for (const auto *chooser : {m.userDateFormat, m.userTimeFormat}) {
        connect(chooser, &QComboBox::activated, this, &ShowingOptions::changed);
        connect(chooser, &QComboBox::currentIndexChanged, this, &ShowingOptions::showExample);
    }
}

void ShowingOptions::showValues(const OptionsValues &values) {
    if (values.bHostsDisplay) {
        check(*m.hostsDisplayName, *m.hostsDisplayIP);
    } else {
        check(*m.hostsDisplayIP, *m.hostsDisplayName);
    }
    m_dateFormat = values.dateFormat;
    showDateFormat();
    showExample();
}

void ShowingOptions::takeValues(OptionsValues &values) const {
    values.bHostsDisplay = m.hostsDisplayName->isChecked();
    values.dateFormat = chosenDateFormat();
}

QWidgetList ShowingOptions::tabOrder() const {
    return {m.hostsDisplayIP,    m.hostsDisplayName, m.localeDateFormat,
            m.definedDateFormat, m.userDateFormat,   m.userTimeFormat};
}

void ShowingOptions::showDateFormat() {
    const bool isDefined = !m_dateFormat.empty();
    m.userDateFormat->setEnabled(isDefined);
    m.userTimeFormat->setEnabled(isDefined);
    if (!isDefined) {
        check(*m.localeDateFormat, *m.definedDateFormat);
        m.userDateFormat->setCurrentIndex(-1);
        m.userTimeFormat->setCurrentIndex(-1);
        return;
    }
    check(*m.definedDateFormat, *m.localeDateFormat);
    const DateFormatItems items = dateFormatItems(m_dateFormat);
    m.userDateFormat->setCurrentIndex(m.userDateFormat->findText(toQString(items.date)));
    m.userTimeFormat->setCurrentIndex(
        items.time ? m.userTimeFormat->findText(toQString(*items.time)) : -1);
}

void ShowingOptions::hostsDisplay() {
    Q_EMIT changed();
}

void ShowingOptions::dateFormat() {
    const bool isDefined = m.definedDateFormat->isChecked();
    for (QComboBox *chooser : {m.userDateFormat, m.userTimeFormat}) {
        chooser->setEnabled(isDefined);
        chooser->setCurrentIndex(isDefined ? 0 : -1);
    }
    showExample();
    Q_EMIT changed();
}

/// The present moment, for one of which everybody knows how it looks otherwise.
void ShowingOptions::showExample() {
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    const std::string date = DateFormat(chosenDateFormat()).render(now.count());
    if (date.empty()) {
        m.dateExample->say(tr("Not a date format: dates would be empty"), true);
    } else {
        m.dateExample->say(tr("Example: %1").arg(toQString(date)));
    }
}

std::string ShowingOptions::chosenDateFormat() const {
    if (m.localeDateFormat->isChecked()) {
        return {};
    }
    return composeDateFormat(chosenItem(*m.userDateFormat), chosenItem(*m.userTimeFormat),
                             m_dateFormat);
}

}  // namespace quorbel
