#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>

namespace quorbel {

/// Turns SIGTERM and SIGINT into a call on the main thread. At most one object at a time; the
/// signals have their default effect again once it is gone.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    explicit TerminationSignals(const std::function<void()> &onSignal, QObject *parent = nullptr);
    ~TerminationSignals() override;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace quorbel
