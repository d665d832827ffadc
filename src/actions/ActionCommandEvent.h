#pragma once

#include "actions/ActionCommandSheet.h"

#include <memory>

namespace Ui {
class ActionCommandEvent;
}

namespace quorbel {

/// The sheet that edits the event which an action sets.
class ActionCommandEvent : public ActionCommandSheet {
    Q_OBJECT

public:
    explicit ActionCommandEvent(QWidget *parent = nullptr);
    ~ActionCommandEvent() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void onSave();

private:
    std::unique_ptr<Ui::ActionCommandEvent> ui;
};

}  // namespace quorbel
