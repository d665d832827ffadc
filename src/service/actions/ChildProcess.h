#pragma once

#include "platform/UniqueFd.h"
#include "service/actions/CommandLine.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// A program that was started on its own: in a session and process group of its own, without the
/// service's descriptors, signal settings and rights, in the folder "/", with nothing to read. It
/// is killed when the thread that started it ends.
struct ChildProcess {
    pid_t id = -1;
    UniqueFd handle;  ///< a pidfd: readable once the process has ended
    UniqueFd output;  ///< what it writes to its standard output and error; does not block

    /// Starts a program. A name without a slash is looked for in the usual folders. Nothing when
    /// it cannot be run, with errno.
    static std::optional<ChildProcess> start(const std::string &program,
                                             const std::vector<std::string> &arguments,
                                             const Environment &environment);
    /// Sends a signal to it and everything that it started in its group. Only before wait().
    void signal(int number) const;
    /// Waits for the process to end, if need be, and returns its status as waitpid() does.
    [[nodiscard]] int wait() const;
    /// Reaps the process if it has ended, without waiting. Returns whether it had.
    [[nodiscard]] bool tryReap() const;
};

}  // namespace quorbel
