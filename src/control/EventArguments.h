#pragma once

#include "control/EventWriter.h"
#include "control/OptionReader.h"
#include "control/QueryOptions.h"
#include "core/EventQuery.h"

#include <optional>
#include <vector>

namespace quorbel {

/// What the commands that read events have in common: which ones, and how to write them.
struct EventArguments {
    EventQuery query;
    EventForm form = EventForm::kText;
};

/// Reads them, with a command's `own` options beside; arguments that are no options are texts to
/// find. Nothing when something is wrong, which was said then.
std::optional<EventArguments> readEventArguments(int count, char **values,
                                                 const std::vector<Option> &own = {});

}  // namespace quorbel
