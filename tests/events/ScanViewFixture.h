#pragma once

#include "common/Severity.h"
#include "core/AppDelegate.h"
#include "core/AppState.h"
#include "events/ScanView.h"
#include "events/ScanViewEvent.h"
#include "platform/gui/Storyboard.h"
#include "platform/gui/WindowMemory.h"
#include "support/ConfigurationFolder.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"
#include "support/WindowStandIn.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorbel::testing {

inline EventFields fields(std::string_view date, std::string_view message = "disk full",
                          std::string_view priority = "Local7.Error") {
    return {date, priority, "10.0.0.5", message, {}};
}

inline QString name(const char *text) {
    return QString::fromUtf8(text);
}

/// An event list page and the hands that work it.
class ScanViewFixture {
protected:
    ScanViewFixture() {
        m_storyboard.add(name("eventView"), [] { return std::make_unique<ScanViewEvent>(); });
    }

    ~ScanViewFixture() { finishRemembering(); }

    // A page that was never shown, with the default levels and a fixed date format.
    void makePage() {
        finishRemembering();
        m_configuration.reset();
        m_configuration = std::make_unique<ConfigurationFolder>();
        makeNextPage();
    }
    // The page of the same user's next start.
    void makeNextPage() {
        m_page.reset();
        m_delegate = std::make_unique<AppDelegate>();
        m_delegate->setMainWindow(&m_window);
        AppState &state = m_delegate->state;
        for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
            state.*kSeverityLevels[i] = kSeverityClasses[i].defaultLevel;
        }
        state.newDateFormat = state.oldDateFormat = "yyyy-MM-dd HH:mm:ss";
        m_page = std::make_unique<ScanView>(*m_delegate, m_storyboard);
        m_page->viewDidLoad();
        m_page->resize(1000, 600);
    }
    void endPage() {
        m_page.reset();
        m_delegate.reset();
    }
    EventList &list() { return m_delegate->events; }
    QTableView *table() { return m_page->findChild<QTableView *>(name("tableView")); }
    QString cell(int row, int column) {
        return table()->model()->index(row, column).data().toString();
    }
    void show() {
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }
    void click(const char *button) {
        auto *found = m_page->findChild<QAbstractButton *>(name(button));
        QVERIFY2(found != nullptr, button);
        QTest::mouseClick(found, Qt::LeftButton);
    }
    QPoint placeOf(int row) {
        return table()->visualRect(table()->model()->index(row, 4)).center();
    }
    void clickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, modifiers, placeOf(row));
    }
    QList<int> selected() {
        QList<int> rows;
        for (const QModelIndex &index : table()->selectionModel()->selectedRows()) {
            rows += index.row();
        }
        std::ranges::sort(rows);
        return rows;
    }
    QMessageBox *alert() { return m_page->findChild<QMessageBox *>(name("alertBox")); }
    // Presses a button of the alert that is open, after ticking its check box if asked to.
    void answer(const QString &title, bool tick = false) {
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QMessageBox *box = alert();
        if (tick) {
            QTest::mouseClick(box->checkBox(), Qt::LeftButton, Qt::NoModifier,
                              QPoint(8, box->checkBox()->height() / 2));
            QVERIFY(box->checkBox()->isChecked());
        }
        for (QAbstractButton *button : box->buttons()) {
            if (button->text() == title) {
                QTest::mouseClick(button, Qt::LeftButton);
                QTRY_VERIFY(m_page->findChildren<QMessageBox *>().indexOf(box) < 0);
                return;
            }
        }
        QFAIL(qPrintable(QStringLiteral("No such button: ") + title));
    }

    // What the user makes of the columns is remembered here.
    std::unique_ptr<ConfigurationFolder> m_configuration;
    WindowStandIn m_window;
    Storyboard m_storyboard;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<ScanView> m_page;
};

}  // namespace quorbel::testing
