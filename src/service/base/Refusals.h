#pragma once

#include "common/IpAddress.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Why something that a sender sent is not, or not as it was meant, in the log files.
enum class RefusalReason : std::uint8_t {
    kMalformed,   ///< without a usable priority or header, empty, or cut
    kFiltered,    ///< kept out by the filters of the settings
    kTooLong,     ///< the end of a message was not stored
    kClosed,      ///< a connection was closed in favour of a new one
    kTlsRefused,  ///< a TLS connection was never established
    kWrongPort,   ///< TLS where none is expected, or none where it is
};
inline constexpr std::size_t kRefusalReasonCount = 6;

/// As it is called where people read it: "filtered".
std::string_view refusalReasonName(RefusalReason reason);

/// The senders from whom something was refused last, and what. Of so many, whoever sends: a sender
/// that is heard of no more makes room. Costs next to nothing while one sender goes on. Loop thread
/// only.
class Refusals {
public:
    static constexpr std::size_t kMostSenders = 32;

    struct Refusal {
        IpAddress sender;
        RefusalReason reason;
        std::string detail;    ///< of the last one, as quoted() shows a text; may be empty
        std::int64_t seconds;  ///< since 1970, of the last one
        std::uint64_t count;   ///< of those since the sender was heard of first
    };

    /// `detail` is what the sender, or the settings, say about it, or a sample of it: any bytes.
    void note(const IpAddress &sender, RefusalReason reason, std::string_view detail);
    /// A TLS connection that was never established, for a reason as OpenSSL calls it: the sender
    /// may not speak TLS at all.
    void noteTlsFailure(const IpAddress &sender, std::string_view reason);
    /// One for each sender and reason; of the sender that was refused last first.
    [[nodiscard]] std::vector<Refusal> latest() const;

private:
    struct Known {
        std::string detail;
        std::int64_t seconds = 0;
        std::uint64_t count = 0;
    };
    struct Sender {
        IpAddress address;
        std::array<Known, kRefusalReasonCount> reasons;
    };

    Sender &senderOf(const IpAddress &address);

    std::list<Sender> m_senders;  ///< the last one in front
};

}  // namespace quorbel
