#pragma once

#include "common/LogReader.h"
#include "platform/Files.h"
#include "platform/UniqueFd.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel::testing {

/// A socket that is connected to a port of this machine.
inline UniqueFd connectTo(std::uint16_t port, int type) {
    UniqueFd fd(socket(AF_INET, type | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(fd.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    return fd;
}

/// The same that comes from another address of this machine: 127.0.0.`host`.
inline UniqueFd connectFrom(unsigned host, std::uint16_t port, int type = SOCK_STREAM) {
    UniqueFd fd(socket(AF_INET, type | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK - 1 + host);
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    EXPECT_EQ(bind(fd.get(), generic, sizeof address), 0);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    EXPECT_EQ(connect(fd.get(), generic, sizeof address), 0);
    return fd;
}

inline void sendTo(const UniqueFd &fd, std::string_view bytes) {
    EXPECT_EQ(send(fd.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
}

/// Whether the other end has closed the connection; waits for that.
inline bool isClosed(const UniqueFd &fd) {
    const timeval limit{20, 0};
    setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    char byte = 0;
    const ssize_t count = recv(fd.get(), &byte, 1, 0);
    return count == 0 || (count < 0 && errno != EAGAIN);
}

/// Tests of the real service in a folder of its own.
struct ServiceFixture : ::testing::Test {
    std::unique_ptr<ServiceProcess> start(ServiceProcess::Setup setup) {
        setup.library = folder.path();
        // Whether this machine's clock is synchronised must not matter to a test of something else.
        folder.write("Quorbel.clock", std::to_string(std::time(nullptr)) + " 0 0\n");
        auto service = std::make_unique<ServiceProcess>(setup);
        EXPECT_TRUE(service->isListening()) << service->journal();
        return service;
    }
    std::unique_ptr<ServiceProcess> start() { return start(ServiceProcess::Setup()); }

    /// "priority,host,message" of all events in the log files.
    [[nodiscard]] std::vector<std::string> stored() const {
        std::vector<std::string> events;
        for (const std::string &name : listFolder(folder.path())) {
            if (!hasExtension(name, "log")) {
                continue;
            }
            LogReader::readFile(folder.path() / name, [&](const LogLine &line) {
                events.push_back(std::string(line.priority) + ',' + std::string(line.host) + ',' +
                                 std::string(line.message));
                return true;
            });
        }
        return events;
    }
    [[nodiscard]] bool waitForStored(std::size_t count) const {
        return waitUntil([&] { return stored().size() >= count; });
    }

    TemporaryFolder folder;
};

}  // namespace quorbel::testing
