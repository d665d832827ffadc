// The start-up load on any number of threads, with any cuts, against events that come one by one
// from a slow reader.

#include "common/Severity.h"
#include "core/LogLoad.h"
#include "core/WindowData.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "support/ScopedVariable.h"
#include "support/Seed.h"
#include "support/SlowLogReader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using testing::expectSame;
using testing::LogFieldTexts;
using testing::Window;

/// As the records of events are filled that come from lines that are not UTF-8.
void arrive(Window &window, const LogFieldTexts &line) {
    EventFields fields;
    std::optional<std::string_view> *const targets[] = {&fields.date, &fields.priority,
                                                        &fields.host, &fields.message};
    for (std::size_t i = 0; i < line.size() && isUtf8(line[i]); ++i) {
        *targets[i] = line[i];
    }
    window.intake.setNotification(fields);
}

class LogLoadTest : public ::testing::Test {
protected:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
    }
    std::string oneOf(const std::vector<std::string> &texts) { return texts[below(texts.size())]; }

    std::string someDate() {
        // Far enough from what is still counted, or hours from it, for a test that takes a while.
        const auto hour = static_cast<std::int64_t>(below(60));
        return oneOf({std::to_string(m_now - hour * 3600), std::to_string(m_now - 60 * 3600),
                      std::to_string(m_now + hour * 86'400), "0", "007", "-5", "1e9", "+3",
                      "1700000000.5", "99999999999999999999", "\xd9\xa1\xd9\xa2", "yesterday",
                      "\xff", "1700000000"});
    }
    std::string someLine() {
        const std::string date = below(4) == 0 ? someDate() : "1700000" + std::to_string(below(99));
        const std::string host = below(3) == 0 ? "10.0.0." + std::to_string(below(200))
                                               : oneOf({"a", "host-3", "\xc3\xa9", "", "\xfe"});
        const std::string priority =
            below(9) == 0 ? "P" + std::to_string(below(50)) + ".Alert"
                          : oneOf({"Local7.Error", "AlertX.Notice", "Kern.Debug", "odd", "\x80",
                                   "Facility7.Error", "Facility9.Error"});
        std::string message = oneOf({"up", "a, b,, c", "", " ", std::string("nul\0in", 6), "\xff",
                                     "\xe2\x82\xac", "one\rtwo"});
        if (below(30) == 0) {
            message.append(below(4000), 'x');
        }
        return date + ',' + priority + ',' + host + ',' + message +
               oneOf({"\r\n", "\r\n", "\r\n", "\n", "\r", "\r\n\r\n", ",\r\n", "\n\r"});
    }
    std::string someFile() {
        std::string bytes;
        switch (below(6)) {
            case 0:
                break;
            case 1:
                for (std::size_t left = below(3000); left > 0; --left) {
                    bytes += std::string("ab1,,,\r\n\0\xff", 10)[below(10)];
                }
                break;
            case 2:  // not a line feed
                for (std::size_t left = below(300); left > 0; --left) {
                    bytes += "1,Local7.Error,h," + std::to_string(left) + '\r';
                }
                break;
            default:
                for (std::size_t left = below(300); left > 0; --left) {
                    bytes += someLine();
                }
        }
        if (below(3) == 0) {
            bytes += "1700000001,Local7.Error,10.0.0.1,no line end";
        }
        return bytes;
    }
    /// Writes files in place of all others, in the order of their names.
    void writeFiles(const std::vector<std::string> &files) {
        for (const std::string &name : listFolder(m_folder.path())) {
            std::filesystem::remove(m_folder.path() / name);
        }
        for (std::size_t i = 0; i < files.size(); ++i) {
            m_folder.write(std::to_string(1000 + i) + ".log", files[i]);
        }
    }
    std::size_t addLines(std::size_t count) {
        std::string bytes;
        for (std::size_t i = 0; i < count; ++i) {
            bytes += "1700000000,Local7.Error,h," + std::to_string(i) + "\r\n";
        }
        m_folder.write("1000.log", bytes);
        return bytes.size();
    }
    static void expectNumbered(EventList &list, std::size_t first) {
        for (std::size_t row = 0; row < list.size(); ++row) {
            ASSERT_EQ(list.message(list.size() - 1 - row), std::to_string(first + row));
        }
    }

    testing::TemporaryFolder m_folder;
    testing::ScopedVariable m_library{"QUORBEL_LIBRARY", m_folder.path().string()};
    std::mt19937 m_random{testing::seed()};
    std::int64_t m_now = std::time(nullptr) / 3600 * 3600 - 1800;
};

TEST_F(LogLoadTest, AnySharesLoadWhatComesOneByOne) {
    for (int round = 0; round < 40; ++round) {
        std::vector<std::string> files(below(round % 5 == 0 ? 60 : 6));
        std::ranges::generate(files, [this] { return someFile(); });
        writeFiles(files);
        const LogLoad::Shares shares{.threads = below(5),
                                     .bytes = std::vector<std::uint64_t>{
                                         1, 37, 1023, 1024, 9000, 40'000, 1 << 20}[below(7)]};
        SCOPED_TRACE(std::to_string(round) + ": " + std::to_string(shares.threads) + " threads, " +
                     std::to_string(shares.bytes) + " bytes");
        const int before = static_cast<int>(below(2) * 30);
        Window loaded;
        loaded.fill(before);
        const auto extents = loaded.intake.initializeLog({}, shares);
        loaded.hosts.logWasLoaded();

        Window expected;
        expected.fill(before);
        for (const auto counter : kSeverityCounters) {
            expected.state.*counter = 0;
        }
        expected.state.arrivals = {};
        for (const std::string &file : files) {
            for (const LogFieldTexts &line : testing::readSlowly(file)) {
                arrive(expected, line);
            }
        }
        expected.hosts.logWasLoaded();
        expectSame(loaded, expected, m_now);
        ASSERT_EQ(extents.size(), files.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            EXPECT_EQ(extents[i].bytes, files[i].size());
            EXPECT_EQ(extents[i].lines, files[i].rfind('\n') + 1);
        }
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(LogLoadTest, ManyLinesKeepTheirOrder) {
    const std::size_t lines = 60'000;
    addLines(lines);
    for (const std::size_t threads : {1U, 2U, 7U}) {
        Window window;
        window.intake.initializeLog({}, {.threads = threads, .bytes = 100'000});
        ASSERT_EQ(window.list.size(), lines);
        expectNumbered(window.list, 0);
        EXPECT_EQ(window.state.iError, static_cast<std::int64_t>(lines));
    }
}

TEST_F(LogLoadTest, ThreadsAreStartedOnlyWhereTheyHaveSomethingToDo) {
    const std::size_t bytes = addLines(2000);
    const auto threads = [](const LogLoad::Shares &shares) {
        return LogLoad(logFiles(), 0, shares).threads();
    };
    EXPECT_EQ(threads({.threads = 8}), 0U);
    EXPECT_EQ(threads({.threads = 8, .bytes = bytes / 2 + 1}), 0U);
    EXPECT_EQ(threads({.threads = 8, .bytes = bytes / 3}), 3U);
    EXPECT_EQ(threads({.threads = 2, .bytes = 1000}), 2U);
    EXPECT_EQ(threads({.threads = 1, .bytes = 1000}), 0U);
    EXPECT_GE(LogLoad::processors(), 1U);
}

TEST_F(LogLoadTest, ProgressGrowsToTheBytesOfTheFiles) {
    const std::size_t bytes = addLines(30'000);
    for (const std::size_t threads : {1U, 3U}) {
        Window window;
        std::uint64_t last = 0;
        const std::thread::id here = std::this_thread::get_id();
        window.intake.initializeLog(
            [&](std::uint64_t read, std::uint64_t total) {
                EXPECT_EQ(std::this_thread::get_id(), here);
                EXPECT_EQ(total, bytes);
                EXPECT_GE(read, last);
                last = read;
            },
            {.threads = threads, .bytes = 10'000});
        EXPECT_EQ(last, bytes);
    }
}

TEST_F(LogLoadTest, WhoDoesNotWaitGetsAllInItsOrder) {
    constexpr std::size_t kLines = 6000;
    addLines(kLines);
    for (int round = 0; round < 60; ++round) {
        LogLoad load(logFiles(), 0, {.threads = below(4) + 1, .bytes = 20'000});
        EventList list;
        for (;;) {
            if (auto batch = load.poll()) {
                list.insertAllRaw(std::move(batch->loaded.events));
            } else if (load.isDone()) {
                break;
            }
        }
        ASSERT_EQ(list.size(), kLines) << round;
        expectNumbered(list, 0);
    }
}

TEST_F(LogLoadTest, ALoadThatIsGivenUpEnds) {
    addLines(60'000);
    for (const std::size_t batches : {0U, 1U, 5U}) {
        LogLoad load(logFiles(), 0, {.threads = 4, .bytes = 10'000});
        for (std::size_t i = 0; i < batches; ++i) {
            EXPECT_TRUE(load.next([](std::uint64_t) {}));
        }
    }
}

TEST_F(LogLoadTest, FilesMayGrowVanishAndBeReplacedMeanwhile) {
    addLines(1000);
    m_folder.write("1001.log", "1,Local7.Error,h,1001\r\n");
    m_folder.write("1002.log", "1,Local7.Error,h,gone\r\n");
    Window window;
    bool isFirst = true;
    const auto extents = window.intake.initializeLog(
        [&](std::uint64_t, std::uint64_t) {
            if (std::exchange(isFirst, false)) {
                const auto file = m_folder.path() / "1000.log";
                std::ofstream(file, std::ios::app) << "1,Local7.Error,h,1000\r\n";
                std::filesystem::remove(m_folder.path() / "1002.log");
                std::filesystem::rename(
                    m_folder.write("new", "1,Local7.Error,h,of another file\r\n"), file);
            }
        },
        {.threads = 1, .bytes = 5000});
    ASSERT_EQ(window.list.size(), 1002U);
    expectNumbered(window.list, 0);
    ASSERT_EQ(extents.size(), 2U);
    EXPECT_EQ(extents[1].bytes, 23U);
}

TEST_F(LogLoadTest, AFileThatIsCutOffMeanwhileHasWhatWasLeft) {
    const std::size_t bytes = addLines(60'000);
    for (const std::size_t threads : {1U, 3U}) {
        addLines(60'000);
        Window window;
        bool isFirst = true;
        const auto extents = window.intake.initializeLog(
            [&](std::uint64_t, std::uint64_t) {
                if (std::exchange(isFirst, false)) {
                    std::filesystem::resize_file(m_folder.path() / "1000.log", bytes / 2);
                }
            },
            {.threads = threads, .bytes = 20'000});
        ASSERT_EQ(extents.size(), 1U);
        EXPECT_GE(extents[0].bytes, bytes / 2);
        // The last one may have lost its end.
        EXPECT_GT(window.list.size(), 29'000U);
        window.list.removeRows({{0, 1}});
        expectNumbered(window.list, 0);
    }
}

// With nothing but its sanitizer to judge: whatever happens to files, it ends.
TEST_F(LogLoadTest, FilesThatChangeAllTheTimeAreRead) {
    std::atomic<bool> isOver = false;
    std::thread changes([&] {
        for (std::size_t i = 0; !isOver; ++i) {
            m_folder.write("100" + std::to_string(i % 5) + ".log",
                           std::string(50'000 + i % 3 * 200'000, "x,\n"[i % 3]));
        }
    });
    addLines(20'000);
    for (int round = 0; round < 20; ++round) {
        Window window;
        window.intake.initializeLog({}, {.threads = 3, .bytes = 3000});
    }
    isOver = true;
    changes.join();
}

}  // namespace
}  // namespace quorbel
