#include "core/SpanMoments.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace quorbel {
namespace {

constexpr std::int64_t kHour = 3600;

/// Another time zone, while it lasts.
struct Zone {
    explicit Zone(const std::string &name) : variable("TZ", name) { tzset(); }
    ~Zone() = default;
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;

    testing::ScopedVariable variable;
};

struct SpanMomentsTest : ::testing::Test {
    ~SpanMomentsTest() override { tzset(); }
};

TEST_F(SpanMomentsTest, GoOnByMinutesAndDays) {
    const Zone zone("UTC");
    constexpr std::int64_t kDay = 24 * kHour;
    constexpr std::int64_t kMidnight = 20000 * kDay;
    constexpr std::int64_t kNow = kMidnight + 10 * kHour + 59;
    EXPECT_EQ(momentsOf(MovingSpan::kLastHour, kNow),
              (SpanMoments{kMidnight + 9 * kHour, std::nullopt}));
    EXPECT_EQ(momentsOf(MovingSpan::kLastDay, kNow),
              (SpanMoments{kMidnight - 14 * kHour, std::nullopt}));
    EXPECT_EQ(momentsOf(MovingSpan::kToday, kNow), (SpanMoments{kMidnight, kMidnight + kDay}));
    EXPECT_EQ(momentsOf(MovingSpan::kYesterday, kNow), (SpanMoments{kMidnight - kDay, kMidnight}));
}

TEST_F(SpanMomentsTest, KnowDaysThatAreShorterLongerOrWithoutAMidnight) {
    {
        const Zone zone("Europe/Berlin");
        // 2026-10-25: 25 hours from 2026-10-24 22:00 UTC on.
        EXPECT_EQ(momentsOf(MovingSpan::kToday, 1792926000),
                  (SpanMoments{1792879200, 1792879200 + 25 * kHour}));
        // 2026-03-29: 23 hours from 2026-03-28 23:00 UTC on.
        EXPECT_EQ(momentsOf(MovingSpan::kYesterday, 1774864800),
                  (SpanMoments{1774738800, 1774738800 + 23 * kHour}));
    }
    {
        const Zone zone("America/Sao_Paulo");
        // 2017-10-15 began at 1:00 there, 3:00 UTC.
        EXPECT_EQ(momentsOf(MovingSpan::kToday, 1508070000),
                  (SpanMoments{1508036400, 1508036400 + 23 * kHour}));
    }
}

TEST_F(SpanMomentsTest, NarrowAFilterAndLeaveNone) {
    const Zone zone("UTC");
    EventQuery query;
    query.host = "a";
    query.from = 5;
    query.spans.set(static_cast<std::size_t>(MovingSpan::kLastHour));
    query.spans.set(static_cast<std::size_t>(MovingSpan::kToday));
    const EventQuery at = queryAt(query, 100 * kHour);
    EXPECT_EQ(at.host, "a");
    EXPECT_TRUE(at.spans.none());
    EXPECT_EQ(at.from, 99 * kHour);
    EXPECT_EQ(at.until, 120 * kHour);
}

}  // namespace
}  // namespace quorbel
