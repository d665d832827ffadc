#include "service/bus/SettingsFile.h"

#include "common/SettingsDocument.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "service/base/Journal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr unsigned kMode = 0640;
constexpr std::size_t kDateFormatsKept = 8;

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

std::string dateFormatOf(const Dictionary &settings) {
    return settingText(settings, "dateFormat").value_or("");
}

}  // namespace

SettingsFile::SettingsFile(std::filesystem::path file, std::function<void()> onChange)
    : m_file(std::move(file)),
      m_onChange(std::move(onChange)),
      m_current(std::make_shared<const Dictionary>()) {}

void SettingsFile::load() {
    const MutexLock lock(m_fileMutex);
    auto settings = decodeSettings(readFile(m_file));
    if (!settings && isThere(m_file)) {
        say(JournalLevel::kError,
            m_file.string() +
                " is damaged; the current settings stay in force until new ones are saved");
        return;
    }
    putInForce(std::move(settings).value_or(Dictionary()));
}

std::optional<std::string> SettingsFile::save(const Dictionary &settings) {
    const MutexLock lock(m_fileMutex);
    if (auto problem = setDamagedFileAside()) {
        return problem;
    }
    if (!replaceFile(m_file, writeKeyedArchive(settings), kMode)) {
        return because("The settings could not be stored");
    }
    putInForce(settings);
    return std::nullopt;
}

std::shared_ptr<const Dictionary> SettingsFile::current() const {
    const MutexLock lock(m_mutex);
    return m_current;
}

std::vector<std::string> SettingsFile::dateFormats() const {
    const MutexLock lock(m_mutex);
    return m_dateFormats.empty() ? std::vector{dateFormatOf(*m_current)} : m_dateFormats;
}

void SettingsFile::putInForce(Dictionary settings) {
    auto current = std::make_shared<const Dictionary>(std::move(settings));
    {
        const MutexLock lock(m_mutex);
        m_current = std::move(current);
        const std::string format = dateFormatOf(*m_current);
        std::erase(m_dateFormats, format);
        m_dateFormats.insert(m_dateFormats.begin(), format);
        m_dateFormats.resize(std::min(m_dateFormats.size(), kDateFormatsKept));
    }
    if (m_onChange) {
        m_onChange();
    }
}

std::optional<std::string> SettingsFile::setDamagedFileAside() {
    if (!isThere(m_file) || decodeSettings(readFile(m_file))) {
        return std::nullopt;
    }
    const std::string aside = m_file.string() + ".damaged-" + timeSuffix();
    if (std::rename(m_file.c_str(), aside.c_str()) != 0) {
        return because("The damaged settings file could not be renamed");
    }
    say(JournalLevel::kWarning, "The damaged settings file was renamed to " + aside);
    return std::nullopt;
}

}  // namespace quorbel
