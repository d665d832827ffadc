#pragma once

#include "platform/gui/Sheet.h"

#include <memory>

namespace Ui {
class ActionsEmailTest;
}

namespace quorbel {

class AppDelegate;

/// The sheet that sends an e-mail about a sample event to a few addresses, as a trial of the mail
/// server and the templates that are stored. It closes at once; the page that it is presented over
/// shows the answer.
class ActionsEmailTest : public Sheet {
    Q_OBJECT

public:
    /// `delegate` outlives the sheet.
    explicit ActionsEmailTest(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ActionsEmailTest() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void onSave();
    void onCancel();

private:
    AppDelegate &m_delegate;
    std::unique_ptr<Ui::ActionsEmailTest> ui;
};

}  // namespace quorbel
