#include "alerts/AlertDecision.h"

#include "core/Severity.h"

#include <algorithm>
#include <cstddef>

namespace quorbel {

std::int64_t findArray(const std::vector<std::string> &array, std::string_view key) {
    const auto found = std::ranges::find_if(array, [key](const std::string &element) {
        return element.find(key) != std::string::npos;
    });
    return found == array.end() ? kNotFound : found - array.begin();
}

bool isSelected(std::string_view priority, const std::vector<std::string> &labels) {
    const auto counted = classifyPriority(priority).counted;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        if (counted[i] && findArray(labels, kSeverityClasses[i].label) != kNotFound) {
            return true;
        }
    }
    return false;
}

bool isSoundWanted(std::string_view priority, const AlertSettings &settings) {
    return !settings.popupSound.empty() && isSelected(priority, settings.popupPlayArray);
}

bool isPopupWanted(std::string_view priority, const AlertSettings &settings) {
    return settings.iPopupEvents >= 1 && isSelected(priority, settings.popupDisplayArray);
}

}  // namespace quorbel
