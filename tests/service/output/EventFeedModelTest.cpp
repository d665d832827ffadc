#include "service/output/FeedModel.h"
#include "service/output/SystemSteps.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
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

INSTANTIATE_TEST_SUITE_P(AsEach, EventFeedModelTest, ::testing::Bool());

}  // namespace
}  // namespace quorbel
