#include "common/Severity.h"
#include "options/ToolsViewOptions.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/QtText.h"
#include "settings/NumberStepper.h"
#include "ui_ToolsViewOptions.h"

#include <algorithm>

namespace quorbel {

namespace {

constexpr std::int64_t kFirstPopupTime = 10;  // seconds

std::string labelOf(const QCheckBox &box) {
    return box.text().toStdString();
}

bool contains(const std::vector<std::string> &labels, const std::string &label) {
    return std::ranges::find(labels, label) != labels.end();
}

}  // namespace

void ToolsViewOptions::connectAlerts() {
    connect(ui->popupEventsDisplay, &QAbstractButton::clicked, this,
            [this] { popupEvents(ui->popupEventsDisplay); });
    connect(m_popupTime, &NumberStepper::edited, this, [this](std::int64_t value) {
        m_values.iPopupEvents = value;
        popupTimeout();
    });
    connect(ui->popupEventsPlay, &QAbstractButton::clicked, this,
            [this] { popupSound(ui->popupEventsPlay); });
    connect(ui->popupSoundFile, &QLineEdit::textEdited, this, [this](const QString &text) {
        m_values.popupSound = text.toStdString();
        enableSave();
    });
    connect(ui->popupSoundBrowse, &QAbstractButton::clicked, this,
            &ToolsViewOptions::popupSoundBrowse);
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        connect(m_severities[i].popupDisplay, &QAbstractButton::clicked, this,
                [this, i] { popupEventsDisplay(i); });
        connect(m_severities[i].popupPlay, &QAbstractButton::clicked, this,
                [this, i] { popupEventsPlay(i); });
    }
}

void ToolsViewOptions::showPopups() {
    ui->popupEventsDisplay->setChecked(m_values.iPopupEvents != 0);
    showLabels(&SeverityControls::popupDisplay, m_values.popupDisplayArray);
    m_popupTime->setValue(m_values.iPopupEvents);
    popupEvents();
}

void ToolsViewOptions::showSound() {
    const std::string path = m_values.popupSound.value_or(std::string());
    ui->popupEventsPlay->setChecked(!path.empty());
    showText(*ui->popupSoundFile, toQString(path));
    showLabels(&SeverityControls::popupPlay, m_values.popupPlayArray);
    popupSound();
}

void ToolsViewOptions::popupTimeout() {
    enableSave();
}

void ToolsViewOptions::popupEvents(QObject *sender) {
    const bool isOn = ui->popupEventsDisplay->isChecked();
    m_popupTime->setEnabled(isOn);
    enableAll(&SeverityControls::popupDisplay, isOn);
    if (!isOn) {
        m_values.iPopupEvents = 0;
        m_popupTime->clear();
        uncheckAll(&SeverityControls::popupDisplay, m_values.popupDisplayArray);
    }
    if (sender == nullptr) {
        return;
    }
    if (isOn) {
        m_values.iPopupEvents = kFirstPopupTime;
        m_popupTime->setValue(kFirstPopupTime);
        checkAll(&SeverityControls::popupDisplay, m_values.popupDisplayArray);
    }
    enableSave();
}

void ToolsViewOptions::popupSound(QObject *sender) {
    const bool isOn = ui->popupEventsPlay->isChecked();
    ui->popupSoundFile->setEnabled(isOn);
    ui->popupSoundBrowse->setEnabled(isOn);
    enableAll(&SeverityControls::popupPlay, isOn);
    if (!isOn) {
        // The path stays in the settings: it is there again the next time the page is shown.
        ui->popupSoundFile->clear();
        uncheckAll(&SeverityControls::popupPlay, m_values.popupPlayArray);
    }
    if (sender == nullptr) {
        return;
    }
    if (isOn) {
        checkAll(&SeverityControls::popupPlay, m_values.popupPlayArray);
    }
    enableSave();
}

void ToolsViewOptions::popupSoundBrowse() {
    openFilePanel(this,
                  {.message = QStringLiteral("Please select sound file name with 'aif' extension:"),
                   .extensions = {QStringLiteral("aiff"), QStringLiteral("aif")},
                   .folder = QStringLiteral("/System/Library/Sounds")},
                  [this](const QString &path) {
                      showText(*ui->popupSoundFile, path);
                      m_values.popupSound = path.toStdString();
                      enableSave();
                  });
}

void ToolsViewOptions::popupEventsDisplay(std::size_t severity) {
    takeLabel(*m_severities[severity].popupDisplay, m_values.popupDisplayArray);
}

void ToolsViewOptions::popupEventsPlay(std::size_t severity) {
    takeLabel(*m_severities[severity].popupPlay, m_values.popupPlayArray);
}

void ToolsViewOptions::showLabels(LabelBox box, const std::vector<std::string> &labels) {
    for (const SeverityControls &severity : m_severities) {
        (severity.*box)->setChecked(contains(labels, labelOf(*(severity.*box))));
    }
}

void ToolsViewOptions::checkAll(LabelBox box, std::vector<std::string> &labels) {
    for (const SeverityControls &severity : m_severities) {
        (severity.*box)->setChecked(true);
        labels.push_back(labelOf(*(severity.*box)));
    }
}

void ToolsViewOptions::uncheckAll(LabelBox box, std::vector<std::string> &labels) {
    for (const SeverityControls &severity : m_severities) {
        (severity.*box)->setChecked(false);
    }
    labels.clear();
}

void ToolsViewOptions::enableAll(LabelBox box, bool enabled) {
    for (const SeverityControls &severity : m_severities) {
        (severity.*box)->setEnabled(enabled);
    }
}

void ToolsViewOptions::takeLabel(const QCheckBox &box, std::vector<std::string> &labels) {
    const std::string label = labelOf(box);
    if (!box.isChecked()) {
        std::erase(labels, label);
    } else if (!contains(labels, label)) {
        labels.push_back(label);
    }
    enableSave();
}

}  // namespace quorbel
