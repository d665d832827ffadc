#pragma once

#include "service/base/LastResult.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What is to be sent to whom. All texts are UTF-8; what is not is replaced when it is written.
struct MailMessage {
    std::vector<std::string> recipients;  ///< "user@host" or "Name <user@host>" each
    std::string subject;
    std::string body;   ///< lines end in CR LF, LF or CR
    bool html = false;  ///< whether the body is HTML
    /// Told of what goes wrong with it on its way from a queue; may be null.
    std::shared_ptr<LastResult> result{};
};

struct MailAddress {
    std::string name;     ///< often empty
    std::string address;  ///< "user@host"
};

/// Reads "user@host" or "Name <user@host>"; nothing when that is no address to which mail can be
/// sent. Addresses are ASCII, as most mail servers want them.
std::optional<MailAddress> readMailAddress(std::string_view text);

/// What tells a message from all others.
struct MailStamp {
    std::int64_t seconds = 0;  ///< since 1970
    std::string id;            ///< the part of the Message-ID in front of the "@"
};

/// The message as mail servers take it (RFC 5322, RFC 2045 to 2047), lines ended by CR LF and of at
/// most 78 bytes but for long addresses. Nothing in the texts can add a header or end the message.
std::string writeMail(const MailMessage &message, const MailAddress &sender,
                      const std::vector<MailAddress> &recipients, const MailStamp &stamp);

}  // namespace quorbel
