#include "actions/ActionsFixture.h"

#include <QDateTime>
#include <QScrollBar>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

class EmailFormatTest : public QObject {
    Q_OBJECT

private:
    void sendTest(const QStringList &recipients) {
        m_page->open("emailTest");
        for (const QString &recipient : recipients) {
            m_page->type("recipientEmail", recipient);
            m_page->click("addRecipient");
        }
        m_page->click("onSave");
    }

    std::unique_ptr<ActionsPage> m_page;

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void formatWithoutADocument() {
        m_page->open("emailFormat");
        QCOMPARE(m_page->text("textSubject"), u"$message"_s);
        QCOMPARE(m_page->area("textBody"),
                 u"Date:$date\nPriority:$priority\nHost:$host\nMessage:$message\n"_s);
        QVERIFY(m_page->isChecked("sendSubject") && m_page->isChecked("sendBody"));
        QVERIFY(m_page->isEnabled("textSubject"));
        QVERIFY(!m_page->control<QPlainTextEdit>("textBody").isReadOnly());
        QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), u"textBlank"_s);
        QCOMPARE(m_page->control("textBody").font().pointSize(), 11);
        m_page->click("onSave");
        const Dictionary expected{
            {"actionsFormatSubject", "$message"},
            {"actionsFormatBody",
             "Date:$date\r\nPriority:$priority\r\nHost:$host\r\nMessage:$message\r\n"}};
        QCOMPARE(m_page->savedText(), asText(expected));
    }

    void formatShowsWhatIsStored_data() {
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("body");
        QTest::newRow("both") << "s"
                              << "a\r\nb\n\nc";
        QTest::newRow("subject only") << "s"
                                      << "";
        QTest::newRow("body only") << ""
                                   << "b";
        QTest::newRow("neither") << ""
                                 << "";
    }
    void formatShowsWhatIsStored() {
        QFETCH(QString, subject);
        QFETCH(QString, body);
        const Dictionary stored{{"actionsFormatBody", body.toStdString()},
                                {"unknown", 1.5},
                                {"actionsFormatSubject", subject.toStdString()}};
        m_page->open("emailFormat", stored);
        QCOMPARE(m_page->text("textSubject"), subject);
        QCOMPARE(m_page->isChecked("sendSubject"), !subject.isEmpty());
        QCOMPARE(m_page->isEnabled("textSubject"), !subject.isEmpty());
        QCOMPARE(m_page->isChecked("sendBody"), !body.isEmpty());
        QCOMPARE(m_page->control<QPlainTextEdit>("textBody").isReadOnly(), body.isEmpty());
        QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), u"textBlank"_s);
        m_page->click("onSave");
        QCOMPARE(m_page->savedText(), asText(stored));
    }

    void formatWithoutItsKeysIsEmpty() {
        Array settings{Dictionary{{"other", 1}}};
        for (const Value &wrong : otherTypes()) {
            settings.emplace_back(
                Dictionary{{"actionsFormatSubject", wrong}, {"actionsFormatBody", wrong}});
        }
        for (const Value &stored : settings) {
            m_page->open("emailFormat", *stored.dictionary());
            QCOMPARE(m_page->text("textSubject") + m_page->area("textBody"), QString());
            QVERIFY(!m_page->isChecked("sendSubject") && !m_page->isChecked("sendBody"));
            m_page->click("onSave");
            const Dictionary saved = m_page->saved();
            QCOMPARE(settingText(saved, "actionsFormatSubject"), "");
            QCOMPARE(settingText(saved, "actionsFormatBody"), "");
        }
    }

    void formatBoxesEmptyAndEnable() {
        m_page->open("emailFormat", {{"actionsFormatSubject", "s"}, {"actionsFormatBody", "b"}});
        m_page->click("sendSubject");
        QVERIFY(!m_page->isEnabled("textSubject"));
        QCOMPARE(m_page->text("textSubject"), QString());
        m_page->click("sendBody");
        QVERIFY(m_page->control<QPlainTextEdit>("textBody").isReadOnly());
        QCOMPARE(m_page->area("textBody"), QString());
        m_page->click("onSave");
        const Dictionary expected{{"actionsFormatSubject", ""}, {"actionsFormatBody", ""}};
        QCOMPARE(m_page->savedText(), asText(expected));
        m_page->open("emailFormat");
        QDialog *sheet = m_page->openSheet();
        m_page->click("sendSubject");
        m_page->click("sendSubject");
        QVERIFY(m_page->isEnabled("textSubject"));
        QCOMPARE(sheet->focusWidget()->objectName(), u"textSubject"_s);
        QTest::keyClicks(sheet->focusWidget(), u"t"_s);
        m_page->click("sendBody");
        m_page->click("sendBody");
        QCOMPARE(sheet->focusWidget()->objectName(), u"textBody"_s);
        QTest::keyClicks(sheet->focusWidget(), u"c"_s);
        m_page->click("onSave");
        QCOMPARE(m_page->savedText(),
                 asText(Dictionary{{"actionsFormatSubject", "t"}, {"actionsFormatBody", "c"}}));
    }

    void formatScrollsToTheBeginning() {
        std::string lines;
        for (int i = 0; i < 200; ++i) {
            lines += "$message\r\n";
        }
        m_page->open("emailFormat", {{"actionsFormatBody", lines}});
        auto &area = m_page->control<QPlainTextEdit>("textBody");
        area.moveCursor(QTextCursor::End);
        QTRY_COMPARE(area.textCursor().position(), 0);
        QCOMPARE(area.verticalScrollBar()->value(), 0);
    }

    void testStartsEmpty() {
        m_page->open("emailTest");
        QCOMPARE(m_page->rows("recipientsTable"), QString());
        QVERIFY(!m_page->isEnabled("addRecipient"));
        QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), u"recipientBlank"_s);
    }

    void testNeedsARecipient() {
        m_page->open("emailTest", {{"actionsFormatSubject", "s"}, {"actionsFormatBody", "b"}});
        m_page->type("recipientEmail", u"not added"_s);
        m_page->click("onSave");
        const auto *alert = dynamic_cast<QMessageBox *>(m_page->openSheet());
        QVERIFY(alert != nullptr);
        QCOMPARE(alert->windowTitle(), u"Quorbel"_s);
        QCOMPARE(alert->text(), u"No recipients selected"_s);
        QCOMPARE(alert->informativeText(), u"Please add recipients and try again."_s);
        m_page->click("alertButton0");
        QCOMPARE(m_page->openSheetName(), u"emailTest"_s);
        QVERIFY(m_page->nothingWasSent());
    }

    void testSendsTheStoredTemplates() {
        m_page->write({{"actionsFormatSubject", "$message, $message on $host"},
                       {"actionsFormatBody", "$priority\r\n$Host"}});
        sendTest({u"b@example.com"_s, u"x"_s, u"b@example.com"_s});
        QCOMPARE(m_page->openSheetName(), QString());
        const Dictionary expected{
            {"command", "email"},
            {"Recipients", Array{"b@example.com", "x", "b@example.com"}},
            {"Subject", "Quorbel - Test message, Quorbel - Test message on 127.0.0.1"},
            {"Body", "Local7.Debug\r\n$Host"},
            {"Html", false}};
        QCOMPARE(m_page->command(), asText(expected));
    }

    void testReadsTheTemplatesWhenItIsSent() {
        m_page->write({{"actionsFormatSubject", "old"}, {"actionsFormatBody", "old"}});
        m_page->open("emailTest");
        m_page->write({{"actionsFormatSubject", "new"}, {"actionsFormatBody", ""}});
        m_page->type("recipientEmail", u"x"_s);
        QTest::keyClick(&m_page->control("recipientEmail"), Qt::Key_Return);
        m_page->click("onSave");
        const Dictionary expected{{"command", "email"},
                                  {"Recipients", Array{"x"}},
                                  {"Subject", "new"},
                                  {"Body", ""},
                                  {"Html", false}};
        QCOMPARE(m_page->command(), asText(expected));
    }

    void testDate_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("rendered");
        QTest::newRow("default") << ""
                                 << "yyyy-MM-dd HH:mm:ss";
        QTest::newRow("pattern") << "dd/MM/yyyy HH:mm:ss"
                                 << "dd/MM/yyyy HH:mm:ss";
        QTest::newRow("day period") << "yyyy-MM-dd hh:mm:ss AM/PM"
                                    << "yyyy-MM-dd hh:mm:ss AP";
    }
    void testDate() {
        QFETCH(QString, format);
        QFETCH(QString, rendered);
        m_page->delegate().state.newDateFormat = format.toStdString();
        m_page->write({{"actionsFormatSubject", "$date"}, {"actionsFormatBody", "[$date]"}});
        const auto now = [] { return QDateTime::currentDateTime().toSecsSinceEpoch(); };
        const qint64 before = now();
        sendTest({u"x"_s});
        const QString command = m_page->command();
        QStringList possible;
        for (qint64 second = before; second <= now(); ++second) {
            const std::string date = QLocale::c()
                                         .toString(QDateTime::fromSecsSinceEpoch(second), rendered)
                                         .toStdString();
            possible += asText(Dictionary{{"command", "email"},
                                          {"Recipients", Array{"x"}},
                                          {"Subject", date},
                                          {"Body", '[' + date + ']'},
                                          {"Html", false}});
        }
        QVERIFY2(possible.contains(command), qPrintable(command));
    }

    void testCommandsEndEarly_data() {
        QTest::addColumn<bool>("document");
        QTest::addColumn<bool>("subject");
        QTest::addColumn<bool>("body");
        QTest::addColumn<QStringList>("keys");
        const QStringList start{u"command"_s, u"Recipients"_s};
        QTest::newRow("no document") << false << false << false << start;
        QTest::newRow("neither") << true << false << false << start;
        QTest::newRow("no subject") << true << false << true << start;
        QTest::newRow("no body") << true << true << false << start + QStringList{u"Subject"_s};
        QTest::newRow("both") << true << true << true
                              << start + QStringList{u"Subject"_s, u"Body"_s, u"Html"_s};
    }
    void testCommandsEndEarly() {
        QFETCH(bool, document);
        QFETCH(bool, subject);
        QFETCH(bool, body);
        QFETCH(QStringList, keys);
        const Dictionary whole{{"command", "email"},
                               {"Recipients", Array{"x"}},
                               {"Subject", "s"},
                               {"Body", "b"},
                               {"Html", false}};
        Dictionary expected;
        for (const QString &key : std::as_const(keys)) {
            expected.set(key.toStdString(), *whole.find(key.toStdString()));
        }
        // A key of another type is as good as none.
        for (const Value &missing : {Value(5), Value(Array{"s"}), Value(Null{})}) {
            if (document) {
                m_page->write({{"actionsFormatBody", body ? Value("b") : missing},
                               {"actionsFormatSubject", subject ? Value("s") : missing}});
            }
            sendTest({u"x"_s});
            QCOMPARE(m_page->command(), asText(expected));
            QCOMPARE(m_page->openSheetName(), QString());
        }
    }

    void cancelSavesNothing() {
        m_page->open("emailFormat");
        m_page->click("sendSubject");
        m_page->click("onCancel");
        m_page->open("emailTest");
        m_page->type("recipientEmail", u"a"_s);
        m_page->click("addRecipient");
        m_page->click("onCancel");
        QCOMPARE(m_page->openSheetName(), QString());
        QVERIFY(m_page->nothingWasSent());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EmailFormatTest)
#include "EmailFormatTest.moc"
#include "common/SettingsDocument.h"
