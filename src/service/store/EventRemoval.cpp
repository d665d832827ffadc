#include "service/store/EventRemoval.h"

#include "common/LogReader.h"
#include "platform/Number.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace quorbel {

namespace {

void makeKey(std::string &key, std::string_view time, const LogLine &line) {
    key = time;
    for (const std::string_view field : {line.priority, line.host, line.message}) {
        key += ',';
        key += field;
    }
}

}  // namespace

EventRemoval::EventRemoval(const std::vector<std::string> &dateFormats) {
    for (const std::string &setting : dateFormats) {
        m_formats.emplace_back().format = std::make_unique<DateFormat>(setting);
    }
}

bool EventRemoval::want(const Dictionary &events) {
    m_wanted.reserve(events.size());
    return std::ranges::all_of(events, [this](const Dictionary::Entry &entry) {
        const std::string *count = entry.second.string();
        return count != nullptr && want(entry.first, *count);
    });
}

bool EventRemoval::want(ArchivedCounts &events) {
    m_wanted.reserve(events.count());
    return events.forEach([this](std::string_view line, std::string_view count) {
        return want(line, count);
    }) && m_wanted.size() == events.count();
}

bool EventRemoval::want(std::string_view line, std::string_view count) {
    const auto number = readNumber<std::uint64_t>(count);
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    if (number) {
        m_wanted[line].count += *number;
    }
    return number.has_value();
}

std::optional<std::string> EventRemoval::run(LogStore &store, const std::atomic<bool> &stop) {
    std::optional<std::string> problem;
    if (m_wanted.empty()) {
        return problem;
    }
    const auto note = [&problem](const std::string &name, std::string_view what) {
        problem = name + " could not be " + std::string(what) + ": " +
                  std::generic_category().message(errno);
    };
    const MutexLock lock(store.editLock());
    const auto names = store.fileNames();
    if (!names) {
        note("The folder of the log files", "listed");
        return problem;
    }
    for (const std::string &name : *names) {
        if (!stop && !search(store, name, stop)) {
            note(name, "read");
        }
    }
    takeInexactMatches();
    for (const File &file : m_files) {
        if (!stop && !file.ranges.empty() && !store.cutOut(file.name, file.fd, file.ranges, stop)) {
            note(file.name, "rewritten");
        }
    }
    return stop ? "The service is stopping; not all of the events were removed" : problem;
}

/// Finds the wanted events in one file.
bool EventRemoval::search(LogStore &store, const std::string &name, const std::atomic<bool> &stop) {
    File file{name, openLogFile(store.path(name)), {}};
    if (!file.fd.isOpen()) {
        return errno == ENOENT;
    }
    const int fd = file.fd.get();
    m_files.push_back(std::move(file));
    bool atLineBegin = true;
    return forEachPiece(fd, store.settledSize(m_files.back().fd),
                        [&](std::uint64_t offset, std::string_view piece) {
                            matchPiece(offset, piece, atLineBegin);
                            atLineBegin = piece.ends_with('\n');
                            return !stop;
                        });
}

void EventRemoval::matchPiece(std::uint64_t offset, std::string_view piece, bool atLineBegin) {
    const auto line = splitLogLine(piece);
    if (!line) {
        return;
    }
    const ByteRange range = removableRange(offset, piece, atLineBegin);
    makeKey(m_key, line->date, *line);
    const auto exact = m_wanted.find(m_key);
    if (exact != m_wanted.end() && exact->second.count > 0) {
        --exact->second.count;
        m_files.back().ranges.push_back(range);
        return;
    }
    std::string_view tried;
    for (ShownIn &shown : m_formats) {
        const std::string_view displayed = displayedTime(shown, line->date);
        if (displayed == line->date || displayed == tried) {
            continue;
        }
        tried = displayed;
        makeKey(m_key, displayed, *line);
        const auto inexact = m_wanted.find(m_key);
        if (inexact != m_wanted.end() && inexact->second.inexact.size() < inexact->second.count) {
            inexact->second.inexact.push_back({m_files.size() - 1, range});
            return;
        }
    }
}

/// For events that are still wanted once every line was seen.
void EventRemoval::takeInexactMatches() {
    for (auto &[key, wanted] : m_wanted) {
        wanted.inexact.resize(std::min<std::uint64_t>(wanted.inexact.size(), wanted.count));
        for (const Match &match : wanted.inexact) {
            m_files[match.file].ranges.push_back(match.range);
        }
    }
    for (File &file : m_files) {
        std::ranges::sort(file.ranges, {}, &ByteRange::begin);
    }
}

/// The time by which the front-end names an event of that date.
std::string_view EventRemoval::displayedTime(ShownIn &shown, std::string_view date) {
    if (shown.time.empty() || date != shown.date) {
        shown.date = date;
        const auto seconds = readNumber<std::int64_t>(date);
        const auto displayed = seconds ? shown.format->roundTrip(*seconds) : std::nullopt;
        shown.time = std::to_string(displayed.value_or(0));
    }
    return shown.time;
}

}  // namespace quorbel
