#include "core/StartSettings.h"

#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "core/AppDelegate.h"

#include <string>

namespace quorbel {

void takeStartSettings(AppState &state) {
    const auto document = decodeSettings(AppDelegate::readSettings());
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityClass &severity = kSeverityClasses[i];
        state.*kSeverityLevels[i] =
            document ? settingInteger(*document, "severity" + std::string(severity.keyPart))
                     : severity.defaultLevel;
    }
    const Dictionary settings = document.value_or(Dictionary{});
    state.iPopupEvents = settingInteger(settings, "popupEvents");
    state.newDateFormat = settingText(settings, "dateFormat").value_or("");
    state.oldDateFormat = state.newDateFormat;
    state.popupSound = settingText(settings, "popupSound").value_or("");
    state.popupDisplayArray = settingTexts(settings, "popupDisplayArray");
    state.popupPlayArray = settingTexts(settings, "popupPlayArray");
}

}  // namespace quorbel
