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
        m_closed = true;
        m_signalled.notify_all();
    }

    void wait() {
        std::unique_lock lock(m_mutex);
        m_signalled.wait(lock, [this] { return m_closed; });
    }

    [[nodiscard]] bool isSignalled() const {
        const std::lock_guard lock(m_mutex);
        return m_closed;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_signalled;
    bool m_closed = false;
};

}  // namespace quorbel
