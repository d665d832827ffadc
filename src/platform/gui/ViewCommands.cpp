#include "platform/gui/ViewCommands.h"

#include <QAction>
#include <QMenu>
#include <QShortcut>
#include <QWidget>

#include <utility>

namespace quorbel {

ViewCommands::ViewCommands(QWidget &page) : QObject(&page), m_page(page) {}

QAction *ViewCommands::add(const char *name, const QString &text, const QKeySequence &key,
                           std::function<void()> run, bool hasOwnKey) {
    // The key is not the entry's own, which would work on other pages, too.
    auto *command = new QAction(text + u'\t' + key.toString(QKeySequence::NativeText), this);
    command->setObjectName(QString::fromLatin1(name));
    connect(command, &QAction::triggered, this, run);
    if (hasOwnKey) {
        auto *shortcut =
            new QShortcut(key, &m_page, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, std::move(run));
    }
    m_commands.append(command);
    return command;
}

void ViewCommands::addTo(QMenu &menu) {
    menu.addActions(m_commands);
    connect(&menu, &QMenu::aboutToShow, this, &ViewCommands::aboutToShow, Qt::UniqueConnection);
}

}  // namespace quorbel
