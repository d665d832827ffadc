#pragma once

#include "core/LibraryAccess.h"
#include "core/ServiceState.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace quorbel {

/// Who receives test messages.
enum class TestPort : std::uint8_t { kService, kOther, kNobody };

/// What the line about the service is made of. Times are in seconds since 1970.
struct ServiceFacts {
    std::optional<StatusOutcome> outcome{};
    ServiceReport report{};
    std::int64_t now = 0;
    std::optional<std::int64_t> lastEvent{};
    /// Since when it does not answer.
    std::optional<std::int64_t> lostAt{};
    LibraryAccess access = LibraryAccess::kOpen;
    bool hasSettings = true;
    bool isSaveRefused = false;
    TestPort testPort = TestPort::kService;
};

/// The line about the service in words.
struct ServiceTexts {
    bool isConnected = false;
    QString title;
    QStringList notes;     ///< what is so
    QStringList problems;  ///< what should not be so; the worst first
};

ServiceTexts serviceTexts(const ServiceFacts &facts);

/// Why the service does not say how it is, in a sentence; empty when it does.
QString whyNotTold(StatusOutcome outcome);

/// "2 s", "5 min": how long something is ago, as shortly as it can be said.
QString ageText(std::int64_t seconds);

}  // namespace quorbel
