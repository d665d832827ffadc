#include "platform/bus/SdBus.h"
#include "platform/bus/SingleInstance.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <chrono>
#include <concepts>
#include <future>
#include <memory>

namespace quorbel {
namespace {

using namespace std::chrono_literals;
using testing::kPatience;
using testing::PrivateBus;
using Role = SingleInstance::Role;

class BusSingleInstanceTest : public ::testing::Test {
protected:
    PrivateBus m_bus{PrivateBus::Serve::kSession};
    int m_activations = 0;

    std::unique_ptr<SingleInstance> start() {
        return std::make_unique<SingleInstance>([this] { ++m_activations; });
    }

    static bool loopUntil(SingleInstance &instance, std::predicate auto condition) {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() >= deadline) {
                return false;
            }
            pollfd input{instance.fd(), POLLIN, 0};
            if (poll(&input, 1, 20) > 0) {
                instance.dispatch();
            }
        }
        return true;
    }
};

auto startElsewhere() {
    return std::async(std::launch::async, [] {
        const SingleInstance second([] { ADD_FAILURE() << "the second was activated"; });
        EXPECT_EQ(second.fd(), -1);
        return second.role();
    });
}

bool isReady(const std::future<Role> &role) {
    return role.wait_for(0s) == std::future_status::ready;
}

TEST_F(BusSingleInstanceTest, LaterStartsActivateTheFirst) {
    const auto first = start();
    EXPECT_EQ(first->role(), Role::kFirst);
    EXPECT_GE(first->fd(), 0);
    for (int count = 1; count <= 2; ++count) {
        auto second = startElsewhere();
        ASSERT_TRUE(loopUntil(*first, [&second] { return isReady(second); }));
        EXPECT_EQ(second.get(), Role::kSecond);
        EXPECT_EQ(m_activations, count);
    }
}

TEST_F(BusSingleInstanceTest, TheNameIsFreeAfterTheFirstEnded) {
    start().reset();
    // The bus may still be about to notice the end; then the next start takes over the name.
    const auto next = start();
    EXPECT_EQ(next->role(), Role::kFirst);
    EXPECT_EQ(m_activations, 0);
}

TEST_F(BusSingleInstanceTest, AFirstThatHangsDoesNotHoldUpTheSecond) {
    const auto first = start();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(startElsewhere().get(), Role::kSecond);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
    EXPECT_EQ(m_activations, 0);
    EXPECT_TRUE(loopUntil(*first, [this] { return m_activations == 1; }));
}

TEST_F(BusSingleInstanceTest, WithoutABusTheProgramRunsOnItsOwn) {
    m_bus.stop();
    const auto instance = start();
    EXPECT_EQ(instance->role(), Role::kNoSession);
    EXPECT_EQ(instance->fd(), -1);
    instance->dispatch();
}

TEST_F(BusSingleInstanceTest, ABusThatHangsCountsAsNone) {
    m_bus.freeze();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(start()->role(), Role::kNoSession);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

TEST_F(BusSingleInstanceTest, SurvivesTheBus) {
    const auto first = start();
    m_bus.stop();
    EXPECT_TRUE(loopUntil(*first, [&first] { return first->fd() == -1; }));
    EXPECT_EQ(first->role(), Role::kFirst);
    first->dispatch();
}

TEST_F(BusSingleInstanceTest, TakesTheActivateOfTheConventionOnly) {
    const auto first = start();
    const auto call = [&first](const char *member, const char *types, auto... arguments) {
        auto answer = std::async(std::launch::async, [=] {
            const bus::BusPointer caller = bus::openSessionBus();
            return sd_bus_call_method(caller.get(), "com.Halvern.Quorbel", "/com/Halvern/Quorbel",
                                      "org.freedesktop.Application", member, nullptr, nullptr,
                                      types, arguments...);
        });
        EXPECT_TRUE(loopUntil(
            *first, [&answer] { return answer.wait_for(0s) == std::future_status::ready; }));
        return answer.get();
    };
    EXPECT_LT(call("Activate", "s", "text"), 0);
    EXPECT_LT(call("Deactivate", "a{sv}", 0), 0);
    EXPECT_EQ(m_activations, 0);
    EXPECT_GE(call("Activate", "a{sv}", 1, "desktop-startup-id", "s", "id"), 0);
    EXPECT_EQ(m_activations, 1);
}

}  // namespace
}  // namespace quorbel
