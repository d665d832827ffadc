#include "platform/KeyedArchive.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"
#include "service/ServiceFixture.h"
#include "service/input/FrameSplitter.h"
#include "support/PrivateBus.h"
#include "support/TestAuthority.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <map>
#include <string>
#include <thread>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::ServiceProcess;
using testing::waitUntil;

/// What the real service says of itself over a bus.
struct StatusTest : testing::ServiceFixture {
    void startOnBus() {
        ServiceProcess::Setup setup;
        setup.busAddress = bus.address();
        setup.arguments = {"--port", "0", "--tls-port", "0"};
        service = start(setup);
        ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
        client = bus::openSystemBus();
        ASSERT_TRUE(client);
    }
    /// A property as busctl(1) would show it, roughly.
    [[nodiscard]] std::string property(const char *name, const char *type) const {
        sd_bus_message *reply = nullptr;
        sd_bus_error error = SD_BUS_ERROR_NULL;
        const int result = sd_bus_get_property(client.get(), bus::kServiceName, bus::kServicePath,
                                               bus::kStatusInterface, name, &error, &reply, type);
        const bus::MessagePointer owner(reply);
        std::string text = result < 0 ? std::string(error.name) : "";
        sd_bus_error_free(&error);
        if (result >= 0) {
            appendAll(reply, text);
        }
        return text;
    }
    static void appendAll(sd_bus_message *reply, std::string &text) {
        char type = 0;
        const char *contents = nullptr;
        while (sd_bus_message_peek_type(reply, &type, &contents) > 0) {
            if (contents != nullptr) {
                sd_bus_message_enter_container(reply, type, contents);
                appendAll(reply, text);
                sd_bus_message_exit_container(reply);
                text += type == SD_BUS_TYPE_ARRAY ? "" : "; ";
                continue;
            }
            union {
                const char *string;
                std::uint64_t number;
            } value{};
            sd_bus_message_read_basic(reply, type, &value);
            text += (type == SD_BUS_TYPE_STRING ? value.string : std::to_string(value.number)) +
                    std::string(" ");
        }
    }
    [[nodiscard]] bool becomes(const char *name, const char *type, std::string_view part) const {
        return waitUntil([&] { return property(name, type).find(part) != std::string::npos; });
    }

    testing::PrivateBus bus;
    std::unique_ptr<ServiceProcess> service;
    bus::BusPointer client;
};

TEST_F(StatusTest, SaysWhatItIsWhereItListensAndWhatItCounted) {
    const auto before = std::time(nullptr);
    startOnBus();
    EXPECT_EQ(property("Version", "s"), QUORBEL_VERSION " ");
    const std::string since = property("Since", "x");
    EXPECT_GE(std::stoll(since), before);
    EXPECT_LE(std::stoll(since), std::time(nullptr));
    const std::string port = std::to_string(service->port());
    EXPECT_EQ(property("Listeners", "a(sq)"), "udp " + port + " ; tcp " + port + " ; ");
    EXPECT_THAT(property("Counters", "a{st}"), HasSubstr("received 0 ; malformed 0 ; stored 0 ; "));
    EXPECT_EQ(property("Refusals", "a(sssxt)"), "");
    // Numbers are those of the moment, not of the journal's last line.
    testing::sendTo(testing::connectTo(service->port(), SOCK_DGRAM), "<13>Jan  1 00:00:00 h a: b");
    EXPECT_TRUE(becomes("Counters", "a{st}", "received 1 ; malformed 0 ; stored 1 ; "));
    EXPECT_EQ(property("Nothing", "s"), "org.freedesktop.DBus.Error.UnknownProperty");
}

TEST_F(StatusTest, SaysWhoIsRefusedWhatAndWhy) {
    const Dictionary filter{{"Name", "Chatter\x1B[2J"}, {"Message", "*chatter*"}};
    folder.write("Quorbel.ini",
                 writeKeyedArchive(Dictionary{{"excludeFiltersArray", Array{filter}}}));
    startOnBus();
    const UniqueFd datagrams = testing::connectTo(service->port(), SOCK_DGRAM);
    testing::sendTo(datagrams, "<13>much chatter");
    testing::sendTo(datagrams, "<13>more chatter");
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.1 filtered \"Chatter?[2J\" "));
    testing::sendTo(datagrams, "no priority\xFF");
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.1 malformed \"no priority?\" "));
    const UniqueFd stream = testing::connectFrom(2, service->port());
    testing::sendTo(stream, "<13>" + std::string(FrameSplitter::kMaxFrame + 10, 'x') + "\n");
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.2 too long  "));
    EXPECT_TRUE(waitUntil([&] {
        const std::string refusals = property("Refusals", "a(sssxt)");
        const std::size_t at = refusals.find("filtered");
        return at != std::string::npos && refusals.find(" 2 ; ", at) != std::string::npos;
    }));
}

TEST_F(StatusTest, SaysWhoFailsToConnectOverTls) {
    const testing::TestAuthority authority;
    const auto issued = authority.issue();
    folder.write("tls/cert.pem", issued.certificate);
    folder.write("tls/key.pem", issued.key);
    startOnBus();
    const std::string listeners = property("Listeners", "a(sq)");
    const std::size_t tls = listeners.find("tls ");
    ASSERT_NE(tls, std::string::npos);
    const auto port = static_cast<std::uint16_t>(std::stoi(listeners.substr(tls + 4)));
    testing::sendTo(testing::connectTo(port, SOCK_STREAM), "<13>not over TLS\n");
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.1 TLS refused \""));
}

// However often somebody asks.
TEST_F(StatusTest, NothingIsLostWhileItIsAsked) {
    startOnBus();
    constexpr std::size_t kMany = 20'000;
    std::atomic<bool> hasEnded = false;
    std::atomic<std::size_t> answers = 0;
    std::thread asker([&] {
        while (!hasEnded) {
            answers += property("Counters", "a{st}").starts_with("received ") ? 1U : 0U;
        }
    });
    const UniqueFd stream = testing::connectTo(service->port(), SOCK_STREAM);
    for (std::size_t i = 0; i < kMany; ++i) {
        testing::sendTo(stream, "<13>message " + std::to_string(i) + "\n");
    }
    EXPECT_TRUE(waitForStored(kMany));
    hasEnded = true;
    asker.join();
    EXPECT_GT(answers, 0U);
    EXPECT_THAT(property("Counters", "a{st}"), HasSubstr("stored 20000 ; not stored 0 ; "));
}

TEST_F(StatusTest, NobodyCanSetAnything) {
    startOnBus();
    sd_bus_error error = SD_BUS_ERROR_NULL;
    EXPECT_LT(sd_bus_set_property(client.get(), bus::kServiceName, bus::kServicePath,
                                  bus::kStatusInterface, "Since", &error, "x", 1L),
              0);
    EXPECT_STREQ(error.name, "org.freedesktop.DBus.Error.PropertyReadOnly");
    sd_bus_error_free(&error);
}

}  // namespace
}  // namespace quorbel
