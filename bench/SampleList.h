#pragma once

#include "core/AppState.h"
#include "core/EventList.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

namespace quorbel::bench {

/// Adds the events of a file of sample lines, up to `most` of them, to a list.
void addSamples(EventList &list, const std::filesystem::path &file,
                std::uint64_t most = std::numeric_limits<std::uint64_t>::max());

/// What a user has who has chosen nothing but a date format.
AppState stateWithFormat(const std::string &dateFormat);

}  // namespace quorbel::bench
