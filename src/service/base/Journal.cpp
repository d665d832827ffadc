#include "service/base/Journal.h"

#include "platform/Mutex.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <string>

namespace quorbel {

namespace {

/// Of so many bytes a pipe that takes anything takes all, and in one piece.
constexpr std::size_t kLongestLine = PIPE_BUF;

struct Drops {
    Mutex mutex;  ///< held while a line is written, too
    std::uint64_t total GUARDED_BY(mutex) = 0;
    std::uint64_t unsaid GUARDED_BY(mutex) = 0;
};

Drops &drops() {
    static Drops instance;
    return instance;
}

/// The stream may be shared with other programs, so that its blocking mode is not ours to change.
bool writeWithoutWaiting(std::string_view line) {
    pollfd stream{STDERR_FILENO, POLLOUT, 0};
    return ::poll(&stream, 1, 0) == 1 && (stream.revents & POLLOUT) != 0 &&
           ::write(STDERR_FILENO, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

std::string lineOf(JournalLevel level, std::string_view text) {
    std::string line = "<" + std::to_string(static_cast<int>(level)) + ">" + std::string(text);
    // A file's name can hold a line feed, which would begin a line of its own.
    std::ranges::replace(line, '\n', ' ');
    return line += '\n';
}

void write(JournalLevel level, std::string_view text) {
    Drops &state = drops();
    const MutexLock lock(state.mutex);
    if (state.unsaid > 0 &&
        writeWithoutWaiting(lineOf(JournalLevel::kWarning,
                                   "Journal lines that were dropped because nobody read them: " +
                                       std::to_string(state.unsaid)))) {
        state.unsaid = 0;
    }
    // In their order: while it is not known that lines are missing, none may follow them.
    if (state.unsaid > 0 || !writeWithoutWaiting(lineOf(level, text))) {
        ++state.unsaid;
        ++state.total;
    }
}

/// How much of a text one line can hold, without cutting a character.
std::size_t lengthForLine(std::string_view text) {
    constexpr std::size_t kMost = kLongestLine - std::string_view("<0>\n").size();
    constexpr std::size_t kLongestCharacter = 4;
    std::size_t length = std::min(text.size(), kMost);
    const auto isWithinCharacter = [text](std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    };
    while (length > kMost - kLongestCharacter && isWithinCharacter(length)) {
        --length;
    }
    return length;
}

}  // namespace

void say(JournalLevel level, std::string_view text) {
    do {
        const std::size_t length = lengthForLine(text);
        write(level, text.substr(0, length));
        text.remove_prefix(length);
    } while (!text.empty());
}

std::uint64_t journalLinesDropped() {
    Drops &state = drops();
    const MutexLock lock(state.mutex);
    return state.total;
}

}  // namespace quorbel
