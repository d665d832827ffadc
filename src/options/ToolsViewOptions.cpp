#include "options/ToolsViewOptions.h"

#include "common/Severity.h"
#include "core/AppDelegate.h"
#include "platform/gui/QtText.h"
#include "platform/gui/ScrolledControls.h"
#include "settings/NumberStepper.h"
#include "settings/RecordList.h"
#include "ui_ToolsViewOptions.h"

#include <QScrollBar>

#include <utility>

namespace quorbel {

namespace {

constexpr int kShortestPopup = 1;  // seconds
constexpr int kLongestPopup = 3600;

/// An index as stored, for a chooser: none where there is no such item.
int itemIndex(const QComboBox &chooser, std::int64_t index) {
    return index >= 0 && index < chooser.count() ? static_cast<int>(index) : -1;
}

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

ToolsViewOptions::ToolsViewOptions(AppDelegate &delegate, const Storyboard &storyboard,
                                   QWidget *parent)
    : SettingsView(delegate, parent),
      m_storyboard(storyboard),
      ui(std::make_unique<Ui::ToolsViewOptions>()) {
    ui->setupUi(this);
    makeControls();
}

ToolsViewOptions::~ToolsViewOptions() = default;

void ToolsViewOptions::makeControls() {
    m_severities = makeSeverityControls({.levels = ui->levelsGroupLayout,
                                         .removal = ui->removalGroupLayout,
                                         .popupDisplay = ui->alertsGroupLayout,
                                         .popupPlay = ui->soundGroupLayout});
    m_popupTime = new NumberStepper(ui->popupEventsTime, ui->popupEventsStepper, kShortestPopup,
                                    kLongestPopup, this);
    makeFilterLists();
    setTabOrders();
    new ScrolledControls(*ui->scrollView);
}

void ToolsViewOptions::setTabOrders() {
    QWidget *last = ui->userTimeFormat;
    const auto follow = [&last](QWidget *next) {
        setTabOrder(last, next);
        last = next;
    };
    for (const SeverityControls &severity : m_severities) {
        follow(severity.level);
    }
    for (const SeverityControls &severity : m_severities) {
        follow(severity.removal);
        follow(severity.time);
        follow(severity.units);
    }
    follow(ui->popupEventsDisplay);
    follow(ui->popupEventsTime);
    for (const SeverityControls &severity : m_severities) {
        follow(severity.popupDisplay);
    }
    follow(ui->popupEventsPlay);
    follow(ui->popupSoundFile);
    follow(ui->popupSoundBrowse);
    for (const SeverityControls &severity : m_severities) {
        follow(severity.popupPlay);
    }
    follow(ui->includeFiltersTable);
}

void ToolsViewOptions::viewDidLoad() {
    setUpPage(*ui->saveButton, *ui->onCancel);
    connectControls();
    connectSeverities();
    connectAlerts();
    connectFilters();
}

void ToolsViewOptions::connectControls() {
    for (const auto *button : {ui->hostsDisplayIP, ui->hostsDisplayName}) {
        connect(button, &QAbstractButton::clicked, this, &ToolsViewOptions::hostsDisplay);
    }
    for (const auto *button : {ui->localeDateFormat, ui->definedDateFormat}) {
        connect(button, &QAbstractButton::clicked, this, &ToolsViewOptions::dateFormat);
    }
    for (const auto *chooser : {ui->userDateFormat, ui->userTimeFormat}) {
        connect(chooser, &QComboBox::activated, this, &ToolsViewOptions::enableSave);
    }
}

void ToolsViewOptions::connectSeverities() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityControls &controls = m_severities[i];
        connect(controls.level, &QComboBox::activated, this, &ToolsViewOptions::eventsSeverity);
        connect(controls.removal, &QAbstractButton::clicked, this,
                [this, i] { eventRemoval(i, m_severities[i].removal); });
        connect(controls.removalTime, &NumberStepper::edited, this, [this, i](std::int64_t value) {
            m_values.*kRemovalMembers[i].amount = value;
            eventsRemoval();
        });
        connect(controls.units, &QComboBox::activated, this, &ToolsViewOptions::eventsRemoval);
    }
}

void ToolsViewOptions::showSettings(const SettingsCycle &settings) {
    ui->scrollView->verticalScrollBar()->setValue(0);
    m_values = OptionsValues::read(settings);
    if (m_values.bHostsDisplay) {
        check(*ui->hostsDisplayName, *ui->hostsDisplayIP);
    } else {
        check(*ui->hostsDisplayIP, *ui->hostsDisplayName);
    }
    showDateFormat();
    showLevels();
    showRemoval();
    showPopups();
    showSound();
    m_bIncludeFilters = m_bExcludeFilters = false;
    m_includeFilters->load();
    m_excludeFilters->load();
}

void ToolsViewOptions::viewDidAppear() {
    ui->optionsBlank->setFocus();
}

void ToolsViewOptions::showDateFormat() {
    const bool isDefined = !m_values.dateFormat.empty();
    ui->userDateFormat->setEnabled(isDefined);
    ui->userTimeFormat->setEnabled(isDefined);
    if (!isDefined) {
        check(*ui->localeDateFormat, *ui->definedDateFormat);
        ui->userDateFormat->setCurrentIndex(-1);
        ui->userTimeFormat->setCurrentIndex(-1);
        return;
    }
    check(*ui->definedDateFormat, *ui->localeDateFormat);
    const DateFormatItems items = dateFormatItems(m_values.dateFormat);
    ui->userDateFormat->setCurrentIndex(ui->userDateFormat->findText(toQString(items.date)));
    ui->userTimeFormat->setCurrentIndex(
        items.time ? ui->userTimeFormat->findText(toQString(*items.time)) : -1);
}

void ToolsViewOptions::showLevels() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        QComboBox *level = m_severities[i].level;
        level->setCurrentIndex(itemIndex(*level, m_values.*kSeverityLevels[i]));
    }
}

void ToolsViewOptions::showRemoval() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityControls &controls = m_severities[i];
        const std::int64_t amount = m_values.*kRemovalMembers[i].amount;
        controls.removal->setChecked(amount != 0);
        if (amount != 0) {
            controls.removalTime->setValue(amount);
            controls.units->setCurrentIndex(
                itemIndex(*controls.units, m_values.*kRemovalMembers[i].units));
        }
        eventRemoval(i);
    }
}

void ToolsViewOptions::hostsDisplay() {
    enableSave();
}

void ToolsViewOptions::dateFormat() {
    const bool isDefined = ui->definedDateFormat->isChecked();
    for (QComboBox *chooser : {ui->userDateFormat, ui->userTimeFormat}) {
        chooser->setEnabled(isDefined);
        chooser->setCurrentIndex(isDefined ? 0 : -1);
    }
    enableSave();
}

void ToolsViewOptions::eventsSeverity() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        m_values.*kSeverityLevels[i] = m_severities[i].level->currentIndex();
    }
    enableSave();
}

void ToolsViewOptions::eventsRemoval() {
    enableSave();
}

void ToolsViewOptions::eventRemoval(std::size_t severity, QObject *sender) {
    const SeverityControls &controls = m_severities[severity];
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
    enableSave();
}

void ToolsViewOptions::takeSettings(SettingsCycle &settings) {
    m_values.bHostsDisplay = ui->hostsDisplayName->isChecked();
    m_values.dateFormat = chosenDateFormat();
    m_values.write(settings, chosenUnits());
}

std::string ToolsViewOptions::chosenDateFormat() const {
    if (ui->localeDateFormat->isChecked()) {
        return {};
    }
    return composeDateFormat(chosenItem(*ui->userDateFormat), chosenItem(*ui->userTimeFormat),
                             m_values.dateFormat);
}

OptionsValues::Units ToolsViewOptions::chosenUnits() const {
    OptionsValues::Units units{};
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        units[i] = m_severities[i].units->currentIndex();
    }
    return units;
}

void ToolsViewOptions::settingsSent() {
    AppState &state = delegate().state;
    state.oldDateFormat = std::exchange(state.newDateFormat, m_values.dateFormat);
    for (const auto level : kSeverityLevels) {
        state.*level = m_values.*level;
    }
    delegate().setAlertSettings({.iPopupEvents = m_values.iPopupEvents,
                                 .popupSound = m_values.popupSound.value_or(std::string()),
                                 .popupDisplayArray = m_values.popupDisplayArray,
                                 .popupPlayArray = m_values.popupPlayArray});
}

}  // namespace quorbel
