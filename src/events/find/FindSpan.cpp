#include "events/find/FindSpan.h"

#include "events/find/FindPanel.h"

#include <QAction>
#include <QDateTimeEdit>
#include <QFormLayout>
#include <QPushButton>
#include <QTimer>

#include <chrono>

namespace quorbel {

namespace {

constexpr std::chrono::seconds kFollowEvery{5};
constexpr int kWidestSpan = 210;  // two moments of one year, to the second

QDateTime moment(std::int64_t seconds) {
    return QDateTime::fromSecsSinceEpoch(seconds);
}

/// At or after that time.
QDateTime nextMinute(const QDateTime &time) {
    return moment((time.toSecsSinceEpoch() + 59) / 60 * 60);
}

QDateTimeEdit *momentField(const char *name, const QString &accessibleName, QWidget *parent) {
    auto *field = new QDateTimeEdit(parent);
    field->setObjectName(QString::fromLatin1(name));
    field->setAccessibleName(accessibleName);
    return field;
}

}  // namespace

FindSpan::FindSpan(QWidget *parent)
    : FindMenuChoice("findSpan", tr("Time"), tr("Show only events of a span of time"), parent),
      m_panel(new FindPanel(this)),
      m_from(momentField("findFrom", tr("From"), m_panel)),
      m_to(momentField("findTo", tr("To"), m_panel)),
      m_show(new QPushButton(tr("Show"), m_panel)) {
    using Kind = EventSpan::Kind;
    addAny(tr("Any time"));
    for (const Kind kind : {Kind::kLastHour, Kind::kToday, Kind::kYesterday, Kind::kLastDay}) {
        m_actions.append(addValue(EventSpan{kind}.textAt({}), static_cast<int>(kind)));
    }
    m_actions.append(addValue(tr("From ... to ..."), static_cast<int>(Kind::kFromTo)));
    setWidest(kWidestSpan);
    makePanel();
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &FindSpan::follow);
    timer->start(kFollowEvery);
}

void FindSpan::makePanel() {
    m_panel->setObjectName(QStringLiteral("findSpanPanel"));
    auto *form = new QFormLayout(m_panel);
    form->addRow(tr("From"), m_from);
    form->addRow(tr("To"), m_to);
    form->addRow(QString(), m_show);
    m_show->setObjectName(QStringLiteral("findSpanShow"));
    m_show->setProperty("role", QStringLiteral("primary"));
    m_show->setToolTip(tr("Show the events from the first moment up to the second one"));
    const auto enable = [this] { m_show->setEnabled(m_from->dateTime() < m_to->dateTime()); };
    connect(m_from, &QDateTimeEdit::dateTimeChanged, this, enable);
    connect(m_to, &QDateTimeEdit::dateTimeChanged, this, enable);
    connect(m_show, &QAbstractButton::clicked, this, &FindSpan::showFromTo);
    connect(m_panel, &FindPanel::accepted, m_show, &QAbstractButton::click);
}

void FindSpan::addTo(EventQuery &query) const {
    if (const auto moving = m_span.moving()) {
        query.spans.set(static_cast<std::size_t>(*moving));
        return;
    }
    const EventSpan::Moments moments = m_span.momentsAt(m_clock());
    query.from = moments.from;
    query.until = moments.until;
}

void FindSpan::removeFrom(EventQuery &query) const {
    query.from.reset();
    query.until.reset();
    query.spans.reset();
}

void FindSpan::takeFrom(const EventQuery &query) {
    for (std::size_t span = 0; span < kMovingSpanCount; ++span) {
        if (query.spans[span]) {
            use(EventSpan::of(static_cast<MovingSpan>(span)));
            return;
        }
    }
    if (query.from && query.until) {
        use({EventSpan::Kind::kFromTo, moment(*query.from), moment(*query.until)});
    }
}

void FindSpan::openBelow(QWidget &anchor) {
    m_anchor = &anchor;
    FindMenuChoice::openBelow(anchor);
}

void FindSpan::take(const QVariant &key, const QString & /*text*/) {
    const auto kind = static_cast<EventSpan::Kind>(key.toInt());
    if (kind == EventSpan::Kind::kFromTo) {
        askFromTo();
    } else {
        use({kind});
    }
}

void FindSpan::use(const EventSpan &span) {
    m_span = span;
    const QDateTime now = m_clock();
    m_moments = span.momentsAt(now);
    if (span.kind == EventSpan::Kind::kAny) {
        checkAny();
    } else {
        check(m_actions[static_cast<int>(span.kind) - 1]);
    }
    showValue(span.textAt(now), span.shortTextAt(now));
}

void FindSpan::choose(const EventSpan::Moments &moments) {
    using Kind = EventSpan::Kind;
    const QDateTime now = m_clock();
    if (moments.from && !moments.until) {
        // One that goes on, perhaps as it was some time ago.
        const std::int64_t halfADay = 12 * 3600;
        const bool isShort = now.toSecsSinceEpoch() - *moments.from < halfADay;
        use({isShort ? Kind::kLastHour : Kind::kLastDay});
        return;
    }
    for (const Kind kind : {Kind::kAny, Kind::kToday, Kind::kYesterday}) {
        if (EventSpan{kind}.momentsAt(now) == moments) {
            use({kind});
            return;
        }
    }
    use({Kind::kFromTo, moment(moments.from.value_or(0)), moment(*moments.until)});
}

void FindSpan::askFromTo() {
    const QDateTime now = m_clock();
    const EventSpan::Moments moments = m_span.momentsAt(now);
    const QDateTime from = moments.from ? moment(*moments.from) : now.date().startOfDay();
    const QDateTime to = moments.until ? moment(*moments.until) : nextMinute(now);
    const QString clock = EventSpan{EventSpan::Kind::kFromTo, from, to}.clockFormat();
    for (QDateTimeEdit *field : {m_from, m_to}) {
        field->setDisplayFormat(QStringLiteral("yyyy-MM-dd ") + clock);
        field->setDateTime(field == m_from ? from : to);
    }
    m_panel->openBelow(*m_anchor);
    m_from->setFocus();
}

void FindSpan::showFromTo() {
    m_panel->hide();
    use({EventSpan::Kind::kFromTo, m_from->dateTime(), m_to->dateTime()});
}

void FindSpan::follow() {
    const EventSpan::Moments moments = m_span.momentsAt(m_clock());
    if (moments.from != m_moments.from || moments.until != m_moments.until) {
        use(m_span);
    }
    Q_EMIT timePassed();
}

}  // namespace quorbel
