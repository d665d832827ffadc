#pragma once

#include "core/SettingsCycle.h"
#include "platform/gui/Sheet.h"

#include <memory>

namespace Ui {
class ActionsEmailServer;
}

namespace quorbel {

class AppDelegate;

/// The sheet that edits the mail server which all e-mails go through.
class ActionsEmailServer : public Sheet {
    Q_OBJECT

public:
    /// `delegate` outlives the sheet.
    explicit ActionsEmailServer(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ActionsEmailServer() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void timeoutChanged();
    void onSave();
    void onCancel();

private:
    void showPassword();

    AppDelegate &m_delegate;
    std::unique_ptr<Ui::ActionsEmailServer> ui;
    SettingsCycle m_settings;
};

}  // namespace quorbel
