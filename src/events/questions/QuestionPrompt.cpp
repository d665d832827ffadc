#include "events/questions/QuestionPrompt.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <utility>

namespace quorbel {

namespace {

constexpr int kLongestName = 60;

}  // namespace

QuestionPrompt::QuestionPrompt(QWidget *parent)
    : QWidget(parent),
      m_question(new QLabel(this)),
      m_name(new QLineEdit(this)),
      m_note(new QLabel(this)),
      m_cancel(new QPushButton(tr("Cancel"), this)),
      m_ok(new QPushButton(tr("OK"), this)) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(15, 10, 15, 14);
    column->setSpacing(6);
    column->addWidget(m_question);
    column->addWidget(m_name);
    column->addStretch();
    auto *row = new QHBoxLayout;
    row->addWidget(m_note, 1);
    row->addWidget(m_cancel);
    row->addWidget(m_ok);
    column->addLayout(row);
    m_question->setTextFormat(Qt::PlainText);
    m_question->setObjectName(QStringLiteral("findSavedQuestion"));
    m_note->setProperty("role", QStringLiteral("caption"));
    m_note->setTextFormat(Qt::PlainText);
    m_name->setObjectName(QStringLiteral("findSavedName"));
    m_name->setAccessibleName(tr("Name of the filter"));
    m_name->setMaxLength(kLongestName);
    m_cancel->setObjectName(QStringLiteral("findSavedCancel"));
    m_cancel->setAutoDefault(false);
    m_ok->setObjectName(QStringLiteral("findSavedOk"));
    m_ok->setProperty("role", QStringLiteral("primary"));
    m_ok->setAutoDefault(false);
    connect(m_name, &QLineEdit::textChanged, this, &QuestionPrompt::showNote);
    connect(m_name, &QLineEdit::returnPressed, this, &QuestionPrompt::answer);
    connect(m_cancel, &QAbstractButton::clicked, this, &QuestionPrompt::done);
    connect(m_ok, &QAbstractButton::clicked, this, &QuestionPrompt::answer);
}

void QuestionPrompt::askName(const QString &question, const QString &name, const QString &action,
                             std::function<QString(const QString &)> note,
                             std::function<void(const QString &)> onAnswer) {
    m_noteOf = std::move(note);
    m_onAnswer = std::move(onAnswer);
    m_question->setText(question);
    m_ok->setText(action);
    m_name->show();
    m_name->setText(name);
    m_name->selectAll();
    m_name->setFocus();
    showNote();
}

void QuestionPrompt::askWhether(const QString &question, const QString &action,
                                std::function<void()> onYes) {
    m_noteOf = {};
    m_onAnswer = [yes = std::move(onYes)](const QString &) { yes(); };
    m_question->setText(question);
    m_ok->setText(action);
    m_ok->setEnabled(true);
    m_note->clear();
    m_name->hide();
    m_cancel->setFocus();
}

void QuestionPrompt::showNote() {
    const QString name = m_name->text().trimmed();
    m_ok->setEnabled(!name.isEmpty());
    m_note->setText(m_noteOf ? m_noteOf(name) : QString());
}

void QuestionPrompt::answer() {
    if (!m_ok->isEnabled()) {
        return;
    }
    const auto onAnswer = std::exchange(m_onAnswer, {});
    Q_EMIT done();
    if (onAnswer) {
        onAnswer(m_name->text().trimmed());
    }
}

void QuestionPrompt::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT done();
    } else {
        QWidget::keyPressEvent(event);
    }
}

}  // namespace quorbel
