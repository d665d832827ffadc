#pragma once

#include "options/FilterEditing.h"
#include "options/OptionsValues.h"
#include "options/SeverityControls.h"
#include "settings/SettingsView.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Ui {
class ToolsViewOptions;
}

namespace quorbel {

class RecordList;
class Storyboard;

/// The options page: how events are shown, rated, kept, announced and filtered. It edits a private
/// copy of the settings document, read anew each time the page is shown.
class ToolsViewOptions : public SettingsView, public FilterEditing {
    Q_OBJECT

public:
    /// Both outlive the page.
    ToolsViewOptions(AppDelegate &delegate, const Storyboard &storyboard,
                     QWidget *parent = nullptr);
    ~ToolsViewOptions() override;

    void viewDidLoad() override;
    void viewDidAppear() override;

    [[nodiscard]] std::optional<Dictionary> filterToEdit() const override;
    void storeFilter(const Dictionary &record) override;

    // The handlers of the controls. Those that take a sender are also run by the loading, without
    // one: then they only bring the controls' state in line.
    void hostsDisplay();
    void dateFormat();
    void eventsSeverity();
    void eventsRemoval();
    void eventRemoval(std::size_t severity, QObject *sender = nullptr);
    void popupTimeout();
    void popupEvents(QObject *sender = nullptr);
    void popupEventsDisplay(std::size_t severity);
    void popupSound(QObject *sender = nullptr);
    void popupEventsPlay(std::size_t severity);
    void popupSoundBrowse();
    void includeFilters(QObject *sender);
    void excludeFilters(QObject *sender);
    void includeFiltersTable();
    void excludeFiltersTable();
    void includeFiltersRemove();
    void excludeFiltersRemove();

protected:
    void showSettings(const SettingsCycle &settings) override;
    void takeSettings(SettingsCycle &settings) override;
    void settingsSent() override;

private:
    using LabelBox = QCheckBox *SeverityControls::*;

    void makeControls();
    void makeFilterLists();
    void setTabOrders();
    void connectControls();
    void connectSeverities();
    void connectAlerts();
    void connectFilters();

    void showDateFormat();
    void showLevels();
    void showRemoval();
    void showPopups();
    void showSound();

    [[nodiscard]] std::string chosenDateFormat() const;
    [[nodiscard]] OptionsValues::Units chosenUnits() const;

    void showLabels(LabelBox box, const std::vector<std::string> &labels);
    void checkAll(LabelBox box, std::vector<std::string> &labels);
    void uncheckAll(LabelBox box, std::vector<std::string> &labels);
    void enableAll(LabelBox box, bool enabled);
    void takeLabel(const QCheckBox &box, std::vector<std::string> &labels);

    /// Whether this is the Add button, rather than the Edit button, of a list.
    [[nodiscard]] static bool adds(const QObject *sender);
    void presentFilter();
    void removeFilter(RecordList &filters);

    const Storyboard &m_storyboard;
    std::unique_ptr<Ui::ToolsViewOptions> ui;
    AllSeverityControls m_severities{};
    NumberStepper *m_popupTime = nullptr;
    RecordList *m_includeFilters = nullptr;
    RecordList *m_excludeFilters = nullptr;

    OptionsValues m_values;
    // Which list the filter editor works on.
    bool m_bIncludeFilters = false;
    bool m_bExcludeFilters = false;
};

}  // namespace quorbel
