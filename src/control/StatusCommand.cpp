#include "control/Commands.h"
#include "control/OptionReader.h"
#include "control/Output.h"
#include "control/ServiceStatus.h"

#include <chrono>

namespace quorbel {

ExitCode runStatus(int count, char **values) {
    constexpr std::chrono::seconds kPatience{10};
    bool asJson = false;
    const auto others = readOptions(count, values, {flag("json", 'j', asJson)});
    if (!others || !expectNone(*others)) {
        return ExitCode::kUsage;
    }
    const auto answer = askForStatus(kPatience);
    if (const auto *problem = std::get_if<StatusProblem>(&answer)) {
        complain(problem->text);
        return problem->code;
    }
    const auto &status = std::get<ServiceStatus>(answer);
    Output output;
    output.text() = asJson ? status.json() : status.text();
    return finishOutput(output, ExitCode::kDone);
}

}  // namespace quorbel
