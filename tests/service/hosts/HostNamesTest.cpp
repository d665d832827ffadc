#include "service/hosts/HostNames.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace quorbel {
namespace {

using testing::waitUntil;

IpAddress ip(const std::string &text) {
    return IpAddress::parse(text).value();
}

/// A name service whose answers are set by the test; look-ups can be held up.
struct NameService {
    std::optional<std::string> lookUp(const IpAddress &address) {
        std::unique_lock lock(mutex);
        ++asked;
        released.wait(lock, [this] { return !held; });
        for (const auto &[text, name] : names) {
            if (ip(text) == address) {
                return name;
            }
        }
        return std::nullopt;
    }
    void hold(bool on) {
        {
            const std::lock_guard lock(mutex);
            held = on;
        }
        released.notify_all();
    }
    void set(const std::string &address, const std::string &name) {
        const std::lock_guard lock(mutex);
        names[address] = name;
    }

    std::atomic<int> asked = 0;
    std::mutex mutex;
    std::condition_variable released;
    bool held = false;
    std::map<std::string, std::string> names;
};

struct HostNamesTest : ::testing::Test {
    HostNamesTest() { names.configure({{"hostsDisplay", true}}); }
    // Threads that are held up outlive the object, and end then.
    ~HostNamesTest() override { service->hold(false); }

    std::string nameOf(const std::string &address) {
        names.beginTurn(now);
        return std::string(names.nameOf(ip(address)));
    }
    /// The name once so many look-ups have ended.
    std::string nameAfter(const std::string &address, std::uint64_t lookUps) {
        EXPECT_TRUE(waitUntil([&] {
            names.beginTurn(now);
            return names.lookedUp() >= lookUps;
        }));
        return std::string(names.nameOf(ip(address)));
    }

    std::shared_ptr<NameService> service = std::make_shared<NameService>();
    HostNames names{
        [service = service](const IpAddress &address) { return service->lookUp(address); }};
    HostNames::Clock::time_point now = HostNames::Clock::now();
};

TEST_F(HostNamesTest, AreWantedWhenTheSettingsSaySo) {
    EXPECT_TRUE(names.isWanted());
    names.configure(Dictionary());
    EXPECT_FALSE(names.isWanted());
    names.configure({{"hostsDisplay", "yes"}});
    EXPECT_FALSE(names.isWanted());
    names.configure({{"hostsDisplay", 1}});
    EXPECT_TRUE(names.isWanted());
}

TEST_F(HostNamesTest, AreEmptyUntilTheyAreKnown) {
    service->set("10.1.2.3", "router.example");
    service->hold(true);
    EXPECT_EQ(nameOf("10.1.2.3"), "");
    EXPECT_EQ(nameOf("10.1.2.3"), "");
    service->hold(false);
    EXPECT_EQ(nameAfter("10.1.2.3", 1), "router.example");
    EXPECT_EQ(service->asked, 1);
    EXPECT_EQ(names.found(), 1U);
}

TEST_F(HostNamesTest, LeaveOutWhatIsNoName) {
    service->set("10.0.0.1", "with.dot.");
    service->set("10.0.0.2", "192.168.0.1");
    service->set("10.0.0.3", "2001:db8::1");
    service->set("10.0.0.4", "");
    for (const char *address : {"10.0.0.1", "10.0.0.2", "10.0.0.3", "10.0.0.4", "10.0.0.5"}) {
        nameOf(address);
    }
    EXPECT_EQ(nameAfter("10.0.0.1", 5), "with.dot");
    for (const char *address : {"10.0.0.2", "10.0.0.3", "10.0.0.4", "10.0.0.5"}) {
        EXPECT_EQ(nameOf(address), "") << address;
    }
    EXPECT_EQ(service->asked, 5);
    EXPECT_EQ(names.found(), 1U);
}

TEST_F(HostNamesTest, AreKeptForAWhileAndRenewed) {
    service->set("10.0.0.1", "old");
    nameOf("10.0.0.1");
    nameOf("10.0.0.2");
    EXPECT_EQ(nameAfter("10.0.0.1", 2), "old");
    service->set("10.0.0.1", "new");
    service->set("10.0.0.2", "late");

    now += HostNames::kKeepFailure - std::chrono::seconds(1);
    EXPECT_EQ(nameOf("10.0.0.2"), "");
    EXPECT_EQ(service->asked, 2);
    now += std::chrono::seconds(1);
    EXPECT_EQ(nameOf("10.0.0.2"), "");
    EXPECT_EQ(nameAfter("10.0.0.2", 3), "late");

    now += HostNames::kKeepName - HostNames::kKeepFailure;
    service->hold(true);
    // The old one holds until the new one is there.
    EXPECT_EQ(nameOf("10.0.0.1"), "old");
    EXPECT_EQ(nameOf("10.0.0.1"), "old");
    service->hold(false);
    EXPECT_EQ(nameAfter("10.0.0.1", 4), "new");
    EXPECT_EQ(service->asked, 4);
}

TEST_F(HostNamesTest, NeverWaitForAServerThatDoesNotAnswer) {
    service->hold(true);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100'000; ++i) {
        const std::string address = "10." + std::to_string(i % 3) + '.' +
                                    std::to_string(i / 256 % 256) + '.' + std::to_string(i % 256);
        ASSERT_EQ(nameOf(address), "");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_TRUE(waitUntil([this] { return service->asked == HostNames::kThreads; }));
    // Ends at once, whatever is under way.
    const auto end = std::chrono::steady_clock::now();
    {
        const HostNames moved(
            [service = service](const IpAddress &a) { return service->lookUp(a); });
    }
    EXPECT_LT(std::chrono::steady_clock::now() - end, std::chrono::seconds(5));
}

TEST_F(HostNamesTest, CountThoseForWhichTooManyWait) {
    service->set("10.0.0.1", "known");
    nameOf("10.0.0.1");
    EXPECT_EQ(nameAfter("10.0.0.1", 1), "known");
    service->hold(true);
    for (std::size_t i = 0; i < HostNames::kMostWaiting; ++i) {
        nameOf("11.0." + std::to_string(i / 256) + '.' + std::to_string(i % 256));
    }
    EXPECT_EQ(names.notLookedUp(), 0U);
    // What waits already, or is known, needs no room.
    nameOf("11.0.0.0");
    nameOf("10.0.0.1");
    EXPECT_EQ(names.notLookedUp(), 0U);
    nameOf("10.0.0.2");
    nameOf("10.0.0.2");
    EXPECT_EQ(names.notLookedUp(), 2U);
    now += HostNames::kKeepName;
    EXPECT_EQ(nameOf("10.0.0.1"), "known");
    EXPECT_EQ(names.notLookedUp(), 3U);
    service->set("10.0.0.2", "late");
    service->hold(false);
    nameAfter("10.0.0.2", 1 + HostNames::kMostWaiting);
    nameOf("10.0.0.2");
    EXPECT_EQ(nameAfter("10.0.0.2", 2 + HostNames::kMostWaiting), "late");
    EXPECT_EQ(names.notLookedUp(), 3U);
}

TEST_F(HostNamesTest, ForgetSendersWhenThereAreTooMany) {
    service->set("10.0.0.1", "known");
    nameOf("10.0.0.1");
    EXPECT_EQ(nameAfter("10.0.0.1", 1), "known");
    service->set("10.0.0.1", "renamed");
    std::uint64_t lookUps = 1;
    for (std::size_t i = 0; i < HostNames::kMostKept + 10; ++i) {
        nameOf("11." + std::to_string(i / 65536) + '.' + std::to_string(i / 256 % 256) + '.' +
               std::to_string(i % 256));
        ++lookUps;
        if (i % 500 == 0) {
            nameAfter("10.0.0.1", lookUps);
        }
    }
    nameAfter("10.0.0.1", lookUps);
    EXPECT_GT(service->asked, static_cast<int>(HostNames::kMostKept));
    // It was forgotten long before its hour was over.
    EXPECT_TRUE(waitUntil([this] { return nameOf("10.0.0.1") == "renamed"; }));
}

}  // namespace
}  // namespace quorbel
