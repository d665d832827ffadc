#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

#include <optional>
#include <string>

namespace quorbel::testing {

/// A dbus-daemon of the test's own, with the limits of a system bus and a policy that lets everyone
/// do everything. While the object lives, DBUS_SYSTEM_BUS_ADDRESS (and DBUS_SESSION_BUS_ADDRESS)
/// of this process name it.
///
/// Make it before anything that reads the environment on another thread, and on a thread that
/// outlives it: the daemon dies with that thread, so that a crashed test leaves nothing running.
class PrivateBus {
public:
    enum class Serve { kSystem, kSession, kSystemAndSession };

    /// Returns when the bus accepts connections; throws std::runtime_error when it does not start.
    explicit PrivateBus(Serve serve = Serve::kSystem);
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    [[nodiscard]] const std::string &address() const { return m_address; }

    /// Ends the daemon, so that its address refuses connections.
    void stop();
    /// Starts it again at the same address; does nothing while it runs.
    void start();
    /// From now on, a call to `name` starts what never takes the name; the call waits for somebody
    /// else to take it.
    void startOnDemand(const std::string &name);
    /// Whether a call has done so.
    [[nodiscard]] bool hasStarted(const std::string &name) const;
    /// Stops its execution: it neither reads nor answers, although its socket accepts.
    void freeze();
    void thaw();

private:
    class Variable {
    public:
        Variable(const char *name, const std::string &value);
        ~Variable();
        Variable(const Variable &) = delete;
        Variable &operator=(const Variable &) = delete;

    private:
        const char *m_name;
        std::optional<std::string> m_before;
    };

    TemporaryFolder m_folder;
    std::string m_address;
    pid_t m_daemon = -1;
    std::optional<Variable> m_system;
    std::optional<Variable> m_session;
};

}  // namespace quorbel::testing
