#include "core/LastSave.h"

namespace quorbel {

namespace {

/// What else the reply says then is about filters that were stored.
bool isTaken(const std::optional<std::string> &reply) {
    return reply && (*reply == "OK" || reply->starts_with("The settings are stored."));
}

}  // namespace

std::uint64_t LastSave::begin() {
    const MutexLock lock(m_mutex);
    return ++m_begun;
}

void LastSave::end(std::uint64_t number, const std::optional<std::string> &reply) {
    const MutexLock lock(m_mutex);
    if (number < m_ended) {
        return;
    }
    m_ended = number;
    m_problem = isTaken(reply) ? std::nullopt : std::optional(reply.value_or(""));
}

std::optional<std::string> LastSave::problem() const {
    const MutexLock lock(m_mutex);
    return m_problem;
}

}  // namespace quorbel
