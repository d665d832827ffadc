#include "support/ServiceProcess.h"

#include "support/ExecArguments.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace quorbel::testing {

namespace {

constexpr std::string_view kPortLine = "Listening on port ";
constexpr std::string_view kTlsPortLine = "Listening for TLS on port ";

std::vector<std::string> environmentFor(const ServiceProcess::Setup &setup) {
    std::vector<std::string> variables{
        "QUORBEL_LIBRARY=" + setup.library.string(),
        "DBUS_SYSTEM_BUS_ADDRESS=" +
            (setup.busAddress.empty() ? "unix:path=/nonexistent" : setup.busAddress)};
    variables.insert(variables.end(), setup.environment.begin(), setup.environment.end());
    const auto nameOf = [](std::string_view text) { return text.substr(0, text.find('=')); };
    for (char **variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        const bool isReplaced = std::ranges::any_of(
            variables, [&](const std::string &own) { return nameOf(own) == nameOf(text); });
        if (!isReplaced) {
            variables.emplace_back(text);
        }
    }
    return variables;
}

/// Puts them where a service manager does: from 3 on, in this order. Allocates nothing.
void passAsListeners(const std::vector<int> &descriptors) {
    constexpr int kFirst = 3;
    const int count = static_cast<int>(descriptors.size());
    // First out of the way of those places.
    constexpr int kMost = 64;
    std::array<int, kMost> aside{};
    for (int i = 0; i < count && i < kMost; ++i) {
        aside.at(static_cast<std::size_t>(i)) =
            fcntl(descriptors[static_cast<std::size_t>(i)], F_DUPFD_CLOEXEC, kFirst + kMost);
    }
    for (int i = 0; i < count && i < kMost; ++i) {
        dup2(aside.at(static_cast<std::size_t>(i)), kFirst + i);
    }
}

}  // namespace

ServiceProcess::ServiceProcess(const Setup &setup) {
    start(setup);
    waitUntil([this] {
        m_port = portBehind(kPortLine);
        const std::lock_guard lock(m_mutex);
        return m_port != 0 || m_journalEnded;
    });
}

ServiceProcess::~ServiceProcess() {
    kill();
    holdJournal(false);
    m_reader.join();
}

void ServiceProcess::start(const Setup &setup) {
    std::vector<std::string> arguments{QUORBEL_SRV_PATH};
    if (!setup.passed.empty()) {
        // The manager's variables name the process, which nobody knows before it is there.
        arguments.insert(arguments.begin(),
                         {"/bin/sh", "-c", "export LISTEN_PID=$$; exec \"$0\" \"$@\""});
    }
    if (std::ranges::find(setup.arguments, "--config") == setup.arguments.end()) {
        // Never that of this machine.
        arguments.insert(arguments.end(), {"--config", setup.library / "quorbelsrv.conf"});
    }
    arguments.insert(arguments.end(), setup.arguments.begin(), setup.arguments.end());
    std::vector<std::string> environment = environmentFor(setup);
    const std::vector<char *> argumentPointers = pointersTo(arguments);
    const std::vector<char *> environmentPointers = pointersTo(environment);
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for the service");
    }
    const pid_t parent = getpid();
    m_pid = fork();
    if (m_pid == 0) {
        // Nothing here may allocate or lock.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(pipe[1], STDERR_FILENO);
        if (setup.largestFile != 0) {
            const rlimit limit{setup.largestFile, setup.largestFile};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        if (setup.descriptors != 0) {
            const rlimit limit{setup.descriptors, setup.descriptors};
            setrlimit(RLIMIT_NOFILE, &limit);
        }
        passAsListeners(setup.passed);
        if (getppid() == parent) {
            execve(argumentPointers[0], argumentPointers.data(), environmentPointers.data());
        }
        _exit(127);
    }
    close(pipe[1]);
    if (m_pid < 0) {
        close(pipe[0]);
        throw std::runtime_error("the service cannot be started");
    }
    m_journalPipe = pipe[0];
    m_reader = std::thread([this, fd = pipe[0]] { readJournal(fd); });
}

void ServiceProcess::readJournal(int fd) {
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = read(fd, buffer.data(), buffer.size())) > 0) {
        std::unique_lock lock(m_mutex);
        m_journal.append(buffer.data(), static_cast<std::size_t>(count));
        m_journalChanged.wait(lock, [this] { return !m_journalHeld; });
    }
    close(fd);
    const std::lock_guard lock(m_mutex);
    m_journalEnded = true;
}

std::string ServiceProcess::journal() const {
    const std::lock_guard lock(m_mutex);
    return m_journal;
}

void ServiceProcess::holdJournal(bool hold) {
    const std::lock_guard lock(m_mutex);
    m_journalHeld = hold;
    fcntl(m_journalPipe, F_SETPIPE_SZ, hold ? 4096 : 65536);
    m_journalChanged.notify_all();
}

std::uint16_t ServiceProcess::tlsPort() const {
    return portBehind(kTlsPortLine);
}

/// The number behind those words where it has said them last, in a whole line; 0 when it has not.
std::uint16_t ServiceProcess::portBehind(std::string_view words) const {
    const std::string text = journal();
    const std::size_t at = text.rfind(words);
    return at == std::string::npos || text.find('\n', at) == std::string::npos
               ? std::uint16_t{0}
               : static_cast<std::uint16_t>(std::atoi(text.c_str() + at + words.size()));
}

bool ServiceProcess::waitForJournal(std::string_view text, std::chrono::milliseconds limit) const {
    return waitUntil([&] { return journal().find(text) != std::string::npos; }, limit);
}

std::optional<int> ServiceProcess::terminate() {
    if (!m_ended) {
        ::kill(m_pid, SIGTERM);
    }
    return waitForEnd();
}

std::optional<int> ServiceProcess::waitForEnd() {
    if (!waitUntil([this] { return reap(WNOHANG); })) {
        kill();
        return std::nullopt;
    }
    // What it said last is there; unless a child of it still could say more.
    waitUntil(
        [this] {
            const std::lock_guard lock(m_mutex);
            return m_journalEnded || m_journalHeld;
        },
        std::chrono::seconds(2));
    return m_status;
}

void ServiceProcess::kill() {
    if (!m_ended) {
        ::kill(m_pid, SIGKILL);
        reap(0);
    }
}

/// Whether the process has ended.
bool ServiceProcess::reap(int options) {
    int status = 0;
    if (!m_ended && waitpid(m_pid, &status, options) == m_pid) {
        m_ended = true;
        if (WIFEXITED(status)) {
            m_status = WEXITSTATUS(status);
        }
    }
    return m_ended;
}

}  // namespace quorbel::testing
