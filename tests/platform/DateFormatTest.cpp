#include "platform/DateFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using ::testing::Optional;

constexpr double kMoment = 1700000000.0;  // 2023-11-14 22:13:20 UTC, a Tuesday

/// Makes a zone the local one until the end of the scope.
class LocalZone {
public:
    explicit LocalZone(const char *name) : m_before(icu::TimeZone::createDefault()) {
        icu::TimeZone *zone = icu::TimeZone::createTimeZone(name);
        EXPECT_NE(*zone, icu::TimeZone::getUnknown()) << name;
        icu::TimeZone::adoptDefault(zone);
    }
    ~LocalZone() { icu::TimeZone::adoptDefault(m_before); }
    LocalZone(const LocalZone &) = delete;
    LocalZone &operator=(const LocalZone &) = delete;

private:
    icu::TimeZone *m_before;
};

struct RenderCase {
    std::string_view setting;
    double seconds;
    std::string_view text;
};

TEST(DateFormatTest, Renders) {
    const LocalZone zone("UTC");
    const RenderCase cases[] = {
        {"", kMoment, "2023-11-14 22:13:20"},
        {"", 0.0, "1970-01-01 00:00:00"},
        {"", 0.999, "1970-01-01 00:00:00"},
        {"", -1.0, "1969-12-31 23:59:59"},
        {"", -0.5, "1969-12-31 23:59:59"},
        {"yyyy-MM-dd HH:mm", kMoment, "2023-11-14 22:13"},
        {"d/M/yy h:mm:ss AM/PM", kMoment, "14/11/23 10:13:20 PM"},
        {"hh:mm AM/PM", 3600.0, "01:00 AM"},
        {"AM/PM-AM/PM h", kMoment, "PM-PM 10"},
        {"'AM/PM' y", kMoment, "a 2023"},
        {"y 'o''clock' é", kMoment, "2023 o'clock é"},
        {"EEEE", kMoment, "Tue"},
        {"ss.SSS", 1.25, "01.250"},
        {" ", kMoment, " "},
    };
    for (const RenderCase &entry : cases) {
        EXPECT_EQ(DateFormat(entry.setting).render(entry.seconds), entry.text) << entry.setting;
    }
}

TEST(DateFormatTest, UsesTheLocalZone) {
    const LocalZone zone("Europe/Berlin");
    const DateFormat format("");
    EXPECT_EQ(format.render(kMoment), "2023-11-14 23:13:20");
    EXPECT_THAT(format.parse("2023-11-14 23:13:20"), Optional(kMoment));
    EXPECT_THAT(format.parse("2023-07-14 12:00:00"), Optional(1689328800.0));
    EXPECT_EQ(format.parse("2023-03-26 02:30:00"), std::nullopt);  // skipped by the clocks
}

struct ParseCase {
    std::string_view setting;
    std::string_view text;
    std::optional<double> seconds;
};

TEST(DateFormatTest, Parses) {
    const LocalZone zone("UTC");
    const ParseCase cases[] = {
        {"", "2023-11-14 22:13:20", kMoment},
        {"", "1969-12-31 23:59:59", -1.0},
        {"", "", std::nullopt},
        {"", "2023-11-14 22:13:20 ", std::nullopt},
        {"", "2023-11-14 22:13:20x", std::nullopt},
        {"", "2023-11-14 22:13", std::nullopt},
        {"", "2023-02-29 00:00:00", std::nullopt},
        {"", "2023-13-01 00:00:00", std::nullopt},
        {"", "2023-11-14 24:00:00", std::nullopt},
        {"", "2023-11-14 22:60:20", std::nullopt},
        {"", "1700000000", std::nullopt},
        {"", "2023-11-14 22:13:20\xFF", std::nullopt},
        {"", "\xFF", std::nullopt},
        {"hh:mm AM/PM", "10:13 PM", 80000.0 - 20.0},
        {"hh:mm AM/PM", "13:13 PM", std::nullopt},
        {"hh:mm AM/PM", "10:13", std::nullopt},
        {"dd.MM.yyyy", "14.11.2023", 1699920000.0},
        {"HH:mm:ss", "00:00:07", 7.0},
        {"ss.SSS", "01.250", 1.25},
        {"'only words'", "only words", 0.0},
        {"'only words'", "other words", std::nullopt},
    };
    for (const ParseCase &entry : cases) {
        EXPECT_EQ(DateFormat(entry.setting).parse(entry.text), entry.seconds) << entry.text;
    }
}

TEST(DateFormatTest, TakesWhatThePatternLacksFromTheEpoch) {
    const LocalZone zone("America/New_York");
    const DateFormat timeOnly("HH:mm");
    EXPECT_THAT(timeOnly.parse("00:00"), Optional(18000.0));  // 1970-01-01 there
    (void)timeOnly.render(kMoment);                           // leaves no trace
    EXPECT_THAT(timeOnly.parse("00:00"), Optional(18000.0));
    EXPECT_THAT(DateFormat("dd/MM").parse("02/01"), Optional(18000.0 + 86400.0));
}

TEST(DateFormatTest, AllFormatsReadTwoDigitYearsAlike) {
    const LocalZone zone("UTC");
    const DateFormat first("d/M/yy");
    const DateFormat second("yy");
    EXPECT_THAT(first.parse("1/1/23"), Optional(1672531200.0));
    for (int year = 0; year < 100; ++year) {
        const std::string digits = {static_cast<char>('0' + year / 10),
                                    static_cast<char>('0' + year % 10)};
        EXPECT_EQ(first.parse("1/1/" + digits), second.parse(digits)) << digits;
    }
}

TEST(DateFormatTest, AnUnusablePatternRendersAndReadsNothing) {
    for (const char *setting : {"yyyy 'open", "'", "j", "yyyy-bogus", "HH:mm 'a' '"}) {
        const DateFormat format(setting);
        EXPECT_EQ(format.render(kMoment), "") << setting;
        EXPECT_EQ(format.parse("2023"), std::nullopt) << setting;
        EXPECT_EQ(format.parse(""), std::nullopt) << setting;
        EXPECT_EQ(format.roundTrip(1700000000), std::nullopt) << setting;
    }
}

TEST(DateFormatTest, MomentsBeyondTheCalendarAreTheNearestInIt) {
    const LocalZone zone("UTC");
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    for (const char *setting : {"", "G y D HH:mm:ss", "e ww YYYY", "hh AM/PM"}) {
        const DateFormat format(setting);
        EXPECT_NE(format.render(kInfinity), "");
        EXPECT_NE(format.render(-kInfinity), "");
        EXPECT_EQ(format.render(1e300), format.render(kInfinity));
        EXPECT_EQ(format.render(-1e300), format.render(-kInfinity));
        EXPECT_EQ(format.render(kNoNumber), format.render(0.0));
    }
    EXPECT_EQ(DateFormat("y-MM").render(kInfinity), "5828963-12");
    EXPECT_EQ(DateFormat("G y-MM").render(-kInfinity), "BCE 5838270-09");
    const DateFormat format("");
    const auto viaText = [&format](std::int64_t seconds) {
        return format.parse(format.render(static_cast<double>(seconds)));
    };
    for (const std::int64_t seconds :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min(),
          std::int64_t{253402300799}, std::int64_t{253402300800}}) {
        const std::optional<double> expected = viaText(seconds);
        const std::optional<std::int64_t> found = format.roundTrip(seconds);
        ASSERT_EQ(found.has_value(), expected.has_value()) << seconds;
        EXPECT_EQ(static_cast<double>(found.value_or(0)), expected.value_or(0.0)) << seconds;
    }
}

std::vector<std::string> patterns() {
    std::vector<std::string> all{"",
                                 "E HH",
                                 "G y-MM-dd h:mm",
                                 "mm:ss",
                                 "ss",
                                 "m",
                                 "HHmmss",
                                 "yyyyMMdd HHmm",
                                 "Hms",
                                 "yyyy-MM-dd HH:mm:ss.SSS",
                                 "A",
                                 "HH:mm b",
                                 "h:mm B",
                                 "HH:mm z",
                                 "yyyy-MM-dd HH:mm:ss Z",
                                 "HH 'Uhr' mm",
                                 "mm'1'ss",
                                 "mm mm",
                                 "mmm:sss",
                                 "ss:mm:HH dd",
                                 "y-DDD kk:mm",
                                 "YYYY-'W'ww-e HH:mm:ss",
                                 "YYYY ww e HH.mm.ss",
                                 "d/M/yy K:mm:ss",
                                 "Q y, MMM d h:mm:ss AM/PM",
                                 "F E W M y HH-mm-ss",
                                 "'no field'"};
    const std::vector<std::string> dates{"yyyy-MM-dd", "dd/MM/yyyy", "MM/dd/yyyy", "dd.MM.yyyy",
                                         "d/M/yy"};
    const std::vector<std::string> times{"HH:mm:ss", "HH:mm", "hh:mm:ss AM/PM", "h:mm:ss AM/PM",
                                         "hh:mm AM/PM"};
    all.insert(all.end(), dates.begin(), dates.end());
    all.insert(all.end(), times.begin(), times.end());
    for (const std::string &date : dates) {
        for (const std::string &time : times) {
            all.push_back(date);
            all.back().append(" ").append(time);
        }
    }
    return all;
}

/// Moments around the changes of the clocks, and anywhere.
std::vector<std::int64_t> moments(const icu::TimeZone &zone, std::mt19937_64 &random) {
    std::vector<std::int64_t> all;
    const auto offset = [&zone](std::int64_t seconds) {
        std::int32_t raw = 0;
        std::int32_t saving = 0;
        UErrorCode status = U_ZERO_ERROR;
        zone.getOffset(static_cast<double>(seconds) * 1000.0, 0, raw, saving, status);
        return raw + saving;
    };
    constexpr std::int64_t kStep = 7 * 86400;
    constexpr std::int64_t kFirst = -2000000000;
    constexpr std::int64_t kLast = 2200000000;
    for (std::int64_t before = kFirst; before < kLast; before += kStep) {
        std::int64_t low = before;
        std::int64_t high = before + kStep;
        if (offset(low) == offset(high) || random() % 8 != 0) {
            continue;
        }
        while (high - low > 1) {
            const std::int64_t middle = low + (high - low) / 2;
            (offset(middle) == offset(before) ? low : high) = middle;
        }
        for (const std::int64_t away : {0, 1, 59, 60, 899, 900, 1800, 3599, 3600, 5400, 7200}) {
            all.push_back(high + away);
            all.push_back(high - away);
        }
    }
    std::uniform_int_distribution<std::int64_t> anywhere(-5000000000, 260000000000);
    std::uniform_int_distribution<std::int64_t> recent(0, 2000000000);
    for (int count = 0; count < 60; ++count) {
        all.push_back(anywhere(random));
        const std::int64_t quarter = recent(random) / 900 * 900;
        for (const std::int64_t within : {450, 0, 59, 60, 899}) {
            all.push_back(quarter + within);
        }
    }
    return all;
}

class RoundTripTest : public ::testing::TestWithParam<const char *> {};

TEST_P(RoundTripTest, IsTheSameAsRenderingAndParsing) {
    const LocalZone zone(GetParam());
    const std::unique_ptr<icu::TimeZone> local(icu::TimeZone::createDefault());
    std::mt19937_64 random(20240229);
    for (const std::string &pattern : patterns()) {
        const DateFormat cached(pattern);
        const DateFormat plain(pattern);
        for (const std::int64_t moment : moments(*local, random)) {
            const std::string text = plain.render(static_cast<double>(moment));
            const std::optional<double> parsed = plain.parse(text);
            const std::optional<std::int64_t> found = cached.roundTrip(moment);
            ASSERT_EQ(found.has_value(), parsed.has_value()) << pattern << " at " << moment;
            ASSERT_EQ(static_cast<double>(found.value_or(0)), std::floor(parsed.value_or(0.0)))
                << pattern << " at " << moment << " as " << text;
        }
    }
}

TEST_P(RoundTripTest, TextsAreAlikeAsRendered) {
    const LocalZone zone(GetParam());
    const std::unique_ptr<icu::TimeZone> local(icu::TimeZone::createDefault());
    std::mt19937_64 random(20240301);
    for (const std::string &pattern : patterns()) {
        const DateFormat format(pattern);
        const auto text = [&format](std::int64_t moment) {
            return format.render(static_cast<double>(moment));
        };
        for (const std::int64_t moment : moments(*local, random)) {
            if (random() % 16 != 0) {
                continue;
            }
            for (const std::int64_t away : {0, 1, 59, 3600, -1800, 86400, 43200}) {
                ASSERT_EQ(format.rendersAlike(moment, moment + away),
                          text(moment) == text(moment + away))
                    << pattern << " at " << moment << " and " << away << " later";
            }
        }
    }
}

TEST_P(RoundTripTest, WhatTellsTheMinuteKeepsIt) {
    const LocalZone zone(GetParam());
    const std::unique_ptr<icu::TimeZone> local(icu::TimeZone::createDefault());
    const DateFormat minutes("yyyy-MM-dd HH:mm");
    std::mt19937_64 random(20240302);
    int telling = 0;
    for (const std::string &pattern : patterns()) {
        const DateFormat format(pattern);
        if (!format.tellsMinute()) {
            continue;
        }
        ++telling;
        for (const std::int64_t moment : moments(*local, random)) {
            if (!DateFormat::isPlain(moment)) {
                continue;
            }
            const std::int64_t read = format.roundTrip(moment).value_or(-1);
            ASSERT_EQ(minutes.roundTrip(read), minutes.roundTrip(moment)) << pattern << moment;
            const auto [first, last] = format.momentsInMinuteOf(moment);
            ASSERT_TRUE(first <= read && read <= last) << pattern << " at " << moment;
            // As far as the clock is put back here, a minute comes twice.
            for (const std::int64_t away : {-3600, -1800, 1800, 3600}) {
                ASSERT_TRUE(!format.rendersAlike(moment, moment + away) ||
                            (first <= moment + away && moment + away <= last))
                    << pattern << " at " << moment;
            }
        }
    }
    EXPECT_GE(telling, 25);
}

// Half-hour savings, offsets that are no whole hours, clocks changed a minute past the hour, and
// an offset that was no whole number of minutes until 1972.
INSTANTIATE_TEST_SUITE_P(Zones, RoundTripTest,
                         ::testing::Values("UTC", "Europe/Berlin", "America/New_York",
                                           "Australia/Lord_Howe", "Asia/Kathmandu",
                                           "America/St_Johns", "Africa/Monrovia"),
                         [](const auto &zone) {
                             std::string name = zone.param;
                             std::ranges::replace(name, '/', '_');
                             return name;
                         });

TEST(DateFormatTest, RoundTripsOfABlockCostOneConversion) {
    const LocalZone zone("Europe/Berlin");
    const DateFormat format("dd.MM.yyyy HH:mm:ss");
    // A million conversions would take some ten seconds.
    const std::clock_t start = std::clock();
    std::int64_t sum = 0;
    for (std::int64_t seconds = 1700000000; seconds < 1701000000; ++seconds) {
        sum += format.roundTrip(seconds).value_or(0) - seconds;
    }
    EXPECT_EQ(sum, 0);
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 2.0);
}

TEST(DateFormatTest, TellsWhetherItTellsTheMinute) {
    for (const char *setting :
         {"", "yyyy-MM-dd HH:mm", "d/M/yy h:mm:ss AM/PM", "dd.MM.yyyy hh:mm AM/PM", "HH:mm d/M/u",
          "a K:mm, y-LL-d", "kk:mm:ss yyyyy.M.d"}) {
        EXPECT_TRUE(DateFormat(setting).tellsMinute()) << setting;
    }
    for (const char *setting :
         {"HH:mm", "dd/MM HH:mm", "yyyy-MM-dd", "yyyy-MM-dd HH", "dd.MM.yyyy hh:mm",
          "yyyy-dd HH:mm", "YYYY-MM-dd HH:mm", "yyyyMMdd HH:mm", "yyyy-MM-ddHH:mm",
          "yyyy-MMM-dd HH:mm", "E yyyy-MM-dd HH:mm", "yyyy-MM-dd HH:mm z", "yyyy-MM-dd 'at' HH:mm",
          "yyyy 'open", "yyyy-MM-dd HH:mm j"}) {
        EXPECT_FALSE(DateFormat(setting).tellsMinute()) << setting;
    }
}

TEST(DateFormatTest, RoundTripsOfADayCostOneConversion) {
    const LocalZone zone("Europe/Berlin");
    const DateFormat format("d/M/yy h:mm:ss AM/PM");
    // One in each quarter of an hour of 30 years; as many conversions would take half a minute.
    const std::clock_t start = std::clock();
    std::int64_t moved = 0;
    for (std::int64_t seconds = 1000000000; seconds < 1946080000; seconds += 900) {
        moved += format.roundTrip(seconds) == seconds ? 0 : 1;
    }
    // Four quarters of each year come twice.
    EXPECT_EQ(moved, 30 * 4);
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 5.0);
}

}  // namespace
}  // namespace quorbel
