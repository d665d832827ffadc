// Whatever is lost, restarted or replaced on the way, the window ends up with what the log files
// hold.

#include "core/NoticeFollowerFixture.h"
#include "support/Seed.h"

#include <filesystem>
#include <iterator>
#include <random>

namespace quorbel {
namespace {

using testing::add;
using testing::Events;
using testing::NoticeFollowerTest;

/// Everything that can happen, at random.
class NoticeFollowerModelTest : public NoticeFollowerTest {
protected:
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }
    bool chance(int percent) { return upTo(99) < percent; }
    void seed(unsigned value) { m_random.seed(value); }

    void happen() {
        switch (upTo(13)) {
            case 0:
            case 1:
            case 2:
            case 3: {
                std::vector<std::string> messages;
                for (int count = upTo(6); count >= 0; --count) {
                    messages.emplace_back(1, static_cast<char>('a' + upTo(3)));
                }
                arrive(messages);
                break;
            }
            case 4:
            case 5:
            case 6:
                tellSingle(chance(85));
                break;
            case 7:
            case 8:
                tellBatch(chance(85), static_cast<std::size_t>(upTo(500)));
                break;
            case 9:
                if (chance(70)) {
                    tellCheckpoint();
                }
                break;
            case 10:
                seconds += chance(20) ? 86400 : upTo(1);
                window.takesMany = chance(70);
                break;
            case 11:
                interrupt();
                break;
            default:
                edit();
        }
    }
    /// The bus goes, or the service does.
    void interrupt() {
        follower->serviceWent();
        const bool isEnd = chance(50);
        for (int count = upTo(4); count > 0; --count) {
            arrive({"while away", "b"});
            if (chance(50)) {
                queue->drop();
            }
        }
        if (isEnd) {
            startService();
            arrive({"c"});
        }
        follower->askedToListen();
        tellSingle(chance(50));
        answer();
    }
    /// The service removes old events, or the window deletes one.
    void edit() {
        const Events events = logged();
        if (events.empty() || chance(50)) {
            return;
        }
        const auto chosen = std::next(events.begin(), upTo(static_cast<int>(events.size()) - 1));
        if (chance(70) && !chosen->first.starts_with(std::to_string(seconds))) {
            remove(chosen->first, chance(80));
        } else if (const auto mine = window.listed.find(chosen->first);
                   mine != window.listed.end() && mine->second == chosen->second) {
            // All copies of it, so that none is on its way.
            add(window.listed, chosen->first, -cut(chosen->first));
        }
    }

private:
    std::mt19937 m_random;
};

TEST_F(NoticeFollowerModelTest, TheWindowEndsUpWithWhatTheLogHolds) {
    const unsigned first = testing::seed();
    for (unsigned round = 0; round < 20; ++round) {
        SCOPED_TRACE("seed " + std::to_string(first + round));
        seed(first + round);
        seconds = 1'700'000'000;
        for (const std::string &name : listFolder(folder.path())) {
            std::filesystem::remove(folder.path() / name);
        }
        startService();
        together.least = static_cast<std::uint64_t>(1 + upTo(100));
        together.shares = {.threads = static_cast<std::size_t>(1 + upTo(2)),
                           .bytes = static_cast<std::uint64_t>(1 + upTo(100))};
        arrive({"x", "y"});
        window.listed.clear();
        open();
        if (chance(50)) {
            arrive({"z"});
        }
        connect();
        for (int step = 0; step < 300; ++step) {
            happen();
            ASSERT_FALSE(HasFatalFailure());
        }
        tellAll();
        ASSERT_EQ(window.listed, logged());
    }
    // It was not all too easy, nor is the whole log read at every turn.
    EXPECT_GT(window.told, 1000);
    EXPECT_GT(window.read, 1000);
    EXPECT_GT(window.timesAnew, 20);
    EXPECT_GT(window.timesTogether, 500);
}

}  // namespace
}  // namespace quorbel
