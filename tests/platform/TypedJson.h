#pragma once

#include "platform/Value.h"

#include <string_view>

namespace quorbel::testing {

/// Reads a value from JSON that names the type of each part, as the test data have it. Throws
/// std::runtime_error when it is not of that form.
Value valueFromTypedJson(std::string_view json);

}  // namespace quorbel::testing
