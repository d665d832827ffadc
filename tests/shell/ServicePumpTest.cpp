// The window asks the service how it is while somebody looks, and only then.

#include "core/ServiceState.h"
#include "shell/ServicePump.h"
#include "support/PrivateBus.h"
#include "support/StatusStandIn.h"

#include <QTest>

#include <chrono>
#include <memory>
#include <optional>

namespace quorbel {

using namespace std::chrono_literals;
using namespace testing;

class ServicePumpTest : public QObject {
    Q_OBJECT

private:
    static constexpr auto kOften = 10ms;
    PrivateBus m_bus;
    ServiceState m_state;

private Q_SLOTS:
    void cleanup() { m_state.setWatchHandler({}); }

    void asksAtOnceAndThenAgain() {
        StatusStandIn service;
        const ServicePump pump(m_state, kOften);
        int told = 0;
        const ServiceState::Watch watch(m_state, [&told] { ++told; });
        QTRY_VERIFY(told >= 3);
        QCOMPARE(m_state.outcome(), std::optional(StatusOutcome::kTold));
        QCOMPARE(m_state.report().version, std::string("1.1"));
        service.change([](StatusStandIn::Status &status) { status.counters = {{"dropped", 4}}; });
        QTRY_COMPARE(m_state.report().counter("dropped"), std::uint64_t{4});
    }
    void asksNobodyWhileNobodyLooks() {
        StatusStandIn service;
        const ServicePump pump(m_state, kOften);
        auto watch = std::make_unique<ServiceState::Watch>(m_state, [] {});
        QTRY_VERIFY(m_state.outcome().has_value());
        watch.reset();
        QVERIFY(!m_state.outcome());
        QCoreApplication::processEvents();
        const int questions = service.questions() + 1;  // one may be on its way
        QTest::qWait(20 * static_cast<int>(kOften.count()));
        QVERIFY(service.questions() <= questions);
        QVERIFY(!m_state.outcome());  // the answer to that one counts no more
        watch = std::make_unique<ServiceState::Watch>(m_state, [] {});
        QTRY_VERIFY(service.questions() > questions + 1);
    }
    void followsTheServiceAsItGoesAndComes() {
        const ServicePump pump(m_state, kOften);
        const ServiceState::Watch watch(m_state, [] {});
        QTRY_COMPARE(m_state.outcome(), std::optional(StatusOutcome::kNotRunning));
        {
            StatusStandIn service;
            QTRY_COMPARE(m_state.outcome(), std::optional(StatusOutcome::kTold));
        }
        QTRY_COMPARE(m_state.outcome(), std::optional(StatusOutcome::kNotRunning));
        m_bus.stop();
        QTRY_COMPARE(m_state.outcome(), std::optional(StatusOutcome::kNoBus));
        m_bus.start();
        QTRY_COMPARE(m_state.outcome(), std::optional(StatusOutcome::kNotRunning));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ServicePumpTest)
#include "ServicePumpTest.moc"
