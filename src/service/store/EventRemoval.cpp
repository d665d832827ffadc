#include "service/store/EventRemoval.h"

#include "core/LogReader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <system_error>

namespace quorbel {

namespace {

template <typename Number>
std::optional<Number> readNumber(std::string_view text) {
    Number number = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) {
        return std::nullopt;
    }
    return number;
}

void makeKey(std::string &key, std::string_view time, const LogLine &line) {
    key = time;
    for (const std::string_view field : {line.priority, line.host, line.message}) {
        key += ',';
        key += field;
    }
}

UniqueFd openRegularFile(const std::filesystem::path &path) {
    UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (file.isOpen() && ::fstat(file.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
        file.reset();
        errno = EINVAL;
    }
    return file;
}

/// What to take out with a piece. Behind the first piece of an over-long line, its line end stays:
/// without it, the piece before would be joined to the next line.
ByteRange rangeOf(std::uint64_t offset, std::string_view piece, bool atLineBegin) {
    if (!atLineBegin) {
        piece = piece.substr(0, piece.find_last_not_of("\r\n") + 1);
    }
    return {offset, offset + piece.size()};
}

}  // namespace

bool EventRemoval::want(const Dictionary &events) {
    m_wanted.reserve(events.size());
    for (const auto &[key, value] : events) {
        const auto count =
            value.string() != nullptr ? readNumber<std::uint64_t>(*value.string()) : std::nullopt;
        if (!count) {
            return false;
        }
        std::string_view line = key;
        if (line.ends_with('\n')) {
            line.remove_suffix(1);
        }
        m_wanted[line].count += *count;
    }
    return true;
}

std::optional<std::string> EventRemoval::run(LogStore &store) {
    std::optional<std::string> problem;
    if (m_wanted.empty()) {
        return problem;
    }
    const auto note = [&problem](const std::string &name, std::string_view what) {
        problem = name + " could not be " + std::string(what) + ": " +
                  std::generic_category().message(errno);
    };
    for (const std::string &name : store.fileNames()) {
        if (!search(store, name)) {
            note(name, "read");
        }
    }
    takeInexactMatches();
    for (const File &file : m_files) {
        if (!file.ranges.empty() && !store.cutOut(file.name, file.fd, file.ranges)) {
            note(file.name, "rewritten");
        }
    }
    return problem;
}

/// Finds the wanted events in one file.
bool EventRemoval::search(LogStore &store, const std::string &name) {
    File file{name, openRegularFile(store.path(name)), {}};
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
                        });
}

void EventRemoval::matchPiece(std::uint64_t offset, std::string_view piece, bool atLineBegin) {
    const auto line = splitLogLine(piece);
    if (!line) {
        return;
    }
    const ByteRange range = rangeOf(offset, piece, atLineBegin);
    makeKey(m_key, line->date, *line);
    const auto exact = m_wanted.find(m_key);
    if (exact != m_wanted.end() && exact->second.count > 0) {
        --exact->second.count;
        m_files.back().ranges.push_back(range);
        return;
    }
    const std::string_view displayed = displayedTime(line->date);
    if (displayed == line->date) {
        return;
    }
    makeKey(m_key, displayed, *line);
    const auto inexact = m_wanted.find(m_key);
    if (inexact != m_wanted.end() && inexact->second.inexact.size() < inexact->second.count) {
        inexact->second.inexact.push_back({m_files.size() - 1, range});
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
std::string_view EventRemoval::displayedTime(std::string_view date) {
    if (m_displayedTime.empty() || date != m_date) {
        m_date = date;
        const auto seconds = readNumber<std::int64_t>(date);
        const auto displayed = seconds ? m_format.roundTrip(*seconds) : std::nullopt;
        m_displayedTime = std::to_string(displayed.value_or(0));
    }
    return m_displayedTime;
}

}  // namespace quorbel
