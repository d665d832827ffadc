#include "service/collect/DiskRecorder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace quorbel::testing {

DiskRecorder &DiskRecorder::instance() {
    static DiskRecorder recorder;
    return recorder;
}

void DiskRecorder::reset() {
    const std::lock_guard lock(m_mutex);
    m_synced.clear();
    m_unsyncedFolders.clear();
    m_mistakes.clear();
    m_replaced.clear();
    whileCopyIsSynced = nullptr;
    stretchWaits = false;
    failures = 0;
}

off_t DiskRecorder::synced(const std::filesystem::path &path) {
    struct stat status {};
    const std::lock_guard lock(m_mutex);
    return ::stat(path.c_str(), &status) == 0 ? m_synced[status.st_ino] : 0;
}

std::vector<std::string> DiskRecorder::mistakes() {
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> result = m_mistakes;
    for (const auto &[inode, name] : m_unsyncedFolders) {
        result.push_back("the folder of " + name);
    }
    return result;
}

std::vector<std::string> DiskRecorder::replaced() {
    const std::lock_guard lock(m_mutex);
    return m_replaced;
}

int DiskRecorder::sync(int fd, long number) {
    std::error_code error;
    const auto name =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error).string();
    if (name.ends_with(".log.new") && whileCopyIsSynced) {
        whileCopyIsSynced();
    }
    if (failures > 0) {
        --failures;
        errno = EIO;
        return -1;
    }
    // What is written while the kernel writes need not be on the disk afterwards.
    struct stat before {};
    const bool known = ::fstat(fd, &before) == 0;
    const auto result = static_cast<int>(::syscall(number, fd));
    if (known && result == 0) {
        const std::lock_guard lock(m_mutex);
        off_t &size = m_synced[before.st_ino];
        size = std::max(size, before.st_size);
        m_unsyncedFolders.erase(before.st_ino);
    }
    return result;
}

int DiskRecorder::rename(const char *from, const char *to) {
    struct stat status {};
    struct stat folder {};
    const std::lock_guard lock(m_mutex);
    const bool known = ::stat(from, &status) == 0 &&
                       ::stat(std::filesystem::path(to).parent_path().c_str(), &folder) == 0;
    if (known && m_synced[status.st_ino] < status.st_size) {
        m_mistakes.push_back(std::string(to) + " was replaced by a file that is not on the disk");
    }
    const int result = ::renameat(AT_FDCWD, from, AT_FDCWD, to);
    if (known && result == 0) {
        m_unsyncedFolders[folder.st_ino] = to;
        m_replaced.emplace_back(std::filesystem::path(to).filename());
    }
    return result;
}

}  // namespace quorbel::testing

using quorbel::testing::DiskRecorder;

extern "C" {

int fdatasync(int fd) {
    return DiskRecorder::instance().sync(fd, SYS_fdatasync);
}

int fsync(int fd) {
    return DiskRecorder::instance().sync(fd, SYS_fsync);
}

int rename(const char *from, const char *to) noexcept {
    return DiskRecorder::instance().rename(from, to);
}

int pthread_cond_clockwait(pthread_cond_t *condition, pthread_mutex_t *mutex, clockid_t clock,
                           const timespec *until) {
    static const auto real = reinterpret_cast<decltype(&pthread_cond_clockwait)>(
        dlsym(RTLD_NEXT, "pthread_cond_clockwait"));
    constexpr std::time_t kHour = 3600;
    ++DiskRecorder::instance().waits;
    timespec later = *until;
    later.tv_sec += DiskRecorder::instance().stretchWaits ? kHour : 0;
    return real(condition, mutex, clock, &later);
}
}
