#pragma once

#include "platform/Value.h"

#include <string>
#include <vector>

namespace quorbel {

/// What in the settings is not as their readers want it, as a line each: values of another kind
/// than their key's, numbers and names that mean nothing, date formats that cannot be used, and
/// what the service says of filters. Keys that are not known are nothing wrong.
std::vector<std::string> settingsProblems(const Dictionary &settings);

}  // namespace quorbel
