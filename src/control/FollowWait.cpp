#include "control/FollowWait.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace quorbel {

namespace {

constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};

// What a signal's handler can reach.
int signalled = -1;

void onSignal(int /*number*/) {
    const int before = errno;
    eventfd_write(signalled, 1);
    errno = before;
}

void handle(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;  // without SA_RESTART: nobody may read what is written
    for (const int number : kSignals) {
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

FollowWait::FollowWait() : m_signals(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    signalled = m_signals.get();
    handle(onSignal);
}

FollowWait::~FollowWait() {
    handle(SIG_DFL);
}

bool FollowWait::isOver() const {
    pollfd signals{m_signals.get(), POLLIN, 0};
    return ::poll(&signals, 1, 0) > 0;
}

bool FollowWait::untilReadable(int fd) {
    constexpr std::size_t kSignal = 0;
    constexpr std::size_t kOutput = 1;
    constexpr std::size_t kInput = 2;
    std::array<pollfd, 3> watched{pollfd{m_signals.get(), POLLIN, 0},
                                  // Only whether its other end is gone, which is always told.
                                  pollfd{STDOUT_FILENO, 0, 0}, pollfd{fd, POLLIN, 0}};
    while (::poll(watched.data(), watched.size(), -1) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return watched[kSignal].revents == 0 && watched[kOutput].revents == 0 &&
           watched[kInput].revents != 0;
}

}  // namespace quorbel
