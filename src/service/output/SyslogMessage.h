#pragma once

#include "common/LogReader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quorbel {

/// Writes stored events as syslog messages (RFC 5424, 6): with the time and host that they were
/// stored with, and facility and severity of their Priority. A message that begins with
/// "name[id]: " is split into APP-NAME, PROCID and MSG; MSGID and STRUCTURED-DATA are "-". One
/// thread.
class SyslogMessage {
public:
    /// Appends the message to `text`.
    void append(const LogLine &line, std::string &text);
    /// The same with its length in front (RFC 6587, 3.4.1; RFC 5425, 4.3).
    void appendCounted(const LogLine &line, std::string &text);

private:
    [[nodiscard]] std::string_view headOf(std::string_view priority);
    [[nodiscard]] std::string_view timeOf(std::string_view date);

    std::unordered_map<std::string, std::string> m_heads;  ///< "<191>1 " by Priority
    std::string m_priority;                                ///< the last one, as events come in runs
    std::string m_head;
    std::string m_date;
    std::string m_time;
    std::string m_message;
};

}  // namespace quorbel
