#include "control/ControlFixture.h"
#include "platform/Files.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

namespace quorbel {
namespace {

using testing::ControlProcess;
using ::testing::HasSubstr;
using testing::kMoment;

struct FollowTest : testing::ControlFixture {
    /// Begins to follow; `wanted` is what it tells, and grows.
    void follow(Arguments arguments = {"tail", "-f"}) {
        process.emplace(setup(), std::move(arguments));
    }
    static std::string event(int number) {
        return std::to_string(kMoment + number) + ",User.Notice,h,number " + std::to_string(number);
    }
    void add(const std::string &file, int number) {
        append(file, event(number) + "\r\n");
        wanted += event(number) + "\n";
    }
    /// The service replaces a file in one step.
    void replace(const std::string &file, const std::string &bytes) const {
        ASSERT_TRUE(replaceFile(folder.path() / file, bytes, 0644));
    }
    bool isAsWanted() { return process->waitForOutput(wanted); }

    std::optional<ControlProcess> process;
    std::string wanted;
};

TEST_F(FollowTest, TellsWhatComesOnceAndInItsOrder) {
    for (int i = 0; i < 12; ++i) {
        append("2023-11-14.log", event(i) + "\r\n");
        wanted += i < 2 ? "" : event(i) + "\n";
    }
    follow();
    ASSERT_TRUE(isAsWanted()) << process->output();
    for (int i = 12; i < 500; ++i) {
        add("2023-11-14.log", i);
    }
    EXPECT_TRUE(isAsWanted()) << process->output();
    // In two pieces: told when it is whole.
    append("2023-11-14.log", event(500).substr(0, 20));
    add("2023-11-14.log2", 999);
    wanted.resize(wanted.size() - event(999).size() - 1);
    append("2023-11-14.log", event(500).substr(20) + "\r\n");
    wanted += event(500) + "\n";
    EXPECT_TRUE(isAsWanted()) << process->output();
    process->signal(SIGINT);
    EXPECT_EQ(process->waitForEnd(), 0);
    EXPECT_EQ(process->output(), wanted);
    EXPECT_EQ(process->complaint(), "");
}

TEST_F(FollowTest, GoesOnWithTheNextDay) {
    add("2023-11-14.log", 1);
    follow();
    ASSERT_TRUE(isAsWanted());
    add("2023-11-14.log", 2);
    add("2023-11-15.log", 3);
    add("2023-11-15.log", 4);
    EXPECT_TRUE(isAsWanted()) << process->output();
    add("2023-11-15.log", 5);
    ASSERT_TRUE(isAsWanted()) << process->output();
    // The clock was wrong.
    add("2023-11-10.log", 6);
    EXPECT_TRUE(isAsWanted()) << process->output();
    process->signal(SIGTERM);
    EXPECT_EQ(process->waitForEnd(), 0);
}

TEST_F(FollowTest, BeginsWithAnEmptyFolder) {
    follow({"tail", "--follow", "--lines", "5", "number 2"});
    // Nothing says that it waits by now: what came before is told by the tail.
    add("2023-11-14.log", 2);
    ASSERT_TRUE(isAsWanted());
    append("2023-11-14.log", event(3) + "\r\n");
    add("2023-11-14.log", 20);
    EXPECT_TRUE(isAsWanted()) << process->output();
}

TEST_F(FollowTest, AReplacedFileIsToldFromWhereItWas) {
    std::string kept;
    for (int i = 0; i < 8; ++i) {
        add("2023-11-14.log", i);
        kept += i % 2 == 0 ? event(i) + "\r\n" : "";
    }
    follow();
    ASSERT_TRUE(isAsWanted());
    // Events were deleted, the last one too.
    replace("2023-11-14.log", kept);
    add("2023-11-14.log", 8);
    ASSERT_TRUE(isAsWanted()) << process->output();
    kept += event(8) + "\r\n";
    // One was put back among them, and others came before and after, in the same second.
    append("2023-11-14.log", event(8) + "\r\n" + event(8) + "\r\n");
    replace("2023-11-14.log",
            event(1) + "\r\n" + kept + event(8) + "\r\n" + event(8) + "\r\n" + event(9) + "\r\n");
    wanted += event(8) + "\n" + event(8) + "\n" + event(9) + "\n";
    add("2023-11-14.log", 10);
    EXPECT_TRUE(isAsWanted()) << process->output();
    // All of it.
    replace("2023-11-14.log", "");
    add("2023-11-14.log", 11);
    EXPECT_TRUE(isAsWanted()) << process->output();
    std::filesystem::remove(folder.path() / "2023-11-14.log");
    add("2023-11-14.log", 12);
    EXPECT_TRUE(isAsWanted()) << process->output();
    // An old day that comes back is nothing new.
    replace("2023-11-01.log", event(1) + "\r\n");
    add("2023-11-14.log", 13);
    EXPECT_TRUE(isAsWanted()) << process->output();
}

TEST_F(FollowTest, LargeFilesAreReplacedToo) {
    std::string lines;
    for (int i = 0; i < 60'000; ++i) {
        lines += event(i) + std::string(60, 'x') + "\r\n";
    }
    folder.write("2023-11-14.log", lines);
    ASSERT_GT(lines.size(), 4U << 20U);
    follow({"tail", "-f", "-n1"});
    ASSERT_TRUE(process->waitForLines(1));
    wanted = process->output();
    replace("2023-11-14.log", lines.substr(lines.find('\n', lines.size() / 2) + 1));
    add("2023-11-14.log", 60'000);
    EXPECT_TRUE(isAsWanted()) << process->output().size();
    // All lines of the same second, as in a flood.
    std::string flood;
    for (int i = 0; i < 30'000; ++i) {
        flood += event(70'000) + std::to_string(i) + "\r\n";
        wanted += event(70'000) + std::to_string(i) + "\n";
    }
    append("2023-11-14.log", flood);
    ASSERT_TRUE(isAsWanted()) << process->output().size();
    replace("2023-11-14.log", flood);
    add("2023-11-14.log", 70'001);
    EXPECT_TRUE(isAsWanted()) << process->output().size();
}

TEST_F(FollowTest, EndsWhenNobodyReadsOnAlthoughNothingComes) {
    add("2023-11-14.log", 1);
    follow();
    ASSERT_TRUE(isAsWanted());
    process->closeOutput();
    EXPECT_EQ(process->waitForEnd(), 0);
    EXPECT_EQ(process->complaint(), "");
}

TEST_F(FollowTest, ASignalEndsItWhileNobodyTakesItsOutput) {
    add("2023-11-14.log", 1);
    follow();
    ASSERT_TRUE(isAsWanted());
    std::string many;
    for (int i = 0; i < 100'000; ++i) {
        many += event(i) + "\r\n";
    }
    append("2023-11-14.log", many);
    ASSERT_TRUE(testing::waitUntil([this] { return process->isStuck(); }));
    process->signal(SIGINT);
    EXPECT_EQ(process->waitForEndUnread(), 0);
}

TEST_F(FollowTest, SaysWhenTheFolderGoes) {
    add("2023-11-14.log", 1);
    follow();
    ASSERT_TRUE(isAsWanted());
    std::filesystem::rename(folder.path(), folder.path().string() + ".away");
    EXPECT_EQ(process->waitForEnd(), 3);
    EXPECT_THAT(process->complaint(), HasSubstr("is gone"));
    std::filesystem::rename(folder.path().string() + ".away", folder.path());
}

}  // namespace
}  // namespace quorbel
