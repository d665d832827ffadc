#pragma once

#include <functional>

namespace quorbel::testing {

/// What happens while the copy of a log file is being synced.
extern std::function<void()> whileCopyIsSynced;
/// Whether nothing is synced, which takes most of the time that a file takes.
extern bool syncsNothing;

}  // namespace quorbel::testing
