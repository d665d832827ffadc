#include "core/AlertQueueLink.h"
#include "core/EventHold.h"
#include "core/LoadedEvents.h"
#include "shell/NotificationPump.h"
#include "shell/ShellFixture.h"
#include "shell/WindowController.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

using namespace quorbel;
using namespace quorbel::testing;

namespace {

class RecordingAlertQueue : public AlertQueueLink {
public:
    void append(Event event) override { popupArray.push_back(std::move(event)); }

    std::vector<Event> popupArray;
};

std::int64_t counted(const AppState &state) {
    return state.iEmergency + state.iAlert + state.iCritical + state.iError + state.iWarning +
           state.iNotice + state.iInformation + state.iDebug + state.iUnknown;
}

/// What this thread has used of the processor: unlike the time of day, it does not go on while
/// other programs run.
std::chrono::nanoseconds mainThreadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// A loaded shell on a bus of its own, with a service that can notify it.
struct Listening {
    PrivateBus bus;
    Shell shell;
    RecordingAlertQueue alerts;
    std::optional<ServiceStandIn> service;

    Listening() {
        shell.window.setAlertQueue(&alerts);
        shell.window.windowDidLoad();
        service.emplace();
    }
    ~Listening() { shell.window.setAlertQueue(nullptr); }
    Listening(const Listening &) = delete;
    Listening &operator=(const Listening &) = delete;

    /// Notifies until one gets through: the observer connects in its own time.
    void connect() {
        QTRY_VERIFY_WITH_TIMEOUT(probe(), 20000);
        settle();
    }

    /// After this, everything that was sent before has been handled.
    void settle() {
        const std::string marker = "marker " + std::to_string(++m_markers);
        service->notify({{"Type", "Remove"}, {"Message", marker}});
        auto &removed = shell.events().removed;
        QTRY_VERIFY_WITH_TIMEOUT(std::count(removed.begin(), removed.end(), marker) == 1, 20000);
        removed.clear();
    }

    std::size_t listed() { return shell.list().size(); }

private:
    bool probe() {
        service->notify({{"Type", "Remove"}, {"Message", "probe"}});
        return !shell.events().removed.empty();
    }

    int m_markers = 0;
};

const ServiceStandIn::UserInfo kSet{{"Type", "Set"},
                                    {"Date", "1700000000"},
                                    {"Priority", "Local7.Error"},
                                    {"Host", "10.0.0.5"},
                                    {"Message", "disk full, retrying"}};

}  // namespace

class NotificationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void setIsCountedAndListed();
    void setReachesThePageOnScreen();
    void alertsTakeAnEventOnlyWhenTheyAreOn_data();
    void alertsTakeAnEventOnlyWhenTheyAreOn();
    void alertsTakeAllThatComeTogether();
    void alertsAreOffWithoutAQueue();
    void removeGoesToTheListAndCountsNothing();
    void otherTypesAreIgnored_data();
    void otherTypesAreIgnored();
    void incompleteRecordsAreTaken();
    void furtherKeysStayWithTheEventExceptType();
    void worksWithoutABus();
    void comesBackAfterTheBus();
    void comesBackAfterTheService();
    void windowStaysResponsiveUnderAFlood();
};

void NotificationsTest::setIsCountedAndListed() {
    Listening it;
    it.connect();
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.listed(), std::size_t{1});
    QCOMPARE(it.shell.list().date(0).value_or(""), std::string("1700000000"));
    QCOMPARE(it.shell.list().message(0).value_or(""), std::string_view("disk full, retrying"));
    QCOMPARE(it.shell.delegate.state.iError, 1);
    QCOMPARE(counted(it.shell.delegate.state), 1);
}

void NotificationsTest::setReachesThePageOnScreen() {
    Listening it;
    it.connect();
    it.shell.window.makeVisible();
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.shell.home().refreshed, 1);
    QCOMPARE(it.shell.events().insertedOnScreen, 0);

    it.shell.window.Scan();
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.shell.home().refreshed, 1);
    QCOMPARE(it.shell.events().insertedOnScreen, 1);

    it.shell.window.setReopenable([] { return true; });
    it.shell.window.close();
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.shell.events().insertedOnScreen, 1);
    QCOMPARE(it.listed(), std::size_t{3});
    QCOMPARE(it.shell.delegate.state.iError, 3);
}

void NotificationsTest::alertsTakeAnEventOnlyWhenTheyAreOn_data() {
    QTest::addColumn<int>("popupTime");
    QTest::addColumn<QByteArray>("sound");
    QTest::addColumn<bool>("taken");
    QTest::newRow("all off") << 0 << QByteArray() << false;
    QTest::newRow("popups") << 1 << QByteArray() << true;
    QTest::newRow("sound") << 0 << QByteArray("/sounds/bell.wav") << true;
    QTest::newRow("both") << 30 << QByteArray("/sounds/bell.wav") << true;
    QTest::newRow("a time below zero") << -5 << QByteArray() << false;
}

void NotificationsTest::alertsTakeAnEventOnlyWhenTheyAreOn() {
    QFETCH(int, popupTime);
    QFETCH(QByteArray, sound);
    QFETCH(bool, taken);
    Listening it;
    it.connect();
    it.shell.delegate.state.iPopupEvents = popupTime;
    it.shell.delegate.state.popupSound = sound.toStdString();

    it.service->notify(kSet);
    it.service->notify({{"Type", "Remove"}, {"Message", "no alert"}});
    it.settle();

    QCOMPARE(it.listed(), std::size_t{1});
    QCOMPARE(it.shell.delegate.state.iError, 1);
    QCOMPARE(it.alerts.popupArray.size(), std::size_t{taken ? 1U : 0U});
    if (taken) {
        const Event &event = it.alerts.popupArray.front();
        QCOMPARE(event.id(), it.shell.list().idAt(0));
        QCOMPARE(event.value("Priority").value_or(""), std::string("Local7.Error"));
        QVERIFY(!event.value("Type"));
        it.shell.list().show(it.shell.delegate.state);
        QCOMPARE(event.value("Date"), it.shell.list().date(0));
    }
    it.alerts.popupArray.clear();
}

void NotificationsTest::alertsTakeAllThatComeTogether() {
    struct {
        Tab page;
        bool isHeld;
        std::int64_t popups;
    } const cases[] = {{Tab::kHome, false, 1},
                       {Tab::kEvents, false, 1},
                       {Tab::kEvents, true, 1},
                       {Tab::kHome, false, 0}};
    for (const auto &[page, isHeld, popups] : cases) {
        Listening it;
        it.shell.window.selectTab(page);
        it.shell.delegate.hold.setOn(isHeld);
        it.shell.delegate.state.iPopupEvents = popups;
        it.shell.delegate.state.popupSound.clear();
        NoticeSink &window = it.shell.window;
        const auto come = [](std::initializer_list<std::string_view> messages) {
            LoadedArrivals arrivals;
            for (const std::string_view message : messages) {
                arrivals.add({"1700000000", "Local7.Error", "h", message, {}}, 1'700'000'000);
            }
            return arrivals;
        };
        window.manyNotified(come({"a", "b", "c"}));
        window.manyMissed(come({"missed"}));
        window.manyReadAnew(come({"anew"}));
        window.manyNotified(come({"d"}));
        std::vector<std::string> raised;
        for (const Event &event : it.alerts.popupArray) {
            raised.push_back(event.value("Message").value_or(""));
        }
        const std::vector<std::string> all{"a", "b", "c", "d"};
        QCOMPARE(raised, popups > 0 ? all : std::vector<std::string>());
        QCOMPARE(it.listed(), std::size_t{isHeld ? 1U : 6U});
        it.alerts.popupArray.clear();
    }
}

void NotificationsTest::alertsAreOffWithoutAQueue() {
    Listening it;
    it.connect();
    it.shell.window.setAlertQueue(nullptr);
    it.shell.delegate.state.iPopupEvents = 10;
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.listed(), std::size_t{1});
}

void NotificationsTest::removeGoesToTheListAndCountsNothing() {
    Listening it;
    it.connect();
    it.service->notify(kSet);
    it.settle();
    it.service->notify({{"Type", "Remove"},
                        {"Date", "1700000000"},
                        {"Priority", "Local7.Error"},
                        {"Host", "10.0.0.5"},
                        {"Message", "disk full, retrying"}});
    QTRY_COMPARE(it.shell.events().removed, std::vector<std::string>{"disk full, retrying"});
    QCOMPARE(it.shell.delegate.state.iError, 1);
    QCOMPARE(it.shell.events().removedExtras, std::size_t{0});
    QCOMPARE(it.shell.home().refreshed, 0);
}

void NotificationsTest::otherTypesAreIgnored_data() {
    QTest::addColumn<QByteArray>("type");
    for (const char *type : {"set", "SET", "Set ", "", "remove", "Removed"}) {
        QTest::addRow("'%s'", type) << QByteArray(type);
    }
    QTest::newRow("none at all") << QByteArray();
}

void NotificationsTest::otherTypesAreIgnored() {
    QFETCH(QByteArray, type);
    Listening it;
    it.connect();
    it.shell.delegate.state.iPopupEvents = 10;
    ServiceStandIn::UserInfo userInfo(kSet.begin() + 1, kSet.end());
    if (!type.isNull()) {
        userInfo.emplace_back("Type", type.toStdString());
    }
    it.service->notify(userInfo);
    it.settle();
    QCOMPARE(it.listed(), std::size_t{0});
    QCOMPARE(counted(it.shell.delegate.state), 0);
    QVERIFY(it.alerts.popupArray.empty());
}

void NotificationsTest::incompleteRecordsAreTaken() {
    Listening it;
    it.connect();
    it.service->notify({{"Type", "Set"}, {"Message", "nothing else"}});
    it.service->notifyVariants({{"Type", "Set"}});
    it.service->notifyText("no dictionary");
    it.service->notify({{"Type", "Set"}});
    it.settle();
    QCOMPARE(it.listed(), static_cast<std::size_t>(it.shell.delegate.state.iUnknown));
    QVERIFY(it.listed() >= 2);
    QVERIFY(!it.shell.list().message(0));
    QVERIFY(!it.shell.list().date(0));
}

void NotificationsTest::furtherKeysStayWithTheEventExceptType() {
    Listening it;
    it.connect();
    it.shell.delegate.state.iPopupEvents = 10;
    ServiceStandIn::UserInfo userInfo = kSet;
    userInfo.emplace_back("Site", "cellar");
    it.service->notify(userInfo);
    it.settle();
    QCOMPARE(it.alerts.popupArray.size(), std::size_t{1});
    QCOMPARE(it.alerts.popupArray.front().value("Site").value_or(""), std::string("cellar"));
    QVERIFY(!it.alerts.popupArray.front().value("Type"));
    it.alerts.popupArray.clear();
}

void NotificationsTest::worksWithoutABus() {
    PrivateBus bus;
    bus.stop();
    Shell shell;
    shell.library->write("a.log", "1700000000,Local7.Error,10.0.0.5,loaded\r\n");
    shell.window.windowDidLoad();
    shell.window.makeVisible();
    shell.window.Scan();
    QVERIFY(shell.window.isVisible());
    QCOMPARE(shell.list().size(), std::size_t{1});
}

void NotificationsTest::comesBackAfterTheBus() {
    Listening it;
    it.connect();
    it.service.reset();
    it.bus.stop();
    it.bus.start();
    it.service.emplace();
    it.connect();
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.listed(), std::size_t{1});
}

void NotificationsTest::comesBackAfterTheService() {
    Listening it;
    it.connect();
    it.service.reset();
    it.service.emplace();
    it.service->notify(kSet);
    it.settle();
    QCOMPARE(it.listed(), std::size_t{1});
}

void NotificationsTest::windowStaysResponsiveUnderAFlood() {
    constexpr std::size_t kFlood = 20000;
    Listening it;
    it.connect();
    std::chrono::nanoseconds longest{0};
    std::chrono::nanoseconds lastTick{0};
    QTimer ticks;
    connect(&ticks, &QTimer::timeout, &ticks, [&] {
        longest = std::max(longest, mainThreadTime() - lastTick);
        lastTick = mainThreadTime();
    });
    it.service->notifyMany(kFlood, [](std::size_t number) {
        ServiceStandIn::UserInfo userInfo = kSet;
        userInfo.back().second = std::to_string(number);
        return userInfo;
    });
    lastTick = mainThreadTime();
    ticks.start(5);
    QTRY_COMPARE_WITH_TIMEOUT(it.listed(), kFlood, 60000);
    QVERIFY(longest > std::chrono::nanoseconds{0});
    QVERIFY2(longest < std::chrono::milliseconds{100},
             qPrintable(QStringLiteral("%1 ns").arg(longest.count())));
    QCOMPARE(it.shell.list().message(0).value_or(""), std::string_view("19999"));
}

QTEST_MAIN(NotificationsTest)
#include "NotificationsTest.moc"
#include "core/AppState.h"
