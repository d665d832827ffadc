#pragma once

#include "alerts/AlertFixture.h"
#include "alerts/PopupThread.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel::testing {

using namespace Qt::StringLiterals;

inline constexpr int kPatienceMs = kPatience.count();

/// A worker with its sounds recorded. The popups are real and stay open until they are closed.
struct Worker : AlertFixture {
    AppDelegate delegate;
    std::vector<std::string> sounds;
    std::optional<PopupThread> thread;

    explicit Worker(AlertSettings settings) {
        delegate.setAlertSettings(std::move(settings));
        thread.emplace(delegate, storyboard,
                       [this](const std::string &path) { sounds.push_back(path); });
    }

    /// Starts the worker and waits until it takes events.
    bool start() {
        thread->start();
        return QTest::qWaitFor([this] { return thread->takesEvents(); }, kPatienceMs);
    }

    void append(std::string_view priority, std::string_view message) {
        thread->append(event(priority, message));
    }
};

inline AlertSettings popupsFor(std::vector<std::string> labels) {
    return {60, "", std::move(labels), {}};
}

inline QString messageOf(PopupWindow &window) {
    const QString details = window.findChild<QPlainTextEdit *>(u"popupDetails"_s)->toPlainText();
    return details.mid(details.lastIndexOf(u'\n') + 1);
}

/// Waits for the next popup and tells its message; empty when none comes.
inline QString nextPopup() {
    QPointer<PopupWindow> window;
    [[maybe_unused]] const bool came = QTest::qWaitFor(
        [&window] {
            window = shown<PopupWindow>();
            return !window.isNull();
        },
        kPatienceMs);
    return window.isNull() ? QString() : messageOf(*window);
}

inline void closePopup() {
    if (const auto window = shown<PopupWindow>()) {
        window->close();
    }
}

inline int popups() {
    int count = 0;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        count += dynamic_cast<const PopupWindow *>(widget) != nullptr ? 1 : 0;
    }
    return count;
}

}  // namespace quorbel::testing
