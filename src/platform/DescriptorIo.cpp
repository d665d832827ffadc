#include "platform/DescriptorIo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quorbel {

UniqueFd openRegular(const std::filesystem::path &path, int flags, mode_t mode) {
    // Without O_NONBLOCK, opening a FIFO would wait for its other end.
    UniqueFd file(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode));
    struct stat status {};
    if (file.isOpen() && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        file.reset();
        errno = EINVAL;
    }
    return file;
}

ssize_t readSome(int fd, char *buffer, std::size_t room) {
    ssize_t count = 0;
    do {
        count = ::read(fd, buffer, room);
    } while (count < 0 && errno == EINTR);
    return count;
}

std::optional<std::string> readToEnd(int fd) {
    struct stat status {};
    if (::fstat(fd, &status) != 0) {
        return std::nullopt;
    }
    // One byte more than a file holds, so that its end is met without growing the buffer. The size
    // is a hint only: files in /proc say 0, and a log file may grow while it is read.
    constexpr std::size_t kSmallestRead = 4096;
    std::string bytes(std::max(static_cast<std::size_t>(status.st_size) + 1, kSmallestRead), '\0');
    std::size_t length = 0;
    ssize_t count = 0;
    while ((count = readSome(fd, bytes.data() + length, bytes.size() - length)) > 0) {
        length += static_cast<std::size_t>(count);
        if (length == bytes.size()) {
            bytes.resize(2 * bytes.size());
        }
    }
    if (count < 0) {
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

std::size_t writeFully(int fd, std::string_view bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR) {
            break;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return written;
}

}  // namespace quorbel
