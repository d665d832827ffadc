#include "service/store/EventRestoration.h"

#include "common/LogReader.h"
#include "platform/Number.h"
#include "platform/Text.h"
#include "service/store/RemovalFeed.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kLatestTime = 253'402'300'799;  // the end of the year 9999
// Whoever may command may not fill the folder with files all the same.
constexpr std::size_t kMostDays = 4096;

/// Whether a reader of the log files gets exactly these fields back from the line.
bool isPlain(std::string_view line, const LogLine &fields) {
    constexpr std::size_t kCommas = 3;
    return line.size() == fields.date.size() + fields.priority.size() + fields.host.size() +
                              fields.message.size() + kCommas &&
           line.size() + kLineEnd.size() <= kLogPieceSize;
}

}  // namespace

std::size_t EventRestoration::KeyHash::operator()(const Key &key) const {
    constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
    return std::hash<std::string_view>()(key.fields) ^
           (static_cast<std::size_t>(key.time) * kSpread);
}

std::size_t EventRestoration::Alike::lacking() const {
    return std::min(wanted, wanted + listed - std::min(inLog, wanted + listed));
}

EventRestoration::EventRestoration(const Array &events, const Array &listed) {
    m_named = events.size();
    m_events = take(events);
    m_listed = take(listed);
    m_invalid = m_named - m_events.size();
    m_byMinute.reserve(m_events.size());
    m_lacking.reserve(m_events.size());
    for (const Event &event : m_events) {
        ++alikeTo(event).wanted;
        ++m_lacking[{event.seconds, event.fields}];
    }
    std::erase_if(m_listed, [this](const Event &event) {
        return !m_byMinute.contains({event.seconds / kMinute, event.fields});
    });
    for (const Event &event : m_listed) {
        ++alikeTo(event).listed;
        ++m_lacking[{event.seconds, event.fields}];
    }
}

EventRestoration::Events EventRestoration::take(const Array &lines) {
    Events events;
    events.reserve(lines.size());
    for (const Value &line : lines) {
        if (const auto event = eventOf(line)) {
            events.push_back(*event);
        }
    }
    return events;
}

/// Nothing when the service would not have written that line.
std::optional<EventRestoration::Event> EventRestoration::eventOf(const Value &value) {
    std::string_view line = value.string() == nullptr ? std::string_view() : *value.string();
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    const bool isOne = line.find_first_of(kLineEnd) == std::string_view::npos;
    const auto fields = isOne ? splitLogLine(line) : std::nullopt;
    const auto seconds = fields ? readNumber<std::int64_t>(fields->date) : std::nullopt;
    if (!seconds || *seconds < 0 || *seconds > kLatestTime ||
        std::to_string(*seconds) != fields->date || !isPlain(line, *fields) || !canBeTold(line)) {
        return std::nullopt;
    }
    return Event{*seconds, line.substr(fields->date.size())};
}

EventRestoration::Alike &EventRestoration::alikeTo(const Event &event) {
    return m_byMinute[{event.seconds / kMinute, event.fields}];
}

std::optional<std::string> EventRestoration::run(LogStore &store, const std::atomic<bool> &stop) {
    if (m_invalid > 0) {
        note(std::to_string(m_invalid) + " cannot stand in a log file");
    }
    const MutexLock lock(store.editLock());
    countLog(store, stop);
    const Events chosen = choose();
    std::size_t days = 0;
    for (auto first = chosen.begin(); first != chosen.end();) {
        const std::string name = logFileName(first->seconds);
        const auto last = std::find_if(first, chosen.end(), [&name](const Event &event) {
            return logFileName(event.seconds) != name;
        });
        const Events ofDay(first, last);
        first = last;
        if (stop) {
            fail(ofDay.size(), "the service is stopping");
        } else if (++days > kMostDays) {
            fail(ofDay.size(), "they are of too many days");
        } else if (!putInto(store, name, ofDay, stop)) {
            fail(ofDay.size(),
                 name + " could not be rewritten: " + std::generic_category().message(errno));
        }
    }
    const std::size_t missing = m_invalid + m_failed;
    return missing == 0 ? std::nullopt
                        : std::optional(std::to_string(missing) + " of " + std::to_string(m_named) +
                                        " events could not be put back: " + m_problem);
}

void EventRestoration::countLog(LogStore &store, const std::atomic<bool> &stop) {
    for (const std::string &name : store.fileNames().value_or(std::vector<std::string>())) {
        const UniqueFd file = openLogFile(store.path(name));
        if (!file.isOpen() || m_events.empty()) {
            continue;
        }
        forEachPiece(file.get(), store.settledSize(file),
                     [&](std::uint64_t /*offset*/, std::string_view piece) {
                         countLine(piece);
                         return !stop;
                     });
    }
}

void EventRestoration::countLine(std::string_view piece) {
    const auto line = splitLogLine(piece);
    const auto seconds = line ? readNumber<std::int64_t>(line->date) : std::nullopt;
    if (!seconds) {
        return;
    }
    m_fields.clear();
    for (const std::string_view field : {line->priority, line->host, line->message}) {
        m_fields += ',';
        m_fields += field;
    }
    const auto alike = m_byMinute.find({*seconds / kMinute, m_fields});
    if (alike == m_byMinute.end()) {
        return;
    }
    ++alike->second.inLog;
    const auto same = m_lacking.find({*seconds, m_fields});
    if (same != m_lacking.end() && same->second > 0) {
        --same->second;
    }
}

/// In the order of their times and, of one second, in that in which they were named.
EventRestoration::Events EventRestoration::choose() {
    Events chosen;
    for (const Events *events : {&m_events, &m_listed}) {
        for (const Event &event : *events) {
            Alike &alike = alikeTo(event);
            auto &lacking = m_lacking[{event.seconds, event.fields}];
            if (lacking > 0 && alike.chosen < alike.lacking()) {
                --lacking;
                ++alike.chosen;
                chosen.push_back(event);
            }
        }
    }
    std::ranges::stable_sort(chosen, {}, &Event::seconds);
    return chosen;
}

/// False with errno.
bool EventRestoration::putInto(LogStore &store, const std::string &name, const Events &events,
                               const std::atomic<bool> &stop) {
    const UniqueFd file = openForAppending(store.path(name), O_CREAT);
    if (!file.isOpen()) {
        return false;
    }
    const auto places = placesFor(events, file.get(), store.settledSize(file), stop);
    return places && store.putIn(name, file, *places, stop);
}

/// Nothing, with errno, when the file cannot be read.
std::optional<std::vector<Insertion>> EventRestoration::placesFor(const Events &events, int fd,
                                                                  std::uint64_t size,
                                                                  const std::atomic<bool> &stop) {
    std::vector<Insertion> places;
    auto next = events.begin();
    const auto placeAt = [&](std::uint64_t offset, const Event &event) {
        if (places.empty() || places.back().offset != offset) {
            places.push_back({offset, {}});
        }
        places.back().text += lineOf(event);
    };
    bool atLineBegin = true;
    const auto look = [&](std::uint64_t offset, std::string_view piece) {
        const bool wasAtLineBegin = std::exchange(atLineBegin, piece.ends_with('\n'));
        const auto line = wasAtLineBegin ? splitLogLine(piece) : std::nullopt;
        const auto seconds = line ? readNumber<std::int64_t>(line->date) : std::nullopt;
        for (; seconds && next != events.end() && next->seconds < *seconds; ++next) {
            placeAt(offset, *next);
        }
        return next != events.end() && !stop;
    };
    if (!forEachPiece(fd, size, look)) {
        return std::nullopt;
    }
    if (next != events.end() && !atLineBegin) {
        places.push_back({size, std::string(kLineEnd)});
    }
    for (; next != events.end(); ++next) {
        placeAt(size, *next);
    }
    return places;
}

std::string EventRestoration::lineOf(const Event &event) {
    std::string line = std::to_string(event.seconds);
    line += event.fields;
    line += kLineEnd;
    return line;
}

/// Of several problems with files, the first is said.
void EventRestoration::fail(std::size_t count, const std::string &problem) {
    if (m_failed == 0) {
        note(problem);
    }
    m_failed += count;
}

void EventRestoration::note(const std::string &problem) {
    m_problem += (m_problem.empty() ? "" : "; ") + problem;
}

}  // namespace quorbel
