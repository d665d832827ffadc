#include "settings/Recount.h"

#include <QWidget>

namespace quorbel {

namespace {

constexpr int kPauseMilliseconds = 200;
constexpr int kSliceMilliseconds = 4;
constexpr int kSlowMilliseconds = 200;
constexpr int kLookMilliseconds = 1'000;
// While retention goes on, events leave all the time.
constexpr int kRecountMilliseconds = 5'000;

}  // namespace

Recount::Recount(EventPass &pass, const QWidget &form) : m_pass(pass), m_form(form) {
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &Recount::begin);
    connect(&m_slices, &QTimer::timeout, this, &Recount::goOn);
}

void Recount::edited() {
    m_pause.start(kPauseMilliseconds);
}

void Recount::begin() {
    m_pause.stop();
    m_isKnown = false;
    restart();
}

void Recount::restart() {
    m_isComplete = false;
    m_isSlow = false;
    m_begun.start();
    Q_EMIT due();
    m_slices.start(0);
}

void Recount::stop() {
    m_pause.stop();
    m_slices.stop();
}

void Recount::goOn() {
    const bool isShown = m_form.isVisible();
    if (isShown && isOutdated()) {
        restart();
    } else if (isShown && !m_pass.isStale()) {
        count();
    } else {
        m_slices.start(kLookMilliseconds);
    }
}

bool Recount::isOutdated() const {
    const bool isOld = m_begun.hasExpired(kRecountMilliseconds);
    return m_pass.isStale() ? isOld || !m_isKnown : m_followsClock && m_isComplete && isOld;
}

void Recount::count() {
    QElapsedTimer time;
    time.start();
    m_pass.run([&time] { return time.elapsed() >= kSliceMilliseconds; });
    if (!m_pass.isRunning()) {
        m_isKnown = true;
        m_isComplete = true;
        m_slices.start(kLookMilliseconds);
        Q_EMIT counted();
        return;
    }
    m_slices.start(0);
    if (!m_isKnown && !m_isSlow && m_begun.hasExpired(kSlowMilliseconds)) {
        m_isSlow = true;
        Q_EMIT slow();
    }
}

}  // namespace quorbel
