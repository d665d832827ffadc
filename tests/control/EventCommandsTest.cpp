#include "control/ControlFixture.h"
#include "platform/KeyedArchive.h"
#include "platform/Text.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace quorbel {
namespace {

using testing::ControlProcess;
using ::testing::HasSubstr;
using testing::kMoment;

struct EventCommandsTest : testing::ControlFixture {
    void writeTwoDays() const {
        append("2023-11-14.log", line(kMoment, "Local7.Error,10.0.0.5,disk full, retrying") +
                                     line(kMoment + 1, "Auth.Notice,h2,Login by root"));
        append("2023-11-15.log", line(kMoment + 86400, "Kern.Critical,10.1.0.9,Disk on fire") +
                                     line(kMoment + 86401, "Cron.Debug,h2,login by nobody"));
        append("system.LOG", line(kMoment, "Kern.Error,h,not a log file"));
    }
};

constexpr const char *kFull = "1700000000,Local7.Error,10.0.0.5,disk full, retrying\n";
constexpr const char *kRoot = "1700000001,Auth.Notice,h2,Login by root\n";
constexpr const char *kFire = "1700086400,Kern.Critical,10.1.0.9,Disk on fire\n";
constexpr const char *kNobody = "1700086401,Cron.Debug,h2,login by nobody\n";

TEST_F(EventCommandsTest, FindFindsWhatTheWindowWould) {
    writeTwoDays();
    struct Case {
        Arguments filter;
        std::string wanted;
    };
    const std::string full = kFull;
    const std::string root = kRoot;
    const std::string fire = kFire;
    const std::string nobody = kNobody;
    const Case cases[] = {
        {{}, full + root + fire + nobody},
        {{"disk"}, full + fire},
        {{"disk", "full"}, full},
        {{"--contains-case", "disk"}, full},
        {{"--lacks", "disk"}, root + nobody},
        {{"-v", "disk", "-v", "root"}, nobody},
        {{"--matches", "^login by (root|admin)$"}, root},
        {{"-e", "fire|root"}, root + fire},
        {{"--matches-not", "o[nt]"}, full},
        {{"--severity", "error"}, full + fire},
        {{"--severity", "Critical"}, fire},
        {{"--rating", "severe"}, fire},
        {{"--rating", "severe", "--rating", "Normal"}, fire + nobody},
        {{"--facility", "auth"}, root},
        {{"--host", "10.0.0.0/16"}, full},
        {{"--host", "10.*, !10.1.0.9"}, full},
        {{"--host", "H?"}, root + nobody},
        {{"--from", "2023-11-15"}, fire + nobody},
        {{"--until", "2023-11-15"}, full + root},
        {{"--from", "2023-11-14 22:13:21", "--until", "1700086401"}, root + fire},
        {{"--from", "2023-11-15T22:13:21Z"}, nobody},
        // In any field that is shown: the date and the rating too.
        {{"2023-11-15"}, fire + nobody},
        {{"moderate"}, full + root},
        {{"--", "--host"}, ""},
        {{"--time", "today"}, ""},
    };
    for (const Case &c : cases) {
        Arguments arguments{"find"};
        arguments.insert(arguments.end(), c.filter.begin(), c.filter.end());
        const auto result = run(arguments);
        EXPECT_EQ(result.output, c.wanted) << ::testing::PrintToString(c.filter);
        EXPECT_EQ(result.complaint, "");
        EXPECT_EQ(result.status, c.wanted.empty() ? 1 : 0) << ::testing::PrintToString(c.filter);
    }
}

TEST_F(EventCommandsTest, RatingsAndDatesAreThoseOfTheSettings) {
    writeTwoDays();
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{{"severityNotice", 2},
                                                             {"dateFormat", "dd/MM/yyyy"}}));
    EXPECT_EQ(outputOf({"find", "--rating", "severe"}), kRoot);
    EXPECT_EQ(outputOf({"find", "15/11/2023"}), std::string(kFire) + kNobody);
    // A document that cannot be decoded counts as none.
    folder.write("Quorbel.ini", "nonsense");
    EXPECT_EQ(outputOf({"find", "--rating", "severe"}), kFire);
}

TEST_F(EventCommandsTest, DaysAreThoseOfTheLocalCalendar) {
    writeTwoDays();
    ControlProcess::Setup auckland = setup();
    auckland.zone = "Pacific/Auckland";
    EXPECT_EQ(runControl(auckland, {"find", "--from", "2023-11-16"}).output,
              std::string(kFire) + kNobody);
    EXPECT_THAT(runControl(auckland, {"stats"}).output,
                HasSubstr("By day\n           2  2023-11-15\n           2  2023-11-16\n"));
}

TEST_F(EventCommandsTest, JsonHasAnObjectALine) {
    append("2023-11-14.log", line(kMoment, R"(Local7.Error,10.0.0.5,say "disk\full", retrying)") +
                                 "soon,User.Nothing,h2,?\r\n");
    EXPECT_EQ(
        outputOf({"find", "--json"}),
        "{\"time\":1700000000,\"date\":\"2023-11-14T22:13:20Z\",\"priority\":\"Local7.Error\","
        "\"severity\":\"Error\",\"rating\":\"Moderate\",\"host\":\"10.0.0.5\","
        "\"message\":\"say \\\"disk\\\\full\\\", retrying\"}\n"
        "{\"date\":\"soon\",\"priority\":\"User.Nothing\",\"severity\":\"Unknown\","
        "\"rating\":\"Normal\",\"host\":\"h2\",\"message\":\"?\"}\n");
}

// Somebody may have written to the files who is not the service.
TEST_F(EventCommandsTest, WhatStrangersWroteIsHarmless) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += byte == '\r' || byte == '\n' ? '.' : static_cast<char>(byte);
    }
    append("2023-11-14.log", line(kMoment,
                                  "User.Notice,h\x1B]0;x\x07,\x1B[2J\xC2\x9B"
                                  "2J \xE2\x80\xAE"
                                  "gpj.exe \xFF\xC0\x80 \xF0\x9F\x98\x80"));
    append("2023-11-15.log", line(kMoment + 1, "User.Notice,h," + all));
    append("2023-11-16.log", std::string(1'000'000, 'x') + "\r\n" + std::string(5000, '\0'));
    const auto text = run({"find"});
    EXPECT_EQ(text.status, 0);
    EXPECT_TRUE(text.output.starts_with(
        "1700000000,User.Notice,h#033]0;x#007,#033[2J#302#2332J #342#200#256gpj.exe "
        "#377#300#200 \xF0\x9F\x98\x80\n"))
        << text.output;
    const auto isHarmless = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte == '\n' || (byte >= ' ' && byte != 0x7F);
    };
    EXPECT_TRUE(std::ranges::all_of(text.output, isHarmless));
    EXPECT_TRUE(isUtf8(text.output));
    EXPECT_EQ(std::ranges::count(text.output, '\n'), 2);
    const std::string json = outputOf({"find", "--json"});
    EXPECT_TRUE(std::ranges::all_of(json, isHarmless));
    EXPECT_TRUE(isUtf8(json));
    EXPECT_THAT(json, HasSubstr("\"host\":\"h\\u001b]0;x\\u0007\""));
    EXPECT_THAT(json, HasSubstr("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xF0\x9F\x98\x80\"}\n"));
}

TEST_F(EventCommandsTest, TailGivesTheLastOnes) {
    writeTwoDays();
    EXPECT_EQ(outputOf({"tail"}), outputOf({"find"}));
    EXPECT_EQ(outputOf({"tail", "-n", "3"}), std::string(kRoot) + kFire + kNobody);
    EXPECT_EQ(outputOf({"tail", "-n1"}), kNobody);
    EXPECT_EQ(outputOf({"tail", "--lines=1", "disk"}), kFire);
    EXPECT_EQ(outputOf({"tail", "-n2", "--host", "10.0.0.5,10.1.*"}), std::string(kFull) + kFire);
    EXPECT_EQ(run({"tail", "-n0"}).status, 1);
    EXPECT_EQ(run({"tail", "nothing like it"}).status, 1);
    for (const char *wrong : {"-1", "ten", "", "99999999999999999999999"}) {
        EXPECT_EQ(run({"tail", "-n", wrong}).status, 2) << wrong;
    }
}

// Read from the end in parts: none may be left out, nor told twice, where they meet.
TEST_F(EventCommandsTest, TailReadsManyPartsOfAFile) {
    constexpr std::size_t kMany = 60'000;
    std::string lines;
    std::string wanted;
    for (std::size_t i = 0; i < kMany; ++i) {
        const std::string rest = "User.Notice,h,number " + std::to_string(i) +
                                 std::string(i % 97, 'x') + (i % 3 == 0 ? " third" : "");
        lines += line(kMoment, rest);
        wanted += i % 3 == 0 ? std::to_string(kMoment) + "," + rest + "\n" : "";
    }
    folder.write("2023-11-14.log", lines);
    EXPECT_GT(lines.size(), 4U << 20U);
    const std::string found = outputOf({"tail", "-n", std::to_string(kMany), "third"});
    EXPECT_TRUE(found == wanted);
    EXPECT_EQ(outputOf({"find", "third"}) == wanted, true);
    EXPECT_EQ(std::ranges::count(outputOf({"tail", "-n", "7", "third"}), '\n'), 7);
}

TEST_F(EventCommandsTest, StatsCountsWhatIsMeant) {
    writeTwoDays();
    append("2023-11-15.log", "x,y,h2,no date\r\n");
    const std::string text = outputOf({"stats"});
    EXPECT_TRUE(
        text.starts_with("           5  events\n\nBy rating\n           1  Severe\n"
                         "           2  Moderate\n           2  Normal\n"))
        << text;
    EXPECT_THAT(text, HasSubstr("\nBy host\n           3  h2\n           1  10.0.0.5\n"
                                "           1  10.1.0.9\n\nBy day\n           1  -\n"
                                "           2  2023-11-14\n           2  2023-11-15\n"));
    EXPECT_EQ(
        outputOf({"stats", "--json", "disk"}),
        "{\"events\":2,\"ratings\":{\"Severe\":1,\"Moderate\":1,\"Normal\":0,\"Unrated\":0},"
        "\"severities\":{\"Emergency\":0,\"Alert\":0,\"Critical\":1,\"Error\":1,\"Warning\":0,"
        "\"Notice\":0,\"Informational\":0,\"Debug\":0,\"Unknown\":0},"
        "\"hosts\":{\"10.0.0.5\":1,\"10.1.0.9\":1},\"otherHosts\":0,"
        "\"days\":{\"2023-11-14\":1,\"2023-11-15\":1}}\n");
    EXPECT_EQ(run({"stats", "nothing like it"}).status, 1);
}

TEST_F(EventCommandsTest, WrongArgumentsAreSaid) {
    struct Case {
        Arguments arguments;
        const char *complaint;
    };
    const Case cases[] = {
        {{}, "A command is missing"},
        {{"search"}, "no command \"search\""},
        {{"find", "--colour"}, "unrecognized option '--colour'"},
        {{"find", "--host"}, "requires an argument"},
        {{"find", "--severity", "bad"}, "no severity \"bad\" (Emergency, "},
        {{"find", "--severity", "error", "--severity", "alert"}, "given twice"},
        {{"find", "--rating", ""}, "no rating \"\""},
        {{"find", "--facility", "kernel"}, "no facility \"kernel\""},
        {{"find", "--time", "tomorrow"}, "no time \"tomorrow\""},
        {{"find", "--from", "2023-13-01"}, "is no moment"},
        {{"find", "--matches", "a("}, "\"matches\""},
        {{"find", ""}, "\"contains\" cannot be read"},
        {{"find", "\xFF"}, "no UTF-8"},
        {{"find", std::string(10'000, 'x')}, "too long"},
        {{"status", "now"}, "\"now\" is not expected"},
        {{"test-message", "--port", "0"}, "\"0\" is no port"},
        {{"test-message", "--port", "65536"}, "is no port"},
        {{"test-message", "--protocol", "smoke"}, "no protocol \"smoke\""},
        {{"check-settings", "a", "b"}, "\"b\" is not expected"},
    };
    for (const Case &c : cases) {
        const auto result = run(c.arguments);
        EXPECT_EQ(result.status, 2) << c.complaint;
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.complaint.starts_with("quorbelctl: ")) << result.complaint;
        EXPECT_THAT(result.complaint, HasSubstr(c.complaint));
    }
}

TEST_F(EventCommandsTest, HelpAndVersionArePrinted) {
    EXPECT_EQ(outputOf({"--version"}), "quorbelctl " QUORBEL_VERSION "\n");
    for (const Arguments &arguments : {Arguments{"--help"}, Arguments{"find", "--help"}}) {
        const auto help = run(arguments);
        EXPECT_EQ(help.status, 0);
        EXPECT_TRUE(help.output.starts_with("Usage: quorbelctl COMMAND"));
    }
}

TEST_F(EventCommandsTest, AFolderThatIsNotThereIsSaid) {
    const ControlProcess::Setup missing{folder.path() / "none"};
    for (const char *command : {"find", "tail", "stats", "check-settings"}) {
        const auto result = runControl(missing, {command});
        EXPECT_EQ(result.status, 3) << command;
        EXPECT_THAT(result.complaint, HasSubstr("none cannot be read: No such file"));
    }
    EXPECT_EQ(runControl(missing, {"tail", "-f"}).status, 3);
}

TEST_F(EventCommandsTest, WhoMayNotReadIsToldWhoMay) {
    if (getuid() != 0) {
        GTEST_SKIP() << "Only root can act as another user.";
    }
    writeTwoDays();
    ControlProcess::Setup stranger = setup();
    stranger.user = 65534;
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    for (const Arguments &arguments : {Arguments{"find"}, Arguments{"tail", "-f"},
                                       Arguments{"stats"}, Arguments{"check-settings"}}) {
        const auto result = runControl(stranger, arguments);
        EXPECT_EQ(result.status, 4) << arguments.front();
        EXPECT_THAT(result.complaint, HasSubstr("Members of the groups quorbel and "
                                                "quorbel-readers may."));
    }
    // One file alone: what can be read is told.
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod((folder.path() / "2023-11-14.log").c_str(), 0600), 0);
    const auto result = runControl(stranger, {"find", "disk"});
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.output, kFire);
    EXPECT_THAT(result.complaint, HasSubstr("2023-11-14.log cannot be read: Permission denied"));
}

TEST_F(EventCommandsTest, ItEndsWhenNobodyReadsOn) {
    std::string lines;
    for (int i = 0; i < 100'000; ++i) {
        lines += line(kMoment, "User.Notice,h,number " + std::to_string(i));
    }
    folder.write("2023-11-14.log", lines);
    ControlProcess process(setup(), {"find"});
    ASSERT_TRUE(process.waitForLines(1));
    process.closeOutput();
    EXPECT_EQ(process.waitForEnd(), 0);
    EXPECT_EQ(process.complaint(), "");
}

}  // namespace
}  // namespace quorbel
