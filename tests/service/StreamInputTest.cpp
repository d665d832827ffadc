// The real service and many, greedy or odd senders over TCP.

#include "platform/Files.h"
#include "service/ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quorbel {
namespace {

using testing::connectTo;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::isClosed;
using ::testing::Not;
using testing::sendTo;
using testing::ServiceProcess;

struct StreamInputTest : testing::ServiceFixture {};

/// How many descriptors the service has open, without those that syncing takes for a moment: the
/// folder of the log files and the day's file once more.
std::size_t descriptorsOf(const ServiceProcess &service, const std::filesystem::path &library) {
    const std::filesystem::path open = "/proc/" + std::to_string(service.pid()) + "/fd";
    std::size_t count = 0;
    std::set<std::filesystem::path> own;
    for (const std::string &number : listFolder(open)) {
        std::error_code closedMeanwhile;
        const auto target = std::filesystem::read_symlink(open / number, closedMeanwhile);
        const bool isOwn = target == library || target.parent_path() == library;
        const bool isMomentary = isOwn && !own.insert(target).second;
        count += isMomentary || closedMeanwhile ? 0U : 1U;
    }
    return count;
}

std::uint64_t counted(const ServiceProcess &service, const std::string &what) {
    const std::string journal = service.journal();
    const std::size_t at = journal.rfind(", " + what + ' ');
    return at == std::string::npos
               ? UINT64_MAX
               : std::strtoull(journal.c_str() + at + what.size() + 3, nullptr, 10);
}

TEST_F(StreamInputTest, ClosesTheIdlestConnectionWhenThereAreTooMany) {
    const auto service = start({.library = {}, .busAddress = {}, .descriptors = 128});
    std::vector<UniqueFd> connections;
    // The second one is the first to speak, and has something unfinished to say.
    for (std::size_t i = 0; i < 32; ++i) {
        connections.push_back(connectTo(service->port(), SOCK_STREAM));
    }
    sendTo(connections[1], "<13>first\n<13>unfinished");
    ASSERT_TRUE(waitForStored(1));
    for (std::size_t i = 0; i < connections.size(); ++i) {
        if (i != 1) {
            sendTo(connections[i], "<13>later\n");
        }
    }
    ASSERT_TRUE(waitForStored(connections.size()));
    while (descriptorsOf(*service, folder.path()) < 96 - 1) {
        connections.push_back(connectTo(service->port(), SOCK_STREAM));
        sendTo(connections.back(), "<13>more\n");
        ASSERT_TRUE(waitForStored(connections.size()));
    }
    // Somebody may have looked while a file was open besides.
    const std::size_t before = connections.size();
    for (int i = 0; i < 8; ++i) {
        connections.push_back(connectTo(service->port(), SOCK_STREAM));
    }
    EXPECT_TRUE(isClosed(connections[1]));
    sendTo(connections.back(), "<13>still open\n");
    ASSERT_TRUE(waitForStored(before + 2));
    const auto events = stored();
    EXPECT_NE(std::ranges::find(events, "User.Notice,127.0.0.1,unfinished"), events.end());
    EXPECT_NE(std::ranges::find(events, "User.Notice,127.0.0.1,still open"), events.end());
    service->terminate();
    EXPECT_GE(counted(*service, "connections closed"), 1U);
    EXPECT_LE(counted(*service, "connections closed"), 8U);
    EXPECT_EQ(counted(*service, "closed unread"), 0U);
}

TEST_F(StreamInputTest, KeepsAsManyConnectionsAsThereAreDescriptorsFor) {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    constexpr std::size_t kSenders = 700;
    if (files.rlim_max < 1100) {
        GTEST_SKIP() << "too few descriptors here";
    }
    const auto service = start({.library = {}, .busAddress = {}, .descriptors = 1024});
    std::vector<UniqueFd> quiet;
    for (std::size_t i = 0; i < kSenders; ++i) {
        quiet.push_back(connectTo(service->port(), SOCK_STREAM));
    }
    for (std::size_t i = 0; i < kSenders; ++i) {
        sendTo(quiet[i], "<13>at last " + std::to_string(i) + '\n');
    }
    EXPECT_TRUE(waitForStored(kSenders));
    service->terminate();
    EXPECT_EQ(counted(*service, "connections closed"), 0U);
}

TEST_F(StreamInputTest, TheGreedOfOneHostTakesNobodyElsesPlace) {
    const auto service = start({.library = {}, .busAddress = {}, .descriptors = 128});
    const UniqueFd quiet = testing::connectFrom(2, service->port());
    std::vector<UniqueFd> greedy;
    for (int i = 0; i < 300; ++i) {
        greedy.push_back(connectTo(service->port(), SOCK_STREAM));
    }
    // All of them have been taken on when the last one is heard.
    sendTo(greedy.back(), "<13>greedy\n");
    ASSERT_TRUE(waitForStored(1));
    sendTo(quiet, "<13>quiet\n");
    ASSERT_TRUE(waitForStored(2));
    EXPECT_THAT(stored(),
                ElementsAre("User.Notice,127.0.0.1,greedy", "User.Notice,127.0.0.2,quiet"));
    service->terminate();
    EXPECT_GE(counted(*service, "connections closed"), 200U);
}

TEST_F(StreamInputTest, GoesOnWithOneDescriptorLeft) {
    const auto service = start({.library = {}, .busAddress = {}, .descriptors = 256});
    std::vector<UniqueFd> idle;
    for (int i = 0; i < 60; ++i) {
        idle.push_back(connectTo(service->port(), SOCK_STREAM));
    }
    sendTo(idle.back(), "<13>taken on\n");
    ASSERT_TRUE(waitForStored(1));
    const rlim_t left = descriptorsOf(*service, folder.path()) + 1;
    const rlimit files{left, left};
    ASSERT_EQ(prlimit(service->pid(), RLIMIT_NOFILE, &files, nullptr), 0);
    // Urgent ones are synced at once.
    std::vector<UniqueFd> late;
    for (std::size_t i = 0; i < 20; ++i) {
        late.push_back(connectTo(service->port(), SOCK_STREAM));
        sendTo(late.back(), "<10>late " + std::to_string(i) + '\n');
        ASSERT_TRUE(waitForStored(2 + i)) << service->journal();
    }
    // The day's file is gone, so that storing has to open another.
    for (const std::string &name : listFolder(folder.path())) {
        if (hasExtension(name, "log")) {
            std::filesystem::remove(folder.path() / name);
        }
    }
    sendTo(late.back(), "<10>afterwards\n");
    EXPECT_TRUE(waitForStored(1)) << service->journal();
    service->terminate();
    EXPECT_THAT(service->journal(), Not(HasSubstr("cannot be")));
    // There was room for one of the 20.
    EXPECT_GE(counted(*service, "connections closed"), 19U);
    EXPECT_EQ(counted(*service, "not stored"), 0U);
}

/// Octet counting, 5,000 messages behind something odd.
struct OddSender {
    std::string_view odd;
    std::size_t more;  ///< messages that it makes itself
};

struct OddSenderTest : StreamInputTest, ::testing::WithParamInterface<OddSender> {};

TEST_P(OddSenderTest, LosesNoMessageBehindIt) {
    constexpr std::size_t kMessages = 5'000;
    std::string bytes(GetParam().odd);
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < kMessages; ++i) {
        const std::string text = "number " + std::to_string(i) + ".";
        bytes += std::to_string(text.size() + 4) + " <14>" + text;
        expected.push_back("User.Informational,127.0.0.1," + text);
    }
    const auto service = start();
    const UniqueFd stream = connectTo(service->port(), SOCK_STREAM);
    // In pieces that end anywhere.
    for (std::size_t at = 0; at < bytes.size(); at += 777) {
        sendTo(stream, std::string_view(bytes).substr(at, 777));
    }
    ASSERT_TRUE(waitForStored(kMessages + GetParam().more)) << stored().size();
    auto events = stored();
    events.erase(events.begin(), events.end() - kMessages);
    EXPECT_EQ(events, expected);
    service->terminate();
    const std::string journal = service->journal();
    constexpr std::string_view kSaid = "The stream from 127.0.0.1 is out of step";
    const std::size_t at = journal.find(kSaid);
    EXPECT_EQ(at != std::string::npos, counted(*service, "stray texts") > 0);
    EXPECT_TRUE(at == std::string::npos || journal.find(kSaid, at + 1) == std::string::npos);
    EXPECT_EQ(counted(*service, "bytes skipped"), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Odd, OddSenderTest,
    ::testing::Values(OddSender{"12 no priority.", 1}, OddSender{"\xEF\xBB\xBF", 0},
                      OddSender{"10 <13>Z\xC3\xBCrich", 2}, OddSender{"13 <13>Z\xC3\xBCrich 80", 1},
                      OddSender{"6 <13>ab\n  at x\n  at y", 3}, OddSender{"8 <13>abcdjunk", 2}));

}  // namespace
}  // namespace quorbel
