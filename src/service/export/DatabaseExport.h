#pragma once

#include "service/export/ExportTarget.h"
#include "service/export/LogSources.h"

#include <atomic>
#include <optional>
#include <string>

namespace quorbel {

/// Keeps an SQLite database that lists what the log files hold, in the table
/// events(id, time, date, priority, host, message). The table "sources" says which part of which
/// log file is in it; the rows of a file have ids of their own range, in the order of its lines.
///
/// Each run is one transaction: only what was appended to the log files is inserted, and the rows
/// of a file that was rewritten are exchanged. A run for which the disk has no room is not begun. A
/// file that is no database of ours is left alone. For one thread.
class DatabaseExport {
public:
    /// Brings the database up to date. Returns what went wrong, as one line; the database is as it
    /// was then. Ends early, without a problem, once `stop` is set.
    static std::optional<std::string> run(const ExportTarget &target, const LogSources &sources,
                                          const std::atomic<bool> &stop);
};

}  // namespace quorbel
