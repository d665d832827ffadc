#include "service/actions/MatchThreshold.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using Time = MatchThreshold::Clock::time_point;

IpAddress host(unsigned number) {
    return IpAddress::parse("10." + std::to_string(number / 65536) + '.' +
                            std::to_string(number / 256 % 256) + '.' + std::to_string(number % 256))
        .value();
}

/// The rule to the letter, with all that ever came.
class Model {
public:
    explicit Model(const ActionThreshold &threshold) : m_threshold(threshold) {}

    bool isReachedBy(unsigned host, Time now) {
        Host &counted = m_hosts[m_threshold.perHost ? host : 0];
        counted.times.push_back(now);
        const minutes span(m_threshold.minutes);
        const auto within =
            std::ranges::count_if(counted.times, [&](Time time) { return now - time < span; });
        if (within < m_threshold.matches || (counted.acted && now - *counted.acted < span)) {
            return false;
        }
        counted.acted = now;
        return true;
    }

private:
    struct Host {
        std::vector<Time> times;
        std::optional<Time> acted;
    };
    ActionThreshold m_threshold;
    std::map<unsigned, Host> m_hosts;
};

struct MatchThresholdTest : ::testing::Test {
    /// At which of the matches, one each so long after the last one, it is reached.
    static std::vector<int> reached(MatchThreshold &threshold, int matches, milliseconds apart,
                                    Time &now) {
        std::vector<int> at;
        for (int i = 1; i <= matches; ++i) {
            if (threshold.isReachedBy(host(1), now)) {
                at.push_back(i);
            }
            now += apart;
        }
        return at;
    }
    Time now = MatchThreshold::Clock::now();
};

TEST_F(MatchThresholdTest, IsReachedAtTheLastOfSoManyMatches) {
    MatchThreshold threshold({5, 10, false});
    EXPECT_EQ(reached(threshold, 5, seconds(1), now), std::vector{5});
}

TEST_F(MatchThresholdTest, DoesNotCountWhatIsAsOldAsItsTime) {
    MatchThreshold threshold({3, 1, false});
    EXPECT_FALSE(threshold.isReachedBy(host(1), now));
    EXPECT_FALSE(threshold.isReachedBy(host(1), now + seconds(30)));
    EXPECT_FALSE(threshold.isReachedBy(host(1), now + seconds(60)));
    EXPECT_TRUE(threshold.isReachedBy(host(1), now + seconds(90) - milliseconds(1)));
}

TEST_F(MatchThresholdTest, IsReachedOnceInItsTimeWhileMatchesGoOn) {
    MatchThreshold threshold({5, 2, false});
    EXPECT_EQ(reached(threshold, 600, seconds(1), now), (std::vector{5, 125, 245, 365, 485}));
    // Too slow for it to be reached ever.
    MatchThreshold slow({5, 2, false});
    EXPECT_EQ(reached(slow, 100, seconds(30), now), std::vector<int>{});
    MatchThreshold justEnough({5, 2, false});
    EXPECT_EQ(reached(justEnough, 10, milliseconds(29'999), now), (std::vector{5, 10}));
}

TEST_F(MatchThresholdTest, OfOneMatchLetsOnceInItsTimeThrough) {
    MatchThreshold threshold({1, 1, false});
    EXPECT_EQ(reached(threshold, 130, seconds(1), now), (std::vector{1, 61, 121}));
}

TEST_F(MatchThresholdTest, CountsEachHostForItselfWhenItIsToldTo) {
    MatchThreshold each({2, 1, true});
    EXPECT_FALSE(each.isReachedBy(host(1), now));
    EXPECT_FALSE(each.isReachedBy(host(2), now));
    EXPECT_TRUE(each.isReachedBy(host(1), now));
    EXPECT_TRUE(each.isReachedBy(host(2), now));
    EXPECT_FALSE(each.isReachedBy(host(1), now + seconds(30)));
    EXPECT_EQ(each.hosts(), 2U);
    MatchThreshold all({2, 1, false});
    EXPECT_FALSE(all.isReachedBy(host(1), now));
    EXPECT_TRUE(all.isReachedBy(host(2), now));
    EXPECT_EQ(all.hosts(), 1U);
}

TEST_F(MatchThresholdTest, CountsAsAPlainModelDoes) {
    std::mt19937 random(testing::seed());
    const auto upTo = [&random](int most) {
        return std::uniform_int_distribution(1, most)(random);
    };
    int acted = 0;
    for (int round = 0; round < 300; ++round) {
        const ActionThreshold rule{upTo(12), upTo(5), upTo(2) == 1};
        MatchThreshold threshold(rule);
        Model model(rule);
        // From bursts to a match in minutes, now and then exactly on the limit, and long pauses.
        const std::array<milliseconds, 5> pauses{milliseconds(0), milliseconds(700), seconds(20),
                                                 minutes(rule.minutes), minutes(2 * 24 * 60)};
        const int hosts = upTo(6);
        for (int i = 0; i < 300; ++i) {
            const auto sender = static_cast<unsigned>(upTo(hosts));
            const bool isReached = threshold.isReachedBy(host(sender), now);
            ASSERT_EQ(isReached, model.isReachedBy(sender, now))
                << "round " << round << ", match " << i << ", of " << rule.matches << " in "
                << rule.minutes;
            acted += isReached ? 1 : 0;
            const int pause = upTo(100);
            now += pauses.at(pause <= 40   ? 0
                             : pause <= 75 ? 1
                             : pause <= 95 ? 2
                             : pause <= 99 ? 3
                                           : 4);
        }
        EXPECT_EQ(threshold.forgotten(), 0U);
    }
    EXPECT_GT(acted, 1000);
}

TEST_F(MatchThresholdTest, ForgetsTheHostThatWasSilentLongestWhenThereAreTooMany) {
    MatchThreshold threshold({2, 60, true});
    const auto most = static_cast<unsigned>(MatchThreshold::kMostHosts);
    for (unsigned i = 0; i < most; ++i) {
        EXPECT_FALSE(threshold.isReachedBy(host(i), now));
    }
    EXPECT_EQ(threshold.hosts(), most);
    EXPECT_EQ(threshold.forgotten(), 0U);
    // It has matched again, so another one was silent longest.
    EXPECT_TRUE(threshold.isReachedBy(host(0), now));
    EXPECT_FALSE(threshold.isReachedBy(host(most), now));
    EXPECT_EQ(threshold.forgotten(), 1U);
    EXPECT_EQ(threshold.hosts(), most);
    EXPECT_TRUE(threshold.isReachedBy(host(2), now));
    EXPECT_FALSE(threshold.isReachedBy(host(1), now)) << "as if it had never matched";
    EXPECT_EQ(threshold.forgotten(), 2U);
}

TEST_F(MatchThresholdTest, KeepsSoManyMatchesAtMost) {
    MatchThreshold threshold({1000, 1440, true});
    std::mt19937 random(testing::seed());
    for (int i = 0; i < 2'000'000; ++i) {
        threshold.isReachedBy(host(static_cast<unsigned>(random() % 500)), now);
        now += milliseconds(1);
        ASSERT_LE(threshold.times(), MatchThreshold::kMostTimes);
    }
    EXPECT_GT(threshold.times(), MatchThreshold::kMostTimes - 1001);
    EXPECT_GT(threshold.forgotten(), 0U);
    // Whoever floods it alone is no more than what it takes to act.
    MatchThreshold flooded({1000, 1440, true});
    for (int i = 0; i < 100'000; ++i) {
        flooded.isReachedBy(host(1), now);
    }
    EXPECT_EQ(flooded.times(), 1000U);
    EXPECT_EQ(flooded.forgotten(), 0U);
}

TEST_F(MatchThresholdTest, LetsGoOfHostsThatDoNotCountAnyMore) {
    MatchThreshold threshold({3, 1, true});
    for (unsigned i = 0; i < 5000; ++i) {
        threshold.isReachedBy(host(i), now);
    }
    EXPECT_EQ(threshold.hosts(), 5000U);
    threshold.isReachedBy(host(9999), now + seconds(60));
    EXPECT_EQ(threshold.hosts(), 1U);
    EXPECT_EQ(threshold.times(), 1U);
    EXPECT_EQ(threshold.forgotten(), 0U);
}

}  // namespace
}  // namespace quorbel
