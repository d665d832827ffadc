#include "platform/Files.h"
#include "service/store/ClockTrust.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <string>

namespace quorbel {
namespace {

constexpr std::int64_t kThen = 1'700'000'000;
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
constexpr std::int64_t kYear = 365 * kDay;
constexpr std::int64_t kUp = 1000;

struct ClockTrustTest : ::testing::Test {
    [[nodiscard]] std::filesystem::path file() const { return folder.path() / "clock"; }
    /// What is said of a clock that nobody synchronises.
    bool believes(std::int64_t time, std::int64_t running) {
        return trust->believes({time, running, false}, newest);
    }
    void restart() { trust.emplace(file()); }

    testing::TemporaryFolder folder;
    std::optional<std::int64_t> newest = kThen;
    std::optional<ClockTrust> trust{file()};
};

TEST_F(ClockTrustTest, BelievesAClockThatGoesOn) {
    EXPECT_TRUE(believes(kThen, kUp));
    EXPECT_TRUE(believes(kThen + 60, kUp + 60));
    // Asleep for months; the clock that nobody sets counts that.
    EXPECT_TRUE(believes(kThen + kYear, kUp + kYear));
    EXPECT_TRUE(believes(kThen + kYear + kHour, kUp + kYear));
}

TEST_F(ClockTrustTest, DoubtsAJumpAheadUntilTheClockIsSetRight) {
    EXPECT_TRUE(believes(kThen, kUp));
    EXPECT_FALSE(believes(kThen + 60 + 2 * kHour, kUp + 60));
    EXPECT_EQ(trust->ahead(), 2 * kHour);
    EXPECT_FALSE(believes(kThen + 120 + 2 * kHour, kUp + 120));
    EXPECT_TRUE(believes(kThen + 180, kUp + 180));
    EXPECT_EQ(trust->ahead(), 0);
}

TEST_F(ClockTrustTest, BelievesAClockThatIsSetBack) {
    EXPECT_TRUE(believes(kThen, kUp));
    EXPECT_TRUE(believes(kThen - kYear, kUp + 60));
    EXPECT_FALSE(believes(kThen, kUp + 120));
}

TEST_F(ClockTrustTest, BelievesASynchronisedClockWhateverItShows) {
    EXPECT_TRUE(believes(kThen, kUp));
    EXPECT_TRUE(trust->believes({kThen + kYear, kUp + 60, true}, newest));
    EXPECT_TRUE(believes(kThen + kYear + 60, kUp + 120));
}

TEST_F(ClockTrustTest, MeasuresTheFirstTimeByTheNewestStoredEvent) {
    EXPECT_TRUE(believes(kThen + 3 * kDay, kUp));
    folder.write("clock", "");
    restart();
    EXPECT_FALSE(believes(kThen + 3 * kDay + 1, kUp));
    folder.write("clock", "");
    restart();
    newest.reset();
    EXPECT_TRUE(believes(kThen + kYear, kUp));
}

TEST_F(ClockTrustTest, RemembersADoubtAboutTheFirstTime) {
    EXPECT_FALSE(believes(kThen + kYear, kUp));
    restart();
    newest = kThen + kYear;  // stored under a wrong date
    EXPECT_FALSE(believes(kThen + kYear + 60, kUp + 60));
    EXPECT_TRUE(believes(kThen + 120, kUp + 120));
}

// Switched off for a long time, or a clock without a battery: that is not to be told apart.
TEST_F(ClockTrustTest, DoubtsALongSilenceAfterAStartUntilTheClockIsSynchronised) {
    EXPECT_TRUE(believes(kThen, kUp));
    restart();
    newest = kThen + kYear;  // stored under a wrong date
    EXPECT_FALSE(believes(kThen + kYear, 10));
    EXPECT_FALSE(believes(kThen + kYear + 60, 70));
    // Set right by hand: it was off for two days.
    EXPECT_TRUE(believes(kThen + 2 * kDay, 130));
    restart();
    EXPECT_FALSE(believes(kThen + kYear, 10));
    EXPECT_TRUE(trust->believes({kThen + kYear + 60, 70, true}, newest));
}

TEST_F(ClockTrustTest, BelievesAWeekendOffAndALongTimeWithoutTheService) {
    EXPECT_TRUE(believes(kThen, kUp));
    restart();
    EXPECT_TRUE(believes(kThen + 3 * kDay, 10));
    restart();
    // The machine itself ran all the time.
    EXPECT_TRUE(believes(kThen + kYear, 10 + kYear));
}

// On a machine without a source of time, nobody else would ever end it.
TEST_F(ClockTrustTest, BelievesAClockThatHasRunOnForAWeekWhateverTheRestarts) {
    EXPECT_TRUE(believes(kThen, kUp));
    std::int64_t time = kThen + kYear;
    std::int64_t days = 0;
    for (; days < 30; ++days, time += kDay) {
        restart();
        bool believed = false;
        for (std::int64_t hour = 0; hour <= 12; ++hour) {
            believed = believes(time + hour * kHour, 10 + hour * kHour);
        }
        if (believed) {
            break;
        }
    }
    // Half a day at a time.
    EXPECT_EQ(days, 13);
}

TEST_F(ClockTrustTest, BeginsAnewWithADoubtfulClockThatIsSetOnceMore) {
    EXPECT_TRUE(believes(kThen, kUp));
    EXPECT_FALSE(believes(kThen + kYear, kUp));
    EXPECT_FALSE(believes(kThen + kYear + 6 * kDay, kUp + 6 * kDay));
    EXPECT_FALSE(believes(kThen + 2 * kYear, kUp + 6 * kDay));
    EXPECT_FALSE(believes(kThen + 2 * kYear + 6 * kDay, kUp + 12 * kDay));
    EXPECT_TRUE(believes(kThen + 2 * kYear + 7 * kDay, kUp + 13 * kDay));
}

TEST_F(ClockTrustTest, DoesWithoutItsFile) {
    trust.emplace(folder.path() / "none" / "clock");
    EXPECT_TRUE(believes(kThen, kUp));
    EXPECT_FALSE(believes(kThen + kYear, kUp + 60));
}

TEST_F(ClockTrustTest, ReadsTheClocksOfTheMachine) {
    const ClockReading reading = readClocks();
    EXPECT_LE(std::abs(reading.time - std::time(nullptr)), 60);
    EXPECT_GT(reading.running, 0);
}

}  // namespace
}  // namespace quorbel
