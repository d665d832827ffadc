#include "service/output/FeedModel.h"
#include "service/output/SystemSteps.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <random>

namespace quorbel {
namespace {

using testing::FeedLife;
using testing::FeedOutcome;
using ::testing::IsEmpty;
using testing::seed;
using testing::syncsNotAtAll;
using testing::systemSteps;
using testing::TemporaryFolder;

/// A life in a process of its own; true when it came to its end or was ended at a step.
bool inProcess(const std::function<void()> &life) {
    const pid_t child = ::fork();
    if (child == 0) {
        syncsNotAtAll = true;
        life();
        ::_exit(0);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

struct EventFeedModelTest : ::testing::TestWithParam<bool> {
    EventFeed::Settings settings{"one", GetParam(), true};
};

/// Lives that end anywhere, one after the other over the same folder.
void live(const TemporaryFolder &folder, const EventFeed::Settings &settings, std::mt19937 &chance,
          bool withFaults) {
    constexpr int kLives = 12;
    constexpr int kSteps = 60;
    for (int life = 0; life < kLives; ++life) {
        const auto lifeSeed = static_cast<unsigned>(chance());
        const long end = static_cast<long>(chance() % 1500);
        const long fault = withFaults ? static_cast<long>(chance() % 300) : -1;
        const int error = std::array{ENOSPC, EMFILE, EIO}.at(chance() % 3);
        ASSERT_TRUE(inProcess([&] {
            FeedLife one(folder.path(), settings, lifeSeed, [&] {
                systemSteps() = {true, end, fault, static_cast<long>(lifeSeed % 40), error};
            });
            for (int step = 0; step < kSteps; ++step) {
                one.step();
            }
        }));
    }
    ASSERT_TRUE(inProcess([&] {
        FeedLife last(folder.path(), settings, 1, [] {});
        ::_exit(last.drain() ? 0 : 1);
    }));
}

void check(const TemporaryFolder &folder, bool kept) {
    const FeedOutcome outcome(folder.path());
    EXPECT_GT(outcome.byLine.size(), 50);
    EXPECT_THAT(outcome.lost(false), IsEmpty());
    if (kept) {
        EXPECT_THAT(outcome.contradictions, IsEmpty());
        EXPECT_THAT(outcome.twice(), IsEmpty());
    }
}

void run(const EventFeed::Settings &settings, bool withFaults) {
    constexpr int kRounds = 6;
    std::mt19937 chance(seed());
    for (int round = 0; round < kRounds && !::testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const TemporaryFolder folder;
        live(folder, settings, chance, withFaults);
        check(folder, settings.kept);
    }
}

TEST_P(EventFeedModelTest, losesNothingWhereverTheProcessEnds) {
    run(settings, false);
}

TEST_P(EventFeedModelTest, losesNothingWhateverFails) {
    run(settings, true);
}

/// What goes before it was sent is counted, wherever the process ends meanwhile.
TEST_P(EventFeedModelTest, countsWhatIsRemovedWhereverTheProcessEnds) {
    constexpr int kLines = 10;
    constexpr long kMostSteps = 60;
    bool cameToItsEnd = false;
    for (long end = 0; end < kMostSteps && !cameToItsEnd; ++end) {
        const TemporaryFolder folder;
        const std::filesystem::path reached = folder.path() / "reached";
        ASSERT_TRUE(inProcess([&] {
            LogStore store(folder.path() / "library");
            store.prepare();
            const EventFeed feed(store, folder.path() / "outputs", settings);
            std::string lines;
            for (int i = 0; i < kLines; ++i) {
                lines += "1700000000,User.Debug,h,line " + std::to_string(i) + "\r\n";
            }
            store.append(lines, 1700000000, false);
            const std::string name = logFileName(1700000000);
            const UniqueFd file = openLogFile(store.path(name));
            systemSteps() = {true, end, -1, 0, 0};
            const MutexLock lock(store.editLock());
            const bool isCut = store.cutOut(name, file, {{0, lines.size() / 2}});
            systemSteps() = {};
            folder.write("reached", isCut ? "yes" : "no");
        }));
        cameToItsEnd = readFile(reached).has_value();
        LogStore store(folder.path() / "library");
        store.prepare();
        EventFeed feed(store, folder.path() / "outputs", settings);
        const auto piece = feed.take(1U << 20U);
        EXPECT_EQ((piece ? piece->count : 0) + feed.removedUnsent(), kLines) << end;
        EXPECT_EQ(readFile(reached).value_or("yes"), "yes");
    }
    EXPECT_TRUE(cameToItsEnd);
}

INSTANTIATE_TEST_SUITE_P(AsEach, EventFeedModelTest, ::testing::Bool());

}  // namespace
}  // namespace quorbel
