#pragma once

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/Event.h"

#include <string>
#include <string_view>
#include <utility>

namespace quorbel::testing {

inline constexpr std::string_view kFormat = "yyyy-MM-dd HH:mm:ss";

inline EventFields fields(std::string_view date, std::string_view priority = "Local7.Error",
                          std::string_view host = "10.0.0.5",
                          std::string_view message = "disk full") {
    return {date, priority, host, message, {}};
}

inline AppState stateWith(std::string newFormat, std::string oldFormat) {
    AppState state;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        state.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
    }
    state.newDateFormat = std::move(newFormat);
    state.oldDateFormat = std::move(oldFormat);
    return state;
}

inline AppState stateWith(std::string_view format = kFormat) {
    return stateWith(std::string(format), std::string(format));
}

}  // namespace quorbel::testing
