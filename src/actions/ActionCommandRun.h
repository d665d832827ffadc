#pragma once

#include "actions/ActionCommandSheet.h"

#include <memory>

namespace Ui {
class ActionCommandRun;
}

namespace quorbel {

/// The sheet that edits the command which an action runs.
class ActionCommandRun : public ActionCommandSheet {
    Q_OBJECT

public:
    explicit ActionCommandRun(QWidget *parent = nullptr);
    ~ActionCommandRun() override;

    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewDidAppear() override;

    void browseCommand();
    void onSave();

private:
    std::unique_ptr<Ui::ActionCommandRun> ui;
};

}  // namespace quorbel
