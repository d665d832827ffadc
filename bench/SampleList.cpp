#include "SampleList.h"

#include "common/LogReader.h"
#include "common/Severity.h"

#include <fstream>

namespace quorbel::bench {

void addSamples(EventList &list, const std::filesystem::path &file, std::uint64_t most) {
    list.beginBulkInsert();
    std::ifstream in(file);
    std::string line;
    for (std::uint64_t i = 0; i < most && std::getline(in, line); ++i) {
        line += '\n';
        const auto fields = splitLogLine(line);
        list.insertRaw({fields->date, fields->priority, fields->host, fields->message, {}});
    }
    list.endBulkInsert();
}

AppState stateWithFormat(const std::string &dateFormat) {
    AppState state;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        state.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
    }
    state.newDateFormat = state.oldDateFormat = dateFormat;
    return state;
}

}  // namespace quorbel::bench
