#pragma once

#include "common/ActionThreshold.h"
#include "common/IpAddress.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorbel {

/// Counts the matches of an action that has a threshold, in all or of each host, and says when it
/// acts: at a match with which there are n within the last m minutes, unless it has acted within
/// the last m minutes already. So no match counts twice, and trouble that goes on is told of once
/// in m minutes. A match that is m minutes old does not count any more.
///
/// Exact as long as the hosts of the last m minutes are no more than kMostHosts and what is kept of
/// them no more than kMostTimes; of each, as many matches are kept as it takes to act. Beyond that,
/// the host that was silent longest is forgotten, as if it had never matched, and counted. All of
/// it takes less than 4 MB.
class MatchThreshold {
public:
    /// One that no setting of the system's time moves.
    using Clock = std::chrono::steady_clock;

    static constexpr std::size_t kMostHosts = 10'000;
    static constexpr std::size_t kMostTimes = 100'000;

    explicit MatchThreshold(const ActionThreshold &threshold);

    /// Counts a match of this sender, and says whether the action acts now. `now` never goes back.
    /// A host that a relay has named is the same whichever relay did, and is no sender.
    bool isReachedBy(const IpAddress &sender, Clock::time_point now,
                     std::string_view relayedHost = {});

    /// How many hosts were forgotten although they counted.
    [[nodiscard]] std::uint64_t forgotten() const { return m_forgotten; }

    [[nodiscard]] std::size_t hosts() const { return m_hosts.size(); }
    [[nodiscard]] std::size_t times() const { return m_times; }

private:
    struct Key {
        IpAddress address;     ///< none of a host that a relay has named
        std::size_t name = 0;  ///< the hash of that name; 0 of others
        bool operator==(const Key &) const = default;
        struct Hash {
            std::size_t operator()(const Key &key) const {
                return key.name ^ IpAddress::Hash()(key.address);
            }
        };
    };
    struct Host {
        Key key;
        std::vector<Clock::time_point> latest;  ///< a ring once there are as many as it takes
        std::size_t oldest = 0;                 ///< where the ring begins then
        std::optional<Clock::time_point> acted;
    };
    using Hosts = std::list<Host>;

    [[nodiscard]] Key keyOf(const IpAddress &sender, std::string_view relayedHost) const;
    Host &hostOf(const Key &key);
    void forgetLast();
    void forgetSilent(Clock::time_point now);
    void makeRoom();
    void note(Host &host, Clock::time_point now);

    const std::size_t m_matches;
    const std::chrono::minutes m_span;
    const bool m_perHost;

    Hosts m_hosts;  ///< the last one that matched in front
    std::unordered_map<Key, Hosts::iterator, Key::Hash> m_places;
    std::size_t m_times = 0;  ///< of all hosts
    std::uint64_t m_forgotten = 0;
};

}  // namespace quorbel
