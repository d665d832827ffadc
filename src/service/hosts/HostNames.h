#pragma once

#include "common/IpAddress.h"
#include "platform/Value.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quorbel {

/// The names of senders, for when the settings want hosts shown by name.
///
/// Names are looked up on threads of their own; until one is known, its address has none. What was
/// found is kept for an hour, that there is none for five minutes, and the old answer holds until
/// the new one is there. Loop thread only; nothing here waits for a name server.
class HostNames {
public:
    using Clock = std::chrono::steady_clock;
    /// Called on several threads at once; may take any time.
    using Lookup = std::function<std::optional<std::string>(const IpAddress &address)>;

    static constexpr std::size_t kThreads = 4;
    /// How many addresses may wait for their names; others are asked for when they come again.
    static constexpr std::size_t kMostWaiting = 1024;
    static constexpr std::size_t kMostKept = 16384;
    static constexpr std::chrono::seconds kKeepName{3600};
    static constexpr std::chrono::seconds kKeepFailure{300};

    /// Asks the name service of the system.
    HostNames();
    explicit HostNames(Lookup lookup);
    /// Does not wait for look-ups that are under way.
    ~HostNames();
    HostNames(const HostNames &) = delete;
    HostNames &operator=(const HostNames &) = delete;

    void configure(const Dictionary &settings);
    /// Whether hosts are to be shown by name.
    [[nodiscard]] bool isWanted() const { return m_wanted; }

    /// Takes the names that were found meanwhile.
    void beginTurn(Clock::time_point now);
    /// The name of a sender; empty while it is unknown, and when there is none. Valid until the
    /// next call.
    std::string_view nameOf(const IpAddress &address);

    /// How many look-ups have ended, and how many of them gave a name.
    [[nodiscard]] std::uint64_t lookedUp() const { return m_lookedUp; }
    [[nodiscard]] std::uint64_t found() const { return m_found; }
    /// How often nameOf() asked for no name, or not for a new one, because too many waited.
    [[nodiscard]] std::uint64_t notLookedUp() const { return m_notLookedUp; }

private:
    struct Shared;
    struct Entry {
        std::string name;
        bool waiting = true;
        Clock::time_point expires;
    };

    bool request(const IpAddress &address);
    void startThreads();
    void makeRoom();

    bool m_wanted = false;
    Clock::time_point m_now;
    std::size_t m_waiting = 0;
    std::uint64_t m_lookedUp = 0;
    std::uint64_t m_found = 0;
    std::uint64_t m_notLookedUp = 0;
    std::unordered_map<IpAddress, Entry, IpAddress::Hash> m_entries;
    std::shared_ptr<Shared> m_shared;  ///< with the threads, which may outlive the object
};

}  // namespace quorbel
