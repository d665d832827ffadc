#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class QAction;
class QMenu;
class QWidget;

namespace quorbel {

/// What a page offers for how one looks at it: keys that work anywhere on the page, and entries for
/// a menu of the window while the page is in sight.
class ViewCommands : public QObject {
    Q_OBJECT

public:
    /// Belongs to the page.
    explicit ViewCommands(QWidget &page);

    /// Adds a command, called `name` as an object. The key is left to somebody else where
    /// `hasOwnKey` is false, and is shown all the same.
    QAction *add(const char *name, const QString &text, const QKeySequence &key,
                 std::function<void()> run, bool hasOwnKey = true);
    /// Adds all commands to a menu that will be shown later; again after the menu was cleared.
    void addTo(QMenu &menu);

Q_SIGNALS:
    /// A menu is about to show the commands as they are now.
    void aboutToShow();

private:
    QWidget &m_page;
    QList<QAction *> m_commands;
};

}  // namespace quorbel
