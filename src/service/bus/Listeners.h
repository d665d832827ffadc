#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Who listens to batches, and how far each has come: so many are on their way to a listener at a
/// time, and one that does not say for long that it has taken them is not waited for any more. Loop
/// thread only.
class Listeners {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::uint64_t kMostOnTheirWay = 2;
    static constexpr std::chrono::seconds kPatience{2};
    static constexpr std::chrono::milliseconds kHurriedPatience{250};

    /// A connection's unique name. One that listens already has taken everything from now on.
    void add(const std::string &name);
    void clear() { m_listeners.clear(); }
    /// Keeps those for which `isThere` holds.
    template <typename IsThere>
    void keep(IsThere isThere) {
        std::erase_if(m_listeners, [&](const auto &entry) { return !isThere(entry.first); });
    }
    [[nodiscard]] bool empty() const { return m_listeners.empty(); }

    /// Notes that one has taken everything up to that number. From others than listeners, and for
    /// what was not sent, it means nothing. True when it does not lag any more.
    bool taken(std::string_view name, std::uint64_t serial, Clock::time_point now);
    /// Whether somebody has to be waited for before more is sent: not for long, and in a `hurry`
    /// no longer than a moment when others are faster.
    bool areBusy(Clock::time_point now, bool hurry);

    /// Those who do not lag.
    [[nodiscard]] std::vector<std::string> ready() const;
    /// The number of what is sent to a listener next; notes that it is sent.
    std::uint64_t send(const std::string &name, Clock::time_point now);

private:
    struct Listener {
        std::uint64_t sent = 0;
        std::uint64_t taken = 0;
        Clock::time_point since;  ///< when it took something last, or had nothing to take
        bool lags = false;

        [[nodiscard]] bool mayGet() const { return sent - taken < kMostOnTheirWay; }
    };

    std::map<std::string, Listener, std::less<>> m_listeners;
};

}  // namespace quorbel
