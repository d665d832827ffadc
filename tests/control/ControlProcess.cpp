#include "control/ControlProcess.h"

#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "support/ExecArguments.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace quorbel::testing {

namespace {

void becomeUser(uid_t user) {
    if (user != 0 && (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0)) {
        _exit(126);
    }
}

}  // namespace

ControlProcess::ControlProcess(const Setup &setup, std::vector<std::string> arguments)
    : m_complaints(memfd_create("complaints", MFD_CLOEXEC)) {
    arguments.insert(arguments.begin(), QUORBELCTL_PATH);
    const std::string bus =
        setup.busAddress.empty() ? "unix:path=/nonexistent/bus" : setup.busAddress;
    std::vector<std::string> environment{"QUORBEL_LIBRARY=" + setup.library.string(),
                                         "DBUS_SYSTEM_BUS_ADDRESS=" + bus, "TZ=" + setup.zone,
                                         "LC_ALL=C"};
    for (const char *name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char *value = std::getenv(name)) {  // NOLINT(concurrency-mt-unsafe)
            environment.push_back(std::string(name) + "=" + value);
        }
    }
    const auto argumentPointers = pointersTo(arguments);
    const auto environmentPointers = pointersTo(environment);
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t parent = getpid();
    m_pid = fork();
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(pipe[1], STDOUT_FILENO);
        dup2(m_complaints.get(), STDERR_FILENO);
        becomeUser(setup.user);
        if (getppid() == parent) {
            execve(argumentPointers[0], argumentPointers.data(), environmentPointers.data());
        }
        _exit(127);
    }
    close(pipe[1]);
    m_outputPipe = UniqueFd(pipe[0]);
}

ControlProcess::~ControlProcess() {
    if (!m_hasEnded) {
        ::kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
}

void ControlProcess::readOutput() {
    std::array<char, 65536> buffer{};
    pollfd pipe{m_outputPipe.get(), POLLIN, 0};
    while (m_outputPipe.isOpen() && poll(&pipe, 1, 0) == 1) {
        const ssize_t count = readSome(m_outputPipe.get(), buffer.data(), buffer.size());
        if (count <= 0) {
            return;
        }
        m_output.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

bool ControlProcess::waitForOutput(std::string_view whole) {
    return waitUntil([&] {
        readOutput();
        return m_output == whole;
    });
}

bool ControlProcess::waitForLines(std::size_t count) {
    return waitUntil([&] {
        readOutput();
        return static_cast<std::size_t>(std::ranges::count(m_output, '\n')) >= count;
    });
}

void ControlProcess::signal(int number) const {
    ::kill(m_pid, number);
}

bool ControlProcess::isStuck() const {
    int held = 0;
    ioctl(m_outputPipe.get(), FIONREAD, &held);
    const std::string state = readFile("/proc/" + std::to_string(m_pid) + "/stat").value_or("");
    return held == fcntl(m_outputPipe.get(), F_GETPIPE_SZ) &&
           state.find(") S ") != std::string::npos;
}

bool ControlProcess::reap() {
    int status = 0;
    if (!m_hasEnded && waitpid(m_pid, &status, WNOHANG) == m_pid) {
        m_hasEnded = true;
        m_status = WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
    }
    return m_hasEnded;
}

std::optional<int> ControlProcess::waitForEndUnread() {
    waitUntil([this] { return reap(); });
    return m_status;
}

std::optional<int> ControlProcess::waitForEnd() {
    waitUntil([this] {
        readOutput();
        return reap();
    });
    readOutput();
    return m_status;
}

std::string ControlProcess::complaint() const {
    lseek(m_complaints.get(), 0, SEEK_SET);
    return readToEnd(m_complaints.get()).value_or("");
}

ControlResult runControl(const ControlProcess::Setup &setup, std::vector<std::string> arguments) {
    ControlProcess process(setup, std::move(arguments));
    const auto status = process.waitForEnd();
    return {status, process.output(), process.complaint()};
}

}  // namespace quorbel::testing
