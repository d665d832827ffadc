#pragma once

#include "common/LogReader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// The columns of a cluster's table, as insert statements and queries name them, in the order of
/// ClusterRows.
inline constexpr std::string_view kClusterColumns =
    "time, severity, facility, priority, host, message, collector, number";

/// Events as rows of the cluster's table, in its format RowBinary: numbers in little-endian order,
/// texts behind their length (LEB128), nothing between them.
///
/// time (UInt32, seconds since 1970, UTC), severity (UInt8, the class that a Priority is shown as:
/// 0 to 7 of RFC 5424, 8 for none), facility (what stands before the priority's first point),
/// priority, host, message, collector (texts), number (UInt64).
class ClusterRows {
public:
    /// `collector` says whose events they are.
    explicit ClusterRows(std::string_view collector);

    /// Adds an event; with the collector's name, its number is the name of the row. A date that is
    /// no number of seconds counts as 0, as whatever is before 1970, and one past 2106 as the last.
    void add(std::uint64_t number, const LogLine &event);
    void clear();

    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] std::string_view bytes() const { return m_bytes; }

private:
    std::string m_collector;  ///< with its length in front
    std::string m_bytes;
    std::size_t m_count = 0;
};

}  // namespace quorbel
