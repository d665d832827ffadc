#include "service/bus/NotificationQueue.h"

namespace quorbel {

void NotificationQueue::push(NotificationType type, std::string_view line) {
    while (m_count > 0 &&
           (m_count >= kMostNotifications || m_bytes.size() - m_begin + line.size() > kMostBytes)) {
        drop();
    }
    m_bytes += static_cast<char>(type);
    m_bytes += line;
    ++m_count;
}

Notification NotificationQueue::front() const {
    const std::string_view line(m_bytes.data() + m_begin + 1, frontEnd() - m_begin - 1);
    return {static_cast<NotificationType>(m_bytes[m_begin]), line};
}

void NotificationQueue::pop() {
    m_begin = frontEnd();
    --m_count;
    // Moving what is left costs less than what was taken out before, so each byte is moved at most
    // once.
    constexpr std::size_t kWorthwhile = 4096;
    constexpr std::size_t kLargestIdle = std::size_t{1} << 20U;
    if (m_count == 0) {
        // Gives back what a flood took.
        m_bytes.clear();
        if (m_bytes.capacity() > kLargestIdle) {
            m_bytes.shrink_to_fit();
        }
        m_begin = 0;
    } else if (m_begin >= kWorthwhile && m_begin >= m_bytes.size() / 2) {
        m_bytes.erase(0, m_begin);
        m_begin = 0;
    }
}

void NotificationQueue::drop() {
    pop();
    ++m_dropped;
}

void NotificationQueue::dropAll() {
    while (!empty()) {
        drop();
    }
}

/// Where the front notification ends: behind its line feed, the only one that a line holds.
std::size_t NotificationQueue::frontEnd() const {
    return m_bytes.find('\n', m_begin) + 1;
}

}  // namespace quorbel
