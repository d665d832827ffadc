#include "shell/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>

namespace quorbel {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT};

// A signal handler has nothing else to go by.
std::array<int, 2> pipeEnds{-1, -1};

void writeToPipe(int /*signal*/) {
    const int before = errno;
    const char byte = 0;
    // A full pipe holds a signal already.
    [[maybe_unused]] const auto written = write(pipeEnds[1], &byte, sizeof byte);
    errno = before;
}

}  // namespace

TerminationSignals::TerminationSignals(const std::function<void()> &onSignal, QObject *parent)
    : QObject(parent) {
    if (pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    m_notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [onSignal] {
        std::array<char, 64> bytes{};
        while (read(pipeEnds[0], bytes.data(), bytes.size()) > 0) {
        }
        onSignal();
    });
    struct sigaction action {};
    action.sa_handler = writeToPipe;
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals) {
        sigaction(signal, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    for (const int signal : kSignals) {
        sigaction(signal, &action, nullptr);
    }
    m_notifier.reset();
    for (int &end : pipeEnds) {
        close(end);
        end = -1;
    }
}

}  // namespace quorbel
