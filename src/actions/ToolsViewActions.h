#pragma once

#include "platform/bus/CommandSender.h"
#include "settings/SettingsView.h"

#include <memory>
#include <optional>

class QAbstractButton;

namespace Ui {
class ToolsViewActions;
}

namespace quorbel {

class RecordList;
class Storyboard;

/// The actions page: what the service does by itself when certain events arrive.
class ToolsViewActions : public SettingsView, public RecordPageLink {
    Q_OBJECT

public:
    /// Both outlive the page.
    ToolsViewActions(AppDelegate &delegate, const Storyboard &storyboard,
                     QWidget *parent = nullptr);
    ~ToolsViewActions() override;

    void viewDidLoad() override;
    void viewDidAppear() override;

    void automaticActionsTable();
    /// Opens the editor: for a new action when the button's title says "Add", otherwise for the
    /// selected one.
    void automaticActions(const QAbstractButton &sender);
    void removeActions();
    void emailServer();
    void emailFormat();
    void emailTest();
    void propose(const Dictionary &record) override;

    // For the editor, which is presented over this page.

    /// The record to edit; nothing when no row is selected: then a new one is made.
    [[nodiscard]] std::optional<Dictionary> selectedRecord() const;
    /// What a new record begins with; nothing for what it begins with by itself.
    [[nodiscard]] const std::optional<Dictionary> &proposal() const { return m_proposal; }
    /// Puts a record in the place of the selected one, or at the end when no row is selected.
    void storeRecord(const Dictionary &record);
    /// The events that the window lists, to try an action's filter on.
    [[nodiscard]] EventList &listedEvents() const;
    /// Has the page show what comes of a test e-mail that is sent now.
    CommandSender::AnswerHandler awaitEmailAnswer();

protected:
    void showSettings(const SettingsCycle &settings) override;
    void takeSettings(SettingsCycle &settings) override;

private:
    void present(const QString &sheet);

    const Storyboard &m_storyboard;
    std::unique_ptr<Ui::ToolsViewActions> ui;
    Array m_actionsArray;
    RecordList *m_actions = nullptr;
    std::optional<Dictionary> m_proposal;  ///< while the editor is being opened for one
};

}  // namespace quorbel
