#include "help/HelpWindow.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/WindowMemory.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextTable>

#include <memory>
#include <optional>

using namespace quorbel;
using quorbel::testing::TemporaryFolder;

/// Records the addresses that would have been opened in the web browser.
class WebBrowser : public QObject {
    Q_OBJECT

public:
    WebBrowser() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
    ~WebBrowser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }

    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

class HelpWindowTest : public QObject {
    Q_OBJECT

private:
    template <typename Widget>
    Widget &find(const char *name) {
        return *m_window->findChild<Widget *>(QString::fromLatin1(name));
    }
    QTextBrowser &text() { return find<QTextBrowser>("chapter"); }
    QListWidget &chapters() { return find<QListWidget>("chapters"); }
    QString heading() { return text().document()->firstBlock().text().trimmed(); }
    void search(const char *words) {
        find<QLineEdit>("search").clear();
        QTest::keyClicks(&find<QLineEdit>("search"), QString::fromLatin1(words));
    }
    QStringList listed() {
        QStringList titles;
        for (int row = 0; row < chapters().count(); ++row) {
            if (!chapters().isRowHidden(row)) {
                titles.append(chapters().item(row)->text());
            }
        }
        return titles;
    }
    QStringList marked() {
        QStringList words;
        for (const auto &mark : text().extraSelections()) {
            words.append(mark.cursor.selectedText().toLower());
        }
        return words;
    }
    void open() {
        m_window = std::make_unique<HelpWindow>();
        m_window->makeVisible();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    /// Follows the link whose text is `label`, as the keyboard and the mouse do.
    void follow(const char *label) {
        const QString words = QString::fromLatin1(label);
        QTextCursor link = text().document()->find(words);
        while (!link.isNull() && link.charFormat().anchorHref().isEmpty()) {
            link = text().document()->find(words, link);
        }
        QVERIFY2(!link.isNull(), label);
        text().setFocus();
        text().setTextCursor(link);
        QTest::keyClick(&text(), Qt::Key_Return);
    }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() {
        m_configuration.emplace();
        qputenv("XDG_CONFIG_HOME", m_configuration->path().c_str());
        open();
    }
    void cleanup() {
        m_window.reset();
        finishRemembering();
        m_configuration.reset();
    }

    void opensWhereItWasClosed() {
        const QRect place(40, 30, 700, 480);
        m_window->setGeometry(place);
        m_window->close();
        open();
        QCOMPARE(m_window->geometry(), place);
    }

    void opensWithTheFirstChapter() {
        QCOMPARE(m_window->objectName(), QStringLiteral("helpWindow"));
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Quorbel Help"));
        QCOMPARE(chapters().count(), 14);
        QCOMPARE(chapters().currentRow(), 0);
        QCOMPARE(heading(), QStringLiteral("Getting started"));
        QVERIFY(!find<QLabel>("noChapter").isVisible());
    }

    void listShowsChapters() {
        for (int row = 0; row < chapters().count(); ++row) {
            chapters().setCurrentRow(row);
            QCOMPARE(heading(), chapters().item(row)->text());
        }
    }

    void searchNarrowsTheList() {
        search("OCTET counting");
        QCOMPARE(listed(), QStringList{QStringLiteral("Pointing devices at this machine")});
        QCOMPARE(heading(), listed().front());
        QVERIFY(marked().contains(QStringLiteral("octet")));
        QVERIFY(marked().contains(QStringLiteral("counting")));

        find<QLineEdit>("search").clear();
        QCOMPARE(listed().size(), 14);
        QCOMPARE(heading(), QStringLiteral("Pointing devices at this machine"));
        QVERIFY(marked().isEmpty());
    }

    void searchShowsTheFirstHit() {
        chapters().setCurrentRow(chapters().count() - 1);
        QCOMPARE(text().verticalScrollBar()->value(), 0);
        search("timedatectl");
        QCOMPARE(marked(), QStringList{QStringLiteral("timedatectl")});
        QVERIFY(text().verticalScrollBar()->value() > 0);
    }

    void searchKeepsAChapterThatFits() {
        chapters().setCurrentRow(8);
        search("rating");
        QVERIFY(listed().size() > 1);
        QCOMPARE(chapters().currentRow(), 8);
        QVERIFY(!marked().isEmpty());
    }

    void everyChapterThatIsOpenedIsMarked() {
        search("rating");
        const qsizetype first = marked().size();
        chapters().setCurrentRow(2);
        QVERIFY(marked().size() > first);
    }

    void searchWithoutAHitSaysSo() {
        search("zebra");
        QVERIFY(listed().isEmpty());
        QVERIFY(find<QLabel>("noChapter").isVisible());
        search("udp");
        QVERIFY(!listed().isEmpty());
        QVERIFY(!find<QLabel>("noChapter").isVisible());
    }

    void linksOpenOtherChapters() {
        follow("Learn what the rating");
        QCOMPARE(heading(), QStringLiteral("How ratings work"));
        QCOMPARE(chapters().currentItem()->text(), heading());

        follow("Ratings");
        QCOMPARE(heading(), QStringLiteral("What each setting means"));
    }

    void linksShowTheirPlace() {
        chapters().setCurrentRow(1);
        follow("options page");
        QCOMPARE(heading(), QStringLiteral("What each setting means"));
        QTRY_VERIFY(text().verticalScrollBar()->value() > text().height());
    }

    void otherLinksGoToTheWebBrowser() {
        const WebBrowser browser;
        follow("www.halvern.example/quorbel");
        QCOMPARE(browser.opened,
                 QList<QUrl>{QUrl(QStringLiteral("https://www.halvern.example/quorbel"))});
        QCOMPARE(heading(), QStringLiteral("Getting started"));
    }

    void picturesFitTheText_data() {
        QTest::addColumn<int>("width");
        QTest::newRow("narrow") << 600;
        QTest::newRow("as designed") << 1000;
        QTest::newRow("wider than the pictures") << 1900;
    }
    void picturesFitTheText() {
        QFETCH(int, width);
        chapters().setCurrentRow(1);
        m_window->resize(width, 700);
        QTRY_VERIFY(text().horizontalScrollBar()->maximum() == 0);
        int pictures = 0;
        const QTextDocument &chapter = *text().document();
        for (QTextBlock block = chapter.begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                const QTextImageFormat format = part.fragment().charFormat().toImageFormat();
                if (format.isValid()) {
                    ++pictures;
                    QVERIFY(format.width() > 200);
                    QVERIFY(format.width() <= text().viewport()->width());
                }
            }
        }
        QCOMPARE(pictures, 2);
    }

    void commandsStandInCells() {
        const QTextCursor command = text().document()->find(QStringLiteral("systemctl start"));
        QVERIFY(!command.isNull());
        const QTextTable *table = command.currentTable();
        if (table == nullptr) {
            QFAIL("in no table");
        }
        QVERIFY(table->format().cellPadding() > 0);
        QVERIFY(table->cellAt(command).format().background().style() != Qt::NoBrush);
        QVERIFY(text().document()->find(QStringLiteral("Two programs")).currentTable() == nullptr);
    }

    void textFitsANarrowWindow() {
        m_window->resize(m_window->minimumSize());
        for (int row = 0; row < chapters().count(); ++row) {
            chapters().setCurrentRow(row);
            QVERIFY(!text().document()->isEmpty());
            QVERIFY(text().viewport()->width() > 200);
        }
    }

    void shortcuts() {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        text().setFocus();
        QTest::keyClick(&text(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(find<QLineEdit>("search").hasFocus());
        QTest::keyClick(m_window.get(), Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!m_window->isVisible());
    }

private:
    std::optional<TemporaryFolder> m_configuration;
    std::unique_ptr<HelpWindow> m_window;
};

QTEST_MAIN(HelpWindowTest)
#include "HelpWindowTest.moc"
