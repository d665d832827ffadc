#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// The command that has the service send one e-mail about a sample event, by the templates of the
/// stored settings. `date` is the sample's date.
///
/// The command ends before the first template that is missing, all of them without settings.
Dictionary testEmailCommand(const std::vector<std::string> &recipients,
                            const std::optional<Dictionary> &settings, std::string_view date);

}  // namespace quorbel
