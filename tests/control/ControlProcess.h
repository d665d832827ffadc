#pragma once

#include "platform/UniqueFd.h"

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel::testing {

/// quorbelctl as a child process, with its folder and its bus.
class ControlProcess {
public:
    struct Setup {
        std::filesystem::path library;
        std::string busAddress{};  ///< empty: a bus that does not exist
        uid_t user = 0;            ///< to run as, if the test is root's; 0 for the test's own
        std::string zone = "UTC";
    };

    ControlProcess(const Setup &setup, std::vector<std::string> arguments);
    /// Kills it if it still runs.
    ~ControlProcess();
    ControlProcess(const ControlProcess &) = delete;
    ControlProcess &operator=(const ControlProcess &) = delete;

    /// Whether its output so far is, or becomes in time, as wanted.
    bool waitForOutput(std::string_view whole);
    /// The same: that it has so many lines.
    bool waitForLines(std::size_t count);
    [[nodiscard]] const std::string &output() const { return m_output; }
    /// Whether it waits for somebody to read more of its output.
    [[nodiscard]] bool isStuck() const;
    void closeOutput() { m_outputPipe.reset(); }
    void signal(int number) const;
    /// As waitForEnd(), but reads nothing meanwhile.
    std::optional<int> waitForEndUnread();
    /// Its exit status; nothing when it was ended by a signal, or did not end in time.
    std::optional<int> waitForEnd();
    /// What it said on its standard error; after waitForEnd().
    [[nodiscard]] std::string complaint() const;

private:
    void readOutput();
    bool reap();

    pid_t m_pid = -1;
    UniqueFd m_outputPipe;
    UniqueFd m_complaints;  ///< a file
    std::string m_output;
    std::optional<int> m_status;
    bool m_hasEnded = false;
};

struct ControlResult {
    std::optional<int> status;
    std::string output;
    std::string complaint;
};
/// Runs it to its end.
ControlResult runControl(const ControlProcess::Setup &setup, std::vector<std::string> arguments);

}  // namespace quorbel::testing
