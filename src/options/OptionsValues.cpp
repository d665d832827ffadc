#include "options/OptionsValues.h"

#include "common/SettingsDocument.h"
#include "core/AppState.h"

#include <utility>

namespace quorbel {

namespace {

constexpr std::int64_t kDefaultRemoval = 30;
constexpr std::int64_t kDefaultRemovalUnits = 2;

constexpr std::string_view kDayPeriod = " AM/PM";

std::string levelKey(const SeverityClass &severity) {
    return "severity" + std::string(severity.keyPart);
}
std::string removalKey(const SeverityClass &severity) {
    return "removal" + std::string(severity.keyPart);
}
std::string unitsKey(const SeverityClass &severity) {
    return removalKey(severity) + "Units";
}

/// What stands before the first space, and what stands behind it.
std::pair<std::string_view, std::string_view> splitOnce(std::string_view text) {
    const std::size_t space = text.find(' ');
    if (space == std::string_view::npos) {
        return {text, {}};
    }
    return {text.substr(0, space), text.substr(space + 1)};
}

Array toArray(const std::vector<std::string> &texts) {
    return {texts.begin(), texts.end()};
}

OptionsValues defaults() {
    OptionsValues values;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        values.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
        values.*kRemovalMembers[i].amount = kDefaultRemoval;
        values.*kRemovalMembers[i].units = kDefaultRemovalUnits;
    }
    return values;
}

}  // namespace

const std::array<RemovalMembers, kSeverityClassCount> kRemovalMembers{{
    {&RemovalValues::iRemovalEmergency, &RemovalValues::iRemovalEmergencyUnits},
    {&RemovalValues::iRemovalAlerting, &RemovalValues::iRemovalAlertingUnits},
    {&RemovalValues::iRemovalCritical, &RemovalValues::iRemovalCriticalUnits},
    {&RemovalValues::iRemovalError, &RemovalValues::iRemovalErrorUnits},
    {&RemovalValues::iRemovalWarning, &RemovalValues::iRemovalWarningUnits},
    {&RemovalValues::iRemovalNotice, &RemovalValues::iRemovalNoticeUnits},
    {&RemovalValues::iRemovalInformation, &RemovalValues::iRemovalInformationUnits},
    {&RemovalValues::iRemovalDebug, &RemovalValues::iRemovalDebugUnits},
    {&RemovalValues::iRemovalUnknown, &RemovalValues::iRemovalUnknownUnits},
}};

OptionsValues OptionsValues::read(const SettingsCycle &settings) {
    if (!settings.exists()) {
        return defaults();
    }
    const Dictionary &document = settings.working();
    OptionsValues values;
    values.bHostsDisplay = settingFlag(document, "hostsDisplay");
    values.dateFormat = settingText(document, "dateFormat").value_or(std::string());
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityClass &severity = kSeverityClasses[i];
        values.*kSeverityLevels[i] = settingInteger(document, levelKey(severity));
        values.*kRemovalMembers[i].amount = settingInteger(document, removalKey(severity));
        values.*kRemovalMembers[i].units = settingInteger(document, unitsKey(severity));
    }
    values.iPopupEvents = settingInteger(document, "popupEvents");
    values.popupSound = settingText(document, "popupSound");
    values.popupDisplayArray = settingTexts(document, "popupDisplayArray");
    values.popupPlayArray = settingTexts(document, "popupPlayArray");
    values.includeFiltersArray = settingArray(document, "includeFiltersArray");
    values.excludeFiltersArray = settingArray(document, "excludeFiltersArray");
    return values;
}

void OptionsValues::write(SettingsCycle &settings) const {
    settings.set("hostsDisplay", bHostsDisplay);
    settings.set("dateFormat", dateFormat);
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        settings.set(levelKey(kSeverityClasses[i]), this->*kSeverityLevels[i]);
    }
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        settings.set(removalKey(kSeverityClasses[i]), this->*kRemovalMembers[i].amount);
    }
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        settings.set(unitsKey(kSeverityClasses[i]), this->*kRemovalMembers[i].units);
    }
    settings.set("popupEvents", iPopupEvents);
    settings.setText("popupSound", popupSound);
    settings.set("popupDisplayArray", toArray(popupDisplayArray));
    settings.set("popupPlayArray", toArray(popupPlayArray));
    settings.set("includeFiltersArray", includeFiltersArray);
    settings.set("excludeFiltersArray", excludeFiltersArray);
}

DateFormatItems dateFormatItems(std::string_view format) {
    const auto [date, rest] = splitOnce(format);
    std::string time(splitOnce(rest).first);
    DateFormatItems items{.date = std::string(date), .time = {}};
    if (time.starts_with('H')) {
        items.time = std::move(time);
    } else if (time.starts_with('h')) {
        items.time = time.append(kDayPeriod);
    }
    return items;
}

std::string composeDateFormat(const std::optional<std::string> &date,
                              const std::optional<std::string> &time, std::string_view read) {
    const auto [dateRead, timeRead] = splitOnce(read);
    std::string format = date.value_or(std::string(dateRead));
    const std::string timePart = time.value_or(std::string(timeRead));
    return timePart.empty() ? format : format.append(" ").append(timePart);
}

}  // namespace quorbel
