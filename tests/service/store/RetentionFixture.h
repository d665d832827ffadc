#pragma once

#include "platform/Files.h"
#include "service/store/LogFiles.h"
#include "service/store/Retention.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace quorbel::testing {

inline constexpr std::int64_t kNow = 1'700'000'000;  // 2023-11-14 22:13:20 UTC
inline constexpr std::int64_t kMinute = 60;
inline constexpr std::int64_t kDay = 86400;

inline std::string line(std::int64_t seconds, const std::string &severity,
                        const std::string &message) {
    return std::to_string(seconds) + ",Local7." + severity + ",h," + message + "\r\n";
}

/// Keeps errors for so many of a unit, and everything else for ever.
inline Dictionary keepErrors(int amount, int unit) {
    return {{"removalError", amount}, {"removalErrorUnits", unit}};
}

/// Retention at work in a folder of its own, by clocks that the test sets.
struct RetentionFixture : ::testing::Test {
    void start(const Dictionary &settings) {
        retention.emplace(
            store, feed,
            [this] {
                ++passes;
                return ClockReading{now, running, synchronised};
            },
            std::chrono::milliseconds(5));
        retention->configure(settings);
    }
    /// Waits until all files were gone through by the rules and the time of now, and takes what is
    /// told meanwhile. The next pass may have its rules already, if not yet its time; the one after
    /// it has both, and is over when one more begins.
    void pass() {
        const int before = passes;
        ASSERT_TRUE(waitUntil([&] {
            told += feed.take().value_or("");
            return passes >= before + 3;
        }));
    }
    [[nodiscard]] std::string content(const std::string &name) const {
        return readFile(folder.path() / name).value_or("(no file)");
    }
    [[nodiscard]] ino_t inode(const std::string &name) const {
        struct stat status {};
        EXPECT_EQ(stat((folder.path() / name).c_str(), &status), 0);
        return status.st_ino;
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    RemovalFeed feed;
    std::atomic<std::int64_t> now = kNow;
    std::atomic<std::int64_t> running = 1000;
    std::atomic<bool> synchronised = true;
    std::atomic<int> passes = 0;
    std::string told;
    std::optional<Retention> retention;
};

}  // namespace quorbel::testing
