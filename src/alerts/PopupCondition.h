#pragma once

#include "platform/Mutex.h"

namespace quorbel {

/// Tells a waiting thread that one popup has closed, or will not come, whether it waits already or
/// only begins to.
class PopupCondition {
public:
    void signal() {
        const MutexLock lock(m_mutex);
        m_isSignalled = true;
        m_changed.notifyAll();
    }

    void wait() {
        MutexLock lock(m_mutex);
        m_changed.wait(lock, [this]() REQUIRES(m_mutex) { return m_isSignalled; });
    }

    [[nodiscard]] bool isSignalled() const {
        const MutexLock lock(m_mutex);
        return m_isSignalled;
    }

private:
    mutable Mutex m_mutex;
    Condition m_changed;
    bool m_isSignalled GUARDED_BY(m_mutex) = false;
};

}  // namespace quorbel
