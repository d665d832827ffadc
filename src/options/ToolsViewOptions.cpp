#include "options/ToolsViewOptions.h"

#include "core/AppDelegate.h"
#include "options/FilterOptions.h"
#include "options/LevelOptions.h"
#include "options/PopupOptions.h"
#include "options/RemovalEffect.h"
#include "options/RemovalOptions.h"
#include "options/ShowingOptions.h"
#include "options/SoundOptions.h"
#include "platform/gui/ScrolledControls.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/WrappedTexts.h"
#include "ui_ToolsViewOptions.h"

#include <QScrollBar>

#include <utility>

namespace quorbel {

namespace {

void joinTabOrders(const std::vector<OptionsGroup *> &groups) {
    QWidgetList order;
    for (const OptionsGroup *group : groups) {
        order += group->tabOrder();
    }
    for (qsizetype i = 1; i < order.size(); ++i) {
        QWidget::setTabOrder(order[i - 1], order[i]);
    }
}

}  // namespace

ToolsViewOptions::ToolsViewOptions(AppDelegate &delegate, const Storyboard &storyboard,
                                   QWidget *parent)
    : SettingsView(delegate, parent),
      m_storyboard(storyboard),
      ui(std::make_unique<Ui::ToolsViewOptions>()) {
    ui->setupUi(this);
    auto *showing = new ShowingOptions({.hostsDisplayIP = ui->hostsDisplayIP,
                                        .hostsDisplayName = ui->hostsDisplayName,
                                        .localeDateFormat = ui->localeDateFormat,
                                        .definedDateFormat = ui->definedDateFormat,
                                        .userDateFormat = ui->userDateFormat,
                                        .userTimeFormat = ui->userTimeFormat,
                                        .dateExample = ui->dateExample},
                                       this);
    auto *levels = new LevelOptions(makeLevelControls(*ui->levelsGroupLayout), this);
    m_removal = new RemovalOptions(makeRemovalControls(*ui->removalGroupLayout), this);
    m_popup = new PopupOptions({.popupEventsDisplay = ui->popupEventsDisplay,
                                .popupEventsTime = ui->popupEventsTime,
                                .popupEventsStepper = ui->popupEventsStepper,
                                .boxes = makeDisplayControls(*ui->alertsGroupLayout)},
                               this);
    m_sound = new SoundOptions({.popupEventsPlay = ui->popupEventsPlay,
                                .popupSoundFile = ui->popupSoundFile,
                                .popupSoundBrowse = ui->popupSoundBrowse,
                                .popupSoundTry = ui->popupSoundTry,
                                .popupSoundNote = ui->popupSoundNote,
                                .boxes = makePlayControls(*ui->soundGroupLayout)},
                               this);
    m_filters = new FilterOptions({ui->includeFiltersTable, ui->includeFiltersAdd,
                                   ui->includeFiltersEdit, ui->includeFiltersRemove},
                                  {ui->excludeFiltersTable, ui->excludeFiltersAdd,
                                   ui->excludeFiltersEdit, ui->excludeFiltersRemove},
                                  this);
    m_groups = {showing, levels, m_removal, m_popup, m_sound, m_filters};
    joinTabOrders(m_groups);
    m_removalEffect = new RemovalEffect(*m_removal, delegate.events, delegate.hold,
                                        *ui->removalEffect, *ui->saveButton);
    m_removalEffect->setParent(this);
    new ScrolledControls(*ui->scrollView);
    new WrappedTexts(*ui->scrollView);
}

ToolsViewOptions::~ToolsViewOptions() = default;

void ToolsViewOptions::viewDidLoad() {
    setUpPage(*ui->saveButton, *ui->onCancel);
    for (const OptionsGroup *group : m_groups) {
        connect(group, &OptionsGroup::changed, this, &ToolsViewOptions::enableSave);
        connect(group, &OptionsGroup::changed, m_removalEffect, &RemovalEffect::edited);
    }
    connect(m_filters, &FilterOptions::editFilter, this,
            [this] { presentSheet(m_storyboard, QStringLiteral("filterView"), this); });
}

void ToolsViewOptions::viewDidAppear() {
    ui->optionsBlank->setFocus();
}

void ToolsViewOptions::showSettings(const SettingsCycle &settings) {
    ui->scrollView->verticalScrollBar()->setValue(0);
    m_removalEffect->reset(settings.working());
    m_values = OptionsValues::read(settings);
    for (OptionsGroup *group : m_groups) {
        group->showValues(m_values);
    }
}

void ToolsViewOptions::takeSettings(SettingsCycle &settings) {
    for (const OptionsGroup *group : m_groups) {
        group->takeValues(m_values);
    }
    m_values.write(settings);
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

std::optional<Dictionary> ToolsViewOptions::filterToEdit() const {
    return m_filters->filterToEdit();
}

std::optional<Dictionary> ToolsViewOptions::proposal() const {
    return m_filters->proposal();
}

void ToolsViewOptions::propose(const Dictionary &record) {
    m_filters->proposeExclusion(record);
}

void ToolsViewOptions::storeFilter(const Dictionary &record) {
    m_filters->storeFilter(record);
}

EventList &ToolsViewOptions::listedEvents() const {
    return delegate().events;
}

bool ToolsViewOptions::editsExcludeFilter() const {
    return m_filters->editsExcludeFilter();
}

void ToolsViewOptions::eventRemoval(std::size_t severity) {
    m_removal->eventRemoval(severity);
}

void ToolsViewOptions::popupEvents() {
    m_popup->popupEvents();
}

void ToolsViewOptions::popupEventsDisplay(std::size_t severity) {
    m_popup->popupEventsDisplay(severity);
}

void ToolsViewOptions::popupSound() {
    m_sound->popupSound();
}

void ToolsViewOptions::popupEventsPlay(std::size_t severity) {
    m_sound->popupEventsPlay(severity);
}

void ToolsViewOptions::includeFiltersRemove() {
    m_filters->includeFiltersRemove();
}

void ToolsViewOptions::excludeFiltersRemove() {
    m_filters->excludeFiltersRemove();
}

}  // namespace quorbel
