#pragma once

#include "core/SettingsCycle.h"

namespace quorbel {

class AppDelegate;

/// What edits keys of the settings document, a page or a sheet: loadSettings() each time it is
/// shown, then either onSave() or onCancel().
class SettingsEditor {
public:
    virtual ~SettingsEditor() = default;
    SettingsEditor(const SettingsEditor &) = delete;
    SettingsEditor &operator=(const SettingsEditor &) = delete;

    /// Sends the whole document with what was edited to the service, and leaves as onCancel() does.
    void onSave();
    /// Leaves without a word to the service. The edits are dropped by the next loadSettings().
    virtual void onCancel() = 0;

protected:
    /// `delegate` outlives the object.
    explicit SettingsEditor(AppDelegate &delegate) : m_delegate(delegate) {}

    /// Reads the document anew and has it shown.
    void loadSettings();

    /// Shows what was read in place of all that was shown or edited before.
    virtual void showSettings(const SettingsCycle &settings) = 0;
    /// Writes the keys that are edited here as they stand; all others stay as they were read.
    virtual void takeSettings(SettingsCycle &settings) = 0;
    /// Called when the document is on its way, before leaving.
    virtual void settingsSent() {}

    [[nodiscard]] AppDelegate &delegate() const { return m_delegate; }

private:
    AppDelegate &m_delegate;
    SettingsCycle m_settings;
};

}  // namespace quorbel
