#pragma once

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/SettingsCycle.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// How long events of each severity class are kept: so many units; 0 means for good. A unit is its
/// index in the chooser; -1 for none.
struct RemovalValues {
    std::int64_t iRemovalEmergency = 0;
    std::int64_t iRemovalAlerting = 0;
    std::int64_t iRemovalCritical = 0;
    std::int64_t iRemovalError = 0;
    std::int64_t iRemovalWarning = 0;
    std::int64_t iRemovalNotice = 0;
    std::int64_t iRemovalInformation = 0;
    std::int64_t iRemovalDebug = 0;
    std::int64_t iRemovalUnknown = 0;

    std::int64_t iRemovalEmergencyUnits = 0;
    std::int64_t iRemovalAlertingUnits = 0;
    std::int64_t iRemovalCriticalUnits = 0;
    std::int64_t iRemovalErrorUnits = 0;
    std::int64_t iRemovalWarningUnits = 0;
    std::int64_t iRemovalNoticeUnits = 0;
    std::int64_t iRemovalInformationUnits = 0;
    std::int64_t iRemovalDebugUnits = 0;
    std::int64_t iRemovalUnknownUnits = 0;
};

/// What the nine severity classes have in RemovalValues, in their order.
struct RemovalMembers {
    std::int64_t RemovalValues::*amount;
    std::int64_t RemovalValues::*units;
};
extern const std::array<RemovalMembers, kSeverityClassCount> kRemovalMembers;

/// The working values of the options page: its private copy of the keys that it edits.
struct OptionsValues : SeverityLevels, RemovalValues {
    bool bHostsDisplay = false;
    std::string dateFormat;
    std::int64_t iPopupEvents = 0;
    std::optional<std::string> popupSound;
    std::vector<std::string> popupDisplayArray;
    std::vector<std::string> popupPlayArray;
    Array includeFiltersArray;
    Array excludeFiltersArray;

    /// The values in the document, or the page's defaults when there is none.
    static OptionsValues read(const SettingsCycle &settings);
    /// Writes all keys of the page.
    void write(SettingsCycle &settings) const;
};

/// The items of the two choosers that a date format stands for.
struct DateFormatItems {
    std::string date;
    std::optional<std::string> time;  ///< nothing when no item stands for it
};
DateFormatItems dateFormatItems(std::string_view format);

/// The date format that two chosen items make. Where nothing is chosen, the part of the format as
/// it was read stays: a format that the choosers do not offer is not lost.
std::string composeDateFormat(const std::optional<std::string> &date,
                              const std::optional<std::string> &time, std::string_view read);

}  // namespace quorbel
