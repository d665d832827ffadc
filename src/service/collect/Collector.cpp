#include "service/collect/Collector.h"

#include <ctime>

namespace quorbel {

void Collector::configure(const Dictionary &settings) {
    m_filters = FilterSet(settings);
    m_sender = {};
}

void Collector::beginTurn() {
    m_seconds = std::time(nullptr);
    if (m_names.isWanted()) {
        m_names.beginTurn(HostNames::Clock::now());
        // Its name may be known by now.
        m_sender.text.clear();
    }
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
    const std::size_t begin = m_lines.size();
    const Sender &sender = senderOf(host);
    m_writer.append({m_seconds, parsed->priority, sender.shown, parsed->text}, m_lines);
    if (consider(sender, parsed->priority, begin)) {
        m_urgent = m_urgent || parsed->priority.isUrgent();
    }
    // A turn can bring more than should be held at once.
    constexpr std::size_t kMostHeld = std::size_t{1} << 20U;
    if (m_lines.size() >= kMostHeld) {
        storeAndTell();
    }
}

const Collector::Sender &Collector::senderOf(std::string_view host) {
    if (host == m_sender.text) {
        return m_sender;
    }
    m_sender.text = host;
    m_sender.shown = host;
    m_sender.address = IpAddress::parse(host).value_or(IpAddress());
    if (m_names.isWanted()) {
        const std::string_view name = m_names.nameOf(m_sender.address);
        m_sender.shown = name.empty() ? host : name;
    }
    return m_sender;
}

/// Looks at the message whose lines begin at `begin`: takes them back when the filters keep it out,
/// and adds the events that actions set. Returns whether the message stays.
bool Collector::consider(const Sender &sender, Priority priority, std::size_t begin) {
    if (m_filters.isEmpty() && m_actions.isEmpty()) {
        return true;
    }
    m_subject.set(sender.address, priority, std::string_view(m_lines).substr(begin));
    if (!m_filters.passes(m_subject)) {
        ++m_counters.filtered;
        m_lines.resize(begin);
        return false;
    }
    if (!m_actions.isEmpty()) {
        for (const EventToSet &event :
             m_actions.onEvent(m_subject, m_seconds, sender.shown, Actions::Clock::now())) {
            m_writer.append({m_seconds, event.priority, sender.shown, event.message}, m_lines);
            m_urgent = m_urgent || event.priority.isUrgent();
        }
    }
    return true;
}

void Collector::endTurn() {
    if (!m_lines.empty()) {
        storeAndTell();
    }
}

void Collector::storeAndTell() {
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
