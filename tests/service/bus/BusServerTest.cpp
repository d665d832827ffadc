#include "common/SettingsDocument.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/BusValue.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/NotificationObserver.h"
#include "service/bus/BusServer.h"
#include "service/bus/Commands.h"
#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::PrivateBus;
using testing::TemporaryFolder;
using testing::waitUntil;

using UserInfo = std::map<std::string, std::string>;

// How many messages wait in the connection to the bus when that takes none.
constexpr std::uint64_t kHeldByConnection = 64;

std::string line(std::size_t number) {
    return "1700000000,User.Notice,h,number " + std::to_string(number) + "\r\n";
}

/// The service's side of the bus with its loop, which the test drives.
struct BusServerTest : ::testing::Test {
    BusServerTest() {
        sd_event *made = nullptr;
        sd_event_new(&made);
        loop.reset(made);
        worker = std::make_unique<CommandWorker>(loop.get(), commands);
    }

    void startServer() {
        server = std::make_unique<BusServer>(loop.get(), queue, *worker, store,
                                             [this] { return removals; });
    }

    /// Runs the loop until the condition holds; false when it does not in time.
    bool runUntil(const std::function<bool()> &condition) {
        return waitUntil([&] {
            sd_event_run(loop.get(), 1000);
            if (server) {
                server->sendNotifications();
            }
            if (observer) {
                observer->dispatch(std::chrono::milliseconds(1));
            }
            return condition();
        });
    }
    /// Whether the service's name has an owner on the bus.
    [[nodiscard]] bool isOnBus() const {
        sd_bus *opened = nullptr;
        sd_bus_open_system(&opened);
        const bus::BusPointer client(opened);
        return client && sd_bus_get_name_creds(client.get(), bus::kServiceName, 0, nullptr) >= 0;
    }
    static constexpr std::size_t kFill = 40'000;
    /// Freezes the bus and has so many to tell that the connection takes no more of them.
    void fillAStuckBus() {
        privateBus.freeze();
        for (std::size_t i = 0; i < kFill; ++i) {
            queue.push(NotificationType::kSet, line(i));
        }
        ASSERT_TRUE(runUntil([&] { return !server->canNotify(); }));
    }

    void observe() {
        observer = std::make_unique<NotificationObserver>([this](const auto &entries) {
            UserInfo info;
            for (const auto &[key, value] : entries) {
                info.emplace(key, value);
            }
            notifications.push_back(info);
        });
        ASSERT_TRUE(runUntil([&] { return observer->isConnected(); }));
    }
    [[nodiscard]] std::vector<std::string> replies() {
        const std::lock_guard lock(mutex);
        return received;
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    SettingsFile settings{folder.path() / kSettingsFileName};
    MailSender mail;
    Commands commands{store, settings, mail};
    NotificationQueue queue;
    NotificationSender::Removals removals;
    EventLoopPointer loop;
    std::unique_ptr<CommandWorker> worker;
    PrivateBus privateBus;
    std::unique_ptr<BusServer> server;
    std::unique_ptr<NotificationObserver> observer;
    std::vector<UserInfo> notifications;

    std::mutex mutex;
    std::vector<std::string> received;
    CommandSender sender{[this](const std::string &reply) {
        const std::lock_guard lock(mutex);
        received.push_back(reply);
    }};
};

TEST_F(BusServerTest, CarriesOutCommandsInTheirOrder) {
    startServer();
    ASSERT_TRUE(runUntil([&] { return isOnBus(); }));
    folder.write("2023-11-14.log", line(1));
    sender.send({{"command", "save"}, {"Settings", Dictionary{{"a", 1}}}});
    sender.send({{"command", "update"},
                 {"Events", Dictionary{{"1700000000,User.Notice,h,number 1\n", "1"}}}});
    sender.send({{"command", "nonsense"}});
    sender.send({{"command", "save"}, {"Settings", Dictionary{{"a", 2}}}});
    ASSERT_TRUE(runUntil([&] { return replies().size() == 4; }));
    EXPECT_THAT(replies(), ElementsAre("OK", "OK", "There is no such command", "OK"));
    EXPECT_TRUE(worker->isIdle());
    EXPECT_EQ(*settings.current(), (Dictionary{{"a", 2}}));
    EXPECT_FALSE(readFile(folder.path() / "2023-11-14.log"));
}

TEST_F(BusServerTest, AMailServerThatDoesNotAnswerKeepsNothingElseWaiting) {
    const UniqueFd silent(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    ASSERT_EQ(bind(silent.get(), generic, length), 0);
    ASSERT_EQ(listen(silent.get(), 1), 0);
    ASSERT_EQ(getsockname(silent.get(), generic, &length), 0);
    startServer();
    ASSERT_TRUE(runUntil([&] { return isOnBus(); }));
    sender.send({{"command", "save"},
                 {"Settings", Dictionary{{"actionsEmailServer", "127.0.0.1"},
                                         {"actionsEmailPort", ntohs(address.sin_port)},
                                         {"actionsEmailSender", "a@b"}}}});
    sender.send({{"command", "email"}, {"Recipients", Array{"a@b"}}});
    sender.send({{"command", "save"}, {"Settings", Dictionary{{"a", 2}}}});
    ASSERT_TRUE(runUntil([&] { return replies().size() == 2; }));
    EXPECT_THAT(replies(), ElementsAre("OK", "OK"));
    EXPECT_EQ(*settings.current(), (Dictionary{{"a", 2}}));
    EXPECT_FALSE(worker->isIdle());
    mail.cancelSends();
    ASSERT_TRUE(runUntil([&] { return replies().size() == 3; }));
    EXPECT_EQ(replies().back(), "The service is stopping");
    EXPECT_TRUE(worker->isIdle());
}

TEST_F(BusServerTest, TakesLargeCommandsAsFiles) {
    startServer();
    ASSERT_TRUE(runUntil([&] { return isOnBus(); }));
    std::string lines;
    Dictionary events;
    for (std::size_t i = 0; i < 40'000; ++i) {
        lines += line(i);
        events.append("1700000000,User.Notice,h,number " + std::to_string(i) + "\n", "1");
    }
    folder.write("2023-11-14.log", lines + line(50'000));
    sender.send({{"command", "update"}, {"Events", std::move(events)}});
    ASSERT_TRUE(runUntil([&] { return !replies().empty(); }));
    EXPECT_THAT(replies(), ElementsAre("OK"));
    EXPECT_EQ(readFile(folder.path() / "2023-11-14.log"), line(50'000));
}

struct Call {
    std::string reply;
    bool answered = false;
};

TEST_F(BusServerTest, AnswersCallsThatHoldNoCommand) {
    startServer();
    ASSERT_TRUE(runUntil([&] { return isOnBus(); }));
    sd_bus *opened = nullptr;
    ASSERT_GE(sd_bus_open_system(&opened), 0);
    const bus::BusPointer client(opened);
    const auto onReply = [](sd_bus_message *reply, void *data, sd_bus_error *) {
        auto *call = static_cast<Call *>(data);
        const char *text = "";
        call->reply = sd_bus_message_is_method_error(reply, nullptr) > 0
                          ? sd_bus_message_get_error(reply)->name
                      : sd_bus_message_read_basic(reply, 's', &text) >= 0 ? text
                                                                          : "";
        call->answered = true;
        return 0;
    };
    const auto answered = [&](const Call &call) {
        return runUntil([&] {
            sd_bus_process(client.get(), nullptr);
            return call.answered;
        });
    };
    const UniqueFd pipe(memfd_create("command", MFD_CLOEXEC));
    Call asFile;
    ASSERT_GE(sd_bus_call_method_async(client.get(), nullptr, bus::kServiceName, bus::kServicePath,
                                       bus::kCommandInterface, bus::kSetCommandFile, onReply,
                                       &asFile, "h", pipe.get()),
              0);
    ASSERT_TRUE(answered(asFile));
    EXPECT_EQ(asFile.reply, "The command cannot be read: The file is not sealed");
    Call unreadable;
    ASSERT_GE(sd_bus_call_method_async(client.get(), nullptr, bus::kServiceName, bus::kServicePath,
                                       bus::kCommandInterface, bus::kSetCommand, onReply,
                                       &unreadable, "a{sv}", 1, "command", "(u)", 7U),
              0);
    ASSERT_TRUE(answered(unreadable));
    EXPECT_EQ(unreadable.reply, "The command cannot be read");
    Call wrongType;
    ASSERT_GE(sd_bus_call_method_async(client.get(), nullptr, bus::kServiceName, bus::kServicePath,
                                       bus::kCommandInterface, bus::kSetCommand, onReply,
                                       &wrongType, "s", "save"),
              0);
    ASSERT_TRUE(answered(wrongType));
    EXPECT_EQ(wrongType.reply, SD_BUS_ERROR_INVALID_ARGS);
}

TEST_F(BusServerTest, SendsNotifications) {
    startServer();
    observe();
    queue.push(NotificationType::kSet, "1700000000,Local7.Error,10.0.0.5,disk full, retrying\r\n");
    queue.push(NotificationType::kRemove, "1,User.Notice,::1,caf\xC3\xA9\r\n");
    ASSERT_TRUE(runUntil([&] { return notifications.size() == 2; }));
    EXPECT_EQ(notifications[0], (UserInfo{{"Type", "Set"},
                                          {"Date", "1700000000"},
                                          {"Priority", "Local7.Error"},
                                          {"Host", "10.0.0.5"},
                                          {"Message", "disk full, retrying"}}));
    EXPECT_EQ(notifications[1], (UserInfo{{"Type", "Remove"},
                                          {"Date", "1"},
                                          {"Priority", "User.Notice"},
                                          {"Host", "::1"},
                                          {"Message", "caf\xC3\xA9"}}));
    EXPECT_TRUE(runUntil([&] { return !server->hasUnsent(); }));
}

TEST_F(BusServerTest, SendsManyNotificationsInTheirOrder) {
    startServer();
    observe();
    constexpr std::size_t kMany = 5000;
    for (std::size_t i = 0; i < kMany; ++i) {
        queue.push(NotificationType::kSet, line(i));
    }
    ASSERT_TRUE(runUntil([&] { return notifications.size() == kMany; }));
    for (std::size_t i = 0; i < kMany; ++i) {
        ASSERT_EQ(notifications[i].at("Message"), "number " + std::to_string(i));
    }
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST_F(BusServerTest, ComesBackAfterTheBus) {
    privateBus.stop();
    ::testing::internal::CaptureStderr();
    startServer();
    queue.push(NotificationType::kSet, line(1));
    ASSERT_TRUE(runUntil([&] { return server->bus() == RemovalTeller::Bus::kMissing; }));
    EXPECT_FALSE(server->canNotify());
    for (std::size_t round = 0; round < 2; ++round) {
        privateBus.start();
        ASSERT_TRUE(runUntil([&] { return isOnBus(); }));
        sender.send({{"command", "nonsense"}});
        ASSERT_TRUE(runUntil([&] { return replies().size() == round + 1; }));
        privateBus.stop();
        ASSERT_TRUE(runUntil([&] { return !server->hasUnsent(); }));
        queue.push(NotificationType::kSet, line(2));
        EXPECT_FALSE(server->canNotify());
    }
    // What came while there was no bus is told once there is one.
    privateBus.start();
    ASSERT_TRUE(runUntil([&] { return queue.empty(); }));
    const std::string journal = ::testing::internal::GetCapturedStderr();
    EXPECT_THAT(journal, ::testing::HasSubstr("The connection to the system bus was lost"));
    EXPECT_THAT(journal,
                ::testing::HasSubstr("Connected to the system bus as com.Halvern.QuorbelSrv"));
}

TEST_F(BusServerTest, TakesItsNameWhenItsOwnerGoes) {
    sd_bus *opened = nullptr;
    ASSERT_GE(sd_bus_open_system(&opened), 0);
    bus::BusPointer owner(opened);
    ASSERT_GE(sd_bus_request_name(owner.get(), bus::kServiceName, 0), 0);
    ::testing::internal::CaptureStderr();
    startServer();
    queue.push(NotificationType::kSet, line(1));
    EXPECT_TRUE(runUntil([&] { return server->bus() == RemovalTeller::Bus::kMissing; }));
    EXPECT_FALSE(server->canNotify());
    owner.reset();
    EXPECT_TRUE(runUntil([&] { return queue.empty(); }));
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::HasSubstr("is taken"));
}

TEST_F(BusServerTest, KeepsWhatAStuckBusDoesNotTake) {
    startServer();
    observe();
    ASSERT_TRUE(runUntil([&] { return server->bus() == RemovalTeller::Bus::kThere; }));
    ASSERT_NO_FATAL_FAILURE(fillAStuckBus());
    // The rest waits in the queue, not in the connection.
    EXPECT_GT(queue.size(), kFill / 2);
    EXPECT_LT(queue.size(), kFill);
    privateBus.thaw();
    ASSERT_TRUE(runUntil([&] { return notifications.size() == kFill; }));
}

TEST_F(BusServerTest, CountsWhatTheConnectionHoldsWhenTheBusGoes) {
    startServer();
    ASSERT_TRUE(runUntil([&] { return server->bus() == RemovalTeller::Bus::kThere; }));
    ASSERT_NO_FATAL_FAILURE(fillAStuckBus());
    const std::size_t waiting = queue.size();
    EXPECT_GT(waiting, 0U);
    ::testing::internal::CaptureStderr();
    privateBus.stop();
    ASSERT_TRUE(runUntil([&] { return server->bus() == RemovalTeller::Bus::kMissing; }));
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::HasSubstr("was lost"));
    // As many as the connection takes; the others wait for the next bus.
    EXPECT_EQ(queue.dropped(), kHeldByConnection);
    EXPECT_EQ(queue.size(), waiting);
    server->giveUp();
    EXPECT_EQ(queue.dropped(), kHeldByConnection + waiting);
    EXPECT_FALSE(server->hasUnsent());
}

TEST_F(BusServerTest, CountsWhatABusHasNotTakenAtTheEnd) {
    startServer();
    observe();
    ASSERT_TRUE(runUntil([&] { return server->bus() == RemovalTeller::Bus::kThere; }));
    // What was taken before is not counted.
    queue.push(NotificationType::kSet, line(0));
    ASSERT_TRUE(runUntil([&] { return notifications.size() == 1 && !server->hasUnsent(); }));
    ASSERT_NO_FATAL_FAILURE(fillAStuckBus());
    const std::size_t waiting = queue.size();
    server->giveUp();
    EXPECT_EQ(queue.dropped(), kHeldByConnection + waiting);
    EXPECT_TRUE(queue.empty());
    // Those, and no others, were told.
    privateBus.thaw();
    ASSERT_TRUE(runUntil([&] { return notifications.size() + queue.dropped() == 1 + kFill; }));
}

// A message on the bus must be valid UTF-8, or else there is none.
TEST_F(BusServerTest, AnswersWhateverAFileIsCalled) {
    std::filesystem::create_directory(folder.path() / "\xFF.log");
    startServer();
    ASSERT_TRUE(runUntil([&] { return isOnBus(); }));
    sender.send({{"command", "update"}, {"Events", Dictionary{{"1,a,b,c\n", "1"}}}});
    ASSERT_TRUE(runUntil([&] { return replies().size() == 1; }));
    EXPECT_EQ(replies().front(), "?.log could not be read: Invalid argument");
}

// The loop receives meanwhile; whatever is before it has its turn first.
TEST_F(BusServerTest, ReadsSettingsAnewOnTheThreadOfTheCommands) {
    folder.write("2023-11-14.log", line(1));
    folder.write(kSettingsFileName, writeKeyedArchive(Dictionary{{"key", "value"}}));
    MutexLock lock(store.editLock());
    std::vector<std::string> order;
    const auto note = [&order](const char *what) {
        return [&order, what](const std::string & /*reply*/) { order.emplace_back(what); };
    };
    const Dictionary wanted{{"1700000000,User.Notice,h,number 1\n", "1"}};
    ASSERT_TRUE(
        worker->submit(Dictionary{{"command", "update"}, {"Events", wanted}}, note("update")));
    for (std::size_t i = 1; i < CommandWorker::kMostWaiting; ++i) {
        ASSERT_TRUE(worker->submit(Dictionary(), [](const std::string &) {}));
    }
    EXPECT_FALSE(worker->submit(Dictionary(), note("too many")));
    // It is no client's, and must not get lost.
    ASSERT_TRUE(worker->submit(Commands::Reload(), note("reload")));
    EXPECT_TRUE(settings.current()->empty());
    lock.unlock();
    ASSERT_TRUE(runUntil([&] { return worker->isIdle(); }));
    EXPECT_THAT(order, ElementsAre("update", "reload"));
    EXPECT_EQ(settingText(*settings.current(), "key"), "value");
}

TEST_F(BusServerTest, RefusesMoreCommandsThanItCanHold) {
    std::size_t refused = 0;
    std::size_t answered = 0;
    for (std::size_t i = 0; i < CommandWorker::kMostWaiting + 3; ++i) {
        if (!worker->submit(Dictionary{{"command", "nonsense"}},
                            [&](const std::string &) { ++answered; })) {
            ++refused;
        }
    }
    EXPECT_EQ(refused, 3U);
    EXPECT_TRUE(runUntil([&] { return worker->isIdle(); }));
    EXPECT_EQ(answered, CommandWorker::kMostWaiting);
    EXPECT_TRUE(worker->submit(Dictionary(), [](const std::string &) {}));
}

}  // namespace
}  // namespace quorbel
