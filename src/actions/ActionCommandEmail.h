#pragma once

#include "actions/ActionCommandSheet.h"

#include <memory>

namespace Ui {
class ActionCommandEmail;
}

namespace quorbel {

/// The sheet that edits who gets an action's e-mail.
class ActionCommandEmail : public ActionCommandSheet {
    Q_OBJECT

public:
    explicit ActionCommandEmail(QWidget *parent = nullptr);
    ~ActionCommandEmail() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void onSave();

private:
    std::unique_ptr<Ui::ActionCommandEmail> ui;
};

}  // namespace quorbel
