#pragma once

#include "common/LogReader.h"
#include "core/EventQuery.h"

#include <string>

namespace quorbel {

/// How events are written, a line each.
enum class EventForm {
    kText,  ///< as in the log files, harmless for a terminal
    kJson   ///< an object of JSON
};

/// Appends an event and a line feed. The bytes of its fields may be any.
void appendEvent(std::string &out, const LogLine &event, EventRating rating, EventForm form);

}  // namespace quorbel
