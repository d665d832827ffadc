#pragma once

#include "core/AppDelegate.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel::testing {

/// What hosts sent up to a moment, handed to the delegate's HostWatch in its order.
class HostTraffic {
public:
    static constexpr std::int64_t kNow = 1'767'614'400;  // 2026-01-05 12:00 UTC
    static constexpr std::int64_t kMinute = 60;
    static constexpr std::int64_t kHour = 60 * kMinute;
    static constexpr std::int64_t kDay = 24 * kHour;

    /// Sends every `gap` seconds, from `from` seconds ago until `until` seconds ago.
    void add(const std::string &host, std::int64_t from, std::int64_t until, std::int64_t gap,
             std::uint8_t severityClass = 6) {
        for (std::int64_t ago = from; ago > until; ago -= gap) {
            m_arrivals.push_back({kNow - ago, host, severityClass});
        }
    }
    void arriveAt(AppDelegate &delegate) {
        std::ranges::stable_sort(m_arrivals, {}, &Arrival::moment);
        for (const Arrival &arrival : m_arrivals) {
            arrive(delegate, arrival.host, arrival.moment, arrival.severityClass);
        }
        m_arrivals.clear();
    }
    static void arrive(AppDelegate &delegate, const std::string &host, std::int64_t moment,
                       std::uint8_t severityClass = 6) {
        delegate.hosts.eventArrived({std::to_string(moment), "Local7.Notice", host, "hello", {}},
                                    severityClass);
    }

private:
    struct Arrival {
        std::int64_t moment;
        std::string host;
        std::uint8_t severityClass;
    };
    std::vector<Arrival> m_arrivals;
};

}  // namespace quorbel::testing
