#include "options/ToolsView.h"
#include "options/ToolsViewLink.h"
#include "support/WindowStandIn.h"

#include <QLabel>
#include <QTest>

#include <utility>
#include <vector>

namespace quorbel {

class ToolsViewTest : public QObject {
    Q_OBJECT

private:
    ToolsViewLink &link(const QString &name) { return *m_page->findChild<ToolsViewLink *>(name); }

    testing::WindowStandIn m_window;
    AppDelegate m_delegate;
    std::unique_ptr<ToolsView> m_page;

private Q_SLOTS:
    void init() {
        m_window.opened.clear();
        m_delegate.setMainWindow(&m_window);
        m_page = std::make_unique<ToolsView>(m_delegate);
        m_page->viewDidLoad();
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }

    void linksAreSeenAsLinksAndLeadToTheirPages_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Tab>("tab");
        QTest::newRow("options") << QStringLiteral("toolsOptions") << Tab::kOptions;
        QTest::newRow("actions") << QStringLiteral("toolsActions") << Tab::kActions;
        QTest::newRow("export") << QStringLiteral("toolsExport") << Tab::kExport;
        QTest::newRow("hosts") << QStringLiteral("toolsHosts") << Tab::kHosts;
    }
    void linksAreSeenAsLinksAndLeadToTheirPages() {
        QFETCH(QString, name);
        QFETCH(Tab, tab);
        ToolsViewLink &found = link(name);
        QCOMPARE(found.cursor().shape(), Qt::PointingHandCursor);
        QCOMPARE(found.property("role").toString(), QStringLiteral("link"));
        QCOMPARE(found.accessibleName(), found.text());

        std::vector<std::pair<Tab, Tab>> expected;
        const auto isOpened = [&] {
            expected.emplace_back(tab, Tab::kTools);
            return m_window.opened == expected;
        };
        QTest::mouseClick(&found, Qt::LeftButton);
        QVERIFY(isOpened());
        QTest::mouseClick(&found, Qt::LeftButton, {}, found.rect().bottomRight());
        QVERIFY(isOpened());
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
            QTest::keyClick(&found, key);
            QVERIFY(isOpened());
        }
        QTest::keyClick(&found, Qt::Key_A);
        QVERIFY(m_window.opened == expected);
    }

    void pageIsWhiteAndSaysWhatTheLinksAreFor() {
        QCOMPARE(m_page->objectName(), QStringLiteral("ToolsView"));
        QCOMPARE(m_page->palette().color(QPalette::Window), QColor(Qt::white));
        for (const char *text : {"optionsText", "actionsText", "exportText", "hostsText"}) {
            QVERIFY(m_page->findChild<QLabel *>(QLatin1String(text))->text().endsWith(u'.'));
        }
        for (const char *icon : {"optionsIcon", "actionsIcon", "exportIcon", "hostsIcon"}) {
            QVERIFY(!m_page->findChild<QLabel *>(QLatin1String(icon))->pixmap().isNull());
        }
    }

    void linksDoNothingWithoutAWindow() {
        m_delegate.setMainWindow(nullptr);
        QTest::mouseClick(&link(QStringLiteral("toolsOptions")), Qt::LeftButton);
        QVERIFY(m_window.opened.empty());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ToolsViewTest)
#include "ToolsViewTest.moc"
