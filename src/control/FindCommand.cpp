#include "control/Commands.h"
#include "control/EventArguments.h"
#include "control/EventSource.h"
#include "control/EventStatistics.h"
#include "control/Output.h"

namespace quorbel {

ExitCode runFind(int count, char **values) {
    EventSource source;
    const auto arguments = readEventArguments(count, values, source.options());
    if (!arguments) {
        return ExitCode::kUsage;
    }
    Output output;
    const ExitCode code =
        source.search(arguments->query, [&](const LogLine &event, EventRating rating) {
            appendEvent(output.text(), event, rating, arguments->form);
            return output.endPiece();
        });
    return finishOutput(output, code);
}

ExitCode runStats(int count, char **values) {
    EventSource source;
    const auto arguments = readEventArguments(count, values, source.options());
    if (!arguments) {
        return ExitCode::kUsage;
    }
    EventStatistics statistics;
    const ExitCode code = source.count(
        arguments->query, [&](const LogLine &event, EventRating rating, std::uint64_t number) {
            statistics.add(event, rating, number);
        });
    if (code == ExitCode::kNotThere || code == ExitCode::kNotAllowed) {
        return code;
    }
    Output output;
    output.text() = arguments->form == EventForm::kJson ? statistics.json() : statistics.text();
    return finishOutput(output, code);
}

}  // namespace quorbel
