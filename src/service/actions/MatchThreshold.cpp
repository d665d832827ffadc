#include "service/actions/MatchThreshold.h"

#include <functional>

namespace quorbel {

MatchThreshold::MatchThreshold(const ActionThreshold &threshold)
    : m_matches(static_cast<std::size_t>(threshold.matches)),
      m_span(threshold.minutes),
      m_perHost(threshold.perHost) {}

bool MatchThreshold::isReachedBy(const IpAddress &sender, Clock::time_point now,
                                 std::string_view relayedHost) {
    forgetSilent(now);
    Host &host = hostOf(keyOf(sender, relayedHost));
    note(host, now);
    makeRoom();
    const bool areEnough = host.latest.size() == m_matches;
    if (!areEnough || now - host.latest[host.oldest] >= m_span) {
        return false;
    }
    if (host.acted && now - *host.acted < m_span) {
        return false;
    }
    host.acted = now;
    return true;
}

MatchThreshold::Key MatchThreshold::keyOf(const IpAddress &sender,
                                          std::string_view relayedHost) const {
    if (!m_perHost) {
        return {};
    }
    return relayedHost.empty() ? Key{sender} : Key{{}, std::hash<std::string_view>()(relayedHost)};
}

/// Moves it to the front.
MatchThreshold::Host &MatchThreshold::hostOf(const Key &key) {
    const auto found = m_places.find(key);
    if (found != m_places.end()) {
        m_hosts.splice(m_hosts.begin(), m_hosts, found->second);
    } else {
        m_hosts.emplace_front().key = key;
        m_places.emplace(key, m_hosts.begin());
    }
    return m_hosts.front();
}

void MatchThreshold::note(Host &host, Clock::time_point now) {
    if (host.latest.size() < m_matches) {
        host.latest.push_back(now);
        ++m_times;
    } else {
        host.latest[host.oldest] = now;
        host.oldest = (host.oldest + 1) % m_matches;
    }
}

/// Lets go of hosts of which nothing counts any more: neither a match, nor when it acted, which was
/// at a match.
void MatchThreshold::forgetSilent(Clock::time_point now) {
    const auto lastMatch = [](const Host &host) {
        const std::size_t size = host.latest.size();
        return host.latest[(host.oldest + size - 1) % size];
    };
    while (!m_hosts.empty() && now - lastMatch(m_hosts.back()) >= m_span) {
        forgetLast();
    }
}

/// The host that has just matched is in front, and alone it never is too much.
void MatchThreshold::makeRoom() {
    while (m_hosts.size() > kMostHosts || m_times > kMostTimes) {
        forgetLast();
        ++m_forgotten;
    }
}

void MatchThreshold::forgetLast() {
    m_times -= m_hosts.back().latest.size();
    m_places.erase(m_hosts.back().key);
    m_hosts.pop_back();
}

}  // namespace quorbel
