#pragma once

#include "core/AppState.h"

namespace quorbel {

/// Takes from the stored settings what says how events are shown and what raises an alert: ratings,
/// date format, popups. Without a settings document, or one that may not be read, the ratings are
/// those that a new installation has, and all else is empty.
void takeStartSettings(AppState &state);

}  // namespace quorbel
