#pragma once

#include "core/ArrivalObserver.h"
#include "core/EventReader.h"
#include "core/HostHistory.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

class EventList;

/// Keeps a HostHistory true: with what the log files had when the window started, and with each
/// arrival since. Main thread only.
///
/// The start-up load is not kept waiting: what it listed is counted afterwards, in slices, and a
/// bit of it with each arrival, which waits until its turn comes; so at most one waits for each
/// kRun events that the list has. What leaves the list before it was counted counts as if it had
/// left before the window started.
class HostWatch : public ArrivalObserver {
public:
    static constexpr std::size_t kRun = 512;

    /// `events` outlives this.
    explicit HostWatch(EventList &events) : m_reader(events) {}

    void eventArrived(const EventFields &event, std::uint8_t severityClass) override;
    void eventsArrived(const LoadedEvents &events) override;
    void logWasLoaded() override;
    void logBeginsAnew() override;

    [[nodiscard]] const HostHistory &history() const { return m_history; }
    /// Whether there is more to count than what was counted.
    [[nodiscard]] bool isCounting() const { return m_next < m_end; }
    /// Counts on and judges, see HostHistory::judge(), until all is done or `isTimeUp`, asked about
    /// every tenth of a millisecond. False while there is more to do.
    bool run(std::int64_t now, const std::function<bool()> &isTimeUp);

    /// How all hosts are, together.
    struct Summary {
        std::size_t regular = 0;  ///< hosts that are expected, overdue or not
        std::size_t overdue = 0;
        /// When the first habit will be known, while none is; nothing without any host.
        std::optional<std::int64_t> learnedFrom{};
    };
    [[nodiscard]] Summary summary(std::int64_t now) const;
    /// Overdue, and not one that the user does not expect.
    [[nodiscard]] bool isOverdue(const HostRecord &host, std::int64_t now) const {
        return m_history.isOverdue(host, now) && isExpected(host.name);
    }
    [[nodiscard]] LocalClock::Hour hourOf(std::int64_t moment) { return m_history.hourOf(moment); }
    /// Since when nothing has come from anybody, where that is longer than is usual: then no host
    /// can be told from the service being off.
    [[nodiscard]] std::optional<std::int64_t> quietSince(std::int64_t now) const;

    // Hosts that the user does not expect any more.
    using Names = std::set<std::string, std::less<>>;
    [[nodiscard]] const Names &retired() const { return m_retired; }
    void setRetired(Names names) { m_retired = std::move(names); }
    void setExpected(const std::string &host, bool expected);
    [[nodiscard]] bool isExpected(std::string_view host) const { return !m_retired.contains(host); }

private:
    struct Waiting {
        std::string host;
        std::int64_t moment;
        std::uint8_t severityClass;
    };

    void arrived(std::string_view host, std::optional<std::int64_t> moment,
                 std::uint8_t severityClass);
    void countRun();
    void countWaiting();

    EventReader m_reader;
    HostHistory m_history;
    EventId m_next = 1;  // what the log had is counted up to here
    EventId m_end = 1;
    std::vector<Waiting> m_waiting;
    Names m_retired;
};

}  // namespace quorbel
