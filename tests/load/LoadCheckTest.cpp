// That the check of a log tells a message that a crash cut from one that is wrong.

#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace quorbel {
namespace {

using load::Plan;
using load::Tally;

struct LoadCheckTest : ::testing::Test {
    LoadCheckTest() { plan.count = 200; }

    /// What is found of a log that holds message 122, as the service writes it, and this one.
    [[nodiscard]] Tally tallyWith(const std::string &message) const {
        folder.write("2026-11-21.log", line(load::messageText(plan, 122)) + line(message));
        return load::tally(folder.path(), plan);
    }
    static std::string line(const std::string &message) {
        return "1795600000,Local0.Informational,127.0.0.1," + message + "\r\n";
    }

    testing::TemporaryFolder folder;
    Plan plan;
};

TEST_F(LoadCheckTest, ABeginningOfAMessageIsCut) {
    const std::string whole = load::messageText(plan, 123);
    for (std::size_t length = 1; length < whole.size(); ++length) {
        const Tally found = tallyWith(whole.substr(0, length));
        EXPECT_EQ(found.cut, 1U) << length << ": " << load::describe(found);
        EXPECT_EQ(found.stored, 1U) << length << ": " << load::describe(found);
        EXPECT_TRUE(found.isClean()) << length << ": " << load::describe(found);
    }
    EXPECT_EQ(tallyWith(whole).stored, 2U);
}

TEST_F(LoadCheckTest, WhatIsNoBeginningIsAltered) {
    const std::string whole = load::messageText(plan, 123);
    std::string other = whole;
    other[whole.size() / 2] = '#';
    for (const std::string &message :
         {other, whole + 'x', other.substr(0, whole.size() - 1), load::messageText(plan, 200),
          whole.substr(0, whole.find("0123")) + "x123"}) {
        const Tally found = tallyWith(message);
        EXPECT_EQ(found.altered, 1U) << message << ": " << load::describe(found);
        EXPECT_EQ(found.cut, 0U) << message << ": " << load::describe(found);
        EXPECT_FALSE(found.isClean()) << message;
    }
}

}  // namespace
}  // namespace quorbel
