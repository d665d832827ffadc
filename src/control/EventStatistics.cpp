#include "control/EventStatistics.h"

#include "control/VisibleText.h"
#include "core/SavedFilterText.h"
#include "platform/Number.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace quorbel {

namespace {

/// Empty when there is no such day.
std::string dayOf(std::int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm local{};
    std::array<char, 64> text{};
    if (localtime_r(&moment, &local) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d", &local) == 0) {
        return "";
    }
    return text.data();
}

void appendCount(std::string &out, std::uint64_t count, std::string_view what) {
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%12llu  ", static_cast<unsigned long long>(count));
    out += number.data();
    appendVisible(out, what.empty() ? "-" : what);
    out += '\n';
}

template <typename Counts>
void appendTable(std::string &out, std::string_view title, const Counts &counts) {
    out += '\n';
    out += title;
    out += '\n';
    for (const auto &[what, count] : counts) {
        appendCount(out, count, what);
    }
}

template <typename Counts>
void appendObject(std::string &out, std::string_view name, const Counts &counts) {
    out += ",\"" + std::string(name) + "\":{";
    for (const auto &[what, count] : counts) {
        out += out.ends_with('{') ? "" : ",";
        appendJson(out, what);
        out += ':' + std::to_string(count);
    }
    out += '}';
}

}  // namespace

void EventStatistics::add(const LogLine &event, EventRating rating, std::uint64_t count) {
    m_events += count;
    m_ratings.at(rating) += count;
    m_severities.at(classifyPriority(event.priority).shown) += count;
    countOfDay(event.date) += count;
    const std::string host(event.host);
    const auto known = m_hosts.find(host);
    if (known != m_hosts.end()) {
        known->second += count;
    } else if (m_hosts.size() < kMostHosts) {
        m_hosts.emplace(host, count);
    } else {
        m_otherHosts += count;
    }
}

/// No zone changes its day but at a quarter of an hour.
std::uint64_t &EventStatistics::countOfDay(std::string_view date) {
    constexpr std::int64_t kQuarter = 900;
    const auto seconds = readNumber<std::int64_t>(date);
    if (!seconds) {
        return m_days[""];
    }
    if (m_quarterDay == nullptr || m_quarter != *seconds / kQuarter) {
        m_quarter = *seconds / kQuarter;
        m_quarterDay = &m_days[dayOf(*seconds)];
    }
    return *m_quarterDay;
}

/// The worst first.
std::vector<EventStatistics::Count> EventStatistics::ratings() const {
    std::vector<Count> counts;
    for (std::size_t i = kRatingCount; i-- > 0;) {
        counts.emplace_back(ratingName(static_cast<EventRating>(i)), m_ratings.at(i));
    }
    return counts;
}

std::vector<EventStatistics::Count> EventStatistics::severities() const {
    std::vector<Count> counts;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        counts.emplace_back(severityName(static_cast<std::uint8_t>(i)), m_severities.at(i));
    }
    return counts;
}

/// Those with the most events first.
std::vector<EventStatistics::Count> EventStatistics::hosts() const {
    std::vector<Count> counts(m_hosts.begin(), m_hosts.end());
    std::ranges::sort(counts, [](const Count &one, const Count &other) {
        return one.second != other.second ? one.second > other.second : one.first < other.first;
    });
    return counts;
}

std::vector<EventStatistics::Count> EventStatistics::days() const {
    return {m_days.begin(), m_days.end()};
}

std::string EventStatistics::text() const {
    std::string out;
    appendCount(out, m_events, "events");
    appendTable(out, "By rating", ratings());
    appendTable(out, "By severity", severities());
    appendTable(out, "By host", hosts());
    if (m_otherHosts > 0) {
        appendCount(out, m_otherHosts, "other hosts");
    }
    appendTable(out, "By day", days());
    return out;
}

std::string EventStatistics::json() const {
    std::string out = "{\"events\":" + std::to_string(m_events);
    appendObject(out, "ratings", ratings());
    appendObject(out, "severities", severities());
    appendObject(out, "hosts", hosts());
    out += ",\"otherHosts\":" + std::to_string(m_otherHosts);
    appendObject(out, "days", days());
    return out + "}\n";
}

}  // namespace quorbel
