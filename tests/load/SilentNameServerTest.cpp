// Hosts are to be shown by name, and the name server says nothing. In a network of its own, where
// port 53 is free and the system's resolver asks there.

#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "load/SoakForm.h"
#include "platform/KeyedArchive.h"
#include "platform/Value.h"
#include "service/ServiceFixture.h"
#include "support/PrivateNetwork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using load::Plan;
using testing::ServiceProcess;
using testing::TemporaryFolder;
using testing::waitUntil;

using Clock = std::chrono::steady_clock;

bool resolverAsksHere = false;

/// A socket of 127.0.0.1 that takes what is asked and never answers.
class SilentNameServer {
public:
    SilentNameServer() : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(53);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::bind(m_socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address),
                  0);
    }
    /// How many questions have come since the last call.
    [[nodiscard]] std::size_t questions() const {
        std::size_t count = 0;
        char byte = 0;
        while (::recv(m_socket.get(), &byte, 1, MSG_DONTWAIT) >= 0) {
            ++count;
        }
        return count;
    }

private:
    UniqueFd m_socket;
};

/// Sends a message from another address of 127.0.0.0/8 each time, so that there is always a name
/// to be looked up, for as long as the object lives.
class ManySenders {
public:
    explicit ManySenders(std::uint16_t port) : m_thread([this, port] { work(port); }) {}
    ~ManySenders() { finish(); }
    ManySenders(const ManySenders &) = delete;
    ManySenders &operator=(const ManySenders &) = delete;

    /// How many messages were sent in all.
    std::uint64_t finish() {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
        return m_count;
    }

private:
    void work(std::uint16_t port) {
        sockaddr_in service{};
        service.sin_family = AF_INET;
        service.sin_port = htons(port);
        service.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const std::string_view message = "<14>one of many";
        while (!m_stop) {
            sockaddr_in own{};
            own.sin_family = AF_INET;
            own.sin_addr.s_addr = htonl(0x7F010001U + static_cast<in_addr_t>(m_count % 60'000));
            const UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
            if (::bind(socket.get(), reinterpret_cast<sockaddr *>(&own), sizeof own) == 0 &&
                ::sendto(socket.get(), message.data(), message.size(), 0,
                         reinterpret_cast<sockaddr *>(&service), sizeof service) > 0) {
                ++m_count;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        }
    }

    std::atomic<bool> m_stop = false;
    std::uint64_t m_count = 0;
    std::thread m_thread;
};

/// How long it takes until a stream sent as fast as possible is stored.
double secondsToStore(bool byName, std::uint64_t count) {
    const TemporaryFolder folder;
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{{"hostsDisplay", byName}}));
    ServiceProcess service({.library = folder.path(), .busAddress = {}});
    EXPECT_TRUE(service.isListening());
    ManySenders others(service.port());
    const Plan plan{.port = service.port(), .transport = Plan::Transport::kTcp, .count = count};
    load::LineCounter lines(folder.path());
    const auto start = Clock::now();
    EXPECT_EQ(load::send(plan).count, count);
    EXPECT_TRUE(waitUntil([&] { return lines.count() >= count; }, std::chrono::minutes(1)));
    const std::chrono::duration<double> taken = Clock::now() - start;
    const std::uint64_t sentByOthers = others.finish();
    EXPECT_EQ(service.terminate(), 0);
    const load::Tally found = load::tally(folder.path(), plan);
    EXPECT_TRUE(found.isClean()) << load::describe(found);
    EXPECT_EQ(found.stored, count);
    const std::string journal = service.journal();
    EXPECT_EQ(found.others + load::counter(journal, "dropped"), sentByOthers);
    EXPECT_EQ(load::counter(journal, "names found"), 0U);
    return taken.count();
}

TEST(SilentNameServerTest, CostsNextToNothing) {
    if (!resolverAsksHere) {
        GTEST_SKIP() << "This system does not let a test have a network of its own";
    }
    const SilentNameServer server;
    const auto count = load::soakOr<std::uint64_t>(2'000'000, 100'000);
    std::vector<double> ratios;
    for (int i = 0; i < load::soakOr(7, 1); ++i) {
        const double byAddress = secondsToStore(false, count);
        EXPECT_EQ(server.questions(), 0U);
        const double byName = secondsToStore(true, count);
        EXPECT_GT(server.questions(), 0U);
        ratios.push_back(byAddress / byName);
    }
    std::ranges::sort(ratios);
    const double ratio = ratios[ratios.size() / 2];
    // A short run tells only whether somebody waits for the name server, which nothing outlasts.
    if (load::isSoak()) {
        EXPECT_GT(ratio, 0.95);
    }
    load::figure("rate with a silent name server, by that without names: " + std::to_string(ratio) +
                 " (" + std::to_string(ratios.front()) + " to " + std::to_string(ratios.back()) +
                 ")");
}

}  // namespace

void letTheResolverAskHere(const TemporaryFolder &folder) {
    resolverAsksHere =
        testing::moveToAPrivateNetwork() &&
        testing::replaceByMount("/etc/resolv.conf",
                                folder.write("resolv.conf", "nameserver 127.0.0.1\n")) &&
        testing::replaceByMount("/etc/hosts", folder.write("hosts", "")) &&
        testing::replaceByMount("/etc/nsswitch.conf", folder.write("nsswitch", "hosts: dns\n"));
}

}  // namespace quorbel

int main(int argc, char **argv) {
    const quorbel::testing::TemporaryFolder folder;
    quorbel::letTheResolverAskHere(folder);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
