#include "common/EmailTemplate.h"

#include <array>
#include <cstddef>
#include <optional>
#include <utility>

namespace quorbel {

namespace {

std::string replaceAll(std::string_view text, std::string_view placeholder,
                       std::string_view replacement) {
    std::string result;
    std::size_t from = 0;
    for (std::size_t found = text.find(placeholder); found != std::string_view::npos;
         found = text.find(placeholder, from)) {
        result.append(text, from, found - from).append(replacement);
        from = found + placeholder.size();
    }
    return result.append(text, from);
}

}  // namespace

std::string fillTemplate(std::string_view text, const EventFields &event) {
    const std::array<std::pair<std::string_view, std::optional<std::string_view>>, 4> placeholders{{
        {"$host", event.host},
        {"$date", event.date},
        {"$priority", event.priority},
        {"$message", event.message},
    }};
    std::string filled(text);
    for (const auto &[placeholder, field] : placeholders) {
        filled = replaceAll(filled, placeholder, field.value_or(std::string_view{}));
    }
    return filled;
}

}  // namespace quorbel
