#include "service/bus/SettingsFile.h"

#include "core/SettingsDocument.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "service/Journal.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace quorbel {

namespace {

constexpr unsigned kMode = 0640;

std::string because(std::string_view what) {
    return std::string(what) + ": " + std::generic_category().message(errno);
}

std::string timeSuffix() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &local)};
}

}  // namespace

void SettingsFile::load() {
    auto settings = decodeSettings(readFile(m_file));
    if (!settings && isThere(m_file)) {
        say(JournalLevel::kError,
            m_file.string() + " is damaged; no settings are in force until they are saved anew");
    }
    m_current = std::move(settings).value_or(Dictionary());
}

std::optional<std::string> SettingsFile::save(const Dictionary &settings) {
    if (auto problem = setDamagedFileAside()) {
        return problem;
    }
    if (!replaceFile(m_file, writeKeyedArchive(settings), kMode)) {
        return because("The settings could not be stored");
    }
    m_current = settings;
    return std::nullopt;
}

std::optional<std::string> SettingsFile::setDamagedFileAside() {
    if (!isThere(m_file) || decodeSettings(readFile(m_file))) {
        return std::nullopt;
    }
    const std::string aside = m_file.string() + ".damaged-" + timeSuffix();
    if (std::rename(m_file.c_str(), aside.c_str()) != 0) {
        return because("The damaged settings could not be set aside");
    }
    say(JournalLevel::kWarning, "The damaged settings were renamed to " + aside);
    return std::nullopt;
}

}  // namespace quorbel
