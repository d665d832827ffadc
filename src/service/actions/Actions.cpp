#include "service/actions/Actions.h"

#include "common/EmailTemplate.h"
#include "common/Facility.h"
#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "service/actions/MatchThreshold.h"
#include "service/base/Journal.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace quorbel {

namespace {

/// What commands keep of the service's own environment.
Environment basicEnvironment() {
    Environment environment{"PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"};
    for (const char *name : {"HOME", "USER", "LOGNAME", "LANG", "LC_ALL", "TZ"}) {
        if (const char *value = std::getenv(name)) {  // NOLINT(concurrency-mt-unsafe): never set
            setVariable(environment, name, value);
        }
    }
    return environment;
}

const Dictionary &dictionaryAt(const Dictionary &record, std::string_view key) {
    static const Dictionary empty;
    const Value *value = record.find(key);
    return value != nullptr && value->dictionary() != nullptr ? *value->dictionary() : empty;
}

void sayOf(const std::string &action, std::string_view text) {
    say(JournalLevel::kWarning, "Action \"" + action + "\": " + std::string(text));
}

std::optional<CommandRunner::Command> readCommand(const std::string &action,
                                                  const Dictionary &reaction) {
    CommandRunner::Command command;
    command.action = action;
    command.program = settingText(reaction, "Command").value_or("");
    if (command.program.empty()) {
        return std::nullopt;
    }
    auto arguments = splitArguments(settingText(reaction, "Arguments").value_or(""));
    if (!arguments) {
        sayOf(
            action,
            "a quotation mark in the command's arguments is never closed; the command is not run");
        return std::nullopt;
    }
    command.arguments = std::move(*arguments);
    command.environment = basicEnvironment();
    if (const auto unusable =
            addVariables(command.environment, settingText(reaction, "Environment").value_or(""))) {
        // Not the line itself: it may hold something secret.
        sayOf(action, "a line of the command's environment is not of the form NAME=value");
    }
    return command;
}

struct EventFormat {
    Priority priority;
    std::string format;
};

std::optional<EventFormat> readEventFormat(const Dictionary &reaction) {
    // Events of the service itself. A type that does not exist is no reason to set none.
    EventFormat event{kAssumedPriority, settingText(reaction, "Format").value_or("")};
    const auto facility = std::ranges::find(kFacilityNames, "Syslog");
    event.priority.facility = static_cast<std::uint8_t>(facility - kFacilityNames.begin());
    const std::string type = settingText(reaction, "Type").value_or("");
    for (std::size_t i = 0; i < kSeverityCount; ++i) {
        if (kSeverityClasses[i].name == type || kSeverityClasses[i].label == type) {
            event.priority.severity = static_cast<std::uint8_t>(i);
        }
    }
    return event.format.empty() ? std::nullopt : std::optional(std::move(event));
}

}  // namespace

/// One action of the settings.
struct Actions::Action {
    explicit Action(Dictionary fields)
        : record(std::move(fields)),
          filter(record),
          name(settingText(record, "Name").value_or("")),
          command(readCommand(name, dictionaryAt(record, "runCommand"))),
          recipients(settingTexts(dictionaryAt(record, "sendEmail"), "Recipients")),
          event(readEventFormat(dictionaryAt(record, "setEvent"))) {
        if (const auto read = readThreshold(record).threshold) {
            threshold.emplace(*read);
        }
    }

    [[nodiscard]] bool isOn() const {
        return command.has_value() || !recipients.empty() || event.has_value();
    }
    [[nodiscard]] std::array<const StormGuard *, 3> guards() const {
        return {&commandGuard, &mailGuard, &eventGuard};
    }

    Dictionary record;
    EventFilter filter;
    std::string name;
    std::optional<CommandRunner::Command> command;
    std::vector<std::string> recipients;
    std::optional<EventFormat> event;

    std::optional<MatchThreshold> threshold;
    /// What is under way outlives the action.
    std::shared_ptr<LastResult> result = std::make_shared<LastResult>();
    StormGuard commandGuard{kCommandsPerMinute};
    StormGuard mailGuard{kMailsPerMinute};
    StormGuard eventGuard{kEventsPerMinute};
};

/// The event's fields as texts.
struct Actions::Fields {
    std::string seconds;
    std::string date;
    std::string_view priority;
    std::string_view host;
    std::string_view message;

    [[nodiscard]] std::string fill(std::string_view text) const {
        return fillTemplate(text, {date, priority, host, message, {}});
    }
};

/// An event that actions may be for. In a storm nearly all are held back, so its fields are made
/// when the first one is not.
class Actions::Trigger {
public:
    Trigger(const FilterSubject &event, std::int64_t seconds, std::string_view host,
            const DateFormat &format, Clock::time_point now)
        : m_event(event), m_seconds(seconds), m_host(host), m_format(format), m_now(now) {}

    [[nodiscard]] Clock::time_point now() const { return m_now; }
    const Fields &fields() {
        if (!m_fields) {
            m_fields = {std::to_string(m_seconds), m_format.render(static_cast<double>(m_seconds)),
                        m_event.priority().text(), m_host, m_event.message()};
        }
        return *m_fields;
    }

private:
    const FilterSubject &m_event;
    std::int64_t m_seconds;
    std::string_view m_host;
    const DateFormat &m_format;
    Clock::time_point m_now;
    std::optional<Fields> m_fields;
};

Actions::Actions(RunCommand runCommand, SendMail sendMail, Counters &counters)
    : m_runCommand(std::move(runCommand)), m_sendMail(std::move(sendMail)), m_counters(counters) {}

Actions::~Actions() = default;

void Actions::configure(const Dictionary &settings) {
    // Who never opened the page of the templates has none, and an empty e-mail helps nobody.
    m_subject = settings.find(kFormatSubjectKey) == nullptr
                    ? std::string(kDefaultFormatSubject)
                    : settingText(settings, kFormatSubjectKey).value_or("");
    m_body = settings.find(kFormatBodyKey) == nullptr
                 ? std::string(kDefaultFormatBody)
                 : settingText(settings, kFormatBodyKey).value_or("");
    m_dateFormat = std::make_unique<DateFormat>(settingText(settings, "dateFormat").value_or(""));
    Array records = settingArray(settings, "actionsArray");
    if (records == m_records) {
        return;
    }
    auto former = std::exchange(m_actions, {});
    for (const Value &record : records) {
        if (record.dictionary() == nullptr) {
            continue;
        }
        auto action = actionOf(*record.dictionary(), former);
        if (action->isOn()) {
            m_actions.push_back(std::move(action));
        }
    }
    m_records = std::move(records);
    for (const auto &action : former) {
        report(*action, Clock::time_point::max());
    }
    noteReportTimes();
}

/// One of the former actions, which leaves them, or a new one.
std::unique_ptr<Actions::Action> Actions::actionOf(const Dictionary &record,
                                                   std::vector<std::unique_ptr<Action>> &former) {
    const auto same = std::ranges::find_if(
        former, [&record](const auto &action) { return action->record == record; });
    if (same == former.end()) {
        return std::make_unique<Action>(record);
    }
    auto action = std::move(*same);
    former.erase(same);
    return action;
}

std::span<const EventToSet> Actions::onEvent(const FilterSubject &event, std::int64_t seconds,
                                             std::string_view host, Clock::time_point now) {
    m_toSet.clear();
    // In a flood the next minute begins with this event; what the last one held back is told first.
    if (m_reportTime && now >= *m_reportTime) {
        report(now);
    }
    Trigger trigger(event, seconds, host, *m_dateFormat, now);
    for (const auto &action : m_actions) {
        if (action->filter.matches(event) && reachesThreshold(*action, event, now)) {
            const bool isRun = runCommand(*action, trigger);
            const bool isSent = sendMail(*action, trigger);
            const bool isSet = setEvent(*action, trigger);
            if (isRun || isSent || isSet) {
                action->result->noteDone();
            }
        }
    }
    return m_toSet;
}

bool Actions::reachesThreshold(Action &action, const FilterSubject &event, Clock::time_point now) {
    if (!action.threshold) {
        return true;
    }
    const std::uint64_t forgotten = action.threshold->forgotten();
    const bool isReached = action.threshold->isReachedBy(event.address(), now, event.relayedHost());
    m_counters.belowThreshold += isReached ? 0 : 1;
    m_counters.hostsForgotten += action.threshold->forgotten() - forgotten;
    if (forgotten == 0 && action.threshold->forgotten() > 0) {
        sayOf(action.name,
              "too many hosts or matches within the time of its threshold; the hosts that were "
              "silent longest are forgotten");
    }
    return isReached;
}

bool Actions::runCommand(Action &action, Trigger &trigger) {
    if (!action.command || !allows(action.commandGuard, trigger.now())) {
        return false;
    }
    const Fields &fields = trigger.fields();
    CommandRunner::Command command = *action.command;
    command.result = action.result;
    // A variable beyond the system's limit would keep the command from running at all.
    constexpr std::size_t kLongestMessage = std::size_t{64} * 1024;
    setVariable(command.environment, "QUORBEL_DATE", fields.seconds);
    setVariable(command.environment, "QUORBEL_PRIORITY", fields.priority);
    setVariable(command.environment, "QUORBEL_HOST", fields.host);
    setVariable(command.environment, "QUORBEL_MESSAGE", fields.message.substr(0, kLongestMessage));
    m_runCommand(std::move(command));
    return true;
}

bool Actions::sendMail(Action &action, Trigger &trigger) {
    if (action.recipients.empty() || !allows(action.mailGuard, trigger.now())) {
        return false;
    }
    const Fields &fields = trigger.fields();
    m_sendMail({.recipients = action.recipients,
                .subject = fields.fill(m_subject),
                .body = fields.fill(m_body),
                .result = action.result});
    return true;
}

bool Actions::setEvent(Action &action, Trigger &trigger) {
    if (!action.event || !allows(action.eventGuard, trigger.now())) {
        return false;
    }
    m_toSet.push_back({action.event->priority, trigger.fields().fill(action.event->format)});
    ++m_counters.eventsSet;
    return true;
}

std::vector<NamedResult> Actions::results() const {
    std::vector<NamedResult> results;
    results.reserve(m_actions.size());
    for (const auto &action : m_actions) {
        results.push_back({action->name, action->result->summary()});
    }
    return results;
}

bool Actions::allows(StormGuard &guard, Clock::time_point now) {
    const bool allowed = guard.allows(now);
    noteReportTime(guard);
    return allowed;
}

void Actions::noteReportTime(const StormGuard &guard) {
    const auto time = guard.reportTime();
    if (time && (!m_reportTime || *time < *m_reportTime)) {
        m_reportTime = time;
    }
}

void Actions::noteReportTimes() {
    m_reportTime.reset();
    for (const auto &action : m_actions) {
        for (const StormGuard *guard : action->guards()) {
            noteReportTime(*guard);
        }
    }
}

void Actions::report(Clock::time_point now) {
    for (const auto &action : m_actions) {
        report(*action, now);
    }
    noteReportTimes();
}

void Actions::report(Action &action, Clock::time_point now) {
    const auto takeDue = [this, now](StormGuard &guard) {
        const auto time = guard.reportTime();
        const std::uint64_t heldBack = time && *time <= now ? guard.takeHeldBack() : 0;
        m_counters.heldBack += heldBack;
        return heldBack;
    };
    const std::uint64_t commands = takeDue(action.commandGuard);
    const std::uint64_t mails = takeDue(action.mailGuard);
    const std::uint64_t events = takeDue(action.eventGuard);
    if (commands + mails + events > 0) {
        sayOf(action.name, "too many matches; held back in the last minute: commands " +
                               std::to_string(commands) + ", e-mails " + std::to_string(mails) +
                               ", events " + std::to_string(events));
    }
    if (mails > 0) {
        sendSummary(action, mails);
    }
}

void Actions::sendSummary(const Action &action, std::uint64_t heldBack) {
    const std::string many =
        std::to_string(heldBack) + (heldBack == 1 ? " more event" : " more events");
    m_sendMail({.recipients = action.recipients,
                .subject = many + " in the last minute",
                .body = "The action \"" + action.name + "\" matched " + many +
                        " in the last minute, for which no e-mails were sent.\r\n",
                .result = action.result});
}

}  // namespace quorbel
