#pragma once

#include "platform/DateFormat.h"
#include "platform/Value.h"
#include "service/actions/CommandRunner.h"
#include "service/actions/StormGuard.h"
#include "service/base/Counters.h"
#include "service/base/LastResult.h"
#include "service/mail/MailMessage.h"
#include "service/message/EventFilter.h"
#include "service/message/Priority.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// An event that an action wants to be set.
struct EventToSet {
    Priority priority;
    std::string message;  ///< may hold any characters
};

/// The automatic actions of the settings: for each event that one's filter matches it runs a
/// command, sends an e-mail and sets an event, as far as these are switched on. Each of the three
/// is held back when it happens too often; what was held back is told once its minute has ended,
/// for e-mail by a last one. Loop thread only; nothing here waits.
///
/// An action with a threshold does so only at matches that reach it; see MatchThreshold.
///
/// What a record lacks, or holds in another form, counts as empty. A command without a program, an
/// e-mail without recipients and an event without a text are switched off. A threshold that means
/// nothing is none.
class Actions {
public:
    using Clock = StormGuard::Clock;
    using RunCommand = std::function<void(CommandRunner::Command command)>;
    using SendMail = std::function<void(MailMessage mail)>;

    static constexpr std::uint64_t kCommandsPerMinute = 10;
    static constexpr std::uint64_t kMailsPerMinute = 5;  ///< and one that says how many more
    static constexpr std::uint64_t kEventsPerMinute = 10;

    /// `counters` must outlive the object.
    Actions(RunCommand runCommand, SendMail sendMail, Counters &counters);
    ~Actions();
    Actions(const Actions &) = delete;
    Actions &operator=(const Actions &) = delete;

    /// Actions whose records stay as they were keep what they counted; the others begin anew.
    void configure(const Dictionary &settings);

    /// Whether there is nothing to be done for any event.
    [[nodiscard]] bool isEmpty() const { return m_actions.empty(); }

    /// Does what is to be done for an event of the time `seconds` since 1970, shown with `host`.
    /// Returns the events to set, until the next call.
    std::span<const EventToSet> onEvent(const FilterSubject &event, std::int64_t seconds,
                                        std::string_view host, Clock::time_point now);

    /// When report() has something to tell; nothing when there is nothing.
    [[nodiscard]] std::optional<Clock::time_point> reportTime() const { return m_reportTime; }
    /// Tells what was held back in the minutes that have ended.
    void report(Clock::time_point now);

    /// What came of each action that has something to do, since it is as it is: done is each time
    /// that it was carried out, failed each command and each try of an e-mail that was not.
    [[nodiscard]] std::vector<NamedResult> results() const;

private:
    struct Action;
    struct Fields;
    class Trigger;

    static std::unique_ptr<Action> actionOf(const Dictionary &record,
                                            std::vector<std::unique_ptr<Action>> &former);
    bool reachesThreshold(Action &action, const FilterSubject &event, Clock::time_point now);
    // Whether it was not held back.
    bool runCommand(Action &action, Trigger &trigger);
    bool sendMail(Action &action, Trigger &trigger);
    bool setEvent(Action &action, Trigger &trigger);
    void sendSummary(const Action &action, std::uint64_t heldBack);
    bool allows(StormGuard &guard, Clock::time_point now);
    void noteReportTime(const StormGuard &guard);
    void noteReportTimes();
    void report(Action &action, Clock::time_point now);

    const RunCommand m_runCommand;
    const SendMail m_sendMail;
    Counters &m_counters;

    Array m_records;  ///< what m_actions were made from
    std::vector<std::unique_ptr<Action>> m_actions;
    std::string m_subject;
    std::string m_body;
    std::unique_ptr<DateFormat> m_dateFormat;
    std::vector<EventToSet> m_toSet;
    std::optional<Clock::time_point> m_reportTime;  ///< the earliest of all guards
};

}  // namespace quorbel
