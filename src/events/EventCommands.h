#pragma once

#include <functional>

class QAbstractButton;
class QWidget;

namespace quorbel {

class AppDelegate;
class EventFinder;
class EventTableView;
class FindBar;
class RowCommands;

/// Gives the table, which shows its events already, the commands on selected events: Copy, Copy
/// Message, Details, which opens what Return opens, filters made of an event, records of the
/// service's filters and actions made of one, and Delete. They belong to the table.
RowCommands &addEventCommands(EventTableView &table, FindBar &bar, EventFinder &finder,
                              AppDelegate &delegate, std::function<void()> deleteEvents);

/// Gives the page the commands for what of its list one sees, and their keys. They belong to it.
void addListCommands(QWidget &page, FindBar &bar, EventFinder &finder, QAbstractButton &hold,
                     QAbstractButton &timeline, EventTableView &table);

}  // namespace quorbel
