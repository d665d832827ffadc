#include "core/LogLoad.h"

#include "core/LogFields.h"
#include "platform/Number.h"

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

/// The moment that a date's text is, for counting. The record says so where it is plain.
std::optional<std::int64_t> momentOf(const EventRecord &record, const EventFields &fields) {
    if (record.format == EventRecord::kRawDate && record.hasExtras == 0) {
        return record.seconds;
    }
    return readNumber<std::int64_t>(fields.date.value_or(""));
}

}  // namespace

bool LogCutter::openNext() {
    while (!m_file && m_nextFile < m_files.size()) {
        auto file = std::make_shared<const LogFile>(m_files[m_nextFile++]);
        if (file->isOpen()) {
            m_file = std::move(file);
            m_place = 0;
        }
    }
    return m_file != nullptr;
}

std::vector<LogCutter::Part> LogCutter::next() {
    std::vector<Part> parts;
    std::uint64_t room = m_bytes;
    while (room > 0 && parts.size() < kMostParts && openNext()) {
        const std::uint64_t left = m_file->size() - m_place;
        if (left <= room) {
            parts.push_back({std::exchange(m_file, nullptr), {m_place, LogSpan::kNoEnd}});
            room -= left;
        } else {
            parts.push_back({m_file, {m_place, m_place + room}});
            m_place += std::exchange(room, 0);
        }
    }
    return parts;
}

LogLoad::LogLoad(std::vector<std::filesystem::path> files, std::int64_t now, const Shares &shares)
    : m_now(now),
      m_total(totalSize(files)),
      m_cutter(std::move(files), batchBytes(shares, m_total)) {
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
    Batch batch{LoadedEvents(expectedBytes), {}, {}};
    for (const LogCutter::Part &part : parts) {
        LogReader::readPart(
            *part.file, part.span,
            [this, &batch](const LogLine &line) {
                const EventFields fields = fieldsOf(line);
                const auto [record, classes] = batch.events.add(fields);
                if (const auto moment = momentOf(record, fields)) {
                    batch.arrivals.add(classes.counted, *moment, m_now);
                }
                return true;
            },
            onProgress, batch.extents.emplace_back());
    }
    batch.events.close();
    expectedBytes = batch.events.expectedBytes();
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
    std::optional<Batch> batch = std::move(m_packed.begin()->second);
    m_packed.erase(m_packed.begin());
    ++m_givenAway;
    lock.unlock();
    m_hasRoom.notifyAll();
    return batch;
}

}  // namespace quorbel
