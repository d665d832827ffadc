#pragma once

#include <QWidget>

#include <functional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace quorbel {

/// Asks for a name, or whether something shall be done, within a panel.
class QuestionPrompt : public QWidget {
    Q_OBJECT

public:
    explicit QuestionPrompt(QWidget *parent);

    /// `note` says what will come of a name; empty for nothing.
    void askName(const QString &question, const QString &name, const QString &action,
                 std::function<QString(const QString &)> note,
                 std::function<void(const QString &)> onAnswer);
    void askWhether(const QString &question, const QString &action, std::function<void()> onYes);

Q_SIGNALS:
    /// It was answered, or given up.
    void done();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showNote();
    void answer();

    QLabel *m_question;
    QLineEdit *m_name;
    QLabel *m_note;
    QPushButton *m_cancel;
    QPushButton *m_ok;
    std::function<QString(const QString &)> m_noteOf;
    std::function<void(const QString &)> m_onAnswer;
};

}  // namespace quorbel
