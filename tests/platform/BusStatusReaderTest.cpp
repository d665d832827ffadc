#include "platform/bus/BusNames.h"
#include "platform/bus/StatusReader.h"
#include "support/PrivateBus.h"
#include "support/StatusStandIn.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <memory>
#include <vector>

namespace quorbel {
namespace {

using namespace std::chrono_literals;
using testing::kPatience;
using testing::PrivateBus;
using testing::StatusStandIn;

class BusStatusReaderTest : public ::testing::Test {
protected:
    PrivateBus m_bus;
    std::vector<StatusAnswer> m_answers;
    StatusReader m_reader{[this](const StatusAnswer &answer) { m_answers.push_back(answer); },
                          kPatience};

    /// As an event loop would; false when no answer came.
    static bool run(StatusReader &reader) {
        const auto end = std::chrono::steady_clock::now() + 2 * kPatience;
        while (reader.isAsking() && std::chrono::steady_clock::now() < end) {
            pollfd poll{reader.fd(), reader.events(), 0};
            ::poll(&poll, 1, static_cast<int>(reader.timeout().value_or(0ms).count()));
            reader.dispatch();
        }
        return !reader.isAsking();
    }
    StatusOutcome ask() {
        m_answers.clear();
        m_reader.ask();
        EXPECT_TRUE(run(m_reader));
        EXPECT_EQ(m_answers.size(), 1U);
        return m_answers.empty() ? StatusOutcome::kNoBus : m_answers.back().outcome;
    }
    const Value &told(const char *name) {
        static const Value kNone;
        const Value *value = m_answers.back().properties.find(name);
        return value == nullptr ? kNone : *value;
    }
};

TEST_F(BusStatusReaderTest, ReadsWhateverTheServiceTells) {
    StatusStandIn service;
    service.change([](StatusStandIn::Status &status) {
        status.counters = {{"received", 7}, {"dropped", UINT64_MAX}};
        status.refusals = {{"10.0.0.7", "filtered", "\"a\"", 1700000000, 3}};
    });
    ASSERT_EQ(ask(), StatusOutcome::kTold);
    EXPECT_EQ(told("Version"), Value("1.1"));
    EXPECT_EQ(told("Counters"), Value(Dictionary{{"received", 7}, {"dropped", UINT64_MAX}}));
    EXPECT_EQ(told("Listeners"), Value(Array{Array{"udp", 514}, Array{"tcp", 514}}));
    EXPECT_EQ(told("Refusals"),
              Value(Array{Array{"10.0.0.7", "filtered", "\"a\"", 1700000000, 3}}));
    service.change([](StatusStandIn::Status &status) { status.counters.clear(); });
    ASSERT_EQ(ask(), StatusOutcome::kTold);
    EXPECT_EQ(told("Counters"), Value(Dictionary{}));
}

TEST_F(BusStatusReaderTest, SaysThatItMayNotAsk) {
    StatusStandIn service;
    service.onQuestion(StatusStandIn::OnQuestion::kRefuse);
    EXPECT_EQ(ask(), StatusOutcome::kNotAllowed);
}

TEST_F(BusStatusReaderTest, HasNobodyStarted) {
    m_bus.startOnDemand(bus::kServiceName);
    EXPECT_EQ(ask(), StatusOutcome::kNotRunning);
    EXPECT_FALSE(m_bus.hasStarted(bus::kServiceName));
}

TEST_F(BusStatusReaderTest, KnowsAServiceThatIsTooOld) {
    const StatusStandIn service(/*isTooOld=*/true);
    EXPECT_EQ(ask(), StatusOutcome::kTooOld);
}

TEST_F(BusStatusReaderTest, AsksOneQuestionAtATimeAndGivesUp) {
    StatusStandIn service;
    service.onQuestion(StatusStandIn::OnQuestion::kKeepSilent);
    std::vector<StatusOutcome> outcomes;
    StatusReader reader(
        [&outcomes](const StatusAnswer &answer) { outcomes.push_back(answer.outcome); }, 300ms);
    reader.ask();
    reader.ask();
    reader.ask();
    ASSERT_TRUE(run(reader));
    EXPECT_EQ(outcomes, std::vector{StatusOutcome::kNoAnswer});
    EXPECT_EQ(service.questions(), 1);
    EXPECT_FALSE(reader.timeout());
}

TEST_F(BusStatusReaderTest, DoesNotWaitForABusThatHangs) {
    m_bus.freeze();
    StatusReader reader([this](const StatusAnswer &answer) { m_answers.push_back(answer); }, 300ms);
    reader.ask();
    EXPECT_TRUE(reader.isAsking());
    ASSERT_TRUE(run(reader));
    m_bus.thaw();
    EXPECT_EQ(m_answers.back().outcome, StatusOutcome::kNoBus);
}

TEST_F(BusStatusReaderTest, ComesBackWithTheBusAndTheService) {
    m_bus.stop();
    EXPECT_EQ(ask(), StatusOutcome::kNoBus);
    m_bus.start();
    EXPECT_EQ(ask(), StatusOutcome::kNotRunning);
    auto service = std::make_unique<StatusStandIn>();
    EXPECT_EQ(ask(), StatusOutcome::kTold);
    service.reset();
    EXPECT_EQ(ask(), StatusOutcome::kNotRunning);
    m_bus.stop();
    m_reader.dispatch();
    EXPECT_EQ(m_reader.fd(), -1);
    m_bus.start();
    EXPECT_EQ(ask(), StatusOutcome::kNotRunning);
}

}  // namespace
}  // namespace quorbel
