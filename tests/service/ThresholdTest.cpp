#include "platform/KeyedArchive.h"
#include "service/ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::ServiceProcess;
using testing::waitUntil;

/// An action that sets an event at the match that reaches its threshold.
Dictionary actionFor(const char *name, Value threshold) {
    return {{"Name", name},
            {"Message", "*failed*"},
            {"setEvent", Dictionary{{"Type", "Alert"}, {"Format", std::string(name) + " $host"}}},
            {"threshold", std::move(threshold)}};
}

Value threshold(int matches, int minutes, bool perHost) {
    return Dictionary{{"Matches", matches}, {"Minutes", minutes}, {"PerHost", perHost}};
}

/// The real service with actions that have thresholds. Events come over streams, so that none is
/// lost, each from an address of its own of this machine.
struct ThresholdTest : testing::ServiceFixture {
    void startWith(const Array &actions, ServiceProcess::Setup setup = {}) {
        writeSettings(actions);
        service = start(std::move(setup));
        for (unsigned host = 1; host <= 3; ++host) {
            streams.push_back(testing::connectFrom(host, service->port()));
        }
    }
    void writeSettings(const Array &actions) const {
        folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{{"actionsArray", actions}}));
    }
    /// Sends one message, and waits until it is stored.
    void sendFrom(unsigned host, const std::string &text = "login failed") {
        const auto isOfSender = [](const std::string &event) { return event.starts_with("User."); };
        testing::sendTo(streams.at(host - 1), "<13>" + text + '\n');
        ++sent;
        ASSERT_TRUE(waitUntil(
            [&] { return std::ranges::count_if(stored(), isOfSender) >= std::ptrdiff_t(sent); }));
    }
    /// How many events the actions have set.
    [[nodiscard]] std::ptrdiff_t set() const {
        return std::ranges::count_if(
            stored(), [](const std::string &event) { return event.starts_with("Syslog."); });
    }

    std::unique_ptr<ServiceProcess> service;
    std::vector<UniqueFd> streams;
    std::size_t sent = 0;
};

TEST_F(ThresholdTest, CountsInAllOrOfEachHost) {
    startWith(
        {actionFor("each", threshold(3, 60, true)), actionFor("all", threshold(4, 60, false))});
    sendFrom(1);
    sendFrom(2);
    sendFrom(1, "login worked");
    sendFrom(1);
    EXPECT_EQ(set(), 0);
    sendFrom(2);
    EXPECT_EQ(stored().back(), "Syslog.Alert,127.0.0.2,all 127.0.0.2");
    sendFrom(1);
    EXPECT_EQ(stored().back(), "Syslog.Alert,127.0.0.1,each 127.0.0.1");
    for (int i = 0; i < 10; ++i) {
        sendFrom(3);
    }
    EXPECT_EQ(set(), 3) << "once for the third host, and in all only once in an hour";
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("events set 3, actions held back 0, matches below "
                                              "threshold 27, threshold hosts forgotten 0,"));
}

TEST_F(ThresholdTest, GoesOnCountingOverNewSettings) {
    const Dictionary kept = actionFor("kept", threshold(3, 60, false));
    startWith({kept});
    sendFrom(1);
    sendFrom(1);
    // Another one, in front of it.
    const Dictionary other{{"Message", "*probe*"}, {"setEvent", Dictionary{{"Format", "other"}}}};
    writeSettings({other, kept});
    ::kill(service->pid(), SIGHUP);
    ASSERT_TRUE(waitUntil([&] {
        sendFrom(2, "probe");
        return set() > 0;
    }));
    sendFrom(1);
    EXPECT_EQ(stored().back(), "Syslog.Alert,127.0.0.1,kept 127.0.0.1");
}

TEST_F(ThresholdTest, BeginsAnewWithTheService) {
    startWith({actionFor("a", threshold(3, 60, false))});
    sendFrom(1);
    sendFrom(1);
    EXPECT_EQ(service->terminate(), 0);
    streams.clear();
    startWith({actionFor("a", threshold(3, 60, false))});
    sendFrom(1);
    sendFrom(1);
    EXPECT_EQ(set(), 0);
    sendFrom(1);
    EXPECT_EQ(set(), 1);
}

TEST_F(ThresholdTest, OfNoMeaningIsSaidAndIgnored) {
    startWith({actionFor("a", threshold(0, 60, false)), actionFor("b", "5 in 10")});
    sendFrom(1);
    EXPECT_EQ(set(), 2);
    EXPECT_THAT(
        service->journal(),
        HasSubstr("<4>The threshold of the action \"a\" is ignored: \"Matches\" is no whole "
                  "number from 1 to 1000\n"
                  "<4>The threshold of the action \"b\" is ignored: it is no record\n"));
}

// Somebody sets the clock, or it is set right by the network.
TEST_F(ThresholdTest, DoesNotMindTheTimeOfDay) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' libraries must be loaded before any other";
#endif
    const testing::TemporaryFolder clock;
    constexpr int kHour = 3600;
    clock.write("shift", "0");
    ServiceProcess::Setup setup;
    setup.environment = {"LD_PRELOAD=" QUORBEL_CLOCK_SHIFT_PATH,
                         "QUORBEL_CLOCK_SHIFT=" + (clock.path() / "shift").string()};
    startWith({actionFor("a", threshold(4, 10, false))}, std::move(setup));
    for (const int shift : {0, 5 * kHour, -30 * kHour, 2 * kHour}) {
        EXPECT_EQ(set(), 0);
        clock.write("shift", std::to_string(shift));
        sendFrom(1);
    }
    EXPECT_EQ(set(), 1);
    // Nor does it act again because an hour seems to have passed.
    clock.write("shift", std::to_string(3 * kHour));
    for (int i = 0; i < 5; ++i) {
        sendFrom(1);
    }
    EXPECT_EQ(set(), 1);
}

}  // namespace
}  // namespace quorbel
