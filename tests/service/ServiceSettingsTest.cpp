#include "common/SettingsDocument.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/NotificationObserver.h"
#include "service/ServiceFixture.h"
#include "service/actions/CommandRunner.h"
#include "service/store/LogFiles.h"
#include "support/PrivateBus.h"
#include "support/Seed.h"
#include "support/SmtpStandIn.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <ctime>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using ::testing::AllOf;
using testing::connectTo;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::sendTo;
using testing::ServiceProcess;
using testing::waitUntil;

/// The real service on a bus, with settings that are saved as the front-end saves them.
struct ServiceSettingsTest : testing::ServiceFixture {
    void startService() {
        service = start({.library = {}, .busAddress = bus.address()});
        ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
        datagrams = connectTo(service->port(), SOCK_DGRAM);
    }
    void save(const Dictionary &settings) {
        sender.send({{"command", "save"}, {"Settings", settings}});
        ASSERT_TRUE(sender.waitUntilIdle(testing::kPatience));
        ASSERT_EQ(reply, "OK");
    }
    void send(const std::string &message) const { sendTo(datagrams, "<13>" + message); }
    [[nodiscard]] bool waitFor(const std::string &event) const {
        return waitUntil([&] { return std::ranges::count(stored(), event) > 0; });
    }
    [[nodiscard]] std::string path(const std::string &name) const {
        return (folder.path() / name).string();
    }

    testing::PrivateBus bus;
    std::unique_ptr<ServiceProcess> service;
    UniqueFd datagrams;
    std::string reply;
    CommandSender sender{[this](const std::string &text) { reply = text; }};
};

Dictionary exclude(const std::string &pattern) {
    return {{"excludeFiltersArray", Array{Dictionary{{"Message", pattern}}}}};
}

TEST_F(ServiceSettingsTest, TheJournalNamesOddFiltersOnce) {
    startService();
    Dictionary settings{{"excludeFiltersArray",
                         Array{Dictionary{{"Name", "lab"}, {"IP", "lab-sw1"}, {"Mask", "32"}}}}};
    const std::string said =
        R"(The exclude filter "lab" can never match: "lab-sw1" is not an address)";
    const auto count = [&](const std::string &text) {
        const std::string journal = service->journal();
        std::size_t found = 0;
        for (std::size_t at = journal.find(text); at != std::string::npos;
             at = journal.find(text, at + 1)) {
            ++found;
        }
        return found;
    };
    const auto saveOdd = [&] {
        sender.send({{"command", "save"}, {"Settings", settings}});
        ASSERT_TRUE(sender.waitUntilIdle(testing::kPatience));
        ASSERT_EQ(reply, "The settings are stored. " + said);
    };
    saveOdd();
    settings.set("hostsDisplay", true);
    saveOdd();
    save({});
    saveOdd();
    EXPECT_EQ(service->terminate(), 0);
    ASSERT_TRUE(service->waitForJournal("Received 0"));  // the last line
    EXPECT_EQ(count("<4>" + said + "\n"), 2U) << service->journal();
}

TEST_F(ServiceSettingsTest, FiltersHoldAsSoonAsTheyAreSaved) {
    startService();
    constexpr int kRounds = 30;
    for (int i = 0; i < kRounds; ++i) {
        save(exclude("noise " + std::to_string(i)));
        send("noise " + std::to_string(i));
        send("noise " + std::to_string(i + 1));
    }
    ASSERT_TRUE(waitForStored(kRounds));
    for (int i = 0; i < kRounds; ++i) {
        EXPECT_EQ(stored()[static_cast<std::size_t>(i)],
                  "User.Notice,127.0.0.1,noise " + std::to_string(i + 1));
    }
    save({{"includeFiltersArray", Array{Dictionary{{"IP", "127.0.0.0"}, {"Mask", "8"}}}},
          {"excludeFiltersArray", Array{Dictionary{{"Severity", "Notice"}}}}});
    send("not this");
    sendTo(datagrams, "<14>this");
    ASSERT_TRUE(waitFor("User.Informational,127.0.0.1,this"));
    save({{"includeFiltersArray", Array{Dictionary{{"IP", "127.0.0.9"}, {"Mask", "32"}}}}});
    send("not that");
    save({});
    send("end");
    ASSERT_TRUE(waitFor("User.Notice,127.0.0.1,end"));
    EXPECT_EQ(stored().size(), std::size_t{kRounds} + 2);
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), AllOf(HasSubstr("stored 32, "), HasSubstr("filtered 32, ")));
}

TEST_F(ServiceSettingsTest, ReadsTheSettingsAtTheStartAndWhenAsked) {
    folder.write(kSettingsFileName, writeKeyedArchive(exclude("first")));
    startService();
    send("first");
    send("second");
    ASSERT_TRUE(waitForStored(1));
    folder.write(kSettingsFileName, writeKeyedArchive(exclude("second")));
    ::kill(service->pid(), SIGHUP);
    ASSERT_TRUE(service->waitForJournal("Reading the settings again"));
    // The line is said before they are read.
    ASSERT_TRUE(waitUntil([this] {
        send("first");
        return waitUntil([this] { return stored().back() == "User.Notice,127.0.0.1,first"; },
                         std::chrono::milliseconds(50));
    }));
    folder.write(kSettingsFileName, "damaged");
    ::kill(service->pid(), SIGHUP);
    ASSERT_TRUE(service->waitForJournal("the current settings stay in force"));
    send("second");
    send("third");
    ASSERT_TRUE(waitFor("User.Notice,127.0.0.1,third"));
    EXPECT_EQ(std::ranges::count(stored(), "User.Notice,127.0.0.1,second"), 1);
    EXPECT_EQ(service->terminate(), 0);
}

TEST_F(ServiceSettingsTest, AKillAmidSavesLeavesTheOldSettingsOrTheNew) {
    const unsigned seed = testing::seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    // Large enough that writing takes its time.
    const auto numbered = [](std::int64_t number) {
        Array texts;
        for (int i = 0; i < 1000; ++i) {
            texts.emplace_back(std::to_string(number) + " of " + std::to_string(i));
        }
        return Dictionary{{"number", number}, {"texts", std::move(texts)}};
    };
    const auto onDisk = [&] { return decodeSettings(readFile(path("Quorbel.ini"))); };
    std::int64_t sent = 0;
    std::atomic<std::int64_t> stored = 0;  // as far as the service said so
    CommandSender saver([&stored](const std::string &text) { stored += text == "OK" ? 1 : 0; });
    std::int64_t amid = 0;
    for (int round = 0; round < 20; ++round) {
        startService();
        const std::int64_t before = sent;
        stored = before;
        for (int i = 0; i < 60; ++i) {
            saver.send({{"command", "save"}, {"Settings", numbered(++sent)}});
        }
        ASSERT_TRUE(waitUntil([&] { return stored > before; }));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 50'000));
        service->kill();
        const auto found = onDisk();
        // The last ones find nobody any more.
        ASSERT_TRUE(saver.waitUntilIdle(testing::kPatience));
        ASSERT_TRUE(found);
        const std::int64_t number = settingInteger(*found, "number");
        EXPECT_EQ(*found, numbered(number));
        EXPECT_GE(number, stored);
        EXPECT_LE(number, sent);
        amid += stored < sent ? 1 : 0;
    }
    EXPECT_GT(amid, 0);
}

TEST_F(ServiceSettingsTest, TellsEachRemovedEventWhileOthersArrive) {
    constexpr std::size_t kOld = 20'000;
    constexpr std::size_t kNew = 5'000;
    const std::int64_t old = std::time(nullptr) - 3 * 86400;
    std::string lines;
    for (std::size_t i = 0; i < kOld; ++i) {
        lines += std::to_string(old) + (i % 2 == 0 ? ",User.Error,h," : ",User.Debug,h,") +
                 std::to_string(i) + "\r\n";
    }
    folder.write(logFileName(old), lines);
    startService();
    std::map<std::string, std::size_t> told;
    std::size_t wrong = 0;
    NotificationObserver observer([&](const NotificationObserver::UserInfo &info) {
        std::map<std::string_view, std::string_view> fields(info.begin(), info.end());
        ++told[std::string(fields["Type"])];
        wrong += fields["Type"] == "Remove" &&
                         (fields["Priority"] != "User.Error" ||
                          fields["Date"] != std::to_string(old) || fields["Host"] != "h")
                     ? 1U
                     : 0U;
    });
    ASSERT_TRUE(waitUntil([&] {
        observer.dispatch(std::chrono::milliseconds(10));
        return observer.isConnected();
    }));
    sender.send({{"command", "save"},
                 {"Settings", Dictionary{{"removalError", 2}, {"removalErrorUnits", 2}}}});
    const UniqueFd stream = connectTo(service->port(), SOCK_STREAM);
    for (std::size_t i = 0; i < kNew; ++i) {
        sendTo(stream, "<11>new " + std::to_string(i) + '\n');
        if (i % 100 == 0) {
            observer.dispatch(std::chrono::milliseconds(1));
        }
    }
    ASSERT_TRUE(waitUntil([&] {
        observer.dispatch(std::chrono::milliseconds(10));
        return told["Remove"] >= kOld / 2 && told["Set"] >= kNew;
    })) << told["Remove"]
        << ' ' << told["Set"];
    EXPECT_EQ(told["Remove"], kOld / 2);
    EXPECT_EQ(told["Set"], kNew);
    EXPECT_EQ(wrong, 0U);
    const auto events = stored();
    EXPECT_EQ(events.size(), kOld / 2 + kNew);
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(),
                AllOf(HasSubstr("notifications dropped 0"), HasSubstr("removed 10000")));
}

// Nobody is there to be told, and still the events go.
TEST_F(ServiceSettingsTest, RemovesEventsWithoutABus) {
    folder.write("2020-01-01.log", "1577836800,User.Error,h,old\r\n");
    folder.write(kSettingsFileName,
                 writeKeyedArchive(Dictionary{{"removalError", 1}, {"removalErrorUnits", 4}}));
    service = start();
    EXPECT_TRUE(waitUntil([this] { return !readFile(path("2020-01-01.log")); }));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(),
                AllOf(HasSubstr("removed 1, "), HasSubstr("notifications dropped 1, ")));
}

TEST_F(ServiceSettingsTest, CountsWhatNobodyWasToldOf) {
    service = start();
    datagrams = connectTo(service->port(), SOCK_DGRAM);
    for (int i = 0; i < 3; ++i) {
        send("x");
    }
    ASSERT_TRUE(waitForStored(3));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("stored 3, "));
    EXPECT_THAT(service->journal(), HasSubstr("notifications dropped 3, "));
}

// Everything that takes its time is under way: files are searched, rewritten and exported, and a
// stream stands open.
TEST_F(ServiceSettingsTest, EndsInTheMidstOfItsWork) {
    std::string lines;
    std::string kept;
    for (int i = 0; i < 300'000; ++i) {
        const std::string stays = "1577836800,User.Debug,h," + std::to_string(i) + "\r\n";
        lines += "1577836800,User.Error,h,old\r\n" + stays;
        kept += stays;
    }
    Dictionary settings{{"removalError", 1},     {"removalErrorUnits", 4},
                        {"textInterval", 1},     {"textLocation", path("out.txt")},
                        {"databaseInterval", 1}, {"databaseLocation", path("out.db")}};
    folder.write(kSettingsFileName, writeKeyedArchive(settings));
    for (int i = 0; i < 6; ++i) {
        folder.write("2020-01-01.log", lines);
        service = start();
        const UniqueFd open = connectTo(service->port(), SOCK_STREAM);
        // At another place each time; all of them have to do.
        std::this_thread::sleep_for(std::chrono::milliseconds(50 * i));
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(service->terminate(), 0);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
        const std::string after = readFile(path("2020-01-01.log")).value_or("");
        EXPECT_TRUE(after == lines || after == kept) << after.size();
        EXPECT_FALSE(readFile(path("2020-01-01.log.new")));
        const std::string exported = readFile(path("out.txt")).value_or("\n");
        EXPECT_TRUE(exported.ends_with('\n'));
    }
}

Dictionary actionFor(const char *pattern, const char *reaction, Dictionary content) {
    return {{"Name", reaction}, {"Message", pattern}, {reaction, std::move(content)}};
}

TEST_F(ServiceSettingsTest, RunsTheCommandsOfActions) {
    startService();
    save({{"actionsArray",
           Array{actionFor("*disk*", "runCommand",
                           {{"Command", "/bin/sh"},
                            {"Arguments",
                             "-c 'printf \"%s|\" \"$@\" \"$A\" \"$QUORBEL_PRIORITY\" "
                             "\"$QUORBEL_HOST\" \"$QUORBEL_MESSAGE\" > \"$OUT.new\"; "
                             "mv \"$OUT.new\" \"$OUT\"' sh 'a b' $HOME"},
                            {"Environment", "A=x y\nOUT=" + path("out.txt")}})}}});
    send("nothing to do");
    send("disk full, `id` $(id)");
    EXPECT_TRUE(waitUntil([this] { return readFile(path("out.txt")).has_value(); }));
    EXPECT_EQ(readFile(path("out.txt")),
              "a b|$HOME|x y|User.Notice|127.0.0.1|disk full, `id` $(id)|");
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(),
                AllOf(HasSubstr("commands run 1, "), HasSubstr("commands not run 0, ")));
}

TEST_F(ServiceSettingsTest, SetsTheEventsOfActionsAndHoldsThemBackInAStorm) {
    startService();
    save({{"actionsArray", Array{actionFor("*", "setEvent",
                                           {{"Type", "Critical"},
                                            {"Format", "$host said\n$message ($priority)"}})}}});
    constexpr std::size_t kSent = 30;
    constexpr std::size_t kSet = 10;
    for (std::size_t i = 0; i < kSent; ++i) {
        send("x");
    }
    // What was set triggers nothing itself.
    ASSERT_TRUE(waitForStored(kSent + kSet));
    send("last");
    ASSERT_TRUE(waitFor("User.Notice,127.0.0.1,last"));
    const auto events = stored();
    EXPECT_EQ(events.size(), kSent + kSet + 1);
    EXPECT_EQ(std::ranges::count(events,
                                 "Syslog.Critical,127.0.0.1,127.0.0.1 said#012x "
                                 "(User.Notice)"),
              kSet);
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(
        service->journal(),
        AllOf(
            HasSubstr(
                "too many matches; held back in the last minute: commands 0, e-mails 0, events 21"),
            HasSubstr("Received 31, malformed 0, stored 41, "),
            HasSubstr("events set 10, actions held back 21, ")));
}

TEST_F(ServiceSettingsTest, SendsTheEmailsOfActions) {
    const testing::SmtpStandIn server;
    startService();
    save({{"actionsEmailServer", "127.0.0.1"},
          {"actionsEmailPort", server.port()},
          {"actionsEmailSender", "quorbel@sender.example"},
          {"actionsFormatSubject", "$priority at $host"},
          {"actionsFormatBody", "$message\r\n"},
          {"actionsArray",
           Array{actionFor("disk*", "sendEmail",
                           {{"Recipients", Array{"a@b.example", "c@d.example"}}})}}});
    constexpr std::size_t kMails = 5;
    for (std::size_t i = 0; i < kMails + 3; ++i) {
        send("disk " + std::to_string(i));
        send("other");
    }
    const auto mails = server.waitForMails(kMails);
    ASSERT_EQ(mails.size(), kMails);
    for (std::size_t i = 0; i < kMails; ++i) {
        EXPECT_THAT(mails[i].recipients, ElementsAre("a@b.example", "c@d.example"));
        EXPECT_THAT(mails[i].text, AllOf(HasSubstr("Subject: User.Notice at 127.0.0.1\r\n"),
                                         HasSubstr("disk " + std::to_string(i))));
    }
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("commands 0, e-mails 3, events 0"));
}

TEST_F(ServiceSettingsTest, EndsCommandsThatRunWhenItEnds) {
    startService();
    save({{"actionsArray",
           Array{actionFor("*", "runCommand",
                           {{"Command", "/bin/sh"},
                            {"Arguments", "-c 'echo $$ >> \"$OUT\"; exec sleep 1000'"},
                            {"Environment", "OUT=" + path("ids.txt")}})}}});
    constexpr std::size_t kWaiting = 2;
    for (std::size_t i = 0; i < CommandRunner::kMostAtOnce + kWaiting; ++i) {
        send("x");
    }
    const auto ids = [this] {
        std::istringstream text(readFile(path("ids.txt")).value_or(""));
        return std::vector<pid_t>(std::istream_iterator<pid_t>(text), {});
    };
    ASSERT_TRUE(waitUntil([&] { return ids().size() == CommandRunner::kMostAtOnce; }));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(
        service->journal(),
        AllOf(HasSubstr("the command was stopped because the service is stopping"),
              HasSubstr("The service is stopping; commands of actions that were not run: 2"),
              HasSubstr("commands run 4, commands not run 2, ")));
    for (const pid_t id : ids()) {
        EXPECT_EQ(::kill(id, 0), -1);
    }
}

TEST_F(ServiceSettingsTest, ShowsHostsByName) {
    sockaddr_in loopback{};
    loopback.sin_family = AF_INET;
    loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    char name[NI_MAXHOST];
    if (getnameinfo(reinterpret_cast<sockaddr *>(&loopback), sizeof loopback, name, sizeof name,
                    nullptr, 0, NI_NAMEREQD) != 0) {
        GTEST_SKIP() << "127.0.0.1 has no name here";
    }
    startService();
    // Filters go by the address, whatever is shown.
    Dictionary settings{
        {"hostsDisplay", true},
        {"includeFiltersArray", Array{Dictionary{{"IP", "127.0.0.1"}, {"Mask", "32"}}}}};
    save(settings);
    const std::string named = "User.Notice," + std::string(name) + ",x";
    EXPECT_TRUE(waitUntil([&] {
        send("x");
        const auto events = stored();
        return !events.empty() && events.back() == named;
    }));
    save({});
    send("y");
    EXPECT_TRUE(waitFor("User.Notice,127.0.0.1,y"));
}

}  // namespace
}  // namespace quorbel
