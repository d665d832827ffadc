#pragma once

#include "alerts/PopupView.h"
#include "alerts/PopupWindow.h"
#include "core/AppDelegate.h"
#include "core/EventList.h"
#include "core/PageLinks.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "support/ConfigurationFolder.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QPointer>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel::testing {

/// Shows what the popup told the details sheet.
class EventSheetStandIn : public Sheet, public EventSheetLink {
public:
    void setDict(const Event &event) override { dict = event; }
    void setHideButtons(bool hide) override { hideButtons = hide; }
    void setSteps(std::shared_ptr<EventSteps> /*steps*/) override {}

    std::optional<Event> dict;
    bool hideButtons = false;
};

/// A storyboard with the popup and a stand-in for the details sheet, and a list for its events.
struct AlertFixture {
    ConfigurationFolder preferences;
    Storyboard storyboard;
    EventList list;

    AlertFixture() {
        storyboard.add(QStringLiteral("popupWindow"),
                       [this] { return std::make_unique<PopupWindow>(storyboard); });
        storyboard.add(QStringLiteral("eventView"),
                       [] { return std::make_unique<EventSheetStandIn>(); });
    }
    AlertFixture(const AlertFixture &) = delete;
    AlertFixture &operator=(const AlertFixture &) = delete;

    Event event(std::string_view priority, std::string_view message = "message") {
        EventFields fields;
        fields.date = "1700000000";
        fields.priority = priority;
        fields.host = "10.0.0.1";
        fields.message = message;
        return {list, list.insertRaw(fields)};
    }

    /// A popup as the worker makes it, not shown.
    std::unique_ptr<PopupWindow> popup(const Event &event, std::int64_t popupTime = 60) {
        auto controller = storyboard.instantiate(QStringLiteral("popupWindow"));
        std::unique_ptr<PopupWindow> window(dynamic_cast<PopupWindow *>(controller.release()));
        // It belongs to the test.
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->contentView().popupTime = popupTime;
        window->contentView().popupDict = event;
        window->contentView().setCondition(std::make_shared<PopupCondition>());
        return window;
    }
};

/// The window of that kind that is on the screen, null when there is none.
template <typename Window>
QPointer<Window> shown() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *window = dynamic_cast<Window *>(widget);
        if (window != nullptr && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

}  // namespace quorbel::testing
