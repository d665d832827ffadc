#pragma once

#include "core/AppState.h"
#include "core/EventList.h"
#include "platform/LineCommand.h"

#include <vector>

namespace quorbel {

/// The "update" command that names the events of some rows: each line is an event's,
/// "seconds,priority,host,message\n" with the moment that its date reads as ("0" when it does not
/// read; see EventList::momentShown()), each count how many of the rows have that line.
///
/// Lowers the severity counter of each of them by one.
LineCommand takeForDeletion(EventList &list, const std::vector<RowRange> &rows, AppState &state);

}  // namespace quorbel
