#pragma once

#include "cluster/ClusterSchema.h"
#include "common/LogReader.h"
#include "common/Severity.h"

#include <bitset>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What the rows of a cluster are asked: all of it must hold, and what is left empty does.
struct ClusterFilter {
    /// A text, as it stands, that the priority, the host or the message contains, or that none of
    /// them does.
    struct Text {
        std::string text;
        bool isCaseSensitive = false;
        bool isNegated = false;
    };

    /// Hosts that can be told from others here.
    struct Host {
        enum class Kind : std::uint8_t {
            kExact,   ///< `text`, to the letter
            kName,    ///< `text`, which is of ASCII, capital and small letters alike
            kV4,      ///< with the first `bits` of the address `text`, which ends in zeros
            kAddress  ///< perhaps one over IPv6: only that it is no name or IPv4 is certain
        };
        Kind kind = Kind::kExact;
        std::string text{};
        unsigned bits = 0;  ///< of 32
    };

    std::optional<std::int64_t> from{};   ///< the first moment, in seconds since 1970
    std::optional<std::int64_t> until{};  ///< the moment that is past the last one
    std::optional<std::uint8_t> leastSeverity{};
    std::bitset<kSeverityClassCount> classes{};  ///< as they are counted (Severity.h)
    std::string facility{};
    std::vector<Text> texts{};
    /// Those that may be one of them: how addresses can be written is not known to all servers.
    std::vector<Host> hosts{};
    /// Those that are certainly none of them.
    std::vector<Host> otherHosts{};
};

/// A text as SQL has it, in quotation marks, whatever its bytes are.
std::string sqlText(std::string_view text);

// Statements whose answers ClusterAnswer reads; each event counts once.

/// The events, the oldest first: as the log files of a single collector have them.
std::string selectEvents(const ClusterPlace &place, const ClusterFilter &filter);
/// How many there are: for each quarter of an hour (its first second as the date), priority and
/// host an event with their count as its message.
std::string selectCounts(const ClusterPlace &place, const ClusterFilter &filter);

/// Reads such an answer piece by piece, holding a row at most.
class ClusterAnswer {
public:
    /// The views last as long as the call; returning false ends the reading.
    using Handler = std::function<bool(const LogLine &event)>;

    explicit ClusterAnswer(Handler onEvent) : m_onEvent(std::move(onEvent)) {}

    /// False when there is nothing more to read: the handler has had enough, or there is a
    /// problem.
    bool add(std::string_view bytes);
    /// What is wrong with the answer, as one line; a server that meets an error while it answers
    /// says so in place of a row. Empty when it is complete; to be asked at its end.
    [[nodiscard]] std::string problem() const;

private:
    bool addLine(std::string_view line);

    Handler m_onEvent;
    std::string m_begun;    ///< a row without its end
    std::string m_row;      ///< kept for its memory
    std::string m_problem;  ///< the line that was no row
};

}  // namespace quorbel
