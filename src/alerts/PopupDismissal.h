#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

class QKeyEvent;
class QMouseEvent;

namespace quorbel {

/// The ways in which a user closes a popup: a click on it that means nothing else there, and Esc.
///
/// A popup never takes the keyboard. So Esc means it while the keyboard is in another window of the
/// program that has no use for the key itself, and wherever the window system gives the popup keys
/// of its own accord.
class PopupDismissal : public QObject {
    Q_OBJECT

public:
    /// Belongs to the view, which has all its controls already and covers all of its window.
    explicit PopupDismissal(QWidget &view);

    /// Clicks on this control are its own.
    void leaveTo(QWidget &control);

Q_SIGNALS:
    void dismissed();
    /// Shift+Esc.
    void allSkipped();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    [[nodiscard]] bool isOn(const QWidget &widget) const;
    void press(QWidget &widget, const QMouseEvent &event);
    void release(QWidget &widget, const QMouseEvent &event);
    bool takeKey(const QWidget &widget, const QKeyEvent &event);

    QWidget &m_view;
    QList<const QWidget *> m_others;
    QPointer<QWidget> m_pressed;  // where a click began
};

}  // namespace quorbel
