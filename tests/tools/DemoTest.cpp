#include "support/WaitUntil.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <set>
#include <string>
#include <system_error>
#include <vector>

using namespace quorbel::testing;

namespace {

/// A UDP socket on a free loopback port.
class Receiver {
public:
    Receiver() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(m_fd, reinterpret_cast<const sockaddr *>(&address), length) != 0 ||
            getsockname(m_fd, reinterpret_cast<sockaddr *>(&address), &length) != 0) {
            throw std::system_error(errno, std::generic_category(), "no port to receive on");
        }
        m_port = ntohs(address.sin_port);
    }
    ~Receiver() { close(m_fd); }
    Receiver(const Receiver &) = delete;
    Receiver &operator=(const Receiver &) = delete;

    [[nodiscard]] std::string port() const { return std::to_string(m_port); }

    /// Takes what arrives within `limit`, at most `count` messages.
    void receive(std::size_t count, std::chrono::milliseconds limit = kPatience) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (messages.size() < count) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            pollfd input{m_fd, POLLIN, 0};
            if (left.count() <= 0 || poll(&input, 1, static_cast<int>(left.count())) <= 0) {
                return;
            }
            std::array<char, 2048> buffer{};
            sockaddr_in from{};
            socklen_t length = sizeof from;
            const ssize_t got = recvfrom(m_fd, buffer.data(), buffer.size(), 0,
                                         reinterpret_cast<sockaddr *>(&from), &length);
            messages.emplace_back(buffer.data(), static_cast<std::size_t>(got));
            senders.insert(ntohl(from.sin_addr.s_addr));
        }
    }

    std::vector<std::string> messages;
    std::set<std::uint32_t> senders;

private:
    int m_fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    std::uint16_t m_port = 0;
};

class Demo {
public:
    explicit Demo(std::string port) {
        std::string program = QUORBEL_DEMO;
        std::array<char *, 3> arguments{program.data(), port.data(), nullptr};
        m_pid = fork();
        if (m_pid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            execv(program.c_str(), arguments.data());
            _exit(127);
        }
    }
    ~Demo() {
        if (m_pid > 0) {
            end(SIGKILL);
        }
    }
    Demo(const Demo &) = delete;
    Demo &operator=(const Demo &) = delete;

    int end(int signal) {
        kill(m_pid, signal);
        return wait();
    }
    int wait() {
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
        return status;
    }

private:
    pid_t m_pid = -1;
};

}  // namespace

TEST(DemoTest, SendsFromSeveralHostsInEverySeverityUntilItIsEnded) {
    Receiver receiver;
    Demo demo(receiver.port());
    receiver.receive(61);

    EXPECT_EQ(receiver.messages.size(), 61U);
    EXPECT_GE(receiver.senders.size(), 5U);
    std::set<std::string> priorities;
    for (const std::string &message : receiver.messages) {
        EXPECT_THAT(message,
                    ::testing::MatchesRegex(
                        "<[0-9]+>[A-Z][a-z][a-z] [ 0-9][0-9] [0-9:]+ [a-z0-9-]+ [^ ]+: .+"));
        priorities.insert(message.substr(0, message.find('>')));
    }
    EXPECT_GE(priorities.size(), 5U);
    EXPECT_TRUE(WIFSIGNALED(demo.end(SIGTERM)));
}

TEST(DemoTest, KeepsToALivelyRateAfterTheFirstBurst) {
    Receiver receiver;
    Demo demo(receiver.port());
    receiver.receive(60);
    receiver.messages.clear();
    receiver.receive(200, std::chrono::milliseconds(2000));
    EXPECT_GE(receiver.messages.size(), 3U);
    EXPECT_LE(receiver.messages.size(), 100U);
}

TEST(DemoTest, RefusesWhatIsNoPort) {
    for (const char *port : {"", "0", "65536", "514x", "-1", "syslog"}) {
        Demo demo(port);
        const int status = demo.wait();
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << port;
    }
}
