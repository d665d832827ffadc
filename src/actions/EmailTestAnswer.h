#pragma once

#include "platform/bus/CommandSender.h"
#include "platform/gui/NoteLabel.h"

#include <QElapsedTimer>
#include <QTimer>

#include <optional>
#include <string>

namespace quorbel {

/// What came of the last test e-mail, on the page from which it was sent: that its answer is waited
/// for, and how long, that the mail server took it, or what is wrong, in the mail server's own
/// words. Not to be seen before the first one.
class EmailTestAnswer : public NoteLabel {
    Q_OBJECT

public:
    explicit EmailTestAnswer(QWidget *parent = nullptr);

    /// Begins to wait. What comes back takes the service's answer; one to an earlier test is not
    /// shown any more. It may be called on any thread, and when this is gone.
    CommandSender::AnswerHandler await();

private:
    void sayWaiting();
    [[nodiscard]] bool isOverdue() const;
    void take(const std::optional<std::string> &answer);
    void sayAnswered(const QString &text, bool isWarning);

    QTimer m_waiting{this};
    QElapsedTimer m_sent;
    int m_tests = 0;
};

}  // namespace quorbel
