#include "service/export/ExportFixture.h"
#include "service/export/Exporter.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using testing::waitUntil;
using namespace std::chrono_literals;

/// Takes what goes to the journal meanwhile into a file that can be read while it grows.
class JournalFile {
public:
    explicit JournalFile(const std::filesystem::path &file) : m_before(::dup(STDERR_FILENO)) {
        const UniqueFd taken(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
        ::dup2(taken.get(), STDERR_FILENO);
    }
    ~JournalFile() { ::dup2(m_before.get(), STDERR_FILENO); }
    JournalFile(const JournalFile &) = delete;
    JournalFile &operator=(const JournalFile &) = delete;

private:
    UniqueFd m_before;
};

struct ExporterTest : ExportTest {
    [[nodiscard]] Dictionary settings(std::int64_t textInterval, const std::string &textName,
                                      std::int64_t databaseInterval) const {
        return {{"textInterval", textInterval},
                {"textLocation", (targets.path() / textName).string()},
                {"databaseInterval", databaseInterval},
                {"databaseLocation", database().string()},
                {"dateFormat", "HH:mm:ss"}};
    }
    bool waitForText(const std::string &ending, const std::string &name = "out.txt") {
        return waitUntil([&] { return text(name).ends_with(ending); });
    }
};

TEST_F(ExporterTest, RunsAtOnceAndThenAtItsInterval) {
    append("2023-11-15.log", line(kNoon, "a"));
    Exporter exporter(store, 20ms);
    exporter.configure(settings(1, "out.txt", 1));
    EXPECT_TRUE(waitForText("\ta\n"));
    EXPECT_TRUE(waitUntil([&] { return rows() == "1700049600|12:00:00|User.Notice|alpha|a\n"; }));
    append("2023-11-15.log", line(kNoon, "b"));
    EXPECT_TRUE(waitForText("\ta\n12:00:00\tUser.Notice\talpha\tb\n"));
    EXPECT_TRUE(waitUntil([&] { return rows().ends_with("|b\n"); }));
}

TEST_F(ExporterTest, FollowsTheSettings) {
    append("2023-11-15.log", line(kNoon, "a"));
    Exporter exporter(store, 1h);
    exporter.configure(settings(0, "off.txt", 0));
    exporter.configure({{"textInterval", 5}, {"databaseInterval", 5}, {"databaseLocation", ""}});
    exporter.configure(settings(-1, "negative.txt", 0));
    exporter.configure(settings(INT64_MAX, "first.txt", 0));
    EXPECT_TRUE(waitForText("\ta\n", "first.txt"));
    append("2023-11-15.log", line(kNoon, "b"));
    // The same file again is not due for a year; another one is at once.
    exporter.configure(settings(INT64_MAX, "first.txt", 0));
    exporter.configure(settings(1, "second.txt", 0));
    EXPECT_TRUE(waitForText("\tb\n", "second.txt"));
    EXPECT_THAT(text("first.txt"), EndsWith("\ta\n"));
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("first.txt", "second.txt"));
}

TEST_F(ExporterTest, SaysAProblemOnceUntilItChanges) {
    append("2023-11-15.log", line(kNoon, "a"));
    const auto target = targets.path() / "out.txt";
    std::filesystem::create_directory(target);
    ::testing::internal::CaptureStderr();
    {
        Exporter exporter(store, 5ms);
        exporter.configure(settings(1, "out.txt", 1));
        // The other export goes on; once it has run some times, so has this one.
        for (const char *const name : {"b", "c", "d"}) {
            append("2023-11-15.log", line(kNoon, name));
            EXPECT_TRUE(
                waitUntil([&] { return rows().ends_with(std::string("|") + name + "\n"); }));
        }
        std::filesystem::remove(target);
        EXPECT_TRUE(waitForText("\td\n"));
        // The line that tells of it comes last.
        append("2023-11-15.log", line(kNoon, "e"));
        EXPECT_TRUE(waitForText("\te\n"));
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<3>Export: " + target.string() +
                  " is not a file that an export may replace\n<5>Export: " + target.string() +
                  " is up to date again\n");
}

// That is no reason to empty the exports.
TEST_F(ExporterTest, LeavesExportsAloneWhileTheFolderOfTheLogFilesIsGone) {
    append("2023-11-15.log", line(kNoon, "a"));
    Exporter exporter(store, 5ms);
    exporter.configure(settings(1, "out.txt", 1));
    ASSERT_TRUE(waitForText("\ta\n"));
    ASSERT_TRUE(waitUntil([&] { return rows().ends_with("|a\n"); }));
    const JournalFile journal(targets.path() / "journal");
    std::filesystem::rename(folder.path(), folder.path().string() + ".away");
    exporter.configure(settings(1, "other.txt", 1));
    EXPECT_TRUE(waitUntil([&] {
        return text("journal") ==
               "<3>Export: The folder of the log files cannot be listed: No such file or "
               "directory\n"
               "<3>Export: The folder of the log files cannot be listed: No such file or "
               "directory\n";
    }));
    EXPECT_EQ(text("other.txt"), "(no file)");
    EXPECT_TRUE(rows().ends_with("|a\n"));
    std::filesystem::rename(folder.path().string() + ".away", folder.path());
    EXPECT_TRUE(waitForText("\ta\n", "other.txt"));
}

TEST_F(ExporterTest, EndsEarly) {
    std::string lines;
    for (int i = 0; i < 200'000; ++i) {
        lines += line(kNoon + i, "x");
    }
    append("2023-11-15.log", lines);
    const auto begin = std::chrono::steady_clock::now();
    {
        Exporter exporter(store);
        exporter.configure(settings(1, "out.txt", 1));
        EXPECT_TRUE(waitUntil([&] { return !listFolder(targets.path()).empty(); }));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    const std::string result = text();
    EXPECT_TRUE(result == "(no file)" || result.ends_with("\tx\n"));
    EXPECT_TRUE(runDatabase() == std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "200000\n");
}

}  // namespace
}  // namespace quorbel
