#pragma once

#include "common/EventFields.h"

#include <string>
#include <string_view>

namespace quorbel {

// The settings keys of the templates that e-mails are made from.
inline constexpr std::string_view kFormatSubjectKey = "actionsFormatSubject";
inline constexpr std::string_view kFormatBodyKey = "actionsFormatBody";

// What they are as long as there are no settings.
inline constexpr std::string_view kDefaultFormatSubject = "$message";
inline constexpr std::string_view kDefaultFormatBody =
    "Date:$date\r\nPriority:$priority\r\nHost:$host\r\nMessage:$message\r\n";

/// Replaces every "$host", "$date", "$priority" and "$message" in a template by the event's field,
/// an absent one by nothing. `event.date` is the date as it is to be read by people.
///
/// The placeholders are replaced in this order, each in the whole text: one that stands in a field
/// which was put in earlier is replaced as well.
[[nodiscard]] std::string fillTemplate(std::string_view text, const EventFields &event);

}  // namespace quorbel
