#include "service/output/SystemSteps.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace quorbel::testing {

bool syncsNotAtAll = false;

SystemSteps &systemSteps() {
    thread_local SystemSteps steps;
    return steps;
}

namespace {

/// Whether a step is to fail.
bool fails() {
    SystemSteps &steps = systemSteps();
    if (!steps.areCounted) {
        return false;
    }
    if (steps.untilEnd >= 0 && steps.untilEnd-- == 0) {
        ::_exit(0);
    }
    if (steps.untilFault > 0) {
        --steps.untilFault;
        return false;
    }
    if (steps.untilFault < 0 || steps.faults <= 0) {
        return false;
    }
    --steps.faults;
    errno = steps.error;
    return true;
}

int result(long value) {
    return static_cast<int>(value);
}

}  // namespace
}  // namespace quorbel::testing

using quorbel::testing::fails;
using quorbel::testing::syncsNotAtAll;

// In place of the system's.

extern "C" int fsync(int fd) {
    return fails() ? -1 : syncsNotAtAll ? 0 : quorbel::testing::result(::syscall(SYS_fsync, fd));
}

extern "C" int fdatasync(int fd) {
    return fails()         ? -1
           : syncsNotAtAll ? 0
                           : quorbel::testing::result(::syscall(SYS_fdatasync, fd));
}

extern "C" int rename(const char *from, const char *to) noexcept {
    return fails() ? -1 : quorbel::testing::result(::syscall(SYS_rename, from, to));
}

extern "C" int unlink(const char *name) noexcept {
    return fails() ? -1 : quorbel::testing::result(::syscall(SYS_unlink, name));
}

extern "C" ssize_t write(int fd, const void *bytes, size_t count) {
    // Half of it is there when it ends, or fails.
    if (quorbel::testing::systemSteps().areCounted && count > 1) {
        const ssize_t half = ::syscall(SYS_write, fd, bytes, count / 2);
        if (half < 0 || fails()) {
            return half;
        }
        const ssize_t rest =
            ::syscall(SYS_write, fd, static_cast<const char *>(bytes) + half, count - count / 2);
        return rest < 0 ? half : half + rest;
    }
    return fails() ? -1 : ::syscall(SYS_write, fd, bytes, count);
}

extern "C" int open(const char *name, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = static_cast<mode_t>((flags & O_CREAT) != 0 ? va_arg(rest, int) : 0);
    va_end(rest);
    return fails() ? -1
                   : quorbel::testing::result(::syscall(SYS_openat, AT_FDCWD, name, flags, mode));
}
