#pragma once

#include "platform/Value.h"

#include <QString>

namespace quorbel {

/// What filters and actions begin with that are to mean events like this one, given as it is shown:
/// the six fields of FilterForm, with likeWildcards() as the message. What none of their values
/// stands for is left any; a host's name, as "Host", says so.
Dictionary likeRecord(const QString &priority, const QString &host, const QString &message);

}  // namespace quorbel
