// Preloaded into the service by CrashTest: notes which part of each file has reached the disk, in
// the file that QUORBEL_SYNC_PROBE names, as lines "inode size".

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

using Sync = int (*)(int);

int noted(const char *name, int fd) {
    // What is appended while the kernel writes need not be on disk afterwards.
    struct stat before {};
    fstat(fd, &before);
    const auto real = reinterpret_cast<Sync>(dlsym(RTLD_NEXT, name));
    const int result = real(fd);
    const char *probe = std::getenv("QUORBEL_SYNC_PROBE");  // NOLINT(concurrency-mt-unsafe)
    if (result == 0 && probe != nullptr && S_ISREG(before.st_mode)) {
        const int log = open(probe, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
        dprintf(log, "%lu %ld\n", before.st_ino, before.st_size);
        close(log);
    }
    return result;
}

}  // namespace

extern "C" {

int fdatasync(int fd) {
    return noted("fdatasync", fd);
}

int fsync(int fd) {
    return noted("fsync", fd);
}
}
