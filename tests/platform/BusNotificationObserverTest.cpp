#include "platform/bus/BusNames.h"
#include "platform/bus/NotificationObserver.h"
#include "platform/bus/SdBus.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using testing::kPatience;
using ::testing::Pair;
using testing::PrivateBus;
using testing::ServiceStandIn;
using UserInfo = ServiceStandIn::UserInfo;

// Half of what it takes to give a bus up that does not answer.
constexpr auto kAtOnce = 5s;
constexpr auto kSlice = 5ms;

UserInfo event(const std::string &type, std::size_t number) {
    return {{"Type", type},
            {"Date", std::to_string(1700000000 + number)},
            {"Priority", "Local7.Debug"},
            {"Host", "10.0.0.1"},
            {"Message", "message " + std::to_string(number)}};
}

auto duration(const auto &work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - begin;
}

class BusNotificationObserverTest : public ::testing::Test {
protected:
    PrivateBus m_bus;
    std::vector<UserInfo> m_received;
    std::unique_ptr<NotificationObserver> m_observer;

    void observe() {
        m_observer = std::make_unique<NotificationObserver>(
            [this](const NotificationObserver::UserInfo &userInfo) {
                m_received.emplace_back(userInfo.begin(), userInfo.end());
            });
    }

    // What the window's event loop does.
    bool loopUntil(std::predicate auto condition) {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() >= deadline) {
                return false;
            }
            pollfd input{m_observer->fd(), m_observer->events(), 0};
            const auto limit = m_observer->timeout().value_or(1000ms);
            poll(&input, 1,
                 static_cast<int>(std::min<std::chrono::milliseconds>(limit, 1s).count()));
            while (m_observer->dispatch(kSlice)) {
            }
        }
        return true;
    }

    bool loopUntilConnected() {
        return loopUntil([this] { return m_observer->isConnected(); });
    }

    bool loopUntilReceived(std::size_t count) {
        return loopUntil([this, count] { return m_received.size() >= count; });
    }
};

TEST_F(BusNotificationObserverTest, HandsOverKeysAndValuesInTheOrderSent) {
    observe();
    ASSERT_TRUE(loopUntilConnected());
    EXPECT_FALSE(m_observer->timeout());
    ServiceStandIn service;
    service.notify(event("Set", 1));
    service.notify(event("Remove", 2));
    ASSERT_TRUE(loopUntilReceived(2));
    EXPECT_THAT(m_received, ElementsAre(event("Set", 1), event("Remove", 2)));
}

TEST_F(BusNotificationObserverTest, OddUserInfoIsHandedOverAsItIs) {
    const std::vector<UserInfo> cases = {
        {},
        {{"Type", "Set"}},
        {{"Message", "no type"}},
        {{"Type", "Set"}, {"Type", "Remove"}},
        {{"", ""}, {"Unknown", "gr\xC3\xBC\xC3\x9F"}},
        {{"Message", std::string(100000, 'x')}},
    };
    observe();
    ASSERT_TRUE(loopUntilConnected());
    ServiceStandIn service;
    for (const UserInfo &userInfo : cases) {
        service.notify(userInfo);
    }
    ASSERT_TRUE(loopUntilReceived(cases.size()));
    EXPECT_EQ(m_received, cases);
}

// A text as the bus takes it, also one that sd-bus itself would neither send nor read.
void appendAnyText(sd_bus_message *message, std::string_view text) {
    char *space = nullptr;
    ASSERT_GE(sd_bus_message_append_string_space(message, text.size(), &space), 0);
    text.copy(space, text.size());
}

void postAnyTexts(sd_bus *connection, const UserInfo &userInfo, bool asVariants) {
    sd_bus_message *message = nullptr;
    ASSERT_GE(sd_bus_message_new_signal(connection, &message, bus::kServicePath,
                                        bus::kNotificationInterface, bus::kNotification),
              0);
    const bus::MessagePointer owner(message);
    sd_bus_message_open_container(message, 'a', asVariants ? "{sv}" : "{ss}");
    for (const auto &[key, value] : userInfo) {
        sd_bus_message_open_container(message, 'e', asVariants ? "sv" : "ss");
        appendAnyText(message, key);
        if (asVariants) {
            sd_bus_message_open_container(message, 'v', "s");
        }
        appendAnyText(message, value);
        if (asVariants) {
            sd_bus_message_close_container(message);
        }
        sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
    ASSERT_GE(sd_bus_send(connection, message, nullptr), 0);
}

TEST_F(BusNotificationObserverTest, AnUnreadableTextCostsNoneOfThoseInFrontOfIt) {
    observe();
    ASSERT_TRUE(loopUntilConnected());
    ServiceStandIn service;
    for (const std::string noncharacter : {"\uFFFE", "\uFDD0", "\U0010FFFF"}) {
        m_received.clear();
        UserInfo sent = event("Set", 1);
        sent.back().second = "disk " + noncharacter + " full";
        service.run([&](sd_bus *connection) {
            postAnyTexts(connection, sent, false);
            postAnyTexts(connection, sent, true);
            postAnyTexts(connection, {{"Type", "Set"}, {noncharacter, "key"}, {"Host", "h"}},
                         false);
            postAnyTexts(connection, event("Set", 2), true);
        });
        ASSERT_TRUE(loopUntilReceived(4));
        UserInfo received = event("Set", 1);
        received.back().second = "\uFFFD";
        EXPECT_THAT(m_received,
                    ElementsAre(received, received, UserInfo{{"Type", "Set"}}, event("Set", 2)));
    }
}

TEST_F(BusNotificationObserverTest, OtherTypesThanTextsAreLeftOut) {
    observe();
    ASSERT_TRUE(loopUntilConnected());
    ServiceStandIn service;
    service.notifyText("no dictionary");
    service.run([](sd_bus *connection) {
        sd_bus_emit_signal(connection, bus::kServicePath, bus::kNotificationInterface,
                           bus::kNotification, "");
        sd_bus_emit_signal(connection, bus::kServicePath, bus::kNotificationInterface,
                           bus::kNotification, "a{us}", 1, 5U, "numbers as keys");
        sd_bus_emit_signal(connection, bus::kServicePath, bus::kNotificationInterface,
                           bus::kNotification, "as", 1, "list");
        sd_bus_emit_signal(connection, bus::kServicePath, bus::kNotificationInterface,
                           bus::kNotification, "a{ss}u", 1, "Type", "more follows", 5U);
    });
    service.notifyVariants({{"Type", "Set"},
                            {"Date", 1700000000},
                            {"Host", Array{"10.0.0.1"}},
                            {"Extra", Dictionary{{"Type", "Remove"}}},
                            {"None", Null{}},
                            {"Message", "text"}});
    ASSERT_TRUE(loopUntilReceived(2));
    EXPECT_THAT(m_received[0], ElementsAre(Pair("Type", "more follows")));
    EXPECT_THAT(m_received[1], ElementsAre(Pair("Type", "Set"), Pair("Message", "text")));
    service.notify(event("Set", 1));
    ASSERT_TRUE(loopUntilReceived(3));
    EXPECT_EQ(m_received[2], event("Set", 1));
}

TEST_F(BusNotificationObserverTest, OnlyTheServiceOwnNotificationCounts) {
    observe();
    ASSERT_TRUE(loopUntilConnected());
    ServiceStandIn service;
    const bus::BusPointer stranger = bus::openSystemBus();
    const char *self = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(stranger.get(), &self), 0);

    // Every connection of the bus gets one, addressed to it.
    const std::string prefix = std::string(self).substr(0, std::string(self).find('.') + 1);
    for (int number = 0; number < 10; ++number) {
        sd_bus_message *message = nullptr;
        ASSERT_GE(sd_bus_message_new_signal(stranger.get(), &message, bus::kServicePath,
                                            bus::kNotificationInterface, bus::kNotification),
                  0);
        const bus::MessagePointer forged(message);
        ASSERT_GE(sd_bus_message_append(message, "a{ss}", 1, "Type", "forged"), 0);
        ASSERT_GE(
            sd_bus_message_set_destination(message, (prefix + std::to_string(number)).c_str()), 0);
        ASSERT_GE(sd_bus_send(stranger.get(), message, nullptr), 0);
    }
    ASSERT_GE(sd_bus_emit_signal(stranger.get(), bus::kServicePath, bus::kNotificationInterface,
                                 bus::kNotification, "a{ss}", 1, "Type", "broadcast"),
              0);
    // The bus handles what a connection sent before it answers that connection.
    ASSERT_GE(sd_bus_call_method(stranger.get(), bus::kServiceName, bus::kServicePath,
                                 "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, nullptr),
              0);
    service.run([](sd_bus *connection) {
        sd_bus_emit_signal(connection, "/other", bus::kNotificationInterface, bus::kNotification,
                           "a{ss}", 1, "Type", "other path");
        sd_bus_emit_signal(connection, bus::kServicePath, "com.Halvern.Other", bus::kNotification,
                           "a{ss}", 1, "Type", "other interface");
        sd_bus_emit_signal(connection, bus::kServicePath, bus::kNotificationInterface, "quorbel",
                           "a{ss}", 1, "Type", "other member");
    });
    service.notify(event("Set", 1));
    ASSERT_TRUE(loopUntilReceived(1));
    EXPECT_THAT(m_received, ElementsAre(event("Set", 1)));
}

TEST_F(BusNotificationObserverTest, AServiceThatStartedAgainIsHeardOnTheSameConnection) {
    observe();
    ASSERT_TRUE(loopUntilConnected());
    const int descriptor = m_observer->fd();
    for (std::size_t start = 1; start <= 3; ++start) {
        ServiceStandIn service;
        service.notify(event("Set", start));
        ASSERT_TRUE(loopUntilReceived(start));
    }
    EXPECT_TRUE(m_observer->isConnected());
    EXPECT_EQ(m_observer->fd(), descriptor);
    EXPECT_THAT(m_received, ElementsAre(event("Set", 1), event("Set", 2), event("Set", 3)));
}

TEST_F(BusNotificationObserverTest, AServiceThatWasThereFirstIsHeard) {
    ServiceStandIn service;
    observe();
    ASSERT_TRUE(loopUntilConnected());
    service.notify(event("Set", 1));
    ASSERT_TRUE(loopUntilReceived(1));
}

TEST_F(BusNotificationObserverTest, ComesBackWithTheBus) {
    m_bus.stop();
    observe();
    EXPECT_FALSE(m_observer->isConnected());
    EXPECT_EQ(m_observer->fd(), -1);
    ASSERT_TRUE(m_observer->timeout());
    EXPECT_LE(*m_observer->timeout(), 1s);
    EXPECT_FALSE(m_observer->dispatch(kSlice));
    for (std::size_t start = 1; start <= 2; ++start) {
        m_bus.start();
        ASSERT_TRUE(loopUntilConnected());
        EXPECT_GE(m_observer->fd(), 0);
        ServiceStandIn service;
        service.notify(event("Set", start));
        ASSERT_TRUE(loopUntilReceived(start));
        m_bus.stop();
        ASSERT_TRUE(loopUntil([this] { return !m_observer->isConnected(); }));
        EXPECT_EQ(m_observer->fd(), -1);
    }
}

TEST_F(BusNotificationObserverTest, ABusThatHangsHoldsNothingUp) {
    m_bus.freeze();
    EXPECT_LT(duration([this] { observe(); }), kAtOnce);
    EXPECT_LT(duration([this] { m_observer->dispatch(kSlice); }), kAtOnce);
    EXPECT_FALSE(m_observer->isConnected());
    ASSERT_TRUE(m_observer->timeout());
    EXPECT_LE(*m_observer->timeout(), 10s);
    m_bus.thaw();
    EXPECT_TRUE(loopUntilConnected());
}

TEST_F(BusNotificationObserverTest, ABacklogArrivesWholeInBoundedSlices) {
    constexpr std::size_t kCount = 30000;
    observe();
    ASSERT_TRUE(loopUntilConnected());
    const int descriptor = m_observer->fd();
    ServiceStandIn service;
    service.notifyMany(kCount, [](std::size_t number) { return event("Set", number); });

    EXPECT_TRUE(m_observer->dispatch(0ms));
    EXPECT_TRUE(m_observer->dispatch(0ms));
    EXPECT_LE(m_received.size(), 2U);
    ASSERT_TRUE(loopUntilReceived(kCount));
    EXPECT_EQ(m_observer->fd(), descriptor);
    for (std::size_t number = 0; number < kCount; ++number) {
        ASSERT_EQ(m_received[number], event("Set", number));
    }
}

}  // namespace
}  // namespace quorbel
