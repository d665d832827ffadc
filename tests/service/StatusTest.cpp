#include "platform/KeyedArchive.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"
#include "service/ServiceFixture.h"
#include "service/input/FrameSplitter.h"
#include "support/PrivateBus.h"
#include "support/SmtpStandIn.h"
#include "support/TestAuthority.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
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

    /// The same with "T" for times, which have ten digits.
    [[nodiscard]] std::string results(const char *name) const {
        constexpr std::size_t kDigits = 10;
        std::string text = property(name, "a(stxtsx)");
        for (std::size_t at = 0; (at = text.find_first_of("123456789", at)) != std::string::npos;) {
            const std::size_t length =
                std::min(text.find_first_not_of("0123456789", at), text.size()) - at;
            text.replace(at, length, length == kDigits ? "T" : text.substr(at, length));
            at += length == kDigits ? 1 : length;
        }
        return text;
    }
    [[nodiscard]] bool resultsBecome(const char *name, const std::string &wanted) const {
        return waitUntil([&] { return results(name) == wanted; });
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

TEST_F(StatusTest, SaysWhatTheBusWouldNotTake) {
    startOnBus();
    // A code point that Unicode keeps from being a character.
    testing::sendTo(testing::connectTo(service->port(), SOCK_DGRAM), "no priority \xEF\xBF\xBE");
    EXPECT_TRUE(becomes("Counters", "a{st}", "malformed 1 ; "));
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.1 malformed \"no priority "))
        << property("Refusals", "a(sssxt)");
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

TEST_F(StatusTest, SaysWhoFailsToConnectOverTlsAndWhoComesToTheWrongPort) {
    const testing::TestAuthority authority;
    const auto issued = authority.issue();
    folder.write("tls/cert.pem", issued.certificate);
    folder.write("tls/key.pem", issued.key);
    startOnBus();
    const std::string listeners = property("Listeners", "a(sq)");
    const std::size_t tls = listeners.find("tls ");
    ASSERT_NE(tls, std::string::npos);
    const auto port = static_cast<std::uint16_t>(std::stoi(listeners.substr(tls + 4)));
    for (const char *message :
         {"<13>not over TLS\n", "17 <13>not over TLS\n", "GET / HTTP/1.1\n"}) {
        const std::string before = property("Refusals", "a(sssxt)");
        testing::sendTo(testing::connectTo(port, SOCK_STREAM), message);
        EXPECT_TRUE(waitUntil([&] { return property("Refusals", "a(sssxt)") != before; }));
        EXPECT_THAT(property("Refusals", "a(sssxt)"), HasSubstr("127.0.0.1 wrong port \"no TLS\""));
    }
    EXPECT_THAT(property("Refusals", "a(sssxt)"), ::testing::Not(HasSubstr("TLS refused")));
    // A record of TLS whose content is none.
    testing::sendTo(testing::connectTo(port, SOCK_STREAM),
                    std::string("\x16\x03\x01\0\x04none", 9));
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.1 TLS refused \""));
    const UniqueFd stream = testing::connectFrom(2, service->port());
    testing::sendTo(stream, std::string("\x16\x03\x01\0\x20hello\n", 11));
    EXPECT_TRUE(becomes("Refusals", "a(sssxt)", "127.0.0.2 wrong port \"TLS\""));
}

/// An action for messages that hold its name.
Dictionary actionFor(const std::string &name, const char *reaction, Dictionary content) {
    return {{"Name", name}, {"Message", "*" + name + "*"}, {reaction, std::move(content)}};
}

TEST_F(StatusTest, SaysWhatCameOfEachAction) {
    testing::SmtpStandIn mailServer;
    mailServer.answerRecipient("b@example.org", "550 5.1.1 No such user");
    Dictionary rare = actionFor("rare", "setEvent", {{"Format", "x"}});
    rare.set("threshold", Dictionary{{"Matches", 2}, {"Minutes", 60}});
    const Array actions{
        actionFor("sets", "setEvent", {{"Format", "x"}}),
        actionFor("fails", "runCommand", {{"Command", "/bin/false"}}),
        actionFor("is missing", "runCommand", {{"Command", "/nowhere/command"}}),
        actionFor("mails", "sendEmail", {{"Recipients", Array{"a@example.org", "b@example.org"}}}),
        actionFor("does nothing", "setEvent", {}),
        rare,
    };
    folder.write("Quorbel.ini",
                 writeKeyedArchive(Dictionary{{"actionsArray", actions},
                                              {"actionsEmailServer", "127.0.0.1"},
                                              {"actionsEmailPort", mailServer.port()},
                                              {"actionsEmailSecurity", "None"},
                                              {"actionsEmailSender", "quorbel@example.org"}}));
    startOnBus();
    EXPECT_EQ(results("Actions"),
              "sets 0 0 0  0 ; fails 0 0 0  0 ; is missing 0 0 0  0 ; mails 0 0 0  0 ; "
              "rare 0 0 0  0 ; ");
    const UniqueFd stream = testing::connectTo(service->port(), SOCK_STREAM);
    testing::sendTo(stream,
                    "<13>it sets\n<13>it fails\n<13>it is missing\n<13>it mails\n"
                    "<13>it is rare\n<13>it sets\n");
    const std::string first =
        "sets 2 T 0  0 ; fails 1 T 1 the command ended with status 1 T ; "
        "is missing 1 T 1 /nowhere/command cannot be run: No such file or directory T ; "
        "mails 1 T 1 The mail server refused b@example.org (550 5.1.1 No such user) T ; ";
    EXPECT_TRUE(resultsBecome("Actions", first + "rare 0 0 0  0 ; ")) << results("Actions");
    testing::sendTo(stream, "<13>it is rare\n");
    EXPECT_TRUE(resultsBecome("Actions", first + "rare 1 T 0  0 ; ")) << results("Actions");
    // What is held back is not done.
    for (int i = 0; i < 20; ++i) {
        testing::sendTo(stream, "<13>it sets\n");
    }
    EXPECT_TRUE(waitForStored(7 + 20 + 11));
    EXPECT_THAT(results("Actions"), ::testing::StartsWith("sets 10 T 0  0 ; fails 1 "));
}

TEST_F(StatusTest, SaysWhatCameOfEachExport) {
    const std::string text = (folder.path() / "events.txt").string();
    Dictionary settings{{"textInterval", 5},
                        {"textLocation", text},
                        {"databaseInterval", 5},
                        {"databaseLocation", "relative.db"}};
    folder.write("Quorbel.ini", writeKeyedArchive(settings));
    startOnBus();
    const std::string failed = "database 0 0 1 relative.db is not the full path of a file T ; ";
    EXPECT_TRUE(resultsBecome("Exports", "text 1 T 0  0 ; " + failed)) << results("Exports");
    // One that goes elsewhere begins anew; one that is off is not there.
    settings.set("databaseLocation", (folder.path() / "events.db").string());
    settings.set("textInterval", 0);
    folder.write("Quorbel.ini", writeKeyedArchive(settings));
    kill(service->pid(), SIGHUP);
    EXPECT_TRUE(resultsBecome("Exports", "database 1 T 0  0 ; ")) << results("Exports");
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
