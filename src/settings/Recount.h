#pragma once

#include "core/EventPass.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class QWidget;

namespace quorbel {

/// Drives what a form counts of the listed events: soon after the last edit, between the window's
/// other work, and about once a second what has come since. It rests while the form is hidden.
class Recount : public QObject {
    Q_OBJECT

public:
    /// Both outlive it.
    Recount(EventPass &pass, const QWidget &form);

    /// What is counted depends on the moment: it is counted anew every few seconds.
    void followClock() { m_followsClock = true; }
    /// Counts soon: after a pause in the edits.
    void edited();
    /// Counts at once.
    void begin();
    void stop();

Q_SIGNALS:
    /// To be answered by starting the pass with what the form says now.
    void due();
    /// All listed events are counted.
    void counted();
    /// It takes so long that the user should know.
    void slow();

private:
    void goOn();
    void count();
    void restart();
    [[nodiscard]] bool isOutdated() const;

    EventPass &m_pass;
    const QWidget &m_form;
    QTimer m_pause;  // in the edits
    QTimer m_slices;
    QElapsedTimer m_begun;
    bool m_isKnown = false;     // counted to the end since the last edit
    bool m_isComplete = false;  // since it was counted anew
    bool m_isSlow = false;
    bool m_followsClock = false;
};

}  // namespace quorbel
