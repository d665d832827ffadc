#pragma once

#include "core/Event.h"
#include "platform/gui/TextMarks.h"

class QAbstractItemModel;

namespace quorbel {

/// The list that a details sheet was opened from, as the sheet steps through it.
class SteppableList {
public:
    virtual ~SteppableList() = default;

    /// Whose signals tell that rows have come or gone.
    [[nodiscard]] virtual const QAbstractItemModel &rowModel() = 0;
    [[nodiscard]] virtual int numberOfRows() = 0;
    /// -1 when there is none.
    [[nodiscard]] virtual int selectedRow() = 0;
    /// -1 when the event has left the list.
    [[nodiscard]] virtual int rowOf(const Event &event) = 0;
    /// The same, but for an event that has left the list the row where it would stand now: that of
    /// the next older event, numberOfRows() when there is none.
    [[nodiscard]] virtual int placeOf(const Event &event) = 0;
    /// Selects that row alone, scrolls to it and returns its event. 0 <= `row` < numberOfRows().
    virtual Event selectRow(int row) = 0;
    /// Which parts of a shown text were looked for.
    [[nodiscard]] virtual std::vector<TextRange> marksIn(const QString &text) = 0;

protected:
    SteppableList() = default;
    SteppableList(const SteppableList &) = default;
    SteppableList &operator=(const SteppableList &) = default;
};

}  // namespace quorbel
