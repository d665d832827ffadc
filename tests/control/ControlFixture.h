#pragma once

#include "control/ControlProcess.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace quorbel::testing {

/// quorbelctl over log files that the test writes.
struct ControlFixture : ::testing::Test {
    using Arguments = std::vector<std::string>;

    [[nodiscard]] ControlResult run(Arguments arguments) const {
        return runControl(setup(), std::move(arguments));
    }
    /// The same, for its output.
    [[nodiscard]] std::string outputOf(Arguments arguments) const {
        return run(std::move(arguments)).output;
    }
    [[nodiscard]] ControlProcess::Setup setup() const { return {folder.path()}; }
    /// As the service does.
    void append(const std::string &name, std::string_view bytes) const {
        std::ofstream(folder.path() / name, std::ios::app | std::ios::binary) << bytes;
    }
    static std::string line(std::int64_t seconds, const std::string &rest) {
        return std::to_string(seconds) + "," + rest + "\r\n";
    }

    TemporaryFolder folder;
};

/// 2023-11-14, 22:13:20 UTC.
inline constexpr std::int64_t kMoment = 1700000000;

}  // namespace quorbel::testing
