#include "platform/gui/LetteredMenu.h"

#include "platform/gui/MnemonicLetters.h"

#include <QAction>
#include <QKeyEvent>
#include <QStyleOptionMenuItem>

namespace quorbel {

LetteredMenu::LetteredMenu(QWidget *parent) : LetteredMenu(QString(), parent) {}

LetteredMenu::LetteredMenu(const QString &title, QWidget *parent) : QMenu(title, parent) {
    connect(this, &QMenu::aboutToShow, this, &LetteredMenu::chooseEntryLetters);
}

void LetteredMenu::chooseEntryLetters() {
    const QList<QAction *> entries = actions();
    QStringList texts;
    for (const QAction *entry : entries) {
        texts.append(entry->isVisible() ? entry->text() : QString());
    }
    QSet<QChar> taken;
    const QList<qsizetype> places = chooseLetters(texts, taken);
    m_places.clear();
    for (qsizetype i = 0; i < entries.size(); ++i) {
        m_places.insert(entries[i], places[i]);
    }
}

void LetteredMenu::initStyleOption(QStyleOptionMenuItem *option, const QAction *action) const {
    QMenu::initStyleOption(option, action);
    option->text = withLetterMarked(option->text, m_places.value(action, -1));
}

QChar LetteredMenu::letterOf(const QAction &entry) const {
    const qsizetype place = m_places.value(&entry, -1);
    return place < 0 || place >= entry.text().size() ? markedLetter(entry.text())
                                                     : entry.text()[place].toUpper();
}

/// One whose text does not mark it: QMenu knows the others.
QAction *LetteredMenu::entryOf(QChar letter) const {
    for (QAction *entry : actions()) {
        if (entry->isEnabled() && m_places.value(entry, -1) >= 0 && letterOf(*entry) == letter) {
            return entry;
        }
    }
    return nullptr;
}

void LetteredMenu::keyPressEvent(QKeyEvent *event) {
    const bool isPlain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::AltModifier)) == 0;
    QAction *entry =
        isPlain && !event->text().isEmpty() ? entryOf(event->text()[0].toUpper()) : nullptr;
    if (entry == nullptr) {
        QMenu::keyPressEvent(event);
        return;
    }
    setActiveAction(entry);
    QKeyEvent choose(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QMenu::keyPressEvent(&choose);
}

}  // namespace quorbel
