#include "load/SoakForm.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "platform/UniqueFd.h"
#include "platform/bus/CommandSender.h"
#include "service/mail/MailText.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/SmtpStandIn.h"
#include "support/TemporaryFolder.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::PrivateBus;
using testing::ServiceProcess;
using ::testing::SizeIs;
using testing::SmtpStandIn;
using ::testing::StartsWith;
using testing::TemporaryFolder;
using testing::TestAuthority;
using testing::waitUntil;

/// The real service on a bus, and what the front-end says to it.
struct DeliveryTest : ::testing::Test {
    DeliveryTest() {
        const auto file = folder.write("ca.pem", authority.certificate());
        setenv("SSL_CERT_FILE", file.c_str(), 1);
        service =
            std::make_unique<ServiceProcess>(ServiceProcess::Setup{library.path(), bus.address()});
        EXPECT_TRUE(service->waitForJournal("Connected to the system bus"));
    }
    ~DeliveryTest() override { unsetenv("SSL_CERT_FILE"); }

    /// Sends a command and waits for its reply.
    std::string reply(Dictionary command) {
        std::mutex mutex;
        std::vector<std::string> replies;
        CommandSender sender([&](const std::string &text) {
            const std::lock_guard lock(mutex);
            replies.push_back(text);
        });
        sender.send(std::move(command));
        waitUntil([&] {
            const std::lock_guard lock(mutex);
            return !replies.empty();
        });
        const std::lock_guard lock(mutex);
        return replies.empty() ? "(no reply)" : replies[0];
    }
    std::string save(Dictionary settings) {
        return reply({{"command", "save"}, {"Settings", std::move(settings)}});
    }

    void sendMessage(std::string_view message) const {
        const UniqueFd datagrams(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(service->port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_GT(sendto(datagrams.get(), message.data(), message.size(), 0,
                         reinterpret_cast<sockaddr *>(&address), sizeof address),
                  0);
    }

    const TestAuthority authority;
    const TemporaryFolder folder;
    const TemporaryFolder library;
    const PrivateBus bus;
    std::unique_ptr<ServiceProcess> service;
};

TEST_F(DeliveryTest, SendsTheTestMail) {
    SmtpStandIn server({SmtpStandIn::Security::kStartTls, authority.issue(), "user", "s3cret"});
    const Dictionary email{
        {"command", "email"},
        {"Recipients", Array{"first@example.org", "second@example.org"}},
        {"Subject", "Gr\u00FC\u00DFe"},
        {"Body", "Date:12:00\r\nPriority:Local7.Debug\r\n.\r\nMessage:Quorbel - Test message\r\n"},
        {"Html", false}};
    EXPECT_EQ(reply(email), "No mail server is set");
    Dictionary settings{
        {"actionsEmailPort", server.port()}, {"actionsEmailTimeout", 1},
        {"actionsEmailServer", "localhost"}, {"actionsEmailSender", "quorbel@example.org"},
        {"actionsEmailUsername", "user"},    {"actionsEmailPassword", "s3cret"},
        {"actionsEmailSecurity", "STARTTLS"}};
    ASSERT_EQ(save(settings), "OK");
    EXPECT_EQ(reply(email), "OK");
    // As the test sheet sends it when there are no templates.
    EXPECT_EQ(reply({{"command", "email"}, {"Recipients", Array{"first@example.org"}}}), "OK");
    const auto mails = server.mails();
    ASSERT_THAT(mails, SizeIs(2));
    EXPECT_TRUE(mails[0].wasEncrypted);
    EXPECT_TRUE(mails[0].wasLoggedIn);
    EXPECT_THAT(mails[0].recipients, ElementsAre("first@example.org", "second@example.org"));
    const auto mail = testing::readMail(mails[0].text);
    EXPECT_EQ(mail.headers.at("Subject"), "Gr\u00FC\u00DFe");
    EXPECT_EQ(mail.body,
              "Date:12:00\r\nPriority:Local7.Debug\r\n.\r\nMessage:Quorbel - Test message\r\n");
    settings.set("actionsEmailPassword", "other-s3cret");
    ASSERT_EQ(save(settings), "OK");
    EXPECT_THAT(reply(email), StartsWith("The mail server localhost refused the user name"));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("e-mails sent 2, e-mails dropped 2"));
    EXPECT_THAT(service->journal(), Not(HasSubstr("s3cret")));
}

/// A mail server of another maker, which takes nothing from whoever does not log in.
class OtherMailServer {
public:
    OtherMailServer(const std::string &security, const TestAuthority::Issued &identity)
        : m_pipe(popen(commandFor(security, identity).c_str(), "w"), pclose) {
        EXPECT_TRUE(waitUntil([this] { return readFile(m_folder.path() / "port").has_value(); }));
    }

    [[nodiscard]] std::int64_t port() const {
        return integerValue(readFile(m_folder.path() / "port").value_or(""));
    }
    /// A line for each mail, as its own reader sees it.
    [[nodiscard]] std::string mails() const {
        return readFile(m_folder.path() / "mails").value_or("");
    }

private:
    [[nodiscard]] std::string commandFor(const std::string &security,
                                         const TestAuthority::Issued &identity) const {
        return "exec /usr/bin/python3 -W ignore '" QUORBEL_MAIL_SERVER "' " + security + " '" +
               m_folder.write("cert.pem", identity.certificate).string() + "' '" +
               m_folder.write("key.pem", identity.key).string() + "' '" + m_folder.path().string() +
               "'";
    }

    TemporaryFolder m_folder;
    std::unique_ptr<FILE, int (*)(FILE *)> m_pipe;  ///< it ends when this closes
};

struct Secured {
    const char *setting;
    const char *option;
    bool isEncrypted;

    friend void PrintTo(const Secured &secured, std::ostream *stream) {
        *stream << secured.setting;
    }
};

struct OtherMailServerTest : DeliveryTest, ::testing::WithParamInterface<Secured> {};

TEST_P(OtherMailServerTest, GetsTheMails) {
    const OtherMailServer server(GetParam().option, authority.issue());
    ASSERT_EQ(save({{"actionsEmailPort", server.port()},
                    {"actionsEmailServer", "localhost"},
                    {"actionsEmailSender", "quorbel@example.org"},
                    {"actionsEmailUsername", "user"},
                    {"actionsEmailPassword", "s3cret"},
                    {"actionsEmailSecurity", GetParam().setting}}),
              "OK");
    std::string expected;
    for (int i = 0; i < load::soakOr(300, 3); ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(reply({{"command", "email"},
                         {"Recipients", Array{"first@example.org", "second@example.org"}},
                         {"Subject", "Gr\u00FC\u00DFe " + number},
                         {"Body", "<b>" + number + "</b>\r\n.\r\n\u2713\r\n"},
                         {"Html", true}}),
                  "OK");
        expected += R"({"sender": "quorbel@example.org", )"
                    R"("recipients": ["first@example.org", "second@example.org"], )"
                    R"("subject": "Gr\u00fc\u00dfe )";
        expected += number;
        expected += R"(", "type": "text/html", "body": "<b>)";
        expected += number;
        expected += R"(</b>\r\n.\r\n\u2713\r\n", "encrypted": )";
        expected += GetParam().isEncrypted ? "true" : "false";
        expected += R"(, "login": "user"})";
        expected += '\n';
    }
    EXPECT_EQ(server.mails(), expected);
    EXPECT_EQ(service->terminate(), 0);
    load::figure(std::to_string(std::ranges::count(expected, '\n')) + " mails read back, " +
                 GetParam().setting);
}

constexpr Secured kSecured[] = {
    {"None", "none", false}, {"STARTTLS", "starttls", true}, {"SSL/TLS", "tls", true}};
INSTANTIATE_TEST_SUITE_P(Delivery, OtherMailServerTest, ::testing::ValuesIn(kSecured),
                         [](const auto &test) { return std::string(test.param.option); });

TEST_F(DeliveryTest, SendsTheMailOfAnAction) {
    SmtpStandIn server;
    const Dictionary action{
        {"Name", "Disks"},
        {"IP", "0.0.0.0"},
        {"Message", "*disk*"},
        {"Mask", "0"},
        {"Facility", "Any"},
        {"Severity", "Any"},
        {"runCommand", Dictionary()},
        {"sendEmail", Dictionary{{"Recipients", Array{"ops@example.org"}}}},
        {"setEvent", Dictionary()},
    };
    ASSERT_EQ(save({{"actionsEmailPort", server.port()},
                    {"actionsEmailServer", "localhost"},
                    {"actionsEmailSender", "quorbel@example.org"},
                    {"actionsFormatSubject", "$priority: $message"},
                    {"actionsFormatBody", "Host:$host\r\n"},
                    {"actionsArray", Array{action}}}),
              "OK");
    sendMessage("<187>all is well");
    sendMessage("<187>disk full");
    const auto mails = server.waitForMails(1);
    ASSERT_THAT(mails, SizeIs(1));
    EXPECT_THAT(mails[0].recipients, ElementsAre("ops@example.org"));
    const auto mail = testing::readMail(mails[0].text);
    EXPECT_EQ(mail.headers.at("Subject"), "Local7.Error: disk full");
    EXPECT_EQ(mail.body, "Host:127.0.0.1\r\n");
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("e-mails sent 1, e-mails dropped 0"));
}

TEST_F(DeliveryTest, EndsAlthoughAMailServerDoesNotAnswer) {
    SmtpStandIn server;
    server.keepSilent();
    ASSERT_EQ(save({{"actionsEmailPort", server.port()},
                    {"actionsEmailServer", "localhost"},
                    {"actionsEmailSender", "quorbel@example.org"}}),
              "OK");
    CommandSender sender([](const std::string &) {});
    sender.send({{"command", "email"}, {"Recipients", Array{"a@b"}}});
    ASSERT_TRUE(waitUntil([&] { return server.connections() == 1; }));
    EXPECT_EQ(service->terminate(), 0);
}

TEST_F(DeliveryTest, ExportsWhatIsStored) {
    sendMessage("<187>disk full, retrying");
    ASSERT_TRUE(waitUntil([&] {
        return std::ranges::any_of(listFolder(library.path()),
                                   [](const auto &name) { return hasExtension(name, "log"); });
    }));
    const auto text = library.path() / "events.csv";
    const auto database = library.path() / "events.db";
    ASSERT_EQ(save({{"textInterval", 1},
                    {"textLocation", text.string()},
                    {"databaseInterval", 1},
                    {"databaseLocation", database.string()},
                    {"dateFormat", "'then'"}}),
              "OK");
    EXPECT_TRUE(waitUntil([&] {
        return readFile(text) ==
               "Date,Priority,Host,Message\nthen,Local7.Error,127.0.0.1,disk full, retrying\n";
    }));
    const std::string query = "test \"$(sqlite3 '" + database.string() +
                              "' 'SELECT date, priority, host, message FROM events')\" = "
                              "'then|Local7.Error|127.0.0.1|disk full, retrying'";
    EXPECT_TRUE(waitUntil([&] {
        return std::filesystem::exists(database) &&
               std::system(query.c_str()) == 0;  // NOLINT(cert-env33-c)
    }));
    ASSERT_EQ(
        save({{"textInterval", 1}, {"textLocation", (library.path() / "Quorbel.ini").string()}}),
        "OK");
    EXPECT_TRUE(service->waitForJournal("Quorbel.ini is in the service's own folder"));
    EXPECT_EQ(service->terminate(), 0);
}

}  // namespace
}  // namespace quorbel
