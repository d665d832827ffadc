#include "SampleLibrary.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"
#include "platform/gui/Sheet.h"
#include "shell/FitChecks.h"
#include "shell/ShellViews.h"
#include "support/FrontEnd.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStyleOptionFrame>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

/// Every page and sheet at one size of the screen and of the font: see CMakeLists.txt.
class FitTest : public QObject {
    Q_OBJECT

private:
    template <class Control>
    [[nodiscard]] static QList<Control *> visible(const QWidget &view) {
        QList<Control *> controls = view.findChildren<Control *>();
        controls.removeIf([](const Control *one) { return !one->isVisible() || isPart(*one); });
        return controls;
    }
    static void addViews() { testing::addViews(); }
    [[nodiscard]] QWidget *showView() const { return testing::showView(*m_frontEnd); }
    QWidget *showPage(const char *name) const { return testing::showPage(*m_frontEnd, name); }
    [[nodiscard]] QWidget &window() const { return *m_frontEnd->window; }

    testing::TemporaryFolder m_library;
    std::unique_ptr<testing::FrontEnd> m_frontEnd;

private Q_SLOTS:
    void initTestCase() {
        applyAppearance(*qApp);
        writeSample(Sample::kBad, m_library);
        qputenv("QUORBEL_LIBRARY", m_library.path().c_str());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
        m_frontEnd = std::make_unique<testing::FrontEnd>();
        QVERIFY(QTest::qWaitForWindowExposed(&window()));
    }
    void cleanup() {
        for (Sheet *sheet : window().findChildren<Sheet *>()) {
            sheet->close();
        }
        QTRY_VERIFY(window().findChildren<Sheet *>().isEmpty());
    }
    void cleanupTestCase() { m_frontEnd.reset(); }

    void theWindowFitsOnTheScreen() {
        const QRect room = window().screen()->availableGeometry();
        QTRY_VERIFY2(room.contains(window().frameGeometry()), told(window()).constData());
        QVERIFY(window().minimumWidth() <= room.width());
        QCOMPARE(window().size(), window().minimumSize());
        const QPoint off = window().frameGeometry().center() - room.center();
        QVERIFY2(qAbs(off.x()) <= 20 && qAbs(off.y()) <= 20, "not in the middle");
    }

    void theWindowIsAsLargeAsDesignedWhereThereIsRoom() {
        const QSize room = window().screen()->availableGeometry().size();
        if (room.width() < 1140 || room.height() < 780) {
            QSKIP("The screen is too small.");
        }
        QCOMPARE(window().size(), QSize(1120, 720));
    }

    void aSheetFitsIntoTheWindowAndOnTheScreen_data() { addViews(); }
    void aSheetFitsIntoTheWindowAndOnTheScreen() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        QTRY_VERIFY2(
            view->window()->screen()->availableGeometry().contains(view->window()->frameGeometry()),
            told(*view).constData());
        QVERIFY2(view->window()->width() <= window().width() &&
                     view->window()->height() <= window().height(),
                 told(*view).constData());
    }

    void everyControlCanBeReached_data() { addViews(); }
    void everyControlCanBeReached() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (QWidget *widget : visible<QWidget>(*view->window())) {
            if (isControl(*widget)) {
                QTRY_VERIFY2(isReachable(*widget), told(*widget).constData());
            }
        }
    }

    void theWheelThatScrollsChangesNothing_data() { addViews(); }
    void theWheelThatScrollsChangesNothing() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (QWidget *control : visible<QWidget>(*view)) {
            if (scrollAreaAround(*control) == nullptr) {
                continue;  // nobody scrolls there
            }
            const QVariant before = valueOf(*control);
            for (const int angle : {-120, 120, 120}) {
                QWheelEvent wheel({4, 4}, control->mapToGlobal(QPointF(4, 4)), {}, {0, angle}, {},
                                  {}, Qt::NoScrollPhase, false);
                QCoreApplication::sendEvent(control, &wheel);
            }
            QVERIFY2(valueOf(*control) == before, told(*control).constData());
        }
    }

    void theButtonsThatEndIt_data() { addViews(); }
    void theButtonsThatEndIt() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (const char *name : {"onCancel", "onSave", "saveButton", "onOK", "onClose"}) {
            if (auto *button = view->findChild<QPushButton *>(QLatin1String(name))) {
                QVERIFY2(scrollAreaAround(*button) == nullptr, "has to be scrolled to");
                QVERIFY2(isInside(*button, *view->window()), told(*button).constData());
            }
        }
    }

    void noTextIsCut_data() { addViews(); }
    void noTextIsCut() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (const QLabel *label : visible<QLabel>(*view)) {
            QVERIFY2(label->text().isEmpty() || isWhole(*label), told(*label).constData());
        }
        for (const QAbstractButton *button : visible<QAbstractButton>(*view)) {
            QVERIFY2(isWhole(*button, button->text()), told(*button).constData());
        }
        for (const QComboBox *chooser : visible<QComboBox>(*view)) {
            QVERIFY2(chooser->height() >= chooser->sizeHint().height(), told(*chooser).constData());
            QVERIFY2(isWhole(*chooser, chooser->currentText()), told(*chooser).constData());
        }
        for (const QLineEdit *field : visible<QLineEdit>(*view)) {
            QVERIFY2(field->height() >= field->sizeHint().height(), told(*field).constData());
        }
    }

    void noHeadingIsCut_data() { addViews(); }
    void noHeadingIsCut() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (const QTableView *table : visible<QTableView>(*view)) {
            const QHeaderView *header = table->horizontalHeader();
            // The last one has what the others leave.
            for (int column = 0; column < header->count() - 1; ++column) {
                QVERIFY2(header->isSectionHidden(column) ||
                             header->sectionSize(column) >= header->sectionSizeHint(column),
                         (told(*table) + QByteArray::number(column)).constData());
            }
        }
    }

    void theNavigationAsksForRoomForItsWords() {
        const auto &rail = m_frontEnd->control<QWidget>("navigation");
        const QMargins margins = rail.layout()->contentsMargins();
        const int room = rail.minimumWidth() - margins.left() - margins.right();
        for (const QToolButton *entry : rail.findChildren<QToolButton *>()) {
            constexpr int kAround = 36;  // padding, and the gap beside the picture
            const int needed =
                entry->fontMetrics().horizontalAdvance(entry->text()) + entry->iconSize().width();
            QVERIFY2(entry->toolButtonStyle() == Qt::ToolButtonIconOnly || room >= needed + kAround,
                     told(*entry).constData());
        }
    }

    void whatIsSaidOfTheServiceIsWhole() {
        for (const char *page : {"Home", "Tools"}) {
            QTest::mouseClick(&m_frontEnd->control<QToolButton>(page), Qt::LeftButton);
            QCoreApplication::processEvents();
            for (const QLabel *label :
                 m_frontEnd->control<QWidget>("serviceLine").findChildren<QLabel *>()) {
                QVERIFY2(!label->isVisible() || isWhole(*label), told(*label).constData());
            }
        }
    }

    void nothingLiesOverSomethingElse_data() { addViews(); }
    void nothingLiesOverSomethingElse() {
        QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (const QWidget *widget : visible<QWidget>(*view)) {
            const QWidget *other = overlapping(*widget);
            QVERIFY2(other == nullptr,
                     (told(*widget) + " and " + (other ? told(*other) : "")).constData());
        }
    }

    void eachCommandOfAMenuHasAKeyOfItsOwn() {
        showPage("ScanView");
        m_frontEnd->control<QWidget>("ScanView").findChild<QTableView *>()->selectRow(0);
        for (QMenu *menu : window().findChildren<QMenu *>()) {
            Q_EMIT menu->aboutToShow();
            QStringList keys;
            for (const QAction *action : menu->actions()) {
                const QString key = QKeySequence::mnemonic(action->text()).toString();
                QVERIFY2(key.isEmpty() || !keys.contains(key), qPrintable(action->text()));
                keys += key;
            }
        }
    }

    void fieldsHoldTheirLongestNumber_data() {
        QTest::addColumn<bool>("isSheet");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("number");
        const auto add = [](const char *view, bool isSheet, const char *field, const char *number) {
            QTest::newRow(view) << isSheet << QString::fromLatin1(field)
                                << QString::fromLatin1(number);
        };
        add("ToolsViewOptions", false, "removalErrorTime", "9999");
        add("ToolsViewOptions", false, "popupEventsTime", "3600");
        add("ToolsViewExport", false, "textInterval", "1440");
        add("filterView", true, "filterMask", "128");
        add("emailServer", true, "serverPort", "65535");
        add("emailServer", true, "serverTimeout", "10");
    }
    void fieldsHoldTheirLongestNumber() {
        QFETCH(QString, field);
        QFETCH(QString, number);
        const QWidget *view = showView();
        QVERIFY(view != nullptr);
        const auto *found = view->findChild<QLineEdit *>(field);
        QVERIFY(found != nullptr);
        const QLineEdit &edit = *found;
        QVERIFY2(roomForText(edit) > edit.fontMetrics().horizontalAdvance(number),
                 told(edit).constData());
    }

    void nothingScrollsSideways_data() { addViews(); }
    void nothingScrollsSideways() {
        const QWidget *view = showView();
        QVERIFY(view != nullptr);
        for (const QScrollArea *area : visible<QScrollArea>(*view)) {
            QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
        }
    }

    void theFilterTablesShowWholeRows() {
        showPage("ToolsViewOptions");
        for (const char *name : {"includeFiltersTable", "excludeFiltersTable"}) {
            const auto &table = m_frontEnd->control<RowTableView>(name);
            const int row = table.verticalHeader()->defaultSectionSize();
            QVERIFY(row > table.fontMetrics().height());
            const int inside =
                table.height() - 2 * table.frameWidth() - table.horizontalHeader()->height();
            QCOMPARE(inside % row, 0);
        }
    }

    void theWindowFollowsASmallerScreen() {
        const QList<QScreen *> screens = QGuiApplication::screens();
        if (screens.size() < 2) {
            QSKIP("There is one screen only.");
        }
        window().windowHandle()->setScreen(screens[1]);
        QTRY_COMPARE(window().screen(), screens[1]);
        const QRect room = screens[1]->availableGeometry();
        QTRY_VERIFY2(room.contains(window().frameGeometry()), told(window()).constData());
        QVERIFY(window().minimumHeight() <= room.height());
        window().windowHandle()->setScreen(screens[0]);
        QTRY_COMPARE(window().screen(), screens[0]);
        QTRY_VERIFY(screens[0]->availableGeometry().contains(window().frameGeometry()));
    }
};

}  // namespace quorbel

int main(int argc, char **argv) {
    const quorbel::testing::TemporaryFolder folder;
    if (qEnvironmentVariableIsSet("QUORBEL_TEST_SCREENS")) {
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + quorbel::screensFile(folder));
    }
    QApplication application(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(QUORBEL_VERSION));
    quorbel::useLanguage();
    quorbel::FitTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FitTest.moc"
