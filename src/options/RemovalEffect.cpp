#include "options/RemovalEffect.h"

#include "core/EventHold.h"
#include "options/RemovalOptions.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/LookProperty.h"
#include "platform/gui/QtText.h"
#include "settings/ConsequenceLine.h"
#include "settings/Recount.h"

#include <QAbstractButton>
#include <QDateTime>

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

namespace quorbel {

namespace {

RetentionRules rulesOf(const RemovalOptions &removal) {
    OptionsValues values;
    removal.takeValues(values);
    Dictionary settings;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const std::string key = "removal" + std::string(kSeverityClasses[i].keyPart);
        settings.set(key, values.*kRemovalMembers[i].amount);
        settings.set(key + "Units", values.*kRemovalMembers[i].units);
    }
    return RetentionRules(settings);
}

/// "Information: 70,112, Notice: 1,206", the most of them first.
QString byClass(const std::array<std::size_t, kSeverityClassCount> &counts) {
    std::vector<std::size_t> classes(kSeverityClassCount);
    std::iota(classes.begin(), classes.end(), 0);
    std::ranges::stable_sort(classes, std::greater(), [&](std::size_t i) { return counts[i]; });
    QStringList texts;
    for (const std::size_t i : classes) {
        if (counts[i] > 0) {
            texts << RemovalEffect::tr("%1: %2").arg(knownName(kSeverityClasses[i].label),
                                                     countText(static_cast<qint64>(counts[i])));
        }
    }
    return texts.join(QStringLiteral(", "));
}

QString removesNow(std::size_t events) {
    const auto number = static_cast<qint64>(events);
    return events == 1 ? RemovalEffect::tr("Saving removes 1 event now, for good.")
                       : RemovalEffect::tr("Saving removes %1 events now, for good.", nullptr,
                                           pluralNumber(number))
                             .arg(countText(number));
}

}  // namespace

RemovalEffect::RemovalEffect(const RemovalOptions &removal, EventList &events,
                             const EventHold &hold, ConsequenceLine &line, QAbstractButton &save)
    : m_removal(removal),
      m_hold(hold),
      m_line(line),
      m_save(save),
      m_count(events),
      m_recount(std::make_unique<Recount>(m_count, line)) {
    m_recount->followClock();
    connect(m_recount.get(), &Recount::due, this, &RemovalEffect::start);
    connect(m_recount.get(), &Recount::counted, this, &RemovalEffect::show);
    connect(m_recount.get(), &Recount::slow, this, [this] { say(tr("Counting…"), {}, false); });
}

RemovalEffect::~RemovalEffect() = default;

void RemovalEffect::edited() {
    m_recount->edited();
}

void RemovalEffect::reset(const Dictionary &settings) {
    m_recount->stop();
    m_rules = RetentionRules(settings);
    say({}, {}, false);
}

void RemovalEffect::start() {
    const std::int64_t now = QDateTime::currentSecsSinceEpoch();
    const RetentionRules::Limits limits = rulesOf(m_removal).limitsAt(now);
    const RetentionRules::Limits before = m_rules.limitsAt(now);
    // No limit is before all others.
    m_isShorter = !std::ranges::equal(limits, before, std::less_equal());
    m_count.start(limits, before);
}

void RemovalEffect::show() {
    const auto &counts = m_count.counts();
    const std::size_t all = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    const QString uncounted = notCounted();
    if (all > 0) {
        const QString classes = byClass(counts);
        say(removesNow(all), uncounted.isEmpty() ? classes : classes + u'\n' + uncounted, true);
    } else if (!uncounted.isEmpty()) {
        say(tr("Saving removes none of the listed events now."), uncounted, false);
    } else {
        say({}, {}, false);
    }
}

QString RemovalEffect::notCounted() const {
    return m_isShorter && m_hold.arrivals() > 0
               ? tr("Not counted: the events that wait while the list is held.")
               : QString();
}

void RemovalEffect::say(const QString &consequence, const QString &more, bool isWarning) {
    m_line.say(consequence, more, isWarning);
    setLookProperty(m_save, "role", isWarning ? QString() : QStringLiteral("primary"));
}

}  // namespace quorbel
