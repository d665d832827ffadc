#pragma once

#include "common/Severity.h"
#include "core/HourlyArrivals.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {

/// The user's rating of each severity class (SeverityLevel).
struct SeverityLevels {
    std::int64_t iSeverityEmergency = 0;
    std::int64_t iSeverityAlerting = 0;
    std::int64_t iSeverityCritical = 0;
    std::int64_t iSeverityError = 0;
    std::int64_t iSeverityWarning = 0;
    std::int64_t iSeverityNotice = 0;
    std::int64_t iSeverityInformation = 0;
    std::int64_t iSeverityDebug = 0;
    std::int64_t iSeverityUnknown = 0;
};

/// What raises an alert. Replaced as a whole, by AppDelegate::setAlertSettings().
struct AlertSettings {
    std::int64_t iPopupEvents = 0;               ///< seconds a popup stays open; 0 means no popups
    std::string popupSound;                      ///< path of the alert sound; empty means none
    std::vector<std::string> popupDisplayArray;  ///< labels of severities that raise a popup
    std::vector<std::string> popupPlayArray;     ///< labels of severities that play the sound
};

/// What all pages share. Owned by AppDelegate; main thread only, but for the alert settings, which
/// the alert worker reads through AppDelegate.
struct AppState : SeverityLevels, AlertSettings {
    // How many events of each class the front-end holds.
    std::int64_t iEmergency = 0;
    std::int64_t iAlert = 0;
    std::int64_t iCritical = 0;
    std::int64_t iError = 0;
    std::int64_t iWarning = 0;
    std::int64_t iNotice = 0;
    std::int64_t iInformation = 0;
    std::int64_t iDebug = 0;
    std::int64_t iUnknown = 0;

    HourlyArrivals arrivals;  ///< of the events that the intake took in

    std::string newDateFormat;  ///< now chosen; empty means the default format
    std::string oldDateFormat;  ///< in force before the options were last saved
};

/// The rating and the number of events of each severity class, in the order of kSeverityClasses.
inline constexpr std::array<std::int64_t SeverityLevels::*, kSeverityClassCount> kSeverityLevels{
    &SeverityLevels::iSeverityEmergency,   &SeverityLevels::iSeverityAlerting,
    &SeverityLevels::iSeverityCritical,    &SeverityLevels::iSeverityError,
    &SeverityLevels::iSeverityWarning,     &SeverityLevels::iSeverityNotice,
    &SeverityLevels::iSeverityInformation, &SeverityLevels::iSeverityDebug,
    &SeverityLevels::iSeverityUnknown,
};
inline constexpr std::array<std::int64_t AppState::*, kSeverityClassCount> kSeverityCounters{
    &AppState::iEmergency,   &AppState::iAlert,   &AppState::iCritical,
    &AppState::iError,       &AppState::iWarning, &AppState::iNotice,
    &AppState::iInformation, &AppState::iDebug,   &AppState::iUnknown,
};

}  // namespace quorbel
