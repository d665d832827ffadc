#pragma once

#include "common/Severity.h"
#include "core/AppDelegate.h"
#include "core/AppState.h"
#include "home/HomeView.h"
#include "support/TemporaryFolder.h"

#include <QLabel>
#include <QWidget>

#include <memory>

namespace quorbel::testing {

/// A home page, as the storyboard makes it, in a window of its own, with an empty library folder.
class ShownHomeView {
public:
    ShownHomeView() {
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_library.path().string()));
        m_delegate = std::make_unique<AppDelegate>();
        for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
            state().*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
        }
        m_page = new HomeView(*m_delegate, &m_window);
        m_page->viewDidLoad();
        m_page->resize(760, 560);
        m_window.resize(m_page->size());
    }

    void show() { m_window.show(); }
    void showAgain() {
        m_window.hide();
        m_window.show();
    }

    AppState &state() { return m_delegate->state; }
    AppDelegate &delegate() { return *m_delegate; }
    HomeView &page() { return *m_page; }
    const TemporaryFolder &library() { return m_library; }

    template <class Control = QWidget>
    Control &control(const QString &name) {
        auto *found = m_page->findChild<Control *>(name);
        if (found == nullptr) {
            qFatal("no control %s", qPrintable(name));
        }
        return *found;
    }
    QString text(const QString &name) { return control<QLabel>(name).text(); }

private:
    TemporaryFolder m_library;
    std::unique_ptr<AppDelegate> m_delegate;
    QWidget m_window;
    HomeView *m_page = nullptr;
};

}  // namespace quorbel::testing
