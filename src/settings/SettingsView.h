#pragma once

#include "core/PageLinks.h"
#include "platform/gui/Page.h"
#include "settings/SettingsEditor.h"

class QAbstractButton;

namespace quorbel {

/// A settings page. Its Save button is enabled from the first edit after a showing on; Save and
/// Cancel return to `parentTab`.
class SettingsView : public Page, public SettingsPageLink, public SettingsEditor {
    Q_OBJECT

public:
    void viewWillAppear() override;

    void onCancel() override;

protected:
    /// `delegate` outlives the page.
    explicit SettingsView(AppDelegate &delegate, QWidget *parent = nullptr);

    /// Gives the page the look of all pages and its form's two buttons their meaning. Called once,
    /// by viewDidLoad().
    void setUpPage(QAbstractButton &save, QAbstractButton &cancel);
    /// Says that the user has changed something. What showSettings() does is no edit.
    void enableSave();

private:
    QAbstractButton *m_saveButton = nullptr;
};

}  // namespace quorbel
