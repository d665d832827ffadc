#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "load/SoakForm.h"
#include "platform/KeyedArchive.h"
#include "platform/Value.h"
#include "service/ServiceFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace quorbel::load {
namespace {

using quorbel::testing::waitUntil;
using Transport = Plan::Transport;

struct LoadTest : quorbel::testing::ServiceFixture {
    /// Sends the plan, ends the service in order and accounts for every message.
    void account(Plan plan, std::uint64_t expectedFiltered = 0) {
        const auto service = start();
        plan.port = service->port();
        const Sent sent = send(plan);
        ASSERT_EQ(sent.count, plan.count);
        ASSERT_TRUE(waitForArrival());
        ASSERT_EQ(service->terminate(), 0);
        const std::string journal = service->journal();
        const Tally found = tally(folder.path(), plan);
        SCOPED_TRACE(describe(found) + '\n' + journal);
        const std::uint64_t received = counter(journal, "Received");
        const std::uint64_t dropped = counter(journal, "dropped");
        EXPECT_EQ(received + dropped, plan.count);
        EXPECT_EQ(found.stored + counter(journal, "filtered"), received);
        EXPECT_EQ(found.stored, counter(journal, "stored"));
        EXPECT_EQ(counter(journal, "malformed"), 0U);
        if (dropped == 0) {
            EXPECT_EQ(counter(journal, "filtered"), expectedFiltered);
        }
        EXPECT_TRUE(found.isClean());
        EXPECT_EQ(found.others, 0U);
        if (plan.connections == 1) {
            EXPECT_EQ(found.disordered, 0U);
        }
        figure(name() + ": sent " + std::to_string(sent.count) + " in " +
               std::to_string(sent.seconds) + " s, stored " + std::to_string(found.stored) +
               ", filtered " + std::to_string(counter(journal, "filtered")) + ", dropped " +
               std::to_string(dropped));
    }

    /// Waits until nothing more comes into the files: the service's last bytes may still be on
    /// their way. A connection that was closed with data in it is read to its end.
    bool waitForArrival() {
        LineCounter lines(folder.path());
        std::uint64_t before = 0;
        auto since = std::chrono::steady_clock::now();
        return waitUntil(
            [&] {
                const std::uint64_t now = lines.count();
                if (now != before) {
                    before = now;
                    since = std::chrono::steady_clock::now();
                }
                return std::chrono::steady_clock::now() - since > std::chrono::milliseconds(300);
            },
            std::chrono::minutes(5));
    }

    static std::string name() {
        return ::testing::UnitTest::GetInstance()->current_test_info()->name();
    }
};

std::uint64_t seconds(std::uint64_t inShort) {
    return soakOr(std::uint64_t{60}, inShort);
}

TEST_F(LoadTest, AccountsForEveryDatagram) {
    account({.count = 10'000 * seconds(3), .perSecond = 10'000});
}

TEST_F(LoadTest, AccountsForEveryMessageOfAStream) {
    account({.transport = Transport::kTcp, .count = 10'000 * seconds(3), .perSecond = 10'000});
}

TEST_F(LoadTest, AccountsForEveryMessageOfManyStreams) {
    account({.transport = Transport::kTcp,
             .count = 10'000 * seconds(2),
             .perSecond = 10'000,
             .length = 700,
             .connections = 200,
             .counted = true});
}

TEST_F(LoadTest, AccountsForAStreamFlatOut) {
    account({.transport = Transport::kTcp, .count = 100'000 * soakOr<std::uint64_t>(20, 3)});
}

// Whole blocks of what is sent at once: how many of joined datagrams the kernel has dropped is
// known as long as they are alike.
TEST_F(LoadTest, AccountsForDatagramsFlatOut) {
    account({.count = 64 * 1000 * soakOr<std::uint64_t>(32, 5)});
}

TEST_F(LoadTest, AccountsForWhatIsFiltered) {
    const Dictionary debug{{"IP", "127.0.0.0"},
                           {"Mask", "8"},
                           {"Facility", "Any"},
                           {"Severity", "Debug"},
                           {"Message", "*"}};
    folder.write("Quorbel.ini",
                 writeKeyedArchive(Dictionary{{"excludeFiltersArray", Array{debug}}}));
    const std::uint64_t count = 10'000 * seconds(1);
    // Local0: informational, debug, error.
    account({.count = count, .perSecond = 10'000, .priorities = {134, 134, 135, 131}}, count / 4);
}

/// A day of long ago: every other event is to go, in files of `count` events each.
struct OldDays {
    static constexpr std::uint64_t kDays = 8;
    std::uint64_t count;

    void write(const testing::TemporaryFolder &folder) const {
        for (std::uint64_t day = 1; day <= kDays; ++day) {
            std::string lines;
            for (std::uint64_t i = 0; i < count; ++i) {
                lines += std::to_string(1577836800 + (day - 1) * 86'400 + i % 86'400) +
                         (i % 2 == 0 ? ",User.Error,old,goes " : ",User.Debug,old,stays ") +
                         std::to_string(i) + "\r\n";
            }
            folder.write("2020-01-0" + std::to_string(day) + ".log", lines);
        }
    }
    [[nodiscard]] std::uint64_t kept() const { return kDays * (count / 2); }
};

// Files are rewritten and exported while their store takes new events.
TEST_F(LoadTest, StoresWhileOldEventsAreRemovedAndAllAreExported) {
    const testing::TemporaryFolder exports;
    const OldDays old{soakOr<std::uint64_t>(500'000, 20'000)};
    old.write(folder);
    const auto sizeBefore = file_size(folder.path() / "2020-01-08.log");
    folder.write("Quorbel.ini",
                 writeKeyedArchive(
                     Dictionary{{"removalError", 1},
                                {"removalErrorUnits", 4},
                                {"textInterval", 1},
                                {"textLocation", (exports.path() / "events.txt").string()},
                                {"databaseInterval", 1},
                                {"databaseLocation", (exports.path() / "events.db").string()}}));
    const auto service = start();
    const Plan plan{.port = service->port(),
                    .transport = Transport::kTcp,
                    .count = 10'000 * seconds(2),
                    .perSecond = 10'000};
    ASSERT_EQ(send(plan).count, plan.count);
    // The newest of them comes last.
    const auto last = folder.path() / "2020-01-08.log";
    EXPECT_TRUE(waitUntil([&] { return file_size(last) < sizeBefore; }, std::chrono::minutes(5)));
    ASSERT_TRUE(waitForArrival());
    ASSERT_EQ(service->terminate(), 0);
    const std::string journal = service->journal();
    const Tally found = tally(folder.path(), plan);
    SCOPED_TRACE(describe(found) + '\n' + journal);
    EXPECT_TRUE(found.isClean());
    EXPECT_EQ(found.stored, plan.count);
    EXPECT_EQ(found.others, old.kept());
    EXPECT_EQ(counter(journal, "removed"), old.kept());
    EXPECT_EQ(counter(journal, "stored"), plan.count);
    figure(std::to_string(old.kept()) + " old events removed while " + std::to_string(plan.count) +
           " were stored at 10000/s");
}

}  // namespace
}  // namespace quorbel::load
