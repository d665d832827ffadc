#include "service/export/LogSources.h"

#include "service/store/LogFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

/// What tells the end of a part of a file from others.
struct Tail {
    std::uint64_t hash = 0;
    bool open = false;
};

/// Looks at the last bytes in front of `end`.
Tail tailAt(const UniqueFd &file, std::uint64_t end) {
    std::array<char, 4096> bytes{};
    const auto length = std::min<std::uint64_t>(bytes.size(), end);
    const ssize_t count =
        ::pread(file.get(), bytes.data(), length, static_cast<off_t>(end - length));
    const std::string_view text(bytes.data(),
                                static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    // FNV-1a; the number goes into databases, so it has to stay the same.
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    return {hash, !text.empty() && text.back() != '\n'};
}

std::uint64_t inodeOf(const UniqueFd &file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 ? status.st_ino : 0;
}

}  // namespace

LogSource::LogSource(std::string name, UniqueFd file, std::uint64_t size)
    : m_file(std::move(file)) {
    const Tail tail = tailAt(m_file, size);
    m_mark = {std::move(name), inodeOf(m_file), size, tail.hash, tail.open};
}

bool LogSource::continues(const LogMark &mark) const {
    if (m_mark == mark) {
        return true;
    }
    return m_mark.name == mark.name && m_mark.inode == mark.inode && m_mark.size > mark.size &&
           !mark.open && tailAt(m_file, mark.size).hash == mark.tail;
}

bool LogSource::read(std::uint64_t begin, const LineHandler &onLine) const {
    return forEachPiece(m_file.get(), {begin, m_mark.size},
                        [&onLine](std::uint64_t /*offset*/, std::string_view piece) {
                            const auto line = splitLogLine(piece);
                            return !line || onLine(*line);
                        });
}

LogSources::LogSources(LogStore &store) {
    const auto names = store.fileNames();
    if (!names) {
        noteFolderProblem();
        return;
    }
    bool hasMissed = false;
    for (const std::string &name : *names) {
        UniqueFd file = openLogFile(store.path(name));
        if (file.isOpen()) {
            const std::uint64_t size = store.settledSize(file);
            m_sources.emplace_back(name, std::move(file), size);
        } else if (errno == ENOENT) {
            hasMissed = true;
        } else if (errno != EINVAL) {
            m_problem = name + " cannot be read: " + std::generic_category().message(errno);
        }
    }
    // A file that is gone was removed since it was listed, unless the whole folder went away.
    if (hasMissed && !store.fileNames()) {
        noteFolderProblem();
    }
}

/// Of what errno tells.
void LogSources::noteFolderProblem() {
    m_problem =
        "The folder of the log files cannot be listed: " + std::generic_category().message(errno);
}

}  // namespace quorbel
