#include "service/store/SyncHook.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace quorbel::testing {

std::function<void()> whileCopyIsSynced;  // NOLINT(cert-err58-cpp)
bool syncsNothing = false;

}  // namespace quorbel::testing

// In place of the system's.

extern "C" int fsync(int fd) {
    return quorbel::testing::syncsNothing ? 0 : static_cast<int>(::syscall(SYS_fsync, fd));
}

extern "C" int fdatasync(int fd) {
    using quorbel::testing::whileCopyIsSynced;
    std::error_code error;
    const auto file =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error).string();
    if (file.ends_with(".log.new") && whileCopyIsSynced) {
        whileCopyIsSynced();
    }
    return quorbel::testing::syncsNothing ? 0 : static_cast<int>(::syscall(SYS_fdatasync, fd));
}
