#include "platform/FilePlace.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace quorbel {

namespace {

constexpr std::uint64_t kNanoseconds = 1'000'000'000;

std::optional<FileMark> markAt(int folder, const char *path, int flags) {
    struct statx status {};
    if (::statx(folder, path, flags, STATX_INO | STATX_BTIME, &status) != 0) {
        return std::nullopt;
    }
    FileMark mark{status.stx_ino, 0};
    if ((status.stx_mask & STATX_BTIME) != 0) {
        mark.born = static_cast<std::uint64_t>(status.stx_btime.tv_sec) * kNanoseconds +
                    status.stx_btime.tv_nsec;
    }
    return mark;
}

}  // namespace

std::optional<FileMark> markOf(int fd) {
    return markAt(fd, "", AT_EMPTY_PATH);
}

std::optional<FileMark> markOf(const std::filesystem::path &file) {
    return markAt(AT_FDCWD, file.c_str(), 0);
}

}  // namespace quorbel
