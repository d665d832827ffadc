#pragma once

#include "service/message/Priority.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// What is kept of one syslog message.
struct ParsedMessage {
    Priority priority;
    /// The message text; may be empty, and holds whatever bytes were sent.
    std::string_view text;
    /// False when the message had no usable priority, or an RFC 5424 header that breaks off.
    bool wellFormed = true;
    /// What the message calls the host that made it, any bytes; empty when it does not say. Anybody
    /// can write anything there.
    std::string_view hostName{};
};

/// Reads syslog messages, each of which is one datagram or one frame of a stream.
///
/// Time stamp and host name of the sender are recognised and left out of the text: an event carries
/// the time of its receipt, and the address that it came from unless that is a relay's. The text is
/// in one form for both protocols, "tag: text" or "tag[pid]: text".
///
/// RFC 5424: MSGID STRUCTURED-DATA APP-NAME[PROCID]: MSG. Nil values and the byte order mark in
/// front of MSG are left out; structured data stands as it was sent, but for timeQuality, which is
/// about the sender's clock. MSGID comes first, because it says what has happened where MSG is
/// empty and the structured data long. A header that breaks off after its time stamp is malformed,
/// and its rest is taken as MSG.
///
/// RFC 3164: what follows the time stamp and the host name. What is not recognised for certain
/// stays in the text:
/// - without a time stamp everything after the priority is the text;
/// - the time stamp may have a year, a fraction of a second, a mark ("*", ".") in front or a colon
///   behind, and may be one of RFC 3339;
/// - the word after the time stamp is the host name only if it looks like one and more follows:
///   with a colon at its end or brackets in it, it is the tag, and daemons write "Message forwarded
///   from X:" and "last message repeated" in its place.
///
/// No priority, one with a leading zero or above 191: user.notice, and everything is the text (RFC
/// 3164, 4.3.3). Line ends and NULs at the end, and a byte order mark in front of the priority,
/// behind it or in front of the text, do not count.
class MessageParser {
public:
    /// Nothing when the message is empty. The text is a view of `message` or of the parser, until
    /// the next call; the host name is one of `message`.
    std::optional<ParsedMessage> parse(std::string_view message);

private:
    ParsedMessage parse5424(Priority priority, std::string_view rest);

    std::string m_text;
};

}  // namespace quorbel
