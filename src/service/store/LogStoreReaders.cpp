// Those who follow the log files: woken when something is stored, asked when a file is replaced.

#include "service/store/AppendWaker.h"
#include "service/store/LogStore.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace quorbel {

AppendWaker::AppendWaker(LogStore &store)
    : m_store(store), m_signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_signal.isOpen()) {
        throw std::system_error(errno, std::generic_category());
    }
    const MutexLock lock(m_store.m_readersMutex);
    m_store.m_wakers.push_back(this);
}

AppendWaker::~AppendWaker() {
    const MutexLock lock(m_store.m_readersMutex);
    m_store.disarm(*this);
    std::erase(m_store.m_wakers, this);
}

bool AppendWaker::arm() {
    const MutexLock lock(m_store.m_readersMutex);
    if (!m_armed) {
        m_armed = true;
        ++m_store.m_armedWakers;
    }
    // Whoever stores counts first, then looks who is armed; this is the other way round, so that
    // one of the two notices the other.
    if (m_store.m_appends != m_seen) {
        m_store.disarm(*this);
    }
    return m_armed;
}

void AppendWaker::clear() {
    eventfd_t count = 0;
    eventfd_read(m_signal.get(), &count);
    m_seen = m_store.m_appends;
}

void AppendWaker::wake() {
    eventfd_write(m_signal.get(), 1);
}

void LogStore::disarm(AppendWaker &waker) {
    if (waker.m_armed) {
        waker.m_armed = false;
        --m_armedWakers;
    }
}

void LogStore::tellReaders() {
    ++m_appends;
    if (m_armedWakers == 0) {
        return;
    }
    const MutexLock lock(m_readersMutex);
    for (AppendWaker *waker : m_wakers) {
        if (waker->m_armed) {
            disarm(*waker);
            waker->wake();
        }
    }
}

std::string LogStore::appendedFile() {
    const MutexLock lock(m_mutex);
    return m_fileName;
}

void LogStore::addFollower(LogFollower &follower) {
    const MutexLock lock(m_followersMutex);
    m_followers.push_back(&follower);
}

void LogStore::removeFollower(LogFollower &follower) {
    const MutexLock lock(m_followersMutex);
    std::erase(m_followers, &follower);
}

bool LogStore::commit(const LogEdit &edit, const std::function<bool()> &step) {
    bool done = false;
    {
        const MutexLock lock(m_followersMutex);
        done = commitFrom(m_followers.begin(), edit, step);
    }
    const int error = errno;
    if (done) {
        tellReaders();
    }
    errno = error;
    return done;
}

/// One follower within the other.
bool LogStore::commitFrom(std::vector<LogFollower *>::const_iterator next, const LogEdit &edit,
                          const std::function<bool()> &step) {
    if (next == m_followers.end()) {
        return step();
    }
    return (*next)->onEdit(
        edit, [&]() REQUIRES(m_followersMutex) { return commitFrom(next + 1, edit, step); });
}

}  // namespace quorbel
