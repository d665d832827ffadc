#pragma once

#include "core/SettingsCycle.h"
#include "platform/gui/Sheet.h"

#include <memory>

namespace Ui {
class ActionsEmailFormat;
}

namespace quorbel {

class AppDelegate;

/// The sheet that edits the templates of all e-mails.
class ActionsEmailFormat : public Sheet {
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
    void onSave();
    void onCancel();

private:
    AppDelegate &m_delegate;
    std::unique_ptr<Ui::ActionsEmailFormat> ui;
    SettingsCycle m_settings;
};

}  // namespace quorbel
