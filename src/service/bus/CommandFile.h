#pragma once

#include "platform/KeyedArchive.h"
#include "platform/UniqueFd.h"
#include "platform/Value.h"

#include <variant>

namespace quorbel {

/// Reads a command that a client wrote as a keyed archive into a memfd. The file must be sealed
/// against writing and shrinking, so that it cannot change or vanish while it is read.
std::variant<Value, ArchiveError> readCommandFile(const UniqueFd &file);

}  // namespace quorbel
