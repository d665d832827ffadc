#include "service/output/ForwardConnection.h"

#include <linux/sockios.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr int kPatienceMilliseconds = 10'000;

std::string errorText(int error) {
    return std::generic_category().message(error);
}

struct FreeAddresses {
    void operator()(addrinfo *list) const { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

std::variant<Addresses, std::string> lookUp(const ForwardSettings &settings) {
    addrinfo hints{};
    hints.ai_socktype =
        settings.protocol == ForwardSettings::Protocol::kUdp ? SOCK_DGRAM : SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo *list = nullptr;
    const int error = ::getaddrinfo(settings.server.c_str(), std::to_string(settings.port).c_str(),
                                    &hints, &list);
    if (error != 0) {
        return std::string("the address is not known: ") +
               (error == EAI_SYSTEM ? errorText(errno) : ::gai_strerror(error));
    }
    return Addresses(list);
}

/// 1 when it is ready, 0 when it was not in time, -1 when stop was asked for.
int waitFor(int fd, short events, const std::atomic<bool> &stop) {
    constexpr int kSlice = 100;
    pollfd polled{fd, events, 0};
    for (int waited = 0; waited < kPatienceMilliseconds && !stop; waited += kSlice) {
        if (::poll(&polled, 1, kSlice) > 0) {
            return 1;
        }
    }
    return stop ? -1 : 0;
}

/// 0, or an errno.
int connectTo(int fd, const addrinfo &address, const std::atomic<bool> &stop) {
    if (::connect(fd, address.ai_addr, address.ai_addrlen) == 0) {
        return 0;
    }
    if (errno != EINPROGRESS) {
        return errno;
    }
    const int waited = waitFor(fd, POLLOUT, stop);
    int error = waited < 0 ? ECANCELED : ETIMEDOUT;
    socklen_t size = sizeof(error);
    if (waited > 0) {
        ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    return error;
}

/// So that a server that is gone without a word is noticed.
void setLimits(int fd) {
    const auto set = [fd](int level, int name, int value) {
        ::setsockopt(fd, level, name, &value, sizeof(value));
    };
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, 15);
    set(IPPROTO_TCP, TCP_KEEPINTVL, 5);
    set(IPPROTO_TCP, TCP_KEEPCNT, 3);
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, 30'000);
}

std::variant<UniqueFd, std::string> connectSocket(const ForwardSettings &settings,
                                                  const std::atomic<bool> &stop) {
    const auto found = lookUp(settings);
    if (const auto *problem = std::get_if<std::string>(&found)) {
        return *problem;
    }
    int error = 0;
    for (const addrinfo *one = std::get<Addresses>(found).get(); one != nullptr && !stop;
         one = one->ai_next) {
        UniqueFd fd(::socket(one->ai_family, one->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        error = fd.isOpen() ? connectTo(fd.get(), *one, stop) : errno;
        if (error == 0) {
            setLimits(fd.get());
            return fd;
        }
    }
    return "it cannot be reached: " + errorText(error);
}

class TcpConnection final : public ForwardConnection {
public:
    TcpConnection(UniqueFd socket, const std::atomic<bool> &stop)
        : ForwardConnection(std::move(socket), stop) {}

    std::optional<Sent> send(std::string_view &bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::send(fd(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
                m_written += static_cast<std::uint64_t>(count);
            } else if (errno == EAGAIN) {
                const Waited waited = wait(POLLOUT);
                if (waited != Waited::kReady) {
                    return waited == Waited::kStopped ? Sent::kStopped : Sent::kBlocked;
                }
            } else if (errno != EINTR) {
                breaks(errorText(errno));
                return std::nullopt;
            }
        }
        return Sent::kAll;
    }
    bool listen() override {
        std::array<char, 4096> ignored{};
        ssize_t count = 0;
        while ((count = ::recv(fd(), ignored.data(), ignored.size(), 0)) > 0) {
        }
        m_isClosed = count == 0;
        return count == 0 ? breaks("it closed the connection")
                          : errno == EAGAIN || errno == EINTR || breaks(errorText(errno));
    }
    void finish() override { ::shutdown(fd(), SHUT_WR); }
    [[nodiscard]] std::uint64_t written() const override { return m_written; }

private:
    std::uint64_t m_written = 0;
};

class UdpConnection final : public ForwardConnection {
public:
    UdpConnection(UniqueFd socket, const std::atomic<bool> &stop)
        : ForwardConnection(std::move(socket), stop) {}

    std::optional<Sent> send(std::string_view &bytes) override {
        while (::send(fd(), bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0) {
            if (errno == EAGAIN || errno == ENOBUFS) {
                const Waited waited = wait(POLLOUT);
                if (waited != Waited::kReady) {
                    return waited == Waited::kStopped ? Sent::kStopped : Sent::kBlocked;
                }
            } else if (errno != EINTR) {
                breaks(errorText(errno));
                return std::nullopt;
            }
        }
        bytes = {};
        return Sent::kAll;
    }
    bool listen() override {
        std::array<char, 512> ignored{};
        while (::recv(fd(), ignored.data(), ignored.size(), 0) >= 0) {
        }
        return errno == EAGAIN || errno == EINTR || breaks(errorText(errno));
    }
    [[nodiscard]] std::uint64_t written() const override { return 0; }
};

}  // namespace

std::variant<std::unique_ptr<ForwardConnection>, std::string> ForwardConnection::open(
    const ForwardSettings &settings, const std::atomic<bool> &stop) {
    auto connected = connectSocket(settings, stop);
    if (const auto *problem = std::get_if<std::string>(&connected)) {
        return *problem;
    }
    auto &socket = std::get<UniqueFd>(connected);
    switch (settings.protocol) {
        case ForwardSettings::Protocol::kUdp:
            return std::make_unique<UdpConnection>(std::move(socket), stop);
        case ForwardSettings::Protocol::kTcp:
            return std::make_unique<TcpConnection>(std::move(socket), stop);
        case ForwardSettings::Protocol::kTls:
            break;
    }
    return openTls(settings, std::move(socket), stop);
}

ForwardConnection::Waited ForwardConnection::wait(short events) const {
    const int waited = waitFor(fd(), events, m_stop);
    return waited > 0 ? Waited::kReady : waited < 0 ? Waited::kStopped : Waited::kTimeout;
}

/// False, always.
bool ForwardConnection::breaks(const std::string &problem) {
    m_problem = problem;
    return false;
}

std::uint64_t ForwardConnection::unconfirmed() const {
    int bytes = 0;
    return ::ioctl(fd(), SIOCOUTQ, &bytes) == 0 ? static_cast<std::uint64_t>(bytes) : UINT64_MAX;
}

}  // namespace quorbel
