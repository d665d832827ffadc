// What goes wrong around the service: it keeps going, loses nothing that it could keep, and counts
// the rest.

#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "load/SoakForm.h"
#include "platform/KeyedArchive.h"
#include "platform/Value.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/NotificationObserver.h"
#include "service/ServiceFixture.h"
#include "service/actions/CommandRunner.h"
#include "support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using load::Plan;
using load::Tally;
using testing::connectTo;
using ::testing::HasSubstr;
using testing::PrivateBus;
using testing::sendTo;
using testing::ServiceProcess;
using testing::waitUntil;

using Clock = std::chrono::steady_clock;

struct FaultsTest : testing::ServiceFixture {
    [[nodiscard]] bool waitForMessage(const std::string &text) const {
        return waitUntil([&] {
            const auto events = stored();
            return std::ranges::any_of(events,
                                       [&](const std::string &e) { return e.ends_with(text); });
        });
    }

    /// Sends the plan on a thread of its own for as long as the object lives.
    class Traffic {
    public:
        explicit Traffic(const Plan &plan)
            : m_thread([this, plan] { m_sent = load::send(plan, &m_stop); }) {}
        ~Traffic() { finish(); }
        Traffic(const Traffic &) = delete;
        Traffic &operator=(const Traffic &) = delete;

        /// How many messages were sent in all.
        std::uint64_t finish() {
            m_stop = true;
            if (m_thread.joinable()) {
                m_thread.join();
            }
            return m_sent.count;
        }

    private:
        std::atomic<bool> m_stop = false;
        load::Sent m_sent;
        std::thread m_thread;
    };

    static bool waitUntilConnected(NotificationObserver &observer) {
        return waitUntil([&] {
            observer.dispatch(std::chrono::milliseconds(10));
            return observer.isConnected();
        });
    }

    static Plan trafficTo(const ServiceProcess &service) {
        return {.port = service.port(),
                .transport = Plan::Transport::kTcp,
                .count = 10'000'000,
                .perSecond = 5'000};
    }
};

TEST_F(FaultsTest, StoresIntoANewFolderWhenItsOwnIsTakenAway) {
    const auto service = start();
    Plan plan = trafficTo(*service);
    Traffic traffic(plan);
    ASSERT_TRUE(waitForStored(100));
    const testing::TemporaryFolder other;
    const auto away = other.path() / "away";
    std::filesystem::rename(folder.path(), away);
    ASSERT_TRUE(waitUntil([&] { return stored().size() > 100; }));
    plan.count = traffic.finish();
    ASSERT_EQ(service->terminate(), 0);
    Tally old = load::tally(away, plan);
    const Tally fresh = load::tally(folder.path(), plan);
    EXPECT_TRUE(old.isClean());
    EXPECT_TRUE(fresh.isClean());
    EXPECT_EQ(old.stored + fresh.stored, plan.count);
    EXPECT_EQ(old.disordered + fresh.disordered, 0U);
}

TEST_F(FaultsTest, CountsWhatComesWhileThereIsNoFolder) {
    const auto service = start();
    Plan plan = trafficTo(*service);
    Traffic traffic(plan);
    ASSERT_TRUE(waitForStored(100));
    const testing::TemporaryFolder other;
    const auto away = other.path() / "away";
    std::filesystem::rename(folder.path(), away);
    // Not even a new folder can be made now, if the service has not been quicker.
    ASSERT_TRUE(waitUntil([&] {
        std::error_code quickerService;
        std::filesystem::remove_all(folder.path(), quickerService);
        return std::ofstream(folder.path()).is_open();
    }));
    ASSERT_TRUE(service->waitForJournal("Events cannot be stored"));
    ASSERT_TRUE(waitUntil([&] {
        std::error_code error;
        std::filesystem::remove_all(folder.path(), error);
        std::filesystem::rename(away, folder.path(), error);
        return !error;
    }));
    ASSERT_TRUE(service->waitForJournal("Events are stored again"));
    plan.count = traffic.finish();
    ASSERT_EQ(service->terminate(), 0);
    const Tally found = load::tally(folder.path(), plan);
    const std::string journal = service->journal();
    EXPECT_TRUE(found.isClean()) << load::describe(found);
    EXPECT_EQ(load::counter(journal, "Received"), plan.count);
    EXPECT_EQ(load::counter(journal, "stored") + load::counter(journal, "not stored"), plan.count);
    EXPECT_GT(load::counter(journal, "not stored"), 0U);
    // What went into a folder that was made and removed in between was stored, too.
    EXPECT_LE(found.stored, load::counter(journal, "stored"));
    EXPECT_GE(found.stored, 100U);
    EXPECT_TRUE(found.has[plan.count - 1]);
}

TEST_F(FaultsTest, GoesOnWithoutTheBusAndComesBackToIt) {
    PrivateBus bus;
    const auto service = start({.library = {}, .busAddress = bus.address()});
    ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
    const UniqueFd sender = connectTo(service->port(), SOCK_STREAM);
    for (int round = 0; round < 3; ++round) {
        bus.stop();
        const std::string message = "without a bus " + std::to_string(round);
        sendTo(sender, "<13>" + message + '\n');
        ASSERT_TRUE(waitForMessage(message));
        bus.start();
        std::string told;
        NotificationObserver observer([&](const NotificationObserver::UserInfo &info) {
            for (const auto &[key, value] : info) {
                told = key == "Message" ? value : told;
            }
        });
        ASSERT_TRUE(waitUntil([&] {
            observer.dispatch(std::chrono::milliseconds(10));
            sendTo(sender, "<13>back\n");
            return told == "back";
        }));
        std::string reply;
        CommandSender commands([&](const std::string &text) { reply = text; });
        commands.send({{"command", "save"}, {"Settings", Dictionary{{"round", round}}}});
        ASSERT_TRUE(commands.waitUntilIdle(testing::kPatience));
        EXPECT_EQ(reply, "OK");
    }
    EXPECT_EQ(service->terminate(), 0);
}

std::string excluding(const char *pattern) {
    const Dictionary filter{{"Message", pattern}};
    return writeKeyedArchive(Dictionary{{"excludeFiltersArray", Array{filter}}});
}

TEST_F(FaultsTest, KeepsItsSettingsWhenTheirFileIsDamaged) {
    folder.write("Quorbel.ini", excluding("*noise*"));
    const PrivateBus bus;
    auto service = start({.library = {}, .busAddress = bus.address()});
    UniqueFd sender = connectTo(service->port(), SOCK_STREAM);
    const std::string archive = excluding("*noise*");
    const std::string damages[] = {"", "not an archive", archive.substr(0, archive.size() / 2),
                                   archive + "trailing", std::string(100'000, '\0')};
    int number = 0;
    for (const std::string &damaged : damages) {
        folder.write("Quorbel.ini", damaged);
        kill(service->pid(), SIGHUP);
        const std::string mark = "kept " + std::to_string(number++);
        sendTo(sender, "<13>noise\n<13>" + mark + '\n');
        ASSERT_TRUE(waitForMessage(mark)) << service->journal();
    }
    for (const std::string &event : stored()) {
        EXPECT_THAT(event, HasSubstr("kept"));
    }
    EXPECT_THAT(service->journal(), HasSubstr("Quorbel.ini is damaged"));
    // A start from a damaged file takes everything in, and the next save puts things right.
    folder.write("Quorbel.ini", "not an archive");
    service->terminate();
    service = start({.library = {}, .busAddress = bus.address()});
    sender = connectTo(service->port(), SOCK_STREAM);
    sendTo(sender, "<13>all noise\n");
    ASSERT_TRUE(waitForMessage("all noise"));
    ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
    CommandSender commands([](const std::string &) {});
    commands.send({{"command", "save"}, {"Settings", Dictionary{{"a", "b"}}}});
    ASSERT_TRUE(commands.waitUntilIdle(testing::kPatience));
    const auto names = listFolder(folder.path());
    EXPECT_TRUE(std::ranges::any_of(names, [&](const std::string &name) {
        return name.starts_with("Quorbel.ini.damaged-") &&
               readFile(folder.path() / name) == "not an archive";
    }));
    EXPECT_EQ(readFile(folder.path() / "Quorbel.ini"), writeKeyedArchive(Dictionary{{"a", "b"}}));
    EXPECT_EQ(service->terminate(), 0);
}

/// How long messages of one more connection take into the log file, in milliseconds, ascending.
std::vector<double> delays(const FaultsTest &test, std::uint16_t port, std::size_t count) {
    const UniqueFd sender = connectTo(port, SOCK_STREAM);
    load::LineCounter lines(test.folder.path());
    const std::uint64_t before = lines.count();
    std::vector<double> all;
    for (std::size_t i = 0; i < count; ++i) {
        const auto begin = Clock::now();
        sendTo(sender, "<13>in between\n");
        EXPECT_TRUE(waitUntil([&] { return lines.count() > before + i; }));
        all.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    std::ranges::sort(all);
    return all;
}

// Every message starts a command that does not end and a mail to a server that says nothing.
TEST_F(FaultsTest, LetsHangingActionsDelayNobody) {
    const UniqueFd silent(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *name = reinterpret_cast<sockaddr *>(&address);
    ASSERT_EQ(::bind(silent.get(), name, length), 0);
    ASSERT_EQ(::listen(silent.get(), 16), 0);
    ASSERT_EQ(::getsockname(silent.get(), name, &length), 0);
    Array actions;
    for (int i = 0; i < 50; ++i) {
        actions.emplace_back(
            Dictionary{{"Name", std::to_string(i)},
                       {"runCommand", Dictionary{{"Command", "sleep"}, {"Arguments", "1000"}}},
                       {"sendEmail", Dictionary{{"Recipients", Array{"a@b"}}}}});
    }
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{
                                    {"actionsArray", std::move(actions)},
                                    {"actionsEmailServer", "127.0.0.1"},
                                    {"actionsEmailSender", "a@b"},
                                    {"actionsEmailPort", std::int64_t{ntohs(address.sin_port)}}}));
    const auto service = start();
    Plan plan = trafficTo(*service);
    plan.count = load::soakOr<std::uint64_t>(600'000, 20'000);
    plan.perSecond = 10'000;
    EXPECT_EQ(load::send(plan).count, plan.count);
    EXPECT_TRUE(waitUntil([&] { return load::LineCounter(folder.path()).count() == plan.count; }));
    const auto all = delays(*this, service->port(), 50);
    EXPECT_LT(all[all.size() * 9 / 10], 100);
    ASSERT_EQ(service->terminate(), 0);
    EXPECT_EQ(load::tally(folder.path(), plan).stored, plan.count);
    // Each is asked for by every action, and run, given up or held back.
    const std::string journal = service->journal();
    std::uint64_t settled = 0;
    for (const char *fate : {"actions held back", "commands run", "commands not run",
                             "e-mails sent", "e-mails dropped"}) {
        settled += load::counter(journal, fate);
    }
    // After a minute, the first ones are ended and others begin.
    EXPECT_GE(load::counter(journal, "commands run"), CommandRunner::kMostAtOnce);
    EXPECT_LE(load::counter(journal, "commands run"), 3 * CommandRunner::kMostAtOnce);
    // The mails that tell of what was held back come on top.
    const std::uint64_t wanted = (plan.count + all.size()) * 50 * 2;
    EXPECT_GE(settled, wanted);
    EXPECT_LE(settled, wanted + 50 * 3);
    load::figure("delay beside hanging commands and mails: median " +
                 std::to_string(all[all.size() / 2]) + " ms, longest " +
                 std::to_string(all.back()) + " ms");
}

TEST_F(FaultsTest, LetsStalledConnectionsDelayNobody) {
    const auto service = start();
    std::vector<UniqueFd> stalled;
    for (std::size_t i = 0; i < 200; ++i) {
        stalled.push_back(connectTo(service->port(), SOCK_STREAM));
        // Some have never said a word, some stopped in the middle of one.
        sendTo(stalled.back(), i % 3 == 0 ? "60000 <13>begun" : "<13>begun");
    }
    const auto all = delays(*this, service->port(), 50);
    EXPECT_LT(all[all.size() * 9 / 10], 100);
    load::figure("delay beside 200 stalled connections: median " +
                 std::to_string(all[all.size() / 2]) + " ms, longest " +
                 std::to_string(all.back()) + " ms");
}

TEST_F(FaultsTest, StoresAMessageOfEachOfManyConnections) {
    // More than the service keeps open at a time.
    const auto service = start({.library = {}, .busAddress = {}, .descriptors = 512});
    const auto count = load::soakOr<std::uint64_t>(10'000, 1'500);
    std::vector<UniqueFd> open;
    for (std::uint64_t i = 0; i < count; ++i) {
        UniqueFd sender = connectTo(service->port(), SOCK_STREAM);
        sendTo(sender, "<13>hello " + std::to_string(i) + '\n');
        open.push_back(std::move(sender));
        if (open.size() > 800) {
            open.erase(open.begin(), open.begin() + 100);
        }
    }
    EXPECT_TRUE(waitUntil([&] { return load::LineCounter(folder.path()).count() >= count; }));
    EXPECT_EQ(service->terminate(), 0);
    auto events = stored();
    std::ranges::sort(events);
    events.erase(std::unique(events.begin(), events.end()), events.end());
    EXPECT_EQ(events.size(), count);
    load::figure("one message each of " + std::to_string(count) +
                 " connections: " + std::to_string(events.size()) + " stored, connections closed " +
                 std::to_string(load::counter(service->journal(), "connections closed")));
}

TEST_F(FaultsTest, TellsOrCountsEveryEventHoweverSlowTheBus) {
    PrivateBus bus;
    const auto service = start({.library = {}, .busAddress = bus.address()});
    ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
    std::uint64_t told = 0;
    NotificationObserver observer([&](const NotificationObserver::UserInfo &) { ++told; });
    ASSERT_TRUE(waitUntilConnected(observer));
    bus.freeze();
    Plan plan = trafficTo(*service);
    plan.count = 250'000;
    plan.length = 300;  // more bytes than the queue holds
    plan.perSecond = 0;
    EXPECT_EQ(load::send(plan).count, plan.count);
    EXPECT_TRUE(waitUntil([&] { return load::LineCounter(folder.path()).count() == plan.count; }));
    bus.thaw();
    // All that the queue could hold has been told when nothing has come for a while.
    std::uint64_t before = 0;
    auto since = Clock::now();
    EXPECT_TRUE(waitUntil([&] {
        observer.dispatch(std::chrono::milliseconds(50));
        if (told != before) {
            before = told;
            since = Clock::now();
        }
        return told > 0 && Clock::now() - since > std::chrono::seconds(3);
    }));
    ASSERT_EQ(service->terminate(), 0);
    const std::uint64_t dropped = load::counter(service->journal(), "notifications dropped");
    EXPECT_GT(dropped, 0U);
    // The bus hands out the rest after the service has gone.
    waitUntil([&] {
        observer.dispatch(std::chrono::milliseconds(50));
        return told + dropped >= plan.count;
    });
    EXPECT_EQ(told + dropped, plan.count);
    EXPECT_EQ(load::tally(folder.path(), plan).stored, plan.count);
    load::figure("a bus that stands still during 250000 messages: all stored, " +
                 std::to_string(told) + " told, " + std::to_string(dropped) + " not");
}

TEST_F(FaultsTest, StoresAlthoughAListenerDoesNotListen) {
    const PrivateBus bus;
    const auto service = start({.library = {}, .busAddress = bus.address()});
    ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
    NotificationObserver deaf([](const NotificationObserver::UserInfo &) {});
    ASSERT_TRUE(waitUntilConnected(deaf));
    Plan plan = trafficTo(*service);
    plan.count = load::soakOr<std::uint64_t>(600'000, 30'000);
    plan.perSecond = 10'000;
    EXPECT_EQ(load::send(plan).count, plan.count);
    EXPECT_TRUE(waitUntil([&] { return load::LineCounter(folder.path()).count() == plan.count; }));
    ASSERT_EQ(service->terminate(), 0);
    EXPECT_EQ(load::tally(folder.path(), plan).stored, plan.count);
}

}  // namespace
}  // namespace quorbel
