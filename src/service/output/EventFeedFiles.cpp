// Which log files have something behind the feed's places.

#include "service/base/Journal.h"
#include "service/output/EventFeed.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

namespace quorbel {

namespace {

std::uint64_t sizeOf(const std::filesystem::path &file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

/// The file that was read last first: most often it has more, or nothing has.
std::optional<EventFeed::Unread> EventFeed::findUnread(std::size_t mostBytes) {
    auto unread = m_current.empty() ? std::nullopt : look(m_current, mostBytes);
    if (!unread && !needsScan() && m_scan->appended != m_current) {
        unread = look(m_scan->appended, mostBytes);
    }
    if (!unread && needsScan()) {
        unread = scan(mostBytes);
    }
    if (unread) {
        m_current = unread->name;
    }
    return unread;
}

/// Others than the one that is appended to get something only in the ways that count, or from
/// outside.
bool EventFeed::needsScan() const {
    constexpr std::chrono::seconds kInterval{10};
    return !m_scan || m_scan->edits != m_store.edits() ||
           m_scan->fileChanges != m_store.fileChanges() ||
           std::chrono::steady_clock::now() - m_scan->time > kInterval;
}

std::optional<EventFeed::Unread> EventFeed::scan(std::size_t mostBytes) {
    m_scan.reset();
    Scan begun{m_store.edits(), m_store.fileChanges(), std::chrono::steady_clock::now(),
               m_store.appendedFile()};
    const auto names = m_store.fileNames();
    if (!names) {
        fail("The folder of the log files cannot be listed");
        return std::nullopt;
    }
    for (const std::string &name : *names) {
        auto unread = look(name, mostBytes);
        if (unread) {
            return unread;
        }
    }
    if (m_problem.empty()) {
        forgetGone(*names);
        m_scan = std::move(begun);
    }
    return std::nullopt;
}

std::optional<EventFeed::Unread> EventFeed::look(const std::string &name, std::size_t mostBytes) {
    const std::filesystem::path path = m_store.path(name);
    const FeedPlace *place = placeIn(name);
    const std::uint64_t size = sizeOf(path);
    const bool isDone = place != nullptr
                            ? place->offset == size && (size == 0 || place->file == markOf(path))
                            : size == 0;
    if (name.empty() || isDone) {
        return std::nullopt;
    }
    const UniqueFd source = openLogFile(path);
    if (source.isOpen()) {
        return read(name, source, mostBytes);
    }
    if (errno != ENOENT && errno != EINVAL) {
        fail(name + " cannot be read");
    }
    return std::nullopt;
}

std::optional<EventFeed::Unread> EventFeed::read(const std::string &name, const UniqueFd &source,
                                                 std::size_t mostBytes) {
    constexpr std::string_view kLineEnd = "\r\n";
    findPlaces(name, source);
    const FeedPlace *place = placeIn(name);
    const std::uint64_t begin = place == nullptr ? 0 : place->offset;
    std::string lines = bytesOf(source, begin, mostBytes);
    const std::size_t feed = lines.rfind('\n');
    std::uint64_t end = begin + feed + 1;
    if (feed != std::string::npos) {
        lines.resize(feed + 1);
    } else if (lines.size() == mostBytes) {
        // No line of ours: as much of it as readers of the log files would take at once.
        end = begin + lines.size();
        lines.resize(kLogPieceSize - kLineEnd.size());
        lines += kLineEnd;
    } else {
        return std::nullopt;
    }
    return Unread{name, std::move(lines), placeAt(source, end)};
}

/// Where the feed is in the file that stands under that name now.
void EventFeed::findPlaces(const std::string &name, const UniqueFd &source) {
    PlaceState worst = PlaceState::kFits;
    eachPlaceIn(name, [&](FeedPlace &place) {
        const PlaceState state = findAgain(place, source);
        worst = std::max(worst, state);
        return state != PlaceState::kElsewhere;
    });
    if (worst == PlaceState::kAtEnd) {
        warn(name + " is shorter than it was; it goes on at its end");
    } else if (worst == PlaceState::kElsewhere) {
        warn(name + " was replaced by somebody else; it is sent from its begin");
    }
}

const FeedPlace *EventFeed::placeIn(const std::string &name) const {
    const auto taken = std::find_if(m_taken.rbegin(), m_taken.rend(),
                                    [&name](const Taken &one) { return one.name == name; });
    if (taken != m_taken.rend()) {
        return taken->behind ? &*taken->behind : nullptr;
    }
    const auto place = m_cursor.places.find(name);
    return place == m_cursor.places.end() ? nullptr : &place->second;
}

void EventFeed::eachPlaceIn(const std::string &name,
                            const std::function<bool(FeedPlace &)> &change) {
    const auto place = m_cursor.places.find(name);
    if (place != m_cursor.places.end() && !change(place->second)) {
        m_cursor.places.erase(place);
    }
    for (Taken &taken : m_taken) {
        if (taken.name == name && taken.behind && !change(*taken.behind)) {
            taken.behind.reset();
        }
    }
    if (m_cursor.batch) {
        m_cursor.batch->behind = m_taken.front().behind;
    }
}

/// A file that is gone may come back, as when a deletion is undone: its place stays for long.
void EventFeed::forgetGone(const std::vector<std::string> &names) {
    constexpr std::size_t kMostGone = 4096;
    const auto isGone = [&names](const auto &place) {
        return !std::ranges::binary_search(names, place.first);
    };
    auto gone = static_cast<std::size_t>(std::ranges::count_if(m_cursor.places, isGone));
    std::erase_if(m_cursor.places, [&](const auto &place) {
        return gone > kMostGone && isGone(place) && gone-- > 0;
    });
}

EventFeed::Lag EventFeed::measure() {
    const MutexLock lock(m_mutex);
    Lag lag;
    std::uint64_t bytes = 0;
    for (const Taken &taken : m_taken) {
        lag.events += taken.count;
    }
    lag.seconds = m_taken.empty() ? 0 : m_taken.front().seconds;
    const auto names = m_isOpen ? m_store.fileNames() : std::nullopt;
    for (const std::string &name : names.value_or(std::vector<std::string>())) {
        addUnread(name, lag, bytes);
    }
    lag.events += m_lineCount == 0 ? 0 : bytes * m_lineCount / m_lineBytes;
    const std::int64_t now = std::time(nullptr);
    lag.seconds = lag.seconds == 0 ? 0 : std::max<std::int64_t>(now - lag.seconds, 0);
    return lag;
}

/// Counts what is unread of a file, or adds to `bytes` what is too much to be counted.
void EventFeed::addUnread(const std::string &name, Lag &lag, std::uint64_t &bytes) {
    constexpr std::uint64_t kMostCounted = std::uint64_t{1} << 20U;
    const std::filesystem::path path = m_store.path(name);
    const FeedPlace *place = placeIn(name);
    const std::uint64_t begin = place == nullptr ? 0 : place->offset;
    const std::uint64_t size = sizeOf(path);
    if (size <= begin) {
        return;
    }
    const UniqueFd source = openLogFile(path);
    const std::string part = source.isOpen() ? bytesOf(source, begin, kMostCounted) : "";
    const auto count = static_cast<std::uint64_t>(std::ranges::count(part, '\n'));
    lag.events += count;
    bytes += size - std::min(size, begin + part.size());
    if (m_lineCount == 0) {
        m_lineBytes += part.size();
        m_lineCount += count;
    }
    if (lag.seconds == 0 && count > 0) {
        lag.seconds = secondsOf(part);
    }
}

}  // namespace quorbel
