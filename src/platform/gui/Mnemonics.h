#pragma once

#include <QHash>
#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class QAbstractButton;
class QApplication;
class QWidget;

namespace quorbel {

/// Gives the buttons of every window letters that press them together with Alt, whatever their
/// language: one of the text's own, and none twice among what is seen of a window at a time or in
/// its menu bar. What stays when pages change comes before what is on a page, push buttons before
/// others, as long as letters last. The texts remain what they are: titles are compared, and read
/// out.
///
/// Letters are given anew when a button appears, goes or changes its text. They are to be
/// underlined while Alt is held, as on other desktops' windows.
class Mnemonics : public QObject {
    Q_OBJECT

public:
    /// Belongs to the application.
    explicit Mnemonics(QApplication &application);

    /// What is to be painted for `text`, the button's or the beginning of it: with its letter
    /// marked by "&" while letters are underlined.
    [[nodiscard]] QString marked(const QAbstractButton &button, const QString &text) const;
    [[nodiscard]] bool areUnderlined() const { return m_areUnderlined; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Letter {
        QPointer<QWidget> window;
        QString text;
        qsizetype place = -1;
        QKeySequence key;  ///< empty without a letter
    };

    [[nodiscard]] bool isUpToDate(const QAbstractButton &button) const;
    void assignLater(QWidget &window);
    void forget(const QAbstractButton *button);
    void assignDue();
    void assign(QWidget &window);
    void give(QAbstractButton &button, qsizetype place);
    void underline(bool on);

    QHash<const QAbstractButton *, Letter> m_letters;
    QList<QPointer<QWidget>> m_due;
    bool m_areUnderlined = false;
};

}  // namespace quorbel
