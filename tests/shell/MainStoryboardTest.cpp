#include "platform/gui/Page.h"
#include "shell/MainStoryboard.h"
#include "shell/ShellFixture.h"
#include "shell/WindowController.h"

#include <QLabel>
#include <QTest>

using namespace quorbel;
using namespace quorbel::testing;

class MainStoryboardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void windowHoldsTheEightPagesInOrder();
    void everyPageShowsItsTitle_data();
    void everyPageShowsItsTitle();
    void unknownIdentifiersGiveNothing();
};

void MainStoryboardTest::windowHoldsTheEightPagesInOrder() {
    const LibraryFolder library;
    AppDelegate delegate;
    Storyboard storyboard;
    fillMainStoryboard(storyboard, delegate);
    const WindowController window(delegate, storyboard);
    const auto *tabs = window.findChild<QStackedWidget *>(QStringLiteral("tabView"));
    QStringList names;
    for (int i = 0; i < tabs->count(); ++i) {
        QVERIFY(dynamic_cast<Page *>(tabs->widget(i)) != nullptr);
        names.append(tabs->widget(i)->objectName());
    }
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("HomeView ScanView ReportsView ToolsView ToolsViewOptions "
                            "ToolsViewActions ToolsViewExport HostsView"));
    QCOMPARE(window.objectName(), QStringLiteral("WindowController"));
    QCOMPARE(window.windowTitle(), QStringLiteral("Quorbel"));
}

void MainStoryboardTest::everyPageShowsItsTitle_data() {
    QTest::addColumn<QByteArray>("page");
    QTest::addColumn<QString>("title");
    QTest::newRow("events") << QByteArray("ScanView") << QStringLiteral("Events");
    QTest::newRow("reports") << QByteArray("ReportsView") << QStringLiteral("Reports");
    QTest::newRow("tools") << QByteArray("ToolsView") << QStringLiteral("Tools");
    QTest::newRow("options") << QByteArray("ToolsViewOptions") << QStringLiteral("Options");
    QTest::newRow("actions") << QByteArray("ToolsViewActions") << QStringLiteral("Actions");
    QTest::newRow("export") << QByteArray("ToolsViewExport") << QStringLiteral("Export");
    QTest::newRow("hosts") << QByteArray("HostsView") << QStringLiteral("Hosts");
}

void MainStoryboardTest::everyPageShowsItsTitle() {
    QFETCH(QByteArray, page);
    QFETCH(QString, title);
    AppDelegate delegate;
    Storyboard storyboard;
    fillMainStoryboard(storyboard, delegate);
    const auto controller = storyboard.instantiate(QString::fromLatin1(page));
    QVERIFY(controller != nullptr);
    QStringList titles;
    for (const QLabel *label : controller->findChildren<QLabel *>()) {
        if (label->property("role") == QVariant(QStringLiteral("title"))) {
            titles.append(label->text());
        }
    }
    QCOMPARE(titles, QStringList{title});
}

void MainStoryboardTest::unknownIdentifiersGiveNothing() {
    AppDelegate delegate;
    Storyboard storyboard;
    fillMainStoryboard(storyboard, delegate);
    QVERIFY(storyboard.instantiate(QStringLiteral("scanView")) == nullptr);
    QVERIFY(storyboard.instantiate({}) == nullptr);
}

QTEST_MAIN(MainStoryboardTest)
#include "MainStoryboardTest.moc"
