#include "common/LogReader.h"
#include "service/ServiceFixture.h"
#include "service/collect/Collector.h"
#include "service/input/ConnectionShares.h"
#include "service/input/ListenSockets.h"
#include "service/input/TcpInput.h"
#include "service/input/UdpInput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::IsEmpty;
using testing::TemporaryFolder;

const IpAddress kRouter = IpAddress::parse("10.1.2.3").value();

/// An action with all three reactions, for every event.
Dictionary everyReaction(int number) {
    return {{"Name", "test " + std::to_string(number)},
            {"runCommand", Dictionary{{"Command", "true"}}},
            {"sendEmail", Dictionary{{"Recipients", Array{"a@example.org"}}}},
            {"setEvent", Dictionary{{"Type", "Error"}, {"Format", "set: $message"}}}};
}

/// Descriptors for this process, while it lasts.
struct DescriptorLimit {
    explicit DescriptorLimit(rlim_t most) {
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit limit{most, before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before); }
    rlimit before{};
};

/// No more descriptors for this process, while it lasts.
struct NoDescriptors {
    NoDescriptors() {
        for (UniqueFd taken(dup(0)); taken.isOpen(); taken = UniqueFd(dup(0))) {
            all.push_back(std::move(taken));
        }
    }
    DescriptorLimit limit{200};
    std::vector<UniqueFd> all;
};

struct CollectorTest : ::testing::Test {
    void configure(const Dictionary &settings) {
        collector.configure(settings);
        actions.configure(settings);
    }
    [[nodiscard]] std::vector<std::string> messages() const {
        std::vector<std::string> result;
        for (const std::string &name : store.fileNames().value_or(std::vector<std::string>())) {
            LogReader::readFile(store.path(name), [&result](const LogLine &line) {
                result.emplace_back(line.message);
                return true;
            });
        }
        return result;
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    NotificationQueue notifications;
    HostNames names;
    Counters counters;
    std::size_t commands = 0;
    std::size_t mails = 0;
    Actions actions{[this](const CommandRunner::Command & /*command*/) { ++commands; },
                    [this](const MailMessage & /*mail*/) { ++mails; }, counters};
    Collector collector{store, notifications, names, actions, counters};
    ConnectionShares shares;
};

// Whatever was found out of its sender with the message before.
TEST_F(CollectorTest, WhoIsARelayIsAskedAnewWhenTheListIsAnother) {
    const std::vector<AddressNetwork> all = {AddressNetwork::parse("10.0.0.0/8").value()};
    std::string hosts;
    collector.beginTurn();
    for (const auto &relays : {std::vector<AddressNetwork>(), all, std::vector<AddressNetwork>()}) {
        collector.trust(relays);
        collector.receive("<13>1 - web1 - - - - text", kRouter);
        collector.receive("<13>1 - web2 - - - - text", kRouter);
    }
    collector.endTurn();
    for (const std::string &name : store.fileNames().value_or(std::vector<std::string>())) {
        LogReader::readFile(store.path(name), [&hosts](const LogLine &line) {
            hosts += std::string(line.host) + ' ';
            return true;
        });
    }
    EXPECT_EQ(hosts, "10.1.2.3 10.1.2.3 web1 web2 10.1.2.3 10.1.2.3 ");
    EXPECT_EQ(counters.relayed, 2U);
}

TEST_F(CollectorTest, AMessageThatBecomesSeveralEventsSetsActionsOffOnce) {
    configure({{"actionsArray", Array{everyReaction(1)}}});
    collector.beginTurn();
    collector.receive("<13>" + std::string(5000, 'x'), kRouter);
    collector.endTurn();
    EXPECT_EQ(counters.received, 1U);
    EXPECT_EQ(counters.eventsSet, 1U);
    EXPECT_EQ(commands, 1U);
    EXPECT_EQ(mails, 1U);
    std::string received;
    std::string set;
    for (const std::string &message : messages()) {
        (received.size() < 5000 ? received : set) += message;
    }
    EXPECT_EQ(received, std::string(5000, 'x'));
    EXPECT_EQ(set, "set: " + received);
    EXPECT_EQ(counters.stored, notifications.size());
}

// Each of the actions is for every event, those of the others too if that were possible.
TEST_F(CollectorTest, EventsThatActionsSetSetNoActionsOff) {
    configure({{"actionsArray", Array{everyReaction(1), everyReaction(2), everyReaction(3)}}});
    collector.beginTurn();
    collector.receive("<13>one", kRouter);
    collector.receive("<13>two", kRouter);
    collector.endTurn();
    EXPECT_THAT(messages(), ::testing::ElementsAre("one", "set: one", "set: one", "set: one", "two",
                                                   "set: two", "set: two", "set: two"));
    EXPECT_EQ(commands, 6U);
    EXPECT_EQ(mails, 6U);
}

TEST_F(CollectorTest, AStormOfActionsIsHeldBackAndCounted) {
    configure({{"actionsArray", Array{everyReaction(1)}}});
    constexpr std::uint64_t kMany = 20'000;
    collector.beginTurn();
    for (std::uint64_t i = 0; i < kMany; ++i) {
        collector.receive("<13>x", kRouter);
    }
    collector.endTurn();
    ::testing::internal::CaptureStderr();
    actions.report(Actions::Clock::time_point::max());
    EXPECT_NE(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(commands, Actions::kCommandsPerMinute);
    EXPECT_EQ(mails, Actions::kMailsPerMinute + 1);
    EXPECT_EQ(counters.eventsSet, Actions::kEventsPerMinute);
    EXPECT_EQ(counters.heldBack, 3 * kMany - Actions::kCommandsPerMinute -
                                     Actions::kMailsPerMinute - Actions::kEventsPerMinute);
    EXPECT_EQ(counters.stored, kMany + Actions::kEventsPerMinute);
}

TEST_F(CollectorTest, DoesNotHoldAllOfALargeTurn) {
    constexpr int kMany = 200;
    std::size_t largest = 0;
    std::size_t written = 0;
    const auto size = [this] {
        std::size_t sum = 0;
        for (const std::string &name : store.fileNames().value_or(std::vector<std::string>())) {
            sum += std::filesystem::file_size(store.path(name));
        }
        return sum;
    };
    collector.beginTurn();
    for (int i = 0; i < kMany; ++i) {
        // Each becomes four times as long.
        collector.receive("<13>" + std::string(60'000, '\1') + std::to_string(i), kRouter);
        written += 4 * 60'000;
        largest = std::max(largest, written - std::min(written, size()));
    }
    collector.endTurn();
    EXPECT_LT(largest, std::size_t{2} << 20U);
    EXPECT_EQ(counters.received, std::uint64_t{kMany});
    EXPECT_EQ(counters.stored, messages().size());
    EXPECT_EQ(counters.notStored, 0U);
}

TEST_F(CollectorTest, CountsTheDatagramsForWhichThereIsNoTimeAtTheEnd) {
    sd_event *made = nullptr;
    ASSERT_GE(sd_event_new(&made), 0);
    const EventLoopPointer loop(made);
    auto sockets = std::get<ListenSockets>(openListenSockets(0));
    UdpInput input(loop.get(), std::move(sockets.udp), collector);
    const UniqueFd sender = testing::connectTo(sockets.port, SOCK_DGRAM);
    for (int i = 0; i < 100; ++i) {
        testing::sendTo(sender, "<13>x");
    }
    input.drain(std::chrono::steady_clock::now());
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_EQ(input.dropped(), 100U);
}

TEST_F(CollectorTest, AConnectionThatMakesRoomIsReadFirst) {
    sd_event *made = nullptr;
    ASSERT_GE(sd_event_new(&made), 0);
    const EventLoopPointer loop(made);
    auto sockets = std::get<ListenSockets>(openListenSockets(0));
    TcpInput input(loop.get(), std::move(sockets.tcp), collector, counters, shares);
    std::vector<UniqueFd> connections;
    for (int i = 0; i < 100; ++i) {
        connections.push_back(testing::connectTo(sockets.port, SOCK_STREAM));
        while (sd_event_run(loop.get(), 0) > 0) {
        }
    }
    // The loop has no turn for it.
    constexpr std::size_t kMany = 1'000;
    std::string frames;
    for (std::size_t i = 0; i < kMany; ++i) {
        frames += "<13>frame " + std::to_string(i) + '\n';
    }
    testing::sendTo(connections.front(), frames + "<13>unfinished");
    ASSERT_TRUE(testing::waitUntil([&] {
        int underway = -1;
        return ioctl(connections.front().get(), TIOCOUTQ, &underway) == 0 && underway == 0;
    }));
    const UniqueFd another = testing::connectTo(sockets.port, SOCK_STREAM);
    {
        // Both ends are in this process: there is room for the one that comes, and no reserve.
        const DescriptorLimit limit(static_cast<rlim_t>(another.get() + 2));
        input.drain(std::chrono::steady_clock::now() + testing::kPatience);
    }
    EXPECT_EQ(counters.connectionsClosed, 1U);
    const auto refusals = collector.refusals().latest();
    ASSERT_EQ(refusals.size(), 1U);
    EXPECT_EQ(refusals.front().reason, RefusalReason::kClosed);
    EXPECT_EQ(refusals.front().sender.text(), "127.0.0.1");
    EXPECT_EQ(counters.closedUnread, 0U);
    const auto stored = messages();
    ASSERT_EQ(stored.size(), kMany + 1);
    EXPECT_EQ(stored[kMany - 1], "frame " + std::to_string(kMany - 1));
    EXPECT_EQ(stored.back(), "unfinished");
}

TEST_F(CollectorTest, SaysForWhichConnectionsThereWasNoTimeAtTheEnd) {
    sd_event *made = nullptr;
    ASSERT_GE(sd_event_new(&made), 0);
    const EventLoopPointer loop(made);
    auto sockets = std::get<ListenSockets>(openListenSockets(0));
    TcpInput input(loop.get(), std::move(sockets.tcp), collector, counters, shares);
    const UniqueFd quiet = testing::connectTo(sockets.port, SOCK_STREAM);
    const UniqueFd loud = testing::connectTo(sockets.port, SOCK_STREAM);
    while (sd_event_run(loop.get(), 0) > 0) {
    }
    testing::sendTo(loud, "<13>unread\n");
    const UniqueFd waiting = testing::connectTo(sockets.port, SOCK_STREAM);
    const UniqueFd waitingLoud = testing::connectTo(sockets.port, SOCK_STREAM);
    testing::sendTo(waitingLoud, "<13>unread\n");
    ::testing::internal::CaptureStderr();
    input.drain(std::chrono::steady_clock::now());
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<4>Connections that were closed before everything that had arrived was read: 2\n");
    EXPECT_EQ(counters.closedUnread, 2U);
    EXPECT_THAT(messages(), IsEmpty());
}

/// Reads a byte at a time, however many are there.
class SlowChannel final : public StreamChannel {
public:
    explicit SlowChannel(UniqueFd socket) : m_socket(std::move(socket)) {}
    [[nodiscard]] int fd() const override { return m_socket.get(); }
    [[nodiscard]] bool isEstablished() const override { return true; }
    Read read(char *buffer, std::size_t /*room*/) override {
        return {::read(m_socket.get(), buffer, 1) == 1 ? 1U : 0U, Next::kReadable};
    }

private:
    UniqueFd m_socket;
};

TEST_F(CollectorTest, CountsConnectionsThatAreClosedUnread) {
    sd_event *made = nullptr;
    ASSERT_GE(sd_event_new(&made), 0);
    const EventLoopPointer loop(made);
    auto sockets = std::get<ListenSockets>(openListenSockets(0));
    TcpInput input(loop.get(), std::move(sockets.tcp), collector, counters, shares,
                   [](UniqueFd socket, const std::string & /*host*/) {
                       return std::make_unique<SlowChannel>(std::move(socket));
                   });
    const UniqueFd loud = testing::connectTo(sockets.port, SOCK_STREAM);
    sd_event_run(loop.get(), 0);
    const UniqueFd another = testing::connectTo(sockets.port, SOCK_STREAM);
    testing::sendTo(loud, "<13>more than is read\n");
    const DescriptorLimit limit(static_cast<rlim_t>(another.get() + 2));
    while (counters.connectionsClosed == 0) {
        sd_event_run(loop.get(), 0);
    }
    EXPECT_EQ(counters.closedUnread, 1U);
}

// The one that comes stays, even when it takes the last descriptor; and nothing spins when it
// cannot even do that.
TEST_F(CollectorTest, AConnectionMakesRoomWithTheLastDescriptor) {
    sd_event *made = nullptr;
    ASSERT_GE(sd_event_new(&made), 0);
    const EventLoopPointer loop(made);
    auto sockets = std::get<ListenSockets>(openListenSockets(0));
    TcpInput input(loop.get(), std::move(sockets.tcp), collector, counters, shares);
    // The loop's timers have one descriptor, which the service has from its start on.
    sd_event_source *timer = nullptr;
    sd_event_add_time_relative(loop.get(), &timer, CLOCK_MONOTONIC, UINT64_MAX / 4, 0, nullptr,
                               nullptr);
    const EventSourcePointer owner(timer);
    const UniqueFd first = testing::connectTo(sockets.port, SOCK_STREAM);
    {
        const NoDescriptors none;
        EXPECT_GT(sd_event_run(loop.get(), 0), 0);
        EXPECT_EQ(sd_event_run(loop.get(), 0), 0);
    }
    // It was not forgotten.
    testing::sendTo(first, "<13>first\n");
    const auto received = [&](std::uint64_t count) {
        return testing::waitUntil([&] {
            sd_event_run(loop.get(), 0);
            return counters.received == count;
        });
    };
    ASSERT_TRUE(received(1));
    const UniqueFd second = testing::connectTo(sockets.port, SOCK_STREAM);
    testing::sendTo(second, "<13>second\n");
    {
        const NoDescriptors none;
        ASSERT_TRUE(received(2));
    }
    EXPECT_EQ(counters.connectionsClosed, 1U);
    EXPECT_TRUE(testing::isClosed(first));
}

TEST_F(CollectorTest, NobodyIsTakenOnByAnInputThatHasEnded) {
    sd_event *made = nullptr;
    ASSERT_GE(sd_event_new(&made), 0);
    const EventLoopPointer loop(made);
    auto sockets = std::get<ListenSockets>(openListenSockets(0));
    TcpInput input(loop.get(), std::move(sockets.tcp), collector, counters, shares);
    const UniqueFd waiting = testing::connectTo(sockets.port, SOCK_STREAM);
    testing::sendTo(waiting, "<13>whole\n<13>unfinished");
    ::testing::internal::CaptureStderr();
    input.drain(std::chrono::steady_clock::now() + testing::kPatience);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(messages(), ::testing::ElementsAre("whole", "unfinished"));
    const UniqueFd late(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(sockets.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(late.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
}

}  // namespace
}  // namespace quorbel
