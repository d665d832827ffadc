#include "control/ControlProcess.h"
#include "platform/KeyedArchive.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/SdBus.h"
#include "service/ServiceFixture.h"
#include "support/PrivateBus.h"
#include "support/StatusStandIn.h"

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <thread>

namespace quorbel {
namespace {

using testing::ControlProcess;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::ServiceProcess;
using ::testing::StartsWith;
using testing::waitUntil;

/// Owns the service's name, and has commands but no status.
class OldService {
public:
    OldService() : m_bus(bus::openSystemBus()) {
        sd_bus_add_object_vtable(m_bus.get(), nullptr, bus::kServicePath, bus::kCommandInterface,
                                 kVtable, nullptr);
        EXPECT_GE(sd_bus_request_name(m_bus.get(), bus::kServiceName, 0), 0);
        m_thread = std::thread([this] {
            while (!m_hasEnded) {
                while (sd_bus_process(m_bus.get(), nullptr) > 0) {
                }
                sd_bus_wait(m_bus.get(), 10'000);
            }
        });
    }
    ~OldService() {
        m_hasEnded = true;
        m_thread.join();
    }
    OldService(const OldService &) = delete;
    OldService &operator=(const OldService &) = delete;

private:
    static constexpr sd_bus_vtable kVtable[] = {SD_BUS_VTABLE_START(0), SD_BUS_VTABLE_END};

    bus::BusPointer m_bus;
    std::atomic<bool> m_hasEnded = false;
    std::thread m_thread;
};

/// quorbelctl with the real service on a bus of their own.
struct ServiceCommandsTest : testing::ServiceFixture {
    void startOnBus() {
        ServiceProcess::Setup setup;
        setup.busAddress = bus.address();
        service = start(setup);
        ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
    }
    [[nodiscard]] ControlProcess::Setup setup() const { return {folder.path(), bus.address()}; }
    [[nodiscard]] testing::ControlResult run(std::vector<std::string> arguments) const {
        return testing::runControl(setup(), std::move(arguments));
    }
    void sendDatagram(std::string_view message) const {
        testing::sendTo(testing::connectTo(service->port(), SOCK_DGRAM), message);
    }

    testing::PrivateBus bus;
    std::unique_ptr<ServiceProcess> service;
};

TEST_F(ServiceCommandsTest, StatusSaysHowTheServiceIs) {
    const Dictionary filter{{"Name", "Chatter"}, {"Message", "*chatter*"}};
    folder.write("Quorbel.ini",
                 writeKeyedArchive(Dictionary{{"excludeFiltersArray", Array{filter}}}));
    startOnBus();
    const auto quiet = run({"status"});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_THAT(quiet.output, StartsWith("QuorbelSrv " QUORBEL_VERSION ", running since 2"));
    EXPECT_THAT(quiet.output, HasSubstr("  " + std::to_string(service->port()) + "  udp\n"));
    EXPECT_THAT(quiet.output, HasSubstr("\n           0  received\n"));
    EXPECT_THAT(quiet.output, HasSubstr("\nNothing was refused\n"));
    sendDatagram("<13>kept");
    sendDatagram("<13>idle chatter");
    ASSERT_TRUE(waitForStored(1));
    ASSERT_TRUE(waitUntil([this] {
        return run({"status"}).output.find("           1  filtered\n") != std::string::npos;
    }));
    const auto busy = run({"status"});
    EXPECT_THAT(busy.output, HasSubstr("\n           2  received\n"));
    EXPECT_THAT(busy.output, HasSubstr("\nLast refusals\n           1  127.0.0.1  filtered  "
                                       "\"Chatter\"  last 2"));
    const std::string json = run({"status", "--json"}).output;
    EXPECT_THAT(json, StartsWith("{\"version\":\"" QUORBEL_VERSION "\",\"since\":"));
    EXPECT_THAT(json,
                HasSubstr("{\"protocol\":\"udp\",\"port\":" + std::to_string(service->port())));
    EXPECT_THAT(json, HasSubstr("\"counters\":{\"received\":2,\"malformed\":0,\"stored\":1,"));
    EXPECT_THAT(json, HasSubstr("\"refusals\":[{\"sender\":\"127.0.0.1\",\"reason\":\"filtered\","
                                "\"detail\":\"\\\"Chatter\\\"\",\"time\":"));
}

TEST_F(ServiceCommandsTest, StatusSaysWhatCameOfActionsAndExports) {
    const Array actions{
        Dictionary{{"Name", "esc\x1B"},
                   {"Message", "*now*"},
                   {"runCommand", Dictionary{{"Command", "/bin/false"}}}},
        Dictionary{
            {"Name", "other"}, {"Message", "never"}, {"setEvent", Dictionary{{"Format", "x"}}}}};
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{
                                    {"actionsArray", actions},
                                    {"textInterval", 5},
                                    {"textLocation", (folder.path() / "e.txt").string()}}));
    startOnBus();
    sendDatagram("<13>do it now");
    ASSERT_TRUE(waitUntil([this] {
        const std::string text = run({"status"}).output;
        return text.find("with status 1") != std::string::npos &&
               text.find("\nExports\n           1  text  last 2") != std::string::npos;
    })) << run({"status"}).output;
    const std::string text = run({"status"}).output;
    EXPECT_THAT(text, HasSubstr("\nActions\n           1  esc?  last 2"));
    EXPECT_THAT(text, HasSubstr("  failed 1, last 2"));
    EXPECT_THAT(text, HasSubstr(": the command ended with status 1\n           0  other  never\n"));
    const std::string json = run({"status", "--json"}).output;
    EXPECT_THAT(json, HasSubstr("\"actions\":[{\"name\":\"esc?\",\"done\":1,\"doneTime\":"));
    EXPECT_THAT(json, HasSubstr("\"failed\":1,\"problem\":\"the command ended with status 1\","
                                "\"failedTime\":"));
    EXPECT_THAT(json, HasSubstr("{\"name\":\"other\",\"done\":0,\"doneTime\":0,\"failed\":0,"
                                "\"problem\":\"\",\"failedTime\":0}],\"exports\":[{\"name\":"
                                "\"text\",\"done\":1,"));
}

TEST_F(ServiceCommandsTest, StatusSaysWhyThereIsNone) {
    const auto missing = run({"status"});
    EXPECT_EQ(missing.status, 3);
    EXPECT_EQ(missing.complaint, "quorbelctl: The service does not run.\n");
    // Asking does not start it.
    bus.startOnDemand("com.Halvern.QuorbelSrv");
    EXPECT_EQ(run({"status"}).status, 3);
    EXPECT_FALSE(bus.hasStarted("com.Halvern.QuorbelSrv"));
    {
        const OldService old;
        const auto tooOld = run({"status"});
        EXPECT_EQ(tooOld.status, 1);
        EXPECT_THAT(tooOld.complaint, HasSubstr("too old to tell its status"));
    }
    {
        testing::StatusStandIn unwilling;
        unwilling.onQuestion(testing::StatusStandIn::OnQuestion::kFail);
        const auto refused = run({"status"});
        EXPECT_EQ(refused.status, 3);
        EXPECT_THAT(refused.complaint, HasSubstr("does not answer: "));
    }
    const auto noBus = testing::runControl({folder.path()}, {"status"});
    EXPECT_EQ(noBus.status, 3);
    EXPECT_THAT(noBus.complaint, HasSubstr("There is no system bus"));
}

TEST_F(ServiceCommandsTest, TailFollowsTheServiceThroughADeletion) {
    startOnBus();
    sendDatagram("<13>one");
    sendDatagram("<13>two");
    ASSERT_TRUE(waitForStored(2));
    ControlProcess tail(setup(), {"tail", "-f"});
    ASSERT_TRUE(tail.waitForLines(2));
    sendDatagram("<13>three");
    ASSERT_TRUE(tail.waitForLines(3));
    std::vector<std::string> lines;
    LogReader::readFile(folder.path() / listFolder(folder.path()).front(),
                        [&lines](const LogLine &line) {
                            lines.emplace_back(line.date.data(), line.message.end());
                            return true;
                        });
    ASSERT_EQ(lines.size(), 3U);
    {
        CommandSender sender([](const std::string & /*reply*/) {});
        sender.send({{"command", "update"}, {"Events", Dictionary{{lines[1] + "\n", "1"}}}});
    }
    ASSERT_TRUE(waitUntil([this] { return stored().size() == 2; }));
    sendDatagram("<13>four");
    ASSERT_TRUE(tail.waitForLines(4));
    tail.signal(SIGINT);
    EXPECT_EQ(tail.waitForEnd(), 0);
    std::string messages;
    LogReader::readBytes(tail.output(), [&messages](const LogLine &line) {
        messages += std::string(line.message) + " ";
        return true;
    });
    EXPECT_EQ(messages, "one two three four ");
}

TEST_F(ServiceCommandsTest, TestMessagesAreStored) {
    startOnBus();
    const std::string port = std::to_string(service->port());
    EXPECT_EQ(run({"test-message", "--port", port}).status, 0);
    EXPECT_EQ(run({"test-message", "--host", "localhost", "-p", port, "-P", "tcp"}).status, 0);
    ASSERT_TRUE(waitForStored(2));
    EXPECT_THAT(stored(), ElementsAre("Local7.Debug,127.0.0.1,Quorbel - Test message",
                                      HasSubstr(",Quorbel - Test message")));
    service->terminate();
    for (const char *protocol : {"udp", "tcp"}) {
        const auto refused = run({"test-message", "-H127.0.0.1", "-p", port, "-P", protocol});
        EXPECT_EQ(refused.status, 1) << protocol;
        EXPECT_THAT(refused.complaint, HasSubstr("Connection refused"));
    }
    const auto unknown = run({"test-message", "--host", "no such host"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_THAT(unknown.complaint, HasSubstr("cannot be sent to no such host, port 514: "));
}

TEST_F(ServiceCommandsTest, CheckSettingsReadsWhatTheServiceStored) {
    EXPECT_EQ(run({"check-settings"}).status, 0);
    startOnBus();
    {
        CommandSender sender([](const std::string & /*reply*/) {});
        sender.send({{"command", "save"},
                     {"Settings", Dictionary{{"severityDebug", 9}, {"dateFormat", "dd/MM/yyyy"}}}});
    }
    const std::string file = (folder.path() / "Quorbel.ini").string();
    ASSERT_TRUE(waitUntil([&] { return readFile(file).has_value(); }));
    const auto wrong = run({"check-settings"});
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.output, file + ": severityDebug is 9, which means nothing\n");
    const auto other = folder.write("other.ini", "bplist00 or not");
    const auto damaged = run({"check-settings", other.string()});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(damaged.output, StartsWith(other.string() + ": this is no settings document: "));
    const auto missing = run({"check-settings", "/nonexistent"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.complaint, HasSubstr("/nonexistent cannot be read: No such file"));
    EXPECT_EQ(run({"check-settings", folder.path().string()}).status, 1);
}

TEST_F(ServiceCommandsTest, CheckSettingsReadsTheConfigurationToo) {
    const auto good = folder.write("good.conf", "[Relays]\nNetworks=10.0.0.0/8\n");
    const auto bad = folder.write("bad.conf", "[Relays]\n\nNetworks=10.0.0.0/80\nNet\xC3\xB6=1\n");
    const auto right = run({"check-settings", "--config", good.string()});
    EXPECT_EQ(right.status, 0) << right.output << right.complaint;
    EXPECT_EQ(right.output, "");
    const auto wrong = run({"check-settings", "--config=" + bad.string()});
    EXPECT_EQ(wrong.status, 1);
    const std::string line = bad.string() +
                             ":3: Networks: \"10.0.0.0/80\" is neither a network, as 10.1.0.0/16, "
                             "nor an address\n";
    EXPECT_EQ(wrong.output,
              line + bad.string() + ":4: there is no key \"Net\xC3\xB6\" in [Relays]\n");
    const auto missing = run({"check-settings", "--config", "/nonexistent"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.complaint, HasSubstr("/nonexistent cannot be read: No such file"));
    EXPECT_EQ(run({"check-settings", "--config", folder.path().string()}).output,
              folder.path().string() + ": it is no file\n");
    // Both, where both are named.
    const auto settings = folder.write("Quorbel.ini", "nothing");
    EXPECT_EQ(run({"check-settings", "--config", bad.string()}).output, wrong.output);
    const auto both = run({"check-settings", settings.string(), "--config", bad.string()});
    EXPECT_EQ(both.status, 1);
    EXPECT_THAT(both.output, StartsWith(settings.string() + ": this is no settings document"));
    EXPECT_THAT(both.output, ::testing::EndsWith(wrong.output));
    const auto one = run({"check-settings", settings.string(), "--config", good.string()});
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(run({"check-settings", "--config", ""}).status, 2);
    EXPECT_EQ(run({"check-settings", "--config"}).status, 2);
}

}  // namespace
}  // namespace quorbel
