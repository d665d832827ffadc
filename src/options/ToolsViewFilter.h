#pragma once

#include "platform/gui/Sheet.h"

#include <memory>

namespace Ui {
class ToolsViewFilter;
}

namespace quorbel {

/// The editor of one filter record. Presented over a page that is FilterEditing.
class ToolsViewFilter : public Sheet {
    Q_OBJECT

public:
    explicit ToolsViewFilter(QWidget *parent = nullptr);
    ~ToolsViewFilter() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    void onSave();
    void onCancel();

private:
    std::unique_ptr<Ui::ToolsViewFilter> ui;
};

}  // namespace quorbel
