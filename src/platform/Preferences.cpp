#include "platform/Preferences.h"

#include "platform/Files.h"
#include "platform/Number.h"
#include "platform/Text.h"

#include <cstdlib>
#include <filesystem>

namespace quorbel {

namespace {

std::filesystem::path preferencesFile() {
    constexpr std::string_view kName = "Quorbel.ini";
    const char *configuration = std::getenv("XDG_CONFIG_HOME");
    // The XDG base directory rules have relative paths ignored.
    if (configuration != nullptr && *configuration == '/') {
        return std::filesystem::path(configuration) / kName;
    }
    const char *home = std::getenv("HOME");
    return home == nullptr || *home == '\0' ? std::filesystem::path()
                                            : std::filesystem::path(home) / ".config" / kName;
}

bool isRemark(std::string_view line) {
    return line.starts_with('#') || line.starts_with(';') || line.starts_with('[');
}

}  // namespace

std::optional<std::string> preference(std::string_view key) {
    const std::optional<std::string> text = readFile(preferencesFile());
    if (!text) {
        return std::nullopt;
    }
    std::string_view rest = *text;
    while (!rest.empty()) {
        const std::string_view line = trimmed(rest.substr(0, rest.find('\n')));
        rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos && !isRemark(line) &&
            trimmed(line.substr(0, equals)) == key) {
            return std::string(trimmed(line.substr(equals + 1)));
        }
    }
    return std::nullopt;
}

std::int64_t integerPreference(std::string_view key) {
    return readNumber<std::int64_t>(preference(key).value_or("")).value_or(0);
}

}  // namespace quorbel
