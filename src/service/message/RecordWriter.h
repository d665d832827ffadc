#pragma once

#include "service/message/Priority.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// One event on its way into the log files. The texts may hold any bytes.
struct ReceivedEvent {
    std::int64_t seconds = 0;  ///< since 1970, when it was received
    Priority priority;
    std::string_view host;
    std::string_view message;
};

/// The most bytes of a host that are kept: so long is a name at most (RFC 1035, 2.3.4), and
/// messages have most of a line.
inline constexpr std::size_t kLongestHost = 255;

/// Appends a host as lines of the log files hold it; "-" for none.
void appendHost(std::string_view host, std::string &field);

/// Writes events as lines of the log files, "date,priority,host,message\r\n", so that a reader gets
/// exactly these events back, whatever the sender put into them.
///
/// - No line is longer than the piece that readers take at once. A longer message becomes several
///   whole events, cut between characters and never within an escape.
/// - Control characters (C0, DEL, C1) are written as "#" and their code as three octal digits:
///   "#012" for a line feed.
/// - Bytes that are no UTF-8, and the noncharacters that a bus refuses in strings, are written as
///   U+FFFD.
/// - In the host, commas, blanks, control characters and bytes outside ASCII are written as "_".
/// - An empty field is written as "-", because readers skip empty fields.
class RecordWriter {
public:
    struct Written {
        std::size_t lines;
        std::size_t prefix;  ///< bytes in front of the message, in each line
    };

    /// Appends the event to `lines`.
    Written append(const ReceivedEvent &event, std::string &lines);

private:
    void makePrefix(const ReceivedEvent &event);

    std::string m_prefix;  ///< of the event with these three; empty before there was one
    std::int64_t m_seconds = 0;
    Priority m_priority;
    std::string m_host;
};

}  // namespace quorbel
