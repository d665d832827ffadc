#pragma once

#include "platform/bus/StatusReader.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {

/// What the service said of itself, from the properties of its interface "Status". What it did not
/// say is empty.
struct ServiceReport {
    struct Listener {
        std::string protocol;  ///< "udp", "tcp" or "tls"
        std::uint16_t port = 0;
    };
    struct Refusal {
        std::string sender;
        std::string reason;  ///< "filtered"
        std::string detail;
        std::int64_t seconds = 0;  ///< since 1970, of the last one
        std::uint64_t count = 0;
    };

    std::string version;
    std::int64_t since = 0;  ///< when it started, in seconds since 1970
    std::vector<std::pair<std::string, std::uint64_t>> counters;
    std::vector<Listener> listeners;
    std::vector<Refusal> refusals;
    Dictionary properties;  ///< all of them, by their names

    /// 0 where there is none of that name.
    [[nodiscard]] std::uint64_t counter(std::string_view name) const;
};

/// Passes over what has another type than it should.
ServiceReport readReport(const Dictionary &properties);

/// What the window knows of the service: its last answer. It is asked once a second for as long as
/// somebody watches. Main thread only.
class ServiceState {
public:
    /// Somebody to whom it matters while the object lives.
    class Watch {
    public:
        /// `onAnswer` is called with each answer. The state outlives this.
        Watch(ServiceState &state, std::function<void()> onAnswer);
        ~Watch();
        Watch(const Watch &) = delete;
        Watch &operator=(const Watch &) = delete;

    private:
        friend class ServiceState;
        ServiceState &m_state;
        std::function<void()> m_onAnswer;
    };

    ServiceState() = default;
    ServiceState(const ServiceState &) = delete;
    ServiceState &operator=(const ServiceState &) = delete;

    /// Of the last question; nothing before the first answer, and when nobody had watched for a
    /// while.
    [[nodiscard]] std::optional<StatusOutcome> outcome() const { return m_outcome; }
    /// Empty unless that is kTold.
    [[nodiscard]] const ServiceReport &report() const { return m_report; }

    [[nodiscard]] bool isWatched() const { return !m_watches.empty(); }
    /// `onChange` is called when the first one begins to watch and when the last one ends: for
    /// whoever asks the service.
    void setWatchHandler(std::function<void()> onChange) { m_onWatchChange = std::move(onChange); }
    /// Takes an answer over and tells those who watch.
    void take(const StatusAnswer &answer);
    /// Forgets the last answer.
    void forget();

private:
    std::optional<StatusOutcome> m_outcome;
    ServiceReport m_report;
    std::vector<Watch *> m_watches;
    std::function<void()> m_onWatchChange;
};

}  // namespace quorbel
