// What is on the disk, and when.

#include "platform/Files.h"
#include "service/bus/SettingsFile.h"
#include "service/collect/Collector.h"
#include "service/collect/DiskRecorder.h"
#include "service/store/LogStore.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using testing::DiskRecorder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TemporaryFolder;
using testing::waitUntil;

const IpAddress kRouter = IpAddress::parse("10.1.2.3").value();

constexpr std::int64_t kMonday = 1700000000;   // 2023-11-14, in UTC
constexpr std::int64_t kTuesday = 1700092800;  // 2023-11-16

std::string line(const std::string &message) {
    return "1700000000,User.Notice,h," + message + "\r\n";
}

class SyncTest : public ::testing::Test {
protected:
    SyncTest() { m_disk.reset(); }
    ~SyncTest() override {
        m_store.reset();
        m_disk.reset();
    }
    /// Whether all of the day's file is on the disk.
    [[nodiscard]] bool isSynced(std::int64_t day) {
        const std::filesystem::path file = m_store->path(logFileName(day));
        return m_disk.synced(file) == static_cast<off_t>(std::filesystem::file_size(file));
    }
    [[nodiscard]] bool isSyncedSoon(std::int64_t day) {
        return waitUntil([&] { return isSynced(day); });
    }

    DiskRecorder &m_disk = DiskRecorder::instance();
    TemporaryFolder m_folder;
    std::optional<LogStore> m_store{m_folder.path()};
};

TEST_F(SyncTest, EventsAreSyncedByThemselves) {
    m_store->append(line("one"), kMonday, false);
    EXPECT_TRUE(isSyncedSoon(kMonday));
    m_store->append(line("two"), kMonday, false);
    EXPECT_TRUE(isSyncedSoon(kMonday));
}

TEST_F(SyncTest, UrgentEventsAreSyncedAtOnce) {
    m_disk.stretchWaits = true;
    m_store->append(line("urgent"), kMonday, true);
    EXPECT_TRUE(isSyncedSoon(kMonday));
    // Also behind others that are waited with already.
    const int before = m_disk.waits;
    m_store->append(line("one"), kMonday, false);
    m_store->append(line("two"), kMonday, false);
    ASSERT_TRUE(waitUntil([&] { return m_disk.waits > before; }));
    EXPECT_FALSE(isSynced(kMonday));
    m_store->append(line("urgent"), kMonday, true);
    EXPECT_TRUE(isSyncedSoon(kMonday));
}

TEST_F(SyncTest, AFileThatIsNoLongerWrittenToIsSyncedToo) {
    m_disk.stretchWaits = true;
    m_store->append(line("last of its day"), kMonday, false);
    m_store->append(line("urgent"), kTuesday, true);
    EXPECT_TRUE(isSyncedSoon(kTuesday));
    EXPECT_TRUE(isSynced(kMonday));
}

TEST_F(SyncTest, TheEndSyncsWhatWasAppended) {
    m_disk.stretchWaits = true;
    m_store->append(line("last"), kMonday, false);
    m_store.reset();
    const std::filesystem::path file = m_folder.path() / logFileName(kMonday);
    EXPECT_EQ(m_disk.synced(file), static_cast<off_t>(std::filesystem::file_size(file)));
}

TEST_F(SyncTest, ANewFileIsSyncedWithItsFolder) {
    m_store->append(line("first"), kMonday, true);
    EXPECT_TRUE(waitUntil([this] { return m_disk.synced(m_folder.path()) > 0; }));
}

/// Takes all descriptors that the process may open, as connections can.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &m_limit);
        m_taken.emplace_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        constexpr rlim_t kMore = 8;
        const rlimit few{static_cast<rlim_t>(m_taken.front().get()) + kMore, m_limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        takeAll();
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_limit); }
    NoDescriptors(const NoDescriptors &) = delete;
    NoDescriptors &operator=(const NoDescriptors &) = delete;

    /// Also those that were closed meanwhile.
    void takeAll() {
        for (UniqueFd more = another(); more.isOpen(); more = another()) {
            m_taken.push_back(std::move(more));
        }
    }

private:
    UniqueFd another() { return UniqueFd(fcntl(m_taken.front().get(), F_DUPFD_CLOEXEC, 0)); }

    rlimit m_limit{};
    std::vector<UniqueFd> m_taken;
};

TEST_F(SyncTest, ANewFileAndItsFolderAreSyncedWithoutADescriptorLeft) {
    const NoDescriptors none;
    ASSERT_EQ(m_store->append(line("first"), kMonday, true).stored, 1U);
    EXPECT_TRUE(waitUntil([this] { return m_disk.synced(m_folder.path()) > 0; }));
    EXPECT_TRUE(isSynced(kMonday));
    EXPECT_EQ(m_store->unsynced(), 0U);
}

TEST_F(SyncTest, LosesNoDescriptorToWhoTakesAllOthers) {
    NoDescriptors none;
    for (int i = 0; i < 50; ++i) {
        m_disk.reset();
        for (int j = 0; j < 3; ++j) {
            ASSERT_EQ(m_store->append(line("urgent"), kMonday, true).stored, 1U) << i;
            ASSERT_TRUE(waitUntil([&] {
                none.takeAll();
                return isSynced(kMonday) && m_disk.synced(m_folder.path()) > 0;
            })) << i;
        }
        // The next event makes another file.
        std::filesystem::remove(m_store->path(logFileName(kMonday)));
    }
    EXPECT_EQ(m_store->unsynced(), 0U);
}

// What the kernel could not write it takes for clean, and syncs no more.
TEST_F(SyncTest, CountsWhatAFailedSyncMayHaveLost) {
    ::testing::internal::CaptureStderr();
    m_disk.stretchWaits = true;
    m_disk.failures = 1'000'000;
    m_store->append(line("one") + line("two"), kMonday, true);
    EXPECT_TRUE(waitUntil([this] { return m_store->unsynced() == 2; }));
    m_store->append(line("three"), kMonday, true);
    EXPECT_TRUE(waitUntil([this] { return m_store->unsynced() == 3; }));
    m_disk.failures = 0;
    m_store->append(line("four"), kMonday, true);
    // The folder's turn comes once more, too: the file was new.
    EXPECT_TRUE(waitUntil([this] { return m_disk.synced(m_folder.path()) > 0; }));
    m_store->append(line("five"), kTuesday, true);
    EXPECT_TRUE(isSyncedSoon(kTuesday));
    EXPECT_EQ(m_store->unsynced(), 3U);
    m_store.reset();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<3>Events cannot be written to disk: Input/output error\n"
              "<5>Events are written to disk again; 3 events stored before that may be "
              "lost if the machine stops\n");
}

/// The events are those of messages.
class SyncCollectorTest : public SyncTest {
protected:
    SyncCollectorTest() { m_disk.stretchWaits = true; }
    void receive(int severity) {
        m_collector.beginTurn();
        m_collector.receive("<" + std::to_string(8 * 16 + severity) + ">x", kRouter);
        m_collector.endTurn();
    }
    [[nodiscard]] bool isAllSynced() {
        const std::filesystem::path file = m_store->path(m_store->fileNames()->back());
        return m_disk.synced(file) == static_cast<off_t>(std::filesystem::file_size(file));
    }

    NotificationQueue m_notifications;
    HostNames m_names;
    Counters m_counters;
    Actions m_actions{[](const CommandRunner::Command & /*command*/) {},
                      [](const MailMessage & /*mail*/) {}, m_counters};
    Collector m_collector{*m_store, m_notifications, m_names, m_actions, m_counters};
};

TEST_F(SyncCollectorTest, SeveritiesOfCriticalAndWorseAreUrgent) {
    for (int severity = 0; severity <= 2; ++severity) {
        for (int harmless = 3; harmless <= 7; ++harmless) {
            receive(harmless);
        }
        EXPECT_FALSE(isAllSynced());
        receive(severity);
        EXPECT_TRUE(waitUntil([this] { return isAllSynced(); })) << severity;
    }
}

TEST_F(SyncCollectorTest, SoAreEventsThatActionsSet) {
    const Dictionary reaction{{"Type", "Critical"}, {"Format", "$message"}};
    m_actions.configure({{"actionsArray", Array{Dictionary{{"setEvent", reaction}}}}});
    receive(7);
    EXPECT_EQ(m_counters.eventsSet, 1U);
    EXPECT_TRUE(waitUntil([this] { return isAllSynced(); }));
}

TEST_F(SyncTest, ARewrittenFileIsOnTheDiskBeforeItTakesItsPlace) {
    const std::string gone = line("gone");
    m_store->append(gone + line("stays"), kMonday, false);
    const std::string name = logFileName(kMonday);
    {
        const MutexLock lock(m_store->editLock());
        const UniqueFd file = openLogFile(m_store->path(name));
        std::vector<ByteRange> ranges{{0, gone.size()}};
        // Each round of copying leaves something new behind it. What is left after the last one is
        // synced while nobody can append.
        int rounds = 0;
        m_disk.whileCopyIsSynced = [this, &rounds] {
            if (++rounds <= 5) {
                m_store->append(line("new"), kMonday, false);
            }
        };
        ASSERT_TRUE(m_store->cutOut(name, file, ranges));
        EXPECT_EQ(rounds, 6);
    }
    EXPECT_THAT(m_disk.replaced(), ElementsAre(name));
    EXPECT_THAT(m_disk.mistakes(), IsEmpty());
}

TEST_F(SyncTest, SettingsAreOnTheDiskBeforeTheyTakeTheirPlace) {
    SettingsFile settings(m_folder.path() / "Quorbel.ini", nullptr);
    ASSERT_EQ(settings.save({{"dateFormat", "HH"}}), std::nullopt);
    EXPECT_THAT(m_disk.replaced(), ElementsAre("Quorbel.ini"));
    EXPECT_THAT(m_disk.mistakes(), IsEmpty());
}

}  // namespace
}  // namespace quorbel
