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
