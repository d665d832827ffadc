#include "service/actions/Actions.h"
#include "service/actions/MatchThreshold.h"
#include "service/actions/StormGuard.h"
#include "service/message/RecordWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::int64_t kTime = 1'700'000'000;  // 2023-11-14 22:13:20 UTC

TEST(StormGuardTest, LetsSoManyThroughEachMinute) {
    StormGuard guard(2);
    const StormGuard::Clock::time_point start = StormGuard::Clock::now();
    EXPECT_TRUE(guard.allows(start));
    EXPECT_FALSE(guard.reportTime());
    EXPECT_TRUE(guard.allows(start + seconds(30)));
    EXPECT_FALSE(guard.allows(start + seconds(31)));
    EXPECT_FALSE(guard.allows(start + seconds(59)));
    EXPECT_EQ(guard.reportTime(), start + seconds(60));
    EXPECT_EQ(guard.takeHeldBack(), 2U);
    EXPECT_FALSE(guard.reportTime());
    // A minute begins when something comes.
    const auto later = start + seconds(100);
    EXPECT_TRUE(guard.allows(later));
    EXPECT_TRUE(guard.allows(later + seconds(59)));
    EXPECT_FALSE(guard.allows(later + seconds(59)));
    EXPECT_EQ(guard.reportTime(), later + seconds(60));
    EXPECT_TRUE(guard.allows(later + seconds(60)));
}

struct ActionsTest : ::testing::Test {
    void configure(Array records, Dictionary settings = {}) {
        settings.set("actionsArray", std::move(records));
        actions.configure(settings);
    }
    std::vector<EventToSet> receive(std::string_view text = "disk full, retrying",
                                    Priority priority = {23, 3}, const char *from = "10.1.2.3") {
        const IpAddress address = IpAddress::parse(from).value();
        std::string lines;
        const auto written = RecordWriter().append({kTime, priority, "router", text}, lines);
        subject.set(address, priority, lines, written.prefix);
        const auto events = actions.onEvent(subject, kTime, "router", now);
        return {events.begin(), events.end()};
    }
    /// The journal's lines meanwhile.
    template <typename Call>
    static std::string journalOf(const Call &call) {
        ::testing::internal::CaptureStderr();
        call();
        return ::testing::internal::GetCapturedStderr();
    }

    std::vector<CommandRunner::Command> commands;
    std::vector<MailMessage> mails;
    Counters counters;
    FilterSubject subject;
    Actions::Clock::time_point now = Actions::Clock::now();
    Actions actions{
        [this](CommandRunner::Command command) { commands.push_back(std::move(command)); },
        [this](MailMessage mail) { mails.push_back(std::move(mail)); }, counters};
};

/// An action with one reaction, for every event unless told otherwise.
Dictionary action(const char *reaction, Dictionary content, Dictionary filter = {}) {
    filter.set("Name", "test");
    filter.set(reaction, std::move(content));
    return filter;
}

TEST_F(ActionsTest, RunACommandWithTheEventInItsEnvironment) {
    configure({action("runCommand", {{"Command", "/opt/a tool"},
                                     {"Arguments", "-x 'a b' $message"},
                                     {"Environment", "A=1\r\nQUORBEL_HOST=other\nPATH=/opt"}})});
    EXPECT_THAT(receive("two\nlines"), IsEmpty());
    ASSERT_EQ(commands.size(), 1U);
    EXPECT_EQ(commands[0].action, "test");
    EXPECT_EQ(commands[0].program, "/opt/a tool");
    EXPECT_THAT(commands[0].arguments, ElementsAre("-x", "a b", "$message"));
    for (const char *variable :
         {"A=1", "PATH=/opt", "QUORBEL_DATE=1700000000", "QUORBEL_PRIORITY=Local7.Error",
          "QUORBEL_HOST=router", "QUORBEL_MESSAGE=two#012lines"}) {
        EXPECT_EQ(std::ranges::count(commands[0].environment, variable), 1) << variable;
    }
    EXPECT_EQ(std::ranges::count(commands[0].environment, "QUORBEL_HOST=other"), 0);
    EXPECT_THAT(mails, IsEmpty());
}

TEST_F(ActionsTest, SendAnEmailFromTheTemplates) {
    const Array records{action("sendEmail", {{"Recipients", Array{"a@b.example", "x"}}})};
    struct Case {
        Dictionary settings;
        const char *subject;
        const char *body;
    };
    const Case cases[] = {
        {{},
         "disk full, retrying",
         "Date:2023-11-14 22:13:20\r\nPriority:Local7.Error\r\nHost:router\r\n"
         "Message:disk full, retrying\r\n"},
        {{{"actionsFormatSubject", ""}, {"actionsFormatBody", ""}}, "", ""},
        {{{"actionsFormatSubject", 5},
          {"actionsFormatBody", "$host $date"},
          {"dateFormat", "d/M/yy h:mm AM/PM"}},
         "",
         "router 14/11/23 10:13 PM"},
    };
    for (const Case &c : cases) {
        mails.clear();
        configure(records, c.settings);
        receive();
        ASSERT_EQ(mails.size(), 1U);
        EXPECT_THAT(mails[0].recipients, ElementsAre("a@b.example", "x"));
        EXPECT_EQ(mails[0].subject, c.subject);
        EXPECT_EQ(mails[0].body, c.body);
        EXPECT_FALSE(mails[0].html);
    }
}

TEST_F(ActionsTest, SetAnEvent) {
    struct Case {
        Value type;
        const char *format;
        const char *priority;
        const char *message;
    };
    const Case cases[] = {
        {"Critical", "seen", "Syslog.Critical", "seen"},
        {"Emergency", "$host: $message\n$priority", "Syslog.Emergency",
         "router: disk full, retrying\nLocal7.Error"},
        {"Informational", "$date", "Syslog.Informational", "2023-11-14 22:13:20"},
        {"Information", "x", "Syslog.Informational", "x"},
        {"Nonsense", "x", "Syslog.Notice", "x"},
        {Null(), "x", "Syslog.Notice", "x"},
    };
    for (const Case &c : cases) {
        configure({action("setEvent", {{"Type", c.type}, {"Format", c.format}})});
        const auto events = receive();
        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(events[0].priority.text(), c.priority);
        EXPECT_EQ(events[0].message, c.message);
    }
    EXPECT_EQ(counters.eventsSet, std::size(cases));
}

TEST_F(ActionsTest, AreOffWithoutTheirContent) {
    const Array records{
        action("runCommand", {}),
        action("runCommand", {{"Command", ""}, {"Arguments", "x"}}),
        action("runCommand", {{"Arguments", "x"}}),
        action("sendEmail", {{"Recipients", Array()}}),
        action("sendEmail", {{"Recipients", "a@b.example"}}),
        action("setEvent", {{"Type", "Error"}}),
        action("setEvent", {{"Type", "Error"}, {"Format", ""}}),
        Dictionary{{"runCommand", "text"}, {"sendEmail", 1}, {"setEvent", Array{1}}},
        "no record",
        Null(),
    };
    configure(records);
    EXPECT_TRUE(actions.isEmpty());
    EXPECT_THAT(receive(), IsEmpty());
    EXPECT_THAT(commands, IsEmpty());
    EXPECT_THAT(mails, IsEmpty());
    actions.configure({{"actionsArray", "no list"}});
    EXPECT_TRUE(actions.isEmpty());
}

TEST_F(ActionsTest, AreForTheEventsThatTheirFiltersMatch) {
    Dictionary all = action("setEvent", {{"Type", "Error"}, {"Format", "both"}},
                            {{"Message", "disk*"}, {"Severity", "Error"}});
    all.set("runCommand", Dictionary{{"Command", "true"}});
    all.set("sendEmail", Dictionary{{"Recipients", Array{"a@b.example"}}});
    configure(
        {all, action("setEvent", {{"Format", "other"}}, {{"IP", "10.0.0.0"}, {"Mask", "8"}})});
    struct Case {
        const char *text;
        Priority priority;
        std::vector<std::string> set;
        std::size_t commands;
    };
    const Case cases[] = {
        {"disk full", {23, 3}, {"both", "other"}, 1},
        {"disk full", {23, 4}, {"other"}, 0},
        {"no disk", {23, 3}, {"other"}, 0},
    };
    for (const Case &c : cases) {
        commands.clear();
        mails.clear();
        std::vector<std::string> set;
        for (const EventToSet &event : receive(c.text, c.priority)) {
            set.push_back(event.message);
        }
        EXPECT_EQ(set, c.set);
        EXPECT_EQ(commands.size(), c.commands);
        EXPECT_EQ(mails.size(), c.commands);
    }
}

TEST_F(ActionsTest, SayWhatCannotBeRead) {
    const std::string journal = journalOf([this] {
        configure({action("runCommand", {{"Command", "/bin/true"}, {"Arguments", "'open"}}),
                   action("runCommand", {{"Command", "/bin/true"}, {"Environment", "secret"}})});
    });
    EXPECT_EQ(journal,
              "<4>Action \"test\": a quotation mark in the command's arguments is never closed; "
              "the command "
              "is not run\n"
              "<4>Action \"test\": a line of the command's environment is not of the form "
              "NAME=value\n");
    receive();
    EXPECT_EQ(commands.size(), 1U);
}

TEST_F(ActionsTest, HoldBackWhatComesTooOften) {
    Dictionary record = action("setEvent", {{"Type", "Error"}, {"Format", "x"}});
    record.set("runCommand", Dictionary{{"Command", "true"}});
    record.set("sendEmail", Dictionary{{"Recipients", Array{"a@b.example"}}});
    configure({record, action("runCommand", {{"Command", "false"}})});
    std::size_t set = 0;
    for (int i = 0; i < 25; ++i) {
        set += receive().size();
    }
    EXPECT_EQ(set, Actions::kEventsPerMinute);
    EXPECT_EQ(commands.size(), 2 * Actions::kCommandsPerMinute);
    EXPECT_EQ(mails.size(), Actions::kMailsPerMinute);
    ASSERT_EQ(actions.reportTime(), now + seconds(60));

    EXPECT_EQ(journalOf([this] { actions.report(now + seconds(59)); }), "");
    EXPECT_EQ(
        journalOf([this] { actions.report(now + seconds(60)); }),
        "<4>Action \"test\": too many matches; held back in the last minute: commands 15, e-mails "
        "20, events 15\n"
        "<4>Action \"test\": too many matches; held back in the last minute: commands 15, e-mails "
        "0, events 0\n");
    EXPECT_FALSE(actions.reportTime());
    EXPECT_EQ(counters.heldBack, 15U + 20 + 15 + 15);
    ASSERT_EQ(mails.size(), Actions::kMailsPerMinute + 1);
    EXPECT_EQ(mails.back().subject, "20 more events in the last minute");
    EXPECT_THAT(mails.back().body, HasSubstr("The action \"test\" matched 20 more events"));
    EXPECT_THAT(mails.back().recipients, ElementsAre("a@b.example"));

    now += seconds(60);
    EXPECT_EQ(receive().size(), 1U);
    EXPECT_EQ(mails.size(), Actions::kMailsPerMinute + 2);
}

TEST_F(ActionsTest, TellOfAMinuteBeforeTheNextBegins) {
    configure({action("runCommand", {{"Command", "true"}})});
    // Events that come without a pause: nobody finds the time to ask for a report.
    const std::string journal = journalOf([this] {
        for (int i = 0; i < 3 * 60; ++i) {
            receive();
            now += seconds(1);
        }
    });
    EXPECT_EQ(commands.size(), 3 * Actions::kCommandsPerMinute);
    EXPECT_EQ(
        journal,
        "<4>Action \"test\": too many matches; held back in the last minute: commands 50, e-mails "
        "0, events 0\n"
        "<4>Action \"test\": too many matches; held back in the last minute: commands 50, e-mails "
        "0, events 0\n");
    EXPECT_EQ(counters.heldBack, 100U);
}

TEST_F(ActionsTest, KeepTheirCountsWhenOtherSettingsChange) {
    const Array records{action("runCommand", {{"Command", "true"}})};
    for (std::uint64_t i = 0; i < Actions::kCommandsPerMinute; ++i) {
        configure(records, {{"dateFormat", std::to_string(i)}});
        receive();
    }
    receive();
    EXPECT_EQ(commands.size(), Actions::kCommandsPerMinute);
    // Other actions begin anew, and what was held back is told before.
    const std::string journal = journalOf([this] {
        configure({action("runCommand", {{"Command", "false"}})});
    });
    EXPECT_THAT(journal, HasSubstr("too many matches; held back in the last minute: commands 1,"));
    receive();
    EXPECT_EQ(commands.back().program, "false");
}

TEST_F(ActionsTest, WithAThresholdActAtTheMatchThatReachesIt) {
    Dictionary limited = action("runCommand", {{"Command", "true"}});
    limited.set("threshold", Dictionary{{"Matches", 3}, {"Minutes", 10}, {"PerHost", true}});
    configure({limited, action("setEvent", {{"Format", "each"}}, {{"Message", "disk*"}})});
    const auto matchFrom = [this](const char *address) {
        commands.clear();
        // One without a threshold goes on beside it.
        EXPECT_EQ(receive("disk full", {23, 3}, address).size(), 1U);
        now += seconds(10);
        return commands.size();
    };
    for (const char *address : {"10.0.0.1", "10.0.0.2", "10.0.0.1", "10.0.0.2"}) {
        EXPECT_EQ(matchFrom(address), 0U);
    }
    EXPECT_EQ(matchFrom("10.0.0.1"), 1U);
    EXPECT_EQ(matchFrom("10.0.0.1"), 0U);
    EXPECT_EQ(matchFrom("10.0.0.2"), 1U);
    EXPECT_EQ(counters.belowThreshold, 5U);
    // What its filter does not match does not count.
    limited.set("Message", "link*");
    configure({limited});
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(receive("disk full").empty());
    }
    EXPECT_EQ(commands.size(), 1U);
    EXPECT_EQ(counters.belowThreshold, 5U);
}

TEST_F(ActionsTest, WithAThresholdThatMeansNothingActAtEachMatch) {
    for (const Value &threshold :
         {Value("x"), Value(Dictionary{{"Matches", 0}, {"Minutes", 1}}),
          Value(Dictionary{{"Matches", 2}, {"Minutes", 1 << 30}}), Value(Dictionary{})}) {
        commands.clear();
        Dictionary record = action("runCommand", {{"Command", "true"}});
        record.set("threshold", threshold);
        configure({record});
        receive();
        receive();
        EXPECT_EQ(commands.size(), 2U);
    }
    EXPECT_EQ(counters.belowThreshold, 0U);
}

TEST_F(ActionsTest, HoldBackBehindTheThreshold) {
    Dictionary limited = action("runCommand", {{"Command", "true"}});
    limited.set("threshold", Dictionary{{"Matches", 2}, {"Minutes", 10}, {"PerHost", true}});
    configure({limited});
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 25; ++i) {
            receive("x", {23, 3}, ("10.0.0." + std::to_string(i)).c_str());
        }
    }
    EXPECT_EQ(commands.size(), Actions::kCommandsPerMinute);
    EXPECT_EQ(counters.belowThreshold, 25U);
    journalOf([this] { actions.report(now + seconds(60)); });
    EXPECT_EQ(counters.heldBack, 15U);
}

TEST_F(ActionsTest, KeepTheirCountsWhileTheirRecordsStay) {
    Dictionary limited = action("runCommand", {{"Command", "true"}});
    limited.set("threshold", Dictionary{{"Matches", 3}, {"Minutes", 10}});
    const Dictionary other = action("setEvent", {{"Format", "x"}}, {{"Message", "other"}});
    configure({limited});
    receive();
    configure({other, limited, limited});
    receive();
    EXPECT_EQ(commands.size(), 0U);
    configure({limited});
    receive();
    EXPECT_EQ(commands.size(), 1U) << "the former one of the two is the one that stays";
    // One that was edited begins anew.
    limited.set("Message", "*");
    configure({limited});
    now += seconds(600);
    receive();
    receive();
    EXPECT_EQ(commands.size(), 1U);
    receive();
    EXPECT_EQ(commands.size(), 2U);
}

TEST_F(ActionsTest, KeepWhatTheyHeldBackWhileTheirRecordsStay) {
    const Dictionary stays = action("runCommand", {{"Command", "true"}});
    const Dictionary goes = action("setEvent", {{"Format", "x"}});
    configure({stays, goes});
    for (int i = 0; i < 12; ++i) {
        receive();
    }
    EXPECT_EQ(journalOf([&] { configure({stays}); }),
              "<4>Action \"test\": too many matches; held back in the last minute: commands 0, "
              "e-mails 0, events 2\n");
    ASSERT_EQ(actions.reportTime(), now + seconds(60));
    EXPECT_EQ(journalOf([this] { actions.report(now + seconds(60)); }),
              "<4>Action \"test\": too many matches; held back in the last minute: commands 2, "
              "e-mails 0, events 0\n");
}

TEST_F(ActionsTest, SayOnceThatAThresholdHasTooManyHosts) {
    Dictionary limited = action("runCommand", {{"Command", "true"}});
    limited.set("threshold", Dictionary{{"Matches", 2}, {"Minutes", 10}, {"PerHost", true}});
    configure({limited});
    const std::string journal = journalOf([this] {
        for (std::size_t i = 0; i < MatchThreshold::kMostHosts + 5; ++i) {
            receive("x", {23, 3},
                    ("10.0." + std::to_string(i / 256) + '.' + std::to_string(i % 256)).c_str());
        }
    });
    EXPECT_EQ(journal,
              "<4>Action \"test\": too many hosts or matches within the time of its threshold; the "
              "hosts that were silent longest are forgotten\n");
    EXPECT_EQ(counters.hostsForgotten, 5U);
}

}  // namespace
}  // namespace quorbel
