#include "service/store/RemovalFeed.h"

#include "platform/Utf8.h"

#include <sys/eventfd.h>

#include <utility>

namespace quorbel {

RemovalFeed::RemovalFeed(std::chrono::milliseconds patience)
    : m_patience(patience), m_signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool RemovalFeed::offer(std::string lines) {
    MutexLock lock(m_mutex);
    if (m_closed) {
        return false;
    }
    m_lines = std::move(lines);
    m_offered = true;
    eventfd_write(m_signal.get(), 1);
    m_taken.waitFor(lock, m_patience,
                    [this]() REQUIRES(m_mutex) { return m_closed || !m_offered; });
    return !m_offered.exchange(false);
}

std::optional<std::string> RemovalFeed::take() {
    const MutexLock lock(m_mutex);
    if (!m_offered) {
        return std::nullopt;
    }
    m_offered = false;
    m_taken.notifyOne();
    return std::move(m_lines);
}

void RemovalFeed::close() {
    const MutexLock lock(m_mutex);
    m_closed = true;
    m_taken.notifyOne();
}

bool canBeTold(std::string_view line) {
    if (line.find('\0') != std::string_view::npos) {
        return false;
    }
    while (!line.empty()) {
        line.remove_prefix(asciiPrefixLength(line));
        if (line.empty()) {
            break;
        }
        const Utf8Character character = firstUtf8Character(line);
        const char32_t code = character.code;
        if (character.length == 0 || (code >= 0xFDD0 && code <= 0xFDEF) ||
            (code & 0xFFFE) == 0xFFFE) {
            return false;
        }
        line.remove_prefix(character.length);
    }
    return true;
}

}  // namespace quorbel
