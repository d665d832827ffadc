#include "soak/Traffic.h"

#include <chrono>
#include <exception>

namespace quorbel::soak {

namespace {

using load::Plan;

/// Of facility Local0, from Debug up to Error; Debug and Informational as often as in real life.
const std::vector<unsigned> kPriorities{135U, 134U, 134U, 133U, 135U, 134U, 132U, 134U, 131U};
/// Emergency, for which popups come.
const std::vector<unsigned> kAlarm{128U};
/// More would be dropped, which only tells how fast this machine is.
constexpr std::uint64_t kMostQueued = std::uint64_t{4} << 20U;

}  // namespace

Traffic::Traffic(std::uint16_t port, unsigned seed, Rates rates)
    : m_port(port), m_rates(rates), m_random(seed), m_thread([this] { work(); }) {}

Traffic::~Traffic() {
    m_stop = true;
    m_pause = true;
    m_thread.join();
}

void Traffic::setOn(bool on) {
    m_isOn = on;
    m_pause = !on;
}

void Traffic::work() {
    while (!m_stop) {
        m_isSending = m_isOn.load();
        if (m_isSending) {
            any(0, 3) == 0 ? burst() : calm();
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
}

void Traffic::calm() {
    send(plan(m_rates.calm, m_rates.calm * any(1, 4)));
    Plan alarm = plan(0, 1);
    alarm.priorities = kAlarm;
    send(alarm);
}

void Traffic::burst() {
    const std::uint64_t most = m_rates.longest;
    send(plan(any(m_rates.burst / 10, m_rates.burst), any(most / 10, most)));
}

void Traffic::send(Plan plan) {
    try {
        m_sent += load::send(plan, &m_pause).count;
    } catch (const std::exception &) {
        // Nobody listens just now.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

Plan Traffic::plan(std::uint64_t perSecond, std::uint64_t count) {
    return {.port = m_port,
            .transport = any(0, 1) == 0 ? Plan::Transport::kUdp : Plan::Transport::kTcp,
            .run = ++m_runs,
            .count = count,
            .perSecond = perSecond,
            .priorities = kPriorities,
            .mostQueued = kMostQueued};
}

std::uint64_t Traffic::any(std::uint64_t from, std::uint64_t to) {
    return std::uniform_int_distribution(from, to)(m_random);
}

}  // namespace quorbel::soak
