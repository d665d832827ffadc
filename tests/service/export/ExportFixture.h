#pragma once

#include "platform/Files.h"
#include "service/export/DatabaseExport.h"
#include "service/export/TextExport.h"
#include "service/store/LogFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

inline constexpr std::int64_t kNoon = 1700049600;  // 2023-11-15 12:00:00 UTC

inline std::string line(std::int64_t seconds, std::string_view message) {
    return std::to_string(seconds) + ",User.Notice,alpha," + std::string(message) + "\r\n";
}

inline ino_t inodeOf(const std::filesystem::path &file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

/// What another program writes, its errors included.
inline std::string outputOf(const std::string &command) {
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen((command + " 2>&1").c_str(), "r"),
                                                      pclose);
    std::string output;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe.get())) {
        output.append(buffer.data(), count);
    }
    return output;
}

/// What another program reads from a database.
inline std::string query(const std::filesystem::path &database, const std::string &sql) {
    return outputOf("sqlite3 '" + database.string() + "' \"" + sql + "\"");
}

struct ExportTest : ::testing::Test {
    [[nodiscard]] std::string text(const std::string &name = "out.txt") const {
        return readFile(targets.path() / name).value_or("(no file)");
    }
    std::optional<std::string> runText(const std::string &name = "out.txt",
                                       const std::string &format = "HH:mm:ss") {
        return textExport.run({targets.path() / name, format}, LogSources(store), stop);
    }
    std::optional<std::string> runDatabase(const std::string &format = "HH:mm:ss") {
        return DatabaseExport::run({database(), format}, LogSources(store), stop);
    }
    [[nodiscard]] std::filesystem::path database() const { return targets.path() / "out.db"; }
    [[nodiscard]] std::string rows() const {
        return query(database(),
                     "SELECT time, date, priority, host, message FROM events "
                     "ORDER BY id");
    }
    void append(const std::string &name, const std::string &lines) const {
        std::ofstream(folder.path() / name, std::ios::app) << lines;
    }
    /// Takes one line out of a log file as the service does.
    void cut(const std::string &name, const std::string &wanted) {
        const std::string bytes = readFile(folder.path() / name).value();
        const std::size_t begin = bytes.find(wanted);
        ASSERT_NE(begin, std::string::npos);
        const UniqueFd file = openLogFile(folder.path() / name);
        const MutexLock lock(store.editLock());
        ASSERT_TRUE(store.cutOut(name, file, {{begin, begin + wanted.size()}}));
    }

    testing::TemporaryFolder folder;
    testing::TemporaryFolder targets;
    LogStore store{folder.path()};
    TextExport textExport;
    std::atomic<bool> stop = false;
};

}  // namespace quorbel
