#pragma once

#include "core/AppDelegate.h"
#include "platform/gui/Page.h"

#include <QStringList>

#include <memory>

namespace Ui {
class HostsView;
}

namespace quorbel {

class HostPulse;
class HostTableModel;

/// All hosts that events came from, with what is usual for each, live while it is on screen. Opened
/// from the tools page and from the home page, it goes back there.
class HostsView : public Page, public SettingsPageLink {
    Q_OBJECT

public:
    /// `delegate` outlives the page.
    explicit HostsView(AppDelegate &delegate, QWidget *parent = nullptr);
    ~HostsView() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    [[nodiscard]] HostPulse &pulse() { return *m_pulse; }

private:
    void addCommands();
    void refresh();
    void showSummary();
    void showSelected();
    void showEvents();
    void changeExpected();
    void done();
    [[nodiscard]] int selectedCount() const;
    /// Their names, in the order of the rows.
    [[nodiscard]] QStringList selectedHosts() const;
    [[nodiscard]] bool areAllRetired(const QStringList &hosts) const;
    [[nodiscard]] QString habitText(const QStringList &hosts) const;

    AppDelegate &m_delegate;
    std::unique_ptr<HostTableModel> m_model;
    std::unique_ptr<Ui::HostsView> ui;
    HostPulse *m_pulse;
};

}  // namespace quorbel
