#include "shell/MainStoryboard.h"

#include "about/AboutView.h"
#include "alerts/PopupWindow.h"
#include "core/AppDelegate.h"
#include "events/ScanView.h"
#include "events/ScanViewEvent.h"
#include "home/HomeView.h"
#include "platform/gui/Storyboard.h"
#include "shell/ViewController.h"

#include <QLabel>
#include <QVBoxLayout>

#include <memory>

namespace quorbel {

namespace {

/// A page that shows its title and nothing else.
void addPlainPage(Storyboard &storyboard, const QString &identifier, const QString &title) {
    storyboard.add(identifier, [identifier, title] {
        auto page = std::make_unique<ViewController>();
        page->setObjectName(identifier);
        auto *layout = new QVBoxLayout(page.get());
        layout->setContentsMargins(24, 20, 24, 20);
        auto *label = new QLabel(title);
        label->setProperty("role", QStringLiteral("title"));
        layout->addWidget(label);
        layout->addStretch();
        return page;
    });
}

}  // namespace

void fillMainStoryboard(Storyboard &storyboard, AppDelegate &delegate) {
    storyboard.add(QStringLiteral("HomeView"),
                   [&delegate] { return std::make_unique<HomeView>(delegate); });
    storyboard.add(QStringLiteral("ScanView"), [&delegate, &storyboard] {
        return std::make_unique<ScanView>(delegate, storyboard);
    });
    storyboard.add(QStringLiteral("aboutView"), [] { return std::make_unique<AboutView>(); });
    storyboard.add(QStringLiteral("eventView"), [] { return std::make_unique<ScanViewEvent>(); });
    storyboard.add(QStringLiteral("popupWindow"),
                   [&storyboard] { return std::make_unique<PopupWindow>(storyboard); });
    addPlainPage(storyboard, QStringLiteral("ReportsView"), QStringLiteral("Reports"));
    addPlainPage(storyboard, QStringLiteral("ToolsView"), QStringLiteral("Tools"));
    addPlainPage(storyboard, QStringLiteral("ToolsViewOptions"), QStringLiteral("Options"));
    addPlainPage(storyboard, QStringLiteral("ToolsViewActions"), QStringLiteral("Actions"));
    addPlainPage(storyboard, QStringLiteral("ToolsViewExport"), QStringLiteral("Export"));
}

}  // namespace quorbel
