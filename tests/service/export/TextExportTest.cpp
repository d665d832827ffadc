#include "service/export/ExportFixture.h"
#include "service/store/FileSizeLimit.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <string>

namespace quorbel {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(ExportTest, TextHoldsWhatTheFrontEndWouldWrite) {
    append("2023-11-15.log", line(kNoon, "one, two") + line(kNoon + 1, "\"three\"\tfour"));
    append("2023-11-14.log", line(kNoon - 86400, "earlier"));
    append("2023-11-14.log", "no event\r\n,,\r\n");
    folder.write("notes.txt", line(kNoon, "not a log file"));
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_EQ(text(),
              "Date\tPriority\tHost\tMessage\n"
              "12:00:00\tUser.Notice\talpha\tearlier\n"
              "12:00:00\tUser.Notice\talpha\tone, two\n"
              "12:00:01\tUser.Notice\talpha\t\"three\"\tfour\n");
    struct stat status {};
    ASSERT_EQ(::stat((targets.path() / "out.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(runText("out.csv", ""), std::nullopt);
    EXPECT_THAT(text("out.csv"),
                AllOf(StartsWith("Date,Priority,Host,Message\n"
                                 "2023-11-14 12:00:00,User.Notice,alpha,earlier\n"),
                      HasSubstr("alpha,one, two\n")));
    EXPECT_EQ(runText("out.CSV"), std::nullopt);
    EXPECT_THAT(text("out.CSV"), StartsWith("Date\tPriority"));
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("out.CSV", "out.csv", "out.txt"));
}

// The files as a spreadsheet takes them in. Nothing is quoted, so a comma in a message makes one
// more cell of a csv file.
TEST_F(ExportTest, ASpreadsheetReadsTheText) {
    append("2023-11-15.log", line(kNoon, "one, \u201Etwo\u201C") + line(kNoon + 1, "5 \"x\" 'y'"));
    const auto read = [this](const std::string &name, const std::string &separator) {
        return outputOf(
            "/usr/bin/python3 -c 'import csv, sys\n"
            "for row in csv.reader(open(sys.argv[1], newline=\"\", "
            "encoding=\"utf-8\"), delimiter=sys.argv[2]): print(\" | \".join(row))' '" +
            (targets.path() / name).string() + "' '" + separator + "'");
    };
    EXPECT_EQ(runText("out.txt", "yyyy-MM-dd HH:mm:ss"), std::nullopt);
    EXPECT_EQ(read("out.txt", "\t"),
              "Date | Priority | Host | Message\n"
              "2023-11-15 12:00:00 | User.Notice | alpha | one, \u201Etwo\u201C\n"
              "2023-11-15 12:00:01 | User.Notice | alpha | 5 \"x\" 'y'\n");
    EXPECT_EQ(runText("out.csv"), std::nullopt);
    EXPECT_EQ(read("out.csv", ","),
              "Date | Priority | Host | Message\n"
              "12:00:00 | User.Notice | alpha | one |  \u201Etwo\u201C\n"
              "12:00:01 | User.Notice | alpha | 5 \"x\" 'y'\n");
}

TEST_F(ExportTest, TextWithoutEventsIsTheTitles) {
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_EQ(text(), "Date\tPriority\tHost\tMessage\n");
}

// Each step changes something, and says whether the text file may be another one afterwards.
TEST_F(ExportTest, TextIsAppendedToAsLongAsThatIsEnough) {
    struct Step {
        const char *what;
        std::function<void()> change;
        bool isAppended;
    };
    const auto target = targets.path() / "out.txt";
    const Step steps[] = {
        {"nothing", [] {}, true},
        {"grown", [&] { append("2023-11-15.log", line(kNoon + 5, "b")); }, true},
        {"grown over midnight",
         [&] {
             append("2023-11-15.log", line(kNoon + 6, "c"));
             append("2023-11-16.log", line(kNoon + 86400, "d"));
         },
         true},
        {"the earlier day grown", [&] { append("2023-11-15.log", line(kNoon + 7, "e")); }, false},
        {"an earlier day", [&] { append("2023-11-14.log", line(kNoon - 86400, "f")); }, false},
        {"cut", [&] { cut("2023-11-16.log", line(kNoon + 86400, "d")); }, false},
        {"cut and grown",
         [&] {
             append("2023-11-16.log", line(kNoon + 86400, "g") + line(kNoon + 86401, "h"));
             EXPECT_EQ(runText(), std::nullopt);
             cut("2023-11-16.log", line(kNoon + 86400, "g"));
             append("2023-11-16.log", line(kNoon + 86402, "i") + line(kNoon + 86403, "j"));
         },
         false},
        {"rewritten in place",
         [&] {
             std::ofstream(folder.path() / "2023-11-16.log")
                 << line(kNoon + 1, "k") << line(kNoon + 2, "l") << line(kNoon + 2, "m")
                 << line(kNoon + 2, "n");
         },
         false},
        {"a file gone", [&] { std::filesystem::remove(folder.path() / "2023-11-14.log"); }, false},
        {"target changed", [&] { std::ofstream(target, std::ios::app) << "x"; }, false},
        {"target gone", [&] { std::filesystem::remove(target); }, false},
    };
    append("2023-11-15.log", line(kNoon, "a"));
    ASSERT_EQ(runText(), std::nullopt);
    for (const Step &step : steps) {
        // Keeps the number of the old file from being used again.
        const UniqueFd old(::open(target.c_str(), O_RDONLY | O_CLOEXEC));
        const ino_t before = inodeOf(target);
        step.change();
        EXPECT_EQ(runText(), std::nullopt) << step.what;
        EXPECT_EQ(inodeOf(target) == before, step.isAppended) << step.what;
        const std::string result = text();
        TextExport fresh;
        ASSERT_EQ(fresh.run({targets.path() / "fresh.txt", "HH:mm:ss"}, LogSources(store), stop),
                  std::nullopt);
        EXPECT_EQ(result, text("fresh.txt")) << step.what;
    }
    EXPECT_EQ(runText("out.txt", "HH"), std::nullopt);
    EXPECT_THAT(text(), HasSubstr("\n12\tUser.Notice"));
}

TEST_F(ExportTest, AnUnfinishedLineIsExportedAsReadersSeeIt) {
    append("other.log", "1700049600,User.Notice,alpha,begin");
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_THAT(text(), EndsWith("\tbegin\n"));
    append("other.log", "ning\r\n");
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_THAT(text(), EndsWith("Message\n12:00:00\tUser.Notice\talpha\tbeginning\n"));
    EXPECT_EQ(rows(), "1700049600|12:00:00|User.Notice|alpha|beginning\n");
}

TEST_F(ExportTest, TextKeepsTheRightsOfTheFileThatItReplaces) {
    const auto target = targets.write("out.txt", "old");
    ASSERT_EQ(::chmod(target.c_str(), 0604), 0);
    EXPECT_EQ(runText(), std::nullopt);
    struct stat status {};
    ASSERT_EQ(::stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0604U);
    EXPECT_EQ(text(), "Date\tPriority\tHost\tMessage\n");
}

TEST_F(ExportTest, TextFailsWithoutHarm) {
    append("2023-11-15.log", line(kNoon, "a"));
    EXPECT_THAT(runText("missing/out.txt").value_or(""),
                EndsWith("out.txt could not be written: No such file or directory"));
    // What a crash left is in nobody's way.
    targets.write(".out.txt.quorbel-new", "left");
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("out.txt"));
    stop = true;
    append("2023-11-14.log", line(kNoon - 86400, "b"));
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_THAT(text(), Not(HasSubstr("\tb\n")));
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("out.txt"));
    stop = false;
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_THAT(text(), HasSubstr("\tb\n"));
}

// What a kill in the middle of an append leaves is gone after the first run of the next start.
TEST_F(ExportTest, ATornEndOfTheTextIsMended) {
    append("2023-11-15.log", line(kNoon, "a") + line(kNoon, "b"));
    ASSERT_EQ(runText(), std::nullopt);
    const std::string whole = text();
    for (const std::size_t length : {whole.size() - 4, whole.size() - 1, std::size_t{0}}) {
        std::filesystem::resize_file(targets.path() / "out.txt", length);
        TextExport fresh;
        EXPECT_EQ(fresh.run({targets.path() / "out.txt", "HH:mm:ss"}, LogSources(store), stop),
                  std::nullopt);
        EXPECT_EQ(text(), whole);
    }
}

TEST_F(ExportTest, AFullDiskLeavesWholeLines) {
    append("2023-11-15.log", line(kNoon, "a"));
    ASSERT_EQ(runText(), std::nullopt);
    ASSERT_EQ(runDatabase(), std::nullopt);
    const std::string before = text();
    std::string many;
    for (int i = 0; i < 10'000; ++i) {
        many += line(kNoon + 1, "b");
    }
    append("2023-11-15.log", many);
    {
        const testing::FileSizeLimit limit(32'768);
        EXPECT_THAT(runText().value_or(""),
                    EndsWith("out.txt could not be written: File too large"));
        EXPECT_EQ(text(), before);
        EXPECT_THAT(runText("out.txt", "mm:ss").value_or(""),
                    EndsWith("out.txt could not be written: File too large"));
        EXPECT_EQ(text(), before);
        EXPECT_THAT(runDatabase().value_or(""), HasSubstr("out.db could not be written: "));
    }
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("out.db", "out.txt"));
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events; PRAGMA integrity_check"), "1\nok\n");
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(std::ranges::count(text(), '\n'), 10'002);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "10001\n");
}

TEST_F(ExportTest, TargetsAreFilesThatAreNobodyElses) {
    const auto library = folder.path();
    targets.write("file.txt", "x");
    folder.write("Quorbel.ini", "x");
    std::filesystem::create_directory(targets.path() / "folder");
    std::filesystem::create_symlink(targets.path() / "file.txt", targets.path() / "link");
    std::filesystem::create_symlink(library / "Quorbel.ini", targets.path() / "trap.txt");
    std::filesystem::create_symlink(targets.path() / "nowhere" / "x", targets.path() / "dangling");
    ASSERT_EQ(::mkfifo((targets.path() / "fifo").c_str(), 0600), 0);
    struct Case {
        std::filesystem::path file;
        const char *problem;  ///< null: none
    };
    const Case cases[] = {
        {targets.path() / "file.txt", nullptr},
        {targets.path() / "new.any", nullptr},
        {targets.path() / "link", nullptr},
        {targets.path() / "dangling", nullptr},
        {library / "out.txt", nullptr},
        {library / "out.csv", nullptr},
        {library / "out.db", nullptr},
        {"", "not the full path"},
        {"out.txt", "not the full path"},
        {"./out.txt", "not the full path"},
        {"/", "not the full path"},
        {targets.path() / "folder/", "not the full path"},
        {targets.path() / "folder", "not a file that"},
        {targets.path() / "fifo", "not a file that"},
        {"/dev/null", "not a file that"},
        {library / "Quorbel.ini", "own folder"},
        {library / "2023-11-15.log", "own folder"},
        {library / "x" / ".." / "2023-11-15.log", "own folder"},
        {library / "tls" / "key.pem", "own folder"},
        {library / std::string("2023-11-16.log\0.txt", 19), "not the full path"},
        {targets.path() / "trap.txt", "own folder"},
    };
    for (const Case &c : cases) {
        std::filesystem::path file = c.file;
        const auto problem = checkExportTarget(file, library);
        EXPECT_EQ(problem.has_value(), c.problem != nullptr) << c.file;
        if (c.problem != nullptr) {
            EXPECT_THAT(problem.value_or(""), HasSubstr(c.problem));
        }
    }
    std::filesystem::path link = targets.path() / "link";
    EXPECT_EQ(checkExportTarget(link, library), std::nullopt);
    EXPECT_EQ(link, targets.path() / "file.txt");
}

TEST_F(ExportTest, SaysWhatToDoWhereItMayNotWrite) {
    EXPECT_THAT(cannotWrite("/srv/x.txt", EROFS),
                AllOf(StartsWith("/srv/x.txt could not be written: Read-only file system; "),
                      HasSubstr("ReadWritePaths=")));
    EXPECT_EQ(cannotWrite("/srv/x.txt", ENOSPC),
              "/srv/x.txt could not be written: No space left on device");
    EXPECT_THAT(DatabaseExport::run({"/proc/x.db", ""}, LogSources(store), stop).value_or(""),
                StartsWith("/proc/x.db could not be written: "));
}

}  // namespace
}  // namespace quorbel
