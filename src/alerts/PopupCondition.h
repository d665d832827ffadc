#pragma once

#include <condition_variable>
#include <mutex>

namespace quorbel {

/// Tells a waiting thread that one popup has closed, or will not come, whether it waits already or
/// only begins to.
class PopupCondition {
public:
    void signal() {
        const std::lock_guard lock(m_mutex);
        m_isSignalled = true;
        m_changed.notify_all();
    }

    void wait() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isSignalled; });
    }

    [[nodiscard]] bool isSignalled() const {
        const std::lock_guard lock(m_mutex);
        return m_isSignalled;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isSignalled = false;
};

}  // namespace quorbel
