#pragma once

#include "common/LogReader.h"
#include "reports/DateTable.h"
#include "reports/DateTexts.h"
#include "reports/TextTable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What a report's groups have in common, in the order of the choices on the page.
enum class ReportKind { kHost, kMessage, kPriority, kDate };

enum class ReportField { kDate, kPriority, kHost, kMessage };

inline constexpr std::size_t kReportColumns = 4;

/// A report's columns: the group's field, then those of its details.
const std::array<ReportField, kReportColumns> &reportColumns(ReportKind kind);

/// Reads log files and groups their events by one field.
///
/// Groups are numbered in the order in which their values first appear, and the details of a group
/// in the order of the files. Built for millions of events: each takes 28 bytes and its message's;
/// priorities, hosts and messages that make a group are held once each, dates not as text at all.
/// Bytes that are not UTF-8 count as U+FFFD.
class ReportEngine {
public:
    /// Told of the bytes read, now and then; returning false ends the reading.
    using Progress = std::function<bool(std::uint64_t done, std::uint64_t inAll)>;

    /// Without a kind, files are read and have no groups. `dateFormat` is the setting.
    ReportEngine(std::optional<ReportKind> kind, std::string_view dateFormat);
    ReportEngine(const ReportEngine &) = delete;
    ReportEngine &operator=(const ReportEngine &) = delete;

    /// Reads the files in their order; one that cannot be read has no lines. To be called once.
    /// False when `onProgress` ended it; then the report is good for nothing.
    bool read(const std::vector<std::filesystem::path> &files, const Progress &onProgress = {});

    [[nodiscard]] std::optional<ReportKind> kind() const { return m_kind; }
    /// Lines read, those among them that hold no event included. A line that is too long to be read
    /// at once counts as several, as which it is read.
    [[nodiscard]] std::uint64_t lineCount() const { return m_lines; }
    /// Lines that hold no event, and were skipped.
    [[nodiscard]] std::uint64_t skippedLineCount() const { return m_lines - m_accepted; }
    /// Events in all groups.
    [[nodiscard]] std::size_t eventCount() const { return m_order.size(); }
    /// Events in the largest group; 0 without any.
    [[nodiscard]] std::size_t largestGroup() const { return m_largest; }

    [[nodiscard]] std::size_t groupCount() const { return m_starts.size() - 1; }
    /// Valid until the next call.
    [[nodiscard]] std::string_view groupText(std::size_t group) const;
    [[nodiscard]] std::size_t detailCount(std::size_t group) const {
        return m_starts[group + 1] - m_starts[group];
    }
    /// Valid until the next call.
    [[nodiscard]] std::string_view detailText(std::size_t group, std::size_t detail,
                                              ReportField field) const;

private:
    struct Detail {
        double seconds;  // since 1970
        TextStore::Ref message;
        std::uint32_t priority;
        std::uint32_t host;
    };

    void add(const LogLine &line);
    void putInGroup(std::uint32_t group);
    void sortByGroup();

    std::optional<ReportKind> m_kind;
    std::uint64_t m_lines = 0;
    std::uint64_t m_accepted = 0;
    std::size_t m_largest = 0;
    mutable DateTexts m_dateTexts;
    TextStore m_shared;  // apart from what comes in between, so that it stays in the caches
    TextStore m_store;
    TextTable m_priorities{m_shared};
    TextTable m_hosts{m_shared};
    TextTable m_messages{m_store};  // where these are the groups
    DateTable m_dates{m_dateTexts};
    std::vector<Detail> m_details;
    std::vector<std::uint32_t> m_groupOf;    // by detail, while reading; the last may be missing
    std::vector<std::uint32_t> m_order;      // details, group by group
    std::vector<std::uint32_t> m_starts{0};  // where each group begins there, and the end
};

}  // namespace quorbel
