#pragma once

#include "support/WaitUntil.h"

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quorbel::testing {

/// The real service, QuorbelSrv, as a child process on a port of its own. Make it on a thread that
/// outlives it: the process dies with that thread, so that a crashed test leaves nothing running.
class ServiceProcess {
public:
    struct Setup {
        std::filesystem::path library;  ///< its folder of settings and log files
        std::string busAddress;         ///< its system bus; empty: one that does not exist
        /// Without "--config", the configuration is "quorbelsrv.conf" in `library`.
        std::vector<std::string> arguments{"--port", "0"};
        std::uint64_t largestFile = 0;  ///< no file may grow beyond that many bytes; 0: any size
        std::uint64_t descriptors = 0;  ///< that it may open; 0: as many as the test
        std::vector<std::string> environment{};  ///< "NAME=value", in place of the test's own
        std::vector<int> passed{};  ///< descriptors that it gets as its service manager's
    };

    /// Returns when the service listens, or when it has ended without doing so.
    explicit ServiceProcess(const Setup &setup);
    /// Kills it if it still runs.
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess &) = delete;
    ServiceProcess &operator=(const ServiceProcess &) = delete;

    [[nodiscard]] bool isListening() const { return m_port != 0; }
    /// The UDP and TCP port that it listens on; 0 when it does not.
    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// The port that it listened on for TLS last; 0 when there was none. That may take a moment.
    [[nodiscard]] std::uint16_t tlsPort() const;
    [[nodiscard]] pid_t pid() const { return m_pid; }

    /// What it has written to its standard error so far.
    [[nodiscard]] std::string journal() const;
    /// Stops reading that, or goes on. The pipe to it holds no more than a page meanwhile.
    void holdJournal(bool hold);
    /// Whether that holds `text` within `limit`.
    bool waitForJournal(std::string_view text, std::chrono::milliseconds limit = kPatience) const;

    /// Asks it to end (SIGTERM) and returns its exit status; nothing when it ended otherwise, or
    /// was killed because it did not end.
    std::optional<int> terminate();
    /// Ends it on the spot (SIGKILL), as a crash would.
    void kill();
    /// Waits for it to end by itself; nothing when it was killed because it did not.
    std::optional<int> waitForEnd();

private:
    void start(const Setup &setup);
    void readJournal(int fd);
    [[nodiscard]] std::uint16_t portBehind(std::string_view words) const;
    bool reap(int options);

    pid_t m_pid = -1;
    bool m_ended = false;
    std::optional<int> m_status;
    std::uint16_t m_port = 0;

    mutable std::mutex m_mutex;
    std::string m_journal;        ///< under m_mutex
    bool m_journalEnded = false;  ///< under m_mutex
    bool m_journalHeld = false;   ///< under m_mutex
    std::condition_variable m_journalChanged;
    int m_journalPipe = -1;
    std::thread m_reader;
};

}  // namespace quorbel::testing
