#include "service/output/EventFeed.h"

#include "common/LogTail.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "service/base/Journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr unsigned kFileMode = 0640;

std::uint64_t microsecondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(now).count(), 1));
}

std::size_t countLines(std::string_view lines) {
    return static_cast<std::size_t>(std::ranges::count(lines, '\n'));
}

void syncFolder(const std::filesystem::path &folder) {
    const UniqueFd descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.isOpen()) {
        ::fsync(descriptor.get());
    }
}

/// The content of a file that need not be there. Nothing, with errno, when it cannot be had now;
/// something that is no file, or too large, is as good as an empty one.
std::optional<std::string> contentOf(const std::filesystem::path &file) {
    constexpr off_t kMostBytes = off_t{1} << 28U;
    const UniqueFd source = openRegular(file, O_RDONLY);
    struct stat status {};
    if (!source.isOpen()) {
        return errno == EINVAL || errno == ELOOP ? std::optional(std::string()) : std::nullopt;
    }
    const bool isFit = ::fstat(source.get(), &status) == 0 && status.st_size <= kMostBytes;
    return isFit ? readToEnd(source.get()) : std::string();
}

}  // namespace

EventFeed::EventFeed(LogStore &store, std::filesystem::path folder, Settings settings)
    : m_store(store), m_folder(std::move(folder)), m_settings(std::move(settings)) {
    // First, so that nothing moves the lines from the moment on at which the places are known.
    m_store.addFollower(*this);
    const MutexLock lock(m_mutex);
    open();
}

EventFeed::~EventFeed() {
    m_store.removeFollower(*this);
}

std::filesystem::path EventFeed::file(const char *extension) const {
    return m_folder / (m_settings.name + extension);
}

/// Says with errno why it does not go on.
bool EventFeed::fail(const std::string &what) {
    const int error = errno;
    m_problem = what + ": " + std::generic_category().message(error);
    errno = error;
    return false;
}

void EventFeed::warn(const std::string &what) const {
    say(JournalLevel::kWarning, "Output " + m_settings.name + ": " + what);
}

/// Whether the cursor is known, and on disk.
bool EventFeed::open() {
    if (!m_isOpen && !load()) {
        return false;
    }
    m_isOpen = true;
    return m_isWritten || write(m_cursor) || fail("The cursor could not be written");
}

bool EventFeed::load() {
    constexpr mode_t kFolderMode = 0750;
    if (::mkdir(m_folder.c_str(), kFolderMode) == 0) {
        syncFolder(m_folder.parent_path());
    } else if (errno != EEXIST) {
        return fail("The folder of the outputs could not be made");
    }
    const auto text = contentOf(file(".cursor"));
    if (!text) {
        return errno == ENOENT ? beginAnew() : fail("The cursor could not be read");
    }
    auto cursor = FeedCursor::parse(*text);
    if (cursor) {
        return resume(std::move(*cursor));
    }
    const std::filesystem::path aside = file(".cursor.broken");
    if (std::rename(file(".cursor").c_str(), aside.c_str()) != 0) {
        return fail("The cursor is broken, and could not be set aside");
    }
    warn("The cursor was broken and is " + aside.filename().string() +
         " now; the output begins as a new one");
    return beginAnew();
}

bool EventFeed::resume(FeedCursor cursor) {
    if (cursor.move) {
        const auto mark = markOf(m_store.path(cursor.move->name));
        if (!mark && errno != ENOENT) {
            return fail(cursor.move->name + " cannot be read");
        }
        cursor.finishMove(mark);
    }
    m_cursor = std::move(cursor);
    if (!loadBatch()) {
        return false;
    }
    m_removedUnsent = m_cursor.removed;
    m_isWritten = true;
    noteShortened();
    return true;
}

/// What a stop of the machine took off the end of a log file is missing before anything new is
/// there.
void EventFeed::noteShortened() {
    std::vector<std::string> names;
    for (const auto &[name, place] : m_cursor.places) {
        std::error_code error;
        const auto size = std::filesystem::file_size(m_store.path(name), error);
        if (!error && size < place.offset) {
            names.push_back(name);
        }
    }
    for (const std::string &name : names) {
        const UniqueFd source = openLogFile(m_store.path(name));
        if (source.isOpen()) {
            findPlaces(name, source);
        }
    }
}

/// The piece that was under way.
bool EventFeed::loadBatch() {
    auto lines = m_cursor.batch && m_settings.kept ? contentOf(file(".batch")) : std::string();
    if (!lines && errno != ENOENT) {
        return fail("The batch could not be read");
    }
    const auto batch = m_cursor.batch;
    if (!batch || !m_settings.kept) {
        m_cursor.batch.reset();
    } else if (lines && lines->size() == batch->bytes && feedHash(*lines) == batch->hash &&
               countLines(*lines) == batch->count) {
        m_taken = {{m_cursor.next, batch->count, secondsOf(*lines), batch->name, batch->behind}};
        m_batch = {m_cursor.next, batch->count, std::move(*lines)};
    } else {
        warn("The batch under way was broken; its lines are read from the log files again");
        m_cursor.batch.reset();
    }
    return true;
}

bool EventFeed::beginAnew() {
    m_cursor = {microsecondsNow(), 0, {}, {}, {}};
    return m_settings.history || placeBehindAll();
}

bool EventFeed::placeBehindAll() {
    const auto names = m_store.fileNames();
    if (!names) {
        return fail("The folder of the log files cannot be listed");
    }
    for (const std::string &name : *names) {
        const UniqueFd source = openLogFile(m_store.path(name));
        if (source.isOpen()) {
            const std::uint64_t end = wholeLinesEnd(source.get(), m_store.settledSize(source));
            m_cursor.places[name] = placeAt(source, end);
        } else if (errno != ENOENT && errno != EINVAL) {
            return fail(name + " cannot be read");
        }
    }
    return true;
}

bool EventFeed::write(const FeedCursor &cursor) {
    const bool written = replaceFile(file(".cursor"), cursor.text(), kFileMode);
    m_isWritten = m_isWritten || written;
    return written;
}

std::optional<EventFeed::Piece> EventFeed::take(std::size_t mostBytes) {
    constexpr std::size_t kLeast = 4096;
    const MutexLock lock(m_mutex);
    m_problem.clear();
    if (!open()) {
        return std::nullopt;
    }
    if (m_batch) {
        return m_batch;
    }
    auto unread = findUnread(std::max(mostBytes, kLeast));
    if (!unread) {
        return std::nullopt;
    }
    Piece piece{nextNumber(), countLines(unread->lines), std::move(unread->lines)};
    Taken taken{piece.first, piece.count, secondsOf(piece.lines), std::move(unread->name),
                unread->behind};
    if (m_settings.kept && !keep(piece, taken)) {
        return std::nullopt;
    }
    m_lineBytes += piece.lines.size();
    m_lineCount += piece.count;
    m_taken.push_back(std::move(taken));
    return piece;
}

/// The batch is one only once the cursor says so.
bool EventFeed::keep(const Piece &piece, const Taken &taken) {
    FeedCursor next = m_cursor;
    next.batch = {piece.count, piece.lines.size(), feedHash(piece.lines), taken.name, taken.behind};
    if (!replaceFile(file(".batch"), piece.lines, kFileMode) || !write(next)) {
        return fail("The batch could not be written");
    }
    m_cursor = std::move(next);
    m_batch = piece;
    return true;
}

std::uint64_t EventFeed::nextNumber() const {
    return m_taken.empty() ? m_cursor.next : m_taken.back().first + m_taken.back().count;
}

bool EventFeed::acknowledge(std::uint64_t number) {
    const MutexLock lock(m_mutex);
    FeedCursor next = m_cursor;
    std::size_t done = 0;
    for (; done < m_taken.size() && m_taken[done].first + m_taken[done].count <= number; ++done) {
        const Taken &taken = m_taken[done];
        next.next = taken.first + taken.count;
        if (taken.behind) {
            next.places[taken.name] = *taken.behind;
        } else {
            next.places.erase(taken.name);
        }
    }
    if (done == 0) {
        return true;
    }
    next.batch.reset();
    if (!write(next)) {
        return false;
    }
    m_cursor = std::move(next);
    m_taken.erase(m_taken.begin(), m_taken.begin() + static_cast<std::ptrdiff_t>(done));
    if (std::exchange(m_batch, std::nullopt)) {
        ::unlink(file(".batch").c_str());
    }
    return true;
}

void EventFeed::rewind() {
    const MutexLock lock(m_mutex);
    if (!m_settings.kept) {
        m_taken.clear();
        m_scan.reset();
    }
}

void forEachEvent(const EventFeed::Piece &piece,
                  const std::function<void(std::uint64_t number, const LogLine &line)> &onEvent) {
    std::string_view rest = piece.lines;
    for (std::uint64_t number = piece.first; !rest.empty(); ++number) {
        const std::string_view line =
            rest.substr(0, std::min(rest.find('\n'), rest.size() - 1) + 1);
        rest.remove_prefix(line.size());
        const auto event = splitLogLine(line.substr(0, kLogPieceSize));
        if (event) {
            onEvent(number, *event);
        }
    }
}

}  // namespace quorbel
