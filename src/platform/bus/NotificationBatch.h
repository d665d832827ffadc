#pragma once

#include "platform/FileMapping.h"
#include "platform/UniqueFd.h"
#include "platform/bus/Checkpoint.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// What a notification says of an event.
enum class NotificationType : char { kSet = 'S', kRemove = 'R' };

/// "Set" or "Remove".
const char *nameOf(NotificationType type);

/// Notifications of one type, one behind the other: events as their lines in the log files, each
/// with its line end.
struct NotificationRun {
    NotificationType type = NotificationType::kSet;
    std::string_view lines;
};

/// Many notifications that travel together: their lines in a sealed memfd, of which the runs say
/// what is meant by how many bytes, and what was told before and behind them.
class NotificationBatch {
public:
    /// A larger one is not taken.
    static constexpr std::size_t kMostBytes = std::size_t{4} << 20U;

    /// A memfd with the lines of all runs, sealed; not open, with errno, when there is none to be
    /// had.
    static UniqueFd write(const std::vector<NotificationRun> &runs);
    /// Takes one on. Nothing when it is not one: a file that is not sealed against whoever sent it
    /// changing it, is too large, or does not end where the runs do; a run that is empty, or not of
    /// whole lines; a type that is none. The descriptor stays its owner's.
    struct Extent {
        std::string_view type;
        std::uint64_t bytes = 0;
    };
    static std::optional<NotificationBatch> read(int file, const std::vector<Extent> &extents);

    /// They last as long as the batch, also when that moves.
    [[nodiscard]] const std::vector<NotificationRun> &runs() const { return m_runs; }

private:
    FileMapping m_bytes;
    std::vector<NotificationRun> m_runs;
};

}  // namespace quorbel
