#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace quorbel {

/// "--cluster-schema [NAME] [--config FILE]": prints the SQL that makes the table of a cluster of
/// the configuration; without a name, of its only one, or a usual one where there is none. How the
/// program is to end; nothing when the arguments ask for something else or are wrong.
std::optional<int> printClusterSchema(const std::vector<std::string_view> &arguments);

}  // namespace quorbel
