#pragma once

#include "events/ScanViewFixture.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"

#include <QApplication>
#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>

namespace quorbel::testing {

/// A page of events of several hosts, one each quarter of an hour up to noon, and the hands that
/// find among them.
class FindBarFixture : protected ScanViewFixture {
protected:
    static constexpr int kEvents = 96;

    QDateTime noon() const { return {QDate(2026, 11, 21), QTime(12, 0)}; }

    void makePageOfEvents() {
        if (qApp->styleSheet().isEmpty()) {
            applyAppearance(*qApp);  // it is its sizes that tell what has room
        }
        makePage();
        static constexpr std::array kHosts = {"fs01", "db02", "10.1.0.7", "fs02"};
        static constexpr std::array kPriorities = {"Kern.Critical", "Daemon.Warning",
                                                   "Mail.Informational"};
        for (int i = 0; i < kEvents; ++i) {
            const auto date =
                std::to_string(noon().addSecs((i + 1 - kEvents) * 15 * 60).toSecsSinceEpoch());
            const std::string message =
                (i % 6 == 0 ? "disk sdb1 failed " : "link up on port ") + std::to_string(i);
            const auto number = static_cast<std::size_t>(i);
            list().insertRaw({date,
                              kPriorities[number % kPriorities.size()],
                              kHosts[number % kHosts.size()],
                              message,
                              {}});
        }
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
        activate();
        QTRY_COMPARE(count(), name("96 events"));
    }

    template <typename Control = QWidget>
    Control *control(const char *objectName) {
        return m_page->findChild<Control *>(name(objectName));
    }
    QLineEdit *field() { return control<QLineEdit>("findText"); }
    QList<QAbstractButton *> chips() {
        QList<QAbstractButton *> chips;
        for (auto *chip : m_page->findChildren<QAbstractButton *>(name("findCondition"))) {
            if (!chip->isHidden() || !chip->parentWidget()->isVisible()) {
                chips.append(chip);
            }
        }
        return chips;
    }
    QString count() { return control<QLabel>("eventCount")->text(); }
    int rows() { return table()->model()->rowCount(); }
    /// After a menu or a panel was open.
    void activate() {
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
        QCoreApplication::processEvents();
        m_page->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), m_page.get());
    }
    void find(const QString &text) {
        activate();
        QTest::keyClick(m_page->focusWidget() == nullptr ? m_page.get() : m_page->focusWidget(),
                        Qt::Key_F, Qt::ControlModifier);
        QTRY_COMPARE(QApplication::focusWidget(), field());
        QTest::keyClicks(field(), text);
    }
    void add(const char *text) {
        find(name(text));
        QTest::keyClick(field(), Qt::Key_Return);
    }
    /// Opens a button's menu and chooses an entry by its text.
    void choose(const char *button, const QString &text) {
        click(button);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu != nullptr);
        for (QAction *action : menu->actions()) {
            if (action->text() == text) {
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                return;
            }
        }
        QFAIL(qPrintable(QStringLiteral("No such entry: ") + text));
    }
};

}  // namespace quorbel::testing
