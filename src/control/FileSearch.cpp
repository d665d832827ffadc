#include "control/FileSearch.h"

#include "control/LogFolder.h"
#include "core/StartSettings.h"

#include <utility>

namespace quorbel {

namespace {

/// False when a file could not be read.
bool readFiles(const std::vector<std::filesystem::path> &files, const EventQuery &query,
               LogSearch &search) {
    LogOpener opener;
    for (const auto &file : files) {
        if (!mayHoldSpan(file, query) || !opener.open(file).isOpen()) {
            continue;
        }
        const auto add = [&search](const LogLine &line) { return search.add(line); };
        if (!LogReader::readFile(file, add)) {
            return opener.couldAll();
        }
    }
    search.finish();
    return opener.couldAll();
}

}  // namespace

ExitCode searchFiles(const EventQuery &query, const LogSearch::Handler &onFound) {
    const auto files = filesOfService();
    if (const auto *problem = std::get_if<ExitCode>(&files)) {
        return *problem;
    }
    AppState state;
    takeStartSettings(state);
    bool hasFound = false;
    LogSearch search(std::move(state), query, [&](const LogLine &event, EventRating rating) {
        hasFound = true;
        return onFound(event, rating);
    });
    if (!readFiles(std::get<0>(files), query, search)) {
        return ExitCode::kNotAllowed;
    }
    return hasFound ? ExitCode::kDone : ExitCode::kNothing;
}

}  // namespace quorbel
