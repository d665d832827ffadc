#pragma once

#include "options/ToolsViewFilter.h"
#include "options/ToolsViewOptions.h"
#include "support/SettingsPage.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QScrollArea>
#include <QSpinBox>

#include <array>
#include <memory>
#include <string>
#include <utility>

namespace quorbel::testing {

// The nine severity classes as keys and controls name them, and as they are labelled.
inline constexpr std::array kParts{"Emergency", "Alerting",    "Critical", "Error",  "Warning",
                                   "Notice",    "Information", "Debug",    "Unknown"};
inline constexpr std::array kLabels{"Emergency", "Alert",       "Critical", "Error",  "Warning",
                                    "Notice",    "Information", "Debug",    "Unknown"};

inline std::string named(const char *before, const char *part, const char *behind = "") {
    return std::string(before) + part + behind;
}

inline Array labels() {
    return {kLabels.begin(), kLabels.end()};
}

inline Dictionary filter(const char *name, const char *address = "0.0.0.0", const char *mask = "0",
                         const char *facility = "Any", const char *severity = "Any",
                         const char *message = "*") {
    return {{"Name", name}, {"IP", address},        {"Message", message},
            {"Mask", mask}, {"Facility", facility}, {"Severity", severity}};
}

/// A document with every key of the options page, nothing at its default.
inline Dictionary fullDocument() {
    Dictionary document{{"hostsDisplay", true}, {"dateFormat", "dd.MM.yyyy hh:mm:ss AM/PM"}};
    for (std::size_t i = 0; i < kParts.size(); ++i) {
        document.set(named("severity", kParts[i]), (i + 1) % 3);
        document.set(named("removal", kParts[i]), 100 + i);
        document.set(named("removal", kParts[i], "Units"), i % 5);
    }
    document.set("popupEvents", 45);
    document.set("popupSound", "/sounds/bell.aiff");
    document.set("popupDisplayArray", Array{"Unknown", "Emergency"});
    document.set("popupPlayArray", Array{"Alert", "Information"});
    document.set("includeFiltersArray", Array{filter("first"), filter("second", "10.0.0.0", "8")});
    document.set("excludeFiltersArray", Array{filter("third", "::1", "128", "Kern", "Debug")});
    return document;
}

/// The options page with its filter editor.
class OptionsPage : public SettingsPage {
public:
    OptionsPage() {
        storyboard.add(QStringLiteral("ToolsViewOptions"), [this] {
            return std::make_unique<ToolsViewOptions>(delegate(), storyboard);
        });
        storyboard.add(QStringLiteral("filterView"),
                       [] { return std::make_unique<ToolsViewFilter>(); });
    }

    void show() { SettingsPage::show("ToolsViewOptions"); }
    void show(const Dictionary &document) {
        write(document);
        show();
    }
    ToolsViewOptions &options() { return dynamic_cast<ToolsViewOptions &>(page()); }
    bool canSave() { return isEnabled("saveButton"); }

    /// Saves with the button, which must be enabled, and gives the document that was sent.
    Dictionary save() {
        click("saveButton");
        return saved();
    }
    /// Saves without an edit: the host display that is chosen already is clicked.
    Dictionary saveUntouched() {
        click(isChecked("hostsDisplayIP") ? "hostsDisplayIP" : "hostsDisplayName");
        return save();
    }
    int index(const std::string &chooser) {
        return control<QComboBox>(chooser.c_str()).currentIndex();
    }
    /// A number field as its user sees it: its text, and in brackets what the stepper holds.
    QString number(const std::string &before) {
        return text((before + "Time").c_str()) + u'(' +
               QString::number(control<QSpinBox>((before + "Stepper").c_str()).value()) + u')';
    }
    /// One letter for each of the nine boxes: what is checked, in capitals what is enabled.
    QString boxes(const char *behind) {
        QString states;
        for (const char *part : kParts) {
            const auto &box = control<QCheckBox>(named("popup", part, behind).c_str());
            const QChar state = box.isChecked() ? u'x' : u'o';
            states += box.isEnabled() ? state.toUpper() : state;
        }
        return states;
    }
};

/// What a document holds under a key, as text; "none" when the key is absent.
inline QString at(const Dictionary &document, const std::string &key) {
    const Value *value = document.find(key);
    return value != nullptr ? toQString(textOf(*value)) : QStringLiteral("none");
}

}  // namespace quorbel::testing
