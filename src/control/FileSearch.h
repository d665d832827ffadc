#pragma once

#include "control/ExitCode.h"
#include "control/LogSearch.h"
#include "core/EventQuery.h"

namespace quorbel {

/// Finds what a filter means in all log files of the service, the oldest first. Says on the
/// standard error what cannot be read. How to end: kNothing when nothing was found.
ExitCode searchFiles(const EventQuery &query, const LogSearch::Handler &onFound);

}  // namespace quorbel
