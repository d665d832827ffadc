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

EventRestoration::EventRestoration(std::size_t named, std::function<void()> giveBack)
    : m_giveBack(std::move(giveBack)), m_alike(named), m_named(named) {
    m_events.reserve(named);
}

EventRestoration::EventRestoration(const Array &events, const Array &listed)
    : EventRestoration(events.size(), [] {}) {
    const auto textOf = [](const Value &line) {
        return line.string() == nullptr ? std::string_view() : *line.string();
    };
    for (const Value &line : events) {
        want(textOf(line));
    }
    for (const Value &line : listed) {
        list(textOf(line));
    }
}

std::optional<EventRestoration> EventRestoration::of(ArchivedLists &lists,
                                                     std::function<void()> giveBack) {
    EventRestoration restoration(lists.count(0), std::move(giveBack));
    const bool areTexts = lists.forEach(0, [&](std::string_view line) {
        restoration.want(line);
    }) && lists.forEach(1, [&](std::string_view line) { restoration.list(line); });
    return areTexts ? std::optional(std::move(restoration)) : std::nullopt;
}

void EventRestoration::want(std::string_view text) {
    if (const auto line = lineOf(text)) {
        m_events.push_back(m_alike.want(line->seconds, line->fields));
    }
    noteRead(text.size());
}

void EventRestoration::list(std::string_view text) {
    const auto line = lineOf(text);
    if (const auto event = line ? m_alike.list(line->seconds, line->fields) : std::nullopt) {
        m_listed.push_back(*event);
    }
    noteRead(text.size());
}

void EventRestoration::noteRead(std::size_t bytes) {
    constexpr std::size_t kMany = std::size_t{4} << 20U;
    m_read += bytes;
    if (m_read > kMany) {
        m_read = 0;
        m_giveBack();
    }
}

/// Nothing when the service would not have written that line.
std::optional<EventRestoration::Line> EventRestoration::lineOf(std::string_view text) {
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    const bool isOne = text.find_first_of(kLineEnd) == std::string_view::npos;
    const auto fields = isOne ? splitLogLine(text) : std::nullopt;
    const auto seconds = fields ? readNumber<std::int64_t>(fields->date) : std::nullopt;
    if (!seconds || *seconds < 0 || *seconds > AlikeEvents::kLatestTime ||
        std::to_string(*seconds) != fields->date || !isPlain(text, *fields) || !canBeTold(text)) {
        return std::nullopt;
    }
    return Line{*seconds, text.substr(fields->date.size())};
}

std::optional<std::string> EventRestoration::run(LogStore &store, const std::atomic<bool> &stop) {
    const std::size_t invalid = m_named - m_events.size();
    if (invalid > 0) {
        note(std::to_string(invalid) + " cannot stand in a log file");
    }
    const MutexLock lock(store.editLock());
    countLog(store, stop);
    const Events chosen = choose();
    std::size_t days = 0;
    for (ManyEvents rest(chosen); !rest.empty();) {
        const std::string name = logFileName(m_alike.seconds(rest.front()));
        const auto end = std::ranges::find_if(
            rest, [&](Event event) { return logFileName(m_alike.seconds(event)) != name; });
        const ManyEvents ofDay = rest.first(static_cast<std::size_t>(end - rest.begin()));
        rest = rest.subspan(ofDay.size());
        if (stop) {
            fail(ofDay.size(), "the service is stopping");
        } else if (++days > kMostDays) {
            fail(ofDay.size(), "they are of too many days");
        } else if (!putInto(store, name, ofDay, stop)) {
            fail(ofDay.size(),
                 name + " could not be rewritten: " + std::generic_category().message(errno));
        }
    }
    const std::size_t missing = invalid + m_failed;
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
    m_alike.countInLog(*seconds, m_fields);
}

/// In the order of their times and, of one second, in that in which they were named.
EventRestoration::Events EventRestoration::choose() {
    m_giveBack();
    Events chosen;
    chosen.reserve(m_events.size());
    for (const Events *events : {&m_events, &m_listed}) {
        std::ranges::copy_if(*events, std::back_inserter(chosen),
                             [this](Event event) { return m_alike.choose(event); });
    }
    m_alike.forgetCounts();
    m_events = {};
    m_listed = {};
    std::ranges::stable_sort(chosen, {}, [this](Event event) { return m_alike.seconds(event); });
    return chosen;
}

/// False with errno.
bool EventRestoration::putInto(LogStore &store, const std::string &name, ManyEvents events,
                               const std::atomic<bool> &stop) {
    const UniqueFd file = openForAppending(store.path(name), O_CREAT);
    if (!file.isOpen()) {
        return false;
    }
    const auto places = placesFor(events, file.get(), store.settledSize(file), stop);
    return places && store.putIn(name, file, *places, stop);
}

/// Nothing, with errno, when the file cannot be read.
std::optional<std::vector<Insertion>> EventRestoration::placesFor(ManyEvents events, int fd,
                                                                  std::uint64_t size,
                                                                  const std::atomic<bool> &stop) {
    std::vector<Insertion> places;
    bool atLineBegin = true;
    const auto look = [&](std::uint64_t offset, std::string_view piece) {
        const bool wasAtLineBegin = std::exchange(atLineBegin, piece.ends_with('\n'));
        const auto line = wasAtLineBegin ? splitLogLine(piece) : std::nullopt;
        const auto seconds = line ? readNumber<std::int64_t>(line->date) : std::nullopt;
        const auto later = std::ranges::find_if(
            events, [&](Event event) { return !seconds || m_alike.seconds(event) >= *seconds; });
        if (const auto here = static_cast<std::size_t>(later - events.begin()); here > 0) {
            places.push_back({offset, textOf(events.first(here))});
            events = events.subspan(here);
        }
        return !events.empty() && !stop;
    };
    if (!forEachPiece(fd, size, look)) {
        return std::nullopt;
    }
    if (!events.empty()) {
        places.push_back({size, textOf(events, atLineBegin ? "" : kLineEnd)});
    }
    return places;
}

/// Their lines, one behind the other, in no more memory than they take.
std::string EventRestoration::textOf(ManyEvents events, std::string_view front) {
    std::size_t size = front.size();
    for (const Event event : events) {
        size += std::to_string(m_alike.seconds(event)).size() + m_alike.fields(event).size() +
                kLineEnd.size();
    }
    std::string text;
    text.reserve(size);
    text += front;
    for (const Event event : events) {
        text += std::to_string(m_alike.seconds(event));
        text += m_alike.fields(event);
        text += kLineEnd;
        noteRead(m_alike.fields(event).size());
    }
    return text;
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
