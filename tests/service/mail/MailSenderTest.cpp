#include "service/mail/MailSender.h"
#include "service/mail/MailText.h"
#include "support/SmtpStandIn.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::readMail;
using ::testing::SizeIs;
using testing::SmtpStandIn;
using testing::TemporaryFolder;
using testing::TestAuthority;
using testing::waitUntil;
using namespace std::chrono_literals;

using Security = SmtpStandIn::Security;

/// Made once: OpenSSL reads the variable for each connection anew.
const TestAuthority &trustedAuthority() {
    static const TemporaryFolder folder;
    static const TestAuthority authority;
    static const bool isSet = [] {
        const auto file = folder.write("ca.pem", authority.certificate());
        return setenv("SSL_CERT_FILE", file.c_str(), 1) == 0;
    }();
    EXPECT_TRUE(isSet);
    return authority;
}

Dictionary settingsFor(const SmtpStandIn &server, const char *security = "None") {
    return {{"actionsEmailServer", "localhost"},
            {"actionsEmailPort", server.port()},
            {"actionsEmailSender", "Quorbel <quorbel@example.org>"},
            {"actionsEmailSecurity", security},
            // However short a test's minutes are, a busy machine has time enough.
            {"actionsEmailTimeout", 60}};
}

Dictionary with(Dictionary settings, std::string_view key, Value value) {
    settings.set(key, std::move(value));
    return settings;
}

struct MailSenderTest : ::testing::Test {
    MailSenderTest() { trustedAuthority(); }

    SmtpStandIn::Setup setup(Security security) {
        return {security, trustedAuthority().issue(), "", ""};
    }

    const MailMessage message{{"a@example.org", "b@example.org"}, "Disk full", "text\r\n", false};
    // A minute is a second, so that the shortest time limit and the pauses are short.
    MailSender sender{1000ms};
};

TEST_F(MailSenderTest, SendsInEverySecurityMode) {
    struct Case {
        Security security;
        const char *text;
    };
    constexpr Case kCases[] = {
        {Security::kNone, "None"}, {Security::kStartTls, "STARTTLS"}, {Security::kTls, "SSL/TLS"}};
    for (const Case &c : kCases) {
        SmtpStandIn server(setup(c.security));
        EXPECT_EQ(sender.send(message, settingsFor(server, c.text)), "OK") << c.text;
        const auto mails = server.mails();
        ASSERT_THAT(mails, SizeIs(1));
        EXPECT_EQ(mails[0].sender, "quorbel@example.org");
        EXPECT_THAT(mails[0].recipients, ElementsAre("a@example.org", "b@example.org"));
        EXPECT_EQ(mails[0].wasEncrypted, c.security != Security::kNone);
        EXPECT_FALSE(mails[0].wasLoggedIn);
        const auto mail = readMail(mails[0].text);
        EXPECT_EQ(mail.headers.at("From"), "Quorbel <quorbel@example.org>");
        EXPECT_EQ(mail.headers.at("To"), "a@example.org, b@example.org");
        EXPECT_EQ(mail.headers.at("Subject"), "Disk full");
        EXPECT_EQ(mail.body, "text\r\n");
    }
    EXPECT_EQ(sender.sent(), 3U);
    EXPECT_EQ(sender.dropped(), 0U);
}

TEST_F(MailSenderTest, LogsInWhenAUserIsSet) {
    auto needsUser = setup(Security::kStartTls);
    needsUser.user = "user";
    needsUser.password = "pass word";
    SmtpStandIn server(needsUser);
    const Dictionary user = with(settingsFor(server, "STARTTLS"), "actionsEmailUsername", "user");
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(sender.send(message, with(user, "actionsEmailPassword", "pass word")), "OK");
    EXPECT_TRUE(server.mails().at(0).wasLoggedIn);
    const std::string wrong = sender.send(message, with(user, "actionsEmailPassword", "s3cret"));
    EXPECT_EQ(wrong,
              "The mail server localhost refused the user name or the password: 535 5.7.8 Wrong "
              "user or password");
    EXPECT_EQ(sender.send(message, settingsFor(server, "STARTTLS")),
              "The mail server localhost refused the e-mail: 530 Log in first");
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), IsEmpty());
    EXPECT_THAT(server.mails(), SizeIs(1));
}

TEST_F(MailSenderTest, SendsAPasswordInTheClearOnlyWhereNoneIsChosen) {
    auto needsUser = setup(Security::kNone);
    needsUser.user = "user";
    needsUser.password = "pass word";
    SmtpStandIn server(needsUser);
    Dictionary settings = with(settingsFor(server), "actionsEmailUsername", "user");
    settings.set("actionsEmailPassword", "pass word");
    const std::string notChosen =
        "No connection security is chosen for the mail server; the password is sent without "
        "encryption only with \"None\"";
    for (const Value &text : {Value(""), Value(5), Value(Null{})}) {
        EXPECT_EQ(sender.send(message, with(settings, "actionsEmailSecurity", text)), notChosen);
    }
    Dictionary absent = settings;
    absent.remove("actionsEmailSecurity");
    EXPECT_EQ(sender.send(message, absent), notChosen);
    for (const char *text : {"none", "None ", "NONE", "\xFF\n"}) {
        EXPECT_THAT(sender.send(message, with(settings, "actionsEmailSecurity", text)),
                    ::testing::StartsWith("The mail server's connection security \""));
    }
    EXPECT_EQ(server.connections(), 0U);
    EXPECT_EQ(sender.send(message, settings), "OK");
    EXPECT_TRUE(server.mails().at(0).wasLoggedIn);
}

TEST_F(MailSenderTest, SendsWithoutALoginWhereNoSecurityIsChosen) {
    SmtpStandIn server;
    Dictionary settings = settingsFor(server, "");
    EXPECT_EQ(sender.send(message, settings), "OK");
    settings.remove("actionsEmailSecurity");
    settings.set("actionsEmailPassword", "left over");
    EXPECT_EQ(sender.send(message, settings), "OK");
    for (const auto &mail : server.mails()) {
        EXPECT_FALSE(mail.wasLoggedIn);
    }
}

TEST_F(MailSenderTest, SaysWhatIsWrong) {
    SmtpStandIn plain;
    SmtpStandIn tls(setup(Security::kTls));
    const TestAuthority stranger("Stranger");
    SmtpStandIn untrusted({Security::kTls, stranger.issue(), "", ""});
    SmtpStandIn untrustedStart({Security::kStartTls, stranger.issue(), "", ""});
    SmtpStandIn wrongName(
        {Security::kTls, trustedAuthority().issue("DNS:elsewhere.example"), "", ""});
    const auto settings = settingsFor(plain);
    // Longer than a part of a name may be, so that no name server is asked.
    const std::string noHost(70, 'a');
    const MailMessage noRecipients{{}, "s", "b", false};
    const MailMessage noAddress{{"nobody", ""}, "s", "b", false};
    struct Case {
        MailMessage message;
        Dictionary settings;
        std::string answer;
    };
    const Case cases[] = {
        {noRecipients, settings, "There are no recipients"},
        {noAddress, settings,
         R"("nobody" is not a valid e-mail address; "" is not a valid e-mail address)"},
        {message, {}, "No mail server is set"},
        {message, with(settings, "actionsEmailSender", ""),
         "The sender \"\" is not a valid e-mail address"},
        {message, with(settings, "actionsEmailSender", "me\r\nDATA"),
         "The sender \"me??DATA\" is not a valid e-mail address"},
        {message, with(settings, "actionsEmailSecurity", "TLS"),
         R"(The mail server's connection security "TLS" is not one of "None", "STARTTLS" or )"
         R"("SSL/TLS")"},
        {message, with(settings, "actionsEmailServer", "a host/path\nx"),
         "The name of the mail server is not valid: a host/path?x"},
        {message, with(settings, "actionsEmailServer", noHost),
         "The mail server " + noHost + " is not known"},
        {message, with(settings, "actionsEmailPort", 1),
         "The mail server localhost cannot be reached on port 1"},
        {message, with(settings, "actionsEmailSecurity", "STARTTLS"),
         "The mail server localhost does not offer STARTTLS"},
        {message, settingsFor(untrusted, "SSL/TLS"),
         "The certificate of the mail server localhost is not trusted"},
        {message, settingsFor(untrustedStart, "STARTTLS"),
         "The certificate of the mail server localhost is not trusted"},
        {message, settingsFor(wrongName, "SSL/TLS"),
         "The certificate of the mail server localhost is not trusted"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(sender.send(c.message, c.settings), c.answer);
    }
    // Whoever expects TLS never gets a mail in the clear.
    EXPECT_NE(sender.send(message, settingsFor(plain, "SSL/TLS")), "OK");
    EXPECT_THAT(plain.mails(), IsEmpty());
    for (const SmtpStandIn *server : {&untrusted, &untrustedStart, &wrongName}) {
        EXPECT_THAT(server->mails(), IsEmpty());
    }
}

TEST_F(MailSenderTest, GivesUpOnASilentServer) {
    SmtpStandIn server;
    server.keepSilent();
    EXPECT_EQ(sender.send(message, with(settingsFor(server), "actionsEmailTimeout", 1)),
              "The mail server localhost did not answer in time");
}

TEST_F(MailSenderTest, NamesTheRecipientsThatWereRefused) {
    SmtpStandIn server;
    server.answerRecipient("b@example.org", "550-5.1.1 No such\r\n550 user here");
    EXPECT_EQ(sender.send(message, settingsFor(server)),
              "The mail server refused b@example.org (550 5.1.1 No such user here)");
    EXPECT_THAT(server.mails().at(0).recipients, ElementsAre("a@example.org"));
    server.answerRecipient("a@example.org", "550 \x1B[31m\xFF");
    EXPECT_EQ(sender.send(message, settingsFor(server)),
              "The mail server localhost refused all recipients: 550 5.1.1 No such user here");
    EXPECT_THAT(server.mails(), SizeIs(1));
    server.answerRecipient("b@example.org", "550 \x1B[31m\xFF");
    EXPECT_EQ(sender.send(message, settingsFor(server)),
              "The mail server localhost refused all recipients: 550 ?[31m?");
    server.answerRecipient("a@example.org", "");
    server.answerRecipient("b@example.org", "");
    server.answerMails("554 " + std::string(500, 'x'));
    EXPECT_EQ(sender.send(message, settingsFor(server)),
              "The mail server localhost refused the e-mail: 554 " + std::string(296, 'x'));
    EXPECT_EQ(sender.sent(), 1U);
    EXPECT_EQ(sender.dropped(), 4U);
}

TEST_F(MailSenderTest, OneMalformedRecipientDoesNotStopTheOthers) {
    SmtpStandIn server;
    const MailMessage mixed{{"a@example.org", "no\nbody", "b@example.org", "x"}, "s", "b", false};
    const std::string malformed =
        R"("no?body" is not a valid e-mail address; "x" is not a valid e-mail address)";
    EXPECT_EQ(sender.send(mixed, settingsFor(server)), malformed);
    auto mails = server.mails();
    ASSERT_THAT(mails, SizeIs(1));
    EXPECT_THAT(mails[0].recipients, ElementsAre("a@example.org", "b@example.org"));
    EXPECT_EQ(sender.sent(), 1U);
    EXPECT_EQ(sender.dropped(), 1U);

    server.answerRecipient("b@example.org", "550 Gone");
    EXPECT_EQ(sender.send(mixed, settingsFor(server)),
              "The mail server refused b@example.org (550 Gone); " + malformed);
    EXPECT_EQ(sender.send(mixed, {}), "No mail server is set; " + malformed);
    EXPECT_THAT(server.mails(), SizeIs(2));
}

TEST_F(MailSenderTest, NothingInATextBecomesACommand) {
    SmtpStandIn server;
    const MailMessage attack{{"a@example.org"},
                             "x\r\n.\r\nRCPT TO:<evil@example.org>",
                             "one\r\n.\r\nMAIL FROM:<evil@example.org>\r\n..two\n.\n",
                             false};
    EXPECT_EQ(sender.send(attack, settingsFor(server)), "OK");
    const auto mails = server.mails();
    ASSERT_THAT(mails, SizeIs(1));
    EXPECT_THAT(mails[0].recipients, ElementsAre("a@example.org"));
    const auto mail = readMail(mails[0].text);
    EXPECT_EQ(mail.body, "one\r\n.\r\nMAIL FROM:<evil@example.org>\r\n..two\r\n.\r\n");
    EXPECT_EQ(mail.headers.at("Subject"), "x . RCPT TO:<evil@example.org>");
}

TEST_F(MailSenderTest, SendsTextsOfAnyScriptAndSize) {
    SmtpStandIn server;
    std::string body;
    for (int i = 0; i < 20'000; ++i) {
        body += "\u041F\u0440\u0438\u0432\u0435\u0442, line " + std::to_string(i) + "\r\n";
    }
    EXPECT_EQ(sender.send({{"a@b"}, "\u0414\u0438\u0441\u043A", body, true}, settingsFor(server)),
              "OK");
    EXPECT_EQ(sender.send({{"a@b"}, "", "", false}, settingsFor(server)), "OK");
    const auto mails = server.mails();
    ASSERT_THAT(mails, SizeIs(2));
    const auto mail = readMail(mails[0].text);
    EXPECT_EQ(mail.headers.at("Subject"), "\u0414\u0438\u0441\u043A");
    EXPECT_EQ(mail.headers.at("Content-Type"), "text/html; charset=UTF-8");
    EXPECT_EQ(mail.body, body);
    EXPECT_EQ(readMail(mails[1].text).body, "");
}

TEST_F(MailSenderTest, StopEndsWhatWaits) {
    SmtpStandIn server;
    server.keepSilent();
    MailSender patient;  // waits for a whole minute
    auto answer =
        std::async(std::launch::async, [&] { return patient.send(message, settingsFor(server)); });
    ASSERT_TRUE(waitUntil([&] { return server.connections() == 1; }));
    patient.cancelSends();
    ASSERT_EQ(answer.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(answer.get(), "The service is stopping");
    EXPECT_EQ(patient.send(message, settingsFor(server)), "The service is stopping");
}

TEST_F(MailSenderTest, QueuedMailIsSentInOrder) {
    SmtpStandIn server;
    sender.configure(settingsFor(server));
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(sender.submit({{"a@b"}, std::to_string(i), "", false}));
    }
    const auto mails = server.waitForMails(10);
    ASSERT_THAT(mails, SizeIs(10));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(readMail(mails[static_cast<std::size_t>(i)].text).headers.at("Subject"),
                  std::to_string(i));
    }
    EXPECT_TRUE(waitUntil([&] { return sender.sent() == 10; }));
}

TEST_F(MailSenderTest, TriesAgainOnlyForThoseForWhomThereIsHope) {
    SmtpStandIn server;
    server.answerRecipient("busy@b", "451 Come back later");
    server.answerRecipient("gone@b", "550 No such user");
    ::testing::internal::CaptureStderr();
    {
        // The tries that are left must last until the server has changed its mind.
        MailSender quick(500ms);
        quick.configure(settingsFor(server));
        EXPECT_TRUE(quick.submit({{"ok@b", "busy@b", "gone@b"}, "s", "", false}));
        ASSERT_THAT(server.waitForMails(1), SizeIs(1));
        server.answerRecipient("busy@b", "");
        const auto mails = server.waitForMails(2);
        ASSERT_THAT(mails, SizeIs(2));
        EXPECT_THAT(mails[0].recipients, ElementsAre("ok@b"));
        EXPECT_THAT(mails[1].recipients, ElementsAre("busy@b"));
        EXPECT_EQ(readMail(mails[1].text).headers.at("To"), "ok@b, busy@b, gone@b");
        EXPECT_TRUE(waitUntil([&] { return quick.dropped() == 1; }));
        EXPECT_EQ(quick.sent(), 1U);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<4>An e-mail to gone@b was not sent: 550 No such user\n"
              "<4>An e-mail to busy@b could not be sent yet and will be tried again: 451 Come back "
              "later\n");
}

TEST_F(MailSenderTest, GivesUpAfterFourTries) {
    SmtpStandIn server;
    server.answerMails("451 Not now");
    ::testing::internal::CaptureStderr();
    {
        MailSender quick(20ms);
        quick.configure(settingsFor(server));
        const auto told = std::make_shared<LastResult>();
        EXPECT_TRUE(quick.submit({{"a@b", "c@d"}, "s", "", false, told}));
        EXPECT_TRUE(waitUntil([&] { return quick.dropped() == 1; }));
        EXPECT_EQ(server.connections(), 4U);
        EXPECT_EQ(quick.sent(), 0U);
        EXPECT_EQ(told->summary().failed, 4U);
        EXPECT_EQ(told->summary().problem,
                  "The mail server localhost refused the e-mail: 451 Not now");
    }
    EXPECT_EQ(
        ::testing::internal::GetCapturedStderr(),
        "<4>An e-mail to a@b, c@d could not be sent yet and will be tried again: The mail server "
        "localhost refused the e-mail: 451 Not now\n"
        "<4>An e-mail to a@b was not sent: The mail server localhost refused the e-mail: "
        "451 Not now\n"
        "<4>An e-mail to c@d was not sent: The mail server localhost refused the e-mail: "
        "451 Not now\n");
}

TEST_F(MailSenderTest, OtherSettingsAreTriedAtOnce) {
    SmtpStandIn server;
    MailSender patient;
    EXPECT_TRUE(patient.submit({{"a@b"}, "s", "", false}));
    // Without a server there is nothing to wait for but the pause of half a minute.
    patient.configure(settingsFor(server));
    EXPECT_THAT(server.waitForMails(1), SizeIs(1));
}

TEST_F(MailSenderTest, SaysAtOnceThatThereIsNoServer) {
    ::testing::internal::CaptureStderr();
    MailSender patient;
    EXPECT_TRUE(patient.submit({{"a@b"}, "s", "", false}));
    // The first try, of which the next one is half a minute away.
    patient.finishFirstTries(std::chrono::steady_clock::now() + 1h);
    EXPECT_EQ(
        ::testing::internal::GetCapturedStderr(),
        "<4>An e-mail to a@b could not be sent yet and will be tried again: No mail server is "
        "set\n");
    EXPECT_EQ(patient.dropped(), 0U);
    ::testing::internal::CaptureStderr();
    patient.shutDown();
    ::testing::internal::GetCapturedStderr();
}

TEST_F(MailSenderTest, DrainsItsQueue) {
    SmtpStandIn server;
    ::testing::internal::CaptureStderr();
    {
        MailSender patient;
        patient.finishFirstTries(std::chrono::steady_clock::now() + 1h);
        patient.configure(settingsFor(server));
        server.answerRecipient("busy@b", "451 Later");
        for (int i = 0; i < 20; ++i) {
            EXPECT_TRUE(patient.submit({{"a@b", "busy@b"}, "s", "", false}));
        }
        patient.finishFirstTries(std::chrono::steady_clock::now() + 1h);
        EXPECT_THAT(server.mails(), SizeIs(20));
        server.keepSilent();
        EXPECT_TRUE(patient.submit({{"a@b"}, "s", "", false}));
        patient.finishFirstTries(std::chrono::steady_clock::now() + 10ms);
        EXPECT_EQ(patient.sent() + patient.dropped(), 0U);
        patient.shutDown();
        // The twenty reached one of two.
        EXPECT_EQ(patient.sent(), 20U);
        EXPECT_EQ(patient.dropped(), 21U);
        EXPECT_FALSE(patient.submit({{"a@b"}, "s", "", false}));
    }
    EXPECT_THAT(
        ::testing::internal::GetCapturedStderr(),
        ::testing::EndsWith("<4>The service is stopping; e-mails that were not sent: 21\n"));
}

TEST_F(MailSenderTest, TheQueueIsBounded) {
    SmtpStandIn server;
    server.keepSilent();
    MailSender patient;
    patient.configure(settingsFor(server));
    std::size_t taken = 0;
    for (std::size_t i = 0; i < MailSender::kMostQueued + 10; ++i) {
        taken += patient.submit({{"a@b"}, "s", "", false}) ? 1U : 0U;
    }
    EXPECT_EQ(taken, MailSender::kMostQueued);
    EXPECT_EQ(patient.dropped(), 10U);
    const auto told = std::make_shared<LastResult>();
    EXPECT_FALSE(patient.submit({{"a@b"}, "s", "", false, told}));
    EXPECT_EQ(told->summary().problem, "Too many e-mails are waiting");
    EXPECT_TRUE(waitUntil([&] { return server.connections() == 1; }));
    // The end does not wait for the server.
}

TEST_F(MailSenderTest, QueuedMailGoesToThoseWhoHaveAnAddress) {
    SmtpStandIn server;
    ::testing::internal::CaptureStderr();
    sender.configure(settingsFor(server));
    EXPECT_FALSE(sender.submit({{}, "s", "", false}));
    EXPECT_FALSE(sender.submit({{"x"}, "s", "", false}));
    const auto told = std::make_shared<LastResult>();
    EXPECT_TRUE(sender.submit({{"a@b", "y z@b"}, "s", "", false, told}));
    const auto mails = server.waitForMails(1);
    ASSERT_THAT(mails, SizeIs(1));
    EXPECT_THAT(mails[0].recipients, ElementsAre("a@b"));
    EXPECT_TRUE(waitUntil([&] { return sender.dropped() == 3; }));
    EXPECT_EQ(told->summary().failed, 1U);
    EXPECT_EQ(told->summary().problem, "\"y z@b\" is not a valid e-mail address");
    EXPECT_EQ(sender.sent(), 1U);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<4>An e-mail was not sent: \"x\" is not a valid e-mail address\n"
              "<4>An e-mail was not sent: \"y z@b\" is not a valid e-mail address\n");
}

}  // namespace
}  // namespace quorbel
