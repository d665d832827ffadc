#include "service/store/ClockTrust.h"

#include "platform/Files.h"

#include <sys/timex.h>

#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>
#include <utility>

namespace quorbel {

namespace {

constexpr unsigned kFileMode = 0640;

/// Seconds from one reading to the next, by the clock that nobody sets.
std::int64_t runBetween(const ClockReading &before, const ClockReading &now) {
    // Less than before: the machine was started anew in between.
    return now.running >= before.running ? now.running - before.running : now.running;
}

}  // namespace

ClockReading readClocks() {
    timespec running{};
    ::clock_gettime(CLOCK_BOOTTIME, &running);
    timex state{};
    const bool known = ::ntp_adjtime(&state) >= 0;
    return {std::time(nullptr), running.tv_sec, known && (state.status & STA_UNSYNC) == 0};
}

ClockTrust::ClockTrust(std::filesystem::path file) : m_file(std::move(file)) {
    load();
}

bool ClockTrust::believes(const ClockReading &now, std::optional<std::int64_t> newestStored) {
    if (!m_state && newestStored) {
        // The machine may have been off since then, and may not.
        m_state = {{*newestStored, now.running, false}, 0};
        // What is stored from now on may have the wrong day: no later start may go by that.
        save();
    }
    m_ahead = m_state ? now.time - expected(now) : 0;
    const bool isExpected = m_ahead <= (m_hasBelieved ? kMostDrift : kLongestSilence);
    const bool isBelieved = now.synchronised || isExpected || outlastsDoubt(now);
    if (isBelieved) {
        believe(now);
    }
    m_last = now;
    return isBelieved;
}

std::int64_t ClockTrust::expected(const ClockReading &now) const {
    return m_state->believed.time + runBetween(m_state->believed, now);
}

void ClockTrust::believe(const ClockReading &now) {
    const bool wasDoubted = m_saved.doubted > 0;
    m_hasBelieved = true;
    m_state = {now, 0};
    if (wasDoubted || std::abs(now.time - m_saved.believed.time) >= kMostDrift) {
        save();
    }
}

bool ClockTrust::outlastsDoubt(const ClockReading &now) {
    // It is this clock that is waited with: set once more, it begins anew.
    const std::int64_t ran = m_last ? runBetween(*m_last, now) : 0;
    const bool wentOn = !m_last || std::abs(now.time - m_last->time - ran) <= kMostDrift;
    m_state->doubted = wentOn ? m_state->doubted + ran : 0;
    if (std::abs(m_state->doubted - m_saved.doubted) >= kMostDrift) {
        save();
    }
    return m_state->doubted >= kLongestDoubt;
}

void ClockTrust::load() {
    const std::optional<std::string> text = readFile(m_file);
    std::istringstream input(text.value_or(""));
    State state;
    if (input >> state.believed.time >> state.believed.running >> state.doubted) {
        m_state = state;
        m_saved = state;
    }
}

/// Where that fails, the next start knows less; the newest stored event will do then.
void ClockTrust::save() {
    std::ostringstream text;
    text << m_state->believed.time << ' ' << m_state->believed.running << ' ' << m_state->doubted
         << '\n';
    replaceFile(m_file, text.str(), kFileMode);
    m_saved = *m_state;
}

}  // namespace quorbel
