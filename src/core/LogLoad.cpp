#include "core/LogLoad.h"

#include "common/LogTail.h"
#include "core/LogFields.h"

#include <sched.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr std::chrono::milliseconds kTurn{10};
/// How far the others may be ahead of the one whose batch is given away next.
constexpr std::size_t kBatchesAThread = 4;

std::vector<LogStretch> allOf(const std::vector<std::filesystem::path> &files) {
    std::vector<LogStretch> stretches;
    stretches.reserve(files.size());
    for (const std::filesystem::path &file : files) {
        stretches.push_back({file});
    }
    return stretches;
}

/// The bytes of all stretches; a file that is missing has none.
std::uint64_t bytesOf(const std::vector<LogStretch> &stretches) {
    std::uint64_t total = 0;
    for (const LogStretch &stretch : stretches) {
        const std::uint64_t size =
            stretch.file ? stretch.file->size() : totalSize(std::vector{stretch.path});
        const std::uint64_t end = std::min(size, stretch.span.end);
        total += end - std::min(end, stretch.span.begin);
    }
    return total;
}

}  // namespace

bool LogCutter::openNext() {
    while (!m_file && m_nextStretch < m_stretches.size()) {
        LogStretch &next = m_stretches[m_nextStretch++];
        if (!next.file) {
            next.file = std::make_shared<const LogFile>(next.path);
        }
        if (next.file->isOpen()) {
            m_file = std::move(next.file);
            m_place = next.span.begin;
            m_end = next.isOfWholeLines
                        ? std::min(next.span.end, wholeLinesEnd(m_file->fd(), m_file->size()))
                        : next.span.end;
        }
    }
    return m_file != nullptr;
}

std::vector<LogCutter::Part> LogCutter::next() {
    std::vector<Part> parts;
    std::uint64_t room = m_bytes;
    while (room > 0 && parts.size() < kMostParts && openNext()) {
        const std::uint64_t end = std::min(m_end, m_file->size());
        const std::uint64_t left = end - std::min(end, m_place);
        if (left <= room) {
            parts.push_back({std::exchange(m_file, nullptr), {m_place, m_end}});
            room -= left;
        } else {
            parts.push_back({m_file, {m_place, m_place + room}});
            m_place += std::exchange(room, 0);
        }
    }
    return parts;
}

LogLoad::LogLoad(const std::vector<std::filesystem::path> &files, std::int64_t now,
                 const Shares &shares)
    : LogLoad(allOf(files), now, shares) {}

LogLoad::LogLoad(std::vector<LogStretch> stretches, std::int64_t now, const Shares &shares)
    : m_now(now),
      m_total(bytesOf(stretches)),
      m_cutter(std::move(stretches), batchBytes(shares, m_total)) {
    const std::uint64_t useful = m_total / batchBytes(shares, m_total);
    if (shares.threads > 1 && useful > 1) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(shares.threads, useful));
        m_mostAhead = kBatchesAThread * count;
        startThreads(count);
    }
}

std::uint64_t LogLoad::batchBytes(const Shares &shares, std::uint64_t total) {
    constexpr std::uint64_t kLeast = std::uint64_t{1} << 20U;
    constexpr std::uint64_t kMost = 4 * kLeast;
    constexpr std::uint64_t kBatchesEach = 8;  // so that the threads end at about the same time
    const std::uint64_t threads = std::max<std::size_t>(shares.threads, 1);
    return shares.bytes > 0 ? shares.bytes
                            : std::clamp(total / (kBatchesEach * threads), kLeast, kMost);
}

LogLoad::~LogLoad() {
    {
        const MutexLock lock(m_lock);
        m_isEnding = true;
    }
    m_hasRoom.notifyAll();
    for (std::thread &thread : m_threads) {
        thread.join();
    }
}

std::size_t LogLoad::processors() {
    cpu_set_t set;
    CPU_ZERO(&set);
    return ::sched_getaffinity(0, sizeof set, &set) == 0 ? static_cast<std::size_t>(CPU_COUNT(&set))
                                                         : 1;
}

void LogLoad::startThreads(std::size_t count) {
    try {
        while (m_threads.size() < count) {
            m_threads.emplace_back([this] { work(); });
        }
    } catch (const std::system_error &) {
        // Fewer do it as well, and without any it is done by who asks.
    }
}

LogLoad::Batch LogLoad::pack(const Parts &parts, std::size_t &expectedBytes,
                             const LogReader::ProgressHandler &onProgress) const {
    Batch batch{{LoadedEvents(expectedBytes)}, {}};
    for (const LogCutter::Part &part : parts) {
        LogReader::readPart(
            *part.file, part.span,
            [this, &batch](const LogLine &line) {
                batch.loaded.add(fieldsOf(line), m_now);
                return true;
            },
            onProgress, batch.extents.emplace_back());
    }
    batch.loaded.events.close();
    expectedBytes = batch.loaded.events.expectedBytes();
    return batch;
}

void LogLoad::work() {
    std::size_t expectedBytes = 0;
    MutexLock lock(m_lock);
    for (;;) {
        m_hasRoom.wait(lock, [this]() REQUIRES(m_lock) {
            return m_isEnding || m_cut - m_givenAway < m_mostAhead;
        });
        Parts parts = m_isEnding ? Parts() : m_cutter.next();
        if (parts.empty()) {
            break;
        }
        const std::size_t number = m_cut++;
        lock.unlock();
        Batch batch = pack(parts, expectedBytes, [this](std::size_t bytes) {
            m_read += bytes;
            return !m_isEnding;
        });
        parts.clear();
        lock.lock();
        m_packed.emplace(number, std::move(batch));
        m_hasPacked.notifyOne();
    }
    m_isAllCut = true;
    m_hasPacked.notifyOne();
}

std::optional<LogLoad::Batch> LogLoad::packHere(const Progress &onProgress) {
    Parts parts;
    {
        const MutexLock lock(m_lock);
        parts = m_cutter.next();
        m_isAllCut = parts.empty();
    }
    if (parts.empty()) {
        return std::nullopt;
    }
    return pack(parts, m_expectedBytes, [this, &onProgress](std::size_t bytes) {
        onProgress(m_read += bytes);
        return true;
    });
}

std::optional<LogLoad::Batch> LogLoad::next(const Progress &onProgress) {
    if (m_threads.empty()) {
        return packHere(onProgress);
    }
    onProgress(m_read);
    MutexLock lock(m_lock);
    while (!isNextPacked()) {
        if (isOver()) {
            return std::nullopt;
        }
        const bool isPacked = m_hasPacked.waitFor(
            lock, kTurn, [this]() REQUIRES(m_lock) { return isNextPacked() || isOver(); });
        if (!isPacked) {
            lock.unlock();
            onProgress(m_read);
            lock.lock();
        }
    }
    return giveAway();
}

/// Precondition: isNextPacked().
LogLoad::Batch LogLoad::giveAway() {
    Batch batch = std::move(m_packed.begin()->second);
    m_packed.erase(m_packed.begin());
    ++m_givenAway;
    m_hasRoom.notifyAll();
    return batch;
}

std::optional<LogLoad::Batch> LogLoad::poll() {
    if (m_threads.empty()) {
        return packHere([](std::uint64_t) {});
    }
    const MutexLock lock(m_lock);
    return isNextPacked() ? std::optional(giveAway()) : std::nullopt;
}

bool LogLoad::isDone() {
    const MutexLock lock(m_lock);
    return isOver();
}

}  // namespace quorbel
