#include "common/ServiceConfiguration.h"
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

/// The settings in their place, where `name` is empty.
ExitCode checkSettings(const std::string &name) {
    const std::filesystem::path file =
        name.empty() ? libraryFolder() / kSettingsFileName : std::filesystem::path(name);
    const UniqueFd source = openRegular(file, O_RDONLY);
    if (!source.isOpen()) {
        const int error = errno;
        std::error_code folderError;
        listFolder(libraryFolder(), folderError);
        if (name.empty() && folderError) {
            return complainOfFolder(folderError.value());
        }
        // The service writes none before somebody saves settings.
        return name.empty() && error == ENOENT ? ExitCode::kDone : complainOfFile(file, error);
    }
    const auto bytes = readToEnd(source.get());
    return bytes ? check(file, *bytes) : complainOfFile(file, errno);
}

/// The service's configuration in its place, where `name` is empty; there, none is none that is
/// wrong.
ExitCode checkConfiguration(const std::string &name) {
    const std::filesystem::path file = name.empty() ? kServiceConfigurationFile : name;
    if (!name.empty() && !isThere(file)) {
        return complainOfFile(file, ENOENT);
    }
    const auto read = readServiceConfiguration(file);
    Output output;
    if (const auto *problems = std::get_if<std::vector<ConfigurationProblem>>(&read)) {
        for (const ConfigurationProblem &problem : *problems) {
            appendVisible(output.text(), describe(problem));
            output.text() += '\n';
        }
    }
    return finishOutput(output, output.text().empty() ? ExitCode::kDone : ExitCode::kNothing);
}

}  // namespace

ExitCode runCheckSettings(int count, char **values) {
    std::string configuration;
    const Option config{"config", '\0', true, [&configuration](std::string_view value) {
                            configuration = value;
                            return value.empty() ? std::string("no file is named") : "";
                        }};
    const auto names = readOptions(count, values, {config});
    if (!names || (names->size() > 1 && !expectNone({names->back()}))) {
        return ExitCode::kUsage;
    }
    // What is named is all that is wanted.
    const bool wantsSettings = !names->empty() || configuration.empty();
    const bool wantsConfiguration = names->empty() || !configuration.empty();
    const ExitCode settings =
        wantsSettings ? checkSettings(names->empty() ? "" : names->front()) : ExitCode::kDone;
    const ExitCode found = wantsConfiguration ? checkConfiguration(configuration) : ExitCode::kDone;
    return settings == ExitCode::kDone ? found : settings;
}

}  // namespace quorbel
