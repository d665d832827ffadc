#pragma once

#include "common/EventFields.h"
#include "common/LogReader.h"

namespace quorbel {

/// A log line's fields as the text of an event: views into the line. A field that is not UTF-8 is
/// absent, and so are those after it.
EventFields fieldsOf(const LogLine &line);

}  // namespace quorbel
