#include "common/OutputFilter.h"

#include <gmock/gmock.h>

#include <string>

namespace quorbel {
namespace {

using ::testing::HasSubstr;

LogLine line(std::string_view priority, std::string_view host, std::string_view message) {
    return {"1700000000", priority, host, message};
}

TEST(AddressNetworkTest, HoldsTheAddressesThatBeginAlike) {
    struct Case {
        const char *network;
        const char *address;
        const char *answer;  ///< "yes", "no"; "none" when that is no network
    };
    const Case cases[] = {
        {"10.1.0.0/16", "10.1.255.255", "yes"},
        {"10.1.0.0/16", "10.2.0.0", "no"},
        {"10.1.7.7/16", "10.1.9.9", "yes"},
        {"10.1.0.0/16", "::ffff:10.1.2.3", "yes"},
        {"10.1.2.3", "10.1.2.3", "yes"},
        {"10.1.2.3", "10.1.2.4", "no"},
        {"0.0.0.0/0", "203.0.113.9", "yes"},
        {"0.0.0.0/0", "2001:db8::1", "no"},
        {"::/0", "2001:db8::1", "yes"},
        {"::/0", "10.1.2.3", "no"},
        {"2001:db8::/32", "2001:db8:ffff::1", "yes"},
        {"2001:db8::/32", "2001:db9::1", "no"},
        {"::ffff:10.1.0.0/112", "10.1.2.3", "yes"},
        {"10.1.0.0/33", "10.1.0.0", "none"},
        {"2001:db8::/129", "2001:db8::", "none"},
        {"10.1.0.0/", "10.1.0.0", "none"},
        {"10.1.0.0/-1", "10.1.0.0", "none"},
        {"10.1.0.0/16 ", "10.1.0.0", "none"},
        {"10.1/16", "10.1.0.0", "none"},
        {"router", "10.1.0.0", "none"},
        {"", "10.1.0.0", "none"},
        {"/16", "10.1.0.0", "none"},
    };
    for (const Case &c : cases) {
        const auto network = AddressNetwork::parse(c.network);
        const char *answer = !network                                          ? "none"
                             : network->contains(*IpAddress::parse(c.address)) ? "yes"
                                                                               : "no";
        EXPECT_STREQ(answer, c.answer) << c.network << ' ' << c.address;
    }
}

TEST(OutputFilterTest, MeansTheEventsThatMeetAllConditions) {
    struct Case {
        const char *hosts, *facility, *severity, *message;
        LogLine line;
        bool isMeant;
    };
    const LogLine error = line("Local7.Error", "10.1.2.3", "Link eth0 down");
    const LogLine named = line("Auth.Informational", "Web-1.example.org", "ok");
    const Case cases[] = {
        {"", "", "", "", error, true},
        {"10.1.2.3", "", "", "", error, true},
        {"10.1.2.4", "", "", "", error, false},
        {"10.1.0.0/16", "", "", "", error, true},
        {"10.2.0.0/16, 10.1.0.0/16", "", "", "", error, true},
        {"10.2.0.0/16", "", "", "", error, false},
        {"0.0.0.0/0", "", "", "", named, false},
        {"10.1.*", "", "", "", error, true},
        {"web-?.*", "", "", "", named, true},
        {"web-?", "", "", "", named, false},
        {"!web-*", "", "", "", named, false},
        {"!web-*", "", "", "", error, true},
        {"10.1.0.0/16, !10.1.2.3", "", "", "", error, false},
        {"!10.1.2.3, 10.1.0.0/16", "", "", "", error, false},
        {"!10.1.2.4, 10.1.0.0/16", "", "", "", error, true},
        {"! 10.1.2.4, 10.3.0.0/16", "", "", "", error, false},
        {"", "Local7", "", "", error, true},
        {"", "auth, LOCAL7", "", "", error, true},
        {"", "Auth", "", "", error, false},
        {"", "Auth", "", "", named, true},
        {"", "", "Error", "", error, true},
        {"", "", "warning", "", error, true},
        {"", "", "Critical", "", error, false},
        {"", "", "Information", "", named, true},
        {"", "", "Informational", "", named, true},
        {"", "", "Notice", "", named, false},
        {"", "", "Debug", "", named, true},
        {"", "Auth", "", "", line("Oddity", "h", "m"), false},
        {"", "", "Notice", "", line("Local7.", "h", "m"), false},
        {"", "", "Debug", "", line("Oddity", "h", "m"), true},
        {"", "", "", "*DOWN", error, true},
        {"", "", "", "link*", error, true},
        {"", "", "", "eth0", error, false},
        {"", "", "", "*eth?*", error, true},
        {"10.1.*", "Local7", "Error", "*down", error, true},
        {"10.2.*", "Local7", "Error", "*down", error, false},
        {"10.1.*", "Local6", "Error", "*down", error, false},
        {"10.1.*", "Local7", "Alert", "*down", error, false},
        {"10.1.*", "Local7", "Error", "*up", error, false},
    };
    for (const Case &c : cases) {
        OutputFilter filter;
        EXPECT_EQ(filter.setHosts(c.hosts), std::nullopt);
        EXPECT_EQ(filter.setFacility(c.facility), std::nullopt);
        EXPECT_EQ(filter.setSeverity(c.severity), std::nullopt);
        EXPECT_EQ(filter.setMessage(c.message), std::nullopt);
        EXPECT_EQ(filter.matches(c.line), c.isMeant)
            << c.hosts << '|' << c.facility << '|' << c.severity << '|' << c.message << '|'
            << c.line.priority;
    }
}

TEST(OutputFilterTest, SaysWhatItDoesNotKnowAndStaysAsItWas) {
    OutputFilter filter;
    filter.setHosts("web-*");
    filter.setFacility("Auth");
    filter.setSeverity("Error");
    const OutputFilter before = filter;
    EXPECT_THAT(filter.setHosts("10.0.0.0/99").value(), HasSubstr("\"10.0.0.0/99\" is no network"));
    EXPECT_THAT(filter.setHosts("a, !").value(), HasSubstr("no host is named"));
    EXPECT_THAT(filter.setFacility("Auth, Local8").value(), HasSubstr("no facility \"Local8\" (K"));
    EXPECT_THAT(filter.setSeverity("Bad").value(), HasSubstr("no severity \"Bad\" (Emergency, Al"));
    EXPECT_THAT(filter.setSeverity("Bad").value(), HasSubstr("Debug)"));
    EXPECT_EQ(filter, before);
    EXPECT_TRUE(filter.matches(line("Auth.Error", "web-1", "m")));
    EXPECT_FALSE(filter.matches(line("Auth.Warning", "web-1", "m")));
}

TEST(OutputFilterTest, IsEmptyWhenEveryEventIsMeant) {
    OutputFilter filter;
    EXPECT_TRUE(filter.isEmpty());
    filter.setMessage("*");
    filter.setSeverity("Debug");
    EXPECT_TRUE(filter.isEmpty());
    filter.setMessage("a*");
    EXPECT_FALSE(filter.isEmpty());
    filter.setMessage("");
    EXPECT_TRUE(filter.isEmpty());
    filter.setHosts("!x");
    EXPECT_FALSE(filter.isEmpty());
    filter.setHosts("");
    filter.setFacility("Kern");
    EXPECT_FALSE(filter.isEmpty());
}

}  // namespace
}  // namespace quorbel
