// Datagrams that the kernel joins on their way: each is an event of its own, of its own sender.

#include "common/LogReader.h"
#include "service/ServiceFixture.h"
#include "service/collect/Collector.h"
#include "service/input/ListenSockets.h"
#include "service/input/UdpInput.h"
#include "support/Seed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/udp.h>

#include <chrono>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::TemporaryFolder;

/// A sender with an address of its own, 127.0.0.`host`.
UniqueFd senderFrom(unsigned host, std::uint16_t port) {
    return testing::connectFrom(host, port, SOCK_DGRAM);
}

/// Sends datagrams of `each` bytes and a last one that may be shorter, with one call.
void sendJoined(const UniqueFd &sender, const std::string &bytes, std::size_t each) {
    const auto length = static_cast<int>(each);
    ASSERT_EQ(setsockopt(sender.get(), SOL_UDP, UDP_SEGMENT, &length, sizeof length), 0);
    testing::sendTo(sender, bytes);
}

std::string event(const std::string &host, const std::string &message) {
    return host + ' ' + message;
}

struct UdpInputTest : ::testing::Test {
    UdpInputTest() {
        sd_event *made = nullptr;
        EXPECT_GE(sd_event_new(&made), 0);
        loop.reset(made);
        auto sockets = std::get<ListenSockets>(openListenSockets(0));
        port = sockets.port;
        raw = sockets.udp.get();
        input = std::make_unique<UdpInput>(loop.get(), std::move(sockets.udp), collector);
    }

    /// Reads what was sent.
    void receive() const {
        while (sd_event_run(loop.get(), 0) > 0) {
        }
    }
    /// "host message" of all that is stored.
    [[nodiscard]] std::vector<std::string> stored() const {
        std::vector<std::string> events;
        for (const std::string &name : store.fileNames().value_or(std::vector<std::string>())) {
            LogReader::readFile(store.path(name), [&events](const LogLine &line) {
                events.push_back(event(std::string(line.host), std::string(line.message)));
                return true;
            });
        }
        return events;
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    NotificationQueue notifications;
    HostNames names;
    Counters counters;
    Actions actions{[](const CommandRunner::Command & /*command*/) {},
                    [](const MailMessage & /*mail*/) {}, counters};
    Collector collector{store, notifications, names, actions, counters};
    EventLoopPointer loop;
    std::uint16_t port = 0;
    int raw = -1;
    std::unique_ptr<UdpInput> input;
};

TEST_F(UdpInputTest, AsksTheKernelToJoinDatagrams) {
    int joins = 0;
    socklen_t length = sizeof joins;
    ASSERT_EQ(getsockopt(raw, SOL_UDP, UDP_GRO, &joins, &length), 0);
    EXPECT_EQ(joins, 1);
}

TEST_F(UdpInputTest, TellsJoinedDatagramsApart) {
    const UniqueFd sender = senderFrom(1, port);
    sendJoined(sender, "<13>one<13>two<13>six<13>4", 7);
    testing::sendTo(sender, "<13>ten");
    receive();
    EXPECT_THAT(stored(), ElementsAre("127.0.0.1 one", "127.0.0.1 two", "127.0.0.1 six",
                                      "127.0.0.1 4", "127.0.0.1 ten"));
    EXPECT_EQ(counters.received, 5U);
    EXPECT_EQ(counters.malformed, 0U);
}

TEST_F(UdpInputTest, LeavesNoDatagramEmptyBehindJoinedOnesOfOneLength) {
    sendJoined(senderFrom(1, port), "<13>one<13>two", 7);
    receive();
    EXPECT_THAT(stored(), ElementsAre("127.0.0.1 one", "127.0.0.1 two"));
    EXPECT_EQ(counters.received, 2U);
}

TEST_F(UdpInputTest, TakesAnEmptyDatagramAndOneOfOneByte) {
    const UniqueFd sender = senderFrom(1, port);
    testing::sendTo(sender, "");
    sendJoined(sender, "abc", 1);
    receive();
    EXPECT_THAT(stored(), ElementsAre("127.0.0.1 a", "127.0.0.1 b", "127.0.0.1 c"));
    EXPECT_EQ(counters.received, 4U);
}

TEST_F(UdpInputTest, KeepsSendersAndTheirOrderApart) {
    std::mt19937 random(testing::seed());
    const auto upTo = [&random](std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random);
    };
    constexpr unsigned kSenders = 4;
    std::vector<UniqueFd> senders;
    for (unsigned host = 1; host <= kSenders; ++host) {
        senders.push_back(senderFrom(host, port));
    }
    std::vector<std::string> sent;
    for (int round = 0; round < 500; ++round) {
        const std::size_t from = upTo(kSenders - 1);
        const std::string host = "127.0.0." + std::to_string(from + 1);
        const std::size_t length = 4 + upTo(200);
        std::string bytes;
        for (std::size_t count = upTo(40); count > 0; --count) {
            const std::size_t own = count == 1 ? 1 + upTo(length - 1) : length;
            bytes += "<13>" + std::string(own, static_cast<char>('a' + upTo(25)));
            sent.push_back(event(host, bytes.substr(bytes.size() - own)));
        }
        if (!bytes.empty()) {
            sendJoined(senders[from], bytes, length + 4);
        }
        if (upTo(9) == 0) {
            receive();
        }
    }
    receive();
    EXPECT_EQ(stored(), sent);
    EXPECT_EQ(counters.received, sent.size());
    EXPECT_EQ(input->dropped(), 0U);
}

// Where only single datagrams are sent, the count is exact; of joined ones it is as long as they
// are alike.
TEST_F(UdpInputTest, CountsEachOfTheJoinedDatagramsThatTheKernelDropped) {
    const int small = 60'000;
    ASSERT_EQ(setsockopt(raw, SOL_SOCKET, SO_RCVBUF, &small, sizeof small), 0);
    const UniqueFd sender = senderFrom(1, port);
    std::string bytes;
    for (int i = 0; i < 20; ++i) {
        bytes += "<13>" + std::string(100, 'x');
    }
    std::uint64_t sent = 0;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 500; ++i) {
            sendJoined(sender, bytes, 104);
            sent += 20;
        }
        receive();
        sendJoined(sender, "<13>this one is alone", 104);
        sendJoined(sender, bytes, 104);
        sent += 21;
        receive();
        EXPECT_LT(counters.received, sent);
        EXPECT_EQ(counters.received + input->dropped(), sent);
    }
    for (int i = 0; i < 500; ++i) {
        sendJoined(sender, bytes, 104);
    }
    // Of what is left, nothing is read.
    input->drain(std::chrono::steady_clock::now());
    EXPECT_EQ(counters.received + input->dropped(), sent + 10'000);
}

}  // namespace
}  // namespace quorbel
