// A collector that stores and sends, with everything on the way failing: in the end the cluster's
// view holds each stored event exactly once.

#include "cluster/ClusterFixture.h"
#include "cluster/CuttingRelay.h"
#include "platform/Files.h"
#include "service/output/ClusterDelivery.h"
#include "support/Seed.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <random>
#include <string>

namespace quorbel {
namespace {

using std::chrono::milliseconds;
using testing::ClickHouse;
using testing::CuttingRelay;
using testing::TemporaryFolder;

constexpr std::int64_t kTime = 1700000000;
constexpr milliseconds kToInsert{300};

/// One life of a collector. The messages of its events are nobody else's.
class Life {
public:
    Life(const std::filesystem::path &library, const ClusterSettings &settings, unsigned seed)
        : m_random(seed), m_name(std::to_string(seed)), m_store(library) {
        m_store.prepare();
        m_feed.emplace(m_store, library / "outputs",
                       EventFeed::Settings{.name = "main", .kept = true, .history = true});
        m_delivery.emplace(settings, "here", kToInsert);
    }

    /// Until it is killed.
    [[noreturn]] void run() {
        while (true) {
            append();
            send();
        }
    }
    /// Until all is sent.
    void finish() {
        while (send()) {
        }
    }

private:
    void append() {
        std::string lines;
        // A clock that is set back now and then: another day's file.
        const std::int64_t seconds = kTime - (m_random() % 10 == 0 ? 86400 : 0);
        for (auto i = m_random() % 300; i > 0; --i) {
            lines += std::to_string(seconds) + ",Local7.Error,h,event " + m_name + '-' +
                     std::to_string(++m_count) + "\r\n";
        }
        m_store.append(lines, seconds, false);
    }
    /// False when there was nothing to send.
    bool send() {
        const auto piece = m_feed->take(4096U << m_random() % 4);
        if (!piece) {
            return false;
        }
        if (m_delivery->deliver(*piece, m_stop)) {
            usleep(10'000);
            m_feed->rewind();
        } else {
            m_feed->acknowledge(piece->first + piece->count);
        }
        return true;
    }

    std::mt19937 m_random;
    std::string m_name;
    std::size_t m_count = 0;
    const std::atomic<bool> m_stop = false;
    LogStore m_store;
    std::optional<EventFeed> m_feed;
    std::optional<ClusterDelivery> m_delivery;
};

struct ClusterFaultsTest : ::testing::Test {
    void SetUp() override {
        if (!ClickHouse::isThere()) {
            GTEST_SKIP() << ClickHouse::kMissing;
        }
        ASSERT_TRUE(server.start());
        ASSERT_EQ(applySchema(server, folder, clusterSchema({}, {})), "");
        relay.emplace(server.httpPort());
        settings.servers = {"http://127.0.0.1:" + std::to_string(relay->port())};
        settings.user = "quorbel";
        settings.passwordFile = server.connection().passwordFile;
    }
    void TearDown() override { killCollector(); }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }
    void startCollector() {
        const unsigned seed = below(UINT32_MAX);
        collector = fork();
        if (collector == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            Life(library, settings, seed).run();
        }
    }
    void killCollector() {
        if (collector > 0) {
            ::kill(collector, SIGKILL);
            waitpid(collector, nullptr, 0);
            collector = -1;
        }
    }
    /// How many rows there are, repeats included; nothing while the server does not answer.
    [[nodiscard]] std::uint64_t rows() const {
        return std::strtoull(server.ask("SELECT count() FROM quorbel.events").c_str(), nullptr, 10);
    }
    /// The collector goes on sending.
    void waitForMore() {
        const std::uint64_t before = rows();
        EXPECT_TRUE(testing::waitUntil([&] { return rows() > before; }));
    }

    void faultOf(unsigned kind) {
        switch (kind) {
            case 0:
                killCollector();
                startCollector();
                break;
            case 1:
                server.kill();
                usleep(below(50'000));
                EXPECT_TRUE(server.start());
                break;
            case 2:
                relay->cutAfter(below(20'000));
                break;
            case 3:  // it answers errors
                EXPECT_EQ(server.ask("RENAME TABLE quorbel.events TO quorbel.away"), "");
                usleep(below(50'000));
                EXPECT_EQ(server.ask("RENAME TABLE quorbel.away TO quorbel.events"), "");
                break;
            default:  // it answers nothing
                server.signal(SIGSTOP);
                usleep(static_cast<useconds_t>(kToInsert.count()) * 1000 + below(200'000));
                server.signal(SIGCONT);
                break;
        }
    }

    /// By their messages, how often they are in the log files.
    [[nodiscard]] std::map<std::string, int> stored() const {
        std::map<std::string, int> events;
        for (const std::string &name : listFolder(library)) {
            if (hasExtension(name, "log")) {
                LogReader::readBytes(readFile(library / name).value_or(""),
                                     [&events](const LogLine &line) {
                                         ++events[std::string(line.message)];
                                         return true;
                                     });
            }
        }
        return events;
    }
    [[nodiscard]] std::map<std::string, int> arrived() const {
        std::map<std::string, int> events;
        std::string text = server.ask("SELECT message FROM quorbel.events_once") + '\n';
        for (std::size_t end = 0; (end = text.find('\n')) != std::string::npos;
             text.erase(0, end + 1)) {
            ++events[text.substr(0, end)];
        }
        return events;
    }

    TemporaryFolder folder;
    const std::filesystem::path library = folder.path() / "library";
    ClickHouse server{folder.path() / "server"};
    std::optional<CuttingRelay> relay;
    ClusterSettings settings;
    pid_t collector = -1;
    std::mt19937 random{testing::seed()};
};

TEST_F(ClusterFaultsTest, EachStoredEventIsThereOnce) {
    const unsigned rounds = std::getenv("QUORBEL_SOAK") == nullptr ? 25 : 250;
    startCollector();
    waitForMore();
    for (unsigned round = 0; round < rounds; ++round) {
        usleep(below(100'000));
        faultOf(round % 5);
        waitForMore();
    }
    killCollector();
    Life(library, settings, 0).finish();
    const auto expected = stored();
    EXPECT_GT(expected.size(), rounds);
    EXPECT_TRUE(arrived() == expected);
    EXPECT_GT(relay->cuts(), 0);
}

}  // namespace
}  // namespace quorbel
