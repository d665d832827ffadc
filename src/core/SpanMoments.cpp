#include "core/SpanMoments.h"

#include <ctime>

namespace quorbel {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

/// The first moment of the day that is so many days after that of `now`.
std::int64_t startOfDay(std::int64_t now, int days) {
    const std::time_t seconds = now;
    std::tm wanted{};
    localtime_r(&seconds, &wanted);
    wanted.tm_mday += days;
    wanted.tm_hour = wanted.tm_min = wanted.tm_sec = 0;
    wanted.tm_isdst = -1;
    std::tm noon = wanted;
    noon.tm_hour = 12;
    std::mktime(&noon);
    std::time_t start = std::mktime(&wanted);
    // Where clocks are put forward at midnight, the day begins when they were.
    constexpr std::time_t kStep = 15 * kMinute;
    for (std::tm at = wanted; at.tm_mday != noon.tm_mday; localtime_r(&start, &at)) {
        start += kStep;
    }
    return start;
}

SpanMoments since(std::int64_t seconds, std::int64_t now) {
    return {now / kMinute * kMinute - seconds, std::nullopt};
}

}  // namespace

SpanMoments momentsOf(MovingSpan span, std::int64_t now) {
    switch (span) {
        case MovingSpan::kLastHour:
            return since(kHour, now);
        case MovingSpan::kToday:
            return {startOfDay(now, 0), startOfDay(now, 1)};
        case MovingSpan::kYesterday:
            return {startOfDay(now, -1), startOfDay(now, 0)};
        case MovingSpan::kLastDay:
            return since(kDay, now);
    }
    return {};
}

EventQuery queryAt(const EventQuery &query, std::int64_t now) {
    EventQuery at = query;
    at.spans.reset();
    for (std::size_t span = 0; span < kMovingSpanCount; ++span) {
        if (query.spans[span]) {
            const SpanMoments moments = momentsOf(static_cast<MovingSpan>(span), now);
            EventQuery inSpan;
            inSpan.from = moments.from;
            inSpan.until = moments.until;
            at = bothOf(at, inSpan);
        }
    }
    return at;
}

}  // namespace quorbel
