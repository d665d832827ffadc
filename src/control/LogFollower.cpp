#include "control/LogFollower.h"

#include "common/LogTail.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "platform/Text.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint32_t kWatched = IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                   IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

std::uint64_t sizeOf(int fd) {
    struct stat status {};
    return ::fstat(fd, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::size_t hashOf(const LogLine &line) {
    // The fields of a line stand behind one another.
    return std::hash<std::string_view>()({line.date.data(), line.message.end()});
}

/// Calls `visit(line)` for the lines of the file's last parts, in their order: of all parts behind
/// the last one in which nothing is of `moment` or later.
void visitSince(int fd, std::uint64_t end, std::int64_t moment,
                const std::function<void(const LogLine &)> &visit) {
    const auto isLate = [moment](const LogLine &line) { return integerValue(line.date) >= moment; };
    std::uint64_t begin = end;
    for (bool hasLate = true; hasLate && begin > 0;) {
        const std::uint64_t before = partBefore(fd, begin);
        hasLate = false;
        readLines(fd, before, begin, [&](const LogLine &line) {
            hasLate = isLate(line);
            return !hasLate;
        });
        begin = before;
    }
    readLines(fd, begin, end, [&](const LogLine &line) {
        if (isLate(line)) {
            visit(line);
        }
        return true;
    });
}

}  // namespace

LogFollower::LogFollower(std::filesystem::path folder)
    : m_folder(std::move(folder)), m_watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    // Before the folder is looked at: what comes in between is looked at twice, and told once.
    if (::inotify_add_watch(m_watch.get(), m_folder.c_str(), kWatched) < 0) {
        m_error = errno;
        m_watch.reset();
        return;
    }
    takeStock();
}

LogFollower::~LogFollower() = default;

void LogFollower::takeStock() {
    for (const std::string &name : listFolder(m_folder)) {
        if (!hasExtension(name, "log")) {
            continue;
        }
        File file;
        file.source = openRegular(m_folder / name, O_RDONLY);
        struct stat status {};
        if (file.source.isOpen() && ::fstat(file.source.get(), &status) == 0) {
            file.device = status.st_dev;
            file.inode = status.st_ino;
            file.offset = wholeLinesEnd(file.source.get(), sizeOf(file.source.get()));
            m_begin[name] = file.offset;
            m_files[name] = std::move(file);
        }
    }
    // The others grow only where the clock is set; their descriptors are spared.
    for (auto file = m_files.begin(); file != m_files.end(); ++file) {
        if (std::next(file) != m_files.end()) {
            file->second.source.reset();
        }
    }
}

int LogFollower::sourceOf(const std::string &name) const {
    const auto file = m_files.find(name);
    return file == m_files.end() ? -1 : file->second.source.get();
}

LogFollower::Changes LogFollower::changes() {
    Changes changes;
    alignas(inotify_event) std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = readSome(m_watch.get(), buffer.data(), buffer.size())) > 0) {
        for (ssize_t at = 0; at < count;) {
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): as inotify(7) has it
            const auto *event = reinterpret_cast<const inotify_event *>(buffer.data() + at);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT)) != 0) {
                m_watch.reset();
                return changes;
            }
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                for (const std::string &name : listFolder(m_folder)) {
                    changes[name].isNew = true;
                }
            }
            if (event->len > 0) {
                Change &change = changes[event->name];
                change.isNew = change.isNew || (event->mask & IN_CREATE) != 0;
                change.isGone = (event->mask & (IN_DELETE | IN_MOVED_FROM)) != 0;
            }
        }
    }
    return changes;
}

void LogFollower::read(const LogReader::LineHandler &onLine) {
    // In the order of their days.
    for (const auto &[name, change] : changes()) {
        if (hasExtension(name, "log")) {
            look(name, change, onLine);
        }
    }
}

void LogFollower::look(const std::string &name, Change change,
                       const LogReader::LineHandler &onLine) {
    const auto known = m_files.find(name);
    UniqueFd now = openRegular(m_folder / name, O_RDONLY);
    struct stat status {};
    if (!now.isOpen() || ::fstat(now.get(), &status) != 0) {
        if (known != m_files.end() && change.isGone) {
            readOn(known->second, onLine);
            m_files.erase(known);
        }
        return;
    }
    if (known == m_files.end()) {
        // One that was moved here holds what was there once: the service appends to new ones.
        File &file = m_files[name];
        file.offset = change.isNew ? 0 : wholeLinesEnd(now.get(), sizeOf(now.get()));
        file.source = std::move(now);
        file.device = status.st_dev;
        file.inode = status.st_ino;
        readOn(file, onLine);
        return;
    }
    File &file = known->second;
    if (file.device == status.st_dev && file.inode == status.st_ino) {
        file.source = file.source.isOpen() ? std::move(file.source) : std::move(now);
        readOn(file, onLine);
        return;
    }
    file.device = status.st_dev;
    file.inode = status.st_ino;
    replace(file, std::move(now), onLine);
}

void LogFollower::readOn(File &file, const LogReader::LineHandler &onLine) {
    if (file.source.isOpen()) {
        const std::uint64_t size = sizeOf(file.source.get());
        // Nobody makes them shorter; if somebody does, what is left was told.
        file.offset = readLines(file.source.get(), std::min(file.offset, size), size, onLine);
    }
}

std::optional<std::int64_t> LogFollower::lastMoment(const File &file) const {
    std::optional<std::int64_t> moment;
    readLines(file.source.get(), partBefore(file.source.get(), file.offset), file.offset,
              [&moment](const LogLine &line) {
                  moment = integerValue(line.date);
                  return true;
              });
    return moment;
}

void LogFollower::replace(File &file, UniqueFd by, const LogReader::LineHandler &onLine) {
    const UniqueFd now = std::move(by);
    const std::uint64_t end = wholeLinesEnd(now.get(), sizeOf(now.get()));
    if (!file.source.isOpen()) {
        file.offset = end;
        return;
    }
    readOn(file, onLine);
    const std::int64_t since = lastMoment(file).value_or(INT64_MIN);
    Seen seen;
    visitSince(file.source.get(), file.offset, since,
               [&seen](const LogLine &line) { ++seen[hashOf(line)]; });
    visitSince(now.get(), end, since, [&](const LogLine &line) {
        const auto known = seen.find(hashOf(line));
        if (known != seen.end() && known->second > 0) {
            --known->second;
        } else {
            onLine(line);
        }
    });
    file.offset = end;
    file.source = UniqueFd(::fcntl(now.get(), F_DUPFD_CLOEXEC, 0));
}

}  // namespace quorbel
