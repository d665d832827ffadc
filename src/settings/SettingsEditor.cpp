#include "settings/SettingsEditor.h"

#include "core/AppDelegate.h"

namespace quorbel {

void SettingsEditor::loadSettings() {
    m_settings.load(AppDelegate::readSettings());
    showSettings(m_settings);
}

void SettingsEditor::onSave() {
    takeSettings(m_settings);
    m_delegate.saveSettings(m_settings.working());
    settingsSent();
    onCancel();
}

}  // namespace quorbel
