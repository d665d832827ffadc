#pragma once

#include "core/AppDelegate.h"
#include "platform/gui/Page.h"

#include <memory>

namespace Ui {
class ToolsView;
}

namespace quorbel {

/// The tools page: it leads to the three settings pages, and to the hosts.
class ToolsView : public Page {
    Q_OBJECT

public:
    /// `delegate` outlives the page.
    explicit ToolsView(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ToolsView() override;

    void viewDidLoad() override;

    void options();
    void actions();
    void export_();
    void hosts();

private:
    void open(Tab page);

    AppDelegate &m_delegate;
    std::unique_ptr<Ui::ToolsView> ui;
};

}  // namespace quorbel
