#pragma once

#include "platform/Value.h"
#include "platform/gui/Sheet.h"

#include <memory>

namespace Ui {
class ActionView;
}

namespace quorbel {

class Storyboard;

/// The sheet that edits one action: the filter that says for which events it is, the reactions to
/// them, and how many it takes until the action acts. Presented over the actions page.
class ActionView : public Sheet {
    Q_OBJECT

public:
    /// `storyboard` outlives the sheet.
    explicit ActionView(const Storyboard &storyboard, QWidget *parent = nullptr);
    ~ActionView() override;

    // The working copies of the three reactions, edited by the sheets that are presented over this
    // one. A reaction is on when its dictionary is not empty.
    Dictionary runCommand;
    Dictionary sendEmail;
    Dictionary setEvent;

    /// Ticks the check boxes of the reactions that are on, and no others.
    void checkReactions();

    void viewDidLoad() override;
    void viewWillAppear() override;

    void commandRunText();
    void commandEmailText();
    void commandEventText();
    void commandRun();
    void commandEmail();
    void commandEvent();
    void onSave();
    void onCancel();

private:
    const Storyboard &m_storyboard;
    std::unique_ptr<Ui::ActionView> ui;
};

}  // namespace quorbel
