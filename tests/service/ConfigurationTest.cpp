#include "platform/KeyedArchive.h"
#include "service/ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::connectFrom;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::sendTo;
using testing::ServiceProcess;
using testing::waitUntil;

/// The real service with a configuration. Senders are addresses of this machine: 127.0.0.N.
struct ConfigurationTest : testing::ServiceFixture {
    void startWith(const std::string &configuration) {
        folder.write("quorbelsrv.conf", configuration);
        service = start();
    }
    /// Gives it another configuration, and waits until it has read it.
    void reload(const std::string &configuration, const std::string &journal) {
        folder.write("quorbelsrv.conf", configuration);
        const std::size_t before = service->journal().size();
        kill(service->pid(), SIGHUP);
        EXPECT_TRUE(waitUntil([&] {
            return service->journal().find(journal, before) != std::string::npos;
        })) << service->journal();
    }
    /// Sends a message, and returns how it was stored.
    std::string sent(unsigned sender, const std::string &message, int type = SOCK_STREAM) {
        const std::size_t before = stored().size();
        sendTo(connectFrom(sender, service->port(), type), message);
        EXPECT_TRUE(waitForStored(before + 1));
        const auto events = stored();
        return events.size() == before + 1 ? events.back() : "not one event";
    }
    [[nodiscard]] std::string file() const { return (folder.path() / "quorbelsrv.conf").string(); }

    std::unique_ptr<ServiceProcess> service;
};

const std::string kRelay = "[Relays]\nNetworks=127.0.0.2/31\n";
const std::string kInForce = "The configuration is in force: ";

TEST_F(ConfigurationTest, TheHostOfARelaysMessageIsTheOneThatItNames) {
    startWith(kRelay);
    const std::string longest(255, 'n');
    struct Case {
        std::string message;
        std::string stored;
    };
    const Case cases[] = {
        {"<11>Nov 21 02:54:07 web1 tag: text", "User.Error,web1,tag: text"},
        {"<11>Nov 21 02:54:07 web2 tag: text", "User.Error,web2,tag: text"},
        {"<11>1 2026-11-21T02:54:07Z web1.example.org tag 7 - - text",
         "User.Error,web1.example.org,tag[7]: text"},
        // Its own, another relay's, and the service's address are names like any other.
        {"<11>1 - 127.0.0.3 - - - - text", "User.Error,127.0.0.3,text"},
        {"<11>1 - 127.0.0.1 - - - - text", "User.Error,127.0.0.1,text"},
        {"<11>1 - 2001:db8::1 - - - - text", "User.Error,2001:db8::1,text"},
        // Without a name that can be used, it is the relay's address.
        {"<11>1 - - tag - - - text", "User.Error,127.0.0.2,tag: text"},
        {"<11>Nov 21 02:54:07 - tag: text", "User.Error,127.0.0.2,tag: text"},
        {"<11>Nov 21 02:54:07 tag: text", "User.Error,127.0.0.2,tag: text"},
        {"<11>no header", "User.Error,127.0.0.2,no header"},
        {"no priority", "User.Notice,127.0.0.2,no priority"},
        {"<11>1 - web1 cut", "User.Error,127.0.0.2,web1 cut"},
        {"<11>1 - " + longest + " - - - - text", "User.Error," + longest + ",text"},
        {"<11>1 - " + longest + "n - - - - text", "User.Error,127.0.0.2,text"},
        // Nothing of it makes fields, lines or colours.
        {"<11>1 - a,b - - - - text", "User.Error,a_b,text"},
        {"<11>1 - ,,, - - - - text", "User.Error,___,text"},
        {"<11>1 - \x1b[31m - - - - text", "User.Error,_[31m,text"},
        {"<11>1 - a\rb - - - - text", "User.Error,a_b,text"},
        {"<11>1 - h\xc3\xb6st\xff - - - - text", "User.Error,h__st_,text"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(sent(2, c.message, SOCK_DGRAM), c.stored) << c.message;
        EXPECT_EQ(sent(2, c.message + '\n'), c.stored) << c.message;
        // A count in front of it: RFC 6587, 3.4.1.
        if (c.message.starts_with('<')) {
            EXPECT_EQ(sent(2, std::to_string(c.message.size()) + ' ' + c.message), c.stored);
        }
    }
}

TEST_F(ConfigurationTest, NobodyElseCanForgeAHost) {
    startWith(kRelay);
    for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
        EXPECT_EQ(sent(4, "<11>1 - 127.0.0.2 - - - - text\n", type), "User.Error,127.0.0.4,text");
        EXPECT_EQ(sent(1, "<11>Nov 21 02:54:07 web1 a: b\n", type), "User.Error,127.0.0.1,a: b");
        // Nor does it matter who sent just before.
        EXPECT_EQ(sent(3, "<11>1 - web9 - - - - text\n", type), "User.Error,web9,text");
        EXPECT_EQ(sent(4, "<11>1 - web9 - - - - text\n", type), "User.Error,127.0.0.4,text");
    }
}

TEST_F(ConfigurationTest, NobodyIsTrustedWithoutAConfiguration) {
    service = start();
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,127.0.0.2,text");
    EXPECT_THAT(service->journal(), Not(HasSubstr("onfiguration")));
}

TEST_F(ConfigurationTest, IsReadAgainOnReload) {
    startWith("");
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,127.0.0.2,text");
    reload(kRelay + "[Collector]\nName=hamburg-1\n",
           kInForce + "collector hamburg-1, relay networks: 1, outputs: 0");
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,web1,text");
    reload("[Collector]\nName=hamburg-1\n",
           kInForce + "collector hamburg-1, relay networks: 0, outputs: 0");
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,127.0.0.2,text");
    std::filesystem::remove(file());
    kill(service->pid(), SIGHUP);
    EXPECT_TRUE(service->waitForJournal("relay networks: 0, outputs: 0\n<6>Reading"));
}

TEST_F(ConfigurationTest, AMistakeLeavesWhatWasInForce) {
    startWith(kRelay);
    const std::string stays = "The configuration is not used: what was in force stays in force";
    reload(kRelay + "Network=10.0.0.0/8\n[Nothing]\n", stays);
    EXPECT_THAT(service->journal(), HasSubstr("<3>A mistake in the configuration: " + file() +
                                              ":3: there is no key \"Network\" in [Relays]\n"
                                              "<3>A mistake in the configuration: " +
                                              file() + ":4: there is no section [Nothing]"));
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,web1,text");
    // A file that is no file, or of any size.
    std::filesystem::resize_file(file(), 100 << 20);
    kill(service->pid(), SIGHUP);
    EXPECT_TRUE(service->waitForJournal(file() + ": it is larger than a megabyte"));
    std::filesystem::remove(file());
    std::filesystem::create_directory(file());
    kill(service->pid(), SIGHUP);
    EXPECT_TRUE(service->waitForJournal(file() + ": it is no file"));
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,web1,text");
    std::filesystem::remove(file());
    std::string many;
    for (int i = 0; i < 50; ++i) {
        many += "nonsense\n";
    }
    reload(many, "More mistakes in the configuration: 40\n");
    reload("", "relay networks: 0");
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,127.0.0.2,text");
}

TEST_F(ConfigurationTest, AMistakeAtTheStartPutsNothingInForce) {
    startWith(kRelay + "nonsense\n");
    EXPECT_THAT(service->journal(), HasSubstr(file() + ":3: \"nonsense\" is neither"));
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,127.0.0.2,text");
}

TEST_F(ConfigurationTest, AFileOfAnotherNameCanBeUsed) {
    const auto other = folder.write("etc/other.conf", kRelay);
    ServiceProcess::Setup setup;
    setup.arguments = {"--config", other.string(), "--port", "0"};
    service = start(setup);
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,web1,text");
}

TEST_F(ConfigurationTest, FiltersGoByTheAddressOfARelay) {
    const Dictionary filter{{"IP", "127.0.0.2"}, {"Mask", "32"}, {"Message", "*chatter*"}};
    folder.write("Quorbel.ini",
                 writeKeyedArchive(Dictionary{{"excludeFiltersArray", Array{filter}}}));
    startWith(kRelay);
    sendTo(connectFrom(2, service->port()), "<11>1 - 127.0.0.9 - - - - chatter\n");
    sendTo(connectFrom(3, service->port()), "<11>1 - 127.0.0.2 - - - - chatter\n");
    sendTo(connectFrom(2, service->port()), "<11>1 - web1 - - - - text\n");
    EXPECT_TRUE(waitForStored(2));
    service->terminate();
    EXPECT_THAT(service->journal(), HasSubstr(", filtered 1, relayed 3, "));
    EXPECT_THAT(stored(), ::testing::UnorderedElementsAre("User.Error,127.0.0.2,chatter",
                                                          "User.Error,web1,text"));
}

/// What an action makes of `event`.
Dictionary action(const char *name, const char *message) {
    return {{"Name", name},
            {"Message", message},
            {"setEvent", Dictionary{{"Type", "Alert"}, {"Format", std::string(name) + " $host"}}}};
}

TEST_F(ConfigurationTest, ActionsAreToldTheHostThatIsStored) {
    folder.write("Quorbel.ini",
                 writeKeyedArchive(Dictionary{{"actionsArray", Array{action("set", "*text")}}}));
    startWith(kRelay);
    sendTo(connectFrom(2, service->port()), "<11>1 - a,b\x1b - - - - text\n");
    ASSERT_TRUE(waitForStored(2));
    EXPECT_THAT(stored(), ElementsAre("User.Error,a_b_,text", "Syslog.Alert,a_b_,set a_b_"));
}

TEST_F(ConfigurationTest, ThresholdsTellHostsBehindOneRelayApart) {
    Dictionary rare = action("set", "*failed");
    rare.set("threshold", Dictionary{{"Matches", 2}, {"Minutes", 60}, {"PerHost", true}});
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{{"actionsArray", Array{rare}}}));
    startWith(kRelay);
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - failed\n"), "User.Error,web1,failed");
    EXPECT_EQ(sent(2, "<11>1 - web2 - - - - failed\n"), "User.Error,web2,failed");
    EXPECT_EQ(sent(2, "<11>failed\n"), "User.Error,127.0.0.2,failed");
    // The same host, by another relay.
    sendTo(connectFrom(3, service->port()), "<11>1 - web1 - - - - failed\n");
    ASSERT_TRUE(waitForStored(5));
    EXPECT_EQ(stored().back(), "Syslog.Alert,web1,set web1");
}

TEST_F(ConfigurationTest, WhatARelayNamesIsNotLookedUp) {
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{{"hostsDisplay", true}}));
    startWith(kRelay);
    EXPECT_EQ(sent(2, "<11>1 - 127.0.0.1 - - - - text\n"), "User.Error,127.0.0.1,text");
    EXPECT_EQ(sent(2, "<11>1 - web1 - - - - text\n"), "User.Error,web1,text");
    // The relay itself is, by its address.
    EXPECT_EQ(sent(3, "<11>text\n").substr(0, 11), "User.Error,");
    service->terminate();
    EXPECT_THAT(service->journal(), HasSubstr(", relayed 2, "));
}

}  // namespace
}  // namespace quorbel
