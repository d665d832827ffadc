#include "service/store/RemovalFeed.h"

#include <sys/eventfd.h>

#include <utility>

namespace quorbel {

RemovalFeed::RemovalFeed(std::chrono::milliseconds patience)
    : m_patience(patience), m_signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool RemovalFeed::offer(std::string lines) {
    std::unique_lock lock(m_mutex);
    if (m_closed) {
        return false;
    }
    m_lines = std::move(lines);
    m_offered = true;
    eventfd_write(m_signal.get(), 1);
    m_taken.wait_for(lock, m_patience, [this] { return m_closed || !m_offered; });
    return !m_offered.exchange(false);
}

std::optional<std::string> RemovalFeed::take() {
    const std::lock_guard lock(m_mutex);
    if (!m_offered) {
        return std::nullopt;
    }
    m_offered = false;
    m_taken.notify_one();
    return std::move(m_lines);
}

void RemovalFeed::close() {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    m_taken.notify_one();
}

}  // namespace quorbel
