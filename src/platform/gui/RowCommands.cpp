#include "platform/gui/RowCommands.h"

#include "platform/gui/AlertBox.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/RowTableView.h"

#include <QAction>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>

#include <algorithm>
#include <utility>

namespace quorbel {

RowCommands::RowCommands(RowTableView &table, RowCopy::Text message)
    : QObject(&table), m_table(table), m_copy(table, this), m_message(std::move(message)) {
    add("copyRows", tr("&Copy"), QKeySequence::Copy, Needs::kSelection,
        [this] { m_copy.start([this](int row) { return copiedRow(m_table, row); }); });
    m_copyMessages =
        add("copyMessages", tr("Copy &Message"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C),
            Needs::kSelection, [this] { copyMessages(); });
    connect(&m_copy, &RowCopy::failed, this, &RowCommands::tellFailure);
    m_table.setContextMenuPolicy(Qt::CustomContextMenu);
    m_table.horizontalHeader()->setContextMenuPolicy(Qt::PreventContextMenu);
    connect(&m_table, &QWidget::customContextMenuRequested, this, &RowCommands::openMenu);
}

QAction *RowCommands::add(const char *name, const QString &text, const QKeySequence &key,
                          Needs needs, std::function<void()> run) {
    auto *command = new QAction(text, this);
    command->setObjectName(QString::fromLatin1(name));
    command->setShortcut(key);
    command->setShortcutContext(Qt::WidgetShortcut);
    command->setShortcutVisibleInContextMenu(true);
    command->setAutoRepeat(false);
    connect(command, &QAction::triggered, this, [this, needs, what = std::move(run)] {
        const bool areThere = recallSelection();
        if (areThere && (needs == Needs::kNothing || m_table.selectionModel()->hasSelection())) {
            what();
        }
    });
    m_table.addAction(command);
    m_commands.append(command);
    if (needs == Needs::kSelection) {
        m_needSelection.append(command);
    }
    return command;
}

void RowCommands::addSeparator() {
    auto *separator = new QAction(this);
    separator->setSeparator(true);
    m_commands.append(separator);
}

void RowCommands::addTo(QMenu &menu) {
    if (m_pageCommand != nullptr) {
        menu.addAction(m_pageCommand);
        menu.addSeparator();
    }
    addRowCommandsTo(menu);
}

void RowCommands::addRowCommandsTo(QMenu &menu) {
    menu.addActions(m_commands);
    connect(&menu, &QMenu::aboutToShow, this, &RowCommands::keepSelection, Qt::UniqueConnection);
    // A menu closes before its command runs.
    connect(&menu, &QMenu::aboutToHide, this, &RowCommands::forgetSelection,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection));
}

void RowCommands::copyMessages() {
    const QItemSelection selection = m_table.selectionModel()->selection();
    const bool isOne = selection.size() == 1 && selection.first().height() == 1;
    m_copy.start([this, isOne](int row) {
        std::optional<QString> message = m_message(row);
        if (message && !isOne) {
            message = copiedCell(*std::move(message));
        }
        return message;
    });
}

void RowCommands::openMenu(const QPoint &place) {
    auto *menu = new LetteredMenu(&m_table);
    menu->setObjectName(QStringLiteral("rowMenu"));
    menu->setAccessibleName(tr("Commands"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    addRowCommandsTo(*menu);
    // The Menu key asks for it at the current row, which may have been scrolled out of sight.
    const QRect inSight = m_table.viewport()->rect();
    menu->popup(m_table.viewport()->mapToGlobal(
        QPoint(std::clamp(place.x(), inSight.left(), inSight.right()),
               std::clamp(place.y(), inSight.top(), inSight.bottom()))));
}

void RowCommands::keepSelection() {
    const QItemSelection selection = m_table.selectionModel()->selection();
    m_kept.reset();
    if (!selection.isEmpty()) {
        m_kept = std::make_unique<QItemSelectionModel>(m_table.model(), nullptr);
        m_kept->select(selection, QItemSelectionModel::Select);
    }
    for (QAction *command : std::as_const(m_needSelection)) {
        command->setEnabled(m_kept != nullptr);
    }
    m_copyMessages->setEnabled(m_kept != nullptr && m_message(selection.first().top()).has_value());
}

void RowCommands::forgetSelection() {
    m_kept.reset();
    for (QAction *command : std::as_const(m_needSelection)) {
        command->setEnabled(true);
    }
}

/// False when all rows that were meant have gone.
bool RowCommands::recallSelection() {
    if (m_kept == nullptr) {
        return true;
    }
    QItemSelectionModel &selection = *m_table.selectionModel();
    if (!selection.hasSelection()) {
        selection.select(m_kept->selection(), QItemSelectionModel::Select);
    }
    return selection.hasSelection();
}

void RowCommands::tellFailure(RowCopy::Failure why) {
    const bool isTooLong = why == RowCopy::Failure::kTooLong;
    openAlert(&m_table,
              {isTooLong ? tr("Too much to copy") : tr("Nothing was copied"),
               isTooLong ? tr("The selected rows are too long for the clipboard. Select fewer, or "
                              "export them to a file.")
                         : tr("The list changed while the selected rows were being copied. Please "
                              "copy them again."),
               {},
               {}},
              {});
}

}  // namespace quorbel
