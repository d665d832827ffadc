#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quorbel {

/// The cycle that every settings page and sheet follows each time it is shown: read the whole
/// document, edit the page's own keys in a private copy, send the whole copy.
class SettingsCycle {
public:
    /// Starts over from what `readSettings` gave. Returns whether a document exists; when none
    /// does, the page's defaults hold and the working dictionary is empty.
    bool load(const std::optional<std::string> &bytes);

    [[nodiscard]] bool exists() const { return m_exists; }
    [[nodiscard]] const Dictionary &working() const { return m_working; }
    void set(std::string_view key, Value value) { m_working.set(key, std::move(value)); }
    /// Writes a text, or removes the key when there is none.
    void setText(std::string_view key, const std::optional<std::string> &text);

private:
    Dictionary m_working;
    bool m_exists = false;
};

}  // namespace quorbel
