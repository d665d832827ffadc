#pragma once

#include "platform/Value.h"

#include <QString>

namespace quorbel {

/// What filters and actions begin with that are to mean events like this one, given as it is shown:
/// the six fields of FilterForm, with likeWildcards() as the message. What none of their values
/// stands for, such as a host's name, is left any.
Dictionary likeRecord(const QString &priority, const QString &host, const QString &message);

}  // namespace quorbel
