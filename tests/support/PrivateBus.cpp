#include "support/PrivateBus.h"

#include "platform/Files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace quorbel::testing {

namespace {

constexpr int kStartLimitMs = 20000;

constexpr const char *kServiceFolder = "services";

std::string configuration(const std::string &address, const std::filesystem::path &services) {
    return R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>)" +
           address + R"(</listen>
  <servicedir>)" +
           services.string() + R"(</servicedir>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="signal"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
  </policy>
</busconfig>
)";
}

// Runs between fork and exec: nothing here may allocate or lock.
[[noreturn]] void runDaemon(const char *configOption, const char *addressOption, int pipe,
                            const char *log, pid_t parent) {
    fcntl(pipe, F_SETFD, 0);
    dup2(open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) {
        execlp("dbus-daemon", "dbus-daemon", configOption, addressOption, "--nofork", "--nopidfile",
               "--nosyslog", nullptr);
    }
    _exit(127);
}

// The daemon prints its address once it listens; its end closes the pipe.
bool printsItsAddress(int pipe) {
    pollfd input{pipe, POLLIN, 0};
    char first = '\0';
    return poll(&input, 1, kStartLimitMs) == 1 && read(pipe, &first, 1) == 1;
}

}  // namespace

PrivateBus::Variable::Variable(const char *name, const std::string &value) : m_name(name) {
    if (const char *before = getenv(name)) {  // NOLINT(concurrency-mt-unsafe): before any thread
        m_before = before;
    }
    setenv(name, value.c_str(), 1);
}

PrivateBus::Variable::~Variable() {
    if (m_before) {
        setenv(m_name, m_before->c_str(), 1);
    } else {
        unsetenv(m_name);
    }
}

PrivateBus::PrivateBus(Serve serve) : m_address("unix:path=" + (m_folder.path() / "bus").string()) {
    std::filesystem::create_directory(m_folder.path() / kServiceFolder);
    m_folder.write("bus.conf", configuration(m_address, m_folder.path() / kServiceFolder));
    start();
    if (serve != Serve::kSession) {
        m_system.emplace("DBUS_SYSTEM_BUS_ADDRESS", m_address);
    }
    if (serve != Serve::kSystem) {
        m_session.emplace("DBUS_SESSION_BUS_ADDRESS", m_address);
    }
}

PrivateBus::~PrivateBus() {
    stop();
}

void PrivateBus::start() {
    if (m_daemon > 0) {
        return;
    }
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for the bus");
    }
    const std::string configOption = "--config-file=" + (m_folder.path() / "bus.conf").string();
    const std::string addressOption = "--print-address=" + std::to_string(pipe[1]);
    const std::string log = (m_folder.path() / "bus.log").string();
    const pid_t parent = getpid();
    m_daemon = fork();
    if (m_daemon == 0) {
        runDaemon(configOption.c_str(), addressOption.c_str(), pipe[1], log.c_str(), parent);
    }
    close(pipe[1]);
    const bool started = m_daemon > 0 && printsItsAddress(pipe[0]);
    close(pipe[0]);
    if (!started) {
        stop();
        throw std::runtime_error("dbus-daemon does not start: " + readFile(log).value_or(""));
    }
}

void PrivateBus::stop() {
    if (m_daemon > 0) {
        kill(m_daemon, SIGKILL);
        waitpid(m_daemon, nullptr, 0);
    }
    m_daemon = -1;
}

void PrivateBus::startOnDemand(const std::string &name) {
    const std::string mark = (m_folder.path() / (name + ".started")).string();
    const std::string wait = "/bin/sh -c ': > " + mark + "; exec sleep 30 >/dev/null 2>&1'";
    m_folder.write(std::string(kServiceFolder) + "/" + name + ".service",
                   "[D-BUS Service]\nName=" + name + "\nExec=" + wait + "\nUser=root\n");
}

bool PrivateBus::hasStarted(const std::string &name) const {
    return std::filesystem::exists(m_folder.path() / (name + ".started"));
}

void PrivateBus::freeze() {
    if (m_daemon > 0) {
        kill(m_daemon, SIGSTOP);
        waitpid(m_daemon, nullptr, WUNTRACED);
    }
}

void PrivateBus::thaw() {
    if (m_daemon > 0) {
        kill(m_daemon, SIGCONT);
    }
}

}  // namespace quorbel::testing
