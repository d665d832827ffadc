#pragma once

#include <functional>

namespace quorbel {

class EventTableView;
class RowCommands;

/// Gives the table, which shows its events already, the commands on selected events: Copy, Copy
/// Message, Details, which opens what Return opens, and Delete. They belong to the table.
RowCommands &addEventCommands(EventTableView &table, std::function<void()> deleteEvents);

}  // namespace quorbel
