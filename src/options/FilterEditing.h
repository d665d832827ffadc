#pragma once

#include "platform/Value.h"

#include <optional>

namespace quorbel {

class EventList;

/// A page that the filter editor is presented over.
class FilterEditing {
public:
    virtual ~FilterEditing() = default;

    /// The record to edit; nothing when the editor makes a new one.
    [[nodiscard]] virtual std::optional<Dictionary> filterToEdit() const = 0;
    /// What a new record begins with; nothing for what it begins with by itself.
    [[nodiscard]] virtual std::optional<Dictionary> proposal() const = 0;
    /// Takes what the editor made.
    virtual void storeFilter(const Dictionary &record) = 0;

    /// Whether what the filter matches is left out, and not accepted.
    [[nodiscard]] virtual bool editsExcludeFilter() const = 0;
    /// The events that the window lists, to try a filter on.
    [[nodiscard]] virtual EventList &listedEvents() const = 0;

protected:
    FilterEditing() = default;
    FilterEditing(const FilterEditing &) = default;
    FilterEditing &operator=(const FilterEditing &) = default;
};

}  // namespace quorbel
