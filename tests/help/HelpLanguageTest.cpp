#include "help/HelpBook.h"
#include "help/HelpWindow.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTranslator>

#include <memory>

using namespace quorbel;

/// Names the language; knows no texts.
class NamedLanguage : public QTranslator {
public:
    [[nodiscard]] QString translate(const char *context, const char * /*sourceText*/,
                                    const char * /*disambiguation*/, int /*n*/) const override {
        return QByteArrayView(context) == "Language" ? QStringLiteral("xx") : QString();
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

/// The book in a language in which only one chapter, "pages", is written.
class HelpLanguageTest : public QObject {
    Q_OBJECT

private:
    QTextBrowser &text() { return *m_window->findChild<QTextBrowser *>(QStringLiteral("chapter")); }
    QListWidget &chapters() {
        return *m_window->findChild<QListWidget *>(QStringLiteral("chapters"));
    }
    QString heading() { return text().document()->firstBlock().text().trimmed(); }

    NamedLanguage m_language;
    std::unique_ptr<HelpWindow> m_window;

private Q_SLOTS:
    void initTestCase() { QCoreApplication::installTranslator(&m_language); }
    void init() {
        m_window = std::make_unique<HelpWindow>();
        m_window->makeVisible();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void listsEachChapterInTheLanguageInWhichItIs() {
        QCOMPARE(chapters().item(0)->text(), QStringLiteral("Getting started"));
        QCOMPARE(chapters().item(1)->text(), QStringLiteral("Ayp esgap"));
        QCOMPARE(chapters().item(2)->text(), QStringLiteral("Finding events"));
    }
    void leadsFromATranslatedChapterToAnEnglishOne() {
        chapters().setCurrentRow(1);
        QCOMPARE(heading(), QStringLiteral("Ayp esgap"));
        text().setSource(text().source().resolved(QUrl(QStringLiteral("ratings.html"))));
        QCOMPARE(heading(), QStringLiteral("How ratings work"));
        QCOMPARE(chapters().currentItem()->text(), QStringLiteral("How ratings work"));
    }
    void leadsFromAnEnglishChapterToATranslatedOne() {
        chapters().setCurrentRow(0);
        text().setSource(text().source().resolved(QUrl(QStringLiteral("pages.html"))));
        QCOMPARE(heading(), QStringLiteral("Ayp esgap"));
        QCOMPARE(chapters().currentRow(), 1);
    }
    void searchesInWhatIsShown() {
        QTest::keyClicks(m_window->findChild<QLineEdit *>(QStringLiteral("search")),
                         QStringLiteral("esgap"));
        QVERIFY(!chapters().isRowHidden(1));
        QVERIFY(chapters().isRowHidden(0));
    }
};

QTEST_MAIN(HelpLanguageTest)
#include "HelpLanguageTest.moc"
