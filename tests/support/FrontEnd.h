#pragma once

#include "core/AppDelegate.h"
#include "platform/gui/Storyboard.h"
#include "shell/MainStoryboard.h"
#include "shell/WindowController.h"
#include "support/WaitUntil.h"

#include <QApplication>

#include <memory>

namespace quorbel::testing {

/// The front-end as main() puts it together, without its process. Those who make one link
/// quorbel_shell and quorbel_layout.
struct FrontEnd {
    FrontEnd() {
        fillMainStoryboard(storyboard, delegate);
        window = std::make_unique<WindowController>(delegate, storyboard);
        window->windowDidLoad();
        window->makeVisible();
    }

    /// Waits until nothing that the service tells of is missed; false when it came to that in vain.
    [[nodiscard]] bool waitUntilItHears() const {
        return waitUntil([this] {
            QApplication::processEvents();
            return window->hearsService();
        });
    }
    /// A control, page or sheet by its name.
    template <typename Control>
    [[nodiscard]] Control &control(const char *name) const {
        return *window->findChild<Control *>(QLatin1String(name));
    }

    AppDelegate delegate;
    Storyboard storyboard;
    std::unique_ptr<WindowController> window;
};

}  // namespace quorbel::testing
