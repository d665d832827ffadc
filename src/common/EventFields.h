#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace quorbel {

/// The fields of an event on its way in: views into a log line or a notification. Any can be
/// absent.
struct EventFields {
    std::optional<std::string_view> date;
    std::optional<std::string_view> priority;
    std::optional<std::string_view> host;
    std::optional<std::string_view> message;
    /// Further keys that came with it, carried along.
    std::span<const std::pair<std::string_view, std::string_view>> others;
};

}  // namespace quorbel
