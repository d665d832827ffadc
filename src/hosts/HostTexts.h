#pragma once

#include "core/HostHistory.h"

#include <QCoreApplication>
#include <QString>

#include <cstdint>

namespace quorbel {

/// How times and habits of hosts are said.
struct HostTexts {
    Q_DECLARE_TR_FUNCTIONS(HostTexts)

public:
    /// "under 1 min", "8 min", "7 h 18 min", "3 d 4 h".
    static QString silence(std::int64_t seconds);
    /// About how long, in one unit: "7 s", "5 min", "6 h".
    static QString gap(double seconds);
    /// "since 03:10", or since which day, and of which year, where that is another one.
    static QString since(std::int64_t moment, std::int64_t now);
    /// A sentence on what is expected of the host.
    static QString habit(const HostRecord &host, bool isExpected);
    /// "34 %", "0.2 %".
    static QString share(double share);
    /// The same without decimals; of what is less than one, just that.
    static QString roundShare(double share);
};

}  // namespace quorbel
