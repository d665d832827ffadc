#pragma once

#include "platform/gui/Sheet.h"

#include <memory>
#include <string>

namespace Ui {
class AboutView;
}

namespace quorbel {

/// The sheet "aboutView": version, disclaimer, legal warning, and the way to the maker's web page.
class AboutView : public Sheet {
    Q_OBJECT

public:
    /// `machine` is the hardware's name as uname(2) tells it; empty when that is not known.
    explicit AboutView(std::string machine = runningMachine(), QWidget *parent = nullptr);
    ~AboutView() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void linkButton();
    void onClose();

    static std::string runningMachine();

private:
    void appendWarning();

    std::string m_machine;
    std::unique_ptr<Ui::AboutView> ui;
};

}  // namespace quorbel
