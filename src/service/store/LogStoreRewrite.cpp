// Replacing a log file by an edited copy of it, while events go on arriving.

#include "service/store/LogStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <numeric>

namespace quorbel {

namespace {

std::uint64_t totalOf(const std::vector<ByteRange> &ranges) {
    return std::accumulate(
        ranges.begin(), ranges.end(), std::uint64_t{0},
        [](std::uint64_t sum, ByteRange range) { return sum + range.end - range.begin; });
}

std::uint64_t totalOf(const std::vector<Insertion> &insertions) {
    return std::accumulate(
        insertions.begin(), insertions.end(), std::uint64_t{0},
        [](std::uint64_t sum, const Insertion &insertion) { return sum + insertion.text.size(); });
}

}  // namespace

bool LogStore::cutOut(const std::string &name, const UniqueFd &file,
                      const std::vector<ByteRange> &ranges, const std::atomic<bool> &stop) {
    if (removeWhole(name, file, totalOf(ranges))) {
        syncFolder();
        return true;
    }
    const std::uint64_t size = settledSize(file);
    const LogChange change{ranges, {}};
    const Edit edit{change, size - std::min(size, totalOf(ranges)),
                    [&](ByteRange part, int to) { return copyPart(file.get(), part, ranges, to); }};
    return replace(name, file, edit, stop);
}

bool LogStore::putIn(const std::string &name, const UniqueFd &file,
                     const std::vector<Insertion> &insertions, const std::atomic<bool> &stop) {
    std::size_t next = 0;
    const LogChange change{{}, insertions};
    const Edit edit{change, settledSize(file) + totalOf(insertions), [&](ByteRange part, int to) {
                        return copyPartWith(file.get(), part, insertions, next, to);
                    }};
    if (replace(name, file, edit, stop)) {
        return true;
    }
    const int error = errno;
    removeWhole(name, file, 0);
    errno = error;
    return false;
}

/// Removes a file that has so many bytes, all of which are to go: that works on a full disk, too.
bool LogStore::removeWhole(const std::string &name, const UniqueFd &file, std::uint64_t size) {
    const ByteRange whole{0, size};
    const LogChange change{{&whole, 1}, {}};
    // Asked for first, so that followers have nothing to do where it cannot be.
    return settledSize(file) == size && commit({name, file, nullptr, change}, [&] {
               const MutexLock lock(m_mutex);
               struct stat status {};
               const bool removed = ::fstat(file.get(), &status) == 0 &&
                                    static_cast<std::uint64_t>(status.st_size) == size &&
                                    isSameFile(file, path(name)) &&
                                    ::unlink(path(name).c_str()) == 0;
               m_edits += static_cast<std::uint64_t>(removed);
               return removed;
           });
}

bool LogStore::replace(const std::string &name, const UniqueFd &file, const Edit &edit,
                       const std::atomic<bool> &stop) {
    const std::string temporary = replacementName(path(name));
    ::unlink(temporary.c_str());
    const UniqueFd replacement = openForAppending(temporary, O_CREAT | O_EXCL);
    std::uint64_t copied = 0;
    // A copy that fills the disk would cost new events their place, over and over.
    if (!replacement.isOpen() || !hasRoomFor(replacement.get(), edit.size) ||
        !copySettled(file, edit, replacement.get(), copied, stop) ||
        !commit({name, file, &replacement, edit.change},
                [&] { return swap(name, file, edit, replacement, copied); })) {
        const int error = errno;
        ::unlink(temporary.c_str());
        errno = error;
        return false;
    }
    syncFolder();
    return true;
}

/// Copies the file and syncs the copy, and again what arrived meanwhile, until that was nothing.
bool LogStore::copySettled(const UniqueFd &file, const Edit &edit, int to, std::uint64_t &copied,
                           const std::atomic<bool> &stop) {
    // A step takes no longer than whoever wants to stop can wait, on a slow disk, too.
    constexpr std::uint64_t kStep = std::uint64_t{32} << 20U;
    // Under a flood, something new is always there: what is left after the last round is copied
    // and synced while events wait.
    constexpr int kMostRounds = 5;
    for (int round = 0; round < kMostRounds; ++round) {
        const std::uint64_t size = settledSize(file);
        if (round > 0 && size == copied) {
            return true;
        }
        do {
            const std::uint64_t end = std::min(copied + kStep, size);
            if (stop) {
                errno = ECANCELED;
                return false;
            }
            if (!edit.copy({copied, end}, to) || ::fdatasync(to) != 0) {
                return false;
            }
            copied = end;
        } while (copied < size);
    }
    return true;
}

bool LogStore::swap(const std::string &name, const UniqueFd &file, const Edit &edit,
                    const UniqueFd &replacement, std::uint64_t copied) {
    const std::filesystem::path target = path(name);
    const MutexLock lock(m_mutex);
    struct stat status {};
    if (!isSameFile(file, target) || ::fstat(file.get(), &status) != 0) {
        errno = ESTALE;
        return false;
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    // What was synced in the old file must be on disk in the new one before it takes its place.
    // append() notices by itself that the name stands for another file now.
    const bool replaced = edit.copy({copied, size}, replacement.get()) &&
                          (size == copied || ::fdatasync(replacement.get()) == 0) &&
                          ::rename(replacementName(target).c_str(), target.c_str()) == 0;
    m_edits += static_cast<std::uint64_t>(replaced);
    return replaced;
}

}  // namespace quorbel
