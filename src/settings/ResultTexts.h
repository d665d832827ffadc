#pragma once

#include "core/ServiceResults.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace quorbel {

/// Why the service tells nothing of an action or export, or not of this one: for the end of a
/// sentence. `outcome` is that of the last question, nothing before there was one.
QString whyNotTold(std::optional<StatusOutcome> outcome);

/// A moment as the window shows dates, in this format.
QString resultTime(std::int64_t seconds, const std::string &dateFormat);

/// The last problem and when that was; empty when there was none.
QString problemText(const ServiceResult &result, const std::string &dateFormat);

/// Whether the last problem is as new as what was done last.
bool isFailing(const ServiceResult &result);

}  // namespace quorbel
