#include "common/Severity.h"

namespace quorbel {

const std::array<SeverityClass, kSeverityClassCount> kSeverityClasses{{
    {"Emergency", "Emergency", "Emergency", "Emergency", kSevere},
    {"Alert", "Alert", "Alerting", "Alert", kSevere},
    {"Critical", "Critical", "Critical", "Critical", kSevere},
    {"Error", "Error", "Error", "Error", kModerate},
    {"Warning", "Warning", "Warning", "Warning", kModerate},
    {"Notice", "Notice", "Notice", "Notice", kModerate},
    {"Informational", "Information", "Information", "Information", kNormal},
    {"Debug", "Debug", "Debug", "Debug", kNormal},
    {"", "", "Unknown", "Unknown", kNormal},
}};

std::string_view severityLevelName(std::int64_t level) {
    switch (level) {
        case kNormal:
            return "Normal";
        case kModerate:
            return "Moderate";
        case kSevere:
            return "Severe";
        default:
            return {};
    }
}

PriorityClasses classifyPriority(std::string_view priority) {
    PriorityClasses classes;
    for (std::size_t i = kUnknownClass; i-- > 0;) {
        const auto index = static_cast<std::uint8_t>(i);
        if (priority.find(kSeverityClasses[i].name) != std::string_view::npos) {
            classes.counted.set(i);
            classes.shown = index;
        }
        if (priority.find(kSeverityClasses[i].deletionWord) != std::string_view::npos) {
            classes.deleted = index;
        }
    }
    if (classes.counted.none()) {
        classes.counted.set(kUnknownClass);
    }
    return classes;
}

}  // namespace quorbel
