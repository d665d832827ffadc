// Both real programs under load for a long time: the real service on a bus and a small disk of its
// own, the real main window, senders, somebody who works with the window without a pause, and
// faults around the service. In the end, the window lists what the log files hold, event for
// event, all that was received is accounted for, and nothing has grown.
//
// QUORBEL_SOAK_MINUTES says how long, QUORBEL_SEED what happens; both have a short form.

#include "load/LoadCheck.h"
#include "load/SoakForm.h"
#include "platform/KeyedArchive.h"
#include "platform/gui/Appearance.h"
#include "soak/Collector.h"
#include "soak/EventComparison.h"
#include "soak/MemorySamples.h"
#include "soak/OwnPlace.h"
#include "soak/ProcessFigures.h"
#include "soak/Robot.h"
#include "soak/StallWatch.h"
#include "soak/Traffic.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QTest>
#include <QThreadPool>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::soak {

namespace {

using namespace std::chrono_literals;
using load::figure;
using load::Plan;
using std::chrono::seconds;

const char *const kMinutes = std::getenv("QUORBEL_SOAK_MINUTES");  // NOLINT(concurrency-mt-unsafe)
const bool kIsLong = kMinutes != nullptr;
const seconds kTime = kIsLong ? seconds(60 * std::atol(kMinutes)) : 10s;
const seconds kBetweenFaults = kIsLong ? 30s : 3s;
const seconds kBetweenSamples = kIsLong ? 5s : 1s;
const Traffic::Rates kRates = kIsLong ? Traffic::Rates{} : Traffic::Rates{.longest = 20'000};
/// Before, the list has not come to its size at half the time.
const bool kTellsGrowth = kTime >= 600s;
/// What stays of the load, in the long form, is about a million events.
const int kKeptMinutes = kIsLong ? 3 : 9;
const unsigned kDiskSize = kIsLong ? 1024 : 128;

/// Within it, what is no longer needed closes.
constexpr seconds kSettling = 3s;
constexpr int kOld = 5'000;
constexpr double kLongestStallMs = 100;
constexpr double kMostGrowth = 0.02;
/// MiB more than that: the service begins anew each time, and takes so little that 2 % are a page.
constexpr double kSlack = 2;

/// Events of an hour ago, which the first retention time removes.
void writeOldEvents(const testing::TemporaryFolder &disk) {
    const std::time_t then = std::time(nullptr) - 3600;
    std::array<char, 32> day{};
    std::tm local{};
    std::strftime(day.data(), day.size(), "%Y-%m-%d.log", localtime_r(&then, &local));
    std::string lines;
    for (int number = 0; number < kOld; ++number) {
        lines += std::to_string(then) + ",Local0.Notice,h,old " + std::to_string(number) + "\r\n";
    }
    disk.write(std::filesystem::path("library") / day.data(), lines);
}

Dictionary startSettings() {
    return {{"popupEvents", 2},
            {"popupDisplayArray", Array{"Emergency"}},
            {"excludeFiltersArray", Array{Dictionary{{"Name", "Some"}, {"Message", "*77 *"}}}}};
}

std::string percent(double share) {
    return QString::number(100 * share, 'f', 1).toStdString() + " %";
}

bool stays(const MemoryCurve &memory) {
    return memory.median(3) <= memory.median(2) * (1 + kMostGrowth) + kSlack;
}

std::string described(const char *who, const MemoryCurve &memory) {
    const auto rounded = [](double value) { return std::to_string(std::lround(value)); };
    return std::string(who) + ": " + rounded(memory.median(2)) + " MiB in the third quarter, " +
           rounded(memory.median(3)) + " MiB in the fourth, " + rounded(memory.most()) +
           " MiB at most, growth " + percent(memory.growth());
}

}  // namespace

class WindowSoakTest : public QObject {
    Q_OBJECT

public:
    WindowSoakTest(const testing::TemporaryFolder &disk, const std::filesystem::path &own,
                   std::string noDisk)
        : m_disk(disk), m_own(own), m_noDisk(std::move(noDisk)) {}

private:
    /// Both programs at rest: what they have then.
    struct Rest {
        ProcessFigures window;
        ProcessFigures service;
    };

    void fail(const std::string &what) {
        figure("FAILED " + what);
        m_failures.append(QString::fromStdString(what));
    }
    void expect(bool holds, const std::string &what) {
        if (!holds) {
            fail(what);
        }
    }
    static bool goOnUntil(const std::function<bool()> &condition,
                          std::chrono::milliseconds limit = 3 * testing::kPatience) {
        return testing::waitUntil(
            [&] {
                QApplication::processEvents();
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                return condition();
            },
            limit);
    }
    void start() {
        const std::filesystem::path library = m_disk.path() / "library";
        writeOldEvents(m_disk);
        m_disk.write("library/Quorbel.ini", writeKeyedArchive(startSettings()));
        m_collector.emplace(m_bus,
                            Collector::Place{library, m_noDisk.empty() ? m_disk.path() / "filler"
                                                                       : std::filesystem::path()},
                            m_seed, kBetweenFaults);
        m_traffic.emplace(m_collector->port(), m_seed, kRates);
    }
    bool isWell() { return m_collector->isWell() && m_frontEnd->window->hearsService(); }
    EventList &list() { return m_frontEnd->delegate.events; }

    /// The robot and the faults for that long, or until everything was done once.
    void work(Robot &robot, seconds time) {
        m_traffic->setOn(true);
        m_collector->setFaults(true);
        const auto end = std::chrono::steady_clock::now() + time;
        robot.actAll();
        while (std::chrono::steady_clock::now() < end) {
            robot.act();
        }
    }
    void comeToRest(Robot &robot) {
        m_traffic->setOn(false);
        m_collector->setFaults(false);
        robot.rest();
        expect(goOnUntil([this] { return isWell() && !m_traffic->isBusy(); }),
               "The window hears the service again");
    }
    /// A new life of the service, of which all is known.
    void restart() {
        m_collector->restart();
        expect(goOnUntil([this] { return isWell(); }),
               "The window hears the service after a restart");
    }
    void send(Plan::Transport transport) {
        Plan plan{.port = m_collector->port(),
                  .transport = transport,
                  .run = 1'000'000 + ++m_runs,
                  .count = kProbes / 2,
                  .perSecond = 5'000};
        std::thread sender([plan] { load::send(plan); });
        sender.join();
    }
    std::uint64_t countedEvents() {
        std::int64_t sum = 0;
        for (const auto counter : kSeverityCounters) {
            sum += m_frontEnd->delegate.state.*counter;
        }
        return static_cast<std::uint64_t>(sum);
    }
    /// As long as it takes, but for good: retention may be at work.
    void compareEvents(const char *when) {
        Comparison found;
        const bool isEqual = goOnUntil([&] {
            found = compare(list(), m_collector->fullTimes());
            goOnUntil([] { return false; }, found.isEqual() ? 0s : 1s);
            return found.isEqual();
        });
        figure(std::string("events ") + when + ": " + std::to_string(found.logged) +
               " in the log files, missing in the window " + std::to_string(found.missing) +
               ", too many " + std::to_string(found.tooMany) + ", of a full disk " +
               std::to_string(found.unstored) + " of " + std::to_string(m_collector->notStored()) +
               " not stored");
        expect(isEqual, "The window lists what the log files hold; differs: " + found.example);
        const auto counted = countedEvents();
        figure("counters of the window " + std::string(when) + ": " + std::to_string(counted) +
               " taken in and not deleted, " + std::to_string(list().size()) + " listed");
        expect(counted >= list().size(), "The window counts what it lists");
        expect(found.unstored <= m_collector->notStored(), "What is not stored is counted");
    }
    /// What was sent to the service in its last life is what it counts.
    void checkLastLife() {
        const std::string journal = m_collector->lastJournal();
        const std::uint64_t received = load::counter(journal, "Received");
        const std::uint64_t stored = load::counter(journal, "stored");
        const std::uint64_t filtered = load::counter(journal, "filtered");
        figure("counters of the last life: " + std::to_string(kProbes) + " sent, " +
               std::to_string(received) + " received, " + std::to_string(stored) + " stored, " +
               std::to_string(filtered) + " filtered");
        expect(received == kProbes && stored + filtered == kProbes,
               "The service counts what was sent, stored and filtered");
    }
    /// Compares, too. To be called at rest.
    Rest look(const char *when) {
        restart();
        send(Plan::Transport::kUdp);
        send(Plan::Transport::kTcp);
        compareEvents(when);
        goOnUntil([] { return false; }, kSettling);
        const Rest rest{figuresOf(getpid()), figuresOf(m_collector->pid())};
        restart();
        checkLastLife();
        return rest;
    }
    /// What closes some time later has closed then.
    void checkDescriptors(const Rest &before, const Rest &after) {
        ProcessFigures now = after.window;
        goOnUntil([&] {
            now = figuresOf(getpid());
            return now.descriptors.size() <= before.window.descriptors.size() &&
                   now.threads.size() <= before.window.threads.size();
        });
        checkSame("descriptors of the window", before.window.descriptors, now.descriptors);
        checkSame("threads of the window", before.window.threads, now.threads);
        checkSame("descriptors of the service", before.service.descriptors,
                  after.service.descriptors);
        checkSame("threads of the service", before.service.threads, after.service.threads);
    }
    void checkSame(const std::string &what, const std::vector<std::string> &were,
                   const std::vector<std::string> &are) {
        figure(what + ": " + std::to_string(were.size()) + " before, " +
               std::to_string(are.size()) + " after");
        if (are.size() > were.size()) {
            std::string added;
            std::vector<std::string> more;
            std::ranges::set_difference(are, were, std::back_inserter(more));
            for (const std::string &one : more) {
                added += ' ' + one;
            }
            fail(what + " have become more:" + added);
        }
    }
    /// These depend on the machine, too: in the short form they are only told, but for the absurd.
    void checkTimes(const StallWatch &stalls) {
        for (const StallWatch::Stall &stall : stalls.longest()) {
            figure("stall of " + describe(stall).toStdString());
        }
        const double longest = stalls.longest().empty() ? 0 : stalls.longest().front().milliseconds;
        expect(longest <= (kIsLong ? kLongestStallMs : 20'000), "The window does not stand still");
    }
    void checkMemory(const MemorySamples &samples) {
        figure(described("memory of the window", samples.window));
        figure(described("memory of the service", samples.service));
        expect(!kTellsGrowth || stays(samples.window), "The window does not grow");
        expect(!kTellsGrowth || stays(samples.service), "The service does not grow");
    }

private Q_SLOTS:
    void initTestCase() {
        figure("seed " + std::to_string(m_seed) + ", " + std::to_string(kTime.count()) + " s");
        figure(m_noDisk.empty()
                   ? "disk of " + std::to_string(kDiskSize) + " MiB, to be filled"
                   : "no mounts may be made here, the disk is not filled: " + m_noDisk);
        applyAppearance(*qApp);
        start();
        m_frontEnd.emplace();
        QVERIFY(m_frontEnd->waitUntilItHears());
    }
    void cleanupTestCase() {
        m_traffic.reset();
        m_frontEnd.reset();
        m_collector.reset();
    }

    void theWindowOutlivesItAll() {
        StallWatch stalls;
        Robot robot(*m_frontEnd, *m_collector, stalls,
                    QString::fromStdString((m_own / "files").string()), m_seed);
        QCOMPARE(list().size(), std::size_t{kOld});
        QVERIFY(robot.keepFor(kKeptMinutes));
        expect(goOnUntil([this] { return list().size() == 0; }, testing::kPatience),
               "What is too old leaves the list: " + std::to_string(list().size()) + " are left");
        m_traffic->setOn(true);
        robot.actAll();
        comeToRest(robot);
        stalls.stop();
        const Rest before = look("at first");
        stalls.start();
        MemorySamples samples(*m_collector, kBetweenSamples);
        work(robot, kTime);
        samples.finish();
        comeToRest(robot);
        stalls.stop();
        const Rest after = look("in the end");
        figure("messages sent: " + std::to_string(m_traffic->sent()));
        figure("faults: " + m_collector->told());
        figure("the robot " + robot.told());
        for (const auto &[text, count] : robot.alerts()) {
            figure("alert, " + std::to_string(count) + " times: " + text);
        }
        checkDescriptors(before, after);
        checkMemory(samples);
        checkTimes(stalls);
        for (const std::string &failure : robot.failures()) {
            fail("The robot could not go on: " + failure);
        }
        for (const std::string &failure : m_collector->failures()) {
            fail(failure);
        }
        QVERIFY2(m_failures.isEmpty(), qPrintable(m_failures.join(u'\n')));
    }

private:
    static constexpr std::uint64_t kProbes = 2'000;

    const testing::TemporaryFolder &m_disk;
    const std::filesystem::path m_own;
    const std::string m_noDisk;
    const unsigned m_seed = testing::seed();
    QStringList m_failures;
    std::uint64_t m_runs = 0;
    testing::PrivateBus m_bus{testing::PrivateBus::Serve::kSystemAndSession};
    std::optional<Collector> m_collector;
    std::optional<Traffic> m_traffic;
    std::optional<testing::FrontEnd> m_frontEnd;
};

}  // namespace quorbel::soak

int main(int argc, char **argv) {
    using namespace quorbel;
    const testing::TemporaryFolder disk;
    const testing::TemporaryFolder own;
    const std::string noDisk = soak::makeSmallDisk(disk.path(), soak::kDiskSize);
    soak::makeHome(own);
    qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString((disk.path() / "library").string()));
    qputenv("QT_QPA_PLATFORM", soak::twoScreens(own));
    // Of one test function, in milliseconds; five minutes otherwise.
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(2'000 * (soak::kTime.count() + 600)));
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    // Threads of this pool are no longer needed soon, not half a minute later.
    QThreadPool::globalInstance()->setExpiryTimeout(1000);
    soak::WindowSoakTest test(disk, own.path(), noDisk);
    return QTest::qExec(&test, argc, argv);
}

#include "WindowSoakTest.moc"
