#include "core/HourlyArrivals.h"
#include "support/ScopedVariable.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <ctime>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace quorbel {
namespace {

using Hour = HourlyArrivals::Hour;
using Classes = std::bitset<kSeverityClassCount>;

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;

/// A place on earth, while the object lives.
class Zone {
public:
    explicit Zone(const char *name) : m_variable("TZ", name) { tzset(); }
    ~Zone() { unsetenv("TZ"), tzset(); }
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;

private:
    testing::ScopedVariable m_variable;
};

Classes only(std::size_t severityClass) {
    Classes classes;
    classes.set(severityClass);
    return classes;
}

/// What a calendar on the wall would say: "2026-10-25 02".
std::string wall(std::int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm local{};
    localtime_r(&moment, &local);
    char text[32];
    strftime(text, sizeof text, "%Y-%m-%d %H", &local);
    return text;
}

TEST(HourlyArrivalsTest, HoursOfADayFollowOneAnother) {
    const Zone zone("UTC");
    const Hour first = HourlyArrivals::hourOf(1'795'219'200);  // 2026-11-21 00:00
    EXPECT_EQ(first % 24, 0);
    for (std::int64_t hour = 0; hour < 100; ++hour) {
        EXPECT_EQ(HourlyArrivals::hourOf(1'795'219'200 + hour * kHour + 3599), first + hour);
    }
    EXPECT_EQ(HourlyArrivals::hourOf(-1), -1);
}

TEST(HourlyArrivalsTest, ADoubledHourIsOneAndAMissingOneStaysEmpty) {
    const Zone zone("Europe/Berlin");
    const std::int64_t putBack = 1'792'890'000;     // 2026-10-25 01:00 UTC, when it was three
    const std::int64_t putForward = 1'774'746'000;  // 2026-03-29 01:00 UTC, when it was two
    HourlyArrivals autumn;
    const std::int64_t noon = putBack + 11 * kHour;
    autumn.add(only(3), putBack - 1, noon);
    autumn.add(only(3), putBack, noon);
    autumn.add(only(3), putBack + kHour, noon);
    const Hour two = HourlyArrivals::hourOf(putBack);
    EXPECT_EQ(HourlyArrivals::hourOf(putBack - 1), two);
    EXPECT_EQ(autumn.count(3, two), 2U);
    EXPECT_EQ(autumn.count(3, two + 1), 1U);

    HourlyArrivals spring;
    spring.add(only(3), putForward - 1, putForward + kHour);
    spring.add(only(3), putForward, putForward + kHour);
    const Hour one = HourlyArrivals::hourOf(putForward - 1);
    EXPECT_EQ(spring.count(3, one), 1U);
    EXPECT_EQ(spring.count(3, one + 1), 0U);
    EXPECT_EQ(spring.count(3, one + 2), 1U);
}

TEST(HourlyArrivalsTest, CountsInEachClassThatAnEventNames) {
    HourlyArrivals arrivals;
    Classes both = only(1);
    both.set(5);
    arrivals.add(both, 1'795'219'200, 1'795'219'300);
    const Hour hour = HourlyArrivals::hourOf(1'795'219'200);
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        EXPECT_EQ(arrivals.count(i, hour), i == 1 || i == 5 ? 1U : 0U);
    }
}

TEST(HourlyArrivalsTest, KnowsWhenTheLastOneCame) {
    HourlyArrivals arrivals;
    EXPECT_FALSE(arrivals.latest());
    const std::int64_t now = 1'795'219'200;
    arrivals.add(only(0), now - 100 * 24 * kHour, now);
    EXPECT_EQ(arrivals.latest(), now - 100 * 24 * kHour);
    arrivals.add(only(0), now - 5, now);
    arrivals.add(only(0), now - 7, now);
    arrivals.add(only(0), now + kHour, now);  // by a clock that is wrong
    EXPECT_EQ(arrivals.latest(), now - 5);
    // The clock is put back by an hour.
    arrivals.add(only(0), now - kHour, now - kHour + 1);
    EXPECT_EQ(arrivals.latest(), now - kHour);
}

// Against a map of all that ever came, by what a calendar says, over days in which the clocks
// change: old log files and new events, in any order.
class HourlyArrivalsModelTest
    : public ::testing::TestWithParam<std::pair<const char *, std::int64_t>> {};

TEST_P(HourlyArrivalsModelTest, AgreesWithAPlainModel) {
    const Zone zone(GetParam().first);
    std::mt19937_64 random(testing::seed());
    const auto below = [&random](std::int64_t limit) {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
    };
    HourlyArrivals arrivals;
    std::map<std::pair<std::string, std::size_t>, std::uint64_t> model;
    std::int64_t now = GetParam().second - 40 * kHour;
    for (int step = 0; step < 20'000; ++step) {
        now += below(20) == 0 ? below(40 * kMinute) : 0;
        const std::int64_t seconds = below(4) == 0 ? now - below(80 * kHour) : now + below(90) - 60;
        const auto severityClass = static_cast<std::size_t>(below(kSeverityClassCount));
        arrivals.add(only(severityClass), seconds, now);
        if (HourlyArrivals::hourOf(seconds) >
            HourlyArrivals::hourOf(now) - HourlyArrivals::kHours) {
            ++model[{wall(seconds), severityClass}];
        }
        if (step % 100 != 0) {
            continue;
        }
        // Each quarter of an hour of the two days: all hours that the wall showed.
        std::map<Hour, std::string> hours;
        for (std::int64_t at = now; at > now - 60 * kHour; at -= 15 * kMinute) {
            hours.emplace(HourlyArrivals::hourOf(at), wall(at));
        }
        const Hour current = HourlyArrivals::hourOf(now);
        for (Hour hour = current; hour > current - HourlyArrivals::kHours; --hour) {
            for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
                const auto known = hours.find(hour);
                const auto wanted =
                    known == hours.end() ? model.end() : model.find({known->second, i});
                ASSERT_EQ(arrivals.count(i, hour), wanted == model.end() ? 0 : wanted->second)
                    << "hour " << hour - current << " class " << i << " at " << wall(now);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Zones, HourlyArrivalsModelTest,
    ::testing::Values(std::pair("UTC", std::int64_t{1'795'219'200}),
                      std::pair("Europe/Berlin", std::int64_t{1'792'890'000}),
                      std::pair("Europe/Berlin", std::int64_t{1'774'746'000}),
                      std::pair("Australia/Lord_Howe", std::int64_t{1'775'314'800}),
                      std::pair("America/New_York", std::int64_t{1'793'512'800}),
                      std::pair("Asia/Kathmandu", std::int64_t{1'795'219'200})));

}  // namespace
}  // namespace quorbel
