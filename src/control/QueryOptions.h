#pragma once

#include "control/OptionReader.h"
#include "core/EventQuery.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// The filter of the events page as options: each is a keyword of a saved filter, and is read as
/// that file is.
class QueryOptions {
public:
    /// They write to this object, which outlives them.
    std::vector<Option> options();
    /// A text that events have to contain.
    void addText(std::string_view text) { add("contains", text); }

    /// What was asked for; nothing when something is wrong, which was said then.
    [[nodiscard]] std::optional<EventQuery> query() const;

private:
    void add(std::string_view keyword, std::string_view value);
    Option textOption(const char *keyword, char letter = '\0');
    Option nameOption(const char *keyword, std::vector<std::string_view> names);
    Option momentOption(const char *keyword);

    std::string m_lines;  ///< of the file's form
};

/// The moment that a text names: as a saved filter holds it, or a day, with a time or without, of
/// the local calendar ("2026-11-21", "2026-11-21 02:00", "2026-11-21 02:00:30").
std::optional<std::int64_t> momentOf(std::string_view text);

}  // namespace quorbel
