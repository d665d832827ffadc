#include "core/Event.h"

#include "core/EventList.h"

#include <utility>

namespace quorbel {

Event::Event(EventList &list, EventId id) : m_list(&list), m_id(id) {
    m_list->hold(m_id);
}

Event::Event(const Event &other) : m_list(other.m_list), m_id(other.m_id) {
    if (m_list != nullptr) {
        m_list->hold(m_id);
    }
}

Event::Event(Event &&other) noexcept
    : m_list(std::exchange(other.m_list, nullptr)), m_id(other.m_id) {}

Event &Event::operator=(Event other) noexcept {
    std::swap(m_list, other.m_list);
    std::swap(m_id, other.m_id);
    return *this;
}

Event::~Event() {
    if (m_list != nullptr) {
        m_list->release(m_id);
    }
}

std::optional<std::string> Event::value(std::string_view key) const {
    return m_list->value(m_id, key);
}

std::optional<std::int64_t> Event::moment() const {
    const auto row = m_list->rowOf(m_id);
    return row ? m_list->momentHeld(*row) : std::nullopt;
}

}  // namespace quorbel
