#include "common/SettingsDocument.h"
#include "control/Commands.h"
#include "control/LogFolder.h"
#include "control/OptionReader.h"
#include "control/Output.h"
#include "control/SettingsProblems.h"
#include "control/VisibleText.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

namespace quorbel {

namespace {

ExitCode complainOfFile(const std::filesystem::path &file, int error) {
    complain(file.string() + " cannot be read: " + std::generic_category().message(error));
    return error == EACCES || error == EPERM ? ExitCode::kNotAllowed : ExitCode::kNothing;
}

/// What is wrong with the document as a whole, and then with what is in it.
std::vector<std::string> problemsIn(const std::string &bytes) {
    const auto decoded = readKeyedArchive(bytes);
    if (const auto *error = std::get_if<ArchiveError>(&decoded)) {
        return {"this is no settings document: " + error->reason};
    }
    const Dictionary *settings = std::get<Value>(decoded).dictionary();
    return settings != nullptr ? settingsProblems(*settings)
                               : std::vector<std::string>{
                                     "this is no settings document: it holds "
                                     "no dictionary"};
}

ExitCode check(const std::filesystem::path &file, const std::string &bytes) {
    const std::vector<std::string> problems = problemsIn(bytes);
    Output output;
    for (const std::string &problem : problems) {
        appendVisible(output.text(), file.string() + ": " + problem);
        output.text() += '\n';
    }
    return finishOutput(output, problems.empty() ? ExitCode::kDone : ExitCode::kNothing);
}

}  // namespace

ExitCode runCheckSettings(int count, char **values) {
    const auto names = readOptions(count, values, {});
    if (!names || (names->size() > 1 && !expectNone({names->back()}))) {
        return ExitCode::kUsage;
    }
    const std::filesystem::path file = names->empty() ? libraryFolder() / kSettingsFileName
                                                      : std::filesystem::path(names->front());
    const UniqueFd source = openRegular(file, O_RDONLY);
    if (!source.isOpen()) {
        const int error = errno;
        std::error_code folderError;
        listFolder(libraryFolder(), folderError);
        if (names->empty() && folderError) {
            return complainOfFolder(folderError.value());
        }
        // The service writes none before somebody saves settings.
        return names->empty() && error == ENOENT ? ExitCode::kDone : complainOfFile(file, error);
    }
    const auto bytes = readToEnd(source.get());
    return bytes ? check(file, *bytes) : complainOfFile(file, errno);
}

}  // namespace quorbel
