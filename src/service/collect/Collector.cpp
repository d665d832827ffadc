#include "service/collect/Collector.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace quorbel {

namespace {

/// What a TLS client says first (RFC 8446, 5.1): a handshake record of version 3.
bool isTlsGreeting(std::string_view message) {
    return message.starts_with("\x16\x03");
}

/// How many bytes the first `count` lines have.
std::size_t sizeOfLines(std::string_view lines, std::size_t count) {
    std::size_t size = 0;
    for (; count > 0; --count) {
        size = lines.find('\n', size) + 1;
    }
    return size;
}

}  // namespace

void Collector::configure(const Dictionary &settings) {
    m_filters = FilterSet(settings);
    m_sender = {};
}

void Collector::trust(std::vector<AddressNetwork> relays) {
    m_relays = std::move(relays);
    m_sender = {};
}

void Collector::beginTurn() {
    m_seconds = std::time(nullptr);
    if (m_names.isWanted()) {
        m_names.beginTurn(HostNames::Clock::now());
        // Its name may be known by now.
        m_sender.shown.clear();
    }
}

void Collector::receive(std::string_view message, const IpAddress &sender, bool cut) {
    ++m_counters.received;
    const auto parsed = m_parser.parse(message);
    if (!parsed || !parsed->wellFormed || cut) {
        ++m_counters.malformed;
        if (isTlsGreeting(message)) {
            m_refusals.note(sender, RefusalReason::kWrongPort, "TLS");
        } else {
            m_refusals.note(sender, RefusalReason::kMalformed, message);
        }
    }
    if (!parsed) {
        return;
    }
    const std::size_t begin = m_lines.size();
    const Sender &from = senderOf(sender);
    const std::string_view relayed = from.isRelay ? relayedHost(parsed->hostName) : "";
    const std::string_view host = relayed.empty() ? from.shown : relayed;
    const auto written =
        m_writer.append({m_seconds, parsed->priority, host, parsed->text}, m_lines);
    m_subject.set(from.address, parsed->priority, std::string_view(m_lines).substr(begin),
                  written.prefix, relayed);
    if (isFilteredOut(sender)) {
        m_lines.resize(begin);
        return;
    }
    m_urgent = m_urgent || parsed->priority.isUrgent();
    setEventsOfActions(host);
    // A turn can bring more than should be held at once.
    constexpr std::size_t kMostHeld = std::size_t{1} << 20U;
    if (m_lines.size() >= kMostHeld) {
        storeAndTell();
    }
}

const Collector::Sender &Collector::senderOf(const IpAddress &address) {
    if (address == m_sender.address && !m_sender.shown.empty()) {
        return m_sender;
    }
    const std::string_view name = m_names.isWanted() ? m_names.nameOf(address) : "";
    const bool isRelay = std::ranges::any_of(
        m_relays, [&address](const AddressNetwork &network) { return network.contains(address); });
    m_sender = {address, name.empty() ? address.text() : std::string(name), isRelay};
    return m_sender;
}

/// The host that a relay names, fit for everything that is made of it; empty when it names none.
std::string_view Collector::relayedHost(std::string_view hostName) {
    if (hostName.empty() || hostName.size() > kLongestHost) {
        return {};
    }
    m_relayed.clear();
    appendHost(hostName, m_relayed);
    ++m_counters.relayed;
    return m_relayed;
}

bool Collector::isFilteredOut(const IpAddress &sender) {
    const auto refusal = m_filters.isEmpty() ? std::nullopt : m_filters.refusalOf(m_subject);
    if (refusal) {
        ++m_counters.filtered;
        m_refusals.note(sender, RefusalReason::kFiltered, *refusal);
    }
    return refusal.has_value();
}

/// Adds the events that the actions set for the message at hand.
void Collector::setEventsOfActions(std::string_view host) {
    if (m_actions.isEmpty()) {
        return;
    }
    for (const EventToSet &event :
         m_actions.onEvent(m_subject, m_seconds, host, Actions::Clock::now())) {
        m_writer.append({m_seconds, event.priority, host, event.message}, m_lines);
        m_urgent = m_urgent || event.priority.isUrgent();
    }
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
    const std::string_view lines = m_lines;
    const std::size_t stored =
        result.notStored == 0 ? lines.size() : sizeOfLines(lines, result.stored);
    m_notifications.push(NotificationType::kSet, lines.substr(0, stored), result.behind);
    // Also what could not be stored: then the front-end is the only one left to show it.
    m_notifications.push(NotificationType::kSet, lines.substr(stored));
    m_lines.clear();
    m_urgent = false;
}

}  // namespace quorbel
