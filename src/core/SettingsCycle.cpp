#include "core/SettingsCycle.h"

#include "common/SettingsDocument.h"

namespace quorbel {

bool SettingsCycle::load(const std::optional<std::string> &bytes) {
    auto document = decodeSettings(bytes);
    m_exists = document.has_value();
    m_working = document ? std::move(*document) : Dictionary{};
    return m_exists;
}

void SettingsCycle::setText(std::string_view key, const std::optional<std::string> &text) {
    if (text) {
        m_working.set(key, *text);
    } else {
        m_working.remove(key);
    }
}

}  // namespace quorbel
