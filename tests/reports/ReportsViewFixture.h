#pragma once

#include "core/AppDelegate.h"
#include "platform/gui/ProgramEnd.h"
#include "platform/gui/ProgressWindow.h"
#include "platform/gui/Storyboard.h"
#include "platform/gui/WindowMemory.h"
#include "reports/ReportsView.h"
#include "support/ConfigurationFolder.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

namespace quorbel::testing {

inline QString name(const char *text) {
    return QString::fromUtf8(text);
}

/// A reports page over a folder of log files, and the hands that work it.
class ReportsViewFixture {
protected:
    // A page that was never shown.
    void makePage() {
        dropPage();
        m_folder = std::make_unique<TemporaryFolder>();
        m_library = std::make_unique<ScopedVariable>("QUORBEL_LIBRARY", m_folder->path().c_str());
        m_configuration = std::make_unique<ConfigurationFolder>();
        makeNextPage();
    }
    // The page of the same user's next start.
    void makeNextPage() {
        m_page.reset();
        m_delegate = std::make_unique<AppDelegate>();
        m_delegate->state.newDateFormat = "yyyy-MM-dd HH:mm:ss";
        m_page = std::make_unique<ReportsView>(*m_delegate, m_storyboard);
        m_page->viewDidLoad();
        m_page->resize(1000, 600);
    }
    void dropPage() {
        m_page.reset();
        m_delegate.reset();
        m_library.reset();
        finishRemembering();
        m_configuration.reset();
        m_folder.reset();
    }
    void show() {
        m_page->show();
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    void log(const char *file, const std::string &lines) { m_folder->write(file, lines); }

    template <typename Control>
    Control *control(const char *controlName) {
        auto *found = m_page->findChild<Control *>(name(controlName));
        Q_ASSERT(found != nullptr);
        return found;
    }
    QTableView *table() { return control<QTableView>("tableView"); }
    QComboBox *reportName() { return control<QComboBox>("reportName"); }
    QComboBox *reportFilter() { return control<QComboBox>("reportFilter"); }
    QAbstractButton *reportDisplay() { return control<QAbstractButton>("reportDisplay"); }

    // Opens a pick list and chooses an item of it by keyboard.
    static void pick(QComboBox *box, int item) {
        QTest::mouseClick(box, Qt::LeftButton);
        QAbstractItemView *list = box->view();
        QTRY_VERIFY(list->isVisible());
        QTest::keyClick(list, Qt::Key_Home);
        for (int i = 0; i < item; ++i) {
            QTest::keyClick(list, Qt::Key_Down);
        }
        QTest::keyClick(list, Qt::Key_Return);
        QTRY_VERIFY(!list->isVisible());
        QCOMPARE(box->currentIndex(), item);
    }
    void click(const char *button) {
        QTest::mouseClick(control<QAbstractButton>(button), Qt::LeftButton);
    }
    // Shows the page and a report of that kind over all logs.
    void display(int kind) {
        if (!m_page->isVisible()) {
            show();
        }
        pick(reportName(), kind);
        click("reportDisplay");
    }
    void clickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int column = 0) {
        const QModelIndex cell = table()->model()->index(row, column);
        table()->scrollTo(cell);
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, modifiers,
                          table()->visualRect(cell).center());
    }

    static QWidget *progressWindow() {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->objectName() == name("progressWindow") && window->isVisible()) {
                return window;
            }
        }
        return nullptr;
    }
    // Does something once while the progress window of some work is shown, which it is from the
    // work's first step, and tells whether that happened.
    template <typename Act, typename Work>
    static bool duringWork(Act act, Work work) {
        bool done = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (QWidget *window = progressWindow(); window != nullptr && !done) {
                done = true;
                act(window);
            }
        });
        timer.start(0);
        ProgressWindow::setPatienceMs(0);
        work();
        ProgressWindow::setPatienceMs(ProgressWindow::kPatienceMs);
        return done;
    }

    // Runs the loop that endProgram() has ended to its end.
    static void letProgramEnd() {
        QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
        QCoreApplication::exec();
        QVERIFY(!isProgramEnding());
    }

    int rowCount() { return table()->model()->rowCount(); }
    QString cell(int row, int column) {
        return table()->model()->index(row, column).data().toString();
    }
    // Every row, its cells joined by "|".
    QStringList rows() {
        QStringList result;
        for (int row = 0; row < rowCount(); ++row) {
            result += QStringList{cell(row, 0), cell(row, 1), cell(row, 2), cell(row, 3)}.join(
                QLatin1Char('|'));
        }
        return result;
    }
    QStringList titles() {
        QStringList result;
        for (int column = 0; column < table()->model()->columnCount(); ++column) {
            result += table()->model()->headerData(column, Qt::Horizontal).toString();
        }
        return result;
    }
    QList<int> selected() {
        QList<int> result;
        for (const QModelIndex &index : table()->selectionModel()->selectedRows()) {
            result += index.row();
        }
        return result;
    }

    Storyboard m_storyboard;
    std::unique_ptr<TemporaryFolder> m_folder;
    std::unique_ptr<ScopedVariable> m_library;
    std::unique_ptr<ConfigurationFolder> m_configuration;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<ReportsView> m_page;
};

}  // namespace quorbel::testing
