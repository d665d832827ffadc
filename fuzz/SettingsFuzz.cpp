#include "Fuzz.h"
#include "common/ActionThreshold.h"
#include "common/RetentionRules.h"
#include "common/SettingsDocument.h"
#include "platform/KeyedArchive.h"
#include "service/actions/Actions.h"
#include "service/mail/MailServer.h"
#include "service/message/EventFilter.h"
#include "service/message/FilterProblems.h"
#include "service/message/RecordWriter.h"

#include <string>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

constexpr std::int64_t kNow = 1'767'312'000;

/// An event goes through filters and actions as it does in the service.
void tryEvent(const Dictionary &settings, Priority priority) {
    const FilterSet filters(settings);
    Counters counters;
    std::vector<std::string> commands;
    Actions actions(
        [&commands](const CommandRunner::Command &command) { commands.push_back(command.program); },
        [](const MailMessage & /*mail*/) {}, counters);
    actions.configure(settings);
    RecordWriter writer;
    std::string lines;
    const auto written = writer.append({kNow, priority, "10.0.0.5", "disk full"}, lines);
    FilterSubject subject;
    const auto address = IpAddress::parse("10.0.0.5");
    subject.set(*address, priority, lines, written.prefix);
    require(filters.passes(subject) == !filters.refusalOf(subject), "one answer");
    require(!filters.isEmpty() || filters.passes(subject), "without filters everything passes");
    for (const EventToSet &event :
         actions.onEvent(subject, kNow, "10.0.0.5", Actions::Clock::now())) {
        std::string set;
        writer.append({kNow, event.priority, "10.0.0.5", event.message}, set);
        require(set.ends_with("\r\n"), "an event that is set is a line");
    }
    actions.report(Actions::Clock::time_point::max());
}

}  // namespace

/// Whatever a settings document holds, each part of the service finds its own in it.
void tryInput(std::string_view bytes) {
    const auto settings = decodeSettings(std::string(bytes));
    if (!settings) {
        return;
    }
    require(decodeSettings(writeKeyedArchive(*settings)).has_value(), "it can be saved again");
    for (const std::string &problem : filterProblems(*settings)) {
        require(problem.find('\n') == std::string::npos, "a problem is one line");
    }
    const RetentionRules rules(*settings);
    for (const auto &limit : rules.limitsAt(kNow)) {
        require(!limit || *limit <= kNow, "nothing of the future has been kept for long enough");
    }
    mailServerFrom(*settings);
    for (const Value &record : settingArray(*settings, "actionsArray")) {
        if (record.dictionary() != nullptr) {
            const ThresholdReading reading = readThreshold(*record.dictionary());
            require(!reading.threshold || reading.problem.empty(), "good or wrong");
        }
    }
    tryEvent(*settings, {0, 0});
    tryEvent(*settings, {23, 7});
}

}  // namespace quorbel
