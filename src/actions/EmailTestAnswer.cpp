#include "actions/EmailTestAnswer.h"

#include "platform/bus/CommandDelivery.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QLocale>
#include <QPointer>
#include <QTime>

#include <chrono>

namespace quorbel {

EmailTestAnswer::EmailTestAnswer(QWidget *parent) : NoteLabel(parent) {
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    say(tr("No test e-mail was sent yet"));
    hide();
    m_waiting.setInterval(std::chrono::seconds(1));
    connect(&m_waiting, &QTimer::timeout, this, &EmailTestAnswer::sayWaiting);
}

CommandSender::AnswerHandler EmailTestAnswer::await() {
    m_sent.start();
    m_waiting.start();
    sayWaiting();
    show();
    return [self = QPointer(this), test = ++m_tests](const std::optional<std::string> &answer) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self, test, answer] {
            if (self != nullptr && self->m_tests == test) {
                self->take(answer);
            }
        });
    };
}

void EmailTestAnswer::sayWaiting() {
    const qint64 seconds = m_sent.elapsed() / 1000;
    say(seconds == 0
            ? tr("Test e-mail: waiting for the answer...")
            : tr("Test e-mail: waiting for the answer for %1 s...").arg(countText(seconds)));
}

/// Whether nothing more is waited for, although the service may still be at it.
bool EmailTestAnswer::isOverdue() const {
    return std::chrono::milliseconds(m_sent.elapsed()) >= bus::CommandDelivery::kReplyLimit;
}

void EmailTestAnswer::take(const std::optional<std::string> &answer) {
    m_waiting.stop();
    if (!answer) {
        sayAnswered(isOverdue() ? tr("No answer yet; the journal of the service tells what comes")
                                : tr("No answer: the service does not run, or you may not send "
                                     "commands to it"),
                    true);
    } else if (*answer == "OK") {
        sayAnswered(tr("The mail server has taken it"), false);
    } else {
        sayAnswered(paintedRow(knownProblem(toQString(*answer))), true);
    }
}

void EmailTestAnswer::sayAnswered(const QString &text, bool isWarning) {
    const QString time = QLocale().toString(QTime::currentTime(), QLocale::ShortFormat);
    say(tr("Test e-mail, %1: %2").arg(time, text), isWarning);
}

}  // namespace quorbel
