#pragma once

#include "platform/ThreadAnnotations.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace quorbel {

/// A lock for GUARDED_BY and REQUIRES: the standard library's is none that clang knows. MutexLock
/// takes it.
class QUORBEL_THREAD_ANNOTATION(capability("mutex")) Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex &) = delete;
    Mutex &operator=(const Mutex &) = delete;

private:
    friend class MutexLock;
    std::mutex m_mutex;
};

/// Holds a Mutex until its end, but for what lies between unlock() and lock(). For one thread.
class QUORBEL_THREAD_ANNOTATION(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex &mutex) QUORBEL_THREAD_ANNOTATION(acquire_capability(mutex))
        : m_lock(mutex.m_mutex) {}
    ~MutexLock() QUORBEL_THREAD_ANNOTATION(release_capability()) = default;
    MutexLock(const MutexLock &) = delete;
    MutexLock &operator=(const MutexLock &) = delete;

    void unlock() QUORBEL_THREAD_ANNOTATION(release_capability()) { m_lock.unlock(); }
    void lock() QUORBEL_THREAD_ANNOTATION(acquire_capability()) { m_lock.lock(); }

private:
    friend class Condition;
    std::unique_lock<std::mutex> m_lock;
};

/// Something to wait for under a Mutex. A predicate is called with the lock held and says so:
/// wait(lock, [this]() REQUIRES(m_mutex) { return m_done; }).
class Condition {
public:
    void notifyOne() { m_condition.notify_one(); }
    void notifyAll() { m_condition.notify_all(); }

    /// Until notified; may also return without.
    void wait(MutexLock &lock) { m_condition.wait(lock.m_lock); }
    template <typename Predicate>
    void wait(MutexLock &lock, Predicate isDone) {
        m_condition.wait(lock.m_lock, std::move(isDone));
    }

    /// Until notified or then; may also return earlier.
    template <typename Time>
    void waitUntil(MutexLock &lock, Time end) {
        m_condition.wait_until(lock.m_lock, end);
    }
    /// These return what the predicate says in the end.
    template <typename Time, typename Predicate>
    bool waitUntil(MutexLock &lock, Time end, Predicate isDone) {
        return m_condition.wait_until(lock.m_lock, end, std::move(isDone));
    }
    template <typename Duration, typename Predicate>
    bool waitFor(MutexLock &lock, Duration limit, Predicate isDone) {
        return m_condition.wait_for(lock.m_lock, limit, std::move(isDone));
    }

private:
    std::condition_variable m_condition;
};

}  // namespace quorbel
