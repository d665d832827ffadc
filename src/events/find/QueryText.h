#pragma once

#include "core/EventQuery.h"

#include <QString>

namespace quorbel {

/// A filter in words, as “contains “sdb”; host fs01; Warning and worse”.
QString queryText(const EventQuery &query);

}  // namespace quorbel
