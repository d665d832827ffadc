#pragma once

#include "platform/gui/RowCopy.h"

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QAction;
class QItemSelectionModel;
class QMenu;

namespace quorbel {

class RowTableView;

/// The commands on a table's selected rows: their keys, the table's context menu, and whatever
/// other menu they are added to. Copy (Ctrl+C) copies the rows as they are shown, Copy Message
/// (Ctrl+Shift+C) their messages alone; a page adds its own behind them.
///
/// A menu's command means the rows that were selected when the menu opened: rows that come
/// meanwhile may clear the selection, and then those still there are selected again.
class RowCommands : public QObject {
    Q_OBJECT

public:
    enum class Needs { kSelection, kNothing };

    /// Belongs to the table, which has its model already. `message` tells a row's message, which is
    /// copied to the letter where it is the only one.
    RowCommands(RowTableView &table, RowCopy::Text message);

    /// Adds a command, called `name` as an object; its key works while the table has the focus.
    /// Where it needs a selection and there is none, menus show it disabled and its key does
    /// nothing.
    QAction *add(const char *name, const QString &text, const QKeySequence &key, Needs needs,
                 std::function<void()> run);
    void addSeparator();
    /// A command of the page's own, which is not about its rows: other menus than the context menu
    /// have it in front of all.
    void setPageCommand(QAction *command) { m_pageCommand = command; }
    /// Adds all commands to a menu that will be shown later; again after the menu was cleared.
    void addTo(QMenu &menu);

private:
    void copyMessages();
    void addRowCommandsTo(QMenu &menu);
    void openMenu(const QPoint &place);
    void keepSelection();
    void forgetSelection();
    [[nodiscard]] bool recallSelection();
    void tellFailure(RowCopy::Failure why);

    RowTableView &m_table;
    RowCopy m_copy;
    RowCopy::Text m_message;
    QList<QAction *> m_commands;
    QList<QAction *> m_needSelection;
    QAction *m_copyMessages = nullptr;
    QAction *m_pageCommand = nullptr;             // not its own
    std::unique_ptr<QItemSelectionModel> m_kept;  // while a menu is open over a selection
};

}  // namespace quorbel
