#include "service/mail/MailMessage.h"
#include "service/mail/MailServer.h"
#include "service/mail/MailText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Key;
using ::testing::Not;
using testing::readMail;
using ::testing::SizeIs;

const MailStamp kStamp{1700000000, "quorbel.1"};

std::string written(const MailMessage &message) {
    std::vector<MailAddress> recipients;
    for (const std::string &text : message.recipients) {
        recipients.push_back(readMailAddress(text).value());
    }
    return writeMail(message, {"", "quorbel@example.org"}, recipients, kStamp);
}

std::size_t longestLine(std::string_view text) {
    std::size_t longest = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find("\r\n"), text.size());
        longest = std::max(longest, end);
        text.remove_prefix(std::min(end + 2, text.size()));
    }
    return longest;
}

TEST(MailMessageTest, TellsAddressesFromOtherTexts) {
    struct Case {
        std::string_view text;
        std::string_view name;
        std::string_view address;  ///< empty: none
    };
    const std::string longest = std::string(242, 'a') + "@example.org";
    const std::string tooLong = "a" + longest;
    const Case cases[] = {
        {"a@b", "", "a@b"},
        {" root@localhost \r\n", "", "root@localhost"},
        {"first.last+tag@mail.example.org", "", "first.last+tag@mail.example.org"},
        {"o'neil@example.org", "", "o'neil@example.org"},
        {"a@[192.0.2.1]", "", "a@[192.0.2.1]"},
        {"a@[IPv6:2001:db8::1]", "", "a@[IPv6:2001:db8::1]"},
        {"Night shift <night@example.org>", "Night shift", "night@example.org"},
        {"\"Night, shift\" <night@example.org>", "Night, shift", "night@example.org"},
        {"<a@b>", "", "a@b"},
        {longest, "", longest},
        {tooLong, "", ""},
        {"", "", ""},
        {"a", "", ""},
        {"@b", "", ""},
        {"a@", "", ""},
        {"a@b@c", "", ""},
        {"a b@c", "", ""},
        {"a@b c", "", ""},
        {".a@b", "", ""},
        {"a.@b", "", ""},
        {"a..b@c", "", ""},
        {"a@.b", "", ""},
        {"a@b.", "", ""},
        {"a@[]", "", ""},
        {"a@b>\r\nRCPT TO:<c@d", "", ""},
        {"a@b\r\nDATA", "", ""},
        {"x <a@b> y", "", ""},
        {"<a@b", "", ""},
        {"j\u00FCrgen@example.org", "", ""},
        {"a@ex\u00E4mple.org", "", ""},
        {std::string_view("a\0@b", 4), "", ""},
    };
    for (const Case &c : cases) {
        const auto address = readMailAddress(c.text);
        ASSERT_EQ(address.has_value(), !c.address.empty()) << c.text;
        if (address) {
            EXPECT_EQ(address->address, c.address);
            EXPECT_EQ(address->name, c.name);
        }
    }
}

TEST(MailMessageTest, HasTheHeadersOfAMail) {
    EXPECT_EQ(written({{"a@b", "Night shift <c@d>"}, "Disk full", "Host:alpha\r\n", false}),
              "Date: Tue, 14 Nov 2023 22:13:20 +0000\r\n"
              "Message-ID: <quorbel.1@example.org>\r\n"
              "From: quorbel@example.org\r\n"
              "To: a@b,\r\n"
              " Night shift\r\n"
              " <c@d>\r\n"
              "Subject: Disk full\r\n"
              "Auto-Submitted: auto-generated\r\n"
              "MIME-Version: 1.0\r\n"
              "Content-Type: text/plain; charset=UTF-8\r\n"
              "Content-Transfer-Encoding: quoted-printable\r\n"
              "\r\n"
              "Host:alpha\r\n");
    EXPECT_THAT(written({{"a@b"}, "", "", true}), HasSubstr("Content-Type: text/html; "));
}

TEST(MailMessageTest, SubjectsComeThrough) {
    struct Case {
        std::string subject;
        std::string read;
    };
    std::string many;
    for (int i = 0; i < 100; ++i) {
        many += "\u00E4\u20AC\U0001F514";
    }
    const Case cases[] = {
        {"", ""},
        {"Disk full", "Disk full"},
        {"Gr\u00FC\u00DFe", "Gr\u00FC\u00DFe"},
        {many, many},
        {std::string(998, 'x'), std::string(998, 'x')},
        {"=?UTF-8?B?eA==?=", "=?UTF-8?B?eA==?="},
        {"a\tb", "a b"},
        {"  a  b  ", "a  b"},
        {"a\x1b[31mb", "a [31mb"},
        {"bad \xFF byte", "bad \uFFFD byte"},
        {"x\r\nBcc: c@d", "x Bcc: c@d"},
        {"x\nBcc: c@d", "x Bcc: c@d"},
        {"x\r\n\r\nbody", "x body"},
        {std::string("a\0b", 3), "a b"},
    };
    for (const Case &c : cases) {
        const std::string text = written({{"a@b"}, c.subject, "body", false});
        const auto mail = readMail(text);
        // One encoded word cannot hold another, so what looks like one is read once.
        if (!c.subject.starts_with("=?")) {
            EXPECT_EQ(mail.headers.at("Subject"), c.read);
        } else {
            EXPECT_THAT(text, Not(HasSubstr(c.subject)));
        }
        EXPECT_EQ(mail.body, "body\r\n");
        EXPECT_THAT(mail.headers, SizeIs(9)) << text;
        EXPECT_THAT(mail.headers, Not(Contains(Key("Bcc"))));
        EXPECT_LE(longestLine(text), 78U);
    }
}

TEST(MailMessageTest, BodiesComeThrough) {
    struct Case {
        std::string body;
        std::string read;
        std::string_view encoding = "quoted-printable";
    };
    std::string all;
    for (int byte = 0; byte < 0x80; ++byte) {
        all += byte == '\r' || byte == '\n' ? '.' : static_cast<char>(byte);
    }
    std::string foreign;
    for (int i = 0; i < 500; ++i) {
        foreign += "\u0434\u0438\u0441\u043A ";
    }
    const Case cases[] = {
        {"", ""},
        {"one\ntwo\r\nthree\rfour", "one\r\ntwo\r\nthree\r\nfour\r\n"},
        {"\n\n", "\r\n\r\n"},
        {".\n..\n.x\n", ".\r\n..\r\n.x\r\n"},
        {"blank at end \ntab\t\n", "blank at end \r\ntab\t\r\n"},
        {"a = b", "a = b\r\n"},
        {"From here", "From here\r\n"},
        {std::string(5000, 'x'), std::string(5000, 'x') + "\r\n"},
        {all, all + "\r\n"},
        {"a few \u00FCmlauts in a longer text", "a few \u00FCmlauts in a longer text\r\n"},
        {"bad \xC3 byte in a text that is long enough",
         "bad \uFFFD byte in a text that is long enough\r\n"},
        {foreign, foreign + "\r\n", "base64"},
    };
    for (const Case &c : cases) {
        const std::string text = written({{"a@b"}, "s", c.body, false});
        const auto mail = readMail(text);
        EXPECT_EQ(mail.body, c.read);
        EXPECT_EQ(mail.headers.at("Content-Transfer-Encoding"), c.encoding);
        EXPECT_LE(longestLine(text), 78U);
        EXPECT_TRUE(std::ranges::all_of(text, [](char byte) {
            return byte == '\r' || byte == '\n' || byte == '\t' || (byte >= ' ' && byte <= '~');
        }));
        EXPECT_THAT(text, Not(HasSubstr("\r\nFrom ")));
    }
}

TEST(MailMessageTest, NamesComeThrough) {
    const std::string names[] = {"Night shift", "M\u00FCller, Ops <x>", "\"quoted\"",
                                 "a@b",         "x\r\nBcc: c@d",        std::string(300, 'n')};
    for (const std::string &name : names) {
        const auto mail =
            readMail(writeMail({{}, "s", "b", false}, {name, "q@e"}, {{name, "a@b"}}, kStamp));
        std::string clean = name;
        if (const auto end = clean.find("\r\n"); end != std::string::npos) {
            clean.replace(end, 2, " ");
        }
        EXPECT_EQ(mail.headers.at("From"), clean + " <q@e>");
        EXPECT_EQ(mail.headers.at("To"), clean + " <a@b>");
        EXPECT_THAT(mail.headers, SizeIs(9));
    }
}

TEST(MailServerTest, ReadsTheSettings) {
    using Security = MailServer::Security;
    const MailServer nothing = mailServerFrom({});
    EXPECT_EQ(nothing, MailServer());
    EXPECT_EQ(nothing.security, Security::kNotChosen);
    EXPECT_EQ(nothing.port, 25);
    EXPECT_EQ(nothing.timeoutMinutes, 1);

    const MailServer all = mailServerFrom({{"actionsEmailServer", " mail.example.org "},
                                           {"actionsEmailPort", 587},
                                           {"actionsEmailSender", "q@example.org"},
                                           {"actionsEmailUsername", " user "},
                                           {"actionsEmailPassword", " pass word "},
                                           {"actionsEmailSecurity", "STARTTLS"},
                                           {"actionsEmailTimeout", 7}});
    EXPECT_EQ(all, (MailServer{"mail.example.org", 587, Security::kStartTls, 7, "q@example.org",
                               " user ", " pass word ", ""}));

    struct Case {
        Dictionary settings;
        MailServer server;
    };
    const Case cases[] = {
        {{{"actionsEmailPort", 0}}, {}},
        {{{"actionsEmailPort", -1}}, {}},
        {{{"actionsEmailPort", 65536}}, {}},
        {{{"actionsEmailPort", "587"}}, {}},
        {{{"actionsEmailServer", 5}}, {}},
        {{{"actionsEmailSecurity", "None"}}, {"", 25, Security::kNone, 1, "", "", "", ""}},
        {{{"actionsEmailSecurity", ""}}, {}},
        {{{"actionsEmailSecurity", "SSL/TLS"}}, {"", 25, Security::kTls, 1, "", "", "", ""}},
        {{{"actionsEmailSecurity", "ssl/tls"}},
         {"", 25, Security::kUnknown, 1, "", "", "", "ssl/tls"}},
        {{{"actionsEmailTimeout", 0}}, {}},
        {{{"actionsEmailTimeout", -3}}, {}},
        {{{"actionsEmailTimeout", 100000}}, {"", 25, Security::kNotChosen, 60, "", "", "", ""}},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(mailServerFrom(c.settings), c.server);
    }
}

}  // namespace
}  // namespace quorbel
