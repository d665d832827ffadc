#include "service/input/ConnectionShares.h"

#include <sys/resource.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <utility>

namespace quorbel {

int ConnectionShares::descriptorLimit() {
    constexpr rlim_t kMostLeft = 4096;
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0) {
        return INT_MAX;
    }
    const rlim_t most = std::min<rlim_t>(files.rlim_cur, INT_MAX);
    return static_cast<int>(most - std::min(most / 4, kMostLeft));
}

IpAddress ConnectionShares::hostOf(const IpAddress &address) {
    constexpr unsigned kNetworkBits = 64;
    return address.isV4() ? address : address.network(kNetworkBits);
}

ConnectionShares::Place ConnectionShares::add(const IpAddress &host, Member &member,
                                              Clock::time_point now) {
    const auto [at, isNew] = m_hosts.try_emplace(host);
    Host &own = at->second;
    if (isNew) {
        own.address = host;
    } else {
        takeOut(own);
    }
    own.handshakes.push_back({&member, now});
    insert(own);
    Place place;
    place.m_host = &own;
    place.m_list = &own.handshakes;
    place.m_entry = std::prev(own.handshakes.end());
    return place;
}

void ConnectionShares::touch(Place &place) {
    Host &host = *place.m_host;
    host.established.splice(host.established.end(), *place.m_list, place.m_entry);
    place.m_list = &host.established;
    Hosts &equals = m_bySize[host.size()];
    equals.splice(equals.end(), equals, host.place);
}

void ConnectionShares::remove(const Place &place) {
    Host &host = *place.m_host;
    takeOut(host);
    place.m_list->erase(place.m_entry);
    if (host.size() > 0) {
        insert(host);
    } else {
        m_hosts.erase(IpAddress(host.address));
    }
}

void ConnectionShares::insert(Host &host) {
    Hosts &equals = m_bySize[host.size()];
    host.place = equals.insert(equals.end(), &host);
}

void ConnectionShares::takeOut(Host &host) {
    const auto equals = m_bySize.find(host.size());
    equals->second.erase(host.place);
    if (equals->second.empty()) {
        m_bySize.erase(equals);
    }
}

ConnectionShares::Member *ConnectionShares::toClose(const std::optional<IpAddress> &host,
                                                    Clock::time_point now) const {
    if (m_bySize.empty()) {
        return nullptr;
    }
    const auto &[most, greediest] = *m_bySize.rbegin();
    const auto own = host ? m_hosts.find(*host) : m_hosts.end();
    // With the new one it would have more than anybody.
    const bool isGreediest = own != m_hosts.end() && own->second.size() == most;
    const Host &from = isGreediest ? own->second : *greediest.front();
    const bool hasSlow =
        !from.handshakes.empty() && now - from.handshakes.front().since > kQuickHandshake;
    return (hasSlow || from.established.empty() ? from.handshakes : from.established)
        .front()
        .member;
}

}  // namespace quorbel
