#include "service/Journal.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace quorbel {

void say(JournalLevel level, std::string_view text) {
    std::string line = "<" + std::to_string(static_cast<int>(level)) + ">" + std::string(text);
    // A file's name can hold a line feed, which would begin a line of its own.
    std::ranges::replace(line, '\n', ' ');
    line += '\n';
    // Nobody is left to tell when this fails.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace quorbel
