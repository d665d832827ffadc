// A collector that stores and sends, with everything on the way failing: in the end the cluster's
// view holds each stored event exactly once, and a syslog server has none less.

#include "cluster/ClusterFixture.h"
#include "cluster/CuttingRelay.h"
#include "platform/Files.h"
#include "service/output/Collectors.h"
#include "service/output/Life.h"
#include "service/output/SmallDisk.h"
#include "service/output/SyslogReceiver.h"
#include "support/PrivateNetwork.h"
#include "support/Seed.h"
#include "support/WaitUntil.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <span>
#include <sstream>
#include <string>

namespace quorbel {
namespace {

using testing::ClickHouse;
using testing::Collectors;
using testing::CollectorTalk;
using testing::CuttingRelay;
using testing::Life;
using testing::SmallDisk;
using testing::SyslogReceiver;
using testing::TemporaryFolder;
using testing::TestAuthority;
using testing::waitUntil;

/// By their messages, how often there are events.
using Counts = std::map<std::string, int>;

struct ClusterFaultsTest : ::testing::Test {
    static void SetUpTestSuite() { s_hasMounts = testing::moveToAPrivateNetwork(); }
    void SetUp() override {
        if (!ClickHouse::isThere()) {
            GTEST_SKIP() << ClickHouse::kMissing;
        }
        if (!s_hasMounts || !disk.isThere()) {
            GTEST_SKIP() << "no mounts may be made here";
        }
        server.setIdentity(authority.issue());
        ASSERT_TRUE(server.start());
        ASSERT_EQ(applySchema(server, folder, clusterSchema({}, {})), "");
        relay.emplace(server.httpsPort());
        places.clusterServer = "https://127.0.0.1:" + std::to_string(relay->port());
        places.passwordFile = server.connection().passwordFile;
        places.authorityFile = folder.write("authority", authority.certificate());
        places.forwardPort = receiver.port();
    }
    void TearDown() override { collectors.kill(); }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }
    void startCollector() { collectors.start(places, below(UINT32_MAX)); }
    /// How many rows there are, repeats included; nothing while the server does not answer.
    [[nodiscard]] std::uint64_t rows() const {
        return std::strtoull(server.ask("SELECT count() FROM quorbel.events").c_str(), nullptr, 10);
    }
    /// The collector goes on sending.
    [[nodiscard]] bool waitForMore() const {
        const std::uint64_t before = rows();
        return waitUntil([&] { return rows() > before; });
    }
    static bool waitForChange(const std::atomic<unsigned> &count) {
        return waitUntil([&count, before = count.load()] { return count != before; });
    }

    // The faults, each with its end.

    void killedCollector() {
        collectors.kill();
        startCollector();
    }
    void killedServer() {
        server.kill();
        usleep(below(50'000));
        EXPECT_TRUE(server.start());
    }
    void cutConnections() {
        relay->cutAfter(below(20'000));
        receiver.resetAfter(below(200));
    }
    void errors() {
        EXPECT_EQ(server.ask("RENAME TABLE quorbel.events TO quorbel.away"), "");
        usleep(below(50'000));
        EXPECT_EQ(server.ask("RENAME TABLE quorbel.away TO quorbel.events"), "");
    }
    void silence() {
        server.signal(SIGSTOP);
        usleep(static_cast<useconds_t>(Life::kToInsert.count()) * 1000 + below(200'000));
        server.signal(SIGCONT);
    }
    /// The log files and the places in them cannot be written, until somebody makes room.
    void fullDisk() {
        EXPECT_TRUE(waitUntil([this] { return disk.leave(below(32'768)); }));
        EXPECT_TRUE(waitForChange(talk.diskProblems));
        usleep(below(50'000));
        EXPECT_TRUE(disk.clear());
    }
    void retention() {
        if (below(2) == 0) {
            relay->cutAfter(below(20'000));
        }
        ++talk.removalsWanted;
        EXPECT_TRUE(waitUntil([this] { return talk.removalsDone == talk.removalsWanted; }));
    }
    /// A log file is being replaced, and the places in it moved.
    void killedInRetention() {
        ++talk.removalsWanted;
        EXPECT_TRUE(waitUntil([this] { return talk.removalsBegun == talk.removalsWanted; }));
        usleep(below(3000));
        killedCollector();
    }
    void expiredCertificate() {
        // By a clock that is set back it would still be good.
        talk.clockShift = 0;
        server.kill();
        server.setIdentity(authority.issueExpired());
        EXPECT_TRUE(server.start());
        EXPECT_TRUE(waitForChange(talk.certificateProblems));
        server.kill();
        server.setIdentity(authority.issue());
        EXPECT_TRUE(server.start());
    }
    /// Forward or back, within what the certificates are good for.
    void movedClock() {
        constexpr int kMost = 20 * 3600;
        talk.clockShift = static_cast<int>(below(2 * kMost)) - kMost;
    }

    /// In the log files.
    [[nodiscard]] Counts stored() const {
        Counts events;
        for (const std::string &name : listFolder(places.library)) {
            if (hasExtension(name, "log")) {
                LogReader::readBytes(readFile(places.library / name).value_or(""),
                                     [&events](const LogLine &line) {
                                         ++events[std::string(line.message)];
                                         return true;
                                     });
            }
        }
        return events;
    }
    /// What retention may have removed.
    [[nodiscard]] std::set<std::string> removable() const {
        std::istringstream text(readFile(places.ledger).value_or(""));
        std::set<std::string> messages;
        for (std::string message; std::getline(text, message);) {
            messages.insert(message);
        }
        return messages;
    }
    [[nodiscard]] Counts inCluster() const {
        std::istringstream text(server.ask("SELECT message FROM quorbel.events_once"));
        Counts events;
        for (std::string message; std::getline(text, message);) {
            ++events[message];
        }
        return events;
    }
    [[nodiscard]] Counts atReceiver() const {
        Counts events;
        for (const std::string &message : receiver.messages()) {
            ++events[message.substr(std::min(message.find("event "), message.size()))];
        }
        return events;
    }
    [[nodiscard]] bool hasReceived(const Counts &events) const {
        const Counts arrived = atReceiver();
        return std::ranges::all_of(events, [&arrived](const auto &event) {
            const auto found = arrived.find(event.first);
            return found != arrived.end() && found->second >= event.second;
        });
    }

    struct Kind {
        const char *name;
        void (ClusterFaultsTest::*run)();
    };
    /// So many of each kind, in turns.
    void suffer(std::span<const Kind> kinds, int rounds);
    /// Events that were removed unsent, without those that were counted as such.
    struct Uncounted {
        std::int64_t atCluster;
        std::int64_t atReceiver;
    };
    [[nodiscard]] Uncounted checkArrival();

    static inline bool s_hasMounts = false;

    CollectorTalk &talk = CollectorTalk::make();
    Collectors collectors{talk};  // before anything that has a thread
    TemporaryFolder folder;
    const SmallDisk disk{folder.path() / "disk"};
    const TestAuthority authority;
    ClickHouse server{folder.path() / "server"};
    std::optional<CuttingRelay> relay;
    SyslogReceiver receiver;
    Collectors::Places places{
        folder.path() / "disk" / "library", folder.path() / "ledger", "", "", "", 0};
    std::mt19937 random{testing::seed()};
};

void ClusterFaultsTest::suffer(std::span<const Kind> kinds, int rounds) {
    startCollector();
    ASSERT_TRUE(waitForMore());
    for (int round = 0; round < rounds; ++round) {
        for (const Kind &kind : kinds) {
            usleep(below(100'000));
            (this->*kind.run)();
            ASSERT_TRUE(waitForMore()) << "round " << round << ", " << kind.name;
        }
    }
    collectors.kill();
}

ClusterFaultsTest::Uncounted ClusterFaultsTest::checkArrival() {
    Life last(Collectors::setupOf(places), 0, talk);
    EXPECT_TRUE(last.finish());
    const Counts staying = stored();
    EXPECT_TRUE(waitUntil([&] { return hasReceived(staying); }));
    const Counts there = inCluster();
    const Counts received = atReceiver();
    int wrong = 0;
    for (const auto &[message, count] : staying) {
        const auto found = there.find(message);
        wrong += found == there.end() || found->second != count ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0) << "of " << staying.size();
    const std::set<std::string> removed = removable();
    for (const auto &[message, count] : there) {
        const bool isRemoved = count == 1 && removed.contains(message);
        wrong += isRemoved || staying.contains(message) ? 0 : 1;
    }
    EXPECT_EQ(wrong, 0) << "never stored, or twice";
    const auto missing = [&](const Counts &arrived) {
        return std::ranges::count_if(
            removed, [&](const std::string &message) { return !arrived.contains(message); });
    };
    const auto counted = static_cast<std::int64_t>(last.removedBeforeCluster());
    std::printf("FIGURE %zu events stored, %zu removed, %ld of them unsent, %ld counted as such\n",
                staying.size(), removed.size(), missing(there), counted);
    return {missing(there) - counted,
            missing(received) - static_cast<std::int64_t>(last.removedBeforeServer())};
}

TEST_F(ClusterFaultsTest, EachStoredEventIsThereOnce) {
    using Self = ClusterFaultsTest;
    const Kind kinds[] = {
        {"collector killed", &Self::killedCollector},
        {"server killed", &Self::killedServer},
        {"connections cut", &Self::cutConnections},
        {"errors", &Self::errors},
        {"silence", &Self::silence},
        {"disk full", &Self::fullDisk},
        {"retention", &Self::retention},
        {"certificate expired", &Self::expiredCertificate},
        {"clock moved", &Self::movedClock},
    };
    suffer(kinds, std::getenv("QUORBEL_SOAK") == nullptr ? 3 : 50);
    EXPECT_GT(relay->cuts(), 0);
    const Uncounted uncounted = checkArrival();
    EXPECT_EQ(uncounted.atCluster, 0);
    // What was sent and not proved when it was removed counts, too.
    EXPECT_LE(uncounted.atReceiver, 0);
}

TEST_F(ClusterFaultsTest, NoneIsLostByACollectorThatIsKilledInRetention) {
    const Kind kind{"killed in retention", &ClusterFaultsTest::killedInRetention};
    suffer({&kind, 1}, std::getenv("QUORBEL_SOAK") == nullptr ? 10 : 50);
    EXPECT_EQ(checkArrival().atCluster, 0);
}

}  // namespace
}  // namespace quorbel
