#include "core/GapReader.h"

#include "common/LogNames.h"
#include "common/LogTail.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace quorbel {

namespace {

/// How many lines are read between two looks at the clock.
constexpr unsigned kLinesAtOnce = 32;

/// Whether a line begins there.
bool isLineBegin(int fd, std::uint64_t offset) {
    char before = '\0';
    return offset == 0 ||
           (::pread(fd, &before, 1, static_cast<off_t>(offset - 1)) == 1 && before == '\n');
}

std::uint64_t sizeOf(int fd) {
    struct stat status {};
    return ::fstat(fd, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

/// Opens a part's file; false when it is not the one of that place, or has no line that begins
/// there.
bool GapReader::openAt(Part &part, const FilePlace &place) const {
    part.file = openRegular(part.path, O_RDONLY);
    return part.file.isOpen() && markOf(part.file.get()) == place.file &&
           isLineBegin(part.file.get(), place.offset);
}

/// Adds a file of the log.
GapReader::Start GapReader::add(const std::string &name, const FilePlace *from,
                                const FilePlace &to) {
    Part part{m_folder / name, {}, 0, {}};
    if (from != nullptr && name == from->name && from->offset > 0) {
        part.begin = from->offset;
        if (!openAt(part, *from)) {
            return Start::kLost;
        }
    }
    if (name == to.name) {
        part.end = to.offset;
        if (to.offset < part.begin) {
            return Start::kLost;
        }
        if (!openAt(part, to)) {
            return Start::kOutdated;
        }
    }
    m_parts.push_back(std::move(part));
    return Start::kReady;
}

GapReader::Start GapReader::begin(const FilePlace &from, const FilePlace &to) {
    m_parts.clear();
    // At its begin, a file may be any one of that name.
    bool isFromThere = from.offset == 0;
    bool isToThere = to.offset == 0;
    Start start = to.name < from.name ? Start::kLost : Start::kReady;
    for (const std::string &name : listFolder(m_folder)) {
        if (start == Start::kReady && isDailyLogName(name) && name >= from.name &&
            name <= to.name) {
            start = add(name, &from, to);
            isFromThere = isFromThere || name == from.name;
            isToThere = isToThere || name == to.name;
        }
    }
    if (start == Start::kReady && !(isFromThere && isToThere)) {
        start = isFromThere ? Start::kOutdated : Start::kLost;
    }
    if (start != Start::kReady) {
        m_parts.clear();
    }
    return start;
}

GapReader::Start GapReader::beginAnew(const FilePlace &to, const std::string &newest) {
    m_parts.clear();
    bool isToThere = to.offset == 0;
    Start start = Start::kReady;
    for (const std::string &name : listFolder(m_folder)) {
        if (start == Start::kReady && hasExtension(name, "log") &&
            (!isDailyLogName(name) || name <= std::max(to.name, newest))) {
            start = add(name, nullptr, to);
            isToThere = isToThere || name == to.name;
        }
    }
    if (!isToThere) {
        start = Start::kOutdated;
    }
    if (start != Start::kReady) {
        m_parts.clear();
    }
    return start;
}

std::uint64_t GapReader::bytesLeft() const {
    std::uint64_t bytes = 0;
    for (const Part &part : m_parts) {
        const std::uint64_t end = part.end ? *part.end : totalSize(std::vector{part.path});
        bytes += end - std::min(end, part.begin);
    }
    return bytes;
}

std::vector<LogStretch> GapReader::takeRest() {
    std::vector<LogStretch> rest;
    for (Part &part : m_parts) {
        LogStretch &stretch = rest.emplace_back(LogStretch{part.path});
        stretch.span = {part.begin, part.end.value_or(LogSpan::kNoEnd)};
        stretch.isOfWholeLines = true;
        if (part.file.isOpen()) {
            stretch.file = std::make_shared<const LogFile>(part.path, std::move(part.file));
        }
    }
    m_parts.clear();
    return rest;
}

void GapReader::run(const LogReader::LineHandler &onLine, const std::function<bool()> &isTimeUp) {
    bool isUp = false;
    unsigned lines = 0;
    const auto onNext = [&](const LogLine &line) {
        isUp = !onLine(line) || (++lines % kLinesAtOnce == 0 && isTimeUp());
        return !isUp;
    };
    while (!isUp && !m_parts.empty()) {
        Part &part = m_parts.front();
        if (!part.file.isOpen()) {
            part.file = openRegular(part.path, O_RDONLY);
        }
        const std::uint64_t end = part.end ? *part.end : sizeOf(part.file.get());
        const std::uint64_t before = part.begin;
        part.begin = readLines(part.file.get(), part.begin, end, onNext);
        // What has no line end yet is somebody else's to read.
        if (part.begin >= end || (!isUp && part.begin == before)) {
            m_parts.pop_front();
        }
        isUp = isUp || isTimeUp();
    }
}

}  // namespace quorbel
