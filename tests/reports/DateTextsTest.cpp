#include "platform/DateFormat.h"
#include "reports/DateTexts.h"

#include <gtest/gtest.h>
#include <unicode/timezone.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>

namespace quorbel {
namespace {

class ScopedZone {
public:
    explicit ScopedZone(const char *zone) : m_before(icu::TimeZone::createDefault()) {
        icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(zone));
    }
    ~ScopedZone() { icu::TimeZone::adoptDefault(m_before.release()); }
    ScopedZone(const ScopedZone &) = delete;
    ScopedZone &operator=(const ScopedZone &) = delete;

private:
    std::unique_ptr<icu::TimeZone> m_before;
};

// Whole hours, halves and quarters of an hour from UTC; clocks that change by half an hour, or a
// minute after midnight; an offset that was no whole minute until 1972.
constexpr const char *kZones[] = {"UTC",
                                  "Europe/Berlin",
                                  "Australia/Adelaide",
                                  "Asia/Kathmandu",
                                  "Australia/Lord_Howe",
                                  "America/St_Johns",
                                  "Africa/Monrovia"};

constexpr const char *kSettings[] = {
    "", "yyyy-MM-dd HH:mm:ss", "dd/MM/yyyy HH:mm", "d/M/yy h:mm:ss AM/PM", "dd.MM.yyyy", "mm:ss",
    "s,m,hh AM/PM ss", "HHmmss", "m mmm s ssss", "EEEE d MMMM y G h:m a",
    // Not the same all hour long, or not to be told by its letters:
    "HH:mm:ss.SSS", "HH:mm z", "'at' mm", "B h:mm", "yyyy-MM-dd'T'HH:mm:ss",
    // Refused: renders everything as nothing.
    "o'clock"};

void expectTheSame(const DateFormat &format, DateTexts &texts, double seconds) {
    EXPECT_EQ(texts.text(seconds), format.render(seconds)) << seconds;
}

TEST(DateTextsTest, RendersAsTheFormatDoes) {
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> anyMoment(-3'000'000'000, 5'000'000'000);
    std::uniform_int_distribution<std::int64_t> nearby(0, 4000);
    std::uniform_int_distribution<int> thousandths(0, 999);
    for (const char *zone : kZones) {
        const ScopedZone scoped(zone);
        for (const char *setting : kSettings) {
            SCOPED_TRACE(std::string(zone) + ", " + setting);
            const DateFormat format(setting);
            DateTexts texts(setting);
            for (int i = 0; i < 150; ++i) {
                const auto first = static_cast<double>(anyMoment(random));
                expectTheSame(format, texts, first);
                expectTheSame(format, texts, first + thousandths(random) / 1000.0);
                expectTheSame(format, texts, first + static_cast<double>(nearby(random)));
            }
        }
    }
}

TEST(DateTextsTest, FollowsTheClocksThroughTheirChanges) {
    struct Change {
        const char *zone;
        std::int64_t moment;
    };
    // Spring and autumn 2023 or, for St. John's, 2010; Samoa left out a day at the end of 2011.
    const Change changes[] = {
        {"Europe/Berlin", 1679792400},      {"Europe/Berlin", 1698541200},
        {"Australia/Adelaide", 1680366600}, {"Australia/Lord_Howe", 1680361200},
        {"America/St_Johns", 1268537460},   {"Africa/Monrovia", 63593070},
        {"Pacific/Apia", 1325239200}};
    for (const Change &change : changes) {
        const ScopedZone scoped(change.zone);
        const auto offset = [](std::int64_t moment) {
            std::int32_t raw = 0;
            std::int32_t saving = 0;
            UErrorCode status = U_ZERO_ERROR;
            std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault())
                ->getOffset(static_cast<double>(moment) * 1000, 0, raw, saving, status);
            return raw + saving;
        };
        ASSERT_NE(offset(change.moment - 1), offset(change.moment)) << change.zone;
        for (const char *setting : {"", "yyyy-MM-dd HH:mm:ss", "mm:ss"}) {
            SCOPED_TRACE(std::string(change.zone) + ", " + setting);
            const DateFormat format(setting);
            DateTexts texts(setting);
            for (std::int64_t away = -5000; away < 5000; away += 7) {
                expectTheSame(format, texts, static_cast<double>(change.moment + away));
            }
            expectTheSame(format, texts, static_cast<double>(change.moment - 1));
            expectTheSame(format, texts, static_cast<double>(change.moment));
        }
    }
}

TEST(DateTextsTest, TakesAnyNumber) {
    for (const char *setting : {"", "HH:mm", "HH:mm:ss.SSS"}) {
        const DateFormat format(setting);
        DateTexts texts(setting);
        for (const double seconds :
             {0.0, -0.0, -1.0, 0.999, 1699999999.9999998, 253402127999.0, 253402128000.0, 1e18,
              -1e18, std::numeric_limits<double>::infinity(),
              -std::numeric_limits<double>::infinity()}) {
            expectTheSame(format, texts, seconds);
            expectTheSame(format, texts, seconds);
        }
    }
}

}  // namespace
}  // namespace quorbel
