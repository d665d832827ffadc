#pragma once

#include "options/FilterEditing.h"
#include "options/OptionsValues.h"
#include "settings/SettingsView.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Ui {
class ToolsViewOptions;
}

namespace quorbel {

class FilterOptions;
class OptionsGroup;
class PopupOptions;
class RemovalEffect;
class RemovalOptions;
class SoundOptions;
class Storyboard;

/// The options page: how events are shown, rated, kept, announced and filtered. What each group of
/// controls does is in a class of its own; the page joins them.
class ToolsViewOptions : public SettingsView, public FilterEditing, public RecordPageLink {
    Q_OBJECT

public:
    /// Both outlive the page.
    ToolsViewOptions(AppDelegate &delegate, const Storyboard &storyboard,
                     QWidget *parent = nullptr);
    ~ToolsViewOptions() override;

    void viewDidLoad() override;
    void viewDidAppear() override;

    [[nodiscard]] std::optional<Dictionary> filterToEdit() const override;
    [[nodiscard]] std::optional<Dictionary> proposal() const override;
    void storeFilter(const Dictionary &record) override;
    [[nodiscard]] bool editsExcludeFilter() const override;
    [[nodiscard]] EventList &listedEvents() const override;
    /// One of the exclude list.
    void propose(const Dictionary &record) override;

    // Operations of the groups, by their names on the page.
    void eventRemoval(std::size_t severity);
    void popupEvents();
    void popupEventsDisplay(std::size_t severity);
    void popupSound();
    void popupEventsPlay(std::size_t severity);
    void includeFiltersRemove();
    void excludeFiltersRemove();

protected:
    void showSettings(const SettingsCycle &settings) override;
    void takeSettings(SettingsCycle &settings) override;
    void settingsSent() override;

private:
    const Storyboard &m_storyboard;
    std::unique_ptr<Ui::ToolsViewOptions> ui;
    RemovalOptions *m_removal;
    RemovalEffect *m_removalEffect;
    PopupOptions *m_popup;
    SoundOptions *m_sound;
    FilterOptions *m_filters;
    std::vector<OptionsGroup *> m_groups;  ///< all, from top to bottom
    OptionsValues m_values;                ///< as they were read, or last saved
};

}  // namespace quorbel
