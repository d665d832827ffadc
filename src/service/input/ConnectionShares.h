#pragma once

#include "common/IpAddress.h"

#include <chrono>
#include <cstddef>
#include <list>
#include <map>
#include <optional>
#include <unordered_map>

namespace quorbel {

/// Who has how many of the stream connections, over all listeners, and which one has to go when
/// there is room for no more: one of the host that has the most, so that nobody's greed takes
/// another's place. A host is an IPv4 address or a network of 64 bits of IPv6, where addresses cost
/// nothing.
///
/// Nothing here depends on how many there are but for the look-up of a host. Loop thread only.
class ConnectionShares {
public:
    using Clock = std::chrono::steady_clock;

    class Member {
    public:
        Member() = default;
        virtual ~Member() = default;
        Member(const Member &) = delete;
        Member &operator=(const Member &) = delete;

        /// Reads what has arrived and closes the connection: the member is gone then.
        virtual void makeRoom() = 0;
    };

    /// Of handshakes, those that take longer than this go before connections that are established.
    static constexpr std::chrono::seconds kQuickHandshake{2};

    /// The descriptor from which on there is no room for connections: of as many as the process may
    /// open (which is looked up, because it can change), a quarter, but no more than 4,096, are
    /// left to what stores, syncs, rewrites and exports.
    static int descriptorLimit();
    /// What stands for the host of an address: all of a network of 64 bits are one in IPv6.
    static IpAddress hostOf(const IpAddress &address);

private:
    struct Entry {
        Member *member;
        Clock::time_point since;
    };
    using Entries = std::list<Entry>;
    struct Host;
    using Hosts = std::list<Host *>;
    struct Host {
        IpAddress address;
        Entries handshakes;   ///< the oldest in front
        Entries established;  ///< the one that was idle longest in front
        Hosts::iterator place;

        [[nodiscard]] std::size_t size() const { return handshakes.size() + established.size(); }
    };

public:
    /// What stands for one connection. Valid until remove().
    class Place {
        friend ConnectionShares;
        Host *m_host = nullptr;
        Entries *m_list = nullptr;
        Entries::iterator m_entry;
    };

    /// Takes a connection, which is not established yet, of `host`.
    Place add(const IpAddress &host, Member &member, Clock::time_point now);
    /// The connection is established and has just been heard of.
    void touch(Place &place);
    void remove(const Place &place);

    /// The connection that makes room for a new one of `host`, or of somebody who is not known yet.
    /// Null when there is none.
    [[nodiscard]] Member *toClose(const std::optional<IpAddress> &host,
                                  Clock::time_point now) const;

private:
    void insert(Host &host);
    void takeOut(Host &host);

    std::unordered_map<IpAddress, Host, IpAddress::Hash> m_hosts;
    std::map<std::size_t, Hosts> m_bySize;  ///< each as m_hosts' own; the idlest in front
};

}  // namespace quorbel
