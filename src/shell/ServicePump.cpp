#include "shell/ServicePump.h"

#include "core/ServiceState.h"

#include <utility>

namespace quorbel {

ServicePump::ServicePump(ServiceState &state, std::chrono::milliseconds interval)
    : m_state(state),
      m_reader([this](const StatusAnswer &answer) { take(answer); }),
      m_notifiers([this] { dispatch(); }),
      m_interval(interval) {
    m_timeout.setSingleShot(true);
    connect(&m_questions, &QTimer::timeout, this, &ServicePump::ask);
    connect(&m_timeout, &QTimer::timeout, this, &ServicePump::dispatch);
    m_state.setWatchHandler([this] { followWatches(); });
    followWatches();
}

ServicePump::~ServicePump() {
    m_state.setWatchHandler({});
}

void ServicePump::followWatches() {
    if (!m_state.isWatched()) {
        m_questions.stop();
        m_state.forget();  // it may be another one when somebody looks again
    } else if (!m_questions.isActive()) {
        m_questions.start(m_interval);
        // Not from within whoever begins to watch, and is told of the answer.
        QMetaObject::invokeMethod(this, &ServicePump::ask, Qt::QueuedConnection);
    }
}

void ServicePump::ask() {
    if (m_state.isWatched()) {
        m_reader.ask();
        watch();
    }
}

void ServicePump::take(const StatusAnswer &answer) {
    if (m_state.isWatched()) {
        m_state.take(answer);
    }
}

void ServicePump::dispatch() {
    m_reader.dispatch();
    watch();
}

void ServicePump::watch() {
    m_notifiers.watch(m_reader.fd(), m_reader.events());
    if (const auto timeout = m_reader.timeout()) {
        m_timeout.start(*timeout);
    } else {
        m_timeout.stop();
    }
}

}  // namespace quorbel
