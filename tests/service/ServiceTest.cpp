#include "platform/Files.h"
#include "platform/Value.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/NotificationObserver.h"
#include "service/ServiceFixture.h"
#include "service/store/LogFiles.h"
#include "support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using testing::connectTo;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::isClosed;
using ::testing::Not;
using testing::PrivateBus;
using testing::sendTo;
using testing::ServiceProcess;
using testing::waitUntil;

struct ServiceTest : testing::ServiceFixture {};

std::size_t countOf(const std::string &text, const std::string &part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

int runLogger(const ServiceProcess &service, const std::string &arguments) {
    const std::string command = "logger -P " + std::to_string(service.port()) + ' ' + arguments;
    return std::system(command.c_str());  // NOLINT(cert-env33-c): a real sender
}

TEST_F(ServiceTest, StoresWhatARealSenderSends) {
    const auto service = start();
    struct Case {
        const char *arguments;
        const char *stored;
    };
    constexpr Case kCases[] = {
        {"-n 127.0.0.1 -d --rfc3164 -t tag 'text'", "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -T --rfc3164 -t tag 'text'", "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -d --rfc5424=notq -t tag 'text'", "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -T --rfc5424=notq -t tag 'text'", "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -T --rfc5424=notime -t tag 'text'", "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -T --octet-count --rfc5424=notq -t tag 'text'",
         "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -T --octet-count --rfc3164 -t tag 'text'",
         "User.Notice,127.0.0.1,tag: text"},
        {"-n 127.0.0.1 -d --id=77 --rfc3164 -t tag 'text'", "User.Notice,127.0.0.1,tag[77]: text"},
        {"-n 127.0.0.1 -d --id=77 --rfc5424=notq -t tag 'text'",
         "User.Notice,127.0.0.1,tag[77]: text"},
        {"-n 127.0.0.1 -d -p local7.err 'disk full, retrying'", ": disk full, retrying"},
        {"-n 127.0.0.1 -d -p kern.emerg --rfc3164 -t t 'x'", "User.Emergency,127.0.0.1,t: x"},
        {"-n 127.0.0.1 -d -p auth.debug --rfc3164 -t t 'a,b'", "Auth.Debug,127.0.0.1,t: a,b"},
    };
    std::size_t count = 0;
    for (const Case &c : kCases) {
        ASSERT_EQ(runLogger(*service, c.arguments), 0);
        ASSERT_TRUE(waitForStored(++count)) << c.arguments;
        EXPECT_THAT(stored().back(), EndsWith(c.stored)) << c.arguments;
    }
    EXPECT_EQ(service->terminate(), 0);
}

TEST_F(ServiceTest, StoresTheFrontEndsTestMessage) {
    const auto service = start();
    const auto before = std::time(nullptr);
    sendTo(connectTo(service->port(), SOCK_DGRAM), "<191>Quorbel - Test message");
    ASSERT_TRUE(waitForStored(1));
    auto names = listFolder(folder.path());
    std::erase_if(names, [](const auto &name) { return !hasExtension(name, "log"); });
    ASSERT_EQ(names.size(), 1U);
    const std::string bytes = readFile(folder.path() / names[0]).value_or("");
    EXPECT_THAT(bytes, EndsWith(",Local7.Debug,127.0.0.1,Quorbel - Test message\r\n"));
    const std::int64_t seconds = std::atoll(bytes.c_str());
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, std::time(nullptr));
    struct stat status {};
    ASSERT_EQ(stat((folder.path() / names[0]).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

TEST_F(ServiceTest, ShowsSendersByTheirAddress) {
    const UniqueFd probe(socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in6 loopback{};
    loopback.sin6_family = AF_INET6;
    loopback.sin6_addr = in6addr_loopback;
    if (bind(probe.get(), reinterpret_cast<sockaddr *>(&loopback), sizeof loopback) != 0) {
        GTEST_SKIP() << "no IPv6 here";
    }
    const auto service = start();
    ASSERT_EQ(runLogger(*service, "-n ::1 -d --rfc3164 -t t udp"), 0);
    ASSERT_TRUE(waitForStored(1));
    ASSERT_EQ(runLogger(*service, "-n ::1 -T --rfc3164 -t t tcp"), 0);
    ASSERT_TRUE(waitForStored(2));
    EXPECT_THAT(stored(), ElementsAre("User.Notice,::1,t: udp", "User.Notice,::1,t: tcp"));
}

TEST_F(ServiceTest, TakesTheLargestDatagramAsSeveralEvents) {
    const auto service = start();
    // The most that a datagram over IPv4 can hold.
    const std::string text(65507 - 4, 'x');
    sendTo(connectTo(service->port(), SOCK_DGRAM), "<13>" + text);
    std::string whole;
    ASSERT_TRUE(waitForStored(66));
    for (const std::string &event : stored()) {
        const std::string_view prefix = "User.Notice,127.0.0.1,";
        ASSERT_TRUE(event.starts_with(prefix));
        whole += event.substr(prefix.size());
    }
    EXPECT_EQ(whole, text);
}

TEST_F(ServiceTest, ReadsAStreamWhateverItsFraming) {
    const auto service = start();
    const UniqueFd stream = connectTo(service->port(), SOCK_STREAM);
    sendTo(stream, "<13>one\n9 <13>two\nx<13>three\r\n");
    sendTo(stream, std::string_view("<13>four\0<13>fi", 15));
    ASSERT_TRUE(waitForStored(4));
    sendTo(stream, "ve\n<13>unfinished");
    ASSERT_TRUE(waitForStored(5));
    shutdown(stream.get(), SHUT_WR);
    ASSERT_TRUE(waitForStored(6));
    EXPECT_THAT(stored(),
                ElementsAre("User.Notice,127.0.0.1,one", "User.Notice,127.0.0.1,two#012x",
                            "User.Notice,127.0.0.1,three", "User.Notice,127.0.0.1,four",
                            "User.Notice,127.0.0.1,five", "User.Notice,127.0.0.1,unfinished"));
}

TEST_F(ServiceTest, LetsNoConnectionKeepOthersWaiting) {
    const auto service = start();
    const UniqueFd silent = connectTo(service->port(), SOCK_STREAM);
    sendTo(silent, "500 <13>never finished");
    const UniqueFd endless = connectTo(service->port(), SOCK_STREAM);
    sendTo(endless, std::string(100'000, 'x'));
    sendTo(connectTo(service->port(), SOCK_STREAM), "<13>hello\n");
    EXPECT_TRUE(waitUntil([&] {
        const auto events = stored();
        return std::ranges::find(events, "User.Notice,127.0.0.1,hello") != events.end();
    }));
}

TEST_F(ServiceTest, StoresWhatTheKernelHoldsWhenAskedToEnd) {
    const auto service = start();
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    const UniqueFd stream = connectTo(service->port(), SOCK_STREAM);
    std::string frames;
    for (int i = 0; i < 300; ++i) {
        sendTo(datagrams, "<13>datagram " + std::to_string(i));
        frames += "<13>frame " + std::to_string(i) + '\n';
    }
    sendTo(stream, frames + "<13>last");
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_EQ(stored().size(), 601U);
    EXPECT_THAT(service->journal(), HasSubstr("Received 601, malformed 0, stored 601, "));
}

TEST_F(ServiceTest, SaysItsCountsAtTheEndThoughNothingCame) {
    const auto service = start();
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(),
                HasSubstr("\n<6>Received 0, malformed 0, stored 0, not stored 0, dropped 0, "));
    EXPECT_THAT(service->journal(),
                HasSubstr(", names looked up 0, names found 0, names not looked up 0, "));
}

TEST_F(ServiceTest, CountsWhatIsMalformed) {
    const auto service = start();
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    for (const std::string_view message : {"<13>good", "no priority", "", "<13>1 - h a", "<13>x"}) {
        sendTo(datagrams, message);
    }
    const UniqueFd stream = connectTo(service->port(), SOCK_STREAM);
    sendTo(stream, "<13>" + std::string(70'000, 'x') + "\n<13>good\n");
    shutdown(stream.get(), SHUT_WR);
    ASSERT_TRUE(isClosed(stream));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("Received 7, malformed 4, "));
}

TEST_F(ServiceTest, AJournalThatNobodyReadsStopsNothing) {
    const auto service = start();
    service->holdJournal(true);
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    // Each says a line of more than twenty bytes; the pipe holds a page and what was read last.
    constexpr std::size_t kLines = 400;
    for (std::size_t i = 0; i < kLines; ++i) {
        ::kill(service->pid(), SIGHUP);
        sendTo(datagrams, "<13>x");
        ASSERT_TRUE(waitForStored(i + 1)) << "after " << i << " lines";
    }
    service->holdJournal(false);
    EXPECT_TRUE(waitUntil([&] {
        ::kill(service->pid(), SIGHUP);
        return service->journal().find(
                   "Journal lines that were dropped because nobody read them: ") !=
               std::string::npos;
    }));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr(", journal lines dropped "));
    EXPECT_THAT(service->journal(), Not(HasSubstr(", journal lines dropped 0")));
}

TEST_F(ServiceTest, CountsWhatTheKernelDrops) {
    const auto service = start();
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    // More than the socket's buffer holds, whatever the kernel granted.
    constexpr std::uint64_t kSent = 60'000;
    const std::string message = "<13>" + std::string(1400, 'x');
    ::kill(service->pid(), SIGSTOP);
    for (std::uint64_t i = 0; i < kSent; ++i) {
        sendTo(datagrams, message);
    }
    ::kill(service->pid(), SIGCONT);
    EXPECT_EQ(service->terminate(), 0);
    const std::string journal = service->journal();
    std::uint64_t received = 0;
    std::uint64_t dropped = 0;
    ASSERT_EQ(std::sscanf(journal.c_str() + journal.find("Received"),
                          "Received %lu, malformed 0, stored %*u, not stored 0, dropped %lu",
                          &received, &dropped),
              2)
        << journal;
    EXPECT_GT(received, 0U);
    EXPECT_GT(dropped, 0U);
    EXPECT_EQ(received + dropped, kSent);
}

TEST_F(ServiceTest, RepairsWhatACrashLeft) {
    auto service = start();
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    sendTo(datagrams, "<13>before");
    ASSERT_TRUE(waitForStored(1));
    service->kill();
    const std::string name = listFolder(folder.path()).at(0);
    std::ofstream(folder.path() / name, std::ios::app) << "1700000000,User.Not";
    service = start();
    sendTo(connectTo(service->port(), SOCK_DGRAM), "<13>after");
    ASSERT_TRUE(waitForStored(2));
    EXPECT_THAT(stored(),
                ElementsAre("User.Notice,127.0.0.1,before", "User.Notice,127.0.0.1,after"));
}

TEST_F(ServiceTest, GoesOnWhenTheDiskIsFull) {
    ServiceProcess::Setup setup;
    setup.largestFile = 1000;
    const auto service = start(setup);
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    for (int i = 0; i < 100; ++i) {
        sendTo(datagrams, "<13>number " + std::to_string(i));
    }
    ASSERT_TRUE(service->waitForJournal("Events cannot be stored"));
    const auto full = stored();
    EXPECT_EQ(full.back(), "User.Notice,127.0.0.1,number " + std::to_string(full.size() - 1));
    // There is room again; what waited in the socket may take it once more.
    EXPECT_TRUE(waitUntil([&] {
        for (const std::string &name : listFolder(folder.path())) {
            std::filesystem::remove(folder.path() / name);
        }
        sendTo(datagrams, "<13>room");
        return waitForStored(1) && stored().back() == "User.Notice,127.0.0.1,room";
    }));
    EXPECT_TRUE(waitUntil([&] {
        sendTo(datagrams, "<13>x");
        std::filesystem::resize_file(folder.path() / listFolder(folder.path()).at(0), 0);
        return service->journal().find("Events are stored again") != std::string::npos;
    }));
    service->terminate();
    const std::string journal = service->journal();
    EXPECT_EQ(journal.find("not stored 0"), std::string::npos);
}

TEST_F(ServiceTest, EndsWithOneLineWhenItCannotStart) {
    struct Case {
        std::vector<std::string> arguments;
        const char *line;
    };
    const auto service = start();
    const testing::TemporaryFolder otherFolder;
    const std::string taken = std::to_string(service->port());
    const Case cases[] = {
        {{"--port", taken}, "cannot be opened: Address already in use"},
        {{"--port"}, "Usage: "},
        {{"--port", "65536"}, "Usage: "},
        {{"--port", "-1"}, "Usage: "},
        {{"--port", "514x"}, "Usage: "},
        {{"--port", ""}, "Usage: "},
        {{"--verbose"}, "Usage: "},
        {{"--port", "0", "--port", "0"}, "Usage: "},
        {{"--port", "0", "--tls-port"}, "Usage: "},
        {{"--tls-port", "x"}, "Usage: "},
        {{"--verbose", "0"}, "Usage: "},
        {{"--config"}, "Usage: "},
        {{"--config", ""}, "Usage: "},
        {{"--port", "0", "--config", "/a", "--config", "/a"}, "Usage: "},
    };
    for (const Case &c : cases) {
        ServiceProcess other({otherFolder.path(), "", c.arguments});
        EXPECT_FALSE(other.isListening());
        EXPECT_EQ(other.waitForEnd(), 1);
        const std::string journal = other.journal();
        EXPECT_THAT(journal, HasSubstr(c.line));
        EXPECT_EQ(std::ranges::count(journal, '\n'), 1);
    }
}

TEST_F(ServiceTest, TellsTheServiceManagerHowItIs) {
    const std::string path = (folder.path() / "manager").string();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    const UniqueFd manager(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ASSERT_EQ(bind(manager.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    std::vector<std::string> told;
    const auto hears = [&](const char *state, std::ptrdiff_t times) {
        return waitUntil([&] {
            std::array<char, 256> text{};
            const ssize_t count = recv(manager.get(), text.data(), text.size(), 0);
            if (count > 0) {
                told.emplace_back(text.data(), static_cast<std::size_t>(count));
            }
            return std::ranges::count(told, state) >= times;
        });
    };
    ServiceProcess::Setup setup;
    setup.environment = {"NOTIFY_SOCKET=" + path};
    auto service = start(setup);
    EXPECT_TRUE(hears("READY=1", 1));
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_TRUE(hears("STOPPING=1", 1));
    EXPECT_THAT(told, ElementsAre("READY=1", "STOPPING=1"));
    told.clear();
    setup.environment.emplace_back("WATCHDOG_USEC=100000");
    service = start(setup);
    EXPECT_TRUE(hears("WATCHDOG=1", 5));
    EXPECT_EQ(std::ranges::count(told, "READY=1"), 1);
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_TRUE(hears("STOPPING=1", 1));
}

TEST_F(ServiceTest, SaysItsCountsEachMinuteInWhichTheyChanged) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' libraries must be loaded before any other";
#endif
    const testing::TemporaryFolder clock;
    const std::filesystem::path ticks = clock.path() / "minutes";
    const auto minutes = [&ticks] { return readFile(ticks).value_or("").size(); };
    ServiceProcess::Setup setup;
    setup.environment = {"LD_PRELOAD=" QUORBEL_CLOCK_SHIFT_PATH,
                         "QUORBEL_QUICK_MINUTES=" + ticks.string()};
    const auto service = start(setup);
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    for (const char *line : {"<6>Received 1, ", "<6>Received 2, ", "<6>Received 3, "}) {
        sendTo(datagrams, "<13>x");
        ASSERT_TRUE(service->waitForJournal(line));
        // Some more such minutes, in which nothing changes.
        const std::size_t before = minutes();
        ASSERT_TRUE(waitUntil([&] { return minutes() > before + 5; }));
        EXPECT_EQ(countOf(service->journal(), line), 1U);
    }
    EXPECT_EQ(service->journal().find("<6>Received 0, "), std::string::npos);
    EXPECT_EQ(service->terminate(), 0);
    // Once more at the end, which also counts what nobody was told of.
    EXPECT_EQ(countOf(service->journal(), "<6>Received 3, "), 2U);
}

// Somebody sets the clock while the service runs.
TEST_F(ServiceTest, StoresEventsUnderTheDateThatTheClockShows) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' libraries must be loaded before any other";
#endif
    // Noon, so that the day does not end meanwhile.
    constexpr std::int64_t kNoon = 1'699'963'200;
    constexpr std::int64_t kDay = 86'400;
    constexpr std::size_t kMany = 500;
    const testing::TemporaryFolder clock;
    const auto setClock = [&clock](std::int64_t seconds) {
        clock.write("new", std::to_string(seconds - std::time(nullptr)));
        std::filesystem::rename(clock.path() / "new", clock.path() / "shift");
    };
    // Forwards and back, by a day and more and within a day.
    const std::int64_t moments[] = {kNoon, kNoon - 2 * kDay, kNoon - 3600, kNoon + kDay,
                                    kNoon - 2 * kDay};
    ServiceProcess::Setup setup;
    setup.environment = {"LD_PRELOAD=" QUORBEL_CLOCK_SHIFT_PATH,
                         "QUORBEL_CLOCK_SHIFT=" + (clock.path() / "shift").string()};
    setClock(kNoon);
    const auto service = start(setup);
    const UniqueFd stream = connectTo(service->port(), SOCK_STREAM);
    std::map<std::string, std::vector<std::string>> expected;
    std::size_t count = 0;
    for (const std::int64_t moment : moments) {
        setClock(moment);
        std::string frames;
        for (std::size_t i = 0; i < kMany; ++i, ++count) {
            frames += "<13>event " + std::to_string(count) + '\n';
            expected[logFileName(moment)].push_back("event " + std::to_string(count));
        }
        sendTo(stream, frames);
        ASSERT_TRUE(waitForStored(count));
    }
    EXPECT_EQ(service->terminate(), 0);
    EXPECT_THAT(service->journal(), HasSubstr("Received 2500, malformed 0, stored 2500, "));
    EXPECT_EQ(std::ranges::count_if(listFolder(folder.path()),
                                    [](const auto &name) { return hasExtension(name, "log"); }),
              std::ssize(expected));
    for (const auto &[name, events] : expected) {
        std::vector<std::string> found;
        std::vector<std::string> files;
        LogReader::readFile(folder.path() / name, [&](const LogLine &line) {
            files.push_back(logFileName(std::atoll(std::string(line.date).c_str())));
            found.emplace_back(line.message);
            return true;
        });
        EXPECT_EQ(found, events) << name;
        EXPECT_THAT(files, Each(name));
    }
}

TEST_F(ServiceTest, EndsInOrderOnEitherSignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        const auto service = start();
        ::kill(service->pid(), signal);
        EXPECT_EQ(service->waitForEnd(), 0);
    }
}

TEST_F(ServiceTest, HasTheNameThatTheFrontEndLooksFor) {
    const auto service = start();
    EXPECT_EQ(readFile("/proc/" + std::to_string(service->pid()) + "/comm"), "QuorbelSrv\n");
}

TEST_F(ServiceTest, TellsTheFrontEndAndObeysIt) {
    const PrivateBus bus;
    const auto service = start({.library = {}, .busAddress = bus.address()});
    ASSERT_TRUE(service->waitForJournal("Connected to the system bus"));
    std::vector<std::string> told;
    NotificationObserver observer([&](const NotificationObserver::UserInfo &info) {
        std::string text;
        for (const auto &[key, value] : info) {
            text += key == "Date" ? "" : std::string(key) + '=' + std::string(value) + ';';
        }
        told.push_back(text);
    });
    ASSERT_TRUE(waitUntil([&] {
        observer.dispatch(std::chrono::milliseconds(10));
        return observer.isConnected();
    }));
    // The subscription is on its way to the bus; what is sent before it arrives is not seen.
    const UniqueFd datagrams = connectTo(service->port(), SOCK_DGRAM);
    std::size_t sent = 0;
    ASSERT_TRUE(waitUntil([&] {
        sendTo(datagrams, "<187>app: disk full, retrying");
        ++sent;
        observer.dispatch(std::chrono::milliseconds(10));
        return !told.empty();
    }));
    EXPECT_EQ(told[0],
              "Type=Set;Priority=Local7.Error;Host=127.0.0.1;Message=app: disk full, retrying;");

    ASSERT_TRUE(waitForStored(sent));
    const auto names = listFolder(folder.path());
    const std::string bytes = readFile(folder.path() / names.at(0)).value_or("");
    const std::string first = bytes.substr(0, bytes.find('\r'));
    CommandSender sender([](const std::string &) {});
    sender.send({{"command", "update"}, {"Events", Dictionary{{first + "\n", "1"}}}});
    sender.send({{"command", "save"}, {"Settings", Dictionary{{"dateFormat", "HH"}}}});
    EXPECT_TRUE(sender.waitUntilIdle(testing::kPatience));
    EXPECT_EQ(stored().size(), sent - 1);
    EXPECT_TRUE(readFile(folder.path() / "Quorbel.ini"));
    EXPECT_EQ(service->terminate(), 0);
}

}  // namespace
}  // namespace quorbel
