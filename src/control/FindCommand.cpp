#include "control/Commands.h"
#include "control/EventArguments.h"
#include "control/EventStatistics.h"
#include "control/FileSearch.h"
#include "control/Output.h"

namespace quorbel {

ExitCode runFind(int count, char **values) {
    const auto arguments = readEventArguments(count, values);
    if (!arguments) {
        return ExitCode::kUsage;
    }
    Output output;
    const ExitCode code =
        searchFiles(arguments->query, [&](const LogLine &event, EventRating rating) {
            appendEvent(output.text(), event, rating, arguments->form);
            return output.endPiece();
        });
    return finishOutput(output, code);
}

ExitCode runStats(int count, char **values) {
    const auto arguments = readEventArguments(count, values);
    if (!arguments) {
        return ExitCode::kUsage;
    }
    EventStatistics statistics;
    const ExitCode code =
        searchFiles(arguments->query, [&](const LogLine &event, EventRating rating) {
            statistics.add(event, rating);
            return true;
        });
    if (code == ExitCode::kNotThere || code == ExitCode::kNotAllowed) {
        return code;
    }
    Output output;
    output.text() = arguments->form == EventForm::kJson ? statistics.json() : statistics.text();
    return finishOutput(output, code);
}

}  // namespace quorbel
