// What the actions page shows of a test e-mail: of a stand-in's answers, and of those of the real
// service with a mail server.

#include "actions/ActionsFixture.h"
#include "actions/EmailTestAnswer.h"
#include "support/ServiceProcess.h"
#include "support/SmtpStandIn.h"

#include <QRegularExpression>
#include <QTimer>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

class EmailAnswerTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ActionsPage> m_page;

    void sendTo(const QString &recipient) {
        m_page->open("emailTest");
        m_page->type("recipientEmail", recipient);
        m_page->click("addRecipient");
        m_page->click("onSave");
        QCOMPARE(m_page->openSheetName(), QString());
    }
    EmailTestAnswer &answer() { return m_page->control<EmailTestAnswer>("emailAnswer"); }
    bool isWarning() { return answer().property("role").toString() == u"warning"_s; }
    /// Whether it comes to say this, whatever the time.
    bool comesToSay(const QString &text) {
        const QRegularExpression expected(u"\\ATest e-mail, [^a-z]*\\d\\d[^a-z]*: "_s +
                                          QRegularExpression::escape(text) + u"\\z"_s);
        return QTest::qWaitFor([&] { return expected.match(answer().text()).hasMatch(); },
                               static_cast<int>(kPatience.count()));
    }

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void nothingIsThereBeforeTheFirstTest() {
        m_page->show();
        QVERIFY(!answer().isVisible());
        m_page->open("emailTest");
        m_page->click("onCancel");
        QVERIFY(!answer().isVisible());
    }

    void itIsWaitedForAndShown() {
        m_page->service().onCommand(ServiceStandIn::OnCommand::kReply, std::chrono::hours(1));
        sendTo(u"a@example.com"_s);
        QVERIFY(answer().isVisible());
        QCOMPARE(answer().text(), u"Test e-mail: waiting for the answer..."_s);
        QTRY_VERIFY(answer().text().contains(u"waiting for the answer for 2 s"_s));
        QVERIFY(!isWarning());
        QCOMPARE(m_page->service().waitForCommands(1).size(), 1U);
        m_page->service().replyNow();
        QVERIFY2(comesToSay(u"The mail server has taken it"_s), qPrintable(answer().text()));
        QVERIFY(!isWarning());
        QVERIFY2(!answer().findChild<QTimer *>()->isActive(), "or it would say it waits again");
        // It stays when the page is left, and shown again.
        m_page->show();
        QVERIFY(answer().isVisible());
    }

    void whatIsWrongIsShownAsItWasSaid() {
        const QString said =
            u"The mail server mail.example.com refused all recipients: 550 5.1.1 "
            "<b>No such user</b> \u202Eabc"_s;
        m_page->service().setReply(said.toStdString());
        sendTo(u"a@example.com"_s);
        QVERIFY2(comesToSay(u"The mail server mail.example.com refused all recipients: 550 5.1.1 "
                            "<b>No such user</b> <U+202E>abc"_s),
                 qPrintable(answer().text()));
        QVERIFY(isWarning());
        QCOMPARE(answer().textFormat(), Qt::PlainText);
        // All of its lines are seen.
        QTRY_VERIFY(answer().height() >= answer().heightForWidth(answer().width()));
        QVERIFY(answer().height() > 2 * answer().fontMetrics().height() - 1);
        // The next one begins anew.
        m_page->service().setReply("OK");
        sendTo(u"a@example.com"_s);
        QVERIFY(comesToSay(u"The mail server has taken it"_s));
        QVERIFY(!isWarning());
    }

    void noAnswerIsSaid() {
        m_page->service().onCommand(ServiceStandIn::OnCommand::kReplyWithError);
        sendTo(u"a@example.com"_s);
        const QString none =
            u"No answer: the service does not run, or you may not send commands to it"_s;
        QVERIFY2(comesToSay(none), qPrintable(answer().text()));
        QVERIFY(isWarning());
        m_page->service().onCommand(ServiceStandIn::OnCommand::kReply);
        sendTo(u"a@example.com"_s);
        QVERIFY(comesToSay(u"The mail server has taken it"_s));
        m_page->endService();
        sendTo(u"a@example.com"_s);
        QVERIFY2(comesToSay(none), qPrintable(answer().text()));
    }

    void theAnswerToAnEarlierTestIsNotTakenForThatToTheLast() {
        EmailTestAnswer shown;
        const CommandSender::AnswerHandler first = shown.await();
        const CommandSender::AnswerHandler second = shown.await();
        first("The first answer");
        QCoreApplication::processEvents();
        QCOMPARE(shown.text(), u"Test e-mail: waiting for the answer..."_s);
        second("The second answer");
        QCoreApplication::processEvents();
        QVERIFY2(shown.text().endsWith(u": The second answer"_s), qPrintable(shown.text()));
        first("The first answer");
        QCoreApplication::processEvents();
        QVERIFY(shown.text().endsWith(u": The second answer"_s));
    }

    void anAnswerMayComeWhenThePageIsGone() {
        auto answer = std::make_unique<EmailTestAnswer>();
        const CommandSender::AnswerHandler late = answer->await();
        late("OK");
        answer.reset();
        late("OK");
        QCoreApplication::processEvents();
    }

    void theMailServersOwnWordsComeFromTheRealService() {
        SmtpStandIn mailServer;
        m_page->endService();
        ServiceProcess service({.library = m_page->library(), .busAddress = m_page->busAddress()});
        QVERIFY2(service.waitForJournal("Connected to the system bus"), service.journal().c_str());
        const auto settingsFor = [](std::uint16_t port) {
            return Dictionary{{"actionsEmailServer", "127.0.0.1"},
                              {"actionsEmailPort", port},
                              {"actionsEmailSender", "quorbel@example.org"},
                              {"actionsEmailSecurity", "None"},
                              {"actionsFormatSubject", "s"},
                              {"actionsFormatBody", "b"}};
        };
        m_page->delegate().saveSettings(settingsFor(mailServer.port()));
        sendTo(u"a@example.com"_s);
        QVERIFY2(comesToSay(u"The mail server has taken it"_s), qPrintable(answer().text()));
        QCOMPARE(mailServer.mails().size(), 1U);
        mailServer.answerRecipient("b@example.com", "550 5.1.1 No such user here");
        sendTo(u"b@example.com"_s);
        QVERIFY2(comesToSay(u"The mail server 127.0.0.1 refused all recipients: 550 5.1.1 No such "
                            "user here"_s),
                 qPrintable(answer().text()));
        QVERIFY(isWarning());
        mailServer.answerMails("554 5.7.1 Sounds like spam");
        sendTo(u"a@example.com"_s);
        QVERIFY2(comesToSay(u"The mail server 127.0.0.1 refused the e-mail: 554 5.7.1 Sounds like "
                            "spam"_s),
                 qPrintable(answer().text()));
        sendTo(u"nobody"_s);
        QVERIFY2(comesToSay(u"\"nobody\" is not a valid e-mail address"_s),
                 qPrintable(answer().text()));
        m_page->delegate().saveSettings({{"actionsEmailServer", ""}});
        sendTo(u"a@example.com"_s);
        QVERIFY2(comesToSay(u"No mail server is set"_s), qPrintable(answer().text()));
        QCOMPARE(service.terminate(), std::optional(0));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EmailAnswerTest)
#include "EmailAnswerTest.moc"
