#include "alerts/AlertDecision.h"

#include <algorithm>
#include <cstddef>

namespace quorbel {

std::int64_t findArray(const std::vector<std::string> &array, std::string_view key) {
    const auto found = std::ranges::find_if(array, [key](const std::string &element) {
        return element.find(key) != std::string::npos;
    });
    return found == array.end() ? kNotFound : found - array.begin();
}

bool isSelected(const CountedClasses &classes, const std::vector<std::string> &labels) {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        if (classes[i] && findArray(labels, kSeverityClasses[i].label) != kNotFound) {
            return true;
        }
    }
    return false;
}

bool isSoundWanted(const CountedClasses &classes, const AlertSettings &settings) {
    return !settings.popupSound.empty() && isSelected(classes, settings.popupPlayArray);
}

bool isPopupWanted(const CountedClasses &classes, const AlertSettings &settings) {
    return settings.iPopupEvents >= 1 && isSelected(classes, settings.popupDisplayArray);
}

}  // namespace quorbel
