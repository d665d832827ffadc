#include "shell/NavigationRail.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"

#include <QFrame>
#include <QLayout>
#include <QResizeEvent>
#include <QToolButton>

#include <algorithm>
#include <array>
#include <utility>

namespace quorbel {

namespace {

constexpr int kNarrowWindow = 960;
constexpr int kWidth = 168;
constexpr int kMargin = 10;
constexpr int kNarrowMargin = 5;
constexpr int kIconSize = 20;
constexpr int kAroundWords = 40;

constexpr std::array kIcons{std::pair("Home", "home"), std::pair("Scan", "events"),
                            std::pair("Reports", "reports"), std::pair("Tools", "tools"),
                            std::pair("HelpDropDown", "help")};

}  // namespace

/// A tool button asks for so little that it cuts its own text.
int NavigationRail::widthOfWords() const {
    int widest = 0;
    for (const auto *entry : m_frame.findChildren<QToolButton *>()) {
        widest = std::max(widest, entry->fontMetrics().horizontalAdvance(entry->text()) +
                                      entry->iconSize().width());
    }
    return widest + sizedToFont(kAroundWords) + 2 * kMargin;
}

NavigationRail::NavigationRail(QFrame &frame) : QObject(&frame), m_frame(frame) {
    const int iconSize = sizedToFont(kIconSize);
    for (const auto &[name, icon] : kIcons) {
        auto *entry = m_frame.findChild<QToolButton *>(QLatin1String(name));
        entry->setIcon(lineIcon(QLatin1String(icon)));
        entry->setIconSize({iconSize, iconSize});
        // Style sheets know no gap between icon and text.
        entry->setText(QStringLiteral("  ") + entry->text());
    }
    setNarrow(false);
    m_frame.window()->installEventFilter(this);
}

bool NavigationRail::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_frame.window() && event->type() == QEvent::Resize) {
        const bool narrow =
            static_cast<QResizeEvent *>(event)->size().width() < sizedToFont(kNarrowWindow);
        if (narrow != m_isNarrow) {
            setNarrow(narrow);
        }
    }
    return QObject::eventFilter(watched, event);
}

void NavigationRail::setNarrow(bool narrow) {
    m_isNarrow = narrow;
    for (auto *entry : m_frame.findChildren<QToolButton *>()) {
        entry->setToolButtonStyle(narrow ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    }
    QMargins margins = m_frame.layout()->contentsMargins();
    margins.setLeft(narrow ? kNarrowMargin : kMargin);
    margins.setRight(margins.left());
    m_frame.layout()->setContentsMargins(margins);
    m_frame.setMinimumWidth(narrow ? 0 : std::max(sizedToFont(kWidth), widthOfWords()));
    Q_EMIT narrowChanged(narrow);
}

}  // namespace quorbel
