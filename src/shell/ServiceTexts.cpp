#include "shell/ServiceTexts.h"

#include "common/SyslogTest.h"
#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QDateTime>

#include <algorithm>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::ServiceTexts)
};

QString problemOf(StatusOutcome outcome) {
    switch (outcome) {
        case StatusOutcome::kNoBus:
            return Texts::tr("There is no system bus");
        case StatusOutcome::kNotRunning:
            return Texts::tr("The service does not run");
        case StatusOutcome::kNoAnswer:
            return Texts::tr("The service does not answer");
        default:
            return {};
    }
}

void addContact(ServiceTexts &texts, const ServiceFacts &facts) {
    const bool isAnswer =
        facts.outcome == StatusOutcome::kTold || facts.outcome == StatusOutcome::kTooOld;
    texts.isConnected = isAnswer;
    texts.title = !facts.outcome ? Texts::tr("Asking the service")
                  : isAnswer     ? Texts::tr("Connected")
                                 : Texts::tr("Not connected");
    if (!isAnswer && facts.lostAt) {
        texts.notes += Texts::tr("Since %1")
                           .arg(QDateTime::fromSecsSinceEpoch(*facts.lostAt)
                                    .toString(QStringLiteral("HH:mm:ss")));
    }
    texts.notes += facts.lastEvent
                       ? Texts::tr("Last event %1 ago").arg(ageText(facts.now - *facts.lastEvent))
                       : Texts::tr("No event yet");
    if (facts.outcome == StatusOutcome::kTooOld) {
        texts.notes += Texts::tr("The rest cannot be told");
    }
    if (facts.outcome && !problemOf(*facts.outcome).isEmpty()) {
        texts.problems += problemOf(*facts.outcome);
    }
}

void addAccess(ServiceTexts &texts, const ServiceFacts &facts) {
    if (facts.access == LibraryAccess::kClosed || facts.outcome == StatusOutcome::kNotAllowed) {
        texts.problems += Texts::tr("No access: join the group quorbel");
    } else if (facts.access == LibraryAccess::kOpen && !facts.hasSettings) {
        texts.problems += Texts::tr("No settings saved yet: nothing is ever removed");
    }
    if (facts.isSaveRefused) {
        texts.problems += Texts::tr("The last save was not taken");
    }
}

void addCounters(ServiceTexts &texts, const ServiceReport &report) {
    if (const auto count = report.counter("filtered"); count > 0) {
        texts.notes += Texts::tr("%1 filtered").arg(counterText(count));
    }
    if (const auto count = report.counter("not stored"); count > 0) {
        texts.problems += Texts::tr("%1 not stored").arg(counterText(count));
    }
    if (const auto count = report.counter("dropped"); count > 0) {
        texts.problems += Texts::tr("%1 dropped").arg(counterText(count));
    }
    if (const auto count = report.counter("notifications dropped"); count > 0) {
        texts.problems += Texts::tr("%1 not told").arg(counterText(count));
    }
}

void addTestPort(ServiceTexts &texts, const ServiceFacts &facts) {
    const auto udp = std::ranges::find(facts.report.listeners, std::string("udp"),
                                       &ServiceReport::Listener::protocol);
    if (facts.testPort == TestPort::kService) {
        return;
    }
    if (udp != facts.report.listeners.end()) {
        texts.notes += Texts::tr("Port %1").arg(udp->port);
    }
    texts.problems +=
        (facts.testPort == TestPort::kOther ? Texts::tr("Another program listens on port %1")
                                            : Texts::tr("Nobody listens on port %1"))
            .arg(kSyslogPort);
}

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

}  // namespace

QString ageText(std::int64_t seconds) {
    const std::int64_t age = std::max<std::int64_t>(seconds, 0);
    if (age < kMinute) {
        return Texts::tr("%1 s").arg(age);
    }
    if (age < kHour) {
        return Texts::tr("%1 min").arg(age / kMinute);
    }
    return age < kDay ? Texts::tr("%1 h").arg(age / kHour) : Texts::tr("%1 d").arg(age / kDay);
}

ServiceTexts serviceTexts(const ServiceFacts &facts) {
    ServiceTexts texts;
    addContact(texts, facts);
    addAccess(texts, facts);
    addCounters(texts, facts.report);
    addTestPort(texts, facts);
    return texts;
}

QString whyNotTold(StatusOutcome outcome) {
    switch (outcome) {
        case StatusOutcome::kTold:
            return {};
        case StatusOutcome::kNotAllowed:
            return Texts::tr(
                "Cannot be told: only members of the groups quorbel and quorbel-readers may ask "
                "the service.");
        case StatusOutcome::kTooOld:
            return Texts::tr("Cannot be told: the service that runs is an older one.");
        default:
            return Texts::tr("Cannot be told: %1.").arg(problemOf(outcome));
    }
}

}  // namespace quorbel
