#include "platform/bus/BusNames.h"
#include "platform/bus/CommandDelivery.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/SdBus.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using namespace std::chrono_literals;
using testing::kPatience;
using testing::PrivateBus;
using testing::ServiceStandIn;
using testing::waitUntil;
using OnCommand = ServiceStandIn::OnCommand;

auto duration(const auto &work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - begin;
}

std::ptrdiff_t entryCount(const char *folder) {
    return std::distance(std::filesystem::directory_iterator(folder),
                         std::filesystem::directory_iterator());
}

Dictionary numbered(int number) {
    return {{"command", "save"}, {"Number", number}};
}

Dictionary updateCommand(int events) {
    Dictionary lines;
    for (int event = 0; event < events; ++event) {
        lines.append(std::to_string(1700000000 + event) + ",Local7.Debug,10.0.0.1,some message\n",
                     "1");
    }
    return {{"command", "update"}, {"Events", std::move(lines)}};
}

class ReplyLog {
public:
    CommandSender::ReplyHandler handler() {
        return [this](const std::string &reply) {
            const std::scoped_lock lock(m_mutex);
            m_replies.push_back(reply);
            m_threads.insert(std::this_thread::get_id());
        };
    }
    std::vector<std::string> replies() {
        const std::scoped_lock lock(m_mutex);
        return m_replies;
    }
    bool cameOnThread(std::thread::id thread) {
        const std::scoped_lock lock(m_mutex);
        return m_threads.contains(thread);
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_replies;
    std::set<std::thread::id> m_threads;
};

/// Takes about as long as sending a command, however busy the machine is.
void askTheBus() {
    const bus::BusPointer connection = bus::openSystemBus();
    EXPECT_GE(sd_bus_call_method(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus", "GetId", nullptr, nullptr, ""),
              0);
}

class BusCommandSenderTest : public ::testing::Test {
protected:
    PrivateBus m_bus;
    ReplyLog m_log;
};

TEST_F(BusCommandSenderTest, DeliversTheDictionaryAndReportsTheReply) {
    ServiceStandIn service;
    service.setReply("Settings stored");
    CommandSender sender(m_log.handler());
    const Dictionary command{{"command", "email"},
                             {"Recipients", Array{"a@halvern.example", "b@halvern.example"}},
                             {"Subject", "Gr\xC3\xBC\xC3\x9F"},
                             {"Body", ""},
                             {"Html", false},
                             {"Extra", Dictionary{{"Date", Date{1.5}}, {"None", Null{}}}}};
    sender.send(command);
    EXPECT_THAT(service.waitForCommands(1), ::testing::ElementsAre(command));
    EXPECT_FALSE(service.received().at(0).asFile);
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::ElementsAre("Settings stored"));
    EXPECT_FALSE(m_log.cameOnThread(std::this_thread::get_id()));
}

TEST_F(BusCommandSenderTest, SendsInOrderEachOverAConnectionOfItsOwn) {
    constexpr int kCount = 64;
    ServiceStandIn service;
    CommandSender sender(m_log.handler());
    std::vector<Dictionary> expected;
    for (int number = 0; number < kCount; ++number) {
        expected.push_back(numbered(number));
        sender.send(numbered(number));
    }
    EXPECT_EQ(service.waitForCommands(kCount), expected);
    std::set<std::string> connections;
    for (const auto &received : service.received()) {
        connections.insert(received.sender);
    }
    EXPECT_EQ(connections.size(), std::size_t{kCount});
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_EQ(m_log.replies().size(), std::size_t{kCount});
}

TEST_F(BusCommandSenderTest, LargeCommandsTravelAsASealedFile) {
    ServiceStandIn service;
    CommandSender sender(m_log.handler());
    const Dictionary small = updateCommand(1000);
    const Dictionary large = updateCommand(30000);
    m_bus.freeze();
    sender.send(large);
    sender.send(small);
    EXPECT_FALSE(sender.waitUntilIdle(0ms));  // both were handed over, and nothing was waited for
    m_bus.thaw();
    const auto commands = service.waitForCommands(2);
    ASSERT_EQ(commands.size(), 2U);
    EXPECT_TRUE(commands[0] == large);
    EXPECT_TRUE(commands[1] == small);
    EXPECT_TRUE(service.received()[0].asFile);
    EXPECT_EQ(service.received()[0].seals,
              F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
    EXPECT_FALSE(service.received()[1].asFile);
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::ElementsAre("OK", "OK"));
}

/// The command of as many lines, and of each the second time.
LineCommand linesOf(int events) {
    LineCommand command;
    command.setName("update");
    command.begin("Events", LineCommand::Kind::kCounted);
    for (int event = 0; event < events; ++event) {
        command.again(command.add(std::to_string(1700000000 + event) + ",a,b,some message\n"));
    }
    return command;
}

TEST_F(BusCommandSenderTest, LinesTravelAsTheDictionaryThatTheyStandFor) {
    ServiceStandIn service;
    CommandSender sender(m_log.handler());
    const std::vector<int> counts{0, 1000, 60000};
    std::vector<Dictionary> expected;
    for (const int count : counts) {
        expected.push_back(linesOf(count).toDictionary());
        sender.send(linesOf(count));
    }
    EXPECT_TRUE(service.waitForCommands(3) == expected);
    EXPECT_FALSE(service.received()[0].asFile);
    EXPECT_FALSE(service.received()[1].asFile);
    EXPECT_TRUE(service.received()[2].asFile);
    EXPECT_EQ(service.received()[2].seals,
              F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::ElementsAre("OK", "OK", "OK"));
}

/// About the bytes that a line of text takes in a message decide, as in any command.
TEST_F(BusCommandSenderTest, LinesOfOneMebibyteInAMessageTravelAsAFile) {
    ServiceStandIn service;
    CommandSender sender(m_log.handler());
    sender.send(linesOf(15000));
    sender.send(linesOf(30000));
    ASSERT_LT(linesOf(30000).textSize(), std::size_t{1024 * 1024});
    ASSERT_EQ(service.waitForCommands(2).size(), 2U);
    EXPECT_FALSE(service.received()[0].asFile);
    EXPECT_TRUE(service.received()[1].asFile);
}

TEST_F(BusCommandSenderTest, TheLimitIsOneMebibyte) {
    ServiceStandIn service;
    CommandSender sender(m_log.handler());
    sender.send({{"Body", std::string(1000 * 1024, 'x')}});
    sender.send({{"Body", std::string(1024 * 1024 + 1, 'x')}});
    ASSERT_EQ(service.waitForCommands(2).size(), 2U);
    EXPECT_FALSE(service.received()[0].asFile);
    EXPECT_TRUE(service.received()[1].asFile);
}

TEST_F(BusCommandSenderTest, WhatHasNoFormOnTheBusTravelsAsAFile) {
    ServiceStandIn service;
    CommandSender sender(m_log.handler());
    const ForeignObject colour{
        {"NSColor", "NSObject"},
        {{"NSColorSpace", false, std::make_shared<const Value>(1)},
         {"NSRGB", false, std::make_shared<const Value>(Data{std::string("1 0 0\0", 6)})}}};
    Value deep = "inmost";
    for (int level = 0; level < 40; ++level) {
        deep = Array{std::move(deep)};
    }
    const std::vector<Dictionary> commands{{{"Settings", Dictionary{{"colour", colour}}}},
                                           {{"Body", "\xEF\xBF\xBF"}},
                                           {{"Deep", std::move(deep)}}};
    for (const Dictionary &command : commands) {
        sender.send(command);
    }
    EXPECT_TRUE(service.waitForCommands(3) == commands);
    for (const auto &received : service.received()) {
        EXPECT_TRUE(received.asFile);
    }
}

TEST_F(BusCommandSenderTest, WithoutTheServiceACommandLeavesNoTrace) {
    CommandSender sender(m_log.handler());
    sender.send(numbered(1));
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    ServiceStandIn service;
    sender.send(numbered(2));
    EXPECT_THAT(service.waitForCommands(1), ::testing::ElementsAre(numbered(2)));
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::SizeIs(1));
    EXPECT_THAT(service.received(), ::testing::SizeIs(1));
}

TEST_F(BusCommandSenderTest, WithoutTheBusACommandLeavesNoTrace) {
    CommandSender sender(m_log.handler());
    m_bus.stop();
    for (int number = 0; number < 1000; ++number) {
        sender.send(numbered(number));
    }
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::IsEmpty());
    m_bus.start();
    ServiceStandIn service;
    sender.send(numbered(7));
    EXPECT_THAT(service.waitForCommands(1), ::testing::ElementsAre(numbered(7)));
}

TEST_F(BusCommandSenderTest, ABusThatHangsIsGivenUp) {
    CommandSender sender(m_log.handler());
    auto ending = std::make_unique<CommandSender>(m_log.handler());
    m_bus.freeze();
    sender.send(numbered(1));
    ending->send(numbered(2));
    EXPECT_FALSE(sender.waitUntilIdle(0ms));
    EXPECT_FALSE(ending->waitUntilIdle(0ms));
    EXPECT_LT(duration([&ending] { ending.reset(); }), 10s);
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    m_bus.thaw();
    ServiceStandIn service;
    sender.send(numbered(3));
    EXPECT_THAT(service.waitForCommands(1), ::testing::ElementsAre(numbered(3)));
}

TEST_F(BusCommandSenderTest, EachCommandHasItsOwnAnswer) {
    std::mutex mutex;
    std::vector<std::string> answers;
    const auto noted = [&](const std::string &name) {
        return [&, name](const std::optional<std::string> &reply) {
            const std::lock_guard lock(mutex);
            answers.push_back(name + ": " + reply.value_or("none"));
        };
    };
    {
        ServiceStandIn service;
        CommandSender sender(m_log.handler());
        sender.send(numbered(1), noted("first"));
        sender.send(numbered(2));
        EXPECT_TRUE(sender.waitUntilIdle(kPatience));
        service.onCommand(OnCommand::kReplyWithError);
        sender.send(numbered(3), noted("error"));
        EXPECT_TRUE(sender.waitUntilIdle(kPatience));
        service.onCommand(OnCommand::kDie);
        sender.send(numbered(4), noted("dead"));
        EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    }
    CommandSender sender(m_log.handler());
    sender.send(numbered(5), noted("missing"));
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    m_bus.stop();
    sender.send(numbered(6), noted("no bus"));
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(answers, ::testing::ElementsAre("first: OK", "error: none", "dead: none",
                                                "missing: none", "no bus: none"));
    EXPECT_THAT(m_log.replies(), ::testing::SizeIs(2));
}

// More than a wait for each reply would let through within a test's patience.
TEST_F(BusCommandSenderTest, NoCommandWaitsForTheReplyToAnother) {
    constexpr int kCount = 60;
    ServiceStandIn service;
    service.onCommand(OnCommand::kReply, 1h);
    CommandSender sender(m_log.handler());
    std::vector<Dictionary> expected;
    for (int number = 0; number < kCount; ++number) {
        expected.push_back(numbered(number));
        sender.send(numbered(number));
    }
    EXPECT_EQ(service.waitForCommands(kCount), expected);
    EXPECT_THAT(m_log.replies(), ::testing::IsEmpty());
    EXPECT_FALSE(sender.waitUntilIdle(0ms));
    service.replyNow();
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::SizeIs(kCount));
}

// A bus that does not run has not routed what was sent to it since, so that another connection's
// command could overtake it.
TEST_F(BusCommandSenderTest, ACommandHoldsUpTheNextUntilTheBusHasTakenIt) {
    ServiceStandIn service;
    service.onCommand(OnCommand::kKeepSilent);
    const CommandSender::ReplyHandler ignore = [](const std::string & /*reply*/) {};
    bus::CommandDelivery delivery(numbered(1), ignore);
    const auto unread = [&delivery] {
        int bytes = 0;
        EXPECT_EQ(ioctl(delivery.input().fd, TIOCOUTQ, &bytes), 0);
        return bytes;
    };
    ASSERT_TRUE(waitUntil([&] {
        m_bus.freeze();
        delivery.process();
        const bool overtakes = !delivery.holdsUpNext();
        EXPECT_TRUE(!overtakes || unread() == 0);
        m_bus.thaw();
        return overtakes;
    }));
    EXPECT_FALSE(delivery.isFinished());
    EXPECT_THAT(service.waitForCommands(1), ::testing::ElementsAre(numbered(1)));
}

TEST_F(BusCommandSenderTest, AnErrorIsNoReply) {
    ServiceStandIn service;
    service.onCommand(OnCommand::kReplyWithError);
    CommandSender sender(m_log.handler());
    sender.send(numbered(1));
    EXPECT_THAT(service.waitForCommands(1), ::testing::SizeIs(1));
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::IsEmpty());
}

TEST_F(BusCommandSenderTest, AServiceThatDiesInTheMiddleIsSilent) {
    CommandSender sender(m_log.handler());
    {
        ServiceStandIn service;
        service.onCommand(OnCommand::kDie);
        sender.send(numbered(1));
        EXPECT_THAT(service.waitForCommands(1), ::testing::SizeIs(1));
        EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    }
    ServiceStandIn service;
    sender.send(numbered(2));
    EXPECT_THAT(service.waitForCommands(1), ::testing::ElementsAre(numbered(2)));
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::ElementsAre("OK"));
}

TEST_F(BusCommandSenderTest, ABusThatGoesAwayMeanwhileIsSilent) {
    CommandSender sender(m_log.handler());
    ServiceStandIn service;
    service.onCommand(OnCommand::kKeepSilent);
    sender.send(numbered(1));
    EXPECT_THAT(service.waitForCommands(1), ::testing::SizeIs(1));
    m_bus.stop();
    EXPECT_TRUE(sender.waitUntilIdle(kPatience));
    EXPECT_THAT(m_log.replies(), ::testing::IsEmpty());
}

TEST_F(BusCommandSenderTest, TheEndWaitsForWhatWasHandedOver) {
    constexpr int kCount = 10;
    ServiceStandIn service;
    {
        CommandSender sender(m_log.handler());
        sender.send(updateCommand(30000));
        for (int number = 1; number < kCount; ++number) {
            sender.send(numbered(number));
        }
    }
    const auto commands = service.waitForCommands(kCount);
    ASSERT_EQ(commands.size(), std::size_t{kCount});
    EXPECT_TRUE(commands.front() == updateCommand(30000));
    EXPECT_EQ(commands.back(), numbered(kCount - 1));
}

TEST_F(BusCommandSenderTest, TheEndLosesNothingToAServiceThatIsSilent) {
    constexpr int kCount = 12;
    ServiceStandIn service;
    service.onCommand(OnCommand::kKeepSilent);
    std::vector<Dictionary> expected;
    {
        CommandSender sender(m_log.handler());
        for (int number = 0; number < kCount; ++number) {
            expected.push_back(numbered(number));
            sender.send(numbered(number));
        }
    }
    EXPECT_EQ(service.waitForCommands(kCount), expected);
}

TEST_F(BusCommandSenderTest, TheEndLosesNothingWhileTheServiceStarts) {
    constexpr int kCount = 12;
    m_bus.startOnDemand(bus::kServiceName);
    std::vector<Dictionary> expected;
    auto sender = std::make_unique<CommandSender>(m_log.handler());
    for (int number = 0; number < kCount; ++number) {
        expected.push_back(numbered(number));
        sender->send(numbered(number));
    }
    std::thread end([&sender] { sender.reset(); });
    ASSERT_TRUE(waitUntil([this] { return m_bus.hasStarted(bus::kServiceName); }));
    // By then all is sent, and an end that did not wait for the service would be over.
    for (int i = 0; i < 10 * kCount; ++i) {
        askTheBus();
    }
    const ServiceStandIn service;
    end.join();
    EXPECT_EQ(service.waitForCommands(kCount), expected);
}

TEST_F(BusCommandSenderTest, LeavesNoDescriptorAndNoThread) {
    ServiceStandIn service;
    const auto descriptors = entryCount("/proc/self/fd");
    const auto threads = entryCount("/proc/self/task");
    {
        CommandSender sender(m_log.handler());
        sender.send(updateCommand(30000));
        sender.send(numbered(1));
        EXPECT_TRUE(sender.waitUntilIdle(kPatience));
        EXPECT_EQ(entryCount("/proc/self/fd"), descriptors + 1);
        EXPECT_EQ(entryCount("/proc/self/task"), threads + 1);
    }
    service.clear();
    EXPECT_TRUE(waitUntil([&] { return entryCount("/proc/self/task") == threads; }));
    EXPECT_TRUE(waitUntil([&] { return entryCount("/proc/self/fd") == descriptors; }));
}

}  // namespace
}  // namespace quorbel
