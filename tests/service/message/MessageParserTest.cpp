#include "service/message/MessageParser.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace quorbel {
namespace {

struct Case {
    std::string_view sent;
    std::string_view priority;
    std::string_view text;
    bool wellFormed = true;
};

using namespace std::string_view_literals;

constexpr Case kCases[] = {
    // The front-end's own test message.
    {"<191>Quorbel - Test message", "Local7.Debug", "Quorbel - Test message"},
    // logger, in its three forms.
    {"<13>Nov 21 02:54:07 web1 tag: text", "User.Notice", "tag: text"},
    {"<13>Nov 21 02:54:07 web1 tag[77]: text", "User.Notice", "tag[77]: text"},
    {"<13>1 2026-11-21T02:54:07.123456+00:00 web1 tag - - - text", "User.Notice", "tag: text"},
    {"<13>1 2026-11-21T02:54:07.123456+00:00 web1 tag 77 - - text", "User.Notice", "tag[77]: text"},
    {R"(<187>1 2026-11-21T02:54:07Z web1 root - - [timeQuality tzKnown="1"] disk full, retrying)",
     "Local7.Error", "root: disk full, retrying"},
    {R"(<187>1 - web1 - - - [timeQuality tzKnown="1" isSynced="0"] bare)", "Local7.Error", "bare"},
    {R"(<187>1 - web1 - - - [timeQuality][a b="]"][timeQualityX] m)", "Local7.Error",
     R"([a b="]"][timeQualityX] m)"},
    {"<13>1 - - - - - - text", "User.Notice", "text"},
    // The examples of RFC 3164, 5.4.
    {"<34>Oct 11 22:14:15 mymachine su: 'su root' failed for lonvick on /dev/pts/8",
     "Auth.Critical", "su: 'su root' failed for lonvick on /dev/pts/8"},
    {"Use the BFG!", "User.Notice", "Use the BFG!", false},
    {"<165>Aug 24 05:34:00 CST 1987 mymachine myproc[10]: %% It's time to make the do-nuts. %%",
     "Local4.Notice", "1987 mymachine myproc[10]: %% It's time to make the do-nuts. %%"},
    {"<0>1990 Oct 22 10:52:01 TZ-6 scapegoat.dmz.example.org 10.1.2.3 sched[0]: That's All Folks!",
     "Kern.Emergency",
     "1990 Oct 22 10:52:01 TZ-6 scapegoat.dmz.example.org 10.1.2.3 sched[0]: That's All Folks!"},
    // The examples of RFC 5424, 6.5.
    {"<34>1 2003-10-11T22:14:15.003Z mymachine.example.com su - ID47 - \xEF\xBB\xBF'su root' "
     "failed for lonvick on /dev/pts/8",
     "Auth.Critical", "ID47 su: 'su root' failed for lonvick on /dev/pts/8"},
    {"<165>1 2003-08-24T05:14:15.000003-07:00 192.0.2.1 myproc 8710 - - %% It's time.",
     "Local4.Notice", "myproc[8710]: %% It's time."},
    {"<165>1 2003-10-11T22:14:15.003Z mymachine.example.com evntslog - ID47 "
     R"([exampleSDID@32473 iut="3" eventSource="Application" eventID="1011"] )"
     "\xEF\xBB\xBF"
     "An application event",
     "Local4.Notice",
     R"(ID47 [exampleSDID@32473 iut="3" eventSource="Application" eventID="1011"] evntslog: An )"
     "application event"},
    {R"(<165>1 2003-10-11T22:14:15.003Z host evntslog - ID47 [a@1 b="3"][c@1 d="high"])",
     "Local4.Notice", R"(ID47 [a@1 b="3"][c@1 d="high"] evntslog:)"},
    // MSGID alone says what has happened.
    {R"(<14>1 2026-11-21T08:00:00Z fw RT_FLOW - RT_FLOW_SESSION_DENY [j@2636 source-port="53"])",
     "User.Informational", R"(RT_FLOW_SESSION_DENY [j@2636 source-port="53"] RT_FLOW:)"},
    {"<14>1 - h - - ID - text", "User.Informational", "ID text"},
    {"<14>1 - h - - ID -", "User.Informational", "ID"},
    {R"(<14>1 - h - 7 ID [timeQuality tzKnown="1"] text)", "User.Informational", "ID [7]: text"},
    // RFC 5424, other forms.
    {"<14>1 - host app - - -", "User.Informational", "app:"},
    {"<14>1 - host - 12 - - text", "User.Informational", "[12]: text"},
    {"<14>1 - - - - - -", "User.Informational", ""},
    {"<14>1 - - - - - - ", "User.Informational", ""},
    {"<14>1 2020-01-01T00:00:00 host app - - -  two blanks", "User.Informational",
     "app:  two blanks"},
    {R"(<14>1 - h a - - [x y="quote \" bracket \] back \\"] m)", "User.Informational",
     R"([x y="quote \" bracket \] back \\"] a: m)"},
    {R"(<14>1 - h a - - [x y="]"][z] m)", "User.Informational", R"([x y="]"][z] a: m)"},
    // Headers of RFC 5424 that break off.
    {"<14>1 - host app", "User.Informational", "host app", false},
    {"<14>1 2003-10-11T22:14:15.003Z ", "User.Informational", "", false},
    {"<14>1 - host app 12 ID", "User.Informational", "host app 12 ID", false},
    {"<14>1 - host app 12 ID message without data", "User.Informational",
     "ID app[12]: message without data", false},
    {R"(<14>1 - host app 12 ID [open b="x" message)", "User.Informational",
     R"(ID app[12]: [open b="x" message)", false},
    {"<14>1 - host app 12 ID -nospace", "User.Informational", "ID app[12]: -nospace", false},
    {"<14>1 - host  app 12 ID -", "User.Informational", "host  app 12 ID -", false},
    // Not RFC 5424 although a version seems to be there.
    {"<14>1 apples", "User.Informational", "1 apples"},
    {"<14>1 Oct 11 22:14:15 host tag: x", "User.Informational", "1 Oct 11 22:14:15 host tag: x"},
    {"<14>2 - host app - - - x", "User.Informational", "2 - host app - - - x"},
    // RFC 3164: time stamps.
    {"<14>Oct  1 22:14:15 host tag: x", "User.Informational", "tag: x"},
    {"<14>Oct 1 22:14:15 host tag: x", "User.Informational", "tag: x"},
    {"<14>Oct 01 2:14:15 host tag: x", "User.Informational", "Oct 01 2:14:15 host tag: x"},
    {"<14>Oct 11 2023 22:14:15 host tag: x", "User.Informational", "tag: x"},
    {"<14>Oct 11 22:14:15.123 host tag: x", "User.Informational", "tag: x"},
    {"<14>2023-10-11T22:14:15.003Z host tag: x", "User.Informational", "tag: x"},
    {"<14>2023-10-11T22:14:15+0200 host tag: x", "User.Informational", "tag: x"},
    {"<14>2023-10-11 22:14:15 host tag: x", "User.Informational",
     "2023-10-11 22:14:15 host tag: x"},
    {"<14>oct 11 22:14:15 host tag: x", "User.Informational", "oct 11 22:14:15 host tag: x"},
    {"<14>Oct 11 22:14 host tag: x", "User.Informational", "Oct 11 22:14 host tag: x"},
    {"<14>Oct 11 22:14:15", "User.Informational", ""},
    {"<14>Oct 11 22:14:15 ", "User.Informational", ""},
    {"<14>Oct 11 22:14:15tag: x", "User.Informational", "Oct 11 22:14:15tag: x"},
    // Switches and routers.
    {"<189>*Mar  1 18:46:11.123: %SYS-5-CONFIG_I: Configured from console", "Local7.Notice",
     "%SYS-5-CONFIG_I: Configured from console"},
    {"<189>29: *Mar  1 18:46:11: %SYS-5-CONFIG_I: Configured", "Local7.Notice",
     "29: *Mar  1 18:46:11: %SYS-5-CONFIG_I: Configured"},
    {"<189>Mar  1 18:46:11 10.1.1.1: %LINK-3-UPDOWN: down", "Local7.Notice",
     "10.1.1.1: %LINK-3-UPDOWN: down"},
    {"<134>date=2023-10-11 time=22:14:15 devname=FW type=traffic", "Local0.Informational",
     "date=2023-10-11 time=22:14:15 devname=FW type=traffic"},
    {"<30>device=FW date=2023-10-11 log_id=01", "Daemon.Informational",
     "device=FW date=2023-10-11 log_id=01"},
    // RFC 3164: host names and tags.
    {"<14>Oct 11 22:14:15 tag: no host", "User.Informational", "tag: no host"},
    {"<14>Oct 11 22:14:15 sshd[123]: no host", "User.Informational", "sshd[123]: no host"},
    {"<14>Oct 11 22:14:15 fe80::1 tag: x", "User.Informational", "tag: x"},
    {"<14>Oct 11 22:14:15 - tag: x", "User.Informational", "tag: x"},
    {"<14>Oct 11 22:14:15 host", "User.Informational", "host"},
    {"<14>Oct 11 22:14:15 host text without a tag", "User.Informational", "text without a tag"},
    {"<14>Oct 11 22:14:15 host  indented", "User.Informational", " indented"},
    {"<14>Oct 11 22:14:15   host tag: x", "User.Informational", "tag: x"},
    {"<46>Oct 11 22:14:15 -- MARK --", "Syslog.Informational", "-- MARK --"},
    {"<14>Oct 11 22:14:15 Message forwarded from gate: su: x", "User.Informational",
     "Message forwarded from gate: su: x"},
    {"<14>Oct 11 22:14:15 Forwarded from gate: su: x", "User.Informational",
     "Forwarded from gate: su: x"},
    {"<14>Oct 11 22:14:15 last message repeated 3 times", "User.Informational",
     "last message repeated 3 times"},
    {"<14>Oct 11 22:14:15 message repeated 2 times: [ x]", "User.Informational",
     "message repeated 2 times: [ x]"},
    {"<14>Oct 11 22:14:15 host Message forwarded from gate: x", "User.Informational",
     "Message forwarded from gate: x"},
    {"<14>Oct 11 22:14:15 Message of a host by that name", "User.Informational",
     "of a host by that name"},
    {"<14>Oct 11 22:14:15 h\xC3\xB6st tag: x", "User.Informational", "h\xC3\xB6st tag: x"},
    {"<14>tag: no time stamp", "User.Informational", "tag: no time stamp"},
    {"<14> text after a blank", "User.Informational", " text after a blank"},
    {"<14>", "User.Informational", ""},
    // Priorities.
    {"<0>x", "Kern.Emergency", "x"},
    {"<192>x", "User.Notice", "<192>x", false},
    {"<999>x", "User.Notice", "<999>x", false},
    {"<1000>x", "User.Notice", "<1000>x", false},
    {"<00>x", "User.Notice", "<00>x", false},
    {"<013>x", "User.Notice", "<013>x", false},
    {"<>x", "User.Notice", "<>x", false},
    {"<-1>x", "User.Notice", "<-1>x", false},
    {"<1a>x", "User.Notice", "<1a>x", false},
    {"<13x", "User.Notice", "<13x", false},
    {"<13", "User.Notice", "<13", false},
    {"<", "User.Notice", "<", false},
    {" <13>x", "User.Notice", " <13>x", false},
    {"Oct 11 22:14:15 host tag: x", "User.Notice", "Oct 11 22:14:15 host tag: x", false},
    // Octets around the message.
    {"<14>line end\n", "User.Informational", "line end"},
    {"<14>line ends\r\n\r\n", "User.Informational", "line ends"},
    {"<14>NUL\0"sv, "User.Informational", "NUL"},
    {"<14>in\nthe\0middle"sv, "User.Informational", "in\nthe\0middle"sv},
    {"\xEF\xBB\xBF<14>mark in front", "User.Informational", "mark in front"},
    {"<14>\xEF\xBB\xBFtext", "User.Informational", "text"},
    {"<14>\xEF\xBB\xBFOct 11 22:14:15 host tag: x", "User.Informational", "tag: x"},
    {"<14>Oct 11 22:14:15 host \xEF\xBB\xBFtag: x", "User.Informational", "tag: x"},
    {"<14>\xEF\xBB\xBF"
     "1 - host app - - - x",
     "User.Informational", "app: x"},
    {"<14>a\xEF\xBB\xBF"
     "b",
     "User.Informational",
     "a\xEF\xBB\xBF"
     "b"},
    {"<14>\xFF\xFE", "User.Informational", "\xFF\xFE"},
};

TEST(MessageParserTest, ReadsRealMessages) {
    MessageParser parser;
    for (const Case &c : kCases) {
        SCOPED_TRACE(std::string(c.sent));
        const auto parsed = parser.parse(c.sent);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->priority.text(), c.priority);
        EXPECT_EQ(parsed->text, c.text);
        EXPECT_EQ(parsed->wellFormed, c.wellFormed);
    }
}

TEST(MessageParserTest, FindsNothingInEmptyMessages) {
    MessageParser parser;
    for (const std::string_view sent : {""sv, "\n"sv, "\r\n"sv, "\0\0"sv, "\xEF\xBB\xBF"sv}) {
        EXPECT_FALSE(parser.parse(sent)) << sent.size();
    }
}

// Whatever is cut off, nothing is read behind the end (the sanitizers see that) and a priority that
// is whole stays what it is.
TEST(MessageParserTest, TakesEveryBeginningOfAMessage) {
    MessageParser parser;
    for (const Case &c : kCases) {
        for (std::size_t length = 1; length < c.sent.size(); ++length) {
            const std::string sent(c.sent.substr(0, length));
            const auto parsed = parser.parse(sent);
            if (parsed && c.priority != "User.Notice" && length > 8) {
                EXPECT_EQ(parsed->priority.text(), c.priority) << sent;
            }
        }
    }
}

/// The priority that a message begins with, found by writing each of them.
std::optional<Priority> priorityByTrial(std::string_view message) {
    for (unsigned value = 0; value < 192; ++value) {
        if (message.starts_with('<' + std::to_string(value) + '>')) {
            return Priority::fromValue(value);
        }
    }
    return std::nullopt;
}

TEST(MessageParserTest, TellsPrioritiesFromWhatLooksLikeThem) {
    constexpr std::string_view kCharacters = "<>0129 ";
    constexpr std::size_t kLength = 5;
    MessageParser parser;
    std::size_t wellFormed = 0;
    std::size_t all = 1;
    for (std::size_t i = 0; i < kLength; ++i) {
        all *= kCharacters.size();
    }
    for (std::size_t number = 0; number < all; ++number) {
        std::string sent;
        for (std::size_t rest = number; sent.size() < kLength; rest /= kCharacters.size()) {
            sent += kCharacters[rest % kCharacters.size()];
        }
        for (const std::string &message : {sent, sent + 'x'}) {
            const auto parsed = parser.parse(message);
            const auto expected = priorityByTrial(message);
            ASSERT_TRUE(parsed);
            ASSERT_EQ(parsed->wellFormed, expected.has_value()) << message;
            ASSERT_EQ(parsed->priority, expected.value_or(kAssumedPriority)) << message;
            wellFormed += parsed->wellFormed ? 1U : 0U;
        }
    }
    EXPECT_GT(wellFormed, 400U);
}

TEST(MessageParserTest, TellsTheHostThatIsNamed) {
    struct HostCase {
        std::string_view sent;
        std::string_view hostName;
        std::string_view text;
    };
    const std::string longName(300, 'n');
    const std::string longMessage = "<13>1 - " + longName + " a - - - text";
    const HostCase cases[] = {
        {"<13>Nov 21 02:54:07 web1 tag: text", "web1", "tag: text"},
        {"<13>Nov 21 02:54:07 web-1.example.org tag: text", "web-1.example.org", "tag: text"},
        {"<13>Nov 21 02:54:07 10.1.2.3 tag: text", "10.1.2.3", "tag: text"},
        {"<13>Nov 21 02:54:07 2001:db8::1 tag: text", "2001:db8::1", "tag: text"},
        {"<13>2026-11-21T02:54:07Z web1 tag: text", "web1", "tag: text"},
        {"<13>Nov 21 02:54:07 - tag: text", "", "tag: text"},
        {"<13>Nov 21 02:54:07 tag: text", "", "tag: text"},
        {"<13>Nov 21 02:54:07 last message repeated 2 times", "", "last message repeated 2 times"},
        {"<13>Nov 21 02:54:07 web1", "", "web1"},
        {"<13>web1 tag: text", "", "web1 tag: text"},
        {"Nov 21 02:54:07 web1 tag: text", "", "Nov 21 02:54:07 web1 tag: text"},
        {"<13>1 2026-11-21T02:54:07Z web1 tag - - - text", "web1", "tag: text"},
        {"<13>1 - web1 - - - - text", "web1", "text"},
        {"<13>1 - - tag - - - text", "", "tag: text"},
        {"<13>1 - we,b\x01 tag - - - text", "we,b\x01", "tag: text"},
        {longMessage, longName, "a: text"},
        {"<13>1 - web1 tag", "", "web1 tag"},
        {"<13>1 - web1 tag - - [broken text", "web1", "tag: [broken text"},
        {"<13>1 -  tag - - - text", "", " tag - - - text"},
    };
    MessageParser parser;
    for (const HostCase &c : cases) {
        const auto parsed = parser.parse(c.sent);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->hostName, c.hostName) << c.sent;
        EXPECT_EQ(parsed->text, c.text) << c.sent;
    }
}

TEST(MessageParserTest, KnowsTheMonths) {
    constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    MessageParser parser;
    for (std::size_t at = 0; at + 3 <= kMonths.size(); ++at) {
        const std::string stamped =
            std::string(kMonths.substr(at, 3)) + " 21 02:54:07 web1 tag: text";
        EXPECT_EQ(parser.parse("<13>" + stamped)->text, at % 3 == 0 ? "tag: text" : stamped);
    }
}

TEST(PriorityTest, NamesAllFacilitiesAndSeverities) {
    constexpr std::string_view kFacilities[] = {
        "Kern",   "User",   "Mail",     "Daemon", "Auth",   "Syslog", "Lpr",     "News",
        "Uucp",   "Cron",   "Authpriv", "Ftp",    "Ntp",    "Audit",  "Console", "Clock",
        "Local0", "Local1", "Local2",   "Local3", "Local4", "Local5", "Local6",  "Local7"};
    constexpr std::string_view kSeverities[] = {"Emergency", "Alert",  "Critical",      "Error",
                                                "Warning",   "Notice", "Informational", "Debug"};
    for (unsigned value = 0; value < 192; ++value) {
        const auto priority = Priority::fromValue(value);
        ASSERT_TRUE(priority);
        EXPECT_EQ(priority->text(),
                  std::string(kFacilities[value / 8]) + '.' + std::string(kSeverities[value % 8]));
        EXPECT_EQ(priority->isUrgent(), value % 8 <= 2);
    }
    EXPECT_FALSE(Priority::fromValue(192));
}

}  // namespace
}  // namespace quorbel
