#pragma once

#include "platform/bus/StatusReader.h"
#include "shell/DescriptorNotifiers.h"

#include <QObject>
#include <QTimer>

#include <chrono>

namespace quorbel {

class ServiceState;

/// Asks the service how it is, from Qt's event loop: at once when somebody begins to watch, and
/// then once a second. Not while nobody does.
class ServicePump : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kInterval{1000};

    /// `state` outlives this and is handed the answers.
    explicit ServicePump(ServiceState &state, std::chrono::milliseconds interval = kInterval);
    ~ServicePump() override;

private:
    void followWatches();
    void ask();
    void take(const StatusAnswer &answer);
    void dispatch();
    void watch();

    ServiceState &m_state;
    StatusReader m_reader;
    DescriptorNotifiers m_notifiers;
    std::chrono::milliseconds m_interval;
    QTimer m_questions;
    QTimer m_timeout;
};

}  // namespace quorbel
