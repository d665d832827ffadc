#pragma once

#include "platform/gui/Sheet.h"
#include "settings/SettingsEditor.h"

#include <memory>

namespace Ui {
class ActionsEmailFormat;
}

namespace quorbel {

/// The sheet that edits the templates of all e-mails.
class ActionsEmailFormat : public Sheet, public SettingsEditor {
    Q_OBJECT

public:
    /// `delegate` outlives the sheet.
    explicit ActionsEmailFormat(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ActionsEmailFormat() override;

    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewDidAppear() override;

    void sendSubject();
    void sendBody();
    void onCancel() override;

protected:
    void showSettings(const SettingsCycle &settings) override;
    void takeSettings(SettingsCycle &settings) override;

private:
    std::unique_ptr<Ui::ActionsEmailFormat> ui;
};

}  // namespace quorbel
