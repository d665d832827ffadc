#pragma once

#include "platform/gui/Sheet.h"
#include "settings/SettingsEditor.h"

#include <memory>

namespace Ui {
class ActionsEmailServer;
}

namespace quorbel {

/// The sheet that edits the mail server which all e-mails go through.
class ActionsEmailServer : public Sheet, public SettingsEditor {
    Q_OBJECT

public:
    /// `delegate` outlives the sheet.
    explicit ActionsEmailServer(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ActionsEmailServer() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void timeoutChanged();
    void onCancel() override;

protected:
    void showSettings(const SettingsCycle &settings) override;
    void takeSettings(SettingsCycle &settings) override;

private:
    void showPassword();

    std::unique_ptr<Ui::ActionsEmailServer> ui;
};

}  // namespace quorbel
