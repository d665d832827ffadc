#pragma once

#include "core/AppState.h"
#include "core/EventList.h"
#include "platform/Value.h"

#include <string_view>
#include <vector>

namespace quorbel {

/// Names the events of some rows as the "update" command does: each key is an event's line
/// "seconds,priority,host,message\n" with the moment that its date reads as ("0" when it does not
/// read; see EventList::momentShown()), each value how many of the rows have that line.
///
/// Lowers the severity counter of each of them by one.
Dictionary takeForDeletion(EventList &list, const std::vector<RowRange> &rows, AppState &state);

}  // namespace quorbel
