#include "service/Collector.h"

#include <ctime>

namespace quorbel {

void Collector::beginTurn() {
    m_seconds = std::time(nullptr);
}

void Collector::receive(std::string_view message, std::string_view host, bool cut) {
    ++m_counters.received;
    const auto parsed = m_parser.parse(message);
    if (!parsed || !parsed->wellFormed || cut) {
        ++m_counters.malformed;
    }
    if (!parsed) {
        return;
    }
    m_writer.append({m_seconds, parsed->priority, host, parsed->text}, m_lines);
    m_urgent = m_urgent || parsed->priority.isUrgent();
}

void Collector::endTurn() {
    if (m_lines.empty()) {
        return;
    }
    const LogStore::Result result = m_store.append(m_lines, m_seconds, m_urgent);
    m_counters.stored += result.stored;
    m_counters.notStored += result.notStored;
    // Also what could not be stored: then the front-end is the only one left to show it.
    std::string_view rest = m_lines;
    while (!rest.empty()) {
        const std::size_t length = rest.find('\n') + 1;
        m_notifications.push(NotificationType::kSet, rest.substr(0, length));
        rest.remove_prefix(length);
    }
    m_lines.clear();
    m_urgent = false;
}

}  // namespace quorbel
