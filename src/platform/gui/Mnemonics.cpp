#include "platform/gui/Mnemonics.h"

#include "platform/gui/MnemonicLetters.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>

#include <array>
#include <utility>

namespace quorbel {

namespace {

const QString kShortcutName = QStringLiteral("mnemonic");

/// Letters that a window uses for something other than buttons.
QSet<QChar> othersLetters(const QWidget &window) {
    QSet<QChar> letters;
    for (const QMenuBar *bar : window.findChildren<QMenuBar *>()) {
        for (const QAction *menu : bar->actions()) {
            letters.insert(markedLetter(menu->text()));
        }
    }
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        if (label->buddy() != nullptr && label->isVisible()) {
            letters.insert(markedLetter(label->text()));
        }
    }
    return letters;
}

bool isOnPage(const QAbstractButton &button) {
    const QWidget *parent = button.parentWidget();
    while (parent != nullptr && !parent->isWindow() &&
           qobject_cast<const QStackedWidget *>(parent) == nullptr) {
        parent = parent->parentWidget();
    }
    return qobject_cast<const QStackedWidget *>(parent) != nullptr;
}

constexpr std::size_t kRanks = 4;

/// Which letters are chosen first: those that stay when pages change, so that they remain the same.
/// A push button that the keyboard does not stop at comes and goes by itself.
std::size_t rankOf(const QAbstractButton &button) {
    const bool isPush = qobject_cast<const QPushButton *>(&button) != nullptr &&
                        button.focusPolicy() != Qt::NoFocus;
    return (isOnPage(button) ? 2U : 0U) + (isPush ? 0U : 1U);
}

QKeySequence keyOf(QChar letter) {
    return QKeySequence(QKeyCombination(Qt::ALT, static_cast<Qt::Key>(letter.toUpper().unicode())));
}

/// For a button that has another key of its own.
void setKeyBeside(QAbstractButton &button, const QKeySequence &key) {
    auto *shortcut = button.findChild<QShortcut *>(kShortcutName, Qt::FindDirectChildrenOnly);
    if (shortcut == nullptr && !key.isEmpty()) {
        shortcut = new QShortcut(&button);
        shortcut->setObjectName(kShortcutName);
        QObject::connect(shortcut, &QShortcut::activated, &button, &QAbstractButton::animateClick);
    }
    if (shortcut != nullptr) {
        shortcut->setKey(key);
    }
}

}  // namespace

Mnemonics::Mnemonics(QApplication &application) : QObject(&application) {
    application.installEventFilter(this);
}

QString Mnemonics::marked(const QAbstractButton &button, const QString &text) const {
    const auto letter = m_letters.constFind(&button);
    if (!m_areUnderlined || letter == m_letters.cend() || letter->place < 0 ||
        !text.startsWith(letter->text.first(letter->place + 1))) {
        return text;
    }
    return withLetterMarked(text, letter->place);
}

bool Mnemonics::isUpToDate(const QAbstractButton &button) const {
    const Letter letter = m_letters.value(&button);
    // A button that is given another text forgets its key.
    return letter.text == button.text() && (letter.key.isEmpty() || !button.shortcut().isEmpty());
}

bool Mnemonics::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::Paint:
            if (const auto *button = qobject_cast<QAbstractButton *>(watched)) {
                if (event->type() != QEvent::Paint || !isUpToDate(*button)) {
                    assignLater(*button->window());
                }
            }
            break;
        case QEvent::LayoutRequest:
            // A button with another text may be out of sight, and not be painted.
            for (const QObject *child : watched->children()) {
                const auto *button = qobject_cast<const QAbstractButton *>(child);
                if (button != nullptr && button->isVisible() && !isUpToDate(*button)) {
                    assignLater(*button->window());
                }
            }
            break;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Alt) {
                underline(event->type() == QEvent::KeyPress);
            }
            break;
        case QEvent::WindowDeactivate:
            underline(false);
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void Mnemonics::assignLater(QWidget &window) {
    if (m_due.isEmpty()) {
        QMetaObject::invokeMethod(this, &Mnemonics::assignDue, Qt::QueuedConnection);
    }
    if (!m_due.contains(&window)) {
        m_due.append(&window);
    }
}

void Mnemonics::assignDue() {
    const QList<QPointer<QWidget>> windows = std::exchange(m_due, {});
    for (const QPointer<QWidget> &window : windows) {
        if (window != nullptr) {
            assign(*window);
        }
    }
}

void Mnemonics::assign(QWidget &window) {
    QSet<QChar> taken = othersLetters(window);
    std::array<QList<QAbstractButton *>, kRanks> ranks;
    for (QAbstractButton *button : window.findChildren<QAbstractButton *>()) {
        if (button->window() != &window) {
            continue;
        }
        if (button->isVisible()) {
            ranks[rankOf(*button)].append(button);
        } else {
            give(*button, -1);
        }
    }
    for (const QList<QAbstractButton *> &rank : ranks) {
        QStringList texts;
        for (const QAbstractButton *button : rank) {
            texts.append(button->text());
        }
        const QList<qsizetype> places = chooseLetters(texts, taken);
        for (qsizetype i = 0; i < rank.size(); ++i) {
            give(*rank[i], places[i]);
        }
    }
}

void Mnemonics::give(QAbstractButton &button, qsizetype place) {
    if (!m_letters.contains(&button)) {
        connect(&button, &QObject::destroyed, this, [this, gone = &button] { forget(gone); });
    }
    Letter &letter = m_letters[&button];
    const bool hasOtherKey = !button.shortcut().isEmpty() && button.shortcut() != letter.key;
    letter = {button.window(), button.text(), place,
              place < 0 ? QKeySequence() : keyOf(button.text()[place])};
    if (!hasOtherKey) {
        button.setShortcut(letter.key);  // where assistive tools look for it
    }
    setKeyBeside(button, hasOtherKey ? letter.key : QKeySequence());
    if (m_areUnderlined) {
        button.update();
    }
}

/// A button that was in sight goes without being hidden first.
void Mnemonics::forget(const QAbstractButton *button) {
    const Letter letter = m_letters.take(button);
    if (letter.window != nullptr && letter.place >= 0) {
        assignLater(*letter.window);
    }
}

void Mnemonics::underline(bool on) {
    if (m_areUnderlined == on) {
        return;
    }
    m_areUnderlined = on;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        window->update();
    }
}

}  // namespace quorbel
