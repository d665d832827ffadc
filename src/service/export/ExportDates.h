#pragma once

#include "platform/DateFormat.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// Shows the dates of log lines in one format. Lines of the same second stand together, so only the
/// first of them costs a conversion.
class ExportDates {
public:
    /// `setting` is a date format as the settings hold it.
    explicit ExportDates(std::string_view setting) : m_format(setting) {}

    /// Both last until the next call of show().
    void show(std::string_view date);
    [[nodiscard]] std::int64_t seconds() const { return m_seconds; }
    [[nodiscard]] std::string_view text() const { return m_text; }

private:
    DateFormat m_format;
    std::string m_date;
    std::int64_t m_seconds = 0;
    std::string m_text;
};

}  // namespace quorbel
