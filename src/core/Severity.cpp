#include "core/Severity.h"

namespace quorbel {

const std::array<SeverityClass, kSeverityClassCount> kSeverityClasses{{
    {"Emergency", "Emergency", "Emergency", "Emergency", &AppState::iEmergency,
     &AppState::iSeverityEmergency, kSevere},
    {"Alert", "Alert", "Alerting", "Alert", &AppState::iAlert, &AppState::iSeverityAlerting,
     kSevere},
    {"Critical", "Critical", "Critical", "Critical", &AppState::iCritical,
     &AppState::iSeverityCritical, kSevere},
    {"Error", "Error", "Error", "Error", &AppState::iError, &AppState::iSeverityError, kModerate},
    {"Warning", "Warning", "Warning", "Warning", &AppState::iWarning, &AppState::iSeverityWarning,
     kModerate},
    {"Notice", "Notice", "Notice", "Notice", &AppState::iNotice, &AppState::iSeverityNotice,
     kModerate},
    {"Informational", "Information", "Information", "Information", &AppState::iInformation,
     &AppState::iSeverityInformation, kNormal},
    {"Debug", "Debug", "Debug", "Debug", &AppState::iDebug, &AppState::iSeverityDebug, kNormal},
    {"", "", "Unknown", "Unknown", &AppState::iUnknown, &AppState::iSeverityUnknown, kNormal},
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
