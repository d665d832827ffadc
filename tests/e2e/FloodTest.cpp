// Floods of events from real senders over the real service into the window: what it lists in the
// end is what the log files hold, event for event, whatever stopped on the way.

#include "common/LogReader.h"
#include "core/EventHold.h"
#include "core/EventList.h"
#include "events/ScanView.h"
#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "platform/KeyedArchive.h"
#include "platform/bus/NotificationObserver.h"
#include "platform/gui/Appearance.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QTest>

#include <csignal>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace quorbel {

namespace {

using Events = std::map<std::string, int>;
using load::Plan;

constexpr std::uint64_t kFlood = 150'000;
constexpr int kPatienceMs = 2 * testing::kPatience.count();

std::string joined(std::string_view date, std::string_view priority, std::string_view host,
                   std::string_view message) {
    std::string event;
    for (const std::string_view field : {date, priority, host, message}) {
        event += field;
        event += ',';
    }
    return event;
}

std::int64_t counted(const AppState &state) {
    return state.iEmergency + state.iAlert + state.iCritical + state.iError + state.iWarning +
           state.iNotice + state.iInformation + state.iDebug + state.iUnknown;
}

/// The difference between two sets, for people; empty when there is none.
std::string difference(const Events &logged, const Events &listed) {
    std::int64_t missing = 0;
    std::int64_t tooMany = 0;
    std::string example;
    Events all = logged;
    for (const auto &[event, count] : listed) {
        all[event] -= count;
    }
    for (const auto &[event, count] : all) {
        missing += std::max(count, 0);
        tooMany += std::max(-count, 0);
        example = count == 0 ? example : event;
    }
    return missing + tooMany == 0 ? std::string()
                                  : std::to_string(missing) + " are missing and " +
                                        std::to_string(tooMany) + " too many, as " + example;
}

}  // namespace

class FloodTest : public QObject {
    Q_OBJECT

private:
    void startService() {
        const std::string port = std::to_string(m_service ? m_service->port() : 0);
        m_service = std::make_unique<testing::ServiceProcess>(
            testing::ServiceProcess::Setup{.library = m_library->path(),
                                           .busAddress = m_bus->address(),
                                           .arguments = {"--port", port}});
        QVERIFY2(m_service->isListening(), m_service->journal().c_str());
    }
    void openWindow() {
        QVERIFY(m_service->waitForJournal("Connected to the system bus"));
        m_window = std::make_unique<testing::FrontEnd>();
        QVERIFY(m_window->waitUntilItHears());
    }
    EventList &list() { return m_window->delegate.events; }

    Plan plan(Plan::Transport transport, std::uint64_t count = kFlood) {
        m_sent += count;
        return {.port = m_service->port(),
                .transport = transport,
                .run = ++m_runs,
                .count = count,
                .mostQueued = std::uint64_t{4} << 20U};
    }
    /// Sends on a thread of its own.
    static std::future<void> flood(const Plan &plan) {
        return std::async(std::launch::async, [plan] { load::send(plan); });
    }
    static bool isOver(const std::future<void> &sending) {
        return sending.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }
    /// Lets the window go on until then.
    template <typename Condition>
    static bool goOnUntil(Condition condition) {
        return testing::waitUntil(
            [&] {
                QApplication::processEvents();
                return condition();
            },
            std::chrono::milliseconds(kPatienceMs));
    }
    std::uint64_t stored() { return m_lines->count(); }
    /// Waits until all that was sent is stored, and until it is listed; then compares.
    void compareInTheEnd(const std::future<void> &sending) {
        QVERIFY(goOnUntil([&] { return isOver(sending) && stored() >= m_sent; }));
        compare();
    }
    void compare() {
        const std::uint64_t all = stored();
        const bool isThere = goOnUntil([&] { return list().size() >= all; });
        // Nothing comes that is too many.
        QTest::qWait(1500);
        const std::string wrong = difference(logged(), listed());
        QVERIFY2(wrong.empty(), wrong.c_str());
        QVERIFY(isThere);
        QCOMPARE(counted(m_window->delegate.state), static_cast<std::int64_t>(list().size()));
        QVERIFY(list().size() > 0);
    }
    Events logged() const {
        Events events;
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_library->path().string()));
        for (const auto &file : logFiles()) {
            LogReader::readFile(file, [&events](const LogLine &line) {
                ++events[joined(line.date, line.priority, line.host, line.message)];
                return true;
            });
        }
        return events;
    }
    Events listed() {
        Events events;
        for (std::size_t row = 0; row < list().size(); ++row) {
            // However its date is shown.
            ++events[joined(std::to_string(list().momentHeld(row).value_or(0)),
                            *list().priority(row), *list().host(row), *list().message(row))];
        }
        return events;
    }

private Q_SLOTS:
    static void initTestCase() { applyAppearance(*qApp); }
    void init() {
        m_bus = std::make_unique<testing::PrivateBus>();
        m_library = std::make_unique<testing::TemporaryFolder>();
        m_lines = std::make_unique<load::LineCounter>(m_library->path());
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_library->path().string()));
        m_sent = 0;
        startService();
    }
    void cleanup() {
        m_window.reset();
        m_service.reset();
        m_library.reset();
        m_bus.reset();
    }

    void aFloodIsListedWhole_data() {
        QTest::addColumn<bool>("overTcp");
        QTest::addColumn<Tab>("page");
        QTest::newRow("UDP") << false << Tab::kHome;
        QTest::newRow("TCP") << true << Tab::kHome;
        QTest::newRow("UDP, events on screen") << false << Tab::kEvents;
        QTest::newRow("TCP, events on screen") << true << Tab::kEvents;
    }
    void aFloodIsListedWhole() {
        QFETCH(const bool, overTcp);
        QFETCH(const Tab, page);
        openWindow();
        m_window->window->selectTab(page);
        const auto sending = flood(plan(overTcp ? Plan::Transport::kTcp : Plan::Transport::kUdp));
        compareInTheEnd(sending);
        QCOMPARE(m_service->terminate(), std::optional<int>(0));
        const std::string journal = m_service->journal();
        QCOMPARE(load::counter(journal, "stored"), kFlood);
        QCOMPARE(static_cast<std::uint64_t>(list().size()), kFlood);
    }

    void aListIsHeldAndFilteredInAFlood() {
        openWindow();
        m_window->window->selectTab(Tab::kEvents);
        const auto sending = flood(plan(Plan::Transport::kTcp));
        EventHold &hold = m_window->delegate.hold;
        for (int part = 1; part < 6; ++part) {
            const auto all = [&] { return list().size() + hold.arrivals(); };
            QVERIFY(goOnUntil([&] { return all() > kFlood * static_cast<unsigned>(part) / 8; }));
            EventQuery query;
            query.texts.push_back({{"1|2", false, part % 2 == 0}, false});
            m_window->window->showEvents(part < 4 ? query : EventQuery());
            hold.setOn(part % 2 == 1);
            while (!hold.isOn() && hold.arrivals() > 0) {
                auto *page = m_window->window->findChild<ScanView *>();
                hold.release(std::chrono::milliseconds(8), *page);
                QApplication::processEvents();
            }
        }
        hold.setOn(false);
        QVERIFY(goOnUntil([&] {
            hold.release(std::chrono::milliseconds(8), *m_window->window->findChild<ScanView *>());
            return isOver(sending) && stored() >= m_sent && hold.arrivals() == 0 &&
                   list().size() >= m_sent;
        }));
        compareInTheEnd(sending);
    }

    void aWindowThatOpensInAFloodHasAll() {
        // Slow enough for a window to open meanwhile.
        Plan slow = plan(Plan::Transport::kTcp);
        slow.perSecond = kFlood / 5;
        const auto sending = flood(slow);
        QVERIFY(goOnUntil([&] { return stored() > kFlood / 10; }));
        openWindow();
        QVERIFY(stored() < kFlood);
        compareInTheEnd(sending);
    }

    void aWindowThatStandsStillInAFloodCatchesUp() {
        openWindow();
        const auto first = flood(plan(Plan::Transport::kTcp));
        QVERIFY(goOnUntil([&] { return list().size() > kFlood / 10; }));
        // Longer than it is waited for.
        std::this_thread::sleep_for(std::chrono::seconds(4));
        const auto second = flood(plan(Plan::Transport::kUdp));
        QVERIFY(testing::waitUntil([&] { return isOver(second) && stored() >= m_sent; },
                                   std::chrono::milliseconds(kPatienceMs)));
        QVERIFY(list().size() < m_sent);
        compareInTheEnd(second);
    }

    void theBusGoesInAFlood() {
        openWindow();
        const auto sending = flood(plan(Plan::Transport::kTcp));
        QVERIFY(goOnUntil([&] { return list().size() > kFlood / 10; }));
        m_bus->stop();
        QVERIFY(goOnUntil([&] { return !m_window->window->hearsService(); }));
        m_bus->start();
        QVERIFY(goOnUntil([&] { return isOver(sending) && stored() >= m_sent; }));
        // What comes behind it shows that they are together again.
        QVERIFY(goOnUntil([&] { return m_window->window->hearsService(); }));
        const auto more = flood(plan(Plan::Transport::kTcp, 1000));
        compareInTheEnd(more);
    }

    void theServiceIsKilledInAFlood() {
        openWindow();
        const auto sending = flood(plan(Plan::Transport::kTcp));
        QVERIFY(goOnUntil([&] { return list().size() > kFlood / 10; }));
        m_service->kill();
        QVERIFY(goOnUntil([&] { return isOver(sending); }));
        startService();
        m_sent = stored();
        const auto again = flood(plan(Plan::Transport::kUdp));
        compareInTheEnd(again);
        const auto another = flood(plan(Plan::Transport::kUdp, 10));
        compareInTheEnd(another);
    }

    void oldEventsAreRemovedWhileTheBusIsAway() {
        constexpr int kOld = 2000;
        constexpr int kNew = 100;
        // By their day the service believes the clock, so they are there before it can look: a file
        // of an old day alone would have it wait for a week.
        const auto sending = flood(plan(Plan::Transport::kTcp, kNew));
        QVERIFY(goOnUntil([&] { return isOver(sending) && stored() == kNew; }));
        std::string lines;
        for (int number = 0; number < kOld; ++number) {
            lines += "1577836800,User." + std::string(number % 2 == 0 ? "Error" : "Notice") +
                     ",h,old " + std::to_string(number) + "\r\n";
        }
        m_library->write("2020-01-01.log", lines);
        openWindow();
        QCOMPARE(list().size(), std::size_t{kOld + kNew});
        m_bus->stop();
        QVERIFY(goOnUntil([&] { return !m_window->window->hearsService(); }));
        m_library->write("Quorbel.ini", writeKeyedArchive(Dictionary{{"removalError", 1},
                                                                     {"removalErrorUnits", 4}}));
        ::kill(m_service->pid(), SIGHUP);
        QVERIFY(goOnUntil([&] {
            load::LineCounter lineCounter(m_library->path());
            return lineCounter.count() == kOld / 2 + kNew;
        }));
        m_bus->start();
        QVERIFY(goOnUntil([&] { return list().size() == kOld / 2 + kNew; }));
        const std::string wrong = difference(logged(), listed());
        QVERIFY2(wrong.empty(), wrong.c_str());
        QCOMPARE(counted(m_window->delegate.state), std::int64_t{kOld / 2 + kNew});
    }

    void whoHearsSinglesOnlyGetsThemInCalmTimes() {
        openWindow();
        std::size_t heard = 0;
        NotificationObserver old([&heard](const NotificationInfo & /*info*/) { ++heard; });
        old.waitUntilConnected(testing::kPatience);
        Plan calm = plan(Plan::Transport::kUdp, 500);
        calm.perSecond = 500;
        const auto sending = flood(calm);
        QVERIFY(goOnUntil([&] {
            while (old.dispatch(std::chrono::milliseconds(1))) {
            }
            return heard == 500;
        }));
        compareInTheEnd(sending);
    }

private:
    std::unique_ptr<testing::PrivateBus> m_bus;
    std::unique_ptr<testing::TemporaryFolder> m_library;
    std::unique_ptr<load::LineCounter> m_lines;
    std::unique_ptr<testing::ServiceProcess> m_service;
    std::unique_ptr<testing::FrontEnd> m_window;
    std::uint64_t m_runs = 0;
    std::uint64_t m_sent = 0;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::FloodTest)
#include "FloodTest.moc"
